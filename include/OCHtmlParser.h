#ifndef ORVABASE_OCHTMLPARSER_H
#define ORVABASE_OCHTMLPARSER_H

#include "OCStream.h"

namespace orvabase {
class HtmlInput;
}

/// The malformations that a parse reports.
enum OEHtmlErrorClass : int {
    HtmlErrorAttributeMalformed = 0,
    HtmlErrorCommentMalformed = 1,
    HtmlErrorDocumentTypeMalformed = 2,
    HtmlErrorElementEndMalformed = 3,
    HtmlErrorElementStartMalformed = 4,
    HtmlErrorNameMalformed = 5
};

/// The kinds of warnings. The parser reports none; the type is there for parsers of applications.
enum OEHtmlWarningClass : int { HtmlWarningNone = 0 };

/// What an application derives from to receive the events of a parse, in document order.
///
/// Names and texts are those of the document, byte for byte: nothing is folded to one case and no
/// reference is replaced. They belong to the parser and may change after the operation returns.
///
/// An operation may throw anything; it leaves the parse unchanged. It may also run another parse
/// with the same parser.
///
///     class Links : public OCHtmlParserEvents {
///         void attribute(const OCAnsiString& name, const OCAnsiString& value) override {
///             if (name.compare("href", StringCaseInsensitive) == CompareResultEqual)
///                 std::cout << value << '\n';
///         }
///     };
class ORVABASE_EXPORT OCHtmlParserEvents : public OCObject {
public:
    ~OCHtmlParserEvents() override;

    // By default all but error do nothing.

    /// An attribute of the start tag that began last, without its quotes; the value is empty when
    /// none is written.
    virtual void attribute(const OCAnsiString& name, const OCAnsiString& value);
    /// The text between two markups, white space included; never empty.
    virtual void characterData(const OCAnsiString& text);
    /// The text of a comment.
    ///
    /// Note: it ends before the first `--`, also when the comment does not.
    virtual void comment(const OCAnsiString& text);
    /// The last event of a document.
    virtual void documentEnd();
    /// The first event of a document.
    virtual void documentStart();
    /// What stands between `<!doctype` and `>`, without white space at its ends.
    virtual void documentType(const OCAnsiString& text);
    /// An end tag, or the end of a start tag that was closed by `/>`.
    ///
    /// Note: nobody checks that it belongs to a start tag. An end tag is reported as soon as its
    /// name is read, before what follows is checked.
    virtual void elementEnd(const OCAnsiString& name);
    /// The beginning of a start tag, before its attributes.
    virtual void elementStart(const OCAnsiString& name);
    /// The end of the start tag that began last, behind its attributes.
    virtual void elementStartComplete(const OCAnsiString& name);
    /// A malformation. When an override returns, the malformed construct counts as ended where the
    /// error was found and the parse goes on there, so what is left of it is likely to be reported
    /// as text: the parse always ends, and always with `documentEnd`.
    ///
    /// Note: the default has no case of its own for a malformed document type.
    /// @throws by default the exception of `errorClass`; OXHtmlError_Unexpected for
    /// `HtmlErrorDocumentTypeMalformed` and for a value that is not listed.
    virtual void error(OEHtmlErrorClass errorClass);
    /// The parser never calls it.
    virtual void warning(OEHtmlWarningClass warningClass);
};

