#include "OCHtmlParser.h"

#include "OCMemoryStream.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/HtmlModel.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using htmlmodel::Interruption;
using htmlmodel::Log;
using htmlmodel::LoggingEvents;
using htmlmodel::LoggingStream;

/// The events of a document without its frame, which is checked.
Log eventsOf(const std::string& document, bool errorsReturn = false) {
    Log log;
    LoggingStream stream(document);
    LoggingEvents events(log);
    events.errorsReturn = errorsReturn;
    OCHtmlParser parser;
    parser.setParserEvents(events);
    parser.parse(stream);
    EXPECT_EQ("documentStart", log.front());
    EXPECT_EQ("documentEnd", log.back());
    return Log(log.begin() + 1, log.end() - 1);
}

/// What parsing it with the default handler of errors throws.
std::string thrownBy(const std::string& document) {
    OCHtmlParserEvents events;
    LoggingStream stream(document);
    OCHtmlParser parser;
    parser.setParserEvents(events);
    try {
        parser.parse(stream);
    } catch (const OXHtmlError& failure) {
        return failure.getClass().getString();
    }
    return "nothing";
}

/// A reader over a text, a parser that logs, and what both leave.
struct Fixture {
    explicit Fixture(const std::string& text, bool withEvents = true)
        : stream(text), reader(stream), events(log) {
        events.errorsReturn = true;
        if (withEvents)
            parser.setParserEvents(events);
    }

    std::string rest() {
        OCAnsiString text;
        reader.findCharacter('\1', text);
        return std::string(text.getString(), text.getLength());
    }

    Log log;
    LoggingStream stream;
    OCHtmlParserReader reader;
    LoggingEvents events;
    OCHtmlParser parser;
};

std::string text(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

// Layout

TEST(OCHtmlParserEvents, HoldsNothingAndHasItsOperationsInOrder) {
    using Events = OCHtmlParserEvents;
    EXPECT_EQ(8u, sizeof(Events));
    EXPECT_TRUE((std::is_base_of_v<OCObject, Events>));
    EXPECT_EQ(2u, slots::slotOf(&Events::attribute));
    EXPECT_EQ(3u, slots::slotOf(&Events::characterData));
    EXPECT_EQ(4u, slots::slotOf(&Events::comment));
    EXPECT_EQ(5u, slots::slotOf(&Events::documentEnd));
    EXPECT_EQ(6u, slots::slotOf(&Events::documentStart));
    EXPECT_EQ(7u, slots::slotOf(&Events::documentType));
    EXPECT_EQ(8u, slots::slotOf(&Events::elementEnd));
    EXPECT_EQ(9u, slots::slotOf(&Events::elementStart));
    EXPECT_EQ(10u, slots::slotOf(&Events::elementStartComplete));
    EXPECT_EQ(11u, slots::slotOf(&Events::error));
    EXPECT_EQ(12u, slots::slotOf(&Events::warning));
    EXPECT_EQ(13u, slots::slotCount<Events>());
}

TEST(OCHtmlParserReader, HoldsABufferAndAStream) {
    EXPECT_EQ(8 + sizeof(OCAnsiString) + 8, sizeof(OCHtmlParserReader));
    EXPECT_EQ(2u, slots::slotCount<OCHtmlParserReader>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCHtmlParserReader>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCHtmlParserReader>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCHtmlParserReader>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCHtmlParserReader>));
}

TEST(OCHtmlParser, HoldsItsEvents) {
    EXPECT_EQ(16u, sizeof(OCHtmlParser));
    EXPECT_EQ(2u, slots::slotCount<OCHtmlParser>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCHtmlParser>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCHtmlParser>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCHtmlParser>));
}

TEST(OEHtmlErrorClass, HasItsValues) {
    EXPECT_EQ(0, HtmlErrorAttributeMalformed);
    EXPECT_EQ(1, HtmlErrorCommentMalformed);
    EXPECT_EQ(2, HtmlErrorDocumentTypeMalformed);
    EXPECT_EQ(3, HtmlErrorElementEndMalformed);
    EXPECT_EQ(4, HtmlErrorElementStartMalformed);
    EXPECT_EQ(5, HtmlErrorNameMalformed);
    EXPECT_EQ(4u, sizeof(OEHtmlErrorClass));
    EXPECT_EQ(4u, sizeof(OEHtmlWarningClass));
    EXPECT_EQ(0, HtmlWarningNone);
}

