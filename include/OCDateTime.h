#ifndef ORVABASE_OCDATETIME_H
#define ORVABASE_OCDATETIME_H

#include "OCAnsiString.h"

#include <ctime>

/// Which current time a date-time takes. Any other value takes none.
enum OEDateTimeValue : int { DateTimeValueLocal = 0, DateTimeValueSystem = 1 };

/// The text forms of a date-time.
enum OEDateTimeFormat : int {
    DateTimeFormatAsn1Generalized = 0, ///< ITU-T X.680 GeneralizedTime, `20160102030405Z`
    DateTimeFormatAsn1Utc = 1,         ///< ITU-T X.680 UTCTime, `160102030405Z`
    DateTimeFormatCookie = 2,          ///< read only, in the RFC 1123 form
    DateTimeFormatMilitary = 3,        ///< `2016-01-02 03:04:05`
    DateTimeFormatRfc1123 = 4          ///< `Sat, 02 Jan 2016 03:04:05 GMT`
};

/// A calendar date and a time of day, to the second.
///
/// The value has no time zone: whether it is local time or UTC ("system time") is the caller's
/// knowledge. Nothing is checked when a field is set; a new value is the invalid date 0000-00-00
/// 00:00:00. Not for use by several threads at once; the conversions read the process's time zone
/// as the C library's functions do.
///
///     OCDateTime expiry(DateTimeValueSystem);
///     expiry.adjust(7 * 86400);
///     expiry.exportText(DateTimeFormatRfc1123);   // Sat, 09 Jan 2016 03:04:05 GMT
class ORVABASE_EXPORT OCDateTime : public OCObject {
public:
    unsigned short day;    ///< 1 to 31
    unsigned short hour;   ///< 0 to 23
    unsigned short minute; ///< 0 to 59
    unsigned short month;  ///< 1 to 12
    unsigned short second; ///< 0 to 60
    unsigned short year;   ///< the full year, such as 2016

    /// All fields 0.
    OCDateTime() noexcept : day(0), hour(0), minute(0), month(0), second(0), year(0) {}
    /// The current time; all fields 0 for an unknown `value`.
    /// @throws OXDateTime_AcquireError when the clock or the conversion fails.
    OCDateTime(OEDateTimeValue value) : OCDateTime() { assign(value); }
    /// The components of a C time structure, by `importTimeStructure`.
    OCDateTime(const struct tm& structure) noexcept : OCDateTime() {
        importTimeStructure(structure);
    }
    OCDateTime(const OCDateTime&) noexcept = default;
    OCDateTime& operator=(const OCDateTime&) noexcept = default;
    /// Takes the components of a C time structure, by `importTimeStructure`.
    OCDateTime& operator=(const struct tm& structure) noexcept {
        importTimeStructure(structure);
        return *this;
    }
    ~OCDateTime() noexcept override;

    /// Takes the current time. An unknown `value` changes nothing.
    /// @throws OXDateTime_AcquireError; the value is then unchanged.
    OCDateTime& assign(OEDateTimeValue value);
    /// Takes the fields of `other`.
    OCDateTime& assign(const OCDateTime& other) noexcept { return *this = other; }
    /// Takes the current time in the process's time zone.
    /// @throws OXDateTime_AcquireError; the value is then unchanged.
    void assignCurrentLocalTime();
    /// Takes the current time in UTC.
    /// @throws OXDateTime_AcquireError; the value is then unchanged.
    void assignCurrentSystemTime();

    /// Takes year, month, day, hour, minute and second; each keeps its low 16 bits. The day of the
    /// week, the day of the year, the daylight-saving flag and the zone are ignored.
    void importTimeStructure(const struct tm& structure) noexcept;
    /// The six fields as a C time structure, as they are; daylight saving is left to the system
    /// (-1), everything else is 0.
    struct tm makeTimeStructure() const noexcept;
    /// The time structure that `mktime` makes of the value taken as local time: fields that are out
    /// of range are carried over, day of the week and day of the year are filled in.
    ///
    /// Note: the C library reports failure as -1, so the second before 1970 (UTC) cannot be
    /// represented.
    /// @throws OXDateTime_RepresentError when `mktime` fails.
    struct tm exportTimeStructure() const;

