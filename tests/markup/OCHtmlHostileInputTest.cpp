// Pages made to break a parser: size and repetition cost neither call stack nor more than linear
// time, and memory only for the largest text.

#include "OCHtmlParser.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Pieces.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

class Counter : public OCHtmlParserEvents {
public:
    explicit Counter(bool returning) : errorsReturn(returning) {}

    void attribute(const OCAnsiString& name, const OCAnsiString& value) override {
        ++attributes;
        bytes += name.getLength() + value.getLength();
    }
    void characterData(const OCAnsiString& text) override {
        ++texts;
        bytes += text.getLength();
    }
    void comment(const OCAnsiString& text) override {
        ++comments;
        bytes += text.getLength();
    }
    void documentEnd() override { ++documentEnds; }
    void documentStart() override { ++documentStarts; }
    void documentType(const OCAnsiString& text) override { bytes += text.getLength(); }
    void elementEnd(const OCAnsiString& name) override {
        ++ends;
        bytes += name.getLength();
    }
    void elementStart(const OCAnsiString& name) override {
        ++starts;
        bytes += name.getLength();
    }
    void elementStartComplete(const OCAnsiString&) override { ++completes; }
    void error(OEHtmlErrorClass errorClass) override {
        ++errors;
        if (!errorsReturn)
            OCHtmlParserEvents::error(errorClass);
    }

    unsigned long attributes = 0;
    unsigned long texts = 0;
    unsigned long comments = 0;
    unsigned long documentStarts = 0;
    unsigned long documentEnds = 0;
    unsigned long starts = 0;
    unsigned long completes = 0;
    unsigned long ends = 0;
    unsigned long errors = 0;
    unsigned long bytes = 0;

private:
    bool errorsReturn;
};

constexpr unsigned long million = 1000000;
/// A sanitizer's heap copies a block whenever it grows.
constexpr unsigned long large = (fault::sanitized ? 4UL : 64UL) * 1024 * 1024;

Counter parseOn(std::vector<Pieces::Piece> content) {
    Counter counter(true);
    Pieces stream(std::move(content));
    OCHtmlParser parser;
    parser.setParserEvents(counter);
    parser.parse(stream);
    EXPECT_EQ(1u, counter.documentStarts);
    EXPECT_EQ(1u, counter.documentEnds);
    return counter;
}

void parse(std::vector<Pieces::Piece> content) {
    Counter counter(false);
    Pieces stream(std::move(content));
    OCHtmlParser parser;
    parser.setParserEvents(counter);
    parser.parse(stream);
}

TEST(OCHtmlHostileInput, ParsesAMillionNestedElements) {
    const Counter counter = parseOn({{"<a>", million}, {"</a>", million}});
    EXPECT_EQ(million, counter.starts);
    EXPECT_EQ(million, counter.completes);
    EXPECT_EQ(million, counter.ends);
    EXPECT_EQ(0u, counter.errors);
}

TEST(OCHtmlHostileInput, ParsesALargeTokenOfEachKind) {
    const std::string block(1024, 'n');
    const unsigned long times = large / 1024;
    Counter counter = parseOn({{block, times}});
    EXPECT_EQ(1u, counter.texts);
    EXPECT_EQ(large, counter.bytes);
    counter = parseOn({{"<", 1}, {block, times}, {">", 1}});
    EXPECT_EQ(1u, counter.completes);
    EXPECT_EQ(large, counter.bytes);
    counter = parseOn({{"</", 1}, {block, times}, {">", 1}});
    EXPECT_EQ(1u, counter.ends);
    EXPECT_EQ(large, counter.bytes);
    counter = parseOn({{"<a ", 1}, {block, times}, {">", 1}});
    EXPECT_EQ(large + 1, counter.bytes);
    counter = parseOn({{"<a b=", 1}, {block, times}, {">", 1}});
    EXPECT_EQ(large + 2, counter.bytes);
    counter = parseOn({{"<a b='", 1}, {block, times}, {"'>", 1}});
    EXPECT_EQ(large + 2, counter.bytes);
    counter = parseOn({{"<!--", 1}, {block, times}, {"-->", 1}});
    EXPECT_EQ(1u, counter.comments);
    EXPECT_EQ(large, counter.bytes);
    counter = parseOn({{"<!doctype ", 1}, {block, times}, {">", 1}});
    EXPECT_EQ(large, counter.bytes);
}

TEST(OCHtmlHostileInput, ReportsALargeTokenThatDoesNotEnd) {
    const std::string block(1024, 'n');
    const unsigned long times = large / 1024;
    EXPECT_EXCEPTION(parse({{"<", 1}, {block, times}}), OXHtmlError_ElementStartMalformed,
                     "Malformed start of element");
    EXPECT_EXCEPTION(parse({{"</", 1}, {block, times}}), OXHtmlError_ElementEndMalformed,
                     "Malformed end of element");
    EXPECT_EXCEPTION(parse({{"<a b='", 1}, {block, times}}), OXHtmlError_AttributeMalformed,
                     "Malformed attribute");
    EXPECT_EXCEPTION(parse({{"<a b=", 1}, {block, times}}), OXHtmlError_AttributeMalformed,
                     "Malformed attribute");
    EXPECT_EXCEPTION(parse({{"<!--", 1}, {block, times}}), OXHtmlError_CommentMalformed,
                     "Malformed comment");
    EXPECT_EXCEPTION(parse({{"<!doctype", 1}, {block, times}}), OXHtmlError_Unexpected,
                     "Unexpected error");
}

