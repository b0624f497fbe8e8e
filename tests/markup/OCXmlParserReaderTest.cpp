#include "OCXmlParserReader.h"

#include "OCMemoryStream.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/XmlModel.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

using xmlmodel::Interruption;
using xmlmodel::Log;
using xmlmodel::LoggingStream;

/// A reader over the bytes of a text, with a log of what the stream is asked.
struct Input {
    explicit Input(const std::string& bytes, OEXmlEncoding encoding = XmlEncodingAnsi)
        : stream(bytes, &calls), source(stream, encoding), reader(source) {}

    /// Everything that is left.
    std::wstring rest() {
        OCWideString text;
        reader.findCharacter(0x7FFFFFFF, text);
        return std::wstring(text.getString(), text.getLength());
    }
    /// The calls on the stream since the last time.
    Log newCalls() {
        Log result;
        result.swap(calls);
        return result;
    }

    Log calls;
    LoggingStream stream;
    OCXmlParserSource source;
    OCXmlParserReader reader;
};

std::wstring text(const OCWideString& string) {
    return std::wstring(string.getString(), string.getLength());
}

std::string wideBytes(const std::wstring& characters) {
    return std::string(reinterpret_cast<const char*>(characters.data()), characters.size() * 4);
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

// Layout

TEST(OCXmlParserSource, HoldsAStreamAndAnEncoding) {
    EXPECT_EQ(24u, sizeof(OCXmlParserSource));
    EXPECT_EQ(2u, slots::slotCount<OCXmlParserSource>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlParserSource>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCXmlParserSource>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCXmlParserSource>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlParserSource>));
}

TEST(OCXmlParserReader, HoldsABufferAndASource) {
    EXPECT_EQ(8 + sizeof(OCWideString) + 8, sizeof(OCXmlParserReader));
    EXPECT_EQ(568u, sizeof(OCXmlParserReader));
    EXPECT_EQ(2u, slots::slotCount<OCXmlParserReader>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlParserReader>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCXmlParserReader>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCXmlParserReader>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlParserReader>));
}

TEST(OEXmlEncoding, HasItsValues) {
    EXPECT_EQ(0, XmlEncodingAnsi);
    EXPECT_EQ(1, XmlEncodingWide);
    EXPECT_EQ(4u, sizeof(OEXmlEncoding));
}

// Source

TEST(OCXmlParserSource, HasMoreWhileThePositionIsBeforeTheEnd) {
    OCMemoryStream stream("ab", 2);
    const OCXmlParserSource source(stream, XmlEncodingAnsi);
    EXPECT_TRUE(source.more());
    stream.setPosition(1);
    EXPECT_TRUE(source.more());
    stream.setPosition(2);
    EXPECT_FALSE(source.more());
}

TEST(OCXmlParserSource, AsksForThePositionBeforeTheSize) {
    Input input("abc");
    input.stream.position = 1;
    EXPECT_TRUE(input.source.more());
    EXPECT_EQ((Log{"seek 0 1", "seek 0 1", "seek 0 2", "seek 1 0"}), input.newCalls());
}

TEST(OCXmlParserSource, LetsFailuresOfTheQueriesThrough) {
    Input input("abc");
    input.stream.failingCall = 2;
    EXPECT_THROW(input.source.more(), Interruption);
    EXPECT_EQ(3u, input.newCalls().size());
}

TEST(OCXmlParserSource, ReadsWhatIsAskedFor) {
    Input input("abcdef");
    EXPECT_EQ(L"abcd", text(input.source.readString(4)));
    EXPECT_EQ(L"ef", text(input.source.readString(4)));
    EXPECT_EQ(L"", text(input.source.readString(4)));
    EXPECT_EQ((Log{"read 4", "read 4", "read 2", "read 4"}), input.newCalls());
}

TEST(OCXmlParserSource, ReadsNothingWhenNothingIsAskedFor) {
    Input input("abc");
    EXPECT_EQ(L"", text(input.source.readString(0)));
    EXPECT_EQ(Log{}, input.newCalls());
}

