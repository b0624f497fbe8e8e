#include "OCInteger.h"

#include "OCStringConversion.h"
#include "support/VirtualTable.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

static_assert(sizeof(OCSignedInteger) == 16);
static_assert(sizeof(OCUnsignedInteger) == 16);

std::string text(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength());
}

template<typename Object>
std::string printed(const Object& object) {
    std::ostringstream stream;
    stream << object;
    return stream.str();
}

/// What the two wrappers of integers promise alike.
template<typename Wrapper>
class IntegerTest : public testing::Test {};
using Wrappers = testing::Types<OCSignedInteger, OCUnsignedInteger>;
struct WrapperNames {
    template<class Wrapper>
    static std::string GetName(int) {
        return std::is_same_v<Wrapper, OCSignedInteger> ? "Signed" : "Unsigned";
    }
};
TYPED_TEST_SUITE(IntegerTest, Wrappers, WrapperNames);

TYPED_TEST(IntegerTest, HoldsTheValueItIsMadeFrom) {
    const TypeParam original(4711);
    EXPECT_EQ(4711U, static_cast<unsigned int>(original.getValue()));
    const TypeParam copy(original);
    EXPECT_EQ(4711U, static_cast<unsigned int>(copy.getValue()));
}

TYPED_TEST(IntegerTest, TakesAValueOrAnotherInteger) {
    using Value = decltype(TypeParam(0).getValue());
    TypeParam integer(1);
    EXPECT_EQ(&integer, &integer.assign(static_cast<Value>(2)));
    EXPECT_EQ(static_cast<Value>(2), integer.getValue());
    EXPECT_EQ(&integer, &(integer = static_cast<Value>(3)));
    EXPECT_EQ(static_cast<Value>(3), integer.getValue());
    const TypeParam other(4);
    EXPECT_EQ(&integer, &integer.assign(other));
    EXPECT_EQ(static_cast<Value>(4), integer.getValue());
    const TypeParam third(5);
    EXPECT_EQ(&integer, &(integer = third));
    EXPECT_EQ(static_cast<Value>(5), integer.getValue());
    const TypeParam& same = integer;
    integer = same;
    EXPECT_EQ(static_cast<Value>(5), integer.getValue());
}

TYPED_TEST(IntegerTest, ShowsItsStorage) {
    TypeParam integer(0x01020304);
    const TypeParam& constant = integer;
    EXPECT_EQ(4UL, integer.bufferSize());
    EXPECT_EQ(0, std::memcmp(integer.bufferAddress(), "\4\3\2\1", 4));
    EXPECT_EQ(integer.bufferAddress(), constant.bufferAddress());
    EXPECT_EQ(reinterpret_cast<char*>(&integer) + 8, static_cast<char*>(integer.bufferAddress()));
    std::memset(integer.bufferAddress(), 0x11, integer.bufferSize());
    EXPECT_EQ(0x11111111U, static_cast<unsigned int>(integer.getValue()));
    static_assert(std::is_same_v<void*, decltype(integer.bufferAddress())>);
    static_assert(std::is_same_v<const void*, decltype(constant.bufferAddress())>);
    static_assert(std::is_same_v<unsigned long, decltype(constant.bufferSize())>);
}

TYPED_TEST(IntegerTest, PrintsInTheStreamsFormat) {
    EXPECT_EQ("0", printed(TypeParam(0)));
    EXPECT_EQ("255", printed(TypeParam(255)));
    std::ostringstream stream;
    stream << std::hex << std::showbase << std::uppercase << TypeParam(255) << ' ' << std::dec
           << std::setw(6) << std::setfill('*') << TypeParam(42) << ' ' << std::left << std::setw(4)
           << TypeParam(7) << ' ' << std::oct << TypeParam(8);
    EXPECT_EQ("0XFF ****42 7*** 010", stream.str());
}

TYPED_TEST(IntegerTest, HasOnlyItsDestructorVirtual) {
    TypeParam* integer = new TypeParam(1);
    const VirtualTable table(integer);
    EXPECT_EQ(2UL, table.getCount());
    table.deleteObject(integer);
    EXPECT_TRUE(std::is_nothrow_destructible_v<TypeParam>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, TypeParam>));
}

