#include "OCMemoryBuffer.h"

#include "OCMemory.h"
#include "OCStringConversion.h"

#include <functional>

OXMemoryBuffer::OXMemoryBuffer() = default;

OXMemoryBuffer::~OXMemoryBuffer() noexcept = default;

OXMemoryBuffer_NoData::OXMemoryBuffer_NoData() {
    setClass("OXMemoryBuffer_NoData");
    setMessage("The memory buffer does not contain any data");
}

OXMemoryBuffer_NoData::~OXMemoryBuffer_NoData() noexcept = default;

OXMemoryBuffer_NoSuchIndex::OXMemoryBuffer_NoSuchIndex(unsigned long index) {
    setClass("OXMemoryBuffer_NoSuchIndex");
    setMessage("Memory buffer index out of bounds");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXMemoryBuffer_NoSuchIndex::~OXMemoryBuffer_NoSuchIndex() noexcept = default;

OXMemoryBuffer_NullPointer::OXMemoryBuffer_NullPointer() {
    setClass("OXMemoryBuffer_NullPointer");
    setMessage("Unexpected null pointer");
}

OXMemoryBuffer_NullPointer::~OXMemoryBuffer_NullPointer() noexcept = default;

OCMemoryBuffer::OCMemoryBuffer(unsigned long initialSize) : OCMemoryBuffer() {
    setSize(initialSize);
}

// NOLINTNEXTLINE(misc-no-recursion): once, for the copy in assign()
OCMemoryBuffer::OCMemoryBuffer(const void* bytes, unsigned long count) : OCMemoryBuffer() {
    assign(bytes, count);
}

OCMemoryBuffer::OCMemoryBuffer(const OCMemoryBuffer& other) : OCMemoryBuffer() {
    assign(other);
}

OCMemoryBuffer::~OCMemoryBuffer() noexcept {
    clear();
}

// NOLINTNEXTLINE(misc-no-recursion): once, with a copy
OCMemoryBuffer& OCMemoryBuffer::assign(const OCMemoryBuffer& other) {
    if (this == &other)
        return *this;
    if (other.size != 0)
        return assign(other.data, other.size);
    clear();
    return *this;
}

// NOLINTNEXTLINE(misc-no-recursion): once, with a copy
OCMemoryBuffer& OCMemoryBuffer::assign(const void* bytes, unsigned long count) {
    if (bytes == nullptr)
        throw OXMemoryBuffer_NullPointer();
    if (count == 0) {
        clear();
    } else if (checkRange(bytes, count)) {
        const OCMemoryBuffer copy(bytes, count);
        return assign(copy);
    } else {
        setSize(count);
        memoryCopy(data, bytes, count);
    }
    return *this;
}

void OCMemoryBuffer::clear() noexcept {
    if (size > sizeof localBuffer)
        stringRelease(data);
    data = nullptr;
    size = 0;
}

void OCMemoryBuffer::setSize(unsigned long newSize) {
    if (newSize == size)
        return;
    if (newSize == 0) {
        clear();
        return;
    }
    // Through a local pointer: a refused request must not lose the bytes.
    char* block = data;
    if (newSize > sizeof localBuffer) {
        if (size > sizeof localBuffer) {
            stringReallocate(block, newSize);
        } else {
            stringAllocate(block, newSize);
            stringCopy(block, localBuffer, size);
        }
        data = block;
    } else {
        data = localBuffer;
        if (size > sizeof localBuffer) {
            stringCopy(localBuffer, block, newSize);
            stringRelease(block);
        }
    }
    size = newSize;
}

OECompareResult OCMemoryBuffer::compare(const void* bytes, unsigned long count) const {
    if (bytes == nullptr)
        throw OXMemoryBuffer_NullPointer();
    if (size != count)
        return size < count ? CompareResultLess : CompareResultGreater;
    return memoryCompare(data, bytes, size);
}

OECompareResult OCMemoryBuffer::compare(const OCMemoryBuffer& other) const {
    if (other.size == 0)
        return size == 0 ? CompareResultEqual : CompareResultGreater;
    return compare(other.data, other.size);
}

bool OCMemoryBuffer::checkPointer(const void* p) const noexcept {
    return checkRange(p, 1);
}

bool OCMemoryBuffer::checkRange(const void* p, unsigned long n) const noexcept {
    const char* const first = static_cast<const char*>(p);
    // std::less orders pointers into unrelated blocks, too.
    const std::less<const char*> before;
    if (n == 0 || size == 0 || before(first, data) || !before(first, data + size))
        return false;
    return n <= size - static_cast<unsigned long>(first - data);
}

void OCMemoryBuffer::throwNoData() {
    throw OXMemoryBuffer_NoData();
}

void OCMemoryBuffer::throwNoSuchIndex(unsigned long index) {
    throw OXMemoryBuffer_NoSuchIndex(index);
}
