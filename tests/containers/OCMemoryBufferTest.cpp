#include "OCMemoryBuffer.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <type_traits>

namespace {

constexpr const char* noMemory = "Memory allocation failure";

/// `size` bytes that differ from place to place.
std::string pattern(unsigned long size, unsigned int seed = 1) {
    std::mt19937 random(seed);
    std::string bytes;
    while (bytes.size() < size)
        bytes += static_cast<char>(random());
    return bytes;
}

std::string content(const OCMemoryBuffer& buffer) {
    return buffer.getSize() == 0 ? std::string() : std::string(buffer.getData(), buffer.getSize());
}

/// Whether the bytes lie in the object itself.
bool isInline(const OCMemoryBuffer& buffer) {
    const auto* const begin = reinterpret_cast<const char*>(&buffer);
    return buffer.getData() >= begin && buffer.getData() < begin + sizeof buffer;
}

TEST(OCMemoryBuffer, HoldsThreeFields) {
    EXPECT_EQ(536u, sizeof(OCMemoryBuffer));
    EXPECT_EQ(2u, slots::slotCount<OCMemoryBuffer>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCMemoryBuffer>);
    const OCMemoryBuffer buffer(1);
    EXPECT_EQ(reinterpret_cast<const char*>(&buffer) + 8, buffer.getData());
}

TEST(OCMemoryBuffer, ANewOneHasNoData) {
    OCMemoryBuffer buffer;
    const OCMemoryBuffer& constant = buffer;
    EXPECT_EQ(0u, buffer.getSize());
    EXPECT_EXCEPTION(buffer.getData(), OXMemoryBuffer_NoData,
                     "The memory buffer does not contain any data");
    EXPECT_EXCEPTION(constant.getData(), OXMemoryBuffer_NoData,
                     "The memory buffer does not contain any data");
    EXPECT_EXCEPTION(buffer[0], OXMemoryBuffer_NoSuchIndex,
                     "Memory buffer index out of bounds (0)");
    EXPECT_EXCEPTION(constant[0], OXMemoryBuffer_NoSuchIndex,
                     "Memory buffer index out of bounds (0)");
    EXPECT_EQ(0u, OCMemoryBuffer(0UL).getSize());
}

TEST(OCMemoryBuffer, TheThrowingOperationsThrow) {
    EXPECT_EXCEPTION(OCMemoryBuffer::throwNoData(), OXMemoryBuffer_NoData,
                     "The memory buffer does not contain any data");
    EXPECT_EXCEPTION(OCMemoryBuffer::throwNoSuchIndex(12), OXMemoryBuffer_NoSuchIndex,
                     "Memory buffer index out of bounds (12)");
}

TEST(OCMemoryBuffer, BytesCanBeReadAndWritten) {
    OCMemoryBuffer buffer("abc", 3);
    EXPECT_EQ('a', buffer[0]);
    buffer[1] = 'x';
    buffer.getData()[2] = 'y';
    const OCMemoryBuffer& constant = buffer;
    EXPECT_EQ('x', constant[1]);
    EXPECT_EQ('y', constant.getData()[2]);
    EXPECT_EXCEPTION(buffer[3], OXMemoryBuffer_NoSuchIndex,
                     "Memory buffer index out of bounds (3)");
    EXPECT_EXCEPTION(constant[~0UL], OXMemoryBuffer_NoSuchIndex,
                     "Memory buffer index out of bounds (18446744073709551615)");
}

TEST(OCMemoryBuffer, UpTo512BytesNeedNoHeap) {
    const unsigned long requests = fault::heapRecord().requests;
    const std::string bytes(512, 'x');
    const unsigned long own = fault::heapRecord().requests - requests;
    OCMemoryBuffer buffer(512);
    buffer.assign(bytes.data(), 512);
    OCMemoryBuffer copy(buffer);
    copy.setSize(1);
    EXPECT_TRUE(isInline(buffer));
    EXPECT_TRUE(isInline(copy));
    EXPECT_EQ(requests + own, fault::heapRecord().requests);
}

TEST(OCMemoryBuffer, MoreThan512BytesAreExactlyOneBlock) {
    const unsigned long requests = fault::heapRecord().requests;
    OCMemoryBuffer buffer(513);
    EXPECT_FALSE(isInline(buffer));
    EXPECT_EQ(requests + 1, fault::heapRecord().requests);
    EXPECT_EQ(513u, fault::heapRecord().lastSize);
    buffer.setSize(10001);
    EXPECT_EQ(requests + 2, fault::heapRecord().requests);
    EXPECT_EQ(10001u, fault::heapRecord().lastSize);
    buffer.setSize(514);
    EXPECT_EQ(requests + 3, fault::heapRecord().requests);
    EXPECT_EQ(514u, fault::heapRecord().lastSize);
    EXPECT_EQ(514u, buffer.getSize());
}

TEST(OCMemoryBuffer, SizeChangesKeepTheFirstBytes) {
    const unsigned long sizes[] = {1, 2, 511, 512, 513, 514, 1000, 5000, 512, 513, 100, 512, 3};
    for (const unsigned long from : sizes) {
        for (const unsigned long to : sizes) {
            const std::string bytes = pattern(from);
            OCMemoryBuffer buffer(bytes.data(), from);
            buffer.setSize(to);
            ASSERT_EQ(to, buffer.getSize());
            ASSERT_EQ(to <= 512, isInline(buffer));
            const unsigned long kept = std::min(from, to);
            ASSERT_EQ(bytes.substr(0, kept), content(buffer).substr(0, kept)) << from << " " << to;
        }
    }
}

TEST(OCMemoryBuffer, Growing512To513MovesToTheHeapAndBackAgain) {
    const std::string bytes = pattern(512);
    const long blocks = fault::heapRecord().liveBlocks;
    OCMemoryBuffer buffer(bytes.data(), 512);
    EXPECT_TRUE(isInline(buffer));
    buffer.setSize(513);
    EXPECT_FALSE(isInline(buffer));
    EXPECT_EQ(blocks + 1, fault::heapRecord().liveBlocks);
    buffer.setSize(512);
    EXPECT_TRUE(isInline(buffer));
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    EXPECT_EQ(bytes, content(buffer));
}

TEST(OCMemoryBuffer, Size0Clears) {
    const long blocks = fault::heapRecord().liveBlocks;
    for (const unsigned long size : {1UL, 512UL, 513UL}) {
        OCMemoryBuffer buffer(size);
        buffer.setSize(0);
        EXPECT_EQ(0u, buffer.getSize());
        EXPECT_EXCEPTION(buffer.getData(), OXMemoryBuffer_NoData,
                         "The memory buffer does not contain any data");
        EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
        buffer.setSize(size);
        buffer.clear();
        EXPECT_EQ(0u, buffer.getSize());
        EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    }
    OCMemoryBuffer empty;
    empty.setSize(0);
    empty.clear();
    EXPECT_EQ(0u, empty.getSize());
}

TEST(OCMemoryBuffer, TakesACopyOfBytes) {
    std::string bytes = pattern(600);
    OCMemoryBuffer buffer(bytes.data(), 600);
    const std::string before = bytes;
    bytes.assign(600, 'x');
    EXPECT_EQ(before, content(buffer));
    EXPECT_EQ(&buffer, &buffer.assign("a\0b", 3));
    EXPECT_EQ(std::string("a\0b", 3), content(buffer));
    EXPECT_TRUE(isInline(buffer));
}

TEST(OCMemoryBuffer, NullIsRefusedAlsoForNoBytes) {
    OCMemoryBuffer buffer("abc", 3);
    EXPECT_EXCEPTION(buffer.assign(nullptr, 0), OXMemoryBuffer_NullPointer,
                     "Unexpected null pointer");
    EXPECT_EXCEPTION(buffer.assign(nullptr, 5), OXMemoryBuffer_NullPointer,
                     "Unexpected null pointer");
    EXPECT_EXCEPTION(OCMemoryBuffer(nullptr, 0), OXMemoryBuffer_NullPointer,
                     "Unexpected null pointer");
    EXPECT_EXCEPTION(OCMemoryBuffer(nullptr, 5), OXMemoryBuffer_NullPointer,
                     "Unexpected null pointer");
    EXPECT_EXCEPTION(buffer.compare(nullptr, 0), OXMemoryBuffer_NullPointer,
                     "Unexpected null pointer");
    EXPECT_EXCEPTION(OCMemoryBuffer().compare(nullptr, 0), OXMemoryBuffer_NullPointer,
                     "Unexpected null pointer");
    EXPECT_EQ("abc", content(buffer));
}

TEST(OCMemoryBuffer, AssigningNoBytesClears) {
    OCMemoryBuffer buffer("abc", 3);
    buffer.assign("x", 0);
    EXPECT_EQ(0u, buffer.getSize());
    EXPECT_EQ(0u, OCMemoryBuffer("x", 0).getSize());
    buffer.assign("abc", 3);
    buffer.assign(buffer.getData(), 0);
    EXPECT_EQ(0u, buffer.getSize());
}

TEST(OCMemoryBuffer, BytesFromInsideItselfAreTaken) {
    for (const unsigned long size : {10UL, 512UL, 513UL, 2000UL}) {
        const std::string bytes = pattern(size);
        for (const unsigned long from : {0UL, 1UL, 9UL, size / 2, size - 1}) {
            for (const unsigned long count : {1UL, size / 3, size - from}) {
                if (from + count > size)
                    continue;
                OCMemoryBuffer buffer(bytes.data(), size);
                buffer.assign(buffer.getData() + from, count);
                ASSERT_EQ(bytes.substr(from, count), content(buffer));
            }
        }
    }
}

TEST(OCMemoryBuffer, CopiesAreDeep) {
    for (const unsigned long size : {0UL, 3UL, 512UL, 513UL}) {
        const std::string bytes = pattern(size);
        OCMemoryBuffer buffer(size);
        if (size != 0)
            std::memcpy(buffer.getData(), bytes.data(), size);
        OCMemoryBuffer copy(buffer);
        OCMemoryBuffer assigned(700);
        EXPECT_EQ(&assigned, &(assigned = buffer));
        if (size != 0)
            buffer[0] = static_cast<char>(buffer[0] + 1);
        EXPECT_EQ(bytes, content(copy));
        EXPECT_EQ(bytes, content(assigned));
    }
}

TEST(OCMemoryBuffer, AssigningItselfChangesNothing) {
    OCMemoryBuffer buffer("abc", 3);
    const OCMemoryBuffer& alias = buffer;
    buffer = alias;
    EXPECT_EQ("abc", content(buffer));
}

TEST(OCMemoryBuffer, GivesItsBlockBack) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCMemoryBuffer buffer(1000);
                  const OCMemoryBuffer copy(buffer);
                  buffer.setSize(2000);
              }));
}