TEST(OCHtmlParser, HasNoEventsAtFirst) {
    OCHtmlParser parser;
    EXPECT_FALSE(parser.hasParserEvents());
    OCHtmlParserEvents events;
    parser.setParserEvents(events);
    EXPECT_TRUE(parser.hasParserEvents());
    EXPECT_EQ(&events, &parser.getParserEvents());
    const OCHtmlParser& constant = parser;
    EXPECT_EQ(&events, &constant.getParserEvents());
}

// Documents

TEST(OCHtmlParser, ReportsAnElementWithItsAttributesAndText) {
    EXPECT_EQ((Log{"start P", "attribute Class=x", "complete P", "text Hi", "end p"}),
              eventsOf("<P Class=x>Hi</p>"));
}

TEST(OCHtmlParser, ReportsTheStartAndEndOfAnEmptyDocument) {
    EXPECT_EQ(Log{}, eventsOf(""));
}

TEST(OCHtmlParser, ReportsAnEmptyElementAsStartedAndEnded) {
    EXPECT_EQ((Log{"start br", "complete br", "end br"}), eventsOf("<br/>"));
    EXPECT_EQ((Log{"start br", "complete br", "end br"}), eventsOf("<br />"));
    EXPECT_EQ(Log({"start a", "error 4", "text / >"}), eventsOf("<a / >", true));
}

TEST(OCHtmlParser, ReportsAttributesWithoutValue) {
    EXPECT_EQ((Log{"start input", "attribute disabled=", "complete input"}),
              eventsOf("<input disabled>"));
    EXPECT_EQ((Log{"start a", "attribute b=", "attribute c=", "complete a", "end a"}),
              eventsOf("<a b c/>"));
}

TEST(OCHtmlParser, AcceptsAttributesInEveryForm) {
    EXPECT_EQ((Log{"start a", "attribute x=y", "complete a"}), eventsOf("<a x = 'y'>"));
    EXPECT_EQ((Log{"start a", "attribute x=y", "attribute z=w", "complete a"}),
              eventsOf("<a x='y'z='w'>"));
    EXPECT_EQ((Log{"start a", "attribute x=\"", "attribute y='", "complete a"}),
              eventsOf("<a x='\"' y=\"'\">"));
    EXPECT_EQ((Log{"start a", "attribute x=> <\\10;", "complete a"}), eventsOf("<a x='> <\n'>"));
    EXPECT_EQ((Log{"start a", "attribute x=", "attribute y=", "complete a"}),
              eventsOf("<a x='' y=>"));
    EXPECT_EQ((Log{"start a", "attribute x=a\"b'<=", "complete a"}), eventsOf("<a x=a\"b'<=>"));
    EXPECT_EQ((Log{"start a", "attribute x=1", "attribute y=2", "complete a"}),
              eventsOf("<a\tx\n=\r\n1\fy=2\1>"));
}

TEST(OCHtmlParser, TakesASlashIntoASimpleValue) {
    EXPECT_EQ((Log{"start a", "attribute href=x/", "complete a"}), eventsOf("<a href=x/>"));
}

TEST(OCHtmlParser, ReportsEndsWithoutStarts) {
    EXPECT_EQ((Log{"end b", "end c"}), eventsOf("</b></c>"));
    EXPECT_EQ((Log{"end b"}), eventsOf("</ b\n>"));
}

TEST(OCHtmlParser, ReportsTheDocumentTypeTrimmed) {
    EXPECT_EQ(Log{"doctype html"}, eventsOf("<!DOCTYPE  html >"));
    EXPECT_EQ(Log{"doctype "}, eventsOf("<!doctype>"));
    EXPECT_EQ(Log{"doctype html"}, eventsOf("<!DocTypehtml>"));
    EXPECT_EQ(Log{"doctype a \"b\""}, eventsOf("<!dOCTYPE\n\ta \"b\"\1>"));
}

TEST(OCHtmlParser, ReportsACommentUpToTheFirstTwoDashes) {
    EXPECT_EQ(Log{"comment  a "}, eventsOf("<!-- a -- b -->"));
    EXPECT_EQ(Log{"comment  a "}, eventsOf("<!-- a -->"));
    EXPECT_EQ(Log{"comment "}, eventsOf("<!---->"));
    EXPECT_EQ(Log{"comment >"}, eventsOf("<!-->-->"));
    EXPECT_EQ(Log{"comment -a- <b>"}, eventsOf("<!--"
                                               "-a- <b>-->"));
    EXPECT_EQ((Log{"comment ", "text t"}), eventsOf("<!----- >t"));
}

