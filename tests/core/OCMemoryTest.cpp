#include "OCMemory.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace {

constexpr unsigned long wideLimit = ~0UL / 4;
constexpr unsigned long vectorLimit = ~0UL / 8;

TEST(OCMemory, AllocateAsksForExactlyTheSize) {
    void* p = nullptr;
    memoryAllocate(p, 37);
    EXPECT_NE(nullptr, p);
    EXPECT_EQ(37u, fault::heapRecord().lastSize);
    memoryRelease(p);
}

TEST(OCMemory, AllocateOverwritesThePointer) {
    char text[] = "x";
    void* p = text;
    memoryAllocate(p, 1);
    EXPECT_NE(static_cast<void*>(text), p);
    EXPECT_STREQ("x", text);
    memoryRelease(p);
}

TEST(OCMemory, AllocateOfNothingIsNoFailure) {
    void* p = nullptr;
    memoryAllocate(p, 0);
    EXPECT_NE(nullptr, p);
    memoryRelease(p);
}

TEST(OCMemory, RefusedAllocationThrowsAndSetsThePointerToNull) {
    char text[] = "x";
    void* p = text;
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(memoryAllocate(p, 10), OXMemory_AllocationError, "Memory allocation failure");
    EXPECT_EQ(nullptr, p);
}

TEST(OCMemory, AnImpossibleSizeIsRefused) {
    void* p = nullptr;
    EXPECT_EXCEPTION(memoryAllocate(p, ~0UL), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EXCEPTION(memoryAllocate(p, 1UL << 62), OXMemory_AllocationError,
                     "Memory allocation failure");
}

TEST(OCMemory, ReallocateKeepsTheContent) {
    void* p = nullptr;
    memoryReallocate(p, 4);
    EXPECT_EQ(4u, fault::heapRecord().lastSize);
    std::memcpy(p, "abc", 4);
    memoryReallocate(p, 100000);
    EXPECT_EQ(100000u, fault::heapRecord().lastSize);
    EXPECT_STREQ("abc", static_cast<char*>(p));
    memoryReallocate(p, 2);
    EXPECT_EQ(0, std::memcmp(p, "ab", 2));
    memoryRelease(p);
}

TEST(OCMemory, RefusedReallocationSetsThePointerToNullAndLeavesTheOldBlock) {
    void* p = nullptr;
    memoryAllocate(p, 4);
    std::memcpy(p, "abc", 4);
    void* old = p;
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(memoryReallocate(p, 100000), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(nullptr, p);
    EXPECT_STREQ("abc", static_cast<char*>(old));
    memoryRelease(old);
}

TEST(OCMemory, ReallocationToNothingReleasesAndThrows) {
    void* p = nullptr;
    memoryAllocate(p, 4);
    const long blocks = fault::heapRecord().liveBlocks;
    EXPECT_EXCEPTION(memoryReallocate(p, 0), OXMemory_AllocationError, "Memory allocation failure");
    EXPECT_EQ(nullptr, p);
    EXPECT_EQ(blocks - 1, fault::heapRecord().liveBlocks);
}

TEST(OCMemory, ReleaseSetsThePointerToNull) {
    void* p = nullptr;
    memoryAllocate(p, 4);
    const unsigned long releases = fault::heapRecord().releases;
    memoryRelease(p);
    EXPECT_EQ(nullptr, p);
    EXPECT_EQ(releases + 1, fault::heapRecord().releases);
    memoryRelease(p);
    EXPECT_EQ(nullptr, p);
}

TEST(OCMemory, CompareGivesMinusOneZeroOrOne) {
    EXPECT_EQ(CompareResultEqual, memoryCompare("abc", "abd", 2));
    EXPECT_EQ(CompareResultLess, memoryCompare("abc", "abz", 3));
    EXPECT_EQ(CompareResultGreater, memoryCompare("abz", "abc", 3));
    EXPECT_EQ(CompareResultLess, memoryCompare("\x01", "\xff", 1));
    EXPECT_EQ(CompareResultGreater, memoryCompare("\xff", "\x01", 1));
    EXPECT_EQ(CompareResultLess, memoryCompare("a\0b", "a\0c", 3));
}

TEST(OCMemory, CompareOfNothingIsEqual) {
    EXPECT_EQ(CompareResultEqual, memoryCompare(nullptr, nullptr, 0));
    EXPECT_EQ(CompareResultEqual, memoryCompare("a", "b", 0));
}

TEST(OCMemory, CopyMayOverlap) {
    char up[] = "0123456789";
    memoryCopy(up + 2, up, 8);
    EXPECT_STREQ("0101234567", up);
    char down[] = "0123456789";
    memoryCopy(down, down + 2, 8);
    EXPECT_STREQ("2345678989", down);
}

TEST(OCMemory, CopyOfNothingTouchesNoPointer) {
    memoryCopy(nullptr, nullptr, 0);
    char text[] = "a";
    memoryCopy(text, nullptr, 0);
    memoryCopy(nullptr, text, 0);
    EXPECT_STREQ("a", text);
}

TEST(OCMemory, FillSetsEveryByte) {
    char text[] = "abcdef";
    memoryFill(text + 1, 4, 'x');
    EXPECT_STREQ("axxxxf", text);
    memoryFill(text, 1, static_cast<char>(-1));
    EXPECT_EQ('\xff', text[0]);
    memoryFill(nullptr, 0, 'x');
}

TEST(OCMemory, ZeroSetsEveryByteToZero) {
    char text[] = "abcdef";
    memoryZero(text + 1, 4);
    EXPECT_EQ(0, std::memcmp(text, "a\0\0\0\0f", 7));
    memoryZero(nullptr, 0);
}

TEST(OCMemory, CountsAreScaledToBytes) {
    char* text = nullptr;
    stringAllocate(text, 3);
    EXPECT_EQ(3u, fault::heapRecord().lastSize);
    stringReallocate(text, 5);
    EXPECT_EQ(5u, fault::heapRecord().lastSize);
    stringRelease(text);
    EXPECT_EQ(nullptr, text);

    wchar_t* wide = nullptr;
    stringAllocate(wide, 3);
    EXPECT_EQ(12u, fault::heapRecord().lastSize);
    stringReallocate(wide, 5);
    EXPECT_EQ(20u, fault::heapRecord().lastSize);
    stringRelease(wide);
    EXPECT_EQ(nullptr, wide);

    OCObject** vector = nullptr;
    vectorAllocate(vector, 3);
    EXPECT_EQ(24u, fault::heapRecord().lastSize);
    vectorReallocate(vector, 5);
    EXPECT_EQ(40u, fault::heapRecord().lastSize);
    vectorRelease(vector);
    EXPECT_EQ(nullptr, vector);
}

TEST(OCMemory, EveryReleaseGivesItsBlockBack) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  char* text = nullptr;
                  stringAllocate(text, 1);
                  stringRelease(text);
                  stringRelease(text);
                  wchar_t* wide = nullptr;
                  stringAllocate(wide, 1);
                  stringRelease(wide);
                  stringRelease(wide);
                  OCObject** vector = nullptr;
                  vectorAllocate(vector, 1);
                  vectorRelease(vector);
                  vectorRelease(vector);
              }));
}

