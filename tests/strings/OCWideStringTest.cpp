#include "OCWideString.h"

#include "OCMemory.h"
#include "support/FaultInjection.h"
#include "support/VirtualTable.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

static_assert(sizeof(wchar_t) == 4);
static_assert(sizeof(OCWideString) == 552);
static_assert(sizeof(OCAbstractString) == sizeof(void*));

std::wstring text(const OCWideString& s) {
    return std::wstring(s.getString(), s.getLength());
}

std::string narrowText(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength());
}

/// A text of `count` characters of which no two neighbours are equal.
std::wstring pattern(unsigned long count, wchar_t first = L'a') {
    std::wstring result;
    for (unsigned long i = 0; i < count; i++)
        result += static_cast<wchar_t>(first + static_cast<wchar_t>(i % 23));
    return result;
}

OCWideString make(const std::wstring& s) {
    return OCWideString(s.data(), s.size());
}

bool isInside(const OCWideString& s) {
    const auto object = reinterpret_cast<unsigned long>(&s);
    const auto characters = reinterpret_cast<unsigned long>(s.getString());
    return characters >= object && characters < object + sizeof s;
}

/// The content, and everything that holds for every string.
void expectString(const std::wstring& expected, const OCWideString& s) {
    EXPECT_EQ(expected, text(s));
    EXPECT_EQ(expected.size(), s.getLength());
    EXPECT_EQ(L'\0', s.getString()[expected.size()]);
    EXPECT_EQ(expected.size() / 64 * 64 + 64, s.getCapacity());
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
        EXPECT_EQ("OXString_NoSuchIndex", narrowText(failure.getClass()));
        EXPECT_EQ("String index out of bounds (" + std::to_string(index) + ")",
                  narrowText(failure.getMessage()));
        ASSERT_EQ(1UL, failure.getDetails().getCount());
        EXPECT_EQ(std::to_string(index), narrowText(failure.getDetails().getString(0)));
    }
}

/// Runs `operation` on a string of `start` with each of its heap requests failing in turn: the
/// string is unchanged whenever an exception came out, and nothing is lost. Returns how often that
/// was.
unsigned long failEachRequestOn(const std::wstring& start,
                                const std::function<void(OCWideString&)>& operation) {
    unsigned long failures = 0;
    const long left = fault::blocksLeftBy([&] {
        OCWideString subject = make(start);
        failures = fault::failEachRequest([&] { operation(subject); },
                                          [&] { EXPECT_STRING(start, subject); });
    });
    EXPECT_EQ(0, left);
    return failures;
}

// Layout

TEST(WideString, KeepsTheOrderOfItsFields) {
    const OCWideString s(L"abc");
    const char* object = reinterpret_cast<const char*>(&s);
    unsigned long counters[3];
    std::memcpy(counters, object + 8, sizeof counters);
    EXPECT_EQ(64UL, counters[0]); // the granularity
    EXPECT_EQ(64UL, counters[1]); // the capacity
    EXPECT_EQ(3UL, counters[2]);  // the length
    EXPECT_EQ(object + 32, reinterpret_cast<const char*>(s.getString()));
    const wchar_t* data;
    std::memcpy(&data, object + 544, sizeof data);
    EXPECT_EQ(s.getString(), data);
}

TEST(WideString, TheGranularityIsAlways64) {
    const auto granularity = [](const OCWideString& s) {
        unsigned long value;
        std::memcpy(&value, reinterpret_cast<const char*>(&s) + 8, sizeof value);
        return value;
    };
    OCWideString s = make(pattern(500));
    EXPECT_EQ(64UL, granularity(s));
    EXPECT_EQ(64UL, granularity(OCWideString()));
    EXPECT_EQ(64UL, granularity(OCWideString(L'x')));
    EXPECT_EQ(64UL, granularity(OCWideString(OCAnsiString("x"))));
    EXPECT_EQ(64UL, granularity(OCWideString(s)));
    EXPECT_EQ(64UL, granularity(OCWideString(std::move(s))));
    EXPECT_EQ(64UL, granularity(s));
}

TEST(WideString, HasOnlyItsDestructorVirtual) {
    OCWideString* s = new OCWideString(L"abc");
    const VirtualTable table(s);
    EXPECT_EQ(2UL, table.getCount());
    table.deleteObject(s);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCWideString>);
    EXPECT_TRUE((std::is_base_of_v<OCAbstractString, OCWideString>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCAbstractString>));
}

TEST(WideString, DeletingGivesTheBlockBack) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCObject* s = new OCWideString(make(pattern(1000)));
                  delete s;
              }));
}

// Construction and assignment

TEST(WideString, IsEmptyAtFirst) {
    const OCWideString s;
    EXPECT_STRING(L"", s);
    EXPECT_EQ(64UL, s.getCapacity());
}

TEST(WideString, IsMadeFromACharacter) {
    EXPECT_STRING(L"x", OCWideString(L'x'));
    EXPECT_STRING(std::wstring(1, L'\0'), OCWideString(L'\0'));
    EXPECT_STRING(std::wstring(1, static_cast<wchar_t>(-1)),
                  OCWideString(static_cast<wchar_t>(-1)));
}

TEST(WideString, IsMadeFromATextOfAnyLength) {
    for (unsigned long count :
         {0UL, 1UL, 62UL, 63UL, 64UL, 65UL, 126UL, 127UL, 128UL, 129UL, 191UL, 192UL, 1000UL}) {
        const std::wstring expected = pattern(count);
        EXPECT_STRING(expected, OCWideString(expected.c_str()));
        EXPECT_STRING(expected, OCWideString(expected.data(), count));
        EXPECT_STRING(expected, OCWideString(make(expected)));
        OCWideString s;
        EXPECT_EQ(&s, &s.assign(expected.c_str()));
        EXPECT_STRING(expected, s);
        OCWideString t(L"before");
        EXPECT_EQ(&t, &t.assign(expected.data(), count));
        EXPECT_STRING(expected, t);
        OCWideString u = make(pattern(300));
        EXPECT_EQ(&u, &u.assign(s));
        EXPECT_STRING(expected, u);
        OCWideString v = make(pattern(150));
        EXPECT_EQ(&v, &(v = s));
        EXPECT_STRING(expected, v);
        EXPECT_STRING(expected, s);
    }
}

TEST(WideString, KeepsZeroCharactersThatACountIncludes) {
    const std::wstring expected(L"a\0b\0", 4);
    OCWideString s(L"a\0b\0", 4);
    EXPECT_STRING(expected, s);
    EXPECT_STRING(expected, OCWideString(s));
    EXPECT_STRING(std::wstring(L"xa\0b\0", 5), L"x" + s);
    s.assign(L"\0", 1);
    EXPECT_STRING(std::wstring(1, L'\0'), s);
    EXPECT_STRING(L"a", OCWideString(L"a\0b"));
}

TEST(WideString, AssignsACharacterOrNothing) {
    OCWideString s = make(pattern(500));
    EXPECT_EQ(&s, &s.assign(L'q'));
    EXPECT_STRING(L"q", s);
    s = make(pattern(500));
    EXPECT_EQ(&s, &s.assign());
    EXPECT_STRING(L"", s);
}

TEST(WideString, CopiesAreIndependent) {
    for (unsigned long count : {3UL, 200UL}) {
        const std::wstring original = pattern(count);
        OCWideString s = make(original);
        OCWideString copy(s);
        copy[0] = L'#';
        EXPECT_STRING(original, s);
        s = copy;
        s[1] = L'#';
        EXPECT_EQ(original[1], copy[1]);
    }
}

