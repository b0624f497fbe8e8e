#include "OCAnsiString.h"

#include "OCMemory.h"
#include "OCWideString.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/VirtualTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

static_assert(sizeof(OCAnsiString) == 168);
static_assert(sizeof(OCAbstractString) == sizeof(void*));
static_assert(sizeof(OEStringCase) == 4 && StringCaseInsensitive == 0 && StringCaseSensitive == 1);
static_assert(sizeof(OEStringConcat) == 4 && StringConcatPlain == 0 && StringConcatPath == 1);
static_assert(std::is_convertible_v<char, OCAnsiString>);
static_assert(std::is_convertible_v<const char*, OCAnsiString>);
static_assert(std::is_convertible_v<OCWideString, OCAnsiString>);
static_assert(std::is_nothrow_default_constructible_v<OCAnsiString>);
static_assert(std::is_nothrow_move_constructible_v<OCAnsiString>);
static_assert(std::is_nothrow_move_assignable_v<OCAnsiString>);
static_assert(std::is_nothrow_destructible_v<OCAnsiString>);

constexpr unsigned long huge = ~0UL;

std::string text(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength());
}

OCAnsiString make(const std::string& s) {
    return OCAnsiString(s.data(), s.size());
}

/// A text of `count` characters of which no two that are near each other are equal.
std::string pattern(unsigned long count, char first = 'a') {
    std::string result;
    for (unsigned long i = 0; i < count; i++)
        result += static_cast<char>(first + static_cast<char>(i % 23));
    return result;
}

bool isInside(const OCAnsiString& s) {
    const auto object = reinterpret_cast<unsigned long>(&s);
    const auto characters = reinterpret_cast<unsigned long>(s.getString());
    return characters >= object && characters < object + sizeof s;
}

unsigned long capacityOf(unsigned long length) {
    unsigned long capacity = 64;
    while (capacity <= length)
        capacity += 64;
    return capacity;
}

/// The content, and everything that holds for every string.
void expectString(const std::string& expected, const OCAnsiString& s) {
    EXPECT_EQ(expected, text(s));
    EXPECT_EQ(expected.size(), s.getLength());
    EXPECT_EQ('\0', s.getString()[expected.size()]);
    EXPECT_EQ(capacityOf(expected.size()), s.getCapacity());
    EXPECT_EQ(s.getCapacity() <= 128, isInside(s));
}

#define EXPECT_STRING(expected, s)                                                                 \
    do {                                                                                           \
        SCOPED_TRACE("here");                                                                      \
        expectString(expected, s);                                                                 \
    } while (false)

void expectNoSuchIndex(unsigned long index, const std::function<void()>& operation) {
    try {
        operation();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const OXString& failure) {
        EXPECT_TRUE(typeid(failure) == typeid(OXString_NoSuchIndex));
        EXPECT_EQ("OXString_NoSuchIndex", text(failure.getClass()));
        EXPECT_EQ("String index out of bounds (" + std::to_string(index) + ")",
                  text(failure.getMessage()));
        ASSERT_EQ(1UL, failure.getDetails().getCount());
        EXPECT_EQ(std::to_string(index), text(failure.getDetails().getString(0)));
    }
}

unsigned long heapRequests() {
    return fault::heapRecord().requests;
}

/// Runs `operation` on a string of `start` with each of its heap requests failing in turn: the
/// string is unchanged whenever an exception came out, the last time the operation comes through,
/// and nothing is lost. Returns how often it failed.
unsigned long failEachRequestOn(const std::string& start, const std::string& expected,
                                const std::function<void(OCAnsiString&)>& operation) {
    unsigned long failures = 0;
    const long left = fault::blocksLeftBy([&] {
        failures = fault::failEachRequestOn([&] { return make(start); }, operation,
                                            [&](const OCAnsiString& s, bool failed) {
                                                EXPECT_STRING(failed ? start : expected, s);
                                            });
    });
    EXPECT_EQ(0, left);
    return failures;
}

/// The lengths about which the storage changes.
const unsigned long edges[] = {0,   1,   2,   15,  16,  17,  62,  63,  64,  65,  126,
                               127, 128, 129, 190, 191, 192, 193, 255, 256, 300, 1000};

// What the operations do, written once more for std::string, without regard to cost.

namespace model {

char fold(char c, bool sensitive) {
    return !sensitive && c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool matches(const std::string& s, unsigned long at, const std::string& wanted, bool sensitive) {
    for (unsigned long i = 0; i < wanted.size(); i++)
        if (fold(s[at + i], sensitive) != fold(wanted[i], sensitive))
            return false;
    return true;
}

/// The index, or -1.
long find(const std::string& s, const std::string& wanted, bool sensitive) {
    if (wanted.empty())
        return -1;
    for (unsigned long at = 0; at + wanted.size() <= s.size(); at++)
        if (matches(s, at, wanted, sensitive))
            return static_cast<long>(at);
    return -1;
}

std::string replace(const std::string& s, const std::string& from, const std::string& to,
                    bool sensitive) {
    if (from.empty() || from.size() > s.size())
        return s;
    std::string result;
    unsigned long at = 0;
    while (at + from.size() <= s.size()) {
        if (matches(s, at, from, sensitive)) {
            result += to;
            at += from.size();
        } else
            result += s[at++];
    }
    return result + s.substr(at);
}

int compare(const std::string& a, const std::string& b, bool sensitive) {
    for (unsigned long i = 0; i < a.size() && i < b.size(); i++) {
        const auto left = static_cast<signed char>(fold(a[i], sensitive));
        const auto right = static_cast<signed char>(fold(b[i], sensitive));
        if (left != right)
            return left < right ? -1 : 1;
    }
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

std::string join(std::string left, const std::string& right) {
    if (left.empty())
        return right;
    if (right.empty())
        return left;
    const bool ends = left.back() == '/';
    const bool starts = right.front() == '/';
    if (!ends && !starts)
        return left + "/" + right;
    if (ends != starts)
        return left + right;
    if (left.size() < 2)
        return right;
    left.pop_back();
    return left + right;
}

std::string escape(const std::string& s) {
    std::string result;
    for (char c : s) {
        const bool kept = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                          (c >= 'a' && c <= 'z') || c == '-' || c == '_';
        char code[4];
        snprintf(code, sizeof code, "%%%02x",
                 static_cast<unsigned int>(static_cast<unsigned char>(c)));
        result += kept ? std::string(1, c) : c == ' ' ? "+" : code;
    }
    return result;
}

int digit(char c) {
    const std::string digits = "0123456789abcdef";
    const auto at = digits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

std::string unescape(const std::string& s) {
    std::string result;
    for (unsigned long i = 0; i < s.size(); i++) {
        if (s[i] == '+')
            result += ' ';
        else if (s[i] == '%' && i + 2 < s.size() && digit(s[i + 1]) >= 0 && digit(s[i + 2]) >= 0) {
            result += static_cast<char>(digit(s[i + 1]) * 16 + digit(s[i + 2]));
            i += 2;
        } else
            result += s[i];
    }
    return result;
}

bool isBlank(char c) {
    return c >= 0 && c <= 32;
}

std::string trim(std::string s, bool left, bool right) {
    while (left && !s.empty() && isBlank(s.front()))
        s.erase(0, 1);
    while (right && !s.empty() && isBlank(s.back()))
        s.pop_back();
    return s;
}

} // namespace model

// Layout

TEST(AnsiString, KeepsTheOrderOfItsFields) {
    const OCAnsiString s("abc");
    const char* object = reinterpret_cast<const char*>(&s);
    EXPECT_EQ(object + 8, s.getString());
    const char* data;
    std::memcpy(&data, object + 136, sizeof data);
    EXPECT_EQ(s.getString(), data);
    unsigned long counters[3];
    std::memcpy(counters, object + 144, sizeof counters);
    EXPECT_EQ(64UL, counters[0]); // the granularity
    EXPECT_EQ(64UL, counters[1]); // the capacity
    EXPECT_EQ(3UL, counters[2]);  // the length
}

TEST(AnsiString, TheGranularityIsAlways64) {
    const auto granularity = [](const OCAnsiString& s) {
        unsigned long value;
        std::memcpy(&value, reinterpret_cast<const char*>(&s) + 144, sizeof value);
        return value;
    };
    OCAnsiString s = make(pattern(500));
    EXPECT_EQ(64UL, granularity(s));
    EXPECT_EQ(64UL, granularity(OCAnsiString()));
    EXPECT_EQ(64UL, granularity(OCAnsiString('x')));
    EXPECT_EQ(64UL, granularity(OCAnsiString("x")));
    EXPECT_EQ(64UL, granularity(make(pattern(100))));
    EXPECT_EQ(64UL, granularity(OCAnsiString(OCWideString(L"x"))));
    EXPECT_EQ(64UL, granularity(OCAnsiString(s)));
    EXPECT_EQ(64UL, granularity(OCAnsiString(std::move(s))));
    EXPECT_EQ(64UL, granularity(s));
    EXPECT_EQ(64UL, granularity(OCAnsiString("a") + "b"));
}

TEST(AnsiString, HasOnlyItsDestructorVirtual) {
    OCAnsiString* s = new OCAnsiString("abc");
    const VirtualTable table(s);
    EXPECT_EQ(2UL, table.getCount());
    table.deleteObject(s);
    EXPECT_TRUE((std::is_base_of_v<OCAbstractString, OCAnsiString>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCAbstractString>));
}

TEST(AnsiString, DeletingGivesTheBlockBack) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCObject* s = new OCAnsiString(make(pattern(1000)));
                  delete s;
              }));
}

TEST(AnsiString, AnyIndexIsThrownOnDemand) {
    expectNoSuchIndex(7, [] { OCAbstractString::throwNoSuchIndex(7); });
    expectNoSuchIndex(huge, [] { OCAbstractString::throwNoSuchIndex(huge); });
    EXPECT_EXCEPTION(OCAbstractString::throwNoSuchIndex(0), OXString_NoSuchIndex,
                     "String index out of bounds (0)");
    EXPECT_FALSE(std::is_default_constructible_v<OXString>);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXString>));
    EXPECT_TRUE((std::is_base_of_v<OXString, OXString_NoSuchIndex>));
    EXPECT_EQ(sizeof(OXAutoException), sizeof(OXString_NoSuchIndex));
}

// Construction and assignment

TEST(AnsiString, IsEmptyAtFirst) {
    const OCAnsiString s;
    EXPECT_STRING("", s);
    EXPECT_EQ(64UL, s.getCapacity());
}

TEST(AnsiString, IsMadeFromACharacter) {
    for (int c = 0; c < 256; c++)
        EXPECT_STRING(std::string(1, static_cast<char>(c)), OCAnsiString(static_cast<char>(c)));
}

TEST(AnsiString, IsMadeFromATextOfAnyLength) {
    for (unsigned long count = 0; count <= 300; count++) {
        const std::string expected = pattern(count);
        EXPECT_STRING(expected, OCAnsiString(expected.c_str()));
        EXPECT_STRING(expected, OCAnsiString(expected.data(), count));
        const OCAnsiString original = make(expected);
        EXPECT_STRING(expected, OCAnsiString(original));
        EXPECT_STRING(expected, original);
    }
}

