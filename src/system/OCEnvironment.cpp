#include "OCEnvironment.h"

#include "OCMemory.h"

#include <cstdlib>
#include <cstring>

#include <unistd.h>

OXEnvironmentBlock::OXEnvironmentBlock() = default;
OXEnvironmentBlock::~OXEnvironmentBlock() noexcept = default;

OXEnvironmentBlock_ReadProcessEnvironment::OXEnvironmentBlock_ReadProcessEnvironment() {
    setClass("OXEnvironmentBlock_ReadProcessEnvironment");
    setMessage("Error reading process environment variables");
}
OXEnvironmentBlock_ReadProcessEnvironment::~OXEnvironmentBlock_ReadProcessEnvironment() noexcept =
    default;

OXEnvironmentVariable::OXEnvironmentVariable() = default;
OXEnvironmentVariable::~OXEnvironmentVariable() noexcept = default;

OXEnvironmentVariable_DeleteVariable::OXEnvironmentVariable_DeleteVariable(
    const OCAnsiString& name) {
    setClass("OXEnvironmentVariable_DeleteVariable");
    setMessage("Error deleting environment variable");
    getDetails().addString(name);
}
OXEnvironmentVariable_DeleteVariable::~OXEnvironmentVariable_DeleteVariable() noexcept = default;

OXEnvironmentVariable_GetValue::OXEnvironmentVariable_GetValue(const OCAnsiString& name) {
    setClass("OXEnvironmentVariable_GetValue");
    setMessage("Error getting value of environment variable");
    getDetails().addString(name);
}
OXEnvironmentVariable_GetValue::~OXEnvironmentVariable_GetValue() noexcept = default;

OXEnvironmentVariable_SetValue::OXEnvironmentVariable_SetValue(const OCAnsiString& name) {
    setClass("OXEnvironmentVariable_SetValue");
    setMessage("Error setting value of environment variable");
    getDetails().addString(name);
}
OXEnvironmentVariable_SetValue::~OXEnvironmentVariable_SetValue() noexcept = default;

namespace {

/// The length of `NAME=VALUE`, or 0 for a variable that is left out.
unsigned long entryLength(const OCNamedElement& variable) {
    const unsigned long length = variable.getValue().getLength();
    return length == 0 ? 0 : variable.getName().getLength() + 1 + length;
}

void fillEntry(char* to, const OCNamedElement& variable) {
    const OCAnsiString& name = variable.getName();
    const OCAnsiString& value = variable.getValue();
    memoryCopy(to, name.getString(), name.getLength());
    to[name.getLength()] = '=';
    memoryCopy(to + name.getLength() + 1, value.getString(), value.getLength());
}

} // namespace

OCEnvironmentVariable::~OCEnvironmentVariable() noexcept = default;

OCAnsiString OCEnvironmentVariable::getValue() const {
    const char* const value = getenv(name.getString());
    if (value == nullptr)
        throw OXEnvironmentVariable_GetValue(name);
    return value;
}

OCAnsiString OCEnvironmentVariable::getValue(const OCAnsiString& defaultValue) const {
    const char* const value = getenv(name.getString());
    return value == nullptr ? defaultValue : OCAnsiString(value);
}

void OCEnvironmentVariable::setValue(const OCAnsiString& value) {
    if (setenv(name.getString(), value.getString(), 1) != 0)
        throw OXEnvironmentVariable_SetValue(name);
}

int OCEnvironmentVariable::deleteVariable() noexcept {
    return unsetenv(name.getString());
}

OCEnvironmentBlock::~OCEnvironmentBlock() noexcept = default;

void OCEnvironmentBlock::readProcessEnvironment() {
    if (environ == nullptr)
        throw OXEnvironmentBlock_ReadProcessEnvironment();
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const char* const separator = std::strchr(*entry, '=');
        if (separator == nullptr || separator == *entry || separator[1] == '\0')
            continue;
        const OCAnsiString name(*entry, static_cast<unsigned long>(separator - *entry));
        variables.setValue(name, OCAnsiString(separator + 1));
    }
}

OCEnvironmentBufferArray::OCEnvironmentBufferArray(const OCEnvironmentBlock& block)
    : OCEnvironmentBufferArray(block.getVariables()) {}

OCEnvironmentBufferArray::OCEnvironmentBufferArray(const OCNamedList& list) {
    initialize(list);
}

OCEnvironmentBufferArray::~OCEnvironmentBufferArray() noexcept = default;

void OCEnvironmentBufferArray::initialize(const OCNamedList& list) {
    initializeStrings(list);
}

void OCEnvironmentBufferArray::initializeStrings(const OCNamedList& list) {
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const OCNamedElement& variable = list.getElement(i);
        const unsigned long length = entryLength(variable);
        if (length != 0)
            fillEntry(strings.addBlank(length), variable);
    }
}

OCEnvironmentBufferSerial::OCEnvironmentBufferSerial(const OCEnvironmentBlock& block)
    : OCEnvironmentBufferSerial(block.getVariables()) {}

OCEnvironmentBufferSerial::OCEnvironmentBufferSerial(const OCNamedList& list) {
    initialize(list);
}

OCEnvironmentBufferSerial::~OCEnvironmentBufferSerial() noexcept = default;

void OCEnvironmentBufferSerial::initialize(const OCNamedList& list) {
    initializeStrings(list);
}

void OCEnvironmentBufferSerial::initializeStrings(const OCNamedList& list) {
    const unsigned long before = entries.getLength();
    unsigned long length = before;
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const unsigned long entry = entryLength(list.getElement(i));
        if (entry != 0)
            length += entry + 1;
    }
    entries.setLength(length);
    char* to = entries.getString() + before;
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const OCNamedElement& variable = list.getElement(i);
        const unsigned long entry = entryLength(variable);
        if (entry == 0)
            continue;
        fillEntry(to, variable);
        to[entry] = '\0';
        to += entry + 1;
    }
}