TEST(OCHtmlParser, DecodesNothing) {
    EXPECT_EQ(Log{"text a &amp; b"}, eventsOf("a &amp; b"));
    EXPECT_EQ((Log{"start a", "attribute x=&lt;", "complete a", "text  \\10;\\9;"}),
              eventsOf("<a x='&lt;'> \n\t"));
    EXPECT_EQ((Log{"text \\255;\\0;\\195;"}), eventsOf(std::string("\xFF\0\xC3", 3)));
}

TEST(OCHtmlParser, KnowsNoParticularElement) {
    EXPECT_EQ((Log{"start script", "complete script", "text a>b", "end script"}),
              eventsOf("<script>a>b</script>"));
}

TEST(OCHtmlParser, TakesLettersDigitsAndFourMarksIntoNames) {
    EXPECT_EQ((Log{"start aZ09!-:_", "complete aZ09!-:_"}), eventsOf("<aZ09!-:_>"));
    EXPECT_EQ((Log{"start !-x", "complete !-x"}), eventsOf("<!-x>"));
    EXPECT_EQ((Log{"start !doctyp", "attribute html=", "complete !doctyp"}),
              eventsOf("<!doctyp html>"));
    for (int c = 33; c < 256; ++c) {
        const std::string name(1, static_cast<char>(c));
        const bool accepted =
            (c < 128 && std::isalnum(c)) || c == '!' || c == '-' || c == ':' || c == '_';
        // Behind a name character, so that a slash does not begin an end tag.
        const Log log = eventsOf("<a" + name + "b>", true);
        EXPECT_EQ(accepted ? "start a" + name + "b" : "start a", log[0]) << c;
    }
}

TEST(OCHtmlParser, TakesBytesUpTo32ForWhiteSpace) {
    for (int c = 0; c < 256; ++c) {
        const Log log = eventsOf("<a" + std::string(1, static_cast<char>(c)) + "b>", true);
        const bool space = c <= 32;
        EXPECT_EQ(space, log == (Log{"start a", "attribute b=", "complete a"})) << c;
    }
    EXPECT_EQ((Log{"start a", "attribute x=\\128;\\160;", "complete a"}),
              eventsOf("<a x=\x80\xA0>"));
}

TEST(OCHtmlParser, AllowsWhiteSpaceBeforeAName) {
    EXPECT_EQ((Log{"start a", "complete a"}), eventsOf("< \na>"));
}

// Errors that throw

TEST(OCHtmlParser, ThrowsForEachMalformation) {
    EXPECT_EQ("OXHtmlError_NameMalformed", thrownBy("<?xml version='1.0'?>"));
    EXPECT_EQ("OXHtmlError_NameMalformed", thrownBy("<>"));
    EXPECT_EQ("OXHtmlError_NameMalformed", thrownBy("text<"));
    EXPECT_EQ("OXHtmlError_NameMalformed", thrownBy("</>"));
    EXPECT_EQ("OXHtmlError_ElementStartMalformed", thrownBy("<a"));
    EXPECT_EQ("OXHtmlError_ElementStartMalformed", thrownBy("<a/"));
    EXPECT_EQ("OXHtmlError_ElementStartMalformed", thrownBy("<a ?>"));
    EXPECT_EQ("OXHtmlError_ElementEndMalformed", thrownBy("</a"));
    EXPECT_EQ("OXHtmlError_ElementEndMalformed", thrownBy("</a x='y'>"));
    EXPECT_EQ("OXHtmlError_AttributeMalformed", thrownBy("<a x='y>"));
    EXPECT_EQ("OXHtmlError_AttributeMalformed", thrownBy("<a x=y"));
    EXPECT_EQ("OXHtmlError_AttributeMalformed", thrownBy("<a x="));
    EXPECT_EQ("OXHtmlError_CommentMalformed", thrownBy("<!-- a ->"));
    EXPECT_EQ("OXHtmlError_CommentMalformed", thrownBy("<!-- a --"));
    EXPECT_EQ("OXHtmlError_Unexpected", thrownBy("<!DOCTYPE html"));
}

