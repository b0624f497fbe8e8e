#include "OCMemoryStream.h"

#include "OCMemory.h"

#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

std::string content(const OCMemoryStream& stream) {
    if (stream.isEmpty())
        return std::string();
    const OCMemoryBuffer buffer = stream.makeBuffer();
    return std::string(buffer.getData(), buffer.getSize());
}

std::string pattern(unsigned long size) {
    std::string text(size, '\0');
    for (unsigned long i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

OCMemoryStream& hundred(OCMemoryStream& stream) {
    stream.writeBuffer(pattern(100).data(), 100);
    stream.setPosition(0);
    return stream;
}

} // namespace

TEST(OCMemoryStream, HoldsABufferAndThreeNumbers) {
    EXPECT_EQ(sizeof(OCMemoryBuffer), 536U);
    EXPECT_EQ(sizeof(OCMemoryStream), 568U);
    OCMemoryStream stream;
    stream.setBlockSize(100);
    stream.setSize(30);
    stream.setPosition(20);
    unsigned long fields[3];
    std::memcpy(fields, reinterpret_cast<const char*>(&stream) + 8 + sizeof(OCMemoryBuffer),
                sizeof fields);
    EXPECT_EQ(fields[0], 100U); // the block size
    EXPECT_EQ(fields[1], 20U);  // the position
    EXPECT_EQ(fields[2], 30U);  // the size
}

TEST(OCMemoryStream, OverridesThePrimitivesInTheirSlots) {
    EXPECT_EQ(slots::slotOf(&OCMemoryStream::read), 2U);
    EXPECT_EQ(slots::slotOf(&OCMemoryStream::seek), 3U);
    EXPECT_EQ(slots::slotOf(&OCMemoryStream::setSize), 4U);
    EXPECT_EQ(slots::slotOf(&OCMemoryStream::write), 5U);
    EXPECT_EQ(slots::slotCount<OCMemoryStream>(), 6U);
}

TEST(OCMemoryStream, IsNotCopyable) {
    EXPECT_FALSE(std::is_copy_constructible_v<OCMemoryStream>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCMemoryStream>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCMemoryStream>);
}

TEST(OCMemoryStream, AFreshStreamIsEmptyWithABlockOfStorage) {
    OCMemoryStream stream;
    EXPECT_EQ(stream.getSize(), 0U);
    EXPECT_EQ(stream.getPosition(), 0U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.getCapacity(), 8192U);
    EXPECT_EQ(stream.getBlockSize(), 8192U);
    char byte = 'x';
    unsigned long count = 1;
    EXPECT_FALSE(stream.read(&byte, count));
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(byte, 'x');
}

TEST(OCMemoryStream, CanBeMadeWithASize) {
    OCMemoryStream stream(100);
    EXPECT_EQ(stream.getSize(), 100U);
    EXPECT_EQ(stream.getPosition(), 0U);
    EXPECT_EQ(stream.getCapacity(), 100U);
    EXPECT_EQ(stream.getBlockSize(), 8192U);
    OCMemoryStream large(20000);
    EXPECT_EQ(large.getSize(), 20000U);
    EXPECT_EQ(large.getCapacity(), 20000U);
}

TEST(OCMemoryStream, CanBeMadeWithSizeZeroAndGrowsFromThere) {
    OCMemoryStream stream(0UL);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.getCapacity(), 0U);
    char byte;
    unsigned long count = 1;
    EXPECT_FALSE(stream.read(&byte, count));
    stream.writeBuffer("a", 1);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    EXPECT_EQ(content(stream), "a");
}

TEST(OCMemoryStream, CanBeMadeOverACopyOfData) {
    std::string data("ab\0cd", 5);
    OCMemoryStream stream(data.data(), data.size());
    data = "xxxxx";
    EXPECT_EQ(stream.getSize(), 5U);
    EXPECT_EQ(stream.getPosition(), 0U);
    EXPECT_EQ(stream.getCapacity(), 5U);
    EXPECT_EQ(stream.getBlockSize(), 8192U);
    EXPECT_EQ(content(stream), std::string("ab\0cd", 5));
    OCMemoryStream empty("", 0);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.getCapacity(), 0U);
}

