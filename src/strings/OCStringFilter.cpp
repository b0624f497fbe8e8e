#include "OCStringFilter.h"

#include "OCMemory.h"
#include "core/OCKernels.h"
#include "streams/StreamRuns.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

using orvabase::StreamRuns;

OXStringFilter::OXStringFilter() = default;

OXStringFilter::~OXStringFilter() noexcept = default;

OXStringFilter_DecodeError::OXStringFilter_DecodeError() {
    setClass("OXStringFilter_DecodeError");
    setMessage("Error while decoding the string");
}

OXStringFilter_DecodeError::~OXStringFilter_DecodeError() noexcept = default;

OXStringFilter_EncodeError::OXStringFilter_EncodeError() {
    setClass("OXStringFilter_EncodeError");
    setMessage("Error while decoding the string");
}

OXStringFilter_EncodeError::~OXStringFilter_EncodeError() noexcept = default;

namespace {

/// The results of reading one character.
constexpr unsigned int ended = 0xffffffff;
constexpr unsigned int skipped = 0;
constexpr unsigned int stored = 1;

constexpr bool isIa5(unsigned char byte) {
    return byte < 128;
}

constexpr bool isNumeric(unsigned char byte) {
    return (byte >= '0' && byte <= '9') || byte == ' ';
}

constexpr bool isPrintable(unsigned char byte) {
    return isNumeric(byte) || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           byte == '\'' || byte == '(' || byte == ')' || byte == '+' || byte == ',' ||
           byte == '-' || byte == '.' || byte == '/' || byte == ':' || byte == '=' || byte == '?';
}

constexpr bool isVisible(unsigned char byte) {
    return byte >= 32 && byte <= 126;
}

constexpr bool isOctet(unsigned char) {
    return true;
}

/// Whether a byte is not a continuation byte of UTF-8.
constexpr bool beginsCharacter(unsigned char byte) {
    return (byte & 0xc0) != 0x80;
}

/// What a filter of the library makes of each byte.
struct Repertoire {
    bool valid[256];  ///< whether it belongs to the repertoire
    char masked[256]; ///< itself when it does, otherwise the mask byte
    char mask;
};

constexpr Repertoire makeRepertoire(bool (*test)(unsigned char), char mask) {
    Repertoire repertoire = {};
    for (unsigned int i = 0; i < 256; ++i) {
        const unsigned char byte = static_cast<unsigned char>(i);
        repertoire.valid[i] = test(byte);
        repertoire.masked[i] = test(byte) ? static_cast<char>(byte) : mask;
    }
    repertoire.mask = mask;
    return repertoire;
}

constexpr Repertoire octets = makeRepertoire(isOctet, '.');
constexpr Repertoire ia5 = makeRepertoire(isIa5, '.');
constexpr Repertoire numeric = makeRepertoire(isNumeric, ' ');
constexpr Repertoire printable = makeRepertoire(isPrintable, '.');
constexpr Repertoire visible = makeRepertoire(isVisible, '.');
/// The bytes that a text in UTF-8 reads as one character each.
constexpr Repertoire beginnings = makeRepertoire(beginsCharacter, '.');

/// The repertoire of one of the library's own filters. Null for any other, whose operations have
/// to be called for each character.
const Repertoire* findRepertoire(const OCAbstractStringFilter& filter) {
    static const struct {
        const std::type_info& type;
        const Repertoire& repertoire;
    } filters[] = {
        {typeid(OCOctetStringFilter), octets},    {typeid(OCT61StringFilter), octets},
        {typeid(OCUtf8StringFilter), ia5},        {typeid(OCIa5StringFilter), ia5},
        {typeid(OCNumericStringFilter), numeric}, {typeid(OCPrintableStringFilter), printable},
        {typeid(OCVisibleStringFilter), visible}};
    for (const auto& known : filters) {
        if (typeid(filter) == known.type)
            return &known.repertoire;
    }
    return nullptr;
}

bool isUtf8Filter(const OCAbstractStringFilter& filter) {
    return typeid(filter) == typeid(OCUtf8StringFilter);
}

/// How a filter of the library reads.
struct Reading {
    const bool* passed;  ///< the bytes that do not end the text
    const bool* kept;    ///< of these, the bytes that produce a character
    const char* outcome; ///< and which one
    bool refuses;        ///< whether the end of the text is an error
};

Reading makeReading(const OCAbstractStringFilter& filter, const Repertoire& repertoire) {
    if (isUtf8Filter(filter))
        return {octets.valid, beginnings.valid, ia5.masked, false};
    const int mode = filter.getMode();
    if (mode == StringFilterModeReplace)
        return {octets.valid, octets.valid, repertoire.masked, false};
    if (mode == StringFilterModeSkip)
        return {octets.valid, repertoire.valid, repertoire.masked, false};
    return {repertoire.valid, octets.valid, octets.masked, mode == StringFilterModeRefuse};
}

unsigned char asByte(char c) {
    return static_cast<unsigned char>(c);
}

/// How many of the `count` characters come before one that ends the text.
unsigned long countPassed(const Reading& reading, const char* text, unsigned long count) {
    if (reading.passed == octets.valid)
        return count;
    unsigned long i = 0;
    while (i < count && reading.passed[asByte(text[i])])
        ++i;
    return i;
}

/// Puts `masked` for each of `count` characters at `to`.
void maskTable(char* to, const char* masked, const char* from, unsigned long count) {
    unsigned long i = 0;
    // Four at a time: each takes a cycle then, and nearly two otherwise.
    for (; i + 4 <= count; i += 4) {
        const char a = masked[asByte(from[i])];
        const char b = masked[asByte(from[i + 1])];
        const char c = masked[asByte(from[i + 2])];
        const char d = masked[asByte(from[i + 3])];
        to[i] = a;
        to[i + 1] = b;
        to[i + 2] = c;
        to[i + 3] = d;
    }
    for (; i < count; ++i)
        to[i] = masked[asByte(from[i])];
}

/// The same for the mask of IA5, eight at a time.
void maskIa5(char* to, const char* from, unsigned long count) {
    constexpr unsigned long each = 0x0101010101010101;
    unsigned long i = 0;
    for (; i + 8 <= count; i += 8) {
        unsigned long word = 0;
        std::memcpy(&word, from + i, 8);
        const unsigned long replaced = (word >> 7 & each) * 0xff;
        word = (word & ~replaced) | (replaced & ('.' * each));
        std::memcpy(to + i, &word, 8);
    }
    maskTable(to + i, ia5.masked, from + i, count - i);
}

void maskRun(char* to, const char* masked, const char* from, unsigned long count) {
    if (masked == octets.masked)
        stringCopy(to, from, count);
    else if (masked == ia5.masked)
        maskIa5(to, from, count);
    else
        maskTable(to, masked, from, count);
}

void maskRun(wchar_t* to, const char* masked, const char* from, unsigned long count) {
    if (masked == octets.masked) {
        orvabase::kernels::widen(to, from, count);
        return;
    }
    for (unsigned long i = 0; i < count; ++i)
        to[i] = masked[asByte(from[i])];
}

/// Puts what `count` characters read as at `to` and returns the length of that.
template<class Character>
unsigned long readRun(const Reading& reading, Character* to, const char* text,
                      unsigned long count) {
    const char* const outcome = reading.outcome;
    const bool* const kept = reading.kept;
    if (kept == octets.valid) {
        maskRun(to, outcome, text, count);
        return count;
    }
    unsigned long length = 0;
    for (unsigned long i = 0; i < count; ++i) {
        // Without branches, as nothing is known about the bytes.
        const unsigned char byte = asByte(text[i]);
        to[length] = outcome[byte];
        length += kept[byte];
    }
    return length;
}

/// Reads a text in runs of what the reader has fetched.
template<class String>
String readText(OCStreamReader& reader, const Reading& reading) {
    String result;
    unsigned long length = 0;
    while (StreamRuns::fetch(reader)) {
        const char* const text = StreamRuns::fetched(reader);
        const unsigned long count = StreamRuns::fetchedCount(reader);
        const unsigned long run = countPassed(reading, text, count);
        // Room at least doubles, so that long texts are not copied once a run.
        if (result.getLength() - length < run)
            result.setLength(length + std::max(run, length));
        length += readRun(reading, result.getString() + length, text, run);
        if (run != count) {
            StreamRuns::skip(reader, run + 1);
            if (reading.refuses)
                throw OXStringFilter_DecodeError();
            break;
        }
        StreamRuns::skip(reader, run);
    }
    result.setLength(length);
    return result;
}

/// Writes a text, `masked` for each byte, straight into the writer's buffer.
void writeText(OCStreamWriter& writer, const char* masked, const OCAnsiString& text) {
    const char* from = text.getString();
    unsigned long count = text.getLength();
    while (count != 0) {
        const unsigned long run = std::min(count, StreamRuns::roomCount(writer));
        maskRun(StreamRuns::room(writer), masked, from, run);
        StreamRuns::add(writer, run);
        from += run;
        count -= run;
        if (count != 0) {
            // The one that fills the buffer.
            writer.writeCharacter(masked[asByte(*from)]);
            ++from;
            --count;
        }
    }
}

bool isByte(wchar_t c) {
    return c >= 0 && c <= 255;
}

/// Writes a wide text by way of a short narrow one.
class WideWriter {
public:
    explicit WideWriter(OCStreamWriter& target) : writer(target) {}

