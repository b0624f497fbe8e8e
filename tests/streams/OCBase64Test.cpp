#include "OCBase64.h"

#include "OCFileStream.h"
#include "OCMemoryStream.h"
#include "support/Base64Model.h"
#include "support/FaultInjection.h"
#include "support/RecordingStream.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>
#include <vector>

using Calls = std::vector<std::string>;
using Outcome = RecordingStream::Outcome;

namespace {

std::string content(const OCMemoryStream& stream) {
    if (stream.isEmpty())
        return std::string();
    const OCAnsiString text = stream.makeString();
    return std::string(text.getString(), text.getLength());
}

std::string encoded(const std::string& bytes) {
    OCMemoryStream source(bytes.data(), bytes.size());
    OCMemoryStream target;
    OCBase64Encoder().encode(source, target);
    EXPECT_EQ(source.getPosition(), bytes.size());
    return content(target);
}

/// What `text` decodes to; `rest` becomes what is left in the source.
std::string decoded(const std::string& text, std::string* rest = nullptr) {
    OCMemoryStream source(text.data(), text.size());
    OCMemoryStream target;
    OCBase64Decoder().decode(source, target);
    if (rest)
        *rest = text.substr(source.getPosition());
    return content(target);
}

std::string randomBytes(std::mt19937& random, unsigned long count) {
    std::string bytes(count, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

std::string group(void (OCBase64Encoder::*encode)(const char*, char*) const noexcept,
                  const char* in) {
    char out[] = "----";
    (OCBase64Encoder().*encode)(in, out);
    return out;
}

std::string group(void (OCBase64Decoder::*decode)(const char*, char*) const noexcept,
                  const char* in) {
    char out[] = "---";
    (OCBase64Decoder().*decode)(in, out);
    return out;
}

/// Takes the steps of building the table one by one.
class Stepwise : public OCBase64Decoder {
public:
    using OCBase64Decoder::initialize;
    using OCBase64Decoder::initializeMatrix;
    using OCBase64Decoder::initializeMatrixAlphabet;
    using OCBase64Decoder::initializeMatrixPad;
    using OCBase64Decoder::initializeMatrixUnknown;

    std::string decoded(const std::string& text) {
        OCMemoryStream source(text.data(), text.size());
        OCMemoryStream target;
        decode(source, target);
        return content(target);
    }
    /// The field behind the virtual table.
    const unsigned char* table() const {
        return reinterpret_cast<const unsigned char*>(this) + sizeof(void*);
    }
};

} // namespace

TEST(OCBase64, ObjectsHaveTheirFields) {
    EXPECT_EQ(sizeof(OCBase64Encoder), 8U);
    EXPECT_EQ(sizeof(OCBase64Decoder), 8U + 256);
    EXPECT_EQ(sizeof(OCBase64EncoderReader), 8 + sizeof(OCStreamReader));
    EXPECT_EQ(sizeof(OCBase64EncoderWriter), 8 + sizeof(OCStreamWriter) + 8);
    EXPECT_EQ(sizeof(OCBase64DecoderReader), 8 + sizeof(OCStreamReader));
    EXPECT_EQ(sizeof(OCBase64DecoderWriter), 8 + sizeof(OCStreamWriter));
}

TEST(OCBase64, OnlyTheDestructorsAreVirtual) {
    EXPECT_EQ(slots::slotCount<OCBase64Encoder>(), 2U);
    EXPECT_EQ(slots::slotCount<OCBase64Decoder>(), 2U);
    EXPECT_EQ(slots::slotCount<OCBase64EncoderReader>(), 2U);
    EXPECT_EQ(slots::slotCount<OCBase64EncoderWriter>(), 2U);
    EXPECT_EQ(slots::slotCount<OCBase64DecoderReader>(), 2U);
    EXPECT_EQ(slots::slotCount<OCBase64DecoderWriter>(), 2U);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCBase64Encoder>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCBase64Decoder>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCBase64EncoderWriter>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCBase64DecoderWriter>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCBase64EncoderReader>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCBase64EncoderWriter>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCBase64DecoderReader>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCBase64DecoderWriter>);
}

TEST(OCBase64Encoder, EncodesGroups) {
    EXPECT_EQ(group(&OCBase64Encoder::encode3, "Man"), "TWFu");
    EXPECT_EQ(group(&OCBase64Encoder::encode2, "Ma"), "TWE=");
    EXPECT_EQ(group(&OCBase64Encoder::encode1, "M"), "TQ==");
    EXPECT_EQ(group(&OCBase64Encoder::encode3, "\xff\xff\xff"), "////");
    EXPECT_EQ(group(&OCBase64Encoder::encode3, "\xfb\xef\xbe"), "++++");
    EXPECT_EQ(group(&OCBase64Encoder::encode2, "\xff\xff"), "//8=");
    EXPECT_EQ(group(&OCBase64Encoder::encode1, "\xff"), "/w==");
    EXPECT_EQ(group(&OCBase64Encoder::encode3, "\0\0\0"), "AAAA");
}

TEST(OCBase64Encoder, KnowsTheTestVectorsOfRfc4648) {
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("f"), "Zg==");
    EXPECT_EQ(encoded("fo"), "Zm8=");
    EXPECT_EQ(encoded("foo"), "Zm9v");
    EXPECT_EQ(encoded("foob"), "Zm9vYg==");
    EXPECT_EQ(encoded("fooba"), "Zm9vYmE=");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
}

