#include "core/OCKernelsCodec.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

namespace kernels = orvabase::kernels;
using kernels::CodecForm;

constexpr unsigned long longest = 200;
const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The functions of the header as if they were a form of their own.
const CodecForm publicForm = {
    "public",
    kernels::encodeBase64,
    kernels::encodeBase64Lines,
    kernels::decodeBase64,
    kernels::encodeHex,
    kernels::encodeHexSeparated,
    kernels::encodeHexLines,
};

std::vector<CodecForm> allForms() {
    std::vector<CodecForm> forms = {kernels::plainCodecForm, publicForm};
    if (__builtin_cpu_supports("avx2"))
        forms.push_back(kernels::avx2CodecForm);
    return forms;
}

/// A run at any alignment, in a block that ends with it: whatever goes on behind it is seen by the
/// address sanitizer, and what stands before it must stay.
class Block {
public:
    Block(unsigned long offset, unsigned long size)
        : storage(new char[offset + size]), begin(storage + offset), count(size) {
        std::string(offset + size, '?').copy(storage, offset + size);
    }
    Block(unsigned long offset, const std::string& text) : Block(offset, text.size()) {
        text.copy(begin, count);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() {
        for (const char* p = storage; p != begin; ++p)
            EXPECT_EQ(*p, '?');
        delete[] storage;
    }

    char* get() const { return begin; }
    std::string text(unsigned long n) const { return std::string(begin, n); }
    std::string text() const { return text(count); }

private:
    char* storage;
    char* begin;
    unsigned long count;
};

// Models, bit by bit.

std::string modelBase64(const std::string& bytes) {
    std::string bits;
    for (const char c : bytes)
        for (int bit = 7; bit >= 0; --bit)
            bits += static_cast<char>(static_cast<unsigned char>(c) >> bit & 1);
    std::string text;
    for (unsigned long i = 0; i + 6 <= bits.size(); i += 6) {
        unsigned int value = 0;
        for (unsigned long j = 0; j < 6; ++j)
            value = value * 2 + static_cast<unsigned char>(bits[i + j]);
        text += alphabet[value];
    }
    return text;
}

std::string modelHex(const std::string& bytes, const std::string& separator) {
    std::string text;
    for (const char c : bytes) {
        const unsigned int value = static_cast<unsigned char>(c);
        text += "0123456789abcdef"[value / 16];
        text += "0123456789abcdef"[value % 16];
        text += separator;
    }
    return text;
}

std::string randomBytes(std::mt19937& random, unsigned long count) {
    std::string bytes(count, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

} // namespace

TEST(KernelsCodec, TheFormInUseIsTheBestThatTheMachineCan) {
    EXPECT_STREQ(__builtin_cpu_supports("avx2") ? "AVX2" : "plain", kernels::codecFormInUse().name);
}

TEST(KernelsCodec, EncodesBase64AtEveryLengthAndAlignment) {
    std::mt19937 random(1);
    for (const CodecForm& form : allForms()) {
        for (unsigned long groups = 0; groups <= longest; ++groups) {
            const Block from(groups % 32, randomBytes(random, 3 * groups));
            const Block to(groups * 7 % 32, 4 * groups);
            form.encodeBase64(to.get(), from.get(), groups);
            ASSERT_EQ(to.text(), modelBase64(from.text())) << form.name << ' ' << groups;
        }
    }
}

TEST(KernelsCodec, EncodesEveryPairOfBytes) {
    for (const CodecForm& form : allForms()) {
        std::string bytes;
        for (int i = 0; i < 65536; ++i) {
            const char pair[3] = {static_cast<char>(i >> 8), static_cast<char>(i),
                                  static_cast<char>(i * 5)};
            bytes.append(pair, 3);
        }
        const Block to(0, bytes.size() / 3 * 4);
        form.encodeBase64(to.get(), bytes.data(), bytes.size() / 3);
        ASSERT_EQ(to.text(), modelBase64(bytes)) << form.name;
    }
}

TEST(KernelsCodec, EncodesBase64LinesAtEveryAlignment) {
    std::mt19937 random(2);
    for (const CodecForm& form : allForms()) {
        for (unsigned long lines = 0; lines <= 70; ++lines) {
            const Block from(lines % 32, randomBytes(random, 48 * lines));
            const Block to(lines * 7 % 32, 66 * lines);
            form.encodeBase64Lines(to.get(), from.get(), lines);
            std::string expected;
            for (unsigned long i = 0; i < lines; ++i)
                expected += modelBase64(from.text().substr(48 * i, 48)) + "\r\n";
            ASSERT_EQ(to.text(), expected) << form.name << ' ' << lines;
        }
    }
}

TEST(KernelsCodec, DecodesBase64AtEveryLengthAndAlignment) {
    std::mt19937 random(3);
    for (const CodecForm& form : allForms()) {
        for (unsigned long groups = 0; groups <= longest; ++groups) {
            const std::string bytes = randomBytes(random, 3 * groups);
            for (unsigned long more = 0; more < 4; ++more) {
                const Block from(groups % 32, modelBase64(bytes) + std::string(more, 'A'));
                const Block to(groups * 7 % 32, 3 * groups + more / 2);
                const kernels::Decoded done = form.decodeBase64(to.get(), 3 * groups + more / 2,
                                                                from.get(), 4 * groups + more);
                ASSERT_EQ(done.read, 4 * groups) << form.name;
                ASSERT_EQ(done.written, 3 * groups) << form.name;
                ASSERT_EQ(to.text(3 * groups), bytes) << form.name << ' ' << groups;
            }
        }
    }
}

TEST(KernelsCodec, DecodingStopsWhereTheRoomEnds) {
    std::mt19937 random(4);
    const std::string bytes = randomBytes(random, 3 * longest);
    const std::string text = modelBase64(bytes);
    for (const CodecForm& form : allForms()) {
        for (unsigned long room = 0; room <= 3 * longest; ++room) {
            const Block to(room % 32, room);
            const kernels::Decoded done =
                form.decodeBase64(to.get(), room, text.data(), text.size());
            ASSERT_EQ(done.read, room / 3 * 4) << form.name;
            ASSERT_EQ(done.written, room / 3 * 3) << form.name;
            ASSERT_EQ(to.text(done.written), bytes.substr(0, done.written)) << form.name;
        }
    }
}

TEST(KernelsCodec, DecodingStopsBeforeTheGroupOfAForeignCharacter) {
    std::mt19937 random(5);
    for (const CodecForm& form : allForms()) {
        for (unsigned long place = 0; place < 160; ++place) {
            for (const unsigned long groups : {40UL, 43UL, 50UL}) {
                const std::string bytes = randomBytes(random, 3 * groups);
                std::string text = modelBase64(bytes);
                text[place] = "= -_*\x7f~\\"[random() % 8];
                const Block from(0, text);
                const Block to(0, 3 * groups);
                const kernels::Decoded done =
                    form.decodeBase64(to.get(), 3 * groups, from.get(), text.size());
                ASSERT_EQ(done.read, place / 4 * 4) << form.name;
                ASSERT_EQ(done.written, place / 4 * 3) << form.name;
                ASSERT_EQ(to.text(3 * groups), bytes.substr(0, done.written) +
                                                   std::string(3 * groups - done.written, '?'))
                    << form.name;
            }
        }
    }
}

TEST(KernelsCodec, DecodingPassesOverControlCharactersBetweenGroups) {
    std::mt19937 random(6);
    for (const CodecForm& form : allForms()) {
        for (int round = 0; round < 3000; ++round) {
            // As the plain form is defined: group by group.
            const std::string bytes = randomBytes(random, 3 * (random() % 60));
            const std::string plain = modelBase64(bytes);
            const unsigned long width = 4 * (1 + random() % 30);
            std::string text;
            for (unsigned long i = 0; i < plain.size(); i += width) {
                text += plain.substr(i, width);
                for (unsigned long n = random() % 5; n > 0; --n)
                    text += "\r\n\t\x80\xff\x1f"[random() % 6];
            }
            const Block from(random() % 32, text);
            const Block to(random() % 32, bytes.size());
            const kernels::Decoded done =
                form.decodeBase64(to.get(), bytes.size(), from.get(), text.size());
            ASSERT_EQ(done.read, text.size()) << form.name;
            ASSERT_EQ(done.written, bytes.size()) << form.name;
            ASSERT_EQ(to.text(), bytes) << form.name;
        }
    }
}

TEST(KernelsCodec, DecodingPassesOverControlCharactersUpToTheEnd) {
    for (const CodecForm& form : allForms()) {
        for (unsigned long count = 0; count < 100; ++count) {
            const std::string text = "QUJD" + std::string(count, '\n');
            const Block from(0, text);
            const Block to(0, 120);
            const kernels::Decoded done = form.decodeBase64(to.get(), 120, from.get(), text.size());
            ASSERT_EQ(done.read, text.size()) << form.name;
            ASSERT_EQ(done.written, 3u) << form.name;
            ASSERT_EQ(to.text(4), "ABC?") << form.name;
        }
    }
}

TEST(KernelsCodec, DecodingStopsBeforeAGroupWithAControlCharacterInIt) {
    for (const CodecForm& form : allForms()) {
        for (unsigned long place = 1; place < 120; ++place) {
            std::string text(160, 'A');
            text.insert(place, "\n");
            const Block to(0, 120);
            const kernels::Decoded done =
                form.decodeBase64(to.get(), 120, text.data(), text.size());
            if (place % 4 == 0) {
                ASSERT_EQ(done.read, 161U) << form.name;
                ASSERT_EQ(done.written, 120U) << form.name;
            } else {
                ASSERT_EQ(done.read, place / 4 * 4) << form.name;
                ASSERT_EQ(done.written, place / 4 * 3) << form.name;
            }
        }
    }
}

TEST(KernelsCodec, DecodingAgreesOnAnything) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        const unsigned long every = 1 + random() % 100;
        std::string text(random() % 300, 'A');
        for (char& c : text)
            c = random() % every == 0 ? static_cast<char>(random()) : alphabet[random() % 64];
        const unsigned long room = random() % 200;
        const Block expected(0, room);
        const kernels::Decoded wanted =
            kernels::plainCodecForm.decodeBase64(expected.get(), room, text.data(), text.size());
        for (const CodecForm& form : allForms()) {
            const Block to(0, room);
            const Block from(0, text);
            const kernels::Decoded done =
                form.decodeBase64(to.get(), room, from.get(), text.size());
            ASSERT_EQ(done.read, wanted.read) << form.name << ' ' << text;
            ASSERT_EQ(done.written, wanted.written) << form.name << ' ' << text;
            ASSERT_EQ(to.text(done.written), expected.text(done.written))
                << form.name << ' ' << text;
        }
    }
}

