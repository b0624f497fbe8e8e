#include "OCXmlParser.h"

#include "OCFileStream.h"
#include "OCMemory.h"
#include "markup/XmlGrammar.h"

using orvabase::XmlCursor;
using orvabase::XmlGrammar;

namespace {

/// A file that is read ahead in large blocks, as nobody else sees the stream. A question for the
/// position or the size still goes to the file, and a read fails only when everything before the
/// failure has been delivered.
class ReadAheadStream : public OCFileStream {
public:
    explicit ReadAheadStream(const OCFilePath& filePath)
        : OCFileStream(filePath, FileCreateModeRead, FileShareModeRead), block(nullptr), next(0),
          count(0) {
        stringAllocate(block, blockSize);
    }
    ReadAheadStream(const ReadAheadStream&) = delete;
    ReadAheadStream& operator=(const ReadAheadStream&) = delete;
    ~ReadAheadStream() noexcept override { stringRelease(block); }

    bool read(void* buffer, unsigned long& size) override {
        if (next == count) {
            unsigned long filled = blockSize;
            next = count = 0;
            if (!OCFileStream::read(block, filled))
                return false;
            count = filled;
        }
        if (size > count - next)
            size = count - next;
        memoryCopy(buffer, block + next, size);
        next += size;
        return true;
    }

    unsigned long seek(long offset, OEStreamSeek origin) override {
        const unsigned long ahead = count - next;
        if (origin == StreamSeekCurrent && offset == 0)
            return OCFileStream::seek(0, StreamSeekCurrent) - ahead;
        const long back = origin == StreamSeekCurrent ? static_cast<long>(ahead) : 0;
        const unsigned long position = OCFileStream::seek(offset - back, origin);
        next = count = 0;
        return position;
    }

private:
    static constexpr unsigned long blockSize = 65536;

    char* block;
    unsigned long next;
    unsigned long count;
};

} // namespace

OCXmlEvents::~OCXmlEvents() = default;

void OCXmlEvents::attribute(const OCWideString&, const OCWideString&) {}

void OCXmlEvents::characterData(const OCWideString&) {}

void OCXmlEvents::documentEnd() {}

void OCXmlEvents::documentStart() {}

void OCXmlEvents::elementEnd() {}

void OCXmlEvents::elementStart(const OCWideString&) {}

void OCXmlEvents::error(OEXmlParserErrorClass errorClass) {
    switch (errorClass) {
    case XmlParserErrorAttributeDefinitionMalformed:
        throw OXXmlParser_AttributeDefinitionMalformed();
    case XmlParserErrorAttributeListDeclarationMalformed:
        throw OXXmlParser_AttributeListDeclarationMalformed();
    case XmlParserErrorAttributeMalformed:
        throw OXXmlParser_AttributeMalformed();
    case XmlParserErrorAttributeTypeMalformed:
        throw OXXmlParser_AttributeTypeMalformed();
    case XmlParserErrorAttributeValueMalformed:
        throw OXXmlParser_AttributeValueMalformed();
    case XmlParserErrorCdataSectionMalformed:
        throw OXXmlParser_CdataSectionMalformed();
    case XmlParserErrorCommentMalformed:
        throw OXXmlParser_CommentMalformed();
    case XmlParserErrorContentMalformed:
        throw OXXmlParser_ContentMalformed();
    case XmlParserErrorContentSpecificationMalformed:
        throw OXXmlParser_ContentSpecificationMalformed();
    case XmlParserErrorDefaultDeclarationMalformed:
        throw OXXmlParser_DefaultDeclarationMalformed();
    case XmlParserErrorDocumentTypeDeclarationMalformed:
        throw OXXmlParser_DocumentTypeDeclarationMalformed();
    case XmlParserErrorElementDeclarationMalformed:
        throw OXXmlParser_ElementDeclarationMalformed();
    case XmlParserErrorElementMalformed:
        throw OXXmlParser_ElementMalformed();
    case XmlParserErrorEntityDeclarationMalformed:
        throw OXXmlParser_EntityDeclarationMalformed();
    case XmlParserErrorEntityValueMalformed:
        throw OXXmlParser_EntityValueMalformed();
    case XmlParserErrorNameMalformed:
        throw OXXmlParser_NameMalformed();
    case XmlParserErrorNotationDataDeclarationMalformed:
        throw OXXmlParser_NotationDataDeclarationMalformed();
    case XmlParserErrorNotationDeclarationMalformed:
        throw OXXmlParser_NotationDeclarationMalformed();
    case XmlParserErrorParameterEntityReferenceMalformed:
        throw OXXmlParser_ParameterEntityReferenceMalformed();
    case XmlParserErrorProcessingInstructionMalformed:
        throw OXXmlParser_ProcessingInstructionMalformed();
    case XmlParserErrorPublicIdentifierMalformed:
        throw OXXmlParser_PublicIdentifierMalformed();
    case XmlParserErrorSystemIdentifierMalformed:
        throw OXXmlParser_SystemIdentifierMalformed();
    case XmlParserErrorXmlDeclarationMalformed:
        throw OXXmlParser_XmlDeclarationMalformed();
    }
    throw OXXmlParser_UnexpectedError();
}