TEST(OCHtmlParserEvents, ThrowsByDefaultForEachErrorClass) {
    OCHtmlParserEvents events;
    EXPECT_EXCEPTION(events.error(HtmlErrorAttributeMalformed), OXHtmlError_AttributeMalformed,
                     "Malformed attribute");
    EXPECT_EXCEPTION(events.error(HtmlErrorCommentMalformed), OXHtmlError_CommentMalformed,
                     "Malformed comment");
    EXPECT_EXCEPTION(events.error(HtmlErrorDocumentTypeMalformed), OXHtmlError_Unexpected,
                     "Unexpected error");
    EXPECT_EXCEPTION(events.error(HtmlErrorElementEndMalformed), OXHtmlError_ElementEndMalformed,
                     "Malformed end of element");
    EXPECT_EXCEPTION(events.error(HtmlErrorElementStartMalformed),
                     OXHtmlError_ElementStartMalformed, "Malformed start of element");
    EXPECT_EXCEPTION(events.error(HtmlErrorNameMalformed), OXHtmlError_NameMalformed,
                     "Malformed name");
    for (const int other : {-1, 6, 1000})
        EXPECT_EXCEPTION(events.error(static_cast<OEHtmlErrorClass>(other)), OXHtmlError_Unexpected,
                         "Unexpected error");
}

TEST(OCHtmlParserEvents, IgnoresEverythingElseByDefault) {
    OCHtmlParserEvents events;
    LoggingStream stream("<!doctype x><!--c--><a b=c>t</a><d/>");
    OCHtmlParser parser;
    parser.setParserEvents(events);
    EXPECT_NO_THROW(parser.parse(stream));
    EXPECT_NO_THROW(events.warning(HtmlWarningNone));
    EXPECT_EQ(stream.data.size(), stream.position);
}

TEST(OCHtmlParser, ForwardsErrorsAndWarnings) {
    Log log;
    LoggingEvents events(log);
    events.errorsReturn = true;
    OCHtmlParser parser;
    for (const int value : {0, 2, 5, 77})
        EXPECT_EXCEPTION(parser.error(static_cast<OEHtmlErrorClass>(value)), OXHtmlError_Unhandled,
                         "Unhandled error");
    EXPECT_NO_THROW(parser.warning(HtmlWarningNone));
    parser.setParserEvents(events);
    parser.error(static_cast<OEHtmlErrorClass>(77));
    parser.warning(HtmlWarningNone);
    EXPECT_EQ((Log{"error 77", "warning"}), log);
}

TEST(OCHtmlParser, NeedsNoEventsForAWellFormedDocument) {
    LoggingStream good("<a b=c>t</a>");
    OCHtmlParser parser;
    EXPECT_NO_THROW(parser.parse(good));
    LoggingStream bad("<a b='c");
    EXPECT_EXCEPTION(parser.parse(bad), OXHtmlError_Unhandled, "Unhandled error");
}

// Errors that return

TEST(OCHtmlParser, GoesOnWhereTheErrorWasFound) {
    EXPECT_EQ((Log{"end b", "error 3", "text x>t"}), eventsOf("</b x>t", true));
    EXPECT_EQ((Log{"end b", "error 3", "start i", "complete i"}), eventsOf("</b <i>", true));
    EXPECT_EQ((Log{"start a", "error 4", "text ?>t"}), eventsOf("<a ?>t", true));
    EXPECT_EQ((Log{"start a", "error 4", "start b", "complete b"}), eventsOf("<a<b>", true));
    EXPECT_EQ((Log{"error 5", "start ", "error 4", "text ?x>"}), eventsOf("<?x>", true));
}

TEST(OCHtmlParser, TakesAMissingNameForAnEmptyOne) {
    EXPECT_EQ((Log{"error 5", "start ", "complete ", "text t"}), eventsOf("<>t", true));
    EXPECT_EQ((Log{"error 5", "end ", "text t"}), eventsOf("</>t", true));
    EXPECT_EQ((Log{"start b", "complete b", "error 5", "end "}), eventsOf("<b></ >", true));
    EXPECT_EQ((Log{"error 5", "start ", "error 4"}), eventsOf("<", true));
    EXPECT_EQ((Log{"error 5", "end ", "error 3"}), eventsOf("</", true));
}

