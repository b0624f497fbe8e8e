#ifndef ORVABASE_OCUNIQUEIDENTIFIER_H
#define ORVABASE_OCUNIQUEIDENTIFIER_H

#include "OXException.h"

/// The 16 bytes of an identifier. The numbers are held in the machine's byte order.
struct OSUniqueIdentifier {
    unsigned int data1;     ///< the first group of the text, 8 digits
    unsigned short data2;   ///< the second group, 4 digits
    unsigned short data3;   ///< the third group, 4 digits
    unsigned char data4[8]; ///< the fourth group (two bytes) and the fifth one (six bytes)
};

/// An identifier of 16 bytes with the text form of RFC 4122: hexadecimal digits in groups of 8, 4,
/// 4, 4 and 12.
///
/// It reads, writes and compares identifiers; it does not generate any. A value: copies are
/// independent. For use by one thread at a time.
///
///     OCUniqueIdentifier identifier;
///     identifier.setText("0123ABCD-4567-89ab-CDEF-0123456789ab");
///     identifier.getText();                 // 0123abcd-4567-89ab-cdef-0123456789ab
///     identifier.getStructure().data2;      // 0x4567
class ORVABASE_EXPORT OCUniqueIdentifier : public OCObject {
public:
    /// All 16 bytes zero.
    OCUniqueIdentifier() noexcept : identifier() {}
    OCUniqueIdentifier(const OCUniqueIdentifier& other) noexcept
        : OCObject(other), identifier(other.identifier) {}
    /// The identifier of these bytes.
    OCUniqueIdentifier(const OSUniqueIdentifier& structure) noexcept : identifier(structure) {}
    ~OCUniqueIdentifier() noexcept override;

    OCUniqueIdentifier& operator=(const OCUniqueIdentifier& other) noexcept {
        return assign(other);
    }
    /// Replaces all 16 bytes.
    OCUniqueIdentifier& operator=(const OSUniqueIdentifier& structure) noexcept {
        return assign(structure);
    }
    /// Replace all 16 bytes.
    OCUniqueIdentifier& assign(const OCUniqueIdentifier& other) noexcept {
        return assign(other.identifier);
    }
    OCUniqueIdentifier& assign(const OSUniqueIdentifier& structure) noexcept {
        identifier = structure;
        return *this;
    }

    /// Sets all 16 bytes to zero.
    void clear() noexcept { identifier = OSUniqueIdentifier(); }
    /// Whether any of the 16 bytes is not zero.
    bool isAssigned() const noexcept;

    /// Orders by the 16 bytes as they lie in memory.
    ///
    /// Note: this is not the order of the texts. The numbers of the first three groups lie with
    /// their lowest byte first.
    OECompareResult compare(const OCUniqueIdentifier& other) const noexcept;
    bool operator==(const OCUniqueIdentifier& other) const noexcept {
        return compare(other) == CompareResultEqual;
    }

    /// The bytes themselves, for reading and writing.
    OSUniqueIdentifier& getStructure() noexcept { return identifier; }
    const OSUniqueIdentifier& getStructure() const noexcept { return identifier; }

    /// The 36 characters of the text form, with lower-case digits. Nothing is allocated.
    OCAnsiString getText() const;
    /// Takes the value from a text.
    /// @throws OXUniqueIdentifier_MalformedString when `validateText` refuses the text; the value
    /// stays as it was.
    void setText(const OCAnsiString& text);
    /// Whether `text` is exactly 36 characters, `-` at 8, 13, 18 and 23 (counted from 0) and
    /// hexadecimal digits of either case elsewhere. No blanks, no braces. The time does not depend
    /// on the length.
    static bool validateText(const OCAnsiString& text) noexcept;

    /// @name The groups of the text one by one
    ///
    /// 8 digits, 4, 4, and the rest from position 19 on: 4 digits, `-`, 12 digits.
    /// @{
    OCAnsiString getTextData1() const;
    OCAnsiString getTextData2() const;
    OCAnsiString getTextData3() const;
    OCAnsiString getTextData4() const;
    /// @}

    /// @name Setting one field from its group in a full text
    ///
    /// `text` has all 36 characters; the other fields of `structure` stay as they are.
    /// @throws OXUniqueIdentifier_MalformedString when `validateText` refuses the text; the
    /// structure stays as it was.
    /// @{
    static void setTextData1(OSUniqueIdentifier& structure, const OCAnsiString& text);
    static void setTextData2(OSUniqueIdentifier& structure, const OCAnsiString& text);
    static void setTextData3(OSUniqueIdentifier& structure, const OCAnsiString& text);
    static void setTextData4(OSUniqueIdentifier& structure, const OCAnsiString& text);
    /// @}

private:
    OSUniqueIdentifier identifier;
};

/// The family of the identifier's failures.
class ORVABASE_EXPORT OXUniqueIdentifier : public OXAutoException {
public:
    ~OXUniqueIdentifier() noexcept override;

protected:
    OXUniqueIdentifier();
};

/// "The unique identifier is malformed".
class ORVABASE_EXPORT OXUniqueIdentifier_MalformedString : public OXUniqueIdentifier {
public:
    OXUniqueIdentifier_MalformedString();
    ~OXUniqueIdentifier_MalformedString() noexcept override;
};

#endif
