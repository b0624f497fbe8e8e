// Documents made to break a parser: depth, size and repetition cost neither call stack nor more
// than linear time, and memory only for the largest text and the open names.

#include "OCFilePath.h"
#include "OCMemoryStream.h"
#include "OCXmlParser.h"
#include "support/Exceptions.h"
#include "support/Pieces.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <pthread.h>
#include <string>
#include <unistd.h>
#include <vector>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SANITIZED 1
#endif
#endif
#ifndef SANITIZED
#define SANITIZED 0
#endif

namespace {

class Counter : public OCXmlEvents {
public:
    explicit Counter(bool returning = false) : errorsReturn(returning) {}

    void attribute(const OCWideString& name, const OCWideString& value) override {
        ++attributes;
        characters += name.getLength() + value.getLength();
    }
    void characterData(const OCWideString& text) override {
        ++texts;
        characters += text.getLength();
    }
    void documentEnd() override { ++documentEnds; }
    void documentStart() override { ++documentStarts; }
    void elementEnd() override { ++ends; }
    void elementStart(const OCWideString& name) override {
        ++elements;
        characters += name.getLength();
    }
    void error(OEXmlParserErrorClass errorClass) override {
        ++errors;
        if (!errorsReturn)
            OCXmlEvents::error(errorClass);
    }
    void processingInstruction(const OCWideString& target, const OCWideString& data) override {
        ++instructions;
        characters += target.getLength() + data.getLength();
    }

    unsigned long attributes = 0;
    unsigned long texts = 0;
    unsigned long documentStarts = 0;
    unsigned long documentEnds = 0;
    unsigned long elements = 0;
    unsigned long ends = 0;
    unsigned long errors = 0;
    unsigned long instructions = 0;
    unsigned long characters = 0;

private:
    bool errorsReturn;
};

constexpr unsigned long million = 1000000;
/// A sanitizer's heap copies a block whenever it grows, which the C library's does not do with
/// large ones.
constexpr unsigned long large = (SANITIZED ? 4UL : 64UL) * 1024 * 1024;

/// Parses with errors that return: the parse ends, with a start and an end.
Counter parseOn(std::vector<Pieces::Piece> content) {
    Counter counter(true);
    Pieces stream(std::move(content));
    OCXmlParser parser;
    parser.setEvents(counter);
    parser.parse(stream);
    EXPECT_EQ(1u, counter.documentStarts);
    EXPECT_EQ(1u, counter.documentEnds);
    return counter;
}

/// Parses and lets the error end the parse.
Counter parse(std::vector<Pieces::Piece> content) {
    Counter counter;
    Pieces stream(std::move(content));
    OCXmlParser parser;
    parser.setEvents(counter);
    parser.parse(stream);
    EXPECT_EQ(1u, counter.documentEnds);
    return counter;
}

TEST(OCXmlHostileInput, ParsesAMillionNestedElements) {
    const Counter counter = parse({{"<a>", million}, {"</a>", million}});
    EXPECT_EQ(million, counter.elements);
    EXPECT_EQ(million, counter.ends);
}

TEST(OCXmlHostileInput, ComparesTheNamesOfAMillionNestedElements) {
    std::string starts;
    std::string ends;
    for (unsigned long i = 0; i < million; ++i) {
        const std::string name = "n" + std::to_string(i % 12345);
        starts += "<" + name + ">";
    }
    for (unsigned long i = million; i-- > 0;)
        ends += "</n" + std::to_string(i % 12345) + ">";
    const Counter counter = parse({{starts, 1}, {ends, 1}});
    EXPECT_EQ(million, counter.ends);

    // The outermost end has another name.
    ends.replace(ends.rfind("n0"), 2, "n1");
    EXPECT_EXCEPTION(parse({{starts, 1}, {ends, 1}}), OXXmlParser_ElementMalformed,
                     "Malformed XML element");
}

TEST(OCXmlHostileInput, UnwindsAMillionOpenElements) {
    EXPECT_EXCEPTION(parse({{"<a>", million}}), OXXmlParser_ContentMalformed,
                     "Malformed XML content");
    EXPECT_EXCEPTION(parse({{"<a>", million}, {"<b/", 1}}), OXXmlParser_ElementMalformed,
                     "Malformed XML element");
    const Counter counter = parseOn({{"<a>", million}});
    EXPECT_EQ(million, counter.elements);
    EXPECT_EQ(million, counter.ends);
    EXPECT_EQ(2 * million, counter.errors);
    parseOn({{"<a>", million}, {"</b>", million}});
    parseOn({{"<a>", million}, {"<", 1}});
    parseOn({{"<a><b x></c>", million}});
}

/// Runs an operation in a thread with a small call stack.
void inSmallStack(std::function<void()> operation) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, (SANITIZED ? 512UL : 64UL) * 1024));
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

