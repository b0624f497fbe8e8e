#include "OCApplicationArguments.h"

#include <cstring>
#include <utility>

namespace {

/// Owns an argument until it is in a list.
class NewArgument {
public:
    NewArgument() : argument(new OCApplicationArgument) {}
    NewArgument(const NewArgument&) = delete;
    NewArgument& operator=(const NewArgument&) = delete;
    ~NewArgument() { delete argument; }

    OCApplicationArgument& get() const { return *argument; }
    void release() { argument = nullptr; }

private:
    OCApplicationArgument* argument;
};

} // namespace

OCApplicationArgument::~OCApplicationArgument() noexcept = default;

OCApplicationArgumentList::~OCApplicationArgumentList() noexcept {
    clear();
}

void OCApplicationArgumentList::assign(int argc, char** argv) {
    OCApplicationArgumentList assigned;
    for (int i = 1; i < argc; ++i)
        assigned.addArgument(argv[i]);
    take(assigned);
}

void OCApplicationArgumentList::assign(const char* commandLine) {
    OCApplicationArgumentList assigned;
    const char* begin = commandLine;
    while (*begin != '\0') {
        // A piece has at least one character, whatever it is.
        const char* const end = strchrnul(begin + 1, ' ');
        assigned.addArgument(OCAnsiString(begin, static_cast<unsigned long>(end - begin)));
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
    if (isOptionShort(argument))
        parseOptionShort(argument);
    else if (isOptionLong(argument))
        parseOptionLong(argument);
    else
        parseMiscellaneous(argument);
}

void OCApplicationArgumentList::clear() {
    OCVectorUtilities(arguments).deleteElements();
}

bool OCApplicationArgumentList::isOptionShort(const OCAnsiString& argument) const {
    const char* const text = argument.getString();
    return argument.getLength() >= 2 && text[0] == '-' && text[1] != '-';
}

bool OCApplicationArgumentList::isOptionLong(const OCAnsiString& argument) const {
    const char* const text = argument.getString();
    return argument.getLength() >= 2 && text[0] == '-' && text[1] == '-';
}

bool OCApplicationArgumentList::splitOptionLong(const OCAnsiString& option, OCAnsiString& name,
                                                OCAnsiString& value) const {
    const unsigned long length = option.getLength();
    const char* const text = option.getString();
    unsigned long end = length;
    option.indexOf('=', end);
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
    const unsigned long length = argument.getLength();
    const char* const text = argument.getString();
    for (unsigned long i = 1; i < length; ++i) {
        const OCAnsiString name(text[i]);
        if (i + 1 < length && text[i + 1] == '=') {
            appendOptionShort(name, OCAnsiString(text + i + 2, length - i - 2));
            return;
        }
        appendOptionShort(name, OCAnsiString());
    }
}

void OCApplicationArgumentList::parseOptionLong(const OCAnsiString& argument) {
    if (argument.getLength() <= 2)
        return;
    OCAnsiString name;
    OCAnsiString value;
    const OCAnsiString option(argument.getString() + 2, argument.getLength() - 2);
    if (!splitOptionLong(option, name, value))
        return;
    if (name.getLength() == 1)
        appendOptionShort(name, value);
    else
        appendOptionLong(name, value);
}

void OCApplicationArgumentList::parseMiscellaneous(const OCAnsiString& argument) {
    appendMiscellaneous(argument);
}

void OCApplicationArgumentList::appendOptionShort(const OCAnsiString& name,
                                                  const OCAnsiString& value) {
    append(ApplicationArgumentTypeShort, name, value);
}

void OCApplicationArgumentList::appendOptionLong(const OCAnsiString& name,
                                                 const OCAnsiString& value) {
    append(ApplicationArgumentTypeLong, name, value);
}

void OCApplicationArgumentList::appendMiscellaneous(const OCAnsiString& argument) {
    append(ApplicationArgumentTypeMiscellaneous, OCAnsiString(), argument);
}

void OCApplicationArgumentList::append(OEApplicationArgumentType type, const OCAnsiString& name,
                                       const OCAnsiString& value) {
    NewArgument added;
    added.get().setName(name);
    added.get().setType(type);
    added.get().setValue(value);
    const unsigned long count = arguments.getCount();
    try {
        arguments.addElement(added.get());
    } catch (...) {
        arguments.setCount(count); // the vector has counted what it could not take
        throw;
    }
    added.release();
}