TEST(SignedInteger, PrintsItsSign) {
    EXPECT_EQ("-1", printed(OCSignedInteger(-1)));
    EXPECT_EQ("-2147483648", printed(OCSignedInteger(INT_MIN)));
    EXPECT_EQ("2147483647", printed(OCSignedInteger(INT_MAX)));
    std::ostringstream stream;
    stream << std::showpos << OCSignedInteger(5) << std::hex << std::noshowpos
           << OCSignedInteger(-1);
    EXPECT_EQ("+5ffffffff", stream.str());
}

TEST(UnsignedInteger, PrintsLargeValuesWithoutASign) {
    EXPECT_EQ("4294967295", printed(OCUnsignedInteger(4294967295U)));
    std::ostringstream stream;
    stream << std::showpos << OCUnsignedInteger(5);
    EXPECT_EQ("5", stream.str());
}

// Texts to unsigned numbers

TEST(UnsignedIntegerConversion, ReadsDigitsOfEveryRadix) {
    EXPECT_EQ(5U, OCUnsignedIntegerConversion::fromString("101", 2));
    EXPECT_EQ(5U, OCUnsignedIntegerConversion::fromString("12", 3));
    EXPECT_EQ(511U, OCUnsignedIntegerConversion::fromString("777", 8));
    EXPECT_EQ(42U, OCUnsignedIntegerConversion::fromString("42", 10));
    EXPECT_EQ(10U * 11 + 10, OCUnsignedIntegerConversion::fromString("aA", 11));
    EXPECT_EQ(255U, OCUnsignedIntegerConversion::fromString("ff", 16));
    EXPECT_EQ(255U, OCUnsignedIntegerConversion::fromString("FF", 16));
    EXPECT_EQ(0xabcdefU, OCUnsignedIntegerConversion::fromString("AbCdEf", 16));
    EXPECT_EQ(123456789U, OCUnsignedIntegerConversion::fromString("123456789", 10));
}

TEST(UnsignedIntegerConversion, ReadsTheLargestValues) {
    EXPECT_EQ(4294967295U, OCUnsignedIntegerConversion::fromString("4294967295", 10));
    EXPECT_EQ(4294967295U, OCUnsignedIntegerConversion::fromString("ffffffff", 16));
    EXPECT_EQ(4294967295U,
              OCUnsignedIntegerConversion::fromString("11111111111111111111111111111111", 2));
}

TEST(UnsignedIntegerConversion, WrapsAroundWithoutAReport) {
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("4294967296", 10));
    EXPECT_EQ(1U, OCUnsignedIntegerConversion::fromString("4294967297", 10));
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("100000000", 16));
    EXPECT_EQ(0x9abcdef0U, OCUnsignedIntegerConversion::fromString("123456789abcdef0", 16));
    // 18446744073709551621 is 2^64 + 5
    EXPECT_EQ(5U, OCUnsignedIntegerConversion::fromString("18446744073709551621", 10));
}

TEST(UnsignedIntegerConversion, StopsAtTheFirstCharacterThatIsNoDigit) {
    EXPECT_EQ(12U, OCUnsignedIntegerConversion::fromString("12x", 10));
    EXPECT_EQ(12U, OCUnsignedIntegerConversion::fromString("12x34", 10));
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("x", 10));
    EXPECT_EQ(1U, OCUnsignedIntegerConversion::fromString("19", 8));
    EXPECT_EQ(1U, OCUnsignedIntegerConversion::fromString("12", 2));
    EXPECT_EQ(9U, OCUnsignedIntegerConversion::fromString("9a", 10));
    EXPECT_EQ(15U, OCUnsignedIntegerConversion::fromString("fg", 16));
    EXPECT_EQ(15U, OCUnsignedIntegerConversion::fromString("FG", 16));
    EXPECT_EQ(12U, OCUnsignedIntegerConversion::fromString("12.5", 10));
    EXPECT_EQ(12U, OCUnsignedIntegerConversion::fromString("12 ", 10));
    EXPECT_EQ(1U, OCUnsignedIntegerConversion::fromString(OCAnsiString("1\0002", 3), 10));
}

