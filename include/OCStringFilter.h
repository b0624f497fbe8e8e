#ifndef ORVABASE_OCSTRINGFILTER_H
#define ORVABASE_OCSTRINGFILTER_H

#include "OCStreamReader.h"
#include "OCStreamWriter.h"
#include "OCWideString.h"

/// What becomes of a character outside a filter's repertoire while a text is read: it is replaced
/// by the filter's mask byte, skipped, or refused by an exception. Any other value ends reading
/// there. Writing always replaces.
enum OEStringFilterMode : int {
    StringFilterModeReplace = 0,
    StringFilterModeSkip = 1,
    StringFilterModeRefuse = 2
};

/// Reads a text from a stream or writes one to it, a byte a character, and lets through only the
/// characters of one repertoire.
///
/// The library's filters are for the repertoires of the string types of ITU-T X.680. They apply no
/// encoding. A filter of an application derives from this class or from one of them; it says what
/// becomes of one character, and the operations for whole texts call it for each. A filter keeps no
/// state but its mode; several threads may use one at the same time, with streams of their own.
///
///     OCPrintableStringFilter filter(StringFilterModeReplace);
///     OCMemoryStream stream("a*b", 3);
///     filter.readAnsi(stream);           // a.b
///     filter.writeAnsi(stream, "\tend");  // appends .end
class ORVABASE_EXPORT OCAbstractStringFilter : public OCObject {
public:
    /// A filter of that mode.
    explicit OCAbstractStringFilter(OEStringFilterMode filterMode) noexcept : mode(filterMode) {}
    ~OCAbstractStringFilter() override;

    /// Read one character of a text: 1 when it was stored in `c`, 0 when it produces nothing, and
    /// 0xFFFFFFFF at the end of the text. Only the result 1 changes `c`.
    /// @throws what the filter and the stream throw.
    virtual unsigned int readCodeAnsi(OCStreamReader& reader, char* c) const = 0;
    virtual unsigned int readCodeWide(OCStreamReader& reader, wchar_t* c) const = 0;
    /// Write one character of a text.
    /// @throws what the stream throws.
    virtual void writeCodeAnsi(OCStreamWriter& writer, char c) const = 0;
    virtual void writeCodeWide(OCStreamWriter& writer, wchar_t c) const = 0;

    /// The mode given to the constructor.
    OEStringFilterMode getMode() const { return mode; }

    /// Read characters, one after the other, until the filter ends the text. A result other than
    /// 0, 1 and the end produces nothing.
    ///
    /// The stream is left behind the last character that the filter has read, if it can seek; also
    /// by an exception, behind the character that caused it. What was read before an exception is
    /// dropped.
    /// @throws OXStringFilter_DecodeError, OXMemory_AllocationError; exceptions of the stream pass
    /// through.
    OCAnsiString readAnsi(OCStream& stream) const;
    OCWideString readWide(OCStream& stream) const;
    /// Write the characters of `text`, one after the other, with writes of 4096 bytes. All is
    /// written when they return.
    ///
    /// Note: when an exception of the stream leaves, what was waiting is tried once more.
    /// @throws OXMemory_AllocationError; exceptions of the stream pass through.
    void writeAnsi(OCStream& stream, const OCAnsiString& text) const;
    void writeWide(OCStream& stream, const OCWideString& text) const;

private:
    OEStringFilterMode mode;
};

/// The filter of OctetString: every byte is valid, so the mode says nothing. A wide character that
/// is no byte is written as `.`.
class ORVABASE_EXPORT OCOctetStringFilter : public OCAbstractStringFilter {
public:
    /// A filter of that mode.
    explicit OCOctetStringFilter(OEStringFilterMode filterMode) noexcept
        : OCAbstractStringFilter(filterMode) {}
    ~OCOctetStringFilter() override;

    unsigned int readCodeAnsi(OCStreamReader& reader, char* c) const override;
    /// Note: the byte is sign-extended: 233 becomes -23.
    unsigned int readCodeWide(OCStreamReader& reader, wchar_t* c) const override;
    /// Write the character; a wide one that is no byte becomes `.`.
    void writeCodeAnsi(OCStreamWriter& writer, char c) const override;
    void writeCodeWide(OCStreamWriter& writer, wchar_t c) const override;
};

/// The filter of T61String: the same as that of OctetString.
class ORVABASE_EXPORT OCT61StringFilter : public OCOctetStringFilter {
public:
    /// A filter of that mode.
    explicit OCT61StringFilter(OEStringFilterMode filterMode) noexcept
        : OCOctetStringFilter(filterMode) {}
    ~OCT61StringFilter() override;
};

