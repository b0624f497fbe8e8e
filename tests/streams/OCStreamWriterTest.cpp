#include "OCStreamWriter.h"

#include "OCMemoryStream.h"
#include "streams/StreamRuns.h"
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

std::string pattern(unsigned long size) {
    std::string text(size, '\0');
    for (unsigned long i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

void writeAll(OCStreamWriter& writer, const std::string& text) {
    for (const char c : text)
        writer.writeCharacter(c);
}

} // namespace

TEST(OCStreamWriter, HoldsABufferAReferenceAndANumber) {
    EXPECT_EQ(sizeof(OCStreamWriter), 560U);
    EXPECT_EQ(slots::slotCount<OCStreamWriter>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCStreamWriter>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCStreamWriter>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStreamWriter>);
    EXPECT_FALSE((std::is_convertible_v<OCStream&, OCStreamWriter>));
}

TEST(OCStreamWriter, CollectsCharactersUntilItIsFlushed) {
    RecordingStream stream;
    OCStreamWriter writer(stream);
    writeAll(writer, "abc");
    EXPECT_EQ(stream.takeCalls(), Calls());
    writer.flush();
    EXPECT_EQ(stream.takeCalls(), Calls({"write 3 -> 3"}));
    EXPECT_EQ(stream.data, "abc");
    writer.flush();
    EXPECT_EQ(stream.takeCalls(), Calls());
}

TEST(OCStreamWriter, AFlushOfNothingTouchesNothing) {
    RecordingStream stream;
    {
        OCStreamWriter writer(stream);
        writer.flush();
    }
    EXPECT_EQ(stream.takeCalls(), Calls());
}

TEST(OCStreamWriter, FlushesWhenTheBufferIsFull) {
    RecordingStream stream;
    {
        OCStreamWriter writer(stream);
        writeAll(writer, pattern(4095));
        EXPECT_EQ(stream.takeCalls(), Calls());
        writer.writeCharacter(pattern(4096)[4095]);
        EXPECT_EQ(stream.takeCalls(), Calls({"write 4096 -> 4096"}));
        writer.writeCharacter(pattern(4097)[4096]);
        EXPECT_EQ(stream.takeCalls(), Calls());
        EXPECT_EQ(stream.data, pattern(4096));
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"write 1 -> 1"}));
    EXPECT_EQ(stream.data, pattern(4097));
}

TEST(OCStreamWriter, AFullBufferLeavesNothingForTheDestructor) {
    RecordingStream stream;
    {
        OCStreamWriter writer(stream);
        writeAll(writer, pattern(8192));
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"write 4096 -> 4096", "write 4096 -> 4096"}));
    EXPECT_EQ(stream.data, pattern(8192));
}

TEST(OCStreamWriter, ShortWritesAreGoneOnWith) {
    RecordingStream stream;
    stream.chunk = 2;
    OCStreamWriter writer(stream);
    writeAll(writer, "abcde");
    writer.flush();
    EXPECT_EQ(stream.takeCalls(), Calls({"write 5 -> 2", "write 3 -> 2", "write 1 -> 1"}));
    EXPECT_EQ(stream.data, "abcde");
}

TEST(OCStreamWriter, ARefusedFlushKeepsTheCharacters) {
    RecordingStream stream;
    stream.writes = {{1, 1, Outcome::Refuse}};
    OCStreamWriter writer(stream);
    writeAll(writer, "abc");
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { writer.flush(); }),
              "OXStream_WriteError: Writing to the stream failed");
    writer.writeCharacter('d');
    writer.flush();
    EXPECT_EQ(stream.takeCalls(), Calls({"write 3 -> refused", "write 4 -> 4"}));
    EXPECT_EQ(stream.data, "abcd");
}

TEST(OCStreamWriter, AFlushThatFailsHalfWayStartsAgain) {
    RecordingStream stream;
    stream.writes = {{1, 1, Outcome::Normal, 2}, {2, 2, Outcome::Throw}};
    OCStreamWriter writer(stream);
    writeAll(writer, "abc");
    EXPECT_THROW(writer.flush(), RecordingStream::Error);
    EXPECT_EQ(stream.data, "ab");
    writer.flush();
    EXPECT_EQ(stream.data, "ababc");
}