void OCXmlEvents::processingInstruction(const OCWideString&, const OCWideString&) {}

void OCXmlEvents::warning(OEXmlParserWarningClass) {}

OCXmlParser::~OCXmlParser() noexcept = default;

void OCXmlParser::parse(OCXmlParserReader& reader) {
    parseDocument(reader);
}

void OCXmlParser::parse(OCStream& stream) {
    OCXmlParserSource source(stream, XmlEncodingAnsi);
    OCXmlParserReader reader(source);
    XmlGrammar(*this, reader, XmlCursor::Private).parseDocument();
}

void OCXmlParser::parse(const OCFilePath& path) {
    ReadAheadStream stream(path);
    parse(stream);
}

void OCXmlParser::error(OEXmlParserErrorClass errorClass) {
    if (!events)
        throw OXXmlParser_UnhandledError();
    events->error(errorClass);
}

void OCXmlParser::parseDocument(OCXmlParserReader& reader) {
    XmlGrammar(*this, reader).parseDocument();
}

void OCXmlParser::parseProlog(OCXmlParserReader& reader) {
    XmlGrammar(*this, reader).parseProlog();
}

bool OCXmlParser::possibleXmlDeclaration(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleXmlDeclaration();
}

bool OCXmlParser::possibleMiscellaneous(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleMiscellaneous();
}

bool OCXmlParser::possibleDocumentTypeDeclaration(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleDocumentTypeDeclaration();
}

void OCXmlParser::parseElement(OCXmlParserReader& reader) {
    XmlGrammar(*this, reader).parseElement();
}

bool OCXmlParser::possibleElement(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleElement();
}

bool OCXmlParser::possibleElementStart(OCXmlParserReader& reader, OCWideString& name, bool& empty) {
    return XmlGrammar(*this, reader).possibleElementStart(name, empty);
}

void OCXmlParser::parseElementEnd(OCXmlParserReader& reader, const OCWideString& name) {
    XmlGrammar(*this, reader).parseElementEnd(name.getString(), name.getLength());
}

void OCXmlParser::parseContent(OCXmlParserReader& reader) {
    XmlGrammar(*this, reader).parseContent();
}

bool OCXmlParser::possibleCdataSection(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleCdataSection();
}

bool OCXmlParser::possibleComment(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleComment();
}

bool OCXmlParser::possibleProcessingInstruction(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleProcessingInstruction();
}

bool OCXmlParser::possibleCharacterData(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleCharacterData();
}

bool OCXmlParser::possibleAttribute(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleAttribute();
}

bool OCXmlParser::possibleAttributeValue(OCXmlParserReader& reader, OCWideString& value) {
    return XmlGrammar(*this, reader).possibleAttributeValue(&value, value.getLength());
}

void OCXmlParser::parseAttributeValue(OCXmlParserReader& reader, OCWideString& value) {
    XmlGrammar(*this, reader).parseAttributeValue(&value, value.getLength());
}

bool OCXmlParser::possibleName(OCXmlParserReader& reader, OCWideString& name) {
    // A name that a failing stream cuts off must not replace the caller's.
    OCWideString found;
    if (!XmlGrammar(*this, reader).possibleName(found))
        return false;
    name = static_cast<OCWideString&&>(found);
    return true;
}

void OCXmlParser::parseName(OCXmlParserReader& reader, OCWideString& name) {
    if (!possibleName(reader, name))
        error(XmlParserErrorNameMalformed);
}

