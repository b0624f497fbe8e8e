// XML events: documents in memory and files, beside the SAX interfaces of libxml2 and expat. Every
// parser counts the same things: elements, attributes and the characters of the texts.

#include "OCFilePath.h"
#include "OCMemoryStream.h"
#include "OCXmlParser.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <expat.h>
#include <fstream>
#include <iterator>
#include <libxml/parser.h>
#include <string>

namespace {

const char freedesktopPath[] = "/usr/share/mime/packages/freedesktop.org.xml";

struct Counts {
    unsigned long elements = 0;
    unsigned long attributes = 0;
    unsigned long ends = 0;
    unsigned long characters = 0;
};

// The library

class Counter : public OCXmlEvents {
public:
    void attribute(const OCWideString&, const OCWideString&) override { ++counts.attributes; }
    void characterData(const OCWideString& text) override { counts.characters += text.getLength(); }
    void elementEnd() override { ++counts.ends; }
    void elementStart(const OCWideString&) override { ++counts.elements; }

    Counts counts;
};

// libxml2

void libxmlStart(void* user, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**,
                 int count, int, const xmlChar**) {
    auto& counts = *static_cast<Counts*>(user);
    ++counts.elements;
    counts.attributes += static_cast<unsigned long>(count);
}
void libxmlEnd(void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
    ++static_cast<Counts*>(user)->ends;
}
void libxmlText(void* user, const xmlChar*, int length) {
    static_cast<Counts*>(user)->characters += static_cast<unsigned long>(length);
}

xmlSAXHandler libxmlHandler() {
    xmlSAXHandler handler;
    std::memset(&handler, 0, sizeof handler);
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = libxmlStart;
    handler.endElementNs = libxmlEnd;
    handler.characters = libxmlText;
    return handler;
}

// expat

void XMLCALL expatStart(void* user, const XML_Char*, const XML_Char** attributes) {
    auto& counts = *static_cast<Counts*>(user);
    ++counts.elements;
    for (; *attributes; attributes += 2)
        ++counts.attributes;
}
void XMLCALL expatEnd(void* user, const XML_Char*) {
    ++static_cast<Counts*>(user)->ends;
}
void XMLCALL expatText(void* user, const XML_Char*, int length) {
    static_cast<Counts*>(user)->characters += static_cast<unsigned long>(length);
}

// One parse each

void parseWithLibrary(const std::string& document, OCMemoryStream& stream, Counts& counts) {
    stream.setPosition(0);
    Counter counter;
    OCXmlParser parser;
    parser.setEvents(counter);
    parser.parse(stream);
    counts = counter.counts;
    benchmark::DoNotOptimize(document.data());
}

void parseWithLibxml(const std::string& document, OCMemoryStream&, Counts& counts) {
    xmlSAXHandler handler = libxmlHandler();
    if (xmlSAXUserParseMemory(&handler, &counts, document.data(),
                              static_cast<int>(document.size())) != 0)
        std::abort();
}

void parseWithExpat(const std::string& document, OCMemoryStream&, Counts& counts) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &counts);
    XML_SetElementHandler(parser, expatStart, expatEnd);
    XML_SetCharacterDataHandler(parser, expatText);
    if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK)
        std::abort();
    XML_ParserFree(parser);
}

// Documents

const std::string& freedesktop() {
    static const std::string document = [] {
        std::ifstream file(freedesktopPath, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    return document;
}

const std::string& attributes() {
    static const std::string document = [] {
        std::string text = "<records>\n";
        for (unsigned i = 0; text.size() < 4 * 1024 * 1024; ++i) {
            const std::string n = std::to_string(i);
            text += "<record id=\"" + n + "\" type=\"measurement\" unit=\"kPa\" value=\"" +
                    std::to_string(i * 7919 % 100000) + "\" status='ok' source=\"sensor-" + n +
                    "\" location='building 4, floor 2'/>\n";
        }
        return text + "</records>\n";
    }();
    return document;
}

const char sentence[] = "The quick brown fox jumps over the lazy dog, and nobody minds at all.\n";

const std::string& paragraphs() {
    static const std::string document = [] {
        std::string text = "<book>\n";
        for (unsigned i = 0; text.size() < 4 * 1024 * 1024; ++i) {
            text += "<p>";
            for (unsigned line = 0; line < 8 + i % 16; ++line)
                text += sentence;
            text += "</p>\n";
        }
        return text + "</book>\n";
    }();
    return document;
}

const std::string& oneText() {
    static const std::string document = [] {
        std::string text = "<book>";
        while (text.size() < 4 * 1024 * 1024)
            text += sentence;
        return text + "</book>\n";
    }();
    return document;
}

using Parse = void (*)(const std::string&, OCMemoryStream&, Counts&);

void inMemory(benchmark::State& state, const std::string& (*document)(), Parse parse) {
    if (document().empty()) {
        state.SkipWithError("the document is not there");
        return;
    }
    OCMemoryStream stream(document().data(), document().size());
    Counts counts;
    for (auto _ : state) {
        counts = Counts();
        parse(document(), stream, counts);
    }
    if (counts.elements == 0 || counts.elements != counts.ends)
        state.SkipWithError("the parse went wrong");
    state.SetBytesProcessed(
        static_cast<int64_t>(static_cast<unsigned long>(state.iterations()) * document().size()));
}

void fromFileWithLibrary(benchmark::State& state) {
    const OCFilePath path(freedesktopPath);
    for (auto _ : state) {
        Counter counter;
        OCXmlParser parser;
        parser.setEvents(counter);
        parser.parse(path);
        benchmark::DoNotOptimize(counter.counts.characters);
    }
    state.SetBytesProcessed(static_cast<int64_t>(static_cast<unsigned long>(state.iterations()) *
                                                 freedesktop().size()));
}

void fromFileWithLibxml(benchmark::State& state) {
    for (auto _ : state) {
        Counts counts;
        xmlSAXHandler handler = libxmlHandler();
        if (xmlSAXUserParseFile(&handler, &counts, freedesktopPath) != 0)
            std::abort();
        benchmark::DoNotOptimize(counts.characters);
    }
    state.SetBytesProcessed(static_cast<int64_t>(static_cast<unsigned long>(state.iterations()) *
                                                 freedesktop().size()));
}

const bool registered = [] {
    const struct {
        const char* work;
        const std::string& (*document)();
    } works[] = {{"xml_memory_freedesktop", freedesktop},
                 {"xml_memory_attributes_4M", attributes},
                 {"xml_memory_text_4M", paragraphs},
                 {"xml_memory_one_text_4M", oneText}};
    const struct {
        const char* who;
        Parse parse;
    } parsers[] = {
        {"orvabase", parseWithLibrary}, {"libxml2", parseWithLibxml}, {"expat", parseWithExpat}};
    for (const auto& work : works)
        for (const auto& parser : parsers)
            benchmark::RegisterBenchmark(
                (std::string("BM_") + work.work + "/" + parser.who).c_str(), inMemory,
                work.document, parser.parse)
                ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_xml_file_freedesktop/orvabase", fromFileWithLibrary)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_xml_file_freedesktop/libxml2", fromFileWithLibxml)
        ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
