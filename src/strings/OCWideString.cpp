#include "OCWideString.h"

#include "OCMemory.h"
#include "core/OCKernels.h"
#include "strings/WideCopy.h"

#include <cwchar>

namespace {

namespace kernels = orvabase::kernels;
using orvabase::copyCharacters;

constexpr unsigned long capacityStep = 64;
constexpr unsigned long localCapacity = 128;
constexpr unsigned long maximumLength = ~0UL / sizeof(wchar_t) - capacityStep;

/// The capacity for a length that is known to have one.
unsigned long wholeSteps(unsigned long length) noexcept {
    return (length & ~(capacityStep - 1)) + capacityStep;
}

unsigned long capacityFor(unsigned long length) {
    if (length > maximumLength)
        throw OXMemory_AllocationError();
    return wholeSteps(length);
}

/// The length of a text with `count` characters more.
unsigned long extendedLength(unsigned long length, unsigned long count) {
    if (count > maximumLength - length)
        throw OXMemory_AllocationError();
    return length + count;
}

wchar_t* allocateBlock(unsigned long capacity) {
    wchar_t* block = nullptr;
    stringAllocate(block, capacity);
    return block;
}

bool isBlank(wchar_t c) {
    return c <= 32;
}

wchar_t folded(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
}

OECompareResult order(wchar_t a, wchar_t b) {
    return a < b ? CompareResultLess : CompareResultGreater;
}

OECompareResult compareTexts(const wchar_t* a, unsigned long countA, const wchar_t* b,
                             unsigned long countB) {
    const unsigned long common = countA < countB ? countA : countB;
    const unsigned long place = kernels::mismatchWide(a, b, common);
    if (place < common)
        return order(a[place], b[place]);
    if (countA == countB)
        return CompareResultEqual;
    return countA < countB ? CompareResultLess : CompareResultGreater;
}

OECompareResult compareTextsFolded(const wchar_t* a, unsigned long countA, const wchar_t* b,
                                   unsigned long countB) {
    const unsigned long common = countA < countB ? countA : countB;
    const unsigned long place = kernels::mismatchWideFolded(a, b, common);
    if (place < common)
        return order(folded(a[place]), folded(b[place]));
    if (countA == countB)
        return CompareResultEqual;
    return countA < countB ? CompareResultLess : CompareResultGreater;
}

OECompareResult compareTexts(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, stringLength(left), right.getString(), right.getLength());
}

unsigned long findText(const wchar_t* text, unsigned long count, const OCWideString& pattern,
                       OEStringCase sense) {
    return sense == StringCaseInsensitive
               ? kernels::findWideTextFolded(text, count, pattern.getString(), pattern.getLength())
               : kernels::findWideText(text, count, pattern.getString(), pattern.getLength());
}

} // namespace

OCWideString::OCWideString(wchar_t c) noexcept
    : granularity(capacityStep), capacity(capacityStep), length(1), data(localBuffer) {
    localBuffer[0] = c;
    localBuffer[1] = 0;
}

OCWideString::OCWideString(const wchar_t* text, unsigned long count) : granularity(capacityStep) {
    initialize(count);
    copyCharacters(data, text, count);
}

OCWideString::OCWideString(const wchar_t* text) : OCWideString(text, stringLength(text)) {}

OCWideString::OCWideString(const OCWideString& other) : OCWideString(other.data, other.length) {}

OCWideString::OCWideString(OCWideString&& other) noexcept : granularity(capacityStep) {
    takeFrom(other);
}

OCWideString::OCWideString(const OCAnsiString& text) : granularity(capacityStep) {
    initialize(text.getLength());
    kernels::widen(data, text.getString(), length);
}

OCWideString& OCWideString::operator=(OCWideString&& other) noexcept {
    if (this != &other) {
        if (data != localBuffer)
            releaseBlock();
        takeFrom(other);
    }
    return *this;
}

OCWideString& OCWideString::assign(wchar_t c) noexcept {
    clear();
    localBuffer[0] = c;
    localBuffer[1] = 0;
    length = 1;
    return *this;
}

OCWideString& OCWideString::assign(const wchar_t* text, unsigned long count) {
    if (data != localBuffer || count >= localCapacity)
        return assignBlock(text, count);
    copyCharacters(localBuffer, text, count);
    localBuffer[count] = 0;
    capacity = capacityFor(count);
    length = count;
    return *this;
}

