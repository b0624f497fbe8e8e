#include "OCDateTimeFormat.h"
#include "OCDateTimeParser.h"

#include "support/DateTimes.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/TimeFaults.h"

#include <gtest/gtest.h>
#include <random>
#include <type_traits>

namespace {

constexpr auto make = makeDateTime;

template<class Format>
std::string formatted(const OCDateTime& value) {
    return standard(Format().format(value));
}

class OCDateTimeFormatTest : public testing::Test {
protected:
    TimeZoneScope zone{zones::utc};
    TimeCallsScope calls;

    const OCDateTimeFormatRfc1123 rfc1123;
    const OCDateTimeFormatMilitary military;
    const OCDateTimeFormatAsn1Generalized generalized;
    const OCDateTimeFormatAsn1Utc utc;
    const OCDateTime value = make(2016, 1, 2, 3, 4, 5);
};

TEST_F(OCDateTimeFormatTest, HoldsNothing) {
    EXPECT_EQ(sizeof(OCDateTimeFormat), 8U);
    EXPECT_EQ(sizeof(OCDateTimeFormatRfc1123), 8U);
    EXPECT_EQ(sizeof(OCDateTimeFormatMilitary), 8U);
    EXPECT_EQ(sizeof(OCDateTimeFormatAsn1), 8U);
    EXPECT_EQ(sizeof(OCDateTimeFormatAsn1Generalized), 8U);
    EXPECT_EQ(sizeof(OCDateTimeFormatAsn1Utc), 8U);
}

TEST_F(OCDateTimeFormatTest, FormsATreeOfClasses) {
    static_assert(std::is_base_of_v<OCObject, OCDateTimeFormat>);
    static_assert(std::is_abstract_v<OCDateTimeFormat> && std::is_abstract_v<OCDateTimeFormatAsn1>);
    static_assert(std::is_base_of_v<OCDateTimeFormat, OCDateTimeFormatRfc1123>);
    static_assert(std::is_base_of_v<OCDateTimeFormat, OCDateTimeFormatMilitary>);
    static_assert(std::is_base_of_v<OCDateTimeFormat, OCDateTimeFormatAsn1>);
    static_assert(std::is_base_of_v<OCDateTimeFormatAsn1, OCDateTimeFormatAsn1Generalized>);
    static_assert(std::is_base_of_v<OCDateTimeFormatAsn1, OCDateTimeFormatAsn1Utc>);
    static_assert(!std::is_nothrow_destructible_v<OCDateTimeFormat>);
    static_assert(std::is_nothrow_destructible_v<OCDateTimeFormatRfc1123>);
}

TEST_F(OCDateTimeFormatTest, FormatIsTheThirdSlotAndTheAsn1YearTheFourth) {
    EXPECT_EQ(slots::slotOf(&OCDateTimeFormat::format), 2U);
    EXPECT_EQ(slots::slotCount<OCDateTimeFormat>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeFormatRfc1123>(), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeFormatMilitary>(), 3U);
    EXPECT_EQ(slots::slotOf(&OCDateTimeFormatAsn1::formatYear), 3U);
    EXPECT_EQ(slots::slotCount<OCDateTimeFormatAsn1>(), 4U);
    EXPECT_EQ(slots::slotCount<OCDateTimeFormatAsn1Generalized>(), 4U);
    EXPECT_EQ(slots::slotCount<OCDateTimeFormatAsn1Utc>(), 4U);
}

TEST_F(OCDateTimeFormatTest, CanBeUsedAndDeletedThroughItsBase) {
    OCDateTimeFormat* const format = new OCDateTimeFormatMilitary(military);
    EXPECT_EQ(standard(format->format(value)), "2016-01-02 03:04:05 ");
    delete format;
}

TEST_F(OCDateTimeFormatTest, WritesEachForm) {
    EXPECT_EQ(standard(rfc1123.format(value)), "Sat, 02 Jan 2016 03:04:05 GMT");
    EXPECT_EQ(standard(rfc1123.format(make(1994, 11, 6, 8, 49, 37))),
              "Sun, 06 Nov 1994 08:49:37 GMT");
    EXPECT_EQ(standard(military.format(value)), "2016-01-02 03:04:05 ");
    EXPECT_EQ(standard(generalized.format(value)), "20160102030405Z");
    EXPECT_EQ(standard(utc.format(value)), "160102030405Z");
}

TEST_F(OCDateTimeFormatTest, Rfc1123OffersItsPieces) {
    EXPECT_EQ(standard(rfc1123.formatDayOfWeek(value)), "Sat, ");
    EXPECT_EQ(standard(rfc1123.formatDayOfMonth(value)), "02 ");
    EXPECT_EQ(standard(rfc1123.formatMonth(value)), "Jan ");
    EXPECT_EQ(standard(rfc1123.formatYear(value)), "2016 ");
    EXPECT_EQ(standard(rfc1123.formatHour(value)), "03:");
    EXPECT_EQ(standard(rfc1123.formatMinute(value)), "04:");
    EXPECT_EQ(standard(rfc1123.formatSecond(value)), "05 ");
    EXPECT_EQ(standard(rfc1123.formatZone(value)), "GMT");
}

TEST_F(OCDateTimeFormatTest, MilitaryOffersItsPieces) {
    EXPECT_EQ(standard(military.formatYear(value)), "2016-");
    EXPECT_EQ(standard(military.formatMonth(value)), "01-");
    EXPECT_EQ(standard(military.formatDayOfMonth(value)), "02 ");
    EXPECT_EQ(standard(military.formatHour(value)), "03:");
    EXPECT_EQ(standard(military.formatMinute(value)), "04:");
    EXPECT_EQ(standard(military.formatSecond(value)), "05 ");
}

TEST_F(OCDateTimeFormatTest, Asn1OffersItsPieces) {
    EXPECT_EQ(standard(generalized.formatYear(value)), "2016");
    EXPECT_EQ(standard(utc.formatYear(value)), "16");
    const OCDateTimeFormatAsn1& either = generalized;
    EXPECT_EQ(standard(either.formatMonth(value)), "01");
    EXPECT_EQ(standard(either.formatDay(value)), "02");
    EXPECT_EQ(standard(either.formatHour(value)), "03");
    EXPECT_EQ(standard(either.formatMinute(value)), "04");
    EXPECT_EQ(standard(either.formatSecond(value)), "05");
    EXPECT_EQ(standard(either.formatZone(value)), "Z");
}

TEST_F(OCDateTimeFormatTest, NamesTheDaysOfTheWeek) {
    const char* const names[] = {"Sun, ", "Mon, ", "Tue, ", "Wed, ", "Thu, ", "Fri, ", "Sat, "};
    for (int day = 0; day < 7; ++day)
        EXPECT_EQ(standard(rfc1123.formatDayOfWeek(make(2016, 1, 3 + day, 12, 0, 0))), names[day]);
}

TEST_F(OCDateTimeFormatTest, NamesTheMonths) {
    const char* const names[] = {"Jan ", "Feb ", "Mar ", "Apr ", "May ", "Jun ",
                                 "Jul ", "Aug ", "Sep ", "Oct ", "Nov ", "Dec "};
    for (int month = 1; month <= 12; ++month)
        EXPECT_EQ(standard(rfc1123.formatMonth(make(2016, month, 1, 0, 0, 0))), names[month - 1]);
}

TEST_F(OCDateTimeFormatTest, AMonthThatDoesNotExistIsALoneSpace) {
    for (int month : {0, 13, 65535})
        EXPECT_EQ(standard(rfc1123.formatMonth(make(2016, month, 1, 0, 0, 0))), " ") << month;
    EXPECT_EQ(standard(rfc1123.format(make(2016, 13, 2, 3, 4, 5))), "Mon, 02  2016 03:04:05 GMT");
    EXPECT_EQ(standard(rfc1123.format(make(2016, 0, 2, 3, 4, 5))), "Wed, 02  2016 03:04:05 GMT");
}

TEST_F(OCDateTimeFormatTest, TheYearLosesWhatDoesNotFitItsWidth) {
    struct {
        int year;
        const char* four;
        const char* two;
    } const cases[] = {{0, "0000", "00"},     {5, "0005", "05"},     {99, "0099", "99"},
                       {100, "0100", "00"},   {999, "0999", "99"},   {2016, "2016", "16"},
                       {9999, "9999", "99"},  {10000, "0000", "00"}, {12016, "2016", "16"},
                       {65535, "5535", "35"}, {10005, "0005", "05"}};
    for (const auto& one : cases) {
        const OCDateTime date = make(one.year, 1, 2, 3, 4, 5);
        const std::string four = one.four;
        EXPECT_EQ(standard(rfc1123.formatYear(date)), four + " ");
        EXPECT_EQ(standard(military.formatYear(date)), four + "-");
        EXPECT_EQ(standard(generalized.formatYear(date)), four);
        EXPECT_EQ(standard(utc.formatYear(date)), one.two);
        EXPECT_EQ(standard(military.format(date)), four + "-01-02 03:04:05 ");
        EXPECT_EQ(standard(generalized.format(date)), four + "0102030405Z");
        EXPECT_EQ(standard(utc.format(date)), one.two + std::string("0102030405Z"));
        const std::string whole = standard(rfc1123.format(date));
        EXPECT_EQ(whole.substr(3), ", 02 Jan " + four + " 03:04:05 GMT");
    }
}

TEST_F(OCDateTimeFormatTest, ANumberThatIsWiderThanItsFieldIsWrittenWhole) {
    struct {
        int number;
        const char* text;
    } const cases[] = {{0, "00"},      {9, "09"},        {10, "10"},      {99, "99"},
                       {100, "100"},   {123, "123"},     {999, "999"},    {1000, "1000"},
                       {9999, "9999"}, {10000, "10000"}, {65535, "65535"}};
    for (const auto& one : cases) {
        const OCDateTime odd =
            make(2016, one.number, one.number, one.number, one.number, one.number);
        const std::string n = one.text;
        EXPECT_EQ(standard(rfc1123.formatDayOfMonth(odd)), n + " ");
        EXPECT_EQ(standard(rfc1123.formatHour(odd)), n + ":");
        EXPECT_EQ(standard(rfc1123.formatMinute(odd)), n + ":");
        EXPECT_EQ(standard(rfc1123.formatSecond(odd)), n + " ");
        EXPECT_EQ(standard(military.formatMonth(odd)), n + "-");
        EXPECT_EQ(standard(military.formatDayOfMonth(odd)), n + " ");
        EXPECT_EQ(standard(military.formatHour(odd)), n + ":");
        EXPECT_EQ(standard(military.formatMinute(odd)), n + ":");
        EXPECT_EQ(standard(military.formatSecond(odd)), n + " ");
        EXPECT_EQ(standard(utc.formatMonth(odd)), n);
        EXPECT_EQ(standard(utc.formatDay(odd)), n);
        EXPECT_EQ(standard(utc.formatHour(odd)), n);
        EXPECT_EQ(standard(utc.formatMinute(odd)), n);
        EXPECT_EQ(standard(utc.formatSecond(odd)), n);
        EXPECT_EQ(standard(military.format(odd)),
                  "2016-" + n + "-" + n + " " + n + ":" + n + ":" + n + " ");
        EXPECT_EQ(standard(generalized.format(odd)), "2016" + n + n + n + n + n + "Z");
        const OCDateTime date = make(2016, 1, one.number, one.number, one.number, one.number);
        EXPECT_EQ(standard(rfc1123.format(date)).substr(3),
                  ", " + n + " Jan 2016 " + n + ":" + n + ":" + n + " GMT");
    }
}

TEST_F(OCDateTimeFormatTest, TheDayOfTheWeekIsThatOfTheNormalisedValue) {
    EXPECT_EQ(standard(rfc1123.format(make(2016, 2, 30, 0, 0, 0))),
              "Tue, 30 Feb 2016 00:00:00 GMT");
    EXPECT_EQ(standard(rfc1123.format(make(2016, 1, 2, 24, 0, 0))),
              "Sun, 02 Jan 2016 24:00:00 GMT");
    EXPECT_EQ(calls->mktime.calls, 2U);
    EXPECT_EQ(calls->lastIsdst, -1);
}

TEST_F(OCDateTimeFormatTest, TheDayOfTheWeekIsThatOfTheLocalTime) {
    // At the start of this day the clock goes from 00:00 to 01:00.
    TimeZoneScope saoPaulo(zones::saoPaulo);
    const OCDateTime skipped = make(2016, 10, 16, 0, 30, 0);
    const bool before = skipped.exportTimeStructure().tm_mday == 15;
    EXPECT_EQ(standard(rfc1123.format(skipped)),
              std::string(before ? "Sat" : "Sun") + ", 16 Oct 2016 00:30:00 GMT");
}

TEST_F(OCDateTimeFormatTest, TheValueIsNotConverted) {
    for (const char* name : {zones::fixedWest, zones::fixedEast, zones::berlin}) {
        TimeZoneScope scope(name);
        EXPECT_EQ(standard(rfc1123.format(value)), "Sat, 02 Jan 2016 03:04:05 GMT");
        EXPECT_EQ(standard(generalized.format(value)), "20160102030405Z");
    }
}

TEST_F(OCDateTimeFormatTest, OnlyTheDayOfTheWeekCanFail) {
    calls->mktime.fails = true;
    EXPECT_REPRESENT_ERROR(rfc1123.format(value));
    EXPECT_REPRESENT_ERROR(rfc1123.formatDayOfWeek(value));
    EXPECT_EQ(standard(rfc1123.formatDayOfMonth(value)), "02 ");
    EXPECT_EQ(standard(rfc1123.formatMonth(value)), "Jan ");
    EXPECT_EQ(standard(military.format(value)), "2016-01-02 03:04:05 ");
    EXPECT_EQ(standard(generalized.format(value)), "20160102030405Z");
    EXPECT_EQ(standard(utc.format(value)), "160102030405Z");
    EXPECT_EQ(calls->mktime.calls, 2U);
}

TEST_F(OCDateTimeFormatTest, TheSecondBefore1970HasNoDayOfTheWeek) {
    EXPECT_REPRESENT_ERROR(rfc1123.format(make(1969, 12, 31, 23, 59, 59)));
    EXPECT_EQ(standard(rfc1123.format(make(1969, 12, 31, 23, 59, 58))),
              "Wed, 31 Dec 1969 23:59:58 GMT");
}

TEST_F(OCDateTimeFormatTest, ADayOfTheWeekThatDoesNotExistHasNoName) {
    for (int day : {-1, 7, 1000}) {
        calls->forcedDayOfWeek = day;
        EXPECT_EQ(standard(rfc1123.formatDayOfWeek(value)), ", ") << day;
    }
}

TEST_F(OCDateTimeFormatTest, ADerivedAsn1FormWritesItsOwnYear) {
    class LongYear : public OCDateTimeFormatAsn1 {
    public:
        OCAnsiString formatYear(const OCDateTime& date) const override {
            return date.year == 0 ? OCAnsiString() : OCAnsiString("+002016");
        }
    };
    EXPECT_EQ(standard(LongYear().format(value)), "+0020160102030405Z");
    EXPECT_EQ(standard(LongYear().format(OCDateTime())), "0000000000Z");
}

TEST_F(OCDateTimeFormatTest, TakesNoMemory) {
    standard(rfc1123.format(value));
    const OCDateTime widest = make(65535, 12, 65535, 65535, 65535, 65535);
    const unsigned long before = fault::heapRecord().requests;
    rfc1123.format(widest);
    military.format(widest);
    generalized.format(widest);
    utc.format(widest);
    EXPECT_EQ(fault::heapRecord().requests, before);
}

// The day of the week by counting days, independent of the C library.
int dayOfWeek(int year, int month, int day) {
    static const int offsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    if (month < 3)
        --year;
    return (year + year / 4 - year / 100 + year / 400 + offsets[month - 1] + day) % 7;
}

TEST_F(OCDateTimeFormatTest, RandomDatesAgreeWithPrintfAndReadBack) {
    const unsigned seed = 1994;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    static const char* const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto pick = [&random](int from, int to) {
        return std::uniform_int_distribution<int>(from, to)(random);
    };
    for (const char* name : {zones::utc, zones::fixedEast, zones::berlin}) {
        TimeZoneScope scope(name);
        for (int i = 0; i < 3000; ++i) {
            const OCDateTime date = make(pick(1, 9999), pick(1, 12), pick(1, 28), pick(4, 23),
                                         pick(0, 59), pick(0, 59));
            char expected[64];
            snprintf(expected, sizeof expected, "%s, %02d %s %04d %02d:%02d:%02d GMT",
                     days[dayOfWeek(date.year, date.month, date.day)], date.day,
                     months[date.month - 1], date.year, date.hour, date.minute, date.second);
            ASSERT_EQ(formatted<OCDateTimeFormatRfc1123>(date), expected);
            ASSERT_EQ(formatted<OCDateTimeFormatMilitary>(date), show(date) + " ");
            OCDateTime back;
            OCDateTimeParserRfc1123(back, rfc1123.format(date)).parse();
            ASSERT_EQ(show(back), show(date));
            OCDateTimeParserCookie(back = OCDateTime(), rfc1123.format(date)).parse();
            ASSERT_EQ(show(back), show(date));
            OCDateTimeParserMilitary(back = OCDateTime(), military.format(date)).parse();
            ASSERT_EQ(show(back), show(date));
            OCDateTimeParserAsn1Generalized(back = OCDateTime(), generalized.format(date)).parse();
            ASSERT_EQ(show(back), show(date));
            OCDateTimeParserAsn1Utc(back = OCDateTime(), utc.format(date)).parse();
            ASSERT_EQ(show(back) == show(date), date.year >= 1950 && date.year <= 2049);
        }
    }
}

TEST_F(OCDateTimeFormatTest, UtcTimeReadsBackFrom1950To2049) {
    for (int year : {1949, 1950, 1999, 2000, 2016, 2049, 2050}) {
        const OCDateTime date = make(year, 1, 2, 3, 4, 5);
        OCDateTime back;
        OCDateTimeParserAsn1Utc(back, utc.format(date)).parse();
        EXPECT_EQ(back == date, year >= 1950 && year <= 2049) << year;
    }
}

} // namespace
