#ifndef ORVABASE_XMLGRAMMAR_H
#define ORVABASE_XMLGRAMMAR_H

#include "OCXmlParser.h"
#include "markup/XmlCursor.h"

namespace orvabase {

/// The names of the open elements, packed into one string, so that depth costs no call stack.
class XmlOpenNames {
public:
    XmlOpenNames() noexcept : used(0), top(0) {}

    bool isEmpty() const { return used == 0; }
    void push(const OCWideString& name);
    void pop() noexcept;
    const wchar_t* name() const { return names.getString() + top; }
    unsigned long nameLength() const { return used - 1 - top; }

private:
    void shrink() noexcept;

    // Each name is followed by a zero, which no name contains. The string's length is what is
    // reserved.
    OCWideString names;
    unsigned long used;
    unsigned long top;
};

/// The grammar operations of the XML parser, for one running operation with its own cursor. They
/// mean what the parser's operations of the same names mean.
class XmlGrammar {
public:
    XmlGrammar(OCXmlParser& owner, OCXmlParserReader& reader,
               XmlCursor::Access access = XmlCursor::Shared)
        : parser(owner), cursor(reader, access) {}
    XmlGrammar(const XmlGrammar&) = delete;
    XmlGrammar& operator=(const XmlGrammar&) = delete;

    void error(OEXmlParserErrorClass errorClass);

    void parseDocument();
    void parseProlog();
    bool possibleXmlDeclaration();
    bool possibleMiscellaneous();
    bool possibleDocumentTypeDeclaration();
    void parseElement();
    bool possibleElement();
    bool possibleElementStart(OCWideString& name, bool& empty);
    void parseElementEnd(const wchar_t* name, unsigned long length);
    void parseContent();
    bool possibleCdataSection();
    bool possibleComment();
    bool possibleProcessingInstruction();
    bool possibleCharacterData();
    bool possibleAttribute();
    bool possibleName(OCWideString& name) { return cursor.takeName(name); }
    /// Requires a name without keeping it.
    void parseName();
    bool possibleWhiteSpace() { return cursor.skipWhiteSpace(); }

    enum Quoted { QuotedAbsent, QuotedOpen, QuotedClosed };
    /// A text in quotes. What is in the quotes replaces the characters of `target` from `kept` on;
    /// it is dropped when `target` is null.
    Quoted quoted(OCWideString* target, unsigned long kept = 0);
    /// The operations on attribute values.
    bool possibleAttributeValue(OCWideString* target, unsigned long kept = 0);
    void parseAttributeValue(OCWideString* target, unsigned long kept = 0);

    XmlCursor& input() { return cursor; }

private:
    template<typename Event>
    void report(Event event);
    bool possibleContent();
    void characterData();
    void endElement();
    void closeElement();

    OCXmlParser& parser;
    XmlOpenNames openNames;
    OCWideString elementName;
    OCWideString text;
    OCWideString value;
    XmlCursor cursor; // destroyed first, as a token that it collects is in one of the strings
};

/// The grammar operations of the DTD parser, likewise.
class DtdGrammar {
public:
    explicit DtdGrammar(XmlGrammar& owner) noexcept : xml(owner), cursor(owner.input()) {}
    DtdGrammar(const DtdGrammar&) = delete;
    DtdGrammar& operator=(const DtdGrammar&) = delete;

    void parse();
    void parseBegin();
    void parseEnd();
    bool possibleMarkupDeclaration();
    bool possibleElementDeclaration();
    void parseContentSpecification();
    bool possibleAttributeListDeclaration();
    bool possibleAttributeDefinition();
    void parseAttributeType();
    bool possibleAttributeTypeString();
    bool possibleAttributeTypeTokenized();
    bool possibleAttributeTypeEnumerated();
    void parseDefaultDeclaration();
    bool possibleDefaultDeclarationRequired();
    bool possibleDefaultDeclarationImplied();
    bool possibleDefaultDeclarationFixed();
    bool possibleEntityDeclaration();
    void parseGeneralEntityDeclaration();
    void parseParameterEntityDeclaration();
    bool possibleEntityValue();
    bool possibleNotationDataDeclaration();
    bool possibleNotationDeclaration();
    bool possibleExternalIdentifier();
    bool possibleExternalIdentifierPublic();
    bool possibleExternalIdentifierSystem();
    void parsePublicIdentifier(OCWideString* identifier, unsigned long kept = 0);
    void parseSystemIdentifier(OCWideString* identifier, unsigned long kept = 0);
    bool possibleParameterEntityReference();

private:
    bool requireWhiteSpace(OEXmlParserErrorClass errorClass);
    bool requireEnd(OEXmlParserErrorClass errorClass);
    void parseInternalSubset();

    XmlGrammar& xml;
    XmlCursor& cursor;
};

} // namespace orvabase

#endif
