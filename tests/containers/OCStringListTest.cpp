#include "OCStringList.h"
#include "OCFilePath.h"
#include "OCFileStream.h"
#include "OCMemoryStream.h"
#include "containers/KillerOrder.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/Growth.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

constexpr const char* noMemory = "Memory allocation failure";
constexpr const char* null = "<null>";

using Texts = std::vector<std::string>;

std::string text(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

OCAnsiString string(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

Texts texts(const OCStringList& list) {
    Texts result;
    for (unsigned long i = 0; i < list.getCount(); ++i)
        result.push_back(list.hasString(i) ? text(list.getString(i)) : null);
    return result;
}

class List : public OCStringList {
public:
    List(OEStringListCase matching, OEStringListMode order,
         std::initializer_list<const char*> items)
        : OCStringList(matching, order) {
        for (const char* const item : items)
            addString(item);
    }
};

/// A list in the order given.
List unsorted(std::initializer_list<const char*> items = {}) {
    return List(StringListCaseSensitive, StringListModeUnsorted, items);
}

List sorted(std::initializer_list<const char*> items = {}) {
    return List(StringListCaseSensitive, StringListModeSorted, items);
}

List sortedInsensitive(std::initializer_list<const char*> items = {}) {
    return List(StringListCaseInsensitive, StringListModeSorted, items);
}

const std::string longText(300, 'L');

TEST(OCStringList, HoldsThreeFields) {
    EXPECT_EQ(56u, sizeof(OCStringList));
    EXPECT_EQ(2u, slots::slotCount<OCStringList>());
    const OCStringList list(static_cast<OEStringListCase>(7), static_cast<OEStringListMode>(9));
    int fields[2];
    std::memcpy(fields, reinterpret_cast<const char*>(&list) + 8, sizeof fields);
    EXPECT_EQ(7, fields[0]); // the case
    EXPECT_EQ(9, fields[1]); // the mode
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStringList>);
    EXPECT_FALSE(std::is_default_constructible_v<OCStringList>);
    EXPECT_FALSE(std::is_default_constructible_v<OCStringListUtilities>);
}

TEST(OCStringList, EnumerationsHaveTheirValues) {
    EXPECT_EQ(0, StringListCaseInsensitive);
    EXPECT_EQ(1, StringListCaseSensitive);
    EXPECT_EQ(0, StringListModeUnsorted);
    EXPECT_EQ(1, StringListModeSorted);
    EXPECT_EQ(4u, sizeof(OEStringListCase));
    EXPECT_EQ(4u, sizeof(OEStringListMode));
}

TEST(OCStringList, ANewOneIsEmpty) {
    const unsigned long requests = fault::heapRecord().requests;
    {
        const OCStringList list(StringListCaseSensitive, StringListModeSorted);
        EXPECT_EQ(0u, list.getCount());
        EXPECT_EQ(StringListCaseSensitive, list.getCase());
        EXPECT_EQ(StringListModeSorted, list.getMode());
        EXPECT_FALSE(list.hasString(0));
    }
    EXPECT_EQ(requests, fault::heapRecord().requests);
}

TEST(OCStringList, AnUnsortedOneKeepsTheOrder) {
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    list.addString("b");
    EXPECT_EQ(&list, &(list += "a"));
    list += "b";
    EXPECT_EQ((Texts{"b", "a", "b"}), texts(list));
}

TEST(OCStringList, HoldsCopies) {
    OCAnsiString original("one");
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    list += original;
    original = "two";
    EXPECT_EQ((Texts{"one"}), texts(list));
    list.getString(0) = "three";
    EXPECT_EQ((Texts{"three"}), texts(list));
}

TEST(OCStringList, HoldsZeroBytesAndLongTexts) {
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    list += OCAnsiString("a\0b", 3);
    list += string(longText);
    EXPECT_EQ((Texts{std::string("a\0b", 3), longText}), texts(list));
}

TEST(OCStringList, ASortedOneKeepsItselfSorted) {
    EXPECT_EQ((Texts{"A", "a", "b"}), texts(sorted({"b", "A", "a"})));
    EXPECT_EQ((Texts{"", "a", "ab", "b"}), texts(sorted({"b", "ab", "", "a"})));
    EXPECT_EQ((Texts{"\x80", "\xff", "A"}), texts(sorted({"A", "\xff", "\x80"})));
}

TEST(OCStringList, ASortedInsensitiveOneIgnoresCase) {
    const List list = sortedInsensitive({"b", "A", "a"});
    EXPECT_EQ((Texts{"a", "A", "b"}), texts(list));
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("B", index));
    EXPECT_EQ(2u, index);
}

TEST(OCStringList, AnEqualStringIsInsertedBeforeTheOneFound) {
    OCStringList list = sortedInsensitive({"x"});
    list += "X";
    EXPECT_EQ((Texts{"X", "x"}), texts(list));
    // The search of two meets the first of them.
    list += "x";
    EXPECT_EQ((Texts{"x", "X", "x"}), texts(list));
    list.getString(0) = "1x";
    list.getString(1) = "x1";
    list.getString(2) = "x2";
    list += "X1";
    EXPECT_EQ((Texts{"1x", "X1", "x1", "x2"}), texts(list));
}

TEST(OCStringList, OnlyMode1MeansSorted) {
    OCStringList list(StringListCaseSensitive, static_cast<OEStringListMode>(2));
    list += "b";
    list += "a";
    EXPECT_EQ((Texts{"b", "a"}), texts(list));
    EXPECT_EQ(2, static_cast<int>(list.getMode()));
    unsigned long index = 7;
    EXPECT_TRUE(list.indexOf("a", index)); // a binary search would stop at b
    EXPECT_EQ(1u, index);
    index = 7;
    EXPECT_FALSE(list.indexOf("c", index));
    EXPECT_EQ(7u, index);
}

TEST(OCStringList, AnyCaseBut0IsSensitive) {
    OCStringList list(static_cast<OEStringListCase>(7), StringListModeSorted);
    list += "b";
    list += "B";
    EXPECT_EQ((Texts{"B", "b"}), texts(list));
    EXPECT_EQ(&stringListCompareSensitive, list.compareFunction());
    EXPECT_EQ(7, static_cast<int>(OCStringList(list).getCase()));
}