/// Looks ahead in the bytes of a stream: tests what comes next, consumes it, and scans forward to a
/// character or a text. The HTML parser is written on it.
///
/// The first buffered byte is the current one. What was consumed cannot be put back. Reaching the
/// end is never an error: tests and searches are false there and skips leave an empty buffer. The
/// stream is asked for 128 bytes at a time; a read that delivers nothing counts as the end. What
/// the stream throws passes through; consumed bytes stay consumed then and buffered ones stay
/// buffered.
///
/// It refers to the stream, which must outlive it. For use by one thread at a time.
///
///     OCHtmlParserReader reader(stream);
///     OCAnsiString before;
///     if (reader.findString("<body", before))    // everything before the body, <BODY as well
///         reader.skipString("<body");
class ORVABASE_EXPORT OCHtmlParserReader : public OCObject {
public:
    /// A reader with an empty buffer, which reads on at the stream's position; nothing is read yet.
    explicit OCHtmlParserReader(OCStream& input) noexcept : stream(input) {}
    OCHtmlParserReader(const OCHtmlParserReader&) = delete;
    OCHtmlParserReader& operator=(const OCHtmlParserReader&) = delete;
    ~OCHtmlParserReader() noexcept override;

    /// Whether there are buffered bytes or else the stream's position is before its end. Only in
    /// the latter case the stream is asked, for its position and then for its size.
    bool more() const;
    /// Makes `count` bytes available for looking ahead, by as many reads of up to 128 bytes as it
    /// takes; false when the input ends before.
    /// @throws OXMemory_AllocationError
    bool growBuffer(unsigned long count);

    /// Whether the current byte is `c`, in either case of an ASCII letter. False at the end.
    bool peekCharacter(char c);
    /// Sets `c` to the current byte. False at the end, with `c` untouched.
    bool previewCharacter(char& c);
    /// Consumes the current byte, if there is one.
    ///
    /// Note: the byte is not compared with `c`, which only says what the caller has seen.
    void skipCharacter(char c);

    /// Whether the input continues with `s`, in any mixture of case. False for an empty `s`.
    bool peekString(const OCAnsiString& s);
    /// Consumes as many bytes as `s` has, or all that are left when there are fewer.
    ///
    /// Note: the bytes are not compared with `s`, which only says what the caller has seen.
    void skipString(const OCAnsiString& s);

    /// Consume everything before the next `c`, which must have its case, so that it is the current
    /// byte. `skipped` has what was passed over appended. False when the input ends first: all of
    /// it is consumed then.
    bool findCharacter(char c) { return findCharacterInternal(c, nullptr); }
    bool findCharacter(char c, OCAnsiString& skipped) { return findCharacterInternal(c, &skipped); }
    /// Consume everything before the next occurrence of `s`, so that the input continues with it.
    /// `skipped` has what was passed over appended. False when the input ends first: all of it is
    /// consumed then. False for an empty `s`, with nothing consumed. Linear in the input and `s`
    /// together.
    ///
    /// Note: the first character of `s` must have its case, the others may have any.
    /// @throws OXMemory_AllocationError
    bool findString(const OCAnsiString& s) { return findStringInternal(s, nullptr); }
    bool findString(const OCAnsiString& s, OCAnsiString& skipped) {
        return findStringInternal(s, &skipped);
    }

    /// What the two forms of each search share; `skipped` may be null.
    bool findCharacterInternal(char c, OCAnsiString* skipped);
    bool findStringInternal(const OCAnsiString& s, OCAnsiString* skipped);

private:
    friend class orvabase::HtmlInput;

    OCAnsiString buffer;
    OCStream& stream;
};

