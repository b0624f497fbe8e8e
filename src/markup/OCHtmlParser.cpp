#include "OCHtmlParser.h"

#include "core/OCKernels.h"
#include "markup/HtmlGrammar.h"
#include "markup/MarkupReader.h"

using orvabase::HtmlCursor;
using orvabase::HtmlGrammar;
using orvabase::HtmlInput;

namespace {

using Operations = orvabase::MarkupReader<HtmlCursor>;

} // namespace

OCHtmlParserEvents::~OCHtmlParserEvents() = default;

void OCHtmlParserEvents::attribute(const OCAnsiString&, const OCAnsiString&) {}

void OCHtmlParserEvents::characterData(const OCAnsiString&) {}

void OCHtmlParserEvents::comment(const OCAnsiString&) {}

void OCHtmlParserEvents::documentEnd() {}

void OCHtmlParserEvents::documentStart() {}

void OCHtmlParserEvents::documentType(const OCAnsiString&) {}

void OCHtmlParserEvents::elementEnd(const OCAnsiString&) {}

void OCHtmlParserEvents::elementStart(const OCAnsiString&) {}

void OCHtmlParserEvents::elementStartComplete(const OCAnsiString&) {}

void OCHtmlParserEvents::error(OEHtmlErrorClass errorClass) {
    switch (errorClass) {
    case HtmlErrorAttributeMalformed:
        throw OXHtmlError_AttributeMalformed();
    case HtmlErrorCommentMalformed:
        throw OXHtmlError_CommentMalformed();
    case HtmlErrorElementEndMalformed:
        throw OXHtmlError_ElementEndMalformed();
    case HtmlErrorElementStartMalformed:
        throw OXHtmlError_ElementStartMalformed();
    case HtmlErrorNameMalformed:
        throw OXHtmlError_NameMalformed();
    case HtmlErrorDocumentTypeMalformed:
        break;
    }
    throw OXHtmlError_Unexpected();
}

void OCHtmlParserEvents::warning(OEHtmlWarningClass) {}

OCHtmlParserReader::~OCHtmlParserReader() noexcept = default;

bool OCHtmlParserReader::more() const {
    if (buffer.getLength() > 0)
        return true;
    const unsigned long position = stream.getPosition();
    return position < stream.getSize();
}

bool OCHtmlParserReader::growBuffer(unsigned long count) {
    if (buffer.getLength() >= count)
        return true;
    HtmlCursor cursor(*this, HtmlCursor::Shared);
    return cursor.need(count);
}

bool OCHtmlParserReader::peekCharacter(char c) {
    return growBuffer(1) && HtmlInput::fold(*buffer.getString()) == HtmlInput::fold(c);
}

bool OCHtmlParserReader::previewCharacter(char& c) {
    return Operations::preview(*this, buffer, c);
}

void OCHtmlParserReader::skipCharacter(char) {
    Operations::skip(*this, buffer, 1);
}

bool OCHtmlParserReader::peekString(const OCAnsiString& s) {
    const unsigned long length = s.getLength();
    return length > 0 && growBuffer(length) &&
           orvabase::kernels::mismatchFolded(buffer.getString(), s.getString(), length) == length;
}

void OCHtmlParserReader::skipString(const OCAnsiString& s) {
    if (s.getLength() > 0)
        Operations::skip(*this, buffer, s.getLength());
}

bool OCHtmlParserReader::findCharacterInternal(char c, OCAnsiString* skipped) {
    return Operations::find(*this, c, skipped);
}

bool OCHtmlParserReader::findStringInternal(const OCAnsiString& s, OCAnsiString* skipped) {
    return Operations::find(*this, s, skipped);
}

OCHtmlParser::~OCHtmlParser() noexcept = default;

void OCHtmlParser::parse(OCStream& stream) {
    OCHtmlParserReader reader(stream);
    HtmlGrammar(*this, reader, HtmlCursor::Private).parseDocument();
}

void OCHtmlParser::error(OEHtmlErrorClass errorClass) {
    if (!parserEvents)
        throw OXHtmlError_Unhandled();
    parserEvents->error(errorClass);
}

void OCHtmlParser::warning(OEHtmlWarningClass warningClass) {
    if (parserEvents)
        parserEvents->warning(warningClass);
}

void OCHtmlParser::parseDocument(OCHtmlParserReader& reader) {
    HtmlGrammar(*this, reader).parseDocument();
}

bool OCHtmlParser::possibleMiscellaneous(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleMiscellaneous();
}

bool OCHtmlParser::possibleCharacterData(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleCharacterData();
}

bool OCHtmlParser::possibleComment(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleComment();
}

bool OCHtmlParser::possibleCommentBegin(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleCommentBegin();
}

void OCHtmlParser::parseCommentContents(OCHtmlParserReader& reader) {
    HtmlGrammar(*this, reader).parseCommentContents();
}

void OCHtmlParser::parseCommentEnd(OCHtmlParserReader& reader) {
    HtmlGrammar(*this, reader).parseCommentEnd();
}

bool OCHtmlParser::possibleDocumentType(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleDocumentType();
}

bool OCHtmlParser::possibleDocumentTypeBegin(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleDocumentTypeBegin();
}

void OCHtmlParser::parseDocumentTypeContents(OCHtmlParserReader& reader) {
    HtmlGrammar(*this, reader).parseDocumentTypeContents();
}

