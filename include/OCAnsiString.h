#ifndef ORVABASE_OCCORERING_H
#include "OCCoreRing.h" // comes back here for each of the two halves
#elif ORVABASE_CORE_RING_HALF == 1

#include "OCObject.h"

#include <cstring>
#include <iosfwd>

class OCWideString;

/// Whether letters are compared without regard to their case. Case-insensitive means that `A` to
/// `Z` are folded to lower case; there is no locale.
enum OEStringCase : int { StringCaseInsensitive = 0, StringCaseSensitive = 1 };

/// How a text is put behind another: as it is, or with exactly one slash between the two.
enum OEStringConcat : int { StringConcatPlain = 0, StringConcatPath = 1 };

/// The common base of the narrow and the wide string.
class ORVABASE_EXPORT OCAbstractString : public OCObject {
public:
    ~OCAbstractString() noexcept override {}

    /// Throws `OXString_NoSuchIndex` for `index`.
    [[noreturn]] static void throwNoSuchIndex(unsigned long index);

protected:
    OCAbstractString() noexcept = default;
    OCAbstractString(const OCAbstractString&) noexcept = default;
    OCAbstractString& operator=(const OCAbstractString&) noexcept = default;
};

/// A mutable string of bytes, NUL-terminated and with an explicit length.
///
/// A byte is a character: there is no encoding and no locale. Up to 127 characters are held inside
/// the object; longer texts live in a heap block whose size is the smallest multiple of 64 above
/// the length, so shortening gives memory back. A string may hold zero bytes. Copies are deep. Not
/// for use by several threads at once.
///
/// Every operation that fails leaves the string as it was, and operations that shorten never fail
/// for want of memory. An argument may be (part of) the string itself and counts as it was at the
/// call. A `const char*` must not be null, unless a count of 0 comes with it. Operations that
/// change the string return the string itself.
///
/// Changing the length takes at most one heap request each time that it passes a multiple of 64
/// above 127, and none otherwise.
///
///     OCAnsiString path("usr");
///     path /= "lib";                     // usr/lib
///     path.replace("usr", "opt").upperCase();
///     std::cout << path.getLength();     // 7
class ORVABASE_EXPORT OCAnsiString : public OCAbstractString {
public:
    /// An empty string.
    OCAnsiString() noexcept { initialize(Block{0, 0}, 0); }
    /// One character, which may be the zero byte.
    OCAnsiString(char c) noexcept { initialize(Block{static_cast<unsigned char>(c), 0}, 1); }
    /// Exactly `count` bytes, zero bytes included.
    /// @throws OXMemory_AllocationError (so do all constructors that can make a longer text).
    OCAnsiString(const char* text, unsigned long count) { initialize(text, count); }
    /// The bytes before the first zero byte.
    OCAnsiString(const char* text) { initialize(text, std::strlen(text)); }
    OCAnsiString(const OCAnsiString& other) : OCAbstractString(other) { initialize(other); }
    /// Takes `other`'s content, which is empty afterwards.
    OCAnsiString(OCAnsiString&& other) noexcept : OCAbstractString(other) { take(other); }
    /// The low 8 bits of each character of `text`; no encoding is applied.
    OCAnsiString(const OCWideString& text);
    ~OCAnsiString() noexcept override { release(); }

    OCAnsiString& operator=(const OCAnsiString& other) { return assign(other); }
    OCAnsiString& operator=(OCAnsiString&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }

    /// Replace the content, as the constructor of the same form makes it.
    /// @throws OXMemory_AllocationError
    OCAnsiString& assign() { return clear(); }
    OCAnsiString& assign(char c);
    OCAnsiString& assign(const char* text, unsigned long count);
    OCAnsiString& assign(const char* text);
    OCAnsiString& assign(const OCAnsiString& other);
    OCAnsiString& assign(const OCWideString& text);

    /// Makes the string empty and gives a heap block back.
    OCAnsiString& clear() noexcept;
    /// Sets the length to `n` and keeps the characters up to there; characters that come into being
    /// have no defined value.
    /// @throws OXMemory_AllocationError
    OCAnsiString& setLength(unsigned long n) {
        if (n >= capacity || n + 64 < capacity)
            changeCapacity(n);
        return endAt(n);
    }
    /// Sets every character to `c`; the length stays.
    OCAnsiString& fill(char c);