TEST(WideString, MovingLeavesAnEmptyString) {
    for (unsigned long count : {0UL, 5UL, 127UL, 128UL, 1000UL}) {
        const std::wstring expected = pattern(count);
        OCWideString source = make(expected);
        OCWideString target(std::move(source));
        EXPECT_STRING(expected, target);
        EXPECT_STRING(L"", source);
        source.append(L"again");
        EXPECT_STRING(L"again", source);
        for (unsigned long before : {0UL, 5UL, 300UL}) {
            OCWideString from = make(expected);
            OCWideString to = make(pattern(before));
            EXPECT_EQ(&to, &(to = std::move(from)));
            EXPECT_STRING(expected, to);
            EXPECT_STRING(L"", from);
        }
    }
}

TEST(WideString, MovingTakesTheBlockWithoutTheHeap) {
    OCWideString source = make(pattern(1000));
    const wchar_t* const block = source.getString();
    const unsigned long before = fault::heapRecord().requests;
    OCWideString target(std::move(source));
    EXPECT_EQ(block, target.getString());
    OCWideString other;
    other = std::move(target);
    EXPECT_EQ(block, other.getString());
    EXPECT_EQ(before, fault::heapRecord().requests);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<OCWideString>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<OCWideString>);
}

TEST(WideString, AssignsItself) {
    for (unsigned long count : {0UL, 5UL, 127UL, 128UL, 1000UL}) {
        const std::wstring expected = pattern(count);
        OCWideString s = make(expected);
        const OCWideString& same = s;
        s = same;
        EXPECT_STRING(expected, s);
        s.assign(same);
        EXPECT_STRING(expected, s);
        OCWideString& moved = s;
        s = std::move(moved);
        EXPECT_STRING(expected, s);
    }
}

TEST(WideString, AssignsAnyPartOfItself) {
    for (unsigned long count : {10UL, 127UL, 128UL, 200UL, 1000UL})
        for (unsigned long position : {0UL, 1UL, 7UL, count - 1, count})
            for (unsigned long n : {0UL, 1UL, 60UL, 64UL, 127UL, 128UL, 600UL, count}) {
                if (position + n > count)
                    continue;
                const std::wstring whole = pattern(count);
                OCWideString s = make(whole);
                s.assign(s.getString() + position, n);
                EXPECT_STRING(whole.substr(position, n), s);
            }
    const std::wstring whole = pattern(200);
    OCWideString s = make(whole);
    s.assign(s.getString() + 3);
    EXPECT_STRING(whole.substr(3), s);
}

TEST(WideString, AssigningPartOfItselfMayIncludeTheTerminator) {
    OCWideString s(L"abc");
    s.assign(s.getString() + 1, 3);
    EXPECT_STRING(std::wstring(L"bc\0", 3), s);
}

// Narrow and wide

TEST(WideString, WideningExtendsTheSign) {
    const OCWideString s{OCAnsiString("\xe9")};
    ASSERT_EQ(1UL, s.getLength());
    EXPECT_EQ(-23, static_cast<int>(s[0]));
    for (int byte = 0; byte < 256; byte++) {
        const OCAnsiString narrow(static_cast<char>(byte));
        const OCWideString wide(narrow);
        ASSERT_EQ(1UL, wide.getLength());
        EXPECT_EQ(byte < 128 ? byte : byte - 256, static_cast<int>(wide[0]));
        EXPECT_TRUE(OCAnsiString(wide) == narrow) << byte;
    }
}

TEST(WideString, NarrowingKeepsTheLow8Bits) {
    const wchar_t characters[] = {L'A',
                                  static_cast<wchar_t>(0x141),
                                  static_cast<wchar_t>(0x12345678),
                                  static_cast<wchar_t>(-1),
                                  static_cast<wchar_t>(-23),
                                  static_cast<wchar_t>(233),
                                  static_cast<wchar_t>(INT_MIN),
                                  static_cast<wchar_t>(INT_MAX)};
    const OCAnsiString narrow{OCWideString(characters, 8)};
    EXPECT_EQ(std::string("AAx\xff\xe9\xe9\0\xff", 8), narrowText(narrow));
}

TEST(WideString, WidensAndNarrowsTextsOfEveryLength) {
    for (unsigned long count = 0; count <= 300; count++) {
        std::string bytes;
        std::wstring expected;
        for (unsigned long i = 0; i < count; i++) {
            const char c = static_cast<char>(static_cast<unsigned char>(i * 37 + count));
            bytes += c;
            expected += static_cast<wchar_t>(c);
        }
        const OCAnsiString narrow(bytes.data(), count);
        const OCWideString wide(narrow);
        EXPECT_STRING(expected, wide);
        for (unsigned long before : {0UL, 70UL, 130UL, 200UL, 1000UL}) {
            OCWideString assigned = make(pattern(before));
            EXPECT_EQ(&assigned, &assigned.assign(narrow));
            EXPECT_STRING(expected, assigned);
        }
        ASSERT_EQ(bytes, narrowText(OCAnsiString(wide)));
    }
}

TEST(WideString, ConvertsWhereTheOtherStringIsExpected) {
    const OCAnsiString narrow("abc");
    OCWideString wide = narrow;
    EXPECT_STRING(L"abc", wide);
    wide = OCAnsiString("def");
    EXPECT_STRING(L"def", wide);
    wide.append(narrow).insert(narrow);
    EXPECT_STRING(L"abcdefabc", wide);
    EXPECT_TRUE(wide.contains(narrow));
    OCAnsiString back = wide;
    EXPECT_EQ("abcdefabc", narrowText(back));
    back += wide;
    EXPECT_EQ("abcdefabcabcdefabc", narrowText(back));
}

TEST(WideString, PrintsItsLow8Bits) {
    std::ostringstream stream;
    stream << OCWideString(L"a\0\x141", 3) << OCWideString() << OCWideString(L"z");
    EXPECT_EQ(std::string("a\0Az", 4), stream.str());
}

// Length and storage

TEST(WideString, MovesToTheHeapAt128Characters) {
    OCWideString s = make(pattern(127));
    EXPECT_EQ(128UL, s.getCapacity());
    EXPECT_TRUE(isInside(s));
    s.append(L'x');
    EXPECT_EQ(192UL, s.getCapacity());
    EXPECT_FALSE(isInside(s));
    EXPECT_STRING(pattern(127) + L"x", s);
    const long before = fault::heapRecord().liveBlocks;
    s.left(127);
    EXPECT_STRING(pattern(127), s);
    EXPECT_TRUE(isInside(s));
    EXPECT_EQ(before - 1, fault::heapRecord().liveBlocks);
}

TEST(WideString, ShortTextsNeverTouchTheHeap) {
    const std::wstring longest = pattern(127);
    const OCAnsiString bytes("0123456789");
    const unsigned long before = fault::heapRecord().requests;
    {
        OCWideString s(longest.c_str());
        OCWideString copy(s);
        copy.clear();
        for (int i = 0; i < 127; i++)
            copy.append(L'x');
        copy.setLength(3).padLeft(L'0', 127).setLength(60).padRight(L' ', 127).trim();
        copy = s;
        copy.left(100).insert(0, L"ab").remove(5, 3).mid(1, 90).right(80);
        copy.replace(L"a", L"").replace(L"b", L"cd");
        s = bytes;
    }
    EXPECT_EQ(before, fault::heapRecord().requests);
}

TEST(WideString, EveryLengthHasItsCapacity) {
    for (unsigned long from : {0UL, 63UL, 64UL, 127UL, 128UL, 191UL, 192UL, 255UL, 300UL})
        for (unsigned long to = 0; to <= 330; to++) {
            const std::wstring before = pattern(from);
            OCWideString s = make(before);
            EXPECT_EQ(&s, &s.setLength(to));
            const unsigned long kept = from < to ? from : to;
            std::wmemset(s.getString() + kept, L'#', to - kept);
            EXPECT_STRING(before.substr(0, kept) + std::wstring(to - kept, L'#'), s);
        }
}

