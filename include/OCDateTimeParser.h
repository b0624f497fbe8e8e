#ifndef ORVABASE_OCDATETIMEPARSER_H
#define ORVABASE_OCDATETIMEPARSER_H

#include "OCAnsiString.h"
#include "OCDateTime.h"

/// Reads a date-time from a text of one form.
///
/// A parser keeps a copy of the text, without the white space (bytes up to 32) at its ends, and
/// refers to the value that it fills, which must outlive it. It scans strictly from the left:
/// separators and widths are checked, the ranges of the numbers are not. A number is what
/// `OCUnsignedIntegerConversion::fromString` makes of its field (the digits before the first other
/// character), and the low 16 bits of it are stored. Not for use by several threads at once.
///
/// Each form offers its scanners as well. They take what they have read off the front of `text`, a
/// working copy, or throw `OXDateTimeParser_SyntaxError` with the parser's source and leave `text`
/// as it is.
///
///     OCDateTime value;
///     OCDateTimeParserRfc1123(value, "Sun, 06 Nov 1994 08:49:37 GMT").parse();
///     value.hour;   // 8
class ORVABASE_EXPORT OCDateTimeParser : public OCObject {
public:
    /// @throws OXMemory_AllocationError
    OCDateTimeParser(OCDateTime& value, const OCAnsiString& text);
    OCDateTimeParser(const OCDateTimeParser&) = delete;
    OCDateTimeParser& operator=(const OCDateTimeParser&) = delete;
    ~OCDateTimeParser() override;

    /// Fills the target from the source.
    /// @throws OXDateTimeParser_SyntaxError when the source does not have the form; the fields of
    /// the target before the malformed one keep their new values.
    virtual void parse() = 0;

    /// The text that `parse` reads.
    OCAnsiString& getSource() { return source; }
    const OCAnsiString& getSource() const { return source; }
    /// The value that `parse` fills.
    OCDateTime& getTarget() { return target; }
    const OCDateTime& getTarget() const { return target; }

private:
    OCAnsiString source;
    OCDateTime& target;
};

/// The form of RFC 1123 and HTTP: `Sun, 06 Nov 1994 08:49:37 GMT`.
///
/// Note: neither the name of the day nor the zone is looked at, but there must be a comma behind
/// the one and some text in place of the other. The value is taken as it is written. `94` is the
/// year 94.
class ORVABASE_EXPORT OCDateTimeParserRfc1123 : public OCDateTimeParser {
public:
    using OCDateTimeParser::OCDateTimeParser;
    ~OCDateTimeParserRfc1123() noexcept override;

    void parse() override;

    /// Removes everything through the first comma.
    void removeDayOfWeek(OCAnsiString& text) const;
    /// Fields that end in a space.
    OCAnsiString separateDayOfMonth(OCAnsiString& text) const;
    OCAnsiString separateMonth(OCAnsiString& text) const;
    OCAnsiString separateYear(OCAnsiString& text) const;
    OCAnsiString separateSecond(OCAnsiString& text) const;
    /// Fields that end in a colon.
    OCAnsiString separateHour(OCAnsiString& text) const;
    OCAnsiString separateMinute(OCAnsiString& text) const;
    /// The day of the month as a number.
    unsigned short parseDayOfMonth(OCAnsiString& text) const;
    /// The month of an English name of three letters in any case.
    unsigned short parseMonth(OCAnsiString& text) const;
    /// The other fields as numbers.
    unsigned short parseYear(OCAnsiString& text) const;
    unsigned short parseHour(OCAnsiString& text) const;
    unsigned short parseMinute(OCAnsiString& text) const;
    unsigned short parseSecond(OCAnsiString& text) const;
};

/// The expiry date of a cookie, in the same form as RFC 1123.
///
/// Note: the form with dashes, `06-Nov-1994`, is refused.
class ORVABASE_EXPORT OCDateTimeParserCookie : public OCDateTimeParser {
public:
    using OCDateTimeParser::OCDateTimeParser;
    ~OCDateTimeParserCookie() noexcept override;

    void parse() override;

    /// Removes everything through the first comma.
    void removeDayOfWeek(OCAnsiString& text) const;
    /// Fields that end in a space.
    OCAnsiString separateDayOfMonth(OCAnsiString& text) const;
    OCAnsiString separateMonth(OCAnsiString& text) const;
    OCAnsiString separateYear(OCAnsiString& text) const;
    OCAnsiString separateSecond(OCAnsiString& text) const;
    /// Fields that end in a colon.
    OCAnsiString separateHour(OCAnsiString& text) const;
    OCAnsiString separateMinute(OCAnsiString& text) const;
    /// The day of the month as a number.
    unsigned short parseDayOfMonth(OCAnsiString& text) const;
    /// The month of an English name of three letters in any case.
    unsigned short parseMonth(OCAnsiString& text) const;
    /// The other fields as numbers.
    unsigned short parseYear(OCAnsiString& text) const;
    unsigned short parseHour(OCAnsiString& text) const;
    unsigned short parseMinute(OCAnsiString& text) const;
    unsigned short parseSecond(OCAnsiString& text) const;
};

