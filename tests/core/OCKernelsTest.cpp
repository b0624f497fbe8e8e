#include "core/OCKernels.h"

#include "core/OCKernelAnchors.h"
#include "core/OCKernelForms.h"
#include "core/OCKernelTwoWay.h"
#include "support/FaultInjection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <sys/mman.h>
#include <type_traits>
#include <vector>

using namespace orvabase;
using kernels::Form;
using kernels::notFound;

namespace {

const unsigned long foundBeforeMain =
    kernels::findByte("0123456789012345678901234567890123456!", 38, '!');

constexpr unsigned long longest = 200;

/// The functions of OCKernels.h as if they were a form of their own.
const Form publicForm = {
    "public",
    kernels::findByte,
    kernels::findByteFolded,
    kernels::findEither,
    kernels::findText,
    kernels::findTextFolded,
    kernels::mismatch,
    kernels::mismatchFolded,
    kernels::skipWhiteSpace,
    kernels::skipHtmlName,
    kernels::foldLower,
    kernels::foldUpper,
    kernels::widen,
    kernels::narrow,
    kernels::findWide,
    kernels::findWideFolded,
    kernels::findWideEither,
    kernels::findWideText,
    kernels::findWideTextFolded,
    kernels::mismatchWide,
    kernels::mismatchWideFolded,
    kernels::foldLowerWide,
    kernels::foldUpperWide,
    kernels::skipWideWhiteSpace,
    kernels::skipWideName,
};

std::vector<Form> vectorForms() {
    std::vector<Form> forms = {kernels::sse2Form};
    if (__builtin_cpu_supports("avx2"))
        forms.push_back(kernels::avx2Form);
    forms.push_back(publicForm);
    return forms;
}

std::vector<Form> allForms() {
    std::vector<Form> forms = vectorForms();
    forms.insert(forms.begin(), kernels::plainForm);
    return forms;
}

// The kernels of one width by one set of names.

template<class Character>
struct Width;

template<>
struct Width<char> {
    static constexpr auto find = &Form::findByte;
    static constexpr auto findFolded = &Form::findByteFolded;
    static constexpr auto findEither = &Form::findEither;
    static constexpr auto findText = &Form::findText;
    static constexpr auto findTextFolded = &Form::findTextFolded;
    static constexpr auto mismatch = &Form::mismatch;
    static constexpr auto mismatchFolded = &Form::mismatchFolded;
    static constexpr auto foldLower = &Form::foldLower;
    static constexpr auto foldUpper = &Form::foldUpper;

    static std::string values() {
        std::string all;
        for (int c = 0; c < 256; ++c)
            all += static_cast<char>(c);
        return all;
    }
};

template<>
struct Width<wchar_t> {
    static constexpr auto find = &Form::findWide;
    static constexpr auto findFolded = &Form::findWideFolded;
    static constexpr auto findEither = &Form::findWideEither;
    static constexpr auto findText = &Form::findWideText;
    static constexpr auto findTextFolded = &Form::findWideTextFolded;
    static constexpr auto mismatch = &Form::mismatchWide;
    static constexpr auto mismatchFolded = &Form::mismatchWideFolded;
    static constexpr auto foldLower = &Form::foldLowerWide;
    static constexpr auto foldUpper = &Form::foldUpperWide;

    /// Every value near the letters, and some that have a letter or a blank in one of their bytes.
    static std::wstring values() {
        std::wstring some;
        for (wchar_t c = -260; c < 400; ++c)
            some += c;
        for (const wchar_t c :
             {0x10041, 0x1000041, 0x4100, 0x7A0000, 0x10020, INT_MAX, INT_MAX - 26, INT_MIN,
              INT_MIN + 'A', INT_MIN + 'z', -0x10000 + 'A'})
            some += c;
        return some;
    }
};

// Models, each written from the definition.

template<class Character>
Character modelLower(Character c) {
    return c >= 65 && c <= 90 ? static_cast<Character>(c + 32) : c;
}

template<class Character>
Character modelUpper(Character c) {
    return c >= 97 && c <= 122 ? static_cast<Character>(c - 32) : c;
}

template<class Character>
std::basic_string<Character> modelLower(std::basic_string<Character> text) {
    for (auto& c : text)
        c = modelLower(c);
    return text;
}

template<class Text>
unsigned long modelFindText(const Text& text, const Text& pattern) {
    for (unsigned long i = 0; !pattern.empty() && i + pattern.size() <= text.size(); ++i) {
        unsigned long matched = 0;
        while (matched < pattern.size() && text[i + matched] == pattern[matched])
            ++matched;
        if (matched == pattern.size())
            return i;
    }
    return notFound;
}

bool modelEndsName(long c) {
    return c <= 32 ||
           (c < 128 && std::string("()*+/=>?[").find(static_cast<char>(c)) != std::string::npos);
}

/// A run of characters `offset` bytes behind a multiple of 64, with nothing behind it in its block:
/// AddressSanitizer reports every access beyond it. What stands before it is bait.
template<class Character>
class ExactRun {
public:
    ExactRun(unsigned long offset, unsigned long count, Character bait = Character())
        : space(offset / sizeof(Character)), size(count) {
        void* p = nullptr;
        if (posix_memalign(&p, 64, offset + count * sizeof(Character)) != 0)
            std::abort();
        block.reset(p);
        for (unsigned long i = 0; i < space; ++i)
            start()[i] = bait;
    }

