#include "OCStreamTransfer.h"

#include "OCFileStream.h"
#include "OCMemoryStream.h"
#include "support/FaultInjection.h"
#include "support/RecordingStream.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
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

void transfer(OCStream& source, OCStream& target, unsigned long blockSize) {
    OCStreamTransfer transfer;
    transfer.useSource(source);
    transfer.useTarget(target);
    transfer.setBlockSize(blockSize);
    transfer.execute();
}

/// Fills what it is given once, and claims more.
class Boasting : public OCNullStream {
public:
    bool read(void* buffer, unsigned long& count) override {
        if (ended)
            return false;
        std::memset(buffer, 'b', count);
        count += 1000;
        ended = true;
        return true;
    }

    bool ended = false;
};

} // namespace

TEST(OCStreamTransfer, HoldsTwoPointersAndANumber) {
    EXPECT_EQ(sizeof(OCStreamTransfer), 32U);
    EXPECT_EQ(slots::slotCount<OCStreamTransfer>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCStreamTransfer>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCStreamTransfer>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStreamTransfer>);
}

TEST(OCStreamTransfer, CopiesInBlocksOf16384Bytes) {
    RecordingStream source(pattern(40000));
    RecordingStream target;
    OCStreamTransfer transfer;
    transfer.useSource(source);
    transfer.useTarget(target);
    transfer.execute();
    EXPECT_EQ(target.data, pattern(40000));
    EXPECT_EQ(source.takeCalls(), Calls({"read 16384 -> 16384", "read 16384 -> 16384",
                                         "read 16384 -> 7232", "read 16384 -> end"}));
    EXPECT_EQ(target.takeCalls(),
              Calls({"write 16384 -> 16384", "write 16384 -> 16384", "write 7232 -> 7232"}));
}

TEST(OCStreamTransfer, TheBlockSizeCanBeSet) {
    RecordingStream source("abcde");
    RecordingStream target;
    transfer(source, target, 2);
    EXPECT_EQ(source.takeCalls(),
              Calls({"read 2 -> 2", "read 2 -> 2", "read 2 -> 1", "read 2 -> end"}));
    EXPECT_EQ(target.takeCalls(), Calls({"write 2 -> 2", "write 2 -> 2", "write 1 -> 1"}));
    EXPECT_EQ(target.data, "abcde");
}

TEST(OCStreamTransfer, ABlockSizeOfZeroCountsAsOne) {
    RecordingStream source("ab");
    RecordingStream target;
    transfer(source, target, 0);
    EXPECT_EQ(source.takeCalls(), Calls({"read 1 -> 1", "read 1 -> 1", "read 1 -> end"}));
    EXPECT_EQ(target.data, "ab");
}

TEST(OCStreamTransfer, GoesFromThePositionToTheEnd) {
    OCMemoryStream source("0123456789", 10);
    source.setPosition(4);
    OCMemoryStream target("abcdef", 6);
    target.setPosition(2);
    transfer(source, target, 3);
    EXPECT_EQ(source.getPosition(), 10U);
    EXPECT_EQ(target.getPosition(), 8U);
    EXPECT_EQ(target.makeString(), "ab456789");
}

TEST(OCStreamTransfer, AnEmptySourceWritesNothing) {
    RecordingStream source;
    RecordingStream target;
    transfer(source, target, 100);
    EXPECT_EQ(source.takeCalls(), Calls({"read 100 -> end"}));
    EXPECT_EQ(target.takeCalls(), Calls());
}

TEST(OCStreamTransfer, AStreamMayBeSourceAndTarget) {
    OCMemoryStream stream("abc", 3);
    transfer(stream, stream, 2);
    EXPECT_EQ(stream.makeString(), "abab");
    EXPECT_EQ(stream.getPosition(), 4U);
}

TEST(OCStreamTransfer, CanBeExecutedAgain) {
    OCMemoryStream source("ab", 2);
    OCMemoryStream other("cd", 2);
    OCMemoryStream target;
    OCStreamTransfer transfer;
    transfer.useSource(source);
    transfer.useTarget(target);
    transfer.execute();
    transfer.execute();
    EXPECT_EQ(target.makeString(), "ab");
    transfer.useSource(other);
    transfer.execute();
    EXPECT_EQ(target.makeString(), "abcd");
}