TEST(OCStringList, MissingStringsAreReported) {
    List list = unsorted({"a", "b"});
    list.setCount(3);
    const OCStringList& constant = list;
    EXPECT_EQ(OCAnsiString("b"), constant.getString(1));
    EXPECT_EXCEPTION(list.getString(5), OXStringList_NoSuchIndex,
                     "String list index out of bounds (5)");
    EXPECT_EXCEPTION(constant.getString(3), OXStringList_NoSuchIndex,
                     "String list index out of bounds (3)");
    EXPECT_EXCEPTION(list.getString(2), OXStringList_NullString,
                     "The string list does not contain the requested string (2)");
    EXPECT_EXCEPTION(constant.getString(2), OXStringList_NullString,
                     "The string list does not contain the requested string (2)");
    EXPECT_TRUE(list.hasString(1));
    EXPECT_FALSE(list.hasString(2));
    EXPECT_FALSE(list.hasString(3));
}

TEST(OCStringList, SetStringReplacesInAnUnsortedList) {
    List list = unsorted({"a", "b", "c"});
    OCAnsiString& second = list.getString(1);
    list.setString(1, "x");
    EXPECT_EQ(&second, &list.getString(1));
    EXPECT_EQ((Texts{"a", "x", "c"}), texts(list));
    list.nullString(1);
    list.setString(1, "y");
    EXPECT_EQ((Texts{"a", "y", "c"}), texts(list));
}

TEST(OCStringList, SetStringMovesInASortedList) {
    List two = sorted({"a", "b"});
    two.setString(0, "z");
    EXPECT_EQ((Texts{"b", "z"}), texts(two));
    List list = sorted({"b", "d", "f", "h"});
    list.setString(3, "a");
    EXPECT_EQ((Texts{"a", "b", "d", "f"}), texts(list));
    list.setString(1, "e");
    EXPECT_EQ((Texts{"a", "d", "e", "f"}), texts(list));
    list.setString(2, "e2");
    EXPECT_EQ((Texts{"a", "d", "e2", "f"}), texts(list));
    list.setString(0, "x");
    EXPECT_EQ((Texts{"d", "e2", "f", "x"}), texts(list));
    List one = sorted({"a"});
    one.setString(0, "b");
    EXPECT_EQ((Texts{"b"}), texts(one));
}

TEST(OCStringList, SetStringReplacesANullSlotInASortedList) {
    List list = sorted({"a", "b", "c"});
    list.nullString(1);
    list.setString(1, "z");
    EXPECT_EQ((Texts{"a", "c", "z"}), texts(list));
    list.setCount(5);
    list.setString(4, "b");
    EXPECT_EQ((Texts{"a", "b", "c", "z", null}), texts(list));
}

TEST(OCStringList, ABadIndexToSetOrRemoveIsTheVectors) {
    for (List list : {unsorted({"a", "b"}), sorted({"a", "b"})}) {
        EXPECT_EXCEPTION(list.setString(2, "x"), OXVector_NoSuchIndex,
                         "Vector index out of bounds (2)");
        EXPECT_EXCEPTION(list.removeString(2), OXVector_NoSuchIndex,
                         "Vector index out of bounds (2)");
        EXPECT_EXCEPTION(list.setString(~0UL, "x"), OXVector_NoSuchIndex,
                         "Vector index out of bounds (18446744073709551615)");
        EXPECT_EQ((Texts{"a", "b"}), texts(list));
    }
}

TEST(OCStringList, RemoveDeletesTheStringAndItsSlot) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  List list = unsorted({"a", "b", "c"});
                  const long blocks = fault::heapRecord().liveBlocks;
                  list.removeString(1);
                  EXPECT_EQ(blocks - 1, fault::heapRecord().liveBlocks);
                  EXPECT_EQ((Texts{"a", "c"}), texts(list));
                  list.nullString(0);
                  list.removeString(0);
                  EXPECT_EQ((Texts{"c"}), texts(list));
              }));
}

TEST(OCStringList, NullStringLeavesANullSlot) {
    List list = unsorted({"a", "b"});
    const long blocks = fault::heapRecord().liveBlocks;
    list.nullString(0);
    EXPECT_EQ(blocks - 1, fault::heapRecord().liveBlocks);
    EXPECT_EQ((Texts{null, "b"}), texts(list));
    list.nullString(0);
    list.nullString(2);
    list.nullString(~0UL);
    EXPECT_EQ((Texts{null, "b"}), texts(list));
}

TEST(OCStringList, SetCountDeletesWhatItDropsAndAddsNullSlots) {
    List list = unsorted({"a", "b", "c"});
    const long blocks = fault::heapRecord().liveBlocks;
    list.setCount(1);
    EXPECT_EQ(blocks - 2, fault::heapRecord().liveBlocks);
    EXPECT_EQ((Texts{"a"}), texts(list));
    list.setCount(3);
    EXPECT_EQ((Texts{"a", null, null}), texts(list));
    list.setCount(3);
    EXPECT_EQ(3u, list.getCount());
    list.clear();
    EXPECT_EQ(0u, list.getCount());
    EXPECT_EQ(blocks - 3, fault::heapRecord().liveBlocks);
}

TEST(OCStringList, ClearingKeepsTheCaseAndTheMode) {
    List list = sortedInsensitive({"a", "B"});
    list.clear();
    EXPECT_EQ(0u, list.getCount());
    EXPECT_EQ(StringListCaseInsensitive, list.getCase());
    EXPECT_EQ(StringListModeSorted, list.getMode());
    list += "d";
    list += "C";
    EXPECT_EQ(Texts({"C", "d"}), texts(list));
}

TEST(OCStringList, DestructionDeletesTheStrings) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  List list = unsorted({"a", longText.c_str(), "c"});
                  list.setCount(5);
                  for (int i = 0; i < 200; ++i)
                      list += "x";
              }));
}

TEST(OCStringList, DestructionSucceedsWithoutMemoryToShrink) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCStringList* const list =
                      new OCStringList(StringListCaseSensitive, StringListModeUnsorted);
                  for (int i = 0; i < 200; ++i)
                      *list += "x";
                  fault::HeapFault fault(1, fault::HeapFault::Following);
                  delete list;
                  fault.disarm();
              }));
}

