#ifndef ORVABASE_TESTS_BASE64MODEL_H
#define ORVABASE_TESTS_BASE64MODEL_H

#include <string>

/// Base64 once more, over strings.
namespace base64 {

inline const char* alphabet() {
    return "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
}

/// The text in lines of 64 characters, each full one ended by CR LF.
inline std::string encode(const std::string& bytes) {
    std::string text;
    unsigned long bits = 0;
    unsigned int count = 0;
    unsigned long column = 0;
    const auto put = [&](char c) {
        text += c;
        if (++column == 64) {
            text += "\r\n";
            column = 0;
        }
    };
    for (const char c : bytes) {
        bits = (bits << 8 | static_cast<unsigned char>(c)) & 0xFFFF;
        for (count += 8; count >= 6; count -= 6)
            put(alphabet()[bits >> (count - 6) & 63]);
    }
    if (count > 0) {
        put(alphabet()[bits << (6 - count) & 63]);
        for (; count != 6; count += 2)
            put('=');
    }
    return text;
}

inline int valueOf(char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    return c == '+' ? 62 : c == '/' ? 63 : -1;
}

/// What the text decodes to; sets `end` to the place behind the last character taken.
inline std::string decode(const std::string& text, unsigned long& end) {
    std::string bytes;
    end = 0;
    for (;;) {
        std::string block;
        while (block.size() < 4 && end < text.size()) {
            const char c = text[end++];
            if (c >= 32)
                block += c;
        }
        unsigned long bits = 0;
        unsigned int values = 0;
        while (values < block.size() && valueOf(block[values]) >= 0)
            bits = bits << 6 | static_cast<unsigned long>(valueOf(block[values++]));
        if (values < 2)
            return bytes;
        for (unsigned int have = 6 * values; have >= 8; have -= 8)
            bytes += static_cast<char>(bits >> (have - 8));
    }
}

inline std::string decode(const std::string& text) {
    unsigned long end = 0;
    return decode(text, end);
}

} // namespace base64

#endif