TEST(OCHtmlParser, ReportsNothingOfAMalformedConstruct) {
    EXPECT_EQ(Log{"error 1"}, eventsOf("<!-- a <b>", true));
    EXPECT_EQ((Log{"comment  a ", "error 1"}), eventsOf("<!-- a -- b", true));
    EXPECT_EQ(Log{"error 2"}, eventsOf("<!doctype html", true));
    EXPECT_EQ((Log{"start a", "error 0", "error 4"}), eventsOf("<a b='c", true));
    EXPECT_EQ((Log{"start a", "error 0", "error 4"}), eventsOf("<a b=c", true));
    EXPECT_EQ((Log{"start a", "attribute b=", "error 4"}), eventsOf("<a b ", true));
}

// What a stream and a reader see

TEST(OCHtmlParser, ReadsABatchWhenItNeedsOne) {
    Log log;
    LoggingStream stream(std::string(200, 't') + "<a>", &log);
    LoggingEvents events(log);
    OCHtmlParser parser;
    parser.setParserEvents(events);
    parser.parse(stream);
    // Everything is looked for once more at the end.
    EXPECT_EQ((Log{"documentStart", "read 128", "read 128", "text " + std::string(200, 't'),
                   "read 128", "read 128", "start a", "complete a", "read 128", "read 128",
                   "read 128", "read 128", "read 128", "documentEnd"}),
              log);
}

TEST(OCHtmlParser, KeepsAGivenReaderUpToDate) {
    Fixture f("<p a='1'>x<!--c--d><!doctype e></p><br/>!");
    std::string seen;
    f.events.at = [&](const std::string&) {
        char c = '$';
        f.reader.previewCharacter(c);
        seen += c;
    };
    f.parser.parseDocument(f.reader);
    EXPECT_EQ(
        (Log{"documentStart", "start p", "attribute a=1", "complete p", "text x", "comment c",
             "doctype e", "end p", "start br", "complete br", "end br", "text !", "documentEnd"}),
        f.log);
    EXPECT_EQ("< >x<->>/!!$$", seen);
}

TEST(OCHtmlParser, LetsExceptionsOfEventsThroughAndKeepsTheReaderUpToDate) {
    Fixture f("<p a='1'>x</p>");
    f.events.failingEvent = 2;
    EXPECT_THROW(f.parser.parseDocument(f.reader), Interruption);
    EXPECT_EQ(">x</p>", f.rest());
    EXPECT_EQ((Log{"documentStart", "start p", "attribute a=1"}), f.log);
}

TEST(OCHtmlParser, CanBeUsedAgainAndWithinAnEvent) {
    Fixture f("<a/>");
    unsigned depth = 0;
    f.events.at = [&](const std::string& event) {
        if (event != "complete a" || depth > 0)
            return;
        ++depth;
        LoggingStream inner("i<b>");
        f.parser.parse(inner);
    };
    f.parser.parseDocument(f.reader);
    EXPECT_EQ((Log{"documentStart", "start a", "complete a", "documentStart", "text i", "start b",
                   "complete b", "documentEnd", "end a", "documentEnd"}),
              f.log);
}

TEST(OCHtmlParser, DeliversToTheEventsThatWereSetLastAlsoWithinAParse) {
    Log log;
    Log otherLog;
    LoggingEvents events(log);
    LoggingEvents other(otherLog);
    other.errorsReturn = true;
    LoggingStream stream("<a b/>c<");
    OCHtmlParser parser;
    parser.setParserEvents(events);
    events.at = [&](const std::string& event) {
        if (event == "start a" || event == "end a")
            parser.setParserEvents(other);
    };
    other.at = [&](const std::string& event) {
        if (event == "complete a")
            parser.setParserEvents(events);
    };
    parser.parse(stream);
    EXPECT_EQ((Log{"documentStart", "start a", "end a"}), log);
    EXPECT_EQ((Log{"attribute b=", "complete a", "text c", "error 5", "start ", "error 4",
                   "documentEnd"}),
              otherLog);
}

// The grammar operations

TEST(OCHtmlParser, RecognisesOneConstructAtATime) {
    Fixture f("t<!--c--><!doctype d></e><s>");
    for (const char* rest :
         {"<!--c--><!doctype d></e><s>", "<!doctype d></e><s>", "</e><s>", "<s>", ""}) {
        EXPECT_TRUE(f.parser.possibleMiscellaneous(f.reader));
        const OCAnsiString expected(rest);
        EXPECT_EQ(*rest != 0, f.reader.peekString(expected));
    }
    EXPECT_FALSE(f.parser.possibleMiscellaneous(f.reader));
    EXPECT_EQ((Log{"text t", "comment c", "doctype d", "end e", "start s", "complete s"}), f.log);
}

