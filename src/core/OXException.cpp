#include "OXException.h"

#include "OCMemory.h"

#include <utility>

namespace {

void put(char*& to, const char* text, unsigned long count) {
    stringCopy(to, text, count);
    to += count;
}

/// `message` with the details in parentheses behind it.
OCAnsiString compose(const OCAnsiString& message, const OCStringList& details) {
    const unsigned long count = details.getCount();
    unsigned long length = message.getLength() + 3 + 2 * (count - 1);
    for (unsigned long i = 0; i < count; ++i)
        length += details.getString(i).getLength();

    OCAnsiString text;
    text.setLength(length);
    char* to = text.getString();
    put(to, message.getString(), message.getLength());
    put(to, " (", 2);
    for (unsigned long i = 0; i < count; ++i) {
        if (i != 0)
            put(to, ", ", 2);
        put(to, details.getString(i).getString(), details.getString(i).getLength());
    }
    put(to, ")", 1);
    return text;
}

} // namespace

OXException::~OXException() noexcept = default;

OXAutoException::OXAutoException() : details(StringListCaseInsensitive, StringListModeUnsorted) {}

OXAutoException::OXAutoException(const OXAutoException& other) = default;

OXAutoException& OXAutoException::operator=(const OXAutoException& other) {
    OCAnsiString newName(other.className);
    OCAnsiString newMessage(other.message);
    details = other.details;
    className = std::move(newName);
    message = std::move(newMessage);
    return *this;
}

OXAutoException::~OXAutoException() noexcept = default;

OCAnsiString OXAutoException::getClass() const {
    return className;
}

OCAnsiString OXAutoException::getMessage() const {
    try {
        if (details.getCount() != 0)
            return compose(message, details);
    } catch (...) {
        // Whatever prevents the composition, the message itself still says what failed.
    }
    return message;
}
