#ifndef ORVABASE_TESTS_DATETIMEMODEL_H
#define ORVABASE_TESTS_DATETIMEMODEL_H

#include <cstdint>
#include <string>

// The readers of date-time texts once more, written as plainly as possible over std::string, with a
// calendar of their own for UTC. Nothing is shared with the library.
struct DateTimeModel {
    enum Outcome { Read, SyntaxError, RepresentError };

    unsigned short year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;

    bool operator==(const DateTimeModel& o) const {
        return year == o.year && month == o.month && day == o.day && hour == o.hour &&
               minute == o.minute && second == o.second;
    }

    static std::string trimmed(std::string text) {
        while (!text.empty() && blank(text.back()))
            text.pop_back();
        return withoutLeadingBlanks(text);
    }

    /// Reads `text` in the form with this number (0 GeneralizedTime, 1 UTCTime, 2 cookie, 3
    /// military, 4 RFC 1123). What was read before a failure is kept.
    Outcome read(int form, const std::string& text) {
        std::string rest = trimmed(text);
        try {
            if (form == 3)
                readMilitary(rest);
            else if (form == 2 || form == 4)
                readRfc1123(rest);
            else
                return readAsn1(rest, form == 0);
        } catch (const Failure&) {
            return SyntaxError;
        }
        return Read;
    }

    /// Seconds since 1970 of the fields taken as UTC, carried over where they are out of range.
    int64_t seconds() const {
        int64_t y = year;
        int64_t m = static_cast<int64_t>(month) - 1;
        y += m / 12;
        m %= 12;
        if (m < 0) {
            m += 12;
            --y;
        }
        int64_t days = 0;
        for (int64_t i = 1970; i < y; ++i)
            days += leap(i) ? 366 : 365;
        for (int64_t i = y; i < 1970; ++i)
            days -= leap(i) ? 366 : 365;
        for (int i = 0; i < m; ++i)
            days += lengthOf(i, y);
        days += static_cast<int64_t>(day) - 1;
        return ((days * 24 + hour) * 60 + minute) * 60 + second;
    }

    void setSeconds(int64_t total) {
        int64_t days = total / 86400;
        int64_t rest = total % 86400;
        if (rest < 0) {
            rest += 86400;
            --days;
        }
        hour = static_cast<unsigned short>(rest / 3600);
        minute = static_cast<unsigned short>(rest / 60 % 60);
        second = static_cast<unsigned short>(rest % 60);
        int64_t y = 1970;
        for (; days < 0; days += leap(y) ? 366 : 365)
            --y;
        for (; days >= (leap(y) ? 366 : 365); ++y)
            days -= leap(y) ? 366 : 365;
        int m = 0;
        for (; days >= lengthOf(m, y); ++m)
            days -= lengthOf(m, y);
        year = static_cast<unsigned short>(y);
        month = static_cast<unsigned short>(m + 1);
        day = static_cast<unsigned short>(days + 1);
    }

private:
    struct Failure {};

    static bool blank(char c) { return static_cast<unsigned char>(c) <= ' '; }
    static std::string withoutLeadingBlanks(const std::string& text) {
        std::size_t start = 0;
        while (start < text.size() && blank(text[start]))
            ++start;
        return text.substr(start);
    }
    static bool leap(int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }
    static int lengthOf(int m, int64_t y) {
        static const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        return m == 1 && leap(y) ? 29 : lengths[m];
    }

    static unsigned short number(const std::string& token) {
        uint32_t value = 0;
        for (char c : token) {
            if (c < '0' || c > '9')
                break;
            value = value * 10 + static_cast<uint32_t>(c - '0');
        }
        return static_cast<unsigned short>(value);
    }

    static std::string upTo(std::string& rest, char terminator) {
        rest = withoutLeadingBlanks(rest);
        const std::size_t end = rest.find(terminator);
        if (end == std::string::npos || end == 0)
            throw Failure();
        std::string token = rest.substr(0, end);
        rest.erase(0, end + 1);
        return token;
    }

    static std::string characters(std::string& rest, std::size_t width) {
        if (rest.size() < width)
            throw Failure();
        std::string token = rest.substr(0, width);
        rest.erase(0, width);
        return token;
    }

    static std::string characters(std::string& rest, std::size_t width, char separator) {
        std::string token = characters(rest, width);
        if (rest.empty() || rest.front() != separator)
            throw Failure();
        rest.erase(0, 1);
        return token;
    }

    static unsigned short monthOf(std::string name) {
        static const char* const names[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                            "jul", "aug", "sep", "oct", "nov", "dec"};
        for (char& c : name)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        for (unsigned short i = 0; i < 12; ++i)
            if (name == names[i])
                return static_cast<unsigned short>(i + 1);
        throw Failure();
    }

    void readRfc1123(std::string rest) {
        const std::size_t comma = rest.find(',');
        if (comma == std::string::npos)
            throw Failure();
        rest.erase(0, comma + 1);
        day = number(upTo(rest, ' '));
        month = monthOf(upTo(rest, ' '));
        year = number(upTo(rest, ' '));
        hour = number(upTo(rest, ':'));
        minute = number(upTo(rest, ':'));
        second = number(upTo(rest, ' '));
    }

    void readMilitary(std::string rest) {
        year = number(characters(rest, 4, '-'));
        month = number(characters(rest, 2, '-'));
        day = number(characters(rest, 2, ' '));
        if (rest.empty()) {
            hour = minute = second = 0;
            return;
        }
        hour = number(characters(rest, 2, ':'));
        minute = number(characters(rest, 2, ':'));
        second = number(characters(rest, 2));
    }

    Outcome readAsn1(std::string rest, bool generalized) {
        DateTimeModel value;
        if (generalized) {
            value.year = number(characters(rest, 4));
        } else {
            value.year = number(characters(rest, 2));
            value.year = static_cast<unsigned short>(value.year + (value.year < 50 ? 2000 : 1900));
        }
        value.month = number(characters(rest, 2));
        value.day = number(characters(rest, 2));
        value.hour = number(characters(rest, 2));
        value.minute = number(characters(rest, 2));
        value.second = number(characters(rest, 2));
        const std::string sign = characters(rest, 1);
        int64_t correction = 0;
        if (sign == "+" || sign == "-") {
            const int64_t hours = number(characters(rest, 2));
            const int64_t minutes = number(characters(rest, 2));
            correction = (hours * 60 + minutes) * 60 * (sign == "+" ? -1 : 1);
        } else if (sign != "Z") {
            throw Failure();
        }
        *this = value;
        const int64_t moment = seconds();
        if (moment == -1)
            return RepresentError;
        setSeconds(moment + correction);
        return Read;
    }
};

#endif
