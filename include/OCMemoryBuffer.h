#ifndef ORVABASE_OCMEMORYBUFFER_H
#define ORVABASE_OCMEMORYBUFFER_H

#include "OXException.h"

/// A resizable block of raw bytes with an exact size: there is no spare capacity.
///
/// Up to 512 bytes are held inside the object; more live in a heap block that is exactly as large
/// as the content, so every change of the size above 512 bytes is one allocation call. An empty
/// buffer has no data, and asking for its data is an error. Copies are deep. Not for use by several
/// threads at once.
///
///     OCMemoryBuffer packet("\x01\x02\x03", 3);
///     packet.setSize(4);
///     packet[3] = 0x7f;
///     packet.compare("\x01\x02", 2);   // 1: a larger buffer is greater, whatever it holds
class ORVABASE_EXPORT OCMemoryBuffer : public OCObject {
public:
    /// An empty buffer.
    OCMemoryBuffer() noexcept : size(0), data(nullptr) {}
    /// `initialSize` bytes that have no defined value.
    /// @throws OXMemory_AllocationError
    explicit OCMemoryBuffer(unsigned long initialSize);
    /// A copy of `count` bytes.
    /// @throws OXMemoryBuffer_NullPointer when `bytes` is null (also for 0 bytes),
    /// OXMemory_AllocationError
    OCMemoryBuffer(const void* bytes, unsigned long count);
    OCMemoryBuffer(const OCMemoryBuffer& other);
    OCMemoryBuffer& operator=(const OCMemoryBuffer& other) { return assign(other); }
    ~OCMemoryBuffer() noexcept override;

    /// Takes a copy of `other`'s bytes.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    OCMemoryBuffer& assign(const OCMemoryBuffer& other);
    /// Takes a copy of `count` bytes, which may lie in this buffer.
    /// @throws OXMemoryBuffer_NullPointer when `bytes` is null (also for 0 bytes),
    /// OXMemory_AllocationError; nothing is changed then.
    OCMemoryBuffer& assign(const void* bytes, unsigned long count);
    /// Makes the buffer empty and gives a heap block back.
    void clear() noexcept;

    /// The number of bytes.
    unsigned long getSize() const { return size; }
    /// Sets the number of bytes and keeps the first ones; bytes that come into being have no
    /// defined value.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setSize(unsigned long newSize);

    /// The bytes, valid until the next change of the size.
    /// @throws OXMemoryBuffer_NoData when the buffer is empty.
    char* getData() {
        if (data == nullptr)
            throwNoData();
        return data;
    }
    const char* getData() const {
        if (data == nullptr)
            throwNoData();
        return data;
    }
    /// The byte at `index`.
    /// @throws OXMemoryBuffer_NoSuchIndex when `index` is not below the size.
    char& operator[](unsigned long index) {
        if (index >= size)
            throwNoSuchIndex(index);
        return data[index];
    }
    char operator[](unsigned long index) const {
        if (index >= size)
            throwNoSuchIndex(index);
        return data[index];
    }

    /// Compares with `count` bytes.
    ///
    /// Note: the sizes decide first, a smaller buffer is less; only bytes of equal sizes are looked
    /// at (as unsigned values).
    /// @throws OXMemoryBuffer_NullPointer when `bytes` is null.
    OECompareResult compare(const void* bytes, unsigned long count) const;
    OECompareResult compare(const OCMemoryBuffer& other) const;
    bool operator==(const OCMemoryBuffer& other) const {
        return compare(other) == CompareResultEqual;
    }
    bool operator!=(const OCMemoryBuffer& other) const { return !(*this == other); }

    /// Whether `p` points to one of the bytes.
    bool checkPointer(const void* p) const noexcept;
    /// Whether the first and the last of the `n` bytes from `p` on are bytes of this buffer; false
    /// for 0 bytes.
    bool checkRange(const void* p, unsigned long n) const noexcept;

    /// Throws `OXMemoryBuffer_NoData`.
    [[noreturn]] static void throwNoData();
    /// Throws `OXMemoryBuffer_NoSuchIndex` for `index`.
    [[noreturn]] static void throwNoSuchIndex(unsigned long index);

private:
    char localBuffer[512];
    unsigned long size;
    char* data;
};

/// The family of the memory buffer's failures.
class ORVABASE_EXPORT OXMemoryBuffer : public OXAutoException {
public:
    ~OXMemoryBuffer() noexcept override;

protected:
    OXMemoryBuffer();
};

/// "The memory buffer does not contain any data".
class ORVABASE_EXPORT OXMemoryBuffer_NoData : public OXMemoryBuffer {
public:
    OXMemoryBuffer_NoData();
    ~OXMemoryBuffer_NoData() noexcept override;
};

/// "Memory buffer index out of bounds", with the index.
class ORVABASE_EXPORT OXMemoryBuffer_NoSuchIndex : public OXMemoryBuffer {
public:
    explicit OXMemoryBuffer_NoSuchIndex(unsigned long index);
    ~OXMemoryBuffer_NoSuchIndex() noexcept override;
};

/// "Unexpected null pointer".
class ORVABASE_EXPORT OXMemoryBuffer_NullPointer : public OXMemoryBuffer {
public:
    OXMemoryBuffer_NullPointer();
    ~OXMemoryBuffer_NullPointer() noexcept override;
};

#endif