/// Counts the events of a grammar operation in such a thread.
Counter countInSmallStack(std::vector<Pieces::Piece> content,
                          void (OCXmlParser::*operation)(OCXmlParserReader&)) {
    Counter counter(true);
    Pieces stream(std::move(content));
    OCXmlParserSource source(stream, XmlEncodingAnsi);
    OCXmlParserReader reader(source);
    OCXmlParser parser;
    parser.setEvents(counter);
    inSmallStack([&] { (parser.*operation)(reader); });
    return counter;
}

TEST(OCXmlHostileInput, NeedsNoCallStackForDepth) {
    for (const auto operation : {&OCXmlParser::parseDocument, &OCXmlParser::parseElement}) {
        const Counter counter = countInSmallStack({{"<a>", million}, {"</a>", million}}, operation);
        EXPECT_EQ(million, counter.ends);
        EXPECT_EQ(0u, counter.errors);
    }
    const Counter content =
        countInSmallStack({{"<a>", million}, {"</a>", million + 1}}, &OCXmlParser::parseContent);
    EXPECT_EQ(million, content.ends);
    EXPECT_EQ(0u, content.errors);
    const Counter open = countInSmallStack({{"<a>", million}}, &OCXmlParser::parseDocument);
    EXPECT_EQ(million, open.ends);
}

TEST(OCXmlHostileInput, ParsesFilesInASmallCallStack) {
    const ScratchDirectory scratch;
    std::string document;
    for (unsigned long i = 0; i < million / 10; ++i)
        document += "<element>";
    const OCFilePath path(scratch.write("deep.xml", document).c_str());
    Counter counter(true);
    OCXmlParser parser;
    parser.setEvents(counter);
    inSmallStack([&] { parser.parse(path); });
    EXPECT_EQ(million / 10, counter.ends);
    EXPECT_EQ(1u, counter.documentEnds);
}

TEST(OCXmlHostileInput, ParsesALargeAttributeValue) {
    const std::string block(1024, 'v');
    const Counter counter = parse({{"<a x='", 1}, {block, large / 1024}, {"'/>", 1}});
    EXPECT_EQ(1u, counter.attributes);
    EXPECT_EQ(large + 2, counter.characters);

    EXPECT_EXCEPTION(parse({{"<a x='", 1}, {block, large / 1024}}),
                     OXXmlParser_AttributeValueMalformed, "Malformed XML attribute value");
}

TEST(OCXmlHostileInput, ParsesALargeText) {
    const std::string block(1024, 't');
    const Counter counter = parse({{"<a>", 1}, {block, large / 1024}, {"</a>", 1}});
    EXPECT_EQ(1u, counter.texts);
    EXPECT_EQ(large + 1, counter.characters);
}

TEST(OCXmlHostileInput, ParsesALargeNameWhichARunOfMarkupBeginningsIs) {
    const std::string block(1024, '<');
    Counter counter = parseOn({{block, large / 1024}});
    EXPECT_EQ(1u, counter.elements);
    EXPECT_EQ(large - 1, counter.characters);
    EXPECT_EQ(2u, counter.errors);
    EXPECT_EXCEPTION(parse({{block, large / 1024}}), OXXmlParser_ElementMalformed,
                     "Malformed XML element");
    counter = parse({{"<", 1}, {block, large / 1024}, {"></", 1}, {block, large / 1024}, {">", 1}});
    EXPECT_EQ(1u, counter.ends);
}

