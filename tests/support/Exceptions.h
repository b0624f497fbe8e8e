#ifndef ORVABASE_TESTS_EXCEPTIONS_H
#define ORVABASE_TESTS_EXCEPTIONS_H

#include "OXException.h"

#include <gtest/gtest.h>

#include <cstring>
#include <typeinfo>

namespace expectations {

/// Allocates nothing as long as all is as expected, so that it can be used while the heap fails.
template<class Exception, class Operation>
void expectException(Operation operation, const char* name, const char* message, const char* file,
                     int line) {
    try {
        operation();
    } catch (const OXException& failure) {
        if (typeid(failure) != typeid(Exception) ||
            std::strcmp(name, failure.getClass().getString()) != 0 ||
            std::strcmp(message, failure.getMessage().getString()) != 0) {
            ADD_FAILURE_AT(file, line)
                << "expected " << name << ": " << message << "\nbut got " << typeid(failure).name()
                << ' ' << failure.getClass() << ": " << failure.getMessage();
        }
        return;
    } catch (...) {
        ADD_FAILURE_AT(file, line) << "threw something that is no exception of the library";
        return;
    }
    ADD_FAILURE_AT(file, line) << "expected " << name << " but nothing was thrown";
}

} // namespace expectations

/// `statement` throws exactly `Class`, whose class name is its own, with the full text `message`.
#define EXPECT_EXCEPTION(statement, Class, message)                                                \
    ::expectations::expectException<Class>([&] { statement; }, #Class, message, __FILE__, __LINE__)

#endif
