// The Base64 decoder against a second one that works on the whole text at once, and the encoder
// against the decoder. The input is the text; its first two bytes tell how much the source delivers
// at a time, and how much the target takes.

#include "OCBase64.h"

#include "Require.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// Reads from one string, writes to another, and moves about as much as it is told to.
class StringStream : public OCStream {
public:
    StringStream(std::string content, unsigned long atATime)
        : data(std::move(content)), chunk(atATime) {}

    bool read(void* buffer, unsigned long& count) override {
        unsigned long n = count < chunk ? count : chunk;
        n = n < data.size() - position ? n : data.size() - position;
        if (n == 0)
            return false;
        std::memcpy(buffer, data.data() + position, n);
        position += n;
        count = n;
        return true;
    }
    unsigned long seek(long offset, OEStreamSeek origin) override {
        REQUIRE(origin == StreamSeekCurrent && offset < 0);
        REQUIRE(static_cast<unsigned long>(-offset) <= position);
        return position -= static_cast<unsigned long>(-offset);
    }
    void setSize(unsigned long) override { abort(); }
    bool write(const void* buffer, unsigned long& count) override {
        count = count < chunk ? count : chunk;
        data.append(static_cast<const char*>(buffer), count);
        return true;
    }

    std::string data;
    unsigned long position = 0;

private:
    unsigned long chunk;
};

int valueOf(char c) {
    switch (c) {
    case '+':
        return 62;
    case '/':
        return 63;
    default:
        if (c >= '0' && c <= '9')
            return 52 + c - '0';
        if (c >= 'a' && c <= 'z')
            return 26 + c - 'a';
        return c >= 'A' && c <= 'Z' ? c - 'A' : -1;
    }
}

/// Decodes a text; `rest` becomes how many characters are left behind the end of decoding.
std::string plainDecode(const std::string& text, unsigned long& rest) {
    // First what counts at all, and where in the text it stands.
    std::string visible;
    std::basic_string<unsigned long> places;
    for (unsigned long i = 0; i < text.size(); ++i) {
        if (text[i] >= 32) {
            visible += text[i];
            places += i;
        }
    }
    std::string bytes;
    for (unsigned long i = 0;; i += 4) {
        int values = 0;
        unsigned int bits = 0;
        for (; values < 4 && i + static_cast<unsigned long>(values) < visible.size(); ++values) {
            const int value = valueOf(visible[i + static_cast<unsigned long>(values)]);
            if (value < 0)
                break;
            bits |= static_cast<unsigned int>(value) << (18 - 6 * values);
        }
        for (int byte = 1; byte < values; ++byte)
            bytes += static_cast<char>(bits >> (24 - 8 * byte));
        if (values >= 2)
            continue;
        // A last block that is not whole has looked for more until the end.
        rest = i + 4 <= visible.size() ? text.size() - places[i + 3] - 1 : 0;
        return bytes;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const unsigned long sourceChunk = data[0] == 0 ? ~0UL : data[0];
    const unsigned long targetChunk = data[1] == 0 ? ~0UL : data[1];
    const std::string input(reinterpret_cast<const char*>(data) + 2, size - 2);

    // As it is, and so often that it goes through the buffers.
    for (const unsigned long times : {1UL, input.empty() ? 1UL : 1 + 4500 / input.size()}) {
        std::string text;
        for (unsigned long i = 0; i < times; ++i)
            text += input;

        StringStream source(text, sourceChunk);
        StringStream decoded("", targetChunk);
        OCBase64Decoder().decode(source, decoded);
        unsigned long rest = 0;
        const std::string expected = plainDecode(text, rest);
        REQUIRE(decoded.data == expected);
        REQUIRE(source.data.size() - source.position == rest);

        // Any bytes come back from their text, which is made of full lines but for the last.
        StringStream bytes(text, sourceChunk);
        StringStream encoded("", targetChunk);
        OCBase64Encoder().encode(bytes, encoded);
        const unsigned long characters = (text.size() + 2) / 3 * 4;
        REQUIRE(encoded.data.size() == characters + characters / 64 * 2);
        for (unsigned long i = 64; i < encoded.data.size(); i += 66)
            REQUIRE(encoded.data[i] == '\r' && encoded.data[i + 1] == '\n');
        REQUIRE(plainDecode(encoded.data, rest) == text);
        StringStream lines(encoded.data, sourceChunk);
        StringStream again("", targetChunk);
        OCBase64Decoder().decode(lines, again);
        REQUIRE(again.data == text);
    }
    return 0;
}
