#include "OCMemory.h"

#include "OCAnsiString.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>

OXMemory::~OXMemory() noexcept = default;

OXMemory_AllocationError::~OXMemory_AllocationError() noexcept = default;

OCAnsiString OXMemory_AllocationError::getClass() const {
    return "OXMemory_AllocationError";
}

OCAnsiString OXMemory_AllocationError::getMessage() const {
    return "Memory allocation failure";
}

namespace {

/// The size in bytes of `count` elements.
template<class Element>
unsigned long byteSize(unsigned long count) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): of the element, also where that is a pointer
    constexpr unsigned long elementSize = sizeof(Element);
    if (count > ~0UL / elementSize)
        throw OXMemory_AllocationError();
    return count * elementSize;
}

template<class Element>
void allocateElements(Element*& p, unsigned long count) {
    const unsigned long size = byteSize<Element>(count);
    void* block = nullptr;
    p = nullptr;
    memoryAllocate(block, size);
    p = static_cast<Element*>(block);
}

template<class Element>
void reallocateElements(Element*& p, unsigned long count) {
    const unsigned long size = byteSize<Element>(count);
    void* block = p;
    p = nullptr;
    memoryReallocate(block, size);
    p = static_cast<Element*>(block);
}

template<class Element>
void releaseElements(Element*& p) noexcept {
    void* block = p;
    memoryRelease(block);
    p = nullptr;
}

} // namespace

void memoryAllocate(void*& p, unsigned long size) {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): the one place that allocates
    p = std::malloc(size);
    if (p == nullptr)
        throw OXMemory_AllocationError();
}

void memoryReallocate(void*& p, unsigned long size) {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): the one place that reallocates
    p = std::realloc(p, size);
    if (p == nullptr)
        throw OXMemory_AllocationError();
}

void memoryRelease(void*& p) noexcept {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): the one place that frees
    std::free(p);
    p = nullptr;
}

OECompareResult memoryCompare(const void* a, const void* b, unsigned long size) noexcept {
    if (size == 0)
        return CompareResultEqual;
    const int difference = std::memcmp(a, b, size);
    if (difference < 0)
        return CompareResultLess;
    return difference > 0 ? CompareResultGreater : CompareResultEqual;
}

void memoryCopy(void* to, const void* from, unsigned long size) noexcept {
    if (size != 0)
        std::memmove(to, from, size);
}

void memoryFill(void* p, unsigned long size, char value) noexcept {
    if (size != 0)
        std::memset(p, value, size);
}

void memoryZero(void* p, unsigned long size) noexcept {
    memoryFill(p, size, 0);
}

void stringAllocate(char*& p, unsigned long count) {
    allocateElements(p, count);
}

void stringAllocate(wchar_t*& p, unsigned long count) {
    allocateElements(p, count);
}

void stringReallocate(char*& p, unsigned long count) {
    reallocateElements(p, count);
}

void stringReallocate(wchar_t*& p, unsigned long count) {
    reallocateElements(p, count);
}

void stringRelease(char*& p) noexcept {
    releaseElements(p);
}

void stringRelease(wchar_t*& p) noexcept {
    releaseElements(p);
}

void stringCopy(char* to, const char* from, unsigned long count) noexcept {
    memoryCopy(to, from, count);
}

void stringCopy(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    memoryCopy(to, from, count * sizeof(wchar_t));
}

unsigned long stringLength(const char* s) noexcept {
    return std::strlen(s);
}

unsigned long stringLength(const wchar_t* s) noexcept {
    return std::wcslen(s);
}

void vectorAllocate(OCObject**& p, unsigned long count) {
    allocateElements(p, count);
}

void vectorReallocate(OCObject**& p, unsigned long count) {
    reallocateElements(p, count);
}

void vectorRelease(OCObject**& p) noexcept {
    releaseElements(p);
}