// Searching

TEST(OCStringList, FindsInAnUnsortedList) {
    List list = unsorted({"b", "a", "b"});
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("b", index));
    EXPECT_EQ(0u, index);
    EXPECT_TRUE(list.indexOf("a", index));
    EXPECT_EQ(1u, index);
    EXPECT_TRUE(list.contains("a"));
    list.nullString(0);
    EXPECT_TRUE(list.indexOf("b", index));
    EXPECT_EQ(2u, index);
    index = 99;
    EXPECT_FALSE(list.indexOf("B", index));
    EXPECT_EQ(99u, index);
    EXPECT_FALSE(list.contains("B"));
    EXPECT_FALSE(list.contains("bb"));
    EXPECT_FALSE(list.contains(""));
}

TEST(OCStringList, FindsWithoutRegardToCase) {
    const List list(StringListCaseInsensitive, StringListModeUnsorted, {"one", "Two", "TWO"});
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("tWO", index));
    EXPECT_EQ(1u, index);
    EXPECT_FALSE(list.contains("tw"));
    EXPECT_FALSE(list.contains("t\xd7o"));
}

TEST(OCStringList, AnEmptyListSetsTheIndexTo0) {
    for (const List& list : {unsorted(), sorted()}) {
        unsigned long index = 99;
        EXPECT_FALSE(list.indexOf("a", index));
        EXPECT_EQ(0u, index);
        EXPECT_FALSE(list.contains("a"));
    }
    unsigned long index = 99;
    EXPECT_FALSE(sorted().indexOfSorted("a", index));
    EXPECT_EQ(0u, index);
}

TEST(OCStringList, AMissInASortedListTellsThePlace) {
    const List list = sorted({"b", "d", "f"});
    const std::pair<const char*, unsigned long> expected[] = {
        {"", 0}, {"a", 0}, {"c", 1}, {"e", 2}, {"g", 3}};
    for (const auto& [searched, place] : expected) {
        unsigned long index = 99;
        EXPECT_FALSE(list.indexOf(searched, index));
        EXPECT_EQ(place, index) << searched;
    }
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("b", index));
    EXPECT_EQ(0u, index);
    EXPECT_TRUE(list.indexOf("f", index));
    EXPECT_EQ(2u, index);
}

TEST(OCStringList, TheSearchOfDuplicatesReportsTheFirstItMeets) {
    const List list = sorted({"a", "a", "a", "a"});
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("a", index));
    EXPECT_EQ(1u, index); // the middle of 0 and 3
}

TEST(OCStringList, ANullSlotCountsAsLessInASortedSearch) {
    List list = sorted({"a", "b", "c", "d", "e"});
    list.nullString(2);
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("d", index));
    EXPECT_EQ(3u, index);
    EXPECT_FALSE(list.indexOf("a", index)); // beyond the null slot there is nothing less
    EXPECT_EQ(3u, index);
    list += "bb";
    EXPECT_EQ((Texts{"a", "b", null, "bb", "d", "e"}), texts(list));
}

TEST(OCStringList, BothSearchesCanBeCalledOnAnyList) {
    const List list = unsorted({"c", "a", "b"});
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOfUnsorted("b", index));
    EXPECT_EQ(2u, index);
    EXPECT_TRUE(list.indexOfSorted("a", index));
    EXPECT_EQ(1u, index);
    EXPECT_TRUE(sorted({"a", "b"}).indexOfUnsorted("b", index));
    EXPECT_EQ(1u, index);
}

// Comparison functions

TEST(OCStringList, ComparisonFunctionsOrderStringsAndNull) {
    const OCAnsiString lower("a");
    const OCAnsiString upper("A");
    const OCAnsiString other("b");
    EXPECT_EQ(CompareResultGreater, stringListCompareSensitive(&lower, &upper));
    EXPECT_EQ(CompareResultEqual, stringListCompareInsensitive(&lower, &upper));
    for (const auto compare : {stringListCompareSensitive, stringListCompareInsensitive}) {
        EXPECT_EQ(CompareResultLess, compare(&lower, &other));
        EXPECT_EQ(CompareResultGreater, compare(&other, &lower));
        EXPECT_EQ(CompareResultEqual, compare(&lower, &lower));
        EXPECT_EQ(CompareResultEqual, compare(nullptr, nullptr));
        EXPECT_EQ(CompareResultLess, compare(nullptr, &lower));
        EXPECT_EQ(CompareResultGreater, compare(&lower, nullptr));
    }
}

TEST(OCStringList, TheComparisonFunctionIsTheOneThatTheApplicationNames) {
    const OCVector::Comparator sensitive = stringListCompareSensitive;
    const OCVector::Comparator insensitive = stringListCompareInsensitive;
    EXPECT_EQ(sensitive, unsorted().compareFunction());
    EXPECT_EQ(insensitive, sortedInsensitive().compareFunction());
}

// Sorting

TEST(OCStringList, SortsItsStrings) {
    List list = unsorted({"b", "C", "a", "B"});
    list.sort();
    EXPECT_EQ((Texts{"B", "C", "a", "b"}), texts(list));
    EXPECT_EQ(StringListModeUnsorted, list.getMode());
    list += "A";
    EXPECT_EQ((Texts{"B", "C", "a", "b", "A"}), texts(list));
    List insensitive(StringListCaseInsensitive, StringListModeUnsorted, {"c", "B", "a"});
    insensitive.sort();
    EXPECT_EQ((Texts{"a", "B", "c"}), texts(insensitive));
    List empty = unsorted();
    empty.sort();
    EXPECT_EQ(0u, empty.getCount());
}

TEST(OCStringList, SortingANullSlotIsRefused) {
    List list = unsorted({"b", "a"});
    list.setCount(3);
    EXPECT_EXCEPTION(list.sort(), OXVector_NullElement,
                     "The vector does not contain the requested element (2)");
    list.setCount(2);
    for (int i = 0; i < 100; ++i)
        list += "x";
    list.nullString(50);
    EXPECT_EXCEPTION(list.sort(), OXVector_NullElement,
                     "The vector does not contain the requested element (50)");
    EXPECT_EQ(102u, list.getCount());
}

