#ifndef ORVABASE_OCXMLPARSER_H
#define ORVABASE_OCXMLPARSER_H

#include "OCXmlParserReader.h"

class OCFilePath;

/// The malformations that a parse reports. Each stands for the exception class
/// `OXXmlParser_<name>`.
enum OEXmlParserErrorClass : int {
    XmlParserErrorAttributeDefinitionMalformed = 0,
    XmlParserErrorAttributeListDeclarationMalformed = 1,
    XmlParserErrorAttributeMalformed = 2,
    XmlParserErrorAttributeTypeMalformed = 3,
    XmlParserErrorAttributeValueMalformed = 4,
    XmlParserErrorCdataSectionMalformed = 5,
    XmlParserErrorCommentMalformed = 6,
    XmlParserErrorContentMalformed = 7,
    XmlParserErrorContentSpecificationMalformed = 8,
    XmlParserErrorDefaultDeclarationMalformed = 9,
    XmlParserErrorDocumentTypeDeclarationMalformed = 10,
    XmlParserErrorElementDeclarationMalformed = 11,
    XmlParserErrorElementMalformed = 12,
    XmlParserErrorEntityDeclarationMalformed = 13,
    XmlParserErrorEntityValueMalformed = 14,
    XmlParserErrorNameMalformed = 15,
    XmlParserErrorNotationDataDeclarationMalformed = 16,
    XmlParserErrorNotationDeclarationMalformed = 17,
    XmlParserErrorParameterEntityReferenceMalformed = 18,
    XmlParserErrorProcessingInstructionMalformed = 19,
    XmlParserErrorPublicIdentifierMalformed = 20,
    XmlParserErrorSystemIdentifierMalformed = 21,
    XmlParserErrorXmlDeclarationMalformed = 22
};

/// The kinds of warnings. The parser reports none; the type is there for parsers of applications.
enum OEXmlParserWarningClass : int { XmlParserWarningNone = 0 };

/// What an application derives from to receive the events of a parse, in document order.
///
/// One element gives `elementStart`, an `attribute` for each attribute as written, the events of
/// its content and `elementEnd`. Texts are those of the document, character for character: no
/// entity or character reference is replaced and no white space or line end is changed. They belong
/// to the parser and may change after the operation returns.
///
/// An operation may throw anything; it leaves the parse unchanged. It may also run another parse
/// with the same parser.
///
///     class Titles : public OCXmlEvents {
///         void characterData(const OCWideString& text) override {
///             if (inTitle)
///                 std::cout << text << '\n';
///         }
///         void elementStart(const OCWideString& name) override { inTitle = name == L"title"; }
///         void elementEnd() override { inTitle = false; }
///         bool inTitle = false;
///     };
class ORVABASE_EXPORT OCXmlEvents : public OCObject {
public:
    ~OCXmlEvents() override;

    // By default all but error do nothing.

    /// An attribute of the element that started last, without its quotes.
    virtual void attribute(const OCWideString& name, const OCWideString& value);
    /// A piece of text between two markups, white space included, or the text of one CDATA section,
    /// which may be empty. Neighbouring pieces are not joined.
    virtual void characterData(const OCWideString& text);
    /// The last event of a document.
    virtual void documentEnd();
    /// The first event of a document.
    virtual void documentStart();
    /// The end of the innermost open element, empty ones included.
    virtual void elementEnd();
    /// The start of an element, before its attributes.
    virtual void elementStart(const OCWideString& name);
    /// A malformation. When an override returns, the malformed construct counts as ended where the
    /// error was found and the parse goes on there: it always ends, and always with `documentEnd`,
    /// but an element whose start was malformed has no `elementEnd`.
    /// @throws by default the exception of `errorClass`, and OXXmlParser_UnexpectedError for a
    /// value that is not listed.
    virtual void error(OEXmlParserErrorClass errorClass);
    /// A processing instruction. `data` is what follows the white space behind the target, up to
    /// the closing `?>`; it may be empty.
    virtual void processingInstruction(const OCWideString& target, const OCWideString& data);
    /// The parser never calls it.
    virtual void warning(OEXmlParserWarningClass warningClass);
};

