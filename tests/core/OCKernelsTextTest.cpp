#include "core/OCKernelsText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

namespace kernels = orvabase::kernels;

// The same once more, character by character.

std::vector<unsigned long> plainFindTexts(const std::string& text, const std::string& pattern,
                                          unsigned long start) {
    std::vector<unsigned long> places;
    for (unsigned long at = start; at + pattern.size() <= text.size();) {
        if (text.compare(at, pattern.size(), pattern) == 0) {
            places.push_back(at);
            at += pattern.size();
        } else
            ++at;
    }
    return places;
}

bool isKept(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
           c == '_';
}

std::string plainEscape(const std::string& text) {
    const char* const digits = "0123456789abcdef";
    std::string result;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ')
            result += '+';
        else if (isKept(c))
            result += c;
        else
            result += {'%', digits[byte / 16], digits[byte % 16]};
    }
    return result;
}

int digitValue(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

std::string plainUnescape(const std::string& text) {
    std::string result;
    for (unsigned long i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && digitValue(text[i + 1]) >= 0 &&
            digitValue(text[i + 2]) >= 0) {
            result += static_cast<char>(digitValue(text[i + 1]) * 16 + digitValue(text[i + 2]));
            i += 2;
        } else
            result += text[i] == '+' ? ' ' : text[i];
    }
    return result;
}

/// A copy of a text, at any alignment, in a block that ends with it: whatever reads on is seen by
/// the address sanitizer.
class Block {
public:
    explicit Block(const std::string& text, unsigned long offset = 0)
        : storage(new char[offset + text.size()]), begin(storage + offset) {
        text.copy(begin, text.size());
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { delete[] storage; }

    char* get() const { return begin; }

private:
    char* storage;
    char* begin;
};

std::vector<unsigned long> findTexts(const std::string& text, const std::string& pattern,
                                     unsigned long start, unsigned long room,
                                     unsigned long offset = 0) {
    const Block block(text, offset);
    const Block wanted(pattern);
    std::vector<unsigned long> places(room + 1, 77);
    const unsigned long found = kernels::findTexts(block.get(), text.size(), wanted.get(),
                                                   pattern.size(), start, places.data(), room);
    EXPECT_LE(found, room);
    EXPECT_EQ(77UL, places[room]);
    places.resize(found);
    return places;
}

TEST(KernelsText, FindsOnePlaceAtEveryPositionAndAlignment) {
    for (unsigned long count = 1; count <= 150; ++count) {
        for (unsigned long position = 0; position < count; ++position) {
            for (unsigned long size : {1UL, 2UL, 3UL, 8UL, 9UL, 20UL}) {
                if (position + size > count)
                    continue;
                std::string text(count, '.');
                const std::string pattern = std::string("abcdefghijklmnopqrst").substr(0, size);
                text.replace(position, size, pattern);
                ASSERT_EQ(std::vector<unsigned long>{position},
                          findTexts(text, pattern, 0, 5, position % 17));
                ASSERT_EQ(std::vector<unsigned long>{position},
                          findTexts(text, pattern, position, 5, position % 17));
                ASSERT_TRUE(findTexts(text, pattern, position + 1, 5, position % 17).empty());
            }
        }
    }
}

TEST(KernelsText, FindsPlacesLikeThePlainSearch) {
    const unsigned int seed = 88;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        const unsigned long letters = 1 + random() % 3;
        const auto make = [&](unsigned long count) {
            std::string result;
            for (; count > 0; --count)
                result += static_cast<char>('a' + random() % letters);
            return result;
        };
        const std::string text = make(1 + random() % 300);
        const std::string pattern = make(1 + random() % (round % 2 == 0 ? 4 : 20));
        if (pattern.size() > text.size())
            continue;
        const unsigned long start = random() % text.size();
        const unsigned long room = 1 + random() % 40;
        std::vector<unsigned long> expected = plainFindTexts(text, pattern, start);
        if (expected.size() > room)
            expected.resize(room);
        ASSERT_EQ(expected, findTexts(text, pattern, start, room, random() % 33))
            << text << " / " << pattern << " from " << start;
    }
}

