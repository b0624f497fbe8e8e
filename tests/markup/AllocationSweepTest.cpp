#include "support/AllocationSweep.h"

#include "OCDtdParser.h"
#include "OCFilePath.h"
#include "OCHtmlParser.h"
#include "OCMemoryStream.h"
#include "OCQueryString.h"
#include "OCResourceLocator.h"
#include "OCUniqueIdentifier.h"
#include "OCXmlParser.h"
#include "OCXmlParserReader.h"
#include "OCXmlWriter.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace {

using State = const std::string&;

const std::string run(300, 'n');
const std::string space(300, ' ');
const OCAnsiString longText(run.c_str());
const OCWideString longWide(longText);
const OCWideString longest(OCAnsiString(std::string(20000, 'n').c_str()));

/// An input, read from its first character. What is left of it can be seen once, at the end.
template<class Reader>
struct Input;

template<>
struct Input<OCXmlParserReader> {
    explicit Input(State content)
        : document(content), stream(content.data(), content.size()),
          source(stream, XmlEncodingAnsi), reader(source) {
        parser.setEvents(events);
    }
    std::string rest() {
        OCWideString left;
        reader.findCharacter(0x7FFFFFFF, left);
        return sweep::seen(OCAnsiString(left));
    }
    const std::string document;
    OCMemoryStream stream;
    OCXmlParserSource source;
    OCXmlParserReader reader;
    OCXmlEvents events;
    OCXmlParser parser;
    OCWideString text;
    bool used = false;
};

template<>
struct Input<OCHtmlParserReader> {
    explicit Input(State content)
        : document(content), stream(content.data(), content.size()), reader(stream) {
        parser.setParserEvents(events);
    }
    std::string rest() {
        OCAnsiString left;
        reader.findCharacter('\x01', left);
        return sweep::seen(left);
    }
    const std::string document;
    OCMemoryStream stream;
    OCHtmlParserReader reader;
    OCHtmlParserEvents events;
    OCHtmlParser parser;
    OCAnsiString text;
    bool used = false;
};

template<class Reader>
auto inputs(State document) {
    return sweep::Operations([document] { return std::make_unique<Input<Reader>>(document); },
                             [](Input<Reader>& input) {
                                 return input.used ? input.rest()
                                                   : Input<Reader>(input.document).rest();
                             });
}

using Xml = Input<OCXmlParserReader>;
using Html = Input<OCHtmlParserReader>;

/// A recogniser that fails has taken characters from the front, and lost none behind them.
template<class Reader, class Operation>
void consuming(const char* name, State document, Operation operation) {
    inputs<Reader>(document).leaving(
        name,
        [&](Input<Reader>& input) {
            input.used = true;
            operation(input);
        },
        [](State before, State after, State) {
            const std::string was = before.substr(0, before.rfind('#'));
            const std::string is = after.substr(0, after.rfind('#'));
            ASSERT_LE(is.size(), was.size());
            EXPECT_EQ(was.substr(was.size() - is.size()), is);
        });
}

template<class Operation>
void xml(const char* name, State document, Operation operation) {
    consuming<OCXmlParserReader>(name, document + "|the rest", operation);
}

template<class Operation>
void dtd(const char* name, State document, Operation operation) {
    xml(name, document, [&](Xml& x) {
        OCDtdParser parser(x.parser);
        operation(parser, x.reader);
    });
}

template<class Operation>
void html(const char* name, State document, Operation operation) {
    consuming<OCHtmlParserReader>(name, document, operation);
}

