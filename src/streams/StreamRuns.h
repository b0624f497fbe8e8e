#ifndef ORVABASE_STREAMRUNS_H
#define ORVABASE_STREAMRUNS_H

#include "OCMemory.h"
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
    /// The sizes of the buffers.
    static constexpr unsigned long readerCapacity = OCStreamReader::capacity;
    static constexpr unsigned long writerCapacity = OCStreamWriter::capacity;

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
};

/// Translates one memory stream into another without the copies to and from the buffers of a reader
/// and a writer: the calls between these and such streams nobody sees. Between other streams it
/// does nothing.
///
/// It is made before the reader and the writer and lives longer. In the end the streams are as if
/// all had gone through the buffers.
class MemoryTranslation {
public:
    /// `most(count)` is how many characters at most become of `count`. There must be room for them,
    /// so that nothing can fail later on: characters that still wait in the writer stand already in
    /// the target's storage.
    template<class Most>
    MemoryTranslation(OCStream& from, OCStream& to, const Most& most) noexcept
        : source(asMemory(from)), target(asMemory(to)), capacityBefore(0) {
        if (source == nullptr || target == nullptr || source == target ||
            source->position == source->size || !reserve(most(source->size - source->position)))
            target = nullptr;
    }
    MemoryTranslation(const MemoryTranslation&) = delete;
    MemoryTranslation& operator=(const MemoryTranslation&) = delete;
    /// Gives back what was reserved and not needed.
    ~MemoryTranslation() {
        if (target != nullptr && target->buffer.getSize() != capacityBefore)
            tryCapacity(target->size);
    }

    /// Begins, before the reader or the writer has been used. `run(to, room, from, count)`
    /// translates as much as it can, and changes nothing else in the room.
    template<class Run>
    void run(OCStreamReader& reader, OCStreamWriter& writer, const Run& run) {
        if (target == nullptr)
            return;
        char* const to = target->buffer.getData() + target->position;
        const StreamRuns::Moved moved =
            run(to, target->buffer.getSize() - target->position,
                source->buffer.getData() + source->position, source->size - source->position);

        const unsigned long inBlock = moved.read % StreamRuns::readerCapacity;
        source->position += moved.read - inBlock;
        if (inBlock != 0 && StreamRuns::fetch(reader))
            StreamRuns::skip(reader, inBlock);
        const unsigned long waiting = moved.written % StreamRuns::writerCapacity;
        const unsigned long flushed = moved.written - waiting;
        target->position += flushed;
        if (target->size < target->position)
            target->size = target->position;
        std::memcpy(StreamRuns::room(writer), to + flushed, waiting);
        StreamRuns::add(writer, waiting);
    }

private:
    /// The stream if it is a memory stream and of no derived class.
    static OCMemoryStream* asMemory(OCStream& stream) noexcept {
        return &typeid(stream) == &typeid(OCMemoryStream) ? static_cast<OCMemoryStream*>(&stream)
                                                          : nullptr;
    }

    bool reserve(unsigned long count) noexcept {
        capacityBefore = target->buffer.getSize();
        return count <= ~0UL - target->position && (target->position + count <= capacityBefore ||
                                                    tryCapacity(target->position + count));
    }

    /// Gives the target the storage that it would have if it had grown to `size` step by step.
    bool tryCapacity(unsigned long size) noexcept {
        try {
            const unsigned long grown = target->calculateCapacity(size);
            target->buffer.setSize(size > capacityBefore ? grown : capacityBefore);
            return true;
        } catch (const OXMemory_AllocationError&) {
            return false;
        }
    }

    OCMemoryStream* source;
    OCMemoryStream* target;
    unsigned long capacityBefore;
};

} // namespace orvabase

#endif
