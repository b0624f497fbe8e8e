#include "OCQueryString.h"

#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/LocatorModel.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string standard(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

OCAnsiString string(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

Pairs pairs(const OCQueryString& query) {
    Pairs result;
    for (unsigned long i = 0; i < query.getCount(); ++i)
        result.emplace_back(standard(query.getName(i)), standard(query.getValue(i)));
    return result;
}

Pairs parsed(const std::string& text) {
    return pairs(OCQueryString(string(text)));
}

/// A text that does not fit into a string object, and another one.
const std::string longText(200, 'L');
const std::string otherText(300, 'o');

// Elements

TEST(OCQueryElement, HoldsTwoStrings) {
    EXPECT_EQ(8 + 2 * sizeof(OCAnsiString), sizeof(OCQueryElement));
    EXPECT_EQ(2u, slots::slotCount<OCQueryElement>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCQueryElement>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCQueryElement>));
}

TEST(OCQueryElement, ANewOneIsEmpty) {
    const OCQueryElement element;
    EXPECT_EQ("", standard(element.getName()));
    EXPECT_EQ("", standard(element.getValue()));
}

TEST(OCQueryElement, TakesNameAndValueAsTheyAre) {
    OCQueryElement element("a%20", "b+");
    EXPECT_EQ("a%20", standard(element.getName()));
    EXPECT_EQ("b+", standard(element.getValue()));
    element.setName("n");
    EXPECT_EQ("b+", standard(element.getValue()));
    element.setValue("v");
    EXPECT_EQ("n", standard(element.getName()));
    EXPECT_EQ("v", standard(element.getValue()));
}

TEST(OCQueryElement, CopiesAreTheirOwn) {
    OCQueryElement element("n", "v");
    OCQueryElement copy(element);
    OCQueryElement assigned;
    EXPECT_EQ(&assigned, &(assigned = element));
    OCQueryElement third("x", "y");
    EXPECT_EQ(&third, &third.assign(element));
    element.setName("other");
    element.setValue("other");
    for (const OCQueryElement* each : {&copy, &assigned, &third}) {
        EXPECT_EQ("n", standard(each->getName()));
        EXPECT_EQ("v", standard(each->getValue()));
    }
}

TEST(OCQueryElement, TakesItsOwnTexts) {
    OCQueryElement element(string(longText), "v");
    element.setValue(element.getName());
    EXPECT_EQ(longText, standard(element.getValue()));
    element.setName("n");
    element.setName(element.getValue());
    EXPECT_EQ(longText, standard(element.getName()));
    const OCQueryElement& self = element;
    element = self;
    EXPECT_EQ(longText, standard(element.getName()));
    EXPECT_EQ(longText, standard(element.getValue()));
}

TEST(OCQueryElement, AFailedChangeChangesNothing) {
    const OCQueryElement source(string(longText), string(otherText));
    OCQueryElement element("n", "v");
    const auto unchanged = [&] {
        EXPECT_STREQ("n", element.getName().getString());
        EXPECT_STREQ("v", element.getValue().getString());
    };
    EXPECT_EQ(2u, fault::failEachRequest([&] { element = source; }, unchanged));
    element = OCQueryElement("n", "v");
    EXPECT_EQ(1u, fault::failEachRequest([&] { element.setName(source.getName()); }, unchanged));
    element.setName("n");
    EXPECT_EQ(1u, fault::failEachRequest([&] { element.setValue(source.getName()); }, unchanged));
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  fault::failEachRequest([&] { const OCQueryElement copy(source); });
                  fault::failEachRequest(
                      [&] { const OCQueryElement made(source.getName(), source.getValue()); });
              }));
}

// The list

TEST(OCQueryString, HoldsAVector) {
    EXPECT_EQ(8 + sizeof(OCVector), sizeof(OCQueryString));
    EXPECT_EQ(48u, sizeof(OCQueryString));
    EXPECT_EQ(2u, slots::slotCount<OCQueryString>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCQueryString>);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<OCQueryString>);
    EXPECT_TRUE((std::is_convertible_v<OCAnsiString, OCQueryString>));
}

TEST(OCQueryString, TheEnumerationHasItsValues) {
    EXPECT_EQ(0, QueryStringFormatPlain);
    EXPECT_EQ(1, QueryStringFormatHtml);
    EXPECT_EQ(4u, sizeof(OEQueryStringFormat));
    EXPECT_TRUE((std::is_same_v<int, std::underlying_type_t<OEQueryStringFormat>>));
}