TEST(AllocationSweep, XmlParser) {
    const std::string declaration = "<?xml version='" + run + "'?>";
    const std::string instruction = "<?" + run + " " + run + "?>";
    const std::string comment = "<!--" + run + "-->";
    const std::string type = "<!DOCTYPE " + run + " SYSTEM '" + run + "'>";
    const std::string start = "<" + run + space + run + "='" + run + "'>";
    const std::string end = "</" + run + ">";
    const std::string content = run + comment + "<![CDATA[" + run + "]]>" + instruction;
    const std::string element = start + content + "<a>" + run + "</a>" + end;
    xml("parseDocument", declaration + type + element,
        [](Xml& x) { x.parser.parseDocument(x.reader); });
    xml("parse", declaration + type + element + space, [](Xml& x) { x.parser.parse(x.reader); });
    xml("parseProlog", declaration + type + "<a/>", [](Xml& x) { x.parser.parseProlog(x.reader); });
    xml("possibleXmlDeclaration", declaration,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleXmlDeclaration(x.reader)); });
    xml("possibleMiscellaneous", space + comment + instruction,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleMiscellaneous(x.reader)); });
    xml("possibleDocumentTypeDeclaration", type,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleDocumentTypeDeclaration(x.reader)); });
    xml("parseElement", element, [](Xml& x) { x.parser.parseElement(x.reader); });
    xml("possibleElement", element,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleElement(x.reader)); });
    xml("possibleElementStart", start, [](Xml& x) {
        bool empty = true;
        EXPECT_TRUE(x.parser.possibleElementStart(x.reader, x.text, empty));
    });
    xml("parseElementEnd", end, [](Xml& x) { x.parser.parseElementEnd(x.reader, longWide); });
    xml("parseContent", content + "</", [](Xml& x) { x.parser.parseContent(x.reader); });
    xml("possibleCdataSection", "<![CDATA[" + run + "]]>",
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleCdataSection(x.reader)); });
    xml("possibleComment", comment,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleComment(x.reader)); });
    xml("possibleProcessingInstruction", instruction,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleProcessingInstruction(x.reader)); });
    xml("possibleCharacterData", run + "<",
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleCharacterData(x.reader)); });
    xml("possibleAttribute", run + "='" + run + "'",
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleAttribute(x.reader)); });
    xml("possibleAttributeValue", "'" + run + "'",
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleAttributeValue(x.reader, x.text)); });
    xml("parseAttributeValue", "'" + run + "'",
        [](Xml& x) { x.parser.parseAttributeValue(x.reader, x.text); });
    xml("possibleName", run, [](Xml& x) { EXPECT_TRUE(x.parser.possibleName(x.reader, x.text)); });
    xml("parseName", run, [](Xml& x) { x.parser.parseName(x.reader, x.text); });
    xml("possibleWhiteSpace", space,
        [](Xml& x) { EXPECT_TRUE(x.parser.possibleWhiteSpace(x.reader)); });

    const auto make = sweep::results();
    make("new", [](auto&) { delete new OCXmlParser; });
    make.managing("error", [](auto&) {
        OCXmlEvents events;
        OCXmlParser parser;
        parser.setEvents(events);
        sweep::refused<OXXmlParser_NameMalformed>(
            [&] { parser.error(XmlParserErrorNameMalformed); });
    });
    const ScratchDirectory directory;
    const std::string document = declaration + type + element;
    const OCFilePath path(directory.write("document", document).c_str());
    const long descriptors = openDescriptors();
    make("parse a file", [&](auto&) {
        OCXmlEvents events;
        OCXmlParser parser;
        parser.setEvents(events);
        parser.parse(path);
    });
    EXPECT_EQ(descriptors, openDescriptors());
    OCMemoryStream stream(document.data(), document.size());
    make("parse a stream", [&](auto&) {
        OCXmlEvents events;
        OCXmlParser parser;
        parser.setEvents(events);
        stream.setPosition(0);
        parser.parse(stream);
    });
}

