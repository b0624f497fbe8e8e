#include "OCDtdParser.h"

#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/XmlModel.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using xmlmodel::Log;
using xmlmodel::logged;
using xmlmodel::LoggingEvents;
using xmlmodel::LoggingStream;

struct Input {
    explicit Input(const std::string& bytes, bool errorsReturn = false)
        : stream(bytes), source(stream, XmlEncodingAnsi), reader(source), receiver(log), dtd(xml) {
        receiver.errorsReturn = errorsReturn;
        xml.setEvents(receiver);
    }
    std::string rest() {
        OCWideString characters;
        reader.findCharacter(0x7FFFFFFF, characters);
        return xmlmodel::printable(characters);
    }

    LoggingStream stream;
    OCXmlParserSource source;
    OCXmlParserReader reader;
    Log log;
    LoggingEvents receiver;
    OCXmlParser xml;
    OCDtdParser dtd;
};

/// The events of a declaration, and the exception that ends its parse if one does.
Log events(const std::string& declaration) {
    Input input(declaration + "<root/>");
    logged(input.log, [&] { input.dtd.parse(input.reader); });
    if (input.log.empty() || input.log.back().compare(0, 6, "thrown") != 0) {
        EXPECT_EQ("<root/>", input.rest()) << declaration;
    }
    return input.log;
}

void expectAccepted(const std::string& declaration) {
    EXPECT_EQ(Log{}, events(declaration)) << declaration;
}

/// The declaration is rejected with the exception of this name, and nothing else happens.
void expectRejected(const std::string& declaration, const std::string& name,
                    const std::string& message) {
    const Log log = events(declaration);
    ASSERT_EQ(2u, log.size()) << declaration;
    EXPECT_EQ("thrown OXXmlParser_" + name + ": " + message, log[1]) << declaration;
}

/// The internal subset is rejected.
void expectSubsetRejected(const std::string& subset, const std::string& name,
                          const std::string& message) {
    expectRejected("<!DOCTYPE a [" + subset + "]>", name, message);
}

TEST(OCDtdParser, RefersToItsParser) {
    EXPECT_EQ(16u, sizeof(OCDtdParser));
    EXPECT_EQ(2u, slots::slotCount<OCDtdParser>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCDtdParser>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCDtdParser>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCDtdParser>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCDtdParser>));
}

TEST(OCDtdParser, AcceptsDeclarationsWithoutSubset) {
    for (const char* declaration :
         {"<!DOCTYPE a>", "<!DOCTYPE \n a \t>", "<!DOCTYPE a SYSTEM 'a.dtd'>",
          "<!DOCTYPE a SYSTEM \"a'.dtd\" >", "<!DOCTYPE a PUBLIC '-//x//y' 'a.dtd'>",
          "<!DOCTYPE a PUBLIC \"\" '' >", "<!DOCTYPE a PUBLIC '\x01 any character <>&' 'u'>",
          "<!DOCTYPE a[]>", "<!DOCTYPE a [ \n ] >", "<!DOCTYPE a SYSTEM 's'[]>",
          "<!DOCTYPE a SYSTEM 's' []>", "<!DOCTYPE a PUBLIC 'p' 's'\n[]>"})
        expectAccepted(declaration);
}

TEST(OCDtdParser, RejectsMalformedDeclarations) {
    for (const char* declaration :
         {"<!DOCTYPEa>", "<!DOCTYPE>", "<!DOCTYPE[]>", "<!DOCTYPE a", "<!DOCTYPE a x>",
          "<!DOCTYPE a [", "<!DOCTYPE a [ x]>", "<!DOCTYPE a [<!FOO>]>", "<!DOCTYPE a []",
          "<!DOCTYPE a [] x>", "<!DOCTYPE a [ <root/> ]>", "<!DOCTYPE a SYSTEM 's' x>",
          "<!DOCTYPE a public 'p' 's'>", "<!DOCTYPE a/>", "<!DOCTYPE a [<![INCLUDE[]]>]>"})
        expectRejected(declaration, "DocumentTypeDeclarationMalformed",
                       "Malformed XML document type declaration");
    for (const char* declaration : {"<!DOCTYPE >", "<!DOCTYPE [", "<!DOCTYPE (a)>", "<!DOCTYPE =>"})
        expectRejected(declaration, "NameMalformed", "Malformed XML name");
}