TEST(OCStreamTransfer, ShortReadsAndWritesLoseNothing) {
    RecordingStream source("abcdefghij");
    source.chunk = 4;
    RecordingStream target;
    target.chunk = 3;
    transfer(source, target, 100);
    EXPECT_EQ(source.takeCalls(),
              Calls({"read 100 -> 4", "read 100 -> 4", "read 100 -> 2", "read 100 -> end"}));
    EXPECT_EQ(target.takeCalls(), Calls({"write 4 -> 3", "write 1 -> 1", "write 4 -> 3",
                                         "write 1 -> 1", "write 2 -> 2"}));
    EXPECT_EQ(target.data, "abcdefghij");
}

TEST(OCStreamTransfer, AReadOfNoBytesIsTheEnd) {
    RecordingStream source("abcd");
    source.reads = {{2, 2, Outcome::Zero}};
    RecordingStream target;
    transfer(source, target, 2);
    EXPECT_EQ(source.takeCalls(), Calls({"read 2 -> 2", "read 2 -> 0"}));
    EXPECT_EQ(target.data, "ab");
}

TEST(OCStreamTransfer, ASourceThatClaimsTooMuchIsCutToTheBlock) {
    Boasting source;
    RecordingStream target;
    transfer(source, target, 100);
    EXPECT_EQ(target.takeCalls(), Calls({"write 100 -> 100"}));
    EXPECT_EQ(target.data, std::string(100, 'b'));
}

TEST(OCStreamTransfer, NeedsASourceFirst) {
    OCStreamTransfer transfer;
    const char* const text = "OXStreamTransfer_UnassignedSource: The source stream is unassigned";
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedSource>([&] { transfer.validateSource(); }), text);
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedSource>([&] { transfer.validate(); }), text);
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedSource>([&] { transfer.execute(); }), text);
    // Before a block is allocated.
    transfer.setBlockSize(~0UL);
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedSource>([&] { transfer.execute(); }), text);
    OCMemoryStream target;
    transfer.useTarget(target);
    transfer.validateTarget();
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedSource>([&] { transfer.validate(); }), text);
}

TEST(OCStreamTransfer, NeedsATarget) {
    OCStreamTransfer transfer;
    RecordingStream source("abc");
    transfer.useSource(source);
    transfer.validateSource();
    const char* const text = "OXStreamTransfer_UnassignedTarget: The target stream is unassigned";
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedTarget>([&] { transfer.validateTarget(); }), text);
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedTarget>([&] { transfer.validate(); }), text);
    EXPECT_EQ(thrown<OXStreamTransfer_UnassignedTarget>([&] { transfer.execute(); }), text);
    EXPECT_EQ(source.takeCalls(), Calls());
    OCMemoryStream target;
    transfer.useTarget(target);
    transfer.validate();
}

TEST(OCStreamTransfer, FailuresOfTheStreamsPassThrough) {
    RecordingStream source("abcdef");
    source.reads = {{3, 3, Outcome::Throw}};
    RecordingStream target;
    EXPECT_THROW(transfer(source, target, 2), RecordingStream::Error);
    EXPECT_EQ(target.data, "abcd");

    RecordingStream full;
    full.writes = {{2, 2, Outcome::Refuse}};
    RecordingStream again("abcdef");
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { transfer(again, full, 2); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(full.data, "ab");
    EXPECT_EQ(again.position, 4U);

    OCHandleStream closed;
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { transfer(closed, target, 2); }),
              "OXHandleStream_ReadError: Can not read from file stream (Bad file descriptor)");
}

TEST(OCStreamTransfer, ABlockThatCannotBeAllocatedFailsBeforeAnythingIsRead) {
    RecordingStream source("abc");
    RecordingStream target;
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { transfer(source, target, ~0UL); }),
              "OXMemory_AllocationError: Memory allocation failure");
    EXPECT_EQ(source.takeCalls(), Calls());
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  OCNullStream nothing;
                  EXPECT_EQ(fault::failEachRequest([&] { transfer(nothing, nothing, 16384); }), 1U);
              }),
              0);
}

TEST(OCStreamTransfer, CopiesWhateverTheStreamsDeliver) {
    const unsigned int seed = 20263;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    for (int round = 0; round < 60; ++round) {
        RecordingStream source(pattern(random() % 50000));
        source.position = random() % (source.data.size() + 1);
        const std::string expected = source.data.substr(source.position);
        source.chunk = 1 + random() % 20000;
        RecordingStream target;
        target.chunk = 1 + random() % 20000;
        source.recording = target.recording = false;
        transfer(source, target, 1 + random() % 30000);
        ASSERT_EQ(target.data, expected);
    }
}