TEST(OCQueryString, ANewOneIsEmptyAndTakesNoMemory) {
    const unsigned long requests = fault::heapRecord().requests;
    {
        const OCQueryString query;
        EXPECT_EQ(0u, query.getCount());
        EXPECT_EQ(0u, query.getText().getLength());
        const OCQueryString empty{OCAnsiString()};
        EXPECT_EQ(0u, empty.getCount());
    }
    EXPECT_EQ(requests, fault::heapRecord().requests);
}

TEST(OCQueryString, ReadsPairsInOrder) {
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}, {"a", "3"}}), parsed("a=1&b=2&a=3"));
    EXPECT_EQ((Pairs{{"a", ""}}), parsed("a"));
    EXPECT_EQ((Pairs{{"a", ""}}), parsed("a="));
    EXPECT_EQ((Pairs{{"a", ""}, {"b", ""}}), parsed("a&b"));
    EXPECT_EQ((Pairs{{"a", "1"}}), parsed("a=1&"));
    EXPECT_EQ((Pairs{{"a", "1"}}), parsed("&a=1"));
    EXPECT_EQ((Pairs{{"a", ""}, {"b", ""}}), parsed("a=&b="));
    EXPECT_EQ((Pairs{}), parsed(""));
}

TEST(OCQueryString, DropsPairsWithoutName) {
    EXPECT_EQ((Pairs{{"flag", ""}, {"k", ""}}), parsed("flag&=v&k="));
    EXPECT_EQ((Pairs{}), parsed("=x"));
    EXPECT_EQ((Pairs{}), parsed("="));
    EXPECT_EQ((Pairs{}), parsed("&"));
    EXPECT_EQ((Pairs{}), parsed("&&&"));
    EXPECT_EQ((Pairs{}), parsed("==x&=&=y=z"));
    EXPECT_EQ((Pairs{{"a", ""}, {"b", ""}}), parsed("a&&b"));
}

TEST(OCQueryString, TheFirstEqualSignEndsTheName) {
    EXPECT_EQ((Pairs{{"a", "b=c"}}), parsed("a=b=c"));
    EXPECT_EQ((Pairs{{"a", "="}}), parsed("a=="));
    EXPECT_EQ((Pairs{{"a", "=b"}, {"c", "d="}}), parsed("a==b&c=d="));
}

TEST(OCQueryString, DecodesNamesAndValues) {
    EXPECT_EQ((Pairs{{"x", "a b/c%zz"}}), parsed("x=a+b%2Fc%zz"));
    EXPECT_EQ((Pairs{{"a b", "c d"}}), parsed("a+b=c%20d"));
    EXPECT_EQ((Pairs{{"/", "/"}}), parsed("%2f=%2F"));
    EXPECT_EQ((Pairs{{"%", "%4"}}), parsed("%=%4"));
    EXPECT_EQ((Pairs{{"%4g", "%"}}), parsed("%4g=%"));
    EXPECT_EQ((Pairs{{std::string("\0", 1), std::string("\xff\0", 2)}}), parsed("%00=%ff%00"));
    EXPECT_EQ((Pairs{{" ", " "}}), parsed("+=+"));
}

TEST(OCQueryString, DecodesBehindTheSeparators) {
    // What is encoded separates nothing, and a digit beyond the separator counts for nothing.
    EXPECT_EQ((Pairs{{"a&b", "c=d&e"}}), parsed("a%26b=c%3dd%26e"));
    EXPECT_EQ((Pairs{{"a=b", ""}}), parsed("a%3Db"));
    EXPECT_EQ((Pairs{{"a%2", "1"}, {"f", ""}}), parsed("a%2=1&f"));
    EXPECT_EQ((Pairs{{"a", "%2"}, {"f", ""}}), parsed("a=%2&f"));
    EXPECT_EQ((Pairs{{"%25", ""}}), parsed("%2525"));
    EXPECT_EQ((Pairs{{"a+b", ""}}), parsed("a%2bb"));
}

TEST(OCQueryString, OnlyTheAmpersandSeparates) {
    EXPECT_EQ((Pairs{{"a", "1"}, {"amp;b", "2"}}), parsed("a=1&amp;b=2"));
    EXPECT_EQ((Pairs{{"a", "1;b=2"}}), parsed("a=1;b=2"));
    EXPECT_EQ((Pairs{{"?a", "1#b"}}), parsed("?a=1#b"));
    EXPECT_EQ((Pairs{{" a ", " 1\n"}}), parsed(" a = 1\n"));
}

