#ifndef ORVABASE_OCBOOLEAN_H
#define ORVABASE_OCBOOLEAN_H

#include "OCAnsiString.h"

#include <iosfwd>

/// A truth value as an object, with its storage open to binary streams.
///
///     OCBoolean flag(true);
///     stream.writeBuffer(flag.bufferAddress(), flag.bufferSize());   // one byte, 1
///     std::cout << flag;                                             // true
class ORVABASE_EXPORT OCBoolean : public OCObject {
public:
    /// Holds `initial`.
    OCBoolean(bool initial) noexcept : value(initial) {}
    OCBoolean(const OCBoolean&) noexcept = default;
    ~OCBoolean() noexcept override;

    OCBoolean& operator=(const OCBoolean& other) noexcept = default;
    /// Set the value.
    OCBoolean& operator=(bool newValue) noexcept { return assign(newValue); }
    OCBoolean& assign(const OCBoolean& other) noexcept { return *this = other; }
    OCBoolean& assign(bool newValue) noexcept {
        value = newValue;
        return *this;
    }

    /// Whether the values are the same.
    bool operator==(const OCBoolean& other) const noexcept { return value == other.value; }

    /// The value.
    bool getValue() const noexcept { return value; }
    /// Where the value is stored. Bytes that are put there must be 0 or 1.
    void* bufferAddress() noexcept { return &value; }
    const void* bufferAddress() const noexcept { return &value; }
    /// The size of the value in bytes: 1.
    unsigned long bufferSize() const noexcept { return sizeof value; }

private:
    bool value;
};

/// Writes `true` or `false`, whatever the stream's `boolalpha`.
ORVABASE_EXPORT std::ostream& operator<<(std::ostream& stream, const OCBoolean& boolean);

/// Finds the truth value that a text means.
///
/// The whole text counts, without regard to the case of its letters; blanks are not skipped. The
/// operations keep no state.
///
///     OCBooleanConversion::fromString("Yes");    // true
///     OCBooleanConversion::fromString("0");      // false
///     OCBooleanConversion::fromString(" yes");   // throws
class ORVABASE_EXPORT OCBooleanConversion : public OCObject {
public:
    OCBooleanConversion() = delete;

    /// Whether the text is `true`, `1`, `y` or `yes`.
    static bool meansTrue(const OCAnsiString& text);
    /// Whether the text is `false`, `0`, `n` or `no`.
    static bool meansFalse(const OCAnsiString& text);
    /// The truth value that the text means.
    /// @throws OXBooleanConversion_ConvertStringError when it means neither.
    static bool fromString(const OCAnsiString& text);
};

/// The family of the failures of conversions to truth values.
class ORVABASE_EXPORT OXBooleanConversion : public OXAutoException {
public:
    ~OXBooleanConversion() noexcept override;

protected:
    OXBooleanConversion();
};

/// The base of the failures to convert one value.
class ORVABASE_EXPORT OXBooleanConversion_ConvertError : public OXBooleanConversion {
public:
    ~OXBooleanConversion_ConvertError() noexcept override;

protected:
    OXBooleanConversion_ConvertError();
};

/// "Error converting string to boolean": the text means neither true nor false.
class ORVABASE_EXPORT OXBooleanConversion_ConvertStringError
    : public OXBooleanConversion_ConvertError {
public:
    OXBooleanConversion_ConvertStringError();
    ~OXBooleanConversion_ConvertStringError() noexcept override;
};

#endif
