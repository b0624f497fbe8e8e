#include "OCUniqueIdentifier.h"

#include "OCMemory.h"
#include "core/OCKernelHex.h"

#include <cstring>

namespace {

namespace kernels = orvabase::kernels;

constexpr unsigned long textLength = 36;
constexpr unsigned long data4Begin = 19;
constexpr unsigned long data4Length = textLength - data4Begin;

static_assert(sizeof(OSUniqueIdentifier) == 16, "16 bytes without gaps");

/// Four characters as the half of a word.
unsigned long half(const char* text) noexcept {
    unsigned int characters = 0;
    std::memcpy(&characters, text, sizeof characters);
    return characters;
}

unsigned long joined(const char* first, const char* second) noexcept {
    return half(first) | half(second) << 32;
}

/// The digits of an identifier without the `-` between the groups.
struct Digits {
    explicit Digits(const OSUniqueIdentifier& identifier) noexcept {
        // The digits of a number begin with its highest byte. The bytes are put together in a
        // register, for reading a whole word where its parts have just been stored would wait.
        const unsigned long front =
            __builtin_bswap32(identifier.data1) |
            static_cast<unsigned long>(__builtin_bswap16(identifier.data2)) << 32 |
            static_cast<unsigned long>(__builtin_bswap16(identifier.data3)) << 48;
        unsigned long back = 0;
        std::memcpy(&back, identifier.data4, sizeof back);
        kernels::hexDigitsOf(front, back, words);
    }

    void putData1(char* to) const noexcept { std::memcpy(to, &words[0], 8); }
    void putData2(char* to) const noexcept { std::memcpy(to, &words[1], 4); }
    void putData3(char* to) const noexcept { putUpper(to, words[1]); }
    /// Writes the fourth and the fifth group with the `-` between them.
    void putData4(char* to) const noexcept {
        std::memcpy(to, &words[2], 4);
        to[4] = '-';
        putUpper(to + 5, words[2]);
        std::memcpy(to + 9, &words[3], 8);
    }

    unsigned long words[kernels::hexWordCount];

private:
    static void putUpper(char* to, unsigned long word) noexcept {
        word >>= 32;
        std::memcpy(to, &word, 4);
    }
};

/// Reads a whole text. False, with `identifier` undefined, when it is malformed.
bool parseText(const OCAnsiString& text, OSUniqueIdentifier& identifier) noexcept {
    if (text.getLength() != textLength)
        return false;
    const char* const t = text.getString();
    if (t[8] != '-' || t[13] != '-' || t[18] != '-' || t[23] != '-')
        return false;
    const unsigned long digits[kernels::hexWordCount] = {
        joined(t, t + 4), joined(t + 9, t + 14), joined(t + 19, t + 24), joined(t + 28, t + 32)};
    unsigned long front = 0;
    unsigned long back = 0;
    if (!kernels::hexBytesOf(digits, front, back))
        return false;
    identifier.data1 = __builtin_bswap32(static_cast<unsigned int>(front));
    identifier.data2 = __builtin_bswap16(static_cast<unsigned short>(front >> 32));
    identifier.data3 = __builtin_bswap16(static_cast<unsigned short>(front >> 48));
    std::memcpy(identifier.data4, &back, sizeof back);
    return true;
}

OSUniqueIdentifier parsed(const OCAnsiString& text) {
    OSUniqueIdentifier identifier;
    if (!parseText(text, identifier))
        throw OXUniqueIdentifier_MalformedString();
    return identifier;
}

} // namespace

OXUniqueIdentifier::OXUniqueIdentifier() = default;
OXUniqueIdentifier::~OXUniqueIdentifier() noexcept = default;

OXUniqueIdentifier_MalformedString::OXUniqueIdentifier_MalformedString() {
    setClass("OXUniqueIdentifier_MalformedString");
    setMessage("The unique identifier is malformed");
}
OXUniqueIdentifier_MalformedString::~OXUniqueIdentifier_MalformedString() noexcept = default;

OCUniqueIdentifier::~OCUniqueIdentifier() noexcept = default;

bool OCUniqueIdentifier::isAssigned() const noexcept {
    return !(*this == OCUniqueIdentifier());
}

OECompareResult OCUniqueIdentifier::compare(const OCUniqueIdentifier& other) const noexcept {
    return memoryCompare(&identifier, &other.identifier, sizeof identifier);
}

OCAnsiString OCUniqueIdentifier::getText() const {
    const Digits digits(identifier);
    OCAnsiString text;
    text.setLength(textLength);
    char* const t = text.getString();
    digits.putData1(t);
    t[8] = '-';
    digits.putData2(t + 9);
    t[13] = '-';
    digits.putData3(t + 14);
    t[18] = '-';
    digits.putData4(t + data4Begin);
    return text;
}

void OCUniqueIdentifier::setText(const OCAnsiString& text) {
    identifier = parsed(text);
}

bool OCUniqueIdentifier::validateText(const OCAnsiString& text) noexcept {
    OSUniqueIdentifier ignored;
    return parseText(text, ignored);
}

OCAnsiString OCUniqueIdentifier::getTextData1() const {
    OCAnsiString text;
    text.setLength(8);
    Digits(identifier).putData1(text.getString());
    return text;
}

OCAnsiString OCUniqueIdentifier::getTextData2() const {
    OCAnsiString text;
    text.setLength(4);
    Digits(identifier).putData2(text.getString());
    return text;
}

OCAnsiString OCUniqueIdentifier::getTextData3() const {
    OCAnsiString text;
    text.setLength(4);
    Digits(identifier).putData3(text.getString());
    return text;
}

OCAnsiString OCUniqueIdentifier::getTextData4() const {
    OCAnsiString text;
    text.setLength(data4Length);
    Digits(identifier).putData4(text.getString());
    return text;
}

void OCUniqueIdentifier::setTextData1(OSUniqueIdentifier& structure, const OCAnsiString& text) {
    structure.data1 = parsed(text).data1;
}

void OCUniqueIdentifier::setTextData2(OSUniqueIdentifier& structure, const OCAnsiString& text) {
    structure.data2 = parsed(text).data2;
}

void OCUniqueIdentifier::setTextData3(OSUniqueIdentifier& structure, const OCAnsiString& text) {
    structure.data3 = parsed(text).data3;
}

void OCUniqueIdentifier::setTextData4(OSUniqueIdentifier& structure, const OCAnsiString& text) {
    const OSUniqueIdentifier identifier = parsed(text);
    std::memcpy(structure.data4, identifier.data4, sizeof structure.data4);
}