TEST(KernelsCodec, DecodingKnowsTheAlphabetAndNothingElse) {
    for (const CodecForm& form : allForms()) {
        for (int c = 32; c < 128; ++c) {
            for (unsigned long place = 0; place < 36; ++place) {
                std::string text(36, 'A');
                text[place] = static_cast<char>(c);
                char to[27];
                const bool known = alphabet.find(static_cast<char>(c)) != std::string::npos;
                const kernels::Decoded done = form.decodeBase64(to, 27, text.data(), 36);
                ASSERT_EQ(done.read, known ? 36 : place / 4 * 4) << form.name << ' ' << c;
                ASSERT_EQ(done.written, done.read / 4 * 3) << form.name << ' ' << c;
                ASSERT_EQ(modelBase64(std::string(to, done.written)), text.substr(0, done.read))
                    << form.name << ' ' << c;
            }
        }
    }
}

TEST(KernelsCodec, WritesHexDigitsAtEveryLengthAndAlignment) {
    std::mt19937 random(5);
    for (const CodecForm& form : allForms()) {
        for (unsigned long count = 0; count <= longest; ++count) {
            for (const char separator : {':', '\0', '\xff'}) {
                const Block from(count % 32, randomBytes(random, count));
                const Block to(count * 7 % 32, 2 * count);
                form.encodeHex(to.get(), from.get(), count);
                ASSERT_EQ(to.text(), modelHex(from.text(), "")) << form.name << ' ' << count;
                const Block separated(count * 5 % 32, 3 * count);
                form.encodeHexSeparated(separated.get(), from.get(), count, separator);
                ASSERT_EQ(separated.text(), modelHex(from.text(), std::string(1, separator)))
                    << form.name << ' ' << count;
            }
        }
    }
}

TEST(KernelsCodec, WritesHexLinesOfEveryLength) {
    std::mt19937 random(8);
    for (const CodecForm& form : allForms()) {
        for (unsigned long perLine = 1; perLine <= 50; ++perLine) {
            for (unsigned long lines = 0; lines < 5; ++lines) {
                for (const std::string end : {"", "\n", "\r\n", "a line's end"}) {
                    const Block from(perLine % 32, randomBytes(random, lines * perLine));
                    const Block to(lines, lines * (3 * perLine + end.size()));
                    form.encodeHexLines(to.get(), from.get(), lines, perLine, ':', end.data(),
                                        end.size());
                    std::string expected;
                    for (unsigned long i = 0; i < lines; ++i)
                        expected += modelHex(from.text().substr(i * perLine, perLine), ":") + end;
                    ASSERT_EQ(to.text(), expected) << form.name << ' ' << perLine;
                }
            }
        }
    }
}

TEST(KernelsCodec, WritesTheDigitsOfEveryByte) {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    for (const CodecForm& form : allForms()) {
        const Block to(0, 512);
        form.encodeHex(to.get(), bytes.data(), 256);
        EXPECT_EQ(to.text(), modelHex(bytes, "")) << form.name;
    }
}
