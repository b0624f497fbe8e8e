#include "OCDateTime.h"

#include "OCDateTimeFormat.h"
#include "OCDateTimeParser.h"

namespace {

unsigned short fieldOf(int component, unsigned int offset) {
    return static_cast<unsigned short>(static_cast<unsigned int>(component) + offset);
}

// The C library's functions report failure as this time, which is also the second before 1970.
constexpr time_t noTime = -1;

} // namespace

OCDateTime::~OCDateTime() noexcept = default;

OCDateTime& OCDateTime::assign(OEDateTimeValue value) {
    if (value == DateTimeValueLocal)
        assignCurrentLocalTime();
    else if (value == DateTimeValueSystem)
        assignCurrentSystemTime();
    return *this;
}

void OCDateTime::assignCurrentLocalTime() {
    struct tm structure;
    const time_t now = time(nullptr);
    if (now == noTime || localtime_r(&now, &structure) == nullptr)
        throw OXDateTime_AcquireError();
    importTimeStructure(structure);
}

void OCDateTime::assignCurrentSystemTime() {
    struct tm structure;
    const time_t now = time(nullptr);
    if (now == noTime || gmtime_r(&now, &structure) == nullptr)
        throw OXDateTime_AcquireError();
    importTimeStructure(structure);
}

void OCDateTime::importTimeStructure(const struct tm& structure) noexcept {
    year = fieldOf(structure.tm_year, 1900);
    month = fieldOf(structure.tm_mon, 1);
    day = fieldOf(structure.tm_mday, 0);
    hour = fieldOf(structure.tm_hour, 0);
    minute = fieldOf(structure.tm_min, 0);
    second = fieldOf(structure.tm_sec, 0);
}

struct tm OCDateTime::makeTimeStructure() const noexcept {
    struct tm structure = {};
    structure.tm_year = year - 1900;
    structure.tm_mon = month - 1;
    structure.tm_mday = day;
    structure.tm_hour = hour;
    structure.tm_min = minute;
    structure.tm_sec = second;
    structure.tm_isdst = -1;
    return structure;
}

struct tm OCDateTime::exportTimeStructure() const {
    struct tm structure = makeTimeStructure();
    if (mktime(&structure) == noTime)
        throw OXDateTime_RepresentError();
    return structure;
}

void OCDateTime::convertLocalToSystem() {
    struct tm structure = makeTimeStructure();
    const time_t moment = timelocal(&structure);
    if (moment == noTime || gmtime_r(&moment, &structure) == nullptr)
        throw OXDateTime_ConvertError();
    importTimeStructure(structure);
}

void OCDateTime::convertSystemToLocal() {
    struct tm structure = makeTimeStructure();
    const time_t moment = timegm(&structure);
    if (moment == noTime || localtime_r(&moment, &structure) == nullptr)
        throw OXDateTime_ConvertError();
    importTimeStructure(structure);
}

OCDateTime& OCDateTime::adjust(int seconds) {
    struct tm structure = exportTimeStructure();
    time_t moment = timegm(&structure);
    if (moment == noTime)
        throw OXDateTime_AdjustError();
    moment += seconds;
    if (gmtime_r(&moment, &structure) == nullptr)
        throw OXDateTime_AdjustError();
    importTimeStructure(structure);
    return *this;
}

OCAnsiString OCDateTime::exportText(OEDateTimeFormat format) const {
    switch (format) {
    case DateTimeFormatAsn1Generalized:
        return OCDateTimeFormatAsn1Generalized().format(*this);
    case DateTimeFormatAsn1Utc:
        return OCDateTimeFormatAsn1Utc().format(*this);
    case DateTimeFormatMilitary:
        return OCDateTimeFormatMilitary().format(*this);
    case DateTimeFormatRfc1123:
        return OCDateTimeFormatRfc1123().format(*this);
    case DateTimeFormatCookie:
    default:
        return OCAnsiString();
    }
}

void OCDateTime::importText(const OCAnsiString& text, OEDateTimeFormat format) {
    switch (format) {
    case DateTimeFormatAsn1Generalized:
        OCDateTimeParserAsn1Generalized(*this, text).parse();
        break;
    case DateTimeFormatAsn1Utc:
        OCDateTimeParserAsn1Utc(*this, text).parse();
        break;
    case DateTimeFormatCookie:
        OCDateTimeParserCookie(*this, text).parse();
        break;
    case DateTimeFormatMilitary:
        OCDateTimeParserMilitary(*this, text).parse();
        break;
    case DateTimeFormatRfc1123:
        OCDateTimeParserRfc1123(*this, text).parse();
        break;
    default:
        break;
    }
}

OXDateTime::OXDateTime() = default;
OXDateTime::~OXDateTime() noexcept = default;

OXDateTime_AcquireError::OXDateTime_AcquireError() {
    setClass("OXDateTime_AcquireError");
    setMessage("Error acquiring current date/time");
}
OXDateTime_AcquireError::~OXDateTime_AcquireError() noexcept = default;

OXDateTime_AdjustError::OXDateTime_AdjustError() {
    setClass("OXDateTime_AdjustError");
    setMessage("Error adjusting date/time");
}
OXDateTime_AdjustError::~OXDateTime_AdjustError() noexcept = default;

OXDateTime_ConvertError::OXDateTime_ConvertError() {
    setClass("OXDateTime_ConvertExport");
    setMessage("Error converting date/time");
}
OXDateTime_ConvertError::~OXDateTime_ConvertError() noexcept = default;

OXDateTime_RepresentError::OXDateTime_RepresentError() {
    setClass("OXDateTime_RepresentExport");
    setMessage("Error representing date/time");
}
OXDateTime_RepresentError::~OXDateTime_RepresentError() noexcept = default;
