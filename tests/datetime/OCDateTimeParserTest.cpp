#include "OCDateTimeParser.h"

#include "support/DateTimeModel.h"
#include "support/DateTimes.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/TimeFaults.h"

#include <chrono>
#include <gtest/gtest.h>
#include <random>
#include <type_traits>
#include <vector>

namespace {

constexpr auto make = makeDateTime;
constexpr char untouched[] = "0009-09-09 09:09:09";

OCAnsiString binary(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

// The value that a parser makes of `text` from 0009-09-09 09:09:09.
template<class Parser>
std::string parsed(const std::string& text) {
    OCDateTime value = make(9, 9, 9, 9, 9, 9);
    Parser(value, binary(text)).parse();
    return show(value);
}

// The value that the refused `text` leaves behind, from 0009-09-09 09:09:09.
template<class Parser>
std::string refused(const std::string& text) {
    OCDateTime value = make(9, 9, 9, 9, 9, 9);
    Parser parser(value, binary(text));
    const std::string source = DateTimeModel::trimmed(text);
    try {
        parser.parse();
        return "accepted: " + show(value);
    } catch (const OXDateTimeParser_SyntaxError& failure) {
        EXPECT_EQ(typeid(failure), typeid(OXDateTimeParser_SyntaxError));
        EXPECT_EQ(standard(failure.getClass()), "OXDateTimeParser_SyntaxError");
        EXPECT_EQ(standard(failure.getMessage()),
                  "Syntax error parsing date/time string (" + source + ")");
        EXPECT_EQ(failure.getDetails().getCount(), 1U);
        EXPECT_EQ(standard(failure.getDetails().getString(0)), source);
    }
    EXPECT_EQ(standard(parser.getSource()), source);
    return show(value);
}

// The four kinds of scanners: what is read, and what is left of the text.
template<class Parser>
std::string scanned(OCAnsiString (Parser::*scanner)(OCAnsiString&) const, const char* text) {
    OCDateTime value;
    const Parser parser(value, "source");
    OCAnsiString rest(text);
    const OCAnsiString token = (parser.*scanner)(rest);
    return "[" + standard(token) + "] [" + standard(rest) + "]";
}
template<class Parser, class Number>
std::string scanned(Number (Parser::*scanner)(OCAnsiString&) const, const char* text) {
    OCDateTime value;
    const Parser parser(value, "source");
    OCAnsiString rest(text);
    const Number number = (parser.*scanner)(rest);
    return std::to_string(number) + " [" + standard(rest) + "]";
}
template<class Parser>
std::string scannedWidth(const char* text, unsigned long width) {
    OCDateTime value;
    const Parser parser(value, "source");
    OCAnsiString rest(text);
    const OCAnsiString token = parser.separateInteger(rest, width);
    return "[" + standard(token) + "] [" + standard(rest) + "]";
}

// A refused scan throws the source and leaves the text.
#define EXPECT_SCAN_REFUSED(Parser, call, text)                                                    \
    do {                                                                                           \
        OCDateTime value;                                                                          \
        const Parser parser(value, " source ");                                                    \
        OCAnsiString rest(text);                                                                   \
        EXPECT_EXCEPTION(parser.call, OXDateTimeParser_SyntaxError,                                \
                         "Syntax error parsing date/time string (source)");                        \
        EXPECT_EQ(standard(rest), text);                                                           \
    } while (false)

class OCDateTimeParserTest : public testing::Test {
protected:
    TimeZoneScope zone{zones::utc};
    TimeCallsScope calls;
};

// What all have in common

TEST_F(OCDateTimeParserTest, HoldsTheTextAndAReferenceToTheTarget) {
    EXPECT_EQ(sizeof(OCDateTimeParser), 8U + sizeof(OCAnsiString) + 8U);
    EXPECT_EQ(sizeof(OCDateTimeParserRfc1123), 184U);
    EXPECT_EQ(sizeof(OCDateTimeParserCookie), 184U);
    EXPECT_EQ(sizeof(OCDateTimeParserMilitary), 184U);
    EXPECT_EQ(sizeof(OCDateTimeParserAsn1), 184U);
    EXPECT_EQ(sizeof(OCDateTimeParserAsn1Generalized), 184U);
    EXPECT_EQ(sizeof(OCDateTimeParserAsn1Utc), 184U);
    OCDateTime value;
    OCDateTimeParserMilitary parser(value, "text");
    const char* const start = reinterpret_cast<const char*>(&parser);
    EXPECT_EQ(reinterpret_cast<const char*>(&parser.getSource()) - start, 8);
    OCDateTime* target;
    // NOLINTNEXTLINE(bugprone-sizeof-expression)
    memcpy(&target, start + 176, sizeof target);
    EXPECT_EQ(target, &value);
}

TEST_F(OCDateTimeParserTest, FormsATreeOfClasses) {
    static_assert(std::is_base_of_v<OCObject, OCDateTimeParser>);
    static_assert(std::is_abstract_v<OCDateTimeParser> && std::is_abstract_v<OCDateTimeParserAsn1>);
    static_assert(std::is_base_of_v<OCDateTimeParser, OCDateTimeParserRfc1123>);
    static_assert(std::is_base_of_v<OCDateTimeParser, OCDateTimeParserCookie>);
    static_assert(!std::is_base_of_v<OCDateTimeParserRfc1123, OCDateTimeParserCookie>);
    static_assert(std::is_base_of_v<OCDateTimeParser, OCDateTimeParserMilitary>);
    static_assert(std::is_base_of_v<OCDateTimeParser, OCDateTimeParserAsn1>);
    static_assert(std::is_base_of_v<OCDateTimeParserAsn1, OCDateTimeParserAsn1Generalized>);
    static_assert(std::is_base_of_v<OCDateTimeParserAsn1, OCDateTimeParserAsn1Utc>);
    static_assert(!std::is_nothrow_destructible_v<OCDateTimeParser>);
    static_assert(!std::is_copy_constructible_v<OCDateTimeParserRfc1123>);
}

TEST_F(OCDateTimeParserTest, ParseIsTheThirdAndLastSlot) {
    EXPECT_EQ(slots::slotOf(&OCDateTimeParser::parse), 2U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParser>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParserRfc1123>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParserCookie>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParserMilitary>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParserAsn1>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParserAsn1Generalized>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeParserAsn1Utc>(), 3U);
}

TEST_F(OCDateTimeParserTest, CanBeUsedAndDeletedThroughItsBase) {
    OCDateTime value;
    OCDateTimeParser* const parser = new OCDateTimeParserMilitary(value, "2016-01-02 03:04:05");
    parser->parse();
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
    delete parser;
}

TEST_F(OCDateTimeParserTest, TheSyntaxErrorBelongsToTheFamilyOfDateTimes) {
    static_assert(std::is_base_of_v<OXDateTime, OXDateTimeParser>);
    static_assert(std::is_base_of_v<OXDateTimeParser, OXDateTimeParser_SyntaxError>);
    static_assert(!std::is_default_constructible_v<OXDateTimeParser>);
    const OXDateTimeParser_SyntaxError failure("the text");
    EXPECT_EQ(standard(failure.getClass()), "OXDateTimeParser_SyntaxError");
    EXPECT_EQ(standard(failure.getMessage()), "Syntax error parsing date/time string (the text)");
}

TEST_F(OCDateTimeParserTest, KeepsTheTrimmedTextAndTheTarget) {
    struct {
        std::string text, source;
    } const cases[] = {
        {"", ""},
        {"junk", "junk"},
        {"  junk  ", "junk"},
        {"\t\r\n ju nk\x1f\x01 ", "ju nk"},
        {std::string("\0a\0b\0", 5), std::string("a\0b", 3)},
        {" \t\n", ""},
        {"\xa0 a \xa0", "\xa0 a \xa0"},
        {std::string(500, ' ') + std::string(500, 'x') + std::string(500, ' '),
         std::string(500, 'x')},
    };
    for (const auto& one : cases) {
        OCDateTime value = make(9, 9, 9, 9, 9, 9);
        OCDateTimeParserRfc1123 parser(value, binary(one.text));
        EXPECT_EQ(standard(parser.getSource()), one.source);
        EXPECT_EQ(&parser.getTarget(), &value);
        const OCDateTimeParser& constant = parser;
        EXPECT_EQ(&constant.getSource(), &parser.getSource());
        EXPECT_EQ(&constant.getTarget(), &value);
        EXPECT_EQ(show(value), untouched);
    }
}

TEST_F(OCDateTimeParserTest, TheSourceIsACopyThatParsingLeavesAlone) {
    OCAnsiString text("Sun, 06 Nov 1994 08:49:37 GMT");
    OCDateTime value;
    OCDateTimeParserRfc1123 parser(value, text);
    text = "changed";
    parser.parse();
    EXPECT_EQ(show(value), "1994-11-06 08:49:37");
    EXPECT_EQ(standard(parser.getSource()), "Sun, 06 Nov 1994 08:49:37 GMT");
    parser.getSource() = "Mon, 07 Nov 1994 08:49:37 GMT";
    parser.parse();
    EXPECT_EQ(show(value), "1994-11-07 08:49:37");
}

// RFC 1123 and cookie

template<class Parser>
class OCDateTimeParserRfc1123Test : public OCDateTimeParserTest {};
using Rfc1123Parsers = testing::Types<OCDateTimeParserRfc1123, OCDateTimeParserCookie>;
TYPED_TEST_SUITE(OCDateTimeParserRfc1123Test, Rfc1123Parsers, ); // clang asks for the comma

TYPED_TEST(OCDateTimeParserRfc1123Test, ReadsItsForm) {
    EXPECT_EQ(parsed<TypeParam>("Sun, 06 Nov 1994 08:49:37 GMT"), "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sat, 02 Jan 2016 03:04:05 GMT"), "2016-01-02 03:04:05");
    EXPECT_EQ(parsed<TypeParam>("  Sun, 06 Nov 1994 08:49:37 GMT\r\n"), "1994-11-06 08:49:37");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, LooksNeitherAtTheDayOfTheWeekNorAtTheZone) {
    EXPECT_EQ(parsed<TypeParam>("Xyz, 06 Nov 1994 08:49:37 UTC"), "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>(", 06 Nov 1994 08:49:37 +0100"), "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sun Mon 06 Jan,06 Nov 1994 08:49:37 x y z"),
              "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>(std::string("\0\xff,06 Nov 1994 08:49:37 \xff", 25)),
              "1994-11-06 08:49:37");
    EXPECT_EQ(this->calls->mktime.calls + this->calls->timegm.calls, 0U);
}

TYPED_TEST(OCDateTimeParserRfc1123Test, ReadsMonthNamesInAnyCase) {
    const char* const names[] = {"jan", "FEB", "Mar", "aPR", "mAy", "juN",
                                 "JUl", "AuG", "sEP", "Oct", "NOV", "dec"};
    for (int i = 0; i < 12; ++i) {
        char expected[32];
        snprintf(expected, sizeof expected, "1994-%02d-06 08:49:37", i + 1);
        EXPECT_EQ(parsed<TypeParam>(std::string("Sun, 06 ") + names[i] + " 1994 08:49:37 GMT"),
                  expected);
    }
}

TYPED_TEST(OCDateTimeParserRfc1123Test, RefusesOtherMonthNames) {
    for (const char* name : {"Ja", "Janu", "January", "Nox", "Xov", "Nxv", "11", "N\xcfV", "J\x01N",
                             "\x0a"
                             "an",
                             "\xcf\xef\xf6", "J!N", "Nov,"})
        EXPECT_EQ(refused<TypeParam>(std::string("Sun, 06 ") + name + " 1994 08:49:37 GMT"),
                  "0009-09-06 09:09:09")
            << name;
}

TYPED_TEST(OCDateTimeParserRfc1123Test, SkipsWhiteSpaceBeforeEachField) {
    EXPECT_EQ(parsed<TypeParam>("Sun,06 Nov 1994 08:49:37 GMT"), "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sun,   \t06  \n Nov \r 1994   08: 49:\t\t37 GMT"),
              "1994-11-06 08:49:37");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, OnlySpacesEndDayMonthYearAndSecond) {
    EXPECT_EQ(refused<TypeParam>("Sun, 06\tNov\t1994\t08:49:37\tGMT"), untouched);
    EXPECT_EQ(parsed<TypeParam>("Sun, 06\tx Nov 1994\n2 08:49:37\r GMT"), "1994-11-06 08:49:37");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov\t 1994 08:49:37 GMT"), "0009-09-06 09:09:09");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, AHourOrMinuteMayHoldBlanks) {
    EXPECT_EQ(parsed<TypeParam>("Sun, 06 Nov 1994 08 :49 x:37 GMT"), "1994-11-06 08:49:37");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, ReadsTheDigitsAtTheStartOfAField) {
    EXPECT_EQ(parsed<TypeParam>("Sun, 6th Nov 1994AD 8h:49m:37s GMT"), "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sun, x6 Nov -1994 +8:a:.5 GMT"), "0000-11-00 00:00:00");
    EXPECT_EQ(parsed<TypeParam>("Sun, 0x6 Nov 1e3 ff:0b1:00012 GMT"), "0001-11-00 00:00:12");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, StoresValuesOutOfRangeAsTheyAre) {
    EXPECT_EQ(parsed<TypeParam>("Sun, 45 Nov 1994 99:49:37 GMT"), "1994-11-45 99:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sun, 0 Nov 0 0:0:0 GMT"), "0000-11-00 00:00:00");
    EXPECT_EQ(parsed<TypeParam>("Sun, 65535 Nov 65535 65535:65535:65535 GMT"),
              "65535-11-65535 65535:65535:65535");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, TheYearIsNotCompleted) {
    EXPECT_EQ(parsed<TypeParam>("Sun, 06 Nov 94 08:49:37 GMT"), "0094-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sun, 06 Nov 5 08:49:37 GMT"), "0005-11-06 08:49:37");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, NumbersKeepTheirLow16Bits) {
    // 65536 + 6, 2 * 65536 + 1994, 2^32 + 8, 10 * 2^32 + 49
    EXPECT_EQ(parsed<TypeParam>("Sun, 65542 Nov 133066 4294967304:42949673009:37 GMT"),
              "1994-11-06 08:49:37");
    EXPECT_EQ(parsed<TypeParam>("Sun, 1 Nov 2000000000 4294967295:99999999999999999999:0 GMT"),
              "37888-11-01 65535:65535:00");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, KeepsWhatItReadBeforeTheFailure) {
    EXPECT_EQ(refused<TypeParam>(""), untouched);
    EXPECT_EQ(refused<TypeParam>("Sun"), untouched);
    EXPECT_EQ(refused<TypeParam>("06 Nov 1994 08:49:37 GMT"), untouched);
    EXPECT_EQ(refused<TypeParam>("Sun,"), untouched);
    EXPECT_EQ(refused<TypeParam>("Sun, 06"), untouched);
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov"), "0009-09-06 09:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994"), "0009-11-06 09:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08"), "1994-11-06 09:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08:49"), "1994-11-06 08:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08:49:"), "1994-11-06 08:49:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08:49:37"), "1994-11-06 08:49:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08:49:37 "), "1994-11-06 08:49:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 :49:37 GMT"), "1994-11-06 09:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08::37 GMT"), "1994-11-06 08:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun, 06 Nov 1994 08 49 37 GMT"), "1994-11-06 09:09:09");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, RefusesTheFormWithDashes) {
    EXPECT_EQ(refused<TypeParam>("Sun, 06-Nov-1994 08:49:37 GMT"), "0009-09-06 09:09:09");
    EXPECT_EQ(refused<TypeParam>("Sunday, 06-Nov-94 08:49:37 GMT"), "0009-09-06 09:09:09");
    EXPECT_EQ(refused<TypeParam>("Sun Nov  6 08:49:37 1994"), untouched);
}

