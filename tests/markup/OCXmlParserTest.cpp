#include "OCXmlParser.h"

#include "OCFilePath.h"
#include "OCMemoryStream.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/XmlModel.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using xmlmodel::Interruption;
using xmlmodel::Log;
using xmlmodel::logged;
using xmlmodel::LoggingEvents;
using xmlmodel::LoggingStream;

std::wstring text(const OCWideString& string) {
    return std::wstring(string.getString(), string.getLength());
}

/// The events of a document, and the exception that ends its parse if one does.
Log events(const std::string& document) {
    Log log;
    LoggingEvents receiver(log);
    OCMemoryStream stream(document.data(), document.size());
    OCXmlParser parser;
    parser.setEvents(receiver);
    logged(log, [&] { parser.parse(stream); });
    return log;
}

/// The events of a document whose errors do not end the parse.
Log eventsWithErrors(const std::string& document) {
    Log log;
    LoggingEvents receiver(log);
    receiver.errorsReturn = true;
    OCMemoryStream stream(document.data(), document.size());
    OCXmlParser parser;
    parser.setEvents(receiver);
    logged(log, [&] { parser.parse(stream); });
    return log;
}

/// The events between the start and the end of a document.
Log inner(const std::string& document) {
    Log log = events(document);
    EXPECT_EQ("documentStart", log.front()) << document;
    EXPECT_EQ("documentEnd", log.back()) << document;
    if (log.size() < 2)
        return Log();
    return Log(log.begin() + 1, log.end() - 1);
}

struct Malformation {
    const char* name;
    const char* message;
};

const Malformation malformations[] = {
    {"AttributeDefinitionMalformed", "Malformed XML attribute definition"},
    {"AttributeListDeclarationMalformed", "Malformed XML attribute list declaration"},
    {"AttributeMalformed", "Malformed XML attribute"},
    {"AttributeTypeMalformed", "Malformed XML attribute type"},
    {"AttributeValueMalformed", "Malformed XML attribute value"},
    {"CdataSectionMalformed", "Malformed XML CDATA section"},
    {"CommentMalformed", "Malformed XML comment"},
    {"ContentMalformed", "Malformed XML content"},
    {"ContentSpecificationMalformed", "Malformed XML content specification"},
    {"DefaultDeclarationMalformed", "Malformed XML default declaration"},
    {"DocumentTypeDeclarationMalformed", "Malformed XML document type declaration"},
    {"ElementDeclarationMalformed", "Malformed XML element declaration"},
    {"ElementMalformed", "Malformed XML element"},
    {"EntityDeclarationMalformed", "Malformed XML entity declaration"},
    {"EntityValueMalformed", "Malformed XML entity value"},
    {"NameMalformed", "Malformed XML name"},
    {"NotationDataDeclarationMalformed", "Malformed XML notation data declaration"},
    {"NotationDeclarationMalformed", "Malformed XML notation declaration"},
    {"ParameterEntityReferenceMalformed", "Malformed XML parameter entity reference"},
    {"ProcessingInstructionMalformed", "Malformed XML processing instruction"},
    {"PublicIdentifierMalformed", "Malformed XML public identifier"},
    {"SystemIdentifierMalformed", "Malformed XML system identifier"},
    {"XmlDeclarationMalformed", "Malformed XML declaration"},
};

std::string thrown(const std::string& name) {
    for (const Malformation& malformation : malformations)
        if (name == malformation.name)
            return "thrown OXXmlParser_" + name + ": " + malformation.message;
    return "no such malformation";
}

std::string reported(const std::string& name) {
    int value = 0;
    for (const Malformation& malformation : malformations) {
        if (name == malformation.name)
            return "error " + std::to_string(value);
        ++value;
    }
    return "no such malformation";
}

/// A document is rejected: the error is reported, and then thrown as the last that happens.
void expectRejected(const std::string& document, const std::string& name) {
    const Log log = events(document);
    ASSERT_LE(2u, log.size()) << document;
    EXPECT_EQ(reported(name), log[log.size() - 2]) << document;
    EXPECT_EQ(thrown(name), log.back()) << document;
}

/// A caller's reader over a text.
struct Input {
    explicit Input(const std::string& bytes, OEXmlEncoding encoding = XmlEncodingAnsi)
        : stream(bytes), source(stream, encoding), reader(source), receiver(log) {
        parser.setEvents(receiver);
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
    OCXmlParser parser;
};

// Layout

TEST(OCXmlEvents, HasItsOperationsInOrder) {
    EXPECT_EQ(8u, sizeof(OCXmlEvents));
    EXPECT_EQ(2u, slots::slotOf(&OCXmlEvents::attribute));
    EXPECT_EQ(3u, slots::slotOf(&OCXmlEvents::characterData));
    EXPECT_EQ(4u, slots::slotOf(&OCXmlEvents::documentEnd));
    EXPECT_EQ(5u, slots::slotOf(&OCXmlEvents::documentStart));
    EXPECT_EQ(6u, slots::slotOf(&OCXmlEvents::elementEnd));
    EXPECT_EQ(7u, slots::slotOf(&OCXmlEvents::elementStart));
    EXPECT_EQ(8u, slots::slotOf(&OCXmlEvents::error));
    EXPECT_EQ(9u, slots::slotOf(&OCXmlEvents::processingInstruction));
    EXPECT_EQ(10u, slots::slotOf(&OCXmlEvents::warning));
    EXPECT_EQ(11u, slots::slotCount<OCXmlEvents>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlEvents>));
}

TEST(OCXmlParser, HoldsItsEvents) {
    EXPECT_EQ(16u, sizeof(OCXmlParser));
    EXPECT_EQ(2u, slots::slotCount<OCXmlParser>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlParser>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCXmlParser>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCXmlParser>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlParser>));
}

TEST(OEXmlParserErrorClass, HasItsValues) {
    EXPECT_EQ(0, XmlParserErrorAttributeDefinitionMalformed);
    EXPECT_EQ(1, XmlParserErrorAttributeListDeclarationMalformed);
    EXPECT_EQ(2, XmlParserErrorAttributeMalformed);
    EXPECT_EQ(3, XmlParserErrorAttributeTypeMalformed);
    EXPECT_EQ(4, XmlParserErrorAttributeValueMalformed);
    EXPECT_EQ(5, XmlParserErrorCdataSectionMalformed);
    EXPECT_EQ(6, XmlParserErrorCommentMalformed);
    EXPECT_EQ(7, XmlParserErrorContentMalformed);
    EXPECT_EQ(8, XmlParserErrorContentSpecificationMalformed);
    EXPECT_EQ(9, XmlParserErrorDefaultDeclarationMalformed);
    EXPECT_EQ(10, XmlParserErrorDocumentTypeDeclarationMalformed);
    EXPECT_EQ(11, XmlParserErrorElementDeclarationMalformed);
    EXPECT_EQ(12, XmlParserErrorElementMalformed);
    EXPECT_EQ(13, XmlParserErrorEntityDeclarationMalformed);
    EXPECT_EQ(14, XmlParserErrorEntityValueMalformed);
    EXPECT_EQ(15, XmlParserErrorNameMalformed);
    EXPECT_EQ(16, XmlParserErrorNotationDataDeclarationMalformed);
    EXPECT_EQ(17, XmlParserErrorNotationDeclarationMalformed);
    EXPECT_EQ(18, XmlParserErrorParameterEntityReferenceMalformed);
    EXPECT_EQ(19, XmlParserErrorProcessingInstructionMalformed);
    EXPECT_EQ(20, XmlParserErrorPublicIdentifierMalformed);
    EXPECT_EQ(21, XmlParserErrorSystemIdentifierMalformed);
    EXPECT_EQ(22, XmlParserErrorXmlDeclarationMalformed);
    EXPECT_EQ(4u, sizeof(OEXmlParserErrorClass));
    EXPECT_EQ(4u, sizeof(OEXmlParserWarningClass));
}