TEST(AllocationSweep, DtdParser) {
    const std::string identifier = "PUBLIC" + space + "'" + run + "'" + space + "'" + run + "'";
    using Dtd = OCDtdParser;
    using Reader = OCXmlParserReader;
    dtd("parse", "<!DOCTYPE " + run + space + identifier + "[<!ELEMENT " + run + " ANY>]>",
        [](Dtd& d, Reader& r) { d.parse(r); });
    dtd("parseBegin", "<!DOCTYPE " + run + space + identifier + "[",
        [](Dtd& d, Reader& r) { d.parseBegin(r); });
    dtd("possibleMarkupDeclaration", "<!--" + run + "-->",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleMarkupDeclaration(r)); });
    dtd("possibleElementDeclaration", "<!ELEMENT " + run + " ANY>",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleElementDeclaration(r)); });
    dtd("parseContentSpecification", "(" + run + ")>",
        [](Dtd& d, Reader& r) { d.parseContentSpecification(r); });
    const std::string definition = space + run + " CDATA #FIXED '" + run + "'";
    dtd("possibleAttributeListDeclaration", "<!ATTLIST " + run + definition + ">",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleAttributeListDeclaration(r)); });
    dtd("possibleAttributeDefinition", definition,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleAttributeDefinition(r)); });
    dtd("parseAttributeType", "(" + run + ")", [](Dtd& d, Reader& r) { d.parseAttributeType(r); });
    dtd("possibleAttributeTypeString", "CDATA" + space,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleAttributeTypeString(r)); });
    dtd("possibleAttributeTypeTokenized", "NMTOKENS" + space,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleAttributeTypeTokenized(r)); });
    dtd("possibleAttributeTypeEnumerated", "(" + run + ")",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleAttributeTypeEnumerated(r)); });
    dtd("parseDefaultDeclaration", "#FIXED" + space + "'" + run + "'",
        [](Dtd& d, Reader& r) { d.parseDefaultDeclaration(r); });
    dtd("possibleDefaultDeclarationRequired", "#REQUIRED" + space,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleDefaultDeclarationRequired(r)); });
    dtd("possibleDefaultDeclarationImplied", "#IMPLIED" + space,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleDefaultDeclarationImplied(r)); });
    dtd("possibleDefaultDeclarationFixed", "#FIXED" + space,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleDefaultDeclarationFixed(r)); });
    const std::string entity = run + space + "'" + run + "'" + space + ">";
    dtd("possibleEntityDeclaration", "<!ENTITY" + space + entity,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleEntityDeclaration(r)); });
    dtd("parseGeneralEntityDeclaration", entity,
        [](Dtd& d, Reader& r) { d.parseGeneralEntityDeclaration(r); });
    dtd("parseParameterEntityDeclaration", entity,
        [](Dtd& d, Reader& r) { d.parseParameterEntityDeclaration(r); });
    dtd("possibleEntityValue", "'" + run + "'",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleEntityValue(r)); });
    dtd("possibleNotationDataDeclaration", space + "NDATA" + space + run,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleNotationDataDeclaration(r)); });
    dtd("possibleNotationDeclaration", "<!NOTATION " + run + space + identifier + ">",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleNotationDeclaration(r)); });
    dtd("possibleExternalIdentifier", identifier,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleExternalIdentifier(r)); });
    dtd("possibleExternalIdentifierPublic", identifier,
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleExternalIdentifierPublic(r)); });
    dtd("possibleExternalIdentifierSystem", "SYSTEM" + space + "'" + run + "'",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleExternalIdentifierSystem(r)); });
    dtd("parsePublicIdentifier", "'" + run + "'", [](Dtd& d, Reader& r) {
        OCWideString text;
        d.parsePublicIdentifier(r, text);
    });
    dtd("parseSystemIdentifier", "'" + run + "'", [](Dtd& d, Reader& r) {
        OCWideString text;
        d.parseSystemIdentifier(r, text);
    });
    dtd("possibleParameterEntityReference", "%" + run + ";",
        [](Dtd& d, Reader& r) { EXPECT_TRUE(d.possibleParameterEntityReference(r)); });
}

TEST(AllocationSweep, XmlParserReader) {
    const auto reader = [](const char* name, auto operation) {
        consuming<OCXmlParserReader>(name, run + "-->" + run,
                                     [&](Xml& x) { operation(x.reader, x.text); });
    };
    using Reader = OCXmlParserReader;
    const OCWideString search(L"-->"), longSearch(longWide + search);
    reader("growBuffer", [](Reader& r, auto&) { EXPECT_TRUE(r.growBuffer(200)); });
    reader("peekString", [&](Reader& r, auto&) { EXPECT_TRUE(r.peekString(longSearch)); });
    reader("peekCharacter", [](Reader& r, auto&) { EXPECT_TRUE(r.peekCharacter('n')); });
    reader("previewCharacter", [](Reader& r, auto&) {
        wchar_t c = 0;
        EXPECT_TRUE(r.previewCharacter(c));
    });
    reader("skipCharacter", [](Reader& r, auto&) { r.skipCharacter('n'); });
    reader("skipString", [&](Reader& r, auto&) { r.skipString(longSearch); });
    reader("findCharacter", [](Reader& r, auto&) { EXPECT_TRUE(r.findCharacter('-')); });
    reader("findString", [&](Reader& r, auto&) { EXPECT_TRUE(r.findString(search)); });
    reader("findString that is long",
           [&](Reader& r, auto&) { EXPECT_TRUE(r.findString(longSearch)); });
    reader("findCharacter with the skipped text",
           [](Reader& r, auto& text) { EXPECT_TRUE(r.findCharacter('-', text)); });
    reader("findString with the skipped text",
           [&](Reader& r, auto& text) { EXPECT_TRUE(r.findString(search, text)); });
    const std::string wide(2000, '\0');
    for (const auto encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
        struct Source {
            explicit Source(OEXmlEncoding encoding)
                : stream(run.data(), run.size()), source(stream, encoding) {}
            OCMemoryStream stream;
            OCXmlParserSource source;
            OCWideString text;
        };
        const sweep::Operations source([=] { return std::make_unique<Source>(encoding); },
                                       [](const Source& s) { return sweep::seen(s.text); });
        if (encoding == XmlEncodingAnsi) {
            source("readString", [](Source& s) { s.text = s.source.readString(200); });
            source("readStringAnsi", [](Source& s) {
                unsigned long remaining = 200;
                EXPECT_TRUE(s.source.readStringAnsi(s.text, remaining));
            });
        } else
            source("readStringWide", [](Source& s) {
                OCWideString text;
                unsigned long remaining = 70;
                EXPECT_TRUE(text.setLength(60).fill(L'w').getLength() == 60 &&
                            s.source.readStringWide(text, remaining));
                s.text = static_cast<OCWideString&&>(text);
            });
    }
}