TEST(AnsiString, AssignsATextOfAnyLengthToATextOfAnyLength) {
    for (unsigned long before : edges) {
        for (unsigned long count = 0; count <= 300; count++) {
            const std::string expected = pattern(count);
            OCAnsiString a = make(pattern(before));
            EXPECT_EQ(&a, &a.assign(expected.data(), count));
            EXPECT_STRING(expected, a);
            OCAnsiString b = make(pattern(before));
            EXPECT_EQ(&b, &b.assign(expected.c_str()));
            EXPECT_STRING(expected, b);
            OCAnsiString c = make(pattern(before));
            EXPECT_EQ(&c, &c.assign(a));
            EXPECT_STRING(expected, c);
            OCAnsiString d = make(pattern(before));
            EXPECT_EQ(&d, &(d = a));
            EXPECT_STRING(expected, d);
            EXPECT_STRING(expected, a);
        }
    }
}

TEST(AnsiString, KeepsZeroBytesThatACountIncludes) {
    const std::string expected("a\0b\0", 4);
    OCAnsiString s("a\0b\0", 4);
    EXPECT_STRING(expected, s);
    EXPECT_STRING(expected, OCAnsiString(s));
    EXPECT_STRING(std::string("xa\0b\0", 5), "x" + s);
    EXPECT_STRING(std::string("a\0b\0a\0b\0", 8), s + s);
    s.assign("\0", 1);
    EXPECT_STRING(std::string(1, '\0'), s);
    EXPECT_STRING("a", OCAnsiString("a\0b"));
    s.append("\0c", 2);
    EXPECT_STRING(std::string("\0\0c", 3), s);
    s.append('\0');
    EXPECT_STRING(std::string("\0\0c\0", 4), s);
    const std::string many(500, '\0');
    EXPECT_STRING(many, OCAnsiString(many.data(), many.size()));
}

TEST(AnsiString, AssignsACharacterOrNothing) {
    for (unsigned long before : edges) {
        OCAnsiString s = make(pattern(before));
        EXPECT_EQ(&s, &s.assign('q'));
        EXPECT_STRING("q", s);
        s = make(pattern(before));
        EXPECT_EQ(&s, &s.assign());
        EXPECT_STRING("", s);
        s = make(pattern(before));
        EXPECT_EQ(&s, &s.clear());
        EXPECT_STRING("", s);
    }
}

TEST(AnsiString, AnEmptyTextMayBeNull) {
    OCAnsiString s(nullptr, 0);
    EXPECT_STRING("", s);
    s.assign("abc").append(nullptr, 0).append(nullptr, 0, StringConcatPath);
    EXPECT_STRING("abc", s);
    s.assign(nullptr, 0);
    EXPECT_STRING("", s);
    s.append(nullptr, 0).append(nullptr, 0, StringConcatPath);
    EXPECT_STRING("", s);
}

TEST(AnsiString, CopiesAreIndependent) {
    for (unsigned long count : {3UL, 20UL, 100UL, 200UL}) {
        const std::string original = pattern(count);
        OCAnsiString s = make(original);
        OCAnsiString copy(s);
        copy[0] = '#';
        EXPECT_STRING(original, s);
        s = copy;
        s[1] = '#';
        EXPECT_EQ(original[1], copy[1]);
    }
}

TEST(AnsiString, ACopyOfAShortenedStringIsLikeIt) {
    OCAnsiString s = make(pattern(300));
    s.left(100);
    EXPECT_STRING(pattern(100), OCAnsiString(s));
    s.left(70);
    EXPECT_STRING(pattern(70), OCAnsiString(s));
    s.left(40);
    EXPECT_STRING(pattern(40), OCAnsiString(s));
    s.left(3);
    EXPECT_STRING(pattern(3), OCAnsiString(s));
}

TEST(AnsiString, MovingLeavesAnEmptyString) {
    for (unsigned long count : edges) {
        const std::string expected = pattern(count);
        OCAnsiString source = make(expected);
        OCAnsiString target(std::move(source));
        EXPECT_STRING(expected, target);
        EXPECT_STRING("", source);
        source.append("again");
        EXPECT_STRING("again", source);
        for (unsigned long before : edges) {
            OCAnsiString from = make(expected);
            OCAnsiString to = make(pattern(before));
            EXPECT_EQ(&to, &(to = std::move(from)));
            EXPECT_STRING(expected, to);
            EXPECT_STRING("", from);
        }
    }
}

TEST(AnsiString, MovingTakesTheBlockWithoutTheHeap) {
    OCAnsiString source = make(pattern(1000));
    const char* const block = source.getString();
    const unsigned long before = heapRequests();
    OCAnsiString target(std::move(source));
    EXPECT_EQ(block, target.getString());
    OCAnsiString other;
    other = std::move(target);
    EXPECT_EQ(block, other.getString());
    EXPECT_EQ(before, heapRequests());
}

TEST(AnsiString, AssignsItself) {
    for (unsigned long count : edges) {
        const std::string expected = pattern(count);
        OCAnsiString s = make(expected);
        const OCAnsiString& same = s;
        s = same;
        EXPECT_STRING(expected, s);
        s.assign(same);
        EXPECT_STRING(expected, s);
        OCAnsiString& moved = s;
        s = std::move(moved);
        EXPECT_STRING(expected, s);
    }
}

TEST(AnsiString, AssignsAnyPartOfItself) {
    for (unsigned long count : edges) {
        for (unsigned long position : edges) {
            for (unsigned long n : edges) {
                if (position + n > count)
                    continue;
                const std::string whole = pattern(count);
                OCAnsiString s = make(whole);
                s.assign(s.getString() + position, n);
                EXPECT_STRING(whole.substr(position, n), s);
                s = make(whole);
                s.assign(s.getString() + position);
                EXPECT_STRING(whole.substr(position), s);
            }
        }
    }
}

TEST(AnsiString, PartsOfItselfMayIncludeTheTerminator) {
    OCAnsiString s("abc");
    s.assign(s.getString() + 1, 3);
    EXPECT_STRING(std::string("bc\0", 3), s);
    for (unsigned long count : edges) {
        const std::string whole = pattern(count);
        const std::string withEnd = whole + std::string(1, '\0');
        s = make(whole);
        s.append(s.getString(), count + 1);
        EXPECT_STRING(whole + withEnd, s);
        s = make(whole);
        s.append(s.getString(), count + 1, StringConcatPath);
        EXPECT_STRING(model::join(whole, withEnd), s);
        s = make(whole);
        s.assign(s.getString(), count + 1);
        EXPECT_STRING(withEnd, s);
        s = make(whole);
        s.append(s.getString() + count, 1); // nothing but the terminator
        EXPECT_STRING(withEnd, s);
    }
}

TEST(AnsiString, NarrowingKeepsTheLow8Bits) {
    const wchar_t characters[] = {
        L'A', 0x141, 0x12345678, static_cast<wchar_t>(-1), 0, 233, static_cast<wchar_t>(-23)};
    const OCWideString wide(characters, 7);
    const std::string expected("AAx\xff\0\xe9\xe9", 7);
    EXPECT_STRING(expected, OCAnsiString(wide));
    OCAnsiString s("before");
    EXPECT_EQ(&s, &s.assign(wide));
    EXPECT_STRING(expected, s);
}

TEST(AnsiString, NarrowsATextOfAnyLength) {
    for (unsigned long count = 0; count <= 300; count++) {
        const std::string expected = pattern(count);
        OCWideString wide;
        for (char c : expected)
            wide.append(static_cast<wchar_t>(0x4200 + c));
        EXPECT_STRING(expected, OCAnsiString(wide));
        for (unsigned long before : edges) {
            OCAnsiString s = make(pattern(before));
            s.assign(wide);
            EXPECT_STRING(expected, s);
        }
    }
}

// Storage

TEST(AnsiString, EveryChangeOfLengthKeepsTheCapacityRule) {
    for (unsigned long from = 0; from <= 300; from++) {
        OCAnsiString s = make(pattern(from));
        for (unsigned long to = 0; to <= 300; to++) {
            OCAnsiString changed(s);
            EXPECT_EQ(&changed, &changed.setLength(to));
            ASSERT_EQ(to, changed.getLength());
            ASSERT_EQ(capacityOf(to), changed.getCapacity());
            ASSERT_EQ(to >= 128, !isInside(changed));
            ASSERT_EQ('\0', changed.getString()[to]);
            const unsigned long kept = from < to ? from : to;
            ASSERT_EQ(0, std::memcmp(s.getString(), changed.getString(), kept));
        }
    }
}

TEST(AnsiString, GrowsCharacterByCharacter) {
    OCAnsiString s;
    std::string expected;
    for (unsigned long i = 0; i < 1000; i++) {
        EXPECT_EQ(&s, &s.append(static_cast<char>(i)));
        expected += static_cast<char>(i);
        EXPECT_STRING(expected, s);
    }
}

TEST(AnsiString, ShrinksCharacterByCharacter) {
    OCAnsiString s = make(pattern(1000));
    for (unsigned long n = 1000; n > 0; n--) {
        s.left(n - 1);
        EXPECT_STRING(pattern(n - 1), s);
    }
}

TEST(AnsiString, ThreeExampleCapacities) {
    EXPECT_EQ(64UL, make(pattern(63)).getCapacity());
    EXPECT_EQ(128UL, make(pattern(64)).getCapacity());
    EXPECT_EQ(128UL, make(pattern(127)).getCapacity());
    EXPECT_EQ(192UL, make(pattern(128)).getCapacity());
    EXPECT_EQ(192UL, make(pattern(191)).getCapacity());
    EXPECT_EQ(256UL, make(pattern(192)).getCapacity());
}

TEST(AnsiString, The128thCharacterMovesTheTextToTheHeapAndBack) {
    OCAnsiString s = make(pattern(127));
    EXPECT_TRUE(isInside(s));
    const long blocks = fault::heapRecord().liveBlocks;
    s.append('x');
    EXPECT_FALSE(isInside(s));
    EXPECT_EQ(192UL, s.getCapacity());
    EXPECT_EQ(blocks + 1, fault::heapRecord().liveBlocks);
    EXPECT_STRING(pattern(127) + "x", s);
    s.left(127);
    EXPECT_TRUE(isInside(s));
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    EXPECT_STRING(pattern(127), s);
}