TEST(OCQueryString, ReadsBytesThatAreNoText) {
    const std::string bytes("\0=\xe4\0&\x80", 6);
    EXPECT_EQ((Pairs{{std::string("\0", 1), std::string("\xe4\0", 2)}, {"\x80", ""}}),
              parsed(bytes));
}

TEST(OCQueryString, ReadsLongTexts) {
    EXPECT_EQ((Pairs{{longText, otherText}, {"a", ""}}), parsed(longText + "=" + otherText + "&a"));
    // Decoding makes a text shorter, also across the size that fits into a string object.
    for (std::size_t count : {31u, 42u, 43u, 63u, 64u, 127u, 128u, 130u}) {
        std::string text, expected;
        for (std::size_t i = 0; i < count; ++i) {
            text += "%41";
            expected += 'A';
        }
        EXPECT_EQ((Pairs{{expected, "x" + expected}}), parsed(text + "=x" + text));
        const OCQueryString query(string(text));
        EXPECT_EQ(OCAnsiString(string(expected)).getCapacity(), query.getName(0).getCapacity());
    }
    for (std::size_t count = 0; count < 200; ++count) {
        const std::string text(count, 'x');
        EXPECT_EQ((Pairs{{"n" + text, text}}), parsed("n" + text + "=" + text));
    }
}

TEST(OCQueryString, ReplacesItsElements) {
    OCQueryString query("a=1&b=2");
    EXPECT_EQ(&query, &query.assign(OCAnsiString("c=3")));
    EXPECT_EQ((Pairs{{"c", "3"}}), pairs(query));
    EXPECT_EQ(&query, &(query = OCAnsiString("d=4")));
    EXPECT_EQ((Pairs{{"d", "4"}}), pairs(query));
    query.setText("e=5&f");
    EXPECT_EQ((Pairs{{"e", "5"}, {"f", ""}}), pairs(query));
    query.setText("");
    EXPECT_EQ((Pairs{}), pairs(query));
    query = "g";
    EXPECT_EQ((Pairs{{"g", ""}}), pairs(query));
    query = OCQueryString("h=6&i=7");
    EXPECT_EQ((Pairs{{"h", "6"}, {"i", "7"}}), pairs(query));
    const OCQueryString none;
    EXPECT_EQ(&query, &query.assign(none));
    EXPECT_EQ((Pairs{}), pairs(query));
}

TEST(OCQueryString, CopiesAreTheirOwn) {
    OCQueryString query("a=1&A=2&a=1");
    const OCQueryString copy(query);
    OCQueryString assigned("x=y");
    EXPECT_EQ(&assigned, &(assigned = query));
    OCQueryString third;
    EXPECT_EQ(&third, &third.assign(query));
    query.getElement(0ul).setValue("changed");
    query.removeElement(1ul);
    const Pairs expected{{"a", "1"}, {"A", "2"}, {"a", "1"}};
    EXPECT_EQ(expected, pairs(copy));
    EXPECT_EQ(expected, pairs(assigned));
    EXPECT_EQ(expected, pairs(third));
}

TEST(OCQueryString, AssignedToItselfItStays) {
    OCQueryString query("a=1&b=2");
    const OCQueryString& self = query;
    const OCQueryElement* const first = &query.getElement(0ul);
    query = self;
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}}), pairs(query));
    EXPECT_EQ(first, &query.getElement(0ul));
    OCQueryString& same = query;
    query = std::move(same);
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}}), pairs(query));
}

TEST(OCQueryString, MovesWithoutMemory) {
    OCQueryString query("a=1&b=2");
    const OCQueryElement* const first = &query.getElement(0ul);
    const unsigned long requests = fault::heapRecord().requests;
    OCQueryString moved(std::move(query));
    OCQueryString assigned;
    assigned = std::move(moved);
    EXPECT_EQ(requests, fault::heapRecord().requests);
    EXPECT_EQ(first, &assigned.getElement(0ul));
    EXPECT_EQ(2u, assigned.getCount());
    EXPECT_EQ(0u, moved.getCount()); // NOLINT(bugprone-use-after-move): empty now
    EXPECT_EQ(0u, query.getCount()); // NOLINT(bugprone-use-after-move): empty now
    query.addElement("c", "3");
    EXPECT_EQ((Pairs{{"c", "3"}}), pairs(query));
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCQueryString target("x=1");
                  target = OCQueryString("y=2");
                  EXPECT_EQ((Pairs{{"y", "2"}}), pairs(target));
              }));
}