/// Texts that share beginnings, with zero bytes, bytes of both signs and letters of both cases.
std::string randomText(std::mt19937& random) {
    static const char characters[] = {'a', 'A', 'b', 'B', '\0', '\x80', '\xff', '\x7f', '0'};
    std::string result;
    if (random() % 3 == 0)
        result.assign(random() % 20, 'a');
    for (unsigned long n = random() % 6; n != 0; --n)
        result += characters[random() % sizeof characters];
    return result;
}

bool isLess(const std::string& a, const std::string& b, bool insensitive) {
    const auto key = [insensitive](char c) {
        return static_cast<signed char>(insensitive && c >= 'A' && c <= 'Z' ? c + 32 : c);
    };
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [&](char x, char y) { return key(x) < key(y); });
}

TEST(OCStringList, SortsLikeItsModel) {
    std::mt19937 random(271828);
    for (const bool insensitive : {false, true}) {
        for (int run = 0; run < 100; ++run) {
            OCStringList list(insensitive ? StringListCaseInsensitive : StringListCaseSensitive,
                              StringListModeUnsorted);
            Texts model;
            for (unsigned long n = random() % 300; n != 0; --n) {
                model.push_back(randomText(random));
                list += string(model.back());
            }
            OCVector plain;
            for (unsigned long i = 0; i < list.getCount(); ++i)
                plain.addElement(list.getString(i));
            plain.sort(list.compareFunction());
            list.sort();
            // The very same order as that of the vector's sort, also of equal strings.
            for (unsigned long i = 0; i < list.getCount(); ++i)
                ASSERT_EQ(&plain.getElement(i), &list.getString(i));
            Texts found = texts(list);
            for (std::size_t i = 1; i < found.size(); ++i)
                ASSERT_FALSE(isLess(found[i], found[i - 1], insensitive));
            std::sort(found.begin(), found.end());
            std::sort(model.begin(), model.end());
            ASSERT_EQ(model, found);
        }
    }
}

TEST(OCStringList, SortsWithoutMemoryForItsKeys) {
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    for (int i = 0; i < 100; ++i)
        list += string(std::to_string(i * 7919 % 100 + 100));
    fault::HeapFault fault(1, fault::HeapFault::Following);
    list.sort();
    EXPECT_TRUE(fault.triggered());
    fault.disarm();
    for (unsigned long i = 0; i < 100; ++i)
        EXPECT_EQ(string(std::to_string(100 + i)), list.getString(i));
}

void sortKillerOrder(unsigned long count) {
    OCVector vector;
    const KillerOrder killer(vector, static_cast<int>(count));
    vector.sort(KillerOrder::compare);
    OCStringList list = unsorted();
    for (const int value : killer.getValues())
        list += string("a beginning that all share " + std::to_string(100000 + value));
    list.sort();
    for (unsigned long i = 1; i < count; ++i)
        ASSERT_LE(list.getString(i - 1), list.getString(i));
}

TEST(OCStringList, AnOrderMadeToKillIsNotQuadratic) {
    EXPECT_LT(growth::ofEightTimes(sortKillerOrder, 3000), 45);
}

// Copies

TEST(OCStringList, CopiesAreDeep) {
    List list = sortedInsensitive({"b", "a"});
    OCStringList copy(list);
    list.getString(0) = "x";
    EXPECT_EQ((Texts{"a", "b"}), texts(copy));
    EXPECT_EQ(StringListCaseInsensitive, copy.getCase());
    EXPECT_EQ(StringListModeSorted, copy.getMode());
    OCStringList assigned = unsorted({"1", "2", "3"});
    EXPECT_EQ(&assigned, &(assigned = copy));
    EXPECT_EQ((Texts{"a", "b"}), texts(assigned));
    EXPECT_EQ(StringListCaseInsensitive, assigned.getCase());
    EXPECT_EQ(StringListModeSorted, assigned.getMode());
    assigned += "A1";
    EXPECT_EQ((Texts{"a", "A1", "b"}), texts(assigned));
}

TEST(OCStringList, CopiesLeaveNullSlotsOut) {
    List list = unsorted({"a", "b", "c"});
    list.nullString(1);
    list.setCount(5);
    EXPECT_EQ((Texts{"a", "c"}), texts(OCStringList(list)));
    OCStringList target = unsorted({"x"});
    target.append(list);
    EXPECT_EQ((Texts{"x", "a", "c"}), texts(target));
}

TEST(OCStringList, ACopyOfASortedListIsInsertedAnew) {
    List list = sorted({"a", "b", "c"});
    list.getString(0) = "z";
    EXPECT_EQ((Texts{"z", "b", "c"}), texts(list));
    EXPECT_EQ((Texts{"b", "c", "z"}), texts(OCStringList(list)));
    List equal = sortedInsensitive({"x", "X", "xy"});
    EXPECT_EQ((Texts{"X", "x", "xy"}), texts(equal));
    EXPECT_EQ((Texts{"x", "X", "xy"}), texts(OCStringList(equal)));
}

TEST(OCStringList, AssigningItselfChangesNothing) {
    List list = unsorted({"a", "b"});
    list.setCount(3);
    const OCStringList& alias = list;
    OCStringList& target = list;
    target = alias;
    EXPECT_EQ((Texts{"a", "b", null}), texts(list));
}

TEST(OCStringList, AppendedToItselfItDoubles) {
    List list = unsorted({"b", "a"});
    EXPECT_EQ(&list, &list.append(list));
    EXPECT_EQ((Texts{"b", "a", "b", "a"}), texts(list));
    List inOrder = sorted({"b", "a", "c"});
    inOrder.append(inOrder);
    EXPECT_EQ((Texts{"a", "a", "b", "b", "c", "c"}), texts(inOrder));
}

TEST(OCStringList, AppendingToASortedListPutsEachInItsPlace) {
    List list = sorted({"b", "d"});
    list.append(unsorted({"e", "a", "c"}));
    EXPECT_EQ((Texts{"a", "b", "c", "d", "e"}), texts(list));
}