// Exceptions

TEST(OCXmlEvents, ThrowsTheExceptionOfEachErrorClass) {
    OCXmlEvents receiver;
    const auto report = [&](int value) {
        receiver.error(static_cast<OEXmlParserErrorClass>(value));
    };
    EXPECT_EXCEPTION(report(0), OXXmlParser_AttributeDefinitionMalformed,
                     "Malformed XML attribute definition");
    EXPECT_EXCEPTION(report(1), OXXmlParser_AttributeListDeclarationMalformed,
                     "Malformed XML attribute list declaration");
    EXPECT_EXCEPTION(report(2), OXXmlParser_AttributeMalformed, "Malformed XML attribute");
    EXPECT_EXCEPTION(report(3), OXXmlParser_AttributeTypeMalformed, "Malformed XML attribute type");
    EXPECT_EXCEPTION(report(4), OXXmlParser_AttributeValueMalformed,
                     "Malformed XML attribute value");
    EXPECT_EXCEPTION(report(5), OXXmlParser_CdataSectionMalformed, "Malformed XML CDATA section");
    EXPECT_EXCEPTION(report(6), OXXmlParser_CommentMalformed, "Malformed XML comment");
    EXPECT_EXCEPTION(report(7), OXXmlParser_ContentMalformed, "Malformed XML content");
    EXPECT_EXCEPTION(report(8), OXXmlParser_ContentSpecificationMalformed,
                     "Malformed XML content specification");
    EXPECT_EXCEPTION(report(9), OXXmlParser_DefaultDeclarationMalformed,
                     "Malformed XML default declaration");
    EXPECT_EXCEPTION(report(10), OXXmlParser_DocumentTypeDeclarationMalformed,
                     "Malformed XML document type declaration");
    EXPECT_EXCEPTION(report(11), OXXmlParser_ElementDeclarationMalformed,
                     "Malformed XML element declaration");
    EXPECT_EXCEPTION(report(12), OXXmlParser_ElementMalformed, "Malformed XML element");
    EXPECT_EXCEPTION(report(13), OXXmlParser_EntityDeclarationMalformed,
                     "Malformed XML entity declaration");
    EXPECT_EXCEPTION(report(14), OXXmlParser_EntityValueMalformed, "Malformed XML entity value");
    EXPECT_EXCEPTION(report(15), OXXmlParser_NameMalformed, "Malformed XML name");
    EXPECT_EXCEPTION(report(16), OXXmlParser_NotationDataDeclarationMalformed,
                     "Malformed XML notation data declaration");
    EXPECT_EXCEPTION(report(17), OXXmlParser_NotationDeclarationMalformed,
                     "Malformed XML notation declaration");
    EXPECT_EXCEPTION(report(18), OXXmlParser_ParameterEntityReferenceMalformed,
                     "Malformed XML parameter entity reference");
    EXPECT_EXCEPTION(report(19), OXXmlParser_ProcessingInstructionMalformed,
                     "Malformed XML processing instruction");
    EXPECT_EXCEPTION(report(20), OXXmlParser_PublicIdentifierMalformed,
                     "Malformed XML public identifier");
    EXPECT_EXCEPTION(report(21), OXXmlParser_SystemIdentifierMalformed,
                     "Malformed XML system identifier");
    EXPECT_EXCEPTION(report(22), OXXmlParser_XmlDeclarationMalformed, "Malformed XML declaration");
    for (const int other : {-1, 23, 1000})
        EXPECT_EXCEPTION(report(other), OXXmlParser_UnexpectedError, "Unexpected XML error");
}

TEST(OXXmlParser, IsTheBaseOfAllFailuresOfAParse) {
    EXPECT_TRUE((std::is_base_of_v<OXXmlParser, OXXmlParser_AttributeMalformed>));
    EXPECT_TRUE((std::is_base_of_v<OXXmlParser, OXXmlParser_UnexpectedError>));
    EXPECT_TRUE((std::is_base_of_v<OXXmlParser, OXXmlParser_UnhandledError>));
    EXPECT_EQ(sizeof(OXAutoException), sizeof(OXXmlParser_XmlDeclarationMalformed));
    EXPECT_EQ(0u, OXXmlParser_NameMalformed().getDetails().getCount());
    const OCMemoryStream empty;
    EXPECT_THROW(
        {
            OCMemoryStream stream("<a>", 3);
            OCXmlParser().parse(stream);
        },
        OXXmlParser);
}

TEST(OCXmlEvents, IgnoresEverythingElse) {
    OCXmlEvents receiver;
    receiver.attribute(L"a", L"b");
    receiver.characterData(L"a");
    receiver.documentEnd();
    receiver.documentStart();
    receiver.elementEnd();
    receiver.elementStart(L"a");
    receiver.processingInstruction(L"a", L"b");
    receiver.warning(XmlParserWarningNone);
    const std::string document = "<?xml?><!DOCTYPE a [<?p?>]><a x='1'>t<![CDATA[c]]><!--c--></a>";
    OCMemoryStream stream(document.data(), document.size());
    OCXmlParser parser;
    parser.setEvents(receiver);
    parser.parse(stream);

    // None of them runs another one.
    Log log;
    LoggingEvents overriding(log);
    overriding.OCXmlEvents::attribute(L"a", L"b");
    overriding.OCXmlEvents::characterData(L"a");
    overriding.OCXmlEvents::documentEnd();
    overriding.OCXmlEvents::documentStart();
    overriding.OCXmlEvents::elementEnd();
    overriding.OCXmlEvents::elementStart(L"a");
    overriding.OCXmlEvents::processingInstruction(L"a", L"b");
    overriding.OCXmlEvents::warning(XmlParserWarningNone);
    EXPECT_EQ(Log(), log);
}

// Events object

TEST(OCXmlParser, KeepsTheEventsObjectItIsGiven) {
    OCXmlParser parser;
    EXPECT_FALSE(parser.hasEvents());
    OCXmlEvents first;
    OCXmlEvents second;
    parser.setEvents(first);
    EXPECT_TRUE(parser.hasEvents());
    EXPECT_EQ(&first, &parser.getEvents());
    parser.setEvents(second);
    const OCXmlParser& constant = parser;
    EXPECT_EQ(&second, &constant.getEvents());
}