TEST(OCXmlParserSource, CollectsShortReads) {
    Input input(std::string(120, 'a') + std::string(80, 'b'));
    input.stream.portion = 50;
    EXPECT_EQ(std::wstring(120, L'a') + std::wstring(8, L'b'), text(input.source.readString(128)));
    EXPECT_EQ((Log{"read 128", "read 78", "read 28"}), input.newCalls());
}

TEST(OCXmlParserSource, ReadsLargeCountsInOneRequest) {
    Input input(std::string(1000, 'a'));
    EXPECT_EQ(std::wstring(1000, L'a'), text(input.source.readString(1000)));
    EXPECT_EQ(Log{"read 1000"}, input.newCalls());
}

TEST(OCXmlParserSource, ExtendsTheSignOfBytes) {
    Input input(std::string("\x00\x7F\x80\xE9\xFF", 5));
    const OCWideString characters = input.source.readString(5);
    ASSERT_EQ(5u, characters.getLength());
    EXPECT_EQ(0, characters[0]);
    EXPECT_EQ(127, characters[1]);
    EXPECT_EQ(-128, characters[2]);
    EXPECT_EQ(-23, characters[3]);
    EXPECT_EQ(-1, characters[4]);
}

TEST(OCXmlParserSource, TakesWideCharactersUnchanged) {
    const std::wstring characters = {0, 65, 233, 0x10FFFF, -23, 0x7FFFFFFF};
    Input input(wideBytes(characters), XmlEncodingWide);
    EXPECT_EQ(characters, text(input.source.readString(6)));
    EXPECT_EQ(Log{"read 24"}, input.newCalls());
}

TEST(OCXmlParserSource, HasNoCharactersInAnUnknownEncoding) {
    for (const int encoding : {-1, 2, 1000}) {
        Input input("abc", static_cast<OEXmlEncoding>(encoding));
        EXPECT_EQ(L"", text(input.source.readString(3)));
        EXPECT_EQ(Log{}, input.newCalls());
        EXPECT_TRUE(input.source.more());
    }
}

TEST(OCXmlParserSource, AppendsOneReadOfBytes) {
    Input input("abcdef");
    input.stream.portion = 4;
    OCWideString target(L"<");
    unsigned long remaining = 5;
    EXPECT_TRUE(input.source.readStringAnsi(target, remaining));
    EXPECT_EQ(L"<abcd", text(target));
    EXPECT_EQ(1u, remaining);
    EXPECT_TRUE(input.source.readStringAnsi(target, remaining));
    EXPECT_EQ(L"<abcde", text(target));
    EXPECT_EQ(0u, remaining);
    EXPECT_EQ((Log{"read 5", "read 1"}), input.newCalls());
}

TEST(OCXmlParserSource, AppendsOneReadOfWideCharacters) {
    Input input(wideBytes(L"abcdef"));
    input.stream.portion = 16;
    OCWideString target(L"<");
    unsigned long remaining = 5;
    EXPECT_TRUE(input.source.readStringWide(target, remaining));
    EXPECT_EQ(L"<abcd", text(target));
    EXPECT_EQ(1u, remaining);
    EXPECT_TRUE(input.source.readStringWide(target, remaining));
    EXPECT_EQ(L"<abcde", text(target));
    EXPECT_EQ(0u, remaining);
    EXPECT_EQ((Log{"read 20", "read 4"}), input.newCalls());
}

TEST(OCXmlParserSource, TouchesNothingAtTheEnd) {
    Input input("");
    OCWideString target(L"<");
    unsigned long remaining = 5;
    EXPECT_FALSE(input.source.readStringAnsi(target, remaining));
    EXPECT_FALSE(input.source.readStringWide(target, remaining));
    EXPECT_EQ(L"<", text(target));
    EXPECT_EQ(5u, remaining);
}