    /// The number of characters, without the terminator.
    unsigned long getLength() const { return length; }
    /// The number of bytes that the storage holds, the terminator counted.
    unsigned long getCapacity() const { return capacity; }
    /// The characters with a terminating zero, valid until the next change of the string.
    const char* getString() const { return data; }
    char* getString() { return data; }
    /// The character at `index`.
    /// @throws OXString_NoSuchIndex when `index` is not below the length.
    char operator[](unsigned long index) const {
        if (index >= length)
            throwNoSuchIndex(index);
        return data[index];
    }
    char& operator[](unsigned long index) {
        if (index >= length)
            throwNoSuchIndex(index);
        return data[index];
    }

    /// Append a text. With `StringConcatPath` exactly one slash stands between the two: `a` and `b`
    /// give `a/b`, and so do `a/` and `/b`. An empty string takes the text as it is; an empty text
    /// changes nothing.
    ///
    /// Note: only one slash is removed: `a//` and `/b` give `a//b`.
    /// @throws OXMemory_AllocationError
    OCAnsiString& append(char c, OEStringConcat mode = StringConcatPlain) {
        const unsigned long n = length + 1;
        if (n >= capacity || mode == StringConcatPath)
            return appendSlowly(c, mode);
        data[length] = c;
        return endAt(n);
    }
    OCAnsiString& append(const char* text, OEStringConcat mode = StringConcatPlain) {
        return append(text, std::strlen(text), mode);
    }
    OCAnsiString& append(const char* text, unsigned long count,
                         OEStringConcat mode = StringConcatPlain) {
        return mode == StringConcatPath ? appendPath(text, count) : appendPlain(text, count);
    }
    OCAnsiString& append(const OCAnsiString& text, OEStringConcat mode = StringConcatPlain) {
        return append(text.data, text.length, mode);
    }
    /// Appends plainly.
    OCAnsiString& operator+=(const OCAnsiString& text) { return append(text); }
    OCAnsiString& operator+=(const char* text) { return append(text); }
    OCAnsiString& operator+=(char c) { return append(c); }
    /// Appends as a path.
    OCAnsiString& operator/=(const OCAnsiString& text) { return append(text, StringConcatPath); }
    OCAnsiString& operator/=(const char* text) { return append(text, StringConcatPath); }
    OCAnsiString& operator/=(char c) { return append(c, StringConcatPath); }
    /// A new string: this one with `other` appended. It takes one heap request at most.
    /// @throws OXMemory_AllocationError
    OCAnsiString concat(const OCAnsiString& other, OEStringConcat mode = StringConcatPlain) const {
        return join(data, length, other.data, other.length, mode);
    }
    /// `concat` plainly.
    OCAnsiString operator+(const OCAnsiString& text) const { return concat(text); }
    /// `concat` as a path.
    OCAnsiString operator/(const OCAnsiString& text) const {
        return concat(text, StringConcatPath);
    }

    /// Inserts `text` before `position`.
    ///
    /// Note: `position` must be below the length; at the end, use `append`.
    /// @throws OXString_NoSuchIndex (also for an empty `text`), OXMemory_AllocationError
    OCAnsiString& insert(unsigned long position, const OCAnsiString& text);
    /// Inserts `text` at the front, also of an empty string.
    /// @throws OXMemory_AllocationError
    OCAnsiString& insert(const OCAnsiString& text);

    /// Keeps the first `n` characters, or all if there are fewer.
    OCAnsiString& left(unsigned long n) noexcept;
    /// Keeps the last `n` characters, or all if there are fewer.
    ///
    /// Note: on an empty string every `n` but 0 is refused.
    /// @throws OXString_NoSuchIndex for index 0.
    OCAnsiString& right(unsigned long n);
    /// Keeps up to `n` characters from `position` on.
    /// @throws OXString_NoSuchIndex when `position` is not below the length.
    OCAnsiString& mid(unsigned long position, unsigned long n);
    /// Removes up to `n` characters from `position` on.
    /// @throws OXString_NoSuchIndex when `position` is not below the length.
    OCAnsiString& remove(unsigned long position, unsigned long n);

