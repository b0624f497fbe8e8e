#include "core/OCKernelHex.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

using namespace orvabase::kernels;

std::string digitsOf(const unsigned char (&bytes)[16]) {
    unsigned long words[2];
    std::memcpy(words, bytes, sizeof bytes);
    unsigned long digits[hexWordCount];
    hexDigitsOf(words[0], words[1], digits);
    return std::string(reinterpret_cast<const char*>(digits), sizeof digits);
}

/// Whether 32 characters are digits, and if so what they stand for.
bool bytesOf(const std::string& text, unsigned char (&bytes)[16]) {
    unsigned long digits[hexWordCount];
    std::memcpy(digits, text.data(), sizeof digits);
    unsigned long words[2];
    if (!hexBytesOf(digits, words[0], words[1]))
        return false;
    std::memcpy(bytes, words, sizeof bytes);
    return true;
}

TEST(OCKernelHex, SpellsEveryByteAtEveryPlace) {
    for (unsigned int place = 0; place < 16; ++place)
        for (unsigned int value = 0; value < 256; ++value) {
            unsigned char bytes[16];
            std::memset(bytes, 0x5A, sizeof bytes);
            bytes[place] = static_cast<unsigned char>(value);
            std::string expected;
            for (const unsigned char byte : bytes) {
                char digits[3];
                std::snprintf(digits, sizeof digits, "%02x", byte);
                expected += digits;
            }
            ASSERT_EQ(expected, digitsOf(bytes));
            unsigned char back[16];
            ASSERT_TRUE(bytesOf(expected, back));
            ASSERT_EQ(0, std::memcmp(bytes, back, sizeof bytes)) << expected;
        }
}

TEST(OCKernelHex, KnowsEveryDigitAtEveryPlace) {
    for (unsigned int place = 0; place < 32; ++place)
        for (int c = 0; c < 256; ++c) {
            std::string text(32, '0');
            text[place] = static_cast<char>(c);
            int value = -1;
            if (c >= '0' && c <= '9')
                value = c - '0';
            else if (c >= 'a' && c <= 'f')
                value = c - 'a' + 10;
            else if (c >= 'A' && c <= 'F')
                value = c - 'A' + 10;
            unsigned char bytes[16];
            ASSERT_EQ(value >= 0, bytesOf(text, bytes)) << c;
            if (value < 0)
                continue;
            unsigned char expected[16] = {};
            expected[place / 2] = static_cast<unsigned char>(place % 2 == 0 ? value << 4 : value);
            ASSERT_EQ(0, std::memcmp(expected, bytes, sizeof bytes)) << c;
        }
}

} // namespace
