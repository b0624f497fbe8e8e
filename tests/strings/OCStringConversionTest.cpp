#include "OCStringConversion.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

namespace {

std::string text(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength());
}

/// The digits of `value`, found in another way: from the first, by the largest power that fits.
std::string model(unsigned long value, unsigned long radix) {
    unsigned long power = 1;
    while (value / power >= radix)
        power *= radix;
    std::string result;
    for (; power > 0; power /= radix) {
        result += "0123456789abcdef"[value / power];
        value %= power;
    }
    return result;
}

TEST(StringConversion, ABooleanIsTrueOrFalse) {
    EXPECT_EQ("true", text(OCStringConversion::fromBoolean(true)));
    EXPECT_EQ("false", text(OCStringConversion::fromBoolean(false)));
}

TEST(StringConversion, ZeroIsOneDigitInEveryRadix) {
    for (unsigned int radix = 2; radix <= 16; radix++) {
        EXPECT_EQ("0", text(OCStringConversion::fromInteger(0, radix))) << radix;
        EXPECT_EQ("0", text(OCStringConversion::fromInteger(0U, radix))) << radix;
        EXPECT_EQ("0", text(OCStringConversion::fromSize(0, radix))) << radix;
    }
}

TEST(StringConversion, DigitsAboveNineAreLowerCaseLetters) {
    EXPECT_EQ("abcdef", text(OCStringConversion::fromInteger(0xabcdefU, 16)));
    EXPECT_EQ("-ff", text(OCStringConversion::fromInteger(-255, 16)));
    EXPECT_EQ("a", text(OCStringConversion::fromInteger(10, 11)));
    EXPECT_EQ("b", text(OCStringConversion::fromInteger(11, 12)));
    EXPECT_EQ("c", text(OCStringConversion::fromInteger(12, 13)));
    EXPECT_EQ("d", text(OCStringConversion::fromInteger(13, 14)));
    EXPECT_EQ("e", text(OCStringConversion::fromInteger(14, 15)));
    EXPECT_EQ("f", text(OCStringConversion::fromInteger(15, 16)));
}

TEST(StringConversion, TheRadixItselfIsOneZero) {
    for (unsigned int radix = 2; radix <= 16; radix++) {
        EXPECT_EQ("10", text(OCStringConversion::fromInteger(radix, radix))) << radix;
        EXPECT_EQ("10", text(OCStringConversion::fromSize(radix, radix))) << radix;
        EXPECT_EQ("-10", text(OCStringConversion::fromInteger(-static_cast<int>(radix), radix)))
            << radix;
    }
}

TEST(StringConversion, TheMostNegativeIntegerHasAMagnitude) {
    EXPECT_EQ("-2147483648", text(OCStringConversion::fromInteger(INT_MIN, 10)));
    EXPECT_EQ("-80000000", text(OCStringConversion::fromInteger(INT_MIN, 16)));
    EXPECT_EQ("-10000000000000000000000000000000",
              text(OCStringConversion::fromInteger(INT_MIN, 2)));
    EXPECT_EQ("-20000000000", text(OCStringConversion::fromInteger(INT_MIN, 8)));
    EXPECT_EQ("-2147483647", text(OCStringConversion::fromInteger(INT_MIN + 1, 10)));
}

TEST(StringConversion, TheLargestValuesHaveAllTheirDigits) {
    EXPECT_EQ("2147483647", text(OCStringConversion::fromInteger(INT_MAX, 10)));
    EXPECT_EQ("7fffffff", text(OCStringConversion::fromInteger(INT_MAX, 16)));
    EXPECT_EQ("4294967295", text(OCStringConversion::fromInteger(UINT_MAX, 10)));
    EXPECT_EQ("ffffffff", text(OCStringConversion::fromInteger(UINT_MAX, 16)));
    EXPECT_EQ("18446744073709551615", text(OCStringConversion::fromSize(ULONG_MAX, 10)));
    EXPECT_EQ("ffffffffffffffff", text(OCStringConversion::fromSize(ULONG_MAX, 16)));
    EXPECT_EQ("1777777777777777777777", text(OCStringConversion::fromSize(ULONG_MAX, 8)));
    EXPECT_EQ(std::string(64, '1'), text(OCStringConversion::fromSize(ULONG_MAX, 2)));
    EXPECT_EQ("11112220022122120101211020120210210211220",
              text(OCStringConversion::fromSize(ULONG_MAX, 3)));
}

TEST(StringConversion, AnUnsignedIntegerHasNoSign) {
    EXPECT_EQ("2147483648", text(OCStringConversion::fromInteger(2147483648U, 10)));
    EXPECT_EQ("9223372036854775808", text(OCStringConversion::fromSize(1UL << 63, 10)));
}