TEST(OCXmlParser, ReportsErrorsToTheEventsObject) {
    Log log;
    LoggingEvents receiver(log);
    OCXmlParser parser;
    EXPECT_EXCEPTION(parser.error(XmlParserErrorNameMalformed), OXXmlParser_UnhandledError,
                     "Unhandled XML error");
    EXPECT_EXCEPTION(parser.error(static_cast<OEXmlParserErrorClass>(99)),
                     OXXmlParser_UnhandledError, "Unhandled XML error");
    parser.setEvents(receiver);
    EXPECT_EXCEPTION(parser.error(XmlParserErrorNameMalformed), OXXmlParser_NameMalformed,
                     "Malformed XML name");
    EXPECT_EXCEPTION(parser.error(static_cast<OEXmlParserErrorClass>(99)),
                     OXXmlParser_UnexpectedError, "Unexpected XML error");
    receiver.errorsReturn = true;
    parser.error(XmlParserErrorCommentMalformed);
    EXPECT_EQ((Log{"error 15", "error 99", "error 6"}), log);
}

TEST(OCXmlParser, RecognisesDocumentsWithoutAnEventsObject) {
    OCXmlParser parser;
    const std::string document = "<?p d?><a x='1'>t<![CDATA[c]]><b/></a>";
    OCMemoryStream stream(document.data(), document.size());
    parser.parse(stream);
    EXPECT_EQ(document.size(), stream.getPosition());
}

TEST(OCXmlParser, CannotSayWhatIsWrongWithoutAnEventsObject) {
    for (const std::string document : {"<a>", "", "<a x = '1'/>", "<!DOCTYPEa>"}) {
        OCMemoryStream stream(document.data(), document.size() + 1);
        stream.setSize(document.size());
        OCXmlParser parser;
        EXPECT_EXCEPTION(parser.parse(stream), OXXmlParser_UnhandledError, "Unhandled XML error");
    }
}

TEST(OCXmlParser, FollowsAChangeOfTheEventsObjectDuringAParse) {
    OCXmlParser parser;
    Log firstLog;
    Log secondLog;
    LoggingEvents first(firstLog);
    LoggingEvents second(secondLog);
    first.at = [&](const std::string& event) {
        if (event == "elementStart b")
            parser.setEvents(second);
    };
    OCMemoryStream stream("<a><b x='1'/></a>", 17);
    parser.setEvents(first);
    parser.parse(stream);
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementStart b"}), firstLog);
    EXPECT_EQ((Log{"attribute x=1", "elementEnd", "elementEnd", "documentEnd"}), secondLog);
}

// Documents

TEST(OCXmlParser, ReportsTheEventsOfADocumentInOrder) {
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementEnd", "documentEnd"}),
              events("<a/>"));
    EXPECT_EQ((Log{"elementStart a", "attribute x=1", "attribute y=2", "text t", "elementEnd"}),
              inner("<a x='1' y=\"2\">t</a>"));
    EXPECT_EQ(
        (Log{"instruction p|d ", "elementStart a", "attribute x=1", "text t", "elementStart b",
             "attribute y=2", "elementEnd", "text u", "instruction q|", "text c", "elementStart d",
             "text v", "elementEnd", "elementEnd", "instruction r|s"}),
        inner("<?xml version='1.0'?><!-- c --><?p d ?><!DOCTYPE a>\n"
              "<a x='1'>t<b y=\"2\" />u<?q?><![CDATA[c]]><!-- no --><d>v</d></a >\n"
              "<!-- c --><?r s?>\n"));
}

TEST(OCXmlParser, RequiresARootElement) {
    for (const char* document : {"", " ", "a", "<!-- c -->", "<?p?>", "<?xml?>", "<!DOCTYPE a>",
                                 "\xEF\xBB\xBF", "x<a/>", "/", ">"})
        EXPECT_EQ((Log{"documentStart", reported("ElementMalformed"), thrown("ElementMalformed")}),
                  [&] {
                      Log log = events(document);
                      log.erase(std::remove(log.begin(), log.end(), "instruction p|"), log.end());
                      return log;
                  }())
            << document;
}

TEST(OCXmlParser, TakesAByteOrderMarkForWhiteSpace) {
    EXPECT_EQ((Log{"elementStart a", "elementEnd"}), inner("\xEF\xBB\xBF<a/>"));
    // and the declaration behind it for a processing instruction
    EXPECT_EQ((Log{"instruction xml|version='1.0'", "elementStart a", "elementEnd"}),
              inner("\xEF\xBB\xBF<?xml version='1.0'?><a/>"));
}

TEST(OCXmlParser, IgnoresWhatFollowsTheRootElement) {
    for (const char* document : {"<a/>junk", "<a/><b/>", "<a/></a>", "<a/>&", "<a/><", "<a/> ]]>"})
        EXPECT_EQ((Log{"elementStart a", "elementEnd"}), inner(document)) << document;
    EXPECT_EQ((Log{"elementStart a", "elementEnd", "instruction p|"}),
              inner("<a/> <!--c--><?p?> junk<?q?>"));
    expectRejected("<a/><!--", "CommentMalformed");
    expectRejected("<a/><?", "NameMalformed");
}

TEST(OCXmlParser, LeavesWhatFollowsTheRootElementUnread) {
    Input input("<a/> <?p?> junk <b/>");
    input.parser.parse(input.reader);
    EXPECT_EQ("junk <b/>", input.rest());
}

TEST(OCXmlParser, ParsesOneDocumentAfterAnother) {
    Input input("<a/> <?p?><b>t</b>");
    input.parser.parse(input.reader);
    EXPECT_EQ(
        (Log{"documentStart", "elementStart a", "elementEnd", "instruction p|", "documentEnd"}),
        input.log);
    input.log.clear();
    input.parser.parse(input.reader);
    EXPECT_EQ((Log{"documentStart", "elementStart b", "text t", "elementEnd", "documentEnd"}),
              input.log);
    EXPECT_FALSE(input.reader.more());
}

TEST(OCXmlParser, IsReusableAfterAFailure) {
    Log log;
    LoggingEvents receiver(log);
    OCXmlParser parser;
    parser.setEvents(receiver);
    OCMemoryStream bad("<a><b>", 6);
    EXPECT_THROW(parser.parse(bad), OXXmlParser_ContentMalformed);
    log.clear();
    OCMemoryStream good("<c/>", 4);
    parser.parse(good);
    EXPECT_EQ((Log{"documentStart", "elementStart c", "elementEnd", "documentEnd"}), log);
}

TEST(OCXmlParser, StartsAtTheStreamsPosition) {
    Log log;
    LoggingEvents receiver(log);
    OCXmlParser parser;
    parser.setEvents(receiver);
    OCMemoryStream stream("junk<a/>", 8);
    stream.setPosition(4);
    parser.parse(stream);
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementEnd", "documentEnd"}), log);
}

// XML declaration

TEST(OCXmlParser, SkipsTheXmlDeclaration) {
    for (const char* document : {"<?xml version='1.0'?><a/>", "<?xml?><a/>", "<?xml ? > ?><a/>",
                                 ("<?xml?"
                                  "?><a/>"),
                                 "<?xml-stylesheet href='x'?><a/>", "<?xmlns?><a/>"})
        EXPECT_EQ((Log{"elementStart a", "elementEnd"}), inner(document)) << document;
}

TEST(OCXmlParser, TakesALaterXmlDeclarationForAProcessingInstruction) {
    EXPECT_EQ((Log{"instruction xml|version='1.0'", "elementStart a", "elementEnd"}),
              inner(" <?xml version='1.0'?><a/>"));
    EXPECT_EQ((Log{"instruction xml|", "elementStart a", "elementEnd"}),
              inner("<?xml?><?xml?><a/>"));
    EXPECT_EQ((Log{"instruction XML|", "elementStart a", "elementEnd"}), inner("<?XML?><a/>"));
}

