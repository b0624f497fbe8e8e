#include "OCXmlParserReader.h"

#include "core/OCKernels.h"
#include "markup/MarkupReader.h"
#include "markup/XmlCursor.h"

using orvabase::XmlCursor;

namespace {

using Operations = orvabase::MarkupReader<XmlCursor>;

} // namespace

OCXmlParserSource::~OCXmlParserSource() noexcept = default;

bool OCXmlParserSource::more() const {
    const unsigned long position = stream.getPosition();
    return position < stream.getSize();
}

OCWideString OCXmlParserSource::readString(unsigned long count) {
    OCWideString text;
    unsigned long remaining = count;
    while (remaining > 0) {
        bool read = false;
        if (encoding == XmlEncodingAnsi)
            read = readStringAnsi(text, remaining);
        else if (encoding == XmlEncodingWide)
            read = readStringWide(text, remaining);
        if (!read)
            break;
    }
    return text;
}

bool OCXmlParserSource::readStringAnsi(OCWideString& text, unsigned long& remaining) {
    char small[XmlCursor::batch];
    OCAnsiString large;
    char* bytes = small;
    if (remaining > sizeof small) {
        large.setLength(remaining);
        bytes = large.getString();
    }
    unsigned long count = remaining;
    if (!stream.read(bytes, count))
        return false;
    if (count > remaining)
        count = remaining;
    const unsigned long length = text.getLength();
    text.setLength(length + count);
    orvabase::kernels::widen(text.getString() + length, bytes, count);
    const bool delivered = count > 0 || remaining == 0;
    remaining -= count;
    return delivered;
}

bool OCXmlParserSource::readStringWide(OCWideString& text, unsigned long& remaining) {
    OCWideString characters;
    characters.setLength(remaining);
    unsigned long count = remaining * sizeof(wchar_t);
    if (!stream.read(characters.getString(), count))
        return false;
    if (count % sizeof(wchar_t) != 0)
        throw OXXmlParserSource_CharacterTruncated();
    count /= sizeof(wchar_t);
    if (count > remaining)
        count = remaining;
    text.append(characters.getString(), count);
    const bool delivered = count > 0 || remaining == 0;
    remaining -= count;
    return delivered;
}

OCXmlParserReader::~OCXmlParserReader() noexcept = default;

bool OCXmlParserReader::growBuffer(unsigned long count) {
    if (buffer.getLength() >= count)
        return true;
    buffer.append(source.readString(count > XmlCursor::batch ? count : XmlCursor::batch));
    return buffer.getLength() >= count;
}

bool OCXmlParserReader::peekCharacter(wchar_t c) {
    return growBuffer(1) && *buffer.getString() == c;
}

bool OCXmlParserReader::previewCharacter(wchar_t& c) {
    return Operations::preview(*this, buffer, c);
}

void OCXmlParserReader::skipCharacter(wchar_t) {
    Operations::skip(*this, buffer, 1);
}

bool OCXmlParserReader::peekString(const OCWideString& s) {
    const unsigned long length = s.getLength();
    return length > 0 && growBuffer(length) &&
           orvabase::kernels::mismatchWide(buffer.getString(), s.getString(), length) == length;
}

void OCXmlParserReader::skipString(const OCWideString& s) {
    if (s.getLength() > 0)
        Operations::skip(*this, buffer, s.getLength());
}

bool OCXmlParserReader::findCharacterInternal(wchar_t c, OCWideString* skipped) {
    return Operations::find(*this, c, skipped);
}

bool OCXmlParserReader::findStringInternal(const OCWideString& s, OCWideString* skipped) {
    return Operations::find(*this, s, skipped);
}

OXXmlParser::OXXmlParser() = default;
OXXmlParser::~OXXmlParser() noexcept = default;

OXXmlParserSource::OXXmlParserSource() = default;
OXXmlParserSource::~OXXmlParserSource() noexcept = default;

OXXmlParserSource_CharacterTruncated::OXXmlParserSource_CharacterTruncated() {
    setClass("OXXmlParserSource_CharacterTruncated");
    setMessage("Truncated XML character");
}
OXXmlParserSource_CharacterTruncated::~OXXmlParserSource_CharacterTruncated() noexcept = default;