TEST(OCXmlParserSource, AStepForNoCharactersSucceeds) {
    Input input("abc");
    OCWideString target(L"<");
    unsigned long remaining = 0;
    EXPECT_TRUE(input.source.readStringAnsi(target, remaining));
    EXPECT_TRUE(input.source.readStringWide(target, remaining));
    EXPECT_EQ(L"<", text(target));
    EXPECT_EQ(0u, remaining);
}

TEST(OCXmlParserSource, RefusesACharacterThatIsCutOff) {
    for (unsigned long size = 1; size <= 12; ++size) {
        Input input(std::string(size, 'a'), XmlEncodingWide);
        OCWideString target(L"<");
        unsigned long remaining = 3;
        if (size % 4 == 0) {
            EXPECT_TRUE(input.source.readStringWide(target, remaining)) << size;
            EXPECT_EQ(1 + size / 4, target.getLength());
            continue;
        }
        EXPECT_EXCEPTION(input.source.readStringWide(target, remaining),
                         OXXmlParserSource_CharacterTruncated, "Truncated XML character");
        EXPECT_EQ(L"<", text(target));
        EXPECT_EQ(3u, remaining);
    }
}

TEST(OCXmlParserSource, LosesWhatAFailedCallHasRead) {
    Input input("abcdef");
    input.stream.portion = 2;
    input.stream.failingCall = 2;
    EXPECT_THROW(input.source.readString(6), Interruption);
    EXPECT_EQ(L"ef", text(input.source.readString(6)));
}

TEST(OCXmlParserSource, CountsAReadOfNothingAsTheEnd) {
    EmptyReads stream;
    for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
        OCXmlParserSource source(stream, encoding);
        EXPECT_EQ(L"", text(source.readString(10)));
        OCXmlParserReader reader(source);
        EXPECT_FALSE(reader.findString(L"a"));
    }
    EXPECT_EQ(4u, stream.reads);
}

TEST(OCXmlParserSource, TakesNoMoreThanItAskedFor) {
    for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
        TooMuch stream;
        OCXmlParserSource source(stream, encoding);
        EXPECT_EQ(10u, source.readString(10).getLength());
    }
}

TEST(OCXmlParserSource, RefusesCountsThatNoMemoryHolds) {
    for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide})
        for (const unsigned long count : {~0UL, ~0UL / 4, ~0UL / 4 + 2, 1UL << 60}) {
            Input input("abc", encoding);
            EXPECT_EXCEPTION(input.source.readString(count), OXMemory_AllocationError,
                             "Memory allocation failure");
            EXPECT_EQ(Log{}, input.newCalls());
        }
}

// Looking ahead

TEST(OCXmlParserReader, ReadsNothingBeforeItIsAsked) {
    Input input("abc");
    EXPECT_EQ(Log{}, input.newCalls());
}

TEST(OCXmlParserReader, HasMoreWithoutTheStreamWhileItHoldsCharacters) {
    Input input("a");
    EXPECT_TRUE(input.reader.more());
    EXPECT_EQ((Log{"seek 0 1", "seek 0 1", "seek 0 2", "seek 0 0"}), input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(1));
    input.newCalls();
    EXPECT_TRUE(input.reader.more());
    EXPECT_EQ(Log{}, input.newCalls());
    input.reader.skipCharacter('a');
    EXPECT_FALSE(input.reader.more());
    EXPECT_EQ((Log{"seek 0 1", "seek 0 1", "seek 0 2", "seek 1 0"}), input.newCalls());
}

TEST(OCXmlParserReader, GrowsByABatchOrByWhatIsAskedFor) {
    Input input(std::string(2000, 'a'));
    EXPECT_TRUE(input.reader.growBuffer(0));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(1));
    EXPECT_EQ(Log{"read 128"}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(128));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(129)); // the request is for that many more
    EXPECT_EQ(Log{"read 129"}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(257));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(258));
    EXPECT_EQ(Log{"read 258"}, input.newCalls());
    EXPECT_EQ(std::wstring(2000, L'a'), input.rest());
}