    Character* get() { return start() + space; }
    Character& operator[](unsigned long i) { return get()[i]; }
    void fill(Character c) {
        for (unsigned long i = 0; i < size; ++i)
            get()[i] = c;
    }
    ExactRun& operator=(const std::basic_string<Character>& text) {
        for (unsigned long i = 0; i < size; ++i)
            get()[i] = text[i];
        return *this;
    }
    std::basic_string<Character> text() { return {get(), size}; }
    /// Whether all that stands before the run is still `bait`.
    bool surroundedBy(Character bait) {
        for (unsigned long i = 0; i < space; ++i)
            if (start()[i] != bait)
                return false;
        return true;
    }

private:
    Character* start() { return static_cast<Character*>(block.get()); }

    unsigned long space;
    unsigned long size;
    std::unique_ptr<void, void (*)(void*)> block{nullptr, std::free};
};

/// Three pages of which only the middle one may be touched.
class GuardedPage {
public:
    GuardedPage() {
        void* p = mmap(nullptr, 3 * pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED)
            std::abort();
        pages = static_cast<char*>(p);
        if (mprotect(pages + pageSize, pageSize, PROT_READ | PROT_WRITE) != 0)
            std::abort();
    }
    GuardedPage(const GuardedPage&) = delete;
    GuardedPage& operator=(const GuardedPage&) = delete;
    ~GuardedPage() { munmap(pages, 3 * pageSize); }

    /// A run that begins where the page does, or ends where it does.
    template<class Character>
    Character* run(unsigned long count, bool atEnd) {
        void* p = pages + pageSize + (atEnd ? pageSize - count * sizeof(Character) : 0);
        return static_cast<Character*>(p);
    }

private:
    static constexpr unsigned long pageSize = 4096;
    char* pages;
};

/// A few places of a run: its ends, and some between.
std::vector<unsigned long> placesIn(unsigned long count) {
    std::vector<unsigned long> places;
    for (const unsigned long place : {0UL, 1UL, count / 3, count / 2, count - 2, count - 1})
        if (place < count)
            places.push_back(place);
    return places;
}

double secondsUsed() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

template<class Character>
class OCKernelsOfWidth : public testing::Test {};

using Widths = testing::Types<char, wchar_t>;

struct WidthNames {
    template<class Character>
    static std::string GetName(int) {
        return sizeof(Character) == 1 ? "Bytes" : "WideCharacters";
    }
};

TYPED_TEST_SUITE(OCKernelsOfWidth, Widths, WidthNames);

#define SAME(expected, actual)                                                                     \
    do {                                                                                           \
        if ((expected) != (actual))                                                                \
            FAIL() << form.name << ": expected " << (expected) << ", got " << (actual);            \
    } while (false)

TEST(OCKernels, TheFormInUseIsTheBestThatTheMachineCan) {
    EXPECT_STREQ(__builtin_cpu_supports("avx2") ? "AVX2" : "SSE2", kernels::formInUse().name);
}

TEST(OCKernels, WorkBeforeMain) {
    EXPECT_EQ(37u, foundBeforeMain);
}

TEST(OCKernels, FindsOnlyTheByteAskedFor) {
    for (const Form& form : allForms())
        for (int i = 0; i < 256; ++i)
            for (int j = 0; j < 256; ++j) {
                const char text = static_cast<char>(i);
                const char c = static_cast<char>(j);
                SAME(text == c ? 0 : notFound, form.findByte(&text, 1, c));
                SAME(modelLower(text) == modelLower(c) ? 0 : notFound,
                     form.findByteFolded(&text, 1, c));
            }
}

TYPED_TEST(OCKernelsOfWidth, FindsEachValueWhereItFirstStands) {
    using W = Width<TypeParam>;
    const auto text = W::values();
    const auto folded = modelLower(text);
    for (const Form& form : allForms())
        for (const TypeParam c : text) {
            SAME(text.find(c), (form.*W::find)(text.data(), text.size(), c));
            SAME(folded.find(modelLower(c)), (form.*W::findFolded)(text.data(), text.size(), c));
            SAME(text.find(c), (form.*W::findEither)(text.data(), text.size(), c, text.back()));
            SAME(text.find(c), (form.*W::findEither)(text.data(), text.size(), text.back(), c));
        }
}

TYPED_TEST(OCKernelsOfWidth, FindsACharacterAtEveryLengthAndAlignment) {
    using W = Width<TypeParam>;
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; offset += sizeof(TypeParam))
            for (unsigned long count = 0; count <= longest; ++count) {
                ExactRun<TypeParam> text(offset, count, 'x');
                text.fill('-');
                SAME(notFound, (form.*W::find)(text.get(), count, 'x'));
                SAME(notFound, (form.*W::findFolded)(text.get(), count, 'X'));
                for (const unsigned long place : placesIn(count)) {
                    text[place] = 'x';
                    text[count - 1] = 'x';
                    SAME(place, (form.*W::find)(text.get(), count, 'x'));
                    SAME(place, (form.*W::findFolded)(text.get(), count, 'X'));
                    text[place] = '-';
                    text[count - 1] = '-';
                }
            }
}

