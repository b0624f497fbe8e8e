// Between two memory streams the coders leave the buffers of their adapters out. Nothing but the
// time may tell that: the streams are left as a derived class, which the coders call as they call
// any stream, is left.

#include "OCBase64.h"

#include "OCMemoryStream.h"
#include "support/FaultInjection.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <string>

namespace {

class DerivedStream : public OCMemoryStream {
public:
    using OCMemoryStream::OCMemoryStream;
};

std::string contentOf(const OCMemoryStream& stream) {
    if (stream.isEmpty())
        return "";
    const OCMemoryBuffer bytes = stream.makeBuffer();
    return std::string(bytes.getData(), bytes.getSize());
}

/// How the two streams of a job begin.
struct Start {
    std::string source;
    unsigned long sourcePosition = 0;
    std::string target;
    unsigned long targetPosition = 0;
    unsigned long targetCapacity = 0; // at least
    unsigned long refused = ~0UL;     // the request for memory from which on all fail
};

struct End {
    bool thrown;
    unsigned long sourcePosition;
    std::string target;
    unsigned long targetPosition;
    unsigned long targetCapacity;
};

void expectEqual(const End& expected, const End& actual) {
    EXPECT_EQ(expected.thrown, actual.thrown);
    EXPECT_EQ(expected.sourcePosition, actual.sourcePosition);
    EXPECT_TRUE(expected.target == actual.target);
    EXPECT_EQ(expected.targetPosition, actual.targetPosition);
    EXPECT_EQ(expected.targetCapacity, actual.targetCapacity);
}

template<class Stream, class Job>
End endOf(const Start& start, const Job& job) {
    Stream source(start.source.data(), start.source.size());
    source.setPosition(start.sourcePosition);
    Stream target;
    target.setSize(start.targetCapacity);
    target.setSize(0);
    target.writeBuffer(start.target.data(), start.target.size());
    target.setPosition(start.targetPosition);
    bool thrown = false;
    {
        fault::HeapFault fault(start.refused, fault::HeapFault::Following);
        try {
            job(source, target);
        } catch (const OXMemory_AllocationError&) {
            thrown = true;
        }
    }
    return {thrown, source.getPosition(), contentOf(target), target.getPosition(),
            target.getCapacity()};
}

void encode(OCStream& source, OCStream& target) {
    OCBase64Encoder().encode(source, target);
}

void decode(OCStream& source, OCStream& target) {
    OCBase64Decoder().decode(source, target);
}

template<class Job>
void expectSameEnd(const Start& start, const Job& job) {
    SCOPED_TRACE(::testing::Message()
                 << "source " << start.source.size() << " from " << start.sourcePosition
                 << ", target " << start.target.size() << " from " << start.targetPosition
                 << ", capacity " << start.targetCapacity << ", refused " << start.refused);
    expectEqual(endOf<DerivedStream>(start, job), endOf<OCMemoryStream>(start, job));
}

std::string randomBytes(std::mt19937& random, unsigned long count) {
    std::string bytes(count, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

std::string encoded(const std::string& bytes) {
    Start start;
    start.source = bytes;
    return endOf<DerivedStream>(start, encode).target;
}

/// Base64 in lines of `width`, with the damage that decoding passes over, cuts a block at or ends
/// with.
std::string damaged(std::mt19937& random, unsigned long bytes, unsigned long width) {
    static const char damages[] = {'\n', '\x80', '=', ' ', 'A'};
    const std::string whole = encoded(randomBytes(random, bytes));
    std::string text;
    unsigned long column = 0;
    for (const char c : whole) {
        if (c == '\r' || c == '\n')
            continue;
        text += c;
        if (++column == width) {
            text += "\r\n";
            column = 0;
        }
    }
    for (unsigned long i = random() % 3; i > 0 && !text.empty(); --i)
        text[random() % text.size()] = damages[random() % sizeof damages];
    return text;
}

constexpr unsigned long sizes[] = {0,    1,    47,   48,    49,    3071,  3072,  4095, 4096,
                                   4097, 6144, 8191, 12288, 12289, 30000, 98304, 98400};
constexpr unsigned long capacities[] = {0, 8192, 16384, 40960, 140000, 200000};

TEST(OCBase64Memory, EncodingEndsAsThroughTheBuffers) {
    std::mt19937 random(1);
    for (const unsigned long size : sizes)
        for (const unsigned long capacity : capacities) {
            Start start;
            start.source = randomBytes(random, size);
            start.targetCapacity = capacity;
            expectSameEnd(start, encode);
        }
}

TEST(OCBase64Memory, DecodingEndsAsThroughTheBuffers) {
    std::mt19937 random(2);
    for (const unsigned long size : sizes)
        for (const unsigned long capacity : capacities)
            for (const unsigned long width : {64UL, 76UL, 62UL, ~0UL}) {
                Start start;
                start.source = damaged(random, size, width);
                start.targetCapacity = capacity;
                expectSameEnd(start, decode);
            }
}

TEST(OCBase64Memory, PositionsCount) {
    std::mt19937 random(3);
    for (unsigned long round = 0; round < 200; ++round) {
        Start start;
        start.source = randomBytes(random, 20000);
        start.sourcePosition = random() % 20001;
        start.target = std::string(random() % 30000, 't');
        start.targetPosition = round % 2 == 0 ? start.target.size() : random() % 30000;
        start.targetCapacity = random() % 80000;
        expectSameEnd(start, encode);
        start.source = damaged(random, 20000, 64);
        expectSameEnd(start, decode);
    }
}

TEST(OCBase64Memory, ABlockSizeOfTheTargetsOwnCounts) {
    std::mt19937 random(5);
    const std::string bytes = randomBytes(random, 100000);
    for (const unsigned long blockSize : {1UL, 7UL, 4096UL, 65536UL, 1000000UL}) {
        const auto inBlocks = [blockSize](auto job) {
            return [=](OCStream& from, OCStream& to) {
                static_cast<OCMemoryStream&>(to).setBlockSize(blockSize);
                job(from, to);
            };
        };
        Start start;
        start.source = bytes;
        expectSameEnd(start, inBlocks(encode));
        start.source = encoded(bytes);
        expectSameEnd(start, inBlocks(decode));
    }
}

TEST(OCBase64Memory, BytesBehindTheDecodedOnesStay) {
    Start start;
    start.source = encoded(std::string(300, 'x')) + "====";
    start.target = std::string(5000, 't');
    const End end = endOf<OCMemoryStream>(start, decode);
    EXPECT_TRUE(end.target == std::string(300, 'x') + std::string(4700, 't'));
}

TEST(OCBase64Memory, ARefusedGrowthLeavesTheStreamsAsThroughTheBuffers) {
    std::mt19937 random(4);
    for (const unsigned long capacity : capacities)
        for (const unsigned long targetPosition : {0UL, 1UL, 5000UL}) {
            Start start;
            start.source = randomBytes(random, 250000);
            start.target = std::string(7000, 't');
            start.targetPosition = targetPosition;
            start.targetCapacity = capacity;
            start.refused = 1;
            EXPECT_TRUE(endOf<OCMemoryStream>(start, encode).thrown);
            expectSameEnd(start, encode);
            start.source = damaged(random, 250000, 64);
            expectSameEnd(start, decode);
        }
}

TEST(OCBase64Memory, GrowsStepByStepWhenTheWholeIsRefused) {
    std::mt19937 random(6);
    const std::string bytes = randomBytes(random, 250000);
    OCMemoryStream source(bytes.data(), bytes.size());
    OCMemoryStream target;
    {
        const fault::HeapFault fault(1, fault::HeapFault::Once);
        encode(source, target);
        EXPECT_TRUE(fault.triggered());
    }
    EXPECT_TRUE(contentOf(target) == encoded(bytes));
}

/// Runs a job with one stream as source and target, which has room for more than it holds.
template<class Stream, class Job>
std::string endInPlace(const std::string& content, const Job& job) {
    Stream stream(content.data(), content.size());
    stream.setSize(100000);
    stream.setSize(content.size());
    stream.setPosition(0);
    job(stream, stream);
    return std::to_string(stream.getPosition()) + ' ' + contentOf(stream);
}

TEST(OCBase64Memory, AStreamMayBeSourceAndTarget) {
    std::mt19937 random(7);
    for (const unsigned long size : {9UL, 48UL, 300UL, 5000UL, 20000UL}) {
        SCOPED_TRACE(size);
        const std::string bytes = randomBytes(random, size);
        EXPECT_TRUE(endInPlace<DerivedStream>(bytes, encode) ==
                    endInPlace<OCMemoryStream>(bytes, encode));
        const std::string text = encoded(bytes);
        EXPECT_TRUE(endInPlace<DerivedStream>(text, decode) ==
                    endInPlace<OCMemoryStream>(text, decode));
    }
    EXPECT_EQ("13 ManManManTWFu", endInPlace<OCMemoryStream>("ManManMan", [](auto& from, auto& to) {
                  from.setPosition(6);
                  encode(from, to);
              }));
}

/// Counts what it is asked for.
class CountingStream : public OCMemoryStream {
public:
    using OCMemoryStream::OCMemoryStream;

    bool read(void* to, unsigned long& count) override {
        ++reads;
        return OCMemoryStream::read(to, count);
    }
    bool write(const void* from, unsigned long& count) override {
        ++writes;
        return OCMemoryStream::write(from, count);
    }

    unsigned long reads = 0;
    unsigned long writes = 0;
};

TEST(OCBase64Memory, OverridesOfADerivedClassAreCalled) {
    const std::string bytes(5000, 'x');
    const std::string text = encoded(bytes);
    for (const bool encodes : {true, false}) {
        const std::string& content = encodes ? bytes : text;
        const auto job = encodes ? encode : decode;
        CountingStream source(content.data(), content.size());
        OCMemoryStream plainTarget;
        job(source, plainTarget);
        EXPECT_LE(3u, source.reads); // two blocks and the end
        OCMemoryStream plainSource(content.data(), content.size());
        CountingStream target;
        job(plainSource, target);
        EXPECT_EQ(2u, target.writes);
        EXPECT_TRUE(contentOf(target) == contentOf(plainTarget));
    }
}

} // namespace