TEST(OCHtmlHostileInput, PassesOverLargeRunsOfAnything) {
    const struct {
        const char* before;
        const char* repeated;
        const char* behind;
        unsigned long errors;
    } documents[] = {
        {"<!--a--", "-", ">", 0},
        {"<!--", "- ", "-->", 0},
        {"<!--a--", " ", ">", 0},
        {"", "<!---->", "", 0},
        {"", "<!doctype>", "", 0},
        {"<!doctype", " ", ">", 0},
        {"<!doctype a", " ", "b>", 0},
        {"<", " ", "a>", 0},
        {"</", " ", "a>", 0},
        {"<a", " ", "/>", 0},
        {"<a b", " ", "=c>", 0},
        {"<a b=", " ", "c>", 0},
        {"<a", " b=''", ">", 0},
        {"<a", " b", ">", 0},
        {"<a ", "b=''", ">", 0},
        {"", "<b/>", "", 0},
        {"", "<b></b>", "", 0},
        {"", "t<b>", "", 0},
        {"", ">", "", 0},
        {"</a", " ", ">", 0},
        {"<a ", "b= ", "c>", 0},
    };
    for (const auto& document : documents) {
        const unsigned long times = large / 16 / std::strlen(document.repeated);
        const Counter counter =
            parseOn({{document.before, 1}, {document.repeated, times}, {document.behind, 1}});
        EXPECT_EQ(document.errors, counter.errors) << document.before << document.repeated;
        // and cut off
        parseOn({{document.before, 1}, {document.repeated, times}});
    }
}

const char* const erring[] = {
    "<",         "</", "<!",  "<!--",    "<a",   "<a ",  "<a b=",    "<a b='", "<a/",    "</a ",
    "</a b",     "<?", "< <", "<=",      "<a =", "</>",  "<>",       "<a\"",   "<!-- -", "<!doct",
    "<!doctype", "&",  "'",   "<a b='>", "</a<", "<a/<", "<a b=>\"", "<\xFF"};

TEST(OCHtmlHostileInput, GoesOnBehindMillionsOfErrors) {
    for (const char* repeated : erring)
        for (const char* before : {"", "<a ", "<a b=", "<a b=\"", "<!--", "t"})
            parseOn({{before, 1}, {repeated, million / 50}});
    EXPECT_EQ(2 * million, parseOn({{"<", million}}).errors);
}

/// The same on a reader that is given.
void parseGiven(const std::string& repeated, unsigned long times, unsigned long lookAhead) {
    Counter counter(true);
    Pieces stream({{repeated, times}});
    OCHtmlParserReader reader(stream);
    reader.growBuffer(lookAhead);
    OCHtmlParser parser;
    parser.setParserEvents(counter);
    parser.parseDocument(reader);
    EXPECT_EQ(1u, counter.documentEnds);
}

TEST(OCHtmlHostileInput, TakesLinearTimeWithAGivenReader) {
    for (const char* repeated : erring)
        parseGiven(repeated, million / 50, 0);
    for (const char* repeated : {"<a b='c'>d</a>", "<!-- - ", "<a "})
        EXPECT_LT(growth::ofEightTimes([&](unsigned long n) { parseGiven(repeated, n, 0); },
                                       fault::sanitized ? 2000 : 20000),
                  30)
            << repeated;
}

TEST(OCHtmlHostileInput, TakesLinearTimeWhateverItReads) {
    for (const char* repeated : erring)
        EXPECT_LT(growth::ofEightTimes(
                      [&](unsigned long n) {
                          parseOn({{repeated, n}});
                      },
                      fault::sanitized ? 1000 : 10000),
                  30)
            << repeated;
}

TEST(OCHtmlHostileInput, KeepsNoMoreThanTheLargestText) {
    const std::string block(1024, 't');
    Pieces stream({{"<p x='", 1},
                   {block, 2048},
                   {"'>", 1},
                   {block, 2048},
                   {"<!--", 1},
                   {block, 2048},
                   {"-->", 1},
                   {block, 2048}});
    Counter counter(true);
    OCHtmlParser parser;
    parser.setParserEvents(counter);
    fault::resetLargestSize();
    EXPECT_EQ(0, fault::blocksLeftBy([&] { parser.parse(stream); }));
    EXPECT_LT(fault::heapRecord().largestSize, 2048u * 1024 + 256 * 1024);
    EXPECT_EQ(0u, counter.errors);
}

} // namespace