TEST(OCXmlParser, RejectsAnXmlDeclarationWithoutEnd) {
    for (const char* document : {"<?xml", "<?xml version='1.0'>", "<?xml ?", "<?xml <a/>"})
        EXPECT_EQ((Log{"documentStart", reported("XmlDeclarationMalformed"),
                       thrown("XmlDeclarationMalformed")}),
                  events(document))
            << document;
}

// Elements

TEST(OCXmlParser, ReportsNestedElements) {
    EXPECT_EQ((Log{"elementStart a", "elementStart b", "elementStart c", "elementEnd", "elementEnd",
                   "elementStart b", "elementEnd", "elementEnd"}),
              inner("<a><b><c></c></b><b/></a>"));
}

TEST(OCXmlParser, AcceptsWhiteSpaceBeforeTheCloseOfATag) {
    EXPECT_EQ((Log{"elementStart a", "elementEnd"}), inner("<a \t\r\n></a \n>"));
    EXPECT_EQ((Log{"elementStart a", "elementEnd"}), inner("<a />"));
    EXPECT_EQ((Log{"elementStart a", "attribute x=1", "elementEnd"}), inner("<a x='1' />"));
}

TEST(OCXmlParser, ComparesNamesOfTagsExactly) {
    for (const char* document : {"<a></b>", "<a></A>", "<a></ab>", "<ab></a>", "<a></a.>"})
        expectRejected(document, "ElementMalformed");
    expectRejected("<a></>", "NameMalformed");
    expectRejected("<a></ a>", "NameMalformed");
}

TEST(OCXmlParser, RequiresTheCloseOfATag) {
    for (const char* document : {"<a", "<a ", "<a/", "<a/ >", "<a x='1'", "<a?>", "<a(/>", "<a></a",
                                 "<a></a x>", "<a></a/>"})
        expectRejected(document, "ElementMalformed");
    EXPECT_EQ((Log{"documentStart", "elementStart a", reported("ElementMalformed"),
                   thrown("ElementMalformed")}),
              events("<a"));
}

TEST(OCXmlParser, RequiresANameInATag) {
    for (const char* document : {"<", "< a/>", "</a>", "<>", "<=/>", "<?", "<a><></a>"})
        expectRejected(document, "NameMalformed");
}

TEST(OCXmlParser, ReportsAnElementBeforeItsAttributesAreLookedAt) {
    EXPECT_EQ((Log{"documentStart", "elementStart a", "attribute x=1",
                   reported("AttributeMalformed"), thrown("AttributeMalformed")}),
              events("<a x='1' y>"));
}

// Names

TEST(OCXmlParser, AcceptsAnythingButWhiteSpaceAndNineDelimitersInNames) {
    std::string name;
    for (int c = 33; c < 128; ++c)
        if (std::string("()*+/=>?[").find(static_cast<char>(c)) == std::string::npos)
            name += static_cast<char>(c);
    EXPECT_EQ(
        (Log{"elementStart " + xmlmodel::printable(OCWideString(name.c_str())), "elementEnd"}),
        inner("<" + name + "/>"));
    for (const char c : name) {
        if (c == '!' || c == '?')
            continue; // these open other constructs before an element
        const std::string single(1, c);
        EXPECT_EQ((Log{"elementStart " + xmlmodel::printable(OCWideString(single.c_str())),
                       "elementEnd"}),
                  inner("<" + single + "/>"));
    }
}

TEST(OCXmlParser, EndsNamesAtEachDelimiter) {
    for (const char delimiter : std::string("()*+/=>?[")) {
        Input input("na" + std::string(1, delimiter) + "me");
        OCWideString name;
        EXPECT_TRUE(input.parser.possibleName(input.reader, name));
        EXPECT_EQ(L"na", text(name));
        EXPECT_TRUE(input.reader.peekCharacter(delimiter));
        OCWideString none(L"unchanged");
        EXPECT_FALSE(input.parser.possibleName(input.reader, none));
        EXPECT_EQ(L"unchanged", text(none));
    }
}

TEST(OCXmlParser, EndsNamesAtWhiteSpaceWhichEveryHighByteIs) {
    for (int byte = 0; byte < 256; ++byte) {
        if (byte > 32 && byte < 128)
            continue;
        const std::string white(1, static_cast<char>(byte));
        Input input("na" + white + white + "me");
        OCWideString name;
        EXPECT_TRUE(input.parser.possibleName(input.reader, name));
        EXPECT_EQ(L"na", text(name));
        EXPECT_TRUE(input.parser.possibleWhiteSpace(input.reader)) << byte;
        EXPECT_FALSE(input.parser.possibleWhiteSpace(input.reader));
        EXPECT_EQ("me", input.rest());
    }
    EXPECT_EQ((Log{"elementStart caf", "attribute x=1", "elementEnd"}),
              inner("<caf\xC3\xA9x='1'/>"));
}

TEST(OCXmlParser, AcceptsWideCharactersInNames) {
    const std::wstring document = L"<\x4E2D\x6587 \xE9='\x1F600'/>";
    Input input(std::string(reinterpret_cast<const char*>(document.data()), document.size() * 4),
                XmlEncodingWide);
    input.parser.parse(input.reader);
    EXPECT_EQ((Log{"documentStart", "elementStart \\20013;\\25991;", "attribute \\233;=\\128512;",
                   "elementEnd", "documentEnd"}),
              input.log);
}

TEST(OCXmlParser, TakesUnknownMarkupForElements) {
    EXPECT_EQ((Log{"elementStart a", "elementStart !b", "elementEnd", "elementEnd"}),
              inner("<a><!b/></a>"));
    EXPECT_EQ((Log{"elementStart a", "elementStart !DOCTYPE", "attribute b=1", "text t",
                   "elementEnd", "elementEnd"}),
              inner("<a><!DOCTYPE b='1'>t</!DOCTYPE></a>"));
    expectRejected("<a><!DOCTYPE b></a>", "AttributeMalformed");
    EXPECT_EQ((Log{"elementStart !-", "elementEnd"}), inner("<!-/>"));
}

// Attributes

TEST(OCXmlParser, TakesAttributeValuesAsTheyStand) {
    EXPECT_EQ((Log{"elementStart a", "attribute x=\"<>&amp;\\n\\9; ", "attribute y='",
                   "attribute z=", "attribute z=", "elementEnd"}),
              inner("<a x='\"<>&amp;\n\t ' y=\"'\" z='' z=\"\"/>"));
}

TEST(OCXmlParser, OnlyTheTwoQuotesOpenAnAttributeValue) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const std::string quoted = c + std::string("v") + c;
        const std::string document = "<a x=" + quoted + "/>";
        Input input(quoted);
        OCWideString value;
        if (c == '\'' || c == '"') {
            EXPECT_EQ((Log{"elementStart a", "attribute x=v", "elementEnd"}), inner(document));
            EXPECT_TRUE(input.parser.possibleAttributeValue(input.reader, value));
            EXPECT_EQ("", input.rest());
        } else {
            expectRejected(document, "AttributeMalformed");
            EXPECT_FALSE(input.parser.possibleAttributeValue(input.reader, value)) << byte;
            EXPECT_TRUE(input.reader.peekCharacter(static_cast<signed char>(c))) << byte;
        }
    }
}

