// Every string filter in every mode, reading and writing narrow and wide texts, against a plain
// loop. The first byte of the input chooses the filter and the mode, the second one how much a read
// of the stream gives out at a time and which write fails; the rest is the text.

#include "OCMemoryStream.h"
#include "OCStringFilter.h"

#include "Require.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

enum Kind { Octet, T61, Utf8, Ia5, Numeric, Printable, Visible, kindCount };

constexpr int modes[] = {0, 1, 2, 3, -1, 1000, INT_MAX, INT_MIN};

bool isValid(Kind kind, int c) {
    switch (kind) {
    case Octet:
    case T61:
        return c >= 0 && c < 256;
    case Numeric:
        return c >= 0 && c < 128 && std::strchr("0123456789 ", c) != nullptr && c != 0;
    case Printable:
        return c > 0 && c < 128 &&
               std::strchr("0123456789 abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                           "'()+,-./:=?",
                           c) != nullptr;
    case Visible:
        return c > 31 && c < 127;
    default:
        return c >= 0 && c < 128;
    }
}

char maskOf(Kind kind) {
    return kind == Numeric ? ' ' : '.';
}

struct Read {
    std::string text;
    bool refused = false;
    std::size_t consumed = 0;
};

Read readModel(Kind kind, int mode, const std::string& input) {
    Read result;
    while (result.consumed < input.size()) {
        const char c = input[result.consumed++];
        const int byte = static_cast<unsigned char>(c);
        if (isValid(kind, byte)) {
            result.text += c;
        } else if (kind == Utf8) {
            if ((byte & 0x40) != 0)
                result.text += '.';
        } else if (mode == 0) {
            result.text += maskOf(kind);
        } else if (mode == 2) {
            result.refused = true;
            break;
        } else if (mode != 1) {
            break;
        }
    }
    return result;
}

std::string writeModel(Kind kind, const std::string& input) {
    std::string result;
    for (const char c : input)
        result += isValid(kind, static_cast<unsigned char>(c)) ? c : maskOf(kind);
    return result;
}

std::string writeWideModel(Kind kind, const std::wstring& input) {
    std::string result;
    for (const wchar_t c : input) {
        const bool valid = isValid(kind, c);
        result += valid ? static_cast<char>(c) : maskOf(kind);
        if (valid && kind == Utf8)
            result += '.';
    }
    return result;
}

/// Gives out a few bytes at a time.
class Source : public OCMemoryStream {
public:
    Source(const std::string& content, unsigned long bytes)
        : OCMemoryStream(content.data(), content.size()), chunk(bytes) {}
    ~Source() noexcept override = default;

    bool read(void* buffer, unsigned long& count) override {
        if (chunk != 0 && count > chunk)
            count = chunk;
        return OCMemoryStream::read(buffer, count);
    }

private:
    unsigned long chunk;
};

/// Refuses one of its writes.
class Target : public OCMemoryStream {
public:
    explicit Target(unsigned long number) : refused(number), writes(0) {}
    ~Target() noexcept override = default;

    bool write(const void* buffer, unsigned long& count) override {
        return ++writes != refused && OCMemoryStream::write(buffer, count);
    }

private:
    unsigned long refused;
    unsigned long writes;
};

/// The same filter as one of an application, whose operations are called for each character.
template<class Filter>
class Derived : public Filter {
public:
    using Filter::Filter;
    ~Derived() override = default;
};

Read readNarrow(const OCAbstractStringFilter& filter, Source& stream) {
    Read result;
    stream.setPosition(0);
    try {
        const OCAnsiString text(filter.readAnsi(stream));
        result.text.assign(text.getString(), text.getLength());
        require(text.getString()[text.getLength()] == 0, "the end of a narrow text");
    } catch (const OXStringFilter_DecodeError&) {
        result.refused = true;
    }
    result.consumed = stream.getPosition();
    return result;
}