TEST(OCMemoryBuffer, TheSizeDecidesAComparisonFirst) {
    const OCMemoryBuffer three("zzz", 3);
    const OCMemoryBuffer four("aaaa", 4);
    EXPECT_EQ(CompareResultLess, three.compare(four));
    EXPECT_EQ(CompareResultGreater, four.compare(three));
    EXPECT_EQ(CompareResultLess, three.compare("aaaa", 4));
    EXPECT_EQ(CompareResultGreater, four.compare("zzz", 3));
    EXPECT_EQ(CompareResultGreater, four.compare("zzz", 0));
}

TEST(OCMemoryBuffer, EqualSizesCompareTheirBytesAsUnsigned) {
    const OCMemoryBuffer buffer("ab\x7f", 3);
    EXPECT_EQ(CompareResultEqual, buffer.compare("ab\x7f", 3));
    EXPECT_EQ(CompareResultLess, buffer.compare("ab\x80", 3));
    EXPECT_EQ(CompareResultGreater, buffer.compare("ab\x7e", 3));
    EXPECT_TRUE(buffer == OCMemoryBuffer("ab\x7f", 3));
    EXPECT_FALSE(buffer == OCMemoryBuffer("ab\x7e", 3));
    EXPECT_TRUE(buffer != OCMemoryBuffer("ab", 2));
    EXPECT_FALSE(buffer != OCMemoryBuffer("ab\x7f", 3));
}