/// A tolerant, flat HTML tokenizer that reports start tags, end tags, texts, comments and document
/// types to an events object as they come.
///
/// It works on bytes and decodes nothing, does not track what is nested in what, and knows no
/// particular element: the text of a script is parsed like any other. A name is a run of ASCII
/// letters, digits, `!`, `-`, `:` and `_`; white space is every byte up to 32.
///
/// A malformation is reported to the events object, whose default is to throw the exception of its
/// kind; without an events object it is `OXHtmlError_Unhandled`. The time is linear in the
/// document.
///
///     Links links;
///     OCHtmlParser parser;
///     parser.setParserEvents(links);
///     OCFileStream page("index.html", FileCreateModeRead, FileShareModeRead);
///     parser.parse(page);
///
/// The grammar operations work on any reader and may be called one by one. An operation named
/// `possible…` returns false when its construct does not begin at the reader's position, with
/// nothing consumed; true when it was recognised and consumed; and when it begins but is malformed,
/// it reports that by `error` and, if that returns, returns false. An operation named `parse…`
/// requires its construct: it reports when there is none. All deliver the events of what they
/// recognise. When a report of a missing name returns, the name counts as empty and the tag goes
/// on. A reader that the caller passes in is up to date whenever an event is delivered and when the
/// operation returns or throws: its current byte is the first that was not consumed.
///
/// The parser is reusable and holds no state of a parse. It is used by one thread at a time;
/// several parsers may run in several threads.
class ORVABASE_EXPORT OCHtmlParser : public OCObject {
public:
    /// A parser without an events object.
    OCHtmlParser() noexcept : parserEvents(nullptr) {}
    OCHtmlParser(const OCHtmlParser&) = delete;
    OCHtmlParser& operator=(const OCHtmlParser&) = delete;
    ~OCHtmlParser() noexcept override;

    /// Delivers events to `events` from now on. It stays the caller's and must outlive the parses.
    void setParserEvents(OCHtmlParserEvents& events) noexcept { parserEvents = &events; }
    /// The events object. There must be one.
    OCHtmlParserEvents& getParserEvents() noexcept { return *parserEvents; }
    const OCHtmlParserEvents& getParserEvents() const noexcept { return *parserEvents; }
    /// Whether an events object was set.
    bool hasParserEvents() const noexcept { return parserEvents != nullptr; }

    /// Parses everything from the stream's position to its end, by reads of up to 128 bytes.
    void parse(OCStream& stream);

    /// Reports a malformation: to the events object, if there is one.
    /// @throws what the events object throws; OXHtmlError_Unhandled without one.
    void error(OEHtmlErrorClass errorClass);
    /// Passes a warning on to the events object, if there is one.
    void warning(OEHtmlWarningClass warningClass);

    /// A whole document, with `documentStart` and `documentEnd`.
    void parseDocument(OCHtmlParserReader& reader);
    /// One text, comment, document type or tag. True also when it is malformed, once it has begun
    /// and its report has returned: only the end of the input is false.
    bool possibleMiscellaneous(OCHtmlParserReader& reader);
    /// Everything before the next `<` or the end of the input; at least one byte.
    bool possibleCharacterData(OCHtmlParserReader& reader);

    /// `<!-- … -->`. What follows the first `--`, up to the next `>`, is passed over.
    bool possibleComment(OCHtmlParserReader& reader);
    /// Its parts: `<!--`; everything before the next `--`, which is reported; and `--` with
    /// everything up to the next `>`.
    bool possibleCommentBegin(OCHtmlParserReader& reader);
    void parseCommentContents(OCHtmlParserReader& reader);
    void parseCommentEnd(OCHtmlParserReader& reader);

    /// `<!doctype … >`, in any mixture of case.
    bool possibleDocumentType(OCHtmlParserReader& reader);
    /// Its parts: `<!doctype`; everything before the next `>`, which is reported; and `>`.
    bool possibleDocumentTypeBegin(OCHtmlParserReader& reader);
    void parseDocumentTypeContents(OCHtmlParserReader& reader);
    void parseDocumentTypeEnd(OCHtmlParserReader& reader);

    /// An end tag or a start tag.
    bool possibleElement(OCHtmlParserReader& reader);
    /// `</name>`
    bool possibleElementEnd(OCHtmlParserReader& reader);
    /// `<name attributes>` or `<name attributes/>`
    bool possibleElementStart(OCHtmlParserReader& reader);
    /// The parts of a start tag: `<` and the name, which replaces `name` and is reported; the
    /// attributes; and `>` or `/>`, or just the one or the other of them.
    bool possibleElementStartBegin(OCHtmlParserReader& reader, OCAnsiString& name);
    void parseAttributeList(OCHtmlParserReader& reader);
    void parseElementStartEnd(OCHtmlParserReader& reader, const OCAnsiString& name);
    void parseElementStartEndContent(OCHtmlParserReader& reader, const OCAnsiString& name);
    void parseElementStartEndEmpty(OCHtmlParserReader& reader, const OCAnsiString& name);