TYPED_TEST(OCDateTimeParserRfc1123Test, OffersItsScanners) {
    using P = TypeParam;
    EXPECT_EQ(scanned(&P::separateDayOfMonth, " \t06 Nov"), "[06] [Nov]");
    EXPECT_EQ(scanned(&P::separateMonth, "Nov 1994 "), "[Nov] [1994 ]");
    EXPECT_EQ(scanned(&P::separateYear, "1994  08"), "[1994] [ 08]");
    EXPECT_EQ(scanned(&P::separateHour, " 08:49"), "[08] [49]");
    EXPECT_EQ(scanned(&P::separateMinute, "49 :37"), "[49 ] [37]");
    EXPECT_EQ(scanned(&P::separateSecond, "37 GMT"), "[37] [GMT]");
    EXPECT_EQ(scanned(&P::parseDayOfMonth, " 06 Nov"), "6 [Nov]");
    EXPECT_EQ(scanned(&P::parseMonth, " nov 1994"), "11 [1994]");
    EXPECT_EQ(scanned(&P::parseYear, "1994 08:"), "1994 [08:]");
    EXPECT_EQ(scanned(&P::parseHour, "08:49:"), "8 [49:]");
    EXPECT_EQ(scanned(&P::parseMinute, "49:37"), "49 [37]");
    EXPECT_EQ(scanned(&P::parseSecond, "37 "), "37 []");
    OCDateTime value;
    const P parser(value, "source");
    OCAnsiString rest("Sun, 06, Nov");
    parser.removeDayOfWeek(rest);
    EXPECT_EQ(standard(rest), " 06, Nov");
    parser.removeDayOfWeek(rest);
    EXPECT_EQ(standard(rest), " Nov");
    rest = ",";
    parser.removeDayOfWeek(rest);
    EXPECT_EQ(standard(rest), "");
    EXPECT_EQ(show(value), "0000-00-00 00:00:00");
}

