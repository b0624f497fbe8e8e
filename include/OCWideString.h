#ifndef ORVABASE_OCWIDESTRING_H
#define ORVABASE_OCWIDESTRING_H

#include "OCAnsiString.h"

#include <cstring>
#include <type_traits>

/// A mutable string of 32-bit `wchar_t` characters, zero-terminated and with an explicit length.
///
/// The wide counterpart of `OCAnsiString`: up to 127 characters are held inside the object; longer
/// texts live in a heap block of the smallest multiple of 64 characters above the length, so
/// shortening gives memory back. A string may hold zero characters. Copies are deep. Not for use by
/// several threads at once.
///
/// Narrow and wide strings turn into each other without any encoding: widening sign-extends each
/// byte, so that byte 233 becomes the character -23, and narrowing keeps the low 8 bits of each
/// character, so that a widened text narrows back to itself. There is no path join and no URL form.
///
/// Every operation that fails leaves the string as it was, and operations that shorten never fail
/// for want of memory. An argument may be (part of) the string itself and counts as it was at the
/// call. A `const wchar_t*` must not be null.
///
///     OCWideString name(L"title");
///     name.insert(L"sub").upperCase();   // SUBTITLE
///     OCAnsiString narrow(name);
///     name == narrow;                    // true
class ORVABASE_EXPORT OCWideString : public OCAbstractString {
public:
    /// An empty string.
    OCWideString() noexcept : granularity(64), capacity(64), length(0), data(localBuffer) {
        localBuffer[0] = 0;
    }
    /// One character, which may be zero.
    OCWideString(wchar_t c) noexcept;
    /// Exactly `count` characters, zero characters included.
    /// @throws OXMemory_AllocationError (so do the constructors from texts that follow).
    OCWideString(const wchar_t* text, unsigned long count);
    /// The characters before the first zero character.
    OCWideString(const wchar_t* text);
    OCWideString(const OCWideString& other);
    /// Takes `other`'s content, which is empty afterwards.
    OCWideString(OCWideString&& other) noexcept;
    /// The bytes of `text`, sign-extended; no encoding is applied.
    OCWideString(const OCAnsiString& text);
    ~OCWideString() noexcept override {
        if (data != localBuffer)
            releaseBlock();
    }

    OCWideString& operator=(const OCWideString& other) { return assign(other); }
    OCWideString& operator=(OCWideString&& other) noexcept;

    /// Replace the content, as the constructor of the same form makes it.
    /// @throws OXMemory_AllocationError
    OCWideString& assign() noexcept { return clear(); }
    OCWideString& assign(wchar_t c) noexcept;
    OCWideString& assign(const wchar_t* text, unsigned long count);
    OCWideString& assign(const wchar_t* text);
    OCWideString& assign(const OCWideString& other) { return assign(other.data, other.length); }
    OCWideString& assign(const OCAnsiString& text);

    /// Makes the string empty and gives a heap block back.
    OCWideString& clear() noexcept {
        if (data != localBuffer)
            releaseBlock();
        capacity = 64;
        length = 0;
        localBuffer[0] = 0;
        return *this;
    }
    /// Sets the length to `n` and keeps the first characters; characters that come into being have
    /// no defined value.
    /// @throws OXMemory_AllocationError
    OCWideString& setLength(unsigned long n) {
        if (n >= capacity || n + 64 < capacity)
            changeCapacity(n);
        data[n] = 0;
        length = n;
        return *this;
    }
    /// Sets every character to `c`; the length stays.
    OCWideString& fill(wchar_t c) noexcept;

    /// The number of characters, without the terminator.
    unsigned long getLength() const { return length; }
    /// The number of characters that the storage holds, the terminator counted.
    unsigned long getCapacity() const { return capacity; }
    /// The characters with a terminating zero, valid until the next change of the string.
    const wchar_t* getString() const { return data; }
    wchar_t* getString() { return data; }
    /// The character at `index`.
    /// @throws OXString_NoSuchIndex when `index` is not below the length.
    wchar_t operator[](unsigned long index) const {
        if (index >= length)
            throwNoSuchIndex(index);
        return data[index];
    }
    wchar_t& operator[](unsigned long index) {
        if (index >= length)
            throwNoSuchIndex(index);
        return data[index];
    }

