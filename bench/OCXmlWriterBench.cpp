// Writing XML to memory: 100,000 elements with two attributes in one element, beside libxml2's text
// writer. Both make the same tags, each on a line of its own.

#include "OCMemoryStream.h"
#include "OCXmlWriter.h"

#include <benchmark/benchmark.h>

#include <libxml/xmlwriter.h>
#include <string>
#include <vector>

namespace {

constexpr unsigned long elements = 100000;

/// The attributes' values in turn.
struct Values {
    Values() {
        for (unsigned long i = 0; i < 1000; ++i) {
            const std::string number = std::to_string(i * 7919 % 100000);
            narrow.push_back("item number " + number);
            wide.emplace_back(OCAnsiString(narrow.back().c_str()));
        }
    }
    std::vector<std::string> narrow;
    std::vector<OCWideString> wide;
};
const Values& values() {
    static const Values all;
    return all;
}

const OCWideString rootName(L"list");
const OCWideString elementName(L"item");
const OCWideString identifierName(L"identifier");
const OCWideString titleName(L"title");

void writeWithLibrary(const Values& values, bool indented) {
    OCMemoryStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.setIndent(indented);
    OCXmlWriter writer(output);
    writer.xmlDeclaration();
    writer.startElement(rootName);
    for (unsigned long i = 0; i < elements; ++i) {
        OCXmlWriterElementAttributeList attributes;
        attributes.addAttribute(identifierName, values.wide[i % 1000]);
        attributes.addAttribute(titleName, values.wide[(i + 500) % 1000]);
        writer.emptyElement(elementName, attributes);
    }
    writer.closeElements();
    benchmark::DoNotOptimize(stream.getCapacity());
}

const xmlChar* text(const char* characters) {
    return reinterpret_cast<const xmlChar*>(characters);
}

void writeWithLibxml(const Values& values, bool indented) {
    const xmlBufferPtr buffer = xmlBufferCreate();
    const xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
    xmlTextWriterSetIndent(writer, indented ? 1 : 0);
    xmlTextWriterSetIndentString(writer, text("  "));
    xmlTextWriterStartDocument(writer, nullptr, nullptr, nullptr);
    xmlTextWriterStartElement(writer, text("list"));
    for (unsigned long i = 0; i < elements; ++i) {
        xmlTextWriterStartElement(writer, text("item"));
        xmlTextWriterWriteAttribute(writer, text("identifier"),
                                    text(values.narrow[i % 1000].c_str()));
        xmlTextWriterWriteAttribute(writer, text("title"),
                                    text(values.narrow[(i + 500) % 1000].c_str()));
        xmlTextWriterEndElement(writer);
    }
    xmlTextWriterEndDocument(writer);
    xmlFreeTextWriter(writer);
    benchmark::DoNotOptimize(xmlBufferLength(buffer));
    xmlBufferFree(buffer);
}

void writeOrvabase(benchmark::State& state, bool indented) {
    for (auto _ : state)
        writeWithLibrary(values(), indented);
}

void writeLibxml(benchmark::State& state, bool indented) {
    for (auto _ : state)
        writeWithLibxml(values(), indented);
}

BENCHMARK_CAPTURE(writeOrvabase, indented, true)
    ->Name("BM_xml_write_100K_elements/orvabase")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeLibxml, indented, true)
    ->Name("BM_xml_write_100K_elements/libxml2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeOrvabase, plain, false)
    ->Name("BM_xml_write_100K_elements_plain/orvabase")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeLibxml, plain, false)
    ->Name("BM_xml_write_100K_elements_plain/libxml2")
    ->Unit(benchmark::kMillisecond);

} // namespace
