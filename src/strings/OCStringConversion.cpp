#include "OCStringConversion.h"

namespace {

constexpr char digitTexts[] = "0123456789abcdef";

// The decimal digits of 0 to 99: a division by 100 gives two digits at once.
constexpr char pairTexts[] = "00010203040506070809101112131415161718192021222324"
                             "25262728293031323334353637383940414243444546474849"
                             "50515253545556575859606162636465666768697071727374"
                             "75767778798081828384858687888990919293949596979899";

// The digits are written from the last to the first, so they end at `end`; each writer returns
// where they begin. 64 bits in radix 2 take 64 digits.
constexpr unsigned long maximumDigits = 64;

template<typename Value>
char* writeDecimal(char* end, Value value) {
    while (value >= 100) {
        const char* pair = pairTexts + 2 * (value % 100);
        value /= 100;
        *--end = pair[1];
        *--end = pair[0];
    }
    if (value >= 10) {
        const char* pair = pairTexts + 2 * value;
        *--end = pair[1];
        *--end = pair[0];
    } else
        *--end = digitTexts[value];
    return end;
}

template<typename Value>
char* writeHexadecimal(char* end, Value value) {
    do {
        *--end = digitTexts[value & 15];
        value >>= 4;
    } while (value != 0);
    return end;
}

template<typename Value>
char* writeDigits(char* end, Value value, unsigned int radix) {
    if (radix == 16)
        return writeHexadecimal(end, value);
    if (radix == 10 || radix < 2 || radix > 16)
        return writeDecimal(end, value);
    do {
        *--end = digitTexts[value % radix];
        value /= radix;
    } while (value != 0);
    return end;
}

template<typename Value>
OCAnsiString convert(Value magnitude, bool negative, unsigned int radix) {
    char buffer[1 + maximumDigits];
    char* end = buffer + sizeof buffer;
    char* text = writeDigits(end, magnitude, radix);
    if (negative)
        *--text = '-';
    return OCAnsiString(text, static_cast<unsigned long>(end - text));
}

} // namespace

OCAnsiString OCStringConversion::fromBoolean(bool value) {
    return value ? OCAnsiString("true", 4) : OCAnsiString("false", 5);
}

OCAnsiString OCStringConversion::fromInteger(int value, unsigned int radix) {
    const auto bits = static_cast<unsigned int>(value);
    return convert(value < 0 ? 0U - bits : bits, value < 0, radix);
}

OCAnsiString OCStringConversion::fromInteger(unsigned int value, unsigned int radix) {
    return convert(value, false, radix);
}

OCAnsiString OCStringConversion::fromSize(unsigned long value, unsigned int radix) {
    return convert(value, false, radix);
}