TEST(OCBase64Encoder, UsesTheWholeAlphabet) {
    std::string bytes;
    for (unsigned int i = 0; i < 64; i += 4) {
        const unsigned int bits = i << 18 | (i + 1) << 12 | (i + 2) << 6 | (i + 3);
        bytes += static_cast<char>(bits >> 16);
        bytes += static_cast<char>(bits >> 8);
        bytes += static_cast<char>(bits);
    }
    EXPECT_EQ(encoded(bytes),
              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/\r\n");
}

TEST(OCBase64Encoder, BreaksLinesAfter64Characters) {
    const std::string line(64, 'A');
    EXPECT_EQ(encoded(std::string(45, '\0')), std::string(60, 'A'));
    EXPECT_EQ(encoded(std::string(46, '\0')), std::string(62, 'A') + "==\r\n");
    EXPECT_EQ(encoded(std::string(47, '\0')), std::string(63, 'A') + "=\r\n");
    EXPECT_EQ(encoded(std::string(48, '\0')), line + "\r\n");
    EXPECT_EQ(encoded(std::string(49, '\0')), line + "\r\nAA==");
    EXPECT_EQ(encoded(std::string(96, '\0')), line + "\r\n" + line + "\r\n");
}

TEST(OCBase64Encoder, EncodesEveryLengthLikeTheModel) {
    const unsigned int seed = 20270;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    for (unsigned long size = 0; size < 700; ++size) {
        const std::string bytes = randomBytes(random, size);
        ASSERT_EQ(encoded(bytes), base64::encode(bytes)) << size;
    }
    // Around the buffers: 3072 bytes make 4096 characters without the line ends, 2979 with them.
    for (const unsigned long size : {2970UL, 2976UL, 3024UL, 3072UL, 4096UL, 5958UL, 8192UL}) {
        for (unsigned long more = 0; more < 12; ++more) {
            const std::string bytes = randomBytes(random, size + more);
            ASSERT_EQ(encoded(bytes), base64::encode(bytes)) << size + more;
        }
    }
}

TEST(OCBase64Encoder, GoesFromThePositionToTheEnd) {
    OCMemoryStream source("xxMan", 5);
    source.setPosition(2);
    OCMemoryStream target("text: ", 6);
    target.setPosition(6);
    OCBase64Encoder().encode(source, target);
    EXPECT_EQ(content(target), "text: TWFu");
}

TEST(OCBase64Encoder, StreamsSeeLargeBlocks) {
    RecordingStream source(std::string(5000, '\0'));
    RecordingStream target;
    OCBase64Encoder().encode(source, target);
    EXPECT_EQ(source.takeCalls(), Calls({"read 4096 -> 4096", "read 4096 -> 904",
                                         "read 4096 -> end", "read 4096 -> end"}));
    EXPECT_EQ(target.takeCalls(), Calls({"write 4096 -> 4096", "write 2780 -> 2780"}));
}

TEST(OCBase64Encoder, GoesOnAfterAnEndThatWasNone) {
    RecordingStream source("MaMan");
    source.reads = {{1, 1, Outcome::Normal, 2}, {2, 2, Outcome::Refuse}};
    RecordingStream target;
    OCBase64Encoder().encode(source, target);
    EXPECT_EQ(target.data, "TWE=TWFu");
}

TEST(OCBase64Encoder, AWriteThatFailsAtTheEndIsDiscarded) {
    RecordingStream source("Man");
    RecordingStream target;
    target.writes = {{1, 9, Outcome::Throw}};
    OCBase64Encoder().encode(source, target);
    EXPECT_EQ(target.takeCalls(), Calls({"write 4 -> thrown"}));
    EXPECT_EQ(target.data, "");
}

TEST(OCBase64Encoder, AWriteThatFailsOnTheWayLeavesTheSourceBehindTheLastBlock) {
    RecordingStream source(std::string(4096, '\0'));
    RecordingStream target;
    target.writes = {{1, 1, Outcome::Refuse}};
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { OCBase64Encoder().encode(source, target); }),
              "OXStream_WriteError: Writing to the stream failed");
    // 62 lines of 66 characters, and the block whose last character is the 4096th.
    EXPECT_EQ(source.position, 62U * 48 + 3);
    EXPECT_EQ(source.takeCalls(), Calls({"read 4096 -> 4096", "seek -1117 current -> 2979"}));
    // The writer tries once more as it goes.
    EXPECT_EQ(target.takeCalls(), Calls({"write 4096 -> refused", "write 4096 -> 4096"}));
}

