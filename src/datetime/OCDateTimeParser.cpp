#include "OCDateTimeParser.h"

#include <cstring>

namespace {

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= 32;
}

unsigned int digitOf(char c) {
    return static_cast<unsigned char>(c) - static_cast<unsigned int>('0');
}

// Reads the digits up to the first other character and goes there. The value wraps as an unsigned
// int does.
unsigned short readNumber(const char*& position, const char* end) {
    unsigned int value = 0;
    for (; position != end && digitOf(*position) <= 9; ++position)
        value = value * 10 + digitOf(*position);
    return static_cast<unsigned short>(value);
}

// Finds the month of a name by the sum of its second and third letter, which no two share.
struct MonthTable {
    char names[13][4] = {"",    "jan", "feb", "mar", "apr", "may", "jun",
                         "jul", "aug", "sep", "oct", "nov", "dec"};
    unsigned char byLetters[64] = {};

    static constexpr unsigned int key(char second, char third) {
        return (static_cast<unsigned char>(second) + static_cast<unsigned int>(third)) % 64;
    }
    constexpr MonthTable() {
        for (unsigned char month = 1; month <= 12; ++month)
            byLetters[key(names[month][1], names[month][2])] = month;
    }

    // 0 when there is none.
    unsigned short find(const char* name, unsigned long count) const {
        if (count != 3)
            return 0;
        // Setting this bit folds letters, and makes no other byte one of these letters but the
        // capital.
        const char folded[] = {static_cast<char>(name[0] | 32), static_cast<char>(name[1] | 32),
                               static_cast<char>(name[2] | 32)};
        const unsigned char month = byLetters[key(folded[1], folded[2])];
        return memcmp(folded, names[month], 3) == 0 ? month : 0;
    }
};

constexpr MonthTable months;

// Reads a text from the left. It knows the source of the parser that reads, for the error.
class Cursor {
public:
    Cursor(const OCAnsiString& text, const OCAnsiString& reported)
        : position(text.getString()), end(position + text.getLength()), source(reported) {}

    [[noreturn]] void fail() const { throw OXDateTimeParser_SyntaxError(source); }

    unsigned long left() const { return static_cast<unsigned long>(end - position); }

    // Takes everything up to `c`, and `c`. What is looked for is near in any text that is a date.
    void through(char c) {
        while (position != end && *position != c)
            ++position;
        separator(c);
    }
    void separator(char c) {
        if (position == end || *position != c)
            fail();
        ++position;
    }

    // A field that ends in `terminator`, which is taken too. Blanks before it are skipped.
    const char* until(char terminator, unsigned long& count) {
        skipBlanks();
        const char* const field = position;
        finish(field, terminator);
        count = static_cast<unsigned long>(position - 1 - field);
        return field;
    }
    unsigned short numberUntil(char terminator) {
        skipBlanks();
        const char* const field = position;
        const unsigned short value = readNumber(position, end);
        finish(field, terminator);
        return value;
    }
    unsigned short month() {
        unsigned long count = 0;
        const char* const name = until(' ', count);
        const unsigned short month = months.find(name, count);
        if (month == 0)
            fail();
        return month;
    }

    // A field of a fixed width.
    const char* of(unsigned long width) {
        if (left() < width)
            fail();
        position += width;
        return position - width;
    }
    unsigned short number(unsigned long width) {
        const char* field = of(width);
        return readNumber(field, position);
    }
    unsigned short numberBefore(unsigned long width, char terminator) {
        const unsigned short value = number(width);
        separator(terminator);
        return value;
    }

    // Takes what was read off `text`, which this cursor reads.
    void take(OCAnsiString& text) const { text.right(left()); }

private:
    void skipBlanks() {
        while (position != end && isBlank(*position))
            ++position;
    }
    void finish(const char* field, char terminator) {
        through(terminator);
        if (position - 1 == field)
            fail();
    }

    const char* position;
    const char* const end;
    const OCAnsiString& source;
};