TEST(AnsiString, ShortTextsNeverTouchTheHeap) {
    const std::string source = pattern(127);
    const OCWideString wide(L"wide");
    const OCAnsiString spaces("  x  ");
    const unsigned long before = heapRequests();
    for (unsigned long count = 0; count <= 127; count++) {
        OCAnsiString s(source.data(), count);
        OCAnsiString copy(s);
        OCAnsiString moved(std::move(copy));
        copy = moved;
        copy = OCAnsiString(source.c_str());
        copy.assign(wide);
        copy.assign(s);
        copy.assign(copy.getString() + count / 2, count / 3);
        copy.setLength(127);
        copy.fill('x').clear();
        copy.append('x').append("y").append("z", 1).append(s.getString(), count / 2);
        copy = s.concat(OCAnsiString(), StringConcatPath);
        copy.insert("");
        if (count > 0)
            copy.remove(0, 1).insert("z");
        copy.left(100).append(copy.getString(), 20, StringConcatPath).left(count);
        copy = spaces;
        copy.trim().padLeft('a', count).padRight('b', 127).lowerCase().upperCase();
        unsigned long position = 0;
        EXPECT_FALSE(copy.indexOf("zz", position));
        EXPECT_FALSE(copy.contains("ZZ", StringCaseInsensitive));
        copy.replace("B", "c").replace("A", "").escape().unescape();
        EXPECT_FALSE(copy == s && copy < s && copy.compare(s, StringCaseInsensitive) == 0);
    }
    EXPECT_EQ(before, heapRequests());
}

TEST(AnsiString, SearchesAllocateNothing) {
    OCAnsiString s = make(pattern(10000));
    const OCAnsiString wanted = make(pattern(127, 'b'));
    OCAnsiString upper(wanted);
    upper.upperCase();
    const unsigned long before = heapRequests();
    unsigned long position = 0;
    EXPECT_TRUE(s.indexOf('w', position));
    EXPECT_FALSE(s.indexOf('z', position, StringCaseInsensitive));
    s.indexOf(wanted, position);
    s.indexOf(upper, position, StringCaseInsensitive);
    EXPECT_EQ(CompareResultEqual, s.compare(s));
    EXPECT_EQ(CompareResultEqual, s.compare(s, StringCaseInsensitive));
    EXPECT_EQ(before, heapRequests());
}

TEST(AnsiString, AChangeThatLeavesTheCapacityLeavesTheHeapAlone) {
    OCAnsiString s = make(pattern(130));
    const std::string other = pattern(180);
    const char* const block = s.getString();
    const unsigned long before = heapRequests();
    s.setLength(191).setLength(128).append('x').append("yy").insert("front");
    s.remove(3, 4).mid(1, 130).padRight('p', 191).left(150).right(140).padLeft('q', 180);
    s.assign(other.c_str()).replace("ab", "b").replace("b", "cd").replace("cd", "c").fill('x');
    s.append(s.getString(), 5).append(s.getString() + 3, 6, StringConcatPath);
    EXPECT_EQ(before, heapRequests());
    EXPECT_EQ(block, s.getString());
    EXPECT_EQ(192UL, s.getCapacity());
}

TEST(AnsiString, TheBlockHasExactlyTheCapacity) {
    for (unsigned long count : {128UL, 191UL, 192UL, 255UL, 256UL, 1000UL, 100000UL}) {
        const std::string source = pattern(count);
        const OCAnsiString made(source.data(), count);
        EXPECT_EQ(made.getCapacity(), fault::heapRecord().lastSize);
        const OCAnsiString copy(made);
        EXPECT_EQ(copy.getCapacity(), fault::heapRecord().lastSize);
        OCAnsiString s;
        s.setLength(count);
        EXPECT_EQ(s.getCapacity(), fault::heapRecord().lastSize);
        s.setLength(count + 64);
        EXPECT_EQ(s.getCapacity(), fault::heapRecord().lastSize);
        s.append("x");
        s.remove(1, 1);
        s.setLength(count + 200);
        s.remove(7, 200);
        EXPECT_EQ(count, s.getLength());
        EXPECT_EQ(s.getCapacity(), fault::heapRecord().lastSize);
        s.assign(pattern(count + 64).c_str());
        EXPECT_EQ(s.getCapacity(), fault::heapRecord().lastSize);
        const OCAnsiString sum = made + made;
        EXPECT_EQ(sum.getCapacity(), fault::heapRecord().lastSize);
    }
}

TEST(AnsiString, AppendingReallocatesEvery64Characters) {
    OCAnsiString s;
    const unsigned long before = heapRequests();
    for (unsigned long i = 0; i < 65536; i++)
        s.append('x');
    EXPECT_EQ(before + 1023, heapRequests()); // at 128, 192, … 65536
    EXPECT_STRING(std::string(65536, 'x'), s);
}