    /// `masked` for each byte, `mask` for what is no byte.
    void write(const OCWideString& text, const char* masked, char mask) {
        inRuns(text, [=](char* to, const wchar_t* from, unsigned long count) {
            for (unsigned long i = 0; i < count; ++i)
                to[i] = isByte(from[i]) ? masked[static_cast<unsigned char>(from[i])] : mask;
            return count;
        });
    }
    void writeUtf8(const OCWideString& text) {
        inRuns(text, [](char* to, const wchar_t* from, unsigned long count) {
            char* const begin = to;
            for (unsigned long i = 0; i < count; ++i) {
                const bool plain = from[i] >= 0 && from[i] <= 127;
                to[0] = plain ? static_cast<char>(from[i]) : '.';
                to[1] = '.';
                to += plain ? 2 : 1;
            }
            return static_cast<unsigned long>(to - begin);
        });
    }

private:
    static constexpr unsigned long runLength = 1024;

    template<class Narrow>
    void inRuns(const OCWideString& text, Narrow narrow) {
        char run[2 * runLength];
        const unsigned long length = text.getLength();
        for (unsigned long i = 0; i < length; i += runLength) {
            const unsigned long count = std::min(length - i, runLength);
            StreamRuns::write(writer, run, narrow(run, text.getString() + i, count));
        }
    }

