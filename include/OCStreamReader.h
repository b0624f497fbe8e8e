#ifndef ORVABASE_OCSTREAMREADER_H
#define ORVABASE_OCSTREAMREADER_H

#include "OCMemoryBuffer.h"
#include "OCStream.h"

namespace orvabase {
class StreamRuns;
}

/// Reads a stream character by character, with one character of look-ahead.
///
/// The stream is asked for 4096 bytes at a time. What has been fetched and not been read is given
/// back when the reader goes: it seeks the stream to just behind the last character read. While a
/// reader lives, the stream's own position says nothing to anybody else. The stream stays the
/// caller's and must outlive the reader. For use by one thread at a time.
///
///     OCMemoryStream stream("key=value", 9);
///     OCAnsiString key;
///     {
///         OCStreamReader reader(stream);
///         char c;
///         while (reader.readCharacter(c) && c != '=')
///             key.append(c);
///     }
///     stream.getPosition();   // 4
class ORVABASE_EXPORT OCStreamReader : public OCObject {
public:
    /// A reader of `source`, which is not asked for anything yet.
    /// @throws OXMemory_AllocationError
    explicit OCStreamReader(OCStream& source);
    OCStreamReader(const OCStreamReader&) = delete;
    OCStreamReader& operator=(const OCStreamReader&) = delete;
    /// Gives back what was not read, by one seek; none when there is nothing to give back.
    ///
    /// Note: a stream that cannot seek keeps what was fetched from it; its exception is discarded.
    ~OCStreamReader() noexcept override;

    /// Tells the next character without reading it: true and the character in `c`, or false at the
    /// end of the data. Fetches from the stream, by one read, only when nothing is left of what was
    /// fetched before.
    ///
    /// Note: the end is not remembered; the stream is asked again each time.
    ///
    /// Exceptions of the stream pass through; the reader is then as it was.
    bool previewCharacter(char& c) {
        if (position >= filled && !fetch())
            return false;
        c = buffer.getData()[position];
        return true;
    }
    /// The same, and goes on to the next character.
    bool readCharacter(char& c) {
        if (position >= filled && !fetch())
            return false;
        const unsigned long at = position;
        position = at + 1;
        c = buffer.getData()[at];
        return true;
    }

private:
    friend class orvabase::StreamRuns;

    static constexpr unsigned long capacity = 4096;

    // Without the character, so that the caller's may stay in a register.
    bool fetch();

    OCMemoryBuffer buffer;
    OCStream& stream;
    unsigned long position;
    unsigned long filled;
};

#endif
