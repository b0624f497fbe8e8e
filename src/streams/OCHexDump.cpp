#include "OCHexDump.h"

#include "OCMemory.h"
#include "core/OCKernelsCodec.h"

#include <cstring>

namespace {

namespace kernels = orvabase::kernels;

/// A sum of products, as an allocation failure when it does not fit.
class Size {
public:
    void add(unsigned long count, unsigned long length) {
        unsigned long product = 0;
        if (__builtin_mul_overflow(count, length, &product) ||
            __builtin_add_overflow(total, product, &total))
            throw OXMemory_AllocationError();
    }
    unsigned long getTotal() const { return total; }

private:
    unsigned long total = 0;
};

char* writeText(char* to, const OCAnsiString& text) {
    std::memcpy(to, text.getString(), text.getLength());
    return to + text.getLength();
}

} // namespace

OCHexDump::OCHexDump() : byteSeparator(":"), lineSeparator("\r\n"), lineLength(72) {}

OCHexDump::~OCHexDump() noexcept = default;

void OCHexDump::setByteSeparator(const OCAnsiString& text) {
    byteSeparator = text;
}

void OCHexDump::setLineSeparator(const OCAnsiString& text) {
    lineSeparator = text;
}

/// Writes bytes with a separator behind each of them.
char* OCHexDump::writeBytes(char* to, const char* bytes, unsigned long count) const {
    switch (byteSeparator.getLength()) {
    case 0:
        kernels::encodeHex(to, bytes, count);
        return to + 2 * count;
    case 1:
        kernels::encodeHexSeparated(to, bytes, count, byteSeparator[0]);
        return to + 3 * count;
    default:
        for (; count > 0; --count, ++bytes) {
            kernels::encodeHex(to, bytes, 1);
            to = writeText(to + 2, byteSeparator);
        }
        return to;
    }
}

/// Writes lines of bytes with separators behind all of them.
char* OCHexDump::writeLines(char* to, const char* bytes, unsigned long lines,
                            unsigned long perLine) const {
    if (byteSeparator.getLength() == 1) {
        const unsigned long endCount = lineSeparator.getLength();
        kernels::encodeHexLines(to, bytes, lines, perLine, byteSeparator[0],
                                lineSeparator.getString(), endCount);
        return to + lines * (3 * perLine + endCount);
    }
    for (; lines > 0; --lines, bytes += perLine)
        to = writeText(writeBytes(to, bytes, perLine), lineSeparator);
    return to;
}

OCAnsiString OCHexDump::dumpSingleLine(const void* data, unsigned long size) const {
    OCAnsiString result;
    if (data == nullptr || size == 0)
        return result;
    Size length;
    length.add(size, 2);
    length.add(size - 1, byteSeparator.getLength());
    result.setLength(length.getTotal());
    const char* const bytes = static_cast<const char*>(data);
    char* const to = writeBytes(result.getString(), bytes, size - 1);
    kernels::encodeHex(to, bytes + size - 1, 1);
    return result;
}

OCAnsiString OCHexDump::dumpMultipleLines(const void* data, unsigned long size) const {
    OCAnsiString result;
    if (data == nullptr || size == 0)
        return result;
    // All bytes but the last are followed by a separator and so take the same room.
    const unsigned long separated = size - 1;
    const unsigned long width = 2 + byteSeparator.getLength();
    const bool startsBroken = separated > 0 && width > lineLength;
    const unsigned long perLine = width > lineLength ? 1 : lineLength / width;
    const unsigned long fullLines = separated / perLine;
    const unsigned long rest = separated % perLine;
    // What stands before the last byte on its line, if it does not go to the next.
    const unsigned long before = (rest > 0 || separated == 0 ? rest : perLine) * width;
    const bool lastBreaks = before + 2 > lineLength;
    // The last byte may share the last full line, too.
    const bool sharesFullLine = fullLines > 0 && rest == 0 && !lastBreaks;
    const unsigned long brokenLines = sharesFullLine ? fullLines - 1 : fullLines;
    const unsigned long leftOver = sharesFullLine ? perLine : rest;
    // A line that is begun and not full has room for the last byte.
    const bool breaksLeftOver = lastBreaks && separated == 0;

    Size length;
    length.add(size, 2);
    length.add(separated, byteSeparator.getLength());
    length.add(brokenLines, lineSeparator.getLength());
    length.add(startsBroken, lineSeparator.getLength());
    length.add(breaksLeftOver, lineSeparator.getLength());
    result.setLength(length.getTotal());
    const char* const bytes = static_cast<const char*>(data);
    char* to = result.getString();
    if (startsBroken)
        to = writeText(to, lineSeparator);
    to = writeLines(to, bytes, brokenLines, perLine);
    to = writeBytes(to, bytes + brokenLines * perLine, leftOver);
    if (breaksLeftOver)
        to = writeText(to, lineSeparator);
    kernels::encodeHex(to, bytes + separated, 1);
    return result;
}