TEST(WideString, ABlockHasExactlyItsCapacity) {
    fault::resetLargestSize();
    OCWideString s = make(pattern(200));
    EXPECT_EQ(256 * sizeof(wchar_t), fault::heapRecord().lastSize);
    s.setLength(256);
    EXPECT_EQ(320 * sizeof(wchar_t), fault::heapRecord().lastSize);
    s.setLength(130);
    EXPECT_EQ(192 * sizeof(wchar_t), fault::heapRecord().lastSize);
    s.append(make(pattern(500)));
    EXPECT_EQ(640 * sizeof(wchar_t), fault::heapRecord().lastSize);
}

TEST(WideString, AChangeWithinTheCapacityTouchesNoHeap) {
    const std::wstring other = pattern(250, L'A');
    OCWideString s = make(pattern(200));
    const wchar_t* const block = s.getString();
    const unsigned long before = fault::heapRecord().requests;
    s.setLength(192);
    s.setLength(255);
    s.left(195).append(L"abc").remove(0, 2);
    s.assign(other.c_str());
    EXPECT_EQ(before, fault::heapRecord().requests);
    EXPECT_EQ(block, s.getString());
    EXPECT_STRING(other, s);
}

TEST(WideString, ClearingGivesTheBlockBack) {
    OCWideString s = make(pattern(1000));
    const long before = fault::heapRecord().liveBlocks;
    EXPECT_EQ(&s, &s.clear());
    EXPECT_STRING(L"", s);
    EXPECT_EQ(before - 1, fault::heapRecord().liveBlocks);
    s.clear();
    EXPECT_STRING(L"", s);
    s = L"abc";
    s.clear();
    EXPECT_STRING(L"", s);
}

TEST(WideString, FillsEveryCharacterAndKeepsTheLength) {
    for (unsigned long count : {0UL, 5UL, 200UL}) {
        OCWideString s = make(pattern(count));
        EXPECT_EQ(&s, &s.fill(static_cast<wchar_t>(-7)));
        EXPECT_STRING(std::wstring(count, static_cast<wchar_t>(-7)), s);
    }
}

TEST(WideString, RefusesLengthsThatWrapAround) {
    const unsigned long lengths[] = {ULONG_MAX,        ULONG_MAX - 1,      ULONG_MAX - 63,
                                     ULONG_MAX - 64,   ULONG_MAX - 127,    ULONG_MAX / 2,
                                     ULONG_MAX / 4,    ULONG_MAX / 4 - 63, ULONG_MAX / 4 + 1,
                                     (1UL << 62) - 65, (1UL << 62) - 64,   1UL << 62};
    for (unsigned long count : {0UL, 3UL, 200UL}) {
        const std::wstring before = pattern(count);
        OCWideString s = make(before);
        for (unsigned long n : lengths) {
            EXPECT_THROW(s.setLength(n), OXMemory_AllocationError) << n;
            EXPECT_THROW(s.padLeft(L' ', n), OXMemory_AllocationError) << n;
            EXPECT_THROW(s.padRight(L' ', n), OXMemory_AllocationError) << n;
            EXPECT_THROW(s.append(s.getString(), n), OXMemory_AllocationError) << n;
            EXPECT_THROW(s.assign(s.getString(), n), OXMemory_AllocationError) << n;
            EXPECT_THROW(OCWideString(s.getString(), n), OXMemory_AllocationError) << n;
        }
        EXPECT_STRING(before, s);
    }
}

// Access

TEST(WideString, ChecksTheIndexOfACharacter) {
    OCWideString s(L"abc");
    const OCWideString& constant = s;
    EXPECT_EQ(L'a', constant[0]);
    EXPECT_EQ(L'c', constant[2]);
    s[1] = L'B';
    EXPECT_STRING(L"aBc", s);
    expectNoSuchIndex(3, [&] { static_cast<void>(constant[3]); });
    expectNoSuchIndex(3, [&] { s[3] = L'x'; });
    expectNoSuchIndex(0, [] { static_cast<void>(OCWideString()[0]); });
    expectNoSuchIndex(ULONG_MAX, [&] { s[ULONG_MAX] = L'x'; });
    EXPECT_STRING(L"aBc", s);
    static_assert(std::is_same_v<wchar_t, decltype(constant[0])>);
    static_assert(std::is_same_v<wchar_t&, decltype(s[0])>);
    static_assert(std::is_same_v<const wchar_t*, decltype(constant.getString())>);
    static_assert(std::is_same_v<wchar_t*, decltype(s.getString())>);
}

// Concatenation

TEST(WideString, AppendsCharactersOneAtATime) {
    OCWideString s;
    std::wstring expected;
    for (unsigned int i = 0; i < 400; i++) {
        const auto c = static_cast<wchar_t>(L'a' + i % 26);
        if (i % 2 == 0)
            EXPECT_EQ(&s, &s.append(c));
        else
            EXPECT_EQ(&s, &(s += c));
        expected += c;
        EXPECT_STRING(expected, s);
    }
    s.append(L'\0');
    EXPECT_STRING(expected + L'\0', s);
}

TEST(WideString, AppendsTextsAcrossEveryBoundary) {
    for (unsigned long front : {0UL, 1UL, 60UL, 63UL, 64UL, 100UL, 127UL, 128UL, 200UL, 255UL})
        for (unsigned long count : {0UL, 1UL, 3UL, 27UL, 28UL, 64UL, 65UL, 128UL, 500UL}) {
            const std::wstring first = pattern(front);
            const std::wstring second = pattern(count, L'A');
            OCWideString s = make(first);
            EXPECT_EQ(&s, &s.append(second.c_str()));
            EXPECT_STRING(first + second, s);
            s = make(first);
            EXPECT_EQ(&s, &s.append(second.data(), count));
            EXPECT_STRING(first + second, s);
            s = make(first);
            EXPECT_EQ(&s, &s.append(make(second)));
            EXPECT_STRING(first + second, s);
            s = make(first);
            EXPECT_EQ(&s, &(s += make(second)));
            EXPECT_STRING(first + second, s);
            s = make(first);
            EXPECT_EQ(&s, &(s += second.c_str()));
            EXPECT_STRING(first + second, s);
            const OCWideString left = make(first);
            EXPECT_STRING(first + second, left.concat(make(second)));
            EXPECT_STRING(first + second, left + make(second));
            EXPECT_STRING(first + second, first.c_str() + make(second));
            EXPECT_STRING(first, left);
        }
}

TEST(WideString, AppendsAnyPartOfItself) {
    for (unsigned long count : {1UL, 10UL, 100UL, 127UL, 128UL, 150UL, 191UL, 1000UL})
        for (unsigned long position : {0UL, 1UL, 7UL, count / 2, count - 1, count})
            for (unsigned long n : {0UL, 1UL, 3UL, 27UL, 64UL, 128UL, 500UL, count}) {
                if (position + n > count)
                    continue;
                const std::wstring whole = pattern(count);
                OCWideString s = make(whole);
                s.append(s.getString() + position, n);
                EXPECT_STRING(whole + whole.substr(position, n), s);
            }
}

TEST(WideString, AppendsItself) {
    for (unsigned long count : {0UL, 5UL, 63UL, 64UL, 100UL, 127UL, 128UL, 1000UL}) {
        const std::wstring whole = pattern(count);
        OCWideString s = make(whole);
        s.append(s);
        EXPECT_STRING(whole + whole, s);
        s = make(whole);
        s += s;
        EXPECT_STRING(whole + whole, s);
        s = make(whole);
        s.append(s.getString());
        EXPECT_STRING(whole + whole, s);
        s = make(whole);
        EXPECT_STRING(whole + whole, s + s);
    }
}

TEST(WideString, AppendsTheTerminatorAsItWas) {
    OCWideString s(L"abc");
    s.append(s.getString() + 2, 2);
    EXPECT_STRING(std::wstring(L"abcc\0", 5), s);
}