TEST(OCXmlParserReader, CannotGrowBeyondTheEnd) {
    Input input(std::string(130, 'a'));
    EXPECT_TRUE(input.reader.growBuffer(128));
    EXPECT_FALSE(input.reader.growBuffer(131));
    EXPECT_EQ((Log{"read 128", "read 131", "read 129"}), input.newCalls());
    EXPECT_TRUE(input.reader.growBuffer(130));
    EXPECT_EQ(std::wstring(130, L'a'), input.rest());
}

TEST(OCXmlParserReader, FindsNothingInAnEmptyStream) {
    Input input("");
    wchar_t c = L'?';
    OCWideString skipped(L"<");
    EXPECT_FALSE(input.reader.more());
    EXPECT_FALSE(input.reader.growBuffer(1));
    EXPECT_FALSE(input.reader.peekCharacter('a'));
    EXPECT_FALSE(input.reader.previewCharacter(c));
    EXPECT_EQ(L'?', c);
    EXPECT_FALSE(input.reader.peekString(L"a"));
    EXPECT_FALSE(input.reader.findCharacter('a'));
    EXPECT_FALSE(input.reader.findCharacter('a', skipped));
    EXPECT_FALSE(input.reader.findString(L"ab"));
    EXPECT_FALSE(input.reader.findString(L"ab", skipped));
    EXPECT_EQ(L"<", text(skipped));
    input.reader.skipCharacter('a');
    input.reader.skipString(L"ab");
    EXPECT_FALSE(input.reader.more());
}

TEST(OCXmlParserReader, TestsTheCurrentCharacterWithoutConsumingIt) {
    Input input("ab");
    EXPECT_TRUE(input.reader.peekCharacter('a'));
    EXPECT_FALSE(input.reader.peekCharacter('b'));
    wchar_t c = 0;
    EXPECT_TRUE(input.reader.previewCharacter(c));
    EXPECT_EQ(L'a', c);
    EXPECT_EQ(L"ab", input.rest());
}

TEST(OCXmlParserReader, DecodesBytesAsSignedCharacters) {
    Input input("\xE9");
    wchar_t c = 0;
    EXPECT_TRUE(input.reader.previewCharacter(c));
    EXPECT_EQ(-23, c);
    EXPECT_EQ(0xFFFFFFE9u, static_cast<unsigned int>(c));
}

TEST(OCXmlParserReader, SkipsTheCurrentCharacterWhateverItIs) {
    Input input("yz");
    input.reader.skipCharacter('x');
    EXPECT_EQ(L"z", input.rest());
}

TEST(OCXmlParserReader, TestsForATextWithoutConsumingIt) {
    Input input("<!--x");
    EXPECT_TRUE(input.reader.peekString(L"<"));
    EXPECT_TRUE(input.reader.peekString(L"<!--"));
    EXPECT_TRUE(input.reader.peekString(L"<!--x"));
    EXPECT_FALSE(input.reader.peekString(L"<!--X"));
    EXPECT_FALSE(input.reader.peekString(L"<!--xy"));
    EXPECT_FALSE(input.reader.peekString(L"!"));
    EXPECT_EQ(L"<!--x", input.rest());
}

TEST(OCXmlParserReader, NeverFindsTheEmptyText) {
    Input input("abc");
    EXPECT_FALSE(input.reader.peekString(L""));
    EXPECT_FALSE(input.reader.findString(L""));
    OCWideString skipped;
    EXPECT_FALSE(input.reader.findString(L"", skipped));
    EXPECT_EQ(L"", text(skipped));
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_EQ(L"abc", input.rest());
}

TEST(OCXmlParserReader, SkippingTheEmptyTextDoesNothing) {
    Input input("abc");
    input.reader.skipString(L"");
    EXPECT_EQ(Log{}, input.newCalls());
    EXPECT_EQ(L"abc", input.rest());
}