TEST(OCMemoryBuffer, EmptyBuffersCompare) {
    const OCMemoryBuffer empty;
    const OCMemoryBuffer one("a", 1);
    EXPECT_EQ(CompareResultEqual, empty.compare(OCMemoryBuffer()));
    EXPECT_EQ(CompareResultEqual, empty.compare(empty));
    EXPECT_EQ(CompareResultEqual, empty.compare("x", 0));
    EXPECT_EQ(CompareResultGreater, one.compare(empty));
    EXPECT_EQ(CompareResultLess, empty.compare(one));
    EXPECT_TRUE(empty == OCMemoryBuffer());
    EXPECT_FALSE(empty == one);
}

TEST(OCMemoryBuffer, PointersAndRangesAreChecked) {
    for (const unsigned long size : {5UL, 513UL}) {
        const OCMemoryBuffer buffer(size);
        const char* const data = buffer.getData();
        EXPECT_TRUE(buffer.checkPointer(data));
        EXPECT_TRUE(buffer.checkPointer(data + size - 1));
        EXPECT_FALSE(buffer.checkPointer(data + size));
        EXPECT_FALSE(buffer.checkPointer(data - 1));
        EXPECT_FALSE(buffer.checkPointer(nullptr));
        EXPECT_FALSE(buffer.checkPointer(&size));
        EXPECT_TRUE(buffer.checkRange(data, 1));
        EXPECT_TRUE(buffer.checkRange(data, size));
        EXPECT_TRUE(buffer.checkRange(data + 2, size - 2));
        EXPECT_FALSE(buffer.checkRange(data + 2, size - 1));
        EXPECT_FALSE(buffer.checkRange(data, size + 1));
        EXPECT_FALSE(buffer.checkRange(data - 1, 2));
        EXPECT_FALSE(buffer.checkRange(data, 0));
        EXPECT_FALSE(buffer.checkRange(data, ~0UL));
        EXPECT_FALSE(buffer.checkRange(data + 1, ~0UL - 1));
        EXPECT_FALSE(buffer.checkRange(nullptr, 1));
    }
    const OCMemoryBuffer empty;
    EXPECT_FALSE(empty.checkPointer(nullptr));
    EXPECT_FALSE(empty.checkPointer(&empty));
    EXPECT_FALSE(empty.checkRange(nullptr, 1));
}

