#include "OCStringUtilities.h"

#include "OCMemory.h"
#include "OCMemoryStream.h"
#include "OCStream.h"
#include "support/FaultInjection.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

std::string text(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength());
}

OCAnsiString make(const std::string& s) {
    return OCAnsiString(s.data(), s.size());
}

std::string someBytes(unsigned long count) {
    std::string result;
    for (unsigned long i = 0; i < count; i++)
        result += static_cast<char>(static_cast<unsigned char>(i * 7 + i / 256));
    return result;
}

/// Gives out a text in pieces and records every call. Positions cannot be asked for.
class PieceStream : public OCStream {
public:
    explicit PieceStream(std::string givenContent) : content(std::move(givenContent)) {}

    bool read(void* buffer, unsigned long& count) override {
        requests.push_back(count);
        if (failAt == requests.size())
            throw OXStream_ReadError();
        if (place == content.size()) {
            if (endsWithZero) {
                count = 0;
                return true;
            }
            return false;
        }
        const unsigned long wanted = count < piece ? count : piece;
        const unsigned long n = wanted < content.size() - place ? wanted : content.size() - place;
        std::memcpy(buffer, content.data() + place, n);
        place += n;
        count = n;
        return true;
    }
    bool write(const void* buffer, unsigned long& count) override {
        if (refusesWrites)
            return false;
        writes.emplace_back(static_cast<const char*>(buffer), count);
        if (count > piece) {
            count = piece;
            writes.back().resize(piece);
        }
        return true;
    }
    unsigned long seek(long, OEStreamSeek) override { throw OXStream_OperationUnsupported("seek"); }
    void setSize(unsigned long) override { throw OXStream_OperationUnsupported("setSize"); }

    std::string content;
    unsigned long place = 0;
    unsigned long piece = ~0UL;
    unsigned long failAt = 0;
    bool endsWithZero = false;
    bool refusesWrites = false;
    std::vector<unsigned long> requests;
    std::vector<std::string> writes;
};

// Export

TEST(StringUtilities, ExportsATextWithOneWrite) {
    PieceStream stream("");
    const std::string content = someBytes(20000);
    OCStringUtilities::exportStream(make(content), stream);
    ASSERT_EQ(1UL, stream.writes.size());
    EXPECT_EQ(content, stream.writes[0]);
}

TEST(StringUtilities, ExportsZeroBytesToo) {
    PieceStream stream("");
    OCStringUtilities::exportStream(OCAnsiString("a\0b\0", 4), stream);
    ASSERT_EQ(1UL, stream.writes.size());
    EXPECT_EQ(std::string("a\0b\0", 4), stream.writes[0]);
}

TEST(StringUtilities, ExportingNothingDoesNotTouchTheStream) {
    PieceStream stream("");
    stream.refusesWrites = true;
    OCStringUtilities::exportStream("", stream);
    EXPECT_TRUE(stream.writes.empty());
}

TEST(StringUtilities, ExportGoesOnAfterAShortWrite) {
    PieceStream stream("");
    stream.piece = 3;
    OCStringUtilities::exportStream("abcdefgh", stream);
    EXPECT_EQ((std::vector<std::string>{"abc", "def", "gh"}), stream.writes);
}

TEST(StringUtilities, ExportReportsARefusedWrite) {
    PieceStream stream("");
    stream.refusesWrites = true;
    try {
        OCStringUtilities::exportStream("x", stream);
        FAIL();
    } catch (const OXStream_WriteError& failure) {
        EXPECT_EQ("Writing to the stream failed", text(failure.getMessage()));
    }
}

TEST(StringUtilities, ExportWritesAtTheStreamsPosition) {
    OCMemoryStream stream;
    OCStringUtilities::exportStream("abc", stream);
    OCStringUtilities::exportStream("def", stream);
    EXPECT_EQ(6UL, stream.getPosition());
    EXPECT_EQ("abcdef", text(stream.makeString()));
}

// Import