bool OCXmlParser::possibleWhiteSpace(OCXmlParserReader& reader) {
    return XmlGrammar(*this, reader).possibleWhiteSpace();
}

OXXmlParser_AttributeDefinitionMalformed::OXXmlParser_AttributeDefinitionMalformed() {
    setClass("OXXmlParser_AttributeDefinitionMalformed");
    setMessage("Malformed XML attribute definition");
}
OXXmlParser_AttributeDefinitionMalformed::~OXXmlParser_AttributeDefinitionMalformed() noexcept =
    default;

OXXmlParser_AttributeListDeclarationMalformed::OXXmlParser_AttributeListDeclarationMalformed() {
    setClass("OXXmlParser_AttributeListDeclarationMalformed");
    setMessage("Malformed XML attribute list declaration");
}
OXXmlParser_AttributeListDeclarationMalformed::
    ~OXXmlParser_AttributeListDeclarationMalformed() noexcept = default;

OXXmlParser_AttributeMalformed::OXXmlParser_AttributeMalformed() {
    setClass("OXXmlParser_AttributeMalformed");
    setMessage("Malformed XML attribute");
}
OXXmlParser_AttributeMalformed::~OXXmlParser_AttributeMalformed() noexcept = default;

OXXmlParser_AttributeTypeMalformed::OXXmlParser_AttributeTypeMalformed() {
    setClass("OXXmlParser_AttributeTypeMalformed");
    setMessage("Malformed XML attribute type");
}
OXXmlParser_AttributeTypeMalformed::~OXXmlParser_AttributeTypeMalformed() noexcept = default;

OXXmlParser_AttributeValueMalformed::OXXmlParser_AttributeValueMalformed() {
    setClass("OXXmlParser_AttributeValueMalformed");
    setMessage("Malformed XML attribute value");
}
OXXmlParser_AttributeValueMalformed::~OXXmlParser_AttributeValueMalformed() noexcept = default;

OXXmlParser_CdataSectionMalformed::OXXmlParser_CdataSectionMalformed() {
    setClass("OXXmlParser_CdataSectionMalformed");
    setMessage("Malformed XML CDATA section");
}
OXXmlParser_CdataSectionMalformed::~OXXmlParser_CdataSectionMalformed() noexcept = default;

OXXmlParser_CommentMalformed::OXXmlParser_CommentMalformed() {
    setClass("OXXmlParser_CommentMalformed");
    setMessage("Malformed XML comment");
}
OXXmlParser_CommentMalformed::~OXXmlParser_CommentMalformed() noexcept = default;

OXXmlParser_ContentMalformed::OXXmlParser_ContentMalformed() {
    setClass("OXXmlParser_ContentMalformed");
    setMessage("Malformed XML content");
}
OXXmlParser_ContentMalformed::~OXXmlParser_ContentMalformed() noexcept = default;

OXXmlParser_ContentSpecificationMalformed::OXXmlParser_ContentSpecificationMalformed() {
    setClass("OXXmlParser_ContentSpecificationMalformed");
    setMessage("Malformed XML content specification");
}
OXXmlParser_ContentSpecificationMalformed::~OXXmlParser_ContentSpecificationMalformed() noexcept =
    default;

OXXmlParser_DefaultDeclarationMalformed::OXXmlParser_DefaultDeclarationMalformed() {
    setClass("OXXmlParser_DefaultDeclarationMalformed");
    setMessage("Malformed XML default declaration");
}
OXXmlParser_DefaultDeclarationMalformed::~OXXmlParser_DefaultDeclarationMalformed() noexcept =
    default;

OXXmlParser_DocumentTypeDeclarationMalformed::OXXmlParser_DocumentTypeDeclarationMalformed() {
    setClass("OXXmlParser_DocumentTypeDeclarationMalformed");
    setMessage("Malformed XML document type declaration");
}
OXXmlParser_DocumentTypeDeclarationMalformed::
    ~OXXmlParser_DocumentTypeDeclarationMalformed() noexcept = default;

OXXmlParser_ElementDeclarationMalformed::OXXmlParser_ElementDeclarationMalformed() {
    setClass("OXXmlParser_ElementDeclarationMalformed");
    setMessage("Malformed XML element declaration");
}
OXXmlParser_ElementDeclarationMalformed::~OXXmlParser_ElementDeclarationMalformed() noexcept =
    default;

