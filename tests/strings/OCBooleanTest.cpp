#include "OCBoolean.h"

#include "support/VirtualTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

static_assert(sizeof(OCBoolean) == 16);

std::string text(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength());
}

template<typename Object>
std::string printed(const Object& object) {
    std::ostringstream stream;
    stream << object;
    return stream.str();
}

TEST(Boolean, HoldsTheValueItIsMadeFrom) {
    EXPECT_TRUE(OCBoolean(true).getValue());
    EXPECT_FALSE(OCBoolean(false).getValue());
    const OCBoolean original(true);
    const OCBoolean copy(original);
    EXPECT_TRUE(copy.getValue());
}

TEST(Boolean, TakesAValueOrAnotherBoolean) {
    OCBoolean boolean(false);
    EXPECT_EQ(&boolean, &boolean.assign(true));
    EXPECT_TRUE(boolean.getValue());
    EXPECT_EQ(&boolean, &(boolean = false));
    EXPECT_FALSE(boolean.getValue());
    const OCBoolean other(true);
    EXPECT_EQ(&boolean, &boolean.assign(other));
    EXPECT_TRUE(boolean.getValue());
    const OCBoolean third(false);
    EXPECT_EQ(&boolean, &(boolean = third));
    EXPECT_FALSE(boolean.getValue());
    const OCBoolean& same = boolean;
    boolean = same;
    EXPECT_FALSE(boolean.getValue());
}

TEST(Boolean, IsEqualWhenTheValuesAre) {
    EXPECT_TRUE(OCBoolean(true) == OCBoolean(true));
    EXPECT_TRUE(OCBoolean(false) == OCBoolean(false));
    EXPECT_FALSE(OCBoolean(true) == OCBoolean(false));
    EXPECT_FALSE(OCBoolean(false) == OCBoolean(true));
    EXPECT_TRUE(OCBoolean(true) == true);
}

TEST(Boolean, ShowsItsStorage) {
    OCBoolean boolean(true);
    const OCBoolean& constant = boolean;
    EXPECT_EQ(1UL, boolean.bufferSize());
    EXPECT_EQ(1, *static_cast<unsigned char*>(boolean.bufferAddress()));
    EXPECT_EQ(boolean.bufferAddress(), constant.bufferAddress());
    EXPECT_EQ(reinterpret_cast<char*>(&boolean) + 8, static_cast<char*>(boolean.bufferAddress()));
    std::memset(boolean.bufferAddress(), 0, boolean.bufferSize());
    EXPECT_FALSE(boolean.getValue());
    static_assert(std::is_same_v<void*, decltype(boolean.bufferAddress())>);
    static_assert(std::is_same_v<const void*, decltype(constant.bufferAddress())>);
    static_assert(std::is_same_v<unsigned long, decltype(constant.bufferSize())>);
}

TEST(Boolean, PrintsTrueOrFalse) {
    EXPECT_EQ("true", printed(OCBoolean(true)));
    EXPECT_EQ("false", printed(OCBoolean(false)));
    std::ostringstream stream;
    stream << std::noboolalpha << OCBoolean(true) << std::boolalpha << OCBoolean(false);
    EXPECT_EQ("truefalse", stream.str());
}

TEST(Boolean, PrintsWithTheStreamsWidth) {
    std::ostringstream stream;
    stream << std::setw(6) << std::setfill('.') << OCBoolean(true) << OCBoolean(false);
    EXPECT_EQ("..truefalse", stream.str());
}

TEST(Boolean, HasOnlyItsDestructorVirtual) {
    OCBoolean* boolean = new OCBoolean(true);
    const VirtualTable table(boolean);
    EXPECT_EQ(2UL, table.getCount());
    table.deleteObject(boolean);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCBoolean>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCBoolean>));
}

const char* const trueTexts[] = {"true", "TRUE", "True", "tRuE", "1",  "y",
                                 "Y",    "yes",  "YES",  "Yes",  "yEs"};
