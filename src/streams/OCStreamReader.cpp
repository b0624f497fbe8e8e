#include "OCStreamReader.h"

OCStreamReader::OCStreamReader(OCStream& source)
    : buffer(capacity), stream(source), position(0), filled(0) {}

OCStreamReader::~OCStreamReader() noexcept {
    if (filled <= position)
        return;
    try {
        stream.seek(static_cast<long>(position) - static_cast<long>(filled), StreamSeekCurrent);
    } catch (...) {
        // What was fetched from a stream that cannot seek is lost.
    }
}

/// Asks the stream for more characters when all that it gave have been read.
bool OCStreamReader::fetch() {
    unsigned long n = capacity;
    if (!stream.read(buffer.getData(), n) || n == 0)
        return false;
    position = 0;
    filled = n < capacity ? n : capacity;
    return true;
}
