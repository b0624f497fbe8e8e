#ifndef ORVABASE_TESTS_DATETIMES_H
#define ORVABASE_TESTS_DATETIMES_H

#include "OCDateTime.h"

#include <cstdio>
#include <string>

inline OCDateTime makeDateTime(int year, int month, int day, int hour, int minute, int second) {
    OCDateTime value;
    value.year = static_cast<unsigned short>(year);
    value.month = static_cast<unsigned short>(month);
    value.day = static_cast<unsigned short>(day);
    value.hour = static_cast<unsigned short>(hour);
    value.minute = static_cast<unsigned short>(minute);
    value.second = static_cast<unsigned short>(second);
    return value;
}

/// The six fields as they are.
inline std::string show(const OCDateTime& value) {
    char text[64];
    snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", value.year, value.month, value.day,
             value.hour, value.minute, value.second);
    return text;
}

inline std::string standard(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

#define EXPECT_REPRESENT_ERROR(statement)                                                          \
    ::expectations::expectException<OXDateTime_RepresentError>(                                    \
        [&] { statement; }, "OXDateTime_RepresentExport", "Error representing date/time",          \
        __FILE__, __LINE__)
#define EXPECT_CONVERT_ERROR(statement)                                                            \
    ::expectations::expectException<OXDateTime_ConvertError>(                                      \
        [&] { statement; }, "OXDateTime_ConvertExport", "Error converting date/time", __FILE__,    \
        __LINE__)

#endif
