#include "OCNamedList.h"
#include "OCMemory.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

static_assert(sizeof(OCNamedElement) == 8 + 2 * sizeof(OCAnsiString), "a name and a value");
static_assert(sizeof(OCNamedList) == 56, "case, mode and a vector");

const std::string longText(300, 'L');

std::string text(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

OCAnsiString string(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairs(const OCNamedList& list) {
    Pairs result;
    for (unsigned long i = 0; i < list.getCount(); ++i)
        result.emplace_back(text(list.getName(i)), text(list.getValue(i)));
    return result;
}

/// A list whose elements were added in the order given.
class List : public OCNamedList {
public:
    List(OENamedListCase matching, OENamedListMode order, const Pairs& items)
        : OCNamedList(matching, order) {
        for (const auto& item : items)
            addElement(string(item.first), string(item.second));
    }
};

List unsorted(const Pairs& items = {}) {
    return List(NamedListCaseSensitive, NamedListModeUnsorted, items);
}

List unsortedInsensitive(const Pairs& items = {}) {
    return List(NamedListCaseInsensitive, NamedListModeUnsorted, items);
}

List sorted(const Pairs& items = {}) {
    return List(NamedListCaseSensitive, NamedListModeSorted, items);
}

List sortedInsensitive(const Pairs& items = {}) {
    return List(NamedListCaseInsensitive, NamedListModeSorted, items);
}

/// The lists that are empty, one of each case and mode.
std::vector<List> allKinds() {
    return {unsorted(), unsortedInsensitive(), sorted(), sortedInsensitive()};
}

/// Deletes elements that were removed from a list.
class Removed {
public:
    void note(OCNamedElement& element) { elements.emplace_back(&element); }

private:
    std::vector<std::unique_ptr<OCNamedElement>> elements;
};

TEST(OCNamedList, ClassesHaveTheirShape) {
    EXPECT_EQ(2u, slots::slotCount<OCNamedElement>());
    EXPECT_EQ(2u, slots::slotCount<OCNamedList>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCNamedElement>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCNamedList>);
    EXPECT_FALSE(std::is_default_constructible_v<OCNamedList>);
    EXPECT_FALSE(std::is_default_constructible_v<OCNamedElement>);
    EXPECT_EQ(4u, sizeof(OENamedListCase));
    EXPECT_EQ(4u, sizeof(OENamedListMode));
    EXPECT_EQ(0, NamedListCaseInsensitive);
    EXPECT_EQ(1, NamedListCaseSensitive);
    EXPECT_EQ(0, NamedListModeUnsorted);
    EXPECT_EQ(1, NamedListModeSorted);
}

TEST(OCNamedElement, HoldsANameAndAValue) {
    OCNamedElement element("name", "value");
    EXPECT_EQ(OCAnsiString("name"), element.getName());
    EXPECT_EQ(OCAnsiString("value"), element.getValue());
    element.setName("n");
    EXPECT_EQ(OCAnsiString("n"), element.getName());
    EXPECT_EQ(OCAnsiString("value"), element.getValue());
    element.setValue("v");
    EXPECT_EQ(OCAnsiString("n"), element.getName());
    EXPECT_EQ(OCAnsiString("v"), element.getValue());
}

TEST(OCNamedElement, CopiesBothTexts) {
    const OCNamedElement element(string(longText), "value");
    OCNamedElement copy(element);
    EXPECT_EQ(string(longText), copy.getName());
    EXPECT_EQ(OCAnsiString("value"), copy.getValue());
    OCNamedElement other("a", "b");
    EXPECT_EQ(&copy, &copy.assign(other));
    other.setName("x");
    EXPECT_EQ(OCAnsiString("a"), copy.getName());
    EXPECT_EQ(OCAnsiString("b"), copy.getValue());
    EXPECT_EQ(&copy, &(copy = element));
    EXPECT_EQ(string(longText), copy.getName());
    const OCNamedElement& same = copy;
    copy = same;
    EXPECT_EQ(string(longText), copy.getName());
    EXPECT_EQ(OCAnsiString("value"), copy.getValue());
}

TEST(OCNamedElement, AFailedAssignmentChangesNothing) {
    const OCNamedElement source(string(longText), string(longText + "v"));
    OCNamedElement element("a", "b");
    EXPECT_EQ(2u, fault::failEachRequest([&] { element = source; },
                                         [&] {
                                             EXPECT_STREQ("a", element.getName().getString());
                                             EXPECT_STREQ("b", element.getValue().getString());
                                         }));
    EXPECT_EQ(string(longText + "v"), element.getValue());
}

TEST(OCNamedList, ANewOneIsEmpty) {
    const unsigned long requests = fault::heapRecord().requests;
    {
        const OCNamedList list(NamedListCaseSensitive, NamedListModeSorted);
        EXPECT_EQ(0u, list.getCount());
        EXPECT_TRUE(list.isEmpty());
        EXPECT_FALSE(list.contains(""));
    }
    EXPECT_EQ(requests, fault::heapRecord().requests);
}

TEST(OCNamedList, AnUnsortedOneKeepsTheOrder) {
    const List list = unsorted({{"b", "1"}, {"a", "2"}, {"b", "3"}});
    EXPECT_EQ((Pairs{{"b", "1"}, {"a", "2"}, {"b", "3"}}), pairs(list));
    EXPECT_FALSE(list.isEmpty());
    // Any mode but 1 is unsorted.
    for (const int mode : {0, 2, -1, INT_MAX}) {
        const List odd(NamedListCaseSensitive, static_cast<OENamedListMode>(mode),
                       {{"b", "1"}, {"a", "2"}});
        EXPECT_EQ((Pairs{{"b", "1"}, {"a", "2"}}), pairs(odd));
        EXPECT_TRUE(odd.contains("a"));
        EXPECT_TRUE(odd.contains("b"));
        List merged(odd);
        merged.addElement("b", "3");
        EXPECT_EQ((Pairs{{"b", "1"}, {"a", "2"}, {"b", "3"}}), pairs(merged));
        merged.append(unsorted({{"z", "4"}, {"b", "5"}, {"c", "6"}}));
        EXPECT_EQ((Pairs{{"b", "5"}, {"a", "2"}, {"b", "3"}, {"z", "4"}, {"c", "6"}}),
                  pairs(merged));
    }
}

TEST(OCNamedList, ASortedOneKeepsItselfSorted) {
    EXPECT_EQ((Pairs{{"A", "2"}, {"a", "3"}, {"b", "1"}}),
              pairs(sorted({{"b", "1"}, {"A", "2"}, {"a", "3"}})));
    EXPECT_EQ((Pairs{{"", "3"}, {"a", "4"}, {"ab", "2"}, {"b", "1"}}),
              pairs(sorted({{"b", "1"}, {"ab", "2"}, {"", "3"}, {"a", "4"}})));
    EXPECT_EQ((Pairs{{"\x80", "3"}, {"\xff", "2"}, {"A", "1"}}),
              pairs(sorted({{"A", "1"}, {"\xff", "2"}, {"\x80", "3"}})));
}

TEST(OCNamedList, ElementsAreAddedBeforeEqualNames) {
    EXPECT_EQ((Pairs{{"X", "2"}, {"x", "1"}}), pairs(sortedInsensitive({{"x", "1"}, {"X", "2"}})));
    // The search of two meets the first of them, that of three the second.
    EXPECT_EQ((Pairs{{"x", "3"}, {"x", "2"}, {"x", "1"}}),
              pairs(sorted({{"x", "1"}, {"x", "2"}, {"x", "3"}})));
    EXPECT_EQ((Pairs{{"x", "3"}, {"x", "4"}, {"x", "2"}, {"x", "1"}}),
              pairs(sorted({{"x", "1"}, {"x", "2"}, {"x", "3"}, {"x", "4"}})));
}

TEST(OCNamedList, AnyCaseButZeroIsSensitive) {
    for (const int sense : {1, 2, -1, INT_MAX}) {
        for (const OENamedListMode mode : {NamedListModeUnsorted, NamedListModeSorted}) {
            OCNamedList list(static_cast<OENamedListCase>(sense), mode);
            list.setValue("a", "1");
            EXPECT_FALSE(list.contains("A"));
            EXPECT_EQ(&namedListCompareNamesSensitive, list.compareNamesFunction());
            EXPECT_EQ(&namedListCompareElementsSensitive, list.compareElementsFunction());
        }
    }
    const List list = unsortedInsensitive();
    EXPECT_EQ(&namedListCompareNamesInsensitive, list.compareNamesFunction());
    EXPECT_EQ(&namedListCompareElementsInsensitive, list.compareElementsFunction());
}

TEST(OCNamedList, TellsElementsByIndex) {
    List list = unsorted({{"a", "1"}, {"b", "2"}});
    const OCNamedList& constant = list;
    EXPECT_EQ(&list.getElement(1), &constant.getElement(1));
    EXPECT_EQ(OCAnsiString("b"), constant.getElement(1).getName());
    EXPECT_EQ(OCAnsiString("b"), list.getName(1));
    EXPECT_EQ(OCAnsiString("2"), list.getValue(1));
    list.setValue(1, "x");
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "x"}}), pairs(list));
    list.getElement(0).setValue("y");
    EXPECT_EQ((Pairs{{"a", "y"}, {"b", "x"}}), pairs(list));
}

