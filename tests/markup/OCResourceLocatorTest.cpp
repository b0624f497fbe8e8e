#include "OCResourceLocator.h"

#include "OCInteger.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/LocatorModel.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

constexpr const char* noNumber = "Error converting string to integer";

std::string standard(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

OCAnsiString string(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

/// The parts of a locator in one line.
std::string parts(const OCResourceLocator& locator) {
    return standard(locator.getProtocol()) + "|" + standard(locator.getServer()) + "|" +
           std::to_string(locator.getPort()) + "|" + standard(locator.getResource()) + "|" +
           standard(locator.getParameters().getText());
}

std::string parsed(const std::string& text) {
    return parts(OCResourceLocator(string(text)));
}

std::string rewritten(const std::string& text) {
    return standard(OCResourceLocator(string(text)).getText());
}

const char* const full = "web://srv:8080/a/b?x=1&y=2";
const char* const fullParts = "web|srv|8080|/a/b|x=1&y=2";

/// Texts that do not fit into a string object.
const std::string longName(200, 'n');
const std::string longText =
    longName + "://" + longName + ":80/" + longName + "?" + longName + "=" + longName;

TEST(OCResourceLocator, HoldsFiveFields) {
    EXPECT_EQ(8 + 3 * sizeof(OCAnsiString) + sizeof(OCQueryString) + 8, sizeof(OCResourceLocator));
    EXPECT_EQ(568u, sizeof(OCResourceLocator));
    EXPECT_EQ(2u, slots::slotCount<OCResourceLocator>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCResourceLocator>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCResourceLocator>));
    EXPECT_TRUE((std::is_convertible_v<OCAnsiString, OCResourceLocator>));

    const OCResourceLocator locator(full);
    const auto offset = [&](const void* field) {
        return static_cast<const char*>(field) - reinterpret_cast<const char*>(&locator);
    };
    EXPECT_EQ(8, offset(&locator.getProtocol()));
    EXPECT_EQ(8 + 168, offset(&locator.getServer()));
    EXPECT_EQ(8 + 2 * 168, offset(&locator.getResource()));
    EXPECT_EQ(8 + 3 * 168, offset(&locator.getParameters()));
    EXPECT_EQ(8080u, *reinterpret_cast<const unsigned int*>(
                         reinterpret_cast<const char*>(&locator) + 8 + 3L * 168 + 48));
}

TEST(OCResourceLocator, ANewOneIsEmptyAndTakesNoMemory) {
    const unsigned long requests = fault::heapRecord().requests;
    {
        const OCResourceLocator locator;
        EXPECT_FALSE(locator.hasProtocol());
        EXPECT_FALSE(locator.hasServer());
        EXPECT_FALSE(locator.hasResource());
        EXPECT_FALSE(locator.hasPort());
        EXPECT_EQ(0u, locator.getPort());
        EXPECT_EQ(0u, locator.getParameters().getCount());
        EXPECT_EQ(0u, locator.getText().getLength());
    }
    EXPECT_EQ(requests, fault::heapRecord().requests);
}

TEST(OCResourceLocator, ReadsAllParts) {
    const OCResourceLocator locator(full);
    EXPECT_EQ("web", standard(locator.getProtocol()));
    EXPECT_EQ("srv", standard(locator.getServer()));
    EXPECT_EQ(8080u, locator.getPort());
    EXPECT_EQ("/a/b", standard(locator.getResource()));
    EXPECT_EQ(2u, locator.getParameters().getCount());
    EXPECT_EQ("1", standard(locator.getParameters().getValue("x")));
    EXPECT_EQ("2", standard(locator.getParameters().getValue("y")));
    EXPECT_TRUE(locator.hasProtocol());
    EXPECT_TRUE(locator.hasServer());
    EXPECT_TRUE(locator.hasPort());
    EXPECT_TRUE(locator.hasResource());
    EXPECT_EQ(full, standard(locator.getText(QueryStringFormatPlain)));
    EXPECT_EQ(full, standard(locator.getText()));
}

TEST(OCResourceLocator, ReadsWhatIsThere) {
    EXPECT_EQ("||0||", parsed(""));
    EXPECT_EQ("web|srv|0||", parsed("web://srv"));
    EXPECT_EQ("web|srv|0|/|", parsed("web://srv/"));
    EXPECT_EQ("||0|/a/b|x=1", parsed("/a/b?x=1"));
    EXPECT_EQ("|srv|0|/a|", parsed("//srv/a"));
    EXPECT_EQ("||0|a|", parsed("a"));
    EXPECT_EQ("||0||x=1", parsed("?x=1"));
    EXPECT_EQ("||0||", parsed("?"));
    EXPECT_EQ("|srv|0||", parsed("//srv"));
    EXPECT_EQ("||0||", parsed("//"));
    EXPECT_EQ("||0|/|", parsed("/"));
    EXPECT_EQ("||0|/a|", parsed("///a"));
    EXPECT_EQ("||0|//a|", parsed("////a"));
    EXPECT_EQ("web||0|/a|", parsed("web:///a"));
    EXPECT_EQ("web||0|/a|", parsed("web:/a"));
    EXPECT_EQ("web||0||", parsed("web:"));
    EXPECT_EQ("web|\\srv\\a|0||", parsed("web://\\srv\\a"));
    EXPECT_EQ("web||0|\\\\srv|", parsed("web:\\\\srv"));
    EXPECT_EQ("||0|a|", parsed("a?"));
    EXPECT_EQ("||0|a b|", parsed("a b"));
    EXPECT_EQ("Web|Srv|0|/A/b|X=Y", parsed("Web://Srv/A/b?X=Y"));
}

TEST(OCResourceLocator, TheFirstQuestionMarkStartsTheParameters) {
    EXPECT_EQ("web|h|0|/a|b%3fc=1", parsed("web://h/a?b?c=1"));
    // Also in front of what would be other parts.
    EXPECT_EQ("||0|a|b%3a%2f%2fc%3a8%2fd", parsed("a?b://c:8/d"));
    EXPECT_EQ("web|h|0||q=1", parsed("web://h?q=1"));
    EXPECT_EQ("web|h|80||q=1", parsed("web://h:80?q=1"));
}

TEST(OCResourceLocator, TheFirstColonEndsTheProtocol) {
    EXPECT_EQ("host||0|80/x|", parsed("host:80/x"));
    EXPECT_EQ("//host||0|80/x|", parsed("//host:80/x"));
    EXPECT_EQ("/a||0|b|", parsed("/a:b"));
    EXPECT_EQ("||0|a|", parsed(":a"));
    EXPECT_EQ("|srv|0|/a|", parsed("://srv/a"));
    EXPECT_EQ("a||0|b:c|", parsed("a:b:c"));
    EXPECT_EQ("news||0|item|", parsed("news:item"));
    EXPECT_EQ("C||0|\\a\\b|", parsed("C:\\a\\b"));
}

TEST(OCResourceLocator, TheServerEndsAtAColonOrSlash) {
    EXPECT_EQ("web|srv|8|/a|", parsed("web://srv:8/a"));
    EXPECT_EQ("web|srv|0|/a:8|", parsed("web://srv/a:8"));
    EXPECT_EQ("web|u@srv|0|/a|", parsed("web://u@srv/a"));
    EXPECT_EQ("web||8|/a|", parsed("web://:8/a"));
    EXPECT_EQ("web|%41|0|/%42|", parsed("web://%41/%42"));
}

TEST(OCResourceLocator, ThePortIsADecimalNumber) {
    EXPECT_EQ("web|h|8080||", parsed("web://h:8080"));
    EXPECT_EQ("web|h|80|/8|", parsed("web://h:0080/8"));
    EXPECT_EQ("web|h|80|/x|", parsed("web://h:80x/x"));
    EXPECT_EQ("web|h|0|/x|", parsed("web://h:x/x"));
    EXPECT_EQ("web|h|0|/x|", parsed("web://h: 80/x"));
    EXPECT_EQ("web|h|8|/x|", parsed("web://h:8:9/x"));
    EXPECT_EQ("web|h|65536||", parsed("web://h:65536"));
    EXPECT_EQ("web|h|4294967295||", parsed("web://h:4294967295"));
    EXPECT_EQ("web|h|0||", parsed("web://h:4294967296"));
    EXPECT_EQ("web|h|1||", parsed("web://h:4294967297"));
    // A port may stand without a server, behind a protocol.
    EXPECT_EQ("a||8|/c|", parsed("a::8/c"));
}

TEST(OCResourceLocator, AnEmptyPortIsRefused) {
    for (const char* text : {"ftp://h:/x", "ftp://h:", "ftp::", "ftp://:?x=1"}) {
        EXPECT_EXCEPTION(OCResourceLocator{OCAnsiString(text)},
                         OXIntegerConversion_ConvertStringError, noNumber);
        OCResourceLocator locator(full);
        EXPECT_EXCEPTION(locator.assign(OCAnsiString(text)), OXIntegerConversion_ConvertStringError,
                         noNumber);
        EXPECT_EXCEPTION(locator = OCAnsiString(text), OXIntegerConversion_ConvertStringError,
                         noNumber);
        EXPECT_EXCEPTION(locator.setText(text), OXIntegerConversion_ConvertStringError, noNumber);
        EXPECT_EQ(fullParts, parts(locator));
    }
}

TEST(OCResourceLocator, WritesBackWhatItRead) {
    for (const char* text : {"", "web://srv", "web://srv/", "/a/b?x=1", "//srv", "//srv/a?b", "a",
                             "web://srv:1/", "web://h:4294967295/?a=1&b&c=%2f"})
        EXPECT_EQ(text, rewritten(text));
}

TEST(OCResourceLocator, WritesProtocolAndPortOnlyWithAServer) {
    EXPECT_EQ("item", rewritten("news:item"));
    EXPECT_EQ("80/x", rewritten("host:80/x"));
    EXPECT_EQ("/c", rewritten("a::8/c"));
    EXPECT_EQ("", rewritten("web:"));
    OCResourceLocator locator;
    locator.setProtocol("web");
    locator.setPort(80);
    EXPECT_EQ("", standard(locator.getText()));
    locator.setServer("h");
    EXPECT_EQ("web://h:80", standard(locator.getText()));
}

TEST(OCResourceLocator, WritesParametersOnlyWithAResource) {
    EXPECT_EQ("web://h", rewritten("web://h?q=1"));
    EXPECT_EQ("", rewritten("?q=1"));
    EXPECT_EQ("web://h/?q=1", rewritten("web://h/?q=1"));
    EXPECT_EQ("a", rewritten("a?"));
    EXPECT_EQ("a", rewritten("a?=x&&"));
}

TEST(OCResourceLocator, WritesTheSeparatorOfTheFormat) {
    const OCResourceLocator locator(full);
    EXPECT_EQ("web://srv:8080/a/b?x=1&amp;y=2", standard(locator.getText(QueryStringFormatHtml)));
    EXPECT_EQ(full, standard(locator.getText(static_cast<OEQueryStringFormat>(7))));
}

TEST(OCResourceLocator, WritesTheServerBehindTwoSlashes) {
    OCResourceLocator locator;
    locator.setServer("server");
    EXPECT_EQ("//server", standard(locator.getText()));
    locator.setServer("/server");
    EXPECT_EQ("/server", standard(locator.getText()));
    locator.setServer("//server");
    EXPECT_EQ("//server", standard(locator.getText()));
    locator.setServer("\\server");
    EXPECT_EQ("//\\server", standard(locator.getText()));
}

TEST(OCResourceLocator, WritesTheResourceBehindASlash) {
    OCResourceLocator locator;
    locator.setResource("a/b");
    EXPECT_EQ("a/b", standard(locator.getText()));
    locator.setServer("h");
    EXPECT_EQ("//h/a/b", standard(locator.getText()));
    EXPECT_EQ("a/b", standard(locator.getResource()));
    locator.setResource("/a");
    EXPECT_EQ("//h/a", standard(locator.getText()));
    locator.setResource("\\a");
    EXPECT_EQ("//h\\a", standard(locator.getText()));
    locator.setResource("a\\b");
    EXPECT_EQ("//h/a\\b", standard(locator.getText()));
}

TEST(OCResourceLocator, PartsAreSetAsTheyAre) {
    OCResourceLocator locator;
    locator.setProtocol("a:");
    locator.setServer("b?c");
    locator.setResource("d?e%20");
    locator.setPort(0xFFFFFFFF);
    EXPECT_EQ("a:|b?c|4294967295|d?e%20|", parts(locator));
    EXPECT_EQ("a:://b?c:4294967295/d?e%20", standard(locator.getText()));
    locator.getParameters().addElement("x y", "1");
    const OCResourceLocator& constant = locator;
    EXPECT_EQ(&locator.getParameters(), &constant.getParameters());
    EXPECT_EQ("a:|b?c|4294967295|d?e%20|x+y=1", parts(locator));
}

TEST(OCResourceLocator, PartsAreClearedOneByOne) {
    OCResourceLocator locator(full);
    locator.clearPort();
    EXPECT_FALSE(locator.hasPort());
    EXPECT_EQ("web|srv|0|/a/b|x=1&y=2", parts(locator));
    locator.clearProtocol();
    EXPECT_EQ("|srv|0|/a/b|x=1&y=2", parts(locator));
    locator.clearParameters();
    EXPECT_EQ("|srv|0|/a/b|", parts(locator));
    locator.clearServer();
    EXPECT_EQ("||0|/a/b|", parts(locator));
    locator.clearResource();
    EXPECT_EQ("||0||", parts(locator));
    locator = full;
    locator.clear();
    EXPECT_EQ("||0||", parts(locator));
}

TEST(OCResourceLocator, ReplacesAllParts) {
    OCResourceLocator locator(full);
    EXPECT_EQ(&locator, &locator.assign(OCAnsiString("c/d")));
    EXPECT_EQ("||0|c/d|", parts(locator));
    locator.setText(full);
    EXPECT_EQ(fullParts, parts(locator));
    EXPECT_EQ(&locator, &(locator = OCAnsiString("x:")));
    EXPECT_EQ("x||0||", parts(locator));
    locator.setText("");
    EXPECT_EQ("||0||", parts(locator));
    locator.setText(full);
    const OCResourceLocator none;
    EXPECT_EQ(&locator, &locator.assign(none));
    EXPECT_EQ("||0||", parts(locator));
}

TEST(OCResourceLocator, CopiesAreTheirOwn) {
    OCResourceLocator locator(full);
    const OCResourceLocator copy(locator);
    OCResourceLocator assigned("x:y");
    EXPECT_EQ(&assigned, &(assigned = locator));
    OCResourceLocator third;
    EXPECT_EQ(&third, &third.assign(locator));
    locator.getParameters().setValue("x", "9");
    locator.clear();
    EXPECT_EQ(fullParts, parts(copy));
    EXPECT_EQ(fullParts, parts(assigned));
    EXPECT_EQ(fullParts, parts(third));
    const OCResourceLocator& self = third;
    third = self;
    EXPECT_EQ(fullParts, parts(third));
}

TEST(OCResourceLocator, MovesWithoutMemory) {
    OCResourceLocator locator(string(longText));
    const std::string expected = parts(locator);
    const unsigned long requests = fault::heapRecord().requests;
    OCResourceLocator moved(std::move(locator));
    OCResourceLocator assigned;
    assigned = std::move(moved);
    EXPECT_EQ(requests, fault::heapRecord().requests);
    EXPECT_EQ(expected, parts(assigned));
    EXPECT_EQ("||0||", parts(moved));   // NOLINT(bugprone-use-after-move): empty now
    EXPECT_EQ("||0||", parts(locator)); // NOLINT(bugprone-use-after-move): empty now
    OCResourceLocator& same = assigned;
    assigned = std::move(same);
    EXPECT_EQ(expected, parts(assigned));
}

TEST(OCResourceLocator, TakesItsOwnParts) {
    OCResourceLocator locator;
    locator.setServer(full);
    locator.setText(locator.getServer());
    EXPECT_EQ(fullParts, parts(locator));
    locator.setProtocol(locator.getServer());
    locator.setServer(locator.getResource());
    locator.setResource(locator.getResource());
    EXPECT_EQ("srv|/a/b|8080|/a/b|x=1&y=2", parts(locator));
    locator.getParameters().setValue("x", string(longText));
    locator = locator.getParameters().getValue("x");
    EXPECT_EQ(parsed(longText), parts(locator));
    locator.setResource(locator.getServer());
    EXPECT_EQ(longName, standard(locator.getResource()));
}

// The steps

/// What a step makes of a full locator, and what it leaves of the text.
std::string step(void (OCResourceLocator::*parse)(OCAnsiString&), const std::string& text) {
    OCResourceLocator locator(full);
    OCAnsiString rest = string(text);
    (locator.*parse)(rest);
    return parts(locator) + " " + standard(rest);
}

TEST(OCResourceLocator, ParametersAreTakenOffTheEnd) {
    const auto parse = &OCResourceLocator::parseParameters;
    EXPECT_EQ("web|srv|8080|/a/b|p=q web:x", step(parse, "web:x?p=q"));
    EXPECT_EQ("web|srv|8080|/a/b| web:x", step(parse, "web:x"));
    EXPECT_EQ("web|srv|8080|/a/b| ", step(parse, "?"));
    EXPECT_EQ("web|srv|8080|/a/b| ", step(parse, ""));
}

TEST(OCResourceLocator, TheProtocolIsTakenOffTheFront) {
    const auto parse = &OCResourceLocator::parseProtocol;
    EXPECT_EQ("ftp|srv|8080|/a/b|x=1&y=2 //h:1", step(parse, "ftp://h:1"));
    EXPECT_EQ("|srv|8080|/a/b|x=1&y=2 //h", step(parse, "//h"));
    EXPECT_EQ("|srv|8080|/a/b|x=1&y=2 x", step(parse, ":x"));
    EXPECT_EQ("ftp|srv|8080|/a/b|x=1&y=2 ", step(parse, "ftp:"));
    EXPECT_EQ("|srv|8080|/a/b|x=1&y=2 ", step(parse, ""));
}

TEST(OCResourceLocator, TheServerIsTakenOffTheFront) {
    const auto parse = &OCResourceLocator::parseServer;
    EXPECT_EQ("web|h|8080|/a/b|x=1&y=2 :1/c", step(parse, "//h:1/c"));
    EXPECT_EQ("web|h|8080|/a/b|x=1&y=2 /c:1", step(parse, "//h/c:1"));
    EXPECT_EQ("web|h|8080|/a/b|x=1&y=2 ", step(parse, "//h"));
    EXPECT_EQ("web||8080|/a/b|x=1&y=2 /c", step(parse, "///c"));
    EXPECT_EQ("web||8080|/a/b|x=1&y=2 ", step(parse, "//"));
    EXPECT_EQ("web||8080|/a/b|x=1&y=2 /h", step(parse, "/h"));
    EXPECT_EQ("web||8080|/a/b|x=1&y=2 h//i", step(parse, "h//i"));
    EXPECT_EQ("web||8080|/a/b|x=1&y=2 /", step(parse, "/"));
    EXPECT_EQ("web||8080|/a/b|x=1&y=2 ", step(parse, ""));
    // The characters that a text had before do not count.
    OCResourceLocator locator(full);
    OCAnsiString shortened("///");
    shortened.getString()[2] = 'x';
    shortened.left(1);
    locator.parseServer(shortened);
    EXPECT_EQ("/", standard(shortened));
}

TEST(OCResourceLocator, ThePortIsTakenOffTheFront) {
    const auto parse = &OCResourceLocator::parsePort;
    EXPECT_EQ("web|srv|21|/a/b|x=1&y=2 /c:1", step(parse, ":21/c:1"));
    EXPECT_EQ("web|srv|21|/a/b|x=1&y=2 ", step(parse, ":21"));
    EXPECT_EQ("web|srv|0|/a/b|x=1&y=2 21", step(parse, "21"));
    EXPECT_EQ("web|srv|0|/a/b|x=1&y=2 /:21", step(parse, "/:21"));
    EXPECT_EQ("web|srv|0|/a/b|x=1&y=2 ", step(parse, ""));

    OCResourceLocator locator(full);
    OCAnsiString text(":/c");
    EXPECT_EXCEPTION(locator.parsePort(text), OXIntegerConversion_ConvertStringError, noNumber);
    EXPECT_EQ(":/c", standard(text));
    EXPECT_EQ(fullParts, parts(locator));
}

TEST(OCResourceLocator, TheResourceIsTheRest) {
    const auto parse = &OCResourceLocator::parseResource;
    EXPECT_EQ("web|srv|8080|c?d|x=1&y=2 ", step(parse, "c?d"));
    EXPECT_EQ("web|srv|8080||x=1&y=2 ", step(parse, ""));
}

TEST(OCResourceLocator, EachPartIsBuiltForItself) {
    OCResourceLocator locator(full);
    EXPECT_EQ("web:", standard(locator.buildProtocol()));
    EXPECT_EQ("//srv", standard(locator.buildServer()));
    EXPECT_EQ(":8080", standard(locator.buildPort()));
    EXPECT_EQ("/a/b", standard(locator.buildResource()));
    EXPECT_EQ("?x=1&y=2", standard(locator.buildParameters()));
    EXPECT_EQ("?x=1&amp;y=2", standard(locator.buildParameters(QueryStringFormatHtml)));

    // Those that a whole text would leave out, too.
    locator = "web:a?x=1";
    locator.setPort(8);
    EXPECT_EQ("web:", standard(locator.buildProtocol()));
    EXPECT_EQ(":8", standard(locator.buildPort()));
    EXPECT_EQ("a", standard(locator.buildResource()));
    locator.clearResource();
    EXPECT_EQ("?x=1", standard(locator.buildParameters(QueryStringFormatPlain)));
    locator.setServer("h");
    EXPECT_EQ("", standard(locator.buildResource()));
    locator.setResource("a");
    EXPECT_EQ("/a", standard(locator.buildResource()));

    locator.clear();
    EXPECT_EQ("", standard(locator.buildProtocol()));
    EXPECT_EQ("", standard(locator.buildServer()));
    EXPECT_EQ("", standard(locator.buildPort()));
    EXPECT_EQ("", standard(locator.buildResource()));
    EXPECT_EQ("", standard(locator.buildParameters()));
}

// Exhausted memory

/// Every request of `change` fails once, and the locator is what it was then.
template<class Change>
unsigned long failingChange(const std::string& start, Change change) {
    unsigned long failures = 0;
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  const std::string before = parts(OCResourceLocator(string(start)));
                  failures = fault::failEachRequestOn(
                      [&] { return OCResourceLocator(string(start)); }, change,
                      [&](const OCResourceLocator& l, bool failed) {
                          if (failed) {
                              EXPECT_EQ(before, parts(l));
                          }
                      });
              }));
    return failures;
}

