#include "OCDtdParser.h"

#include "markup/XmlGrammar.h"

using orvabase::DtdGrammar;
using orvabase::XmlGrammar;

OCDtdParser::~OCDtdParser() noexcept = default;

void OCDtdParser::parse(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parse();
}

void OCDtdParser::parseBegin(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseBegin();
}

void OCDtdParser::parseEnd(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseEnd();
}

bool OCDtdParser::possibleMarkupDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleMarkupDeclaration();
}

bool OCDtdParser::possibleElementDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleElementDeclaration();
}

void OCDtdParser::parseContentSpecification(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseContentSpecification();
}

bool OCDtdParser::possibleAttributeListDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleAttributeListDeclaration();
}

bool OCDtdParser::possibleAttributeDefinition(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleAttributeDefinition();
}

void OCDtdParser::parseAttributeType(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseAttributeType();
}

bool OCDtdParser::possibleAttributeTypeString(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleAttributeTypeString();
}

bool OCDtdParser::possibleAttributeTypeTokenized(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleAttributeTypeTokenized();
}

bool OCDtdParser::possibleAttributeTypeEnumerated(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleAttributeTypeEnumerated();
}

void OCDtdParser::parseDefaultDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseDefaultDeclaration();
}

bool OCDtdParser::possibleDefaultDeclarationRequired(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleDefaultDeclarationRequired();
}

bool OCDtdParser::possibleDefaultDeclarationImplied(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleDefaultDeclarationImplied();
}

bool OCDtdParser::possibleDefaultDeclarationFixed(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleDefaultDeclarationFixed();
}

bool OCDtdParser::possibleEntityDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleEntityDeclaration();
}

void OCDtdParser::parseGeneralEntityDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseGeneralEntityDeclaration();
}

void OCDtdParser::parseParameterEntityDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseParameterEntityDeclaration();
}

bool OCDtdParser::possibleEntityValue(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleEntityValue();
}

bool OCDtdParser::possibleNotationDataDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleNotationDataDeclaration();
}

bool OCDtdParser::possibleNotationDeclaration(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleNotationDeclaration();
}

bool OCDtdParser::possibleExternalIdentifier(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleExternalIdentifier();
}

bool OCDtdParser::possibleExternalIdentifierPublic(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleExternalIdentifierPublic();
}

bool OCDtdParser::possibleExternalIdentifierSystem(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleExternalIdentifierSystem();
}

void OCDtdParser::parsePublicIdentifier(OCXmlParserReader& reader, OCWideString& identifier) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parsePublicIdentifier(&identifier, identifier.getLength());
}

void OCDtdParser::parseSystemIdentifier(OCXmlParserReader& reader, OCWideString& identifier) {
    XmlGrammar xml(parser, reader);
    DtdGrammar(xml).parseSystemIdentifier(&identifier, identifier.getLength());
}

bool OCDtdParser::possibleParameterEntityReference(OCXmlParserReader& reader) {
    XmlGrammar xml(parser, reader);
    return DtdGrammar(xml).possibleParameterEntityReference();
}