TEST(OCMemoryBuffer, ARefusedChangeChangesNothing) {
    const std::string small = pattern(300);
    const std::string large = pattern(3000);
    const OCMemoryBuffer other(pattern(4000).data(), 4000);
    for (const std::string& bytes : {small, large}) {
        OCMemoryBuffer buffer(bytes.data(), bytes.size());
        const auto refused = [&](auto operation) {
            fault::HeapFault fault(1);
            EXPECT_EXCEPTION(operation(), OXMemory_AllocationError, noMemory);
            fault.disarm();
            EXPECT_EQ(bytes, content(buffer));
        };
        refused([&] { buffer.setSize(5000); });
        refused([&] { buffer.setSize(~0UL); });
        refused([&] { buffer.assign(other); });
        refused([&] { buffer.assign(other.getData(), 4000); });
        refused([&] { const OCMemoryBuffer copy(other); });
        refused([&] { const OCMemoryBuffer made(600); });
        refused([&] { const OCMemoryBuffer made(other.getData(), 600); });
    }
    OCMemoryBuffer buffer(large.data(), 3000);
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(buffer.setSize(2000), OXMemory_AllocationError, noMemory);
    fault.disarm();
    EXPECT_EQ(large, content(buffer));
    for (unsigned long number = 1; number <= 2; ++number) {
        fault::HeapFault next(number);
        EXPECT_EXCEPTION(buffer.assign(buffer.getData() + 1, 2000), OXMemory_AllocationError,
                         noMemory);
        next.disarm();
        EXPECT_EQ(large, content(buffer));
    }
}

TEST(OCMemoryBuffer, LeavesNothingBehindWhereverMemoryEnds) {
    const std::string bytes = pattern(2000);
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_LT(4u, fault::failEachRequest([&] {
                                OCMemoryBuffer buffer(bytes.data(), 1000);
                                OCMemoryBuffer copy(buffer);
                                copy.setSize(2000);
                                copy.assign(bytes.data(), 600);
                                buffer = copy;
                                buffer.assign(buffer.getData() + 5, 590);
                            }));
              }));
}

TEST(OXMemoryBuffer, CarriesClassMessageAndIndex) {
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXMemoryBuffer>));
    EXPECT_FALSE(std::is_default_constructible_v<OXMemoryBuffer>);
    EXPECT_THROW(throw OXMemoryBuffer_NoData(), OXMemoryBuffer);
    EXPECT_THROW(throw OXMemoryBuffer_NoSuchIndex(1), OXMemoryBuffer);
    EXPECT_THROW(throw OXMemoryBuffer_NullPointer(), OXMemoryBuffer);
    EXPECT_EQ(0u, OXMemoryBuffer_NoData().getDetails().getCount());
    EXPECT_EQ(1u, OXMemoryBuffer_NoSuchIndex(1).getDetails().getCount());
    EXPECT_EQ(0u, OXMemoryBuffer_NullPointer().getDetails().getCount());
}

TEST(OCMemoryBuffer, BehavesLikeItsModel) {
    const unsigned int seed = 4711;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    OCMemoryBuffer buffer;
    std::string model;
    for (int run = 0; run < 20000; ++run) {
        const unsigned long size = random() % 3 == 0 ? 500 + random() % 30 : random() % 2000;
        switch (random() % 5) {
        case 0: {
            const unsigned long old = model.size();
            buffer.setSize(size);
            model.resize(size);
            for (unsigned long i = old; i < size; ++i)
                buffer[i] = model[i] = static_cast<char>(random());
            break;
        }
        case 1: {
            const std::string bytes = pattern(size, static_cast<unsigned int>(random()));
            buffer.assign(bytes.data(), size);
            model = bytes;
            break;
        }
        case 2:
            if (!model.empty()) {
                const unsigned long from = random() % model.size();
                const unsigned long count = random() % (model.size() - from + 1);
                buffer.assign(buffer.getData() + from, count);
                model = model.substr(from, count);
            }
            break;
        case 3: {
            const OCMemoryBuffer copy(buffer);
            buffer.clear();
            buffer = copy;
            break;
        }
        default:
            if (random() % 20 == 0) {
                buffer.clear();
                model.clear();
            }
            break;
        }
        ASSERT_EQ(model.size(), buffer.getSize());
        ASSERT_EQ(model, content(buffer));
    }
}

} // namespace
