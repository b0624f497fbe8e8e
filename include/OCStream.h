#ifndef ORVABASE_OCSTREAM_H
#define ORVABASE_OCSTREAM_H

#include "OXException.h"

/// Where the offset of a seek counts from. Any other value is legal; each stream says what it does
/// with it.
enum OEStreamSeek : int { StreamSeekBeginning = 0, StreamSeekCurrent = 1, StreamSeekEnd = 2 };

/// The one abstract stream of bytes: four primitive operations, which every concrete stream
/// supplies, and a few more that are built on those four alone.
///
/// Whatever produces or consumes bytes takes an `OCStream&`. The documentation of the primitives is
/// the contract between a stream and its users; a stream that cannot perform one of them (a pipe
/// cannot seek) throws `OXStream_OperationUnsupported` with the operation's name. A stream is used
/// by one thread at a time and cannot be copied.
///
///     OCMemoryStream stream;
///     stream.writeBuffer("hello", 5);
///     stream.setPosition(0);
///     char text[5];
///     stream.readBuffer(text, 5);
class ORVABASE_EXPORT OCStream : public OCObject {
public:
    OCStream() noexcept = default;
    OCStream(const OCStream&) = delete;
    OCStream& operator=(const OCStream&) = delete;
    ~OCStream() override;

    /// Reads up to `count` bytes to `buffer` and sets `count` to the number read, which is at least
    /// one. False at the end of the data; `count` is then as it was. A request of 0 bytes is true
    /// at once.
    virtual bool read(void* buffer, unsigned long& count) = 0;
    /// Moves the position by `offset` bytes counted from `origin` and returns the new position,
    /// counted from the beginning. An offset of 0 from the current position asks for the position.
    virtual unsigned long seek(long offset, OEStreamSeek origin) = 0;
    /// Makes the stream exactly `size` bytes long.
    virtual void setSize(unsigned long size) = 0;
    /// Writes up to `count` bytes from `buffer`, at least one, and sets `count` to the number
    /// written. False when nothing can be written. A request of 0 bytes is true at once.
    virtual bool write(const void* buffer, unsigned long& count) = 0;

    /// The position in bytes: one seek by 0 from the current position.
    unsigned long getPosition() const;
    /// The size in bytes. It costs three seeks (where am I, to the end, back again).
    unsigned long getSize() const;
    /// Whether the size is 0, at the cost of `getSize`.
    bool isEmpty() const { return getSize() == 0; }
    /// Moves to `position`, counted from the beginning: one seek. As a seek takes a signed offset,
    /// a position of 2^63 or more takes further seeks from the current position.
    void setPosition(unsigned long position);

    /// Reads exactly `count` bytes, by as many reads as it takes; none for 0 bytes.
    /// @throws OXStream_ReadError when the data end before; what there was is in `buffer` then.
    void readBuffer(void* buffer, unsigned long count) {
        if (count == 0)
            return;
        unsigned long n = count;
        const bool delivered = read(buffer, n);
        if (!delivered || n < count)
            continueReading(buffer, count, delivered, n);
    }
    /// Writes exactly `count` bytes, by as many writes as it takes; none for 0 bytes.
    /// @throws OXStream_WriteError when a write is refused, or two writes in a row take 0 bytes.
    void writeBuffer(const void* buffer, unsigned long count) {
        if (count == 0)
            return;
        unsigned long n = count;
        const bool taken = write(buffer, n);
        if (!taken || n < count)
            continueWriting(buffer, count, taken, n);
    }

private:
    void continueReading(void* buffer, unsigned long count, bool delivered, unsigned long n);
    void continueWriting(const void* buffer, unsigned long count, bool taken, unsigned long n);
};

/// A stream that discards what is written and has nothing to read.
///
///     OCNullStream nowhere;
///     nowhere.writeBuffer(text, length);
///     nowhere.getSize();                   // 0
class ORVABASE_EXPORT OCNullStream : public OCStream {
public:
    OCNullStream() noexcept = default;
    ~OCNullStream() noexcept override;

    /// False, also for a request of 0 bytes.
    bool read(void* buffer, unsigned long& count) override;
    /// 0.
    unsigned long seek(long offset, OEStreamSeek origin) override;
    /// Does nothing.
    void setSize(unsigned long size) override;
    /// True: everything counts as written.
    bool write(const void* buffer, unsigned long& count) override;
};

/// The family of the streams' failures.
class ORVABASE_EXPORT OXStream : public OXAutoException {
public:
    ~OXStream() noexcept override;

protected:
    OXStream();
};

/// "The stream operation is unsupported", with the operation's name. For streams that cannot
/// perform one of the four primitives.
class ORVABASE_EXPORT OXStream_OperationUnsupported : public OXStream {
public:
    explicit OXStream_OperationUnsupported(const OCAnsiString& operation);
    ~OXStream_OperationUnsupported() noexcept override;
};

/// "Read from the stream failed": the data ended before the bytes asked for.
class ORVABASE_EXPORT OXStream_ReadError : public OXStream {
public:
    OXStream_ReadError();
    ~OXStream_ReadError() noexcept override;
};

/// "Writing to the stream failed": the stream does not take the bytes offered.
class ORVABASE_EXPORT OXStream_WriteError : public OXStream {
public:
    OXStream_WriteError();
    ~OXStream_WriteError() noexcept override;
};

#endif
