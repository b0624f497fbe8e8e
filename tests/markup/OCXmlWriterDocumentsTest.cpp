// Documents that the writer makes, read back by the library's parser and by expat; and documents
// too large or too deep for anything but linear time without recursion.

#include "OCMemoryStream.h"
#include "OCXmlParser.h"
#include "OCXmlWriter.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <expat.h>
#include <functional>
#include <map>
#include <pthread.h>
#include <random>
#include <string>
#include <vector>

namespace {

/// What a parser reports: tags, the attributes in their order, instructions, and the text between
/// two of these as one piece.
class Events {
public:
    void add(const std::string& event) {
        flush();
        events.push_back(event);
    }
    void addText(const std::string& more) { text += more; }
    std::vector<std::string> take() {
        flush();
        return std::move(events);
    }

private:
    void flush() {
        if (!text.empty())
            events.push_back("text " + text);
        text.clear();
    }

    std::string text;
    std::vector<std::string> events;
};

/// ISO 8859-1 as UTF-8, which is what expat delivers.
std::string utf8(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const unsigned int code = static_cast<unsigned char>(c);
        if (code < 0x80)
            result += c;
        else {
            result += static_cast<char>(0xC0 | code >> 6);
            result += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return result;
}

const std::map<char, std::string> references = {
    {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"}};

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const auto found = references.find(c);
        result += found == references.end() ? std::string(1, c) : found->second;
    }
    return result;
}

/// Undoes `escaped`, and makes line ends what XML says they are.
std::string decoded(const std::string& text) {
    std::string result;
    for (unsigned long i = 0; i < text.size(); ++i) {
        if (text[i] == '\r')
            continue;
        if (text[i] != '&') {
            result += text[i];
            continue;
        }
        const unsigned long end = text.find(';', i);
        for (const auto& reference : references)
            if (text.compare(i, end - i + 1, reference.second) == 0)
                result += reference.first;
        i = end;
    }
    return result;
}

// The library

class LibraryEvents : public OCXmlEvents {
public:
    explicit LibraryEvents(Events& collected) : events(collected) {}

    void attribute(const OCWideString& name, const OCWideString& value) override {
        events.add("attribute " + read(name) + "=" + read(value));
    }
    void characterData(const OCWideString& text) override { events.addText(read(text)); }
    void elementEnd() override { events.add("end"); }
    void elementStart(const OCWideString& name) override { events.add("start " + read(name)); }
    void processingInstruction(const OCWideString& target, const OCWideString& data) override {
        events.add("instruction " + read(target) + " " + read(data));
    }

private:
    static std::string read(const OCWideString& text) {
        const OCAnsiString narrow(text);
        return utf8(decoded(std::string(narrow.getString(), narrow.getLength())));
    }

    Events& events;
};

std::vector<std::string> parseWithLibrary(const std::string& document, OEXmlEncoding encoding) {
    Events events;
    LibraryEvents handler(events);
    OCXmlParser parser;
    parser.setEvents(handler);
    OCMemoryStream stream(document.data(), document.size());
    OCXmlParserSource source(stream, encoding);
    OCXmlParserReader reader(source);
    parser.parse(reader);
    return events.take();
}

// expat

void XMLCALL expatStart(void* user, const XML_Char* name, const XML_Char** attributes) {
    auto& events = *static_cast<Events*>(user);
    events.add(std::string("start ") + name);
    for (; *attributes; attributes += 2)
        events.add(std::string("attribute ") + attributes[0] + "=" + attributes[1]);
}
void XMLCALL expatEnd(void* user, const XML_Char*) {
    static_cast<Events*>(user)->add("end");
}
void XMLCALL expatText(void* user, const XML_Char* text, int length) {
    static_cast<Events*>(user)->addText(std::string(text, static_cast<unsigned long>(length)));
}
void XMLCALL expatInstruction(void* user, const XML_Char* target, const XML_Char* data) {
    static_cast<Events*>(user)->add(std::string("instruction ") + target + " " + data);
}

std::vector<std::string> parseWithExpat(const std::string& document) {
    Events events;
    XML_Parser parser = XML_ParserCreate("ISO-8859-1");
    XML_SetUserData(parser, &events);
    XML_SetElementHandler(parser, expatStart, expatEnd);
    XML_SetCharacterDataHandler(parser, expatText);
    XML_SetProcessingInstructionHandler(parser, expatInstruction);
    const bool good =
        XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
    EXPECT_TRUE(good) << XML_ErrorString(XML_GetErrorCode(parser)) << " in line "
                      << XML_GetCurrentLineNumber(parser) << " of\n"
                      << document;
    XML_ParserFree(parser);
    return events.take();
}

/// Writes a random document, and beside it what it must look like and which events it must give.
class RandomDocument {
public:
    RandomDocument(unsigned int seed, OEXmlEncoding encoding, bool indented)
        : random(seed), output(stream, encoding), writer(output), indent(indented) {
        output.setIndent(indented);
        writer.xmlDeclaration();
        addLine("<?xml version=\"1.0\"?>");
        if (chance(2))
            addInstruction();
        makeElement(0);
        while (chance(2))
            addInstruction();
    }

    std::string written() {
        const OCAnsiString text = stream.makeString();
        return std::string(text.getString(), text.getLength());
    }
    const std::string& expected() const { return document; }
    std::vector<std::string> expectedEvents() { return events.take(); }

private:
    unsigned int upTo(unsigned int most) {
        return static_cast<unsigned int>(random() % (most + 1));
    }
    bool chance(unsigned int of) { return random() % of == 0; }

    std::string makeName() {
        static const std::string first = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
        static const std::string others = first + "0123456789-.";
        std::string name(1, first[random() % first.size()]);
        for (unsigned int n = chance(20) ? 300 : upTo(8); n > 0; --n)
            name += others[random() % others.size()];
        return name == "xml" ? "x" : name;
    }
    std::string makeText(unsigned int most) {
        static const std::string special = "<>&\"'";
        std::string text;
        for (unsigned int n = upTo(most); n > 0; --n)
            if (chance(8))
                text += special[random() % special.size()];
            else if (chance(8))
                text += static_cast<char>(0xA0 + upTo(0x5F));
            else
                text += static_cast<char>(' ' + upTo('~' - ' '));
        return text;
    }
    static OCWideString wide(const std::string& text) {
        return OCWideString(OCAnsiString(text.data(), text.size()));
    }

    void addLine(const std::string& line) {
        const std::string spaces(line.empty() || !indent ? 0 : 2 * depth, ' ');
        document += spaces + line + "\r\n";
        // Line ends and spaces outside the root element are no text.
        if (depth > 0 && !line.empty() && line[0] == '<')
            events.addText(spaces);
    }
    /// What follows a tag or an instruction.
    void endLine() {
        if (depth > 0)
            events.addText("\n");
    }

    std::string makeAttributes(OCXmlWriterElementAttributeList& attributes,
                               std::vector<std::string>& reported) {
        std::string text;
        std::map<std::string, bool> used;
        for (unsigned int n = chance(30) ? 100 : upTo(3); n > 0; --n) {
            const std::string name = makeName();
            if (used[name])
                continue;
            used[name] = true;
            const std::string value = makeText(chance(10) ? 400 : 20) + "v";
            attributes.addAttribute(wide(name), wide(escaped(value)));
            text += " " + name + "=\"" + escaped(value) + "\"";
            reported.push_back("attribute " + name + "=" + utf8(value));
        }
        return text;
    }
    void addInstruction() {
        const std::string target = makeName();
        OCXmlWriterElementAttributeList attributes;
        std::vector<std::string> ignored;
        const std::string text = makeAttributes(attributes, ignored);
        writer.processingInstruction(wide(target), attributes);
        addLine("<?" + target + text + "?>");
        // What is in an instruction is not decoded; the library's events are, here.
        events.add("instruction " + target + " " +
                   (text.empty() ? "" : utf8(decoded(text.substr(1)))));
        endLine();
    }
    void addText() {
        static const char* const breaks[] = {"\n", "\r", "\r\n"};
        std::string given;
        for (unsigned int lines = 1 + upTo(3); lines > 0; --lines) {
            const std::string line = chance(5) ? "" : makeText(chance(20) ? 2000 : 30);
            const bool last = lines == 1;
            if (last && line.empty())
                break; // the break before it ends the text
            given += escaped(line);
            const std::string spaces(line.empty() || !indent ? 0 : 2 * depth, ' ');
            document += spaces + escaped(line) + "\r\n";
            events.addText(spaces + utf8(line) + "\n");
            if (!last || chance(2)) {
                // A lone "\r" must not meet a "\n" of the next line.
                const unsigned long kind = random() % 3;
                const bool meets =
                    !given.empty() && given.back() == '\r' && breaks[kind][0] == '\n';
                given += breaks[meets ? 1 : kind];
            }
        }
        writer.characterData(wide(given));
    }
    void makeElement(unsigned int level) {
        const std::string name = makeName();
        OCXmlWriterElementAttributeList attributes;
        std::vector<std::string> reported;
        const std::string text = makeAttributes(attributes, reported);
        const bool plain = attributes.getCount() == 0 && chance(2);
        const bool empty = chance(4) && level > 0;
        if (empty)
            plain ? writer.emptyElement(wide(name)) : writer.emptyElement(wide(name), attributes);
        else
            plain ? writer.startElement(wide(name)) : writer.startElement(wide(name), attributes);
        addLine("<" + name + text + (empty ? "/>" : ">"));
        events.add("start " + name);
        for (const std::string& event : reported)
            events.add(event);
        if (!empty) {
            ++depth;
            events.addText("\n");
            for (unsigned int n = level < 80 ? upTo(chance(10) ? 10 : 3) : 0; n > 0; --n)
                switch (upTo(3)) {
                case 0:
                    addText();
                    break;
                case 1:
                    addInstruction();
                    break;
                default:
                    makeElement(level + 1);
                }
            --depth;
            if (level == 0) // all that is open
                writer.closeElements();
            else
                writer.endElement();
            document += (indent ? std::string(2 * depth, ' ') : "") + "</" + name + ">\r\n";
            if (indent)
                events.addText(std::string(2 * depth, ' '));
        }
        events.add("end");
        endLine();
    }

    std::mt19937 random;
    OCMemoryStream stream;
    OCXmlWriterOutput output;
    OCXmlWriter writer;
    bool indent;
    unsigned long depth = 0;
    std::string document;
    Events events;
};

/// The events with what instructions hold decoded, which the library's are here.
std::vector<std::string> withDecodedInstructions(std::vector<std::string> events) {
    for (std::string& event : events)
        if (event.compare(0, 12, "instruction ") == 0)
            event = decoded(event);
    return events;
}

/// Every fourth byte of a wide document whose characters are all sign-extended bytes.
std::string narrowed(const std::string& document) {
    std::string result;
    for (unsigned long i = 0; i < document.size(); i += 4)
        result += document[i];
    return result;
}

TEST(OCXmlWriterDocuments, AreReadBackAsTheyWereWritten) {
    unsigned long bytes = 0;
    unsigned long elements = 0;
    for (unsigned int seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const OEXmlEncoding encoding = seed % 3 == 0 ? XmlEncodingWide : XmlEncodingAnsi;
        RandomDocument document(seed, encoding, seed % 2 == 0);
        const std::string written = document.written();
        const std::string narrow = encoding == XmlEncodingWide ? narrowed(written) : written;
        ASSERT_EQ(document.expected(), narrow);
        const std::vector<std::string> expected = document.expectedEvents();
        ASSERT_EQ(expected, parseWithLibrary(written, encoding));
        ASSERT_EQ(expected, withDecodedInstructions(parseWithExpat(narrow)));
        bytes += written.size();
        for (const std::string& event : expected)
            elements += event.compare(0, 6, "start ") == 0;
    }
    // The generator makes documents worth the name.
    EXPECT_LT(500000u, bytes);
    EXPECT_LT(5000u, elements);
}

// Size and depth

/// Counts what is written, and keeps none of it.
class CountingStream : public OCNullStream {
public:
    bool write(const void*, unsigned long& count) override {
        ++writes;
        bytes += count;
        return true;
    }

    unsigned long writes = 0;
    unsigned long bytes = 0;
};

constexpr unsigned long large = (fault::sanitized ? 4UL : 64UL) * 1024 * 1024;

OCWideString repeated(const std::wstring& piece, unsigned long length) {
    OCWideString text;
    text.setLength(length);
    wchar_t* const to = text.getString();
    unsigned long filled = 0;
    for (; filled < piece.size() && filled < length; ++filled)
        to[filled] = piece[filled];
    for (; filled < length; filled += filled < length - filled ? filled : length - filled)
        std::wmemcpy(to + filled, to, filled < length - filled ? filled : length - filled);
    return text;
}

TEST(OCXmlWriterDocuments, WriteLargeTextsWithManyLineBreaks) {
    struct {
        std::wstring piece;
        unsigned long pieces;
        unsigned long lines;
        unsigned long lineBytes;
    } const kinds[] = {
        {L"a line of text\n", large / 15, large / 15, 18},
        {L"\n", large / 8, large / 8, 2},
        {L"\r", large / 8, large / 8, 2},
        {L"\r\n", large / 8, large / 8, 2},
        {L"\n\r", large / 8, large / 8 + 1, 2}, // "\n", then "\r\n" again and again, then "\r"
    };
    for (const auto& kind : kinds) {
        const OCWideString text = repeated(kind.piece, kind.pieces * kind.piece.size());
        CountingStream stream;
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        OCXmlWriter writer(output);
        writer.startElement(L"a");
        writer.characterData(text);
        EXPECT_EQ(1 + kind.lines, stream.writes);
        EXPECT_EQ(5 + kind.lines * kind.lineBytes, stream.bytes);
    }
}

TEST(OCXmlWriterDocuments, WriteLargeTextsInLinearTime) {
    for (const wchar_t* const piece : {L"\n", L"\r\n", L"\r", L"ab\n", L"x"})
        for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
            const auto write = [&](unsigned long n) {
                CountingStream stream;
                OCXmlWriterOutput output(stream, encoding);
                output.write(repeated(piece, n));
            };
            EXPECT_LT(growth::ofEightTimes(write, fault::sanitized ? 20000 : 100000), 30);
        }
}

TEST(OCXmlWriterDocuments, WriteLargeTags) {
    OCXmlWriterElementAttributeList attributes;
    const unsigned int count = fault::sanitized ? 10000 : 100000;
    for (unsigned int i = 0; i < count; ++i)
        attributes.addAttribute(L"name", L"value");
    CountingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    OCXmlWriter writer(output);
    writer.emptyElement(L"a", attributes);
    EXPECT_EQ(1u, stream.writes);
    EXPECT_EQ(2 + 13UL * count + 4, stream.bytes);
    EXPECT_EQ(13UL * count, attributes.makeText().getLength());
}

/// Runs an operation in a thread with a small call stack.
void inSmallStack(std::function<void()> operation) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, (fault::sanitized ? 512UL : 64UL) * 1024));
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(
                     &thread, &attributes,
                     [](void* given) -> void* {
                         (*static_cast<std::function<void()>*>(given))();
                         return nullptr;
                     },
                     &operation));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
}

