#ifndef ORVABASE_OCSTRINGCONVERSION_H
#define ORVABASE_OCSTRINGCONVERSION_H

#include "OCAnsiString.h"

/// Turns numbers and truth values into text.
///
/// Numbers are written in a radix from 2 to 16 with the digits `0123456789abcdef`: no prefix, no
/// padding, a leading `-` for a negative value, `0` for zero. The texts are short and stay inside
/// the string object: nothing is allocated. The way back is `OCSignedIntegerConversion`,
/// `OCUnsignedIntegerConversion` and `OCBooleanConversion`. The operations keep no state and may be
/// used by any thread.
///
/// Note: a radix outside 2 to 16 is a mistake of the caller's; the number is written in radix 10.
///
///     OCStringConversion::fromInteger(-255, 16);   // -ff
///     OCStringConversion::fromSize(4096, 10);      // 4096
///     OCStringConversion::fromBoolean(true);       // true
class ORVABASE_EXPORT OCStringConversion : public OCObject {
public:
    OCStringConversion() = delete;

    /// `true` or `false`.
    static OCAnsiString fromBoolean(bool value);
    /// `value` in `radix`; `-` stands before the digits of a negative one. Every value has a text,
    /// the most negative one too.
    ORVABASE_DIRECT static OCAnsiString fromInteger(int value, unsigned int radix);
    /// `value` in `radix`.
    ORVABASE_DIRECT static OCAnsiString fromInteger(unsigned int value, unsigned int radix);
    ORVABASE_DIRECT static OCAnsiString fromSize(unsigned long value, unsigned int radix);
};

#endif