TYPED_TEST(OCDateTimeParserRfc1123Test, ARefusedScanLeavesTheText) {
    EXPECT_SCAN_REFUSED(TypeParam, removeDayOfWeek(rest), " Sun");
    EXPECT_SCAN_REFUSED(TypeParam, separateDayOfMonth(rest), " 06");
    EXPECT_SCAN_REFUSED(TypeParam, separateMonth(rest), "");
    EXPECT_SCAN_REFUSED(TypeParam, separateYear(rest), "   ");
    EXPECT_SCAN_REFUSED(TypeParam, separateHour(rest), " 08");
    EXPECT_SCAN_REFUSED(TypeParam, separateMinute(rest), " :49");
    EXPECT_SCAN_REFUSED(TypeParam, separateSecond(rest), "37");
    EXPECT_SCAN_REFUSED(TypeParam, parseDayOfMonth(rest), " 06");
    EXPECT_SCAN_REFUSED(TypeParam, parseMonth(rest), " Nox 1994");
    EXPECT_SCAN_REFUSED(TypeParam, parseMonth(rest), " Nov");
    EXPECT_SCAN_REFUSED(TypeParam, parseYear(rest), "1994");
    EXPECT_SCAN_REFUSED(TypeParam, parseHour(rest), "08 ");
    EXPECT_SCAN_REFUSED(TypeParam, parseMinute(rest), ":");
    EXPECT_SCAN_REFUSED(TypeParam, parseSecond(rest), "37:");
}