    OCStreamWriter& writer;
};

} // namespace

OCAbstractStringFilter::~OCAbstractStringFilter() = default;

OCAnsiString OCAbstractStringFilter::readAnsi(OCStream& stream) const {
    OCStreamReader reader(stream);
    if (const Repertoire* const repertoire = findRepertoire(*this))
        return readText<OCAnsiString>(reader, makeReading(*this, *repertoire));
    OCAnsiString result;
    char c = 0;
    for (;;) {
        const unsigned int code = readCodeAnsi(reader, &c);
        if (code == ended)
            return result;
        if (code == stored)
            result.append(c);
    }
}

OCWideString OCAbstractStringFilter::readWide(OCStream& stream) const {
    OCStreamReader reader(stream);
    if (const Repertoire* const repertoire = findRepertoire(*this))
        return readText<OCWideString>(reader, makeReading(*this, *repertoire));
    OCWideString result;
    wchar_t c = 0;
    for (;;) {
        const unsigned int code = readCodeWide(reader, &c);
        if (code == ended)
            return result;
        if (code == stored)
            result.append(c);
    }
}

void OCAbstractStringFilter::writeAnsi(OCStream& stream, const OCAnsiString& text) const {
    OCStreamWriter writer(stream);
    if (const Repertoire* const repertoire = findRepertoire(*this)) {
        writeText(writer, repertoire->masked, text);
    } else {
        for (unsigned long i = 0; i < text.getLength(); ++i)
            writeCodeAnsi(writer, text.getString()[i]);
    }
    writer.flush();
}

void OCAbstractStringFilter::writeWide(OCStream& stream, const OCWideString& text) const {
    OCStreamWriter writer(stream);
    if (const Repertoire* const repertoire = findRepertoire(*this)) {
        if (isUtf8Filter(*this))
            WideWriter(writer).writeUtf8(text);
        else
            WideWriter(writer).write(text, repertoire->masked, repertoire->mask);
    } else {
        for (unsigned long i = 0; i < text.getLength(); ++i)
            writeCodeWide(writer, text.getString()[i]);
    }
    writer.flush();
}

OCOctetStringFilter::~OCOctetStringFilter() = default;

unsigned int OCOctetStringFilter::readCodeAnsi(OCStreamReader& reader, char* c) const {
    return reader.readCharacter(*c) ? stored : ended;
}