TEST(WideString, AppendingOneOfItsCharactersWorksWhenTheStorageMoves) {
    OCWideString s = make(pattern(127));
    s.append(s[1]);
    EXPECT_STRING(pattern(127) + L"b", s);
    while (s.getLength() < 191)
        s += L'.';
    s += s[0];
    EXPECT_EQ(L'a', s[191]);
    EXPECT_EQ(256UL, s.getCapacity());
}

TEST(WideString, InsertsBeforeAPosition) {
    OCWideString s(L"abc");
    EXPECT_EQ(&s, &s.insert(1, L"XY"));
    EXPECT_STRING(L"aXYbc", s);
    s.insert(0, L"<");
    EXPECT_STRING(L"<aXYbc", s);
    s.insert(5, L">");
    EXPECT_STRING(L"<aXYb>c", s);
    s.insert(3, L"");
    EXPECT_STRING(L"<aXYb>c", s);
    s.insert(2, make(pattern(200)));
    EXPECT_STRING(L"<a" + pattern(200) + L"XYb>c", s);
}

TEST(WideString, RefusesToInsertAtOrBehindTheEnd) {
    OCWideString s(L"abc");
    expectNoSuchIndex(3, [&] { s.insert(3, L"x"); });
    expectNoSuchIndex(3, [&] { s.insert(3, L""); });
    expectNoSuchIndex(ULONG_MAX, [&] { s.insert(ULONG_MAX, L"x"); });
    expectNoSuchIndex(0, [] { OCWideString().insert(0, L"x"); });
    EXPECT_STRING(L"abc", s);
}

TEST(WideString, InsertsAtTheFrontAlsoOfAnEmptyString) {
    OCWideString s;
    EXPECT_EQ(&s, &s.insert(L"x"));
    EXPECT_STRING(L"x", s);
    s.insert(L"yz");
    EXPECT_STRING(L"yzx", s);
    s.insert(L"");
    EXPECT_STRING(L"yzx", s);
    OCWideString empty;
    empty.insert(L"");
    EXPECT_STRING(L"", empty);
    empty.insert(empty);
    EXPECT_STRING(L"", empty);
}

TEST(WideString, InsertsItself) {
    for (unsigned long count : {1UL, 5UL, 63UL, 64UL, 100UL, 127UL, 128UL, 500UL})
        for (unsigned long position : {0UL, 1UL, count / 2, count - 1}) {
            if (position >= count)
                continue;
            const std::wstring whole = pattern(count);
            OCWideString s = make(whole);
            s.insert(position, s);
            EXPECT_STRING(whole.substr(0, position) + whole + whole.substr(position), s);
            s = make(whole);
            s.insert(s);
            EXPECT_STRING(whole + whole, s);
        }
}

// Parts

TEST(WideString, KeepsItsLeftPart) {
    for (unsigned long count : {0UL, 5UL, 127UL, 128UL, 300UL})
        for (unsigned long n : {0UL, 1UL, 4UL, 5UL, 6UL, 127UL, 128UL, 299UL, 300UL, ULONG_MAX}) {
            const std::wstring whole = pattern(count);
            OCWideString s = make(whole);
            EXPECT_EQ(&s, &s.left(n));
            EXPECT_STRING(whole.substr(0, n), s);
        }
}

TEST(WideString, KeepsItsRightPart) {
    for (unsigned long count : {1UL, 5UL, 127UL, 128UL, 300UL})
        for (unsigned long n : {0UL, 1UL, 4UL, 5UL, 6UL, 127UL, 128UL, 299UL, 300UL, ULONG_MAX}) {
            const std::wstring whole = pattern(count);
            OCWideString s = make(whole);
            EXPECT_EQ(&s, &s.right(n));
            EXPECT_STRING(whole.substr(count - (n < count ? n : count)), s);
        }
}

TEST(WideString, AnEmptyStringHasNoRightPartButTheEmptyOne) {
    OCWideString s;
    s.right(0);
    EXPECT_STRING(L"", s);
    expectNoSuchIndex(0, [&] { s.right(1); });
    expectNoSuchIndex(0, [&] { s.right(ULONG_MAX); });
    EXPECT_STRING(L"", s);
}

TEST(WideString, KeepsItsMiddlePart) {
    for (unsigned long count : {1UL, 5UL, 127UL, 128UL, 300UL})
        for (unsigned long position : {0UL, 1UL, 4UL, 126UL, 127UL, 299UL})
            for (unsigned long n : {0UL, 1UL, 4UL, 127UL, 128UL, 299UL, 300UL, ULONG_MAX}) {
                if (position >= count)
                    continue;
                const std::wstring whole = pattern(count);
                OCWideString s = make(whole);
                EXPECT_EQ(&s, &s.mid(position, n));
                EXPECT_STRING(whole.substr(position, n), s);
            }
}

TEST(WideString, AMiddlePartBeginsInsideTheText) {
    OCWideString s(L"abc");
    expectNoSuchIndex(3, [&] { s.mid(3, 1); });
    expectNoSuchIndex(3, [&] { s.mid(3, 0); });
    expectNoSuchIndex(ULONG_MAX, [&] { s.mid(ULONG_MAX, ULONG_MAX); });
    expectNoSuchIndex(0, [] { OCWideString().mid(0, 0); });
    EXPECT_STRING(L"abc", s);
    s.mid(1, 0);
    EXPECT_STRING(L"", s);
}

TEST(WideString, RemovesAPart) {
    for (unsigned long count : {1UL, 5UL, 127UL, 128UL, 300UL})
        for (unsigned long position : {0UL, 1UL, 4UL, 126UL, 127UL, 299UL})
            for (unsigned long n : {0UL, 1UL, 4UL, 127UL, 128UL, 299UL, 300UL, ULONG_MAX}) {
                if (position >= count)
                    continue;
                std::wstring expected = pattern(count);
                OCWideString s = make(expected);
                EXPECT_EQ(&s, &s.remove(position, n));
                expected.erase(position, n);
                EXPECT_STRING(expected, s);
            }
}

TEST(WideString, APartThatIsRemovedBeginsInsideTheText) {
    OCWideString s(L"abc");
    s.remove(1, 100);
    EXPECT_STRING(L"a", s);
    expectNoSuchIndex(1, [&] { s.remove(1, 1); });
    expectNoSuchIndex(1, [&] { s.remove(1, 0); });
    expectNoSuchIndex(ULONG_MAX, [&] { s.remove(ULONG_MAX, 1); });
    expectNoSuchIndex(0, [] { OCWideString().remove(0, 0); });
    EXPECT_STRING(L"a", s);
}

// Trimming, padding, case

TEST(WideString, TrimsBlanksAtEitherEnd) {
    const std::wstring whole = L" \t\r\n\x01 a b \x1f ";
    OCWideString s = make(whole);
    EXPECT_EQ(&s, &s.trimLeft());
    EXPECT_STRING(L"a b \x1f ", s);
    s = make(whole);
    EXPECT_EQ(&s, &s.trimRight());
    EXPECT_STRING(L" \t\r\n\x01 a b", s);
    s = make(whole);
    EXPECT_EQ(&s, &s.trim());
    EXPECT_STRING(L"a b", s);
    s.trimLeft().trimRight().trim();
    EXPECT_STRING(L"a b", s);
}

TEST(WideString, ACharacterIsBlankUpTo32AsASignedNumber) {
    const auto isTrimmed = [](long value) {
        const auto c = static_cast<wchar_t>(value);
        OCWideString left(c);
        left.append(L"x").trimLeft();
        OCWideString right(L"x");
        right.append(c).trimRight();
        OCWideString both(c);
        both.append(L"x").append(c).trim();
        EXPECT_EQ(left.getLength(), right.getLength()) << value;
        EXPECT_EQ(left.getLength() * 2 - 1, both.getLength()) << value;
        return left.getLength() == 1;
    };
    for (long value : {0L, 1L, 9L, 10L, 13L, 31L, 32L, -1L, -23L, -128L, -129L, -100000L,
                       static_cast<long>(INT_MIN)})
        EXPECT_TRUE(isTrimmed(value)) << value;
    for (long value : {33L, 65L, 127L, 128L, 160L, 233L, 255L, 256L, 0x2003L, 0x10ffffL,
                       static_cast<long>(INT_MAX)})
        EXPECT_FALSE(isTrimmed(value)) << value;
}

