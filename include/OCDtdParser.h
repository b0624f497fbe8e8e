#ifndef ORVABASE_OCDTDPARSER_H
#define ORVABASE_OCDTDPARSER_H

#include "OCXmlParser.h"

/// Recognises a document type declaration, from `<!DOCTYPE` to its closing `>`, for an XML parser.
///
/// It checks the syntax of the declarations and drops them: no entity is defined, no default value
/// applied and nothing is validated. The only events are those of processing instructions in the
/// internal subset. Malformations are reported through the XML parser, so that its events object
/// decides what becomes of them.
///
/// The grammar operations follow the XML parser's rule: `possible…` returns false when its
/// construct does not begin at the reader's position (or when it has itself reported a malformation
/// and the report returned), `parse…` requires its construct. What is malformed is reported as the
/// error class of the innermost construct that has one, a missing name as that of names. Keywords
/// are recognised as prefixes, whatever follows them. The reader is up to date whenever an event is
/// delivered and when an operation returns or throws.
///
/// It refers to the XML parser, which must outlive it. For use by one thread at a time.
///
///     OCDtdParser(parser).parse(reader);   // the reader stands at <!DOCTYPE
class ORVABASE_EXPORT OCDtdParser : public OCObject {
public:
    /// A parser of declarations for `owner`.
    explicit OCDtdParser(OCXmlParser& owner) noexcept : parser(owner) {}
    OCDtdParser(const OCDtdParser&) = delete;
    OCDtdParser& operator=(const OCDtdParser&) = delete;
    ~OCDtdParser() noexcept override;

    /// A whole document type declaration. The input must continue with `<!DOCTYPE`, which is not
    /// looked at again.
    void parse(OCXmlParserReader& reader);

    /// `<!DOCTYPE` and the white space behind it.
    void parseBegin(OCXmlParserReader& reader);
    /// The closing `>`.
    void parseEnd(OCXmlParserReader& reader);

    /// One declaration, processing instruction or comment of the internal subset.
    bool possibleMarkupDeclaration(OCXmlParserReader& reader);

    /// `<!ELEMENT name content>`
    bool possibleElementDeclaration(OCXmlParserReader& reader);
    /// Everything before the next `>`, whatever it is.
    void parseContentSpecification(OCXmlParserReader& reader);

    /// `<!ATTLIST name definition…>`
    bool possibleAttributeListDeclaration(OCXmlParserReader& reader);
    /// White space, a name, a type and a default. White space without a name is consumed and false.
    bool possibleAttributeDefinition(OCXmlParserReader& reader);
    void parseAttributeType(OCXmlParserReader& reader);
    /// `CDATA`
    bool possibleAttributeTypeString(OCXmlParserReader& reader);
    /// `ID`, `ENTITY`, `ENTITIES` or `NMTOKEN`.
    ///
    /// Note: of `IDREF` and `IDREFS` only the `ID` is consumed, and of `NMTOKENS` only the
    /// `NMTOKEN`. Attribute definitions of these three types are therefore rejected.
    bool possibleAttributeTypeTokenized(OCXmlParserReader& reader);
    /// `(…)` or `NOTATION (…)`. What is between the parentheses is not looked at, but that they are
    /// balanced.
    bool possibleAttributeTypeEnumerated(OCXmlParserReader& reader);
    /// `#REQUIRED`, `#IMPLIED`, or a quoted value with or without `#FIXED`.
    void parseDefaultDeclaration(OCXmlParserReader& reader);
    bool possibleDefaultDeclarationRequired(OCXmlParserReader& reader);
    bool possibleDefaultDeclarationImplied(OCXmlParserReader& reader);
    /// `#FIXED` and the white space behind it; the value is left to the caller.
    bool possibleDefaultDeclarationFixed(OCXmlParserReader& reader);

    /// `<!ENTITY name …>` or `<!ENTITY % name …>`
    bool possibleEntityDeclaration(OCXmlParserReader& reader);
    /// A name and a quoted value, or a name, an external identifier and possibly its notation.
    void parseGeneralEntityDeclaration(OCXmlParserReader& reader);
    /// A name and a quoted value or an external identifier.
    void parseParameterEntityDeclaration(OCXmlParserReader& reader);
    /// A text in quotes, in which references are not looked at.
    bool possibleEntityValue(OCXmlParserReader& reader);
    /// White space, `NDATA` and a name. White space without `NDATA` is consumed and false.
    bool possibleNotationDataDeclaration(OCXmlParserReader& reader);

    /// `<!NOTATION name …>`; what follows the name is not looked at.
    bool possibleNotationDeclaration(OCXmlParserReader& reader);

    /// `PUBLIC 'identifier' 'identifier'` or `SYSTEM 'identifier'`
    bool possibleExternalIdentifier(OCXmlParserReader& reader);
    bool possibleExternalIdentifierPublic(OCXmlParserReader& reader);
    bool possibleExternalIdentifierSystem(OCXmlParserReader& reader);
    /// A text in quotes, appended to `identifier` without them.
    void parsePublicIdentifier(OCXmlParserReader& reader, OCWideString& identifier);
    void parseSystemIdentifier(OCXmlParserReader& reader, OCWideString& identifier);

    /// `%…;`
    bool possibleParameterEntityReference(OCXmlParserReader& reader);

private:
    OCXmlParser& parser;
};

#endif
