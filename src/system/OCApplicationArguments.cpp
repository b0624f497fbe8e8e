#include "OCApplicationArguments.h"

#include <cstring>
#include <utility>

namespace {

bool isShort(const char* text, unsigned long length) {
    return length >= 2 && text[0] == '-' && text[1] != '-';
}

bool isLong(const char* text, unsigned long length) {
    return length >= 2 && text[0] == '-' && text[1] == '-';
}

/// Where the name of a long option ends: at its first `=`, or at its end.
unsigned long nameLengthOf(const char* option, unsigned long length) {
    const void* const found = std::memchr(option, '=', length);
    return found == nullptr ? length
                            : static_cast<unsigned long>(static_cast<const char*>(found) - option);
}

} // namespace

OCApplicationArgument::~OCApplicationArgument() noexcept = default;

OCApplicationArgumentList::~OCApplicationArgumentList() noexcept {
    clear();
}

void OCApplicationArgumentList::assign(int argc, char** argv) {
    OCApplicationArgumentList assigned;
    for (int i = 1; i < argc && argv != nullptr && argv[i] != nullptr; ++i)
        assigned.add(argv[i], std::strlen(argv[i]));
    take(assigned);
}

void OCApplicationArgumentList::assign(const char* commandLine) {
    OCApplicationArgumentList assigned;
    const char* begin = commandLine;
    while (*begin != '\0') {
        // A piece has at least one character, whatever it is.
        const char* const end = strchrnul(begin + 1, ' ');
        assigned.add(begin, static_cast<unsigned long>(end - begin));
        begin = end;
        while (*begin == ' ')
            ++begin;
    }
    take(assigned);
}

void OCApplicationArgumentList::take(OCApplicationArgumentList& other) {
    OCVector replaced(arguments);
    arguments.assign(other.arguments);
    for (unsigned long i = 0; i < other.getCount(); ++i)
        other.arguments.nullElement(i);
    OCVectorUtilities(replaced).deleteElements();
}

void OCApplicationArgumentList::addArgument(const OCAnsiString& argument) {
    add(argument.getString(), argument.getLength());
}

void OCApplicationArgumentList::add(const char* text, unsigned long length) {
    if (isShort(text, length))
        addShort(text, length);
    else if (isLong(text, length))
        addLong(text, length);
    else
        append(ApplicationArgumentTypeMiscellaneous, "", 0, text, length);
}

void OCApplicationArgumentList::clear() {
    OCVectorUtilities(arguments).deleteElements();
}

bool OCApplicationArgumentList::isOptionShort(const OCAnsiString& argument) const {
    return isShort(argument.getString(), argument.getLength());
}

bool OCApplicationArgumentList::isOptionLong(const OCAnsiString& argument) const {
    return isLong(argument.getString(), argument.getLength());
}

bool OCApplicationArgumentList::splitOptionLong(const OCAnsiString& option, OCAnsiString& name,
                                                OCAnsiString& value) const {
    const unsigned long length = option.getLength();
    const char* const text = option.getString();
    const unsigned long end = nameLengthOf(text, length);
    if (end == 0 && length != 0)
        return false;
    OCAnsiString newName(text, end);
    OCAnsiString newValue;
    if (end < length)
        newValue.assign(text + end + 1, length - end - 1);
    name = std::move(newName);
    value = std::move(newValue);
    return true;
}

void OCApplicationArgumentList::parseOptionShort(const OCAnsiString& argument) {
    addShort(argument.getString(), argument.getLength());
}

void OCApplicationArgumentList::addShort(const char* text, unsigned long length) {
    for (unsigned long i = 1; i < length; ++i) {
        if (i + 1 < length && text[i + 1] == '=') {
            append(ApplicationArgumentTypeShort, text + i, 1, text + i + 2, length - i - 2);
            return;
        }
        append(ApplicationArgumentTypeShort, text + i, 1, "", 0);
    }
}

void OCApplicationArgumentList::parseOptionLong(const OCAnsiString& argument) {
    addLong(argument.getString(), argument.getLength());
}

void OCApplicationArgumentList::addLong(const char* text, unsigned long length) {
    if (length <= 2)
        return;
    const char* const option = text + 2;
    const unsigned long optionLength = length - 2;
    const unsigned long end = nameLengthOf(option, optionLength);
    if (end == 0)
        return;
    const unsigned long value = end < optionLength ? end + 1 : end;
    append(end == 1 ? ApplicationArgumentTypeShort : ApplicationArgumentTypeLong, option, end,
           option + value, optionLength - value);
}

void OCApplicationArgumentList::parseMiscellaneous(const OCAnsiString& argument) {
    appendMiscellaneous(argument);
}

void OCApplicationArgumentList::appendOptionShort(const OCAnsiString& name,
                                                  const OCAnsiString& value) {
    append(ApplicationArgumentTypeShort, name.getString(), name.getLength(), value.getString(),
           value.getLength());
}

void OCApplicationArgumentList::appendOptionLong(const OCAnsiString& name,
                                                 const OCAnsiString& value) {
    append(ApplicationArgumentTypeLong, name.getString(), name.getLength(), value.getString(),
           value.getLength());
}

void OCApplicationArgumentList::appendMiscellaneous(const OCAnsiString& argument) {
    append(ApplicationArgumentTypeMiscellaneous, "", 0, argument.getString(), argument.getLength());
}

void OCApplicationArgumentList::append(OEApplicationArgumentType type, const char* name,
                                       unsigned long nameLength, const char* value,
                                       unsigned long valueLength) {
    OCApplicationArgument* const added =
        new OCApplicationArgument(type, name, nameLength, value, valueLength);
    const unsigned long count = arguments.getCount();
    try {
        arguments.addElement(*added);
    } catch (...) {
        arguments.setCount(count); // the vector has counted what it could not take
        delete added;
        throw;
    }
}