    /// Remove blanks at one end or both: all bytes from 0 to 32. (128 to 255 are no blanks.)
    OCAnsiString& trimLeft() noexcept;
    OCAnsiString& trimRight() noexcept;
    OCAnsiString& trim() noexcept;
    /// Put copies of `c` in front of or behind the text until it has `width` characters. A longer
    /// text stays as it is.
    /// @throws OXMemory_AllocationError
    OCAnsiString& padLeft(char c, unsigned long width);
    OCAnsiString& padRight(char c, unsigned long width);
    /// Turn the ASCII letters into lower or upper case.
    OCAnsiString& lowerCase();
    OCAnsiString& upperCase();

    /// Orders two strings byte by byte, a prefix before the longer string.
    ///
    /// Note: bytes count as signed, so 128 to 255 come before 0 to 127.
    OECompareResult compare(const OCAnsiString& other,
                            OEStringCase sense = StringCaseSensitive) const noexcept {
        return sense == StringCaseInsensitive ? compareFolded(other) : compareExactly(other);
    }
    bool operator==(const OCAnsiString& other) const {
        return length == other.length && std::memcmp(data, other.data, length) == 0;
    }
    bool operator!=(const OCAnsiString& other) const { return !(*this == other); }
    bool operator<(const OCAnsiString& other) const { return compare(other) < 0; }
    bool operator<=(const OCAnsiString& other) const { return compare(other) <= 0; }
    bool operator>(const OCAnsiString& other) const { return compare(other) > 0; }
    bool operator>=(const OCAnsiString& other) const { return compare(other) >= 0; }
    // Comparisons with wide strings are declared with `OCWideString`.

    /// Look for the first occurrence: true and its index in `position`, or false with `position`
    /// untouched. An empty text is never found. The time is linear.
    bool indexOf(char c, unsigned long& position, OEStringCase sense = StringCaseSensitive) const;
    bool indexOf(const OCAnsiString& text, unsigned long& position,
                 OEStringCase sense = StringCaseSensitive) const;
    bool contains(char c, OEStringCase sense = StringCaseSensitive) const;
    bool contains(const OCAnsiString& text, OEStringCase sense = StringCaseSensitive) const;
    /// Replaces every occurrence of `from`, from the left, without overlaps; what was put in is not
    /// looked at again. An empty `from` changes nothing.
    /// @throws OXMemory_AllocationError
    OCAnsiString& replace(const OCAnsiString& from, const OCAnsiString& to,
                          OEStringCase sense = StringCaseSensitive);

    /// Puts the text into URL form: letters, digits, `-` and `_` stay, a space becomes `+`, any
    /// other byte `%` and two lower-case hexadecimal digits.
    /// @throws OXMemory_AllocationError
    OCAnsiString& escape();
    /// Takes the text out of URL form. A `%` that two hexadecimal digits do not follow stays.
    /// @throws OXMemory_AllocationError
    OCAnsiString& unescape();

private:
    // Most strings are short: up to 15 characters are copied here, and literals made. The rest is
    // left to the library. A short text is stored with the bytes behind it as one block, because
    // the copy that often follows would have to wait for several smaller stores.

    using Block __attribute__((vector_size(16))) = unsigned long;