    /// Turns a local time into UTC.
    /// @throws OXDateTime_ConvertError; the value is then unchanged.
    void convertLocalToSystem();
    /// Turns UTC into local time.
    /// @throws OXDateTime_ConvertError; the value is then unchanged.
    void convertSystemToLocal();
    /// Moves the value by a number of seconds, which may be negative. Old and new value are on the
    /// same clock: no daylight saving comes between them.
    ///
    /// Note: the value is normalised as local time first, so a local time that a daylight-saving
    /// change skips moves out of that gap, also when `seconds` is 0.
    /// @throws OXDateTime_RepresentError when that first step fails, OXDateTime_AdjustError when
    /// the rest does; the value is then unchanged.
    OCDateTime& adjust(int seconds);

    /// Orders two values by year, month, day, hour, minute and second, as they are.
    OECompareResult compare(const OCDateTime& other) const noexcept {
        if (year != other.year)
            return order(year, other.year);
        if (month != other.month)
            return order(month, other.month);
        if (day != other.day)
            return order(day, other.day);
        if (hour != other.hour)
            return order(hour, other.hour);
        if (minute != other.minute)
            return order(minute, other.minute);
        if (second != other.second)
            return order(second, other.second);
        return CompareResultEqual;
    }
    bool operator==(const OCDateTime& other) const noexcept { return compare(other) == 0; }
    bool operator!=(const OCDateTime& other) const noexcept { return compare(other) != 0; }
    bool operator<(const OCDateTime& other) const noexcept { return compare(other) < 0; }
    bool operator<=(const OCDateTime& other) const noexcept { return compare(other) <= 0; }
    bool operator>(const OCDateTime& other) const noexcept { return compare(other) > 0; }
    bool operator>=(const OCDateTime& other) const noexcept { return compare(other) >= 0; }

    /// The value as text. `DateTimeFormatCookie`, which is only read, and unknown formats give an
    /// empty text.
    /// @throws OXDateTime_RepresentError when the day of the week, which RFC 1123 asks for, cannot
    /// be told.
    OCAnsiString exportText(OEDateTimeFormat format) const;
    /// Reads the value from a text. An unknown format changes nothing.
    /// @throws OXDateTimeParser_SyntaxError when the text does not have the form; the fields that
    /// were read before the malformed one keep their new values. The ASN.1 forms store nothing
    /// then, but may throw what `adjust` throws after they have stored all six fields.
    void importText(const OCAnsiString& text, OEDateTimeFormat format);

private:
    static OECompareResult order(unsigned short a, unsigned short b) noexcept {
        return a < b ? CompareResultLess : CompareResultGreater;
    }
};

/// The family of the date-time's failures.
class ORVABASE_EXPORT OXDateTime : public OXAutoException {
public:
    ~OXDateTime() noexcept override;

protected:
    OXDateTime();
};

/// "Error acquiring current date/time"
class ORVABASE_EXPORT OXDateTime_AcquireError : public OXDateTime {
public:
    OXDateTime_AcquireError();
    ~OXDateTime_AcquireError() noexcept override;
};

/// "Error adjusting date/time"
class ORVABASE_EXPORT OXDateTime_AdjustError : public OXDateTime {
public:
    OXDateTime_AdjustError();
    ~OXDateTime_AdjustError() noexcept override;
};

/// "Error converting date/time"
///
/// Note: its `getClass()` is `OXDateTime_ConvertExport`; handlers match on that text.
class ORVABASE_EXPORT OXDateTime_ConvertError : public OXDateTime {
public:
    OXDateTime_ConvertError();
    ~OXDateTime_ConvertError() noexcept override;
};

/// "Error representing date/time"
///
/// Note: its `getClass()` is `OXDateTime_RepresentExport`; handlers match on that text.
class ORVABASE_EXPORT OXDateTime_RepresentError : public OXDateTime {
public:
    OXDateTime_RepresentError();
    ~OXDateTime_RepresentError() noexcept override;
};

#endif