TEST(OCMemoryStream, RefusesNullData) {
    EXPECT_EQ(thrown<OXMemoryBuffer_NullPointer>([] { OCMemoryStream stream(nullptr, 3); }),
              "OXMemoryBuffer_NullPointer: Unexpected null pointer");
    EXPECT_EQ(thrown<OXMemoryBuffer_NullPointer>([] { OCMemoryStream stream(nullptr, 0); }),
              "OXMemoryBuffer_NullPointer: Unexpected null pointer");
}

TEST(OCMemoryStream, StorageGrowsInWholeBlocks) {
    OCMemoryStream stream;
    stream.writeBuffer("a", 1);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    stream.writeBuffer(pattern(8191).data(), 8191);
    EXPECT_EQ(stream.getSize(), 8192U);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    stream.writeBuffer("b", 1);
    EXPECT_EQ(stream.getSize(), 8193U);
    EXPECT_EQ(stream.getCapacity(), 16384U);
    EXPECT_EQ(content(stream), "a" + pattern(8191) + "b");
}

TEST(OCMemoryStream, StorageGrowsFromAnOddSizeToWholeBlocks) {
    OCMemoryStream stream("0123456789", 10);
    stream.setPosition(10);
    stream.writeBuffer("x", 1);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    EXPECT_EQ(content(stream), "0123456789x");
}

TEST(OCMemoryStream, TheBlockSizeTakesEffectAtTheNextGrowth) {
    OCMemoryStream stream;
    stream.setBlockSize(1000);
    EXPECT_EQ(stream.getBlockSize(), 1000U);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    stream.setSize(8192);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    stream.setSize(8193);
    EXPECT_EQ(stream.getCapacity(), 9000U);
}

TEST(OCMemoryStream, ABlockSizeOfZeroCountsAsOne) {
    OCMemoryStream stream;
    stream.setBlockSize(0);
    EXPECT_EQ(stream.getBlockSize(), 1U);
    stream.setSize(8195);
    EXPECT_EQ(stream.getCapacity(), 8195U);
}

TEST(OCMemoryStream, CapacityIsTheSizeRoundedUpToBlocks) {
    OCMemoryStream stream;
    EXPECT_EQ(stream.calculateCapacity(0), 0U);
    EXPECT_EQ(stream.calculateCapacity(1), 8192U);
    EXPECT_EQ(stream.calculateCapacity(8191), 8192U);
    EXPECT_EQ(stream.calculateCapacity(8192), 8192U);
    EXPECT_EQ(stream.calculateCapacity(8193), 16384U);
    stream.setBlockSize(10);
    EXPECT_EQ(stream.calculateCapacity(95), 100U);
    EXPECT_EQ(stream.calculateCapacity(100), 100U);
    stream.setBlockSize(1);
    EXPECT_EQ(stream.calculateCapacity(~0UL), ~0UL);
}

TEST(OCMemoryStream, ACapacityThatWouldWrapIsAnAllocationFailure) {
    OCMemoryStream stream;
    EXPECT_EQ(stream.calculateCapacity(~0UL - 8191), ~0UL - 8191);
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { stream.calculateCapacity(~0UL - 8190); }),
              "OXMemory_AllocationError: Memory allocation failure");
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { stream.calculateCapacity(~0UL); }),
              "OXMemory_AllocationError: Memory allocation failure");
    stream.setBlockSize(~0UL);
    EXPECT_EQ(stream.calculateCapacity(1), ~0UL);
    EXPECT_EQ(stream.calculateCapacity(~0UL), ~0UL);
    stream.setBlockSize(~0UL - 1);
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { stream.calculateCapacity(~0UL); }),
              "OXMemory_AllocationError: Memory allocation failure");
}

TEST(OCMemoryStream, SizesThatCannotBeAreAnAllocationFailureAndChangeNothing) {
    OCMemoryStream stream;
    hundred(stream).setPosition(40);
    for (const unsigned long size : {~0UL, ~0UL - 8191, 1UL << 62}) {
        EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { stream.setSize(size); }),
                  "OXMemory_AllocationError: Memory allocation failure");
        EXPECT_EQ(stream.getPosition(), 40U);
        EXPECT_EQ(content(stream), pattern(100));
        EXPECT_EQ(stream.getCapacity(), 8192U);
    }
    EXPECT_EQ(thrown<OXMemory_AllocationError>([] { OCMemoryStream huge(1UL << 62); }),
              "OXMemory_AllocationError: Memory allocation failure");
}