TEST(OCHtmlParser, ConsumesNothingWhenAConstructDoesNotBegin) {
    for (const auto operation :
         {&OCHtmlParser::possibleComment, &OCHtmlParser::possibleCommentBegin,
          &OCHtmlParser::possibleDocumentType, &OCHtmlParser::possibleDocumentTypeBegin,
          &OCHtmlParser::possibleElement, &OCHtmlParser::possibleElementEnd,
          &OCHtmlParser::possibleElementStart, &OCHtmlParser::possibleAttribute,
          &OCHtmlParser::possibleWhiteSpace}) {
        Fixture f("=<x");
        EXPECT_FALSE((f.parser.*operation)(f.reader));
        EXPECT_EQ("=<x", f.rest());
        EXPECT_EQ(Log{}, f.log);
        Fixture end("");
        EXPECT_FALSE((end.parser.*operation)(end.reader));
    }
    Fixture f("<x");
    EXPECT_FALSE(f.parser.possibleCharacterData(f.reader));
    EXPECT_FALSE(f.parser.possibleElementEnd(f.reader));
    EXPECT_EQ("<x", f.rest());
}

struct Step {
    const char* input;
    Log events;
    const char* rest;
};

void expectSteps(void (OCHtmlParser::*operation)(OCHtmlParserReader&),
                 const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        Fixture f(step.input);
        (f.parser.*operation)(f.reader);
        EXPECT_EQ(step.events, f.log) << step.input;
        EXPECT_EQ(step.rest, f.rest()) << step.input;
    }
}

void expectSteps(bool (OCHtmlParser::*operation)(OCHtmlParserReader&), bool result,
                 const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        Fixture f(step.input);
        EXPECT_EQ(result, (f.parser.*operation)(f.reader)) << step.input;
        EXPECT_EQ(step.events, f.log) << step.input;
        EXPECT_EQ(step.rest, f.rest()) << step.input;
    }
}

TEST(OCHtmlParser, ParsesThePartsOfAComment) {
    expectSteps(&OCHtmlParser::possibleCommentBegin, true, {{"<!--a", {}, "a"}});
    expectSteps(&OCHtmlParser::parseCommentContents,
                {{"a-b--c", {"comment a-b"}, "--c"}, {"a-", {"error 1"}, ""}});
    expectSteps(&OCHtmlParser::parseCommentEnd,
                {{"-- a>b", {}, "b"}, {"a", {"error 1"}, "a"}, {"-- a", {"error 1"}, ""}});
    expectSteps(&OCHtmlParser::possibleComment, true, {{"<!--a-->b", {"comment a"}, "b"}});
    expectSteps(&OCHtmlParser::possibleComment, false,
                {{"<!--a->b", {"error 1"}, ""}, {"<!--a--b", {"comment a", "error 1"}, ""}});
}

TEST(OCHtmlParser, ParsesThePartsOfADocumentType) {
    expectSteps(&OCHtmlParser::possibleDocumentTypeBegin, true, {{"<!DOCTYPEa", {}, "a"}});
    expectSteps(&OCHtmlParser::parseDocumentTypeContents,
                {{" a b >c", {"doctype a b"}, ">c"}, {" a ", {"error 2"}, ""}});
    expectSteps(&OCHtmlParser::parseDocumentTypeEnd, {{">a", {}, "a"}, {"a", {"error 2"}, "a"}});
    expectSteps(&OCHtmlParser::possibleDocumentType, true, {{"<!doctype a>b", {"doctype a"}, "b"}});
    expectSteps(&OCHtmlParser::possibleDocumentType, false, {{"<!doctype a", {"error 2"}, ""}});
}

