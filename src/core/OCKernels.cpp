#include "core/OCKernels.h"

#include "core/OCKernelForms.h"
#include "core/OCKernelShort.h"

namespace orvabase::kernels {
namespace {

/// Good from the start, and changed once at most: while the library is loaded, before any other of
/// its code runs.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): changed as said above
const Form* chosen = &sse2Form;

__attribute__((constructor(101))) void choose() noexcept {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2"))
        chosen = &avx2Form;
}

/// Whether a pattern could be found at all.
bool fits(unsigned long count, unsigned long patternCount) noexcept {
    return patternCount > 0 && patternCount <= count;
}

template<bool name>
unsigned long skip(const char* text, unsigned long count) noexcept {
    if (count >= 16) {
        if (const unsigned int ends = sse2::skipBits<name>(text))
            return brief::indexOfLowest<char>(ends);
    }
    if (brief::isBrief<char>(count))
        return brief::skip<name>(text, count);
    return name ? chosen->skipHtmlName(text, count) : chosen->skipWhiteSpace(text, count);
}

template<bool name>
unsigned long skip(const wchar_t* text, unsigned long count) noexcept {
    // Most names, and most gaps, end within one SSE2 register of bytes.
    if (count >= 16) {
        if (const unsigned int ends = sse2::skipBits<name>(text))
            return brief::indexOfLowest<char>(ends);
    }
    if (brief::isBrief<char>(count))
        return brief::skip<name>(text, count);
    return name ? chosen->skipWideName(text, count) : chosen->skipWideWhiteSpace(text, count);
}

} // namespace

const Form& formInUse() noexcept {
    return *chosen;
}

unsigned long findByte(const char* text, unsigned long count, char c) noexcept {
    return brief::isBrief<char>(count)
               ? brief::firstWhere(text, count, sse2::EqualTest<char, false>(c))
               : chosen->findByte(text, count, c);
}

unsigned long findByteFolded(const char* text, unsigned long count, char c) noexcept {
    return brief::isBrief<char>(count)
               ? brief::firstWhere(text, count, sse2::EqualTest<char, true>(c))
               : chosen->findByteFolded(text, count, c);
}

unsigned long findEither(const char* text, unsigned long count, char a, char b) noexcept {
    return brief::isBrief<char>(count)
               ? brief::firstWhere(text, count, sse2::EitherTest<char>(a, b))
               : chosen->findEither(text, count, a, b);
}

unsigned long findText(const char* text, unsigned long count, const char* pattern,
                       unsigned long patternCount) noexcept {
    return fits(count, patternCount) ? chosen->findText(text, count, pattern, patternCount)
                                     : notFound;
}

unsigned long findTextFolded(const char* text, unsigned long count, const char* pattern,
                             unsigned long patternCount) noexcept {
    return fits(count, patternCount) ? chosen->findTextFolded(text, count, pattern, patternCount)
                                     : notFound;
}

unsigned long mismatch(const char* a, const char* b, unsigned long count) noexcept {
    return brief::isBrief<char>(count) ? brief::mismatch<char, false>(a, b, count)
                                       : chosen->mismatch(a, b, count);
}

unsigned long mismatchFolded(const char* a, const char* b, unsigned long count) noexcept {
    return brief::isBrief<char>(count) ? brief::mismatch<char, true>(a, b, count)
                                       : chosen->mismatchFolded(a, b, count);
}

int orderFolded(const char* a, const char* b, unsigned long count) noexcept {
    // Most differ soon. Whoever does not is worth the way to the faster form.
    constexpr unsigned long soon = 64;
    unsigned long i = 0;
    do {
        if (const int order = brief::orderFolded(a + i, b + i, count - i))
            return order;
        i += 16;
        if (i >= count)
            return 0;
    } while (i < soon);
    i += chosen->mismatchFolded(a + i, b + i, count - i);
    if (i == count)
        return 0;
    return lower(static_cast<signed char>(a[i])) < lower(static_cast<signed char>(b[i])) ? -1 : 1;
}

void foldLower(char* to, const char* from, unsigned long count) noexcept {
    brief::isBrief<char>(count) ? brief::fold<char, true>(to, from, count)
                                : chosen->foldLower(to, from, count);
}

void foldUpper(char* to, const char* from, unsigned long count) noexcept {
    brief::isBrief<char>(count) ? brief::fold<char, false>(to, from, count)
                                : chosen->foldUpper(to, from, count);
}

void widen(wchar_t* to, const char* from, unsigned long count) noexcept {
    brief::isBrief<char>(count) ? brief::widen(to, from, count) : chosen->widen(to, from, count);
}

void narrow(char* to, const wchar_t* from, unsigned long count) noexcept {
    brief::isBrief<char>(count) ? brief::narrow(to, from, count) : chosen->narrow(to, from, count);
}

unsigned long findWide(const wchar_t* text, unsigned long count, wchar_t c) noexcept {
    return brief::isBrief<wchar_t>(count)
               ? brief::firstWhere(text, count, sse2::EqualTest<wchar_t, false>(c))
               : chosen->findWide(text, count, c);
}

unsigned long findWideFolded(const wchar_t* text, unsigned long count, wchar_t c) noexcept {
    return brief::isBrief<wchar_t>(count)
               ? brief::firstWhere(text, count, sse2::EqualTest<wchar_t, true>(c))
               : chosen->findWideFolded(text, count, c);
}

unsigned long findWideEither(const wchar_t* text, unsigned long count, wchar_t a,
                             wchar_t b) noexcept {
    return brief::isBrief<wchar_t>(count)
               ? brief::firstWhere(text, count, sse2::EitherTest<wchar_t>(a, b))
               : chosen->findWideEither(text, count, a, b);
}

unsigned long findWideText(const wchar_t* text, unsigned long count, const wchar_t* pattern,
                           unsigned long patternCount) noexcept {
    return fits(count, patternCount) ? chosen->findWideText(text, count, pattern, patternCount)
                                     : notFound;
}

unsigned long findWideTextFolded(const wchar_t* text, unsigned long count, const wchar_t* pattern,
                                 unsigned long patternCount) noexcept {
    return fits(count, patternCount)
               ? chosen->findWideTextFolded(text, count, pattern, patternCount)
               : notFound;
}

unsigned long mismatchWide(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept {
    return brief::isBrief<wchar_t>(count) ? brief::mismatch<wchar_t, false>(a, b, count)
                                          : chosen->mismatchWide(a, b, count);
}

unsigned long mismatchWideFolded(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept {
    return brief::isBrief<wchar_t>(count) ? brief::mismatch<wchar_t, true>(a, b, count)
                                          : chosen->mismatchWideFolded(a, b, count);
}

void foldLowerWide(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    brief::isBrief<wchar_t>(count) ? brief::fold<wchar_t, true>(to, from, count)
                                   : chosen->foldLowerWide(to, from, count);
}

void foldUpperWide(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    brief::isBrief<wchar_t>(count) ? brief::fold<wchar_t, false>(to, from, count)
                                   : chosen->foldUpperWide(to, from, count);
}

unsigned long skipWhiteSpace(const char* text, unsigned long count) noexcept {
    return skip<false>(text, count);
}

unsigned long skipHtmlName(const char* text, unsigned long count) noexcept {
    return skip<true>(text, count);
}

unsigned long skipWideWhiteSpace(const wchar_t* text, unsigned long count) noexcept {
    return skip<false>(text, count);
}

unsigned long skipWideName(const wchar_t* text, unsigned long count) noexcept {
    return skip<true>(text, count);
}

} // namespace orvabase::kernels
