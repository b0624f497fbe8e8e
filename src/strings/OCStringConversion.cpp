#include "OCStringConversion.h"

#include <cstring>

namespace {

constexpr char digitTexts[] = "0123456789abcdef";

// The digits of 0 to 99: a division by 100 gives two digits at once.
constexpr char pairTexts[] = "00010203040506070809101112131415161718192021222324"
                             "25262728293031323334353637383940414243444546474849"
                             "50515253545556575859606162636465666768697071727374"
                             "75767778798081828384858687888990919293949596979899";

/// For the place of a value's highest bit, a number whose sum with the value has the number of the
/// value's decimal digits in its upper half. A carry into that half adds one for the values that
/// reach the next power of ten.
struct DecimalCounts {
    constexpr DecimalCounts() : table() {
        unsigned long digits = 1;
        unsigned long nextPower = 10;
        for (unsigned int bit = 0; bit < 32; bit++) {
            const unsigned long least = 1UL << bit;
            if (least >= nextPower) {
                digits++;
                nextPower *= 10;
            }
            const bool carries = nextPower < 2 * least;
            table[bit] = carries ? ((digits + 1) << 32) - nextPower : digits << 32;
        }
    }

    unsigned long table[32];
};

constexpr DecimalCounts decimalCounts;

inline unsigned long countDecimal(unsigned int value) {
    return (value + decimalCounts.table[31 - __builtin_clz(value | 1)]) >> 32;
}

inline unsigned long countDecimal(unsigned long value) {
    unsigned long count = 0;
    for (; value > ~0U; value /= 1000000000)
        count += 9;
    return count + countDecimal(static_cast<unsigned int>(value));
}

inline unsigned long countHexadecimal(unsigned long value) {
    return 16 - static_cast<unsigned long>(__builtin_clzl(value | 1)) / 4;
}

// The writers put the digits in front of `end`.

template<typename Value>
inline void writeDecimal(char* end, Value value) {
    while (value >= 100) {
        const Value rest = value / 100;
        end -= 2;
        std::memcpy(end, pairTexts + 2 * (value - rest * 100), 2);
        value = rest;
    }
    if (value >= 10)
        std::memcpy(end - 2, pairTexts + 2 * value, 2);
    else
        *(end - 1) = digitTexts[value];
}

template<typename Value>
inline void writeHexadecimal(char* end, Value value) {
    do {
        *--end = digitTexts[value & 15];
        value >>= 4;
    } while (value != 0);
}

/// Makes a string for `count` digits, which `write` puts in front of their end.
template<typename Write>
inline OCAnsiString make(bool negative, unsigned long count, Write write) {
    const unsigned long length = negative + count;
    if (length > 1 + 20)
        __builtin_unreachable(); // it spares the string to ask whether it needs more storage
    OCAnsiString result;
    char* const text = result.getString(); // short texts stay where they are
    result.setLength(length);
    *text = '-';
    write(text + length);
    return result;
}

template<typename Value>
inline OCAnsiString makeDecimal(Value magnitude, bool negative) {
    return make(negative, countDecimal(magnitude),
                [=](char* end) { writeDecimal(end, magnitude); });
}

template<typename Value>
inline OCAnsiString makeHexadecimal(Value magnitude, bool negative) {
    return make(negative, countHexadecimal(magnitude),
                [=](char* end) { writeHexadecimal(end, magnitude); });
}

[[gnu::cold, gnu::noinline]] OCAnsiString makeInRadix(unsigned long magnitude, bool negative,
                                                      unsigned int radix) {
    if (radix < 2 || radix > 16)
        return makeDecimal(magnitude, negative);
    char buffer[1 + 64]; // 64 bits in radix 2
    char* const end = buffer + sizeof buffer;
    char* text = end;
    do {
        *--text = digitTexts[magnitude % radix];
        magnitude /= radix;
    } while (magnitude != 0);
    if (negative)
        *--text = '-';
    return OCAnsiString(text, static_cast<unsigned long>(end - text));
}

template<typename Value>
inline OCAnsiString convert(Value magnitude, bool negative, unsigned int radix) {
    if (radix == 10)
        return makeDecimal(magnitude, negative);
    if (radix == 16)
        return makeHexadecimal(magnitude, negative);
    return makeInRadix(magnitude, negative, radix);
}

} // namespace

OCAnsiString OCStringConversion::fromBoolean(bool value) {
    return value ? OCAnsiString("true", 4) : OCAnsiString("false", 5);
}

[[gnu::flatten]] OCAnsiString OCStringConversion::fromInteger(int value, unsigned int radix) {
    const auto bits = static_cast<unsigned int>(value);
    return convert(value < 0 ? 0U - bits : bits, value < 0, radix);
}

[[gnu::flatten]] OCAnsiString OCStringConversion::fromInteger(unsigned int value,
                                                              unsigned int radix) {
    return convert(value, false, radix);
}

[[gnu::flatten]] OCAnsiString OCStringConversion::fromSize(unsigned long value,
                                                           unsigned int radix) {
    return convert(value, false, radix);
}