const char* const falseTexts[] = {"false", "FALSE", "False", "fAlSe", "0",
                                  "n",     "N",     "no",    "NO",    "No"};
const char* const otherTexts[] = {
    "",   " ", " yes",  "yes ",  "on",   "off",  "t",   "f",     "tru",    "ye", "10",  "00",
    "-1", "2", "true ", "truee", "fals", "nope", "not", "yesno", "falsey", "01", "Y\n", "\x91"};

TEST(BooleanConversion, KnowsTheTextsThatMeanTrue) {
    for (const char* word : trueTexts) {
        EXPECT_TRUE(OCBooleanConversion::meansTrue(word)) << word;
        EXPECT_FALSE(OCBooleanConversion::meansFalse(word)) << word;
        EXPECT_TRUE(OCBooleanConversion::fromString(word)) << word;
    }
}

TEST(BooleanConversion, KnowsTheTextsThatMeanFalse) {
    for (const char* word : falseTexts) {
        EXPECT_FALSE(OCBooleanConversion::meansTrue(word)) << word;
        EXPECT_TRUE(OCBooleanConversion::meansFalse(word)) << word;
        EXPECT_FALSE(OCBooleanConversion::fromString(word)) << word;
    }
}

TEST(BooleanConversion, RefusesEveryOtherText) {
    for (const char* word : otherTexts) {
        EXPECT_FALSE(OCBooleanConversion::meansTrue(word)) << word;
        EXPECT_FALSE(OCBooleanConversion::meansFalse(word)) << word;
        EXPECT_THROW(OCBooleanConversion::fromString(word), OXBooleanConversion_ConvertStringError)
            << word;
    }
}

TEST(BooleanConversion, ComparesTheWholeTextAndNotOnlyUpToAZeroByte) {
    EXPECT_FALSE(OCBooleanConversion::meansTrue(OCAnsiString("yes\0", 4)));
    EXPECT_FALSE(OCBooleanConversion::meansFalse(OCAnsiString("no\0x", 4)));
    EXPECT_FALSE(OCBooleanConversion::meansTrue(OCAnsiString("\0yes", 4)));
}

TEST(BooleanConversion, OnlyLettersHaveACase) {
    // Each differs from a digit or letter by the bit that tells the cases apart.
    EXPECT_FALSE(OCBooleanConversion::meansTrue("\x11"));
    EXPECT_FALSE(OCBooleanConversion::meansFalse("\x10"));
    EXPECT_FALSE(OCBooleanConversion::meansTrue("\xd9"));
}

TEST(BooleanConversion, ReportsATextThatMeansNeither) {
    try {
        OCBooleanConversion::fromString("maybe");
        FAIL();
    } catch (const OXBooleanConversion_ConvertError& failure) {
        EXPECT_EQ("OXBooleanConversion_ConvertStringError", text(failure.getClass()));
        EXPECT_EQ("Error converting string to boolean", text(failure.getMessage()));
        EXPECT_EQ(0UL, failure.getDetails().getCount());
    }
}

TEST(BooleanConversion, ItsExceptionsFormATree) {
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXBooleanConversion>));
    EXPECT_TRUE((std::is_base_of_v<OXBooleanConversion, OXBooleanConversion_ConvertError>));
    EXPECT_TRUE((std::is_base_of_v<OXBooleanConversion_ConvertError,
                                   OXBooleanConversion_ConvertStringError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXBooleanConversion>);
    EXPECT_FALSE(std::is_default_constructible_v<OXBooleanConversion_ConvertError>);
    EXPECT_EQ(sizeof(OXAutoException), sizeof(OXBooleanConversion_ConvertStringError));
    const OXBooleanConversion_ConvertStringError failure;
    EXPECT_EQ(4UL, VirtualTable(&failure).getCount());
    EXPECT_FALSE(std::is_default_constructible_v<OCBooleanConversion>);
}

} // namespace