TEST(AllocationSweep, HtmlParserReader) {
    const auto reader = [](const char* name, auto operation) {
        consuming<OCHtmlParserReader>(name, run + "-->" + run,
                                      [&](Html& x) { operation(x.reader, x.text); });
    };
    using Reader = OCHtmlParserReader;
    const OCAnsiString search("-->"), longSearch(longText + search);
    reader("growBuffer", [](Reader& r, auto&) { EXPECT_TRUE(r.growBuffer(200)); });
    reader("peekString", [&](Reader& r, auto&) { EXPECT_TRUE(r.peekString(longSearch)); });
    reader("peekCharacter", [](Reader& r, auto&) { EXPECT_TRUE(r.peekCharacter('n')); });
    reader("previewCharacter", [](Reader& r, auto&) {
        char c = 0;
        EXPECT_TRUE(r.previewCharacter(c));
    });
    reader("skipCharacter", [](Reader& r, auto&) { r.skipCharacter('n'); });
    reader("skipString", [&](Reader& r, auto&) { r.skipString(longSearch); });
    reader("findCharacter", [](Reader& r, auto&) { EXPECT_TRUE(r.findCharacter('-')); });
    reader("findString", [&](Reader& r, auto&) { EXPECT_TRUE(r.findString(search)); });
    reader("findString that is long",
           [&](Reader& r, auto&) { EXPECT_TRUE(r.findString(longSearch)); });
    reader("findCharacter with the skipped text",
           [](Reader& r, auto& text) { EXPECT_TRUE(r.findCharacter('-', text)); });
    reader("findString with the skipped text",
           [&](Reader& r, auto& text) { EXPECT_TRUE(r.findString(search, text)); });
}

/// A stream that leaves the program without memory when it fails.
class Exhausting : public OCMemoryStream {
public:
    Exhausting(State content, unsigned failing)
        : OCMemoryStream(content.data(), content.size()), remaining(failing) {}
    bool read(void* to, unsigned long& count) override {
        if (--remaining == 0) {
            fault = std::make_unique<fault::HeapFault>(1, fault::HeapFault::Following);
            throw 7;
        }
        return OCMemoryStream::read(to, count);
    }
    /// There is memory again.
    void recover() { fault.reset(); }

private:
    unsigned remaining;
    std::unique_ptr<fault::HeapFault> fault;
};

std::string numbers() {
    std::string result;
    for (int i = 0; i < 2000; ++i)
        result += std::to_string(10000 + i) + ' ';
    return result;
}

template<class Text>
std::string narrow(const Text& text) {
    const OCAnsiString result(text);
    return std::string(result.getString(), result.getLength());
}

/// What an operation passes over and what the reader still has, after the stream's read number
/// `failing` failed.
template<class Text, class Operation>
std::string passedAndLeft(State content, unsigned failing, Operation operation) {
    Exhausting stream(content, failing);
    std::string result;
    const auto collect = [&](auto& reader) {
        Text passed;
        try {
            operation(reader, passed);
            ADD_FAILURE() << "not failed";
        } catch (int) {
        }
        stream.recover();
        Text left;
        reader.findString(Text("no such text"), left);
        result = narrow(passed) + narrow(left);
    };
    if constexpr (std::is_same_v<Text, OCWideString>) {
        OCXmlParserSource source(stream, XmlEncodingAnsi);
        OCXmlParserReader reader(source);
        collect(reader);
    } else {
        OCHtmlParserReader reader(stream);
        collect(reader);
    }
    return result;
}

template<class Text>
void expectNothingLost() {
    const std::string content = numbers();
    const Text missing("#"), longMissing("# which nowhere is");
    for (unsigned failing = 1; failing < 40; ++failing) {
        SCOPED_TRACE(failing);
        EXPECT_EQ(content, passedAndLeft<Text>(content, failing, [&](auto& reader, Text& passed) {
                      reader.findCharacter('#', passed);
                  }));
        EXPECT_EQ(content, passedAndLeft<Text>(content, failing, [&](auto& reader, Text& passed) {
                      reader.findString(missing, passed);
                  }));
        EXPECT_EQ(content, passedAndLeft<Text>(content, failing, [&](auto& reader, Text& passed) {
                      reader.findString(longMissing, passed);
                  }));
        // What nobody asked for is gone as far as it had been read.
        const std::string rest = content.substr((failing - 1) * 128UL);
        EXPECT_EQ(rest, passedAndLeft<Text>(content, failing, [](auto& reader, Text&) {
                      reader.findCharacter('#');
                  }));
    }
}