TEST(OCXmlParserReader, SkipsAsManyCharactersAsATextHas) {
    Input input("abcdef");
    input.reader.skipString(L"xyz");
    EXPECT_TRUE(input.reader.peekCharacter('d'));
    input.reader.skipString(L"more than there is");
    EXPECT_FALSE(input.reader.more());
}

TEST(OCXmlParserReader, LooksAheadForTextsLongerThanABatch) {
    const std::wstring longText(300, L'a');
    Input input(std::string(299, 'a') + "b");
    EXPECT_TRUE(input.reader.growBuffer(1));
    EXPECT_FALSE(input.reader.peekString(longText.c_str()));
    EXPECT_EQ((Log{"read 128", "read 300", "read 128"}), input.newCalls());
    input.reader.skipString(longText.c_str());
    EXPECT_FALSE(input.reader.more());
}

// Searching

TEST(OCXmlParserReader, AdvancesToACharacter) {
    Input input("abcabc");
    OCWideString skipped(L"<");
    EXPECT_TRUE(input.reader.findCharacter('c', skipped));
    EXPECT_EQ(L"<ab", text(skipped));
    EXPECT_TRUE(input.reader.findCharacter('c', skipped)); // there already
    EXPECT_EQ(L"<ab", text(skipped));
    input.reader.skipCharacter('c');
    EXPECT_TRUE(input.reader.findCharacter('b'));
    EXPECT_EQ(L"bc", input.rest());
}

TEST(OCXmlParserReader, ASearchThatFailsConsumesEverything) {
    Input input(std::string(200, 'a'));
    OCWideString skipped(L"<");
    EXPECT_FALSE(input.reader.findCharacter('c', skipped));
    EXPECT_EQ(L"<" + std::wstring(200, L'a'), text(skipped));
    EXPECT_EQ((Log{"read 128", "read 128", "read 56", "read 128"}), input.newCalls());
    EXPECT_FALSE(input.reader.more());

    Input another("ab-c-->");
    OCWideString all;
    EXPECT_FALSE(another.reader.findString(L"--->", all));
    EXPECT_EQ(L"ab-c-->", text(all));
    EXPECT_FALSE(another.reader.more());
}

TEST(OCXmlParserReader, AdvancesToAText) {
    for (const std::string before : {"abc", "a-b", "-- ", "---", "- -"}) {
        Input input(before + "-->x-->");
        OCWideString skipped;
        EXPECT_TRUE(input.reader.findString(L"-->", skipped));
        EXPECT_EQ(before, std::string(OCAnsiString(skipped).getString()));
        EXPECT_EQ(L"-->x-->", input.rest());
    }
}

TEST(OCXmlParserReader, FindsATextThatBatchesCutApart) {
    for (unsigned long before = 120; before < 135; ++before)
        for (const std::wstring pattern : {L"-->", L"]]>", L"a-long-pattern", L"ab"}) {
            const std::string content(pattern.begin(), pattern.end());
            Input input(std::string(before, 'x') + content + "rest");
            OCWideString skipped(L"<");
            EXPECT_TRUE(input.reader.findString(pattern.c_str(), skipped)) << before;
            EXPECT_EQ(L"<" + std::wstring(before, L'x'), text(skipped));
            EXPECT_EQ(pattern + L"rest", input.rest());
        }
}

TEST(OCXmlParserReader, AsksForMoreOnlyWhereATextCouldBegin) {
    Input input(std::string(127, 'x') + "-" + std::string(127, 'y') + "a");
    EXPECT_FALSE(input.reader.findString(L"-->"));
    // The batch, the two characters behind the dash, the rest and the end.
    EXPECT_EQ((Log{"read 128", "read 128", "read 128"}), input.newCalls());
}

