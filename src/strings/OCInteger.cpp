#include "OCInteger.h"

#include <ostream>

namespace {

// No digit in any radix.
constexpr unsigned char noDigit = 255;

struct DigitValues {
    unsigned char values[256];

    constexpr DigitValues() : values() {
        for (unsigned char& value : values)
            value = noDigit;
        for (unsigned char digit = 0; digit < 10; digit++)
            values['0' + digit] = digit;
        for (unsigned char digit = 10; digit < 16; digit++) {
            values['a' + digit - 10] = digit;
            values['A' + digit - 10] = digit;
        }
    }
};

constexpr DigitValues digits;

inline unsigned int parseDigits(const char* text, const char* end, unsigned int radix) {
    unsigned int result = 0;
    for (; text != end; text++) {
        const unsigned int digit = digits.values[static_cast<unsigned char>(*text)];
        if (digit >= radix)
            break;
        result = result * radix + digit;
    }
    return result;
}

unsigned int parseUnsigned(const char* text, unsigned long length, unsigned int radix) {
    if (length == 0 || radix < 2 || radix > 16)
        throw OXIntegerConversion_ConvertStringError();
    if (radix == 10)
        return parseDigits(text, text + length, 10);
    if (radix == 16)
        return parseDigits(text, text + length, 16);
    return parseDigits(text, text + length, radix);
}

int parseNegated(const char* text, unsigned long length, unsigned int radix) {
    return static_cast<int>(0U - parseUnsigned(text, length, radix));
}

} // namespace

OCSignedInteger::~OCSignedInteger() noexcept = default;
OCUnsignedInteger::~OCUnsignedInteger() noexcept = default;

std::ostream& operator<<(std::ostream& stream, const OCSignedInteger& integer) {
    return stream << integer.getValue();
}

std::ostream& operator<<(std::ostream& stream, const OCUnsignedInteger& integer) {
    return stream << integer.getValue();
}

int OCSignedIntegerConversion::fromString(const OCAnsiString& text, unsigned int radix) {
    const unsigned long sign = text.getLength() > 0 && text.getString()[0] == '-' ? 1 : 0;
    return parseNegated(text.getString() + sign, text.getLength() - sign, radix);
}

int OCSignedIntegerConversion::parseNegative(OCAnsiString text, unsigned int radix) {
    if (text.getLength() == 0)
        throw OXIntegerConversion_ConvertStringError();
    return parseNegated(text.getString() + 1, text.getLength() - 1, radix);
}

int OCSignedIntegerConversion::parsePositive(OCAnsiString text, unsigned int radix) {
    return parseNegated(text.getString(), text.getLength(), radix);
}

int OCSignedIntegerConversion::fromSize(unsigned long value) {
    if (value > 2147483647)
        throw OXIntegerConversion_ConvertSizeError();
    return static_cast<int>(value);
}

unsigned int OCUnsignedIntegerConversion::fromString(const OCAnsiString& text, unsigned int radix) {
    return parseUnsigned(text.getString(), text.getLength(), radix);
}

unsigned int OCUnsignedIntegerConversion::fromSize(unsigned long value) {
    if (value > 4294967295)
        throw OXIntegerConversion_ConvertSizeError();
    return static_cast<unsigned int>(value);
}

OXIntegerConversion::OXIntegerConversion() = default;
OXIntegerConversion::~OXIntegerConversion() noexcept = default;

OXIntegerConversion_ConvertError::OXIntegerConversion_ConvertError() = default;
OXIntegerConversion_ConvertError::~OXIntegerConversion_ConvertError() noexcept = default;

OXIntegerConversion_ConvertSizeError::OXIntegerConversion_ConvertSizeError() {
    setClass("OXIntegerConversion_ConvertSizeError");
    setMessage("Error converting size to integer");
}

OXIntegerConversion_ConvertSizeError::~OXIntegerConversion_ConvertSizeError() noexcept = default;

OXIntegerConversion_ConvertStringError::OXIntegerConversion_ConvertStringError() {
    setClass("OXIntegerConversion_ConvertStringError");
    setMessage("Error converting string to integer");
}

OXIntegerConversion_ConvertStringError::~OXIntegerConversion_ConvertStringError() noexcept =
    default;