TEST(AnsiString, SizesThatWrapAreRefused) {
    const OCAnsiString other("abc");
    for (unsigned long length : {0UL, 5UL, 64UL, 200UL}) {
        const std::string expected = pattern(length);
        OCAnsiString s = make(expected);
        for (unsigned long n : {huge, huge - 1, huge - 63, huge - 64, huge - 65, huge - 128,
                                huge - length, huge - length - 64, 1UL << 63, (1UL << 63) - 1}) {
            EXPECT_THROW(s.setLength(n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.padLeft('x', n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.padRight('x', n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.append("x", n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.append("x", n, StringConcatPath), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.append("/x", n, StringConcatPath), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.assign("x", n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.append(s.getString(), n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(s.assign(s.getString(), n), OXMemory_AllocationError);
            EXPECT_STRING(expected, s);
            EXPECT_THROW(OCAnsiString("x", n), OXMemory_AllocationError);
        }
    }
}

// Single characters

TEST(AnsiString, GivesItsCharacters) {
    OCAnsiString s("abc");
    const OCAnsiString& constant = s;
    EXPECT_EQ('a', constant[0]);
    EXPECT_EQ('c', constant[2]);
    s[1] = 'X';
    EXPECT_STRING("aXc", s);
    s.getString()[0] = 'Y';
    EXPECT_STRING("YXc", s);
    EXPECT_TRUE((std::is_same_v<char, decltype(constant[0])>));
    EXPECT_TRUE((std::is_same_v<char&, decltype(s[0])>));
    EXPECT_TRUE((std::is_same_v<const char*, decltype(constant.getString())>));
    EXPECT_TRUE((std::is_same_v<char*, decltype(s.getString())>));
}

TEST(AnsiString, IndexesAreChecked) {
    OCAnsiString s("abc");
    const OCAnsiString& constant = s;
    for (unsigned long index : {3UL, 4UL, 63UL, huge}) {
        expectNoSuchIndex(index, [&] { s[index] = 'x'; });
        expectNoSuchIndex(index, [&] { static_cast<void>(constant[index]); });
    }
    expectNoSuchIndex(0, [] { static_cast<void>(OCAnsiString()[0]); });
    EXPECT_STRING("abc", s);
}

TEST(AnsiString, FillsWithOneCharacter) {
    for (unsigned long count : edges) {
        OCAnsiString s = make(pattern(count));
        EXPECT_EQ(&s, &s.fill('*'));
        EXPECT_STRING(std::string(count, '*'), s);
    }
}

// Appending

TEST(AnsiString, AppendsPlainly) {
    OCAnsiString s;
    EXPECT_EQ(&s, &s.append('a'));
    EXPECT_EQ(&s, &s.append("bc"));
    EXPECT_EQ(&s, &s.append("defg", 2));
    EXPECT_EQ(&s, &s.append(OCAnsiString("f/")));
    EXPECT_EQ(&s, &s.append("/g", StringConcatPlain));
    EXPECT_EQ(&s, &s.append('h', StringConcatPlain));
    EXPECT_STRING("abcdef//gh", s);
    EXPECT_EQ(&s, &(s += OCAnsiString("1")));
    EXPECT_EQ(&s, &(s += "2"));
    EXPECT_EQ(&s, &(s += '3'));
    EXPECT_STRING("abcdef//gh123", s);
    s.append("").append(OCAnsiString()).append("xyz", 0UL);
    EXPECT_STRING("abcdef//gh123", s);
}

TEST(AnsiString, AppendsAnyLengthToAnyLength) {
    for (unsigned long count : edges) {
        for (unsigned long more = 0; more <= 200; more++) {
            const std::string whole = pattern(count);
            const std::string added = pattern(more, 'B');
            OCAnsiString s = make(whole);
            s.append(added.data(), more);
            EXPECT_STRING(whole + added, s);
            s = make(whole);
            s.append(added.data(), more, StringConcatPath);
            EXPECT_STRING(model::join(whole, added), s);
            EXPECT_STRING(whole + added, make(whole).concat(make(added)));
            EXPECT_STRING(model::join(whole, added),
                          make(whole).concat(make(added), StringConcatPath));
        }
    }
}

TEST(AnsiString, JoinsPathsWithOneSlash) {
    const char* const cases[][3] = {
        {"/", "/x", "/x"},   {"a", "b", "a/b"},   {"a/", "b", "a/b"},   {"a", "/b", "a/b"},
        {"a/", "/b", "a/b"}, {"", "b", "b"},      {"a", "", "a"},       {"a//", "/b", "a//b"},
        {"", "/b", "/b"},    {"a/", "", "a/"},    {"", "", ""},         {"/", "x", "/x"},
        {"/", "/", "/"},     {"a/", "/", "a/"},   {"a", "/", "a/"},     {"a/", "//b", "a//b"},
        {"/", "//b", "//b"}, {"//", "/b", "//b"}, {"a", "//b", "a//b"}, {"/", "", "/"},
    };
    for (const auto& [left, right, joined] : cases) {
        SCOPED_TRACE(std::string(left) + " and " + right);
        const OCAnsiString a(left);
        const OCAnsiString b(right);
        OCAnsiString s(a);
        EXPECT_EQ(&s, &s.append(right, StringConcatPath));
        EXPECT_STRING(joined, s);
        s = a;
        EXPECT_EQ(&s, &s.append(right, b.getLength(), StringConcatPath));
        EXPECT_STRING(joined, s);
        s = a;
        EXPECT_EQ(&s, &s.append(b, StringConcatPath));
        EXPECT_STRING(joined, s);
        s = a;
        EXPECT_EQ(&s, &(s /= b));
        EXPECT_STRING(joined, s);
        s = a;
        EXPECT_EQ(&s, &(s /= right));
        EXPECT_STRING(joined, s);
        EXPECT_STRING(joined, a.concat(b, StringConcatPath));
        EXPECT_STRING(joined, a / b);
        EXPECT_STRING(joined, a / right);
        EXPECT_STRING(joined, left / b);
        EXPECT_STRING(left, a);
        EXPECT_STRING(right, b);
        if (b.getLength() == 1) {
            s = a;
            EXPECT_EQ(&s, &s.append(right[0], StringConcatPath));
            EXPECT_STRING(joined, s);
            s = a;
            EXPECT_EQ(&s, &(s /= right[0]));
            EXPECT_STRING(joined, s);
        }
    }
}

TEST(AnsiString, JoiningLooksAtTheBytesNotAtTheTerminator) {
    OCAnsiString s("a/\0", 3);
    s.append("\0b", 2, StringConcatPath);
    EXPECT_STRING(std::string("a/\0/\0b", 6), s);
}

TEST(AnsiString, JoinsAtEveryLength) {
    for (unsigned long count = 1; count <= 300; count++) {
        for (const char* end : {"x", "/"}) {
            for (const char* right : {"y", "/y", "/", "y/z"}) {
                const std::string left = pattern(count - 1) + end;
                OCAnsiString s = make(left);
                s /= right;
                EXPECT_STRING(model::join(left, right), s);
                EXPECT_STRING(model::join(left, right), make(left) / right);
            }
        }
    }
}

TEST(AnsiString, OtherModesAppendPlainly) {
    const auto other = static_cast<OEStringConcat>(2);
    EXPECT_STRING("ab", OCAnsiString("a").append("b", other));
    EXPECT_STRING("ab", OCAnsiString("a").append('b', other));
    EXPECT_STRING("ab", OCAnsiString("a").concat("b", other));
}

TEST(AnsiString, ConcatenatesIntoANewString) {
    const OCAnsiString a("ab");
    const OCAnsiString b("cd");
    EXPECT_STRING("abcd", a + b);
    EXPECT_STRING("abcd", a.concat(b));
    EXPECT_STRING("abcd", a.concat(b, StringConcatPlain));
    EXPECT_STRING("abcd", "ab" + b);
    EXPECT_STRING("abcd", a + "cd");
    EXPECT_STRING("abc", a + 'c');
    EXPECT_STRING("ab", a + "");
    EXPECT_STRING("cd", "" + b);
    EXPECT_STRING("ab", a);
    EXPECT_STRING("cd", b);
}

TEST(AnsiString, AppendsAnyPartOfItself) {
    for (unsigned long count : edges) {
        for (unsigned long position : edges) {
            for (unsigned long n : edges) {
                if (position + n > count)
                    continue;
                for (const char* end : {"", "/"}) {
                    const std::string whole = pattern(count) + end;
                    const std::string part = whole.substr(position, n);
                    OCAnsiString s = make(whole);
                    s.append(s.getString() + position, n);
                    EXPECT_STRING(whole + part, s);
                    s = make(whole);
                    s.append(s.getString() + position, n, StringConcatPath);
                    EXPECT_STRING(model::join(whole, part), s);
                }
            }
        }
    }
}

TEST(AnsiString, AppendsItself) {
    for (unsigned long count : edges) {
        const std::string whole = pattern(count);
        OCAnsiString s = make(whole);
        s += s;
        EXPECT_STRING(whole + whole, s);
        s = make(whole);
        const OCAnsiString& same = s;
        s /= same;
        EXPECT_STRING(model::join(whole, whole), s);
        s = make(whole);
        s.append(s.getString());
        EXPECT_STRING(whole + whole, s);
        s = make(whole);
        EXPECT_STRING(whole + whole, s + s);
        EXPECT_STRING(model::join(whole, whole), s / s);
        s = make("/" + whole + "/");
        s /= same;
        EXPECT_STRING("/" + whole + "/" + whole + "/", s);
    }
}

TEST(AnsiString, ThreeCharactersOfItsOwnSurviveTheMoveOfTheText) {
    for (unsigned long count : {61UL, 63UL, 125UL, 127UL, 190UL, 191UL}) {
        OCAnsiString s = make(pattern(count));
        s.append(s.getString() + 5, 3);
        EXPECT_STRING(pattern(count) + "fgh", s);
        s = make(pattern(count));
        s.append(s.getString() + 5, 3, StringConcatPath);
        EXPECT_STRING(pattern(count) + "/fgh", s);
        s = make(pattern(count));
        s.append(s[5]);
        EXPECT_STRING(pattern(count) + "f", s);
    }
}

// Inserting

TEST(AnsiString, InsertsBeforeAPosition) {
    OCAnsiString s("abc");
    EXPECT_EQ(&s, &s.insert(0, "x"));
    EXPECT_STRING("xabc", s);
    EXPECT_EQ(&s, &s.insert(3, "yz"));
    EXPECT_STRING("xabyzc", s);
    s.insert(2, "");
    EXPECT_STRING("xabyzc", s);
}

TEST(AnsiString, InsertsAtEveryPositionAndLength) {
    for (unsigned long count : edges) {
        for (unsigned long more : edges) {
            for (unsigned long position : edges) {
                if (position >= count)
                    continue;
                const std::string whole = pattern(count);
                const std::string added = pattern(more, 'B');
                OCAnsiString s = make(whole);
                s.insert(position, make(added));
                EXPECT_STRING(std::string(whole).insert(position, added), s);
            }
        }
    }
}

TEST(AnsiString, InsertingAtTheEndIsRefused) {
    OCAnsiString s("abc");
    expectNoSuchIndex(3, [&] { s.insert(3, "x"); });
    expectNoSuchIndex(3, [&] { s.insert(3, ""); });
    expectNoSuchIndex(huge, [&] { s.insert(huge, "x"); });
    expectNoSuchIndex(0, [] { OCAnsiString().insert(0, "x"); });
    EXPECT_STRING("abc", s);
}

TEST(AnsiString, InsertsAtTheFront) {
    OCAnsiString s;
    EXPECT_EQ(&s, &s.insert("x"));
    EXPECT_STRING("x", s);
    EXPECT_EQ(&s, &s.insert("ab"));
    EXPECT_STRING("abx", s);
    s.insert("");
    EXPECT_STRING("abx", s);
    OCAnsiString empty;
    empty.insert("");
    EXPECT_STRING("", empty);
    empty.insert(empty);
    EXPECT_STRING("", empty);
}

TEST(AnsiString, InsertsItself) {
    for (unsigned long count : edges) {
        const std::string whole = pattern(count);
        OCAnsiString s = make(whole);
        s.insert(s);
        EXPECT_STRING(whole + whole, s);
        for (unsigned long position : edges) {
            if (position >= count)
                continue;
            s = make(whole);
            s.insert(position, s);
            EXPECT_STRING(std::string(whole).insert(position, whole), s);
        }
    }
}

// Parts

TEST(AnsiString, KeepsItsLeft) {
    for (unsigned long count : edges) {
        for (unsigned long n : edges) {
            OCAnsiString s = make(pattern(count));
            EXPECT_EQ(&s, &s.left(n));
            EXPECT_STRING(pattern(count).substr(0, n), s);
        }
        OCAnsiString s = make(pattern(count));
        s.left(huge);
        EXPECT_STRING(pattern(count), s);
    }
}

TEST(AnsiString, KeepsItsRight) {
    for (unsigned long count : edges) {
        if (count == 0)
            continue;
        for (unsigned long n : edges) {
            OCAnsiString s = make(pattern(count));
            EXPECT_EQ(&s, &s.right(n));
            EXPECT_STRING(n < count ? pattern(count).substr(count - n) : pattern(count), s);
        }
        OCAnsiString s = make(pattern(count));
        s.right(huge);
        EXPECT_STRING(pattern(count), s);
    }
}

TEST(AnsiString, AnEmptyStringHasNoRight) {
    OCAnsiString s;
    EXPECT_STRING("", s.right(0));
    expectNoSuchIndex(0, [&] { s.right(2); });
    expectNoSuchIndex(0, [&] { s.right(huge); });
    EXPECT_STRING("", s);
}

TEST(AnsiString, KeepsItsMiddle) {
    OCAnsiString s("abcdef");
    EXPECT_EQ(&s, &s.mid(1, 3));
    EXPECT_STRING("bcd", s);
    for (unsigned long count : edges) {
        for (unsigned long position : edges) {
            if (position >= count)
                continue;
            for (unsigned long n : edges) {
                s = make(pattern(count));
                s.mid(position, n);
                EXPECT_STRING(pattern(count).substr(position, n), s);
            }
            s = make(pattern(count));
            s.mid(position, huge);
            EXPECT_STRING(pattern(count).substr(position), s);
        }
    }
}

TEST(AnsiString, TheMiddleBeginsInside) {
    OCAnsiString s("abc");
    expectNoSuchIndex(3, [&] { s.mid(3, 1); });
    expectNoSuchIndex(3, [&] { s.mid(3, 0); });
    expectNoSuchIndex(huge, [&] { s.mid(huge, huge); });
    expectNoSuchIndex(0, [] { OCAnsiString().mid(0, 0); });
    EXPECT_STRING("abc", s);
    EXPECT_STRING("", s.mid(2, 0));
}

TEST(AnsiString, RemovesCharacters) {
    OCAnsiString s("abc");
    EXPECT_EQ(&s, &s.remove(1, 100));
    EXPECT_STRING("a", s);
    for (unsigned long count : edges) {
        for (unsigned long position : edges) {
            if (position >= count)
                continue;
            for (unsigned long n : edges) {
                s = make(pattern(count));
                s.remove(position, n);
                EXPECT_STRING(pattern(count).erase(position, n), s);
            }
            s = make(pattern(count));
            s.remove(position, huge);
            EXPECT_STRING(pattern(count).substr(0, position), s);
        }
    }
}

TEST(AnsiString, RemovingBeginsInside) {
    OCAnsiString s("abc");
    expectNoSuchIndex(3, [&] { s.remove(3, 1); });
    expectNoSuchIndex(3, [&] { s.remove(3, 0); });
    expectNoSuchIndex(huge, [&] { s.remove(huge, 1); });
    expectNoSuchIndex(0, [] { OCAnsiString().remove(0, 0); });
    EXPECT_STRING("abc", s);
    EXPECT_STRING("abc", s.remove(1, 0));
}

// Trimming, padding, case

TEST(AnsiString, TrimsBlanks) {
    OCAnsiString s(" \t\n");
    EXPECT_EQ(&s, &s.trim());
    EXPECT_STRING("", s);
    EXPECT_STRING("ab \t", OCAnsiString(" \tab \t").trimLeft());
    EXPECT_STRING(" \tab", OCAnsiString(" \tab \t").trimRight());
    EXPECT_STRING("a b", OCAnsiString("  a b  ").trim());
    EXPECT_STRING("", OCAnsiString().trim().trimLeft().trimRight());
    EXPECT_EQ(&s, &s.trimLeft());
    EXPECT_EQ(&s, &s.trimRight());
}

TEST(AnsiString, BlanksAreTheBytesUpTo32) {
    for (int byte = 0; byte < 256; byte++) {
        const std::string around(1, static_cast<char>(byte));
        const bool blank = byte <= 32;
        EXPECT_STRING(blank ? "x" : around + "x" + around, make(around + "x" + around).trim());
        EXPECT_STRING(blank ? "x" + around : around + "x" + around,
                      make(around + "x" + around).trimLeft());
        EXPECT_STRING(blank ? around + "x" : around + "x" + around,
                      make(around + "x" + around).trimRight());
        EXPECT_STRING(blank ? "" : around, make(around).trim());
        EXPECT_STRING(blank ? "" : around, make(around).trimLeft());
        EXPECT_STRING(blank ? "" : around, make(around).trimRight());
    }
    EXPECT_STRING("\xa0x", OCAnsiString(" \xa0x").trim());
}

TEST(AnsiString, TrimsAtEveryLength) {
    for (unsigned long before : edges) {
        for (unsigned long count : edges) {
            for (unsigned long behind : edges) {
                const std::string whole =
                    std::string(before, ' ') + pattern(count) + std::string(behind, '\n');
                EXPECT_STRING(model::trim(whole, true, false), make(whole).trimLeft());
                EXPECT_STRING(model::trim(whole, false, true), make(whole).trimRight());
                EXPECT_STRING(model::trim(whole, true, true), make(whole).trim());
            }
        }
    }
}

TEST(AnsiString, PadsToAWidth) {
    OCAnsiString s("42");
    EXPECT_EQ(&s, &s.padLeft('0', 5));
    EXPECT_STRING("00042", s);
    EXPECT_STRING("123456", OCAnsiString("123456").padLeft('0', 5));
    EXPECT_STRING("123456", OCAnsiString("123456").padRight('0', 5));
    EXPECT_STRING("12345", OCAnsiString("12345").padLeft('0', 5).padRight('0', 5));
    EXPECT_EQ(&s, &s.padRight('-', 7));
    EXPECT_STRING("00042--", s);
    for (unsigned long count : edges) {
        for (unsigned long width = 0; width <= 300; width++) {
            const std::string whole = pattern(count);
            const std::string padding(width > count ? width - count : 0, '*');
            EXPECT_STRING(padding + whole, make(whole).padLeft('*', width));
            EXPECT_STRING(whole + padding, make(whole).padRight('*', width));
        }
    }
}

TEST(AnsiString, FoldsOnlyAsciiLetters) {
    std::string all;
    std::string lower;
    std::string upper;
    for (int byte = 0; byte < 256; byte++) {
        all += static_cast<char>(byte);
        lower += static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + 32 : byte);
        upper += static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 32 : byte);
    }
    OCAnsiString s = make(all);
    EXPECT_EQ(&s, &s.lowerCase());
    EXPECT_STRING(lower, s);
    s = make(all);
    EXPECT_EQ(&s, &s.upperCase());
    EXPECT_STRING(upper, s);
    for (unsigned long count = 0; count <= 300; count++) {
        s = make(pattern(count));
        const std::string original = text(s);
        s.upperCase().lowerCase();
        EXPECT_STRING(original, s);
        s.upperCase();
        for (unsigned long i = 0; i < count; i++)
            ASSERT_EQ(original[i] - 32, s[i]);
    }
}

// Comparison

/// All ways to compare, against the result of the model.
void expectOrder(const std::string& a, const std::string& b) {
    SCOPED_TRACE("\"" + a + "\" and \"" + b + "\"");
    const OCAnsiString left = make(a);
    const OCAnsiString right = make(b);
    const int order = model::compare(a, b, true);
    EXPECT_EQ(order, left.compare(right));
    EXPECT_EQ(order, left.compare(right, StringCaseSensitive));
    EXPECT_EQ(order, left.compare(right, static_cast<OEStringCase>(2)));
    EXPECT_EQ(model::compare(a, b, false), left.compare(right, StringCaseInsensitive));
    EXPECT_EQ(order == 0, left == right);
    EXPECT_EQ(order != 0, left != right);
    EXPECT_EQ(order < 0, left < right);
    EXPECT_EQ(order <= 0, left <= right);
    EXPECT_EQ(order > 0, left > right);
    EXPECT_EQ(order >= 0, left >= right);
    if (a.find('\0') == std::string::npos) {
        EXPECT_EQ(order == 0, a.c_str() == right);
        EXPECT_EQ(order != 0, a.c_str() != right);
        EXPECT_EQ(order < 0, a.c_str() < right);
        EXPECT_EQ(order <= 0, a.c_str() <= right);
        EXPECT_EQ(order > 0, a.c_str() > right);
        EXPECT_EQ(order >= 0, a.c_str() >= right);
    }
    if (b.find('\0') == std::string::npos) {
        EXPECT_EQ(order == 0, left == b.c_str());
        EXPECT_EQ(order != 0, left != b.c_str());
        EXPECT_EQ(order < 0, left < b.c_str());
        EXPECT_EQ(order <= 0, left <= b.c_str());
        EXPECT_EQ(order > 0, left > b.c_str());
        EXPECT_EQ(order >= 0, left >= b.c_str());
    }
}

TEST(AnsiString, ComparesWithAndWithoutCase) {
    const OCAnsiString lower("a");
    const OCAnsiString upper("A");
    EXPECT_EQ(CompareResultEqual, lower.compare(upper, StringCaseInsensitive));
    EXPECT_EQ(CompareResultGreater, lower.compare(upper, StringCaseSensitive));
    EXPECT_EQ(CompareResultGreater, lower.compare(upper));
    EXPECT_EQ(CompareResultLess, upper.compare(lower));
    // Letters count as lower case, so what stands between the two cases comes before them.
    EXPECT_EQ(CompareResultGreater, upper.compare("_", StringCaseInsensitive));
    EXPECT_EQ(CompareResultLess, upper.compare("_", StringCaseSensitive));
    // Only ASCII: `Ä` and `ä` of Latin-1 stay different.
    EXPECT_EQ(CompareResultLess, OCAnsiString("\xc4").compare("\xe4", StringCaseInsensitive));
}

TEST(AnsiString, APrefixIsLess) {
    EXPECT_EQ(CompareResultLess, OCAnsiString("abc").compare("abcd"));
    EXPECT_EQ(CompareResultGreater, OCAnsiString("abcd").compare("abc"));
    EXPECT_EQ(CompareResultLess, OCAnsiString("").compare("a", StringCaseInsensitive));
    EXPECT_EQ(CompareResultEqual, OCAnsiString("").compare(""));
}

TEST(AnsiString, BytesFrom128ComeFirst) {
    EXPECT_EQ(CompareResultLess, OCAnsiString("\xc8").compare("A"));
    EXPECT_EQ(CompareResultLess, OCAnsiString("\xc8").compare("A", StringCaseInsensitive));
    EXPECT_TRUE(OCAnsiString("\xff") < OCAnsiString("\0", 1));
    EXPECT_TRUE(OCAnsiString("\x80") < OCAnsiString("\xff"));
    EXPECT_TRUE(OCAnsiString("") < OCAnsiString("\x80"));
    for (int a = 0; a < 256; a++)
        for (int b = 0; b < 256; b++)
            expectOrder(std::string(1, static_cast<char>(a)), std::string(1, static_cast<char>(b)));
}

TEST(AnsiString, FindsTheFirstDifferenceAtEveryPlace) {
    for (unsigned long count = 1; count <= 200; count++) {
        for (unsigned long position = 0; position < count; position++) {
            const OCAnsiString original = make(pattern(count));
            OCAnsiString s(original);
            s[position] = '\x90';
            // What comes behind must not matter.
            if (position + 1 < count)
                s[position + 1] = '~';
            ASSERT_EQ(CompareResultLess, s.compare(original));
            ASSERT_EQ(CompareResultGreater, original.compare(s));
            ASSERT_EQ(CompareResultLess, s.compare(original, StringCaseInsensitive));
            ASSERT_EQ(CompareResultGreater, original.compare(s, StringCaseInsensitive));
            ASSERT_FALSE(s == original);
            ASSERT_TRUE(s != original);
        }
    }
}

TEST(AnsiString, BytesBehindTheEndDoNotCount) {
    for (unsigned long count = 0; count <= 200; count++) {
        OCAnsiString a = make(pattern(count + 20, 'b'));
        OCAnsiString b = make(std::string(count, 'x') + std::string(20, '\x90'));
        a.assign(pattern(count).c_str());
        b.assign(pattern(count).c_str());
        ASSERT_EQ(CompareResultEqual, a.compare(b));
        ASSERT_EQ(CompareResultEqual, a.compare(b, StringCaseInsensitive));
        ASSERT_TRUE(a == b);
    }
}

TEST(AnsiString, ComparesEveryPairOfLengths) {
    for (unsigned long a : edges)
        for (unsigned long b : edges)
            expectOrder(pattern(a), pattern(b));
}

TEST(AnsiString, ComparesZeroBytesAsAnyOther) {
    expectOrder(std::string("a\0b", 3), std::string("a\0c", 3));
    expectOrder(std::string("a\0", 2), "a");
    expectOrder(std::string("\0", 1), "");
}

TEST(AnsiString, ComparesRandomTextsLikeTheModel) {
    const unsigned int seed = 20031;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string letters("aAbB_\xc4\xe4\0", 8);
    for (int round = 0; round < 5000; round++) {
        std::string a;
        for (unsigned long i = random() % 90; i > 0; i--)
            a += letters[random() % letters.size()];
        std::string b = a;
        for (unsigned long i = random() % 3; i > 0 && !b.empty(); i--)
            b[random() % b.size()] = letters[random() % letters.size()];
        b.resize(random() % 3 == 0 ? random() % (b.size() + 1) : b.size());
        expectOrder(a, b);
    }
}

// Search

TEST(AnsiString, FindsCharacters) {
    const OCAnsiString s("abcABC");
    unsigned long position = 99;
    EXPECT_TRUE(s.indexOf('b', position));
    EXPECT_EQ(1UL, position);
    EXPECT_TRUE(s.indexOf('B', position));
    EXPECT_EQ(4UL, position);
    EXPECT_TRUE(s.indexOf('B', position, StringCaseInsensitive));
    EXPECT_EQ(1UL, position);
    EXPECT_TRUE(s.contains('c'));
    EXPECT_FALSE(s.contains('x'));
    EXPECT_TRUE(OCAnsiString("X").contains('x', StringCaseInsensitive));
    EXPECT_FALSE(OCAnsiString("X").contains('x', StringCaseSensitive));
    EXPECT_FALSE(OCAnsiString("X").contains('x'));
    EXPECT_TRUE(OCAnsiString("a\0b", 3).contains('\0'));
    EXPECT_FALSE(OCAnsiString("ab").contains('\0'));
}

TEST(AnsiString, AFailedSearchLeavesThePosition) {
    const OCAnsiString s("abc");
    unsigned long position = 99;
    EXPECT_FALSE(s.indexOf('x', position));
    EXPECT_FALSE(s.indexOf("bd", position));
    EXPECT_FALSE(s.indexOf("", position));
    EXPECT_FALSE(s.indexOf("abcd", position));
    EXPECT_FALSE(s.indexOf("x", position, StringCaseInsensitive));
    EXPECT_FALSE(OCAnsiString().indexOf("", position));
    EXPECT_FALSE(OCAnsiString().indexOf('a', position));
    EXPECT_EQ(99UL, position);
    EXPECT_FALSE(s.contains(""));
}

TEST(AnsiString, FindsTexts) {
    const OCAnsiString s("one two two");
    unsigned long position = 99;
    EXPECT_TRUE(s.indexOf("two", position));
    EXPECT_EQ(4UL, position);
    EXPECT_TRUE(s.indexOf("one two two", position));
    EXPECT_EQ(0UL, position);
    EXPECT_TRUE(s.indexOf("o", position));
    EXPECT_EQ(0UL, position);
    EXPECT_FALSE(s.contains("TWO"));
    EXPECT_FALSE(s.contains("TWO", StringCaseSensitive));
    EXPECT_TRUE(s.contains("TWO", StringCaseInsensitive));
    EXPECT_TRUE(s.indexOf("wO TwO", position, StringCaseInsensitive));
    EXPECT_EQ(5UL, position);
    EXPECT_TRUE(s.contains(s));
    EXPECT_TRUE(OCAnsiString("a\0b\0c", 5).indexOf(OCAnsiString("\0c", 2), position));
    EXPECT_EQ(3UL, position);
    EXPECT_FALSE(OCAnsiString("\xc4").contains("\xe4", StringCaseInsensitive));
}

TEST(AnsiString, FindsLikeTheModel) {
    const unsigned int seed = 477;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; round++) {
        const std::string letters = round % 2 == 0 ? "aAb" : "abcdefghABCDEFGH \xc4";
        std::string s;
        for (unsigned long i = random() % 200; i > 0; i--)
            s += letters[random() % letters.size()];
        std::string wanted;
        for (unsigned long i = random() % 6; i > 0; i--)
            wanted += letters[random() % letters.size()];
        if (round % 5 == 0 && !s.empty())
            wanted = s.substr(random() % s.size(), random() % 40);
        for (bool sensitive : {true, false}) {
            const auto sense = sensitive ? StringCaseSensitive : StringCaseInsensitive;
            const long expected = model::find(s, wanted, sensitive);
            unsigned long position = 12345;
            ASSERT_EQ(expected >= 0, make(s).indexOf(make(wanted), position, sense))
                << s << " / " << wanted;
            ASSERT_EQ(expected >= 0 ? expected : 12345, static_cast<long>(position));
            ASSERT_EQ(expected >= 0, make(s).contains(make(wanted), sense));
            if (wanted.size() == 1) {
                position = 12345;
                ASSERT_EQ(expected >= 0, make(s).indexOf(wanted[0], position, sense));
                ASSERT_EQ(expected >= 0 ? expected : 12345, static_cast<long>(position));
            }
        }
    }
}

// Replacing

TEST(AnsiString, ReplacesEveryOccurrence) {
    OCAnsiString s("aaa");
    EXPECT_EQ(&s, &s.replace("aa", "b"));
    EXPECT_STRING("ba", s);
    EXPECT_STRING("x-x-x", OCAnsiString("one-one-one").replace("one", "x"));
    EXPECT_STRING("three-three", OCAnsiString("one-one").replace("one", "three"));
    EXPECT_STRING("two-two", OCAnsiString("one-one").replace("one", "two"));
    EXPECT_STRING("-", OCAnsiString("one-one").replace("one", ""));
    EXPECT_STRING("", OCAnsiString("oneone").replace("one", ""));
    EXPECT_STRING("x", OCAnsiString("one").replace("one", "x"));
    EXPECT_STRING("one", OCAnsiString("one").replace("ONE", "x"));
    EXPECT_STRING("x", OCAnsiString("one").replace("ONE", "x", StringCaseInsensitive));
    EXPECT_STRING("ONE", OCAnsiString("one").replace("ONE", "ONE", StringCaseInsensitive));
}

TEST(AnsiString, WhatIsNotThereIsNotReplaced) {
    EXPECT_STRING("abc", OCAnsiString("abc").replace("", "x"));
    EXPECT_STRING("abc", OCAnsiString("abc").replace("abcd", "x"));
    EXPECT_STRING("abc", OCAnsiString("abc").replace("d", "x"));
    EXPECT_STRING("", OCAnsiString("").replace("", "x"));
    EXPECT_STRING("", OCAnsiString("").replace("a", "x"));
}

TEST(AnsiString, WhatWasPutInIsNotLookedAtAgain) {
    EXPECT_STRING("aaaa", OCAnsiString("aa").replace("a", "aa"));
    EXPECT_STRING("ab", OCAnsiString("aab").replace("ab", "b"));
    EXPECT_STRING("abab", OCAnsiString("aa").replace("a", "ab"));
}

TEST(AnsiString, ReplacesZeroBytes) {
    OCAnsiString s("a\0b\0", 4);
    s.replace(OCAnsiString('\0'), OCAnsiString("\0\0", 2));
    EXPECT_STRING(std::string("a\0\0b\0\0", 6), s);
    s.replace(OCAnsiString("\0\0", 2), "");
    EXPECT_STRING("ab", s);
}

TEST(AnsiString, TheStringItselfMayBeReplaced) {
    for (unsigned long count : edges) {
        const std::string whole = pattern(count);
        for (const std::string& to :
             {std::string(), std::string("x"), pattern(count, 'B'), pattern(500)}) {
            OCAnsiString s = make(whole);
            s.replace(s, make(to));
            EXPECT_STRING(count == 0 ? "" : to, s);
            s = make(whole);
            s.replace(s, make(to), StringCaseInsensitive);
            EXPECT_STRING(count == 0 ? "" : to, s);
        }
        OCAnsiString s = make(whole);
        s.replace(s, s);
        EXPECT_STRING(whole, s);
    }
}

TEST(AnsiString, TheStringItselfMayBePutIn) {
    for (unsigned long count : edges) {
        const std::string whole = pattern(count);
        for (const std::string& from :
             {std::string("b"), std::string("c"), std::string("cde"), whole, std::string("ABC")}) {
            for (bool sensitive : {true, false}) {
                OCAnsiString s = make(whole);
                s.replace(make(from), s, sensitive ? StringCaseSensitive : StringCaseInsensitive);
                EXPECT_STRING(model::replace(whole, from, whole, sensitive), s);
            }
        }
    }
}

TEST(AnsiString, ReplacesAtEveryLength) {
    for (unsigned long count : edges) {
        for (unsigned long from : {1UL, 2UL, 5UL, 23UL}) {
            for (unsigned long to : {0UL, 1UL, 2UL, 3UL, 7UL, 40UL, 130UL, 300UL}) {
                const std::string whole = pattern(count);
                const std::string wanted = pattern(from, 'd');
                const std::string replacement = pattern(to, 'B');
                OCAnsiString s = make(whole);
                s.replace(make(wanted), make(replacement));
                EXPECT_STRING(model::replace(whole, wanted, replacement, true), s);
            }
        }
    }
}

TEST(AnsiString, ReplacesManyOccurrences) {
    // More than are remembered at a time.
    for (unsigned long count : {1023UL, 1024UL, 1025UL, 2048UL, 5000UL}) {
        for (const char* to : {"", "x", "xyz", "wxyz"}) {
            std::string whole;
            for (unsigned long i = 0; i < count; i++)
                whole += i % 7 == 0 ? "Ab-" : "ab.";
            for (bool sensitive : {true, false}) {
                const auto sense = sensitive ? StringCaseSensitive : StringCaseInsensitive;
                OCAnsiString s = make(whole);
                s.replace("ab", to, sense);
                EXPECT_STRING(model::replace(whole, "ab", to, sensitive), s);
                s = make(whole);
                s.replace("b", to, sense);
                EXPECT_STRING(model::replace(whole, "b", to, sensitive), s);
            }
        }
    }
}

TEST(AnsiString, ReplacesLikeTheModel) {
    const unsigned int seed = 90210;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; round++) {
        const std::string letters = round % 2 == 0 ? "aAb" : "abcdABCD ";
        const auto make1 = [&](unsigned long longest) {
            std::string result;
            for (unsigned long i = random() % (longest + 1); i > 0; i--)
                result += letters[random() % letters.size()];
            return result;
        };
        const std::string whole = make1(random() % 10 == 0 ? 1500 : 250);
        const std::string from = make1(random() % 4 == 0 ? 12 : 3);
        const std::string to = make1(random() % 4 == 0 ? 60 : 4);
        for (bool sensitive : {true, false}) {
            OCAnsiString s = make(whole);
            s.replace(make(from), make(to),
                      sensitive ? StringCaseSensitive : StringCaseInsensitive);
            const std::string expected = model::replace(whole, from, to, sensitive);
            ASSERT_EQ(expected, text(s)) << whole << " / " << from << " / " << to;
            EXPECT_STRING(expected, s);
        }
    }
}

TEST(AnsiString, AReplacementThatGrowsTooMuchIsRefused) {
    // 2^20 occurrences, each to become 2^20 characters.
    OCAnsiString s;
    s.setLength(1UL << 20).fill('a');
    OCAnsiString to;
    to.setLength(1UL << 20).fill('b');
    EXPECT_THROW(
        {
            fault::HeapFault fault(1);
            s.replace("a", to);
        },
        OXMemory_AllocationError);
    EXPECT_STRING(std::string(1UL << 20, 'a'), s);
}

// Crafted texts: a quadratic search would not end today.

TEST(AnsiString, SearchesCraftedTextsInLinearTime) {
    const unsigned long count = 4UL << 20;
    OCAnsiString s;
    s.setLength(count).fill('a');
    OCAnsiString wanted;
    wanted.setLength(count / 2).fill('a').append('b');
    unsigned long position = 99;
    EXPECT_FALSE(s.indexOf(wanted, position));
    EXPECT_FALSE(s.indexOf(wanted, position, StringCaseInsensitive));
    EXPECT_FALSE(s.contains("b" + OCAnsiString(s.getString(), count / 2)));
    s.append('b');
    EXPECT_TRUE(s.indexOf(wanted, position));
    EXPECT_EQ(count / 2, position);
    wanted[wanted.getLength() / 2] = 'c';
    EXPECT_FALSE(s.contains(wanted));
    EXPECT_FALSE(s.contains(wanted, StringCaseInsensitive));
}

TEST(AnsiString, ReplacesInCraftedTextsInLinearTime) {
    const unsigned long count = 1UL << 20;
    for (OEStringCase sense : {StringCaseSensitive, StringCaseInsensitive}) {
        // Almost an occurrence everywhere.
        OCAnsiString s;
        s.setLength(count).fill('a');
        OCAnsiString wanted;
        wanted.setLength(count / 8).fill('a').append('b');
        s.replace(wanted, "x", sense);
        EXPECT_EQ(count, s.getLength());
        // The same, with a few occurrences between.
        const OCAnsiString whole = s + "b" + s + "b" + s;
        s = whole;
        s.replace(wanted, "x", sense);
        EXPECT_EQ(whole.getLength() - 2 * (wanted.getLength() - 1), s.getLength());
        EXPECT_EQ('x', s[count - count / 8]);
        // An occurrence everywhere.
        s.setLength(count).fill('a');
        s.replace("a", "bc", sense);
        EXPECT_EQ(2 * count, s.getLength());
        s.replace("bc", "d", sense);
        EXPECT_EQ(count, s.getLength());
        s.replace("d", "", sense);
        EXPECT_STRING("", s);
    }
}

TEST(AnsiString, HandlesTextsOf64MiB) {
    const unsigned long count = 64UL << 20;
    OCAnsiString s;
    s.setLength(count).fill('a');
    s[count / 2] = 'b';
    s.replace("b", "xyz").replace("xyz", "B").lowerCase();
    unsigned long position = 0;
    EXPECT_TRUE(s.indexOf('b', position));
    EXPECT_EQ(count / 2, position);
    s[count / 2] = '%';
    s.escape();
    EXPECT_EQ(count + 2, s.getLength());
    s.unescape();
    EXPECT_EQ('%', s[count / 2]);
    s.insert(3, " ").trim().remove(3, 1).padLeft(' ', count + 5).trimLeft();
    EXPECT_EQ(count, s.getLength());
    EXPECT_EQ('%', s[count / 2]);
    s[count / 2] = 'a';
    EXPECT_EQ(huge, [&] {
        for (unsigned long i = 0; i < count; i++)
            if (s.getString()[i] != 'a')
                return i;
        return huge;
    }());
}

// URL form

TEST(AnsiString, EscapesEveryByte) {
    for (int byte = 0; byte < 256; byte++) {
        const std::string one(1, static_cast<char>(byte));
        OCAnsiString s = make(one);
        EXPECT_EQ(&s, &s.escape());
        EXPECT_STRING(model::escape(one), s);
        EXPECT_EQ(&s, &s.unescape());
        EXPECT_STRING(one, s);
    }
    EXPECT_STRING("a+b%2ec", OCAnsiString("a b.c").escape());
    EXPECT_STRING("%7e%2f%00%ff%80-_+%2b%25", OCAnsiString("~/\0\xff\x80-_ +%", 10).escape());
    EXPECT_STRING("", OCAnsiString("").escape());
}

TEST(AnsiString, UnescapesEveryPairOfBytes) {
    for (int first = 0; first < 256; first++) {
        for (int second = 0; second < 256; second++) {
            const std::string code{'%', static_cast<char>(first), static_cast<char>(second)};
            OCAnsiString s = make("a" + code + "b");
            s.unescape();
            ASSERT_EQ(model::unescape("a" + code + "b"), text(s));
        }
    }
}

TEST(AnsiString, UnescapesOnlyWhatIsWhole) {
    EXPECT_STRING("%4", OCAnsiString("%4").unescape());
    EXPECT_STRING("%zz", OCAnsiString("%zz").unescape());
    EXPECT_STRING("A ", OCAnsiString("%41+").unescape());
    EXPECT_STRING("%", OCAnsiString("%").unescape());
    EXPECT_STRING("%%A", OCAnsiString("%%%41").unescape());
    EXPECT_STRING("%4z", OCAnsiString("%4z").unescape());
    EXPECT_STRING("%z4", OCAnsiString("%z4").unescape());
    EXPECT_STRING("%%", OCAnsiString("%25%25").unescape());
    EXPECT_STRING("%25", OCAnsiString("%2525").unescape());
    EXPECT_STRING("+", OCAnsiString("%2b").unescape());
    EXPECT_STRING("\xab\xab", OCAnsiString("%aB%Ab").unescape());
    EXPECT_STRING(std::string(1, '\0'), OCAnsiString("%00").unescape());
    EXPECT_STRING("%4 ", OCAnsiString("%4+").unescape());
    EXPECT_STRING("", OCAnsiString("").unescape());
}

TEST(AnsiString, EscapesAndUnescapesLikeTheModel) {
    const unsigned int seed = 1738;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const char any[] = "%%%0123456789abcdefABCDEFgG+ -_\0\xff/";
    for (int round = 0; round < 10000; round++) {
        const std::string letters(any, round % 2 == 0 ? sizeof any - 1 : 20);
        std::string whole;
        for (unsigned long i = random() % 400; i > 0; i--)
            whole += letters[random() % letters.size()];
        OCAnsiString s = make(whole);
        s.escape();
        EXPECT_STRING(model::escape(whole), s);
        s.unescape();
        EXPECT_STRING(whole, s);
        s.unescape();
        EXPECT_STRING(model::unescape(whole), s);
    }
}

TEST(AnsiString, EscapesAtEveryLength) {
    for (unsigned long count = 0; count <= 300; count++) {
        for (unsigned long place : {0UL, 1UL, count / 2, count}) {
            std::string whole = pattern(count);
            if (place < count)
                whole[place] = '\xe9';
            OCAnsiString s = make(whole);
            s.escape();
            EXPECT_STRING(model::escape(whole), s);
            s.unescape();
            EXPECT_STRING(whole, s);
        }
    }
}

// Streams

TEST(AnsiString, WritesExactlyItsBytes) {
    std::ostringstream stream;
    stream << OCAnsiString("a\0b", 3) << OCAnsiString() << make(pattern(300));
    EXPECT_EQ(std::string("a\0b", 3) + pattern(300), stream.str());
}

TEST(AnsiString, WritesWithoutRegardToTheWidth) {
    std::ostringstream stream;
    stream << std::setw(10) << std::setfill('*') << OCAnsiString("abc") << OCWideString(L"de");
    EXPECT_EQ("abcde", stream.str());
}

TEST(AnsiString, WritesAWideStringNarrowed) {
    std::ostringstream stream;
    const wchar_t characters[] = {L'a', 0, 0x141, static_cast<wchar_t>(-23)};
    stream << OCWideString(characters, 4) << OCWideString();
    EXPECT_EQ(std::string("a\0A\xe9", 4), stream.str());
}

TEST(AnsiString, AnEmptyStringIsNotWritten) {
    struct Counter : std::streambuf {
        std::streamsize xsputn(const char*, std::streamsize n) override {
            ++calls;
            return n;
        }
        int calls = 0;
    } buffer;
    std::ostream stream(&buffer);
    stream << OCAnsiString() << OCWideString();
    EXPECT_EQ(0, buffer.calls);
    stream << OCAnsiString("x");
    EXPECT_EQ(1, buffer.calls);
}

// Exhausted memory

TEST(AnsiString, ConstructionThatFailsLosesNothing) {
    const std::string source = pattern(300);
    const OCAnsiString original = make(source);
    const OCWideString wide(original);
    EXPECT_EQ(
        0, fault::blocksLeftBy([&] {
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCAnsiString s(source.c_str()); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCAnsiString s(original); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCAnsiString s(wide); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCAnsiString s(original + "x"); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCAnsiString s(original / "x"); }));
            EXPECT_EQ(2UL,
                      fault::failEachRequest([&] { OCAnsiString s(source.c_str() + original); }));
            EXPECT_EQ(2UL,
                      fault::failEachRequest([&] { OCAnsiString s(source.c_str() / original); }));
        }));
    EXPECT_STRING(source, original);
}