TEST(OCMemory, ReallocationOfCountsKeepsTheContent) {
    wchar_t* wide = nullptr;
    stringReallocate(wide, 2);
    wide[0] = L'a';
    wide[1] = 0;
    stringReallocate(wide, 1000);
    EXPECT_STREQ(L"a", wide);
    stringRelease(wide);
}

TEST(OCMemory, ACountWhoseSizeWrapsIsRefusedWithThePointerUntouched) {
    wchar_t wideText[] = L"x";
    wchar_t* wide = wideText;
    EXPECT_EXCEPTION(stringAllocate(wide, wideLimit + 1), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(wideText, wide);
    EXPECT_EXCEPTION(stringReallocate(wide, wideLimit + 1), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(wideText, wide);

    OCObject* slots[1] = {nullptr};
    OCObject** vector = slots;
    EXPECT_EXCEPTION(vectorAllocate(vector, vectorLimit + 1), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(slots, vector);
    EXPECT_EXCEPTION(vectorReallocate(vector, ~0UL), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(slots, vector);
}

TEST(OCMemory, ARefusedCountSetsThePointerToNull) {
    wchar_t* wide = nullptr;
    EXPECT_EXCEPTION(stringAllocate(wide, wideLimit), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(nullptr, wide);

    char* text = nullptr;
    stringAllocate(text, 2);
    char* oldText = text;
    EXPECT_EXCEPTION(stringReallocate(text, ~0UL), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(nullptr, text);
    stringRelease(oldText);

    stringAllocate(wide, 2);
    wchar_t* oldWide = wide;
    EXPECT_EXCEPTION(stringReallocate(wide, wideLimit), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(nullptr, wide);
    stringRelease(oldWide);

    OCObject** vector = nullptr;
    vectorAllocate(vector, 2);
    OCObject** oldVector = vector;
    EXPECT_EXCEPTION(vectorReallocate(vector, vectorLimit), OXMemory_AllocationError,
                     "Memory allocation failure");
    EXPECT_EQ(nullptr, vector);
    vectorRelease(oldVector);
}

TEST(OCMemory, StringCopyCountsCharacters) {
    char text[] = "abcdef";
    stringCopy(text + 1, text, 4);
    EXPECT_STREQ("aabcdf", text);
    wchar_t wide[] = L"abcdef";
    stringCopy(wide + 1, wide, 4);
    EXPECT_STREQ(L"aabcdf", wide);
    stringCopy(text, nullptr, 0);
    stringCopy(wide, nullptr, 0);
    EXPECT_STREQ(L"aabcdf", wide);
}

TEST(OCMemory, StringLengthStopsAtTheFirstZero) {
    EXPECT_EQ(0u, stringLength(""));
    EXPECT_EQ(3u, stringLength("abc\0def"));
    EXPECT_EQ(0u, stringLength(L""));
    EXPECT_EQ(3u, stringLength(L"abc\0def"));
    EXPECT_EQ(2u, stringLength(L"\x100\x200"));
}

TEST(OXMemory, TheFailureHoldsNoData) {
    EXPECT_EQ(8u, sizeof(OXMemory));
    EXPECT_EQ(8u, sizeof(OXMemory_AllocationError));
    EXPECT_EQ(4u, slots::slotCount<OXMemory_AllocationError>());
    EXPECT_TRUE(std::is_abstract_v<OXMemory>);
    EXPECT_TRUE((std::is_base_of_v<OXMemory, OXMemory_AllocationError>));
    EXPECT_TRUE((std::is_base_of_v<OXException, OXMemory>));
    EXPECT_FALSE((std::is_base_of_v<OXAutoException, OXMemory>));
    EXPECT_TRUE(std::is_nothrow_default_constructible_v<OXMemory_AllocationError>);
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<OXMemory_AllocationError>);
}

TEST(OXMemory, TheFailureCanBeReportedWithoutAnyMemory) {
    bool caught = false;
    fault::HeapFault fault(1, fault::HeapFault::Following);
    try {
        void* p = nullptr;
        memoryAllocate(p, 1);
    } catch (const OXException& failure) {
        caught = failure.getClass() == "OXMemory_AllocationError" &&
                 failure.getMessage() == "Memory allocation failure";
    }
    fault.disarm();
    EXPECT_TRUE(caught);
}

} // namespace