TEST(OCMemoryStream, AWriteWhoseEndWouldWrapIsAnAllocationFailureAndChangesNothing) {
    OCMemoryStream stream;
    hundred(stream).setPosition(40);
    for (const unsigned long count : {~0UL, ~0UL - 39, ~0UL - 40, 1UL << 62}) {
        unsigned long offered = count;
        EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { stream.write("", offered); }),
                  "OXMemory_AllocationError: Memory allocation failure");
        EXPECT_EQ(offered, count);
        EXPECT_EQ(stream.getPosition(), 40U);
        EXPECT_EQ(content(stream), pattern(100));
        EXPECT_EQ(stream.getCapacity(), 8192U);
    }
}

TEST(OCMemoryStream, ReadsWhatIsThereAndThenTheEnd) {
    OCMemoryStream stream("0123456789", 10);
    char buffer[11] = "----------";
    unsigned long count = 4;
    EXPECT_TRUE(stream.read(buffer, count));
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(std::string(buffer), "0123------");
    EXPECT_EQ(stream.getPosition(), 4U);
    count = 100;
    EXPECT_TRUE(stream.read(buffer, count));
    EXPECT_EQ(count, 6U);
    EXPECT_EQ(std::string(buffer), "456789----");
    EXPECT_EQ(stream.getPosition(), 10U);
    count = 5;
    EXPECT_FALSE(stream.read(buffer, count));
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(std::string(buffer), "456789----");
}

TEST(OCMemoryStream, ReadingZeroBytesIsTrueEvenAtTheEnd) {
    OCMemoryStream stream;
    unsigned long count = 0;
    EXPECT_TRUE(stream.read(nullptr, count));
    EXPECT_EQ(count, 0U);
}

TEST(OCMemoryStream, ReadBufferCopiesWhatThereIsAndThrows) {
    OCMemoryStream stream("0123", 4);
    char buffer[11] = "----------";
    EXPECT_EQ(thrown<OXStream_ReadError>([&] { stream.readBuffer(buffer, 10); }),
              "OXStream_ReadError: Read from the stream failed");
    EXPECT_EQ(std::string(buffer), "0123------");
    EXPECT_EQ(stream.getPosition(), 4U);
}

TEST(OCMemoryStream, WritesAllAndLeavesTheCount) {
    OCMemoryStream stream;
    unsigned long count = 5;
    EXPECT_TRUE(stream.write("hello", count));
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(stream.getPosition(), 5U);
    EXPECT_EQ(stream.getSize(), 5U);
    EXPECT_EQ(content(stream), "hello");
}

TEST(OCMemoryStream, WritingZeroBytesChangesNothing) {
    OCMemoryStream stream(0UL);
    unsigned long count = 0;
    EXPECT_TRUE(stream.write(nullptr, count));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(stream.getSize(), 0U);
    EXPECT_EQ(stream.getCapacity(), 0U);
}

TEST(OCMemoryStream, WritesWithinTheStreamOverwrite) {
    OCMemoryStream stream("0123456789", 10);
    stream.setPosition(3);
    stream.writeBuffer("abc", 3);
    EXPECT_EQ(stream.getPosition(), 6U);
    EXPECT_EQ(content(stream), "012abc6789");
    EXPECT_EQ(stream.getCapacity(), 10U);
    stream.setPosition(8);
    stream.writeBuffer("WXYZ", 4);
    EXPECT_EQ(content(stream), "012abc67WXYZ");
    EXPECT_EQ(stream.getPosition(), 12U);
}

TEST(OCMemoryStream, ShrinkingMovesThePositionAndKeepsTheStorage) {
    OCMemoryStream stream;
    hundred(stream).setPosition(50);
    stream.setSize(10);
    EXPECT_EQ(stream.getPosition(), 10U);
    EXPECT_EQ(stream.getSize(), 10U);
    EXPECT_EQ(stream.getCapacity(), 8192U);
    EXPECT_EQ(content(stream), pattern(10));
    stream.setSize(0);
    EXPECT_EQ(stream.getPosition(), 0U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.getCapacity(), 8192U);
}