TEST(OCXmlParser, RequiresTheEqualsSignBetweenNameAndValue) {
    for (const char* document : {"<a x = '1'/>", "<a x ='1'/>", "<a x= '1'/>", "<a x>", "<a x/>",
                                 "<a x", "<a x=", "<a x=1/>", "<a x=>", "<a x'1'/>", "<a x==''/>"})
        expectRejected(document, "AttributeMalformed");
}

TEST(OCXmlParser, RequiresWhiteSpaceBetweenAttributes) {
    expectRejected("<a x='1'y='2'/>", "ElementMalformed");
    EXPECT_EQ((Log{"elementStart a", "attribute x=1", "attribute y=2", "elementEnd"}),
              inner("<a\nx='1'\t y='2'\n/>"));
}

TEST(OCXmlParser, RequiresTheClosingQuote) {
    for (const char* document : {"<a x='1", "<a x='", "<a x=\"1'/>", "<a x='1\"/></a>"})
        expectRejected(document, "AttributeValueMalformed");
}

TEST(OCXmlParser, HasNoOpinionOnRepeatedAttributes) {
    EXPECT_EQ((Log{"elementStart a", "attribute x=1", "attribute x=2", "elementEnd"}),
              inner("<a x='1' x='2'/>"));
}

// Content

TEST(OCXmlParser, ReportsTextAsItStands) {
    EXPECT_EQ((Log{"elementStart a", "text x &amp; y", "elementEnd"}), inner("<a>x &amp; y</a>"));
    EXPECT_EQ((Log{"elementStart a", "text  \\n\\13;\\n ", "elementStart b", "elementEnd",
                   "text ]]> > ", "elementEnd"}),
              inner("<a> \n\r\n <b/>]]> > </a>"));
    EXPECT_EQ((Log{"elementStart a", "text \\-61;\\-87;\\0;\\127;", "elementEnd"}),
              inner(std::string("<a>\xC3\xA9\0\x7F</a>", 11)));
}

TEST(OCXmlParser, TakesAnythingButAnOpeningBracketForText) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (c == '<')
            continue;
        // Close to the end of the input, and far from it.
        for (const std::string& more : {std::string(), std::string(200, 't')}) {
            const std::string piece = c + more;
            const OCAnsiString narrow(piece.data(), piece.size());
            EXPECT_EQ((Log{"elementStart a", "text " + xmlmodel::printable(OCWideString(narrow)),
                           "elementEnd"}),
                      inner("<a>" + piece + "</a>"));
            Input input(piece + "<b/>");
            EXPECT_TRUE(input.parser.possibleCharacterData(input.reader)) << byte;
            EXPECT_EQ("<b/>", input.rest());
        }
    }
    Input bracket("<");
    EXPECT_FALSE(bracket.parser.possibleCharacterData(bracket.reader));
    EXPECT_EQ("<", bracket.rest());
}

TEST(OCXmlParser, RequiresTheEndOfAnElement) {
    for (const char* document : {"<a>", "<a>t", "<a><b/>", "<a><!-- c -->"})
        expectRejected(document, "ContentMalformed");
    EXPECT_EQ((Log{"documentStart", "elementStart a", "text t", reported("ContentMalformed"),
                   thrown("ContentMalformed")}),
              events("<a>t"));
}

TEST(OCXmlParser, ReportsACdataSectionAsText) {
    EXPECT_EQ((Log{"elementStart a", "text <x>", "elementEnd"}), inner("<a><![CDATA[<x>]]></a>"));
    EXPECT_EQ((Log{"elementStart a", "text t", "text ", "text ]]", "text  ]] > ", "text u",
                   "elementEnd"}),
              inner("<a>t<![CDATA[]]><![CDATA[]]]]><![CDATA[ ]] > ]]>u</a>"));
    for (const char* document : {"<a><![CDATA[", "<a><![CDATA[]]", "<a><![CDATA[x]]</a>"})
        expectRejected(document, "CdataSectionMalformed");
    // Not quite a section: an element.
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementStart !",
                   reported("ElementMalformed"), thrown("ElementMalformed")}),
              events("<a><![cdata[x]]></a>"));
}

TEST(OCXmlParser, SkipsComments) {
    EXPECT_EQ((Log{"elementStart a", "text t", "text u", "elementEnd"}),
              inner("<a>t<!-- - -- <b> --->u<!----></a>"));
    for (const char* document : {"<!--", "<!-- c", "<!-- c --", "<a><!-- c -></a>", "<!--->"})
        expectRejected(document, "CommentMalformed");
}

TEST(OCXmlParser, ReportsProcessingInstructions) {
    EXPECT_EQ((Log{"instruction pi|some data ", "elementStart a", "elementEnd"}),
              inner("<?pi   some data ?><a/>"));
    EXPECT_EQ((Log{"elementStart a", "instruction p|", "instruction p|", "instruction p|? > x?",
                   "elementEnd"}),
              inner("<a><?p?><?p ?><?p ? > x?"
                    "?></a>"));
    for (const char* document :
         {"<?p", "<?p ", "<?p d", "<?p d?", "<?p=?>", "<?p>", "<a><?p d></a>"})
        expectRejected(document, "ProcessingInstructionMalformed");
    for (const char* document : {"<??"
                                 ">",
                                 "<? p?>", "<?", "<a><?/"})
        expectRejected(document, "NameMalformed");
}

TEST(OCXmlParser, SkipsAnyMiscellaneousMarkupAroundTheRoot) {
    EXPECT_EQ(
        (Log{"instruction p|", "instruction q|", "elementStart a", "elementEnd", "instruction r|"}),
        inner(" <!--1--><!--2-->\n<?p?><?q?>\t<!--3--> <a/>\n<?r?><!--4-->"));
}

// Several parses at once

TEST(OCXmlParser, RunsAParseWithinAnEventOfAnother) {
    Log log;
    LoggingEvents receiver(log);
    OCXmlParser parser;
    parser.setEvents(receiver);
    unsigned depth = 0;
    receiver.at = [&](const std::string& event) {
        if (depth > 2 || event == "documentEnd")
            return;
        ++depth;
        OCMemoryStream nested("<n k='v'>t</n>", 14);
        parser.parse(nested);
        --depth;
    };
    const std::string document = "<a x='1'>t<?p d?></a>";
    OCMemoryStream stream(document.data(), document.size());
    parser.parse(stream);
    receiver.at = nullptr;

    // Without what happened inside, the events are those of the document.
    EXPECT_EQ(events(document), [&] {
        Log own;
        unsigned open = 0;
        for (const std::string& event : log) {
            if (event == "documentStart" && ++open > 1)
                continue;
            if (event == "documentEnd" && --open > 0)
                continue;
            if (open <= 1)
                own.push_back(event);
        }
        return own;
    }());
    EXPECT_LT(500u, log.size());
}