TEST(OCDtdParser, RequiresTheIdentifiers) {
    for (const char* declaration :
         {"<!DOCTYPE a PUBLIC '-//x//y'>", "<!DOCTYPE a PUBLIC>", "<!DOCTYPE a PUBLIC >",
          "<!DOCTYPE a PUBLIC'p' 's'>", "<!DOCTYPE a PUBLIC x 's'>", "<!DOCTYPE a PUBLIC 'p's'>",
          "<!DOCTYPE a PUBLIC 'p''s'>", "<!DOCTYPE a PUBLIC \"p' 's'>", "<!DOCTYPE a PUBLICX"})
        expectRejected(declaration, "PublicIdentifierMalformed", "Malformed XML public identifier");
    for (const char* declaration :
         {"<!DOCTYPE a SYSTEM>", "<!DOCTYPE a SYSTEM >", "<!DOCTYPE a SYSTEM's'>",
          "<!DOCTYPE a SYSTEM s>", "<!DOCTYPE a SYSTEM 's>", "<!DOCTYPE a PUBLIC 'p' s>",
          "<!DOCTYPE a PUBLIC 'p' 's>", "<!DOCTYPE a PUBLIC 'p' >"})
        expectRejected(declaration, "SystemIdentifierMalformed", "Malformed XML system identifier");
}

TEST(OCDtdParser, AcceptsElementDeclarations) {
    for (const char* subset :
         {"<!ELEMENT a (b|c)*>", "<!ELEMENT a EMPTY>", "<!ELEMENT a ANY >",
          "<!ELEMENT\na\n( #PCDATA | %e; )\n>", "<!ELEMENT a nonsense ' ( \">", "<!ELEMENT a  >"})
        expectAccepted(std::string("<!DOCTYPE a [") + subset + "]>");
}

TEST(OCDtdParser, RejectsMalformedElementDeclarations) {
    for (const char* subset :
         {"<!ELEMENTa (b)>", "<!ELEMENT>", "<!ELEMENT a>", "<!ELEMENT a(b)>", "<!ELEMENTS a (b)>"})
        expectSubsetRejected(subset, "ElementDeclarationMalformed",
                             "Malformed XML element declaration");
    expectSubsetRejected("<!ELEMENT >", "NameMalformed", "Malformed XML name");
    Input input("<!DOCTYPE a [<!ELEMENT a (b)");
    EXPECT_EXCEPTION(input.dtd.parse(input.reader), OXXmlParser_ContentSpecificationMalformed,
                     "Malformed XML content specification");
}

TEST(OCDtdParser, AcceptsAttributeLists) {
    for (const char* subset :
         {"<!ATTLIST a x CDATA #IMPLIED y (p|q) 'p'>", "<!ATTLIST a>", "<!ATTLIST a >",
          "<!ATTLIST a x ID #REQUIRED>", "<!ATTLIST a x ENTITY 'v'>",
          "<!ATTLIST a x ENTITIES \"v\" >", "<!ATTLIST a x NMTOKEN #FIXED 'v'>",
          "<!ATTLIST a x NOTATION (n|m) #IMPLIED>", "<!ATTLIST a x NOTATION\n( n ) 'n'>",
          "<!ATTLIST a x ((a(b))c) ''>", "<!ATTLIST a x (any 'thing\" > here) 'v'>",
          "<!ATTLIST a\n  x CDATA #IMPLIED\n  y CDATA '<>&'\n>",
          "<!ATTLIST a x CDATA #IMPLIED\n\ty CDATA #REQUIRED\n\tz CDATA 'v'>"})
        expectAccepted(std::string("<!DOCTYPE a [") + subset + "]>");
}

TEST(OCDtdParser, RejectsMalformedAttributeLists) {
    for (const char* subset :
         {"<!ATTLISTa>", "<!ATTLIST>", "<!ATTLIST a/>", "<!ATTLIST a x CDATA 'v'y>",
          "<!ATTLIST a x CDATA #IMPLIEDy>", "<!ATTLIST a ('v')>"})
        expectSubsetRejected(subset, "AttributeListDeclarationMalformed",
                             "Malformed XML attribute list declaration");
    expectSubsetRejected("<!ATTLIST >", "NameMalformed", "Malformed XML name");
}