TEST(OCXmlHostileInput, PassesOverLargeRunsOfAnything) {
    const unsigned long count = large / 4;
    struct {
        const char* before;
        const char* repeated;
        const char* behind;
    } const documents[] = {
        {"<a><!--", "-", "--></a>"},
        {"<a><![CDATA[", "]", "]]></a>"},
        {"<a><?p ", "?", "?></a>"},
        {"<?xml", "?", "?><a/>"},
        {"", " ", "<a/>"},
        {"<a", " ", "/>"},
        {"<a/>", " ", ""},
        {"<!DOCTYPE a [", "%;", "]><a/>"},
        {"<!DOCTYPE a [", " ", "]><a/>"},
        {"<!DOCTYPE a [<!ATTLIST a x (", "()", ") 'v'>]><a/>"},
        {"<!DOCTYPE a [<!ELEMENT a ", "(", ">]><a/>"},
        {"<!DOCTYPE a [<!ENTITY e '", "%", "'>]><a/>"},
        {"<!DOCTYPE a SYSTEM '", "s", "'><a/>"},
        {"<a>", "<!---->", "</a>"},
        {"<a>", "<![CDATA[]]>", "</a>"},
        {"<a>", "<b/>", "</a>"},
        {"<a", " x=''", "/>"},
    };
    for (const auto& document : documents) {
        const unsigned long times = count / std::strlen(document.repeated);
        const Counter counter =
            parseOn({{document.before, 1}, {document.repeated, times}, {document.behind, 1}});
        EXPECT_EQ(0u, counter.errors) << document.before << document.repeated;
        EXPECT_LE(1u, counter.ends) << document.before << document.repeated;
        // and cut off
        parseOn({{document.before, 1}, {document.repeated, times}});
    }
}

TEST(OCXmlHostileInput, GoesOnBehindMillionsOfErrors) {
    for (const char* repeated : {"<",          "<a",
                                 "<a>",        "</a>",
                                 "<a x>",      "<a x=",
                                 "< ",         "<?",
                                 "<!",         "<![CDATA[",
                                 "&",          ">",
                                 "=",          "<a b></c>",
                                 "<a><",       "</",
                                 "/>",         "<a/",
                                 "<a ='",      "\"",
                                 "<!DOCTYPE ", "<!DOCTYPE a [<!ENTITY",
                                 "?><?x"})
        for (const char* before :
             {"", "<r>", "<r><s>", "<!DOCTYPE r [", "<!DOCTYPE r [<!ATTLIST a "})
            parseOn({{before, 1}, {repeated, million / 10}});
}

#if !SANITIZED
/// A value of /proc/self/status, in kilobytes.
long processMemory(const char* name) {
    long kilobytes = 0;
    std::FILE* file = std::fopen("/proc/self/status", "r");
    char line[256];
    while (file && std::fgets(line, sizeof line, file))
        if (std::strncmp(line, name, std::strlen(name)) == 0)
            kilobytes = std::strtol(line + std::strlen(name) + 1, nullptr, 10); // behind the colon
    if (file)
        std::fclose(file);
    return kilobytes;
}

const char probeVariable[] = "ORVABASE_TEST_PARSE_AND_TELL_MEMORY";

/// In a process started by `memoryOf`: parses the file, prints the kilobytes taken and ends.
const bool probed = [] {
    const char* path = std::getenv(probeVariable);
    if (!path)
        return false;
    Counter counter;
    OCXmlParser parser;
    parser.setEvents(counter);
    // A first parse touches the code and the heap that every parse needs.
    OCMemoryStream small("<a x='1'>t</a>", 14);
    parser.parse(small);
    std::FILE* reset = std::fopen("/proc/self/clear_refs", "w");
    std::fputs("5", reset);
    std::fclose(reset);
    const long before = processMemory("VmRSS");
    parser.parse(OCFilePath(path));
    std::printf("%ld\n", processMemory("VmHWM") - before);
    std::fflush(stdout);
    _exit(counter.documentEnds == 2 ? 0 : 1);
}();