TEST(OCNamedList, IndexesAreChecked) {
    List list = unsorted({{"a", "1"}, {"b", "2"}});
    const OCNamedList& constant = list;
    constexpr const char* message = "Named element index out of bounds (2)";
    EXPECT_EXCEPTION(list.getElement(2), OXNamedList_NoSuchIndex, message);
    EXPECT_EXCEPTION(constant.getElement(2), OXNamedList_NoSuchIndex, message);
    EXPECT_EXCEPTION(list.getName(2), OXNamedList_NoSuchIndex, message);
    EXPECT_EXCEPTION(list.getValue(2), OXNamedList_NoSuchIndex, message);
    EXPECT_EXCEPTION(list.setValue(2, "x"), OXNamedList_NoSuchIndex, message);
    EXPECT_EXCEPTION(list.getName(ULONG_MAX), OXNamedList_NoSuchIndex,
                     "Named element index out of bounds (18446744073709551615)");
    EXPECT_EXCEPTION(unsorted().getName(0), OXNamedList_NoSuchIndex,
                     "Named element index out of bounds (0)");
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}}), pairs(list));
}

TEST(OCNamedList, AnEmptyListHasNoIndex) {
    for (const List& list : allKinds()) {
        unsigned long index = 99;
        EXPECT_FALSE(list.indexOf("x", index));
        EXPECT_EQ(0u, index);
    }
}