/// A small, non-validating XML parser that reports what it recognises to an events object.
///
/// It decodes nothing: references stay as they are written, attribute values and line ends are not
/// normalised, namespaces are not looked at, the XML declaration is recognised but not read and the
/// document type declaration is checked and dropped. A name is any run of characters above 32 but
/// `( ) * + / = > ? [`; white space is any character up to 32, which with the one-byte encoding
/// includes every byte from 128 on.
///
/// A malformation is reported to the events object, whose default is to throw the exception of its
/// kind; without an events object it is `OXXmlParser_UnhandledError`. All failures of a parse,
/// those of the stream aside, derive from `OXXmlParser`. The time is linear in the document, and
/// neither the depth of the elements nor the size of the texts costs call stack.
///
///     Titles titles;
///     OCXmlParser parser;
///     parser.setEvents(titles);
///     parser.parse(OCFilePath("books.xml"));
///
/// The grammar operations work on any reader and may be called one by one. An operation named
/// `possible…` returns false when its construct does not begin at the reader's position, with
/// nothing consumed; true when it was recognised and consumed; and when it begins but is malformed,
/// it reports that by `error` and, if that returns, returns false. An operation named `parse…`
/// requires its construct: it reports when there is none. All deliver the events of what they
/// recognise. A reader that the caller passes in is up to date whenever an event is delivered and
/// when the operation returns or throws: its current character is the first that was not consumed.
///
/// The parser is reusable and holds no state of a parse. It is used by one thread at a time;
/// several parsers may run in several threads.
class ORVABASE_EXPORT OCXmlParser : public OCObject {
public:
    /// A parser without an events object.
    OCXmlParser() noexcept : events(nullptr) {}
    OCXmlParser(const OCXmlParser&) = delete;
    OCXmlParser& operator=(const OCXmlParser&) = delete;
    ~OCXmlParser() noexcept override;

    /// Delivers events to `target` from now on. It stays the caller's and must outlive the parses.
    void setEvents(OCXmlEvents& target) noexcept { events = &target; }
    /// The events object. There must be one.
    OCXmlEvents& getEvents() noexcept { return *events; }
    const OCXmlEvents& getEvents() const noexcept { return *events; }
    /// Whether an events object was set.
    bool hasEvents() const noexcept { return events != nullptr; }

    /// Parses one document. What follows the root element, comments, processing instructions and
    /// white space aside, is left unread.
    void parse(OCXmlParserReader& reader);
    /// Parses one document from the stream's position on, one byte a character. The stream is read
    /// 128 bytes at a time and may be left up to that much behind the document's end.
    void parse(OCStream& stream);
    /// Parses the document in a file, one byte a character.
    /// @throws OXFileStream_CreateError when the file cannot be opened.
    void parse(const OCFilePath& path);

    /// Reports a malformation: to the events object, if there is one.
    /// @throws what the events object throws; OXXmlParser_UnhandledError without one.
    void error(OEXmlParserErrorClass errorClass);