TEST(OCMemoryStream, GrowingKeepsThePositionAndTheBytes) {
    OCMemoryStream stream;
    hundred(stream).setPosition(50);
    stream.setSize(10000);
    EXPECT_EQ(stream.getPosition(), 50U);
    EXPECT_EQ(stream.getSize(), 10000U);
    EXPECT_EQ(stream.getCapacity(), 16384U);
    EXPECT_EQ(content(stream).substr(0, 100), pattern(100));
    stream.setSize(10000);
    EXPECT_EQ(stream.getPosition(), 50U);
    EXPECT_EQ(stream.getCapacity(), 16384U);
}

TEST(OCMemoryStream, SeekingFromTheBeginningIsClamped) {
    OCMemoryStream stream;
    hundred(stream);
    EXPECT_EQ(stream.seek(50, StreamSeekBeginning), 50U);
    EXPECT_EQ(stream.getPosition(), 50U);
    EXPECT_EQ(stream.seek(500, StreamSeekBeginning), 100U);
    EXPECT_EQ(stream.seek(100, StreamSeekBeginning), 100U);
    EXPECT_EQ(stream.seek(-5, StreamSeekBeginning), 0U);
    EXPECT_EQ(stream.seek(99, StreamSeekBeginning), 99U);
    EXPECT_EQ(stream.seek(1, StreamSeekBeginning), 1U);
    EXPECT_EQ(stream.seek(0, StreamSeekBeginning), 0U);
    EXPECT_EQ(stream.seek(LONG_MAX, StreamSeekBeginning), 100U);
    EXPECT_EQ(stream.seek(LONG_MIN, StreamSeekBeginning), 0U);
}

TEST(OCMemoryStream, SeekingFromThePositionIsClamped) {
    OCMemoryStream stream;
    hundred(stream).setPosition(50);
    EXPECT_EQ(stream.seek(0, StreamSeekCurrent), 50U);
    EXPECT_EQ(stream.seek(7, StreamSeekCurrent), 57U);
    EXPECT_EQ(stream.seek(-7, StreamSeekCurrent), 50U);
    EXPECT_EQ(stream.seek(50, StreamSeekCurrent), 100U);
    EXPECT_EQ(stream.seek(1, StreamSeekCurrent), 100U);
    EXPECT_EQ(stream.seek(-100, StreamSeekCurrent), 0U);
    EXPECT_EQ(stream.seek(-1, StreamSeekCurrent), 0U);
    EXPECT_EQ(stream.seek(60, StreamSeekCurrent), 60U);
    EXPECT_EQ(stream.seek(-61, StreamSeekCurrent), 0U);
    EXPECT_EQ(stream.seek(101, StreamSeekCurrent), 100U);
    EXPECT_EQ(stream.seek(LONG_MIN, StreamSeekCurrent), 0U);
    stream.setPosition(60);
    EXPECT_EQ(stream.seek(LONG_MAX, StreamSeekCurrent), 100U);
}

TEST(OCMemoryStream, SeekingFromTheEndIsClamped) {
    OCMemoryStream stream;
    hundred(stream);
    EXPECT_EQ(stream.seek(7, StreamSeekEnd), 100U);
    EXPECT_EQ(stream.seek(0, StreamSeekEnd), 100U);
    EXPECT_EQ(stream.seek(-1, StreamSeekEnd), 99U);
    EXPECT_EQ(stream.seek(-99, StreamSeekEnd), 1U);
    EXPECT_EQ(stream.seek(-100, StreamSeekEnd), 0U);
    EXPECT_EQ(stream.seek(-200, StreamSeekEnd), 0U);
    EXPECT_EQ(stream.seek(LONG_MIN, StreamSeekEnd), 0U);
    EXPECT_EQ(stream.seek(LONG_MAX, StreamSeekEnd), 100U);
}

TEST(OCMemoryStream, AnUnknownOriginLeavesThePosition) {
    OCMemoryStream stream;
    hundred(stream).setPosition(50);
    EXPECT_EQ(stream.seek(7, static_cast<OEStreamSeek>(3)), 50U);
    EXPECT_EQ(stream.seek(7, static_cast<OEStreamSeek>(-1)), 50U);
    EXPECT_EQ(stream.getPosition(), 50U);
}

