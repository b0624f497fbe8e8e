#ifndef ORVABASE_OCDATETIMEFORMAT_H
#define ORVABASE_OCDATETIMEFORMAT_H

#include "OCAnsiString.h"
#include "OCDateTime.h"

/// Writes a date-time as text in one form.
///
/// A format has no state, so one object may serve several threads. Numbers are decimal with leading
/// zeros up to the width of their field; a number that is wider is written whole. Beside `format`,
/// each form offers its pieces, with the separator that follows them. All operations make a new
/// string and leave the value alone.
///
///     OCDateTimeFormatMilitary format;
///     format.format(value);        // "2016-01-02 03:04:05 "
///     format.formatHour(value);    // "03:"
class ORVABASE_EXPORT OCDateTimeFormat : public OCObject {
public:
    OCDateTimeFormat() noexcept {}
    OCDateTimeFormat(const OCDateTimeFormat&) noexcept = default;
    OCDateTimeFormat& operator=(const OCDateTimeFormat&) noexcept = default;
    ~OCDateTimeFormat() override;

    /// The whole text of `value`.
    virtual OCAnsiString format(const OCDateTime& value) const = 0;
};

/// The form of RFC 1123 and HTTP: `Sun, 06 Nov 1994 08:49:37 GMT`.
///
/// Note: the value is written as it stands, followed by `GMT`; a local time has to be converted
/// first. The day of the week, however, is that of the value taken as local time.
class ORVABASE_EXPORT OCDateTimeFormatRfc1123 : public OCDateTimeFormat {
public:
    OCDateTimeFormatRfc1123() noexcept {}
    OCDateTimeFormatRfc1123(const OCDateTimeFormatRfc1123&) noexcept = default;
    OCDateTimeFormatRfc1123& operator=(const OCDateTimeFormatRfc1123&) noexcept = default;
    ~OCDateTimeFormatRfc1123() noexcept override;

    /// @throws OXDateTime_RepresentError when the day of the week cannot be told.
    OCAnsiString format(const OCDateTime& value) const override;

    /// The day of the week from `OCDateTime::exportTimeStructure`, such as `Sun, `.
    /// @throws OXDateTime_RepresentError
    OCAnsiString formatDayOfWeek(const OCDateTime& value) const;
    /// The other pieces of the form.
    OCAnsiString formatDayOfMonth(const OCDateTime& value) const;
    /// A month that does not exist gives the space alone.
    OCAnsiString formatMonth(const OCDateTime& value) const;
    /// The last four digits of the year.
    OCAnsiString formatYear(const OCDateTime& value) const;
    /// The other pieces of the form.
    OCAnsiString formatHour(const OCDateTime& value) const;
    OCAnsiString formatMinute(const OCDateTime& value) const;
    OCAnsiString formatSecond(const OCDateTime& value) const;
    OCAnsiString formatZone(const OCDateTime& value) const;
};

/// Year to second, without a zone: `2016-01-02 03:04:05 `.
///
/// Note: the text ends in a space, which the parser of this form trims.
class ORVABASE_EXPORT OCDateTimeFormatMilitary : public OCDateTimeFormat {
public:
    OCDateTimeFormatMilitary() noexcept {}
    OCDateTimeFormatMilitary(const OCDateTimeFormatMilitary&) noexcept = default;
    OCDateTimeFormatMilitary& operator=(const OCDateTimeFormatMilitary&) noexcept = default;
    ~OCDateTimeFormatMilitary() noexcept override;

    OCAnsiString format(const OCDateTime& value) const override;

    /// The last four digits of the year.
    OCAnsiString formatYear(const OCDateTime& value) const;
    /// The other pieces of the form.
    OCAnsiString formatMonth(const OCDateTime& value) const;
    OCAnsiString formatDayOfMonth(const OCDateTime& value) const;
    OCAnsiString formatHour(const OCDateTime& value) const;
    OCAnsiString formatMinute(const OCDateTime& value) const;
    OCAnsiString formatSecond(const OCDateTime& value) const;
};

/// What the two ASN.1 forms (ITU-T X.680) share: all but the year.
class ORVABASE_EXPORT OCDateTimeFormatAsn1 : public OCDateTimeFormat {
public:
    OCDateTimeFormatAsn1() noexcept {}
    OCDateTimeFormatAsn1(const OCDateTimeFormatAsn1&) noexcept = default;
    OCDateTimeFormatAsn1& operator=(const OCDateTimeFormatAsn1&) noexcept = default;
    ~OCDateTimeFormatAsn1() override;

    OCAnsiString format(const OCDateTime& value) const override;
    /// The year in the width of the form.
    virtual OCAnsiString formatYear(const OCDateTime& value) const = 0;

    /// The other pieces of the form.
    OCAnsiString formatMonth(const OCDateTime& value) const;
    OCAnsiString formatDay(const OCDateTime& value) const;
    OCAnsiString formatHour(const OCDateTime& value) const;
    OCAnsiString formatMinute(const OCDateTime& value) const;
    OCAnsiString formatSecond(const OCDateTime& value) const;
    OCAnsiString formatZone(const OCDateTime& value) const;
};

/// GeneralizedTime: `20160102030405Z`.
class ORVABASE_EXPORT OCDateTimeFormatAsn1Generalized : public OCDateTimeFormatAsn1 {
public:
    OCDateTimeFormatAsn1Generalized() noexcept {}
    OCDateTimeFormatAsn1Generalized(const OCDateTimeFormatAsn1Generalized&) noexcept = default;
    OCDateTimeFormatAsn1Generalized&
    operator=(const OCDateTimeFormatAsn1Generalized&) noexcept = default;
    ~OCDateTimeFormatAsn1Generalized() noexcept override;

    /// The last four digits of the year.
    OCAnsiString formatYear(const OCDateTime& value) const override;
};

/// UTCTime: `160102030405Z`. The century is not written.
class ORVABASE_EXPORT OCDateTimeFormatAsn1Utc : public OCDateTimeFormatAsn1 {
public:
    OCDateTimeFormatAsn1Utc() noexcept {}
    OCDateTimeFormatAsn1Utc(const OCDateTimeFormatAsn1Utc&) noexcept = default;
    OCDateTimeFormatAsn1Utc& operator=(const OCDateTimeFormatAsn1Utc&) noexcept = default;
    ~OCDateTimeFormatAsn1Utc() noexcept override;

    /// The last two digits of the year.
    OCAnsiString formatYear(const OCDateTime& value) const override;
};

#endif
