#include "OCDateTime.h"
#include "OCDateTimeParser.h"

#include "support/DateTimes.h"
#include "support/Exceptions.h"
#include "support/Slots.h"
#include "support/TimeFaults.h"

#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
#include <type_traits>

namespace {

constexpr auto make = makeDateTime;

// 2016-01-02 03:04:05 UTC
constexpr time_t someMoment = 1451703845;

class OCDateTimeTest : public testing::Test {
protected:
    TimeZoneScope zone{zones::utc};
    TimeCallsScope calls;
};

// Layout

TEST_F(OCDateTimeTest, HoldsSixShortFieldsInAlphabeticalOrderBehindTheTablePointer) {
    EXPECT_EQ(sizeof(OCDateTime), 24U);
    OCDateTime value;
    const char* const start = reinterpret_cast<const char*>(&value);
    EXPECT_EQ(reinterpret_cast<const char*>(&value.day) - start, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&value.hour) - start, 10);
    EXPECT_EQ(reinterpret_cast<const char*>(&value.minute) - start, 12);
    EXPECT_EQ(reinterpret_cast<const char*>(&value.month) - start, 14);
    EXPECT_EQ(reinterpret_cast<const char*>(&value.second) - start, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&value.year) - start, 18);
    static_assert(std::is_same_v<decltype(value.year), unsigned short>);
    static_assert(std::is_base_of_v<OCObject, OCDateTime>);
}

TEST_F(OCDateTimeTest, EnumerationsAreOf32BitsWithFixedValues) {
    static_assert(sizeof(OEDateTimeValue) == 4 && sizeof(OEDateTimeFormat) == 4);
    static_assert(DateTimeValueLocal == 0 && DateTimeValueSystem == 1);
    static_assert(DateTimeFormatAsn1Generalized == 0 && DateTimeFormatAsn1Utc == 1);
    static_assert(DateTimeFormatCookie == 2 && DateTimeFormatMilitary == 3);
    static_assert(DateTimeFormatRfc1123 == 4);
}

TEST_F(OCDateTimeTest, TheDestructorsAreItsFirstTwoVirtualOperations) {
    struct Derived : OCDateTime {
        int& destroyed;
        explicit Derived(int& counter) : destroyed(counter) {}
        ~Derived() noexcept override { ++destroyed; }
    };
    EXPECT_EQ(slots::slotCount<OCDateTime>(), 2U);
    int destroyed = 0;
    OCDateTime* const value = new Derived(destroyed);
    void** const table = *reinterpret_cast<void***>(value);
    reinterpret_cast<void (*)(OCDateTime*)>(table[1])(value); // destroys and gives the memory back
    EXPECT_EQ(destroyed, 1);
    alignas(Derived) char place[sizeof(Derived)];
    OCDateTime* const other = new (place) Derived(destroyed);
    reinterpret_cast<void (*)(OCDateTime*)>((*reinterpret_cast<void***>(other))[0])(other);
    EXPECT_EQ(destroyed, 2);
}

TEST_F(OCDateTimeTest, ExceptionsFormOneFamily) {
    static_assert(std::is_base_of_v<OXAutoException, OXDateTime>);
    static_assert(std::is_base_of_v<OXDateTime, OXDateTime_AcquireError>);
    static_assert(std::is_base_of_v<OXDateTime, OXDateTime_AdjustError>);
    static_assert(std::is_base_of_v<OXDateTime, OXDateTime_ConvertError>);
    static_assert(std::is_base_of_v<OXDateTime, OXDateTime_RepresentError>);
    static_assert(!std::is_default_constructible_v<OXDateTime>);
    EXPECT_EQ(sizeof(OXDateTime_AcquireError), sizeof(OXAutoException));
    EXPECT_EQ(OXDateTime_AcquireError().getDetails().getCount(), 0U);
    EXPECT_EQ(OXDateTime_AdjustError().getDetails().getCount(), 0U);
    EXPECT_EQ(OXDateTime_ConvertError().getDetails().getCount(), 0U);
    EXPECT_EQ(OXDateTime_RepresentError().getDetails().getCount(), 0U);
}