TEST(OCResourceLocator, AFailedChangeChangesNothing) {
    const OCAnsiString text = string(longText);
    const OCAnsiString name = string(longName);
    const OCFilePath path(name);
    const OCResourceLocator source(text);
    for (const std::string& start : {std::string(), std::string(full), "ftp" + longText}) {
        EXPECT_LE(8u, failingChange(start, [&](OCResourceLocator& l) { l = text; }));
        EXPECT_LE(7u, failingChange(start, [&](OCResourceLocator& l) { l = source; }));
        EXPECT_LE(1u, failingChange(start, [&](OCResourceLocator& l) { l.setText(text); }));
        const unsigned long own = start.size() > 200 ? 0 : 1; // a part as large is there already
        EXPECT_LE(own, failingChange(start, [&](OCResourceLocator& l) { l.setProtocol(name); }));
        EXPECT_LE(own, failingChange(start, [&](OCResourceLocator& l) { l.setServer(name); }));
        EXPECT_LE(own, failingChange(start, [&](OCResourceLocator& l) { l.setResource(path); }));
    }
}

TEST(OCResourceLocator, AFailedStepChangesNothing) {
    const std::pair<void (OCResourceLocator::*)(OCAnsiString&), std::string> steps[] = {
        {&OCResourceLocator::parseParameters, longName + "?" + longName + "=" + longName},
        {&OCResourceLocator::parseProtocol, longName + ":" + longName},
        {&OCResourceLocator::parseServer, "//" + longName + "/" + longName},
        {&OCResourceLocator::parsePort, ":" + std::string(200, '1') + "/" + longName},
    };
    struct Subject {
        OCResourceLocator locator;
        OCAnsiString text;
    };
    for (const auto& step : steps)
        EXPECT_LE(1u, fault::failEachRequestOn(
                          [&] {
                              return Subject{OCResourceLocator(full), string(step.second)};
                          },
                          [&](Subject& s) { (s.locator.*step.first)(s.text); },
                          [&](const Subject& s, bool failed) {
                              if (failed) {
                                  EXPECT_EQ(step.second, s.text.getString());
                                  EXPECT_EQ(parts(OCResourceLocator(full)), parts(s.locator));
                              } else
                                  EXPECT_GT(step.second.size(), s.text.getLength());
                          }));
}