TEST(AllocationSweep, FailingStreamsWithoutMemoryLoseNoCharacterOfAReader) {
    expectNothingLost<OCWideString>();
    expectNothingLost<OCAnsiString>();
    const std::string content = numbers();
    for (unsigned failing = 1; failing < 40; ++failing)
        EXPECT_EQ(content, passedAndLeft<OCAnsiString>(content, failing, [](auto& reader, auto&) {
                      reader.growBuffer(6000);
                  }));
}

TEST(AllocationSweep, HtmlParser) {
    const std::string comment = "<!--" + run + "-->";
    const std::string type = "<!DOCTYPE " + run + ">";
    const std::string attribute = run + "='" + run + "'";
    const std::string start = "<" + run + space + attribute + ">";
    const std::string end = "</" + run + ">";
    html("parseDocument", type + start + run + comment + end,
         [](Html& h) { h.parser.parseDocument(h.reader); });
    html("possibleMiscellaneous", comment + "<a",
         [](Html& h) { h.parser.possibleMiscellaneous(h.reader); });
    html("possibleCharacterData", run + "<",
         [](Html& h) { EXPECT_TRUE(h.parser.possibleCharacterData(h.reader)); });
    html("possibleComment", comment,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleComment(h.reader)); });
    html("possibleCommentBegin", comment,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleCommentBegin(h.reader)); });
    html("parseCommentEnd", "-->" + run, [](Html& h) { h.parser.parseCommentEnd(h.reader); });
    html("possibleDocumentTypeBegin", type,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleDocumentTypeBegin(h.reader)); });
    html("parseDocumentTypeEnd", ">" + run,
         [](Html& h) { h.parser.parseDocumentTypeEnd(h.reader); });
    html("parseElementStartEndContent", ">" + run,
         [](Html& h) { h.parser.parseElementStartEndContent(h.reader, longText); });
    html("parseElementStartEndEmpty", "/>" + run,
         [](Html& h) { h.parser.parseElementStartEndEmpty(h.reader, longText); });
    html("parseCommentContents", run + "-->",
         [](Html& h) { h.parser.parseCommentContents(h.reader); });
    html("possibleDocumentType", type,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleDocumentType(h.reader)); });
    html("parseDocumentTypeContents", run + ">",
         [](Html& h) { h.parser.parseDocumentTypeContents(h.reader); });
    html("possibleElement", start,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleElement(h.reader)); });
    html("possibleElementEnd", end,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleElementEnd(h.reader)); });
    html("possibleElementStart", start,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleElementStart(h.reader)); });
    html("possibleElementStartBegin", start,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleElementStartBegin(h.reader, h.text)); });
    html("parseAttributeList", attribute + space + attribute + ">",
         [](Html& h) { h.parser.parseAttributeList(h.reader); });
    html("parseElementStartEnd", ">" + run + "</" + run + ">",
         [](Html& h) { h.parser.parseElementStartEnd(h.reader, longText); });
    html("possibleAttribute", attribute,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleAttribute(h.reader)); });
    html("possibleAttributeName", attribute,
         [](Html& h) { EXPECT_TRUE(h.parser.possibleAttributeName(h.reader, h.text)); });
    html("parseAttributeValue", "'" + run + "'",
         [](Html& h) { h.parser.parseAttributeValue(h.reader, h.text); });
    html("parseAttributeValueQuoted", "'" + run + "'",
         [](Html& h) { h.parser.parseAttributeValueQuoted(h.reader, h.text); });
    html("parseAttributeValueSimple", run + ">",
         [](Html& h) { h.parser.parseAttributeValueSimple(h.reader, h.text); });
    html("possibleName", run + ">",
         [](Html& h) { EXPECT_TRUE(h.parser.possibleName(h.reader, h.text)); });
    html("parseName", run + ">", [](Html& h) { h.parser.parseName(h.reader, h.text); });
    html("possibleWhiteSpace", space + ">",
         [](Html& h) { EXPECT_TRUE(h.parser.possibleWhiteSpace(h.reader)); });
    const std::string document = type + start + run + comment + end;
    OCMemoryStream stream(document.data(), document.size());
    const auto make = sweep::results();
    make("new", [](auto&) { delete new OCHtmlParser; });
    make("parse a stream", [&](auto&) {
        OCHtmlParserEvents events;
        OCHtmlParser parser;
        parser.setParserEvents(events);
        stream.setPosition(0);
        parser.parse(stream);
    });
}