// Military

std::string military(const std::string& text) {
    return parsed<OCDateTimeParserMilitary>(text);
}
std::string refusedMilitary(const std::string& text) {
    return refused<OCDateTimeParserMilitary>(text);
}

TEST_F(OCDateTimeParserTest, MilitaryReadsItsForm) {
    EXPECT_EQ(military("2016-01-02 03:04:05"), "2016-01-02 03:04:05");
    EXPECT_EQ(military(" 2016-01-02 03:04:05 "), "2016-01-02 03:04:05");
    EXPECT_EQ(military("0000-99-99 99:99:99"), "0000-99-99 99:99:99");
}

TEST_F(OCDateTimeParserTest, MilitaryIgnoresWhatFollowsTheSeconds) {
    EXPECT_EQ(military("2016-01-02 03:04:05.123"), "2016-01-02 03:04:05");
    EXPECT_EQ(military("2016-01-02 03:04:0599Z and more"), "2016-01-02 03:04:05");
}

TEST_F(OCDateTimeParserTest, MilitaryExaminesDigitsOnlyToConvertThem) {
    EXPECT_EQ(military("abcd-1x-   ::::::::"), "0000-01-00 00:00:00");
    EXPECT_EQ(military("12 4- 1-2x 3y:-4:5"
                       "\n6"),
              "0012-00-02 03:00:05");
}