TEST(OCHtmlParser, ParsesElements) {
    for (const auto operation : {&OCHtmlParser::possibleElement, &OCHtmlParser::possibleElementEnd})
        expectSteps(operation, true,
                    {{"</a >b", {"end a"}, "b"}, {"</>b", {"error 5", "end "}, "b"}});
    for (const auto operation : {&OCHtmlParser::possibleElement, &OCHtmlParser::possibleElementEnd})
        expectSteps(operation, false, {{"</a b>c", {"end a", "error 3"}, "b>c"}});
    for (const auto operation :
         {&OCHtmlParser::possibleElement, &OCHtmlParser::possibleElementStart})
        expectSteps(operation, true,
                    {{"<a>b", {"start a", "complete a"}, "b"},
                     {"<a/>b", {"start a", "complete a", "end a"}, "b"}});
    for (const auto operation :
         {&OCHtmlParser::possibleElement, &OCHtmlParser::possibleElementStart})
        expectSteps(operation, false, {{"<a ='b'>", {"start a", "error 4"}, "='b'>"}});
    expectSteps(&OCHtmlParser::possibleMiscellaneous, true,
                {{"</a b>c", {"end a", "error 3"}, "b>c"},
                 {"<a ='b'>", {"start a", "error 4"}, "='b'>"},
                 {"<!--a", {"error 1"}, ""},
                 {"<!doctype", {"error 2"}, ""}});
}

TEST(OCHtmlParser, ParsesThePartsOfAStartTag) {
    Fixture f("< ab c='d'e f=g>h");
    OCAnsiString name("old");
    EXPECT_TRUE(f.parser.possibleElementStartBegin(f.reader, name));
    EXPECT_EQ("ab", text(name));
    f.parser.parseAttributeList(f.reader);
    f.parser.parseElementStartEnd(f.reader, name);
    EXPECT_EQ((Log{"start ab", "attribute c=d", "attribute e=", "attribute f=g", "complete ab"}),
              f.log);
    EXPECT_FALSE(f.parser.possibleElementStartBegin(f.reader, name));
    EXPECT_EQ("ab", text(name));
    EXPECT_EQ("h", f.rest());

    Fixture nameless("<>");
    EXPECT_TRUE(nameless.parser.possibleElementStartBegin(nameless.reader, name));
    EXPECT_EQ("", text(name));
    EXPECT_EQ((Log{"error 5", "start "}), nameless.log);
}

TEST(OCHtmlParser, EndsAStartTag) {
    using Operation = void (OCHtmlParser::*)(OCHtmlParserReader&, const OCAnsiString&);
    const struct {
        Operation operation;
        const char* input;
        Log events;
        const char* rest;
    } steps[] = {
        {&OCHtmlParser::parseElementStartEnd, ">x", {"complete n"}, "x"},
        {&OCHtmlParser::parseElementStartEnd, "/>x", {"complete n", "end n"}, "x"},
        {&OCHtmlParser::parseElementStartEnd, "/x", {"error 4"}, "/x"},
        {&OCHtmlParser::parseElementStartEnd, "", {"error 4"}, ""},
        {&OCHtmlParser::parseElementStartEndContent, ">x", {"complete n"}, "x"},
        {&OCHtmlParser::parseElementStartEndContent, "/>x", {"error 4"}, "/>x"},
        {&OCHtmlParser::parseElementStartEndEmpty, "/>x", {"complete n", "end n"}, "x"},
        {&OCHtmlParser::parseElementStartEndEmpty, ">x", {"error 4"}, ">x"},
    };
    for (const auto& step : steps) {
        Fixture f(step.input);
        (f.parser.*step.operation)(f.reader, "n");
        EXPECT_EQ(step.events, f.log) << step.input;
        EXPECT_EQ(step.rest, f.rest()) << step.input;
    }
}

TEST(OCHtmlParser, ParsesAttributes) {
    expectSteps(&OCHtmlParser::possibleAttribute, true,
                {{"a", {"attribute a="}, ""},
                 {"a =\n'b'c", {"attribute a=b"}, "c"},
                 {"a b", {"attribute a="}, "b"},
                 {"a=b c", {"attribute a=b"}, " c"},
                 {"a=>", {"attribute a="}, ">"}});
    expectSteps(&OCHtmlParser::possibleAttribute, false,
                {{"a='b", {"error 0"}, ""}, {"a=b", {"error 0"}, ""}, {"a=", {"error 0"}, ""}});
}