/// A writer inside an element, on a stream that must grow for more than a few characters.
struct Writer {
    explicit Writer(const OCWideString& element = L"open")
        : name(element), output(stream, XmlEncodingAnsi), writer(output) {
        stream.setSize(50000); // so much room it keeps
        stream.setSize(0);
        writer.startElement(name);
        output.write(OCAnsiString(std::string(8000, '-').c_str()));
    }
    std::string result() {
        if (!used)
            return Writer(name).close();
        return close();
    }
    std::string close() {
        writer.closeElements();
        const OCAnsiString text = stream.makeString();
        return std::string(text.getString(), text.getLength());
    }
    const OCWideString name;
    OCMemoryStream stream;
    OCXmlWriterOutput output;
    OCXmlWriter writer;
    bool used = false;
};

TEST(AllocationSweep, XmlWriter) {
    OCXmlWriterElementAttributeList attributes;
    attributes.addAttribute(longWide, longWide);
    attributes.addAttribute(longWide);
    const sweep::Operations written([] { return std::make_unique<Writer>(); },
                                    [](Writer& w) { return w.result(); });
    const auto writer = [&](const char* name, auto operation) {
        written(name, [&](Writer& w) {
            w.used = true;
            operation(w.writer);
        });
    };
    writer("processingInstruction",
           [&](OCXmlWriter& w) { w.processingInstruction(longWide, attributes); });
    writer("xmlDeclaration", [](OCXmlWriter& w) { w.xmlDeclaration(); });
    writer("startElement", [](OCXmlWriter& w) { w.startElement(longWide); });
    writer("startElement with attributes",
           [&](OCXmlWriter& w) { w.startElement(longWide, attributes); });
    writer("emptyElement", [](OCXmlWriter& w) { w.emptyElement(longWide); });
    writer("emptyElement with attributes",
           [&](OCXmlWriter& w) { w.emptyElement(longWide, attributes); });
    writer("characterData", [](OCXmlWriter& w) { w.characterData(longest); });
    writer("initialize", [](OCXmlWriter& w) { w.initialize(); });
    const sweep::Operations open([] { return std::make_unique<Writer>(longWide); },
                                 [](Writer& w) { return w.result(); });
    open("endElement", [](Writer& w) {
        w.used = true;
        w.writer.endElement();
    });
    open("closeElements", [](Writer& w) {
        w.used = true;
        w.writer.closeElements();
    });
    const auto output = [&](const char* name, auto operation) {
        written(name, [&](Writer& w) {
            w.used = true;
            operation(w.output);
        });
    };
    output("write", [](OCXmlWriterOutput& o) { o.write(longest); });
    output("writeLine", [](OCXmlWriterOutput& o) { o.writeLine(longest); });
    output("writeEncoded", [](OCXmlWriterOutput& o) { o.writeEncoded(longest); });

    // The indentation of a line behind an `indent` that was refused is that of the line before it.
    struct Indented {
        Indented() : output(stream, XmlEncodingAnsi) {
            for (int i = 0; i < 63; ++i)
                output.indent();
        }
        OCMemoryStream stream;
        OCXmlWriterOutput output;
    };
    const std::string line = std::string(126, ' ') + "x\r\n";
    EXPECT_LE(1U, fault::failEachRequestOn([] { return std::make_unique<Indented>(); },
                                           [](auto& i) { i->output.indent(); },
                                           [&](auto& i, bool failed) {
                                               i->output.writeLine(L"x");
                                               const OCAnsiString text = i->stream.makeString();
                                               EXPECT_EQ(failed ? line : "  " + line,
                                                         text.getString());
                                           }));

    const auto make = sweep::results();
    OCMemoryStream stream;
    OCXmlWriterOutput plain(stream, XmlEncodingWide);
    make("construction", [&](auto&) { OCXmlWriter made(plain); });
    make("new", [&](auto&) { delete new OCXmlWriter(plain); });
    make("new output", [&](auto&) { delete new OCXmlWriterOutput(stream, XmlEncodingWide); });
    make("new attributes", [](auto&) { delete new OCXmlWriterElementAttributeList; });
    make("makeText of attributes", [&](auto&) { attributes.makeText(); });
    make("makeText of an attribute", [&](auto&) { attributes.getAttribute(0).makeText(); });
    make("copy of an attribute",
         [&](auto&) { OCXmlWriterElementAttribute copy(attributes.getAttribute(0)); });
    make("getAttribute behind, of what does not change", [&](auto&) {
        const auto& fixed = attributes;
        sweep::refused<OXVector_NoSuchIndex>([&] { fixed.getAttribute(2); });
    });
    make("getAttribute behind",
         [&](auto&) { sweep::refused<OXVector_NoSuchIndex>([&] { attributes.getAttribute(2); }); });

    const sweep::Operations list(
        [] {
            auto made = std::make_unique<OCXmlWriterElementAttributeList>();
            for (int i = 0; i < 64; ++i)
                made->addAttribute(L"n");
            return made;
        },
        [](const OCXmlWriterElementAttributeList& l) {
            return sweep::seen(l.makeText()) + std::to_string(l.getCount());
        });
    list("addAttribute", [](auto& l) { l.addAttribute(L"a"); });
    list("addAttribute with a value", [](auto& l) { l.addAttribute(longWide, longWide); });

    struct Names {
        std::string rest() {
            std::string result;
            while (!stack.isEmpty())
                result += sweep::seen(stack.pop()) + ',';
            return result;
        }
        OCXmlWriterElementStack stack;
        bool used = false;
    };
    const auto names = [](OCXmlWriterElementStack& stack) {
        for (int i = 0; i < 65; ++i)
            stack.push(L"n");
        stack.pop();
        stack.push(longWide);
    };
    const sweep::Operations stack(
        [&] {
            auto made = std::make_unique<Names>();
            names(made->stack);
            return made;
        },
        [&](Names& n) {
            if (n.used)
                return n.rest();
            Names fresh;
            names(fresh.stack);
            return fresh.rest();
        });
    stack("push", [](Names& n) {
        n.used = true;
        n.stack.push(L"a");
    });
    stack("pop", [](Names& n) {
        n.used = true;
        n.stack.pop();
    });

    const sweep::Operations attribute(
        [] { return std::make_unique<OCXmlWriterElementAttribute>(); },
        [](const OCXmlWriterElementAttribute& a) { return sweep::seen(a.makeText()); });
    attribute("setName", [](auto& a) { a.setName(longWide); });
    attribute("setValue", [](auto& a) { a.setValue(longWide); });
    attribute("=", [&](auto& a) { a = attributes.getAttribute(1); });
}