/// The filter of UTF8String. ASCII passes, and each sequence of several bytes is read as one `.`:
/// nothing is decoded. The mode says nothing.
///
/// Note: writing a wide text puts a `.` behind every ASCII character. Readers of such texts rely on
/// it.
class ORVABASE_EXPORT OCUtf8StringFilter : public OCAbstractStringFilter {
public:
    /// A filter of that mode.
    explicit OCUtf8StringFilter(OEStringFilterMode filterMode) noexcept
        : OCAbstractStringFilter(filterMode) {}
    ~OCUtf8StringFilter() override;

    /// A byte below 128 is itself, a lead byte is `.`, and a continuation byte is nothing.
    unsigned int readCodeAnsi(OCStreamReader& reader, char* c) const override;
    unsigned int readCodeWide(OCStreamReader& reader, wchar_t* c) const override;
    /// A byte below 128 is itself, any other `.`.
    void writeCodeAnsi(OCStreamWriter& writer, char c) const override;
    /// A character from 0 to 127 is itself with a `.` behind it, any other `.`.
    void writeCodeWide(OCStreamWriter& writer, wchar_t c) const override;
};

/// The filter of IA5String: the bytes 0 to 127. The filters of its subsets derive from it, and so
/// can those of an application: they override the test and the mask.
class ORVABASE_EXPORT OCIa5StringFilter : public OCAbstractStringFilter {
public:
    /// A filter of that mode.
    explicit OCIa5StringFilter(OEStringFilterMode filterMode) noexcept
        : OCAbstractStringFilter(filterMode) {}
    ~OCIa5StringFilter() override;

    /// A valid byte is itself, sign-extended in a wide text. Any other is what the mode says.
    /// @throws OXStringFilter_DecodeError for an invalid byte, which is read then, in the refusing
    /// mode.
    unsigned int readCodeAnsi(OCStreamReader& reader, char* c) const override;
    unsigned int readCodeWide(OCStreamReader& reader, wchar_t* c) const override;
    /// A valid character is written as it is, any other as the mask byte, whatever the mode is.
    void writeCodeAnsi(OCStreamWriter& writer, char c) const override;
    void writeCodeWide(OCStreamWriter& writer, wchar_t c) const override;

    /// What stands for an invalid character: `.`.
    virtual char maskByte() const;
    /// Whether a byte belongs to the repertoire.
    virtual bool validateByte(unsigned char byte) const;
    /// The test of this class, without regard to overrides.
    static bool testByte(unsigned char byte) noexcept;
};

/// The filter of NumericString: digits and the space, which is also the mask byte.
class ORVABASE_EXPORT OCNumericStringFilter : public OCIa5StringFilter {
public:
    /// A filter of that mode.
    explicit OCNumericStringFilter(OEStringFilterMode filterMode) noexcept
        : OCIa5StringFilter(filterMode) {}
    ~OCNumericStringFilter() override;

    char maskByte() const override;
    bool validateByte(unsigned char byte) const override;
    /// The test of this class, without regard to overrides.
    static bool testByte(unsigned char byte) noexcept;
};

/// The filter of PrintableString: digits, ASCII letters, the space and `'()+,-./:=?`.
class ORVABASE_EXPORT OCPrintableStringFilter : public OCIa5StringFilter {
public:
    /// A filter of that mode.
    explicit OCPrintableStringFilter(OEStringFilterMode filterMode) noexcept
        : OCIa5StringFilter(filterMode) {}
    ~OCPrintableStringFilter() override;

    bool validateByte(unsigned char byte) const override;
    /// The test of this class, without regard to overrides.
    static bool testByte(unsigned char byte) noexcept;
};

/// The filter of VisibleString: the bytes 32 to 126.
class ORVABASE_EXPORT OCVisibleStringFilter : public OCIa5StringFilter {
public:
    /// A filter of that mode.
    explicit OCVisibleStringFilter(OEStringFilterMode filterMode) noexcept
        : OCIa5StringFilter(filterMode) {}
    ~OCVisibleStringFilter() override;

    bool validateByte(unsigned char byte) const override;
    /// The test of this class, without regard to overrides.
    static bool testByte(unsigned char byte) noexcept;
};

/// The family of the string filters' failures.
class ORVABASE_EXPORT OXStringFilter : public OXAutoException {
public:
    ~OXStringFilter() noexcept override;

protected:
    OXStringFilter();
};

/// "Error while decoding the string": a character that does not belong to the repertoire was read
/// in the refusing mode.
class ORVABASE_EXPORT OXStringFilter_DecodeError : public OXStringFilter {
public:
    OXStringFilter_DecodeError();
    ~OXStringFilter_DecodeError() noexcept override;
};

/// For filters of applications; the library itself does not throw it.
///
/// Note: its message is that of the decode error, "Error while decoding the string".
class ORVABASE_EXPORT OXStringFilter_EncodeError : public OXStringFilter {
public:
    OXStringFilter_EncodeError();
    ~OXStringFilter_EncodeError() noexcept override;
};

#endif