TEST_F(OCDateTimeParserTest, MilitaryKeepsWhatItReadBeforeTheFailure) {
    EXPECT_EQ(refusedMilitary(""), untouched);
    EXPECT_EQ(refusedMilitary("201"), untouched);
    EXPECT_EQ(refusedMilitary("2016"), untouched);
    EXPECT_EQ(refusedMilitary("2016/01/02 03:04:05"), untouched);
    EXPECT_EQ(refusedMilitary("16-01-02 03:04:05"), untouched);
    EXPECT_EQ(refusedMilitary("2016-"), "2016-09-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-0"), "2016-09-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01"), "2016-09-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01/02 03:04:05"), "2016-09-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-1-2 03:04:05"), "2016-09-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-"), "2016-01-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02"), "2016-01-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 "), "2016-01-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02T03:04:05"), "2016-01-09 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 0"), "2016-01-02 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 03"), "2016-01-02 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 03.04:05"), "2016-01-02 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02  03:04:05"), "2016-01-02 09:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 03:"), "2016-01-02 03:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 03:04"), "2016-01-02 03:09:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 03:04:"), "2016-01-02 03:04:09");
    EXPECT_EQ(refusedMilitary("2016-01-02 03:04:5"), "2016-01-02 03:04:09");
}

TEST_F(OCDateTimeParserTest, MilitaryWithNothingBehindTheDayIsMidnight) {
    OCDateTime value = make(9, 9, 9, 9, 9, 9);
    OCDateTimeParserMilitary parser(value, "2016-01-02");
    parser.getSource() = "2016-01-02 "; // trimming keeps such a text out of the constructor
    parser.parse();
    EXPECT_EQ(show(value), "2016-01-02 00:00:00");
}

TEST_F(OCDateTimeParserTest, MilitaryOffersItsScanners) {
    using P = OCDateTimeParserMilitary;
    EXPECT_EQ(scannedWidth<P>("2016-", 4), "[2016] [-]");
    EXPECT_EQ(scannedWidth<P>(" x", 2), "[ x] []");
    EXPECT_EQ(scannedWidth<P>("ab", 0), "[] [ab]");
    EXPECT_EQ(scanned(&P::parseYear, "2016-01"), "2016 [01]");
    EXPECT_EQ(scanned(&P::parseMonth, "01-02 "), "1 [02 ]");
    EXPECT_EQ(scanned(&P::parseDayOfMonth, "02 "), "2 []");
    EXPECT_EQ(scanned(&P::parseHour, "03:04:05"), "3 [04:05]");
    EXPECT_EQ(scanned(&P::parseMinute, "04:05"), "4 [05]");
    EXPECT_EQ(scanned(&P::parseSecond, "05.5"), "5 [.5]");
    EXPECT_SCAN_REFUSED(P, separateInteger(rest, 4), "201");
    EXPECT_SCAN_REFUSED(P, separateInteger(rest, ~0UL), "201");
    EXPECT_SCAN_REFUSED(P, parseYear(rest), "2016");
    EXPECT_SCAN_REFUSED(P, parseMonth(rest), "01/");
    EXPECT_SCAN_REFUSED(P, parseDayOfMonth(rest), "02\t");
    EXPECT_SCAN_REFUSED(P, parseHour(rest), "3:");
    EXPECT_SCAN_REFUSED(P, parseMinute(rest), "04 ");
    EXPECT_SCAN_REFUSED(P, parseSecond(rest), "5");
}

// ASN.1

std::string generalized(const std::string& text) {
    return parsed<OCDateTimeParserAsn1Generalized>(text);
}
std::string utc(const std::string& text) {
    return parsed<OCDateTimeParserAsn1Utc>(text);
}