TEST(UnsignedIntegerConversion, AcceptsNoSignBlankOrPrefix) {
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString(" 5", 10));
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("+5", 10));
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("-5", 10));
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("0x10", 16));
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromString("\t5", 10));
}

TEST(UnsignedIntegerConversion, KnowsExactlySixteenDigitsAmongAllBytes) {
    for (unsigned int byte = 0; byte < 256; byte++) {
        const char c = static_cast<char>(byte);
        unsigned int expected = 99;
        for (unsigned int digit = 0; digit < 16; digit++)
            if (c == "0123456789abcdef"[digit] || c == "0123456789ABCDEF"[digit])
                expected = digit;
        for (unsigned int radix = 2; radix <= 16; radix++)
            EXPECT_EQ(expected < radix ? radix + expected : 1,
                      OCUnsignedIntegerConversion::fromString(OCAnsiString("1") + c, radix))
                << byte << " " << radix;
    }
}

TEST(UnsignedIntegerConversion, EveryByteThatIsNoDigitEndsTheNumberWhereverItStands) {
    const std::string digits = "123456789012";
    for (unsigned long place = 0; place < digits.size(); place++)
        for (int byte = -128; byte < 128; byte++) {
            if (byte >= '0' && byte <= '9')
                continue;
            std::string input = digits;
            input[place] = static_cast<char>(byte);
            unsigned int expected = 0;
            for (unsigned long i = 0; i < place; i++)
                expected = expected * 10 + static_cast<unsigned int>(digits[i] - '0');
            const OCAnsiString argument(input.data(), input.size());
            ASSERT_EQ(expected, OCUnsignedIntegerConversion::fromString(argument, 10))
                << place << " " << byte;
            ASSERT_EQ(static_cast<int>(0U - expected),
                      OCSignedIntegerConversion::fromString("-" + argument, 10))
                << place << " " << byte;
        }
}

TEST(UnsignedIntegerConversion, ReadsTextsOfEveryLength) {
    std::string digits;
    unsigned int expected = 0;
    for (unsigned int i = 1; i <= 300; i++) {
        digits += static_cast<char>('0' + i % 10);
        expected = expected * 10 + i % 10;
        const OCAnsiString argument(digits.data(), digits.size());
        ASSERT_EQ(expected, OCUnsignedIntegerConversion::fromString(argument, 10)) << i;
        ASSERT_EQ(static_cast<int>(0U - expected),
                  OCSignedIntegerConversion::fromString("-" + argument, 10))
            << i;
    }
}

TEST(UnsignedIntegerConversion, DoesNotLookBehindTheText) {
    OCAnsiString input("12345678901234567890");
    for (unsigned long length = 19; length > 0; length--) {
        // The old digits may still stand behind the new end.
        input.setLength(length);
        unsigned long expected = 0;
        for (unsigned long i = 0; i < length; i++)
            expected = expected * 10 + static_cast<unsigned long>(input[i] - '0');
        ASSERT_EQ(static_cast<unsigned int>(expected),
                  OCUnsignedIntegerConversion::fromString(input, 10))
            << length;
    }
}

void expectConvertStringError(const OCAnsiString& input, unsigned int radix) {
    SCOPED_TRACE(text(input) + " " + std::to_string(radix));
    EXPECT_THROW(OCUnsignedIntegerConversion::fromString(input, radix),
                 OXIntegerConversion_ConvertStringError);
    EXPECT_THROW(OCSignedIntegerConversion::fromString(input, radix),
                 OXIntegerConversion_ConvertStringError);
}

TEST(IntegerConversion, RefusesAnEmptyText) {
    for (unsigned int radix = 0; radix <= 17; radix++)
        expectConvertStringError("", radix);
}

TEST(IntegerConversion, RefusesARadixThatIsNotFromTwoToSixteen) {
    for (unsigned int radix : {0U, 1U, 17U, 36U, 256U, UINT_MAX}) {
        expectConvertStringError("1", radix);
        expectConvertStringError("-1", radix);
        expectConvertStringError("x", radix);
    }
}

// Texts to signed numbers