TEST(StringConversion, EveryNumberOfDecimalDigitsIsRight) {
    std::string nines;
    std::string one = "1";
    unsigned long power = 1;
    for (int digits = 1; digits <= 19; digits++) {
        nines += '9';
        EXPECT_EQ(one, text(OCStringConversion::fromSize(power, 10)));
        power *= 10;
        one += '0';
        EXPECT_EQ(nines, text(OCStringConversion::fromSize(power - 1, 10)));
        if (digits <= 9) {
            EXPECT_EQ(nines,
                      text(OCStringConversion::fromInteger(static_cast<unsigned>(power - 1), 10)));
            EXPECT_EQ("-" + nines,
                      text(OCStringConversion::fromInteger(-static_cast<int>(power - 1), 10)));
        }
    }
    EXPECT_EQ("10000000000000000000", text(OCStringConversion::fromSize(power, 10)));
}

TEST(StringConversion, NumbersAroundEveryPowerOfTwoAreRight) {
    for (int bit = 0; bit < 64; bit++)
        for (unsigned long offset : {-1UL, 0UL, 1UL}) {
            const unsigned long value = (1UL << bit) + offset;
            EXPECT_EQ(std::to_string(value), text(OCStringConversion::fromSize(value, 10)));
            EXPECT_EQ(model(value, 16), text(OCStringConversion::fromSize(value, 16)));
            const auto narrow = static_cast<unsigned int>(value);
            EXPECT_EQ(std::to_string(narrow), text(OCStringConversion::fromInteger(narrow, 10)));
        }
}

TEST(StringConversion, SmallNumbersAgreeWithPrintf) {
    for (int value = -10100; value <= 10100; value++) {
        char expected[32];
        std::snprintf(expected, sizeof expected, "%d", value);
        ASSERT_EQ(expected, text(OCStringConversion::fromInteger(value, 10)));
    }
    for (unsigned int value = 0; value <= 70000; value++) {
        char expected[32];
        std::snprintf(expected, sizeof expected, "%x", value);
        ASSERT_EQ(expected, text(OCStringConversion::fromInteger(value, 16)));
        std::snprintf(expected, sizeof expected, "%o", value);
        ASSERT_EQ(expected, text(OCStringConversion::fromInteger(value, 8)));
    }
}

TEST(StringConversion, RandomNumbersAgreeWithTheModelInEveryRadix) {
    const unsigned int seed = 20240917;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int round = 0; round < 4000; round++) {
        const unsigned long value = random() >> (random() % 64);
        for (unsigned int radix = 2; radix <= 16; radix++) {
            ASSERT_EQ(model(value, radix), text(OCStringConversion::fromSize(value, radix)))
                << value << " " << radix;
            const auto narrow = static_cast<unsigned int>(value);
            ASSERT_EQ(model(narrow, radix), text(OCStringConversion::fromInteger(narrow, radix)))
                << narrow << " " << radix;
            const auto integer = static_cast<int>(narrow);
            const long magnitude = integer < 0 ? -static_cast<long>(integer) : integer;
            ASSERT_EQ((integer < 0 ? "-" : "") +
                          model(static_cast<unsigned long>(magnitude), radix),
                      text(OCStringConversion::fromInteger(integer, radix)))
                << integer << " " << radix;
        }
    }
}

TEST(StringConversion, AWrongRadixIsTakenAsTen) {
    for (unsigned int radix : {0U, 1U, 17U, 36U, UINT_MAX}) {
        EXPECT_EQ("4711", text(OCStringConversion::fromSize(4711, radix))) << radix;
        EXPECT_EQ("4711", text(OCStringConversion::fromInteger(4711U, radix))) << radix;
        EXPECT_EQ("-4711", text(OCStringConversion::fromInteger(-4711, radix))) << radix;
    }
}

TEST(StringConversion, ResultsAreOrdinaryStrings) {
    OCAnsiString number = OCStringConversion::fromSize(ULONG_MAX, 2);
    EXPECT_EQ(64UL, number.getLength());
    EXPECT_EQ(128UL, number.getCapacity());
    EXPECT_EQ('\0', number.getString()[64]);
    number = OCStringConversion::fromInteger(7, 10);
    EXPECT_EQ(64UL, number.getCapacity());
    EXPECT_EQ('\0', number.getString()[1]);
    number.append("th");
    EXPECT_EQ("7th", text(number));
    const OCAnsiString boolean = OCStringConversion::fromBoolean(false);
    EXPECT_EQ(64UL, boolean.getCapacity());
    EXPECT_EQ('\0', boolean.getString()[5]);
}

TEST(StringConversion, HasNoInstances) {
    EXPECT_FALSE(std::is_default_constructible_v<OCStringConversion>);
}

} // namespace