/// Assigns when there is a block, or will be.
OCWideString& OCWideString::assignBlock(const wchar_t* text, unsigned long count) {
    const unsigned long newCapacity = capacityFor(count);
    wchar_t* target = localBuffer;
    if (newCapacity > localCapacity)
        target = newCapacity == capacity ? data : allocateBlock(newCapacity);
    stringCopy(target, text, count);
    if (data != localBuffer && data != target) // the text may have lain in the old block
        releaseBlock();
    data = target;
    data[count] = 0;
    capacity = newCapacity;
    length = count;
    return *this;
}

OCWideString& OCWideString::assign(const wchar_t* text) {
    return assign(text, stringLength(text));
}

OCWideString& OCWideString::assign(const OCAnsiString& text) {
    const unsigned long count = text.getLength();
    if (capacityFor(count) > localCapacity && capacityFor(count) != capacity)
        return *this = OCWideString(text);
    setLength(count);
    kernels::widen(data, text.getString(), count);
    return *this;
}

OCWideString& OCWideString::fill(wchar_t c) noexcept {
    std::wmemset(data, c, length);
    return *this;
}

OCWideString& OCWideString::append(const wchar_t* text) {
    return append(text, stringLength(text));
}

OCWideString& OCWideString::append(const wchar_t* text, unsigned long count) {
    if (count >= capacity - length)
        return appendGrowing(text, count);
    copyCharacters(data + length, text, count);
    length += count;
    data[length] = 0;
    return *this;
}

/// Appends when the capacity changes.
OCWideString& OCWideString::appendGrowing(const wchar_t* text, unsigned long count) {
    const unsigned long oldLength = length;
    const unsigned long newLength = extendedLength(oldLength, count);
    const unsigned long newCapacity = capacityFor(newLength);
    if (newCapacity <= localCapacity)
        stringCopy(data + oldLength, text, count);
    else if (data == localBuffer) {
        wchar_t* const block = allocateBlock(newCapacity);
        stringCopy(block, data, oldLength);
        stringCopy(block + oldLength, text, count);
        data = block;
    } else {
        // The text may lie in the block that is about to move.
        const auto offset =
            reinterpret_cast<unsigned long>(text) - reinterpret_cast<unsigned long>(data);
        const bool inside = offset < capacity * sizeof(wchar_t);
        changeCapacity(newLength);
        stringCopy(data + oldLength, inside ? data + offset / sizeof(wchar_t) : text, count);
    }
    data[newLength] = 0;
    capacity = newCapacity;
    length = newLength;
    return *this;
}

OCWideString OCWideString::concat(const OCWideString& other) const {
    const unsigned long total = extendedLength(length, other.length);
    OCWideString result;
    result.setLength(total);
    stringCopy(result.data, data, length);
    stringCopy(result.data + length, other.data, other.length);
    return result;
}

// NOLINTNEXTLINE(misc-no-recursion): once, with a copy
OCWideString& OCWideString::insert(unsigned long position, const OCWideString& text) {
    if (position >= length)
        throwNoSuchIndex(position);
    if (&text == this)
        return insert(position, OCWideString(text));
    const unsigned long oldLength = length;
    setLength(extendedLength(oldLength, text.length));
    stringCopy(data + position + text.length, data + position, oldLength - position);
    stringCopy(data + position, text.data, text.length);
    return *this;
}

OCWideString& OCWideString::insert(const OCWideString& text) {
    return length == 0 ? assign(text) : insert(0, text);
}

OCWideString& OCWideString::left(unsigned long n) noexcept {
    return n < length ? shorten(n) : *this;
}

OCWideString& OCWideString::right(unsigned long n) {
    if (n == 0)
        return clear();
    if (length == 0)
        throwNoSuchIndex(0);
    return n < length ? remove(0, length - n) : *this;
}

OCWideString& OCWideString::mid(unsigned long position, unsigned long n) {
    if (position >= length)
        throwNoSuchIndex(position);
    const unsigned long count = n < length - position ? n : length - position;
    stringCopy(data, data + position, count);
    return setLength(count);
}