TEST(SignedIntegerConversion, GivesTheNegativeWithOrWithoutASign) {
    EXPECT_EQ(-5, OCSignedIntegerConversion::fromString("-5", 10));
    EXPECT_EQ(-5, OCSignedIntegerConversion::fromString("5", 10));
    EXPECT_EQ(-42, OCSignedIntegerConversion::fromString("42", 10));
    EXPECT_EQ(-42, OCSignedIntegerConversion::fromString("-42", 10));
    EXPECT_EQ(-255, OCSignedIntegerConversion::fromString("ff", 16));
    EXPECT_EQ(-255, OCSignedIntegerConversion::fromString("-FF", 16));
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString("0", 10));
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString("-0", 10));
}

TEST(SignedIntegerConversion, NegatesIn32Bits) {
    EXPECT_EQ(-2147483647, OCSignedIntegerConversion::fromString("2147483647", 10));
    EXPECT_EQ(INT_MIN, OCSignedIntegerConversion::fromString("-2147483648", 10));
    EXPECT_EQ(INT_MIN, OCSignedIntegerConversion::fromString("2147483648", 10));
    EXPECT_EQ(INT_MAX, OCSignedIntegerConversion::fromString("-2147483649", 10));
    EXPECT_EQ(1, OCSignedIntegerConversion::fromString("4294967295", 10));
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString("-4294967296", 10));
}

TEST(SignedIntegerConversion, ASignAloneIsRefused) {
    EXPECT_THROW(OCSignedIntegerConversion::fromString("-", 10),
                 OXIntegerConversion_ConvertStringError);
    EXPECT_THROW(OCSignedIntegerConversion::parseNegative("-", 10),
                 OXIntegerConversion_ConvertStringError);
}

TEST(SignedIntegerConversion, OnlyTheFirstCharacterIsASign) {
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString("--5", 10));
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString("+5", 10));
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString(" -5", 10));
    EXPECT_EQ(-5, OCSignedIntegerConversion::fromString("5-3", 10));
    EXPECT_EQ(0, OCSignedIntegerConversion::fromString("-x", 10));
}

TEST(SignedIntegerConversion, ParseNegativeDropsTheFirstCharacterWhateverItIs) {
    EXPECT_EQ(-5, OCSignedIntegerConversion::parseNegative("-5", 10));
    EXPECT_EQ(-5, OCSignedIntegerConversion::parseNegative("+5", 10));
    EXPECT_EQ(-2, OCSignedIntegerConversion::parseNegative("12", 10));
    EXPECT_EQ(-255, OCSignedIntegerConversion::parseNegative("-ff", 16));
    EXPECT_THROW(OCSignedIntegerConversion::parseNegative("5", 10),
                 OXIntegerConversion_ConvertStringError);
    EXPECT_THROW(OCSignedIntegerConversion::parseNegative("", 10),
                 OXIntegerConversion_ConvertStringError);
    EXPECT_THROW(OCSignedIntegerConversion::parseNegative("-5", 1),
                 OXIntegerConversion_ConvertStringError);
}

TEST(SignedIntegerConversion, ParsePositiveNegatesToo) {
    EXPECT_EQ(-5, OCSignedIntegerConversion::parsePositive("5", 10));
    EXPECT_EQ(0, OCSignedIntegerConversion::parsePositive("-5", 10));
    EXPECT_EQ(-255, OCSignedIntegerConversion::parsePositive("ff", 16));
    EXPECT_THROW(OCSignedIntegerConversion::parsePositive("", 10),
                 OXIntegerConversion_ConvertStringError);
    EXPECT_THROW(OCSignedIntegerConversion::parsePositive("5", 17),
                 OXIntegerConversion_ConvertStringError);
}

TEST(IntegerConversion, LeavesItsArgumentAsItIs) {
    const OCAnsiString input("-42");
    OCSignedIntegerConversion::fromString(input, 10);
    OCSignedIntegerConversion::parseNegative(input, 10);
    OCUnsignedIntegerConversion::fromString(input, 10);
    EXPECT_EQ("-42", text(input));
}