    /// `name`, `name=value`, `name="value"` or `name='value'`, also with white space around the
    /// `=`.
    bool possibleAttribute(OCHtmlParserReader& reader);
    /// A name, which replaces `name`. When there is none, `name` is untouched.
    bool possibleAttributeName(OCHtmlParserReader& reader, OCAnsiString& name);
    /// A value in single or double quotes, or else one that ends before white space or `>`. It
    /// replaces `value`.
    void parseAttributeValue(OCHtmlParserReader& reader, OCAnsiString& value);
    void parseAttributeValueQuoted(OCHtmlParserReader& reader, OCAnsiString& value);
    void parseAttributeValueSimple(OCHtmlParserReader& reader, OCAnsiString& value);
    /// A name, which replaces `name`. When there is none, `name` is untouched.
    bool possibleName(OCHtmlParserReader& reader, OCAnsiString& name);
    void parseName(OCHtmlParserReader& reader, OCAnsiString& name);
    /// Any number of white-space bytes; whether there was one.
    bool possibleWhiteSpace(OCHtmlParserReader& reader);

private:
    OCHtmlParserEvents* parserEvents;
};

/// The family of the HTML parser's failures.
class ORVABASE_EXPORT OXHtml : public OXAutoException {
public:
    ~OXHtml() noexcept override;

protected:
    OXHtml();
};

/// The family of the malformations that a parse reports.
class ORVABASE_EXPORT OXHtmlError : public OXHtml {
public:
    ~OXHtmlError() noexcept override;

protected:
    OXHtmlError();
};

/// "Malformed attribute".
class ORVABASE_EXPORT OXHtmlError_AttributeMalformed : public OXHtmlError {
public:
    OXHtmlError_AttributeMalformed();
    ~OXHtmlError_AttributeMalformed() noexcept override;
};

/// "Malformed comment".
class ORVABASE_EXPORT OXHtmlError_CommentMalformed : public OXHtmlError {
public:
    OXHtmlError_CommentMalformed();
    ~OXHtmlError_CommentMalformed() noexcept override;
};

/// "Malformed document type". For applications: the default handler does not throw it.
class ORVABASE_EXPORT OXHtmlError_DocumentTypeMalformed : public OXHtmlError {
public:
    OXHtmlError_DocumentTypeMalformed();
    ~OXHtmlError_DocumentTypeMalformed() noexcept override;
};

/// "Malformed end of element".
class ORVABASE_EXPORT OXHtmlError_ElementEndMalformed : public OXHtmlError {
public:
    OXHtmlError_ElementEndMalformed();
    ~OXHtmlError_ElementEndMalformed() noexcept override;
};

/// "Malformed start of element".
class ORVABASE_EXPORT OXHtmlError_ElementStartMalformed : public OXHtmlError {
public:
    OXHtmlError_ElementStartMalformed();
    ~OXHtmlError_ElementStartMalformed() noexcept override;
};

/// "Malformed name".
class ORVABASE_EXPORT OXHtmlError_NameMalformed : public OXHtmlError {
public:
    OXHtmlError_NameMalformed();
    ~OXHtmlError_NameMalformed() noexcept override;
};

/// "Unhandled error": there is no events object to report an error to.
class ORVABASE_EXPORT OXHtmlError_Unhandled : public OXHtmlError {
public:
    OXHtmlError_Unhandled();
    ~OXHtmlError_Unhandled() noexcept override;
};

/// "Unexpected error": the default handler does not know the error class.
class ORVABASE_EXPORT OXHtmlError_Unexpected : public OXHtmlError {
public:
    OXHtmlError_Unexpected();
    ~OXHtmlError_Unexpected() noexcept override;
};

#endif
