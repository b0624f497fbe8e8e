#ifndef ORVABASE_STREAMRUNS_H
#define ORVABASE_STREAMRUNS_H

#include "OCStreamReader.h"
#include "OCStreamWriter.h"

#include <cstring>

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
};

} // namespace orvabase

#endif