std::string seenQuery(const OCQueryString& query) {
    std::string result;
    for (unsigned long i = 0; i < query.getCount(); ++i)
        result += sweep::seen(query.getName(i)) + '=' + sweep::seen(query.getValue(i)) + '&';
    return result;
}

TEST(AllocationSweep, QueryString) {
    const OCAnsiString text(("a=" + run + "&" + run + "=%41&a=%42").c_str());
    const OCQueryString parsed(text);
    std::string pairs;
    for (int i = 0; i < 64; ++i)
        pairs += "&n" + std::to_string(i % 60) + "=v";
    const sweep::Operations query(
        [&] { return std::make_unique<OCQueryString>(OCAnsiString(pairs.c_str() + 1)); },
        seenQuery);
    query("of a text", [&](auto&) { OCQueryString made(text); });
    query("copy", [&](auto&) { OCQueryString copy(parsed); });
    query("new", [](auto&) { delete new OCQueryString; });
    query("assign", [&](OCQueryString& q) { q.assign(parsed); });
    query("assign text", [&](OCQueryString& q) { q.assign(text); });
    query("=", [&](OCQueryString& q) { q = parsed; });
    query("= text", [&](OCQueryString& q) { q = text; });
    query("setText", [&](OCQueryString& q) { q.setText(text); });
    query("getText", [](OCQueryString& q) { q.getText(); });
    query("getText for HTML", [](OCQueryString& q) { q.getText(QueryStringFormatHtml); });
    query("addElement", [](OCQueryString& q) { q.addElement("a", "b"); });
    query("addElement, long", [](OCQueryString& q) { q.addElement(longText, longText); });
    query("setValue", [](OCQueryString& q) { q.setValue("n40", longText); });
    query("setValue of several", [](OCQueryString& q) { q.setValue("n3", "one"); });
    query("setValue of none", [](OCQueryString& q) { q.setValue(longText, longText); });
    query("getValue of none", [](OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchName>([&] { q.getValue(longText); });
    });
    query("getElement of none", [](OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchName>([&] { q.getElement(longText); });
    });
    query("getValue of none with another",
          [](OCQueryString& q) { q.getValue(longText, longText); });
    query("getElement behind", [](OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchIndex>([&] { q.getElement(64UL); });
    });
    query("getValue of none, of what does not change", [](const OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchName>([&] { q.getValue(longText); });
    });
    query("getElement of none, of what does not change", [](const OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchName>([&] { q.getElement(longText); });
    });
    query("getElement behind, of what does not change", [](const OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchIndex>([&] { q.getElement(64UL); });
    });
    query("getName behind", [](const OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchIndex>([&] { q.getName(64UL); });
    });
    query("getValue behind", [](const OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchIndex>([&] { q.getValue(64UL); });
    });
    query("removeElement behind", [](OCQueryString& q) {
        sweep::refused<OXQueryString_NoSuchIndex>([&] { q.removeElement(64UL); });
    });
    pairs += "&last=v";
    query("removeElement at", [](OCQueryString& q) { q.removeElement(64UL); });
    query("removeElement", [](OCQueryString& q) { q.removeElement("n3"); });

    const OCQueryElement longElement(longText, longText);
    const sweep::Operations element(
        [] { return std::make_unique<OCQueryElement>("name", "value"); },
        [](const OCQueryElement& e) {
            return sweep::seen(e.getName()) + sweep::seen(e.getValue());
        });
    element("construction", [](auto&) { OCQueryElement(longText, longText); });
    element("copy", [&](auto&) { OCQueryElement copy(longElement); });
    element("assign", [&](OCQueryElement& e) { e.assign(longElement); });
    element("=", [&](OCQueryElement& e) { e = longElement; });
    element("setName", [](OCQueryElement& e) { e.setName(longText); });
    element("setValue", [](OCQueryElement& e) { e.setValue(longText); });
}