// The grammar of RFC 1123.
void parseRfc1123(const OCAnsiString& source, OCDateTime& target) {
    Cursor cursor(source, source);
    cursor.through(',');
    target.day = cursor.numberUntil(' ');
    target.month = cursor.month();
    target.year = cursor.numberUntil(' ');
    target.hour = cursor.numberUntil(':');
    target.minute = cursor.numberUntil(':');
    target.second = cursor.numberUntil(' ');
}

unsigned short generalizedYear(Cursor& cursor) {
    return cursor.number(4);
}

unsigned short utcYear(Cursor& cursor) {
    const unsigned int year = cursor.number(2);
    return static_cast<unsigned short>(year + (year < 50 ? 2000 : 1900));
}

// The seconds that lead from the time in the text to UTC.
int correction(Cursor& cursor) {
    const char sign = *cursor.of(1);
    if (sign == 'Z')
        return 0;
    if (sign != '+' && sign != '-')
        cursor.fail();
    const int hours = cursor.number(2);
    const int minutes = cursor.number(2);
    const int seconds = (hours * 60 + minutes) * 60;
    return sign == '+' ? -seconds : seconds;
}

void parseAsn1(const OCAnsiString& source, OCDateTime& target, unsigned short (*year)(Cursor&)) {
    Cursor cursor(source, source);
    OCDateTime value;
    value.year = year(cursor);
    value.month = cursor.number(2);
    value.day = cursor.number(2);
    value.hour = cursor.number(2);
    value.minute = cursor.number(2);
    value.second = cursor.number(2);
    const int seconds = correction(cursor);
    target = value;
    target.adjust(seconds);
}

// The scanners that the parsers offer: each reads one thing and takes it off the text.

OCAnsiString takeUntil(OCAnsiString& text, char terminator, const OCAnsiString& source) {
    Cursor cursor(text, source);
    unsigned long count = 0;
    const char* const field = cursor.until(terminator, count);
    OCAnsiString token(field, count);
    cursor.take(text);
    return token;
}

OCAnsiString takeWidth(OCAnsiString& text, unsigned long width, const OCAnsiString& source) {
    Cursor cursor(text, source);
    OCAnsiString token(cursor.of(width), width);
    cursor.take(text);
    return token;
}

unsigned short takeNumberUntil(OCAnsiString& text, char terminator, const OCAnsiString& source) {
    Cursor cursor(text, source);
    const unsigned short number = cursor.numberUntil(terminator);
    cursor.take(text);
    return number;
}

unsigned short takeNumberBefore(OCAnsiString& text, unsigned long width, char terminator,
                                const OCAnsiString& source) {
    Cursor cursor(text, source);
    const unsigned short number = cursor.numberBefore(width, terminator);
    cursor.take(text);
    return number;
}

unsigned short takeNumber(OCAnsiString& text, unsigned long width, const OCAnsiString& source) {
    Cursor cursor(text, source);
    const unsigned short number = cursor.number(width);
    cursor.take(text);
    return number;
}

unsigned short takeMonth(OCAnsiString& text, const OCAnsiString& source) {
    Cursor cursor(text, source);
    const unsigned short month = cursor.month();
    cursor.take(text);
    return month;
}

void takeThroughComma(OCAnsiString& text, const OCAnsiString& source) {
    Cursor cursor(text, source);
    cursor.through(',');
    cursor.take(text);
}

// A copy without the blanks at both ends.
OCAnsiString trimmed(const OCAnsiString& text) {
    const char* start = text.getString();
    const char* end = start + text.getLength();
    while (end != start && isBlank(end[-1]))
        --end;
    while (start != end && isBlank(*start))
        ++start;
    return OCAnsiString(start, static_cast<unsigned long>(end - start));
}

} // namespace

OCDateTimeParser::OCDateTimeParser(OCDateTime& value, const OCAnsiString& text)
    : source(trimmed(text)), target(value) {}

OCDateTimeParser::~OCDateTimeParser() = default;

OCDateTimeParserRfc1123::~OCDateTimeParserRfc1123() noexcept = default;

void OCDateTimeParserRfc1123::parse() {
    parseRfc1123(getSource(), getTarget());
}