    /// A whole document, with `documentStart` and `documentEnd`.
    void parseDocument(OCXmlParserReader& reader);
    /// Everything before the root element.
    void parseProlog(OCXmlParserReader& reader);
    /// `<?xml … ?>`, which is not looked into.
    ///
    /// Note: a processing instruction whose target only begins with `xml` is taken for it here.
    bool possibleXmlDeclaration(OCXmlParserReader& reader);
    /// Any number of comments, processing instructions and white space; whether there was any.
    bool possibleMiscellaneous(OCXmlParserReader& reader);
    /// `<!DOCTYPE … >`; whether it was there.
    bool possibleDocumentTypeDeclaration(OCXmlParserReader& reader);
    /// A whole element, with all that it contains.
    void parseElement(OCXmlParserReader& reader);
    bool possibleElement(OCXmlParserReader& reader);
    /// An element's start with its attributes: sets `name`, and `empty` to whether it was closed by
    /// `/>`.
    bool possibleElementStart(OCXmlParserReader& reader, OCWideString& name, bool& empty);
    /// The end of the element `name`. It delivers no event.
    void parseElementEnd(OCXmlParserReader& reader, const OCWideString& name);
    /// The content of an element, up to the end tag that belongs to it, which stays unread.
    void parseContent(OCXmlParserReader& reader);
    /// `<![CDATA[ … ]]>`
    bool possibleCdataSection(OCXmlParserReader& reader);
    /// `<!-- … -->`, which may contain `--`.
    bool possibleComment(OCXmlParserReader& reader);
    /// `<?target data?>`
    bool possibleProcessingInstruction(OCXmlParserReader& reader);
    /// Everything before the next `<` or the end of the input; at least one character.
    bool possibleCharacterData(OCXmlParserReader& reader);
    /// `name="value"` or `name='value'`, without white space around the `=`.
    bool possibleAttribute(OCXmlParserReader& reader);
    /// A text in single or double quotes, appended to `value` without them.
    bool possibleAttributeValue(OCXmlParserReader& reader, OCWideString& value);
    void parseAttributeValue(OCXmlParserReader& reader, OCWideString& value);
    /// A name, which replaces `name`. When there is none, `name` is untouched.
    bool possibleName(OCXmlParserReader& reader, OCWideString& name);
    void parseName(OCXmlParserReader& reader, OCWideString& name);
    /// Any number of white-space characters; whether there was one.
    bool possibleWhiteSpace(OCXmlParserReader& reader);

private:
    OCXmlEvents* events;
};

/// "Malformed XML attribute definition".
class ORVABASE_EXPORT OXXmlParser_AttributeDefinitionMalformed : public OXXmlParser {
public:
    OXXmlParser_AttributeDefinitionMalformed();
    ~OXXmlParser_AttributeDefinitionMalformed() noexcept override;
};

/// "Malformed XML attribute list declaration".
class ORVABASE_EXPORT OXXmlParser_AttributeListDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_AttributeListDeclarationMalformed();
    ~OXXmlParser_AttributeListDeclarationMalformed() noexcept override;
};

/// "Malformed XML attribute".
class ORVABASE_EXPORT OXXmlParser_AttributeMalformed : public OXXmlParser {
public:
    OXXmlParser_AttributeMalformed();
    ~OXXmlParser_AttributeMalformed() noexcept override;
};

/// "Malformed XML attribute type".
class ORVABASE_EXPORT OXXmlParser_AttributeTypeMalformed : public OXXmlParser {
public:
    OXXmlParser_AttributeTypeMalformed();
    ~OXXmlParser_AttributeTypeMalformed() noexcept override;
};

/// "Malformed XML attribute value".
class ORVABASE_EXPORT OXXmlParser_AttributeValueMalformed : public OXXmlParser {
public:
    OXXmlParser_AttributeValueMalformed();
    ~OXXmlParser_AttributeValueMalformed() noexcept override;
};

/// "Malformed XML CDATA section".
class ORVABASE_EXPORT OXXmlParser_CdataSectionMalformed : public OXXmlParser {
public:
    OXXmlParser_CdataSectionMalformed();
    ~OXXmlParser_CdataSectionMalformed() noexcept override;
};

/// "Malformed XML comment".
class ORVABASE_EXPORT OXXmlParser_CommentMalformed : public OXXmlParser {
public:
    OXXmlParser_CommentMalformed();
    ~OXXmlParser_CommentMalformed() noexcept override;
};

/// "Malformed XML content".
class ORVABASE_EXPORT OXXmlParser_ContentMalformed : public OXXmlParser {
public:
    OXXmlParser_ContentMalformed();
    ~OXXmlParser_ContentMalformed() noexcept override;
};

/// "Malformed XML content specification".
class ORVABASE_EXPORT OXXmlParser_ContentSpecificationMalformed : public OXXmlParser {
public:
    OXXmlParser_ContentSpecificationMalformed();
    ~OXXmlParser_ContentSpecificationMalformed() noexcept override;
};

/// "Malformed XML default declaration".
class ORVABASE_EXPORT OXXmlParser_DefaultDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_DefaultDeclarationMalformed();
    ~OXXmlParser_DefaultDeclarationMalformed() noexcept override;
};