TEST(OCStreamWriter, AFullBufferThatIsRefusedTakesNoMoreCharacters) {
    RecordingStream stream;
    stream.writes = {{1, 3, Outcome::Refuse}};
    {
        OCStreamWriter writer(stream);
        writeAll(writer, pattern(4095));
        // The character that fills the buffer is taken.
        EXPECT_THROW(writer.writeCharacter(pattern(4096)[4095]), OXStream_WriteError);
        // The next one is not, as long as the flush is refused.
        EXPECT_THROW(writer.writeCharacter('x'), OXStream_WriteError);
        EXPECT_THROW(writer.writeCharacter('y'), OXStream_WriteError);
        writer.writeCharacter('z');
        EXPECT_EQ(stream.data, pattern(4096));
    }
    EXPECT_EQ(stream.takeCalls(),
              Calls({"write 4096 -> refused", "write 4096 -> refused", "write 4096 -> refused",
                     "write 4096 -> 4096", "write 1 -> 1"}));
    EXPECT_EQ(stream.data, pattern(4096) + "z");
}

TEST(OCStreamWriter, TheDestructorTriesOnceAndDiscardsTheFailure) {
    RecordingStream stream;
    stream.writes = {{1, 9, Outcome::Throw}};
    {
        OCStreamWriter writer(stream);
        writeAll(writer, "abc");
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"write 3 -> thrown"}));
    EXPECT_EQ(stream.data, "");
}

TEST(OCStreamWriter, TheDestructorTriesAFullBufferThatWasRefusedAgain) {
    RecordingStream stream;
    stream.writes = {{1, 1, Outcome::Refuse}};
    {
        OCStreamWriter writer(stream);
        EXPECT_THROW(writeAll(writer, pattern(4096)), OXStream_WriteError);
    }
    EXPECT_EQ(stream.takeCalls(), Calls({"write 4096 -> refused", "write 4096 -> 4096"}));
    EXPECT_EQ(stream.data, pattern(4096));
}

TEST(OCStreamWriter, MakingOneTakesOneAllocationOrFails) {
    OCMemoryStream stream;
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  const unsigned long before = fault::heapRecord().requests;
                  OCStreamWriter writer(stream);
                  EXPECT_EQ(fault::heapRecord().requests - before, 1U);
                  EXPECT_EQ(fault::heapRecord().lastSize, 4096U);
              }),
              0);
    EXPECT_EQ(fault::failEachRequest([&] { OCStreamWriter writer(stream); }), 1U);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(OCStreamWriter, AnExhaustedHeapBehindTheStreamLeavesTheCharactersWaiting) {
    OCMemoryStream stream(0UL);
    OCStreamWriter writer(stream);
    writeAll(writer, "abc");
    {
        fault::HeapFault failing(1);
        EXPECT_THROW(writer.flush(), OXMemory_AllocationError);
    }
    EXPECT_TRUE(stream.isEmpty());
    writer.flush();
    EXPECT_EQ(stream.makeString(), "abc");
}

TEST(OCStreamWriter, RunsAreWrittenLikeTheirCharacters) {
    const unsigned int seed = 20262;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    using orvabase::StreamRuns;
    for (int round = 0; round < 60; ++round) {
        RecordingStream expected;
        RecordingStream actual;
        {
            OCStreamWriter one(expected);
            OCStreamWriter run(actual);
            for (int i = 0; i < 20; ++i) {
                const std::string text =
                    pattern(random() % 3 == 0 ? random() % 10000 : random() % 100);
                writeAll(one, text);
                StreamRuns::write(run, text.data(), text.size());
                const unsigned long room = StreamRuns::roomCount(run);
                ASSERT_LT(room, 4096U);
                const std::string more(room, 'm');
                more.copy(StreamRuns::room(run), room);
                StreamRuns::add(run, room);
                writeAll(one, more);
                ASSERT_EQ(StreamRuns::roomCount(run), 0U);
                one.writeCharacter('!');
                run.writeCharacter('!');
                ASSERT_EQ(expected.takeCalls(), actual.takeCalls());
            }
        }
        ASSERT_EQ(expected.takeCalls(), actual.takeCalls());
        ASSERT_EQ(expected.data, actual.data);
    }
}

TEST(OCStreamWriter, ThereIsNoRoomForARunWhileAFlushIsRefused) {
    using orvabase::StreamRuns;
    RecordingStream stream;
    stream.writes = {{1, 2, Outcome::Refuse}};
    OCStreamWriter writer(stream);
    const std::string text = pattern(4096);
    EXPECT_THROW(StreamRuns::write(writer, text.data(), text.size()), OXStream_WriteError);
    EXPECT_EQ(StreamRuns::roomCount(writer), 0U);
    EXPECT_THROW(StreamRuns::write(writer, "ab", 2), OXStream_WriteError);
    StreamRuns::write(writer, "cd", 2);
    writer.flush();
    EXPECT_EQ(stream.data, text + "cd");
}