TYPED_TEST(OCKernelsOfWidth, FindsEitherCharacterAtEveryLengthAndAlignment) {
    using W = Width<TypeParam>;
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; offset += sizeof(TypeParam))
            for (unsigned long count = 0; count <= longest; ++count) {
                ExactRun<TypeParam> text(offset, count, '\n');
                text.fill('-');
                SAME(notFound, (form.*W::findEither)(text.get(), count, '\r', '\n'));
                for (const unsigned long place : placesIn(count)) {
                    text[place] = '\r';
                    SAME(place, (form.*W::findEither)(text.get(), count, '\r', '\n'));
                    SAME(place, (form.*W::findEither)(text.get(), count, '\n', '\r'));
                    text[place] = '\n';
                    SAME(place, (form.*W::findEither)(text.get(), count, '\r', '\n'));
                    text[place] = '-';
                }
            }
}

TYPED_TEST(OCKernelsOfWidth, FindsAndComparesWithoutLeavingThePage) {
    using W = Width<TypeParam>;
    GuardedPage page;
    GuardedPage otherPage;
    for (const Form& form : allForms())
        for (const bool atEnd : {false, true})
            for (unsigned long count = 0; count <= longest; ++count) {
                auto* const text = page.run<TypeParam>(count, atEnd);
                auto* const other = otherPage.run<TypeParam>(count, atEnd);
                for (unsigned long i = 0; i < count; ++i)
                    text[i] = other[i] = static_cast<TypeParam>('a' + i % 5);
                SAME(notFound, (form.*W::find)(text, count, 'x'));
                SAME(notFound, (form.*W::findFolded)(text, count, 'X'));
                SAME(count, (form.*W::mismatch)(text, other, count));
                SAME(count, (form.*W::mismatchFolded)(text, other, count));
                for (unsigned long patternCount = 1; patternCount <= count; patternCount += 7) {
                    // The pattern, too, lies at the edge of its page.
                    auto* const pattern = otherPage.run<TypeParam>(patternCount, atEnd);
                    for (unsigned long i = 0; i < patternCount; ++i)
                        pattern[i] = static_cast<TypeParam>('a' + i % 5);
                    pattern[patternCount - 1] = 'x';
                    SAME(notFound, (form.*W::findText)(text, count, pattern, patternCount));
                    SAME(notFound, (form.*W::findTextFolded)(text, count, pattern, patternCount));
                }
            }
}

TEST(OCKernels, ConvertAndSkipWithoutLeavingThePage) {
    GuardedPage page;
    GuardedPage otherPage;
    for (const Form& form : allForms())
        for (const bool atEnd : {false, true})
            for (unsigned long count = 0; count <= longest; ++count) {
                char* const bytes = page.run<char>(count, atEnd);
                wchar_t* const wide = otherPage.run<wchar_t>(count, atEnd);
                for (unsigned long i = 0; i < count; ++i)
                    bytes[i] = static_cast<char>('A' + i % 60);
                form.widen(wide, bytes, count);
                form.foldLowerWide(wide, wide, count);
                form.foldUpperWide(wide, wide, count);
                form.foldLower(bytes, bytes, count);
                form.foldUpper(bytes, bytes, count);
                form.narrow(bytes, wide, count);
                for (unsigned long i = 0; i < count; ++i)
                    wide[i] = 'n';
                SAME(count, form.skipWideName(wide, count));
                for (unsigned long i = 0; i < count; ++i)
                    wide[i] = ' ';
                SAME(count, form.skipWideWhiteSpace(wide, count));
            }
}

TYPED_TEST(OCKernelsOfWidth, TellsTheFirstDifferenceAtEveryLengthAndAlignment) {
    using W = Width<TypeParam>;
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; offset += sizeof(TypeParam))
            for (unsigned long count = 0; count <= longest; ++count) {
                ExactRun<TypeParam> a(offset, count, 'x');
                ExactRun<TypeParam> b((offset * 7 + count * sizeof(TypeParam)) % 64, count, 'y');
                for (unsigned long i = 0; i < count; ++i)
                    a[i] = b[i] = static_cast<TypeParam>('a' + i % 26);
                SAME(count, (form.*W::mismatch)(a.get(), b.get(), count));
                SAME(count, (form.*W::mismatchFolded)(a.get(), b.get(), count));
                for (const unsigned long place : placesIn(count)) {
                    const TypeParam before = b[place];
                    b[count - 1] = '!';
                    b[place] = '!';
                    SAME(place, (form.*W::mismatch)(a.get(), b.get(), count));
                    SAME(place, (form.*W::mismatchFolded)(a.get(), b.get(), count));
                    b[count - 1] = a[count - 1];
                    b[place] = modelUpper(before);
                    SAME(place, (form.*W::mismatch)(a.get(), b.get(), count));
                    SAME(count, (form.*W::mismatchFolded)(a.get(), b.get(), count));
                    b[place] = before;
                }
            }
}