TEST(OCQueryString, WritesPairs) {
    EXPECT_EQ("", standard(OCQueryString().getText()));
    EXPECT_EQ("a=1&b=2&a=3", standard(OCQueryString("a=1&b=2&a=3").getText()));
    OCQueryString query;
    query.addElement("a", "1 2");
    query.addElement("b", "x/y");
    EXPECT_EQ("a=1+2&amp;b=x%2fy", standard(query.getText(QueryStringFormatHtml)));
    EXPECT_EQ("a=1+2&b=x%2fy", standard(query.getText(QueryStringFormatPlain)));
    EXPECT_EQ("a=1+2&b=x%2fy", standard(query.getText()));
    EXPECT_EQ("a=1+2&b=x%2fy", standard(query.getText(static_cast<OEQueryStringFormat>(2))));
    EXPECT_EQ("a=1+2&b=x%2fy", standard(query.getText(static_cast<OEQueryStringFormat>(-1))));
}

TEST(OCQueryString, WritesAnEmptyValueAsTheNameAlone) {
    EXPECT_EQ("a", standard(OCQueryString("a=").getText()));
    EXPECT_EQ("a&b=1&c", standard(OCQueryString("a=&b=1&c").getText()));
    EXPECT_EQ("a&amp;b&amp;c", standard(OCQueryString("a&b&c").getText(QueryStringFormatHtml)));
}

TEST(OCQueryString, EncodesNamesAndValues) {
    OCQueryString query;
    query.addElement("a&b=c", "d&e=f+g%h");
    EXPECT_EQ("a%26b%3dc=d%26e%3df%2bg%25h", standard(query.getText()));
    EXPECT_EQ(pairs(query), parsed(standard(query.getText())));
    EXPECT_EQ("aZ09-_=%2e%7e%2f%ff%00", standard(OCQueryString("aZ09-_=.~/%ff%00").getText()));
}

TEST(OCQueryString, AnEmptyNameIsWrittenButNotRead) {
    OCQueryString query;
    query.addElement("", "x");
    query.addElement("", "");
    query.addElement("a", "");
    EXPECT_EQ(3u, query.getCount());
    EXPECT_TRUE(query.contains(""));
    EXPECT_EQ("=x&&a", standard(query.getText()));
    EXPECT_EQ((Pairs{{"a", ""}}), parsed("=x&&a"));
}

TEST(OCQueryString, WritesWithOneRequest) {
    OCQueryString query;
    for (int i = 0; i < 100; ++i)
        query.addElement("name", string(longText));
    const unsigned long requests = fault::heapRecord().requests;
    const OCAnsiString text = query.getText(QueryStringFormatHtml);
    EXPECT_EQ(requests + 1, fault::heapRecord().requests);
    EXPECT_EQ(100 * (5 + longText.size()) + 99UL * 5, text.getLength());
}

TEST(OCQueryString, ClearRemovesAll) {
    const long blocks = fault::heapRecord().liveBlocks;
    OCQueryString query("a=1&b=2");
    query.clear();
    EXPECT_EQ(0u, query.getCount());
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    query.clear();
    EXPECT_EQ("", standard(query.getText()));
    fault::HeapFault failing(1, fault::HeapFault::Following);
    query.clear();
}

TEST(OCQueryString, ElementsAreAdded) {
    OCQueryString query;
    query.addElement("a", "1");
    query.addElement("A", "2");
    query.addElement("a", "1");
    query.addElement("b%20", "+");
    EXPECT_EQ((Pairs{{"a", "1"}, {"A", "2"}, {"a", "1"}, {"b%20", "+"}}), pairs(query));
    query.addElement(query.getName(3), query.getValue(3));
    EXPECT_EQ((std::pair<std::string, std::string>("b%20", "+")), pairs(query)[4]);
}

TEST(OCQueryString, ElementsCanBeChanged) {
    OCQueryString query("a=1&b=2");
    query.getElement(1ul).setName("c");
    query.getElement("A").setValue("9");
    EXPECT_EQ((Pairs{{"a", "9"}, {"c", "2"}}), pairs(query));
}

TEST(OCQueryString, LooksUpByPosition) {
    const OCQueryString query("a=1&b=2&a=3");
    EXPECT_EQ("b", standard(query.getElement(1ul).getName()));
    EXPECT_EQ("3", standard(query.getElement(2ul).getValue()));
    EXPECT_EQ("a", standard(query.getName(0)));
    EXPECT_EQ("1", standard(query.getValue(0ul)));
    EXPECT_EQ(&query.getElement(0ul).getValue(), &query.getValue(0ul));
}

