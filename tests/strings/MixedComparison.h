// Comparisons of a wide with a narrow string, for the tests that are compiled under different
// versions of the language: in C++20 a comparison may be turned around, which must change nothing.

#include "OCWideString.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

// The two source files that include this are one program, and must not share their classes.
// NOLINTNEXTLINE(cert-dcl59-cpp)
namespace {

class NarrowChild : public OCAnsiString {
public:
    using OCAnsiString::OCAnsiString;
    ~NarrowChild() noexcept override = default;
};

class WideChild : public OCWideString {
public:
    using OCWideString::OCWideString;
    ~WideChild() noexcept override = default;
};

/// The six operators for a pair of which the left one is less (-1), equal (0) or greater (1).
template<class Left, class Right>
void expectOrder(int expected, const Left& left, const Right& right) {
    EXPECT_EQ(expected == 0, left == right);
    EXPECT_EQ(expected != 0, left != right);
    EXPECT_EQ(expected < 0, left < right);
    EXPECT_EQ(expected <= 0, left <= right);
    EXPECT_EQ(expected > 0, left > right);
    EXPECT_EQ(expected >= 0, left >= right);
}

TEST(MIXED_COMPARISON, EqualTextsAreEqualEitherWay) {
    const OCAnsiString narrow("abc");
    const OCWideString wide(L"abc");
    expectOrder(0, narrow, wide);
    expectOrder(0, wide, narrow);
    expectOrder(0, NarrowChild("abc"), wide);
    expectOrder(0, wide, NarrowChild("abc"));
    expectOrder(0, WideChild(L"abc"), narrow);
    expectOrder(0, narrow, WideChild(L"abc"));
    expectOrder(0, NarrowChild("abc"), WideChild(L"abc"));
    expectOrder(0, WideChild(L"abc"), NarrowChild("abc"));
}

TEST(MIXED_COMPARISON, OrdersEitherWay) {
    const OCAnsiString narrow("abc");
    const OCWideString wide(L"abd");
    expectOrder(-1, narrow, wide);
    expectOrder(1, wide, narrow);
    expectOrder(-1, NarrowChild("ab"), wide);
    expectOrder(1, WideChild(L"abcd"), narrow);
}

// 0x141 narrows to `A`; byte 233 widens to -23.

TEST(MIXED_COMPARISON, NarrowsWhenTheNarrowStringIsOnTheLeft) {
    expectOrder(0, OCAnsiString("A"), OCWideString(L"\x141"));
    expectOrder(0, NarrowChild("A"), WideChild(L"\x141"));
    expectOrder(0, OCAnsiString("\xe9"), OCWideString(L"\xe9"));
    expectOrder(-1, OCAnsiString("A"), OCWideString(L"\x142"));
    expectOrder(1, OCAnsiString("B"), OCWideString(L"\x141"));
}

TEST(MIXED_COMPARISON, WidensWhenTheWideStringIsOnTheLeft) {
    expectOrder(1, OCWideString(L"\x141"), OCAnsiString("A"));
    expectOrder(1, WideChild(L"\x141"), NarrowChild("A"));
    expectOrder(1, OCWideString(L"\xe9"), OCAnsiString("\xe9"));
    expectOrder(0, OCWideString(static_cast<wchar_t>(-23)), OCAnsiString("\xe9"));
    expectOrder(-1, OCWideString(L"A"), OCAnsiString("B"));
}

TEST(MIXED_COMPARISON, TakesTextsForStrings) {
    const char narrowText[] = "A";
    const char* const narrowPointer = narrowText;
    char* const pointer = const_cast<char*>(narrowPointer);
    const OCWideString wide(L"\x141");
    expectOrder(1, wide, "A");
    expectOrder(0, "A", wide);
    expectOrder(1, wide, narrowPointer);
    expectOrder(0, narrowPointer, wide);
    expectOrder(1, wide, pointer);
    expectOrder(0, pointer, wide);
    expectOrder(1, WideChild(L"\x141"), narrowText);
    expectOrder(1, L"\x141", OCAnsiString("A"));
}

TEST(MIXED_COMPARISON, StringsOfOneClassCompareAsEver) {
    expectOrder(0, OCWideString(L"a"), L"a");
    expectOrder(0, L"a", OCWideString(L"a"));
    expectOrder(0, OCWideString(L"a"), L'a');
    expectOrder(0, OCWideString(L"a"), 'a');
    expectOrder(-1, OCWideString(L"a"), WideChild(L"b"));
    expectOrder(0, OCAnsiString("a"), "a");
    expectOrder(0, "a", OCAnsiString("a"));
    expectOrder(0, OCAnsiString("a"), 'a');
    expectOrder(-1, OCAnsiString("a"), NarrowChild("b"));
}

TEST(MIXED_COMPARISON, ComparesLongTexts) {
    const std::string bytes(1000, '\xe9');
    const OCAnsiString narrow(bytes.data(), bytes.size());
    OCWideString wide(narrow);
    expectOrder(0, narrow, wide);
    expectOrder(0, wide, narrow);
    wide[999] = static_cast<wchar_t>(0xe9);
    expectOrder(0, narrow, wide);
    expectOrder(1, wide, narrow);
}

} // namespace