TYPED_TEST(OCKernelsOfWidth, ComparesEveryPairOfValues) {
    using W = Width<TypeParam>;
    const auto values = W::values();
    const auto folded = modelLower(values);
    for (const Form& form : allForms())
        for (unsigned long turn = 0; turn < values.size(); ++turn) {
            const auto turned = values.substr(turn) + values.substr(0, turn);
            const auto turnedFolded = modelLower(turned);
            for (unsigned long from = 0; from < values.size(); ++from) {
                const unsigned long count = values.size() - from;
                unsigned long expected = 0;
                while (expected < count && folded[from + expected] == turnedFolded[from + expected])
                    ++expected;
                SAME(expected,
                     (form.*W::mismatchFolded)(values.data() + from, turned.data() + from, count));
                SAME(turn == 0 ? count : 0,
                     (form.*W::mismatch)(values.data() + from, turned.data() + from, count));
            }
        }
}

TYPED_TEST(OCKernelsOfWidth, FoldsEveryValueInEveryLane) {
    using W = Width<TypeParam>;
    for (const Form& form : allForms()) {
        auto text = W::values();
        for (int turn = 0; turn < 33; ++turn) {
            text = text.substr(1) + text[0];
            auto lower = text;
            auto upper = text;
            (form.*W::foldLower)(lower.data(), text.data(), text.size());
            (form.*W::foldUpper)(upper.data(), text.data(), text.size());
            for (unsigned long i = 0; i < text.size(); ++i) {
                SAME(modelLower(text[i]), lower[i]);
                SAME(modelUpper(text[i]), upper[i]);
            }
        }
    }
}

TYPED_TEST(OCKernelsOfWidth, FoldsAtEveryLengthAndAlignmentInPlaceToo) {
    using W = Width<TypeParam>;
    const auto values = W::values();
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; offset += sizeof(TypeParam))
            for (unsigned long count = 0; count <= longest; ++count) {
                std::basic_string<TypeParam> source;
                for (unsigned long i = 0; i < count; ++i)
                    source += values[(offset + i * 37 + count) % values.size()];
                std::basic_string<TypeParam> upper;
                for (const TypeParam c : source)
                    upper += modelUpper(c);
                ExactRun<TypeParam> text(offset, count, 'M');
                ExactRun<TypeParam> copy((offset * 5 + count * sizeof(TypeParam)) % 64, count, 'm');
                text = source;
                (form.*W::foldLower)(copy.get(), text.get(), count);
                ASSERT_EQ(modelLower(source), copy.text()) << form.name;
                (form.*W::foldUpper)(copy.get(), text.get(), count);
                ASSERT_EQ(upper, copy.text()) << form.name;
                ASSERT_EQ(source, text.text()) << form.name;
                (form.*W::foldLower)(text.get(), text.get(), count);
                ASSERT_EQ(modelLower(source), text.text()) << form.name;
                text = source;
                (form.*W::foldUpper)(text.get(), text.get(), count);
                ASSERT_EQ(upper, text.text()) << form.name;
                ASSERT_TRUE(text.surroundedBy('M')) << form.name;
                ASSERT_TRUE(copy.surroundedBy('m')) << form.name;
            }
}

TEST(OCKernels, WidenEveryByteWithItsSignAtEveryLengthAndAlignment) {
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; ++offset)
            for (unsigned long count = 0; count <= longest + 64; ++count) {
                ExactRun<char> from(offset, count, 'x');
                ExactRun<wchar_t> to(offset / 4 * 4, count, L'#');
                for (unsigned long i = 0; i < count; ++i)
                    from[i] = static_cast<char>(i * 3 + offset);
                form.widen(to.get(), from.get(), count);
                for (unsigned long i = 0; i < count; ++i) {
                    const auto value = static_cast<int>((i * 3 + offset) % 256);
                    SAME(value < 128 ? value : value - 256, to[i]);
                }
                ASSERT_TRUE(to.surroundedBy(L'#')) << form.name;
            }
}

TEST(OCKernels, NarrowToTheLowEightBitsAtEveryLengthAndAlignment) {
    constexpr unsigned int highBits[] = {0, 0xFFFFFF00U, 0x100, 0x7FFFFF00, 0x80000000U, 0x10F00};
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; ++offset)
            for (unsigned long count = 0; count <= longest + 64; ++count) {
                ExactRun<wchar_t> from(offset / 4 * 4, count, L'#');
                ExactRun<char> to(offset, count, 'x');
                for (unsigned long i = 0; i < count; ++i)
                    from[i] = static_cast<wchar_t>(highBits[(i + offset) % std::size(highBits)] |
                                                   ((i * 3 + offset) & 0xFF));
                form.narrow(to.get(), from.get(), count);
                for (unsigned long i = 0; i < count; ++i)
                    SAME((i * 3 + offset) & 0xFF, static_cast<unsigned char>(to[i]));
                ASSERT_TRUE(to.surroundedBy('x')) << form.name;
            }
}