TEST(OCDtdParser, RejectsMalformedAttributeDefinitions) {
    for (const char* subset : {"<!ATTLIST a x>", "<!ATTLIST a x(p) 'p'>", "<!ATTLIST a x CDATA>",
                               "<!ATTLIST a x CDATA'v'>", "<!ATTLIST a x CDATAS 'v'>",
                               "<!ATTLIST a x (p)'p'>", "<!ATTLIST a x ID#IMPLIED>"})
        expectSubsetRejected(subset, "AttributeDefinitionMalformed",
                             "Malformed XML attribute definition");
    for (const char* subset : {"<!ATTLIST a x >", "<!ATTLIST a x FOO 'v'>", "<!ATTLIST a x 'v'>",
                               "<!ATTLIST a x NOTATION>", "<!ATTLIST a x NOTATION(n) 'n'>",
                               "<!ATTLIST a x NOTATION n 'n'>", "<!ATTLIST a x (p 'p'>",
                               "<!ATTLIST a x (p(q) 'p'>", "<!ATTLIST a x cdata 'v'>"})
        expectSubsetRejected(subset, "AttributeTypeMalformed", "Malformed XML attribute type");
    for (const char* subset : {"<!ATTLIST a x CDATA >", "<!ATTLIST a x CDATA v>",
                               "<!ATTLIST a x CDATA #FIXED v>", "<!ATTLIST a x CDATA #FIXED >",
                               "<!ATTLIST a x CDATA 'v>", "<!ATTLIST a x CDATA #required>"})
        expectSubsetRejected(subset, "AttributeValueMalformed", "Malformed XML attribute value");
    for (const char* subset : {"<!ATTLIST a x CDATA #FIXED>", "<!ATTLIST a x CDATA #FIXED'v'>"})
        expectSubsetRejected(subset, "DefaultDeclarationMalformed",
                             "Malformed XML default declaration");
}

TEST(OCDtdParser, RejectsTheTypesThatAShorterKeywordHides) {
    for (const char* type : {"IDREF", "IDREFS", "NMTOKENS"})
        expectSubsetRejected(std::string("<!ATTLIST a x ") + type + " #IMPLIED>",
                             "AttributeDefinitionMalformed", "Malformed XML attribute definition");
}

TEST(OCDtdParser, AcceptsEntityDeclarations) {
    for (const char* subset :
         {"<!ENTITY e 'v'>", "<!ENTITY e \"%x; &y; ' <\" >", "<!ENTITY e ''>",
          "<!ENTITY e SYSTEM 's'>", "<!ENTITY e SYSTEM 's' >", "<!ENTITY e PUBLIC 'p' 's'>",
          "<!ENTITY e SYSTEM 's' NDATA n>", "<!ENTITY e PUBLIC 'p' 's' NDATA n >",
          "<!ENTITY % p 'v'>", "<!ENTITY % p SYSTEM 's' >", "<!ENTITY\n%\np\nPUBLIC 'p' 's'>"})
        expectAccepted(std::string("<!DOCTYPE a [") + subset + "]>");
}

TEST(OCDtdParser, RejectsMalformedEntityDeclarations) {
    for (const char* subset :
         {"<!ENTITYe 'v'>", "<!ENTITY>", "<!ENTITY e>", "<!ENTITY e >", "<!ENTITY e v>",
          "<!ENTITY e'v'>", "<!ENTITY e/ 'v'>", "<!ENTITY e 'v' x>", "<!ENTITY e 'v' NDATA n>",
          "<!ENTITY e SYSTEM 's'NDATA n>", "<!ENTITY %p 'v'>", "<!ENTITY % p>", "<!ENTITY % p v>",
          "<!ENTITY % p SYSTEM 'p' NDATA n>", "<!ENTITY % p 'v' x>", "<!ENTITY e SYSTEM 's' x>"})
        expectSubsetRejected(subset, "EntityDeclarationMalformed",
                             "Malformed XML entity declaration");
    for (const char* subset :
         {"<!ENTITY >", "<!ENTITY % >", "<!ENTITY (e) 'v'>", "<!ENTITY e SYSTEM 's' NDATA >"})
        expectSubsetRejected(subset, "NameMalformed", "Malformed XML name");
    for (const char* subset : {"<!ENTITY e 'v>", "<!ENTITY e \"v'>", "<!ENTITY % p 'v\">"})
        expectSubsetRejected(subset, "EntityValueMalformed", "Malformed XML entity value");
    for (const char* subset : {"<!ENTITY e SYSTEM 's' NDATA>", "<!ENTITY e SYSTEM 's' NDATAn>"})
        expectSubsetRejected(subset, "NotationDataDeclarationMalformed",
                             "Malformed XML notation data declaration");
    expectSubsetRejected("<!ENTITY e SYSTEM>", "SystemIdentifierMalformed",
                         "Malformed XML system identifier");
    expectSubsetRejected("<!ENTITY e PUBLIC 'p'>", "PublicIdentifierMalformed",
                         "Malformed XML public identifier");
}

