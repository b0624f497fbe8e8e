// The macros `major` and `minor` must not be in the way.
#include <sys/sysmacros.h>

#include "OCVersion.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

static_assert(sizeof(OCVersion) == 16, "two numbers and the virtual table");

TEST(OCVersion, HoldsTwoNumbers) {
    EXPECT_EQ(2u, slots::slotCount<OCVersion>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCVersion>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCVersion>));
}

TEST(OCVersion, ANewOneIsZero) {
    const OCVersion version;
    EXPECT_EQ(0u, version.getMajor());
    EXPECT_EQ(0u, version.getMinor());
    EXPECT_EQ(OCAnsiString("0.0"), version.toString());
}

TEST(OCVersion, TellsItsParts) {
    const OCVersion version(2, 10);
    EXPECT_EQ(2u, version.getMajor());
    EXPECT_EQ(10u, version.getMinor());
    OCVersion copy(version);
    EXPECT_EQ(10u, copy.getMinor());
    copy = OCVersion(7, 8);
    EXPECT_EQ(7u, copy.getMajor());
    EXPECT_EQ(8u, copy.getMinor());
}

TEST(OCVersion, TextIsDecimalWithoutPadding) {
    EXPECT_EQ(OCAnsiString("2.10"), OCVersion(2, 10).toString());
    EXPECT_EQ(OCAnsiString("10.2"), OCVersion(10, 2).toString());
    EXPECT_EQ(OCAnsiString("4294967295.0"), OCVersion(4294967295u, 0).toString());
    EXPECT_EQ(OCAnsiString("4294967295.4294967295"),
              OCVersion(4294967295u, 4294967295u).toString());
}

TEST(OCVersion, TextNeedsNoHeap) {
    const unsigned long requests = fault::heapRecord().requests;
    const OCAnsiString text(OCVersion(4294967295u, 4294967295u).toString());
    EXPECT_EQ(requests, fault::heapRecord().requests);
}

TEST(OCVersion, TheMajorPartDecidesFirst) {
    EXPECT_EQ(CompareResultLess, OCVersion(1, 9).compare(OCVersion(2, 0)));
    EXPECT_EQ(CompareResultGreater, OCVersion(2, 0).compare(OCVersion(1, 9)));
    EXPECT_EQ(CompareResultLess, OCVersion(2, 9).compare(OCVersion(2, 10)));
    EXPECT_EQ(CompareResultGreater, OCVersion(2, 10).compare(OCVersion(2, 9)));
    EXPECT_EQ(CompareResultEqual, OCVersion(2, 9).compare(OCVersion(2, 9)));
    // The parts are unsigned.
    EXPECT_EQ(CompareResultGreater, OCVersion(4294967295u, 0).compare(OCVersion(1, 0)));
    EXPECT_EQ(CompareResultGreater, OCVersion(1, 4294967295u).compare(OCVersion(1, 1)));
}

TEST(OCVersion, OperatorsFollowTheOrder) {
    const OCVersion small(1, 2), large(1, 3);
    EXPECT_TRUE(small == OCVersion(1, 2));
    EXPECT_FALSE(small == large);
    EXPECT_TRUE(small != large);
    EXPECT_FALSE(small != OCVersion(1, 2));
    EXPECT_TRUE(small < large);
    EXPECT_FALSE(small < small);
    EXPECT_FALSE(large < small);
    EXPECT_TRUE(small <= large);
    EXPECT_TRUE(small <= small);
    EXPECT_FALSE(large <= small);
    EXPECT_TRUE(large > small);
    EXPECT_FALSE(small > small);
    EXPECT_FALSE(small > large);
    EXPECT_TRUE(large >= small);
    EXPECT_TRUE(small >= small);
    EXPECT_FALSE(small >= large);
}

} // namespace