TEST(AnsiString, AGrowthThatFailsLeavesTheString) {
    for (unsigned long count : {0UL, 100UL, 127UL, 128UL, 191UL, 1000UL}) {
        const std::string start = pattern(count);
        const std::string more = pattern(200, 'B');
        const OCAnsiString other = make(more);
        const OCWideString wide(other);
        const auto expectOne = [&](const std::string& expected,
                                   const std::function<void(OCAnsiString&)>& operation) {
            SCOPED_TRACE(expected);
            EXPECT_EQ(1UL, failEachRequestOn(start, expected, operation));
        };
        expectOne(start + more, [&](OCAnsiString& s) { s.append(other); });
        expectOne(start + more, [&](OCAnsiString& s) { s.append(more.c_str()); });
        expectOne(start + more, [&](OCAnsiString& s) { s += other; });
        expectOne(model::join(start, more), [&](OCAnsiString& s) { s /= other; });
        const std::string path = "/" + more;
        expectOne(model::join(start, path), [&](OCAnsiString& s) { s /= path.c_str(); });
        expectOne(start + std::string(200, '*'),
                  [&](OCAnsiString& s) { s.padRight('*', count + 200); });
        expectOne(std::string(200, '*') + start,
                  [&](OCAnsiString& s) { s.padLeft('*', count + 200); });
        expectOne(more + start, [&](OCAnsiString& s) { s.insert(other); });
        if (count > 0)
            expectOne(start.substr(0, 7) + more + start.substr(7),
                      [&](OCAnsiString& s) { s.insert(7, other); });
        const std::string longer = pattern(count + 300);
        expectOne(longer, [&](OCAnsiString& s) { s.assign(longer.c_str()); });
        expectOne(start + std::string(200, 'x'), [&](OCAnsiString& s) {
            s.setLength(count + 200);
            std::memset(s.getString() + count, 'x', 200);
        });
    }
}