TEST_F(OCDateTimeParserTest, Asn1ReadsItsForms) {
    EXPECT_EQ(generalized("20160102030405Z"), "2016-01-02 03:04:05");
    EXPECT_EQ(utc("160102030405Z"), "2016-01-02 03:04:05");
    EXPECT_EQ(utc("491231235959Z"), "2049-12-31 23:59:59");
    EXPECT_EQ(utc("500102030405Z"), "1950-01-02 03:04:05");
    EXPECT_EQ(utc("000102030405Z"), "2000-01-02 03:04:05");
    EXPECT_EQ(utc("991231235959Z"), "1999-12-31 23:59:59");
    EXPECT_EQ(generalized("00160102030405Z"), "0016-01-02 03:04:05");
}

TEST_F(OCDateTimeParserTest, Asn1MovesToUtc) {
    EXPECT_EQ(utc("160102030405+0100"), "2016-01-02 02:04:05");
    EXPECT_EQ(generalized("20160102030405+0100"), "2016-01-02 02:04:05");
    EXPECT_EQ(generalized("20160102030405-0230"), "2016-01-02 05:34:05");
    EXPECT_EQ(generalized("20160101000000+0001"), "2015-12-31 23:59:00");
    EXPECT_EQ(generalized("20151231233000-0030"), "2016-01-01 00:00:00");
    EXPECT_EQ(generalized("20160102030405+0000"), "2016-01-02 03:04:05");
    EXPECT_EQ(generalized("20160102030405-0000"), "2016-01-02 03:04:05");
    EXPECT_EQ(generalized("20160102030405-9999"), "2016-01-06 07:43:05");
    EXPECT_EQ(generalized("20160102030405+xx1x"), "2016-01-02 03:03:05");
}

TEST_F(OCDateTimeParserTest, Asn1IgnoresWhatFollowsTheCorrection) {
    EXPECT_EQ(generalized("20160102030405Z0100"), "2016-01-02 03:04:05");
    EXPECT_EQ(generalized("20160102030405Z and more"), "2016-01-02 03:04:05");
    EXPECT_EQ(generalized("20160102030405+010099"), "2016-01-02 02:04:05");
}

TEST_F(OCDateTimeParserTest, Asn1RefusesWithoutStoringAnything) {
    for (const char* text :
         {"", "2", "2016", "20160", "2016010203040", "20160102030405", "20160102030405z",
          "20160102030405.5Z", "20160102030405 Z", "20160102030405+", "20160102030405+1",
          "20160102030405+01", "20160102030405+010", "20160102030405-", "20160102030405-02:",
          "20160102030405x0100", "20160102030405 +0100", "2016-01-02 03:04:05Z"})
        EXPECT_EQ(refused<OCDateTimeParserAsn1Generalized>(text), untouched) << text;
    for (const char* text : {"", "1", "491231235959", "491231235959,1", "20160102030405Z",
                             "491231235959+010", "4912312359Z"})
        EXPECT_EQ(refused<OCDateTimeParserAsn1Utc>(text), untouched) << text;
    EXPECT_EQ(calls->mktime.calls, 0U);
}

TEST_F(OCDateTimeParserTest, Asn1ExaminesDigitsOnlyToConvertThem) {
    // Month 0, day 0, hour 0, minute 0, second 0
    EXPECT_EQ(generalized("2016xxxxxxxxxxZ"), "2015-11-30 00:00:00");
    EXPECT_EQ(utc("x60102030405Z"), "2000-01-02 03:04:05");
    EXPECT_EQ(utc("5x0102030405Z"), "2005-01-02 03:04:05");
}

TEST_F(OCDateTimeParserTest, Asn1NormalisesAlsoWithoutACorrection) {
    EXPECT_EQ(generalized("20161332246060Z"), "2017-02-02 01:01:00");
    TimeZoneScope berlin(zones::berlin);
    EXPECT_NE(generalized("20160327023000Z"), "2016-03-27 02:30:00"); // in the gap
    EXPECT_EQ(generalized("20160727023000Z"), "2016-07-27 02:30:00");
}

TEST_F(OCDateTimeParserTest, Asn1LetsTheFailuresOfTheAdjustmentPass) {
    OCDateTime value = make(9, 9, 9, 9, 9, 9);
    OCDateTimeParserAsn1Generalized parser(value, "20160102030405+0100");
    calls->gmtime_r.fails = true;
    EXPECT_EXCEPTION(parser.parse(), OXDateTime_AdjustError, "Error adjusting date/time");
    EXPECT_EQ(show(value), "2016-01-02 03:04:05"); // stored, not moved
    calls->gmtime_r.fails = false;
    calls->timegm.fails = true;
    value = make(9, 9, 9, 9, 9, 9);
    EXPECT_EXCEPTION(parser.parse(), OXDateTime_AdjustError, "Error adjusting date/time");
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
    calls->mktime.fails = true;
    value = make(9, 9, 9, 9, 9, 9);
    EXPECT_REPRESENT_ERROR(parser.parse());
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
    OCDateTimeParserAsn1Utc other(value, "500102030405Z");
    EXPECT_REPRESENT_ERROR(other.parse());
    EXPECT_EQ(show(value), "1950-01-02 03:04:05");
}