TEST(WideString, TrimsWidenedHighBytesWhichTheNarrowStringKeeps) {
    const OCAnsiString narrow("\xe9"
                              "a\xff");
    OCWideString wide(narrow);
    wide.trim();
    EXPECT_STRING(L"a", wide);
    EXPECT_EQ(3UL, OCAnsiString(narrow).trim().getLength());
}

TEST(WideString, ABlankStringTrimsToNothing) {
    for (unsigned long count : {0UL, 1UL, 3UL, 127UL, 128UL, 500UL}) {
        const std::wstring blanks(count, L' ');
        OCWideString s = make(blanks);
        s.trimLeft();
        EXPECT_STRING(L"", s);
        s = make(blanks);
        s.trimRight();
        EXPECT_STRING(L"", s);
        s = make(blanks);
        s.trim();
        EXPECT_STRING(L"", s);
    }
}

TEST(WideString, TrimsLongTexts) {
    for (unsigned long before : {0UL, 1UL, 100UL, 300UL})
        for (unsigned long inner : {1UL, 127UL, 128UL, 200UL})
            for (unsigned long behind : {0UL, 1UL, 100UL, 300UL}) {
                OCWideString s =
                    make(std::wstring(before, L' ') + pattern(inner) + std::wstring(behind, L'\n'));
                s.trim();
                EXPECT_STRING(pattern(inner), s);
            }
}

TEST(WideString, PadsToAWidth) {
    OCWideString s(L"42");
    EXPECT_EQ(&s, &s.padLeft(L'0', 5));
    EXPECT_STRING(L"00042", s);
    EXPECT_EQ(&s, &s.padRight(L'.', 8));
    EXPECT_STRING(L"00042...", s);
    for (unsigned long count : {0UL, 5UL, 127UL, 128UL})
        for (unsigned long width : {0UL, 4UL, 5UL, 6UL, 127UL, 128UL, 300UL}) {
            const std::wstring whole = pattern(count);
            const std::wstring padding(width > count ? width - count : 0, L'*');
            OCWideString t = make(whole);
            t.padLeft(L'*', width);
            EXPECT_STRING(padding + whole, t);
            t = make(whole);
            t.padRight(L'*', width);
            EXPECT_STRING(whole + padding, t);
        }
}

TEST(WideString, PaddingNeverTruncates) {
    OCWideString s(L"123456");
    s.padLeft(L'0', 5).padRight(L'0', 6).padLeft(L'0', 0);
    EXPECT_STRING(L"123456", s);
}

TEST(WideString, ChangesTheCaseOfAsciiLettersOnly) {
    OCWideString s(L"@AZ[`az{09\xc4\xe4\x141");
    s.append(static_cast<wchar_t>(-23));
    const std::wstring tail = std::wstring(L"09\xc4\xe4\x141") + static_cast<wchar_t>(-23);
    EXPECT_EQ(&s, &s.lowerCase());
    EXPECT_STRING(L"@az[`az{" + tail, s);
    EXPECT_EQ(&s, &s.upperCase());
    EXPECT_STRING(L"@AZ[`AZ{" + tail, s);
    for (unsigned long count : {0UL, 1UL, 15UL, 16UL, 17UL, 33UL, 200UL}) {
        OCWideString letters = make(std::wstring(count, L'q'));
        letters.upperCase();
        EXPECT_STRING(std::wstring(count, L'Q'), letters);
        letters.lowerCase();
        EXPECT_STRING(std::wstring(count, L'q'), letters);
    }
}

TEST(WideString, CharactersWhoseLowByteIsALetterHaveNoCase) {
    OCWideString s;
    for (wchar_t high : {0x100, 0x10000, 0x1000000, -256})
        s.append(static_cast<wchar_t>(high + L'A')).append(static_cast<wchar_t>(high + L'a'));
    const OCWideString original(s);
    s.lowerCase();
    EXPECT_TRUE(s == original);
    s.upperCase();
    EXPECT_TRUE(s == original);
}

// Comparison

TEST(WideString, ComparesTexts) {
    EXPECT_EQ(CompareResultEqual, OCWideString(L"abc").compare(L"abc"));
    EXPECT_EQ(CompareResultLess, OCWideString(L"abc").compare(L"abd"));
    EXPECT_EQ(CompareResultGreater, OCWideString(L"abd").compare(L"abc"));
    EXPECT_EQ(CompareResultLess, OCWideString(L"abc").compare(L"abcd"));
    EXPECT_EQ(CompareResultGreater, OCWideString(L"abcd").compare(L"abc"));
    EXPECT_EQ(CompareResultEqual, OCWideString().compare(OCWideString()));
    EXPECT_EQ(CompareResultLess, OCWideString().compare(L"a"));
    EXPECT_EQ(CompareResultGreater, OCWideString(L"b").compare(L"abc"));
    EXPECT_EQ(CompareResultLess, OCWideString(L"a\0b", 3).compare(OCWideString(L"a\0c", 3)));
    EXPECT_EQ(CompareResultLess, OCWideString(L"a").compare(OCWideString(L"a\0", 2)));
}

TEST(WideString, ComparesWithOrWithoutCase) {
    EXPECT_EQ(CompareResultEqual, OCWideString(L"a").compare(L"A", StringCaseInsensitive));
    EXPECT_EQ(CompareResultGreater, OCWideString(L"a").compare(L"A", StringCaseSensitive));
    EXPECT_EQ(CompareResultGreater, OCWideString(L"a").compare(L"A"));
    EXPECT_EQ(CompareResultEqual, OCWideString(L"aBcZ").compare(L"AbCz", StringCaseInsensitive));
    EXPECT_EQ(CompareResultLess, OCWideString(L"AB").compare(L"abc", StringCaseInsensitive));
    // Folding goes to lower case: `_` lies between the two cases.
    EXPECT_EQ(CompareResultLess, OCWideString(L"_").compare(L"A", StringCaseInsensitive));
    EXPECT_EQ(CompareResultGreater, OCWideString(L"_").compare(L"A", StringCaseSensitive));
    // Only A to Z have a case.
    EXPECT_EQ(CompareResultLess, OCWideString(L"@").compare(L"`", StringCaseInsensitive));
    EXPECT_EQ(CompareResultLess, OCWideString(L"[").compare(L"{", StringCaseInsensitive));
    EXPECT_EQ(CompareResultLess, OCWideString(L"\xc4").compare(L"\xe4", StringCaseInsensitive));
    EXPECT_EQ(CompareResultLess, OCWideString(L"\x141").compare(L"\x161", StringCaseInsensitive));
}

TEST(WideString, OtherValuesOfTheCaseAreSensitive) {
    for (int value : {2, -1, INT_MAX}) {
        const auto sense = static_cast<OEStringCase>(value);
        EXPECT_EQ(CompareResultGreater, OCWideString(L"a").compare(L"A", sense));
        unsigned long position = 9;
        EXPECT_FALSE(OCWideString(L"a").indexOf(L'A', position, sense));
        EXPECT_FALSE(OCWideString(L"ab").indexOf(L"AB", position, sense));
        OCWideString s(L"ab");
        EXPECT_STRING(L"ab", s.replace(L"A", L"x", sense));
    }
}