TEST(AnsiString, AssigningThatFailsLeavesTheString) {
    for (unsigned long count : edges) {
        for (unsigned long after : {128UL, 192UL, 500UL}) {
            if (capacityOf(count) == capacityOf(after))
                continue;
            const std::string expected = pattern(after, 'B');
            const OCAnsiString other = make(expected);
            const OCWideString wide(other);
            const std::string start = pattern(count);
            const auto expectOne = [&](const std::function<void(OCAnsiString&)>& operation) {
                EXPECT_EQ(1UL, failEachRequestOn(start, expected, operation));
            };
            expectOne([&](OCAnsiString& s) { s = other; });
            expectOne([&](OCAnsiString& s) { s.assign(other); });
            expectOne([&](OCAnsiString& s) { s.assign(expected.c_str()); });
            expectOne([&](OCAnsiString& s) { s.assign(expected.data(), after); });
            // This one shortens in place.
            EXPECT_EQ(count > after ? 0UL : 1UL,
                      failEachRequestOn(start, expected, [&](OCAnsiString& s) { s.assign(wide); }));
        }
    }
}

TEST(AnsiString, ShorteningNeverFails) {
    const std::string start = "\n" + pattern(998) + "\n";
    const auto expectNone = [&](const std::string& expected,
                                const std::function<void(OCAnsiString&)>& operation) {
        EXPECT_EQ(0UL, failEachRequestOn(start, expected, operation));
    };
    expectNone(start.substr(0, 500), [](OCAnsiString& s) { s.left(500); });
    expectNone(start.substr(500), [](OCAnsiString& s) { s.right(500); });
    expectNone(start.substr(100, 500), [](OCAnsiString& s) { s.mid(100, 500); });
    expectNone(start.substr(0, 100) + start.substr(600),
               [](OCAnsiString& s) { s.remove(100, 500); });
    expectNone(start.substr(0, 500), [](OCAnsiString& s) { s.remove(500, huge); });
    expectNone(start.substr(500), [](OCAnsiString& s) { s.remove(0, 500); });
    expectNone(start.substr(0, 500), [](OCAnsiString& s) { s.setLength(500); });
    expectNone(model::replace(start, "abcdefghij", "", true),
               [](OCAnsiString& s) { s.replace("abcdefghij", ""); });
    // The block that was too large is as good as another from then on.
    expectNone(start.substr(0, 500) + "x", [](OCAnsiString& s) { s.left(500).append('x'); });
    const std::string blanks = std::string(200, ' ') + pattern(700) + std::string(200, ' ');
    EXPECT_EQ(0UL, failEachRequestOn(blanks, model::trim(blanks, true, false),
                                     [](OCAnsiString& s) { s.trimLeft(); }));
    EXPECT_EQ(0UL, failEachRequestOn(blanks, model::trim(blanks, false, true),
                                     [](OCAnsiString& s) { s.trimRight(); }));
    EXPECT_EQ(0UL, failEachRequestOn(blanks, model::trim(blanks, true, true),
                                     [](OCAnsiString& s) { s.trim(); }));
    EXPECT_TRUE(noexcept(std::declval<OCAnsiString&>().left(1)));
    EXPECT_TRUE(noexcept(std::declval<OCAnsiString&>().trimLeft()));
    EXPECT_TRUE(noexcept(std::declval<OCAnsiString&>().trimRight()));
    EXPECT_TRUE(noexcept(std::declval<OCAnsiString&>().trim()));
}

