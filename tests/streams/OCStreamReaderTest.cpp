#include "OCStreamReader.h"

#include "OCMemoryStream.h"
#include "streams/StreamRuns.h"
#include "support/FaultInjection.h"
#include "support/RecordingStream.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

using Calls = std::vector<std::string>;
using Outcome = RecordingStream::Outcome;

namespace {

std::string pattern(unsigned long size) {
    std::string text(size, '\0');
    for (unsigned long i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

std::string readAll(OCStreamReader& reader) {
    std::string text;
    char c;
    while (reader.readCharacter(c))
        text += c;
    return text;
}

/// Delivers more than it is asked for, or claims to.
class Boasting : public OCStream {
public:
    bool read(void* buffer, unsigned long& count) override {
        std::memset(buffer, 'b', count);
        count = 1UL << 40;
        return true;
    }
    unsigned long seek(long offset, OEStreamSeek) override {
        soughtBy = offset;
        return 0;
    }
    void setSize(unsigned long) override {}
    bool write(const void*, unsigned long&) override { return false; }

    long soughtBy = 0;
};

} // namespace

TEST(OCStreamReader, HoldsABufferAReferenceAndTwoNumbers) {
    EXPECT_EQ(sizeof(OCStreamReader), 568U);
    EXPECT_EQ(slots::slotCount<OCStreamReader>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCStreamReader>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCStreamReader>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStreamReader>);
    EXPECT_FALSE((std::is_convertible_v<OCStream&, OCStreamReader>));
}

TEST(OCStreamReader, ReadsNothingBeforeTheFirstCharacterIsWanted) {
    RecordingStream stream("abc");
    { OCStreamReader reader(stream); }
    EXPECT_EQ(stream.takeCalls(), Calls());
}

TEST(OCStreamReader, DeliversEveryByteValueInOrder) {
    const std::string text = pattern(20000);
    OCMemoryStream stream(text.data(), text.size());
    OCStreamReader reader(stream);
    EXPECT_EQ(readAll(reader), text);
}

TEST(OCStreamReader, AsksForItsBufferAtATimeAndOnlyWhenNothingIsLeft) {
    RecordingStream stream(pattern(5000));
    OCStreamReader reader(stream);
    char c;
    ASSERT_TRUE(reader.readCharacter(c));
    EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> 4096"}));
    for (int i = 1; i < 4096; ++i)
        ASSERT_TRUE(reader.readCharacter(c));
    EXPECT_EQ(stream.takeCalls(), Calls());
    ASSERT_TRUE(reader.previewCharacter(c));
    EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> 904"}));
    EXPECT_EQ(readAll(reader).size(), 904U);
    EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> end"}));
}

TEST(OCStreamReader, AsksAgainAfterTheEndAndGoesOnWhenThereIsMore) {
    RecordingStream stream("a");
    OCStreamReader reader(stream);
    EXPECT_EQ(readAll(reader), "a");
    char c = '-';
    EXPECT_FALSE(reader.readCharacter(c));
    EXPECT_FALSE(reader.previewCharacter(c));
    EXPECT_EQ(c, '-');
    EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> 1", "read 4096 -> end", "read 4096 -> end",
                                         "read 4096 -> end"}));
    stream.data += "b";
    EXPECT_EQ(readAll(reader), "b");
}

TEST(OCStreamReader, APreviewReadsNothing) {
    OCMemoryStream stream("ab", 2);
    OCStreamReader reader(stream);
    char c = 0;
    EXPECT_TRUE(reader.previewCharacter(c));
    EXPECT_EQ(c, 'a');
    c = 0;
    EXPECT_TRUE(reader.previewCharacter(c));
    EXPECT_EQ(c, 'a');
    c = 0;
    EXPECT_TRUE(reader.readCharacter(c));
    EXPECT_EQ(c, 'a');
    EXPECT_TRUE(reader.previewCharacter(c));
    EXPECT_EQ(c, 'b');
    EXPECT_TRUE(reader.readCharacter(c));
    EXPECT_EQ(c, 'b');
    c = '-';
    EXPECT_FALSE(reader.previewCharacter(c));
    EXPECT_EQ(c, '-');
}

TEST(OCStreamReader, ShortReadsAreTakenAsTheyCome) {
    RecordingStream stream(pattern(10));
    stream.chunk = 4;
    OCStreamReader reader(stream);
    EXPECT_EQ(readAll(reader), pattern(10));
    EXPECT_EQ(stream.takeCalls(),
              Calls({"read 4096 -> 4", "read 4096 -> 4", "read 4096 -> 2", "read 4096 -> end"}));
}

TEST(OCStreamReader, AReadOfNoBytesIsTheEnd) {
    RecordingStream stream("abc");
    stream.reads = {{1, 1, Outcome::Zero}};
    OCStreamReader reader(stream);
    char c = '-';
    EXPECT_FALSE(reader.readCharacter(c));
    EXPECT_EQ(c, '-');
    EXPECT_TRUE(reader.readCharacter(c));
    EXPECT_EQ(c, 'a');
}

TEST(OCStreamReader, GivesBackWhatWasNotRead) {
    OCMemoryStream stream("0123456789", 10);
    {
        OCStreamReader reader(stream);
        char c;
        for (int i = 0; i < 3; ++i)
            ASSERT_TRUE(reader.readCharacter(c));
        EXPECT_EQ(stream.getPosition(), 10U);
    }
    EXPECT_EQ(stream.getPosition(), 3U);
}