TEST(OCNamedList, AnUnsortedSearchFindsTheFirst) {
    const List list = unsorted({{"b", "1"}, {"a", "2"}, {"b", "3"}, {"A", "4"}});
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("b", index));
    EXPECT_EQ(0u, index);
    EXPECT_TRUE(list.indexOf("A", index));
    EXPECT_EQ(3u, index);
    index = 99;
    EXPECT_FALSE(list.indexOf("c", index));
    EXPECT_EQ(99u, index);
    EXPECT_FALSE(list.indexOf("B", index));
    const List insensitive = unsortedInsensitive({{"b", "1"}, {"a", "2"}, {"A", "4"}});
    EXPECT_TRUE(insensitive.indexOf("A", index));
    EXPECT_EQ(1u, index);
}

TEST(OCNamedList, ASortedSearchTellsWhereANameBelongs) {
    const List list = sorted({{"b", "1"}, {"d", "2"}, {"f", "3"}});
    unsigned long index = 99;
    EXPECT_TRUE(list.indexOf("b", index));
    EXPECT_EQ(0u, index);
    EXPECT_TRUE(list.indexOf("f", index));
    EXPECT_EQ(2u, index);
    EXPECT_FALSE(list.indexOf("a", index));
    EXPECT_EQ(0u, index);
    EXPECT_FALSE(list.indexOf("c", index));
    EXPECT_EQ(1u, index);
    EXPECT_FALSE(list.indexOf("g", index));
    EXPECT_EQ(3u, index);
    EXPECT_TRUE(sortedInsensitive({{"b", "1"}, {"D", "2"}}).indexOf("d", index));
    EXPECT_EQ(1u, index);
}

TEST(OCNamedList, ValuesAreFoundByName) {
    for (List& list :
         std::vector<List>{unsorted({{"a", "1"}, {"b", "2"}}), sorted({{"a", "1"}, {"b", "2"}})}) {
        EXPECT_EQ(OCAnsiString("2"), list.getValue("b"));
        EXPECT_EQ(&list.getElement(1).getValue(), &list.getValue("b"));
        EXPECT_TRUE(list.contains("a"));
        EXPECT_FALSE(list.contains("c"));
        EXPECT_EQ(OCAnsiString("2"), list.getValue("b", "none"));
        EXPECT_EQ(OCAnsiString("none"), list.getValue("c", "none"));
        // An empty value is a value.
        list.setValue("b", "");
        EXPECT_EQ(OCAnsiString(""), list.getValue("b", "none"));
        EXPECT_EXCEPTION(list.getValue("c"), OXNamedList_NoSuchName,
                         "Named element does not exist (c)");
        EXPECT_EXCEPTION(list.getValue("A"), OXNamedList_NoSuchName,
                         "Named element does not exist (A)");
        EXPECT_EXCEPTION(list.getValue(""), OXNamedList_NoSuchName,
                         "Named element does not exist ()");
    }
    // The name is told as it was given.
    EXPECT_EXCEPTION(sortedInsensitive().getValue("Shell"), OXNamedList_NoSuchName,
                     "Named element does not exist (Shell)");
}