TEST(OCXmlParser, LetsAnEventParseOnWithTheSameReader) {
    Input input("<a><b>inner document: </b><?xml?><c x='1'/><!--c--> t</a>");
    bool nested = false;
    input.receiver.at = [&](const std::string& event) {
        if (event == "elementEnd" && !nested) {
            nested = true;
            input.parser.parse(input.reader);
        }
    };
    input.parser.parse(input.reader);
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementStart b", "text inner document: ",
                   "elementEnd", "documentStart", "elementStart c", "attribute x=1", "elementEnd",
                   "documentEnd", "text t", "elementEnd", "documentEnd"}),
              input.log);
}

TEST(OCXmlParser, GoesOnWhereAnEventLeftTheReader) {
    Input input("<a>skip<all/> of </this>;<b/></a>");
    input.receiver.at = [&](const std::string& event) {
        if (event == "text skip") {
            EXPECT_TRUE(input.reader.findCharacter(';'));
            input.reader.skipCharacter(';');
        }
    };
    input.parser.parse(input.reader);
    EXPECT_EQ((Log{"documentStart", "elementStart a", "text skip", "elementStart b", "elementEnd",
                   "elementEnd", "documentEnd"}),
              input.log);
}

TEST(OCXmlParser, ShowsTheReaderUpToDateInEachEvent) {
    const std::string document = "<?p d?><a x='1' y='2'>text<b/><![CDATA[c]]></a>z";
    Input input(document);
    Log rests;
    input.receiver.at = [&](const std::string& event) {
        // What is left is compared by looking for it, which consumes nothing.
        for (unsigned long length = document.size(); length > 0; --length)
            if (input.reader.peekString(OCWideString(
                    OCAnsiString(document.substr(document.size() - length).c_str())))) {
                rests.push_back(event + " | " + document.substr(document.size() - length));
                return;
            }
        rests.push_back(event + " | ");
    };
    input.parser.parse(input.reader);
    EXPECT_EQ(
        (Log{"documentStart | <?p d?><a x='1' y='2'>text<b/><![CDATA[c]]></a>z",
             "instruction p|d | <a x='1' y='2'>text<b/><![CDATA[c]]></a>z",
             "elementStart a |  x='1' y='2'>text<b/><![CDATA[c]]></a>z",
             "attribute x=1 |  y='2'>text<b/><![CDATA[c]]></a>z",
             "attribute y=2 | >text<b/><![CDATA[c]]></a>z", "text text | <b/><![CDATA[c]]></a>z",
             "elementStart b | /><![CDATA[c]]></a>z", "elementEnd | <![CDATA[c]]></a>z",
             "text c | </a>z", "elementEnd | z", "documentEnd | z"}),
        rests);
}

TEST(OCXmlParser, LeavesTheReaderUpToDateWhenAnEventThrows) {
    const std::string document = "<a x='1'>t</a>";
    const std::string rests[] = {"<a x='1'>t</a>", " x='1'>t</a>", ">t</a>", "</a>", "", ""};
    for (unsigned long event = 0; event < 6; ++event) {
        Input input(document);
        input.receiver.failingEvent = event;
        EXPECT_THROW(input.parser.parse(input.reader), Interruption);
        EXPECT_EQ(rests[event], input.rest()) << event;
    }
}

TEST(OCXmlParser, LeavesTheReaderUpToDateWhenItThrows) {
    Input input("<a x='1' y z>");
    EXPECT_THROW(input.parser.parse(input.reader), OXXmlParser_AttributeMalformed);
    EXPECT_EQ(" z>", input.rest());

    Input unhandled("<a x='1' y z>");
    OCXmlParser without;
    EXPECT_THROW(without.parse(unhandled.reader), OXXmlParser_UnhandledError);
    EXPECT_EQ(" z>", unhandled.rest());
}

TEST(OCXmlParser, LeavesTheReaderUpToDateWhenTheStreamFails) {
    Input input("<a>" + std::string(200, 't') + "</a>");
    input.stream.failingCall = 1;
    EXPECT_THROW(input.parser.parse(input.reader), Interruption);
    EXPECT_EQ(std::string(75, 't') + "</a>", input.rest());
}

// The grammar operations by themselves

TEST(OCXmlParser, ItsOperationsTellWhetherTheirConstructIsThere) {
    struct {
        const char* input;
        bool (OCXmlParser::*operation)(OCXmlParserReader&);
        bool found;
        const char* rest;
        Log log;
    } const cases[] = {
        {"<?xml v?>x", &OCXmlParser::possibleXmlDeclaration, true, "x", {}},
        {"<?xmx v?>x", &OCXmlParser::possibleXmlDeclaration, false, "<?xmx v?>x", {}},
        {"<?xml v", &OCXmlParser::possibleXmlDeclaration, false, "", {"error 22"}},
        {"<!--c--> <?p?>x", &OCXmlParser::possibleMiscellaneous, true, "x", {"instruction p|"}},
        {"x ", &OCXmlParser::possibleMiscellaneous, false, "x ", {}},
        {"", &OCXmlParser::possibleMiscellaneous, false, "", {}},
        {"<!--c", &OCXmlParser::possibleMiscellaneous, false, "", {"error 6"}},
        {" <!--c", &OCXmlParser::possibleMiscellaneous, true, "", {"error 6"}},
        {"<!DOCTYPE a>x", &OCXmlParser::possibleDocumentTypeDeclaration, true, "x", {}},
        {"<!DOCTYP a>x", &OCXmlParser::possibleDocumentTypeDeclaration, false, "<!DOCTYP a>x", {}},
        {"<!DOCTYPE a x", &OCXmlParser::possibleDocumentTypeDeclaration, true, "x", {"error 10"}},
        {"<a>t</a>x",
         &OCXmlParser::possibleElement,
         true,
         "x",
         {"elementStart a", "text t", "elementEnd"}},
        {"x", &OCXmlParser::possibleElement, false, "x", {}},
        {"<a", &OCXmlParser::possibleElement, false, "", {"elementStart a", "error 12"}},
        {"<![CDATA[c]]>x", &OCXmlParser::possibleCdataSection, true, "x", {"text c"}},
        {"<![CDATAc]]>x", &OCXmlParser::possibleCdataSection, false, "<![CDATAc]]>x", {}},
        {"<![CDATA[c]>x", &OCXmlParser::possibleCdataSection, false, "", {"error 5"}},
        {"<!--c-->x", &OCXmlParser::possibleComment, true, "x", {}},
        {"<!-c-->x", &OCXmlParser::possibleComment, false, "<!-c-->x", {}},
        {"<!--c->x", &OCXmlParser::possibleComment, false, "", {"error 6"}},
        {"<?p d?>x", &OCXmlParser::possibleProcessingInstruction, true, "x", {"instruction p|d"}},
        {"<p d?>x", &OCXmlParser::possibleProcessingInstruction, false, "<p d?>x", {}},
        {"<?p/d?>x", &OCXmlParser::possibleProcessingInstruction, false, "/d?>x", {"error 19"}},
        {"<?p d", &OCXmlParser::possibleProcessingInstruction, false, "", {"error 19"}},
        {"t<x", &OCXmlParser::possibleCharacterData, true, "<x", {"text t"}},
        {"<x", &OCXmlParser::possibleCharacterData, false, "<x", {}},
        {"", &OCXmlParser::possibleCharacterData, false, "", {}},
        {"t", &OCXmlParser::possibleCharacterData, true, "", {"text t"}},
        {"a='1'x", &OCXmlParser::possibleAttribute, true, "x", {"attribute a=1"}},
        {"='1'x", &OCXmlParser::possibleAttribute, false, "='1'x", {}},
        {"a '1'", &OCXmlParser::possibleAttribute, false, " '1'", {"error 2"}},
        {"a=1", &OCXmlParser::possibleAttribute, false, "1", {"error 2"}},
        {"a='1", &OCXmlParser::possibleAttribute, false, "", {"error 4", "error 2"}},
        {" \n\x80x", &OCXmlParser::possibleWhiteSpace, true, "x", {}},
        {"x ", &OCXmlParser::possibleWhiteSpace, false, "x ", {}},
        {"", &OCXmlParser::possibleWhiteSpace, false, "", {}},
    };
    for (const auto& c : cases) {
        Input input(c.input);
        input.receiver.errorsReturn = true;
        EXPECT_EQ(c.found, (input.parser.*c.operation)(input.reader)) << c.input;
        EXPECT_EQ(c.rest, input.rest()) << c.input;
        EXPECT_EQ(c.log, input.log) << c.input;
    }
}