TEST(OCResourceLocator, AFailedConstructionLeavesNothing) {
    const OCAnsiString text = string(longText);
    const OCResourceLocator source(text);
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_LE(8u, fault::failEachRequest([&] { const OCResourceLocator l(text); }));
                  EXPECT_LE(7u, fault::failEachRequest([&] { const OCResourceLocator l(source); }));
                  EXPECT_LE(4u, fault::failEachRequest([&] { source.getText(); }));
              }));
}

// Against the model

TEST(OCResourceLocator, DoesWhatTheModelDoes) {
    const unsigned int seed = 5640;
    std::mt19937 random(seed);
    const std::vector<std::string> pieces{"a",
                                          "web",
                                          ":",
                                          ":",
                                          "/",
                                          "/",
                                          "//",
                                          "?",
                                          "&",
                                          "=",
                                          "8080",
                                          "0",
                                          "%",
                                          "+",
                                          "\\",
                                          " ",
                                          std::string("\0", 1),
                                          "\xe4"};
    OCResourceLocator locator;
    LocatorModel model;
    for (int step = 0; step < 30000; ++step) {
        std::string text;
        for (unsigned long n = random() % 14; n != 0; --n)
            text += pieces[random() % pieces.size()];
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + text);
        bool done = true;
        switch (random() % 8) {
        case 0:
            locator.setProtocol(string(text));
            model.protocol = text;
            break;
        case 1:
            locator.setServer(string(text));
            model.server = text;
            break;
        case 2:
            locator.setResource(string(text));
            model.resource = text;
            break;
        case 3:
            locator.getParameters().setText(string(text));
            model.parameters.setText(text);
            break;
        default:
            try {
                locator.setText(string(text));
            } catch (const OXIntegerConversion_ConvertStringError&) {
                done = false;
            }
            ASSERT_EQ(done, model.setText(text));
        }
        ASSERT_EQ(model.protocol, standard(locator.getProtocol()));
        ASSERT_EQ(model.server, standard(locator.getServer()));
        ASSERT_EQ(model.resource, standard(locator.getResource()));
        ASSERT_EQ(model.port, locator.getPort());
        ASSERT_EQ(model.parameters.getText(0), standard(locator.getParameters().getText()));
        ASSERT_EQ(model.getText(0), standard(locator.getText()));
        ASSERT_EQ(model.getText(1), standard(locator.getText(QueryStringFormatHtml)));
    }
}