TEST(OCKernels, SkipToEachValueThatEndsARunAndOverEachThatDoesNot) {
    for (const Form& form : allForms())
        for (const wchar_t c : Width<wchar_t>::values())
            for (unsigned long place = 0; place < 70; place += place < 36 ? 1 : 5) {
                std::wstring text(71, L'n');
                text[place] = c;
                text[70] = L'=';
                SAME(modelEndsName(c) ? place : 70, form.skipWideName(text.data(), text.size()));
                text.assign(71, L' ');
                text[place] = c;
                text[70] = L'n';
                SAME(c > 32 ? place : 70, form.skipWideWhiteSpace(text.data(), text.size()));
            }
}

TEST(OCKernels, SkipToEachByteThatEndsARunAndOverEachThatDoesNot) {
    const std::string inNames =
        "!-0123456789:ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz";
    for (const Form& form : allForms())
        for (int value = 0; value < 256; ++value)
            for (unsigned long place = 0; place < 70; place += place < 36 ? 1 : 5) {
                const char c = static_cast<char>(value);
                std::string text(71, 'n');
                text[place] = c;
                text[70] = '=';
                SAME(inNames.find(c) == std::string::npos ? place : 70,
                     form.skipHtmlName(text.data(), text.size()));
                text.assign(71, ' ');
                text[place] = c;
                text[70] = 'n';
                SAME(value > 32 ? place : 70, form.skipWhiteSpace(text.data(), text.size()));
            }
}

TEST(OCKernels, SkipBytesAtEveryLengthAndAlignment) {
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; ++offset)
            for (unsigned long count = 0; count <= longest; ++count) {
                ExactRun<char> text(offset, count, '>');
                text.fill('n');
                SAME(count, form.skipHtmlName(text.get(), count));
                SAME(0UL, form.skipWhiteSpace(text.get(), count));
                text.fill(' ');
                SAME(0UL, form.skipHtmlName(text.get(), count));
                SAME(count, form.skipWhiteSpace(text.get(), count));
            }
}

TEST(OCKernels, SkipAtEveryLengthAndAlignment) {
    for (const Form& form : allForms())
        for (unsigned long offset = 0; offset < 64; offset += sizeof(wchar_t))
            for (unsigned long count = 0; count <= longest; ++count) {
                ExactRun<wchar_t> text(offset, count, L'>');
                text.fill(L'n');
                SAME(count, form.skipWideName(text.get(), count));
                SAME(0UL, form.skipWideWhiteSpace(text.get(), count));
                for (const unsigned long place : placesIn(count)) {
                    text[count - 1] = L'>';
                    text[place] = L'\t';
                    SAME(place, form.skipWideName(text.get(), count));
                    text[count - 1] = L'n';
                    text[place] = L'n';
                }
                text.fill(-1);
                SAME(count, form.skipWideWhiteSpace(text.get(), count));
                for (const unsigned long place : placesIn(count)) {
                    text[count - 1] = L'n';
                    text[place] = L'n';
                    SAME(place, form.skipWideWhiteSpace(text.get(), count));
                    text[count - 1] = L'\n';
                    text[place] = L'\n';
                }
            }
}

TYPED_TEST(OCKernelsOfWidth, NeverFindsAnEmptyOrALongerPattern) {
    using W = Width<TypeParam>;
    const std::basic_string<TypeParam> text(100, 'a');
    for (const Form& form : allForms())
        for (unsigned long count = 0; count < 100; ++count) {
            SAME(notFound, (form.*W::findText)(text.data(), count, text.data(), 0));
            SAME(notFound, (form.*W::findTextFolded)(text.data(), count, text.data(), 0));
            SAME(notFound, (form.*W::findText)(text.data(), count, text.data(), count + 1));
            SAME(notFound, (form.*W::findTextFolded)(text.data(), count, text.data(), count + 1));
        }
}

TYPED_TEST(OCKernelsOfWidth, FindsATextAtEveryLengthPlaceAndAlignment) {
    using W = Width<TypeParam>;
    const std::basic_string<TypeParam> pattern = {'N', 'e', 'e', 'd', 'l', 'e', '-', 'N', 'e'};
    const auto folded = modelLower(pattern);
    for (const Form& form : allForms())
        for (unsigned long patternCount = 1; patternCount <= pattern.size(); ++patternCount)
            for (unsigned long count = patternCount; count <= longest; ++count) {
                const unsigned long offset = count * 7 % 64 / sizeof(TypeParam) * sizeof(TypeParam);
                ExactRun<TypeParam> text(offset, count, 'N');
                text.fill('.');
                SAME(notFound,
                     (form.*W::findText)(text.get(), count, pattern.data(), patternCount));
                for (unsigned long place = 0; place + patternCount <= count; ++place) {
                    for (unsigned long i = 0; i < patternCount; ++i)
                        text[place + i] = pattern[i];
                    SAME(place,
                         (form.*W::findText)(text.get(), count, pattern.data(), patternCount));
                    SAME(place,
                         (form.*W::findTextFolded)(text.get(), count, folded.data(), patternCount));
                    // Cut short at the end of the text it is not there.
                    SAME(notFound, (form.*W::findText)(text.get(), place + patternCount - 1,
                                                       pattern.data(), patternCount));
                    for (unsigned long i = 0; i < patternCount; ++i)
                        text[place + i] = '.';
                }
            }
}