TEST(OCXmlParser, ItsRequiringOperationsReportWhatIsMissing) {
    struct {
        const char* input;
        void (OCXmlParser::*operation)(OCXmlParserReader&);
        const char* rest;
        Log log;
    } const cases[] = {
        {"<?xml?> <!DOCTYPE a> <a>", &OCXmlParser::parseProlog, "<a>", {}},
        {"<a>", &OCXmlParser::parseProlog, "<a>", {}},
        {"<a/>x", &OCXmlParser::parseElement, "x", {"elementStart a", "elementEnd"}},
        {"x", &OCXmlParser::parseElement, "x", {"error 12"}},
        {"t<b/></a>x",
         &OCXmlParser::parseContent,
         "</a>x",
         {"text t", "elementStart b", "elementEnd"}},
        {"<b><c></c></b></a>",
         &OCXmlParser::parseContent,
         "</a>",
         {"elementStart b", "elementStart c", "elementEnd", "elementEnd"}},
        {"</a>", &OCXmlParser::parseContent, "</a>", {}},
        {"t", &OCXmlParser::parseContent, "", {"text t", "error 7"}},
        {"", &OCXmlParser::parseContent, "", {"error 7"}},
        {"<a/>x",
         &OCXmlParser::parseDocument,
         "x",
         {"documentStart", "elementStart a", "elementEnd", "documentEnd"}},
    };
    for (const auto& c : cases) {
        Input input(c.input);
        input.receiver.errorsReturn = true;
        (input.parser.*c.operation)(input.reader);
        EXPECT_EQ(c.rest, input.rest()) << c.input;
        EXPECT_EQ(c.log, input.log) << c.input;
    }
}

TEST(OCXmlParser, ParsesTheStartOfAnElement) {
    const auto start = [](const std::string& content, bool expected, const std::wstring& name,
                          bool empty, const std::string& rest, const Log& log) {
        Input input(content);
        input.receiver.errorsReturn = true;
        OCWideString found(L"before");
        bool isEmpty = !empty;
        EXPECT_EQ(expected, input.parser.possibleElementStart(input.reader, found, isEmpty))
            << content;
        EXPECT_EQ(name, text(found)) << content;
        EXPECT_EQ(expected ? empty : !empty, isEmpty) << content;
        EXPECT_EQ(rest, input.rest()) << content;
        EXPECT_EQ(log, input.log) << content;
    };
    start("<a x='1'>t", true, L"a", false, "t", {"elementStart a", "attribute x=1"});
    start("<a/>t", true, L"a", true, "t", {"elementStart a"});
    start("a>t", false, L"before", false, "a>t", {});
    for (const bool before : {false, true})
        start("<a?>t", false, L"a", before, "?>t", {"elementStart a", "error 12"});
    start("</a>", false, L"", false, "/a>", {"error 15", "elementStart ", "error 12"});
}

TEST(OCXmlParser, ParsesTheEndOfAnElement) {
    const auto end = [](const std::string& content, const std::wstring& name,
                        const std::string& rest, const Log& log) {
        Input input(content);
        input.receiver.errorsReturn = true;
        input.parser.parseElementEnd(input.reader, name.c_str());
        EXPECT_EQ(rest, input.rest()) << content;
        EXPECT_EQ(log, input.log) << content;
    };
    end("</a>x", L"a", "x", {});
    end("</a \n>x", L"a", "x", {});
    end("</ab>x", L"a", ">x", {"error 12"});
    end("</a>x", L"ab", ">x", {"error 12"});
    end("</a x>", L"a", "x>", {"error 12"});
    end("<a>", L"a", "<a>", {"error 12"});
    end("</", L"a", "", {"error 15", "error 12"});
    end("</>", L"", "", {"error 15"});
    const std::string name(300, 'n');
    const std::wstring wide(300, L'n');
    end("</" + name + ">x", wide, "x", {});
    end("</" + name + ">x", wide + L"n", ">x", {"error 12"});
    end("</" + name + "n>x", wide, ">x", {"error 12"});
}

TEST(OCXmlParser, AppendsAnAttributeValueToItsArgument) {
    Input input("'one'\"two'\"three");
    OCWideString value(L"0");
    EXPECT_TRUE(input.parser.possibleAttributeValue(input.reader, value));
    EXPECT_EQ(L"0one", text(value));
    input.parser.parseAttributeValue(input.reader, value);
    EXPECT_EQ(L"0onetwo'", text(value));
    EXPECT_FALSE(input.parser.possibleAttributeValue(input.reader, value));
    EXPECT_EQ(L"0onetwo'", text(value));
    EXPECT_THROW(input.parser.parseAttributeValue(input.reader, value),
                 OXXmlParser_AttributeValueMalformed);
    EXPECT_EQ("three", input.rest());

    Input open("'" + std::string(500, 'v'));
    open.receiver.errorsReturn = true;
    EXPECT_FALSE(open.parser.possibleAttributeValue(open.reader, value));
    EXPECT_EQ(L"0onetwo'" + std::wstring(500, L'v'), text(value));
    EXPECT_EQ(Log{"error 4"}, open.log);
    Input none("");
    none.receiver.errorsReturn = true;
    none.parser.parseAttributeValue(none.reader, value);
    EXPECT_EQ(Log{"error 4"}, none.log);
    Input twice("'v");
    twice.receiver.errorsReturn = true;
    twice.parser.parseAttributeValue(twice.reader, value);
    EXPECT_EQ((Log{"error 4", "error 4"}), twice.log);
}

TEST(OCXmlParser, ReplacesANameOnlyOnSuccess) {
    Input input("name other" + std::string(300, 'x') + "=");
    OCWideString name(L"before");
    EXPECT_TRUE(input.parser.possibleName(input.reader, name));
    EXPECT_EQ(L"name", text(name));
    EXPECT_FALSE(input.parser.possibleName(input.reader, name));
    EXPECT_EQ(L"name", text(name));
    EXPECT_THROW(input.parser.parseName(input.reader, name), OXXmlParser_NameMalformed);
    EXPECT_EQ(L"name", text(name));
    EXPECT_TRUE(input.parser.possibleWhiteSpace(input.reader));
    input.parser.parseName(input.reader, name);
    EXPECT_EQ(L"other" + std::wstring(300, L'x'), text(name));

    Input failing(std::string(200, 'n') + " ");
    failing.stream.failingCall = 1;
    EXPECT_THROW(failing.parser.possibleName(failing.reader, name), Interruption);
    EXPECT_EQ(L"other" + std::wstring(300, L'x'), text(name));
    EXPECT_EQ(std::string(72, 'n') + " ", failing.rest());
}

