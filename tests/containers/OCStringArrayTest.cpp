#include "OCStringArray.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

/// What the array of pointers shows, up to its null pointer.
Texts texts(const OCStringArray& array) {
    Texts result;
    for (char* const* each = array.getBuffer(); *each != nullptr; ++each)
        result.push_back(*each);
    return result;
}

void fill(OCStringArray& array, int count) {
    for (int i = 0; i < count; ++i)
        array.addString(std::to_string(i).c_str());
}

const std::string longText(300, 'L');

TEST(OCStringArray, HoldsAStreamAndAList) {
    EXPECT_EQ(8 + sizeof(OCMemoryStream) + sizeof(OCStringList), sizeof(OCStringArray));
    EXPECT_EQ(632u, sizeof(OCStringArray));
    EXPECT_EQ(2u, slots::slotCount<OCStringArray>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStringArray>);
}

TEST(OCStringArray, ANewOneHoldsASingleNullPointer) {
    OCStringArray array;
    EXPECT_TRUE(array.isEmpty());
    EXPECT_EQ(0u, array.getCount());
    ASSERT_NE(nullptr, array.getBuffer());
    EXPECT_EQ(nullptr, array.getBuffer()[0]);
}

TEST(OCStringArray, PointsToItsStrings) {
    OCStringArray array;
    array.addString("ls");
    EXPECT_FALSE(array.isEmpty());
    array.addString("-l");
    EXPECT_EQ(2u, array.getCount());
    char** const buffer = array.getBuffer();
    EXPECT_STREQ("ls", buffer[0]);
    EXPECT_STREQ("-l", buffer[1]);
    EXPECT_EQ(nullptr, buffer[2]);
    const OCStringArray& constant = array;
    EXPECT_EQ(const_cast<char* const*>(buffer), constant.getBuffer());
}

TEST(OCStringArray, KeepsOrderDuplicatesAndEmptyStrings) {
    OCStringArray array;
    for (const char* const each : {"b", "", "A", "b", longText.c_str()})
        array.addString(each);
    EXPECT_EQ((Texts{"b", "", "A", "b", longText}), texts(array));
}

TEST(OCStringArray, HoldsCopies) {
    OCAnsiString text("one");
    OCStringArray array;
    array.addString(text);
    text = "two";
    EXPECT_EQ((Texts{"one"}), texts(array));
}

TEST(OCStringArray, TheStringsCanBeChangedInPlace) {
    OCStringArray array;
    array.addString("abc");
    array.getBuffer()[0][1] = 'x';
    array.addString("d");
    EXPECT_EQ((Texts{"axc", "d"}), texts(array));
}

TEST(OCStringArray, GrowsBeyondTheFirstBlockOfPointers) {
    OCStringArray array;
    fill(array, 5000);
    const Texts all = texts(array);
    ASSERT_EQ(5000u, all.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(std::to_string(i), all[i]);
}

TEST(OCStringArray, RebuildingGivesTheSamePointers) {
    OCStringArray array;
    fill(array, 2000);
    const std::vector<char*> before(array.getBuffer(), array.getBuffer() + 2001);
    array.rebuildPointers();
    EXPECT_EQ(before, std::vector<char*>(array.getBuffer(), array.getBuffer() + 2001));
    array.addString("x");
    EXPECT_EQ("x", texts(array).back());
    EXPECT_EQ(2001u, texts(array).size());
}

TEST(OCStringArray, CopiesAreDeep) {
    OCStringArray array;
    array.addString("a");
    array.addString(longText.c_str());
    OCStringArray copy(array);
    array.getBuffer()[0][0] = 'x';
    array.addString("c");
    EXPECT_EQ((Texts{"a", longText}), texts(copy));
    EXPECT_NE(array.getBuffer()[1], copy.getBuffer()[1]);
    OCStringArray assigned;
    fill(assigned, 3000);
    EXPECT_EQ(&assigned, &(assigned = copy));
    EXPECT_EQ((Texts{"a", longText}), texts(assigned));
    assigned.addString("b");
    EXPECT_EQ((Texts{"a", longText, "b"}), texts(assigned));
    EXPECT_EQ(&assigned, &assigned.assign(OCStringArray()));
    EXPECT_EQ(Texts(), texts(assigned));
    EXPECT_TRUE(assigned.isEmpty());
}

TEST(OCStringArray, AssigningItselfChangesNothing) {
    OCStringArray array;
    array.addString("a");
    char* const characters = array.getBuffer()[0];
    const OCStringArray& alias = array;
    array = alias;
    EXPECT_EQ((Texts{"a"}), texts(array));
    EXPECT_EQ(characters, array.getBuffer()[0]);
}

TEST(OCStringArray, ARefusedChangeChangesNothing) {
    OCStringArray large;
    fill(large, 2000);
    for (const int count : {0, 5, 63, 64, 1023, 1024}) {
        SCOPED_TRACE(count);
        OCStringArray array;
        fill(array, count);
        const Texts before = texts(array);
        EXPECT_LT(0u, fault::failEachRequest([&] { array.addString(longText.c_str()); },
                                             [&] {
                                                 EXPECT_EQ(before, texts(array));
                                                 EXPECT_EQ(before.size(), array.getCount());
                                             }));
        EXPECT_EQ(before.size() + 1, array.getCount());
        EXPECT_EQ(longText, texts(array).back());
    }
    OCStringArray array;
    array.addString("a");
    EXPECT_LT(2000u, fault::failEachRequest([&] { array.assign(large); },
                                            [&] { EXPECT_EQ((Texts{"a"}), texts(array)); }));
    EXPECT_EQ(texts(large), texts(array));
}

TEST(OCStringArray, LeavesNothingBehindWhereverMemoryEnds) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  fault::failEachRequest([] {
                      OCStringArray array;
                      for (int i = 0; i < 70; ++i)
                          array.addString(longText.c_str());
                      OCStringArray copy(array);
                      array = copy;
                  });
              }));
}

void addMany(unsigned long count) {
    OCStringArray array;
    for (unsigned long i = 0; i < count; ++i)
        array.addString("x");
    EXPECT_EQ(count, texts(array).size());
}

TEST(OCStringArray, AddingManyIsNotQuadratic) {
    EXPECT_LT(growth::ofEightTimes(addMany, 100000), 45);
}

} // namespace