/// Year to second, without a zone: `2016-01-02 03:04:05`. Whatever follows the seconds is ignored.
///
/// Note: a text that ends with the space behind the day means midnight. White space at the end of a
/// text is trimmed, so only a source that was changed by `getSource` can be such a text; a date
/// alone is refused.
class ORVABASE_EXPORT OCDateTimeParserMilitary : public OCDateTimeParser {
public:
    using OCDateTimeParser::OCDateTimeParser;
    ~OCDateTimeParserMilitary() noexcept override;

    void parse() override;

    /// The first `width` characters.
    OCAnsiString separateInteger(OCAnsiString& text, unsigned long width) const;
    /// Each takes the separator that follows the field too; there is none behind the second.
    unsigned short parseYear(OCAnsiString& text) const;
    unsigned short parseMonth(OCAnsiString& text) const;
    unsigned short parseDayOfMonth(OCAnsiString& text) const;
    unsigned short parseHour(OCAnsiString& text) const;
    unsigned short parseMinute(OCAnsiString& text) const;
    unsigned short parseSecond(OCAnsiString& text) const;
};

/// What the two ASN.1 forms (ITU-T X.680) share: all but the year.
///
/// The seconds are mandatory, fractions of a second are refused. The text ends in `Z` or in a
/// correction, `+hhmm` or `-hhmm`, by which the value is moved to UTC; what follows is ignored.
///
/// Note: the value is moved by `OCDateTime::adjust`, also for `Z`, and with it normalised as a
/// local time. Its exceptions pass through.
class ORVABASE_EXPORT OCDateTimeParserAsn1 : public OCDateTimeParser {
public:
    using OCDateTimeParser::OCDateTimeParser;
    ~OCDateTimeParserAsn1() override;

    /// The first `width` characters.
    OCAnsiString separateInteger(OCAnsiString& text, unsigned long width) const;
    /// The whole rest of the text.
    OCAnsiString separateCorrection(OCAnsiString& text) const;
    /// The fields as numbers.
    unsigned short parseMonth(OCAnsiString& text) const;
    unsigned short parseDay(OCAnsiString& text) const;
    unsigned short parseHour(OCAnsiString& text) const;
    unsigned short parseMinute(OCAnsiString& text) const;
    unsigned short parseSecond(OCAnsiString& text) const;
    /// The seconds to add to reach UTC: negative for `+`, positive for `-`.
    int parseCorrection(OCAnsiString& text) const;
};

/// GeneralizedTime: `20160102030405Z`.
class ORVABASE_EXPORT OCDateTimeParserAsn1Generalized : public OCDateTimeParserAsn1 {
public:
    using OCDateTimeParserAsn1::OCDateTimeParserAsn1;
    ~OCDateTimeParserAsn1Generalized() noexcept override;

    /// @throws OXDateTimeParser_SyntaxError; the target is then unchanged. What
    /// `OCDateTime::adjust` throws; the target then has the fields as they are written.
    void parse() override;

    /// The year in the width of the form.
    unsigned short parseYear(OCAnsiString& text) const;
};

/// UTCTime: `160102030405Z`. The years 50 to 99 are 1950 to 1999, the years 00 to 49 are 2000 to
/// 2049.
class ORVABASE_EXPORT OCDateTimeParserAsn1Utc : public OCDateTimeParserAsn1 {
public:
    using OCDateTimeParserAsn1::OCDateTimeParserAsn1;
    ~OCDateTimeParserAsn1Utc() noexcept override;

    /// @throws OXDateTimeParser_SyntaxError; the target is then unchanged. What
    /// `OCDateTime::adjust` throws; the target then has the fields as they are written.
    void parse() override;

    /// The year in the width of the form.
    unsigned short parseYear(OCAnsiString& text) const;
};

/// The family of the parsers' failures.
class ORVABASE_EXPORT OXDateTimeParser : public OXDateTime {
public:
    ~OXDateTimeParser() noexcept override;

protected:
    OXDateTimeParser();
};

/// "Syntax error parsing date/time string", with the trimmed text.
class ORVABASE_EXPORT OXDateTimeParser_SyntaxError : public OXDateTimeParser {
public:
    explicit OXDateTimeParser_SyntaxError(const OCAnsiString& source);
    ~OXDateTimeParser_SyntaxError() noexcept override;
};

#endif
