#include "OCXmlWriter.h"

#include "OCMemory.h"
#include "OCStringUtilities.h"
#include "core/OCKernels.h"
#include "strings/WideCopy.h"

#include <cstring>
#include <memory>
#include <utility>

namespace {

constexpr unsigned long indentation = 2;

wchar_t* put(wchar_t* to, const wchar_t* text, unsigned long count) noexcept {
    orvabase::copyCharacters(to, text, count);
    return to + count;
}

wchar_t* put(wchar_t* to, const OCWideString& text) noexcept {
    return put(to, text.getString(), text.getLength());
}

// The lengths of texts that exist cannot add up to more than an unsigned long holds.

unsigned long textLength(const OCXmlWriterElementAttribute& attribute) noexcept {
    const unsigned long value = attribute.getValue().getLength();
    return 1 + attribute.getName().getLength() + (value > 0 ? 3 + value : 0);
}

unsigned long textLength(const OCXmlWriterElementAttributeList& attributes) {
    unsigned long length = 0;
    for (unsigned int i = 0; i < attributes.getCount(); ++i)
        length += textLength(attributes.getAttribute(i));
    return length;
}

wchar_t* put(wchar_t* to, const OCXmlWriterElementAttribute& attribute) noexcept {
    *to++ = L' ';
    to = put(to, attribute.getName());
    if (attribute.getValue().getLength() > 0) {
        *to++ = L'=';
        *to++ = L'"';
        to = put(to, attribute.getValue());
        *to++ = L'"';
    }
    return to;
}

wchar_t* put(wchar_t* to, const OCXmlWriterElementAttributeList& attributes) {
    for (unsigned int i = 0; i < attributes.getCount(); ++i)
        to = put(to, attributes.getAttribute(i));
    return to;
}

template<unsigned long beginSize, unsigned long endSize>
OCWideString makeTag(const wchar_t (&begin)[beginSize], const OCWideString& name,
                     const OCXmlWriterElementAttributeList& attributes,
                     const wchar_t (&end)[endSize]) {
    OCWideString tag;
    tag.setLength(beginSize - 1 + name.getLength() + textLength(attributes) + endSize - 1);
    wchar_t* to = put(tag.getString(), begin, beginSize - 1);
    to = put(to, name);
    to = put(to, attributes);
    put(to, end, endSize - 1);
    return tag;
}

} // namespace

namespace orvabase {

/// A text on its way to the stream of an output. The memory that it takes is got at the start, so
/// that afterwards only the stream can fail. The text must outlive it.
class XmlWriterLines {
public:
    XmlWriterLines(OCXmlWriterOutput& target, const OCWideString& content, unsigned long depth)
        : output(target), text(content.getString()), count(content.getLength()), block(nullptr),
          line(local) {
        const unsigned long size =
            (depth + count + lineEndLength) * (isWide() ? sizeof(wchar_t) : sizeof(char));
        if (size > sizeof local) {
            memoryAllocate(block, size);
            line = static_cast<char*>(block);
        }
        lineBegin = encode(line, output.prefix.getString(), depth);
    }
    XmlWriterLines(const XmlWriterLines&) = delete;
    XmlWriterLines& operator=(const XmlWriterLines&) = delete;
    ~XmlWriterLines() noexcept { memoryRelease(block); }

    /// The depth of the next line, in characters.
    static unsigned long depthOf(const OCXmlWriterOutput& output) noexcept {
        return output.indenting ? output.prefix.getLength() : 0;
    }
    /// The same after `unindent`.
    static unsigned long outerDepthOf(const OCXmlWriterOutput& output) noexcept {
        const unsigned long depth = depthOf(output);
        return depth < indentation ? depth : depth - indentation;
    }

    void write() {
        for (unsigned long begin = 0; begin < count;) {
            const unsigned long rest = count - begin;
            const unsigned long found = kernels::findWideEither(text + begin, rest, L'\r', L'\n');
            const unsigned long length = found == kernels::notFound ? rest : found;
            writeLine(text + begin, length);
            begin += length + 1;
            if (begin < count && text[begin - 1] == L'\r' && text[begin] == L'\n')
                ++begin;
        }
    }
    void writeUncut() { writeLine(text, count); }

private:
    static constexpr unsigned long lineEndLength = 2;

    bool isWide() const noexcept { return output.encoding == XmlEncodingWide; }

    char* encode(char* to, const wchar_t* from, unsigned long length) const noexcept {
        if (isWide()) {
            std::memcpy(to, from, length * sizeof(wchar_t));
            return to + length * sizeof(wchar_t);
        }
        kernels::narrow(to, from, length);
        return to + length;
    }

    void writeLine(const wchar_t* from, unsigned long length) {
        // An empty line is not indented.
        char* const begin = length == 0 ? lineBegin : line;
        char* const end = encode(encode(lineBegin, from, length), L"\r\n", lineEndLength);
        output.stream.writeBuffer(begin, static_cast<unsigned long>(end - begin));
    }

    OCXmlWriterOutput& output;
    const wchar_t* text;
    unsigned long count;
    void* block;
    char* line;
    char* lineBegin; ///< behind the indentation, which is the same for all lines
    char local[1024];
};

} // namespace orvabase

using orvabase::XmlWriterLines;

OCXmlWriterOutput::~OCXmlWriterOutput() noexcept = default;

void OCXmlWriterOutput::indent() {
    if (indenting)
        prefix.append(L"  ", indentation);
}

void OCXmlWriterOutput::unindent() noexcept {
    if (indenting && prefix.getLength() >= indentation)
        prefix.setLength(prefix.getLength() - indentation);
}

