// Every parser of date-time texts against a plain model, and every format back through its parser.
// The first byte of the input chooses the form (and, for ASN.1, nothing else); the rest is the
// text.

#include "OCDateTimeFormat.h"
#include "OCDateTimeParser.h"

#include "Require.h"

#include "../tests/support/DateTimeModel.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

bool same(const OCDateTime& value, const DateTimeModel& model) {
    return value.year == model.year && value.month == model.month && value.day == model.day &&
           value.hour == model.hour && value.minute == model.minute && value.second == model.second;
}

// What is written is read back, as far as the form can hold it.
void checkWrittenForms(const OCDateTime& value) {
    OCAnsiString rfc1123;
    try {
        rfc1123 = value.exportText(DateTimeFormatRfc1123);
    } catch (const OXDateTime_RepresentError&) {
        // Only the second before 1970 cannot be told apart from failure.
        DateTimeModel model{value.year, value.month,  value.day,
                            value.hour, value.minute, value.second};
        REQUIRE(model.seconds() == -1);
    }
    REQUIRE(value.exportText(DateTimeFormatCookie).getLength() == 0);
    OCDateTime shortYear(value);
    shortYear.year = static_cast<unsigned short>(value.year % 10000);
    const bool named = value.month >= 1 && value.month <= 12;
    for (OEDateTimeFormat form : {DateTimeFormatRfc1123, DateTimeFormatCookie}) {
        if (rfc1123.getLength() == 0)
            break;
        OCDateTime back;
        try {
            back.importText(rfc1123, form);
            REQUIRE(named && back == shortYear);
        } catch (const OXDateTimeParser_SyntaxError&) {
            REQUIRE(!named);
        }
    }
    const OCAnsiString military = value.exportText(DateTimeFormatMilitary);
    if (value.month <= 99 && value.day <= 99 && value.hour <= 99 && value.minute <= 99 &&
        value.second <= 99) {
        OCDateTime back;
        back.importText(military, DateTimeFormatMilitary);
        REQUIRE(back == shortYear);
        // The ASN.1 forms normalise what they read.
        OCDateTime normalised(shortYear);
        try {
            normalised.adjust(0);
            back.importText(value.exportText(DateTimeFormatAsn1Generalized),
                            DateTimeFormatAsn1Generalized);
            REQUIRE(back == normalised);
            if (shortYear.year >= 1950 && shortYear.year <= 2049) {
                back.importText(value.exportText(DateTimeFormatAsn1Utc), DateTimeFormatAsn1Utc);
                REQUIRE(back == normalised);
            }
        } catch (const OXDateTime_RepresentError&) {
        }
    }
}

// The scanners, called one by one as `parse` of this form would, come to the same result.
void checkScanners(const OCAnsiString& text, const OCDateTime& parsed) {
    OCDateTime value;
    const OCDateTimeParserRfc1123 parser(value, text);
    OCAnsiString rest(parser.getSource());
    parser.removeDayOfWeek(rest);
    REQUIRE(parser.parseDayOfMonth(rest) == parsed.day);
    REQUIRE(parser.parseMonth(rest) == parsed.month);
    REQUIRE(parser.parseYear(rest) == parsed.year);
    REQUIRE(parser.parseHour(rest) == parsed.hour);
    REQUIRE(parser.parseMinute(rest) == parsed.minute);
    REQUIRE(parser.parseSecond(rest) == parsed.second);
    REQUIRE(rest.getLength() > 0);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("TZ", "UTC0", 1);
    tzset();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const int form = data[0] % 6;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const OCAnsiString string(text.data(), text.size());

    OCDateTime value;
    DateTimeModel model;
    DateTimeModel::Outcome expected = DateTimeModel::Read; // an unknown form reads nothing
    if (form < 5)
        expected = model.read(form, text);
    try {
        value.importText(string, static_cast<OEDateTimeFormat>(form));
        REQUIRE(expected == DateTimeModel::Read);
        if (form == DateTimeFormatRfc1123)
            checkScanners(string, value);
    } catch (const OXDateTimeParser_SyntaxError& failure) {
        REQUIRE(expected == DateTimeModel::SyntaxError);
        REQUIRE(standard(failure.getClass()) == "OXDateTimeParser_SyntaxError");
        REQUIRE(failure.getDetails().getCount() == 1);
        REQUIRE(standard(failure.getDetails().getString(0)) == DateTimeModel::trimmed(text));
    } catch (const OXDateTime_RepresentError&) {
        REQUIRE(expected == DateTimeModel::RepresentError);
    }
    REQUIRE(same(value, model));
    checkWrittenForms(value);
    return 0;
}
