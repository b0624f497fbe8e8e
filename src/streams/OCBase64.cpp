#include "OCBase64.h"

#include "core/OCKernelsCodec.h"
#include "streams/StreamRuns.h"

#include <cstring>

namespace {

using orvabase::MemoryTranslation;
using orvabase::StreamRuns;
namespace kernels = orvabase::kernels;

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char pad = '=';
constexpr unsigned char padValue = 254;
constexpr unsigned char unknownValue = 255;

constexpr unsigned int lineWidth = 64;
constexpr unsigned long groupsPerLine = 16;

unsigned long smaller(unsigned long a, unsigned long b) noexcept {
    return a < b ? a : b;
}

bool isPassedOver(char c) noexcept {
    return static_cast<signed char>(c) < 32;
}

/// How long the text of `count` bytes is.
unsigned long encodedLength(unsigned long count) noexcept {
    const unsigned long groups = count / 3 + (count % 3 != 0);
    return 4 * groups + 2 * (groups / groupsPerLine);
}

/// How many bytes `count` characters are at most.
unsigned long mostDecoded(unsigned long count) noexcept {
    return count / 4 * 3 + 3;
}

/// Encodes as many whole lines as there are bytes and room for.
StreamRuns::Moved encodeLines(char* to, unsigned long room, const char* from,
                              unsigned long count) noexcept {
    const unsigned long lines = smaller(count / (3 * groupsPerLine), room / (lineWidth + 2));
    kernels::encodeBase64Lines(to, from, lines);
    return {3 * groupsPerLine * lines, (lineWidth + 2) * lines};
}

/// Decodes as many groups in a row, of which nothing is cut, as there is room for.
StreamRuns::Moved decodeGroups(char* to, unsigned long room, const char* from,
                               unsigned long count) noexcept {
    const kernels::Decoded done = kernels::decodeBase64(to, room, from, count);
    return {done.read, done.written};
}

} // namespace

OCBase64EncoderReader::OCBase64EncoderReader(OCStream& source) : reader(source) {}
OCBase64EncoderReader::~OCBase64EncoderReader() noexcept = default;

unsigned int OCBase64EncoderReader::readBlock(char* block) {
    unsigned int count = 0;
    while (count < 3 && reader.readCharacter(block[count]))
        ++count;
    return count;
}

OCBase64EncoderWriter::OCBase64EncoderWriter(OCStream& target) : writer(target), lineLength(0) {}
OCBase64EncoderWriter::~OCBase64EncoderWriter() noexcept = default;

void OCBase64EncoderWriter::writeBlock(const char* block) {
    for (int i = 0; i < 4; ++i)
        writer.writeCharacter(block[i]);
    lineLength += 4;
    if (lineLength >= lineWidth) {
        writer.writeCharacter('\r');
        writer.writeCharacter('\n');
        lineLength = 0;
    }
}

OCBase64Encoder::~OCBase64Encoder() noexcept = default;

void OCBase64Encoder::encode(OCStream& source, OCStream& target) {
    MemoryTranslation translation(source, target, encodedLength);
    OCBase64EncoderReader reader(source);
    OCBase64EncoderWriter writer(target);
    translation.run(reader.reader, writer.writer, encodeLines);
    for (;;) {
        encodeRun(reader, writer);
        char in[3];
        char out[4];
        switch (reader.readBlock(in)) {
        case 3:
            encode3(in, out);
            break;
        case 2:
            encode2(in, out);
            break;
        case 1:
            encode1(in, out);
            break;
        default:
            return;
        }
        writer.writeBlock(out);
    }
}

/// Encodes the blocks for which no stream has to be called: those that were fetched, as far as the
/// text stays below what makes the writer flush. Streams cannot tell this from block after block.
void OCBase64Encoder::encodeRun(OCBase64EncoderReader& reader, OCBase64EncoderWriter& writer) {
    const char* const in = StreamRuns::fetched(reader.reader);
    const unsigned long groups = StreamRuns::fetchedCount(reader.reader) / 3;
    char* const out = StreamRuns::room(writer.writer);
    const unsigned long room = StreamRuns::roomCount(writer.writer);
    unsigned long read = 0;
    unsigned long written = 0;
    for (;;) {
        const unsigned long groupsLeft = groups - read;
        const unsigned long roomLeft = room - written;
        if (writer.lineLength == 0) {
            const unsigned long lines =
                smaller(groupsLeft / groupsPerLine, roomLeft / (lineWidth + 2));
            if (lines > 0) {
                kernels::encodeBase64Lines(out + written, in + 3 * read, lines);
                read += groupsPerLine * lines;
                written += (lineWidth + 2) * lines;
                continue;
            }
        }
        const unsigned long untilLineEnd = (lineWidth - writer.lineLength) / 4;
        unsigned long n = smaller(untilLineEnd, smaller(groupsLeft, roomLeft / 4));
        if (n == untilLineEnd && roomLeft < 4 * n + 2)
            --n;
        if (n == 0)
            break;
        kernels::encodeBase64(out + written, in + 3 * read, n);
        read += n;
        written += 4 * n;
        writer.lineLength += static_cast<unsigned int>(4 * n);
        if (n == untilLineEnd) {
            out[written++] = '\r';
            out[written++] = '\n';
            writer.lineLength = 0;
        }
    }
    StreamRuns::skip(reader.reader, 3 * read);
    StreamRuns::add(writer.writer, written);
}