unsigned int OCOctetStringFilter::readCodeWide(OCStreamReader& reader, wchar_t* c) const {
    char byte = 0;
    if (!reader.readCharacter(byte))
        return ended;
    *c = byte;
    return stored;
}

void OCOctetStringFilter::writeCodeAnsi(OCStreamWriter& writer, char c) const {
    writer.writeCharacter(c);
}

void OCOctetStringFilter::writeCodeWide(OCStreamWriter& writer, wchar_t c) const {
    writer.writeCharacter(isByte(c) ? static_cast<char>(c) : '.');
}

OCT61StringFilter::~OCT61StringFilter() = default;

OCUtf8StringFilter::~OCUtf8StringFilter() = default;

unsigned int OCUtf8StringFilter::readCodeAnsi(OCStreamReader& reader, char* c) const {
    char byte = 0;
    if (!reader.readCharacter(byte))
        return ended;
    if (!beginsCharacter(asByte(byte)))
        return skipped;
    *c = isIa5(asByte(byte)) ? byte : '.';
    return stored;
}

unsigned int OCUtf8StringFilter::readCodeWide(OCStreamReader& reader, wchar_t* c) const {
    char byte = 0;
    const unsigned int code = OCUtf8StringFilter::readCodeAnsi(reader, &byte);
    if (code == stored)
        *c = byte;
    return code;
}

void OCUtf8StringFilter::writeCodeAnsi(OCStreamWriter& writer, char c) const {
    writer.writeCharacter(isIa5(asByte(c)) ? c : '.');
}

void OCUtf8StringFilter::writeCodeWide(OCStreamWriter& writer, wchar_t c) const {
    if (c >= 0 && c <= 127)
        writer.writeCharacter(static_cast<char>(c));
    writer.writeCharacter('.');
}

OCIa5StringFilter::~OCIa5StringFilter() = default;

unsigned int OCIa5StringFilter::readCodeAnsi(OCStreamReader& reader, char* c) const {
    char byte = 0;
    if (!reader.readCharacter(byte))
        return ended;
    if (!validateByte(asByte(byte))) {
        switch (getMode()) {
        case StringFilterModeReplace:
            byte = maskByte();
            break;
        case StringFilterModeSkip:
            return skipped;
        case StringFilterModeRefuse:
            throw OXStringFilter_DecodeError();
        default:
            return ended;
        }
    }
    *c = byte;
    return stored;
}

unsigned int OCIa5StringFilter::readCodeWide(OCStreamReader& reader, wchar_t* c) const {
    char byte = 0;
    // Not the virtual one: what a derived class makes of narrow texts is its own affair.
    const unsigned int code = OCIa5StringFilter::readCodeAnsi(reader, &byte);
    if (code == stored)
        *c = byte;
    return code;
}

void OCIa5StringFilter::writeCodeAnsi(OCStreamWriter& writer, char c) const {
    writer.writeCharacter(validateByte(asByte(c)) ? c : maskByte());
}

void OCIa5StringFilter::writeCodeWide(OCStreamWriter& writer, wchar_t c) const {
    const bool valid = isByte(c) && validateByte(static_cast<unsigned char>(c));
    writer.writeCharacter(valid ? static_cast<char>(c) : maskByte());
}

char OCIa5StringFilter::maskByte() const {
    return '.';
}

bool OCIa5StringFilter::validateByte(unsigned char byte) const {
    return testByte(byte);
}

bool OCIa5StringFilter::testByte(unsigned char byte) noexcept {
    return isIa5(byte);
}

OCNumericStringFilter::~OCNumericStringFilter() = default;

char OCNumericStringFilter::maskByte() const {
    return ' ';
}

bool OCNumericStringFilter::validateByte(unsigned char byte) const {
    return testByte(byte);
}

bool OCNumericStringFilter::testByte(unsigned char byte) noexcept {
    return isNumeric(byte);
}

OCPrintableStringFilter::~OCPrintableStringFilter() = default;

bool OCPrintableStringFilter::validateByte(unsigned char byte) const {
    return testByte(byte);
}

bool OCPrintableStringFilter::testByte(unsigned char byte) noexcept {
    return isPrintable(byte);
}

OCVisibleStringFilter::~OCVisibleStringFilter() = default;

bool OCVisibleStringFilter::validateByte(unsigned char byte) const {
    return testByte(byte);
}

bool OCVisibleStringFilter::testByte(unsigned char byte) noexcept {
    return isVisible(byte);
}