TEST(OCStringList, ManyStringsAtOnceComeToTheSamePlacesAsOneAfterTheOther) {
    std::mt19937 random(161803);
    for (const OEStringListCase matching : {StringListCaseInsensitive, StringListCaseSensitive}) {
        for (const char* const disorder : {"", "null", "unordered", "variants"}) {
            SCOPED_TRACE(std::to_string(matching) + disorder);
            OCStringList together(matching, StringListModeSorted);
            OCStringList one(matching, StringListModeSorted);
            const auto first = [&](const std::string& added) {
                together += string(added);
                one += string(added);
            };
            for (int i = 0; i < 100; ++i)
                first("m" + std::to_string(random() % 1000));
            if (std::string(disorder) == "null") {
                together.nullString(40);
                one.nullString(40);
            }
            if (std::string(disorder) == "unordered") {
                together.getString(30) = "zz";
                one.getString(30) = "zz";
            }
            OCStringList many(StringListCaseSensitive, StringListModeUnsorted);
            for (int i = 0; i < 1000; ++i) {
                const char* const kind =
                    std::string(disorder) == "variants" && random() % 2 == 0 ? "M" : "m";
                many += string(kind + std::to_string(random() % 1000));
                one += many.getString(many.getCount() - 1);
            }
            together.append(many);
            EXPECT_EQ(texts(one), texts(together));

            OCStringList copied(matching, StringListModeSorted);
            for (unsigned long i = 0; i < one.getCount(); ++i) {
                if (one.hasString(i))
                    copied += one.getString(i);
            }
            EXPECT_EQ(texts(copied), texts(OCStringList(one)));
        }
    }
}

// Arguments that are the list's own strings

TEST(OCStringList, AnArgumentMayBeOneOfItsStrings) {
    List list = unsorted({"a", longText.c_str(), "c"});
    list += list.getString(1);
    EXPECT_EQ((Texts{"a", longText, "c", longText}), texts(list));
    list.setString(0, list.getString(1));
    EXPECT_EQ((Texts{longText, longText, "c", longText}), texts(list));
    list.setString(2, list.getString(2));
    EXPECT_EQ((Texts{longText, longText, "c", longText}), texts(list));
    for (int i = 0; i < 200; ++i)
        list += list.getString(2);
    EXPECT_EQ("c", texts(list).back());
}

TEST(OCStringList, AnArgumentMayBeOneOfItsStringsInASortedList) {
    List list = sorted({"a", "b", longText.c_str()});
    list.setString(1, list.getString(1));
    EXPECT_EQ((Texts{longText, "a", "b"}), texts(list));
    list.setString(1, list.getString(0));
    EXPECT_EQ((Texts{longText, longText, "b"}), texts(list));
    list += list.getString(2);
    EXPECT_EQ((Texts{longText, longText, "b", "b"}), texts(list));
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf(list.getString(3), index));
}

TEST(OCStringList, TheTextToImportMayBeOneOfItsStrings) {
    List list = unsorted({"x", "a\nb"});
    OCStringListUtilities::importString(list, list.getString(1));
    EXPECT_EQ((Texts{"a", "b"}), texts(list));
}

// Exhausted memory