TEST(OCXmlParserReader, AsksForTheRestOfALongTextAtEachPlaceWhereItCouldBegin) {
    const std::wstring pattern = L"a" + std::wstring(199, L'b');
    Input input("xxa" + std::string(100, 'b') + "a" + std::string(199, 'b') + "z");
    OCWideString skipped;
    EXPECT_TRUE(input.reader.findString(pattern.c_str(), skipped));
    EXPECT_EQ(L"xxa" + std::wstring(100, L'b'), text(skipped));
    EXPECT_EQ((Log{"read 128", "read 200", "read 24"}), input.newCalls());
    EXPECT_EQ(pattern + L"z", input.rest());
}

TEST(OCXmlParserReader, FindsLongTextsAsThePlainSearchDoes) {
    // Patterns and contents of two characters, so that nearly everything matches partly.
    unsigned state = 12345;
    const auto next = [&state] { return state = state * 1103515245 + 12345, state >> 16 & 1; };
    for (int round = 0; round < 3000; ++round) {
        std::wstring pattern;
        std::string content;
        for (int i = round % 40; i >= 0; --i)
            pattern += next() ? L'a' : L'b';
        for (int i = round % 700; i >= 0; --i)
            content += next() ? 'a' : 'b';
        if (round % 2 == 0)
            content.insert(content.size() / 2, std::string(pattern.begin(), pattern.end()));

        Input input(content);
        OCWideString skipped;
        const bool found = input.reader.findString(pattern.c_str(), skipped);

        Log plainCalls;
        LoggingStream plainStream(content, &plainCalls);
        xmlmodel::Reader plain(plainStream, XmlEncodingAnsi);
        std::wstring plainSkipped;
        ASSERT_EQ(plain.findString(pattern, &plainSkipped), found) << round;
        ASSERT_EQ(plainSkipped, text(skipped)) << round;
        ASSERT_EQ(plainCalls, input.newCalls()) << round;
    }
}

TEST(OCXmlParserReader, SearchesInLinearTime) {
    // Each place matches all of the pattern but its last character.
    const unsigned long size = 1000000;
    Input input(std::string(size, 'a'));
    ASSERT_TRUE(input.reader.growBuffer(size));
    const std::wstring pattern = std::wstring(50000, L'a') + L"b";
    OCWideString skipped;
    EXPECT_FALSE(input.reader.findString(pattern.c_str(), skipped));
    EXPECT_EQ(size, skipped.getLength());

    // Each character begins the pattern and does not continue it.
    Input dashes(std::string(size, '-'));
    ASSERT_TRUE(dashes.reader.growBuffer(size));
    EXPECT_FALSE(dashes.reader.findString(L"-->"));
    EXPECT_FALSE(dashes.reader.more());
}

TEST(OCXmlParserReader, TakesThePatternAsItWasWhenItCollectsIntoIt) {
    // Both are so long that the string moves while it collects.
    const std::string content(500, 'p');
    const std::string passed(20000, 'x');
    Input input(passed + content + "z");
    OCWideString pattern(std::wstring(500, L'p').c_str());
    EXPECT_TRUE(input.reader.findString(pattern, pattern));
    EXPECT_EQ(std::wstring(500, L'p') + std::wstring(20000, L'x'), text(pattern));
    EXPECT_EQ(std::wstring(500, L'p') + L"z", input.rest());
}

TEST(OCXmlParserReader, TheInternalSearchesTakeNoString) {
    Input input("abcd");
    EXPECT_TRUE(input.reader.findCharacterInternal('b', nullptr));
    EXPECT_TRUE(input.reader.findStringInternal(L"cd", nullptr));
    OCWideString skipped;
    EXPECT_TRUE(input.reader.findStringInternal(L"d", &skipped));
    EXPECT_EQ(L"c", text(skipped));
    EXPECT_FALSE(input.reader.findCharacterInternal('x', &skipped));
    EXPECT_EQ(L"cd", text(skipped));
}

// Failures