TEST(OCBase64Encoder, ALineEndThatFillsTheBufferIsWrittenWithItsBlock) {
    // 2048 lines of 66 characters are the first that fill a whole number of buffers, 33.
    RecordingStream source(std::string(2048UL * 48, '\0'));
    RecordingStream target;
    target.writes = {{33, 33, Outcome::Refuse}};
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { OCBase64Encoder().encode(source, target); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(source.readCount, 24U);
    EXPECT_EQ(target.data.size(), 2048U * 66);
}

TEST(OCBase64EncoderReader, ReadsBlocksOfThree) {
    OCMemoryStream stream("abcdefgh", 8);
    OCBase64EncoderReader reader(stream);
    char block[] = "---";
    EXPECT_EQ(reader.readBlock(block), 3U);
    EXPECT_STREQ(block, "abc");
    EXPECT_EQ(reader.readBlock(block), 3U);
    EXPECT_STREQ(block, "def");
    EXPECT_EQ(reader.readBlock(block), 2U);
    EXPECT_STREQ(block, "ghf");
    EXPECT_EQ(reader.readBlock(block), 0U);
    EXPECT_STREQ(block, "ghf");
}

TEST(OCBase64EncoderReader, GivesBackWhatItDidNotRead) {
    OCMemoryStream stream("abcdefgh", 8);
    {
        OCBase64EncoderReader reader(stream);
        char block[3];
        reader.readBlock(block);
    }
    EXPECT_EQ(stream.getPosition(), 3U);
}

TEST(OCBase64EncoderWriter, BreaksLinesAndWritesAsItGoes) {
    RecordingStream stream;
    {
        OCBase64EncoderWriter writer(stream);
        for (int i = 0; i < 17; ++i)
            writer.writeBlock("abcd");
        EXPECT_EQ(stream.takeCalls(), Calls());
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"write 70 -> 70"}));
    std::string line;
    for (int i = 0; i < 16; ++i)
        line += "abcd";
    EXPECT_EQ(stream.data, line + "\r\nabcd");
}