TEST(AllocationSweep, ResourceLocator) {
    const OCAnsiString text(
        (run + "://" + run + ":80/" + run + "?" + run + "=" + run + "&a=b").c_str());
    const OCAnsiString other(("x" + std::string(text.getString())).c_str());
    const OCResourceLocator whole(text);
    const sweep::Operations locator([&] { return std::make_unique<OCResourceLocator>(other); },
                                    [](const OCResourceLocator& l) {
                                        return sweep::seen(l.getProtocol()) +
                                               sweep::seen(l.getServer()) +
                                               std::to_string(l.getPort()) +
                                               sweep::seen(l.getResource()) +
                                               seenQuery(l.getParameters());
                                    });
    locator("of a text", [&](auto&) { OCResourceLocator made(text); });
    locator("copy", [&](auto&) { OCResourceLocator copy(whole); });
    locator("new", [](auto&) { delete new OCResourceLocator; });
    locator("assign", [&](OCResourceLocator& l) { l.assign(whole); });
    locator("assign text", [&](OCResourceLocator& l) { l.assign(text); });
    locator("=", [&](OCResourceLocator& l) { l = whole; });
    locator("= text", [&](OCResourceLocator& l) { l = text; });
    locator("setText", [&](OCResourceLocator& l) { l.setText(text); });
    locator("getText", [](OCResourceLocator& l) { l.getText(); });
    locator("getText for HTML", [](OCResourceLocator& l) { l.getText(QueryStringFormatHtml); });
    const OCAnsiString longer(std::string(500, 'l').c_str());
    locator("setProtocol", [&](OCResourceLocator& l) { l.setProtocol(longer); });
    locator("setServer", [&](OCResourceLocator& l) { l.setServer(longer); });
    locator("setResource", [&](OCResourceLocator& l) { l.setResource(longer); });
    locator("buildProtocol", [](OCResourceLocator& l) { l.buildProtocol(); });
    locator("buildServer", [](OCResourceLocator& l) { l.buildServer(); });
    locator("buildResource", [](OCResourceLocator& l) { l.buildResource(); });
    locator("buildParameters", [](OCResourceLocator& l) { l.buildParameters(); });

    // The steps take their part off a text.
    struct Step {
        explicit Step(State whole) : text(whole.c_str()) {}
        OCAnsiString text;
        OCResourceLocator locator;
    };
    const auto step = [](const char* name, const std::string& from, auto operation) {
        sweep::Operations([=] { return std::make_unique<Step>(from); },
                          [](const Step& s) {
                              return sweep::seen(s.text) + sweep::seen(s.locator.getText());
                          })(name, [=](Step& s) { operation(s.locator, s.text); });
    };
    using Locator = OCResourceLocator;
    using Text = OCAnsiString;
    step("parseParameters", run + "?" + run + "=" + run,
         [](Locator& l, Text& t) { l.parseParameters(t); });
    step("parseProtocol", run + "://" + run, [](Locator& l, Text& t) { l.parseProtocol(t); });
    step("parsePort", ":" + std::string(200, '0') + "80/" + run,
         [](Locator& l, Text& t) { l.parsePort(t); });
    step("parseServer", "//" + run + "/" + run, [](Locator& l, Text& t) { l.parseServer(t); });
}

TEST(AllocationSweep, UniqueIdentifier) {
    const auto make = sweep::results();
    make("new", [](auto&) { delete new OCUniqueIdentifier; });
    make.managing("setText of another text", [](auto&) {
        OCUniqueIdentifier identifier;
        sweep::refused<OXUniqueIdentifier_MalformedString>([&] { identifier.setText(longText); });
    });
}

} // namespace
