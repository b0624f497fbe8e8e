#include "core/OCKernelsCodec.h"

#include <cstring>

namespace orvabase::kernels {
namespace {

constexpr char base64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The two characters of each 12 bits, which are half a group.
struct Base64Pairs {
    constexpr Base64Pairs() noexcept : texts() {
        for (unsigned int i = 0; i < 4096; ++i) {
            texts[i][0] = base64Alphabet[i / 64];
            texts[i][1] = base64Alphabet[i % 64];
        }
    }

    char texts[4096][2];
};

constexpr Base64Pairs base64Pairs;

/// The values of the characters, below 0 outside the alphabet.
struct Base64Values {
    constexpr Base64Values() noexcept : values() {
        for (int& value : values)
            value = -1;
        for (int i = 0; i < 64; ++i)
            values[static_cast<unsigned char>(base64Alphabet[i])] = i;
    }

    int values[256];
};

constexpr Base64Values base64Values;

/// The two digits of each byte.
struct HexPairs {
    constexpr HexPairs() noexcept : texts() {
        const char* const digits = "0123456789abcdef";
        for (unsigned int i = 0; i < 256; ++i) {
            texts[i][0] = digits[i / 16];
            texts[i][1] = digits[i % 16];
        }
    }

    char texts[256][2];
};

constexpr HexPairs hexPairs;

unsigned int byteAt(const char* text) noexcept {
    return static_cast<unsigned char>(*text);
}

void plainEncodeBase64(char* to, const char* from, unsigned long groups) noexcept {
    for (; groups > 0; --groups) {
        const unsigned int bits = byteAt(from) << 16 | byteAt(from + 1) << 8 | byteAt(from + 2);
        std::memcpy(to, base64Pairs.texts[bits >> 12], 2);
        std::memcpy(to + 2, base64Pairs.texts[bits & 0xFFF], 2);
        from += 3;
        to += 4;
    }
}

void plainEncodeBase64Lines(char* to, const char* from, unsigned long lines) noexcept {
    for (; lines > 0; --lines) {
        plainEncodeBase64(to, from, 16);
        to[64] = '\r';
        to[65] = '\n';
        from += 48;
        to += 66;
    }
}

Decoded plainDecodeBase64(char* to, unsigned long room, const char* from,
                          unsigned long count) noexcept {
    const int* const values = base64Values.values;
    unsigned long read = 0;
    unsigned long written = 0;
    for (;; read += 4, written += 3) {
        while (read < count && static_cast<signed char>(from[read]) < 32)
            ++read;
        if (count - read < 4 || room - written < 3)
            break;
        const int a = values[byteAt(from + read)];
        const int b = values[byteAt(from + read + 1)];
        const int c = values[byteAt(from + read + 2)];
        const int d = values[byteAt(from + read + 3)];
        if ((a | b | c | d) < 0)
            break;
        to[written] = static_cast<char>(a << 2 | b >> 4);
        to[written + 1] = static_cast<char>(b << 4 | c >> 2);
        to[written + 2] = static_cast<char>(c << 6 | d);
    }
    return {read, written};
}

void plainEncodeHex(char* to, const char* from, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        std::memcpy(to + 2 * i, hexPairs.texts[byteAt(from + i)], 2);
}

void plainEncodeHexSeparated(char* to, const char* from, unsigned long count,
                             char separator) noexcept {
    for (; count > 0; --count) {
        std::memcpy(to, hexPairs.texts[byteAt(from)], 2);
        to[2] = separator;
        ++from;
        to += 3;
    }
}

void plainEncodeHexLines(char* to, const char* from, unsigned long lines, unsigned long perLine,
                         char separator, const char* end, unsigned long endCount) noexcept {
    for (; lines > 0; --lines) {
        plainEncodeHexSeparated(to, from, perLine, separator);
        from += perLine;
        to += 3 * perLine;
        std::memcpy(to, end, endCount);
        to += endCount;
    }
}

/// Good from the start, and changed once at most: while the library is loaded.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): changed as said above
const CodecForm* chosen = &plainCodecForm;

__attribute__((constructor(101))) void choose() noexcept {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2"))
        chosen = &avx2CodecForm;
}

} // namespace

const CodecForm plainCodecForm = {
    "plain",        plainEncodeBase64,       plainEncodeBase64Lines, plainDecodeBase64,
    plainEncodeHex, plainEncodeHexSeparated, plainEncodeHexLines,
};

const CodecForm& codecFormInUse() noexcept {
    return *chosen;
}

void encodeBase64(char* to, const char* from, unsigned long groups) noexcept {
    chosen->encodeBase64(to, from, groups);
}

void encodeBase64Lines(char* to, const char* from, unsigned long lines) noexcept {
    chosen->encodeBase64Lines(to, from, lines);
}

Decoded decodeBase64(char* to, unsigned long room, const char* from, unsigned long count) noexcept {
    return chosen->decodeBase64(to, room, from, count);
}

void encodeHex(char* to, const char* from, unsigned long count) noexcept {
    chosen->encodeHex(to, from, count);
}

void encodeHexSeparated(char* to, const char* from, unsigned long count, char separator) noexcept {
    chosen->encodeHexSeparated(to, from, count, separator);
}

void encodeHexLines(char* to, const char* from, unsigned long lines, unsigned long perLine,
                    char separator, const char* end, unsigned long endCount) noexcept {
    chosen->encodeHexLines(to, from, lines, perLine, separator, end, endCount);
}

} // namespace orvabase::kernels