TEST(OCBase64EncoderWriter, ABlockThatIsRefusedDoesNotCountForItsLine) {
    RecordingStream stream;
    stream.writes = {{1, 1, Outcome::Refuse}};
    {
        OCBase64EncoderWriter writer(stream);
        for (int i = 0; i < 62 * 16; ++i)
            writer.writeBlock("abcd");
        // Its last character is the 4096th.
        EXPECT_THROW(writer.writeBlock("efgh"), OXStream_WriteError);
        for (int i = 0; i < 17; ++i)
            writer.writeBlock("abcd");
    }
    std::string line;
    for (int i = 0; i < 16; ++i)
        line += "abcd";
    std::string lines;
    for (int i = 0; i < 62; ++i)
        lines += line + "\r\n";
    EXPECT_EQ(stream.data, lines + "efgh" + line + "\r\nabcd");
}

TEST(OCBase64EncoderWriter, ALineEndThatIsRefusedIsWrittenAgainBehindTheNextBlock) {
    // The end of line 2048 is the first that fills the buffer, for the 33rd time.
    RecordingStream stream;
    stream.recording = false;
    stream.writes = {{33, 33, Outcome::Refuse}};
    {
        OCBase64EncoderWriter writer(stream);
        for (int i = 0; i < 2048 * 16 - 1; ++i)
            writer.writeBlock("abcd");
        EXPECT_THROW(writer.writeBlock("abcd"), OXStream_WriteError);
        for (int i = 0; i < 18; ++i)
            writer.writeBlock("efgh");
    }
    ASSERT_EQ(stream.data.size(), 2048U * 66 + 4 + 2 + 64 + 2 + 4);
    std::string line;
    for (int i = 0; i < 16; ++i)
        line += "efgh";
    EXPECT_EQ(stream.data.substr(2048 * 66 - 6), "abcd\r\nefgh\r\n" + line + "\r\nefgh");
}

TEST(OCBase64Decoder, DecodesGroups) {
    EXPECT_EQ(group(&OCBase64Decoder::decode4, "TWFu"), "Man");
    EXPECT_EQ(group(&OCBase64Decoder::decode3, "TWE"), "Ma-");
    EXPECT_EQ(group(&OCBase64Decoder::decode2, "TQ"), "M--");
    EXPECT_EQ(group(&OCBase64Decoder::decode4, "////"), "\xff\xff\xff");
    EXPECT_EQ(group(&OCBase64Decoder::decode4, "++++"), "\xfb\xef\xbe");
    // The bits that are left over do not matter.
    EXPECT_EQ(group(&OCBase64Decoder::decode3, "TWH"), "Ma-");
    EXPECT_EQ(group(&OCBase64Decoder::decode2, "TV"), "M--");
}

TEST(OCBase64Decoder, ValuesAreThePlacesInTheAlphabet) {
    const Stepwise decoder;
    for (int c = 0; c < 256; ++c) {
        const int value = base64::valueOf(static_cast<char>(c));
        const int expected = value >= 0 ? value : c == '=' ? 254 : 255;
        EXPECT_EQ(decoder.table()[c], expected) << c;
    }
}