TEST(OCDtdParser, AcceptsNotationDeclarations) {
    for (const char* subset : {"<!NOTATION n SYSTEM 's'>", "<!NOTATION n PUBLIC 'p'>",
                               "<!NOTATION n nonsense>", "<!NOTATION n >"})
        expectAccepted(std::string("<!DOCTYPE a [") + subset + "]>");
}

TEST(OCDtdParser, RejectsMalformedNotationDeclarations) {
    for (const char* subset :
         {"<!NOTATIONn SYSTEM 's'>", "<!NOTATION>", "<!NOTATION n>", "<!NOTATION n/ SYSTEM 's'>"})
        expectSubsetRejected(subset, "NotationDeclarationMalformed",
                             "Malformed XML notation declaration");
    expectSubsetRejected("<!NOTATION >", "NameMalformed", "Malformed XML name");
    Input input("<!DOCTYPE a [<!NOTATION n SYSTEM 's'");
    EXPECT_EXCEPTION(input.dtd.parse(input.reader), OXXmlParser_NotationDeclarationMalformed,
                     "Malformed XML notation declaration");
}

TEST(OCDtdParser, ReportsOnlyProcessingInstructions) {
    EXPECT_EQ(Log{"instruction pi|d"}, events("<!DOCTYPE a [<!ENTITY e 'v'> %p; <?pi d?>]>"));
    EXPECT_EQ((Log{"instruction p|", "instruction xml|v "}),
              events("<!DOCTYPE a [<!-- <?no?> --><?p?><!ELEMENT a (b)><?xml v ?>]>"));
    expectSubsetRejected("<?p", "ProcessingInstructionMalformed",
                         "Malformed XML processing instruction");
    expectSubsetRejected("<? p?>", "NameMalformed", "Malformed XML name");
    expectSubsetRejected("<!-- c", "CommentMalformed", "Malformed XML comment");
}

TEST(OCDtdParser, SkipsParameterEntityReferences) {
    for (const char* subset :
         {"%p;", "%;", "% p q ;", "%p;%q; %r;", "<!ENTITY e 'v'>%p;<!ENTITY f 'v'>"})
        expectAccepted(std::string("<!DOCTYPE a [") + subset + "]>");
    for (const char* subset : {"%", "%p", "%p "})
        expectSubsetRejected(subset, "ParameterEntityReferenceMalformed",
                             "Malformed XML parameter entity reference");
}

TEST(OCDtdParser, MatchesKeywordsExactlyAndAsPrefixes) {
    expectRejected("<!DOCTYPE a system 's'>", "DocumentTypeDeclarationMalformed",
                   "Malformed XML document type declaration");
    expectSubsetRejected("<!element a (b)>", "DocumentTypeDeclarationMalformed",
                         "Malformed XML document type declaration");
    expectSubsetRejected("<!ATTLIST a x CDATA #REQUIREDy>", "AttributeListDeclarationMalformed",
                         "Malformed XML attribute list declaration");
    for (const char* type : {"CDATAX", "IDX", "ENTITYX", "ENTITIESX", "NMTOKENX"})
        expectSubsetRejected(std::string("<!ATTLIST a x ") + type + " 'v'>",
                             "AttributeDefinitionMalformed", "Malformed XML attribute definition");
    expectRejected("<!DOCTYPE a SYSTEMx 's'>", "SystemIdentifierMalformed",
                   "Malformed XML system identifier");
    expectRejected("<!DOCTYPE a PUBLICx 'p' 's'>", "PublicIdentifierMalformed",
                   "Malformed XML public identifier");
}

