#include "OCDateTimeFormat.h"

#include <cstring>

namespace {

// The longest text: names, separators, a year of four digits and four fields of five.
constexpr unsigned long longestText = 64;

// Collects a text on the stack, so that the string is made in one step.
class Writer {
public:
    Writer& number(unsigned int value, unsigned long width) {
        char digits[10];
        unsigned long count = 0;
        do {
            digits[count++] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        for (; width > count; --width)
            *end++ = '0';
        while (count > 0)
            *end++ = digits[--count];
        return *this;
    }
    Writer& two(unsigned int value) {
        if (value > 99)
            return number(value, 2);
        *end++ = static_cast<char>('0' + value / 10);
        *end++ = static_cast<char>('0' + value % 10);
        return *this;
    }
    Writer& four(unsigned int value) { return two(value / 100).two(value % 100); }
    Writer& character(char c) {
        *end++ = c;
        return *this;
    }
    Writer& name(const char* threeLetters) {
        memcpy(end, threeLetters, 3);
        end += 3;
        return *this;
    }
    OCAnsiString text() const {
        return OCAnsiString(buffer, static_cast<unsigned long>(end - buffer));
    }

    // The pieces, each with what follows it.
    Writer& dayOfWeek(const OCDateTime& value) {
        static constexpr char names[] = "SunMonTueWedThuFriSat";
        const int day = value.exportTimeStructure().tm_wday;
        if (day >= 0 && day <= 6)
            name(names + 3 * day);
        return character(',').character(' ');
    }
    Writer& monthName(const OCDateTime& value) {
        static constexpr char names[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
        if (value.month >= 1 && value.month <= 12)
            name(names + 3 * (value.month - 1));
        return character(' ');
    }
    Writer& day(const OCDateTime& value) { return two(value.day).character(' '); }
    Writer& year(const OCDateTime& value, char separator) {
        return four(value.year % 10000U).character(separator);
    }
    Writer& month(const OCDateTime& value) { return two(value.month).character('-'); }
    Writer& hour(const OCDateTime& value) { return two(value.hour).character(':'); }
    Writer& minute(const OCDateTime& value) { return two(value.minute).character(':'); }
    Writer& second(const OCDateTime& value) { return two(value.second).character(' '); }
    Writer& zone() { return name("GMT"); }

private:
    char buffer[longestText];
    char* end = buffer;
};

} // namespace

OCDateTimeFormat::~OCDateTimeFormat() = default;

OCDateTimeFormatRfc1123::~OCDateTimeFormatRfc1123() noexcept = default;

OCAnsiString OCDateTimeFormatRfc1123::format(const OCDateTime& value) const {
    return Writer()
        .dayOfWeek(value)
        .day(value)
        .monthName(value)
        .year(value, ' ')
        .hour(value)
        .minute(value)
        .second(value)
        .zone()
        .text();
}

OCAnsiString OCDateTimeFormatRfc1123::formatDayOfWeek(const OCDateTime& value) const {
    return Writer().dayOfWeek(value).text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatDayOfMonth(const OCDateTime& value) const {
    return Writer().day(value).text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatMonth(const OCDateTime& value) const {
    return Writer().monthName(value).text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatYear(const OCDateTime& value) const {
    return Writer().year(value, ' ').text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatHour(const OCDateTime& value) const {
    return Writer().hour(value).text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatMinute(const OCDateTime& value) const {
    return Writer().minute(value).text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatSecond(const OCDateTime& value) const {
    return Writer().second(value).text();
}
OCAnsiString OCDateTimeFormatRfc1123::formatZone(const OCDateTime&) const {
    return Writer().zone().text();
}

OCDateTimeFormatMilitary::~OCDateTimeFormatMilitary() noexcept = default;

OCAnsiString OCDateTimeFormatMilitary::format(const OCDateTime& value) const {
    return Writer()
        .year(value, '-')
        .month(value)
        .day(value)
        .hour(value)
        .minute(value)
        .second(value)
        .text();
}

OCAnsiString OCDateTimeFormatMilitary::formatYear(const OCDateTime& value) const {
    return Writer().year(value, '-').text();
}
OCAnsiString OCDateTimeFormatMilitary::formatMonth(const OCDateTime& value) const {
    return Writer().month(value).text();
}
OCAnsiString OCDateTimeFormatMilitary::formatDayOfMonth(const OCDateTime& value) const {
    return Writer().day(value).text();
}
OCAnsiString OCDateTimeFormatMilitary::formatHour(const OCDateTime& value) const {
    return Writer().hour(value).text();
}
OCAnsiString OCDateTimeFormatMilitary::formatMinute(const OCDateTime& value) const {
    return Writer().minute(value).text();
}
OCAnsiString OCDateTimeFormatMilitary::formatSecond(const OCDateTime& value) const {
    return Writer().second(value).text();
}

OCDateTimeFormatAsn1::~OCDateTimeFormatAsn1() = default;

OCAnsiString OCDateTimeFormatAsn1::format(const OCDateTime& value) const {
    OCAnsiString text = formatYear(value);
    text += Writer()
                .two(value.month)
                .two(value.day)
                .two(value.hour)
                .two(value.minute)
                .two(value.second)
                .character('Z')
                .text();
    return text;
}

OCAnsiString OCDateTimeFormatAsn1::formatMonth(const OCDateTime& value) const {
    return Writer().two(value.month).text();
}
OCAnsiString OCDateTimeFormatAsn1::formatDay(const OCDateTime& value) const {
    return Writer().two(value.day).text();
}
OCAnsiString OCDateTimeFormatAsn1::formatHour(const OCDateTime& value) const {
    return Writer().two(value.hour).text();
}
OCAnsiString OCDateTimeFormatAsn1::formatMinute(const OCDateTime& value) const {
    return Writer().two(value.minute).text();
}
OCAnsiString OCDateTimeFormatAsn1::formatSecond(const OCDateTime& value) const {
    return Writer().two(value.second).text();
}
OCAnsiString OCDateTimeFormatAsn1::formatZone(const OCDateTime&) const {
    return Writer().character('Z').text();
}

OCDateTimeFormatAsn1Generalized::~OCDateTimeFormatAsn1Generalized() noexcept = default;

OCAnsiString OCDateTimeFormatAsn1Generalized::formatYear(const OCDateTime& value) const {
    return Writer().four(value.year % 10000U).text();
}

OCDateTimeFormatAsn1Utc::~OCDateTimeFormatAsn1Utc() noexcept = default;

OCAnsiString OCDateTimeFormatAsn1Utc::formatYear(const OCDateTime& value) const {
    return Writer().two(value.year % 100U).text();
}
