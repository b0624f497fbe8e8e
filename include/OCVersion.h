#ifndef ORVABASE_OCVERSION_H
#define ORVABASE_OCVERSION_H

#include "OCAnsiString.h"

/// A version number of two parts, major and minor.
///
/// Versions are ordered by their major part, and by the minor one where that is equal. The parts
/// are numbers: 2.10 comes after 2.9.
///
///     OCVersion version(2, 10);
///     version.toString();          // 2.10
///     version > OCVersion(2, 9);   // true
class ORVABASE_EXPORT OCVersion : public OCObject {
public:
    // <sys/sysmacros.h> defines `major` and `minor` as macros: nothing here has one of these names.

    /// Version 0.0.
    OCVersion() noexcept : majorPart(0), minorPart(0) {}
    /// The version of these two parts.
    OCVersion(unsigned int majorNumber, unsigned int minorNumber) noexcept
        : majorPart(majorNumber), minorPart(minorNumber) {}
    OCVersion(const OCVersion&) noexcept = default;
    OCVersion& operator=(const OCVersion&) noexcept = default;
    ~OCVersion() noexcept override;

    /// The two parts.
    unsigned int getMajor() const noexcept { return majorPart; }
    unsigned int getMinor() const noexcept { return minorPart; }

    /// The two parts in decimal with a period between them, without padding. Nothing is allocated:
    /// the text is short.
    OCAnsiString toString() const;

    /// Orders two versions: by the major part, then by the minor one.
    OECompareResult compare(const OCVersion& other) const noexcept {
        if (majorPart != other.majorPart)
            return majorPart < other.majorPart ? CompareResultLess : CompareResultGreater;
        if (minorPart != other.minorPart)
            return minorPart < other.minorPart ? CompareResultLess : CompareResultGreater;
        return CompareResultEqual;
    }
    bool operator==(const OCVersion& other) const noexcept { return compare(other) == 0; }
    bool operator!=(const OCVersion& other) const noexcept { return compare(other) != 0; }
    bool operator<(const OCVersion& other) const noexcept { return compare(other) < 0; }
    bool operator<=(const OCVersion& other) const noexcept { return compare(other) <= 0; }
    bool operator>(const OCVersion& other) const noexcept { return compare(other) > 0; }
    bool operator>=(const OCVersion& other) const noexcept { return compare(other) >= 0; }

private:
    unsigned int majorPart;
    unsigned int minorPart;
};

#endif
