// HTML events of a real page from memory, beside htmlcxx's SAX parser and libxml2's, the latter
// both given the whole page and pushed pieces of it. The library and libxml2 count the same things;
// what htmlcxx reports is coarser, as a start tag comes with its attributes unparsed.

#include "OCHtmlParser.h"
#include "OCMemoryStream.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <libxml/HTMLparser.h>
#include <string>

// htmlcxx's headers are not written for the warnings that the library is built with.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wextra"
#include <htmlcxx/html/Node.h>
#include <htmlcxx/html/ParserSax.h>
#pragma GCC diagnostic pop

namespace {

const char pagePath[] = "/usr/share/doc/bash-doc/bashref.html";

struct Counts {
    unsigned long elements = 0;
    unsigned long attributes = 0;
    unsigned long ends = 0;
    unsigned long comments = 0;
    unsigned long characters = 0;
};

// The library

class Counter : public OCHtmlParserEvents {
public:
    void attribute(const OCAnsiString&, const OCAnsiString&) override { ++counts.attributes; }
    void characterData(const OCAnsiString& text) override { counts.characters += text.getLength(); }
    void comment(const OCAnsiString&) override { ++counts.comments; }
    void elementEnd(const OCAnsiString&) override { ++counts.ends; }
    void elementStart(const OCAnsiString&) override { ++counts.elements; }

    Counts counts;
};

void parseWithLibrary(const std::string&, OCMemoryStream& stream, Counts& counts) {
    stream.setPosition(0);
    Counter counter;
    OCHtmlParser parser;
    parser.setParserEvents(counter);
    parser.parse(stream);
    counts = counter.counts;
}

// htmlcxx

class HtmlcxxCounter : public htmlcxx::HTML::ParserSax {
public:
    Counts counts;

protected:
    void foundTag(htmlcxx::HTML::Node node, bool isEnd) override {
        ++(isEnd ? counts.ends : counts.elements);
        benchmark::DoNotOptimize(node.tagName().data());
    }
    void foundText(htmlcxx::HTML::Node node) override { counts.characters += node.text().size(); }
    void foundComment(htmlcxx::HTML::Node) override { ++counts.comments; }
};

void parseWithHtmlcxx(const std::string& document, OCMemoryStream&, Counts& counts) {
    HtmlcxxCounter counter;
    counter.parse(document);
    counts = counter.counts;
}

// libxml2

void libxmlStart(void* user, const xmlChar*, const xmlChar** attributes) {
    auto& counts = *static_cast<Counts*>(user);
    ++counts.elements;
    for (; attributes && *attributes; attributes += 2)
        ++counts.attributes;
}
void libxmlEnd(void* user, const xmlChar*) {
    ++static_cast<Counts*>(user)->ends;
}
void libxmlText(void* user, const xmlChar*, int length) {
    static_cast<Counts*>(user)->characters += static_cast<unsigned long>(length);
}
void libxmlComment(void* user, const xmlChar*) {
    ++static_cast<Counts*>(user)->comments;
}

xmlSAXHandler libxmlHandler() {
    xmlSAXHandler handler;
    std::memset(&handler, 0, sizeof handler);
    handler.startElement = libxmlStart;
    handler.endElement = libxmlEnd;
    handler.characters = libxmlText;
    handler.cdataBlock = libxmlText;
    handler.ignorableWhitespace = libxmlText;
    handler.comment = libxmlComment;
    return handler;
}

void parseWithLibxml(const std::string& document, OCMemoryStream&, Counts& counts) {
    xmlSAXHandler handler = libxmlHandler();
    htmlParserCtxtPtr context =
        htmlCreateMemoryParserCtxt(document.data(), static_cast<int>(document.size()));
    xmlSAXHandler* const own = context->sax;
    context->sax = &handler;
    context->userData = &counts;
    htmlParseDocument(context);
    context->sax = own;
    htmlFreeParserCtxt(context);
}

void parseWithLibxmlPush(const std::string& document, OCMemoryStream&, Counts& counts) {
    constexpr std::size_t piece = 16384;
    xmlSAXHandler handler = libxmlHandler();
    htmlParserCtxtPtr context =
        htmlCreatePushParserCtxt(&handler, &counts, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8);
    for (std::size_t at = 0; at < document.size(); at += piece)
        htmlParseChunk(context, document.data() + at,
                       static_cast<int>(std::min(piece, document.size() - at)), 0);
    htmlParseChunk(context, nullptr, 0, 1);
    htmlFreeParserCtxt(context);
}

const std::string& page() {
    static const std::string document = [] {
        std::ifstream file(pagePath, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    return document;
}

using Parse = void (*)(const std::string&, OCMemoryStream&, Counts&);

void inMemory(benchmark::State& state, Parse parse) {
    if (page().size() < 500000) {
        state.SkipWithError("the page is not there");
        return;
    }
    OCMemoryStream stream(page().data(), page().size());
    Counts counts;
    for (auto _ : state) {
        counts = Counts();
        parse(page(), stream, counts);
    }
    if (counts.elements < 10000 || counts.ends < 10000 || counts.characters < 300000)
        state.SkipWithError("the parse went wrong");
    state.SetBytesProcessed(
        static_cast<int64_t>(static_cast<unsigned long>(state.iterations()) * page().size()));
}

const bool registered = [] {
    const struct {
        const char* who;
        Parse parse;
    } parsers[] = {{"orvabase", parseWithLibrary},
                   {"htmlcxx", parseWithHtmlcxx},
                   {"libxml2", parseWithLibxml},
                   {"libxml2_push", parseWithLibxmlPush}};
    for (const auto& parser : parsers)
        benchmark::RegisterBenchmark((std::string("BM_html_memory_page/") + parser.who).c_str(),
                                     inMemory, parser.parse)
            ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
