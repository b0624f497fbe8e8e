#include "support/AllocationSweep.h"

#include "OCDateTime.h"
#include "OCDateTimeFormat.h"
#include "OCDateTimeParser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

const std::string padding(300, '9');
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

/// A scanner that fails leaves the text whole.
template<class Parser, class Scanner>
void scanning(const char* name, const std::string& from, Scanner scanner) {
    static OCDateTime target;
    static const Parser parser(target, "source");
    const sweep::Operations text([&] { return std::make_unique<OCAnsiString>(from.c_str()); },
                                 [](const OCAnsiString& s) { return sweep::seen(s); });
    text(name, [&](OCAnsiString& s) { scanner(parser, s); });
}

TEST(AllocationSweep, DateTimeScanners) {
    const std::string blank = padding + ' ' + padding;
    using Rfc = OCDateTimeParserRfc1123;
    scanning<Rfc>("removeDayOfWeek", padding + ", " + padding,
                  [](const Rfc& p, OCAnsiString& s) { p.removeDayOfWeek(s); });
    scanning<Rfc>("separateMonth", blank,
                  [](const Rfc& p, OCAnsiString& s) { p.separateMonth(s); });
    scanning<Rfc>("separateYear", blank, [](const Rfc& p, OCAnsiString& s) { p.separateYear(s); });
    using Military = OCDateTimeParserMilitary;
    scanning<Military>("separateInteger", blank,
                       [](const Military& p, OCAnsiString& s) { p.separateInteger(s, 200); });
    using Asn1 = OCDateTimeParserAsn1Utc;
    scanning<Asn1>("separateInteger", blank,
                   [](const Asn1& p, OCAnsiString& s) { p.separateInteger(s, 200); });
    scanning<Asn1>("separateCorrection", "+" + padding,
                   [](const Asn1& p, OCAnsiString& s) { p.separateCorrection(s); });
}

TEST(AllocationSweep, DateTimeFormats) {
    const auto make = sweep::results();
    make("RFC 1123", [](auto&) { delete new OCDateTimeFormatRfc1123; });
    make("military", [](auto&) { delete new OCDateTimeFormatMilitary; });
    make("generalized", [](auto&) { delete new OCDateTimeFormatAsn1Generalized; });
    make("UTC", [](auto&) { delete new OCDateTimeFormatAsn1Utc; });
}

} // namespace
