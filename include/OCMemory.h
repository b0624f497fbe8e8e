#ifndef ORVABASE_OCMEMORY_H
#define ORVABASE_OCMEMORY_H

#include "OXException.h"

/// The family of memory failures. Its exceptions hold no data, so that they need no memory.
class ORVABASE_EXPORT OXMemory : public OXException {
public:
    ~OXMemory() noexcept override;

protected:
    OXMemory() noexcept = default;
};

/// "Memory allocation failure": memory is exhausted, or a size does not fit into an address space.
class ORVABASE_EXPORT OXMemory_AllocationError : public OXMemory {
public:
    OXMemory_AllocationError() noexcept = default;
    ~OXMemory_AllocationError() noexcept override;

    OCAnsiString getClass() const override;
    OCAnsiString getMessage() const override;
};

/// Sets `p` to a new block of `size` bytes.
/// @throws OXMemory_AllocationError
ORVABASE_EXPORT void memoryAllocate(void*& p, unsigned long size);
/// Changes the block that `p` points to (none when null) to `size` bytes.
///
/// Note: `p` takes the result before it is looked at. When this throws, `p` is null and the old
/// block is lost, unless the caller kept another pointer to it: then that block is untouched.
/// @throws OXMemory_AllocationError
ORVABASE_EXPORT void memoryReallocate(void*& p, unsigned long size);
/// Gives the block back and sets `p` to null. Null is harmless.
ORVABASE_EXPORT void memoryRelease(void*& p) noexcept;
/// Compares bytes as unsigned: -1, 0 or 1.
ORVABASE_EXPORT OECompareResult memoryCompare(const void* a, const void* b,
                                              unsigned long size) noexcept;
/// Copies bytes; the ranges may overlap. With a size of 0 neither pointer is looked at.
ORVABASE_EXPORT void memoryCopy(void* to, const void* from, unsigned long size) noexcept;
/// Sets every byte to `value`.
ORVABASE_EXPORT void memoryFill(void* p, unsigned long size, char value) noexcept;
/// Sets every byte to 0.
ORVABASE_EXPORT void memoryZero(void* p, unsigned long size) noexcept;

// The following count in characters or pointers instead of bytes. They add no room for a
// terminator. A count whose size in bytes does not fit into an unsigned long is an
// OXMemory_AllocationError.

ORVABASE_EXPORT void stringAllocate(char*& p, unsigned long count);
ORVABASE_EXPORT void stringAllocate(wchar_t*& p, unsigned long count);
ORVABASE_EXPORT void stringReallocate(char*& p, unsigned long count);
ORVABASE_EXPORT void stringReallocate(wchar_t*& p, unsigned long count);
ORVABASE_EXPORT void stringRelease(char*& p) noexcept;
ORVABASE_EXPORT void stringRelease(wchar_t*& p) noexcept;
ORVABASE_EXPORT void stringCopy(char* to, const char* from, unsigned long count) noexcept;
ORVABASE_EXPORT void stringCopy(wchar_t* to, const wchar_t* from, unsigned long count) noexcept;
/// The number of characters before the first zero. The pointer must not be null.
ORVABASE_EXPORT unsigned long stringLength(const char* s) noexcept;
ORVABASE_EXPORT unsigned long stringLength(const wchar_t* s) noexcept;
ORVABASE_EXPORT void vectorAllocate(OCObject**& p, unsigned long count);
ORVABASE_EXPORT void vectorReallocate(OCObject**& p, unsigned long count);
ORVABASE_EXPORT void vectorRelease(OCObject**& p) noexcept;

#endif