// Texts made to cost time

/// The size of a hostile text. Programs that were not optimised are slow.
#ifdef __OPTIMIZE__
constexpr unsigned long large = 64UL * 1024 * 1024;
#else
constexpr unsigned long large = (fault::sanitized ? 4UL : 8UL) * 1024 * 1024;
#endif

TEST(OCResourceLocatorHostileInput, ReadsAndWritesLargeTexts) {
    OCResourceLocator locator;
    locator.setText(string(std::string(large, '?')));
    EXPECT_EQ(large - 1, locator.getParameters().getName(0).getLength());
    EXPECT_EQ(0u, locator.getText().getLength());

    locator.setText(string(std::string(large, '/')));
    EXPECT_EQ(large - 2, locator.getResource().getLength());
    EXPECT_EQ(large - 2, locator.getText().getLength());

    locator.setText(string(std::string(large, ':') + "/"));
    EXPECT_EQ("||0|/|", parts(locator));

    locator.setText(string(std::string(large, 'p') + "::0"));
    EXPECT_EQ(large, locator.getProtocol().getLength());
    EXPECT_EXCEPTION(locator.setText(string(std::string(large, 'q') + ":://")),
                     OXIntegerConversion_ConvertStringError, noNumber);
    EXPECT_EQ('p', locator.getProtocol()[large - 1]);
}