TEST(OCNamedList, SetValueChangesTheNameThatIsThere) {
    List list = sortedInsensitive();
    list.setValue("PATH", "1");
    list.setValue("Path", "2");
    EXPECT_EQ((Pairs{{"PATH", "2"}}), pairs(list));
    List other = unsortedInsensitive();
    other.setValue("PATH", "1");
    other.setValue("Path", "2");
    EXPECT_EQ((Pairs{{"PATH", "2"}}), pairs(other));
    List sensitive = sorted();
    sensitive.setValue("PATH", "1");
    sensitive.setValue("Path", "2");
    EXPECT_EQ((Pairs{{"PATH", "1"}, {"Path", "2"}}), pairs(sensitive));
    List first = unsorted({{"a", "1"}, {"a", "2"}});
    first.setValue("a", "x");
    EXPECT_EQ((Pairs{{"a", "x"}, {"a", "2"}}), pairs(first));
}

TEST(OCNamedList, HoldsCopies) {
    OCAnsiString name("n"), value("v");
    List list = unsorted();
    list.addElement(name, value);
    name = "x";
    value = "y";
    EXPECT_EQ((Pairs{{"n", "v"}}), pairs(list));
}

TEST(OCNamedList, HoldsZeroBytesAndLongTexts) {
    List list = sorted();
    list.setValue(OCAnsiString("a\0b", 3), string(longText));
    EXPECT_FALSE(list.contains("a"));
    EXPECT_EQ(string(longText), list.getValue(OCAnsiString("a\0b", 3)));
}

TEST(OCNamedList, ItsOwnTextsMayBeGivenToIt) {
    for (List& list : allKinds()) {
        for (int i = 0; i < 64; ++i)
            list.addElement(string("n" + std::to_string(i)), string(longText));
        const OCAnsiString& name = list.getName(10);
        const std::string original = text(name);
        list.setValue(10, list.getName(10));
        EXPECT_EQ(original, text(list.getValue(10)));
        list.setValue(name, list.getValue(11));
        EXPECT_EQ(longText, text(list.getValue(10)));
        list.addElement(name, name);
        list.setValue(list.getValue(20), list.getValue(20));
        EXPECT_EQ(longText, text(list.getValue(string(longText))));
        EXPECT_EQ(66u, list.getCount());
        Removed removed;
        for (unsigned long i = 0; i < list.getCount(); ++i) {
            if (text(list.getName(i)) == original)
                removed.note(list.getElement(i));
        }
        list.removeElement(name);
        EXPECT_EQ(64u, list.getCount());
        EXPECT_FALSE(list.contains(string(original)));
    }
}

TEST(OCNamedList, RemovesEveryElementOfAName) {
    for (const OENamedListMode mode : {NamedListModeUnsorted, NamedListModeSorted}) {
        List list(NamedListCaseInsensitive, mode,
                  {{"x", "1"}, {"a", "2"}, {"X", "3"}, {"y", "4"}, {"x", "5"}});
        Removed removed;
        for (unsigned long i = 0; i < list.getCount(); ++i) {
            if (list.getName(i).getString()[0] != 'a' && list.getName(i).getString()[0] != 'y')
                removed.note(list.getElement(i));
        }
        list.removeElement("X");
        EXPECT_EQ((Pairs{{"a", "2"}, {"y", "4"}}), pairs(list));
        list.removeElement("X");
        list.removeElement("");
        EXPECT_EQ((Pairs{{"a", "2"}, {"y", "4"}}), pairs(list));
        removed.note(list.getElement(0));
        list.removeElement("A");
        removed.note(list.getElement(0));
        list.removeElement("y");
        EXPECT_TRUE(list.isEmpty());
        list.removeElement("y");
    }
}

TEST(OCNamedList, RemovedElementsAreOnlyDetached) {
    for (List& list : allKinds()) {
        list.addElement("a", "1");
        list.addElement("b", "2");
        OCNamedElement* const element = &list.getElement(0);
        const long blocks = fault::heapRecord().liveBlocks;
        list.removeElement("a");
        EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
        EXPECT_EQ(OCAnsiString("1"), element->getValue());
        delete element;
        EXPECT_EQ((Pairs{{"b", "2"}}), pairs(list));
    }
}

