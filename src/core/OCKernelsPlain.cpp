#include "core/OCKernelFold.h"
#include "core/OCKernelForms.h"
#include "core/OCKernelTwoWay.h"

namespace orvabase::kernels {
namespace {

template<class Character, bool folded>
unsigned long plainFind(const Character* text, unsigned long count, Character c) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        if (same<folded>(text[i], c))
            return i;
    return notFound;
}

template<class Character>
unsigned long plainFindEither(const Character* text, unsigned long count, Character a,
                              Character b) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        if (text[i] == a || text[i] == b)
            return i;
    return notFound;
}

template<class Character, bool folded>
unsigned long plainFindText(const Character* text, unsigned long count, const Character* pattern,
                            unsigned long patternCount) noexcept {
    if (patternCount == 0 || patternCount > count)
        return notFound;
    return TwoWaySearch<Character, folded>(pattern, patternCount).find(text, count, 0);
}

template<class Character, bool folded>
unsigned long plainMismatch(const Character* a, const Character* b, unsigned long count) noexcept {
    unsigned long i = 0;
    while (i < count && same<folded>(a[i], b[i]))
        ++i;
    return i;
}

template<class Character>
void plainFoldLower(Character* to, const Character* from, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        to[i] = lower(from[i]);
}

template<class Character>
void plainFoldUpper(Character* to, const Character* from, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        to[i] = upper(from[i]);
}

void plainWiden(wchar_t* to, const char* from, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        to[i] = static_cast<signed char>(from[i]);
}

void plainNarrow(char* to, const wchar_t* from, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        to[i] = static_cast<char>(from[i] & 0xFF);
}

unsigned long plainSkipWideWhiteSpace(const wchar_t* text, unsigned long count) noexcept {
    unsigned long i = 0;
    while (i < count && text[i] <= 32)
        ++i;
    return i;
}

unsigned long plainSkipWideName(const wchar_t* text, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i) {
        if (text[i] <= 32)
            return i;
        switch (text[i]) {
        case L'(':
        case L')':
        case L'*':
        case L'+':
        case L'/':
        case L'=':
        case L'>':
        case L'?':
        case L'[':
            return i;
        default:
            break;
        }
    }
    return count;
}

unsigned long plainSkipWhiteSpace(const char* text, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i)
        if (static_cast<unsigned char>(text[i]) > 32)
            return i;
    return count;
}

unsigned long plainSkipHtmlName(const char* text, unsigned long count) noexcept {
    for (unsigned long i = 0; i < count; ++i) {
        const char c = text[i];
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        const bool digit = c >= '0' && c <= '9';
        if (!letter && !digit && c != '!' && c != '-' && c != ':' && c != '_')
            return i;
    }
    return count;
}

} // namespace

const Form plainForm = {
    "plain",
    plainFind<char, false>,
    plainFind<char, true>,
    plainFindEither<char>,
    plainFindText<char, false>,
    plainFindText<char, true>,
    plainMismatch<char, false>,
    plainMismatch<char, true>,
    plainSkipWhiteSpace,
    plainSkipHtmlName,
    plainFoldLower<char>,
    plainFoldUpper<char>,
    plainWiden,
    plainNarrow,
    plainFind<wchar_t, false>,
    plainFind<wchar_t, true>,
    plainFindEither<wchar_t>,
    plainFindText<wchar_t, false>,
    plainFindText<wchar_t, true>,
    plainMismatch<wchar_t, false>,
    plainMismatch<wchar_t, true>,
    plainFoldLower<wchar_t>,
    plainFoldUpper<wchar_t>,
    plainSkipWideWhiteSpace,
    plainSkipWideName,
};

} // namespace orvabase::kernels
