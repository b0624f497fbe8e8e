#include "OCMemoryStream.h"

#include "OCMemory.h"

#include <cstring>
#include <typeinfo>

namespace {

constexpr unsigned long defaultBlockSize = 8192;

unsigned long magnitude(long offset) noexcept {
    const unsigned long bits = static_cast<unsigned long>(offset);
    return offset < 0 ? 0 - bits : bits;
}

} // namespace

OCMemoryStream::OCMemoryStream()
    : buffer(defaultBlockSize), blockSize(defaultBlockSize), position(0), size(0) {}

OCMemoryStream::OCMemoryStream(unsigned long n)
    : buffer(n), blockSize(defaultBlockSize), position(0), size(n) {}

OCMemoryStream::OCMemoryStream(const void* data, unsigned long n)
    : buffer(data, n), blockSize(defaultBlockSize), position(0), size(n) {}

OCMemoryStream::~OCMemoryStream() noexcept = default;

bool OCMemoryStream::read(void* to, unsigned long& count) {
    if (count == 0)
        return true;
    const unsigned long available = size - position;
    if (available == 0)
        return false;
    const unsigned long n = available < count ? available : count;
    std::memcpy(to, buffer.getData() + position, n);
    position += n;
    count = n;
    return true;
}

unsigned long OCMemoryStream::seek(long offset, OEStreamSeek origin) {
    switch (static_cast<int>(origin)) {
    case StreamSeekBeginning:
        position = seekFromBeginning(offset);
        break;
    case StreamSeekCurrent:
        position = seekFromCurrent(offset);
        break;
    case StreamSeekEnd:
        position = seekFromEnd(offset);
        break;
    default:
        break;
    }
    return position;
}

void OCMemoryStream::setSize(unsigned long n) {
    if (n > buffer.getSize())
        buffer.setSize(calculateCapacity(n));
    if (position > n)
        position = n;
    size = n;
}

bool OCMemoryStream::write(const void* from, unsigned long& count) {
    const unsigned long n = count;
    if (n == 0)
        return true;
    if (size - position < n || isDerived())
        growFor(n);
    std::memcpy(buffer.getData() + position, from, n);
    position += n;
    return true;
}

/// Whether a derived class may have its own idea of the size and of how to set it.
bool OCMemoryStream::isDerived() const noexcept {
    return &typeid(*this) != &typeid(OCMemoryStream);
}

/// Makes room for `count` bytes at the position.
void OCMemoryStream::growFor(unsigned long count) {
    const unsigned long end = position + count;
    if (end < count)
        throw OXMemory_AllocationError();
    if (!isDerived()) {
        OCMemoryStream::setSize(end);
        return;
    }
    if (getSize() < end)
        setSize(end);
    if (size - position < count)
        OCMemoryBuffer::throwNoSuchIndex(size);
}

unsigned long OCMemoryStream::calculateCapacity(unsigned long n) const {
    const unsigned long excess = n % blockSize;
    if (excess == 0)
        return n;
    const unsigned long capacity = n - excess + blockSize;
    if (capacity < n)
        throw OXMemory_AllocationError();
    return capacity;
}

OCMemoryBuffer OCMemoryStream::makeBuffer() const {
    if (size == 0)
        throwNoData();
    return OCMemoryBuffer(buffer.getData(), size);
}

OCAnsiString OCMemoryStream::makeString() const {
    if (size == 0)
        throwNoData();
    return OCAnsiString(buffer.getData(), size);
}

void OCMemoryStream::throwNoData() {
    throw OXMemoryStream_NoData();
}

unsigned long OCMemoryStream::seekFromBeginning(long offset) const noexcept {
    if (offset < 1)
        return 0;
    return magnitude(offset) < size ? magnitude(offset) : size;
}

unsigned long OCMemoryStream::seekFromCurrent(long offset) const noexcept {
    const unsigned long distance = magnitude(offset);
    if (offset < 0)
        return distance > position ? 0 : position - distance;
    return distance > size - position ? size : position + distance;
}

unsigned long OCMemoryStream::seekFromEnd(long offset) const noexcept {
    if (offset >= 0)
        return size;
    return size > magnitude(offset) ? size - magnitude(offset) : 0;
}

OXMemoryStream_NoData::OXMemoryStream_NoData() {
    setClass("OXMemoryStream_NoData");
    setMessage("The memory stream does not contain any data");
}
OXMemoryStream_NoData::~OXMemoryStream_NoData() noexcept = default;