    /// Append a text.
    /// @throws OXMemory_AllocationError
    OCWideString& append(wchar_t c) {
        const unsigned long last = length;
        setLength(last + 1);
        data[last] = c;
        return *this;
    }
    OCWideString& append(const wchar_t* text);
    OCWideString& append(const wchar_t* text, unsigned long count);
    OCWideString& append(const OCWideString& text) { return append(text.data, text.length); }
    OCWideString& operator+=(const OCWideString& text) { return append(text); }
    OCWideString& operator+=(const wchar_t* text) { return append(text); }
    OCWideString& operator+=(wchar_t c) { return append(c); }
    /// A new string: this one with `other` appended.
    OCWideString concat(const OCWideString& other) const;
    OCWideString operator+(const OCWideString& text) const { return concat(text); }

    /// Inserts `text` before `position`.
    ///
    /// Note: `position` must be below the length; at the end, use `append`.
    /// @throws OXString_NoSuchIndex (also for an empty `text`), OXMemory_AllocationError
    OCWideString& insert(unsigned long position, const OCWideString& text);
    /// Inserts `text` at the front, also of an empty string.
    /// @throws OXMemory_AllocationError
    OCWideString& insert(const OCWideString& text);

    /// Keeps the first `n` characters, or all if there are fewer.
    OCWideString& left(unsigned long n) noexcept;
    /// Keeps the last `n` characters, or all if there are fewer.
    ///
    /// Note: on an empty string every `n` but 0 is refused.
    /// @throws OXString_NoSuchIndex for index 0.
    OCWideString& right(unsigned long n);
    /// Keeps up to `n` characters from `position` on.
    /// @throws OXString_NoSuchIndex when `position` is not below the length.
    OCWideString& mid(unsigned long position, unsigned long n);
    /// Removes up to `n` characters from `position` on.
    /// @throws OXString_NoSuchIndex when `position` is not below the length.
    OCWideString& remove(unsigned long position, unsigned long n);

    /// Remove blanks at one end or both: all characters whose signed value is at most 32.
    ///
    /// Note: widened bytes from 128 to 255 are negative and so count as blanks, unlike in the
    /// narrow string.
    OCWideString& trimLeft() noexcept;
    OCWideString& trimRight() noexcept;
    OCWideString& trim() noexcept;
    /// Put copies of `c` in front of or behind the text until it has `width` characters. A longer
    /// text stays as it is.
    /// @throws OXMemory_AllocationError
    OCWideString& padLeft(wchar_t c, unsigned long width);
    OCWideString& padRight(wchar_t c, unsigned long width);
    /// Turn the ASCII letters into lower or upper case.
    OCWideString& lowerCase() noexcept;
    OCWideString& upperCase() noexcept;

    /// Orders two strings character by character, a prefix before the longer string.
    ///
    /// Note: characters count as signed, so widened bytes from 128 to 255 come before all others.
    OECompareResult compare(const OCWideString& other,
                            OEStringCase sense = StringCaseSensitive) const;
    bool operator==(const OCWideString& other) const {
        return length == other.length &&
               std::memcmp(data, other.data, length * sizeof(wchar_t)) == 0;
    }
    bool operator!=(const OCWideString& other) const { return !(*this == other); }
    bool operator<(const OCWideString& other) const { return compare(other) < 0; }
    bool operator<=(const OCWideString& other) const { return compare(other) <= 0; }
    bool operator>(const OCWideString& other) const { return compare(other) > 0; }
    bool operator>=(const OCWideString& other) const { return compare(other) >= 0; }