TEST(OCNamedList, AListOutOfOrderLosesNoElement) {
    // Elements whose names were changed behind the list's back.
    List list = sorted({{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}, {"e", "5"}});
    Removed removed;
    for (const unsigned long i : {2UL, 4UL}) {
        list.getElement(i).setName("z");
        removed.note(list.getElement(i));
    }
    list.getElement(0).setName("z");
    // The searches meet the last two of that name, and never the first.
    list.removeElement("z");
    EXPECT_EQ((Pairs{{"z", "1"}, {"b", "2"}, {"d", "4"}}), pairs(list));
    list.append(unsorted({{"y", "6"}, {"c", "7"}, {"zz", "8"}, {"a", "9"}}));
    Pairs held = pairs(list);
    std::sort(held.begin(), held.end());
    EXPECT_EQ(
        (Pairs{
            {"a", "9"}, {"b", "2"}, {"c", "7"}, {"d", "4"}, {"y", "6"}, {"z", "1"}, {"zz", "8"}}),
        held);
}

TEST(OCNamedList, ClearDeletesTheElements) {
    List list = sorted();
    // What is left is the array for the first elements to come.
    EXPECT_EQ(1, fault::blocksLeftBy([&] {
                  for (int i = 0; i < 200; ++i)
                      list.addElement(string(std::to_string(i)), string(longText));
                  list.clear();
              }));
    EXPECT_TRUE(list.isEmpty());
    list.clear();
    list.setValue("a", "1");
    EXPECT_EQ((Pairs{{"a", "1"}}), pairs(list));
}

TEST(OCNamedList, ClearingCannotFail) {
    List list = unsorted();
    for (int i = 0; i < 200; ++i)
        list.addElement("a", "1");
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        list.clear();
        EXPECT_TRUE(list.isEmpty());
    }
    list.addElement("b", "2");
    EXPECT_EQ((Pairs{{"b", "2"}}), pairs(list));
}

TEST(OCNamedList, ItsElementsDieWithIt) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  List list = sorted();
                  for (int i = 0; i < 200; ++i)
                      list.addElement("a", string(longText));
              }));
}

TEST(OCNamedList, AppendMergesNames) {
    List list = unsortedInsensitive({{"a", "1"}, {"b", "2"}});
    EXPECT_EQ(&list, &list.append(unsorted({{"B", "x"}, {"d", "y"}, {"c", "z"}, {"D", "w"}})));
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "x"}, {"d", "w"}, {"c", "z"}}), pairs(list));
    List other = sortedInsensitive({{"a", "1"}, {"c", "2"}});
    other.append(unsorted({{"d", "3"}, {"B", "4"}, {"C", "5"}, {"b", "6"}, {"", "7"}}));
    EXPECT_EQ((Pairs{{"", "7"}, {"a", "1"}, {"B", "6"}, {"c", "5"}, {"d", "3"}}), pairs(other));
    other.append(unsorted());
    EXPECT_EQ(5u, other.getCount());
}

TEST(OCNamedList, AppendedToItselfItIsReadAsItWas) {
    // Of a, a, b the search meets the second a, whose value the first pair replaces.
    List list = sorted({{"a", "2"}, {"a", "1"}, {"b", "3"}});
    ASSERT_EQ((Pairs{{"a", "1"}, {"a", "2"}, {"b", "3"}}), pairs(list));
    list.append(list);
    EXPECT_EQ((Pairs{{"a", "1"}, {"a", "2"}, {"b", "3"}}), pairs(list));
    List other = unsorted({{"a", "1"}, {"b", "2"}, {"a", "3"}});
    other.append(other);
    EXPECT_EQ((Pairs{{"a", "3"}, {"b", "2"}, {"a", "3"}}), pairs(other));
}

TEST(OCNamedList, AssignTakesCaseModeAndElements) {
    List list = unsorted({{"old", "1"}});
    const List other = sortedInsensitive({{"b", "1"}, {"A", "2"}});
    EXPECT_EQ(&list, &list.assign(other));
    EXPECT_EQ((Pairs{{"A", "2"}, {"b", "1"}}), pairs(list));
    EXPECT_TRUE(list.contains("B"));
    list.addElement("aa", "3");
    EXPECT_EQ((Pairs{{"A", "2"}, {"aa", "3"}, {"b", "1"}}), pairs(list));
    EXPECT_EQ((Pairs{{"A", "2"}, {"b", "1"}}), pairs(other));
    EXPECT_NE(&list.getElement(0), &other.getElement(0));
    static_cast<OCNamedList&>(list) = unsorted({{"z", "1"}, {"y", "2"}});
    EXPECT_EQ((Pairs{{"z", "1"}, {"y", "2"}}), pairs(list));
    EXPECT_FALSE(list.contains("Z"));
}