// Errors that return

TEST(OCXmlParser, GoesOnBehindAnErrorThatReturns) {
    EXPECT_EQ(
        (Log{"documentStart", "elementStart a", "error 2", "text t", "elementEnd", "documentEnd"}),
        eventsWithErrors("<a x>t</a>"));
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementStart b", "error 12", "elementEnd",
                   "text >", "elementEnd", "documentEnd"}),
              eventsWithErrors("<a><b></c></a>"));
    EXPECT_EQ((Log{"documentStart", "error 12", "documentEnd"}), eventsWithErrors("junk"));
    EXPECT_EQ((Log{"documentStart", "elementStart a", "elementStart b", "error 7", "error 12",
                   "elementEnd", "error 7", "error 12", "elementEnd", "documentEnd"}),
              eventsWithErrors("<a><b>"));
    EXPECT_EQ((Log{"documentStart", "error 22", "error 12", "documentEnd"}),
              eventsWithErrors("<?xml"));
    EXPECT_EQ((Log{"documentStart", "error 10", "error 12", "documentEnd"}),
              eventsWithErrors("<!DOCTYPE a"));
}

TEST(OCXmlParser, AlwaysEndsADocumentThatItStarted) {
    const std::string document =
        "<?xml?><!DOCTYPE a [<!ELEMENT a (b)><!ATTLIST a x CDATA #FIXED 'v'><!ENTITY e 'v'>"
        "<!NOTATION n SYSTEM 's'>%p;]><a x='1'>t<![CDATA[c]]><!--c--><?p d?><b/></a>";
    for (unsigned long length = 0; length <= document.size(); ++length)
        for (const char* tail : {"", "<", ">", "'", "]", "/", "?", "<<", "</", "<!", "<?", "&"}) {
            const Log log = eventsWithErrors(document.substr(0, length) + tail);
            EXPECT_EQ("documentStart", log.front());
            EXPECT_EQ("documentEnd", log.back());
            EXPECT_EQ(1, std::count(log.begin(), log.end(), "documentStart"));
            EXPECT_EQ(1, std::count(log.begin(), log.end(), "documentEnd"));
        }
}

// Streams that break their contract

/// A stream whose reads deliver nothing, or claim to deliver more than was asked for.
class Untrustworthy : public OCNullStream {
public:
    explicit Untrustworthy(bool much) : tooMuch(much) {}
    bool read(void* buffer, unsigned long& count) override {
        if (++reads > 3)
            return false;
        if (tooMuch) {
            std::memset(buffer, ' ', count);
            count *= 2;
        } else
            count = 0;
        return true;
    }
    unsigned reads = 0;

private:
    bool tooMuch;
};

TEST(OCXmlParser, CountsAReadOfNothingAsTheEnd) {
    Untrustworthy stream(false);
    OCXmlEvents receiver;
    OCXmlParser parser;
    parser.setEvents(receiver);
    EXPECT_EXCEPTION(parser.parse(stream), OXXmlParser_ElementMalformed, "Malformed XML element");
    // One look each for the declaration, the document type and the root.
    EXPECT_EQ(3u, stream.reads);
}

TEST(OCXmlParser, TakesNoMoreThanItAskedFor) {
    Untrustworthy stream(true);
    Log log;
    LoggingEvents receiver(log);
    receiver.errorsReturn = true;
    OCXmlParser parser;
    parser.setEvents(receiver);
    parser.parse(stream);
    EXPECT_EQ((Log{"documentStart", "error 12", "documentEnd"}), log);
}

/// Delivers all that is asked for, and says that it was more.
class Boastful : public LoggingStream {
public:
    using LoggingStream::LoggingStream;
    bool read(void* buffer, unsigned long& count) override {
        const bool any = LoggingStream::read(buffer, count);
        count *= 2;
        return any;
    }
};

TEST(OCXmlParser, KeepsWhatItAskedForOfAReadThatClaimsMore) {
    const std::string filling(128 - 7, 't');
    const std::string document = "<a>" + filling + "</a>";
    const Log expected{"documentStart", "elementStart a", "text " + filling, "elementEnd",
                       "documentEnd"};
    for (const bool shared : {false, true}) {
        Boastful stream(document);
        Log log;
        LoggingEvents receiver(log);
        OCXmlParser parser;
        parser.setEvents(receiver);
        if (shared) {
            OCXmlParserSource source(stream, XmlEncodingAnsi);
            OCXmlParserReader reader(source);
            parser.parse(reader);
        } else
            parser.parse(stream);
        EXPECT_EQ(expected, log) << shared;
    }
}

// Memory

TEST(OCXmlParser, SurvivesRefusedMemory) {
    const std::string longText(5000, 't');
    const std::string document = "<?xml?><!DOCTYPE a SYSTEM '" + longText + "' [<?p " + longText +
                                 "?>]><a x='" + longText + "'>" + longText + "<" + longText +
                                 "><![CDATA[" + longText + "]]></" + longText + "></a>";
    OCMemoryStream stream(document.data(), document.size());
    OCXmlEvents receiver;
    OCXmlParser parser;
    parser.setEvents(receiver);
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_LE(8u, fault::failEachRequest([&] {
                                stream.setPosition(0);
                                parser.parse(stream);
                            }));
                  EXPECT_LT(20u, fault::failEachRequest([&] {
                                stream.setPosition(0);
                                OCXmlParserSource source(stream, XmlEncodingAnsi);
                                OCXmlParserReader reader(source);
                                parser.parse(reader);
                            }));
              }));
}

TEST(OCXmlParser, KeepsTheReaderUpToDateWhenMemoryIsRefused) {
    // All memory is refused from some request on, also while the exception passes.
    const std::string longText(2000, 't');
    const std::string document = "<a x='" + longText + "'>" + longText + "<b/></a>";
    OCMemoryStream stream(document.data(), document.size());
    OCXmlEvents receiver;
    OCXmlParser parser;
    parser.setEvents(receiver);
    unsigned long refusals = 0;
    for (unsigned long request = 1; request < 200; ++request) {
        stream.setPosition(0);
        OCXmlParserSource source(stream, XmlEncodingAnsi);
        OCXmlParserReader reader(source);
        bool refused = false;
        {
            fault::HeapFault fault(request, fault::HeapFault::Following);
            try {
                parser.parse(reader);
            } catch (const OXMemory_AllocationError&) {
                refused = true;
            }
        }
        if (!refused)
            break;
        ++refusals;
        // What is left is the end of the document.
        OCWideString rest;
        reader.findCharacter(0x7FFFFFFF, rest);
        const std::string left = xmlmodel::printable(rest);
        ASSERT_LE(left.size(), document.size());
        EXPECT_EQ(document.substr(document.size() - left.size()), left);
    }
    EXPECT_LT(10u, refusals);
}

} // namespace
