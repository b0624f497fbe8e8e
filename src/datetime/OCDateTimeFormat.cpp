#include "OCDateTimeFormat.h"

#include <cstring>

namespace {

// No text is longer: names, separators, a year of four digits and five numbers of five. A string of
// this length needs no memory.
constexpr unsigned long longestText = 63;

struct DigitPairs {
    char text[100][2] = {};

    constexpr DigitPairs() {
        for (unsigned int i = 0; i < 100; ++i) {
            text[i][0] = static_cast<char>('0' + i / 10);
            text[i][1] = static_cast<char>('0' + i % 10);
        }
    }
};

constexpr DigitPairs pairs;

// Each of the following writes to the place given and returns the place behind what it wrote, so
// that the place stays in a register.

char* putCharacter(char* to, char c) {
    *to = c;
    return to + 1;
}

char* putName(char* to, const char* threeLetters) {
    memcpy(to, threeLetters, 3);
    return to + 3;
}

char* putPair(char* to, unsigned int value) {
    memcpy(to, pairs.text[value], 2);
    return to + 2;
}

// A number of three to five digits.
[[gnu::noinline]] char* putWide(char* to, unsigned int value) {
    if (value > 9999)
        to = putCharacter(to, static_cast<char>('0' + value / 10000));
    if (value > 999)
        to = putPair(to, value / 100 % 100);
    else
        to = putCharacter(to, static_cast<char>('0' + value / 100));
    return putPair(to, value % 100);
}

// At least two digits.
char* putTwo(char* to, unsigned int value) {
    return __builtin_expect(value > 99, 0) ? putWide(to, value) : putPair(to, value);
}

char* putTwo(char* to, unsigned int value, char separator) {
    return putCharacter(putTwo(to, value), separator);
}

// The last four digits.
char* putFour(char* to, unsigned int value) {
    return putPair(putPair(to, value / 100 % 100), value % 100);
}

// The pieces that need more than that, each with what follows it.

char* putDayOfWeek(char* to, const OCDateTime& value) {
    static constexpr char names[] = "SunMonTueWedThuFriSat";
    const long day = value.exportTimeStructure().tm_wday;
    if (day >= 0 && day <= 6)
        to = putName(to, names + 3 * day);
    return putCharacter(putCharacter(to, ','), ' ');
}

char* putMonthName(char* to, const OCDateTime& value) {
    static constexpr char names[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
    if (value.month >= 1 && value.month <= 12)
        to = putName(to, names + 3L * (value.month - 1));
    return putCharacter(to, ' ');
}

char* putYear(char* to, const OCDateTime& value, char separator) {
    return putCharacter(putFour(to, value.year), separator);
}

// What the clock shows, in the forms that have separators.
char* putClock(char* to, const OCDateTime& value) {
    to = putTwo(to, value.hour, ':');
    to = putTwo(to, value.minute, ':');
    return putTwo(to, value.second, ' ');
}

// The string that `write` fills from its first character on. The characters are written into the
// string itself: a copy made at the end would wait for them.
template<class Pieces>
OCAnsiString compose(Pieces write) {
    OCAnsiString text;
    text.setLength(longestText);
    char* const start = text.getString();
    text.setLength(static_cast<unsigned long>(write(start) - start));
    return text;
}

} // namespace

OCDateTimeFormat::~OCDateTimeFormat() = default;

OCDateTimeFormatRfc1123::~OCDateTimeFormatRfc1123() noexcept = default;

OCAnsiString OCDateTimeFormatRfc1123::format(const OCDateTime& value) const {
    return compose([&](char* to) {
        to = putDayOfWeek(to, value);
        to = putTwo(to, value.day, ' ');
        to = putMonthName(to, value);
        to = putYear(to, value, ' ');
        to = putClock(to, value);
        return putName(to, "GMT");
    });
}

OCAnsiString OCDateTimeFormatRfc1123::formatDayOfWeek(const OCDateTime& value) const {
    return compose([&](char* to) { return putDayOfWeek(to, value); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatDayOfMonth(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.day, ' '); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatMonth(const OCDateTime& value) const {
    return compose([&](char* to) { return putMonthName(to, value); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatYear(const OCDateTime& value) const {
    return compose([&](char* to) { return putYear(to, value, ' '); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatHour(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.hour, ':'); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatMinute(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.minute, ':'); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatSecond(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.second, ' '); });
}
OCAnsiString OCDateTimeFormatRfc1123::formatZone(const OCDateTime&) const {
    return compose([](char* to) { return putName(to, "GMT"); });
}

OCDateTimeFormatMilitary::~OCDateTimeFormatMilitary() noexcept = default;

OCAnsiString OCDateTimeFormatMilitary::format(const OCDateTime& value) const {
    return compose([&](char* to) {
        to = putYear(to, value, '-');
        to = putTwo(to, value.month, '-');
        to = putTwo(to, value.day, ' ');
        return putClock(to, value);
    });
}

OCAnsiString OCDateTimeFormatMilitary::formatYear(const OCDateTime& value) const {
    return compose([&](char* to) { return putYear(to, value, '-'); });
}
OCAnsiString OCDateTimeFormatMilitary::formatMonth(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.month, '-'); });
}
OCAnsiString OCDateTimeFormatMilitary::formatDayOfMonth(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.day, ' '); });
}
OCAnsiString OCDateTimeFormatMilitary::formatHour(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.hour, ':'); });
}
OCAnsiString OCDateTimeFormatMilitary::formatMinute(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.minute, ':'); });
}
OCAnsiString OCDateTimeFormatMilitary::formatSecond(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.second, ' '); });
}

OCDateTimeFormatAsn1::~OCDateTimeFormatAsn1() = default;

OCAnsiString OCDateTimeFormatAsn1::format(const OCDateTime& value) const {
    OCAnsiString text = formatYear(value);
    text += compose([&](char* to) {
        to = putTwo(to, value.month);
        to = putTwo(to, value.day);
        to = putTwo(to, value.hour);
        to = putTwo(to, value.minute);
        to = putTwo(to, value.second);
        return putCharacter(to, 'Z');
    });
    return text;
}

OCAnsiString OCDateTimeFormatAsn1::formatMonth(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.month); });
}
OCAnsiString OCDateTimeFormatAsn1::formatDay(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.day); });
}
OCAnsiString OCDateTimeFormatAsn1::formatHour(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.hour); });
}
OCAnsiString OCDateTimeFormatAsn1::formatMinute(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.minute); });
}
OCAnsiString OCDateTimeFormatAsn1::formatSecond(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.second); });
}
OCAnsiString OCDateTimeFormatAsn1::formatZone(const OCDateTime&) const {
    return compose([](char* to) { return putCharacter(to, 'Z'); });
}

OCDateTimeFormatAsn1Generalized::~OCDateTimeFormatAsn1Generalized() noexcept = default;

OCAnsiString OCDateTimeFormatAsn1Generalized::formatYear(const OCDateTime& value) const {
    return compose([&](char* to) { return putFour(to, value.year); });
}

OCDateTimeFormatAsn1Utc::~OCDateTimeFormatAsn1Utc() noexcept = default;

OCAnsiString OCDateTimeFormatAsn1Utc::formatYear(const OCDateTime& value) const {
    return compose([&](char* to) { return putTwo(to, value.year % 100U); });
}
