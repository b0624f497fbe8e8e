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

// All heap memory of the library comes from the functions below, and so does that of every object
// made with `new`. They are as thread-safe as `malloc`, `realloc` and `free`, over which they
// stand.
//
//     void* block = nullptr;
//     memoryAllocate(block, 4096);     // never leaves null: exhaustion is an exception
//     memoryZero(block, 4096);
//     memoryRelease(block);            // block is null now

/// Sets `p` to a new block of `size` bytes, whatever it held. The bytes have no defined value; the
/// caller owns the block.
/// @throws OXMemory_AllocationError when memory is exhausted; `p` is null then.
ORVABASE_EXPORT void memoryAllocate(void*& p, unsigned long size);
/// Changes the block that `p` points to (none when null) to `size` bytes and keeps the first ones.
/// The block may move.
///
/// Note: `p` takes the result before it is looked at. When this throws, `p` is null and the old
/// block is lost, unless the caller kept another pointer to it: then that block is untouched. A
/// size of 0 gives the block back and throws.
/// @throws OXMemory_AllocationError when memory is exhausted; `p` is null then.
ORVABASE_EXPORT void memoryReallocate(void*& p, unsigned long size);
/// Gives the block back and sets `p` to null. Null is harmless.
ORVABASE_EXPORT void memoryRelease(void*& p) noexcept;
/// Compares `size` bytes as unsigned: exactly -1, 0 or 1. No bytes are equal.
ORVABASE_EXPORT OECompareResult memoryCompare(const void* a, const void* b,
                                              unsigned long size) noexcept;
/// Copies `size` bytes; the ranges may overlap. With a size of 0 neither pointer is looked at.
ORVABASE_EXPORT void memoryCopy(void* to, const void* from, unsigned long size) noexcept;
/// Sets `size` bytes to `value`.
ORVABASE_EXPORT void memoryFill(void* p, unsigned long size, char value) noexcept;
/// Sets `size` bytes to 0.
ORVABASE_EXPORT void memoryZero(void* p, unsigned long size) noexcept;

/// @name The same for characters and for pointers to objects
///
/// They count in characters or pointers instead of bytes, and add no room for a terminator.
/// @throws OXMemory_AllocationError as `memoryAllocate` and `memoryReallocate` do; a count whose
/// size in bytes does not fit into an unsigned long is refused, too, with the pointer as it was.
/// @{
ORVABASE_EXPORT void stringAllocate(char*& p, unsigned long count);
ORVABASE_EXPORT void stringAllocate(wchar_t*& p, unsigned long count);
ORVABASE_EXPORT void stringReallocate(char*& p, unsigned long count);
ORVABASE_EXPORT void stringReallocate(wchar_t*& p, unsigned long count);
ORVABASE_EXPORT void stringRelease(char*& p) noexcept;
ORVABASE_EXPORT void stringRelease(wchar_t*& p) noexcept;
ORVABASE_EXPORT void stringCopy(char* to, const char* from, unsigned long count) noexcept;
ORVABASE_EXPORT void stringCopy(wchar_t* to, const wchar_t* from, unsigned long count) noexcept;
ORVABASE_EXPORT void vectorAllocate(OCObject**& p, unsigned long count);
ORVABASE_EXPORT void vectorReallocate(OCObject**& p, unsigned long count);
ORVABASE_EXPORT void vectorRelease(OCObject**& p) noexcept;
/// @}

/// The number of characters before the first zero. The pointer must not be null.
ORVABASE_EXPORT unsigned long stringLength(const char* s) noexcept;
ORVABASE_EXPORT unsigned long stringLength(const wchar_t* s) noexcept;

#endif