TEST(OCStringList, AFailedAdditionToAnUnsortedListLeavesANullSlot) {
    List list = unsorted();
    const long blocks = fault::heapRecord().liveBlocks;
    {
        fault::HeapFault fault(1); // the string
        EXPECT_EXCEPTION(list += "a", OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(0u, list.getCount());
    {
        fault::HeapFault fault(2); // the array
        EXPECT_EXCEPTION(list += "a", OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    EXPECT_EQ((Texts{null}), texts(list));
    list += "b";
    EXPECT_EQ((Texts{null, "b"}), texts(list));
    list.setString(0, "a");
    EXPECT_EQ((Texts{"a", "b"}), texts(list));
}

TEST(OCStringList, AFailedInsertionIntoASortedListChangesNothing) {
    List list = sorted();
    for (int i = 0; i < 64; ++i)
        list += "m";
    const long blocks = fault::heapRecord().liveBlocks;
    fault::HeapFault fault(2);
    EXPECT_EXCEPTION(list += "a", OXMemory_AllocationError, noMemory);
    fault.disarm();
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    EXPECT_EQ(Texts(64, "m"), texts(list));
}

/// A list with one slot more than its array has room for.
void failToAdd(OCStringList& list) {
    for (int i = 0; i < 64; ++i)
        list += string("m" + std::to_string(i + 100));
    fault::HeapFault fault(2);
    EXPECT_EXCEPTION(list += "z", OXMemory_AllocationError, noMemory);
}

TEST(OCStringList, AfterAFailedAdditionAllOperationsWork) {
    List list = sorted();
    failToAdd(list);
    EXPECT_EQ(65u, list.getCount());
    EXPECT_FALSE(list.hasString(64));
    EXPECT_EXCEPTION(list.getString(64), OXStringList_NullString,
                     "The string list does not contain the requested string (64)");
    EXPECT_EQ(64u, OCStringList(list).getCount());
    list.nullString(64);
    list.setString(64, "a");
    EXPECT_EQ("a", texts(list)[0]);
    EXPECT_EQ("m100", texts(list)[1]);
    EXPECT_EQ("m163", texts(list)[64]);
    EXPECT_EQ(65u, list.getCount());
    List other = sorted();
    failToAdd(other);
    other.setString(0, "x");
    EXPECT_EQ("x", texts(other)[64]);
    EXPECT_EQ("m101", texts(other)[0]);
    List third = sorted();
    failToAdd(third);
    third.removeString(64);
    EXPECT_EQ(64u, third.getCount());
    List fourth = unsorted();
    failToAdd(fourth);
    fourth.clear();
    EXPECT_EQ(0u, fourth.getCount());
}

TEST(OCStringList, AfterAFailedAdditionARefusedReplacementChangesNothing) {
    List list = sorted();
    failToAdd(list);
    const Texts before = texts(list);
    const unsigned long failures = fault::failEachRequest([&] { list.setString(0, "x"); },
                                                          [&] { EXPECT_EQ(before, texts(list)); });
    EXPECT_EQ(2u, failures); // the string, and the room for the last slot
    EXPECT_EQ("m101", texts(list)[0]);
    EXPECT_EQ("x", texts(list)[64]);
}

TEST(OCStringList, ARefusedChangeChangesNothing) {
    List many = unsorted();
    for (int i = 0; i < 300; ++i)
        many += string(std::to_string(i));
    for (List list :
         {unsorted({"a", "b", longText.c_str()}), sorted({"a", "b", longText.c_str()})}) {
        const Texts before = texts(list);
        const auto unchanged = [&] { EXPECT_EQ(before, texts(list)); };
        EXPECT_LT(0u,
                  fault::failEachRequest([&] { list.setString(0, string(longText)); }, unchanged));
        const Texts after = texts(list);
        EXPECT_LT(0u, fault::failEachRequest(
                          [&] {
                              OCStringList copy(many);
                              copy.setCount(2);
                          },
                          [&] { EXPECT_EQ(after, texts(list)); }));
        EXPECT_LT(300u, fault::failEachRequest([&] { list.assign(many); },
                                               [&] { EXPECT_EQ(after, texts(list)); }));
        EXPECT_EQ(texts(many), texts(list));
        list = unsorted({"a"});
        EXPECT_LT(300u, fault::failEachRequest([&] { list.append(many); },
                                               [&] { EXPECT_EQ((Texts{"a"}), texts(list)); }));
        EXPECT_EQ(301u, list.getCount());
    }
    List list = sorted({"a"});
    const OCAnsiString lines = OCStringListUtilities::exportString(many);
    EXPECT_LT(300u,
              fault::failEachRequest([&] { OCStringListUtilities::importString(list, lines); },
                                     [&] { EXPECT_EQ((Texts{"a"}), texts(list)); }));
    EXPECT_EQ(300u, list.getCount());
}

TEST(OCStringList, ARefusedRemovalKeepsTheString) {
    List list = unsorted();
    for (int i = 0; i < 65; ++i)
        list += string(std::to_string(i));
    const Texts before = texts(list);
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(list.removeString(3), OXMemory_AllocationError, noMemory);
    fault.disarm();
    EXPECT_EQ(before, texts(list));
}

TEST(OCStringList, ARefusedShorteningLeavesNullSlots) {
    List list = unsorted();
    for (int i = 0; i < 65; ++i)
        list += "x";
    {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(list.clear(), OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(Texts(65, null), texts(list));
    list.clear();
    EXPECT_EQ(0u, list.getCount());
}

TEST(OCStringList, LeavesNothingBehindWhereverMemoryEnds) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  fault::failEachRequest([] {
                      OCStringList list(StringListCaseInsensitive, StringListModeSorted);
                      for (int i = 0; i < 70; ++i)
                          list += OCAnsiString(longText.c_str());
                      list.append(list);
                      list.setString(3, "x");
                      OCStringList copy(list);
                      copy.sort();
                      copy.removeString(1);
                      const OCAnsiString text = OCStringListUtilities::exportString(copy);
                      OCStringListUtilities::importString(list, text);
                  });
              }));
}

// Lines

Texts imported(const std::string& lines) {
    OCStringList list = unsorted({"old"});
    OCStringListUtilities::importString(list, string(lines));
    return texts(list);
}

TEST(OCStringListUtilities, SplitsLinesAtAnyLineEnd) {
    EXPECT_EQ((Texts{"x", "y"}), imported("x\r\ny\n"));
    EXPECT_EQ((Texts{"x", "y"}), imported("x\ry"));
    EXPECT_EQ((Texts{"x", "y"}), imported("x\ny\r"));
    EXPECT_EQ((Texts{"x", "", "y"}), imported("x\n\ny"));
    EXPECT_EQ((Texts{"x", "", "y"}), imported("x\r\ry"));
    EXPECT_EQ((Texts{"x", "", "y"}), imported("x\n\ry"));
    EXPECT_EQ((Texts{"x", "", "y"}), imported("x\r\n\r\ny"));
    EXPECT_EQ((Texts{"x", "", "y"}), imported("x\r\r\ny"));
    EXPECT_EQ((Texts{"x", "", "", "y"}), imported("x\n\r\n\ry"));
}

TEST(OCStringListUtilities, AFinalLineEndMakesNoFurtherLine) {
    EXPECT_EQ((Texts{}), imported(""));
    EXPECT_EQ((Texts{""}), imported("\r\n"));
    EXPECT_EQ((Texts{""}), imported("\r"));
    EXPECT_EQ((Texts{""}), imported("\n"));
    EXPECT_EQ((Texts{"", ""}), imported("\n\r"));
    EXPECT_EQ((Texts{"", ""}), imported("\n\n"));
    EXPECT_EQ((Texts{"x"}), imported("x"));
    EXPECT_EQ((Texts{" x "}), imported(" x \n"));
}

TEST(OCStringListUtilities, LinesMayHoldAnyOtherByte) {
    EXPECT_EQ((Texts{std::string("a\0b\xff\t", 5), longText}),
              imported(std::string("a\0b\xff\t\n", 6) + longText));
}

TEST(OCStringListUtilities, ImportSortsIntoASortedList) {
    OCStringList list = sorted({"old"});
    OCStringListUtilities::importString(list, "c\na\nb\na");
    EXPECT_EQ((Texts{"a", "a", "b", "c"}), texts(list));
    OCStringList insensitive = sortedInsensitive();
    OCStringListUtilities::importString(insensitive, "x\nX\nb");
    EXPECT_EQ((Texts{"b", "X", "x"}), texts(insensitive));
    EXPECT_EQ(StringListModeSorted, insensitive.getMode());
}

TEST(OCStringListUtilities, SplitsLikeItsModel) {
    std::mt19937 random(1618);
    for (int run = 0; run < 3000; ++run) {
        std::string lines;
        for (unsigned long n = random() % 12; n != 0; --n) {
            static const char* const pieces[] = {"\r", "\n", "\r\n", "a", "bc", longText.c_str()};
            lines += pieces[random() % 6];
        }
        Texts model;
        for (std::size_t i = 0; i < lines.size();) {
            std::string line;
            while (i < lines.size() && lines[i] != '\r' && lines[i] != '\n')
                line += lines[i++];
            model.push_back(line);
            if (i < lines.size() && lines[i] == '\r')
                ++i;
            if (i < lines.size() && lines[i] == '\n')
                ++i;
        }
        ASSERT_EQ(model, imported(lines)) << run;
    }
}

TEST(OCStringListUtilities, ExportEndsEveryLine) {
    EXPECT_EQ(OCAnsiString("a\r\nb\r\n"),
              OCStringListUtilities::exportString(unsorted({"a", "b"})));
    EXPECT_EQ(OCAnsiString("\r\n"), OCStringListUtilities::exportString(unsorted({""})));
    EXPECT_EQ(OCAnsiString(), OCStringListUtilities::exportString(unsorted()));
    EXPECT_EQ(6u, OCStringListUtilities::exportStringLength(unsorted({"a", "b"})));
    EXPECT_EQ(0u, OCStringListUtilities::exportStringLength(unsorted()));
}

TEST(OCStringListUtilities, ExportFillsABufferOfTheSizeItTells) {
    const List list = unsorted({"a", longText.c_str(), ""});
    EXPECT_EQ(1 + 300 + 6u, OCStringListUtilities::exportStringLength(list));
    std::string buffer(308, '#');
    OCStringListUtilities::exportStringBuffer(list, buffer.data());
    EXPECT_EQ("a\r\n" + longText + "\r\n\r\n#", buffer);
}

TEST(OCStringListUtilities, ANullSlotIsExportedAsAnEmptyLine) {
    List list = unsorted({"a", "b", "c"});
    list.nullString(1);
    EXPECT_EQ(8u, OCStringListUtilities::exportStringLength(list));
    EXPECT_EQ(OCAnsiString("a\r\n\r\nc\r\n"), OCStringListUtilities::exportString(list));
}

TEST(OCStringListUtilities, ExportAllocatesOnce) {
    List list = unsorted();
    for (int i = 0; i < 1000; ++i)
        list += "0123456789";
    const unsigned long requests = fault::heapRecord().requests;
    const OCAnsiString text = OCStringListUtilities::exportString(list);
    EXPECT_EQ(requests + 1, fault::heapRecord().requests);
    EXPECT_EQ(12000u, text.getLength());
}

TEST(OCStringListUtilities, WhatIsExportedIsImportedAgain) {
    const List list = unsorted({"", "a", longText.c_str(), "", "b c"});
    OCStringList again = unsorted();
    OCStringListUtilities::importString(again, OCStringListUtilities::exportString(list));
    EXPECT_EQ(texts(list), texts(again));
}

// Streams and files

/// Notes each write and fails when told to.
class RecordingStream : public OCStream {
public:
    bool read(void*, unsigned long&) override { return false; }
    unsigned long seek(long, OEStreamSeek) override { return 0; }
    void setSize(unsigned long) override {}
    bool write(const void* buffer, unsigned long& count) override {
        if (writes.size() == refused)
            return false;
        writes.emplace_back(static_cast<const char*>(buffer), count);
        return true;
    }
    Texts writes;
    std::size_t refused = ~std::size_t(0);
};

TEST(OCStringList, IsWrittenToAStreamLineByLine) {
    RecordingStream stream;
    unsorted({"a", "", longText.c_str()}).saveToStream(stream);
    EXPECT_EQ((Texts{"a\r\n", "\r\n", longText + "\r\n"}), stream.writes);
    RecordingStream none;
    unsorted().saveToStream(none);
    EXPECT_EQ(Texts(), none.writes);
    RecordingStream same;
    OCStringListUtilities::exportStream(unsorted({"x"}), same);
    EXPECT_EQ((Texts{"x\r\n"}), same.writes);
}

TEST(OCStringList, WritingStopsAtANullSlot) {
    List list = unsorted({"a", "b", "c"});
    list.nullString(1);
    RecordingStream stream;
    EXPECT_EXCEPTION(list.saveToStream(stream), OXStringList_NullString,
                     "The string list does not contain the requested string (1)");
    EXPECT_EQ((Texts{"a\r\n"}), stream.writes);
}

TEST(OCStringList, WritingPassesTheStreamsFailureOn) {
    RecordingStream stream;
    stream.refused = 1;
    EXPECT_EXCEPTION(unsorted({"a", "b"}).saveToStream(stream), OXStream_WriteError,
                     "Writing to the stream failed");
    EXPECT_EQ((Texts{"a\r\n"}), stream.writes);
}

TEST(OCStringList, IsReadFromTheRestOfAStream) {
    OCMemoryStream stream("skip\na\r\nb", 9);
    stream.setPosition(5);
    List list = unsorted({"old"});
    list.loadFromStream(stream);
    EXPECT_EQ((Texts{"a", "b"}), texts(list));
    list.loadFromStream(stream);
    EXPECT_EQ(0u, list.getCount());
    std::string large;
    for (int i = 0; i < 5000; ++i)
        large += std::to_string(i) + "\n";
    OCMemoryStream more(large.data(), large.size());
    OCStringListUtilities::importStream(list, more);
    EXPECT_EQ(5000u, list.getCount());
    EXPECT_EQ(OCAnsiString("4999"), list.getString(4999));
}

class BrokenStream : public RecordingStream {
public:
    bool read(void*, unsigned long&) override { throw OXStream_ReadError(); }
};

TEST(OCStringList, AStreamThatFailsLeavesTheListAlone) {
    BrokenStream stream;
    List list = unsorted({"a"});
    EXPECT_EXCEPTION(list.loadFromStream(stream), OXStream_ReadError,
                     "Read from the stream failed");
    EXPECT_EQ((Texts{"a"}), texts(list));
}

class OCStringListFile : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/orvabase-list-XXXXXX";
        const int descriptor = mkstemp(name);
        ASSERT_NE(-1, descriptor);
        close(descriptor);
        path = name;
    }
    void TearDown() override { unlink(path.c_str()); }
    std::string content() const {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream all;
        all << file.rdbuf();
        return all.str();
    }
    std::string path;
};