// Construction and assignment

TEST_F(OCDateTimeTest, StartsAsTheInvalidDateZero) {
    alignas(OCDateTime) unsigned char place[sizeof(OCDateTime)];
    memset(place, 0xAA, sizeof place);
    const OCDateTime& value = *new (place) OCDateTime;
    EXPECT_EQ(show(value), "0000-00-00 00:00:00");
}

TEST_F(OCDateTimeTest, TakesTheLocalTimeForValue0) {
    TimeZoneScope west(zones::fixedWest);
    calls->clockStands = true;
    calls->now = someMoment;
    EXPECT_EQ(show(OCDateTime(DateTimeValueLocal)), "2016-01-01 22:04:05");
    EXPECT_EQ(calls->time.calls, 1U);
    EXPECT_EQ(calls->localtime_r.calls, 1U);
    EXPECT_EQ(calls->gmtime_r.calls, 0U);
    EXPECT_EQ(calls->lastMoment, someMoment);
}

TEST_F(OCDateTimeTest, TakesTheSystemTimeForValue1) {
    TimeZoneScope west(zones::fixedWest);
    calls->clockStands = true;
    calls->now = someMoment;
    EXPECT_EQ(show(OCDateTime(DateTimeValueSystem)), "2016-01-02 03:04:05");
    EXPECT_EQ(calls->time.calls, 1U);
    EXPECT_EQ(calls->gmtime_r.calls, 1U);
    EXPECT_EQ(calls->localtime_r.calls, 0U);
    EXPECT_EQ(calls->lastMoment, someMoment);
}

TEST_F(OCDateTimeTest, TakesNothingForOtherValues) {
    for (int other : {2, -1, 77}) {
        EXPECT_EQ(show(OCDateTime(static_cast<OEDateTimeValue>(other))), "0000-00-00 00:00:00");
        OCDateTime value = make(1, 2, 3, 4, 5, 6);
        value.assign(static_cast<OEDateTimeValue>(other));
        EXPECT_EQ(show(value), "0001-02-03 04:05:06");
    }
    EXPECT_EQ(calls->time.calls, 0U);
}

TEST_F(OCDateTimeTest, AssignmentTakesTheCurrentTimeToo) {
    TimeZoneScope east(zones::fixedEast);
    calls->clockStands = true;
    calls->now = someMoment;
    OCDateTime value = make(1, 2, 3, 4, 5, 6);
    EXPECT_EQ(&value.assign(DateTimeValueLocal), &value);
    EXPECT_EQ(show(value), "2016-01-02 08:34:05");
    value.assign(DateTimeValueSystem);
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
    value.assignCurrentLocalTime();
    EXPECT_EQ(show(value), "2016-01-02 08:34:05");
    value.assignCurrentSystemTime();
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
}

TEST_F(OCDateTimeTest, CopiesTheSixFields) {
    const OCDateTime original = make(2016, 13, 32, 24, 60, 61);
    const OCDateTime copy(original);
    EXPECT_EQ(show(copy), "2016-13-32 24:60:61");
    OCDateTime assigned;
    assigned = original;
    EXPECT_EQ(show(assigned), "2016-13-32 24:60:61");
    OCDateTime third;
    EXPECT_EQ(&third.assign(original), &third);
    EXPECT_EQ(show(third), "2016-13-32 24:60:61");
    third = *&third;
    EXPECT_EQ(show(third), "2016-13-32 24:60:61");
}