TEST(AnsiString, AssigningAShorterPartOfItselfMayFail) {
    const std::string start = pattern(1000);
    EXPECT_EQ(1UL, failEachRequestOn(start, start.substr(300, 200),
                                     [](OCAnsiString& s) { s.assign(s.getString() + 300, 200); }));
}

TEST(AnsiString, ShorteningToAShortTextCannotFail) {
    const auto expectNone = [](const std::string& start, const std::string& expected,
                               const std::function<void(OCAnsiString&)>& operation) {
        EXPECT_EQ(0UL, failEachRequestOn(start, expected, operation));
    };
    const std::string start = pattern(1000);
    expectNone(start, "", [](OCAnsiString& s) { s.clear(); });
    expectNone(start, pattern(127), [](OCAnsiString& s) { s.left(127); });
    expectNone(start, start.substr(990), [](OCAnsiString& s) { s.right(10); });
    expectNone(start, "", [](OCAnsiString& s) { s.right(0); });
    expectNone(start, start.substr(500, 127), [](OCAnsiString& s) { s.mid(500, 127); });
    expectNone(start, start.substr(0, 5) + start.substr(950),
               [](OCAnsiString& s) { s.remove(5, 945); });
    expectNone(start, "x", [](OCAnsiString& s) { s.assign('x'); });
    expectNone(start, "x", [](OCAnsiString& s) { s = "x"; });
    expectNone(start, pattern(20), [](OCAnsiString& s) { s.setLength(20); });
    expectNone(std::string(500, ' ') + "x", "x", [](OCAnsiString& s) { s.trim(); });
    expectNone(std::string(500, ' '), "", [](OCAnsiString& s) { s.trimLeft(); });
    expectNone(std::string(500, 'a') + "x", "x", [](OCAnsiString& s) { s.replace("a", ""); });
    expectNone(std::string(600, 'a'), std::string(100, 'b'),
               [](OCAnsiString& s) { s.replace("aaaaaa", "b"); });
}