TEST(OCQueryString, RefusesPositionsBeyondTheEnd) {
    OCQueryString query("a=1&b=2&a=3");
    const OCQueryString& constant = query;
    const char* const three = "Query string index out of bounds (3)";
    EXPECT_EXCEPTION(query.getElement(3ul), OXQueryString_NoSuchIndex, three);
    EXPECT_EXCEPTION(constant.getElement(3ul), OXQueryString_NoSuchIndex, three);
    EXPECT_EXCEPTION(query.getName(3), OXQueryString_NoSuchIndex, three);
    EXPECT_EXCEPTION(query.getValue(3ul), OXQueryString_NoSuchIndex, three);
    EXPECT_EXCEPTION(query.removeElement(3ul), OXQueryString_NoSuchIndex, three);
    EXPECT_EXCEPTION(query.removeElement(~0ul), OXQueryString_NoSuchIndex,
                     "Query string index out of bounds (18446744073709551615)");
    EXPECT_EXCEPTION(OCQueryString().getElement(0ul), OXQueryString_NoSuchIndex,
                     "Query string index out of bounds (0)");
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}, {"a", "3"}}), pairs(query));
    try {
        query.getElement(3ul);
    } catch (OXQueryString& failure) {
        ASSERT_EQ(1u, failure.getDetails().getCount());
        EXPECT_EQ("3", standard(failure.getDetails().getString(0)));
    }
}

TEST(OCQueryString, LooksUpTheFirstOfAName) {
    OCQueryString query("b=0&a=1&b=2&A=3");
    const OCQueryString& constant = query;
    EXPECT_EQ("1", standard(query.getValue("A")));
    EXPECT_EQ("1", standard(query.getValue("a")));
    EXPECT_EQ(&query.getElement(1ul), &query.getElement("A"));
    EXPECT_EQ(&query.getElement(0ul), &constant.getElement("b"));
    unsigned long index = 99;
    EXPECT_TRUE(query.indexOf("A", index));
    EXPECT_EQ(1u, index);
    EXPECT_TRUE(query.indexOf("B", index));
    EXPECT_EQ(0u, index);
    EXPECT_TRUE(query.contains("A"));
    EXPECT_EQ(2u, query.countElement("a"));
    EXPECT_EQ(2u, query.countElement("B"));
}

TEST(OCQueryString, DoesNotFindOtherNames) {
    OCQueryString query("a=1&ab=2&[=3&\xc4=4");
    unsigned long index = 77;
    for (const char* name : {"", "c", "abc", "aa", "1", "{", "\xe4", "a ", "a="}) {
        EXPECT_FALSE(query.contains(name)) << name;
        EXPECT_EQ(0u, query.countElement(name)) << name;
        EXPECT_FALSE(query.indexOf(name, index)) << name;
    }
    EXPECT_EQ(77u, index);
    EXPECT_FALSE(query.contains(OCAnsiString("a\0", 2)));
    EXPECT_FALSE(OCQueryString().contains("a"));
    EXPECT_FALSE(OCQueryString().indexOf("a", index));
    EXPECT_EQ(77u, index);
}

TEST(OCQueryString, RefusesNamesThatAreNotThere) {
    OCQueryString query("a=1");
    const OCQueryString& constant = query;
    const char* const missing = "Query element does not exist (Bee)";
    EXPECT_EXCEPTION(query.getElement("Bee"), OXQueryString_NoSuchName, missing);
    EXPECT_EXCEPTION(constant.getElement("Bee"), OXQueryString_NoSuchName, missing);
    EXPECT_EXCEPTION(query.getValue("Bee"), OXQueryString_NoSuchName, missing);
    EXPECT_EXCEPTION(query.getValue(""), OXQueryString_NoSuchName,
                     "Query element does not exist ()");
    EXPECT_EQ((Pairs{{"a", "1"}}), pairs(query));
}

TEST(OCQueryString, TakesADefaultForAMissingValue) {
    OCQueryString query("a=1&a=2&b=");
    EXPECT_EQ("1", standard(query.getValue("A", "default")));
    EXPECT_EQ("", standard(query.getValue("b", "default")));
    EXPECT_EQ("default", standard(query.getValue("c", "default")));
    OCAnsiString copy = query.getValue("a", "");
    copy = "changed";
    EXPECT_EQ("1", standard(query.getValue("a")));
}