TEST_F(OCDateTimeParserTest, Asn1CannotReadTheSecondBefore1970) {
    OCDateTime value;
    EXPECT_REPRESENT_ERROR(OCDateTimeParserAsn1Generalized(value, "19691231235959Z").parse());
    EXPECT_EQ(show(value), "1969-12-31 23:59:59");
    EXPECT_EQ(generalized("19700101000000+0001"), "1969-12-31 23:59:00");
}

TEST_F(OCDateTimeParserTest, Asn1OffersItsScanners) {
    using P = OCDateTimeParserAsn1Generalized;
    using U = OCDateTimeParserAsn1Utc;
    using Either = OCDateTimeParserAsn1;
    EXPECT_EQ(scannedWidth<P>("2016x", 4), "[2016] [x]");
    EXPECT_EQ(scannedWidth<U>("16", 2), "[16] []");
    EXPECT_EQ(scanned(&P::parseYear, "201601"), "2016 [01]");
    EXPECT_EQ(scanned(&U::parseYear, "491"), "2049 [1]");
    EXPECT_EQ(scanned(&U::parseYear, "501"), "1950 [1]");
    OCDateTime value;
    const P parser(value, "source");
    const Either& either = parser;
    OCAnsiString rest("0102030405+0130 x");
    EXPECT_EQ(either.parseMonth(rest), 1);
    EXPECT_EQ(either.parseDay(rest), 2);
    EXPECT_EQ(either.parseHour(rest), 3);
    EXPECT_EQ(either.parseMinute(rest), 4);
    EXPECT_EQ(either.parseSecond(rest), 5);
    OCAnsiString again(rest);
    EXPECT_EQ(either.parseCorrection(rest), -5400);
    EXPECT_EQ(standard(rest), "");
    EXPECT_EQ(standard(either.separateCorrection(again)), "+0130 x");
    EXPECT_EQ(standard(again), "");
    rest = "-0130";
    EXPECT_EQ(either.parseCorrection(rest), 5400);
    rest = "Zx";
    EXPECT_EQ(either.parseCorrection(rest), 0);
    EXPECT_EQ(standard(rest), "");
}

TEST_F(OCDateTimeParserTest, ARefusedAsn1ScanLeavesTheText) {
    using P = OCDateTimeParserAsn1Generalized;
    using U = OCDateTimeParserAsn1Utc;
    EXPECT_SCAN_REFUSED(P, separateInteger(rest, 4), "201");
    EXPECT_SCAN_REFUSED(P, separateCorrection(rest), "");
    EXPECT_SCAN_REFUSED(P, parseYear(rest), "201");
    EXPECT_SCAN_REFUSED(U, parseYear(rest), "2");
    EXPECT_SCAN_REFUSED(P, parseMonth(rest), "1");
    EXPECT_SCAN_REFUSED(P, parseDay(rest), "2");
    EXPECT_SCAN_REFUSED(P, parseHour(rest), "3");
    EXPECT_SCAN_REFUSED(P, parseMinute(rest), "4");
    EXPECT_SCAN_REFUSED(P, parseSecond(rest), "");
    EXPECT_SCAN_REFUSED(P, parseCorrection(rest), "");
    EXPECT_SCAN_REFUSED(P, parseCorrection(rest), "z");
    EXPECT_SCAN_REFUSED(P, parseCorrection(rest), "+013");
    EXPECT_SCAN_REFUSED(P, parseCorrection(rest), "-");
}

// Memory, size, and texts nobody thought of

TEST_F(OCDateTimeParserTest, AScannerMayWorkOnTheSource) {
    OCDateTime value;
    OCDateTimeParserMilitary parser(value, "2016-01/");
    EXPECT_EQ(parser.parseYear(parser.getSource()), 2016);
    EXPECT_EXCEPTION(parser.parseMonth(parser.getSource()), OXDateTimeParser_SyntaxError,
                     "Syntax error parsing date/time string (01/)");
}