TEST_F(OCDateTimeTest, AFailingClockIsAnAcquireError) {
    calls->time.fails = true;
    OCDateTime value = make(1, 2, 3, 4, 5, 6);
    EXPECT_EXCEPTION(value.assignCurrentLocalTime(), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EXCEPTION(value.assignCurrentSystemTime(), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EXCEPTION(value.assign(DateTimeValueLocal), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EXCEPTION(value.assign(DateTimeValueSystem), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EXCEPTION(OCDateTime now(DateTimeValueLocal), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EQ(show(value), "0001-02-03 04:05:06");
    EXPECT_EQ(calls->localtime_r.calls + calls->gmtime_r.calls, 0U);
}

TEST_F(OCDateTimeTest, AFailingConversionOfTheClockIsAnAcquireError) {
    calls->localtime_r.fails = true;
    calls->gmtime_r.fails = true;
    OCDateTime value = make(1, 2, 3, 4, 5, 6);
    EXPECT_EXCEPTION(value.assignCurrentLocalTime(), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EXCEPTION(value.assignCurrentSystemTime(), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EXCEPTION(OCDateTime now(DateTimeValueSystem), OXDateTime_AcquireError,
                     "Error acquiring current date/time");
    EXPECT_EQ(show(value), "0001-02-03 04:05:06");
    EXPECT_EQ(calls->localtime_r.calls, 1U);
    EXPECT_EQ(calls->gmtime_r.calls, 2U);
}

// Time structures

struct tm structureOf(int year, int month, int day, int hour, int minute, int second) {
    struct tm structure;
    memset(&structure, 0x55, sizeof structure);
    structure.tm_year = year;
    structure.tm_mon = month;
    structure.tm_mday = day;
    structure.tm_hour = hour;
    structure.tm_min = minute;
    structure.tm_sec = second;
    return structure;
}

TEST_F(OCDateTimeTest, ImportsTheSixComponentsOfATimeStructure) {
    const struct tm structure = structureOf(116, 0, 2, 3, 4, 5);
    EXPECT_EQ(show(OCDateTime(structure)), "2016-01-02 03:04:05");
    OCDateTime assigned = make(1, 2, 3, 4, 5, 6);
    EXPECT_EQ(&(assigned = structure), &assigned);
    EXPECT_EQ(show(assigned), "2016-01-02 03:04:05");
    OCDateTime imported = make(1, 2, 3, 4, 5, 6);
    imported.importTimeStructure(structure);
    EXPECT_EQ(show(imported), "2016-01-02 03:04:05");
}

TEST_F(OCDateTimeTest, ImportKeepsTheLow16BitsOfEachComponent) {
    const OCDateTime wide(structureOf(65536 + 116, 65536, 65538, -1, -65536, INT_MAX));
    EXPECT_EQ(wide.year, 2016);
    EXPECT_EQ(wide.month, 1);
    EXPECT_EQ(wide.day, 2);
    EXPECT_EQ(wide.hour, 65535);
    EXPECT_EQ(wide.minute, 0);
    EXPECT_EQ(wide.second, 65535);
    const OCDateTime extreme(structureOf(INT_MAX, INT_MAX, INT_MIN, INT_MIN, INT_MAX, 60));
    EXPECT_EQ(extreme.year, 1899);
    EXPECT_EQ(extreme.month, 0);
    EXPECT_EQ(extreme.day, 0);
}

TEST_F(OCDateTimeTest, MakesATimeStructureWithoutNormalising) {
    const struct tm structure = make(2016, 13, 32, 24, 60, 61).makeTimeStructure();
    EXPECT_EQ(structure.tm_year, 116);
    EXPECT_EQ(structure.tm_mon, 12);
    EXPECT_EQ(structure.tm_mday, 32);
    EXPECT_EQ(structure.tm_hour, 24);
    EXPECT_EQ(structure.tm_min, 60);
    EXPECT_EQ(structure.tm_sec, 61);
    EXPECT_EQ(structure.tm_isdst, -1);
    EXPECT_EQ(structure.tm_wday, 0);
    EXPECT_EQ(structure.tm_yday, 0);
    EXPECT_EQ(structure.tm_gmtoff, 0);
    EXPECT_EQ(structure.tm_zone, nullptr);
    const struct tm zero = OCDateTime().makeTimeStructure();
    EXPECT_EQ(zero.tm_year, -1900);
    EXPECT_EQ(zero.tm_mon, -1);
    EXPECT_EQ(zero.tm_mday, 0);
    EXPECT_EQ(calls->mktime.calls, 0U);
}

TEST_F(OCDateTimeTest, ExportNormalisesAndFillsInTheDay) {
    const OCDateTime value = make(2016, 13, 1, 24, 60, 61);
    const struct tm structure = value.exportTimeStructure();
    EXPECT_EQ(structure.tm_year, 117);
    EXPECT_EQ(structure.tm_mon, 0);
    EXPECT_EQ(structure.tm_mday, 2);
    EXPECT_EQ(structure.tm_hour, 1);
    EXPECT_EQ(structure.tm_min, 1);
    EXPECT_EQ(structure.tm_sec, 1);
    EXPECT_EQ(structure.tm_wday, 1);
    EXPECT_EQ(structure.tm_yday, 1);
    EXPECT_EQ(show(value), "2016-13-01 24:60:61");
    EXPECT_GT(value, make(2016, 12, 31, 23, 59, 59));
    EXPECT_LT(value, make(2017, 1, 1, 0, 0, 0));
    EXPECT_EQ(calls->mktime.calls, 1U);
    EXPECT_EQ(calls->lastIsdst, -1);
}

TEST_F(OCDateTimeTest, ExportInterpretsTheValueAsLocalTime) {
    TimeZoneScope berlin(zones::berlin);
    EXPECT_EQ(make(2016, 7, 1, 12, 0, 0).exportTimeStructure().tm_isdst, 1);
    EXPECT_EQ(make(2016, 1, 1, 12, 0, 0).exportTimeStructure().tm_isdst, 0);
    // The clock went from 02:00 to 03:00.
    const struct tm moved = make(2016, 3, 27, 2, 30, 0).exportTimeStructure();
    EXPECT_NE(moved.tm_hour, 2);
    EXPECT_EQ(moved.tm_min, 30);
}

TEST_F(OCDateTimeTest, AFailingExportIsARepresentError) {
    const OCDateTime value = make(2016, 1, 2, 3, 4, 5);
    calls->mktime.fails = true;
    EXPECT_REPRESENT_ERROR(value.exportTimeStructure());
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
}

TEST_F(OCDateTimeTest, TheSecondBefore1970CountsAsFailure) {
    EXPECT_REPRESENT_ERROR(make(1969, 12, 31, 23, 59, 59).exportTimeStructure());
    EXPECT_EQ(make(1969, 12, 31, 23, 59, 58).exportTimeStructure().tm_wday, 3);
    EXPECT_EQ(make(1970, 1, 1, 0, 0, 0).exportTimeStructure().tm_wday, 4);
    TimeZoneScope west(zones::fixedWest);
    EXPECT_REPRESENT_ERROR(make(1969, 12, 31, 18, 59, 59).exportTimeStructure());
    EXPECT_EQ(make(1969, 12, 31, 23, 59, 59).exportTimeStructure().tm_wday, 3);
}

// Conversions

struct ZonePair {
    const char* zone;
    OCDateTime local;
    OCDateTime system;
};

TEST_F(OCDateTimeTest, ConvertsBetweenLocalAndSystemTime) {
    const ZonePair pairs[] = {
        {zones::utc, make(2016, 1, 2, 3, 4, 5), make(2016, 1, 2, 3, 4, 5)},
        {zones::fixedWest, make(2016, 1, 1, 22, 4, 5), make(2016, 1, 2, 3, 4, 5)},
        {zones::fixedWest, make(2016, 7, 1, 0, 0, 0), make(2016, 7, 1, 5, 0, 0)},
        {zones::fixedEast, make(2016, 3, 1, 1, 0, 0), make(2016, 2, 29, 19, 30, 0)},
        {zones::berlin, make(2016, 1, 1, 0, 30, 0), make(2015, 12, 31, 23, 30, 0)},
        {zones::berlin, make(2016, 7, 1, 0, 30, 0), make(2016, 6, 30, 22, 30, 0)},
        {zones::berlin, make(2016, 3, 27, 1, 59, 59), make(2016, 3, 27, 0, 59, 59)},
        {zones::berlin, make(2016, 3, 27, 3, 0, 0), make(2016, 3, 27, 1, 0, 0)},
        {zones::saoPaulo, make(2016, 10, 15, 23, 59, 59), make(2016, 10, 16, 2, 59, 59)},
        {zones::saoPaulo, make(2016, 10, 16, 1, 0, 0), make(2016, 10, 16, 3, 0, 0)},
    };
    for (const ZonePair& pair : pairs) {
        TimeZoneScope scope(pair.zone);
        OCDateTime value(pair.local);
        value.convertLocalToSystem();
        EXPECT_EQ(show(value), show(pair.system)) << pair.zone << ' ' << show(pair.local);
        value.convertSystemToLocal();
        EXPECT_EQ(show(value), show(pair.local)) << pair.zone << ' ' << show(pair.system);
    }
}

TEST_F(OCDateTimeTest, ConversionLeavesDaylightSavingToTheSystem) {
    TimeZoneScope berlin(zones::berlin);
    OCDateTime value = make(2016, 7, 1, 12, 0, 0);
    value.convertLocalToSystem();
    EXPECT_EQ(calls->lastIsdst, -1);
    EXPECT_EQ(calls->timelocal.calls, 1U);
    EXPECT_EQ(calls->gmtime_r.calls, 1U);
    EXPECT_EQ(calls->mktime.calls, 0U);
    value.convertSystemToLocal();
    EXPECT_EQ(calls->timegm.calls, 1U);
    EXPECT_EQ(calls->localtime_r.calls, 1U);
    EXPECT_EQ(show(value), "2016-07-01 12:00:00");
}

TEST_F(OCDateTimeTest, TheCurrentSystemTimeConvertsToTheCurrentLocalTime) {
    for (const char* name : {zones::utc, zones::fixedWest, zones::berlin}) {
        TimeZoneScope scope(name);
        OCDateTime system, before, after;
        do { // until all happens within one second
            before = OCDateTime(DateTimeValueLocal);
            system = OCDateTime(DateTimeValueSystem);
            after = OCDateTime(DateTimeValueLocal);
        } while (before != after);
        system.convertSystemToLocal();
        EXPECT_EQ(show(system), show(after)) << name;
        EXPECT_EQ(system, after);
    }
}

TEST_F(OCDateTimeTest, ConversionsCarryFieldsThatAreOutOfRange) {
    OCDateTime value = make(2016, 13, 32, 24, 60, 60);
    value.convertSystemToLocal();
    EXPECT_EQ(show(value), "2017-02-02 01:01:00");
    value = make(2016, 0, 0, 0, 0, 0);
    value.convertLocalToSystem();
    EXPECT_EQ(show(value), "2015-11-30 00:00:00");
}

TEST_F(OCDateTimeTest, EachFailingStepOfAConversionIsAConvertError) {
    const OCDateTime original = make(2016, 1, 2, 3, 4, 5);
    OCDateTime value(original);
    calls->timelocal.fails = true;
    EXPECT_CONVERT_ERROR(value.convertLocalToSystem());
    EXPECT_EQ(calls->gmtime_r.calls, 0U);
    calls->timelocal.fails = false;
    calls->gmtime_r.fails = true;
    EXPECT_CONVERT_ERROR(value.convertLocalToSystem());
    EXPECT_EQ(calls->gmtime_r.calls, 1U);
    calls->timegm.fails = true;
    EXPECT_CONVERT_ERROR(value.convertSystemToLocal());
    EXPECT_EQ(calls->localtime_r.calls, 0U);
    calls->timegm.fails = false;
    calls->localtime_r.fails = true;
    EXPECT_CONVERT_ERROR(value.convertSystemToLocal());
    EXPECT_EQ(calls->localtime_r.calls, 1U);
    EXPECT_EQ(show(value), show(original));
}

TEST_F(OCDateTimeTest, TheSecondBefore1970CannotBeConverted) {
    TimeZoneScope west(zones::fixedWest);
    OCDateTime system = make(1969, 12, 31, 23, 59, 59);
    EXPECT_CONVERT_ERROR(system.convertSystemToLocal());
    EXPECT_EQ(show(system), "1969-12-31 23:59:59");
    OCDateTime local = make(1969, 12, 31, 18, 59, 59);
    EXPECT_CONVERT_ERROR(local.convertLocalToSystem());
    EXPECT_EQ(show(local), "1969-12-31 18:59:59");
}

// Adjustment

TEST_F(OCDateTimeTest, AdjustMovesBySeconds) {
    struct {
        OCDateTime from;
        int seconds;
        const char* to;
    } const cases[] = {
        {make(2016, 2, 28, 12, 0, 0), 86400, "2016-02-29 12:00:00"},
        {make(2015, 2, 28, 12, 0, 0), 86400, "2015-03-01 12:00:00"},
        {make(2016, 1, 1, 0, 0, 0), -1, "2015-12-31 23:59:59"},
        {make(2016, 1, 1, 0, 0, 0), 0, "2016-01-01 00:00:00"},
        {make(2016, 13, 1, 0, 0, 0), 0, "2017-01-01 00:00:00"},
        {make(2016, 12, 31, 23, 59, 60), 0, "2017-01-01 00:00:00"},
        {make(2016, 1, 1, 0, 0, 0), INT_MAX, "2084-01-19 03:14:07"},
        {make(2016, 1, 1, 0, 0, 0), INT_MIN, "1947-12-13 20:45:52"},
        {make(1970, 1, 1, 0, 0, 0), -1, "1969-12-31 23:59:59"},
    };
    for (const auto& one : cases) {
        OCDateTime value(one.from);
        EXPECT_EQ(&value.adjust(one.seconds), &value);
        EXPECT_EQ(show(value), one.to) << show(one.from) << " by " << one.seconds;
    }
}

TEST_F(OCDateTimeTest, AdjustKnowsNoDaylightSavingBetweenOldAndNew) {
    TimeZoneScope berlin(zones::berlin);
    OCDateTime value = make(2016, 3, 26, 12, 0, 0);
    value.adjust(86400);
    EXPECT_EQ(show(value), "2016-03-27 12:00:00");
    value.adjust(-86400);
    EXPECT_EQ(show(value), "2016-03-26 12:00:00");
    value = make(2016, 3, 27, 1, 59, 59);
    value.adjust(1); // into the gap: the result is not normalised
    EXPECT_EQ(show(value), "2016-03-27 02:00:00");
    value = make(2016, 7, 1, 0, 0, 0);
    value.adjust(60);
    EXPECT_EQ(show(value), "2016-07-01 00:01:00");
}

TEST_F(OCDateTimeTest, AdjustMovesAValueOutOfADaylightSavingGapFirst) {
    TimeZoneScope berlin(zones::berlin);
    OCDateTime value = make(2016, 3, 27, 2, 30, 0);
    const OCDateTime normalised(value.exportTimeStructure());
    EXPECT_NE(normalised.hour, 2);
    value.adjust(0);
    EXPECT_EQ(show(value), show(normalised));
    value = make(2016, 3, 27, 2, 30, 0);
    value.adjust(86400);
    EXPECT_EQ(value.day, 28);
    EXPECT_EQ(value.hour, normalised.hour);
}

TEST_F(OCDateTimeTest, EachFailingStepOfAnAdjustmentThrows) {
    OCDateTime value = make(2016, 1, 2, 3, 4, 5);
    calls->mktime.fails = true;
    EXPECT_REPRESENT_ERROR(value.adjust(1));
    EXPECT_EQ(calls->timegm.calls, 0U);
    calls->mktime.fails = false;
    calls->timegm.fails = true;
    EXPECT_EXCEPTION(value.adjust(1), OXDateTime_AdjustError, "Error adjusting date/time");
    EXPECT_EQ(calls->gmtime_r.calls, 0U);
    calls->timegm.fails = false;
    calls->gmtime_r.fails = true;
    EXPECT_EXCEPTION(value.adjust(1), OXDateTime_AdjustError, "Error adjusting date/time");
    EXPECT_EQ(calls->gmtime_r.calls, 1U);
    EXPECT_EQ(calls->lastMoment, someMoment + 1);
    EXPECT_EQ(show(value), "2016-01-02 03:04:05");
}

TEST_F(OCDateTimeTest, TheSecondBefore1970CannotBeAdjusted) {
    TimeZoneScope berlin(zones::berlin);
    OCDateTime value = make(1969, 12, 31, 23, 59, 59); // -3601 as local time, -1 as UTC
    EXPECT_EXCEPTION(value.adjust(1), OXDateTime_AdjustError, "Error adjusting date/time");
    EXPECT_EQ(show(value), "1969-12-31 23:59:59");
    value = make(1970, 1, 1, 0, 59, 59); // -1 as local time
    EXPECT_REPRESENT_ERROR(value.adjust(1));
    EXPECT_EQ(show(value), "1970-01-01 00:59:59");
}

// Comparison

TEST_F(OCDateTimeTest, ComparesByYearMonthDayHourMinuteSecond) {
    const OCDateTime middle = make(2016, 6, 15, 12, 30, 30);
    // Each is larger in one field and smaller in all that count less.
    const OCDateTime larger[] = {
        make(2017, 1, 1, 0, 0, 0),   make(2016, 7, 1, 0, 0, 0),    make(2016, 6, 16, 0, 0, 0),
        make(2016, 6, 15, 13, 0, 0), make(2016, 6, 15, 12, 31, 0), make(2016, 6, 15, 12, 30, 31),
    };
    for (const OCDateTime& other : larger) {
        EXPECT_EQ(middle.compare(other), CompareResultLess) << show(other);
        EXPECT_EQ(other.compare(middle), CompareResultGreater) << show(other);
    }
    EXPECT_EQ(middle.compare(OCDateTime(middle)), CompareResultEqual);
    EXPECT_EQ(make(2016, 2, 1, 0, 0, 0).compare(make(2016, 1, 31, 23, 59, 59)), 1);
    EXPECT_EQ(make(65535, 0, 0, 0, 0, 0).compare(make(1, 0, 0, 0, 0, 0)), 1);
    EXPECT_EQ(calls->mktime.calls + calls->timegm.calls, 0U);
}

TEST_F(OCDateTimeTest, ComparesWithoutNormalising) {
    const OCDateTime midnight = make(2016, 1, 1, 24, 0, 0);
    EXPECT_GT(midnight, make(2016, 1, 1, 23, 59, 59));
    EXPECT_LT(midnight, make(2016, 1, 2, 0, 0, 0));
}

TEST_F(OCDateTimeTest, OperatorsFollowTheComparison) {
    const OCDateTime a = make(2016, 1, 2, 3, 4, 5), b = make(2016, 1, 2, 3, 4, 6), c(a);
    EXPECT_TRUE(a == c && !(a == b));
    EXPECT_TRUE(a != b && !(a != c));
    EXPECT_TRUE(a < b && !(b < a) && !(a < c));
    EXPECT_TRUE(a <= b && !(b <= a) && a <= c);
    EXPECT_TRUE(b > a && !(a > b) && !(a > c));
    EXPECT_TRUE(b >= a && !(a >= b) && a >= c);
}

TEST_F(OCDateTimeTest, ComparisonAgreesWithTheOrderOfTuples) {
    const unsigned seed = 20160102;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    const auto pick = [&random] { return static_cast<unsigned short>(random() % 3); };
    for (int i = 0; i < 20000; ++i) {
        OCDateTime v[2];
        for (OCDateTime& one : v) {
            one.year = pick();
            one.month = pick();
            one.day = pick();
            one.hour = pick();
            one.minute = pick();
            one.second = pick();
        }
        const auto tuple = [](const OCDateTime& one) {
            return std::make_tuple(one.year, one.month, one.day, one.hour, one.minute, one.second);
        };
        const int expected = tuple(v[0]) < tuple(v[1]) ? -1 : tuple(v[1]) < tuple(v[0]) ? 1 : 0;
        ASSERT_EQ(v[0].compare(v[1]), expected) << show(v[0]) << " " << show(v[1]);
    }
}

// Text

TEST_F(OCDateTimeTest, ExportsEachTextForm) {
    const OCDateTime value = make(2016, 1, 2, 3, 4, 5);
    EXPECT_EQ(standard(value.exportText(DateTimeFormatAsn1Generalized)), "20160102030405Z");
    EXPECT_EQ(standard(value.exportText(DateTimeFormatAsn1Utc)), "160102030405Z");
    EXPECT_EQ(standard(value.exportText(DateTimeFormatCookie)), "");
    EXPECT_EQ(standard(value.exportText(DateTimeFormatMilitary)), "2016-01-02 03:04:05 ");
    EXPECT_EQ(standard(value.exportText(DateTimeFormatRfc1123)), "Sat, 02 Jan 2016 03:04:05 GMT");
    EXPECT_EQ(standard(value.exportText(static_cast<OEDateTimeFormat>(5))), "");
    EXPECT_EQ(standard(value.exportText(static_cast<OEDateTimeFormat>(-1))), "");
}

TEST_F(OCDateTimeTest, ExportOfRfc1123FailsWhenTheDayOfTheWeekCannotBeTold) {
    calls->mktime.fails = true;
    const OCDateTime value = make(2016, 1, 2, 3, 4, 5);
    EXPECT_REPRESENT_ERROR(value.exportText(DateTimeFormatRfc1123));
    EXPECT_EQ(standard(value.exportText(DateTimeFormatMilitary)), "2016-01-02 03:04:05 ");
    EXPECT_EQ(standard(value.exportText(DateTimeFormatAsn1Utc)), "160102030405Z");
    EXPECT_EQ(standard(value.exportText(DateTimeFormatAsn1Generalized)), "20160102030405Z");
}

TEST_F(OCDateTimeTest, ImportsEachTextForm) {
    struct {
        OEDateTimeFormat format;
        const char* text;
    } const cases[] = {
        {DateTimeFormatAsn1Generalized, "20160102030405Z"},
        {DateTimeFormatAsn1Utc, "160102030405Z"},
        {DateTimeFormatCookie, "Sat, 02 Jan 2016 03:04:05 GMT"},
        {DateTimeFormatMilitary, "2016-01-02 03:04:05"},
        {DateTimeFormatRfc1123, "Sat, 02 Jan 2016 03:04:05 GMT"},
    };
    for (const auto& one : cases) {
        for (const auto& other : cases) {
            OCDateTime value = make(1, 1, 1, 1, 1, 1);
            if (strcmp(one.text, other.text) == 0) {
                value.importText(other.text, one.format);
                EXPECT_EQ(show(value), "2016-01-02 03:04:05") << one.text;
            } else if (one.format != DateTimeFormatAsn1Generalized &&
                       one.format != DateTimeFormatAsn1Utc) {
                EXPECT_THROW(value.importText(other.text, one.format), OXDateTimeParser_SyntaxError)
                    << one.format << ' ' << other.text;
            }
        }
    }
}

TEST_F(OCDateTimeTest, ImportOfAnUnknownFormChangesNothing) {
    OCDateTime value = make(1, 2, 3, 4, 5, 6);
    value.importText("Sat, 02 Jan 2016 03:04:05 GMT", static_cast<OEDateTimeFormat>(5));
    value.importText("junk", static_cast<OEDateTimeFormat>(-1));
    EXPECT_EQ(show(value), "0001-02-03 04:05:06");
}

TEST_F(OCDateTimeTest, ImportReportsTheTrimmedText) {
    OCDateTime value;
    for (int format = 0; format <= 4; ++format)
        EXPECT_EXCEPTION(value.importText("  junk  ", static_cast<OEDateTimeFormat>(format)),
                         OXDateTimeParser_SyntaxError,
                         "Syntax error parsing date/time string (junk)");
}

} // namespace
