#include "OCStreamWriter.h"

OCStreamWriter::OCStreamWriter(OCStream& target) : buffer(capacity), stream(target), count(0) {}

OCStreamWriter::~OCStreamWriter() noexcept {
    try {
        flush();
    } catch (...) {
        // Who wants to know flushes before.
    }
}

void OCStreamWriter::flush() {
    if (count == 0)
        return;
    stream.writeBuffer(buffer.getData(), count);
    count = 0;
}

/// Writes a character that fills the buffer, or that finds it full because a flush was refused.
void OCStreamWriter::writeLast(char c) {
    if (count == capacity)
        flush();
    buffer.getData()[count++] = c;
    if (count == capacity)
        flush();
}