TEST_F(OCDateTimeParserTest, ExhaustedMemoryPassesThroughAndLosesNothing) {
    const std::string padding(300, 'x');
    const OCAnsiString good = binary(padding + ", 06 Nov 1994 08:49:37 GMT");
    const OCAnsiString bad = binary(padding + ", 06 Nox 1994 08:49:37 GMT");
    OCDateTime value = make(9, 9, 9, 9, 9, 9);
    const long left = fault::blocksLeftBy([&] {
        EXPECT_EQ(fault::failEachRequest([&] { value.importText(good, DateTimeFormatRfc1123); },
                                         [&] { EXPECT_EQ(show(value), untouched); }),
                  1UL);
        EXPECT_EQ(show(value), "1994-11-06 08:49:37");
        value = make(9, 9, 9, 9, 9, 9);
        EXPECT_GE(fault::failEachRequest([&] {
                      try {
                          value.importText(bad, DateTimeFormatRfc1123);
                          ADD_FAILURE() << "accepted";
                      } catch (const OXDateTimeParser_SyntaxError&) {
                      }
                  }),
                  2UL);
        EXPECT_EQ(show(value), "0009-09-06 09:09:09");
    });
    EXPECT_EQ(left, 0);
}

TEST_F(OCDateTimeParserTest, AScannerThatCannotMakeItsTokenLeavesTheText) {
    const std::string digits(1000, '7');
    OCDateTime value;
    const OCDateTimeParserMilitary parser(value, "source");
    const OCAnsiString whole = binary(digits + "-");
    OCAnsiString rest(whole);
    EXPECT_GE(fault::failEachRequest(
                  [&] {
                      rest = whole;
                      const OCAnsiString token = parser.separateInteger(rest, 900);
                      EXPECT_EQ(token.getLength(), 900U);
                      EXPECT_EQ(rest.getLength(), 101U);
                  },
                  [&] { EXPECT_EQ(rest.getLength(), 1001U); }),
              1UL);
}

TEST_F(OCDateTimeParserTest, LongTextsTakeLinearTime) {
    const std::string texts[] = {
        std::string(2 << 20, ' '),
        std::string(2 << 20, ','),
        std::string(2 << 20, '1'),
        "," + std::string(2 << 20, ' ') + "6 " + std::string(2 << 20, ' ') + "Nov 1994 8:9:",
        "," + std::string(2 << 20, '0') + " " + std::string(2 << 20, 'x') + " ",
        std::string(2 << 20, 'x') + ", 06 Nov 1994 08:49:" + std::string(2 << 20, '3'),
    };
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& one : texts)
        for (int form = 0; form <= 4; ++form) {
            OCDateTime value;
            DateTimeModel model;
            const DateTimeModel::Outcome expected = model.read(form, one);
            bool accepted = true;
            try {
                value.importText(binary(one), static_cast<OEDateTimeFormat>(form));
            } catch (const OXDateTimeParser_SyntaxError&) {
                accepted = false;
            }
            EXPECT_EQ(accepted, expected == DateTimeModel::Read) << form;
        }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

void compareWithModel(int form, const std::string& text) {
    OCDateTime value = make(9, 9, 9, 9, 9, 9);
    DateTimeModel model;
    model.year = model.month = model.day = model.hour = model.minute = model.second = 9;
    const DateTimeModel::Outcome expected = model.read(form, text);
    DateTimeModel::Outcome outcome = DateTimeModel::Read;
    try {
        value.importText(binary(text), static_cast<OEDateTimeFormat>(form));
    } catch (const OXDateTimeParser_SyntaxError& failure) {
        outcome = DateTimeModel::SyntaxError;
        ASSERT_EQ(standard(failure.getDetails().getString(0)), DateTimeModel::trimmed(text));
    } catch (const OXDateTime_RepresentError&) {
        outcome = DateTimeModel::RepresentError;
    }
    ASSERT_EQ(outcome, expected) << form << " [" << text << "]";
    ASSERT_EQ(show(value), show(make(model.year, model.month, model.day, model.hour, model.minute,
                                     model.second)))
        << form << " [" << text << "]";
}

TEST_F(OCDateTimeParserTest, RandomlyDamagedTextsAgreeWithAPlainModel) {
    const unsigned seed = 1123;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::vector<std::string> texts = {"Sun, 06 Nov 1994 08:49:37 GMT",
                                            "2016-01-02 03:04:05",
                                            "20160102030405Z",
                                            "20160102030405+0130",
                                            "160102030405Z",
                                            "19691231235959Z",
                                            "691231235959-0000"};
    const std::string alphabet = " \t,:-+Z.0123456789JjaAnNoOvVx\xff\x80" + std::string(1, '\0');
    const auto pick = [&random](std::size_t count) { return random() % count; };
    for (int i = 0; i < 60000; ++i) {
        std::string text = texts[pick(texts.size())];
        for (std::size_t changes = pick(4); changes > 0; --changes) {
            const std::size_t place = pick(text.size() + 1);
            const char c = alphabet[pick(alphabet.size())];
            switch (pick(4)) {
            case 0:
                text.insert(place, 1, c);
                break;
            case 1:
                text.erase(place, pick(3));
                break;
            case 2:
                text.resize(place);
                break;
            default:
                if (place < text.size())
                    text[place] = c;
            }
        }
        for (int form = 0; form <= 4; ++form)
            compareWithModel(form, text);
        if (HasFatalFailure())
            return;
    }
}

} // namespace