TEST(OCDtdParser, SharesTheNamesAndTheWhiteSpaceOfItsParser) {
    for (const char* declaration :
         {"<!DOCTYPE '\"<&;!]|,:-.%#0>", "<!DOCTYPE\x80"
                                         "a\xFFSYSTEM\x01's'\xE9[\x1F]\x80>"})
        expectAccepted(declaration);
    for (const char* subset :
         {"<!ELEMENT ] x>", "<!ELEMENT\xE9'n\x80(b)>", "<!ATTLIST ; 'x CDATA 'v'>",
          "<!ATTLIST a\xC3\xA9x\x80"
          "ID\xFF#IMPLIED\x01>",
          "<!ENTITY \" 'v'>", "<!ENTITY &e\xE9'v'\x80>", "<!ENTITY\x80%\x81%p\x82'v'>",
          "<!ENTITY e SYSTEM 's'\xE9NDATA\xE9'n'>", "<!NOTATION | s>"})
        expectAccepted(std::string("<!DOCTYPE a [") + subset + "]>");
    for (const char delimiter : std::string("()*+/=>?["))
        expectRejected(std::string("<!DOCTYPE ") + delimiter + "a>", "NameMalformed",
                       "Malformed XML name");

    const std::wstring wide = L"<!DOCTYPE \x20AC [<!ELEMENT \xE9 \x80>]>x";
    LoggingStream stream(std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 4));
    OCXmlParserSource source(stream, XmlEncodingWide);
    OCXmlParserReader reader(source);
    OCXmlParser xml;
    OCDtdParser(xml).parse(reader);
    EXPECT_TRUE(reader.peekString(L"x"));
}

TEST(OCDtdParser, ReportsThroughItsParser) {
    LoggingStream stream("<!DOCTYPEa>");
    OCXmlParserSource source(stream, XmlEncodingAnsi);
    OCXmlParserReader reader(source);
    OCXmlParser silent;
    OCDtdParser dtd(silent);
    EXPECT_EXCEPTION(dtd.parse(reader), OXXmlParser_UnhandledError, "Unhandled XML error");
}

TEST(OCDtdParser, TrustsItsCallerForTheBeginning) {
    Input input("123456789 a>x");
    input.dtd.parse(input.reader);
    EXPECT_EQ("x", input.rest());
}

// The grammar operations by themselves