TEST(OCHtmlParser, ParsesValues) {
    using Operation = void (OCHtmlParser::*)(OCHtmlParserReader&, OCAnsiString&);
    const struct {
        Operation operation;
        const char* input;
        const char* value;
        Log events;
        const char* rest;
    } steps[] = {
        {&OCHtmlParser::parseAttributeValue, "'a\"'b", "a\"", {}, "b"},
        {&OCHtmlParser::parseAttributeValue, "\"a'\"b", "a'", {}, "b"},
        {&OCHtmlParser::parseAttributeValue, "ab>", "ab", {}, ">"},
        {&OCHtmlParser::parseAttributeValue, " ", "", {}, " "},
        {&OCHtmlParser::parseAttributeValue, "", "", {"error 0"}, ""},
        {&OCHtmlParser::parseAttributeValueQuoted, "'a'b", "a", {}, "b"},
        {&OCHtmlParser::parseAttributeValueQuoted, "''b", "", {}, "b"},
        {&OCHtmlParser::parseAttributeValueQuoted, "'ab", "ab", {"error 0"}, ""},
        {&OCHtmlParser::parseAttributeValueQuoted, "ab", "old", {"error 0"}, "ab"},
        {&OCHtmlParser::parseAttributeValueQuoted, "", "old", {"error 0"}, ""},
        {&OCHtmlParser::parseAttributeValueSimple, "'a'>", "'a'", {}, ">"},
        {&OCHtmlParser::parseAttributeValueSimple, "ab", "ab", {"error 0"}, ""},
    };
    for (const auto& step : steps) {
        Fixture f(step.input);
        OCAnsiString value("old");
        (f.parser.*step.operation)(f.reader, value);
        EXPECT_EQ(step.value, text(value)) << step.input;
        EXPECT_EQ(step.events, f.log) << step.input;
        EXPECT_EQ(step.rest, f.rest()) << step.input;
    }
}

TEST(OCHtmlParser, ParsesNames) {
    for (const auto operation :
         {&OCHtmlParser::possibleName, &OCHtmlParser::possibleAttributeName}) {
        Fixture f("aB-1=");
        OCAnsiString name("old");
        EXPECT_TRUE((f.parser.*operation)(f.reader, name));
        EXPECT_EQ("aB-1", text(name));
        EXPECT_FALSE((f.parser.*operation)(f.reader, name));
        EXPECT_EQ("aB-1", text(name));
        EXPECT_EQ(Log{}, f.log);
    }
    Fixture f("a=");
    OCAnsiString name("old");
    f.parser.parseName(f.reader, name);
    EXPECT_EQ("a", text(name));
    f.parser.parseName(f.reader, name);
    EXPECT_EQ("a", text(name));
    EXPECT_EQ(Log{"error 5"}, f.log);
    EXPECT_EQ("=", f.rest());
}

TEST(OCHtmlParser, KeepsANameThatAFailingStreamCutsOff) {
    Fixture f("abc");
    f.stream.portion = 2;
    f.stream.failingCall = 1;
    OCAnsiString name("old");
    EXPECT_THROW(f.parser.possibleName(f.reader, name), Interruption);
    EXPECT_EQ("old", text(name));
}

TEST(OCHtmlParser, SkipsWhiteSpace) {
    Fixture f(std::string(" \t\n\0\1", 5) + std::string(300, ' ') + "\x7F");
    EXPECT_TRUE(f.parser.possibleWhiteSpace(f.reader));
    EXPECT_FALSE(f.parser.possibleWhiteSpace(f.reader));
    EXPECT_EQ("\x7F", f.rest());
}

TEST(OCHtmlParser, NeedsEventsToReportMalformedPieces) {
    Fixture f("<a b='", false);
    EXPECT_EXCEPTION(f.parser.possibleElement(f.reader), OXHtmlError_Unhandled, "Unhandled error");
    EXPECT_EQ("", f.rest());
}

// Memory

TEST(OCHtmlParser, GivesEverythingBackWhicheverAllocationFails) {
    const std::string run(20000, 'r');
    const std::string document = "<!doctype " + run + "><!--" + run + "--><" + run + " " + run +
                                 "='" + run + "' x=" + run + ">" + run + "</" + run + ">";
    OCHtmlParserEvents events;
    OCHtmlParser parser;
    parser.setParserEvents(events);
    OCMemoryStream stream(document.data(), document.size());
    const auto privately = [&] {
        stream.setPosition(0);
        parser.parse(stream);
    };
    const auto shared = [&] {
        stream.setPosition(0);
        OCHtmlParserReader reader(stream);
        parser.parseDocument(reader);
    };
    EXPECT_EQ(0, fault::blocksLeftBy([&] { EXPECT_LT(0u, fault::failEachRequest(privately)); }));
    EXPECT_EQ(0, fault::blocksLeftBy([&] { EXPECT_LT(0u, fault::failEachRequest(shared)); }));
}

} // namespace