TEST(StringUtilities, ImportsWhatIsLeftOfTheStream) {
    OCMemoryStream stream("0123456789", 10);
    EXPECT_EQ("0123456789", text(OCStringUtilities::importStream(stream)));
    EXPECT_EQ("", text(OCStringUtilities::importStream(stream)));
    stream.setPosition(4);
    EXPECT_EQ("456789", text(OCStringUtilities::importStream(stream)));
    EXPECT_EQ(10UL, stream.getPosition());
}

TEST(StringUtilities, ImportsTextsOfEverySize) {
    for (unsigned long count : {0UL, 1UL, 63UL, 64UL, 127UL, 128UL, 8191UL, 8192UL, 8193UL, 16383UL,
                                16384UL, 16385UL, 20000UL, 24576UL, 100000UL, 1000000UL}) {
        const std::string content = someBytes(count);
        PieceStream stream(content);
        const OCAnsiString result = OCStringUtilities::importStream(stream);
        ASSERT_EQ(content, text(result)) << count;
        EXPECT_EQ(count / 64 * 64 + 64, result.getCapacity());
        EXPECT_EQ('\0', result.getString()[count]);
    }
}

TEST(StringUtilities, ImportAsksFor8192BytesAtATimeUntilAReadIsFalse) {
    PieceStream stream(someBytes(20000));
    OCStringUtilities::importStream(stream);
    EXPECT_EQ((std::vector<unsigned long>{8192, 8192, 8192, 8192}), stream.requests);
    PieceStream empty("");
    OCStringUtilities::importStream(empty);
    EXPECT_EQ((std::vector<unsigned long>{8192}), empty.requests);
}

TEST(StringUtilities, ImportGoesOnAfterAShortRead) {
    for (unsigned long piece : {1UL, 7UL, 100UL, 8191UL, 8192UL}) {
        const std::string content = someBytes(30000);
        PieceStream stream(content);
        stream.piece = piece;
        ASSERT_EQ(content, text(OCStringUtilities::importStream(stream))) << piece;
        EXPECT_EQ((content.size() + piece - 1) / piece + 1, stream.requests.size());
        for (unsigned long request : stream.requests)
            ASSERT_EQ(8192UL, request);
    }
}

TEST(StringUtilities, ImportTakesAReadOfNothingForTheEnd) {
    PieceStream stream("abc");
    stream.endsWithZero = true;
    EXPECT_EQ("abc", text(OCStringUtilities::importStream(stream)));
    EXPECT_EQ(2UL, stream.requests.size());
}

TEST(StringUtilities, ImportDoesNotBelieveAStreamThatCountsMoreThanItWasAskedFor) {
    class Boaster : public OCStream {
    public:
        bool read(void* buffer, unsigned long& count) override {
            std::memset(buffer, 'x', count);
            count = 1000000;
            return reads++ == 0;
        }
        bool write(const void*, unsigned long&) override { return false; }
        unsigned long seek(long, OEStreamSeek) override { return 0; }
        void setSize(unsigned long) override {}
        int reads = 0;
    } stream;
    EXPECT_EQ(std::string(8192, 'x'), text(OCStringUtilities::importStream(stream)));
}

TEST(StringUtilities, ImportLetsTheStreamsFailureThrough) {
    for (unsigned long read : {1UL, 2UL, 4UL}) {
        PieceStream stream(someBytes(20000));
        stream.failAt = read;
        stream.requests.reserve(10);
        const long left = fault::blocksLeftBy(
            [&] { EXPECT_THROW(OCStringUtilities::importStream(stream), OXStream_ReadError); });
        EXPECT_EQ(0, left) << read;
    }
}

TEST(StringUtilities, ImportReportsExhaustedMemoryAndLosesNothing) {
    const std::string content = someBytes(100000);
    OCMemoryStream stream(content.data(), content.size());
    unsigned long failures = 0;
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  failures = fault::failEachRequest([&] {
                      stream.setPosition(0);
                      OCStringUtilities::importStream(stream);
                  });
              }));
    EXPECT_LE(1UL, failures);
}

