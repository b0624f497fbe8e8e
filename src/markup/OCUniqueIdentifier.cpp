#include "OCUniqueIdentifier.h"

#include "OCMemory.h"
#include "core/OCHexDigits.h"

#include <cstring>

namespace {

using orvabase::hexDigitsOf;
using orvabase::hexValueOf;

constexpr unsigned long textLength = 36;
constexpr unsigned long data4Begin = 19;
constexpr unsigned long data4Length = textLength - data4Begin;

static_assert(sizeof(OSUniqueIdentifier) == 16, "16 bytes without gaps");

/// Bytes as a number, the first one highest.
unsigned int bigEndian(const unsigned char* bytes) noexcept {
    unsigned int value;
    std::memcpy(&value, bytes, sizeof value);
    return __builtin_bswap32(value);
}

void setBigEndian(unsigned char* bytes, unsigned int value) noexcept {
    value = __builtin_bswap32(value);
    std::memcpy(bytes, &value, sizeof value);
}

/// Writes eight digits in two halves.
void putDigits(char* first, char* second, unsigned int value) noexcept {
    const unsigned long digits = hexDigitsOf(value);
    std::memcpy(first, &digits, 4);
    const unsigned long rest = digits >> 32;
    std::memcpy(second, &rest, 4);
}

bool getDigits(const char* first, const char* second, unsigned int& value) noexcept {
    unsigned int low;
    unsigned int high;
    std::memcpy(&low, first, 4);
    std::memcpy(&high, second, 4);
    return hexValueOf(static_cast<unsigned long>(high) << 32 | low, value);
}

/// Writes the fourth and the fifth group with the `-` between them.
void putData4(char* to, const unsigned char* data4) noexcept {
    putDigits(to, to + 5, bigEndian(data4));
    to[4] = '-';
    putDigits(to + 9, to + 13, bigEndian(data4 + 4));
}

/// Reads a whole text. False, with `identifier` undefined, when it is malformed.
bool parseText(const OCAnsiString& text, OSUniqueIdentifier& identifier) noexcept {
    if (text.getLength() != textLength)
        return false;
    const char* const t = text.getString();
    if (t[8] != '-' || t[13] != '-' || t[18] != '-' || t[23] != '-')
        return false;
    unsigned int middle;
    unsigned int front;
    unsigned int back;
    if (!getDigits(t, t + 4, identifier.data1) || !getDigits(t + 9, t + 14, middle) ||
        !getDigits(t + 19, t + 24, front) || !getDigits(t + 28, t + 32, back))
        return false;
    identifier.data2 = static_cast<unsigned short>(middle >> 16);
    identifier.data3 = static_cast<unsigned short>(middle & 0xFFFF);
    setBigEndian(identifier.data4, front);
    setBigEndian(identifier.data4 + 4, back);
    return true;
}

OSUniqueIdentifier parsed(const OCAnsiString& text) {
    OSUniqueIdentifier identifier;
    if (!parseText(text, identifier))
        throw OXUniqueIdentifier_MalformedString();
    return identifier;
}

/// The last `count` of the eight digits of `value`.
OCAnsiString digitText(unsigned int value, unsigned long count) {
    const unsigned long digits = hexDigitsOf(value) >> 8 * (orvabase::hexDigitCount - count);
    OCAnsiString text;
    text.setLength(count);
    std::memcpy(text.getString(), &digits, count);
    return text;
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
    OCAnsiString text;
    text.setLength(textLength);
    char* const t = text.getString();
    putDigits(t, t + 4, identifier.data1);
    t[8] = '-';
    putDigits(t + 9, t + 14, static_cast<unsigned int>(identifier.data2) << 16 | identifier.data3);
    t[13] = '-';
    t[18] = '-';
    putData4(t + data4Begin, identifier.data4);
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
    return digitText(identifier.data1, 8);
}

OCAnsiString OCUniqueIdentifier::getTextData2() const {
    return digitText(identifier.data2, 4);
}

OCAnsiString OCUniqueIdentifier::getTextData3() const {
    return digitText(identifier.data3, 4);
}

OCAnsiString OCUniqueIdentifier::getTextData4() const {
    OCAnsiString text;
    text.setLength(data4Length);
    putData4(text.getString(), identifier.data4);
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
