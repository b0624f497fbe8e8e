#include "support/AllocationSweep.h"

#include "OCDateTime.h"
#include "OCDateTimeFormat.h"
#include "OCDateTimeParser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace {

const std::string padding(319, '9'); // one character more takes another block
const OCAnsiString longText(padding.c_str());

TEST(AllocationSweep, DateTime) {
    const sweep::Operations value(
        [] {
            auto made = std::make_unique<OCDateTime>();
            made->importText("2016-01-02 03:04:05", DateTimeFormatMilitary);
            return made;
        },
        [](const OCDateTime& v) { return sweep::seen(v.exportText(DateTimeFormatMilitary)); });
    value("new", [](auto&) { delete new OCDateTime; });
    for (const auto format : {DateTimeFormatAsn1Generalized, DateTimeFormatAsn1Utc,
                              DateTimeFormatCookie, DateTimeFormatMilitary, DateTimeFormatRfc1123})
        value("importText of another text", [=](OCDateTime& v) {
            sweep::refused<OXDateTimeParser_SyntaxError>([&] { v.importText(longText, format); });
        });
    const OCAnsiString text((padding + ", 06 Nov 1994 08:49:37 GMT").c_str());
    value("importText", [&](OCDateTime& v) { v.importText(text, DateTimeFormatRfc1123); });
}

template<class Parser>
void sweepParser(const char* name) {
    SCOPED_TRACE(name);
    static OCDateTime target;
    const auto make = sweep::results();
    make("construction", [](auto&) { Parser(target, longText); });
    make("new", [](auto&) { delete new Parser(target, "text"); });
    make("parse", [](auto&) {
        Parser parser(target, longText);
        sweep::refused<OXDateTimeParser_SyntaxError>([&] { parser.parse(); });
    });
}

TEST(AllocationSweep, DateTimeParsers) {
    sweepParser<OCDateTimeParserRfc1123>("RFC 1123");
    sweepParser<OCDateTimeParserCookie>("cookie");
    sweepParser<OCDateTimeParserMilitary>("military");
    sweepParser<OCDateTimeParserAsn1Generalized>("generalized");
    sweepParser<OCDateTimeParserAsn1Utc>("UTC");
}

/// Sweeps a scanner of `Parser` on a text that begins with `begin`, and on an empty one.
template<class Parser, class Result>
void scanning(const char* name, Result (Parser::*scan)(OCAnsiString&) const,
              const std::string& begin) {
    static OCDateTime target;
    static const Parser parser(target, longText);
    const auto texts = [](const std::string& from) {
        return sweep::Operations([=] { return std::make_unique<OCAnsiString>(from.c_str()); },
                                 [](const OCAnsiString& s) { return sweep::seen(s); });
    };
    const auto scanned = [=](OCAnsiString& s) { (parser.*scan)(s); };
    if constexpr (std::is_same_v<Result, OCAnsiString>)
        texts(begin + padding)(name, scanned);
    else if (!begin.empty())
        texts(begin + padding).managing(name, scanned);
    texts("")(name, [=](OCAnsiString& s) {
        sweep::refused<OXDateTimeParser_SyntaxError>([&] { (parser.*scan)(s); });
    });
}

template<class Parser>
void sweepRfc1123() {
    const std::string blank = padding + ' ';
    const std::string colon = padding + ':';
    scanning("removeDayOfWeek", &Parser::removeDayOfWeek, padding + ",");
    scanning("separateDayOfMonth", &Parser::separateDayOfMonth, blank);
    scanning("separateMonth", &Parser::separateMonth, blank);
    scanning("separateYear", &Parser::separateYear, blank);
    scanning("separateHour", &Parser::separateHour, colon);
    scanning("separateMinute", &Parser::separateMinute, colon);
    scanning("separateSecond", &Parser::separateSecond, blank);
    scanning("parseDayOfMonth", &Parser::parseDayOfMonth, "06 ");
    scanning("parseMonth", &Parser::parseMonth, "Nov ");
    scanning("parseYear", &Parser::parseYear, "1994 ");
    scanning("parseHour", &Parser::parseHour, "08:");
    scanning("parseMinute", &Parser::parseMinute, "49:");
    scanning("parseSecond", &Parser::parseSecond, "37 ");
}

TEST(AllocationSweep, DateTimeScanners) {
    sweepRfc1123<OCDateTimeParserRfc1123>();
    sweepRfc1123<OCDateTimeParserCookie>();
    using Military = OCDateTimeParserMilitary;
    scanning("parseYear", &Military::parseYear, "1994-");
    scanning("parseMonth", &Military::parseMonth, "11-");
    scanning("parseDayOfMonth", &Military::parseDayOfMonth, "06 ");
    scanning("parseHour", &Military::parseHour, "08:");
    scanning("parseMinute", &Military::parseMinute, "49:");
    scanning("parseSecond", &Military::parseSecond, "37");
    using Generalized = OCDateTimeParserAsn1Generalized;
    scanning("parseYear", &Generalized::parseYear, "1994");
    using Utc = OCDateTimeParserAsn1Utc;
    scanning("parseYear", &Utc::parseYear, "94");
    const auto asn1 = [](const char* name, auto scan, const std::string& begin) {
        using Result = std::invoke_result_t<decltype(scan), const Utc&, OCAnsiString&>;
        scanning<Utc, Result>(name, scan, begin);
    };
    asn1("separateCorrection", &Utc::separateCorrection, "+");
    asn1("parseMonth", &Utc::parseMonth, "11");
    asn1("parseDay", &Utc::parseDay, "06");
    asn1("parseHour", &Utc::parseHour, "08");
    asn1("parseMinute", &Utc::parseMinute, "49");
    asn1("parseSecond", &Utc::parseSecond, "37");
    asn1("parseCorrection", &Utc::parseCorrection, ""); // which leaves nothing of the text
}

template<class Parser>
void sweepIntegers() {
    static OCDateTime target;
    static const Parser parser(target, longText);
    const sweep::Operations text([] { return std::make_unique<OCAnsiString>(longText); },
                                 [](const OCAnsiString& s) { return sweep::seen(s); });
    text("separateInteger", [](OCAnsiString& s) { parser.separateInteger(s, 200); });
    text("separateInteger behind", [](OCAnsiString& s) {
        sweep::refused<OXDateTimeParser_SyntaxError>([&] { parser.separateInteger(s, 320); });
    });
}

TEST(AllocationSweep, DateTimeIntegers) {
    sweepIntegers<OCDateTimeParserMilitary>();
    sweepIntegers<OCDateTimeParserAsn1Utc>();
}

TEST(AllocationSweep, DateTimeFormats) {
    const auto make = sweep::results();
    make("RFC 1123", [](auto&) { delete new OCDateTimeFormatRfc1123; });
    make("military", [](auto&) { delete new OCDateTimeFormatMilitary; });
    make("generalized", [](auto&) { delete new OCDateTimeFormatAsn1Generalized; });
    make("UTC", [](auto&) { delete new OCDateTimeFormatAsn1Utc; });
}

} // namespace
