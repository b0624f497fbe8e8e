#include "core/OCKernels.h"

#include "core/OCKernelForms.h"

namespace orvabase::kernels {

unsigned long findByte(const char* text, unsigned long count, char c) noexcept {
    return plainForm.findByte(text, count, c);
}

unsigned long findByteFolded(const char* text, unsigned long count, char c) noexcept {
    return plainForm.findByteFolded(text, count, c);
}

unsigned long findEither(const char* text, unsigned long count, char a, char b) noexcept {
    return plainForm.findEither(text, count, a, b);
}

unsigned long findText(const char* text, unsigned long count, const char* pattern,
                       unsigned long patternCount) noexcept {
    return plainForm.findText(text, count, pattern, patternCount);
}

unsigned long findTextFolded(const char* text, unsigned long count, const char* pattern,
                             unsigned long patternCount) noexcept {
    return plainForm.findTextFolded(text, count, pattern, patternCount);
}

unsigned long mismatch(const char* a, const char* b, unsigned long count) noexcept {
    return plainForm.mismatch(a, b, count);
}

unsigned long mismatchFolded(const char* a, const char* b, unsigned long count) noexcept {
    return plainForm.mismatchFolded(a, b, count);
}

void foldLower(char* to, const char* from, unsigned long count) noexcept {
    plainForm.foldLower(to, from, count);
}

void foldUpper(char* to, const char* from, unsigned long count) noexcept {
    plainForm.foldUpper(to, from, count);
}

void widen(wchar_t* to, const char* from, unsigned long count) noexcept {
    plainForm.widen(to, from, count);
}

void narrow(char* to, const wchar_t* from, unsigned long count) noexcept {
    plainForm.narrow(to, from, count);
}

unsigned long findWide(const wchar_t* text, unsigned long count, wchar_t c) noexcept {
    return plainForm.findWide(text, count, c);
}

unsigned long findWideFolded(const wchar_t* text, unsigned long count, wchar_t c) noexcept {
    return plainForm.findWideFolded(text, count, c);
}

unsigned long findWideText(const wchar_t* text, unsigned long count, const wchar_t* pattern,
                           unsigned long patternCount) noexcept {
    return plainForm.findWideText(text, count, pattern, patternCount);
}

unsigned long findWideTextFolded(const wchar_t* text, unsigned long count, const wchar_t* pattern,
                                 unsigned long patternCount) noexcept {
    return plainForm.findWideTextFolded(text, count, pattern, patternCount);
}

unsigned long mismatchWide(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept {
    return plainForm.mismatchWide(a, b, count);
}

unsigned long mismatchWideFolded(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept {
    return plainForm.mismatchWideFolded(a, b, count);
}

void foldLowerWide(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    plainForm.foldLowerWide(to, from, count);
}

void foldUpperWide(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    plainForm.foldUpperWide(to, from, count);
}

unsigned long skipWideWhiteSpace(const wchar_t* text, unsigned long count) noexcept {
    return plainForm.skipWideWhiteSpace(text, count);
}

unsigned long skipWideName(const wchar_t* text, unsigned long count) noexcept {
    return plainForm.skipWideName(text, count);
}

} // namespace orvabase::kernels