TEST(AnsiString, OperationsOnItselfThatFailLeaveTheString) {
    for (unsigned long count : {100UL, 127UL, 150UL, 191UL, 1000UL}) {
        const std::string start = pattern(count);
        const auto expectSome = [&](const std::string& expected,
                                    const std::function<void(OCAnsiString&)>& operation) {
            EXPECT_LE(1UL, failEachRequestOn(start, expected, operation));
        };
        expectSome(start + start, [](OCAnsiString& s) { s += s; });
        expectSome(model::join(start, start),
                   [](OCAnsiString& s) { s.append(s, StringConcatPath); });
        expectSome(start + start.substr(3), [](OCAnsiString& s) { s.append(s.getString() + 3); });
        expectSome(model::join(start, start.substr(3)),
                   [](OCAnsiString& s) { s.append(s.getString() + 3, StringConcatPath); });
        expectSome(start + start, [](OCAnsiString& s) { s.insert(s); });
        expectSome(start.substr(0, 9) + start + start.substr(9),
                   [](OCAnsiString& s) { s.insert(9, s); });
        expectSome(model::replace(start, "b", start, true),
                   [](OCAnsiString& s) { s.replace("b", s); });
        const std::string longer = pattern(2000);
        expectSome(longer, [&](OCAnsiString& s) { s.replace(s, longer.c_str()); });
    }
}

TEST(AnsiString, AReplacementThatFailsLeavesTheString) {
    for (unsigned long count : {60UL, 127UL, 300UL, 1000UL, 5000UL}) {
        const std::string start = pattern(count);
        for (const char* to : {"", "xy", "a much longer text than the one that was there before"}) {
            for (OEStringCase sense : {StringCaseSensitive, StringCaseInsensitive}) {
                const std::string expected =
                    model::replace(start, "b", to, sense == StringCaseSensitive);
                const bool grows =
                    expected.size() > 127 && capacityOf(expected.size()) > capacityOf(count);
                EXPECT_EQ(grows ? 1UL : 0UL,
                          failEachRequestOn(start, expected,
                                            [&](OCAnsiString& s) { s.replace("b", to, sense); }));
            }
        }
    }
}

TEST(AnsiString, UrlFormThatFailsLeavesTheString) {
    for (unsigned long count : {50UL, 100UL, 127UL, 128UL, 500UL}) {
        std::string start;
        for (unsigned long i = 0; i < count; i++)
            start += i % 4 == 0 ? '/' : i % 4 == 1 ? ' ' : 'a';
        const std::string escaped = model::escape(start);
        EXPECT_EQ(escaped.size() > 127 ? 1UL : 0UL,
                  failEachRequestOn(start, escaped, [](OCAnsiString& s) { s.escape(); }));
        const unsigned long failures =
            // NOLINTNEXTLINE(readability-suspicious-call-argument)
            failEachRequestOn(escaped, start, [](OCAnsiString& s) { s.unescape(); });
        EXPECT_EQ(escaped.size() > 127, failures > 0);
    }
}

TEST(AnsiString, IndexFailuresComeBeforeTheHeap) {
    OCAnsiString s = make(pattern(300));
    const OCAnsiString other = make(pattern(300));
    for (const auto& operation : std::vector<std::function<void()>>{
             [&] { s.insert(300, other); }, [&] { s.remove(300, 0); }, [&] { s.mid(300, 0); }}) {
        expectNoSuchIndex(300, operation);
        EXPECT_STRING(pattern(300), s);
    }
}

// Everything together

/// One operation on a string and on the model.
struct Operation {
    const char* name;
    std::function<void(OCAnsiString&)> apply;
    std::function<std::string(std::string)> model;
};

/// Every operation, with these arguments where it takes such. What would make the string grow
/// without end, and what an empty string refuses, is left out.
std::vector<Operation> operationsOn(const std::string& text, const std::string& other, char c,
                                    unsigned long n, bool sensitive) {
    const auto sense = sensitive ? StringCaseSensitive : StringCaseInsensitive;
    const std::string one(1, c);
    const OCAnsiString argument = make(other);
    std::vector<Operation> result = {
        {"assign", [=](OCAnsiString& s) { s.assign(argument); }, [=](auto) { return other; }},
        {"append character", [=](OCAnsiString& s) { s.append(c); }, [=](auto s) { return s + c; }},
        {"append", [=](OCAnsiString& s) { s.append(argument); }, [=](auto s) { return s + other; }},
        {"path", [=](OCAnsiString& s) { s /= argument; },
         [=](auto s) { return model::join(s, other); }},
        {"concat", [=](OCAnsiString& s) { s = s + argument; }, [=](auto s) { return s + other; }},
        {"insert in front", [=](OCAnsiString& s) { s.insert(argument); },
         [=](auto s) { return other + s; }},
        {"left", [=](OCAnsiString& s) { s.left(n); }, [=](auto s) { return s.substr(0, n); }},
        {"trimLeft", [](OCAnsiString& s) { s.trimLeft(); },
         [](auto s) { return model::trim(s, true, false); }},
        {"trimRight", [](OCAnsiString& s) { s.trimRight(); },
         [](auto s) { return model::trim(s, false, true); }},
        {"trim", [](OCAnsiString& s) { s.trim(); },
         [](auto s) { return model::trim(s, true, true); }},
        {"padLeft", [=](OCAnsiString& s) { s.padLeft(c, n); },
         [=](auto s) { return std::string(n > s.size() ? n - s.size() : 0, c) + s; }},
        {"padRight", [=](OCAnsiString& s) { s.padRight(c, n); },
         [=](auto s) { return s + std::string(n > s.size() ? n - s.size() : 0, c); }},
        {"lowerCase", [](OCAnsiString& s) { s.lowerCase(); },
         [](auto s) {
             for (char& letter : s)
                 letter = model::fold(letter, false);
             return s;
         }},
        {"replace by a character", [=](OCAnsiString& s) { s.replace(argument, c, sense); },
         [=](auto s) { return model::replace(s, other, one, sensitive); }},
        {"unescape", [](OCAnsiString& s) { s.unescape(); },
         [](auto s) { return model::unescape(s); }},
    };
    if (text.size() < 300) {
        const unsigned long position = n % (text.size() + 1);
        const std::vector<Operation> growing = {
            {"replace a character", [=](OCAnsiString& s) { s.replace(c, argument, sense); },
             [=](auto s) { return model::replace(s, one, other, sensitive); }},
            {"escape", [](OCAnsiString& s) { s.escape(); },
             [](auto s) { return model::escape(s); }},
            {"append part of itself", [=](OCAnsiString& s) { s.append(s.getString() + position); },
             [=](auto s) { return s + (s.c_str() + position); }},
            {"path with itself", [](OCAnsiString& s) { s.append(s, StringConcatPath); },
             [](auto s) { return model::join(s, s); }},
        };
        result.insert(result.end(), growing.begin(), growing.end());
    }
    if (text.size() < 100)
        result.push_back({"replace by itself", [=](OCAnsiString& s) { s.replace(c, s, sense); },
                          [=](auto s) { return model::replace(s, one, s, sensitive); }});
    if (!text.empty()) {
        const unsigned long position = n % text.size();
        const unsigned long count = other.size() * 3;
        const std::vector<Operation> placed = {
            {"insert", [=](OCAnsiString& s) { s.insert(position, argument); },
             [=](auto s) { return s.insert(position, other); }},
            {"right", [=](OCAnsiString& s) { s.right(n); },
             [=](auto s) { return n < s.size() ? s.substr(s.size() - n) : s; }},
            {"mid", [=](OCAnsiString& s) { s.mid(position, count); },
             [=](auto s) { return s.substr(position, count); }},
            {"remove", [=](OCAnsiString& s) { s.remove(position, count); },
             [=](auto s) { return s.erase(position, count); }},
        };
        result.insert(result.end(), placed.begin(), placed.end());
    }
    return result;
}

TEST(AnsiString, BehavesLikeTheModelOverManyOperations) {
    const unsigned int seed = 5;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string letters("aAbB/ %+4\xe9\0", 11);
    std::string expected;
    OCAnsiString s;
    for (int round = 0; round < 20000 && !HasFailure(); round++) {
        std::string other;
        for (unsigned long i = random() % (random() % 8 == 0 ? 200 : 12); i > 0; i--)
            other += letters[random() % letters.size()];
        const std::vector<Operation> operations = operationsOn(
            expected, other, letters[random() % letters.size()], random() % 320, random() % 2 == 0);
        const Operation& operation = operations[random() % operations.size()];
        SCOPED_TRACE("round " + std::to_string(round) + ", " + operation.name);
        bool failed = false;
        {
            // Now and then there is no memory. Then nothing may change.
            fault::HeapFault fault(random() % 10 == 0 ? 1 : 1000000);
            try {
                operation.apply(s);
            } catch (const OXMemory_AllocationError&) {
                failed = true;
            }
        }
        if (!failed)
            expected = operation.model(expected);
        EXPECT_STRING(expected, s);
        if (expected.size() > 600) {
            expected.resize(100);
            s.left(100);
        }
    }
}

} // namespace
