#include "OCHtmlParser.h"

#include "OCMemoryStream.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/HtmlModel.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using htmlmodel::Interruption;
using htmlmodel::Log;
using htmlmodel::LoggingStream;

/// A reader over the bytes of a text, with a log of what the stream is asked.
struct Input {
    explicit Input(const std::string& bytes) : stream(bytes, &calls), reader(stream) {}

    std::string rest() {
        OCAnsiString text;
        reader.findCharacter('\1', text);
        return std::string(text.getString(), text.getLength());
    }
    Log newCalls() {
        Log result;
        result.swap(calls);
        return result;
    }

    Log calls;
    LoggingStream stream;
    OCHtmlParserReader reader;
};

std::string text(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

/// A stream that always delivers, but never a byte.
class EmptyReads : public OCNullStream {
public:
    bool read(void*, unsigned long& count) override {
        ++reads;
        count = 0;
        return true;
    }
    unsigned reads = 0;
};

/// A stream that claims to have delivered more than it was asked for.
class TooMuch : public OCNullStream {
public:
    bool read(void* buffer, unsigned long& count) override {
        if (++reads > 1)
            return false;
        std::memset(buffer, 'x', count);
        count *= 2;
        return true;
    }
    unsigned reads = 0;
};

TEST(OCHtmlParserReader, HasMoreWhileBytesAreBufferedOrTheStreamHasSome) {
    Input input("ab");
    EXPECT_TRUE(input.reader.more());
    EXPECT_EQ((Log{"seek 0 1", "seek 0 1", "seek 0 2", "seek 0 0"}), input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(1));
    input.newCalls();
    EXPECT_TRUE(input.reader.more());
    EXPECT_EQ(Log{}, input.newCalls());
    input.reader.skipCharacter('a');
    input.reader.skipCharacter('b');
    EXPECT_FALSE(input.reader.more());
    Input empty("");
    EXPECT_FALSE(empty.reader.more());
}

TEST(OCHtmlParserReader, GrowsByReadsOf128BytesUntilThereAreEnough) {
    Input input(std::string(1000, 'a'));
    EXPECT_TRUE(input.reader.growBuffer(0));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(1));
    EXPECT_EQ(Log{"read 128"}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(128));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(300));
    EXPECT_EQ((Log{"read 128", "read 128"}), input.newCalls());
    EXPECT_FALSE(input.reader.growBuffer(1001));
    EXPECT_EQ(Log(6, "read 128"), input.newCalls());
    EXPECT_EQ(std::string(1000, 'a'), input.rest());
}

TEST(OCHtmlParserReader, ReadsOnceMoreAfterAShortReadOnlyIfItMust) {
    Input input("abcdef");
    input.stream.portion = 2;
    EXPECT_TRUE(input.reader.growBuffer(1));
    EXPECT_EQ(Log{"read 128"}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(5));
    EXPECT_EQ((Log{"read 128", "read 128"}), input.newCalls());
}

TEST(OCHtmlParserReader, TakesAReadOfNothingForTheEnd) {
    EmptyReads stream;
    OCHtmlParserReader reader(stream);
    EXPECT_FALSE(reader.growBuffer(1));
    EXPECT_EQ(1u, stream.reads);
    EXPECT_FALSE(reader.findCharacter('a'));
    OCHtmlParser parser;
    OCHtmlParserEvents events;
    parser.setParserEvents(events);
    parser.parse(stream);
    EXPECT_EQ(7u, stream.reads);
}

TEST(OCHtmlParserReader, TakesNoMoreThanItAskedFor) {
    TooMuch stream;
    OCHtmlParserReader reader(stream);
    OCAnsiString all;
    EXPECT_FALSE(reader.findCharacter('y', all));
    EXPECT_EQ(std::string(128, 'x'), text(all));

    struct Texts : OCHtmlParserEvents {
        void characterData(const OCAnsiString& given) override { length += given.getLength(); }
        unsigned long length = 0;
    } events;
    TooMuch another;
    OCHtmlParser parser;
    parser.setParserEvents(events);
    parser.parse(another);
    EXPECT_EQ(128u, events.length);
}

TEST(OCHtmlParserReader, PeeksAtACharacterInEitherCase) {
    Input input("aZ@\xC0");
    EXPECT_TRUE(input.reader.peekCharacter('a'));
    EXPECT_TRUE(input.reader.peekCharacter('A'));
    EXPECT_FALSE(input.reader.peekCharacter('b'));
    input.reader.skipCharacter('a');
    EXPECT_TRUE(input.reader.peekCharacter('z'));
    input.reader.skipCharacter('a');
    EXPECT_TRUE(input.reader.peekCharacter('@'));
    EXPECT_FALSE(input.reader.peekCharacter('`'));
    input.reader.skipCharacter('a');
    EXPECT_FALSE(input.reader.peekCharacter('\xE0'));
    EXPECT_TRUE(input.reader.peekCharacter('\xC0'));
    input.reader.skipCharacter('a');
    EXPECT_FALSE(input.reader.peekCharacter('a'));
    EXPECT_FALSE(input.reader.peekCharacter('\0'));
}