void OCBase64Encoder::encode1(const char* in, char* out) const noexcept {
    const char group[3] = {in[0], 0, 0};
    encode3(group, out);
    out[2] = pad;
    out[3] = pad;
}

void OCBase64Encoder::encode2(const char* in, char* out) const noexcept {
    const char group[3] = {in[0], in[1], 0};
    encode3(group, out);
    out[3] = pad;
}

void OCBase64Encoder::encode3(const char* in, char* out) const noexcept {
    const unsigned int a = static_cast<unsigned char>(in[0]);
    const unsigned int b = static_cast<unsigned char>(in[1]);
    const unsigned int c = static_cast<unsigned char>(in[2]);
    out[0] = alphabet[a >> 2];
    out[1] = alphabet[(a & 3) << 4 | b >> 4];
    out[2] = alphabet[(b & 15) << 2 | c >> 6];
    out[3] = alphabet[c & 63];
}

OCBase64DecoderReader::OCBase64DecoderReader(OCStream& source) : reader(source) {}
OCBase64DecoderReader::~OCBase64DecoderReader() noexcept = default;

unsigned int OCBase64DecoderReader::readBlock(char* block) {
    unsigned int count = 0;
    char c = 0;
    while (count < 4 && reader.readCharacter(c)) {
        if (!isPassedOver(c))
            block[count++] = c;
    }
    return count;
}

OCBase64DecoderWriter::OCBase64DecoderWriter(OCStream& target) : writer(target) {}
OCBase64DecoderWriter::~OCBase64DecoderWriter() noexcept = default;

void OCBase64DecoderWriter::writeBlock(const char* block, unsigned int count) {
    for (unsigned int i = 0; i < count; ++i)
        writer.writeCharacter(block[i]);
}

OCBase64Decoder::OCBase64Decoder() noexcept {
    initialize();
}

OCBase64Decoder::~OCBase64Decoder() noexcept = default;

void OCBase64Decoder::initialize() noexcept {
    initializeMatrix();
}

void OCBase64Decoder::initializeMatrix() noexcept {
    initializeMatrixUnknown();
    initializeMatrixAlphabet();
    initializeMatrixPad();
}

void OCBase64Decoder::initializeMatrixUnknown() noexcept {
    std::memset(matrix, unknownValue, sizeof matrix);
}

void OCBase64Decoder::initializeMatrixAlphabet() noexcept {
    for (unsigned char i = 0; i < 64; ++i)
        matrix[static_cast<unsigned char>(alphabet[i])] = i;
}

void OCBase64Decoder::initializeMatrixPad() noexcept {
    matrix[static_cast<unsigned char>(pad)] = padValue;
}

void OCBase64Decoder::decode(OCStream& source, OCStream& target) {
    MemoryTranslation translation(source, target, mostDecoded);
    OCBase64DecoderReader reader(source);
    OCBase64DecoderWriter writer(target);
    // A derived class may have built another table.
    const bool isStandard = std::memcmp(matrix, OCBase64Decoder().matrix, sizeof matrix) == 0;
    if (isStandard)
        translation.run(reader.reader, writer.writer, decodeGroups);
    for (;;) {
        if (isStandard)
            decodeRun(reader, writer);
        char in[4];
        char out[3];
        const unsigned int count = length(in, reader.readBlock(in));
        switch (count) {
        case 4:
            decode4(in, out);
            break;
        case 3:
            decode3(in, out);
            break;
        case 2:
            decode2(in, out);
            break;
        default:
            return;
        }
        writer.writeBlock(out, count - 1);
    }
}

/// Decodes the blocks for which no stream has to be called and of which nothing is cut, like
/// `encodeRun`. Characters to be passed over before a block are read as that block would.
void OCBase64Decoder::decodeRun(OCBase64DecoderReader& reader, OCBase64DecoderWriter& writer) {
    const StreamRuns::Moved done =
        decodeGroups(StreamRuns::room(writer.writer), StreamRuns::roomCount(writer.writer),
                     StreamRuns::fetched(reader.reader), StreamRuns::fetchedCount(reader.reader));
    StreamRuns::skip(reader.reader, done.read);
    StreamRuns::add(writer.writer, done.written);
}

unsigned int OCBase64Decoder::length(const char* block, unsigned int count) const noexcept {
    unsigned int n = 0;
    while (n < count && valueOf(block[n]) < padValue)
        ++n;
    return n;
}

void OCBase64Decoder::decode2(const char* in, char* out) const noexcept {
    out[0] = static_cast<char>(valueOf(in[0]) << 2 | valueOf(in[1]) >> 4);
}

void OCBase64Decoder::decode3(const char* in, char* out) const noexcept {
    decode2(in, out);
    out[1] = static_cast<char>(valueOf(in[1]) << 4 | valueOf(in[2]) >> 2);
}

void OCBase64Decoder::decode4(const char* in, char* out) const noexcept {
    decode3(in, out);
    out[2] = static_cast<char>(valueOf(in[2]) << 6 | valueOf(in[3]));
}