void OCXmlWriterOutput::write(const OCWideString& text) {
    XmlWriterLines(*this, text, XmlWriterLines::depthOf(*this)).write();
}

void OCXmlWriterOutput::writeLine(const OCWideString& line) {
    XmlWriterLines(*this, line, XmlWriterLines::depthOf(*this)).writeUncut();
}

void OCXmlWriterOutput::writeEncoded(const OCWideString& text) {
    if (encoding == XmlEncodingWide)
        stream.writeBuffer(text.getString(), text.getLength() * sizeof(wchar_t));
    else
        OCStringUtilities::exportStream(OCAnsiString(text), stream);
}

OCXmlWriterElementAttribute::~OCXmlWriterElementAttribute() noexcept = default;

OCWideString OCXmlWriterElementAttribute::makeText() const {
    OCWideString text;
    text.setLength(textLength(*this));
    put(text.getString(), *this);
    return text;
}

OCXmlWriterElementAttributeList::~OCXmlWriterElementAttributeList() noexcept {
    destroy();
}

void OCXmlWriterElementAttributeList::addAttribute(const OCWideString& name,
                                                   const OCWideString& value) {
    std::unique_ptr<OCXmlWriterElementAttribute> attribute(new OCXmlWriterElementAttribute);
    attribute->setName(name);
    attribute->setValue(value);
    // Unlike an addition, a change of the count that is refused changes nothing.
    const unsigned long index = attributes.getCount();
    attributes.setCount(index + 1);
    attributes.setElement(index, *attribute.release());
}

OCWideString OCXmlWriterElementAttributeList::makeText() const {
    OCWideString text;
    text.setLength(textLength(*this));
    put(text.getString(), *this);
    return text;
}

void OCXmlWriterElementAttributeList::destroyAttributes() noexcept {
    for (unsigned int i = 0; i < getCount(); ++i)
        delete &getAttribute(i);
    attributes.assign(OCVector()); // needs no memory
}

OCXmlWriterElementStack::~OCXmlWriterElementStack() noexcept {
    clear();
}

void OCXmlWriterElementStack::push(const OCWideString& name) {
    std::unique_ptr<OCWideString> copy(new OCWideString(name));
    // Unlike an addition, a change of the count that is refused changes nothing.
    OCVector& vector = names.vector;
    const unsigned long index = vector.getCount();
    vector.setCount(index + 1);
    vector.setElement(index, *copy.release());
}

OCWideString OCXmlWriterElementStack::pop() {
    const std::unique_ptr<OCWideString> name(static_cast<OCWideString*>(&names.pop()));
    return std::move(*name);
}

void OCXmlWriterElementStack::clear() noexcept {
    for (unsigned long i = names.getCount(); i-- > 0;)
        delete &names.vector.getElement(i);
    names.assign(OCStack()); // needs no memory
}

OCXmlWriter::OCXmlWriter(OCXmlWriterOutput& target) : elementStack(nullptr), output(target) {
    try {
        initialize();
    } catch (...) {
        destroy();
        throw;
    }
}

OCXmlWriter::~OCXmlWriter() noexcept {
    destroy();
}

void OCXmlWriter::initialize() {
    initializeElementStack();
}

void OCXmlWriter::initializeElementStack() {
    OCXmlWriterElementStack* const made = new OCXmlWriterElementStack;
    destroyElementStack();
    elementStack = made;
}

void OCXmlWriter::destroy() noexcept {
    destroyElementStack();
}

void OCXmlWriter::destroyElementStack() noexcept {
    OCObjectDisposer disposer(elementStack);
    elementStack = nullptr;
}

void OCXmlWriter::xmlDeclaration() {
    OCXmlWriterElementAttributeList attributes;
    attributes.addAttribute(L"version", L"1.0");
    processingInstruction(L"xml", attributes);
}

void OCXmlWriter::processingInstruction(const OCWideString& target,
                                        const OCXmlWriterElementAttributeList& attributes) {
    output.write(makeTag(L"<?", target, attributes, L"?>"));
}

void OCXmlWriter::startElement(const OCWideString& name) {
    startElement(name, OCXmlWriterElementAttributeList());
}

void OCXmlWriter::startElement(const OCWideString& name,
                               const OCXmlWriterElementAttributeList& attributes) {
    const OCWideString tag = makeTag(L"<", name, attributes, L">");
    XmlWriterLines lines(output, tag, XmlWriterLines::depthOf(output));
    // What follows is indented first: it may need memory, and a refusal must come before the tag.
    const unsigned long depth = output.prefix.getLength();
    output.indent();
    try {
        elementStack->push(name);
        lines.write();
    } catch (...) {
        output.prefix.setLength(depth);
        throw;
    }
}

void OCXmlWriter::emptyElement(const OCWideString& name) {
    emptyElement(name, OCXmlWriterElementAttributeList());
}

void OCXmlWriter::emptyElement(const OCWideString& name,
                               const OCXmlWriterElementAttributeList& attributes) {
    output.write(makeTag(L"<", name, attributes, L"/>"));
}

void OCXmlWriter::endElement() {
    const OCWideString tag =
        makeTag(L"</", elementStack->top(), OCXmlWriterElementAttributeList(), L">");
    XmlWriterLines lines(output, tag, XmlWriterLines::outerDepthOf(output));
    elementStack->pop();
    output.unindent();
    lines.write();
}

void OCXmlWriter::closeElements() {
    while (!elementStack->isEmpty())
        endElement();
}

void OCXmlWriter::characterData(const OCWideString& text) {
    output.write(text);
}