TEST(OCDtdParser, ItsOperationsTellWhetherTheirConstructIsThere) {
    struct {
        const char* input;
        bool (OCDtdParser::*operation)(OCXmlParserReader&);
        bool found;
        const char* rest;
        Log log;
    } const cases[] = {
        {"<!ELEMENT a b>x", &OCDtdParser::possibleMarkupDeclaration, true, "x", {}},
        {"<!ATTLIST a>x", &OCDtdParser::possibleMarkupDeclaration, true, "x", {}},
        {"<!ENTITY a 'b'>x", &OCDtdParser::possibleMarkupDeclaration, true, "x", {}},
        {"<!NOTATION a b>x", &OCDtdParser::possibleMarkupDeclaration, true, "x", {}},
        {"<?p d?>x", &OCDtdParser::possibleMarkupDeclaration, true, "x", {"instruction p|d"}},
        {"<!--c-->x", &OCDtdParser::possibleMarkupDeclaration, true, "x", {}},
        {" <!--c-->x", &OCDtdParser::possibleMarkupDeclaration, false, " <!--c-->x", {}},
        {"%p;", &OCDtdParser::possibleMarkupDeclaration, false, "%p;", {}},
        {"<!ELEMENT a b>x", &OCDtdParser::possibleElementDeclaration, true, "x", {}},
        {"<!ELEMENTa b>x", &OCDtdParser::possibleElementDeclaration, false, "a b>x", {"error 11"}},
        {"<!ELEMENT a>x", &OCDtdParser::possibleElementDeclaration, false, ">x", {"error 11"}},
        {"<!ELEMENT a b",
         &OCDtdParser::possibleElementDeclaration,
         false,
         "",
         {"error 8", "error 11"}},
        {"<!ATTLIST a>x", &OCDtdParser::possibleElementDeclaration, false, "<!ATTLIST a>x", {}},
        {"<!ATTLIST a x CDATA 'v'>x",
         &OCDtdParser::possibleAttributeListDeclaration,
         true,
         "x",
         {}},
        {"<!ATTLIST(a>x",
         &OCDtdParser::possibleAttributeListDeclaration,
         false,
         "(a>x",
         {"error 1"}},
        {"<!ATTLIST a ()x",
         &OCDtdParser::possibleAttributeListDeclaration,
         false,
         "()x",
         {"error 1"}},
        {"<!ENTITY a>x", &OCDtdParser::possibleAttributeListDeclaration, false, "<!ENTITY a>x", {}},
        {" x CDATA 'v'>", &OCDtdParser::possibleAttributeDefinition, true, ">", {}},
        {"x CDATA 'v'>", &OCDtdParser::possibleAttributeDefinition, false, "x CDATA 'v'>", {}},
        {" \n>", &OCDtdParser::possibleAttributeDefinition, false, ">", {}},
        {" x>", &OCDtdParser::possibleAttributeDefinition, false, ">", {"error 0"}},
        {" x CDATA>", &OCDtdParser::possibleAttributeDefinition, false, ">", {"error 0"}},
        {" x FOO 'v'>",
         &OCDtdParser::possibleAttributeDefinition,
         false,
         "FOO 'v'>",
         {"error 3", "error 0"}},
        {"CDATA ", &OCDtdParser::possibleAttributeTypeString, true, " ", {}},
        {"CDAT ", &OCDtdParser::possibleAttributeTypeString, false, "CDAT ", {}},
        {"CDATAX ", &OCDtdParser::possibleAttributeTypeString, true, "X ", {}},
        {"IDX ", &OCDtdParser::possibleAttributeTypeTokenized, true, "X ", {}},
        {"ENTITYX ", &OCDtdParser::possibleAttributeTypeTokenized, true, "X ", {}},
        {"ENTITIESX ", &OCDtdParser::possibleAttributeTypeTokenized, true, "X ", {}},
        {"ID ", &OCDtdParser::possibleAttributeTypeTokenized, true, " ", {}},
        {"IDREFS ", &OCDtdParser::possibleAttributeTypeTokenized, true, "REFS ", {}},
        {"ENTITY ", &OCDtdParser::possibleAttributeTypeTokenized, true, " ", {}},
        {"ENTITIES ", &OCDtdParser::possibleAttributeTypeTokenized, true, " ", {}},
        {"NMTOKENS ", &OCDtdParser::possibleAttributeTypeTokenized, true, "S ", {}},
        {"CDATA ", &OCDtdParser::possibleAttributeTypeTokenized, false, "CDATA ", {}},
        {"(a|(b)) ", &OCDtdParser::possibleAttributeTypeEnumerated, true, " ", {}},
        {"NOTATION (a) ", &OCDtdParser::possibleAttributeTypeEnumerated, true, " ", {}},
        {"a) ", &OCDtdParser::possibleAttributeTypeEnumerated, false, "a) ", {}},
        {"NOTATION(a) ", &OCDtdParser::possibleAttributeTypeEnumerated, false, "(a) ", {"error 3"}},
        {"NOTATION a ", &OCDtdParser::possibleAttributeTypeEnumerated, false, "a ", {"error 3"}},
        {"NOTATIONx (a)",
         &OCDtdParser::possibleAttributeTypeEnumerated,
         false,
         "x (a)",
         {"error 3"}},
        {"((a) ", &OCDtdParser::possibleAttributeTypeEnumerated, false, "", {"error 3"}},
        {"#REQUIRED ", &OCDtdParser::possibleDefaultDeclarationRequired, true, " ", {}},
        {"#IMPLIED ", &OCDtdParser::possibleDefaultDeclarationRequired, false, "#IMPLIED ", {}},
        {"#IMPLIED ", &OCDtdParser::possibleDefaultDeclarationImplied, true, " ", {}},
        {"'v'", &OCDtdParser::possibleDefaultDeclarationImplied, false, "'v'", {}},
        {"#FIXED \n'v'", &OCDtdParser::possibleDefaultDeclarationFixed, true, "'v'", {}},
        {"#FIXED'v'", &OCDtdParser::possibleDefaultDeclarationFixed, false, "'v'", {"error 9"}},
        {"'v'", &OCDtdParser::possibleDefaultDeclarationFixed, false, "'v'", {}},
        {"<!ENTITY e 'v'>x", &OCDtdParser::possibleEntityDeclaration, true, "x", {}},
        {"<!ENTITY % p 'v'>x", &OCDtdParser::possibleEntityDeclaration, true, "x", {}},
        {"<!ENTITYe>x", &OCDtdParser::possibleEntityDeclaration, false, "e>x", {"error 13"}},
        {"<!ENTITY %e>x", &OCDtdParser::possibleEntityDeclaration, false, "e>x", {"error 13"}},
        {"<!ENTITY e>x", &OCDtdParser::possibleEntityDeclaration, true, "x", {"error 13"}},
        {"<!ENTITY e 'v' x", &OCDtdParser::possibleEntityDeclaration, false, "x", {"error 13"}},
        {"<!ELEMENT e>x", &OCDtdParser::possibleEntityDeclaration, false, "<!ELEMENT e>x", {}},
        {"'v'x", &OCDtdParser::possibleEntityValue, true, "x", {}},
        {"\"v'\"x", &OCDtdParser::possibleEntityValue, true, "x", {}},
        {"v", &OCDtdParser::possibleEntityValue, false, "v", {}},
        {"'v", &OCDtdParser::possibleEntityValue, false, "", {"error 14"}},
        {" NDATA n>", &OCDtdParser::possibleNotationDataDeclaration, true, ">", {}},
        {"NDATA n>", &OCDtdParser::possibleNotationDataDeclaration, false, "NDATA n>", {}},
        {" >", &OCDtdParser::possibleNotationDataDeclaration, false, ">", {}},
        {" NDATA>", &OCDtdParser::possibleNotationDataDeclaration, false, ">", {"error 16"}},
        {" NDATA >", &OCDtdParser::possibleNotationDataDeclaration, true, ">", {"error 15"}},
        {"<!NOTATION n s>x", &OCDtdParser::possibleNotationDeclaration, true, "x", {}},
        {"<!NOTATION n s", &OCDtdParser::possibleNotationDeclaration, false, "", {"error 17"}},
        {"<!NOTATIONn s>", &OCDtdParser::possibleNotationDeclaration, false, "n s>", {"error 17"}},
        {"<!NOTATION n>", &OCDtdParser::possibleNotationDeclaration, false, ">", {"error 17"}},
        {"<!ENTITY n s>", &OCDtdParser::possibleNotationDeclaration, false, "<!ENTITY n s>", {}},
        {"PUBLIC 'p' 's'x", &OCDtdParser::possibleExternalIdentifier, true, "x", {}},
        {"SYSTEM 's'x", &OCDtdParser::possibleExternalIdentifier, true, "x", {}},
        {"FOO 's'x", &OCDtdParser::possibleExternalIdentifier, false, "FOO 's'x", {}},
        {"SYSTEM 's'x", &OCDtdParser::possibleExternalIdentifierPublic, false, "SYSTEM 's'x", {}},
        {"PUBLIC'p'x", &OCDtdParser::possibleExternalIdentifierPublic, false, "'p'x", {"error 20"}},
        {"PUBLIC 'p'x", &OCDtdParser::possibleExternalIdentifierPublic, false, "x", {"error 20"}},
        {"PUBLIC 'p' x", &OCDtdParser::possibleExternalIdentifierPublic, true, "x", {"error 21"}},
        {"PUBLIC 's'x", &OCDtdParser::possibleExternalIdentifierSystem, false, "PUBLIC 's'x", {}},
        {"SYSTEM's'x", &OCDtdParser::possibleExternalIdentifierSystem, false, "'s'x", {"error 21"}},
        {"SYSTEM x", &OCDtdParser::possibleExternalIdentifierSystem, true, "x", {"error 21"}},
        {"%p;x", &OCDtdParser::possibleParameterEntityReference, true, "x", {}},
        {"p;x", &OCDtdParser::possibleParameterEntityReference, false, "p;x", {}},
        {"%p", &OCDtdParser::possibleParameterEntityReference, false, "", {"error 18"}},
    };
    for (const auto& c : cases) {
        Input input(c.input, true);
        EXPECT_EQ(c.found, (input.dtd.*c.operation)(input.reader)) << c.input;
        EXPECT_EQ(c.rest, input.rest()) << c.input;
        EXPECT_EQ(c.log, input.log) << c.input;
    }
}