TEST(OCXmlParserReader, ReportsACharacterThatIsCutOff) {
    Input seven(std::string(7, 'a'), XmlEncodingWide);
    EXPECT_EXCEPTION(seven.reader.growBuffer(1), OXXmlParserSource_CharacterTruncated,
                     "Truncated XML character");
    EXPECT_EQ(Log{"read 512"}, seven.newCalls());

    Input eight(std::string(8, 'a'), XmlEncodingWide);
    EXPECT_FALSE(eight.reader.growBuffer(3));
    EXPECT_EQ((Log{"read 512", "read 504"}), eight.newCalls());
    EXPECT_EQ(std::wstring(2, 0x61616161), eight.rest());
}

TEST(OCXmlParserReader, KeepsWhatItHoldsWhenTheStreamFails) {
    Input input(std::string(100, 'a') + std::string(100, 'b'));
    EXPECT_TRUE(input.reader.growBuffer(1));
    input.stream.failingCall = 1;
    EXPECT_THROW(input.reader.growBuffer(150), Interruption);
    EXPECT_TRUE(input.reader.growBuffer(128));
    EXPECT_EQ(std::wstring(100, L'a') + std::wstring(100, L'b'), input.rest());
}

TEST(OCXmlParserReader, ConsumedCharactersStayConsumedWhenTheStreamFails) {
    Input input(std::string(200, 'a') + "c");
    input.stream.failingCall = 1;
    OCWideString skipped(L"<");
    EXPECT_THROW(input.reader.findCharacter('c', skipped), Interruption);
    EXPECT_EQ(L"<" + std::wstring(128, L'a'), text(skipped));
    EXPECT_TRUE(input.reader.findCharacter('c', skipped));
    EXPECT_EQ(L"<" + std::wstring(200, L'a'), text(skipped));
}

TEST(OCXmlParserReader, SurvivesRefusedMemory) {
    const std::string content = std::string(300, 'a') + "-->" + std::string(400, 'b');
    OCMemoryStream stream(content.data(), content.size());
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  const unsigned long failures = fault::failEachRequest([&] {
                      stream.setPosition(0);
                      OCXmlParserSource source(stream, XmlEncodingAnsi);
                      OCXmlParserReader reader(source);
                      OCWideString skipped;
                      reader.growBuffer(200);
                      reader.findString(OCWideString(L"-->"), skipped);
                      reader.peekString(OCWideString(L"-->bbbbbbbbbbbbbbbbbbbbbbbb"));
                      reader.findCharacter('x', skipped);
                  });
                  EXPECT_LT(5u, failures);
              }));
}

TEST(OCXmlParserReader, HoldsTheSameCharactersAfterRefusedMemory) {
    const std::string content = std::string(128, 'a') + std::string(1000, 'b');
    OCMemoryStream stream(content.data(), content.size());
    OCXmlParserSource source(stream, XmlEncodingAnsi);
    OCXmlParserReader reader(source);
    EXPECT_TRUE(reader.growBuffer(1));
    fault::failEachRequest([&] { reader.growBuffer(500); },
                           [&] {
                               OCWideString expected;
                               expected.setLength(128).fill(L'a');
                               EXPECT_TRUE(reader.peekString(expected));
                           });
}

TEST(OXXmlParserSource, ItsExceptionBelongsToTheParsersFamily) {
    const OXXmlParserSource_CharacterTruncated failure;
    EXPECT_STREQ("OXXmlParserSource_CharacterTruncated", failure.getClass().getString());
    EXPECT_STREQ("Truncated XML character", failure.getMessage().getString());
    EXPECT_EQ(0u, failure.getDetails().getCount());
    EXPECT_TRUE((std::is_base_of_v<OXXmlParserSource, OXXmlParserSource_CharacterTruncated>));
    EXPECT_TRUE((std::is_base_of_v<OXXmlParser, OXXmlParserSource>));
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXXmlParser>));
    EXPECT_FALSE(std::is_default_constructible_v<OXXmlParser>);
    EXPECT_FALSE(std::is_default_constructible_v<OXXmlParserSource>);
    EXPECT_EQ(sizeof(OXAutoException), sizeof(OXXmlParserSource_CharacterTruncated));
}

} // namespace