TEST(OCQueryString, SetsTheValueOfTheOnlyElementInItsPlace) {
    OCQueryString query("a=1&B=2&c=3");
    const OCQueryElement* const element = &query.getElement(1ul);
    query.setValue("b", "9");
    EXPECT_EQ((Pairs{{"a", "1"}, {"B", "9"}, {"c", "3"}}), pairs(query));
    EXPECT_EQ(element, &query.getElement(1ul));
}

TEST(OCQueryString, SetsANewValueAtTheEnd) {
    OCQueryString query("a=1");
    query.setValue("b", "2");
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}}), pairs(query));
    OCQueryString empty;
    empty.setValue("x", "");
    EXPECT_EQ((Pairs{{"x", ""}}), pairs(empty));
}

TEST(OCQueryString, SetsOneValueForSeveral) {
    OCQueryString query("a=1&b=2&a=3");
    query.setValue("a", "9");
    EXPECT_EQ((Pairs{{"b", "2"}, {"a", "9"}}), pairs(query));
    query = "A=1&a=2&A=3";
    query.setValue("a", "x");
    EXPECT_EQ((Pairs{{"a", "x"}}), pairs(query));
    query = "z&A=1&y&a=2&x";
    query.setValue("A", "");
    EXPECT_EQ((Pairs{{"z", ""}, {"y", ""}, {"x", ""}, {"A", ""}}), pairs(query));
}