TEST_F(OCStringListFile, IsSavedAndLoaded) {
    std::ofstream(path) << std::string(1000, 'x');
    const List list = unsorted({"a", "", "c d"});
    list.saveToFile(string(path));
    EXPECT_EQ("a\r\n\r\nc d\r\n", content());
    List again = sorted({"old"});
    again.loadFromFile(string(path));
    EXPECT_EQ((Texts{"", "a", "c d"}), texts(again));
}

TEST_F(OCStringListFile, IsCreatedWhenItIsMissing) {
    unlink(path.c_str());
    unsorted({"a"}).saveToFile(string(path));
    EXPECT_EQ("a\r\n", content());
}

TEST_F(OCStringListFile, AMissingOneIsReported) {
    unlink(path.c_str());
    List list = unsorted({"a"});
    EXPECT_EXCEPTION(list.loadFromFile(string(path)), OXFileStream_CreateError,
                     "Can not create the file stream (No such file or directory)");
    EXPECT_EQ((Texts{"a"}), texts(list));
    EXPECT_EXCEPTION(list.saveToFile("/nonexistent/list"), OXFileStream_CreateError,
                     "Can not create the file stream (No such file or directory)");
}

TEST_F(OCStringListFile, IsOpenedForReadingOnlyToLoadAndMadeOrEmptiedToSave) {
    std::vector<int> opened;
    Replacement opening(calls::open, [&](const char* name, int flags, mode_t mode) {
        opened.push_back(flags);
        return calls::open.original(name, flags, mode);
    });
    List list = unsorted({"a"});
    list.saveToFile(string(path));
    list.loadFromFile(string(path));
    EXPECT_EQ((std::vector<int>{O_RDWR | O_CREAT | O_TRUNC, O_RDONLY}), opened);
}