TEST(OCMemoryStream, ComputingATargetMovesNothing) {
    OCMemoryStream stream;
    hundred(stream).setPosition(50);
    const OCMemoryStream& constant = stream;
    EXPECT_EQ(constant.seekFromBeginning(70), 70U);
    EXPECT_EQ(constant.seekFromBeginning(101), 100U);
    EXPECT_EQ(constant.seekFromCurrent(-20), 30U);
    EXPECT_EQ(constant.seekFromCurrent(51), 100U);
    EXPECT_EQ(constant.seekFromEnd(-20), 80U);
    EXPECT_EQ(constant.seekFromEnd(1), 100U);
    EXPECT_EQ(constant.getPosition(), 50U);
}

TEST(OCMemoryStream, SetPositionBeyondTheEndLandsAtTheEnd) {
    OCMemoryStream stream;
    hundred(stream).setPosition(~0UL);
    EXPECT_EQ(stream.getPosition(), 100U);
}

TEST(OCMemoryStream, MakesABufferOfAllBytesWhereverThePositionIs) {
    OCMemoryStream stream("ab\0cd", 5);
    stream.setPosition(3);
    const OCMemoryBuffer buffer = stream.makeBuffer();
    EXPECT_EQ(buffer.getSize(), 5U);
    EXPECT_EQ(std::string(buffer.getData(), 5), std::string("ab\0cd", 5));
    EXPECT_EQ(stream.getPosition(), 3U);
    OCMemoryStream roomy;
    roomy.writeBuffer("xyz", 3);
    EXPECT_EQ(roomy.makeBuffer().getSize(), 3U);
}

TEST(OCMemoryStream, MakesAStringOfAllBytesZerosIncluded) {
    OCMemoryStream stream("ab\0cd", 5);
    stream.setPosition(3);
    const OCAnsiString text = stream.makeString();
    EXPECT_EQ(text.getLength(), 5U);
    EXPECT_EQ(std::string(text.getString(), 5), std::string("ab\0cd", 5));
    EXPECT_EQ(stream.getPosition(), 3U);
}

TEST(OCMemoryStream, MakesNothingOfAnEmptyStream) {
    const char* expected = "OXMemoryStream_NoData: The memory stream does not contain any data";
    OCMemoryStream stream;
    EXPECT_EQ(thrown<OXMemoryStream_NoData>([&] { stream.makeBuffer(); }), expected);
    EXPECT_EQ(thrown<OXMemoryStream_NoData>([&] { stream.makeString(); }), expected);
    hundred(stream).setSize(0);
    EXPECT_EQ(thrown<OXMemoryStream_NoData>([&] { stream.makeBuffer(); }), expected);
    EXPECT_EQ(thrown<OXMemoryStream_NoData>([&] { stream.makeString(); }), expected);
    EXPECT_EQ(thrown<OXMemoryStream_NoData>([] { OCMemoryStream::throwNoData(); }), expected);
    EXPECT_EQ(OXMemoryStream_NoData().getDetails().getCount(), 0U);
    EXPECT_TRUE((std::is_base_of_v<OXStream, OXMemoryStream_NoData>));
}

namespace {

/// Writes down the virtual calls that the memory stream makes on itself.
class ObservedMemoryStream : public OCMemoryStream {
public:
    using OCMemoryStream::OCMemoryStream;
    unsigned long seek(long offset, OEStreamSeek origin) override {
        ++seeks;
        return OCMemoryStream::seek(offset, origin);
    }
    void setSize(unsigned long wanted) override {
        sizes.push_back(wanted);
        if (!ignoreSize)
            OCMemoryStream::setSize(wanted - shortBy);
    }
    std::vector<unsigned long> sizes;
    unsigned long seeks = 0;
    unsigned long shortBy = 0;
    bool ignoreSize = false;
};

} // namespace

