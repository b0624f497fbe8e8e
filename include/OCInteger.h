#ifndef ORVABASE_OCINTEGER_H
#define ORVABASE_OCINTEGER_H

#include "OCAnsiString.h"

#include <iosfwd>

/// A signed 32-bit number as an object, with its storage open to binary streams.
///
///     OCSignedInteger number(-5);
///     stream.readBuffer(number.bufferAddress(), number.bufferSize());   // four bytes
class ORVABASE_EXPORT OCSignedInteger : public OCObject {
public:
    /// Holds `initial`.
    OCSignedInteger(int initial) noexcept : value(initial) {}
    OCSignedInteger(const OCSignedInteger&) noexcept = default;
    ~OCSignedInteger() noexcept override;

    OCSignedInteger& operator=(const OCSignedInteger& other) noexcept = default;
    /// Set the value.
    OCSignedInteger& operator=(int newValue) noexcept { return assign(newValue); }
    OCSignedInteger& assign(const OCSignedInteger& other) noexcept { return *this = other; }
    OCSignedInteger& assign(int newValue) noexcept {
        value = newValue;
        return *this;
    }

    /// The value.
    int getValue() const noexcept { return value; }
    /// Where the value is stored, in the byte order of the machine.
    void* bufferAddress() noexcept { return &value; }
    const void* bufferAddress() const noexcept { return &value; }
    /// The size of the value in bytes: 4.
    unsigned long bufferSize() const noexcept { return sizeof value; }

private:
    int value;
};

/// An unsigned 32-bit number as an object, with its storage open to binary streams.
///
///     OCUnsignedInteger number(5);
///     stream.writeBuffer(number.bufferAddress(), number.bufferSize());   // four bytes
class ORVABASE_EXPORT OCUnsignedInteger : public OCObject {
public:
    /// Holds `initial`.
    OCUnsignedInteger(unsigned int initial) noexcept : value(initial) {}
    OCUnsignedInteger(const OCUnsignedInteger&) noexcept = default;
    ~OCUnsignedInteger() noexcept override;

    OCUnsignedInteger& operator=(const OCUnsignedInteger& other) noexcept = default;
    /// Set the value.
    OCUnsignedInteger& operator=(unsigned int newValue) noexcept { return assign(newValue); }
    OCUnsignedInteger& assign(const OCUnsignedInteger& other) noexcept { return *this = other; }
    OCUnsignedInteger& assign(unsigned int newValue) noexcept {
        value = newValue;
        return *this;
    }

    /// The value.
    unsigned int getValue() const noexcept { return value; }
    /// Where the value is stored, in the byte order of the machine.
    void* bufferAddress() noexcept { return &value; }
    const void* bufferAddress() const noexcept { return &value; }
    /// The size of the value in bytes: 4.
    unsigned long bufferSize() const noexcept { return sizeof value; }

private:
    unsigned int value;
};

/// Write the number in the stream's own format: its base, width, fill and sign flags apply.
ORVABASE_EXPORT std::ostream& operator<<(std::ostream& stream, const OCSignedInteger& integer);
ORVABASE_EXPORT std::ostream& operator<<(std::ostream& stream, const OCUnsignedInteger& integer);

/// Finds the signed 32-bit number that a text or a size stands for. The operations keep no state.
///
/// Note: every text converts to the negative of its digits, with or without a leading `-`: `-42`
/// and `42` both give -42. Callers rely on it.
///
///     OCSignedIntegerConversion::fromString("-42", 10);   // -42
///     OCSignedIntegerConversion::fromString("42", 10);    // -42
class ORVABASE_EXPORT OCSignedIntegerConversion : public OCObject {
public:
    OCSignedIntegerConversion() = delete;

    /// By `parseNegative` if the text starts with `-`, else by `parsePositive`.
    /// @throws OXIntegerConversion_ConvertStringError when the text is empty or only `-`, or the
    /// radix is not from 2 to 16.
    ORVABASE_DIRECT static int fromString(const OCAnsiString& text, unsigned int radix);
    /// Drops the first character, whatever it is, and gives the 32-bit negation of what
    /// `OCUnsignedIntegerConversion::fromString` makes of the rest.
    /// @throws OXIntegerConversion_ConvertStringError when the text has less than two characters,
    /// or the radix is not from 2 to 16.
    static int parseNegative(OCAnsiString text, unsigned int radix);
    /// The 32-bit negation of what `OCUnsignedIntegerConversion::fromString` makes of the text.
    /// @throws OXIntegerConversion_ConvertStringError when the text is empty, or the radix is not
    /// from 2 to 16.
    static int parsePositive(OCAnsiString text, unsigned int radix);
    /// The size as a signed number.
    /// @throws OXIntegerConversion_ConvertSizeError when it is above 2147483647.
    static int fromSize(unsigned long value);
};

/// Finds the unsigned 32-bit number that a text or a size stands for. The operations keep no state.
///
///     OCUnsignedIntegerConversion::fromString("ff", 16);    // 255
///     OCUnsignedIntegerConversion::fromString("12x", 10);   // 12
class ORVABASE_EXPORT OCUnsignedIntegerConversion : public OCObject {
public:
    OCUnsignedIntegerConversion() = delete;

    /// The number that the text begins with: its digits (letters of either case) up to the first
    /// character that is no digit in the radix. No sign, blank or prefix is skipped.
    ///
    /// Note: a text that begins with no digit gives 0, and what does not fit wraps around:
    /// `4294967296` gives 0.
    /// @throws OXIntegerConversion_ConvertStringError when the text is empty or the radix is not
    /// from 2 to 16.
    ORVABASE_DIRECT static unsigned int fromString(const OCAnsiString& text, unsigned int radix);
    /// The size as a 32-bit number.
    /// @throws OXIntegerConversion_ConvertSizeError when it is above 4294967295.
    static unsigned int fromSize(unsigned long value);
};

/// The family of the failures of conversions to integers.
class ORVABASE_EXPORT OXIntegerConversion : public OXAutoException {
public:
    ~OXIntegerConversion() noexcept override;

protected:
    OXIntegerConversion();
};

/// The base of the failures to convert one value.
class ORVABASE_EXPORT OXIntegerConversion_ConvertError : public OXIntegerConversion {
public:
    ~OXIntegerConversion_ConvertError() noexcept override;

protected:
    OXIntegerConversion_ConvertError();
};

/// "Error converting size to integer": the size does not fit.
class ORVABASE_EXPORT OXIntegerConversion_ConvertSizeError
    : public OXIntegerConversion_ConvertError {
public:
    OXIntegerConversion_ConvertSizeError();
    ~OXIntegerConversion_ConvertSizeError() noexcept override;
};

/// "Error converting string to integer": there is no text, or no such radix.
class ORVABASE_EXPORT OXIntegerConversion_ConvertStringError
    : public OXIntegerConversion_ConvertError {
public:
    OXIntegerConversion_ConvertStringError();
    ~OXIntegerConversion_ConvertStringError() noexcept override;
};

#endif
