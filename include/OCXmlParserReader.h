#ifndef ORVABASE_OCXMLPARSERREADER_H
#define ORVABASE_OCXMLPARSERREADER_H

#include "OCStream.h"
#include "OCWideString.h"

namespace orvabase {
class XmlInput;
}

/// How the bytes of a document become characters. The caller chooses; nothing is detected, and a
/// byte-order mark is not recognised but reaches the parser like other characters.
///
/// With any other value the source delivers no characters.
enum OEXmlEncoding : int {
    /// One byte a character, sign-extended: bytes from 128 on become the values -128 to -1.
    XmlEncodingAnsi = 0,
    /// Four bytes a character: `wchar_t` values in the machine's byte order, taken unchanged.
    XmlEncodingWide = 1
};

/// Turns the bytes of a stream into characters for a markup reader.
///
/// It refers to the stream, which must outlive it. For use by one thread at a time.
///
///     OCXmlParserSource source(stream, XmlEncodingWide);
///     OCXmlParserReader reader(source);
///     parser.parse(reader);
class ORVABASE_EXPORT OCXmlParserSource : public OCObject {
public:
    /// A source that reads on at the stream's position.
    OCXmlParserSource(OCStream& input, OEXmlEncoding inputEncoding) noexcept
        : stream(input), encoding(inputEncoding) {}
    OCXmlParserSource(const OCXmlParserSource&) = delete;
    OCXmlParserSource& operator=(const OCXmlParserSource&) = delete;
    ~OCXmlParserSource() noexcept override;

    /// Whether the stream's position is before its end. It asks the stream for its position and
    /// then for its size, and throws what the stream throws.
    bool more() const;
    /// Reads `count` characters, by as many reads as it takes; fewer only at the end of the stream.
    /// @throws OXXmlParserSource_CharacterTruncated, OXMemory_AllocationError, and whatever the
    /// stream throws; the characters read by this call are lost then.
    OCWideString readString(unsigned long count);
    /// Append what one read of the stream delivers, up to `remaining` characters, and lower
    /// `remaining` by their number. False at the end of the stream, with both arguments untouched.
    /// A read that delivers nothing counts as the end.
    /// @throws OXXmlParserSource_CharacterTruncated when the wide form's read ends within a
    /// character, OXMemory_AllocationError, and whatever the stream throws; nothing is appended
    /// then.
    bool readStringAnsi(OCWideString& text, unsigned long& remaining);
    bool readStringWide(OCWideString& text, unsigned long& remaining);

private:
    friend class orvabase::XmlInput;

    OCStream& stream;
    OEXmlEncoding encoding;
};

/// Looks ahead in the characters of a source: tests what comes next, consumes it, and scans forward
/// to a character or a text. The markup parsers are written on it.
///
/// The first buffered character is the current one. What was consumed cannot be put back. The
/// reader knows no line or column. Reaching the end is never an error: tests and searches are
/// false there and skips leave an empty buffer. The stream is asked for at least 128 characters at
/// a time. What the stream throws passes through; consumed characters stay consumed then and
/// buffered ones stay buffered.
///
/// It refers to the source, which must outlive it. For use by one thread at a time.
///
///     OCXmlParserReader reader(source);
///     OCWideString heading;
///     if (reader.findString(L"-----", heading))    // everything before the dashes
///         reader.skipString(L"-----");
class ORVABASE_EXPORT OCXmlParserReader : public OCObject {
public:
    /// A reader with an empty buffer; nothing is read yet.
    explicit OCXmlParserReader(OCXmlParserSource& input) noexcept : source(input) {}
    OCXmlParserReader(const OCXmlParserReader&) = delete;
    OCXmlParserReader& operator=(const OCXmlParserReader&) = delete;
    ~OCXmlParserReader() noexcept override;

    /// Whether there are buffered characters or else the source has more.
    bool more() const { return buffer.getLength() > 0 || source.more(); }
    /// Makes `count` characters available for looking ahead; false when the input ends before. When
    /// fewer are buffered it reads once: `count` further characters, but at least 128.
    /// @throws OXXmlParserSource_CharacterTruncated, OXMemory_AllocationError
    bool growBuffer(unsigned long count);

    /// Whether the current character is `c`. False at the end.
    bool peekCharacter(wchar_t c);
    /// Sets `c` to the current character. False at the end, with `c` untouched.
    bool previewCharacter(wchar_t& c);
    /// Consumes the current character, if there is one.
    ///
    /// Note: the character is not compared with `c`, which only says what the caller has seen.
    void skipCharacter(wchar_t c);

    /// Whether the input continues with exactly `s`. False for an empty `s`.
    bool peekString(const OCWideString& s);
    /// Consumes as many characters as `s` has, or all that are left when there are fewer.
    ///
    /// Note: the characters are not compared with `s`, which only says what the caller has seen.
    void skipString(const OCWideString& s);

    /// Consume everything before the next `c`, so that it is the current character. `skipped`
    /// has what was passed over appended. False when the input ends first: all of it is consumed
    /// then.
    bool findCharacter(wchar_t c) { return findCharacterInternal(c, nullptr); }
    bool findCharacter(wchar_t c, OCWideString& skipped) {
        return findCharacterInternal(c, &skipped);
    }
    /// Consume everything before the next occurrence of `s`, so that the input continues with it.
    /// `skipped` has what was passed over appended. False when the input ends first: all of it is
    /// consumed then. False for an empty `s`, with nothing consumed.
    bool findString(const OCWideString& s) { return findStringInternal(s, nullptr); }
    bool findString(const OCWideString& s, OCWideString& skipped) {
        return findStringInternal(s, &skipped);
    }

    /// What the two forms of each search share; `skipped` may be null.
    bool findCharacterInternal(wchar_t c, OCWideString* skipped);
    bool findStringInternal(const OCWideString& s, OCWideString* skipped);

private:
    friend class orvabase::XmlInput;

    OCWideString buffer;
    OCXmlParserSource& source;
};

/// The family of the XML parser's failures: whatever a parse reports derives from it.
class ORVABASE_EXPORT OXXmlParser : public OXAutoException {
public:
    ~OXXmlParser() noexcept override;

protected:
    OXXmlParser();
};

/// The family of the character source's failures.
class ORVABASE_EXPORT OXXmlParserSource : public OXXmlParser {
public:
    ~OXXmlParserSource() noexcept override;

protected:
    OXXmlParserSource();
};

/// "Truncated XML character": the input ends within a character of four bytes.
class ORVABASE_EXPORT OXXmlParserSource_CharacterTruncated : public OXXmlParserSource {
public:
    OXXmlParserSource_CharacterTruncated();
    ~OXXmlParserSource_CharacterTruncated() noexcept override;
};

#endif