TYPED_TEST(OCKernelsOfWidth, FindsATextWhereASearchChangesItsWay) {
    using W = Width<TypeParam>;
    const std::basic_string<TypeParam> pattern = {'e', 'n', 'd', ' ', 'o', 'f', ' ', 'i', 't'};
    const unsigned long size = pattern.size();
    for (const Form& form : allForms())
        for (const unsigned long base : {480UL, 1000UL})
            for (unsigned long count = base; count < base + 80; ++count) {
                ExactRun<TypeParam> text(0, count);
                text.fill('e');
                SAME(notFound, (form.*W::findText)(text.get(), count, pattern.data(), size));
                for (unsigned long place = 490; place < 530 && place + size <= count; ++place) {
                    for (unsigned long i = 0; i < size; ++i)
                        text[place + i] = pattern[i];
                    SAME(place, (form.*W::findText)(text.get(), count, pattern.data(), size));
                    SAME(place, (form.*W::findTextFolded)(text.get(), count, pattern.data(), size));
                    for (unsigned long i = 0; i < size; ++i)
                        text[place + i] = 'e';
                }
                for (unsigned long i = 0; i < size; ++i)
                    text[count - size + i] = pattern[i];
                SAME(count - size, (form.*W::findText)(text.get(), count, pattern.data(), size));
            }
}

TYPED_TEST(OCKernelsOfWidth, FindsWhatANaiveScanFinds) {
    using W = Width<TypeParam>;
    using Text = std::basic_string<TypeParam>;
    constexpr unsigned int seed = 20240607;
    std::mt19937 random(seed);
    const auto below = [&random](unsigned long limit) { return random() % limit; };
    const std::vector<Form> forms = allForms();
    const char alphabet[] = "aAbBz.";
    for (int round = 0; round < 20000; ++round) {
        const unsigned long letters = 2 + below(5);
        const auto make = [&](unsigned long count) {
            Text text;
            for (unsigned long i = 0; i < count; ++i)
                text += static_cast<TypeParam>(alphabet[below(letters)]);
            return text;
        };
        const Text text = make(round % 50 == 0 ? below(5000) : below(longest));
        Text pattern = make(1 + below(round % 7 == 0 ? 90 : 9));
        if (below(2) == 0 && pattern.size() <= text.size())
            pattern = text.substr(below(text.size() - pattern.size() + 1), pattern.size());
        const unsigned long place = modelFindText(text, pattern);
        const unsigned long foldedPlace = modelFindText(modelLower(text), modelLower(pattern));
        ExactRun<TypeParam> exact(below(64) / sizeof(TypeParam) * sizeof(TypeParam), text.size());
        exact = text;
        for (const Form& form : forms) {
            ASSERT_EQ(place,
                      (form.*W::findText)(exact.get(), text.size(), pattern.data(), pattern.size()))
                << form.name << ", seed " << seed << ", round " << round;
            ASSERT_EQ(foldedPlace, (form.*W::findTextFolded)(exact.get(), text.size(),
                                                             pattern.data(), pattern.size()))
                << form.name << ", seed " << seed << ", round " << round;
        }
    }
}

TYPED_TEST(OCKernelsOfWidth, TwoWaySearchFindsWhatANaiveScanFinds) {
    using Text = std::basic_string<TypeParam>;
    constexpr unsigned int seed = 20240608;
    std::mt19937 random(seed);
    const auto below = [&random](unsigned long limit) { return random() % limit; };
    for (int round = 0; round < 60000; ++round) {
        const unsigned long letters = 1 + below(3);
        // A pattern that repeats a short text, with a change here and there.
        Text unit;
        for (unsigned long i = 1 + below(6); i > 0; --i)
            unit += static_cast<TypeParam>("abC"[below(letters)]);
        Text pattern;
        for (unsigned long i = 1 + below(30); i > 0; --i)
            pattern += unit[i % unit.size()];
        if (below(2) == 0)
            pattern[below(pattern.size())] = 'b';
        Text text;
        while (text.size() < 120)
            text += below(3) == 0 ? Text(1, static_cast<TypeParam>("abC"[below(letters)]))
                                  : pattern.substr(0, below(pattern.size() + 1));
        const kernels::TwoWaySearch<TypeParam, false> search(pattern.data(), pattern.size());
        const kernels::TwoWaySearch<TypeParam, true> folded(pattern.data(), pattern.size());
        const unsigned long from = below(8);
        const auto expect = [from](unsigned long place) {
            return place == notFound ? notFound : place + from;
        };
        const Text rest = text.substr(from);
        ASSERT_EQ(expect(modelFindText(rest, pattern)), search.find(text.data(), text.size(), from))
            << "seed " << seed << ", round " << round;
        ASSERT_EQ(expect(modelFindText(modelLower(rest), modelLower(pattern))),
                  folded.find(text.data(), text.size(), from))
            << "seed " << seed << ", round " << round;
    }
}

