#ifndef ORVABASE_STREAMRUNS_H
#define ORVABASE_STREAMRUNS_H

#include "OCMemoryStream.h"
#include "OCStreamReader.h"
#include "OCStreamWriter.h"

#include <cstring>
#include <typeinfo>

namespace orvabase {

/// Several characters at once from a reader or to a writer, for what the library does in runs.
///
/// The stream sees the same calls at the same points as from `readCharacter` and `writeCharacter`
/// of each character, as long as the user keeps to the order in which those would come.
class StreamRuns {
public:
    /// The characters that were fetched and not yet read; they stay unread.
    static const char* fetched(const OCStreamReader& reader) {
        return reader.buffer.getData() + reader.position;
    }
    static unsigned long fetchedCount(const OCStreamReader& reader) {
        return reader.filled - reader.position;
    }
    /// Fetches when nothing is left, as `previewCharacter` does. False at the end of the data.
    static bool fetch(OCStreamReader& reader) {
        return reader.position < reader.filled || reader.fetch();
    }
    /// Counts `n` of the fetched characters as read.
    static void skip(OCStreamReader& reader, unsigned long n) { reader.position += n; }

    /// Where the next characters go, and how many can go there before the next flush comes: the
    /// one after them is to be written by `writeCharacter`. May be 0.
    static char* room(OCStreamWriter& writer) { return writer.buffer.getData() + writer.count; }
    static unsigned long roomCount(const OCStreamWriter& writer) {
        return writer.count < OCStreamWriter::capacity ? OCStreamWriter::capacity - 1 - writer.count
                                                       : 0;
    }
    /// Counts `n` characters, put into the room, as written.
    static void add(OCStreamWriter& writer, unsigned long n) { writer.count += n; }
    /// Writes `n` characters.
    static void write(OCStreamWriter& writer, const char* text, unsigned long n) {
        for (;;) {
            const unsigned long most = roomCount(writer);
            const unsigned long taken = n < most ? n : most;
            std::memcpy(room(writer), text, taken);
            add(writer, taken);
            if (taken == n)
                return;
            writer.writeCharacter(text[taken]);
            text += taken + 1;
            n -= taken + 1;
        }
    }

    /// How many characters were read and how many written.
    struct Moved {
        unsigned long read;
        unsigned long written;
    };
    /// Begins to translate all that a reader reads into what a writer writes, before either has
    /// been used: between memory streams, whose calls nobody sees, in one go and without the
    /// copies to and from the buffers. Between others it does nothing.
    ///
    /// `run(to, room, from, count)` translates as much as it can; all of the room may be changed.
    /// Afterwards reader, writer and streams are as if it had been done through the buffers.
    template<class Run>
    static void translateMemory(OCStreamReader& reader, OCStreamWriter& writer, const Run& run) {
        OCMemoryStream* const source = asMemory(reader.stream);
        OCMemoryStream* const target = asMemory(writer.stream);
        // Only behind the end of the target have bytes no value that could be lost, and only in the
        // storage that is there can nothing fail.
        if (source == nullptr || target == nullptr || source == target ||
            target->position != target->size)
            return;
        const unsigned long count = source->size - source->position;
        const unsigned long free = target->buffer.getSize() - target->size;
        if (count == 0 || free == 0)
            return;
        char* const to = target->buffer.getData() + target->size;
        const Moved moved = run(to, free, source->buffer.getData() + source->position, count);

        const unsigned long inBlock = moved.read % OCStreamReader::capacity;
        source->position += moved.read - inBlock;
        if (inBlock != 0) {
            reader.fetch();
            skip(reader, inBlock);
        }
        const unsigned long waiting = moved.written % OCStreamWriter::capacity;
        const unsigned long flushed = moved.written - waiting;
        target->size += flushed;
        target->position = target->size;
        std::memcpy(room(writer), to + flushed, waiting);
        add(writer, waiting);
    }

private:
    /// The stream if it is a memory stream and of no derived class.
    static OCMemoryStream* asMemory(OCStream& stream) {
        return &typeid(stream) == &typeid(OCMemoryStream) ? static_cast<OCMemoryStream*>(&stream)
                                                          : nullptr;
    }
};

} // namespace orvabase

#endif