/// "Malformed XML document type declaration".
class ORVABASE_EXPORT OXXmlParser_DocumentTypeDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_DocumentTypeDeclarationMalformed();
    ~OXXmlParser_DocumentTypeDeclarationMalformed() noexcept override;
};

/// "Malformed XML element declaration".
class ORVABASE_EXPORT OXXmlParser_ElementDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_ElementDeclarationMalformed();
    ~OXXmlParser_ElementDeclarationMalformed() noexcept override;
};

/// "Malformed XML element".
class ORVABASE_EXPORT OXXmlParser_ElementMalformed : public OXXmlParser {
public:
    OXXmlParser_ElementMalformed();
    ~OXXmlParser_ElementMalformed() noexcept override;
};

/// "Malformed XML entity declaration".
class ORVABASE_EXPORT OXXmlParser_EntityDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_EntityDeclarationMalformed();
    ~OXXmlParser_EntityDeclarationMalformed() noexcept override;
};

/// "Malformed XML entity value".
class ORVABASE_EXPORT OXXmlParser_EntityValueMalformed : public OXXmlParser {
public:
    OXXmlParser_EntityValueMalformed();
    ~OXXmlParser_EntityValueMalformed() noexcept override;
};

/// "Malformed XML name".
class ORVABASE_EXPORT OXXmlParser_NameMalformed : public OXXmlParser {
public:
    OXXmlParser_NameMalformed();
    ~OXXmlParser_NameMalformed() noexcept override;
};

/// "Malformed XML notation data declaration".
class ORVABASE_EXPORT OXXmlParser_NotationDataDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_NotationDataDeclarationMalformed();
    ~OXXmlParser_NotationDataDeclarationMalformed() noexcept override;
};

/// "Malformed XML notation declaration".
class ORVABASE_EXPORT OXXmlParser_NotationDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_NotationDeclarationMalformed();
    ~OXXmlParser_NotationDeclarationMalformed() noexcept override;
};

/// "Malformed XML parameter entity reference".
class ORVABASE_EXPORT OXXmlParser_ParameterEntityReferenceMalformed : public OXXmlParser {
public:
    OXXmlParser_ParameterEntityReferenceMalformed();
    ~OXXmlParser_ParameterEntityReferenceMalformed() noexcept override;
};

/// "Malformed XML processing instruction".
class ORVABASE_EXPORT OXXmlParser_ProcessingInstructionMalformed : public OXXmlParser {
public:
    OXXmlParser_ProcessingInstructionMalformed();
    ~OXXmlParser_ProcessingInstructionMalformed() noexcept override;
};

/// "Malformed XML public identifier".
class ORVABASE_EXPORT OXXmlParser_PublicIdentifierMalformed : public OXXmlParser {
public:
    OXXmlParser_PublicIdentifierMalformed();
    ~OXXmlParser_PublicIdentifierMalformed() noexcept override;
};

/// "Malformed XML system identifier".
class ORVABASE_EXPORT OXXmlParser_SystemIdentifierMalformed : public OXXmlParser {
public:
    OXXmlParser_SystemIdentifierMalformed();
    ~OXXmlParser_SystemIdentifierMalformed() noexcept override;
};

/// "Malformed XML declaration".
class ORVABASE_EXPORT OXXmlParser_XmlDeclarationMalformed : public OXXmlParser {
public:
    OXXmlParser_XmlDeclarationMalformed();
    ~OXXmlParser_XmlDeclarationMalformed() noexcept override;
};

/// "Unexpected XML error": an error class that the parser does not report itself.
class ORVABASE_EXPORT OXXmlParser_UnexpectedError : public OXXmlParser {
public:
    OXXmlParser_UnexpectedError();
    ~OXXmlParser_UnexpectedError() noexcept override;
};

/// "Unhandled XML error": the document is malformed, and the parser has no events object to tell
/// what is.
class ORVABASE_EXPORT OXXmlParser_UnhandledError : public OXXmlParser {
public:
    OXXmlParser_UnhandledError();
    ~OXXmlParser_UnhandledError() noexcept override;
};

#endif