OCWideString& OCWideString::remove(unsigned long position, unsigned long n) {
    if (position >= length)
        throwNoSuchIndex(position);
    const unsigned long count = n < length - position ? n : length - position;
    if (count == 0)
        return *this;
    stringCopy(data + position, data + position + count, length - position - count);
    return setLength(length - count);
}

OCWideString& OCWideString::trimLeft() noexcept {
    const unsigned long blanks = kernels::skipWideWhiteSpace(data, length);
    if (blanks == 0)
        return *this;
    stringCopy(data, data + blanks, length - blanks);
    return shorten(length - blanks);
}

OCWideString& OCWideString::trimRight() noexcept {
    unsigned long count = length;
    while (count > 0 && isBlank(data[count - 1]))
        count--;
    return left(count);
}

OCWideString& OCWideString::trim() noexcept {
    return trimRight().trimLeft();
}

OCWideString& OCWideString::padLeft(wchar_t c, unsigned long width) {
    if (length < width) {
        const unsigned long oldLength = length;
        setLength(width);
        stringCopy(data + (width - oldLength), data, oldLength);
        std::wmemset(data, c, width - oldLength);
    }
    return *this;
}

OCWideString& OCWideString::padRight(wchar_t c, unsigned long width) {
    if (length < width) {
        const unsigned long oldLength = length;
        setLength(width);
        std::wmemset(data + oldLength, c, width - oldLength);
    }
    return *this;
}

OCWideString& OCWideString::lowerCase() noexcept {
    kernels::foldLowerWide(data, data, length);
    return *this;
}

OCWideString& OCWideString::upperCase() noexcept {
    kernels::foldUpperWide(data, data, length);
    return *this;
}

OECompareResult OCWideString::compare(const OCWideString& other, OEStringCase sense) const {
    return sense == StringCaseInsensitive
               ? compareTextsFolded(data, length, other.data, other.length)
               : compareTexts(data, length, other.data, other.length);
}

bool OCWideString::indexOf(wchar_t c, unsigned long& position, OEStringCase sense) const {
    const unsigned long found = sense == StringCaseInsensitive
                                    ? kernels::findWideFolded(data, length, c)
                                    : kernels::findWide(data, length, c);
    if (found == kernels::notFound)
        return false;
    position = found;
    return true;
}

bool OCWideString::indexOf(const OCWideString& text, unsigned long& position,
                           OEStringCase sense) const {
    const unsigned long found = findText(data, length, text, sense);
    if (found == kernels::notFound)
        return false;
    position = found;
    return true;
}

bool OCWideString::contains(wchar_t c, OEStringCase sense) const {
    unsigned long position = 0;
    return indexOf(c, position, sense);
}

bool OCWideString::contains(const OCWideString& text, OEStringCase sense) const {
    unsigned long position = 0;
    return indexOf(text, position, sense);
}

// NOLINTNEXTLINE(misc-no-recursion): once, with a copy
OCWideString& OCWideString::replace(const OCWideString& from, const OCWideString& to,
                                    OEStringCase sense) {
    if (from.length == 0 || from.length > length)
        return *this;
    if (&to == this)
        return replace(from, OCWideString(to), sense);
    if (&from == this) // the whole text is the one occurrence
        return assign(to);
    if (to.length <= from.length)
        replaceShrinking(from, to, sense);
    else
        replaceGrowing(from, to, sense);
    return *this;
}

/// Replaces in place; nothing here can fail.
void OCWideString::replaceShrinking(const OCWideString& from, const OCWideString& to,
                                    OEStringCase sense) noexcept {
    unsigned long readPlace = 0;
    unsigned long writePlace = 0;
    for (;;) {
        const unsigned long found = findText(data + readPlace, length - readPlace, from, sense);
        const unsigned long run = found == kernels::notFound ? length - readPlace : found;
        if (readPlace != writePlace)
            stringCopy(data + writePlace, data + readPlace, run);
        readPlace += run;
        writePlace += run;
        if (found == kernels::notFound)
            break;
        stringCopy(data + writePlace, to.data, to.length);
        readPlace += from.length;
        writePlace += to.length;
    }
    shorten(writePlace);
}

