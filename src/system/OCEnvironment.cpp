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
    OCAnsiString entry;
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const OCNamedElement& variable = list.getElement(i);
        if (variable.getValue().getLength() == 0)
            continue;
        entry = variable.getName();
        entry += '=';
        entry += variable.getValue();
        strings.addString(entry);
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
    unsigned long length = 0;
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const OCNamedElement& variable = list.getElement(i);
        if (variable.getValue().getLength() != 0)
            length += variable.getName().getLength() + variable.getValue().getLength() + 2;
    }
    entries.setLength(length);
    char* to = entries.getString();
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const OCNamedElement& variable = list.getElement(i);
        const OCAnsiString& name = variable.getName();
        const OCAnsiString& value = variable.getValue();
        if (value.getLength() == 0)
            continue;
        memoryCopy(to, name.getString(), name.getLength());
        to += name.getLength();
        *to++ = '=';
        memoryCopy(to, value.getString(), value.getLength());
        to += value.getLength();
        *to++ = '\0';
    }
}