TEST(OCMemoryStream, AWriteAsksADerivedStreamForItsSizeAndGrowsThroughSetSize) {
    ObservedMemoryStream stream;
    unsigned long count = 5;
    EXPECT_TRUE(stream.write("hello", count));
    EXPECT_EQ(stream.seeks, 3U);
    EXPECT_EQ(stream.sizes, std::vector<unsigned long>({5}));
    EXPECT_TRUE(stream.write("again", count));
    EXPECT_EQ(stream.seeks, 6U);
    EXPECT_EQ(stream.sizes, std::vector<unsigned long>({5, 10}));
    stream.setPosition(2);
    stream.seeks = 0;
    EXPECT_TRUE(stream.write("12345", count));
    EXPECT_EQ(stream.seeks, 3U);
    EXPECT_EQ(stream.sizes, std::vector<unsigned long>({5, 10}));
    EXPECT_TRUE(stream.write("xyz", count = 3)); // up to the end and no further
    EXPECT_EQ(stream.sizes, std::vector<unsigned long>({5, 10}));
    EXPECT_EQ(content(stream), "he12345xyz");
}

TEST(OCMemoryStream, ASetSizeThatMakesTheStreamTooShortIsReportedAndNothingIsOverrun) {
    ObservedMemoryStream lazy;
    lazy.ignoreSize = true;
    unsigned long count = 5;
    EXPECT_EQ(thrown<OXMemoryBuffer_NoSuchIndex>([&] { lazy.write("hello", count); }),
              "OXMemoryBuffer_NoSuchIndex: Memory buffer index out of bounds (0)");
    EXPECT_EQ(lazy.getPosition(), 0U);
    EXPECT_TRUE(lazy.isEmpty());

    ObservedMemoryStream scant(0UL);
    scant.shortBy = 1;
    const std::string text = pattern(9000);
    count = text.size();
    EXPECT_EQ(thrown<OXMemoryBuffer_NoSuchIndex>([&] { scant.write(text.data(), count); }),
              "OXMemoryBuffer_NoSuchIndex: Memory buffer index out of bounds (8999)");
    EXPECT_EQ(scant.getPosition(), 0U);
    EXPECT_EQ(scant.getSize(), 8999U);
}

TEST(OCMemoryStream, ASeekThatClaimsMoreThanThereIsCausesNoOverrun) {
    class Liar : public OCMemoryStream {
    public:
        unsigned long seek(long, OEStreamSeek) override { return 1000000; }
    } stream;
    unsigned long count = 9000;
    const std::string text = pattern(9000);
    EXPECT_EQ(thrown<OXMemoryBuffer_NoSuchIndex>([&] { stream.write(text.data(), count); }),
              "OXMemoryBuffer_NoSuchIndex: Memory buffer index out of bounds (0)");
    EXPECT_EQ(stream.getCapacity(), 8192U);
}

TEST(OCMemoryStream, AMoreGenerousSetSizeIsWelcome) {
    class Generous : public OCMemoryStream {
    public:
        void setSize(unsigned long wanted) override { OCMemoryStream::setSize(wanted + 10); }
    } stream;
    stream.writeBuffer("hello", 5);
    EXPECT_EQ(stream.getPosition(), 5U);
    EXPECT_EQ(stream.getSize(), 15U);
}

TEST(OCMemoryStream, ExhaustedMemoryLeavesTheStreamAsItWas) {
    OCMemoryStream stream;
    hundred(stream).setPosition(60);
    const std::string text = pattern(10000);
    const unsigned long writes =
        fault::failEachRequest([&] { stream.writeBuffer(text.data(), text.size()); },
                               [&] {
                                   EXPECT_EQ(stream.getPosition(), 60U);
                                   EXPECT_EQ(stream.getCapacity(), 8192U);
                                   EXPECT_EQ(content(stream), pattern(100));
                               });
    EXPECT_EQ(writes, 1U);
    EXPECT_EQ(content(stream), pattern(100).substr(0, 60) + text);

    const unsigned long sizes = fault::failEachRequest([&] { stream.setSize(50000); },
                                                       [&] {
                                                           EXPECT_EQ(stream.getPosition(), 10060U);
                                                           EXPECT_EQ(stream.getSize(), 10060U);
                                                       });
    EXPECT_EQ(sizes, 1U);
    EXPECT_EQ(stream.getSize(), 50000U);
}