TEST(KernelsText, GivesUpComparingWhereThatIsSlow) {
    // Every second place looks like the pattern, up to its middle.
    std::string half;
    for (int i = 0; i < 40; ++i)
        half += "ab";
    const std::string pattern = half + "cd" + half;
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "ab";
    for (unsigned long place : {70UL, 2001UL, 3000UL, 3700UL})
        text.insert(place, pattern);
    const std::vector<unsigned long> expected = plainFindTexts(text, pattern, 0);
    ASSERT_EQ(4UL, expected.size());
    EXPECT_EQ(expected, findTexts(text, pattern, 0, 10));
    EXPECT_EQ(expected, findTexts(text, pattern, 0, 4));
    EXPECT_EQ(3UL, findTexts(text, pattern, 0, 3).size());
    EXPECT_EQ(2UL, findTexts(text, pattern, 2500, 10).size());
}

TEST(KernelsText, CountsAndEscapesEveryByteInEveryLane) {
    for (int byte = 0; byte < 256; ++byte) {
        for (unsigned long count = 1; count <= 40; ++count) {
            const unsigned long position = static_cast<unsigned long>(byte) % count;
            std::string text(count, 'a');
            text[position] = static_cast<char>(byte);
            const std::string expected = plainEscape(text);
            const Block block(text, position % 16);
            ASSERT_EQ((expected.size() - count) / 2, kernels::countEscaped(block.get(), count));
            const Block result(std::string(expected.size(), '#'));
            kernels::escape(result.get(), block.get(), count);
            ASSERT_EQ(expected, std::string(result.get(), expected.size())) << byte;
        }
    }
}

TEST(KernelsText, CountsMoreThanALaneHolds) {
    for (unsigned long count : {4079UL, 4080UL, 4081UL, 4096UL, 20000UL}) {
        const std::string kept(count, 'x');
        const std::string escaped(count, '/');
        EXPECT_EQ(0UL, kernels::countEscaped(kept.data(), count));
        EXPECT_EQ(count, kernels::countEscaped(escaped.data(), count));
    }
    EXPECT_EQ(0UL, kernels::countEscaped(nullptr, 0));
}

TEST(KernelsText, EscapesAndUnescapesLikeThePlainForms) {
    const unsigned int seed = 4711;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string letters = "%0123456789abcdefABCDEFxyz+-_ .\xff";
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        // From hardly any to very many percent signs.
        const unsigned long percents = random() % 8;
        for (unsigned long count = random() % 400; count > 0; --count)
            text += random() % 8 < percents ? letters[random() % 5]
                                            : letters[random() % letters.size()];
        const unsigned long offset = random() % 17;
        const Block block(text, offset);
        const std::string plain = plainUnescape(text);
        const Block result(std::string(text.size(), '#'));
        const unsigned long length = kernels::unescape(result.get(), block.get(), text.size());
        ASSERT_EQ(plain, std::string(result.get(), length)) << text;
        const std::string escaped = plainEscape(text);
        ASSERT_EQ((escaped.size() - text.size()) / 2,
                  kernels::countEscaped(block.get(), text.size()));
        const Block form(std::string(escaped.size(), '#'));
        kernels::escape(form.get(), block.get(), text.size());
        ASSERT_EQ(escaped, std::string(form.get(), escaped.size()));
    }
}

TEST(KernelsText, UnescapesACodeAtEveryPlace) {
    for (unsigned long count = 3; count <= 200; ++count) {
        for (unsigned long position = 0; position < count; ++position) {
            for (const char* code : {"%41", "%4x", "%x1", "%2b", "%25", "%%4"}) {
                std::string text(count, '+');
                text.replace(position, 3, code);
                text.resize(count);
                const Block block(text);
                const Block result(text);
                const unsigned long length = kernels::unescape(result.get(), block.get(), count);
                ASSERT_EQ(plainUnescape(text), std::string(result.get(), length)) << text;
            }
        }
    }
}

TEST(KernelsText, MarksWhatMeansSomethingInAQuery) {
    for (unsigned long count = 0; count <= 64; ++count) {
        for (int c = 0; c < 256; ++c) {
            const Block block(std::string(count, static_cast<char>(c)));
            const bool marked = c == '&' || c == '=' || c == '%' || c == '+';
            const unsigned long all = count == 0 ? 0 : ~0UL >> (64 - count);
            ASSERT_EQ(marked ? all : 0, kernels::markQuery(block.get(), count)) << c;
        }
        for (unsigned long place = 0; place < count; ++place) {
            std::string text(count, 'x');
            text[place] = "&=%+"[place % 4];
            const Block block(text, place);
            ASSERT_EQ(1UL << place, kernels::markQuery(block.get(), count));
        }
    }
}

} // namespace
