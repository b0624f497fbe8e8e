#ifndef ORVABASE_OCHEXDIGITS_H
#define ORVABASE_OCHEXDIGITS_H

// Eight hexadecimal digits at a time, as the bytes of one word: the first digit in the lowest byte,
// which is the first in memory.

namespace orvabase {

constexpr unsigned long hexDigitCount = 8;

/// `byte` in all eight bytes.
constexpr unsigned long inEachByte(unsigned long byte) {
    return byte * 0x0101010101010101;
}

/// The lower-case digits of `value`, with leading zeros.
inline unsigned long hexDigitsOf(unsigned int value) noexcept {
    // One half of what is left goes up each time, until a byte holds the value of one digit.
    unsigned long digits = value;
    digits = (digits | digits << 16) & 0x0000FFFF0000FFFF;
    digits = (digits | digits << 8) & 0x00FF00FF00FF00FF;
    digits = (digits | digits << 4) & inEachByte(0x0F);
    digits = __builtin_bswap64(digits);
    const unsigned long letters = (digits + inEachByte(6)) >> 4 & inEachByte(1);
    return digits + inEachByte('0') + letters * ('a' - '9' - 1);
}

/// Stores in `value` what eight digits of either case stand for. False, with `value` undefined,
/// when one of them is no hexadecimal digit.
inline bool hexValueOf(unsigned long digits, unsigned int& value) noexcept {
    constexpr unsigned long tops = inEachByte(0x80);
    // The top bit of each byte, if the byte (less than 0x80) is at least `least`.
    const auto reach = [](unsigned long bytes, unsigned long least) {
        return (bytes | tops) - inEachByte(least);
    };
    const unsigned long folded = digits | inEachByte(0x20);
    const unsigned long decimal = reach(digits, '0') & ~reach(digits, '9' + 1);
    const unsigned long letter = reach(folded, 'a') & ~reach(folded, 'f' + 1) & tops;
    if (((decimal | letter) & ~digits & tops) != tops)
        return false;
    unsigned long values = (digits & inEachByte(0x0F)) + (letter >> 7) * 9;
    values = __builtin_bswap64(values);
    values = (values | values >> 4) & 0x00FF00FF00FF00FF;
    values = (values | values >> 8) & 0x0000FFFF0000FFFF;
    value = static_cast<unsigned int>(values | values >> 16);
    return true;
}

} // namespace orvabase

#endif