TEST(OCResourceLocatorHostileInput, ReadsLargeParts) {
    OCResourceLocator locator(string("web://h:" + std::string(large, '1')));
    EXPECT_NE(0u, locator.getPort());
    EXPECT_FALSE(locator.hasResource());

    locator.setText(string("web://" + std::string(large, 's')));
    EXPECT_EQ(large, locator.getServer().getLength());
    EXPECT_EQ(large + 6, locator.getText().getLength());

    locator.setText(string("/a?" + std::string(large, '&')));
    EXPECT_EQ(0u, locator.getParameters().getCount());
    EXPECT_EQ("/a", standard(locator.getText()));
}

TEST(OCResourceLocatorHostileInput, TakesLinearTime) {
    const auto linear = [](const std::string& piece) {
        const double ratio = growth::ofEightTimes(
            [&](unsigned long n) {
                std::string text = "web://h/";
                while (text.size() < n)
                    text += piece;
                const OCResourceLocator locator(string(text));
                EXPECT_LT(0u, locator.getText().getLength());
            },
            fault::sanitized ? 50000 : 500000);
        EXPECT_LT(ratio, 30) << piece;
    };
    for (const char* piece : {":", "/", "?", "%", "a?", ":/", "//:", "?&="})
        linear(piece);
}

} // namespace