Read readWide(const OCAbstractStringFilter& filter, Source& stream) {
    Read result;
    stream.setPosition(0);
    try {
        const OCWideString text(filter.readWide(stream));
        for (unsigned long i = 0; i < text.getLength(); ++i) {
            require(text[i] >= -128 && text[i] <= 127, "sign extension");
            result.text += static_cast<char>(text[i]);
        }
        require(text.getString()[text.getLength()] == 0, "the end of a wide text");
    } catch (const OXStringFilter_DecodeError&) {
        result.refused = true;
    }
    result.consumed = stream.getPosition();
    return result;
}

void compare(const Read& expected, const Read& actual) {
    require(expected.refused == actual.refused, "whether the text is refused");
    require(expected.consumed == actual.consumed, "where the stream is left");
    require(expected.refused || expected.text == actual.text, "the text read");
}

template<class Operation>
void expectWritten(const std::string& expected, unsigned long refused, Operation operation) {
    Target stream(refused);
    bool failed = false;
    try {
        operation(stream);
    } catch (const OXStream_WriteError&) {
        failed = true;
    }
    const unsigned long writes = (expected.size() + 4095) / 4096;
    require(failed == (refused != 0 && refused <= writes), "whether writing fails");
    if (failed)
        return;
    require(stream.getSize() == expected.size(), "the length written");
    if (expected.empty())
        return;
    const OCAnsiString written(stream.makeString());
    require(std::memcmp(written.getString(), expected.data(), expected.size()) == 0,
            "the text written");
}

template<class Filter>
void check(Kind kind, int mode, unsigned long chunk, unsigned long refused,
           const std::string& input) {
    const Filter own(static_cast<OEStringFilterMode>(mode));
    const Derived<Filter> derived(static_cast<OEStringFilterMode>(mode));
    const Read expected = readModel(kind, mode, input);
    std::wstring wide;
    for (std::size_t i = 0; i + 2 < input.size(); i += 3) {
        std::uint32_t c = 0;
        std::memcpy(&c, input.data() + i, 3);
        // Bytes, characters a little above and below them, and any others.
        wide += static_cast<wchar_t>(c % 4 == 0 ? c : c % 4 == 1 ? 0 - (c >> 16) : (c >> 8) % 300);
    }
    for (const OCAbstractStringFilter* const filter :
         {static_cast<const OCAbstractStringFilter*>(&own),
          static_cast<const OCAbstractStringFilter*>(&derived)}) {
        Source stream(input, chunk);
        compare(expected, readNarrow(*filter, stream));
        compare(expected, readWide(*filter, stream));
        expectWritten(writeModel(kind, input), refused, [&](OCStream& target) {
            filter->writeAnsi(target, OCAnsiString(input.data(), input.size()));
        });
        expectWritten(writeWideModel(kind, wide), refused, [&](OCStream& target) {
            filter->writeWide(target, OCWideString(wide.data(), wide.size()));
        });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const Kind kind = static_cast<Kind>(data[0] % kindCount);
    const int mode = modes[data[0] / kindCount % 8];
    const unsigned long chunk = data[1] % 32;
    const unsigned long refused = data[1] / 32;
    const std::string input(reinterpret_cast<const char*>(data) + 2, size - 2);
    switch (kind) {
    case Octet:
        check<OCOctetStringFilter>(kind, mode, chunk, refused, input);
        break;
    case T61:
        check<OCT61StringFilter>(kind, mode, chunk, refused, input);
        break;
    case Utf8:
        check<OCUtf8StringFilter>(kind, mode, chunk, refused, input);
        break;
    case Ia5:
        check<OCIa5StringFilter>(kind, mode, chunk, refused, input);
        break;
    case Numeric:
        check<OCNumericStringFilter>(kind, mode, chunk, refused, input);
        break;
    case Printable:
        check<OCPrintableStringFilter>(kind, mode, chunk, refused, input);
        break;
    default:
        check<OCVisibleStringFilter>(kind, mode, chunk, refused, input);
        break;
    }
    return 0;
}