void OCDateTimeParserRfc1123::removeDayOfWeek(OCAnsiString& text) const {
    takeThroughComma(text, getSource());
}
OCAnsiString OCDateTimeParserRfc1123::separateDayOfMonth(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
OCAnsiString OCDateTimeParserRfc1123::separateMonth(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
OCAnsiString OCDateTimeParserRfc1123::separateYear(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
OCAnsiString OCDateTimeParserRfc1123::separateHour(OCAnsiString& text) const {
    return takeUntil(text, ':', getSource());
}
OCAnsiString OCDateTimeParserRfc1123::separateMinute(OCAnsiString& text) const {
    return takeUntil(text, ':', getSource());
}
OCAnsiString OCDateTimeParserRfc1123::separateSecond(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
unsigned short OCDateTimeParserRfc1123::parseDayOfMonth(OCAnsiString& text) const {
    return takeNumberUntil(text, ' ', getSource());
}
unsigned short OCDateTimeParserRfc1123::parseMonth(OCAnsiString& text) const {
    return takeMonth(text, getSource());
}
unsigned short OCDateTimeParserRfc1123::parseYear(OCAnsiString& text) const {
    return takeNumberUntil(text, ' ', getSource());
}
unsigned short OCDateTimeParserRfc1123::parseHour(OCAnsiString& text) const {
    return takeNumberUntil(text, ':', getSource());
}
unsigned short OCDateTimeParserRfc1123::parseMinute(OCAnsiString& text) const {
    return takeNumberUntil(text, ':', getSource());
}
unsigned short OCDateTimeParserRfc1123::parseSecond(OCAnsiString& text) const {
    return takeNumberUntil(text, ' ', getSource());
}

OCDateTimeParserCookie::~OCDateTimeParserCookie() noexcept = default;

void OCDateTimeParserCookie::parse() {
    parseRfc1123(getSource(), getTarget());
}

void OCDateTimeParserCookie::removeDayOfWeek(OCAnsiString& text) const {
    takeThroughComma(text, getSource());
}
OCAnsiString OCDateTimeParserCookie::separateDayOfMonth(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
OCAnsiString OCDateTimeParserCookie::separateMonth(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
OCAnsiString OCDateTimeParserCookie::separateYear(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
OCAnsiString OCDateTimeParserCookie::separateHour(OCAnsiString& text) const {
    return takeUntil(text, ':', getSource());
}
OCAnsiString OCDateTimeParserCookie::separateMinute(OCAnsiString& text) const {
    return takeUntil(text, ':', getSource());
}
OCAnsiString OCDateTimeParserCookie::separateSecond(OCAnsiString& text) const {
    return takeUntil(text, ' ', getSource());
}
unsigned short OCDateTimeParserCookie::parseDayOfMonth(OCAnsiString& text) const {
    return takeNumberUntil(text, ' ', getSource());
}
unsigned short OCDateTimeParserCookie::parseMonth(OCAnsiString& text) const {
    return takeMonth(text, getSource());
}
unsigned short OCDateTimeParserCookie::parseYear(OCAnsiString& text) const {
    return takeNumberUntil(text, ' ', getSource());
}
unsigned short OCDateTimeParserCookie::parseHour(OCAnsiString& text) const {
    return takeNumberUntil(text, ':', getSource());
}
unsigned short OCDateTimeParserCookie::parseMinute(OCAnsiString& text) const {
    return takeNumberUntil(text, ':', getSource());
}
unsigned short OCDateTimeParserCookie::parseSecond(OCAnsiString& text) const {
    return takeNumberUntil(text, ' ', getSource());
}

OCDateTimeParserMilitary::~OCDateTimeParserMilitary() noexcept = default;

void OCDateTimeParserMilitary::parse() {
    Cursor cursor(getSource(), getSource());
    OCDateTime& value = getTarget();
    value.year = cursor.numberBefore(4, '-');
    value.month = cursor.numberBefore(2, '-');
    value.day = cursor.numberBefore(2, ' ');
    if (cursor.left() == 0) {
        value.hour = 0;
        value.minute = 0;
        value.second = 0;
    } else {
        value.hour = cursor.numberBefore(2, ':');
        value.minute = cursor.numberBefore(2, ':');
        value.second = cursor.number(2);
    }
}

OCAnsiString OCDateTimeParserMilitary::separateInteger(OCAnsiString& text,
                                                       unsigned long width) const {
    return takeWidth(text, width, getSource());
}
unsigned short OCDateTimeParserMilitary::parseYear(OCAnsiString& text) const {
    return takeNumberBefore(text, 4, '-', getSource());
}
unsigned short OCDateTimeParserMilitary::parseMonth(OCAnsiString& text) const {
    return takeNumberBefore(text, 2, '-', getSource());
}
unsigned short OCDateTimeParserMilitary::parseDayOfMonth(OCAnsiString& text) const {
    return takeNumberBefore(text, 2, ' ', getSource());
}
unsigned short OCDateTimeParserMilitary::parseHour(OCAnsiString& text) const {
    return takeNumberBefore(text, 2, ':', getSource());
}
unsigned short OCDateTimeParserMilitary::parseMinute(OCAnsiString& text) const {
    return takeNumberBefore(text, 2, ':', getSource());
}
unsigned short OCDateTimeParserMilitary::parseSecond(OCAnsiString& text) const {
    return takeNumber(text, 2, getSource());
}

OCDateTimeParserAsn1::~OCDateTimeParserAsn1() = default;

OCAnsiString OCDateTimeParserAsn1::separateInteger(OCAnsiString& text, unsigned long width) const {
    return takeWidth(text, width, getSource());
}
OCAnsiString OCDateTimeParserAsn1::separateCorrection(OCAnsiString& text) const {
    if (text.getLength() == 0)
        throw OXDateTimeParser_SyntaxError(getSource());
    return takeWidth(text, text.getLength(), getSource());
}
unsigned short OCDateTimeParserAsn1::parseMonth(OCAnsiString& text) const {
    return takeNumber(text, 2, getSource());
}
unsigned short OCDateTimeParserAsn1::parseDay(OCAnsiString& text) const {
    return takeNumber(text, 2, getSource());
}
unsigned short OCDateTimeParserAsn1::parseHour(OCAnsiString& text) const {
    return takeNumber(text, 2, getSource());
}
unsigned short OCDateTimeParserAsn1::parseMinute(OCAnsiString& text) const {
    return takeNumber(text, 2, getSource());
}
unsigned short OCDateTimeParserAsn1::parseSecond(OCAnsiString& text) const {
    return takeNumber(text, 2, getSource());
}
int OCDateTimeParserAsn1::parseCorrection(OCAnsiString& text) const {
    Cursor cursor(text, getSource());
    const int seconds = correction(cursor);
    text.clear();
    return seconds;
}

OCDateTimeParserAsn1Generalized::~OCDateTimeParserAsn1Generalized() noexcept = default;

void OCDateTimeParserAsn1Generalized::parse() {
    parseAsn1(getSource(), getTarget(), generalizedYear);
}

unsigned short OCDateTimeParserAsn1Generalized::parseYear(OCAnsiString& text) const {
    Cursor cursor(text, getSource());
    const unsigned short year = generalizedYear(cursor);
    cursor.take(text);
    return year;
}

OCDateTimeParserAsn1Utc::~OCDateTimeParserAsn1Utc() noexcept = default;

void OCDateTimeParserAsn1Utc::parse() {
    parseAsn1(getSource(), getTarget(), utcYear);
}

unsigned short OCDateTimeParserAsn1Utc::parseYear(OCAnsiString& text) const {
    Cursor cursor(text, getSource());
    const unsigned short year = utcYear(cursor);
    cursor.take(text);
    return year;
}

OXDateTimeParser::OXDateTimeParser() = default;
OXDateTimeParser::~OXDateTimeParser() noexcept = default;

OXDateTimeParser_SyntaxError::OXDateTimeParser_SyntaxError(const OCAnsiString& source) {
    setClass("OXDateTimeParser_SyntaxError");
    setMessage("Syntax error parsing date/time string");
    getDetails().addString(source);
}
OXDateTimeParser_SyntaxError::~OXDateTimeParser_SyntaxError() noexcept = default;