TEST(OCMemoryStream, ExhaustedMemoryFailsTheConstructorsAndTheCopies) {
    const std::string text = pattern(10000);
    EXPECT_EQ(fault::failEachRequest([] { OCMemoryStream stream; }), 1U);
    EXPECT_EQ(fault::failEachRequest([] { OCMemoryStream stream(600); }), 1U);
    EXPECT_EQ(fault::failEachRequest([] { OCMemoryStream stream(512); }), 0U);
    EXPECT_EQ(fault::failEachRequest([&] { OCMemoryStream stream(text.data(), text.size()); }), 1U);
    OCMemoryStream stream(text.data(), text.size());
    EXPECT_GE(fault::failEachRequest([&] { stream.makeBuffer(); }), 1U);
    EXPECT_GE(fault::failEachRequest([&] { stream.makeString(); }), 1U);
    EXPECT_EQ(content(stream), text);
}

TEST(OCMemoryStream, GivesItsMemoryBack) {
    EXPECT_EQ(fault::blocksLeftBy([] {
                  OCMemoryStream stream;
                  const std::string text = pattern(100000);
                  stream.writeBuffer(text.data(), text.size());
                  stream.makeBuffer();
                  stream.makeString();
              }),
              0);
    EXPECT_EQ(fault::blocksLeftBy([] {
                  try {
                      OCMemoryStream().makeString();
                  } catch (const OXMemoryStream_NoData&) {
                  }
              }),
              0);
}

TEST(OCMemoryStream, BehavesLikeAStringWithACursor) {
    std::mt19937 random(20240311);
    for (int run = 0; run < 40; ++run) {
        OCMemoryStream stream;
        std::string model;
        unsigned long cursor = 0;
        if (run % 2 == 1)
            stream.setBlockSize(1 + random() % 700);
        unsigned long capacity = 8192;
        for (int step = 0; step < 400; ++step) {
            SCOPED_TRACE("run " + std::to_string(run) + " step " + std::to_string(step));
            switch (random() % 5) {
            case 0:
            case 1: {
                const std::string text = pattern(random() % 900);
                unsigned long count = text.size();
                ASSERT_TRUE(stream.write(text.data(), count));
                ASSERT_EQ(count, text.size());
                if (model.size() < cursor + text.size())
                    model.resize(cursor + text.size());
                model.replace(cursor, text.size(), text);
                cursor += text.size();
                break;
            }
            case 2: {
                std::string text(random() % 900, '\0');
                unsigned long count = text.size();
                const std::string expected = model.substr(cursor, count);
                const bool more = stream.read(text.data(), count);
                ASSERT_EQ(more, text.empty() || !expected.empty());
                if (more) {
                    ASSERT_EQ(count, expected.size());
                    ASSERT_EQ(text.substr(0, count), expected);
                    cursor += count;
                }
                break;
            }
            case 3: {
                const long offset = static_cast<long>(random() % 20000) - 8000;
                const int origin = static_cast<int>(random() % 3);
                const long base = origin == 0   ? 0
                                  : origin == 1 ? static_cast<long>(cursor)
                                                : static_cast<long>(model.size());
                long target = base + offset;
                if (target < 0)
                    target = 0;
                if (target > static_cast<long>(model.size()))
                    target = static_cast<long>(model.size());
                cursor = static_cast<unsigned long>(target);
                ASSERT_EQ(stream.seek(offset, static_cast<OEStreamSeek>(origin)), cursor);
                break;
            }
            default: {
                // New bytes have no defined value, so they are written at once.
                const unsigned long size = random() % 12000;
                const unsigned long before = model.size();
                stream.setSize(size);
                model.resize(size);
                if (cursor > size)
                    cursor = size;
                if (size > before) {
                    stream.setPosition(before);
                    const std::string fill(size - before, '\0');
                    stream.writeBuffer(fill.data(), fill.size());
                    stream.setPosition(cursor);
                }
                break;
            }
            }
            if (model.size() > capacity)
                capacity = (model.size() + stream.getBlockSize() - 1) / stream.getBlockSize() *
                           stream.getBlockSize();
            ASSERT_EQ(stream.getCapacity(), capacity);
            ASSERT_EQ(stream.getPosition(), cursor);
            ASSERT_EQ(stream.getSize(), model.size());
        }
        ASSERT_EQ(content(stream), model);
    }
}
