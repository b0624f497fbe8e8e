#include "markup/XmlGrammar.h"

namespace orvabase {

bool DtdGrammar::requireWhiteSpace(OEXmlParserErrorClass errorClass) {
    if (cursor.skipWhiteSpace())
        return true;
    xml.error(errorClass);
    return false;
}

/// White space, if any, and the `>` that closes a declaration.
bool DtdGrammar::requireEnd(OEXmlParserErrorClass errorClass) {
    cursor.skipWhiteSpace();
    if (cursor.accept(L'>'))
        return true;
    xml.error(errorClass);
    return false;
}

void DtdGrammar::parse() {
    parseBegin();
    xml.parseName();
    cursor.skipWhiteSpace();
    if (possibleExternalIdentifier())
        cursor.skipWhiteSpace();
    if (cursor.accept(L'[')) {
        parseInternalSubset();
        if (!cursor.accept(L']')) {
            xml.error(XmlParserErrorDocumentTypeDeclarationMalformed);
            return;
        }
        cursor.skipWhiteSpace();
    }
    parseEnd();
}

void DtdGrammar::parseBegin() {
    cursor.skip(sizeof "<!DOCTYPE" - 1);
    requireWhiteSpace(XmlParserErrorDocumentTypeDeclarationMalformed);
}

void DtdGrammar::parseEnd() {
    if (!cursor.accept(L'>'))
        xml.error(XmlParserErrorDocumentTypeDeclarationMalformed);
}

void DtdGrammar::parseInternalSubset() {
    bool matched = true;
    while (matched) {
        matched = possibleMarkupDeclaration();
        matched = possibleParameterEntityReference() || matched;
        matched = cursor.skipWhiteSpace() || matched;
    }
}

bool DtdGrammar::possibleMarkupDeclaration() {
    return possibleElementDeclaration() || possibleAttributeListDeclaration() ||
           possibleEntityDeclaration() || possibleNotationDeclaration() ||
           xml.possibleProcessingInstruction() || xml.possibleComment();
}

bool DtdGrammar::possibleElementDeclaration() {
    if (!cursor.accept(L"<!ELEMENT"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorElementDeclarationMalformed))
        return false;
    xml.parseName();
    if (!requireWhiteSpace(XmlParserErrorElementDeclarationMalformed))
        return false;
    parseContentSpecification();
    return requireEnd(XmlParserErrorElementDeclarationMalformed);
}

void DtdGrammar::parseContentSpecification() {
    if (!cursor.find(L'>'))
        xml.error(XmlParserErrorContentSpecificationMalformed);
}

bool DtdGrammar::possibleAttributeListDeclaration() {
    if (!cursor.accept(L"<!ATTLIST"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorAttributeListDeclarationMalformed))
        return false;
    xml.parseName();
    while (possibleAttributeDefinition()) {
    }
    return requireEnd(XmlParserErrorAttributeListDeclarationMalformed);
}

bool DtdGrammar::possibleAttributeDefinition() {
    if (!cursor.skipWhiteSpace() || !cursor.skipName())
        return false;
    if (!requireWhiteSpace(XmlParserErrorAttributeDefinitionMalformed))
        return false;
    parseAttributeType();
    if (!requireWhiteSpace(XmlParserErrorAttributeDefinitionMalformed))
        return false;
    parseDefaultDeclaration();
    return true;
}

void DtdGrammar::parseAttributeType() {
    if (!possibleAttributeTypeString() && !possibleAttributeTypeTokenized() &&
        !possibleAttributeTypeEnumerated())
        xml.error(XmlParserErrorAttributeTypeMalformed);
}

bool DtdGrammar::possibleAttributeTypeString() {
    return cursor.accept(L"CDATA");
}

bool DtdGrammar::possibleAttributeTypeTokenized() {
    // A keyword hides the longer ones behind it that begin with it. This is the order that callers
    // know.
    return cursor.accept(L"ID") || cursor.accept(L"IDREF") || cursor.accept(L"IDREFS") ||
           cursor.accept(L"ENTITY") || cursor.accept(L"ENTITIES") || cursor.accept(L"NMTOKEN") ||
           cursor.accept(L"NMTOKENS");
}

bool DtdGrammar::possibleAttributeTypeEnumerated() {
    if (cursor.accept(L"NOTATION")) {
        if (!requireWhiteSpace(XmlParserErrorAttributeTypeMalformed))
            return false;
        if (!cursor.peek(L'(')) {
            xml.error(XmlParserErrorAttributeTypeMalformed);
            return false;
        }
    } else if (!cursor.peek(L'('))
        return false;
    unsigned long open = 0;
    do {
        wchar_t c = 0;
        if (!cursor.preview(c)) {
            xml.error(XmlParserErrorAttributeTypeMalformed);
            return false;
        }
        cursor.advance(1);
        if (c == L'(')
            ++open;
        else if (c == L')')
            --open;
    } while (open > 0);
    return true;
}

void DtdGrammar::parseDefaultDeclaration() {
    if (possibleDefaultDeclarationRequired() || possibleDefaultDeclarationImplied())
        return;
    // A "#FIXED" without white space was reported and ends the declaration.
    if (cursor.peek(L"#FIXED") && !possibleDefaultDeclarationFixed())
        return;
    xml.parseAttributeValue(nullptr);
}

bool DtdGrammar::possibleDefaultDeclarationRequired() {
    return cursor.accept(L"#REQUIRED");
}

bool DtdGrammar::possibleDefaultDeclarationImplied() {
    return cursor.accept(L"#IMPLIED");
}

bool DtdGrammar::possibleDefaultDeclarationFixed() {
    return cursor.accept(L"#FIXED") && requireWhiteSpace(XmlParserErrorDefaultDeclarationMalformed);
}

bool DtdGrammar::possibleEntityDeclaration() {
    if (!cursor.accept(L"<!ENTITY"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorEntityDeclarationMalformed))
        return false;
    if (cursor.accept(L'%')) {
        if (!requireWhiteSpace(XmlParserErrorEntityDeclarationMalformed))
            return false;
        parseParameterEntityDeclaration();
    } else
        parseGeneralEntityDeclaration();
    return requireEnd(XmlParserErrorEntityDeclarationMalformed);
}

void DtdGrammar::parseGeneralEntityDeclaration() {
    xml.parseName();
    if (cursor.skipWhiteSpace()) {
        if (possibleEntityValue())
            return;
        if (possibleExternalIdentifier()) {
            possibleNotationDataDeclaration();
            return;
        }
    }
    xml.error(XmlParserErrorEntityDeclarationMalformed);
}

void DtdGrammar::parseParameterEntityDeclaration() {
    xml.parseName();
    if (cursor.skipWhiteSpace() && (possibleEntityValue() || possibleExternalIdentifier()))
        return;
    xml.error(XmlParserErrorEntityDeclarationMalformed);
}

bool DtdGrammar::possibleEntityValue() {
    const XmlGrammar::Quoted found = xml.quoted(nullptr);
    if (found == XmlGrammar::QuotedOpen)
        xml.error(XmlParserErrorEntityValueMalformed);
    return found == XmlGrammar::QuotedClosed;
}

bool DtdGrammar::possibleNotationDataDeclaration() {
    if (!cursor.skipWhiteSpace() || !cursor.accept(L"NDATA"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorNotationDataDeclarationMalformed))
        return false;
    xml.parseName();
    return true;
}

bool DtdGrammar::possibleNotationDeclaration() {
    if (!cursor.accept(L"<!NOTATION"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorNotationDeclarationMalformed))
        return false;
    xml.parseName();
    if (!requireWhiteSpace(XmlParserErrorNotationDeclarationMalformed))
        return false;
    if (!cursor.findAndSkip(L">")) {
        xml.error(XmlParserErrorNotationDeclarationMalformed);
        return false;
    }
    return true;
}

bool DtdGrammar::possibleExternalIdentifier() {
    return possibleExternalIdentifierPublic() || possibleExternalIdentifierSystem();
}

bool DtdGrammar::possibleExternalIdentifierPublic() {
    if (!cursor.accept(L"PUBLIC"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorPublicIdentifierMalformed))
        return false;
    parsePublicIdentifier(nullptr);
    if (!requireWhiteSpace(XmlParserErrorPublicIdentifierMalformed))
        return false;
    parseSystemIdentifier(nullptr);
    return true;
}

bool DtdGrammar::possibleExternalIdentifierSystem() {
    if (!cursor.accept(L"SYSTEM"))
        return false;
    if (!requireWhiteSpace(XmlParserErrorSystemIdentifierMalformed))
        return false;
    parseSystemIdentifier(nullptr);
    return true;
}

void DtdGrammar::parsePublicIdentifier(OCWideString* identifier, unsigned long kept) {
    if (xml.quoted(identifier, kept) != XmlGrammar::QuotedClosed)
        xml.error(XmlParserErrorPublicIdentifierMalformed);
}

void DtdGrammar::parseSystemIdentifier(OCWideString* identifier, unsigned long kept) {
    if (xml.quoted(identifier, kept) != XmlGrammar::QuotedClosed)
        xml.error(XmlParserErrorSystemIdentifierMalformed);
}

bool DtdGrammar::possibleParameterEntityReference() {
    if (!cursor.accept(L'%'))
        return false;
    if (!cursor.findAndSkip(L";")) {
        xml.error(XmlParserErrorParameterEntityReferenceMalformed);
        return false;
    }
    return true;
}

} // namespace orvabase
