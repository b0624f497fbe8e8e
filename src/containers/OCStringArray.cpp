#include "OCStringArray.h"

#include "OCMemory.h"

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): arrays of `char*` end with it
char* OCStringArray::s_pchNull = nullptr;

OCStringArray::OCStringArray() : strings(StringListCaseInsensitive, StringListModeUnsorted) {
    rebuildPointers();
}

OCStringArray::OCStringArray(const OCStringArray& other) : OCStringArray() {
    assign(other);
}

OCStringArray::~OCStringArray() noexcept = default;

OCStringArray& OCStringArray::assign(const OCStringArray& other) {
    if (this == &other)
        return *this;
    reservePointers(other.getCount());
    strings.assign(other.strings);
    rebuildPointers();
    return *this;
}

void OCStringArray::addString(const OCAnsiString& text) {
    const unsigned long count = getCount();
    reservePointers(count + 1);
    try {
        strings.addString(text);
    } catch (...) {
        strings.setCount(count); // the list may have counted the string that it could not take
        throw;
    }
    appendPointer(count);
}

char* OCStringArray::addBlank(unsigned long length) {
    const unsigned long count = getCount();
    reservePointers(count + 1);
    try {
        strings.addString(OCAnsiString());
        strings.getString(count).setLength(length);
    } catch (...) {
        strings.setCount(count);
        throw;
    }
    return appendPointer(count);
}

void OCStringArray::rebuildPointers() {
    const unsigned long count = getCount();
    reservePointers(count);
    pointers.setSize(0);
    for (unsigned long i = 0; i < count; ++i)
        writePointer(strings.getString(i).getString());
    writePointer(s_pchNull);
}

void OCStringArray::reservePointers(unsigned long stringCount) {
    const unsigned long size = (stringCount + 1) * sizeof(char*);
    if (size <= pointers.getCapacity())
        return;
    // In larger steps the larger it is, so that adding many strings takes linear time in all.
    while (size / 8 > pointers.getBlockSize())
        pointers.setBlockSize(2 * pointers.getBlockSize());
    // Storage that the stream has got once, it keeps.
    const unsigned long held = pointers.getSize();
    pointers.setSize(size);
    pointers.setSize(held);
}

void OCStringArray::writePointer(char* characters) {
    pointers.writeBuffer(&characters, sizeof characters);
}

/// Adds the pointer to the last string, for which there is room. The strings before it keep their
/// characters.
char* OCStringArray::appendPointer(unsigned long index) {
    char* const characters = strings.getString(index).getString();
    pointers.setSize((index + 2) * sizeof(char*));
    char** const end = getBuffer() + index;
    end[0] = characters;
    end[1] = s_pchNull;
    return characters;
}