TEST(OCHtmlParserReader, PreviewsACharacter) {
    Input input("A");
    char c = '?';
    EXPECT_TRUE(input.reader.previewCharacter(c));
    EXPECT_EQ('A', c);
    input.reader.skipCharacter('x');
    c = '?';
    EXPECT_FALSE(input.reader.previewCharacter(c));
    EXPECT_EQ('?', c);
    input.reader.skipCharacter('x');
    EXPECT_EQ("", input.rest());
}

TEST(OCHtmlParserReader, PeeksAtAStringInAnyMixtureOfCase) {
    Input input("<!DocType html");
    EXPECT_TRUE(input.reader.peekString("<!doctype"));
    EXPECT_TRUE(input.reader.peekString("<!DOCTYPE HTML"));
    EXPECT_FALSE(input.reader.peekString("<!doctipe"));
    EXPECT_FALSE(input.reader.peekString("<!doctype html>"));
    EXPECT_FALSE(input.reader.peekString(""));
    EXPECT_EQ("<!DocType html", input.rest());
}

TEST(OCHtmlParserReader, SkipsAsManyBytesAsAStringHas) {
    Input input("abcdef");
    input.reader.skipString("xx");
    input.newCalls();
    input.reader.skipString("");
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_TRUE(input.reader.peekString("cdef"));
    input.reader.skipString("xxxxx");
    EXPECT_EQ("", input.rest());
}

TEST(OCHtmlParserReader, FindsACharacterOfItsCase) {
    Input input("abAb");
    OCAnsiString skipped("kept ");
    EXPECT_TRUE(input.reader.findCharacter('A', skipped));
    EXPECT_EQ("kept ab", text(skipped));
    EXPECT_TRUE(input.reader.findCharacter('A'));
    EXPECT_TRUE(input.reader.peekString("ab"));
    EXPECT_FALSE(input.reader.findCharacter('B', skipped));
    EXPECT_EQ("kept abAb", text(skipped));
    EXPECT_EQ("", input.rest());
}

TEST(OCHtmlParserReader, FindsAStringWhoseFirstCharacterHasItsCase) {
    Input input("x<B y<b z<BODY>");
    OCAnsiString skipped;
    EXPECT_TRUE(input.reader.findString("<body", skipped));
    EXPECT_EQ("x<B y<b z", text(skipped));
    Input letters("Body bODY");
    EXPECT_TRUE(letters.reader.findString("body"));
    EXPECT_EQ("bODY", letters.rest());
    Input long_("ABCDEFGHIJKLM aBCDEFGHIJKLM");
    EXPECT_TRUE(long_.reader.findString("abcdefghijklm"));
    EXPECT_EQ("aBCDEFGHIJKLM", long_.rest());
    Input none("Body");
    EXPECT_FALSE(none.reader.findString("body", skipped.clear()));
    EXPECT_EQ("Body", text(skipped));
}

TEST(OCHtmlParserReader, FindsNoEmptyString) {
    Input input("abc");
    OCAnsiString skipped;
    EXPECT_FALSE(input.reader.findString("", skipped));
    EXPECT_FALSE(input.reader.findString(""));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_EQ("", text(skipped));
}

TEST(OCHtmlParserReader, CollectsWhatBeginsLikeTheString) {
    Input input("a-b-->c");
    OCAnsiString skipped;
    EXPECT_TRUE(input.reader.findString("-->", skipped));
    EXPECT_EQ("a-b", text(skipped));
    EXPECT_EQ("-->c", input.rest());
    Input lines(std::string(500, '-') + ">");
    EXPECT_TRUE(lines.reader.findString("-->", skipped.clear()));
    EXPECT_EQ(std::string(498, '-'), text(skipped));
}

TEST(OCHtmlParserReader, FindsAStringThatIsAlsoTheTarget) {
    Input input("ab12cd12");
    OCAnsiString both("12");
    EXPECT_TRUE(input.reader.findString(both, both));
    EXPECT_EQ("12ab", text(both));
    EXPECT_EQ("12cd12", input.rest());

    // The target moves while it grows.
    const std::string wanted = "1" + std::string(199, '2');
    const std::string before(40000, '1');
    for (const unsigned long portion : {~0UL, 1UL}) {
        Input large(before + wanted + "cd");
        large.stream.portion = portion;
        OCAnsiString target(wanted.c_str());
        EXPECT_TRUE(large.reader.findString(target, target));
        EXPECT_EQ(wanted + before, text(target));
        EXPECT_EQ(wanted + "cd", large.rest());
    }
}