TEST(OCNamedList, CopiesMergeNames) {
    const List list = unsortedInsensitive({{"a", "1"}, {"b", "2"}, {"A", "3"}});
    const OCNamedList copy(list);
    EXPECT_EQ((Pairs{{"a", "3"}, {"b", "2"}}), pairs(copy));
    List assigned = unsorted();
    assigned.assign(sorted({{"x", "2"}, {"x", "1"}}));
    EXPECT_EQ((Pairs{{"x", "2"}}), pairs(assigned));
}

TEST(OCNamedList, AssignedToItselfItStaysAsItIs) {
    List list = unsorted({{"a", "1"}, {"a", "2"}});
    const OCNamedElement* const element = &list.getElement(0);
    const OCNamedList& same = list;
    list.assign(same);
    EXPECT_EQ(element, &list.getElement(0));
    EXPECT_EQ((Pairs{{"a", "1"}, {"a", "2"}}), pairs(list));
}

TEST(OCNamedList, ComparisonFunctionsCompareNames) {
    EXPECT_EQ(CompareResultLess, namedListCompareNamesSensitive("A", "a"));
    EXPECT_EQ(CompareResultEqual, namedListCompareNamesSensitive("a", "a"));
    EXPECT_EQ(CompareResultGreater, namedListCompareNamesSensitive("b", "a"));
    EXPECT_EQ(CompareResultEqual, namedListCompareNamesInsensitive("A", "a"));
    EXPECT_EQ(CompareResultLess, namedListCompareNamesInsensitive("A", "b"));
    EXPECT_EQ(CompareResultGreater, namedListCompareNamesInsensitive("b", "A"));
    const OCNamedElement a("a", "2"), upper("A", "1"), b("b", "0");
    EXPECT_EQ(CompareResultGreater, namedListCompareElementsSensitive(&a, &upper));
    EXPECT_EQ(CompareResultLess, namedListCompareElementsSensitive(&a, &b));
    EXPECT_EQ(CompareResultEqual, namedListCompareElementsInsensitive(&a, &upper));
    EXPECT_EQ(CompareResultLess, namedListCompareElementsInsensitive(&upper, &b));
    EXPECT_EQ(CompareResultGreater, namedListCompareElementsInsensitive(&b, &upper));
}

TEST(OCNamedList, ElementsMustBeElements) {
    const OCNamedElement element("a", "1");
    const OCAnsiString other("a");
    for (const OCVector::Comparator compare :
         {namedListCompareElementsSensitive, namedListCompareElementsInsensitive}) {
        EXPECT_THROW(compare(&element, &other), std::bad_cast);
        EXPECT_THROW(compare(&other, &element), std::bad_cast);
        EXPECT_THROW(compare(&element, nullptr), std::bad_cast);
        EXPECT_THROW(compare(nullptr, &element), std::bad_cast);
        EXPECT_EQ(CompareResultEqual, compare(&element, &element));
    }
}

TEST(OCNamedList, VectorsOfElementsCanBeSorted) {
    OCNamedElement b("b", ""), a("A", ""), c("c", "");
    OCVector vector;
    for (OCNamedElement* const element : {&c, &b, &a})
        vector.addElement(*element);
    vector.sort(unsortedInsensitive().compareElementsFunction());
    EXPECT_EQ(&a, &vector.getElement(0));
    EXPECT_EQ(&b, &vector.getElement(1));
    EXPECT_EQ(&c, &vector.getElement(2));
}

/// `operation` on a list of 64 elements, which fill their array, changes nothing when it fails.
template<class Operation>
void expectNothingChanged(const List& kind, Operation operation, int count = 64) {
    OCNamedList list(kind);
    for (int i = 0; i < count; ++i)
        list.addElement(string("n" + std::to_string(i % 50)), string(std::to_string(i)));
    const Pairs before = pairs(list);
    const long blocks = fault::heapRecord().liveBlocks;
    const unsigned long failures =
        fault::failEachRequest([&] { operation(list); },
                               [&] {
                                   EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
                                   EXPECT_EQ(before, pairs(list));
                               });
    EXPECT_LT(0u, failures);
}