TEST(OCXmlWriterDocuments, CloseAMillionElements) {
    const unsigned long depth = fault::sanitized ? 100000 : 1000000;
    CountingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.setIndent(false); // the indentation alone would be 10^12 spaces
    inSmallStack([&] {
        OCXmlWriter writer(output);
        for (unsigned long i = 0; i < depth; ++i)
            writer.startElement(L"a");
        writer.closeElements();
        EXPECT_TRUE(writer.getElementStack().isEmpty());
    });
    EXPECT_EQ(2 * depth, stream.writes);
    EXPECT_EQ(depth * 11, stream.bytes);
}

TEST(OCXmlWriterDocuments, AreAbandonedWithAMillionOpenElements) {
    const unsigned long depth = fault::sanitized ? 100000 : 1000000;
    CountingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.setIndent(false);
    inSmallStack([&] {
        OCXmlWriter writer(output);
        for (unsigned long i = 0; i < depth; ++i)
            writer.startElement(L"a");
    });
    EXPECT_EQ(depth, stream.writes);
}

TEST(OCXmlWriterDocuments, AreClosedInLinearTime) {
    const auto nest = [](unsigned long n) {
        CountingStream stream;
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        output.setIndent(false);
        OCXmlWriter writer(output);
        for (unsigned long i = 0; i < n; ++i)
            writer.startElement(L"a");
        writer.closeElements();
    };
    EXPECT_LT(growth::ofEightTimes(nest, fault::sanitized ? 2000 : 20000), 30);
}

TEST(OCXmlWriterDocuments, AreIndentedToAnyDepth) {
    const unsigned long depth = 2000;
    CountingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    OCXmlWriter writer(output);
    for (unsigned long i = 0; i < depth; ++i)
        writer.startElement(L"a");
    writer.closeElements();
    EXPECT_EQ(2 * depth, stream.writes);
    EXPECT_EQ(11 * depth + 2 * depth * (depth - 1), stream.bytes);
}

} // namespace