TEST_F(OCStringListFile, CanBeLoadedWithoutThePermissionToWrite) {
    std::ofstream(path) << "a\nb\n";
    EXPECT_EQ(0, chmod(path.c_str(), 0400));
    List list = unsorted();
    list.loadFromFile(string(path));
    EXPECT_EQ((Texts{"a", "b"}), texts(list));
}

// Exceptions

TEST(OXStringList, CarriesClassMessageAndIndex) {
    EXPECT_EXCEPTION(throw OXStringList_NoSuchIndex(3), OXStringList_NoSuchIndex,
                     "String list index out of bounds (3)");
    EXPECT_EXCEPTION(throw OXStringList_NullString(3), OXStringList_NullString,
                     "The string list does not contain the requested string (3)");
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXStringList>));
    EXPECT_FALSE(std::is_default_constructible_v<OXStringList>);
    EXPECT_THROW(throw OXStringList_NoSuchIndex(3), OXStringList);
    EXPECT_THROW(throw OXStringList_NullString(3), OXStringList);
    EXPECT_EQ(400u, sizeof(OXStringList_NoSuchIndex));
}

// Size

TEST(OCStringList, AMillionLinesOf50CharactersTake185Megabytes) {
    if (fault::sanitized)
        GTEST_SKIP() << "a sanitizer's heap has other sizes";
    std::string lines;
    for (int i = 0; i < 1000000; ++i)
        lines += std::string(49, 'x') + char('a' + i % 26) + '\n';
    const OCAnsiString all = string(lines);
    const auto used = [] {
        const struct mallinfo2 heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    const std::size_t before = used();
    OCStringListUtilities::importString(list, all);
    const std::size_t after = used();
    ASSERT_EQ(1000000u, list.getCount());
    EXPECT_LE(after - before, 185000000u);
}

OCAnsiString manyLines(unsigned long count) {
    std::string lines;
    for (unsigned long i = 0; i < count; ++i)
        lines += std::to_string(i * 7919 % 1000003) + '\n';
    return string(lines);
}

void importSorted(unsigned long count) {
    OCStringList list = sorted();
    OCStringListUtilities::importString(list, manyLines(count));
    EXPECT_EQ(count, list.getCount());
}

void appendSorted(unsigned long count) {
    OCStringList many = unsorted();
    OCStringListUtilities::importString(many, manyLines(count));
    OCStringList list = sortedInsensitive({"0", "9"});
    list.append(many);
    const OCStringList copy(list);
    EXPECT_EQ(count + 2, copy.getCount());
}

void addAndClear(unsigned long count) {
    OCStringList list = unsorted();
    for (unsigned long i = 0; i < count; ++i)
        list += "x";
    list.clear();
    EXPECT_EQ(0u, list.getCount());
}

TEST(OCStringList, LargeListsAreNotQuadratic) {
    EXPECT_LT(growth::ofEightTimes(importSorted, 40000), 45);
    EXPECT_LT(growth::ofEightTimes(appendSorted, 40000), 45);
    EXPECT_LT(growth::ofEightTimes(addAndClear, 40000), 45);
}

TEST(OCStringList, BehavesLikeItsModel) {
    const unsigned int seed = 8128;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const bool isSorted : {false, true}) {
        OCStringList list(StringListCaseSensitive,
                          isSorted ? StringListModeSorted : StringListModeUnsorted);
        Texts model;
        const auto place = [&](const std::string& added) {
            return isSorted ? std::lower_bound(
                                  model.begin(), model.end(), added,
                                  [](const auto& a, const auto& b) { return isLess(a, b, false); })
                            : model.end();
        };
        for (int run = 0; run < 5000; ++run) {
            const unsigned long index = random() % (model.size() + 1);
            const std::string added = randomText(random);
            switch (random() % 6) {
            case 0:
            case 1:
            case 2:
                list += string(added);
                model.insert(place(added), added);
                break;
            case 3:
                if (index < model.size()) {
                    list.removeString(index);
                    model.erase(model.begin() + static_cast<long>(index));
                }
                break;
            case 4:
                if (index < model.size()) {
                    list.setString(index, string(added));
                    if (isSorted) {
                        model.erase(model.begin() + static_cast<long>(index));
                        model.insert(place(added), added);
                    } else {
                        model[index] = added;
                    }
                }
                break;
            default:
                if (random() % 50 == 0) {
                    list.setCount(model.size() / 2);
                    model.resize(model.size() / 2);
                }
                unsigned long found = 0;
                const bool contained = std::find(model.begin(), model.end(), added) != model.end();
                ASSERT_EQ(contained, list.indexOf(string(added), found));
                if (contained) {
                    ASSERT_EQ(added, model[found]);
                }
                break;
            }
            ASSERT_EQ(model.size(), list.getCount());
            ASSERT_EQ(model, texts(list)) << run;
        }
    }
}

} // namespace