/// Counts the occurrences, then fills a second string of the right length.
void OCWideString::replaceGrowing(const OCWideString& from, const OCWideString& to,
                                  OEStringCase sense) {
    unsigned long occurrences = 0;
    for (unsigned long place = 0;;) {
        const unsigned long found = findText(data + place, length - place, from, sense);
        if (found == kernels::notFound)
            break;
        occurrences++;
        place += found + from.length;
    }
    if (occurrences == 0)
        return;
    const unsigned long kept = length - occurrences * from.length;
    if (to.length > (maximumLength - kept) / occurrences)
        throw OXMemory_AllocationError();
    OCWideString result;
    result.setLength(kept + occurrences * to.length);
    const wchar_t* source = data;
    wchar_t* target = result.data;
    for (; occurrences > 0; occurrences--) {
        const unsigned long run =
            findText(source, length - static_cast<unsigned long>(source - data), from, sense);
        stringCopy(target, source, run);
        stringCopy(target + run, to.data, to.length);
        source += run + from.length;
        target += run + to.length;
    }
    stringCopy(target, source, length - static_cast<unsigned long>(source - data));
    *this = static_cast<OCWideString&&>(result);
}

/// Gives a string without content room for `n` characters and the terminator.
void OCWideString::initialize(unsigned long n) {
    const unsigned long newCapacity = capacityFor(n);
    data = newCapacity > localCapacity ? allocateBlock(newCapacity) : localBuffer;
    data[n] = 0;
    capacity = newCapacity;
    length = n;
}

/// Moves the characters into storage for `n` of them; making it smaller does not fail.
void OCWideString::changeCapacity(unsigned long n) {
    const unsigned long newCapacity = capacityFor(n);
    if (newCapacity <= capacity || newCapacity <= localCapacity) {
        keepStorage(newCapacity, n);
        return;
    }
    wchar_t* block = data;
    if (data == localBuffer) {
        block = allocateBlock(newCapacity);
        stringCopy(block, data, length);
    } else {
        stringReallocate(block, newCapacity);
    }
    data = block;
    capacity = newCapacity;
}

/// Changes the capacity, for `n` characters, to one for which the inline buffer or the present
/// storage is large enough.
void OCWideString::keepStorage(unsigned long newCapacity, unsigned long n) noexcept {
    if (data != localBuffer) {
        if (newCapacity <= localCapacity) {
            stringCopy(localBuffer, data, n < length ? n : length);
            releaseBlock();
        } else {
            wchar_t* block = data;
            try {
                stringReallocate(block, newCapacity);
            } catch (const OXMemory_AllocationError&) {
                block = data; // the larger block serves as well
            }
            data = block;
        }
    }
    capacity = newCapacity;
}

/// Keeps the first `n` characters.
OCWideString& OCWideString::shorten(unsigned long n) noexcept {
    if (n + capacityStep < capacity)
        keepStorage(wholeSteps(n), n);
    data[n] = 0;
    length = n;
    return *this;
}

/// Gives the block back; the characters are gone with it.
void OCWideString::releaseBlock() noexcept {
    stringRelease(data);
    data = localBuffer;
}

/// Takes over `other`'s content; what this string held is gone before.
void OCWideString::takeFrom(OCWideString& other) noexcept {
    capacity = other.capacity;
    length = other.length;
    if (other.data == other.localBuffer) {
        data = localBuffer;
        copyCharacters(localBuffer, other.localBuffer, length + 1);
    } else
        data = other.data;
    other.data = other.localBuffer;
    other.clear();
}

OECompareResult OCWideString::compareMixed(const OCWideString& left, const OCAnsiString& right) {
    return left.compare(OCWideString(right));
}

OECompareResult OCWideString::compareMixed(const OCAnsiString& left, const OCWideString& right) {
    return left.compare(OCAnsiString(right));
}

OCWideString operator+(const wchar_t* left, const OCWideString& right) {
    return OCWideString(left).append(right);
}

bool operator==(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, right) == CompareResultEqual;
}

bool operator!=(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, right) != CompareResultEqual;
}

bool operator<(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, right) < 0;
}

bool operator<=(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, right) <= 0;
}

bool operator>(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, right) > 0;
}

bool operator>=(const wchar_t* left, const OCWideString& right) {
    return compareTexts(left, right) >= 0;
}