/// The kilobytes that parsing a file takes at the most, in a process that does nothing else: what a
/// heap gave away and got back before would show.
template<typename Write>
long memoryOf(Write write) {
    const ScratchDirectory scratch;
    const std::string path = scratch.file("large.xml");
    std::FILE* file = std::fopen(path.c_str(), "w");
    write(file);
    std::fclose(file);
    const std::string command = std::string(probeVariable) + "='" + path + "' " +
                                std::filesystem::read_symlink("/proc/self/exe").string();
    // NOLINTNEXTLINE(cert-env33-c): the command is this program
    std::FILE* output = popen(command.c_str(), "r");
    char line[256] = "";
    EXPECT_NE(nullptr, std::fgets(line, sizeof line, output));
    EXPECT_EQ(0, pclose(output));
    char* end = nullptr;
    const long taken = std::strtol(line, &end, 10);
    EXPECT_NE(line, end);
    return taken;
}

TEST(OCXmlHostileInput, TakesNoMemoryForTheSizeOfAFile) {
    const long taken = memoryOf([](std::FILE* file) {
        std::fputs("<list>", file);
        for (unsigned long i = 0; i < 2 * million; ++i)
            std::fputs("<item id='1'>some text</item>\n", file);
        std::fputs("</list>", file);
    });
    EXPECT_LT(taken, 1024);
    EXPECT_LE(0, taken);
}

TEST(OCXmlHostileInput, TakesMemoryForTheLargestTextOnly) {
    const unsigned long size = 20UL * 1024 * 1024;
    const auto text = [](std::FILE* file, unsigned long count) {
        for (unsigned long i = 0; i < count / 64; ++i)
            std::fputs("0123456789012345678901234567890123456789012345678901234567890123", file);
    };
    const long taken = memoryOf([&](std::FILE* file) {
        std::fputs("<list a='", file);
        text(file, 1024);
        std::fputs("'><?p ", file);
        text(file, 4096);
        std::fputs("?>", file);
        text(file, size);
        std::fputs("<b c='", file);
        text(file, 3000);
        std::fputs("'/></list>", file);
    });
    const long wide = static_cast<long>(size) * 4 / 1024;
    EXPECT_LT(taken, wide + 1024);
    EXPECT_LT(wide, taken);
}

TEST(OCXmlHostileInput, HoldsOneLargeTextAtATime) {
    const unsigned long size = 4UL * 1024 * 1024;
    const std::string text(size, 'x');
    const long taken = memoryOf([&](std::FILE* file) {
        std::fputs("<a>", file);
        for (unsigned long part = size / 16; part <= size; part += size / 16) {
            const char* const piece = text.c_str() + size - part;
            std::fprintf(file, "<b c='%s'>%s<![CDATA[%s]]><?p %s?></b>", piece, piece, piece,
                         piece);
        }
        std::fputs("</a>", file);
    });
    const long wide = static_cast<long>(size) * 4 / 1024;
    EXPECT_LT(taken, wide + 1024);
    EXPECT_LT(wide, taken);
}

TEST(OCXmlHostileInput, GivesTheMemoryOfClosedNamesBack) {
    const std::string name(4UL * 1024 * 1024, 'n');
    const long taken = memoryOf([&](std::FILE* file) {
        // The second name is there when nothing of the first is.
        std::fprintf(file, "<a><%s></%s>%s<b c='%s'/>", name.c_str(), name.c_str(), name.c_str(),
                     name.c_str());
        std::fprintf(file, "<%s></%s></a>", name.c_str(), name.c_str());
    });
    // The name as a text and as an open name.
    const long wide = static_cast<long>(name.size()) * 4 / 1024;
    EXPECT_LT(taken, 2 * wide + wide / 8 + 1024);
    EXPECT_LT(wide, taken);
}

TEST(OCXmlHostileInput, TakesMemoryForTheOpenNames) {
    const unsigned long count = million;
    const long taken = memoryOf([&](std::FILE* file) {
        for (unsigned long i = 0; i < count; ++i)
            std::fputs("<element>", file);
        for (unsigned long i = 0; i < count; ++i)
            std::fputs("</element>", file);
    });
    // The name in its wide form, with its end.
    const long names = static_cast<long>(count) * 8 * 4 / 1024;
    EXPECT_LT(taken, names + names / 8 + 1024);
}
#endif

} // namespace