TYPED_TEST(OCKernelsOfWidth, TwoWaySearchFindsNothingThatIsLongerThanTheText) {
    const TypeParam text[] = {'a', 'b', 'a'};
    const kernels::TwoWaySearch<TypeParam, false> search(text, 3);
    EXPECT_EQ(0u, search.find(text, 3, 0));
    EXPECT_EQ(notFound, search.find(text, 2, 0));
    EXPECT_EQ(notFound, search.find(text, 3, 1));
}

/// `unit` again and again, `count` characters in all.
template<class Character>
std::basic_string<Character> repeated(const std::basic_string<Character>& unit,
                                      unsigned long count) {
    std::basic_string<Character> text;
    text.reserve(count + unit.size());
    while (text.size() < count)
        text += unit;
    text.resize(count);
    return text;
}

TYPED_TEST(OCKernelsOfWidth, SearchesAreLinearWhateverTheTextHolds) {
    using W = Width<TypeParam>;
    using Text = std::basic_string<TypeParam>;
    // Comparing anew at every place would take a hundred times as long as is allowed here.
    constexpr double limit = 4.0;
    constexpr unsigned long count = 4UL << 20;
    constexpr unsigned long half = 256UL << 10;
    const Text a(half, 'a');
    const Text ab = repeated(Text{'a', 'b'}, half);
    const struct {
        Text text;
        Text pattern;
    } cases[] = {
        {Text(count, 'a'), a + Text(1, 'b')},
        {Text(count, 'a'), Text(1, 'b') + a},
        {repeated(Text(2 * half - 1, 'a') + Text(1, 'b'), count), a + a},
        {repeated(a + Text(1, 'c') + Text(half - 1, 'a') + Text(1, 'b'), count),
         a + Text(1, 'b') + a},
        {repeated(ab + Text(2, 'a'), count), ab + ab},
        {repeated(Text{'a', 'b'}, count), ab + Text(1, 'b') + ab},
    };
    for (const Form& form : allForms())
        for (const auto& one : cases) {
            const auto number = &one - cases;
            const double before = secondsUsed();
            ASSERT_EQ(notFound, (form.*W::findText)(one.text.data(), one.text.size(),
                                                    one.pattern.data(), one.pattern.size()))
                << form.name << " " << number;
            ASSERT_EQ(notFound, (form.*W::findTextFolded)(one.text.data(), one.text.size(),
                                                          one.pattern.data(), one.pattern.size()))
                << form.name << " " << number;
            EXPECT_GT(limit, secondsUsed() - before) << form.name << " " << number;
        }
}

TYPED_TEST(OCKernelsOfWidth, FindsWhatStandsBehindAnExpensiveText) {
    using W = Width<TypeParam>;
    using Text = std::basic_string<TypeParam>;
    for (const unsigned long size : {20UL, 127UL, 500UL, 3000UL}) {
        const Text pattern(size, 'a');
        const Text nearly = Text(size - 1, 'a') + Text(1, 'b');
        for (unsigned long extra = 0; extra < 3; ++extra) {
            const Text front = repeated(nearly, 40 * size) + Text(1, 'b');
            const Text text = front + Text(size + extra, 'A');
            for (const Form& form : allForms()) {
                SAME(notFound, (form.*W::findText)(text.data(), text.size(), pattern.data(), size));
                SAME(front.size(),
                     (form.*W::findTextFolded)(text.data(), text.size(), pattern.data(), size));
                SAME(front.size(), (form.*W::findText)(modelLower(text).data(), text.size(),
                                                       pattern.data(), size));
            }
        }
    }
}

TYPED_TEST(OCKernelsOfWidth, MissesNothingWhenItGivesUpComparing) {
    using W = Width<TypeParam>;
    using Text = std::basic_string<TypeParam>;
    // Fifty comparisons that fail late, directly before the match. What may be spent on them grows
    // with the distance, so that every one of them is the last for some length of the front.
    constexpr unsigned long as = 100;
    constexpr unsigned long bs = 50;
    const Text pattern = Text(as, 'a') + Text(bs, 'b');
    for (const Form& form : allForms())
        for (unsigned long front = 0; front < 800; ++front) {
            const Text text = Text(front, '.') + Text(bs, 'a') + pattern;
            SAME(front + bs,
                 (form.*W::findText)(text.data(), text.size(), pattern.data(), pattern.size()));
            SAME(front + bs, (form.*W::findTextFolded)(text.data(), text.size(), pattern.data(),
                                                       pattern.size()));
        }
}