void OCHtmlParser::parseDocumentTypeEnd(OCHtmlParserReader& reader) {
    HtmlGrammar(*this, reader).parseDocumentTypeEnd();
}

bool OCHtmlParser::possibleElement(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleElement();
}

bool OCHtmlParser::possibleElementEnd(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleElementEnd();
}

bool OCHtmlParser::possibleElementStart(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleElementStart();
}

bool OCHtmlParser::possibleElementStartBegin(OCHtmlParserReader& reader, OCAnsiString& name) {
    return HtmlGrammar(*this, reader).possibleElementStartBegin(name);
}

void OCHtmlParser::parseAttributeList(OCHtmlParserReader& reader) {
    HtmlGrammar(*this, reader).parseAttributeList();
}

void OCHtmlParser::parseElementStartEnd(OCHtmlParserReader& reader, const OCAnsiString& name) {
    HtmlGrammar(*this, reader).parseElementStartEnd(name);
}

void OCHtmlParser::parseElementStartEndContent(OCHtmlParserReader& reader,
                                               const OCAnsiString& name) {
    HtmlGrammar(*this, reader).parseElementStartEndContent(name);
}

void OCHtmlParser::parseElementStartEndEmpty(OCHtmlParserReader& reader, const OCAnsiString& name) {
    HtmlGrammar(*this, reader).parseElementStartEndEmpty(name);
}

bool OCHtmlParser::possibleAttribute(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleAttribute();
}

bool OCHtmlParser::possibleAttributeName(OCHtmlParserReader& reader, OCAnsiString& name) {
    return possibleName(reader, name);
}

void OCHtmlParser::parseAttributeValue(OCHtmlParserReader& reader, OCAnsiString& value) {
    HtmlGrammar(*this, reader).parseAttributeValue(value);
}

void OCHtmlParser::parseAttributeValueQuoted(OCHtmlParserReader& reader, OCAnsiString& value) {
    HtmlGrammar(*this, reader).parseAttributeValueQuoted(value);
}

void OCHtmlParser::parseAttributeValueSimple(OCHtmlParserReader& reader, OCAnsiString& value) {
    HtmlGrammar(*this, reader).parseAttributeValueSimple(value);
}

bool OCHtmlParser::possibleName(OCHtmlParserReader& reader, OCAnsiString& name) {
    // A name that a failing stream cuts off must not replace the caller's.
    OCAnsiString found;
    if (!HtmlGrammar(*this, reader).possibleName(found))
        return false;
    name = static_cast<OCAnsiString&&>(found);
    return true;
}

void OCHtmlParser::parseName(OCHtmlParserReader& reader, OCAnsiString& name) {
    if (!possibleName(reader, name))
        error(HtmlErrorNameMalformed);
}

bool OCHtmlParser::possibleWhiteSpace(OCHtmlParserReader& reader) {
    return HtmlGrammar(*this, reader).possibleWhiteSpace();
}

OXHtml::OXHtml() = default;
OXHtml::~OXHtml() noexcept = default;

OXHtmlError::OXHtmlError() = default;
OXHtmlError::~OXHtmlError() noexcept = default;

OXHtmlError_AttributeMalformed::OXHtmlError_AttributeMalformed() {
    setClass("OXHtmlError_AttributeMalformed");
    setMessage("Malformed attribute");
}
OXHtmlError_AttributeMalformed::~OXHtmlError_AttributeMalformed() noexcept = default;

OXHtmlError_CommentMalformed::OXHtmlError_CommentMalformed() {
    setClass("OXHtmlError_CommentMalformed");
    setMessage("Malformed comment");
}
OXHtmlError_CommentMalformed::~OXHtmlError_CommentMalformed() noexcept = default;

OXHtmlError_DocumentTypeMalformed::OXHtmlError_DocumentTypeMalformed() {
    setClass("OXHtmlError_DocumentTypeMalformed");
    setMessage("Malformed document type");
}
OXHtmlError_DocumentTypeMalformed::~OXHtmlError_DocumentTypeMalformed() noexcept = default;

OXHtmlError_ElementEndMalformed::OXHtmlError_ElementEndMalformed() {
    setClass("OXHtmlError_ElementEndMalformed");
    setMessage("Malformed end of element");
}
OXHtmlError_ElementEndMalformed::~OXHtmlError_ElementEndMalformed() noexcept = default;

OXHtmlError_ElementStartMalformed::OXHtmlError_ElementStartMalformed() {
    setClass("OXHtmlError_ElementStartMalformed");
    setMessage("Malformed start of element");
}
OXHtmlError_ElementStartMalformed::~OXHtmlError_ElementStartMalformed() noexcept = default;

OXHtmlError_NameMalformed::OXHtmlError_NameMalformed() {
    setClass("OXHtmlError_NameMalformed");
    setMessage("Malformed name");
}
OXHtmlError_NameMalformed::~OXHtmlError_NameMalformed() noexcept = default;

OXHtmlError_Unhandled::OXHtmlError_Unhandled() {
    setClass("OXHtmlError_Unhandled");
    setMessage("Unhandled error");
}
OXHtmlError_Unhandled::~OXHtmlError_Unhandled() noexcept = default;

OXHtmlError_Unexpected::OXHtmlError_Unexpected() {
    setClass("OXHtmlError_Unexpected");
    setMessage("Unexpected error");
}
OXHtmlError_Unexpected::~OXHtmlError_Unexpected() noexcept = default;