TEST(WideString, OrdersBySignedValue) {
    const wchar_t ascending[] = {static_cast<wchar_t>(INT_MIN),
                                 static_cast<wchar_t>(-256),
                                 static_cast<wchar_t>(-23),
                                 static_cast<wchar_t>(-1),
                                 0,
                                 1,
                                 L'A',
                                 L'a',
                                 127,
                                 128,
                                 233,
                                 0x141,
                                 0x10ffff,
                                 static_cast<wchar_t>(INT_MAX)};
    const int count = sizeof ascending / sizeof *ascending;
    for (int i = 0; i < count; i++)
        for (int k = 0; k < count; k++)
            for (unsigned long prefix : {0UL, 1UL, 3UL, 4UL, 15UL, 200UL}) {
                const OCWideString a = make(pattern(prefix) + ascending[i]);
                const OCWideString b = make(pattern(prefix) + ascending[k]);
                const int expected = i < k ? -1 : i > k ? 1 : 0;
                EXPECT_EQ(expected, a.compare(b)) << i << " " << k << " " << prefix;
                EXPECT_EQ(expected == 0, a == b) << i << " " << k << " " << prefix;
                const bool cases = ascending[i] == L'A' && ascending[k] == L'a';
                const bool casesToo = ascending[i] == L'a' && ascending[k] == L'A';
                EXPECT_EQ(cases || casesToo ? 0 : expected, a.compare(b, StringCaseInsensitive))
                    << i << " " << k << " " << prefix;
            }
}

TEST(WideString, AWidenedHighByteIsLessThanTheCharacterOfThatCode) {
    const OCWideString widened(OCAnsiString("\xe9"));
    const OCWideString character(static_cast<wchar_t>(233));
    EXPECT_EQ(CompareResultLess, widened.compare(character));
}

TEST(WideString, FindsTheFirstDifferenceWhereverItIs) {
    for (unsigned long count = 1; count <= 80; count++)
        for (unsigned long place = 0; place < count; place++) {
            std::wstring other = pattern(count);
            other[place] = L'~';
            const OCWideString a = make(pattern(count));
            const OCWideString b = make(other);
            ASSERT_EQ(CompareResultLess, a.compare(b));
            ASSERT_EQ(CompareResultGreater, b.compare(a, StringCaseInsensitive));
            ASSERT_FALSE(a == b);
        }
}

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

TEST(WideString, HasTheSixComparisonOperators) {
    const std::pair<const wchar_t*, const wchar_t*> ascending[] = {
        {L"", L"a"}, {L"A", L"a"}, {L"abc", L"abcd"}, {L"abc", L"abd"}, {L"Z", L"a"}};
    for (const auto& [a, b] : ascending) {
        const OCWideString less(a);
        const OCWideString greater(b);
        expectOrder(-1, less, greater);
        expectOrder(1, greater, less);
        expectOrder(0, less, OCWideString(a));
        expectOrder(-1, a, greater);
        expectOrder(1, b, less);
        expectOrder(0, a, less);
        expectOrder(-1, less, b);
        expectOrder(1, greater, a);
        expectOrder(0, less, a);
    }
    expectOrder(0, OCWideString(L"x"), L'x');
    expectOrder(-1, OCWideString(L"x"), 'y');
}

TEST(WideString, ATextOnTheLeftEndsAtItsZero) {
    expectOrder(-1, L"a", OCWideString(L"a\0", 2));
    expectOrder(0, L"a\0b", OCWideString(L"a"));
}

// Search

TEST(WideString, FindsTheFirstOccurrenceOfACharacter) {
    const OCWideString s(L"banana");
    unsigned long position = 99;
    EXPECT_TRUE(s.indexOf(L'a', position));
    EXPECT_EQ(1UL, position);
    EXPECT_TRUE(s.indexOf(L'n', position, StringCaseSensitive));
    EXPECT_EQ(2UL, position);
    EXPECT_FALSE(s.indexOf(L'N', position));
    EXPECT_EQ(2UL, position);
    EXPECT_TRUE(s.indexOf(L'B', position, StringCaseInsensitive));
    EXPECT_EQ(0UL, position);
    EXPECT_FALSE(s.indexOf(L'x', position, StringCaseInsensitive));
    EXPECT_EQ(0UL, position);
    EXPECT_FALSE(s.indexOf(L'\0', position));
    EXPECT_FALSE(OCWideString().indexOf(L'a', position));
    EXPECT_TRUE(s.contains(L'n'));
    EXPECT_FALSE(s.contains(L'N'));
    EXPECT_TRUE(s.contains(L'N', StringCaseInsensitive));
    EXPECT_TRUE(OCWideString(L"a\0", 2).contains(L'\0'));
}

TEST(WideString, FindsCharactersByAll32Bits) {
    const OCWideString s(L"\x141\x100\xe9");
    unsigned long position = 99;
    EXPECT_FALSE(s.indexOf(L'A', position));
    EXPECT_FALSE(s.indexOf(L'a', position, StringCaseInsensitive));
    EXPECT_FALSE(s.indexOf(L'\0', position));
    EXPECT_FALSE(s.indexOf(static_cast<wchar_t>(-23), position));
    EXPECT_EQ(99UL, position);
    EXPECT_TRUE(s.indexOf(static_cast<wchar_t>(0xe9), position));
    EXPECT_EQ(2UL, position);
    EXPECT_FALSE(s.contains(OCWideString(L"A")));
}

TEST(WideString, FindsTheFirstOccurrenceOfAText) {
    const OCWideString s(L"banana");
    unsigned long position = 99;
    EXPECT_TRUE(s.indexOf(L"ana", position));
    EXPECT_EQ(1UL, position);
    EXPECT_TRUE(s.indexOf(L"banana", position));
    EXPECT_EQ(0UL, position);
    EXPECT_TRUE(s.indexOf(L"a", position));
    EXPECT_EQ(1UL, position);
    EXPECT_TRUE(s.indexOf(L"NAN", position, StringCaseInsensitive));
    EXPECT_EQ(2UL, position);
    EXPECT_FALSE(s.indexOf(L"NAN", position, StringCaseSensitive));
    EXPECT_FALSE(s.indexOf(L"NAN", position));
    EXPECT_FALSE(s.indexOf(L"nab", position));
    EXPECT_FALSE(s.indexOf(L"bananas", position));
    EXPECT_EQ(2UL, position);
    EXPECT_TRUE(s.contains(L"nana"));
    EXPECT_FALSE(s.contains(L"Nana"));
    EXPECT_TRUE(s.contains(L"Nana", StringCaseInsensitive));
    EXPECT_TRUE(s.contains(s));
    EXPECT_TRUE(OCWideString(L"a\0bc", 4).indexOf(OCWideString(L"\0b", 2), position));
    EXPECT_EQ(1UL, position);
}

TEST(WideString, AnEmptyTextIsNeverFound) {
    unsigned long position = 99;
    for (OEStringCase sense : {StringCaseInsensitive, StringCaseSensitive}) {
        EXPECT_FALSE(OCWideString(L"abc").indexOf(L"", position, sense));
        EXPECT_FALSE(OCWideString().indexOf(L"", position, sense));
        EXPECT_FALSE(OCWideString(L"abc").contains(L"", sense));
    }
    EXPECT_EQ(99UL, position);
}

TEST(WideString, SearchesCraftedTextsInLinearTime) {
    // A naive scan would compare half a billion times in each case.
    const OCWideString s = make(std::wstring(100000, L'a'));
    unsigned long position = 99;
    for (OEStringCase sense : {StringCaseInsensitive, StringCaseSensitive}) {
        EXPECT_FALSE(s.indexOf(make(std::wstring(50000, L'a') + L"b"), position, sense));
        EXPECT_FALSE(s.indexOf(make(L"b" + std::wstring(50000, L'a')), position, sense));
        EXPECT_FALSE(s.indexOf(make(std::wstring(25000, L'a') + L"b" + std::wstring(25000, L'a')),
                               position, sense));
    }
    EXPECT_EQ(99UL, position);
    OCWideString t(s);
    t.replace(make(std::wstring(50000, L'a') + L"b"), L"x");
    EXPECT_TRUE(t == s);
}