TEST(OCBase64Decoder, TheTableIsBuiltInSteps) {
    Stepwise decoder;
    decoder.initializeMatrixUnknown();
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(decoder.table()[c], 255);
    EXPECT_EQ(decoder.decoded("TWFu"), "");
    decoder.initializeMatrixPad();
    EXPECT_EQ(decoder.table()[int('=')], 254);
    EXPECT_EQ(decoder.table()[int('A')], 255);
    decoder.initializeMatrixAlphabet();
    EXPECT_EQ(decoder.table()[int('A')], 0);
    EXPECT_EQ(decoder.table()[int('/')], 63);
    EXPECT_EQ(decoder.decoded("TWFu"), "Man");
    decoder.initializeMatrixUnknown();
    decoder.initializeMatrix();
    EXPECT_EQ(decoder.decoded("TWFuTWE="), "ManMa");
    decoder.initializeMatrixUnknown();
    decoder.initialize();
    EXPECT_EQ(decoder.decoded("TWFuTWE="), "ManMa");
}

TEST(OCBase64Decoder, LengthIsWhatStandsBeforeTheFirstForeignCharacter) {
    const OCBase64Decoder decoder;
    EXPECT_EQ(decoder.length("TWFu", 4), 4U);
    EXPECT_EQ(decoder.length("TWFu", 3), 3U);
    EXPECT_EQ(decoder.length("TWFu", 0), 0U);
    EXPECT_EQ(decoder.length("TWE=", 4), 3U);
    EXPECT_EQ(decoder.length("TQ==", 4), 2U);
    EXPECT_EQ(decoder.length("T===", 4), 1U);
    EXPECT_EQ(decoder.length("=AAA", 4), 0U);
    EXPECT_EQ(decoder.length(" AAA", 4), 0U);
    EXPECT_EQ(decoder.length("TW u", 4), 2U);
    EXPECT_EQ(decoder.length("T\xc1"
                             "AA",
                             4),
              1U);
    EXPECT_EQ(decoder.length("T", 1), 1U);
    EXPECT_EQ(decoder.length("AAAAAAAAAA=", 11), 10U);
}

TEST(OCBase64Decoder, DecodesLinesAndPadding) {
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded("TWFu"), "Man");
    EXPECT_EQ(decoded("TWFu\r\nTWFu"), "ManMan");
    EXPECT_EQ(decoded("TWFu\r\n"), "Man");
    EXPECT_EQ(decoded("\r\n\r\nTWFu"), "Man");
    EXPECT_EQ(decoded("T\nW\r\nF\tu"), "Man");
    EXPECT_EQ(decoded("TWE="), "Ma");
    EXPECT_EQ(decoded("TQ=="), "M");
}

TEST(OCBase64Decoder, GoesOnBehindABlockThatIsCut) {
    EXPECT_EQ(decoded("TWE=TWFu"), "MaMan");
    EXPECT_EQ(decoded("TQ==TWFu"), "MMan");
    EXPECT_EQ(decoded("TQ=xTWFu"), "MMan");
    EXPECT_EQ(decoded("TW u"), "M");
    EXPECT_EQ(decoded("TW uTWFu"), "MMan");
    EXPECT_EQ(decoded("TWF-TWFu"), "MaMan");
}

TEST(OCBase64Decoder, EndsAtABlockOfWhichNothingIsLeft) {
    std::string rest;
    EXPECT_EQ(decoded("=AAA", &rest), "");
    EXPECT_EQ(rest, "");
    EXPECT_EQ(decoded(" AAA"), "");
    EXPECT_EQ(decoded("TWFu=AAATWFu", &rest), "Man");
    EXPECT_EQ(rest, "TWFu");
    EXPECT_EQ(decoded("TWFuA==="), "Man");
    EXPECT_EQ(decoded("TWFuA=A\r\nATWFu", &rest), "Man");
    EXPECT_EQ(rest, "TWFu");
    EXPECT_EQ(decoded("TWFu-AAA\r\nTWFu", &rest), "Man");
    EXPECT_EQ(rest, "\r\nTWFu");
}

TEST(OCBase64Decoder, TakesWhatTheDataEndWith) {
    EXPECT_EQ(decoded("TWFuT"), "Man");
    EXPECT_EQ(decoded("TWFuTW"), "ManM");
    EXPECT_EQ(decoded("TWFuTWE"), "ManMa");
    EXPECT_EQ(decoded("TWFuTWE\r\n"), "ManMa");
}

