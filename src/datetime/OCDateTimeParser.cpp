#include "OCDateTimeParser.h"

#include <cstring>

namespace {

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= 32;
}

// A field of the text that is read.
struct Field {
    const char* text;
    unsigned long count;

    // Reads digits up to the first other character; the value wraps as an unsigned int does.
    unsigned short number() const {
        unsigned int value = 0;
        for (unsigned long i = 0; i < count; ++i) {
            const unsigned int digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
            if (digit > 9)
                break;
            value = value * 10 + digit;
        }
        return static_cast<unsigned short>(value);
    }

    // The month of this name, 0 when there is none.
    unsigned short month() const {
        static constexpr char names[] = "janfebmaraprmayjunjulaugsepoctnovdec";
        if (count != 3)
            return 0;
        // Setting this bit folds letters, and makes no other byte one of these letters but the
        // capital.
        const char folded[] = {static_cast<char>(text[0] | 32), static_cast<char>(text[1] | 32),
                               static_cast<char>(text[2] | 32)};
        for (unsigned short month = 1; month <= 12; ++month)
            if (memcmp(names + 3 * (month - 1), folded, 3) == 0)
                return month;
        return 0;
    }
};

// Reads a text from the left. It knows the source of the parser that reads, for the error.
class Cursor {
public:
    Cursor(const OCAnsiString& text, const OCAnsiString& reported)
        : position(text.getString()), end(position + text.getLength()), source(reported) {}

    [[noreturn]] void fail() const { throw OXDateTimeParser_SyntaxError(source); }

    unsigned long left() const { return static_cast<unsigned long>(end - position); }

    void through(char c) {
        const char* const found = find(c);
        if (found == nullptr)
            fail();
        position = found + 1;
    }
    // A field that ends in `terminator`, which is taken too. Blanks before it are skipped.
    Field until(char terminator) {
        while (position != end && isBlank(*position))
            ++position;
        const char* const found = find(terminator);
        if (found == nullptr || found == position)
            fail();
        const Field field = {position, static_cast<unsigned long>(found - position)};
        position = found + 1;
        return field;
    }
    Field of(unsigned long width) {
        if (left() < width)
            fail();
        const Field field = {position, width};
        position += width;
        return field;
    }
    void separator(char c) {
        if (position == end || *position != c)
            fail();
        ++position;
    }
    unsigned short month() {
        const unsigned short month = until(' ').month();
        if (month == 0)
            fail();
        return month;
    }
    unsigned short numberBefore(unsigned long width, char terminator) {
        const Field field = of(width);
        separator(terminator);
        return field.number();
    }

    // Takes what was read off `text`, which this cursor reads.
    void take(OCAnsiString& text) const { text.right(left()); }

private:
    const char* find(char c) const { return static_cast<const char*>(memchr(position, c, left())); }

    const char* position;
    const char* const end;
    const OCAnsiString& source;
};

// The grammar of RFC 1123.
void parseRfc1123(const OCAnsiString& source, OCDateTime& target) {
    Cursor cursor(source, source);
    cursor.through(',');
    target.day = cursor.until(' ').number();
    target.month = cursor.month();
    target.year = cursor.until(' ').number();
    target.hour = cursor.until(':').number();
    target.minute = cursor.until(':').number();
    target.second = cursor.until(' ').number();
}

unsigned short generalizedYear(Cursor& cursor) {
    return cursor.of(4).number();
}

unsigned short utcYear(Cursor& cursor) {
    const unsigned int year = cursor.of(2).number();
    return static_cast<unsigned short>(year + (year < 50 ? 2000 : 1900));
}

// The seconds that lead from the time in the text to UTC.
int correction(Cursor& cursor) {
    const char sign = *cursor.of(1).text;
    if (sign == 'Z')
        return 0;
    if (sign != '+' && sign != '-')
        cursor.fail();
    const int hours = cursor.of(2).number();
    const int minutes = cursor.of(2).number();
    const int seconds = (hours * 60 + minutes) * 60;
    return sign == '+' ? -seconds : seconds;
}

void parseAsn1(const OCAnsiString& source, OCDateTime& target, unsigned short (*year)(Cursor&)) {
    Cursor cursor(source, source);
    OCDateTime value;
    value.year = year(cursor);
    value.month = cursor.of(2).number();
    value.day = cursor.of(2).number();
    value.hour = cursor.of(2).number();
    value.minute = cursor.of(2).number();
    value.second = cursor.of(2).number();
    const int seconds = correction(cursor);
    target = value;
    target.adjust(seconds);
}

// The scanners that the parsers offer: each reads one thing and takes it off the text.

OCAnsiString takeUntil(OCAnsiString& text, char terminator, const OCAnsiString& source) {
    Cursor cursor(text, source);
    const Field field = cursor.until(terminator);
    OCAnsiString token(field.text, field.count);
    cursor.take(text);
    return token;
}

OCAnsiString takeWidth(OCAnsiString& text, unsigned long width, const OCAnsiString& source) {
    Cursor cursor(text, source);
    const Field field = cursor.of(width);
    OCAnsiString token(field.text, field.count);
    cursor.take(text);
    return token;
}

unsigned short takeNumberUntil(OCAnsiString& text, char terminator, const OCAnsiString& source) {
    Cursor cursor(text, source);
    const unsigned short number = cursor.until(terminator).number();
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
    const unsigned short number = cursor.of(width).number();
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

// Where the text without the blanks at its ends begins, and its length.
Field trimmed(const OCAnsiString& text) {
    Field field = {text.getString(), text.getLength()};
    while (field.count > 0 && isBlank(field.text[field.count - 1]))
        --field.count;
    while (field.count > 0 && isBlank(*field.text)) {
        ++field.text;
        --field.count;
    }
    return field;
}

} // namespace

OCDateTimeParser::OCDateTimeParser(OCDateTime& value, const OCAnsiString& text)
    : source(trimmed(text).text, trimmed(text).count), target(value) {}

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
        value.second = cursor.of(2).number();
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