// Replacement

TEST(WideString, ReplacesFromTheLeftWithoutOverlaps) {
    const auto replaced = [](const wchar_t* s, const wchar_t* from, const wchar_t* to) {
        OCWideString result(s);
        EXPECT_EQ(&result, &result.replace(from, to));
        return text(result);
    };
    EXPECT_EQ(L"ba", replaced(L"aaa", L"aa", L"b"));
    EXPECT_EQ(L"bbccc", replaced(L"aaccc", L"a", L"b"));
    EXPECT_EQ(L"", replaced(L"aaa", L"a", L""));
    EXPECT_EQ(L"bcbcbc", replaced(L"aaa", L"a", L"bc"));
    EXPECT_EQ(L"x", replaced(L"abc", L"abc", L"x"));
    EXPECT_EQ(L"abc", replaced(L"abc", L"abcd", L"x"));
    EXPECT_EQ(L"abc", replaced(L"abc", L"", L"x"));
    EXPECT_EQ(L"abc", replaced(L"abc", L"x", L"yz"));
    EXPECT_EQ(L"", replaced(L"", L"a", L"b"));
    EXPECT_EQ(L"<b><b>", replaced(L"<a><a>", L"a", L"b"));
    EXPECT_EQ(L"tail", replaced(L"xxtail", L"xx", L""));
    EXPECT_EQ(L"head", replaced(L"headxx", L"xx", L""));
}

TEST(WideString, DoesNotReplaceInWhatItPutIn) {
    OCWideString s(L"aXa");
    s.replace(L"a", L"aa");
    EXPECT_STRING(L"aaXaa", s);
    s.replace(L"aa", L"a");
    EXPECT_STRING(L"aXa", s);
    s = L"aab";
    s.replace(L"ab", L"b"); // makes another "ab"
    EXPECT_STRING(L"ab", s);
}

TEST(WideString, ReplacesWithOrWithoutCase) {
    OCWideString s(L"aAbBa");
    s.replace(L"a", L"x");
    EXPECT_STRING(L"xAbBx", s);
    s = L"aAbBa";
    s.replace(L"A", L"-", StringCaseInsensitive);
    EXPECT_STRING(L"--bB-", s);
    s = L"aAbBa";
    s.replace(L"aB", L"longer", StringCaseInsensitive);
    EXPECT_STRING(L"alongerBa", s);
}

TEST(WideString, ReplacesInLongTexts) {
    const wchar_t* const texts[] = {L"", L"y", L"yz", L"yzw", L"a much longer text than before"};
    for (unsigned long count : {10UL, 100UL, 128UL, 1000UL})
        for (const wchar_t* to : texts) {
            std::wstring source;
            std::wstring expected;
            for (unsigned long i = 0; i < count; i++) {
                source += i % 7 == 0 ? L"ab" : L".";
                expected += i % 7 == 0 ? to : L".";
            }
            OCWideString s = make(source);
            s.replace(L"ab", to);
            EXPECT_STRING(expected, s);
        }
}

TEST(WideString, ReplacesWithArgumentsThatAreTheStringItself) {
    OCWideString s(L"aba");
    s.replace(s, L"xyz!");
    EXPECT_STRING(L"xyz!", s);
    s.replace(s, s);
    EXPECT_STRING(L"xyz!", s);
    s = L"aba";
    s.replace(L"a", s);
    EXPECT_STRING(L"abababa", s);
    s = L"aba";
    s.replace(L"aba", s);
    EXPECT_STRING(L"aba", s);
    s = L"x";
    s.replace(L"x", s);
    EXPECT_STRING(L"x", s);
    s = make(pattern(300));
    s.replace(s, L"short");
    EXPECT_STRING(L"short", s);
    const OCWideString both(L"ab");
    OCWideString t(L"-ab-ab");
    t.replace(both, both);
    EXPECT_STRING(L"-ab-ab", t);
}

TEST(WideString, RefusesAReplacementWhoseLengthWouldWrapAround) {
    // Texts of such lengths do not fit into memory, so the length is claimed. Nothing of the text
    // is read before the refusal.
    OCWideString s = make(std::wstring(1024, L'a'));
    OCWideString to(L"b");
    const auto claimLength = [&](unsigned long length) {
        std::memcpy(reinterpret_cast<char*>(&to) + 24, &length, sizeof length);
    };
    for (unsigned long length :
         {1UL << 52, (1UL << 52) + 1, 1UL << 54, (1UL << 54) + 1, 1UL << 61, 1UL << 62}) {
        claimLength(length);
        EXPECT_THROW(s.replace(L"a", to), OXMemory_AllocationError) << length;
        EXPECT_STRING(std::wstring(1024, L'a'), s);
    }
    claimLength(1);
}

// Exhausted memory

TEST(WideString, AFailedConstructorLeavesNothingBehind) {
    const std::wstring source = pattern(200);
    const OCWideString wide = make(source);
    const OCAnsiString narrow(wide);
    EXPECT_EQ(
        0, fault::blocksLeftBy([&] {
            EXPECT_EQ(1UL,
                      fault::failEachRequest([&] { OCWideString(source.data(), source.size()); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCWideString(source.c_str()); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCWideString copy(wide); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCWideString copy(narrow); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { OCAnsiString copy(wide); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { wide.concat(wide); }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { wide + wide; }));
            EXPECT_LE(1UL, fault::failEachRequest([&] { source.c_str() + wide; }));
            EXPECT_EQ(1UL, fault::failEachRequest([&] { static_cast<void>(wide == narrow); }));
        }));
}

TEST(WideString, AFailedOperationLeavesTheStringAsItWas) {
    const OCWideString added = make(pattern(300, L'A'));
    const OCAnsiString narrow(added);
    for (unsigned long count : {0UL, 1UL, 100UL, 127UL, 128UL, 191UL, 1000UL}) {
        const std::wstring start = pattern(count);
        SCOPED_TRACE(count);
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.setLength(2000); }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.assign(added); }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s = added; }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.assign(narrow); }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.append(added); }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s += added; }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.insert(added); }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.padLeft(L' ', 2000); }));
        EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.padRight(L' ', 2000); }));
        if (count > 0) {
            EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.insert(0, added); }));
            EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.replace(s, added); }));
            EXPECT_EQ(1UL,
                      failEachRequestOn(start, [&](OCWideString& s) { s.replace(L"a", added); }));
        }
        if (count >= 128) {
            EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.append(s); }));
            EXPECT_EQ(2UL, failEachRequestOn(start, [&](OCWideString& s) { s.insert(s); }));
            EXPECT_EQ(2UL, failEachRequestOn(start, [&](OCWideString& s) { s.replace(L"a", s); }));
            EXPECT_EQ(1UL, failEachRequestOn(
                               start, [&](OCWideString& s) { s.append(s.getString() + 1, 127); }));
        }
        if (count == 127 || count == 191) {
            EXPECT_EQ(1UL, failEachRequestOn(start, [&](OCWideString& s) { s.append(L'x'); }));
        }
    }
}

TEST(WideString, AssigningPartOfItselfMayFailToo) {
    const std::wstring start = pattern(1000);
    EXPECT_EQ(
        1UL, failEachRequestOn(start, [&](OCWideString& s) { s.assign(s.getString() + 10, 500); }));
}