TEST(OCBase64Decoder, BytesOutsideAsciiCountAsAbsent) {
    for (int c = 128; c < 256; ++c) {
        const std::string foreign(1, static_cast<char>(c));
        EXPECT_EQ(decoded("TW" + foreign + "Fu" + foreign + "TWFu"), "ManMan") << c;
    }
    for (int c = 0; c < 32; ++c) {
        const std::string control(1, static_cast<char>(c));
        EXPECT_EQ(decoded(control + "TWF" + control + control + "uTWFu"), "ManMan") << c;
    }
}

TEST(OCBase64Decoder, EveryOtherCharacterCutsItsBlock) {
    for (int c = 32; c < 128; ++c) {
        const std::string character(1, static_cast<char>(c));
        if (base64::valueOf(static_cast<char>(c)) >= 0)
            continue;
        EXPECT_EQ(decoded("TWF" + character + "TWFu"), "MaMan") << c;
        EXPECT_EQ(decoded(character + "AAATWFu"), "") << c;
    }
}

TEST(OCBase64Decoder, UndoesTheEncoderAtEveryLength) {
    const unsigned int seed = 20271;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    for (unsigned long size = 0; size < 700; ++size) {
        const std::string bytes = randomBytes(random, size);
        ASSERT_EQ(decoded(encoded(bytes)), bytes) << size;
    }
    const std::string bytes = randomBytes(random, 100000);
    EXPECT_EQ(decoded(encoded(bytes)), bytes);
}

TEST(OCBase64Decoder, DecodesMixedTextLikeTheModel) {
    const unsigned int seed = 20272;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    for (int round = 0; round < 3000; ++round) {
        // Text with little, some or much that is none of the alphabet.
        const unsigned int every = round % 3 == 0 ? 3 : round % 3 == 1 ? 40 : 1000;
        std::string text = base64::encode(randomBytes(random, random() % 400));
        for (char& c : text)
            if (random() % every == 0)
                c = random() % 2 == 0 ? static_cast<char>(random() % 256)
                                      : "\r\n\t\xe4"[random() % 4];
        unsigned long end = 0;
        std::string rest;
        ASSERT_EQ(decoded(text, &rest), base64::decode(text, end)) << text;
        ASSERT_EQ(rest, text.substr(end)) << text;
    }
}

TEST(OCBase64Decoder, StreamsSeeLargeBlocks) {
    RecordingStream source(base64::encode(std::string(5000, 'x')));
    ASSERT_EQ(source.data.size(), 6876U);
    RecordingStream target;
    OCBase64Decoder().decode(source, target);
    EXPECT_EQ(source.takeCalls(),
              Calls({"read 4096 -> 4096", "read 4096 -> 2780", "read 4096 -> end"}));
    EXPECT_EQ(target.takeCalls(), Calls({"write 4096 -> 4096", "write 904 -> 904"}));
}

TEST(OCBase64Decoder, AWriteThatFailsOnTheWayLeavesTheSourceBehindTheLastBlock) {
    RecordingStream source(std::string(8192, 'A'));
    RecordingStream target;
    target.writes = {{1, 1, Outcome::Throw}};
    EXPECT_THROW(OCBase64Decoder().decode(source, target), RecordingStream::Error);
    EXPECT_EQ(source.position, 1366U * 4);
    EXPECT_EQ(target.takeCalls(), Calls({"write 4096 -> thrown", "write 4096 -> 4096"}));
}

TEST(OCBase64Decoder, AReadThatFailsKeepsWhatWasDecoded) {
    RecordingStream source(std::string(8192, 'A'));
    source.reads = {{2, 2, Outcome::Throw}};
    RecordingStream target;
    EXPECT_THROW(OCBase64Decoder().decode(source, target), RecordingStream::Error);
    EXPECT_EQ(target.data, std::string(3072, '\0'));
}