TEST(OCNamedList, FailuresChangeNothing) {
    const OCAnsiString value(string(longText)), name(string("n2" + longText)), last("z");
    List other = unsorted();
    for (int i = 0; i < 40; ++i)
        other.addElement(string((i % 2 == 0 ? "n" : "m") + std::to_string(i % 30)), value);
    for (const List& kind : allKinds()) {
        expectNothingChanged(kind, [&](OCNamedList& list) { list.addElement(name, value); });
        expectNothingChanged(kind, [&](OCNamedList& list) { list.addElement(last, value); });
        expectNothingChanged(kind, [&](OCNamedList& list) { list.setValue(name, value); });
        expectNothingChanged(kind, [&](OCNamedList& list) { list.setValue("n3", value); });
        expectNothingChanged(kind, [&](OCNamedList& list) { list.setValue(3, value); });
        expectNothingChanged(kind, [&](OCNamedList& list) { list.append(other); });
        expectNothingChanged(kind, [&](OCNamedList& list) { list = other; });
        expectNothingChanged(kind, [&](OCNamedList& list) { list.append(list); });
        List few = unsorted({{"n7", longText}, {"m", longText}});
        expectNothingChanged(kind, [&](OCNamedList& list) { list.append(few); });
    }
}

TEST(OCNamedList, FailedRemovalsChangeNothing) {
    const OCAnsiString once("n20"), twice("n1");
    for (const List& kind : allKinds()) {
        for (const OCAnsiString& name : {once, twice}) {
            OCNamedList list(kind);
            // The array of 65 slots gets smaller.
            for (int i = 0; i < 65; ++i)
                list.addElement(string("n" + std::to_string(i % 50 == 20 ? i : i % 48)), "v");
            Removed removed;
            for (unsigned long i = 0; i < list.getCount(); ++i) {
                if (list.getName(i) == name)
                    removed.note(list.getElement(i));
            }
            const Pairs before = pairs(list);
            EXPECT_EQ(1u, fault::failEachRequest([&] { list.removeElement(name); },
                                                 [&] { EXPECT_EQ(before, pairs(list)); }));
            EXPECT_FALSE(list.contains(name));
            EXPECT_GT(before.size(), list.getCount());
        }
    }
}

TEST(OCNamedList, FailedCopiesLeaveNothing) {
    List list = sorted();
    for (int i = 0; i < 70; ++i)
        list.addElement(string(std::to_string(i)), string(longText));
    const long blocks = fault::heapRecord().liveBlocks;
    EXPECT_LT(140u, fault::failEachRequest([&] { const OCNamedList copy(list); }));
    EXPECT_LT(0u, fault::failEachRequest([&] { list.getValue("7", ""); }));
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

/// A list as its description has it: one element after the other.
class Model {
public:
    Model(bool sensitiveNames, bool sortedNames) : sensitive(sensitiveNames), sorted(sortedNames) {}

    std::string fold(std::string name) const {
        for (char& c : name) {
            if (!sensitive && c >= 'A' && c <= 'Z')
                c = static_cast<char>(c + 32);
        }
        return name;
    }
    int compare(const std::string& a, const std::string& b) const {
        return fold(a).compare(fold(b));
    }
    bool indexOf(const std::string& name, long& index) const {
        const long count = static_cast<long>(items.size());
        if (!sorted) {
            for (index = 0; index < count; ++index) {
                if (compare(items[static_cast<std::size_t>(index)].first, name) == 0)
                    return true;
            }
            return false;
        }
        long low = 0, high = count - 1;
        while (low <= high) {
            const long middle = (low + high) / 2;
            const int result = compare(items[static_cast<std::size_t>(middle)].first, name);
            if (result == 0) {
                index = middle;
                return true;
            }
            if (result > 0)
                high = middle - 1;
            else
                low = middle + 1;
        }
        index = low;
        return false;
    }
    void add(const std::string& name, const std::string& value) {
        long index;
        if (sorted) {
            indexOf(name, index);
            items.insert(items.begin() + index, {name, value});
        } else {
            items.emplace_back(name, value);
        }
    }
    void set(const std::string& name, const std::string& value) {
        long index;
        if (indexOf(name, index))
            items[static_cast<std::size_t>(index)].second = value;
        else
            add(name, value);
    }
    void append(const Pairs& other) {
        for (const auto& item : other)
            set(item.first, item.second);
    }
    void remove(const std::string& name) {
        long index;
        while (indexOf(name, index))
            items.erase(items.begin() + index);
    }

    bool sensitive;
    bool sorted;
    Pairs items;
};

TEST(OCNamedList, AgreesWithAModel) {
    constexpr unsigned int seed = 20240608;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto makeName = [&](unsigned long range) {
        std::string name = "n" + std::to_string(random() % range);
        if (random() % 3 == 0)
            name[0] = 'N';
        return name;
    };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const bool sensitive = random() % 2 != 0, sortedNames = random() % 2 != 0;
        // Any other number says the same as the enumerators that are not special.
        const int unlisted = 2 + static_cast<int>(random() % 3);
        const int plain = random() % 2 == 0 ? unlisted : 0;
        OCNamedList list(static_cast<OENamedListCase>(sensitive ? unlisted - 1 : 0),
                         static_cast<OENamedListMode>(sortedNames ? 1 : plain));
        Model model(sensitive, sortedNames);
        const unsigned long range = 1 + random() % 60;
        Removed removed;
        for (int step = 0; step < 60; ++step) {
            const std::string name = makeName(range), value = std::to_string(random());
            switch (random() % 8) {
            case 0:
            case 1:
                list.addElement(string(name), string(value));
                model.add(name, value);
                break;
            case 2:
            case 3:
                list.setValue(string(name), string(value));
                model.set(name, value);
                break;
            case 4: {
                OCNamedList other(random() % 2 == 0 ? NamedListCaseSensitive
                                                    : NamedListCaseInsensitive,
                                  random() % 2 == 0 ? NamedListModeSorted : NamedListModeUnsorted);
                for (unsigned long n = random() % 40; n != 0; --n)
                    other.addElement(string(makeName(range + 10)),
                                     string(std::to_string(random())));
                list.append(other);
                model.append(pairs(other));
                break;
            }
            case 5:
                if (random() % 8 == 0) {
                    list.append(list);
                    model.append(Pairs(model.items));
                }
                break;
            case 6:
                for (unsigned long i = 0; i < list.getCount(); ++i) {
                    if (model.compare(text(list.getName(i)), name) == 0)
                        removed.note(list.getElement(i));
                }
                list.removeElement(string(name));
                model.remove(name);
                break;
            default:
                if (random() % 20 == 0) {
                    const OCNamedList copy(list);
                    Model other(sensitive, sortedNames);
                    other.append(model.items);
                    ASSERT_EQ(other.items, pairs(copy));
                }
            }
            ASSERT_EQ(model.items, pairs(list));
            const std::string wanted = makeName(range + 5);
            long expected = 77;
            unsigned long index = 77;
            const bool found = model.indexOf(wanted, expected);
            ASSERT_EQ(found, list.indexOf(string(wanted), index));
            if (found || sortedNames) {
                ASSERT_EQ(static_cast<unsigned long>(expected), index);
            } else if (!model.items.empty()) {
                ASSERT_EQ(77u, index);
            }
            ASSERT_EQ(found, list.contains(string(wanted)));
        }
    }
}