TEST(IntegerConversion, ReadsBackWhatIsWrittenInEveryRadix) {
    const unsigned int seed = 77001;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 4000; round++) {
        const auto value = static_cast<unsigned int>(random() >> (random() % 32));
        for (unsigned int radix = 2; radix <= 16; radix++) {
            const OCAnsiString digits = OCStringConversion::fromInteger(value, radix);
            ASSERT_EQ(value, OCUnsignedIntegerConversion::fromString(digits, radix))
                << value << " " << radix;
            const int negated = static_cast<int>(0U - value);
            ASSERT_EQ(negated, OCSignedIntegerConversion::fromString(digits, radix))
                << value << " " << radix;
            ASSERT_EQ(negated, OCSignedIntegerConversion::fromString("-" + digits, radix))
                << value << " " << radix;
        }
    }
}

// Sizes

TEST(UnsignedIntegerConversion, TakesSizesUpTo32Bits) {
    EXPECT_EQ(0U, OCUnsignedIntegerConversion::fromSize(0));
    EXPECT_EQ(4294967295U, OCUnsignedIntegerConversion::fromSize(4294967295UL));
    EXPECT_THROW(OCUnsignedIntegerConversion::fromSize(4294967296UL),
                 OXIntegerConversion_ConvertSizeError);
    EXPECT_THROW(OCUnsignedIntegerConversion::fromSize(ULONG_MAX),
                 OXIntegerConversion_ConvertSizeError);
}

TEST(SignedIntegerConversion, TakesSizesUpTo31Bits) {
    EXPECT_EQ(0, OCSignedIntegerConversion::fromSize(0));
    EXPECT_EQ(2147483647, OCSignedIntegerConversion::fromSize(2147483647UL));
    EXPECT_THROW(OCSignedIntegerConversion::fromSize(2147483648UL),
                 OXIntegerConversion_ConvertSizeError);
    EXPECT_THROW(OCSignedIntegerConversion::fromSize(4294967296UL),
                 OXIntegerConversion_ConvertSizeError);
    EXPECT_THROW(OCSignedIntegerConversion::fromSize(ULONG_MAX),
                 OXIntegerConversion_ConvertSizeError);
}

// Exceptions

TEST(IntegerConversion, ReportsATextThatIsNoNumber) {
    try {
        OCUnsignedIntegerConversion::fromString("", 10);
        FAIL();
    } catch (const OXIntegerConversion_ConvertError& failure) {
        EXPECT_EQ("OXIntegerConversion_ConvertStringError", text(failure.getClass()));
        EXPECT_EQ("Error converting string to integer", text(failure.getMessage()));
        EXPECT_EQ(0UL, failure.getDetails().getCount());
    }
}

TEST(IntegerConversion, ReportsASizeThatDoesNotFit) {
    try {
        OCSignedIntegerConversion::fromSize(2147483648UL);
        FAIL();
    } catch (const OXIntegerConversion_ConvertError& failure) {
        EXPECT_EQ("OXIntegerConversion_ConvertSizeError", text(failure.getClass()));
        EXPECT_EQ("Error converting size to integer", text(failure.getMessage()));
        EXPECT_EQ(0UL, failure.getDetails().getCount());
    }
}

TEST(IntegerConversion, ItsExceptionsFormATree) {
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXIntegerConversion>));
    EXPECT_TRUE((std::is_base_of_v<OXIntegerConversion, OXIntegerConversion_ConvertError>));
    EXPECT_TRUE((std::is_base_of_v<OXIntegerConversion_ConvertError,
                                   OXIntegerConversion_ConvertStringError>));
    EXPECT_TRUE((
        std::is_base_of_v<OXIntegerConversion_ConvertError, OXIntegerConversion_ConvertSizeError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXIntegerConversion>);
    EXPECT_FALSE(std::is_default_constructible_v<OXIntegerConversion_ConvertError>);
    EXPECT_EQ(sizeof(OXAutoException), sizeof(OXIntegerConversion_ConvertStringError));
    EXPECT_EQ(sizeof(OXAutoException), sizeof(OXIntegerConversion_ConvertSizeError));
    const OXIntegerConversion_ConvertStringError textError;
    EXPECT_EQ(4UL, VirtualTable(&textError).getCount());
    const OXIntegerConversion_ConvertSizeError sizeError;
    EXPECT_EQ(4UL, VirtualTable(&sizeError).getCount());
    EXPECT_FALSE(std::is_default_constructible_v<OCSignedIntegerConversion>);
    EXPECT_FALSE(std::is_default_constructible_v<OCUnsignedIntegerConversion>);
}

} // namespace