TEST(StringUtilities, ImportingALongStreamDoesNotCopyItOnceAChunk) {
    PieceStream stream(std::string(4UL << 20, 'x')); // 512 chunks
    stream.requests.reserve(1000);
    const unsigned long before = fault::heapRecord().requests;
    OCStringUtilities::importStream(stream);
    EXPECT_GE(before + 20, fault::heapRecord().requests);
}

TEST(StringUtilities, ImportsWhatWasExported) {
    const unsigned int seed = 4242;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 200; round++) {
        std::string content;
        for (unsigned long count = random() % (1U << random() % 16); count > 0; count--)
            content += static_cast<char>(random());
        OCMemoryStream stream;
        OCStringUtilities::exportStream(make(content), stream);
        stream.setPosition(0);
        ASSERT_EQ(content, text(OCStringUtilities::importStream(stream)));
    }
}

// Parentheses and quotes

TEST(StringUtilities, EnclosesATextThatContainsASpace) {
    EXPECT_EQ("(a b)", text(OCStringUtilities::addParentheses("a b", false)));
    EXPECT_EQ("\"My Files\"", text(OCStringUtilities::addQuotes("My Files", false)));
    EXPECT_EQ("( )", text(OCStringUtilities::addParentheses(" ", false)));
    EXPECT_EQ("\" a\"", text(OCStringUtilities::addQuotes(" a", false)));
    EXPECT_EQ("(a )", text(OCStringUtilities::addParentheses("a ", false)));
}

TEST(StringUtilities, LeavesOtherTextsAsTheyAre) {
    for (const char* word : {"ab", "", "a\tb", "a\nb", "(a)", "\"a\"",
                             "a\xa0"
                             "b"}) {
        EXPECT_EQ(word, text(OCStringUtilities::addParentheses(word, false)));
        EXPECT_EQ(word, text(OCStringUtilities::addQuotes(word, false)));
    }
}

TEST(StringUtilities, EnclosesAnyTextOnDemand) {
    EXPECT_EQ("()", text(OCStringUtilities::addParentheses("", true)));
    EXPECT_EQ("\"\"", text(OCStringUtilities::addQuotes("", true)));
    EXPECT_EQ("(ab)", text(OCStringUtilities::addParentheses("ab", true)));
    EXPECT_EQ("\"a b\"", text(OCStringUtilities::addQuotes("a b", true)));
    EXPECT_EQ("((a))", text(OCStringUtilities::addParentheses("(a)", true)));
    EXPECT_EQ("\"say \"yes\"\"", text(OCStringUtilities::addQuotes("say \"yes\"", true)));
    EXPECT_EQ(std::string("(a\0b)", 5),
              text(OCStringUtilities::addParentheses(OCAnsiString("a\0b", 3), true)));
}

TEST(StringUtilities, EnclosesTextsOfEveryLengthAndKeepsTheArgument) {
    for (unsigned long count : {0UL, 1UL, 61UL, 62UL, 125UL, 126UL, 127UL, 128UL, 1000UL}) {
        const std::string content(count, 'x');
        const OCAnsiString argument = make(content);
        const OCAnsiString enclosed = OCStringUtilities::addParentheses(argument, true);
        EXPECT_EQ("(" + content + ")", text(enclosed));
        EXPECT_EQ((count + 2) / 64 * 64 + 64, enclosed.getCapacity());
        EXPECT_EQ("\"" + content + "\"", text(OCStringUtilities::addQuotes(argument, true)));
        EXPECT_EQ(content, text(argument));
    }
}

TEST(StringUtilities, EnclosingReportsExhaustedMemory) {
    const OCAnsiString argument = make(std::string(1000, ' '));
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_EQ(1UL, fault::failEachRequest(
                                     [&] { OCStringUtilities::addParentheses(argument, false); }));
                  EXPECT_EQ(1UL, fault::failEachRequest(
                                     [&] { OCStringUtilities::addQuotes(argument, true); }));
              }));
}

TEST(StringUtilities, HasNoInstances) {
    EXPECT_FALSE(std::is_default_constructible_v<OCStringUtilities>);
}

} // namespace