TEST(OCStreamReader, GivesBackByOneSeekOrNone) {
    RecordingStream stream(pattern(6000));
    {
        OCStreamReader reader(stream);
        char c;
        for (int i = 0; i < 4097; ++i)
            ASSERT_TRUE(reader.readCharacter(c));
        ASSERT_TRUE(reader.previewCharacter(c));
        stream.takeCalls();
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"seek -1903 current -> 4097"}));
    {
        OCStreamReader reader(stream);
        readAll(reader);
        stream.takeCalls();
    }
    EXPECT_EQ(stream.takeCalls(), Calls());
}

TEST(OCStreamReader, APreviewedCharacterIsGivenBack) {
    OCMemoryStream stream("abc", 3);
    {
        OCStreamReader reader(stream);
        char c;
        ASSERT_TRUE(reader.previewCharacter(c));
    }
    EXPECT_EQ(stream.getPosition(), 0U);
}

TEST(OCStreamReader, FailingToGiveBackIsNoFailure) {
    RecordingStream stream("abc");
    stream.seekThrows = true;
    {
        OCStreamReader reader(stream);
        char c;
        ASSERT_TRUE(reader.readCharacter(c));
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> 3", "seek -2 current -> 1"}));
}

TEST(OCStreamReader, AFailingReadLeavesTheReaderAsItWas) {
    RecordingStream stream("abcdef");
    stream.chunk = 3;
    stream.reads = {{2, 2, Outcome::Throw}};
    OCStreamReader reader(stream);
    char c;
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(reader.readCharacter(c));
    c = '-';
    EXPECT_THROW(reader.readCharacter(c), RecordingStream::Error);
    EXPECT_EQ(c, '-');
    EXPECT_EQ(readAll(reader), "def");
}

TEST(OCStreamReader, AFailingReadGivesNothingBack) {
    RecordingStream stream("abc");
    stream.reads = {{2, 2, Outcome::Throw}};
    {
        OCStreamReader reader(stream);
        char c;
        for (int i = 0; i < 3; ++i)
            ASSERT_TRUE(reader.readCharacter(c));
        EXPECT_THROW(reader.previewCharacter(c), RecordingStream::Error);
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> 3", "read 4096 -> thrown"}));
}

TEST(OCStreamReader, AStreamThatClaimsTooMuchIsCutToTheBuffer) {
    Boasting stream;
    {
        OCStreamReader reader(stream);
        char c = 0;
        ASSERT_TRUE(reader.readCharacter(c));
        EXPECT_EQ(c, 'b');
    }
    EXPECT_EQ(stream.soughtBy, -4095);
}

TEST(OCStreamReader, MakingOneTakesOneAllocationOrFails) {
    OCMemoryStream stream("abc", 3);
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  const unsigned long before = fault::heapRecord().requests;
                  OCStreamReader reader(stream);
                  EXPECT_EQ(fault::heapRecord().requests - before, 1U);
                  EXPECT_EQ(fault::heapRecord().lastSize, 4096U);
              }),
              0);
    EXPECT_EQ(fault::failEachRequest([&] { OCStreamReader reader(stream); }), 1U);
    EXPECT_EQ(stream.getPosition(), 0U);
}

TEST(OCStreamReader, PreviewsAndReadsLikeAWalkOverTheData) {
    const unsigned int seed = 20261;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    for (int round = 0; round < 60; ++round) {
        RecordingStream stream(pattern(random() % 10000));
        stream.recording = false;
        stream.chunk = 1 + random() % 5000;
        const unsigned long steps = random() % 12000;
        unsigned long position = 0;
        {
            OCStreamReader reader(stream);
            for (unsigned long i = 0; i < steps; ++i) {
                char c = 0;
                const bool reads = random() % 3 > 0;
                const bool done = reads ? reader.readCharacter(c) : reader.previewCharacter(c);
                ASSERT_EQ(done, position < stream.data.size());
                if (!done)
                    break;
                ASSERT_EQ(c, stream.data[position]);
                position += reads ? 1 : 0;
            }
        }
        ASSERT_EQ(stream.position, position);
    }
}

TEST(OCStreamReader, RunsAreTheFetchedCharacters) {
    using orvabase::StreamRuns;
    RecordingStream stream(pattern(5000));
    {
        OCStreamReader reader(stream);
        EXPECT_EQ(StreamRuns::fetchedCount(reader), 0U);
        EXPECT_TRUE(StreamRuns::fetch(reader));
        EXPECT_TRUE(StreamRuns::fetch(reader));
        EXPECT_EQ(stream.takeCalls(), Calls({"read 4096 -> 4096"}));
        EXPECT_EQ(std::string(StreamRuns::fetched(reader), StreamRuns::fetchedCount(reader)),
                  pattern(4096));
        StreamRuns::skip(reader, 4000);
        EXPECT_EQ(StreamRuns::fetchedCount(reader), 96U);
        char c = 0;
        EXPECT_TRUE(reader.readCharacter(c));
        EXPECT_EQ(c, pattern(5000)[4000]);
        StreamRuns::skip(reader, 95);
        EXPECT_TRUE(StreamRuns::fetch(reader));
        EXPECT_EQ(StreamRuns::fetchedCount(reader), 904U);
        StreamRuns::skip(reader, 4);
        stream.takeCalls();
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"seek -900 current -> 4100"}));
    RecordingStream empty;
    OCStreamReader reader(empty);
    EXPECT_FALSE(StreamRuns::fetch(reader));
}
