#ifndef ORVABASE_TESTS_THROWN_H
#define ORVABASE_TESTS_THROWN_H

#include "OXException.h"

#include <string>
#include <typeinfo>

/// What an action throws, as text: the class name that the exception stores, a colon and its
/// message with the details. If it throws another class than exactly `Exception`, or nothing, the
/// text says so.
///
///     EXPECT_EQ(thrown<OXStream_ReadError>([&] { stream.readBuffer(p, 1); }),
///               "OXStream_ReadError: Read from the stream failed");
template<class Exception, class Action>
std::string thrown(Action action) {
    try {
        action();
    } catch (const OXException& failure) {
        std::string text = failure.getClass().getString();
        text += ": ";
        text += failure.getMessage().getString();
        if (typeid(failure) != typeid(Exception))
            text += std::string(" [thrown as ") + typeid(failure).name() + "]";
        return text;
    }
    return "nothing";
}

#endif