TEST(OCDtdParser, ItsRequiringOperationsReportWhatIsMissing) {
    struct {
        const char* input;
        void (OCDtdParser::*operation)(OCXmlParserReader&);
        const char* rest;
        Log log;
    } const cases[] = {
        {"<!DOCTYPE a [<!FOO>]>", &OCDtdParser::parse, "<!FOO>]>", {"error 10"}},
        {"<!DOCTYPE \na", &OCDtdParser::parseBegin, "a", {}},
        {"<!DOCTYPEa", &OCDtdParser::parseBegin, "a", {"error 10"}},
        {"<!DOC", &OCDtdParser::parseBegin, "", {"error 10"}},
        {">x", &OCDtdParser::parseEnd, "x", {}},
        {" >x", &OCDtdParser::parseEnd, " >x", {"error 10"}},
        {"(a|b)*>x", &OCDtdParser::parseContentSpecification, ">x", {}},
        {"(a|b)*", &OCDtdParser::parseContentSpecification, "", {"error 8"}},
        {"CDATA x", &OCDtdParser::parseAttributeType, " x", {}},
        {"NMTOKEN x", &OCDtdParser::parseAttributeType, " x", {}},
        {"(a) x", &OCDtdParser::parseAttributeType, " x", {}},
        {"FOO x", &OCDtdParser::parseAttributeType, "FOO x", {"error 3"}},
        {"(a", &OCDtdParser::parseAttributeType, "", {"error 3", "error 3"}},
        {"#REQUIRED x", &OCDtdParser::parseDefaultDeclaration, " x", {}},
        {"#IMPLIED x", &OCDtdParser::parseDefaultDeclaration, " x", {}},
        {"#FIXED 'v'x", &OCDtdParser::parseDefaultDeclaration, "x", {}},
        {"'v'x", &OCDtdParser::parseDefaultDeclaration, "x", {}},
        {"#FIXED'v'x", &OCDtdParser::parseDefaultDeclaration, "'v'x", {"error 9"}},
        {"x", &OCDtdParser::parseDefaultDeclaration, "x", {"error 4"}},
        {"'v", &OCDtdParser::parseDefaultDeclaration, "", {"error 4", "error 4"}},
        {"e 'v'>", &OCDtdParser::parseGeneralEntityDeclaration, ">", {}},
        {"e SYSTEM 's' NDATA n>", &OCDtdParser::parseGeneralEntityDeclaration, ">", {}},
        {"e>", &OCDtdParser::parseGeneralEntityDeclaration, ">", {"error 13"}},
        {"e x>", &OCDtdParser::parseGeneralEntityDeclaration, "x>", {"error 13"}},
        {"= 'v'>", &OCDtdParser::parseGeneralEntityDeclaration, "= 'v'>", {"error 15", "error 13"}},
        {"p 'v'>", &OCDtdParser::parseParameterEntityDeclaration, ">", {}},
        {"p SYSTEM 's' NDATA n>", &OCDtdParser::parseParameterEntityDeclaration, " NDATA n>", {}},
        {"p>", &OCDtdParser::parseParameterEntityDeclaration, ">", {"error 13"}},
        {"p x>", &OCDtdParser::parseParameterEntityDeclaration, "x>", {"error 13"}},
    };
    for (const auto& c : cases) {
        Input input(c.input, true);
        (input.dtd.*c.operation)(input.reader);
        EXPECT_EQ(c.rest, input.rest()) << c.input;
        EXPECT_EQ(c.log, input.log) << c.input;
    }
}