    /// Look for the first occurrence: true and its index in `position`, or false with `position`
    /// untouched. An empty text is never found. The time is linear.
    bool indexOf(wchar_t c, unsigned long& position,
                 OEStringCase sense = StringCaseSensitive) const;
    bool indexOf(const OCWideString& text, unsigned long& position,
                 OEStringCase sense = StringCaseSensitive) const;
    bool contains(wchar_t c, OEStringCase sense = StringCaseSensitive) const;
    bool contains(const OCWideString& text, OEStringCase sense = StringCaseSensitive) const;
    /// Replaces every occurrence of `from`, from the left, without overlaps; what was put in is not
    /// looked at again. An empty `from` changes nothing.
    /// @throws OXMemory_AllocationError
    OCWideString& replace(const OCWideString& from, const OCWideString& to,
                          OEStringCase sense = StringCaseSensitive);

private:
    void initialize(unsigned long n);
    [[gnu::noinline]] OCWideString& assignBlock(const wchar_t* text, unsigned long count);
    [[gnu::noinline]] OCWideString& appendGrowing(const wchar_t* text, unsigned long count);
    void changeCapacity(unsigned long n);
    [[gnu::visibility("hidden")]] void keepStorage(unsigned long newCapacity,
                                                   unsigned long n) noexcept;
    [[gnu::visibility("hidden")]] OCWideString& shorten(unsigned long n) noexcept;
    void releaseBlock() noexcept;
    void takeFrom(OCWideString& other) noexcept;
    void replaceShrinking(const OCWideString& from, const OCWideString& to,
                          OEStringCase sense) noexcept;
    void replaceGrowing(const OCWideString& from, const OCWideString& to, OEStringCase sense);

    template<typename Text>
    using NarrowText = std::enable_if_t<std::is_base_of_v<OCAnsiString, Text> ||
                                            std::is_same_v<std::decay_t<Text>, char*> ||
                                            std::is_same_v<std::decay_t<Text>, const char*>,
                                        int>;
    static OECompareResult compareMixed(const OCWideString& left, const OCAnsiString& right);
    static OECompareResult compareMixed(const OCAnsiString& left, const OCWideString& right);

    // A wide and a narrow string compare as strings of the class on the left.

    template<typename Text, NarrowText<Text> = 0>
    friend bool operator==(const OCWideString& left, const Text& right) {
        return compareMixed(left, right) == 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator!=(const OCWideString& left, const Text& right) {
        return compareMixed(left, right) != 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator<(const OCWideString& left, const Text& right) {
        return compareMixed(left, right) < 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator<=(const OCWideString& left, const Text& right) {
        return compareMixed(left, right) <= 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator>(const OCWideString& left, const Text& right) {
        return compareMixed(left, right) > 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator>=(const OCWideString& left, const Text& right) {
        return compareMixed(left, right) >= 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator==(const Text& left, const OCWideString& right) {
        return compareMixed(left, right) == 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator!=(const Text& left, const OCWideString& right) {
        return compareMixed(left, right) != 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator<(const Text& left, const OCWideString& right) {
        return compareMixed(left, right) < 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator<=(const Text& left, const OCWideString& right) {
        return compareMixed(left, right) <= 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator>(const Text& left, const OCWideString& right) {
        return compareMixed(left, right) > 0;
    }
    template<typename Text, NarrowText<Text> = 0>
    friend bool operator>=(const Text& left, const OCWideString& right) {
        return compareMixed(left, right) >= 0;
    }

    unsigned long granularity;
    unsigned long capacity;
    unsigned long length;
    wchar_t localBuffer[128];
    wchar_t* data;
};

ORVABASE_EXPORT OCWideString operator+(const wchar_t* left, const OCWideString& right);

ORVABASE_EXPORT bool operator==(const wchar_t* left, const OCWideString& right);
ORVABASE_EXPORT bool operator!=(const wchar_t* left, const OCWideString& right);
ORVABASE_EXPORT bool operator<(const wchar_t* left, const OCWideString& right);
ORVABASE_EXPORT bool operator<=(const wchar_t* left, const OCWideString& right);
ORVABASE_EXPORT bool operator>(const wchar_t* left, const OCWideString& right);
ORVABASE_EXPORT bool operator>=(const wchar_t* left, const OCWideString& right);

#endif