TEST(OCKernels, NeverAskForMemory) {
    const std::string text = repeated(std::string(126, 'a') + "b", 20000);
    const std::wstring wide(text.begin(), text.end());
    std::string bytes = text;
    std::wstring wides = wide;
    const unsigned long before = fault::heapRecord().requests;
    unsigned long found = 0;
    for (const Form* form : {&kernels::plainForm, &kernels::formInUse(), &publicForm})
        for (const unsigned long size : {1UL, 127UL, 5000UL}) {
            const std::string_view pattern = std::string_view(text).substr(1, size);
            const std::wstring_view widePattern = std::wstring_view(wide).substr(1, size);
            found += form->findText(text.data(), text.size(), pattern.data(), size);
            found += form->findTextFolded(text.data(), text.size(), pattern.data(), size);
            found += form->findWideText(wide.data(), wide.size(), widePattern.data(), size);
            found += form->findWideTextFolded(wide.data(), wide.size(), widePattern.data(), size);
            form->foldLower(bytes.data(), text.data(), size);
            form->foldUpperWide(wides.data(), wide.data(), size);
            form->widen(wides.data(), text.data(), size);
            form->narrow(bytes.data(), wide.data(), size);
        }
    EXPECT_EQ(before, fault::heapRecord().requests);
    EXPECT_EQ(3u * 4 * (0 + 1 + 1), found);
}

TEST(OCKernelAnchors, QuickOnesAreTheFirstCharacterAndTheLastThatDiffers) {
    const auto second = [](const std::string& pattern) {
        const auto anchors = kernels::quickAnchors<char, false>(pattern.data(), pattern.size());
        EXPECT_EQ(0u, anchors.first);
        return anchors.second;
    };
    EXPECT_EQ(1u, second("ab"));
    EXPECT_EQ(1u, second("aa"));
    EXPECT_EQ(2u, second("aabaaaa"));
    EXPECT_EQ(3u, second("aAaA"));
    EXPECT_EQ(3u, (kernels::quickAnchors<char, true>("aAaA", 4).second));
    EXPECT_EQ(1u, (kernels::quickAnchors<char, true>("abaA", 4).second));
}

TEST(OCKernelAnchors, RareOnesAreTheRarestCharactersOfThePattern) {
    const auto check = [](const std::string& pattern, char first, unsigned long firstIndex,
                          unsigned long secondIndex) {
        const auto anchors = kernels::rareAnchors<char, false>(pattern.data(), pattern.size());
        EXPECT_EQ(first, pattern[anchors.first]) << pattern;
        EXPECT_EQ(firstIndex, anchors.first) << pattern;
        EXPECT_EQ(secondIndex, anchors.second) << pattern;
    };
    check("the zebra", 'z', 4, 6);
    check("ease", 'e', 0, 2);
    check("er#z#", '#', 2, 3);
    check("aaaa", 'a', 0, 3);
    check("eeeeX", 'X', 4, 3);
    check(std::string(100, 'e') + "x", 'e', 0, 100);
    EXPECT_EQ(1u, (kernels::rareAnchors<char, true>("EZ", 2).first));
    EXPECT_EQ(0u, (kernels::rareAnchors<wchar_t, false>(L"z\x20AC", 2).first));
    // What is no ASCII, as a byte or as a character, is rarer than "e" and more common than "z".
    check("z\xE4", 'z', 0, 1);
    check("e\xE4", '\xE4', 1, 0);
    const wchar_t negative[] = {L'z', -28, L'e'};
    EXPECT_EQ(0u, (kernels::rareAnchors<wchar_t, false>(negative, 2).first));
    EXPECT_EQ(0u, (kernels::rareAnchors<wchar_t, false>(negative + 1, 2).first));
}

TEST(OCKernels, OrderFoldedByTheFirstDifferenceThatCounts) {
    alignas(16) char a[208];
    alignas(16) char b[208];
    for (unsigned long count = 0; count <= 200; ++count)
        for (unsigned long place = 0; place < count + 20 && place < sizeof a; ++place) {
            // Behind the difference, and behind what counts, everything is the other way round.
            std::fill(std::begin(a), std::end(a), '~');
            std::fill(std::begin(b), std::end(b), '!');
            for (unsigned long i = 0; i < count; ++i) {
                a[i] = i > place ? '~' : static_cast<char>('A' + i % 26);
                b[i] = i > place ? '!' : static_cast<char>('a' + i % 26);
            }
            if (place < count) {
                a[place] = '\x80';
                b[place] = '\0';
            }
            ASSERT_EQ(place < count, kernels::orderFolded(a, b, count) < 0)
                << count << ' ' << place;
            ASSERT_EQ(place<count, kernels::orderFolded(b, a, count)> 0) << count << ' ' << place;
        }
}

TEST(OCKernels, OrderFoldedKnowsEveryPairOfBytes) {
    for (const unsigned long place : {0UL, 15UL, 16UL, 70UL})
        for (int x = -128; x < 128; ++x)
            for (int y = -128; y < 128; ++y) {
                char a[80] = {};
                char b[80] = {};
                a[place] = static_cast<char>(x);
                b[place] = static_cast<char>(y);
                const int left = x >= 'A' && x <= 'Z' ? x + 32 : x;
                const int right = y >= 'A' && y <= 'Z' ? y + 32 : y;
                const int order = kernels::orderFolded(a, b, place + 1);
                ASSERT_EQ(left < right, order < 0) << place << ' ' << x << ' ' << y;
                ASSERT_EQ(left > right, order > 0) << place << ' ' << x << ' ' << y;
            }
}

} // namespace
