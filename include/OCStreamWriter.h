#ifndef ORVABASE_OCSTREAMWRITER_H
#define ORVABASE_OCSTREAMWRITER_H

#include "OCMemoryBuffer.h"
#include "OCStream.h"

namespace orvabase {
class StreamRuns;
}

/// Writes a stream character by character.
///
/// Characters are collected and written 4096 at a time; what is waiting is written by `flush` and
/// when the writer goes. The stream stays the caller's and must outlive the writer. For use by one
/// thread at a time.
///
///     OCMemoryStream stream;
///     OCStreamWriter writer(stream);
///     writer.writeCharacter('o');
///     writer.writeCharacter('k');
///     writer.flush();
///     stream.makeString();   // ok
class ORVABASE_EXPORT OCStreamWriter : public OCObject {
public:
    /// A writer of `target`, to which nothing is written yet.
    /// @throws OXMemory_AllocationError
    explicit OCStreamWriter(OCStream& target);
    OCStreamWriter(const OCStreamWriter&) = delete;
    OCStreamWriter& operator=(const OCStreamWriter&) = delete;
    /// Flushes.
    ///
    /// Note: an exception of the stream is discarded. To learn about it, `flush` before.
    ~OCStreamWriter() noexcept override;

    /// Adds a character, and flushes when it is the 4096th that waits.
    ///
    /// Note: if that flush is refused, the character is nevertheless taken. The next call tries the
    /// flush again first, and takes its character only when it succeeds.
    /// @throws OXStream_WriteError; exceptions of the stream pass through.
    void writeCharacter(char c) {
        const unsigned long n = count;
        if (n >= capacity - 1) {
            writeLast(c);
            return;
        }
        buffer.getData()[n] = c;
        count = n + 1;
    }
    /// Writes what is waiting (`OCStream::writeBuffer`); does nothing when nothing is.
    ///
    /// Note: when the stream fails half way, all of it is still waiting, so the part that the
    /// stream had taken is written again by the next flush.
    /// @throws OXStream_WriteError; exceptions of the stream pass through.
    void flush();

private:
    friend class orvabase::StreamRuns;

    static constexpr unsigned long capacity = 4096;

    void writeLast(char c);

    OCMemoryBuffer buffer;
    OCStream& stream;
    unsigned long count;
};

#endif