TEST(OCNamedList, AppendingIsNotQuadratic) {
    const unsigned long n = fault::sanitized ? 1000 : 4000;
    for (const OENamedListMode mode : {NamedListModeUnsorted, NamedListModeSorted}) {
        EXPECT_LT(growth::ofEightTimes(
                      [mode](unsigned long count) {
                          OCNamedList list(NamedListCaseInsensitive, mode);
                          OCNamedList other(NamedListCaseInsensitive, NamedListModeUnsorted);
                          // Names from the end to the beginning, and equal names at the end.
                          for (unsigned long i = count; i != 0; --i)
                              other.addElement(string(std::to_string(100000000 + i)), "v");
                          list.addElement("z", "1");
                          list.addElement("z", "2");
                          list.append(other);
                          other.addElement("Z", "3");
                          list.append(other);
                          EXPECT_EQ(count + 2, list.getCount());
                      },
                      n),
                  40);
    }
}

/// A list whose elements are still deleted when they were removed.
struct ListToRemoveFrom {
    ListToRemoveFrom(OENamedListMode mode, unsigned long count)
        : list(NamedListCaseInsensitive, mode) {
        list.addElement("a", "1");
        for (unsigned long i = 0; i < count; ++i)
            list.addElement("b", "2");
        for (unsigned long i = 1; i <= count; ++i)
            removed.emplace_back(&list.getElement(i));
    }

    OCNamedList list;
    std::vector<std::unique_ptr<OCNamedElement>> removed;
};

TEST(OCNamedList, RemovingIsNotQuadratic) {
    const unsigned long n = fault::sanitized ? 2000 : 10000;
    for (const OENamedListMode mode : {NamedListModeUnsorted, NamedListModeSorted}) {
        EXPECT_LT(growth::ofEightTimes(
                      [mode](unsigned long count) {
                          return std::make_unique<ListToRemoveFrom>(mode, count);
                      },
                      [](ListToRemoveFrom& subject) {
                          subject.list.removeElement("b");
                          EXPECT_EQ(1u, subject.list.getCount());
                      },
                      n),
                  40);
    }
}

} // namespace