TEST(WideString, ShorteningNeverFails) {
    const std::wstring start = L"  " + pattern(996) + L"  ";
    const std::pair<std::function<void(OCWideString&)>, std::wstring> operations[] = {
        {[](OCWideString& s) { s.setLength(500); }, start.substr(0, 500)},
        {[](OCWideString& s) { s.setLength(50); }, start.substr(0, 50)},
        {[](OCWideString& s) { s.left(500); }, start.substr(0, 500)},
        {[](OCWideString& s) { s.right(500); }, start.substr(500)},
        {[](OCWideString& s) { s.mid(300, 400); }, start.substr(300, 400)},
        {[](OCWideString& s) { s.mid(300, 40); }, start.substr(300, 40)},
        {[](OCWideString& s) { s.remove(100, 500); }, start.substr(0, 100) + start.substr(600)},
        {[](OCWideString& s) { s.clear(); }, L""},
        {[](OCWideString& s) { s.trim().remove(0, 100); }, start.substr(102, 896)},
        {[](OCWideString& s) { s.replace(L"abcd", L""); },
         [&] {
             std::wstring result = start;
             for (auto at = result.find(L"abcd"); at != std::wstring::npos;
                  at = result.find(L"abcd", at))
                 result.erase(at, 4);
             return result;
         }()},
        {[](OCWideString& s) { s.assign(s.getString() + 5, 100); }, start.substr(5, 100)}};
    for (const auto& [operation, expected] : operations) {
        OCWideString s = make(start);
        {
            fault::HeapFault fault(1, fault::HeapFault::Following);
            EXPECT_NO_THROW(operation(s));
        }
        EXPECT_STRING(expected, s);
        s.append(s); // the storage is sound
        EXPECT_STRING(expected + expected, s);
    }
}

// Everything together

/// Runs random operations on a string and on `std::wstring`, with lengths around the boundaries.
TEST(WideString, RandomOperationsAgreeWithAModel) {
    const unsigned int seed = 52001;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](unsigned long limit) { return limit == 0 ? 0UL : random() % limit; };
    const auto letters = [&](unsigned long count) {
        std::wstring result;
        for (unsigned long i = 0; i < count; i++)
            result += L"aAbB .\n\x141"[below(8)];
        return result;
    };
    const auto length = [&] {
        const unsigned long around[] = {below(6), 60 + below(8), 120 + below(12), 188 + below(8)};
        return around[below(4)];
    };
    const auto fold = [](std::wstring s) {
        for (wchar_t& c : s)
            if (c >= L'A' && c <= L'Z')
                c += 32;
        return s;
    };
    OCWideString s;
    std::wstring model;
    for (int round = 0; round < 20000; round++) {
        const std::wstring argument = letters(below(3) == 0 ? length() : below(4));
        const OCWideString other = make(argument);
        const unsigned long position = below(model.size() + 2);
        const unsigned long n = below(2) == 0 ? length() : below(5);
        const OEStringCase sense = below(2) == 0 ? StringCaseInsensitive : StringCaseSensitive;
        bool refused = false;
        bool expectRefused = false;
        const unsigned long which = below(20);
        try {
            switch (which) {
            case 0:
                s.assign(other);
                break;
            case 1:
                s.append(other);
                break;
            case 2:
                s.append(argument.empty() ? L'e' : argument[0]);
                break;
            case 3:
                s.insert(position, other);
                break;
            case 4:
                s.insert(other);
                break;
            case 5:
                s.left(n);
                break;
            case 6:
                s.right(n);
                break;
            case 7:
                s.mid(position, n);
                break;
            case 8:
                s.remove(position, n);
                break;
            case 9:
                s.trimLeft();
                break;
            case 10:
                s.trimRight();
                break;
            case 11:
                s.trim();
                break;
            case 12:
                s.padLeft(L'p', n);
                break;
            case 13:
                s.padRight(L'p', n);
                break;
            case 14:
                s.lowerCase();
                break;
            case 15:
                s.upperCase();
                break;
            case 16:
                s.replace(other, make(letters(below(5))).fill(L'r'), sense);
                break;
            case 17:
                s.append(s.getString() + position % (model.size() + 1),
                         below(model.size() + 1 - position % (model.size() + 1)));
                break;
            default:
                s.clear();
                s = other + s + other;
                break;
            }
        } catch (const OXString_NoSuchIndex&) {
            refused = true;
        }
        const auto isBlank = [](wchar_t c) { return c <= 32; };
        switch (which) {
        case 0:
            model = argument;
            break;
        case 1:
            model += argument;
            break;
        case 2:
            model += argument.empty() ? L'e' : argument[0];
            break;
        case 3:
            expectRefused = position >= model.size();
            if (!expectRefused)
                model.insert(position, argument);
            break;
        case 4:
            model.insert(0, argument);
            break;
        case 5:
            model = model.substr(0, n);
            break;
        case 6:
            expectRefused = n > 0 && model.empty();
            if (n < model.size())
                model.erase(0, model.size() - n);
            break;
        case 7:
            expectRefused = position >= model.size();
            if (!expectRefused)
                model = model.substr(position, n);
            break;
        case 8:
            expectRefused = position >= model.size();
            if (!expectRefused)
                model.erase(position, n);
            break;
        case 9:
        case 10:
        case 11:
            if (which != 9)
                while (!model.empty() && isBlank(model.back()))
                    model.pop_back();
            if (which != 10)
                while (!model.empty() && isBlank(model.front()))
                    model.erase(0, 1);
            break;
        case 12:
            if (model.size() < n)
                model.insert(0, n - model.size(), L'p');
            break;
        case 13:
            if (model.size() < n)
                model.append(n - model.size(), L'p');
            break;
        case 14:
            model = fold(model);
            break;
        case 15:
            for (wchar_t& c : model)
                if (c >= L'a' && c <= L'z')
                    c -= 32;
            break;
        case 16:
        case 17: // what was put in is not known here
            model = text(s);
            break;
        default:
            model = argument + argument;
            break;
        }
        ASSERT_EQ(expectRefused, refused) << round << " " << which;
        ASSERT_EQ(model, text(s)) << round << " " << which;
        expectString(model, s);
        ASSERT_FALSE(testing::Test::HasFailure()) << round << " " << which;
        if (model.size() > 400) {
            s.left(130);
            model.resize(130);
        }
    }
}

TEST(WideString, RandomSearchesAndReplacementsAgreeWithAModel) {
    const unsigned int seed = 90210;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto letters = [&](unsigned long limit) {
        std::wstring result;
        for (unsigned long count = random() % limit; count > 0; count--)
            result += L"aAbB"[random() % 4];
        return result;
    };
    const auto fold = [](std::wstring s) {
        for (wchar_t& c : s)
            if (c >= L'A' && c <= L'Z')
                c += 32;
        return s;
    };
    for (int round = 0; round < 20000; round++) {
        const std::wstring whole = letters(200);
        const std::wstring from = letters(round % 2 == 0 ? 4 : 150);
        const std::wstring to = letters(6);
        const bool folds = random() % 2 == 0;
        const OEStringCase sense = folds ? StringCaseInsensitive : StringCaseSensitive;
        const std::wstring searched = folds ? fold(whole) : whole;
        const std::wstring sought = folds ? fold(from) : from;
        const auto expected = from.empty() ? std::wstring::npos : searched.find(sought);

        OCWideString s = make(whole);
        unsigned long position = 12345;
        ASSERT_EQ(expected != std::wstring::npos, s.indexOf(make(from), position, sense));
        ASSERT_EQ(expected != std::wstring::npos ? expected : 12345UL, position);
        ASSERT_EQ(expected != std::wstring::npos, s.contains(make(from), sense));

        std::wstring replaced;
        std::size_t place = 0;
        if (!from.empty()) {
            for (auto hit = expected; hit != std::wstring::npos;
                 hit = searched.find(sought, place)) {
                replaced += whole.substr(place, hit - place) + to;
                place = hit + from.size();
            }
        }
        replaced += whole.substr(place);
        s.replace(make(from), make(to), sense);
        ASSERT_EQ(replaced, text(s)) << round;

        const int order = searched.compare(sought);
        ASSERT_EQ(order < 0 ? -1 : order > 0 ? 1 : 0, make(whole).compare(make(from), sense));
    }
}

} // namespace