TEST(OCHtmlParserReader, FindsLongStringsThatRepeatThemselves) {
    const std::string wanted = std::string(40, 'a') + "b" + std::string(40, 'a') + "c";
    const std::string before = std::string(40, 'a') + "b" + std::string(90, 'a') + "b";
    for (const unsigned long portion : {~0UL, 1UL, 50UL}) {
        Input input(before + wanted + "d");
        input.stream.portion = portion;
        OCAnsiString skipped;
        EXPECT_TRUE(input.reader.findString(wanted.c_str(), skipped));
        EXPECT_EQ(before, text(skipped));
        EXPECT_EQ(wanted + "d", input.rest());
    }
}

TEST(OCHtmlParserReader, KeepsWhatItHadWhenTheStreamFails) {
    Input input(std::string(100, 'a') + std::string(100, 'b'));
    input.stream.portion = 100;
    input.stream.failingCall = 2;
    EXPECT_THROW(input.reader.growBuffer(300), Interruption);
    OCAnsiString skipped;
    EXPECT_TRUE(input.reader.findCharacter('b', skipped));
    EXPECT_EQ(std::string(100, 'a'), text(skipped));
    EXPECT_EQ(std::string(100, 'b'), input.rest());
}

TEST(OCHtmlParserReader, ConsumesWhatASearchHasPassedWhenTheStreamFails) {
    Input input(std::string(300, 'a'));
    input.stream.failingCall = 2;
    OCAnsiString skipped;
    EXPECT_THROW(input.reader.findCharacter('b', skipped), Interruption);
    EXPECT_EQ(std::string(256, 'a'), text(skipped));
    EXPECT_EQ(std::string(44, 'a'), input.rest());
}

TEST(OCHtmlParserReader, LosesNothingButMemoryWhicheverAllocationFails) {
    const std::string content = std::string(3000, 'a') + "<" + std::string(3000, 'b');
    OCMemoryStream stream(content.data(), content.size());
    const std::string wanted = "<" + std::string(2000, 'B');
    const auto search = [&] {
        stream.setPosition(0);
        OCHtmlParserReader reader(stream);
        OCAnsiString skipped;
        const OCAnsiString text(wanted.data(), wanted.size());
        if (reader.findString(text, skipped) && skipped.getLength() != 3000)
            ADD_FAILURE();
        reader.growBuffer(5000);
        reader.skipString(text);
    };
    EXPECT_EQ(0, fault::blocksLeftBy([&] { EXPECT_LT(3u, fault::failEachRequest(search)); }));
}

// Crafted input

/// A stream that repeats one byte.
class Repeated : public OCNullStream {
public:
    Repeated(char repeated, unsigned long count) : c(repeated), left(count) {}
    bool read(void* buffer, unsigned long& count) override {
        if (left == 0)
            return false;
        count = count < left ? count : left;
        std::memset(buffer, c, count);
        left -= count;
        return true;
    }

private:
    char c;
    unsigned long left;
};

TEST(OCHtmlParserReader, SearchesInLinearTimeForStringsOfEveryLength) {
    // The candidates are as many as can be, and each fails as late as can be.
    for (const unsigned long divisor : {8UL, 2UL})
        EXPECT_LT(growth::ofEightTimes(
                      [&](unsigned long n) {
                          Repeated stream('a', n);
                          OCHtmlParserReader reader(stream);
                          OCAnsiString wanted;
                          wanted.setLength(n / divisor).fill('a')[n / divisor - 1] = 'b';
                          OCAnsiString skipped;
                          EXPECT_FALSE(reader.findString(wanted, skipped));
                          EXPECT_EQ(n, skipped.getLength());
                      },
                      fault::sanitized ? 20000 : 250000),
                  30);
}

TEST(OCHtmlParserReader, SearchesInLinearTimeWhenOnlyTheFirstCharacterDiffers) {
    EXPECT_LT(growth::ofEightTimes(
                  [&](unsigned long n) {
                      Repeated stream('A', n);
                      OCHtmlParserReader reader(stream);
                      EXPECT_TRUE(reader.growBuffer(n));
                      OCAnsiString wanted;
                      wanted.setLength(n / 2).fill('A')[0] = 'a';
                      EXPECT_FALSE(reader.findString(wanted));
                      EXPECT_FALSE(reader.growBuffer(1));
                  },
                  fault::sanitized ? 20000 : 250000),
              30);
}

} // namespace
