#ifndef ORVABASE_OCSTRINGARRAY_H
#define ORVABASE_OCSTRINGARRAY_H

#include "OCMemoryStream.h"
#include "OCStringList.h"

/// A list of strings together with a null-terminated array of pointers to their characters, in the
/// form that calls such as `execve` expect.
///
/// Not for use by several threads at once.
///
///     OCStringArray arguments;
///     arguments.addString("ls");
///     arguments.addString("-l");
///     execve("/bin/ls", arguments.getBuffer(), environ);
class ORVABASE_EXPORT OCStringArray : public OCObject {
public:
    /// An empty array: its buffer is a single null pointer.
    /// @throws OXMemory_AllocationError
    OCStringArray();
    /// Copies of `other`'s strings.
    /// @throws OXMemory_AllocationError
    OCStringArray(const OCStringArray& other);
    OCStringArray& operator=(const OCStringArray& other) { return assign(other); }
    ~OCStringArray() noexcept override;

    /// Takes copies of `other`'s strings. An array assigned to itself stays as it is.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    OCStringArray& assign(const OCStringArray& other);
    /// Appends a copy of `text`. The cost does not depend on the strings already there.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void addString(const OCAnsiString& text);

    /// The number of strings, without the null pointer at the end.
    unsigned long getCount() const { return strings.getCount(); }
    /// Whether there are none.
    bool isEmpty() const { return strings.getCount() == 0; }

    /// The array: one pointer to the characters of each string, in order, and a null pointer. Valid
    /// until the next change.
    char** getBuffer() { return reinterpret_cast<char**>(pointers.buffer.getData()); }
    char* const* getBuffer() const {
        return reinterpret_cast<char* const*>(pointers.buffer.getData());
    }

    /// Makes the array of pointers anew from the strings.
    /// @throws OXMemory_AllocationError
    void rebuildPointers();

private:
    friend class OCEnvironmentBufferArray; // puts its strings together in place

    /// Appends a string of `length` characters that are still to be set, and returns them.
    char* addBlank(unsigned long length);
    void reservePointers(unsigned long stringCount);
    void writePointer(char* characters);
    char* appendPointer(unsigned long index);

    /// The entry behind the last string.
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): ends `char*` arrays
    static char* s_pchNull;

    OCMemoryStream pointers;
    OCStringList strings;
};

#endif
