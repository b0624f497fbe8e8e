#ifndef ORVABASE_OCKERNELS_H
#define ORVABASE_OCKERNELS_H

// The library's vector code: small operations on runs of characters, each with a plain form, an
// SSE2 form and, where it pays, an AVX2 form that is chosen when the machine has it. All forms
// agree.
//
// Counts are in characters. A find returns the index of what was found, or `notFound`; an empty
// pattern is never found. "Folded" means that `A` to `Z` count as `a` to `z`. Nothing here
// allocates or reads beyond the counts, and every search is linear in text and pattern together.

namespace orvabase::kernels {

constexpr unsigned long notFound = ~0UL;

// Bytes
unsigned long findByte(const char* text, unsigned long count, char c) noexcept;
unsigned long findByteFolded(const char* text, unsigned long count, char c) noexcept;
unsigned long findEither(const char* text, unsigned long count, char a, char b) noexcept;
unsigned long findText(const char* text, unsigned long count, const char* pattern,
                       unsigned long patternCount) noexcept;
unsigned long findTextFolded(const char* text, unsigned long count, const char* pattern,
                             unsigned long patternCount) noexcept;
/// The index of the first difference, `count` when there is none.
unsigned long mismatch(const char* a, const char* b, unsigned long count) noexcept;
unsigned long mismatchFolded(const char* a, const char* b, unsigned long count) noexcept;
/// The folded order of the first `count` bytes, which are signed: below, at or above 0 as `a` is
/// less, equal or greater. Unlike the others, it may read up to the next multiple of 16 bytes,
/// and 16 at least.
int orderFolded(const char* a, const char* b, unsigned long count) noexcept;
/// The first byte that is not white space: whose unsigned value is above 32. `count` when all are.
unsigned long skipWhiteSpace(const char* text, unsigned long count) noexcept;
/// The first byte that an HTML name does not have: no ASCII letter or digit, nor one of `! - : _`.
/// `count` when there is none.
unsigned long skipHtmlName(const char* text, unsigned long count) noexcept;
/// `to` may be `from`.
void foldLower(char* to, const char* from, unsigned long count) noexcept;
void foldUpper(char* to, const char* from, unsigned long count) noexcept;

// Between bytes and wide characters
/// Sign-extends each byte.
void widen(wchar_t* to, const char* from, unsigned long count) noexcept;
/// Keeps the low 8 bits of each character.
void narrow(char* to, const wchar_t* from, unsigned long count) noexcept;

// Wide characters
unsigned long findWide(const wchar_t* text, unsigned long count, wchar_t c) noexcept;
unsigned long findWideFolded(const wchar_t* text, unsigned long count, wchar_t c) noexcept;
unsigned long findWideEither(const wchar_t* text, unsigned long count, wchar_t a,
                             wchar_t b) noexcept;
unsigned long findWideText(const wchar_t* text, unsigned long count, const wchar_t* pattern,
                           unsigned long patternCount) noexcept;
unsigned long findWideTextFolded(const wchar_t* text, unsigned long count, const wchar_t* pattern,
                                 unsigned long patternCount) noexcept;
unsigned long mismatchWide(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept;
unsigned long mismatchWideFolded(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept;
void foldLowerWide(wchar_t* to, const wchar_t* from, unsigned long count) noexcept;
void foldUpperWide(wchar_t* to, const wchar_t* from, unsigned long count) noexcept;
/// The first character that is not white space: whose signed value is above 32. `count` when all
/// are.
unsigned long skipWideWhiteSpace(const wchar_t* text, unsigned long count) noexcept;
/// The first character that ends a markup name: white space or one of `( ) * + / = > ? [`. `count`
/// when there is none.
unsigned long skipWideName(const wchar_t* text, unsigned long count) noexcept;

} // namespace orvabase::kernels

#endif