TEST(OCQueryString, RemovesByPosition) {
    const long blocks = fault::heapRecord().liveBlocks;
    {
        OCQueryString query("a=1&b=2&a=3");
        query.removeElement(1ul);
        EXPECT_EQ((Pairs{{"a", "1"}, {"a", "3"}}), pairs(query));
        query.removeElement(1ul);
        query.removeElement(0ul);
        EXPECT_EQ(0u, query.getCount());
        EXPECT_EQ(blocks + 1, fault::heapRecord().liveBlocks); // the array
    }
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

TEST(OCQueryString, RemovesEveryElementOfAName) {
    const long blocks = fault::heapRecord().liveBlocks;
    {
        OCQueryString query("a=1&b=2&A=3&c=4");
        const OCQueryElement* const second = &query.getElement(1ul);
        query.removeElement("a");
        EXPECT_EQ((Pairs{{"b", "2"}, {"c", "4"}}), pairs(query));
        EXPECT_EQ(second, &query.getElement(0ul));
        query.removeElement("x");
        query.removeElement("");
        EXPECT_EQ((Pairs{{"b", "2"}, {"c", "4"}}), pairs(query));
        query.removeElement("B");
        query.removeElement("C");
        EXPECT_EQ(0u, query.getCount());
        query.removeElement("C");
        query.addElement("d", "5");
        EXPECT_EQ((Pairs{{"d", "5"}}), pairs(query));
    }
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

TEST(OCQueryString, TakesItsOwnTexts) {
    const std::string value = "x=1&" + longText + "=" + otherText;
    OCQueryString query;
    query.addElement("a", string(value));
    query.setText(query.getValue(0ul));
    EXPECT_EQ((Pairs{{"x", "1"}, {longText, otherText}}), pairs(query));
    query = query.getName(1);
    EXPECT_EQ((Pairs{{longText, ""}}), pairs(query));

    query.setValue(query.getName(0), query.getName(0));
    EXPECT_EQ((Pairs{{longText, longText}}), pairs(query));
    query.addElement(query.getName(0), string(otherText));
    query.setValue(query.getName(1), query.getValue(1));
    EXPECT_EQ((Pairs{{longText, otherText}}), pairs(query));

    query.addElement("other", "o");
    query.addElement(query.getName(0), query.getName(0));
    query.addElement(query.getName(0), query.getName(1));
    query.removeElement(query.getName(0));
    EXPECT_EQ((Pairs{{"other", "o"}}), pairs(query));
    query.removeElement(query.getName(0));
    EXPECT_EQ((Pairs{}), pairs(query));

    query = "a=b";
    EXPECT_EQ("b", standard(query.getValue(query.getName(0), query.getValue(0ul))));
    EXPECT_EQ("b", standard(query.getValue("c", query.getValue(0ul))));
}

TEST(OCQueryString, TakesOneRequestForAShortPair) {
    const OCAnsiString text("name=value&other+name=%41%42");
    const unsigned long requests = fault::heapRecord().requests;
    const OCQueryString query(text);
    EXPECT_EQ(requests + 3, fault::heapRecord().requests); // the array, too
    EXPECT_EQ("AB", standard(query.getValue(1ul)));
}

// Exhausted memory

/// Every request of `change` fails once, and the query is what it was then.
template<class Change>
unsigned long failingChange(const OCAnsiString& start, Change change) {
    OCQueryString query(start);
    std::vector<const OCQueryElement*> elements;
    for (unsigned long i = 0; i < query.getCount(); ++i)
        elements.push_back(&query.getElement(i));
    const Pairs before = pairs(query);
    long blocks = fault::heapRecord().liveBlocks;
    const unsigned long failures =
        fault::failEachRequest([&] { change(query); },
                               [&] {
                                   EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
                                   ASSERT_EQ(elements.size(), query.getCount());
                                   for (unsigned long i = 0; i < query.getCount(); ++i)
                                       EXPECT_EQ(elements[i], &query.getElement(i));
                                   EXPECT_EQ(before, pairs(query));
                                   blocks = fault::heapRecord().liveBlocks;
                               });
    return failures;
}

TEST(OCQueryString, AFailedChangeChangesNothing) {
    std::string many = "a=0";
    for (int i = 1; i < 64; ++i)
        many += "&a=" + std::to_string(i);
    const OCAnsiString text = string("x=1&" + longText + "=" + otherText + "&%41" + longText);
    const OCQueryString source(text);
    for (const OCAnsiString& start :
         {OCAnsiString(), OCAnsiString("a=1&b=2&a=3"), string(many), string(many + "&b&a&a")}) {
        const unsigned long filled = start.getLength() != 0 ? 1 : 0;
        EXPECT_LE(6u, failingChange(start, [&](OCQueryString& q) { q.assign(text); }));
        EXPECT_LE(6u, failingChange(start, [&](OCQueryString& q) { q.assign(source); }));
        EXPECT_LE(1u, failingChange(start, [](OCQueryString& q) { q.addElement("n", "v"); }));
        EXPECT_LE(3u, failingChange(start, [](OCQueryString& q) {
                      q.addElement(string(longText), string(otherText));
                  }));
        EXPECT_LE(1u, failingChange(start, [](OCQueryString& q) { q.setValue("a", "v"); }));
        EXPECT_LE(1u, failingChange(start, [](OCQueryString& q) { q.setValue("n", "v"); }));
        EXPECT_LE(
            1u, failingChange(start, [](OCQueryString& q) { q.setValue("b", string(longText)); }));
        failingChange(start, [](OCQueryString& q) { q.removeElement("a"); });
        failingChange(start, [&](OCQueryString& q) {
            if (filled != 0)
                q.removeElement(0ul);
        });
    }
    // Where the array gets smaller.
    EXPECT_EQ(1u,
              failingChange(string(many + "&b"), [](OCQueryString& q) { q.removeElement(3ul); }));
    EXPECT_EQ(1u,
              failingChange(string(many + "&b"), [](OCQueryString& q) { q.removeElement("a"); }));
    EXPECT_EQ(2u,
              failingChange(string(many + "&b"), [](OCQueryString& q) { q.setValue("a", "x"); }));
}

TEST(OCQueryString, AFailedConstructionLeavesNothing) {
    const OCAnsiString text = string("x=1&" + longText + "=" + otherText + "&%41" + longText);
    const OCQueryString source(text);
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_LE(6u, fault::failEachRequest([&] { const OCQueryString q(text); }));
                  EXPECT_LE(6u, fault::failEachRequest([&] { const OCQueryString q(source); }));
                  EXPECT_EQ(1u, fault::failEachRequest([&] { source.getText(); }));
                  EXPECT_EQ(1u, fault::failEachRequest([&] {
                                    source.getValue(string(longText), "");
                                }) - fault::failEachRequest([&] { string(longText); }));
              }));
}

// Against the model

