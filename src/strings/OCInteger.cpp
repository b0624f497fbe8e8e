#include "OCInteger.h"

#include <cstring>
#include <ostream>

namespace {

/// The value of a hexadecimal digit, or more than any radix.
unsigned int digitValue(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned int>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned int>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned int>(c - 'A' + 10);
    return 16;
}

[[noreturn, gnu::cold, gnu::noinline]] void throwConvertStringError() {
    throw OXIntegerConversion_ConvertStringError();
}

[[gnu::cold, gnu::noinline]] unsigned int parseInRadix(const char* text, unsigned long length,
                                                       unsigned int radix) {
    if (radix < 2 || radix > 16)
        throwConvertStringError();
    unsigned int result = 0;
    for (const char* const end = text + length; text != end; ++text) {
        const unsigned int digit = digitValue(*text);
        if (digit >= radix)
            break;
        result = result * radix + digit;
    }
    return result;
}

/// The number that the eight bytes of a word spell, the first digit in the lowest byte.
unsigned int joinDigits(unsigned long digits) {
    // Eight digits make four numbers of two, two of four, one of eight.
    digits = (digits * 10 + (digits >> 8)) & 0x00ff00ff00ff00ff;
    digits = (digits * (100 << 16 | 1)) >> 16 & 0x0000ffff0000ffff;
    return static_cast<unsigned int>((digits * (10000UL << 32 | 1)) >> 32);
}

/// Parses a text that is followed by a zero byte, in storage that goes on for seven bytes at least.
///
/// The first eight digits are taken at once. For the short numbers that are common this is faster
/// than a loop, at whose end the processor guesses wrong.
unsigned int parseDecimal(const char* text) {
    unsigned long word = 0;
    std::memcpy(&word, text, sizeof word);
    const unsigned long digits = word ^ 0x3030303030303030;
    // The highest bit of each byte that is no digit, up to the first such byte at least.
    const unsigned long others = ((digits + 0x7676767676767676) | digits) & 0x8080808080808080;
    if (others != 0) {
        // The digits go to the end of the word, behind zeros: by eight bits more than there are
        // behind the one found.
        return joinDigits(digits << 8 << (63 - __builtin_ctzl(others)));
    }
    unsigned int result = joinDigits(digits);
    for (text += 8; *text >= '0' && *text <= '9'; ++text)
        result = result * 10 + static_cast<unsigned int>(*text - '0');
    return result;
}

inline unsigned int parseUnsigned(const char* text, unsigned long length, unsigned int radix) {
    if (length == 0)
        throwConvertStringError();
    if (radix == 10)
        return parseDecimal(text); // a string's storage has 64 bytes at least
    return parseInRadix(text, length, radix);
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