TEST(OCDtdParser, AppendsIdentifiersToTheirArgument) {
    Input input("'public \"'\"system '\"'open", true);
    OCWideString identifier(L"0");
    input.dtd.parsePublicIdentifier(input.reader, identifier);
    EXPECT_TRUE(identifier == L"0public \"");
    input.dtd.parseSystemIdentifier(input.reader, identifier);
    EXPECT_TRUE(identifier == L"0public \"system '");
    input.dtd.parsePublicIdentifier(input.reader, identifier);
    EXPECT_TRUE(identifier == L"0public \"system 'open");
    input.dtd.parseSystemIdentifier(input.reader, identifier);
    EXPECT_TRUE(identifier == L"0public \"system 'open");
    EXPECT_EQ((Log{"error 20", "error 21"}), input.log);
}

TEST(OCDtdParser, ShowsTheReaderUpToDateInEachEvent) {
    Input input("<!DOCTYPE a [<?p d?><!ELEMENT b>]>x", true);
    Log rests;
    input.receiver.at = [&](const std::string& event) {
        wchar_t c = 0;
        rests.push_back(
            event + " before " +
            (input.reader.previewCharacter(c) ? xmlmodel::printable(&c, 1) : "nothing"));
    };
    input.dtd.parse(input.reader);
    EXPECT_EQ((Log{"instruction p|d before <", "error 11 before >", "error 10 before >"}), rests);
    EXPECT_EQ(">]>x", input.rest());
}

TEST(OCDtdParser, SurvivesRefusedMemory) {
    const std::string longText(3000, 'x');
    LoggingStream stream("<!DOCTYPE a PUBLIC '" + longText + "' '" + longText + "' [<?p " +
                         longText + "?><!ENTITY e '" + longText + "'>]>");
    OCXmlEvents receiver;
    OCXmlParser xml;
    xml.setEvents(receiver);
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_LE(3u, fault::failEachRequest([&] {
                                stream.position = 0;
                                OCXmlParserSource source(stream, XmlEncodingAnsi);
                                OCXmlParserReader reader(source);
                                OCDtdParser(xml).parse(reader);
                            }));
              }));
}

} // namespace