TEST(OCBase64DecoderReader, ReadsBlocksOfFourWithoutControlCharacters) {
    OCMemoryStream stream("ab\r\ncd e\x80\x7f=\x1f", 13);
    OCBase64DecoderReader reader(stream);
    char block[] = "----";
    EXPECT_EQ(reader.readBlock(block), 4U);
    EXPECT_STREQ(block, "abcd");
    EXPECT_EQ(reader.readBlock(block), 4U);
    EXPECT_STREQ(block, " e\x7f=");
    EXPECT_EQ(reader.readBlock(block), 0U);
}

TEST(OCBase64DecoderReader, LeavesWhatFollowsTheBlock) {
    OCMemoryStream stream("abcd\r\ne", 7);
    {
        OCBase64DecoderReader reader(stream);
        char block[4];
        reader.readBlock(block);
    }
    EXPECT_EQ(stream.getPosition(), 4U);
}

TEST(OCBase64DecoderWriter, WritesAsManyBytesAsItIsGiven) {
    RecordingStream stream;
    {
        OCBase64DecoderWriter writer(stream);
        writer.writeBlock("abc", 3);
        writer.writeBlock("abc", 1);
        writer.writeBlock("abc", 0);
        writer.writeBlock("abcdefgh", 8);
        EXPECT_EQ(stream.takeCalls(), Calls());
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"write 12 -> 12"}));
    EXPECT_EQ(stream.data, "abcaabcdefgh");
}

TEST(OCBase64, StreamsThatFailByThemselvesPassThrough) {
    OCHandleStream closed;
    OCMemoryStream target;
    const char* const text =
        "OXHandleStream_ReadError: Can not read from file stream (Bad file descriptor)";
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { OCBase64Encoder().encode(closed, target); }),
              text);
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { OCBase64Decoder().decode(closed, target); }),
              text);
    EXPECT_TRUE(target.isEmpty());
}

TEST(OCBase64, TakesTwoAllocationsOrFails) {
    const std::string bytes(3000, 'b');
    const std::string text = base64::encode(bytes);
    OCNullStream nowhere;
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  OCMemoryStream source(bytes.data(), bytes.size());
                  const unsigned long before = fault::heapRecord().requests;
                  OCBase64Encoder().encode(source, nowhere);
                  EXPECT_EQ(fault::heapRecord().requests - before, 2U);
                  OCMemoryStream encodedSource(text.data(), text.size());
                  const unsigned long between = fault::heapRecord().requests;
                  OCBase64Decoder().decode(encodedSource, nowhere);
                  EXPECT_EQ(fault::heapRecord().requests - between, 2U);
              }),
              0);
    EXPECT_EQ(
        fault::blocksLeftBy([&] {
            OCMemoryStream source(bytes.data(), bytes.size());
            EXPECT_EQ(fault::failEachRequest([&] { OCBase64Encoder().encode(source, nowhere); },
                                             [&] { EXPECT_EQ(source.getPosition(), 0U); }),
                      2U);
            OCMemoryStream encodedSource(text.data(), text.size());
            EXPECT_EQ(
                fault::failEachRequest([&] { OCBase64Decoder().decode(encodedSource, nowhere); },
                                       [&] { EXPECT_EQ(encodedSource.getPosition(), 0U); }),
                2U);
        }),
        0);
}

TEST(OCBase64, RefusedMemoryLosesNothing) {
    const std::string bytes(10000, 'b');
    // The streams' storage and the buffers; that the target's growth is refused once does not
    // matter.
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  EXPECT_EQ(fault::failEachRequest([&] {
                                OCMemoryStream source(bytes.data(), bytes.size());
                                OCMemoryStream target;
                                OCBase64Encoder().encode(source, target);
                            }),
                            4U);
              }),
              0);
}