TEST(OCQueryString, DoesWhatTheModelDoes) {
    const unsigned int seed = 5741;
    std::mt19937 random(seed);
    const std::string alphabet("aAbB=&+% %4f1zZ;/\0\xe4\xff", 20);
    const auto randomText = [&](std::size_t longest) {
        std::string text;
        for (std::size_t n = random() % (longest + 1); n != 0; --n)
            text += alphabet[random() % alphabet.size()];
        if (random() % 50 == 0)
            text += std::string(random() % 200, 'a');
        return text;
    };
    OCQueryString query;
    QueryModel model;
    for (int step = 0; step < 30000; ++step) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
        const std::string a = randomText(2);
        const std::string b = randomText(6);
        const std::vector<std::size_t> places = model.places(a);
        switch (random() % 8) {
        case 0: {
            const std::string text = randomText(60);
            query.setText(string(text));
            model.setText(text);
            break;
        }
        case 1:
            query.addElement(string(a), string(b));
            model.pairs.emplace_back(a, b);
            break;
        case 2:
            query.setValue(string(a), string(b));
            model.setValue(a, b);
            break;
        case 3:
            query.removeElement(string(a));
            model.remove(a);
            break;
        case 4:
            if (!model.pairs.empty()) {
                const std::size_t index = random() % model.pairs.size();
                query.removeElement(index);
                model.pairs.erase(model.pairs.begin() + static_cast<std::ptrdiff_t>(index));
            }
            break;
        case 5: {
            unsigned long index = 1234;
            EXPECT_EQ(!places.empty(), query.indexOf(string(a), index));
            EXPECT_EQ(places.empty() ? 1234 : places[0], index);
            break;
        }
        case 6:
            EXPECT_EQ(places.size(), query.countElement(string(a)));
            EXPECT_EQ(!places.empty(), query.contains(string(a)));
            EXPECT_EQ(places.empty() ? b : model.pairs[places[0]].second,
                      standard(query.getValue(string(a), string(b))));
            break;
        default: {
            const OCQueryString copy(query);
            query = copy;
            const std::string text = standard(query.getText());
            ASSERT_EQ(model.getText(0), text);
            ASSERT_EQ(model.getText(1), standard(query.getText(QueryStringFormatHtml)));
            break;
        }
        }
        ASSERT_EQ(model.pairs, pairs(query));
    }
}

// Texts made to cost time

/// The size of a hostile text. Programs that were not optimised are slow.
#ifdef __OPTIMIZE__
constexpr unsigned long large = 64UL * 1024 * 1024;
#else
constexpr unsigned long large = (fault::sanitized ? 4UL : 8UL) * 1024 * 1024;
#endif

std::string repeated(const std::string& piece, unsigned long size) {
    std::string text;
    text.reserve(size + piece.size());
    while (text.size() < size)
        text += piece;
    return text;
}

TEST(OCQueryStringHostileInput, ReadsAndWritesLargeTexts) {
    const OCQueryString ampersands(string(std::string(large, '&')));
    EXPECT_EQ(0u, ampersands.getCount());

    const OCQueryString equals(string(std::string(large, '=')));
    EXPECT_EQ(0u, equals.getCount());

    OCQueryString query(string(std::string(large, '%')));
    ASSERT_EQ(1u, query.getCount());
    EXPECT_EQ(large, query.getName(0).getLength());
    EXPECT_EQ(3 * large, query.getText().getLength());

    query.setText(string("n=" + std::string(large, '+')));
    EXPECT_EQ(large, query.getValue("N").getLength());
    EXPECT_EQ(large + 2, query.getText(QueryStringFormatHtml).getLength());

    query.setText(string(repeated("%4", large)));
    EXPECT_EQ(large, query.getName(0).getLength());

    query.setText(string(repeated("%41", large)));
    EXPECT_EQ((large + 2) / 3, query.getName(0).getLength());

    query.setText(string("a=" + std::string(large, '=')));
    EXPECT_EQ(large, query.getValue(0ul).getLength());

    query.setText(string(repeated("=x&", large)));
    EXPECT_EQ(0u, query.getCount());
}

TEST(OCQueryStringHostileInput, TakesLinearTimeForManyElements) {
    constexpr unsigned long count = 4096;
    // An element at the end of the heap keeps it from being given back and fetched anew in each
    // run, which would cost only those with many elements.
    OCQueryString last(string(repeated("a&", 16 * count) + "b"));
    last.removeElement("a");
    const auto linear = [](void (*operation)(unsigned long)) {
        EXPECT_LT(growth::ofEightTimes(operation, count), 30);
    };
    linear([](unsigned long n) {
        EXPECT_EQ(n, OCQueryString(string(repeated("a&", 2 * n))).getCount());
    });
    linear([](unsigned long n) {
        const OCQueryString query(string(repeated("a=+&", 4 * n)));
        EXPECT_EQ(4 * n - 1, query.getText().getLength());
    });
    linear([](unsigned long n) {
        OCQueryString query(string(repeated("a=1&b=2&", 8 * n)));
        query.removeElement("A");
        EXPECT_EQ(n, query.getCount());
        query.setValue("B", "3");
        EXPECT_EQ(1u, query.getCount());
    });
    linear([](unsigned long n) {
        OCQueryString query;
        for (unsigned long i = 0; i < n; ++i)
            query.addElement("a", "b");
        const OCQueryString copy(query);
        query.clear();
        EXPECT_EQ(n, copy.getCount());
    });
}

} // namespace