OXXmlParser_ElementMalformed::OXXmlParser_ElementMalformed() {
    setClass("OXXmlParser_ElementMalformed");
    setMessage("Malformed XML element");
}
OXXmlParser_ElementMalformed::~OXXmlParser_ElementMalformed() noexcept = default;

OXXmlParser_EntityDeclarationMalformed::OXXmlParser_EntityDeclarationMalformed() {
    setClass("OXXmlParser_EntityDeclarationMalformed");
    setMessage("Malformed XML entity declaration");
}
OXXmlParser_EntityDeclarationMalformed::~OXXmlParser_EntityDeclarationMalformed() noexcept =
    default;

OXXmlParser_EntityValueMalformed::OXXmlParser_EntityValueMalformed() {
    setClass("OXXmlParser_EntityValueMalformed");
    setMessage("Malformed XML entity value");
}
OXXmlParser_EntityValueMalformed::~OXXmlParser_EntityValueMalformed() noexcept = default;

OXXmlParser_NameMalformed::OXXmlParser_NameMalformed() {
    setClass("OXXmlParser_NameMalformed");
    setMessage("Malformed XML name");
}
OXXmlParser_NameMalformed::~OXXmlParser_NameMalformed() noexcept = default;

OXXmlParser_NotationDataDeclarationMalformed::OXXmlParser_NotationDataDeclarationMalformed() {
    setClass("OXXmlParser_NotationDataDeclarationMalformed");
    setMessage("Malformed XML notation data declaration");
}
OXXmlParser_NotationDataDeclarationMalformed::
    ~OXXmlParser_NotationDataDeclarationMalformed() noexcept = default;

OXXmlParser_NotationDeclarationMalformed::OXXmlParser_NotationDeclarationMalformed() {
    setClass("OXXmlParser_NotationDeclarationMalformed");
    setMessage("Malformed XML notation declaration");
}
OXXmlParser_NotationDeclarationMalformed::~OXXmlParser_NotationDeclarationMalformed() noexcept =
    default;

OXXmlParser_ParameterEntityReferenceMalformed::OXXmlParser_ParameterEntityReferenceMalformed() {
    setClass("OXXmlParser_ParameterEntityReferenceMalformed");
    setMessage("Malformed XML parameter entity reference");
}
OXXmlParser_ParameterEntityReferenceMalformed::
    ~OXXmlParser_ParameterEntityReferenceMalformed() noexcept = default;

OXXmlParser_ProcessingInstructionMalformed::OXXmlParser_ProcessingInstructionMalformed() {
    setClass("OXXmlParser_ProcessingInstructionMalformed");
    setMessage("Malformed XML processing instruction");
}
OXXmlParser_ProcessingInstructionMalformed::~OXXmlParser_ProcessingInstructionMalformed() noexcept =
    default;

OXXmlParser_PublicIdentifierMalformed::OXXmlParser_PublicIdentifierMalformed() {
    setClass("OXXmlParser_PublicIdentifierMalformed");
    setMessage("Malformed XML public identifier");
}
OXXmlParser_PublicIdentifierMalformed::~OXXmlParser_PublicIdentifierMalformed() noexcept = default;

OXXmlParser_SystemIdentifierMalformed::OXXmlParser_SystemIdentifierMalformed() {
    setClass("OXXmlParser_SystemIdentifierMalformed");
    setMessage("Malformed XML system identifier");
}
OXXmlParser_SystemIdentifierMalformed::~OXXmlParser_SystemIdentifierMalformed() noexcept = default;

OXXmlParser_XmlDeclarationMalformed::OXXmlParser_XmlDeclarationMalformed() {
    setClass("OXXmlParser_XmlDeclarationMalformed");
    setMessage("Malformed XML declaration");
}
OXXmlParser_XmlDeclarationMalformed::~OXXmlParser_XmlDeclarationMalformed() noexcept = default;

OXXmlParser_UnexpectedError::OXXmlParser_UnexpectedError() {
    setClass("OXXmlParser_UnexpectedError");
    setMessage("Unexpected XML error");
}
OXXmlParser_UnexpectedError::~OXXmlParser_UnexpectedError() noexcept = default;

OXXmlParser_UnhandledError::OXXmlParser_UnhandledError() {
    setClass("OXXmlParser_UnhandledError");
    setMessage("Unhandled XML error");
}
OXXmlParser_UnhandledError::~OXXmlParser_UnhandledError() noexcept = default;
