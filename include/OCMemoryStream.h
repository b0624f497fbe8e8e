#ifndef ORVABASE_OCMEMORYSTREAM_H
#define ORVABASE_OCMEMORYSTREAM_H

#include "OCMemoryBuffer.h"
#include "OCStream.h"

class OCStringArray;

namespace orvabase {
class MemoryTranslation;
}

/// A stream over memory that grows as it is written.
///
/// The storage grows in whole blocks and never shrinks before the stream is destroyed. The position
/// is always within the stream: seeking clamps it to 0 … size instead of failing. For use by one
/// thread at a time.
///
///     OCMemoryStream stream;
///     stream.writeBuffer("key=", 4);
///     stream.writeBuffer("value", 5);
///     OCAnsiString line = stream.makeString();   // key=value
class ORVABASE_EXPORT OCMemoryStream : public OCStream {
public:
    /// An empty stream with 8192 bytes of storage.
    /// @throws OXMemory_AllocationError (so do all constructors).
    OCMemoryStream();
    /// A stream of `n` bytes, which have no defined value yet, at position 0.
    explicit OCMemoryStream(unsigned long n);
    /// A stream over a copy of `n` bytes of `data`, at position 0.
    /// @throws OXMemoryBuffer_NullPointer when `data` is null, also when `n` is 0.
    OCMemoryStream(const void* data, unsigned long n);
    ~OCMemoryStream() noexcept override;

    /// Copies up to `count` bytes from the position on; false, with `count` as it was, at the end.
    bool read(void* to, unsigned long& count) override;
    /// Moves the position, which stops at 0 and at the size: a memory stream cannot be positioned
    /// beyond its end, and no offset is an error. An unknown origin leaves the position as it is.
    unsigned long seek(long offset, OEStreamSeek origin) override;
    /// Makes the stream `n` bytes long. Bytes that come into being have no defined value; a
    /// position beyond the new end moves to it. Storage grows to the next whole block and is not
    /// given back.
    /// @throws OXMemory_AllocationError; the stream is then as it was.
    void setSize(unsigned long n) override;
    /// Writes all `count` bytes at the position and grows the stream (by `setSize`) where needed.
    /// Never short, never false.
    ///
    /// Note: a derived class may override `setSize`; one that makes the stream too short is
    /// answered by `OXMemoryBuffer_NoSuchIndex`.
    /// @throws OXMemory_AllocationError; the stream is then as it was.
    bool write(const void* from, unsigned long& count) override;

    /// The size of the storage in bytes.
    unsigned long getCapacity() const { return buffer.getSize(); }
    /// The unit in bytes by which the storage grows: 8192 at first.
    unsigned long getBlockSize() const { return blockSize; }
    /// Sets the unit for the next growth; 0 counts as 1.
    void setBlockSize(unsigned long n) { blockSize = n == 0 ? 1 : n; }
    /// `n` rounded up to a multiple of the block size; 0 stays 0.
    /// @throws OXMemory_AllocationError when the multiple does not fit into an unsigned long.
    unsigned long calculateCapacity(unsigned long n) const;

    /// A new buffer with a copy of all bytes of the stream, wherever the position is.
    /// @throws OXMemoryStream_NoData when the stream is empty, OXMemory_AllocationError
    OCMemoryBuffer makeBuffer() const;
    /// A new string of all bytes of the stream, zero bytes included, wherever the position is.
    /// @throws OXMemoryStream_NoData when the stream is empty, OXMemory_AllocationError
    OCAnsiString makeString() const;
    /// Throws `OXMemoryStream_NoData`.
    [[noreturn]] static void throwNoData();

    /// Where a seek from the beginning, the position or the end would lead; nothing is moved.
    unsigned long seekFromBeginning(long offset) const noexcept;
    unsigned long seekFromCurrent(long offset) const noexcept;
    unsigned long seekFromEnd(long offset) const noexcept;

private:
    friend class OCStringArray; // hands out the storage itself
    friend class orvabase::MemoryTranslation;

    bool isDerived() const noexcept;
    void growFor(unsigned long count);

    OCMemoryBuffer buffer;
    unsigned long blockSize;
    unsigned long position;
    unsigned long size;
};

/// "The memory stream does not contain any data".
class ORVABASE_EXPORT OXMemoryStream_NoData : public OXStream {
public:
    OXMemoryStream_NoData();
    ~OXMemoryStream_NoData() noexcept override;
};

#endif