    void initialize(Block block, unsigned long count) noexcept {
        data = localBuffer;
        granularity = 64;
        capacity = 64;
        length = count;
        std::memcpy(localBuffer, &block, sizeof(block));
    }
    void initialize(const char* text, unsigned long count) {
        if (__builtin_constant_p(count) && count < sizeof(Block)) {
            Block block = {0, 0};
            std::memcpy(&block, text, count);
            initialize(block, count);
        } else
            initializeText(text, count);
    }
    void initialize(const OCAnsiString& other) {
        if (other.length < sizeof(Block)) {
            Block block;
            std::memcpy(&block, other.data, sizeof(Block));
            initialize(block, other.length);
        } else
            initializeCopy(other);
    }
    OCAnsiString& endAt(unsigned long n) noexcept {
        data[n] = 0;
        length = n;
        return *this;
    }
    void release() noexcept {
        if (data != localBuffer)
            releaseBlock();
    }
    void releaseBlock() noexcept;
    void initializeText(const char* text, unsigned long count);
    void initializeCopy(const OCAnsiString& other);
    [[gnu::noinline]] void initializeOnHeap(const char* text, unsigned long count);
    void take(OCAnsiString& other) noexcept;
    void changeCapacity(unsigned long n);
    [[gnu::visibility("hidden")]] void keepStorage(unsigned long needed, unsigned long n) noexcept;
    bool holds(const char* text, unsigned long count) const noexcept;
    OCAnsiString& keep(unsigned long head, unsigned long skip, unsigned long tail) noexcept;
    OCAnsiString& appendSlowly(char c, OEStringConcat mode);
    OCAnsiString& appendPlain(const char* text, unsigned long count);
    OCAnsiString& appendPath(const char* text, unsigned long count);
    static OCAnsiString join(const char* left, unsigned long leftCount, const char* right,
                             unsigned long rightCount, OEStringConcat mode);
    OCAnsiString& extend(bool slash, const char* text, unsigned long count);
    /// Eight characters as a number of the same order. The storage of a string is a multiple of 64
    /// bytes, so a whole word can be read at its last characters, too.
    static unsigned long orderedWord(const char* text) noexcept {
        unsigned long word = 0;
        std::memcpy(&word, text, sizeof word);
        return __builtin_bswap64(word) ^ 0x8080808080808080; // bytes are signed
    }
    OECompareResult compareExactly(const OCAnsiString& other) const noexcept {
        for (unsigned long i = 0; i < 16 && i + 8 <= length && i + 8 <= other.length; i += 8) {
            const unsigned long left = orderedWord(data + i);
            const unsigned long right = orderedWord(other.data + i);
            if (left != right)
                return left < right ? CompareResultLess : CompareResultGreater;
        }
        return compareFurther(other);
    }
    OECompareResult compareFurther(const OCAnsiString& other) const noexcept;
    [[gnu::noinline]] OECompareResult compareLong(const OCAnsiString& other) const noexcept;
    OECompareResult compareFolded(const OCAnsiString& other) const noexcept;
    OCAnsiString& insertText(unsigned long position, const OCAnsiString& text);

    char localBuffer[128];
    char* data;
    unsigned long granularity;
    unsigned long capacity;
    unsigned long length;
};

ORVABASE_EXPORT OCAnsiString operator+(const char* left, const OCAnsiString& right);
ORVABASE_EXPORT OCAnsiString operator/(const char* left, const OCAnsiString& right);

ORVABASE_EXPORT bool operator==(const char* left, const OCAnsiString& right);
ORVABASE_EXPORT bool operator!=(const char* left, const OCAnsiString& right);
ORVABASE_EXPORT bool operator<(const char* left, const OCAnsiString& right);
ORVABASE_EXPORT bool operator<=(const char* left, const OCAnsiString& right);
ORVABASE_EXPORT bool operator>(const char* left, const OCAnsiString& right);
ORVABASE_EXPORT bool operator>=(const char* left, const OCAnsiString& right);

/// Write exactly the characters of the string, without regard to the stream's width; a wide string
/// is narrowed first.
ORVABASE_EXPORT std::ostream& operator<<(std::ostream& stream, const OCAnsiString& text);
ORVABASE_EXPORT std::ostream& operator<<(std::ostream& stream, const OCWideString& text);

#elif ORVABASE_CORE_RING_HALF == 2

/// The family of the strings' failures.
class ORVABASE_EXPORT OXString : public OXAutoException {
public:
    ~OXString() noexcept override;

protected:
    OXString();
};

/// "String index out of bounds", with the index.
class ORVABASE_EXPORT OXString_NoSuchIndex : public OXString {
public:
    explicit OXString_NoSuchIndex(unsigned long index);
    ~OXString_NoSuchIndex() noexcept override;
};

#endif
