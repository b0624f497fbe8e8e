#ifndef ORVABASE_TESTS_XMLMODEL_H
#define ORVABASE_TESTS_XMLMODEL_H

// A second XML parser, written as plainly as possible: one character at a time, by recursion, over
// a buffer that loses each character when it is consumed. The tests and the fuzz target hold the
// library's parser against it: the same events in the same order, between the same calls on the
// stream.

#include "OCDtdParser.h"
#include "OCXmlParser.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <functional>
#include <string>
#include <vector>

namespace xmlmodel {

/// What happened, in order: events, errors, calls on the stream, the exception at the end.
using Log = std::vector<std::string>;

inline std::string printable(const wchar_t* text, unsigned long count) {
    std::string result;
    for (unsigned long i = 0; i < count; ++i)
        if (text[i] >= 32 && text[i] < 127 && text[i] != L'\\')
            result += static_cast<char>(text[i]);
        else if (text[i] == L'\n')
            result += "\\n";
        else
            result += "\\" + std::to_string(static_cast<int>(text[i])) + ";";
    return result;
}
inline std::string printable(const OCWideString& text) {
    return printable(text.getString(), text.getLength());
}
inline std::string printable(const std::wstring& text) {
    return printable(text.data(), text.size());
}

/// What a stream or an events object of the tests throws.
struct Interruption {
    std::string reason;
};

/// A stream over bytes that writes every call to a log and can deliver less than is asked for.
class LoggingStream : public OCStream {
public:
    explicit LoggingStream(std::string content, Log* target = nullptr)
        : data(std::move(content)), log(target) {}

    /// The most that one read delivers.
    unsigned long portion = ~0UL;
    /// The call, counted from 0, that throws instead.
    unsigned long failingCall = ~0UL;
    std::string data;
    unsigned long position = 0;

    bool read(void* buffer, unsigned long& count) override {
        note("read " + std::to_string(count));
        const unsigned long n =
            std::min({count, portion, static_cast<unsigned long>(data.size()) - position});
        if (n == 0)
            return count == 0;
        std::memcpy(buffer, data.data() + position, n);
        position += n;
        count = n;
        return true;
    }
    unsigned long seek(long offset, OEStreamSeek origin) override {
        note("seek " + std::to_string(offset) + " " + std::to_string(int(origin)));
        const unsigned long base = origin == StreamSeekBeginning ? 0
                                   : origin == StreamSeekCurrent ? position
                                                                 : data.size();
        return position = base + static_cast<unsigned long>(offset);
    }
    void setSize(unsigned long) override { note("setSize"); }
    bool write(const void*, unsigned long&) override {
        note("write");
        return false;
    }

private:
    void note(const std::string& call) {
        if (log)
            log->push_back(call);
        if (calls++ == failingCall)
            throw Interruption{"stream"};
    }

    Log* log;
    unsigned long calls = 0;
};

/// Writes every event to a log.
class LoggingEvents : public OCXmlEvents {
public:
    explicit LoggingEvents(Log& target) : log(target) {}

    /// Whether a reported error lets the parse go on.
    bool errorsReturn = false;
    /// The event, counted from 0, that throws instead.
    unsigned long failingEvent = ~0UL;
    /// Run at each event, with the event's text.
    std::function<void(const std::string&)> at;

    void attribute(const OCWideString& name, const OCWideString& value) override {
        note("attribute " + printable(name) + "=" + printable(value));
    }
    void characterData(const OCWideString& text) override { note("text " + printable(text)); }
    void documentEnd() override { note("documentEnd"); }
    void documentStart() override { note("documentStart"); }
    void elementEnd() override { note("elementEnd"); }
    void elementStart(const OCWideString& name) override {
        note("elementStart " + printable(name));
    }
    void error(OEXmlParserErrorClass errorClass) override {
        note("error " + std::to_string(int(errorClass)));
        if (!errorsReturn)
            OCXmlEvents::error(errorClass);
    }
    void processingInstruction(const OCWideString& target, const OCWideString& data) override {
        note("instruction " + printable(target) + "|" + printable(data));
    }
    void warning(OEXmlParserWarningClass) override { note("warning"); }

private:
    void note(const std::string& event) {
        log.push_back(event);
        if (at)
            at(event);
        if (events++ == failingEvent)
            throw Interruption{"event"};
    }

    Log& log;
    unsigned long events = 0;
};

/// Runs `operation` and logs what it throws.
template<typename Operation>
void logged(Log& log, Operation operation) {
    try {
        operation();
    } catch (const OXException& failure) {
        log.push_back(std::string("thrown ") + failure.getClass().getString() + ": " +
                      failure.getMessage().getString());
    } catch (const Interruption& failure) {
        log.push_back("thrown by the " + failure.reason);
    }
}

class Reader {
public:
    Reader(OCStream& input, OEXmlEncoding inputEncoding) : stream(input), encoding(inputEncoding) {}

    bool more() {
        if (!buffer.empty())
            return true;
        const unsigned long position = stream.getPosition();
        return position < stream.getSize();
    }
    bool growBuffer(unsigned long count) {
        if (buffer.size() >= count)
            return true;
        buffer += readString(std::max(count, 128UL));
        return buffer.size() >= count;
    }
    bool peekCharacter(wchar_t c) { return growBuffer(1) && buffer[0] == c; }
    bool previewCharacter(wchar_t& c) {
        if (!growBuffer(1))
            return false;
        c = buffer[0];
        return true;
    }
    void skipCharacter(wchar_t) {
        if (growBuffer(1))
            buffer.erase(0, 1);
        else
            buffer.clear();
    }
    bool peekString(const std::wstring& s) {
        return !s.empty() && growBuffer(s.size()) && buffer.compare(0, s.size(), s) == 0;
    }
    void skipString(const std::wstring& s) {
        if (growBuffer(s.size()))
            buffer.erase(0, s.size());
        else
            buffer.clear();
    }
    bool findCharacter(wchar_t c, std::wstring* skipped) {
        for (;;) {
            if (!growBuffer(1))
                return false;
            if (buffer[0] == c)
                return true;
            const std::size_t i = buffer.find(c, 1);
            if (i != std::wstring::npos) {
                if (skipped)
                    *skipped += buffer.substr(0, i);
                buffer.erase(0, i);
                return true;
            }
            if (skipped)
                *skipped += buffer;
            buffer.clear();
        }
    }
    bool findString(const std::wstring& s, std::wstring* skipped) {
        if (s.empty())
            return false;
        for (;;) {
            if (!findCharacter(s[0], skipped))
                return false;
            if (peekString(s))
                return true;
            if (skipped)
                *skipped += s[0];
            skipCharacter(s[0]);
        }
    }

private:
    std::wstring readString(unsigned long count) {
        std::wstring result;
        unsigned long remaining = count;
        while (remaining > 0) {
            if (encoding == XmlEncodingAnsi) {
                std::string bytes(remaining, '\0');
                unsigned long size = remaining;
                if (!stream.read(bytes.data(), size))
                    break;
                for (unsigned long i = 0; i < size; ++i)
                    result += static_cast<wchar_t>(static_cast<signed char>(bytes[i]));
                remaining -= size;
            } else if (encoding == XmlEncodingWide) {
                std::wstring characters(remaining, L'\0');
                unsigned long size = remaining * 4;
                if (!stream.read(characters.data(), size))
                    break;
                if (size % 4 != 0)
                    throw OXXmlParserSource_CharacterTruncated();
                result.append(characters, 0, size / 4);
                remaining -= size / 4;
            } else
                break;
        }
        return result;
    }

    OCStream& stream;
    OEXmlEncoding encoding;
    std::wstring buffer;
};

class Parser {
public:
    Parser(Reader& input, OCXmlEvents* target) : reader(input), events(target) {}

    void parseDocument() {
        if (events)
            events->documentStart();
        parseProlog();
        parseElement();
        while (possibleMiscellaneous()) {
        }
        if (events)
            events->documentEnd();
    }

private:
    static OCWideString wide(const std::wstring& text) {
        return OCWideString(text.data(), text.size());
    }
    bool accept(const wchar_t* text) {
        if (!reader.peekString(text))
            return false;
        reader.skipString(text);
        return true;
    }
    bool acceptCharacter(wchar_t c) {
        if (!reader.peekCharacter(c))
            return false;
        reader.skipCharacter(c);
        return true;
    }
    void error(OEXmlParserErrorClass errorClass) {
        if (!events)
            throw OXXmlParser_UnhandledError();
        events->error(errorClass);
    }
    bool failed(OEXmlParserErrorClass errorClass) {
        error(errorClass);
        return false;
    }

    void parseProlog() {
        possibleXmlDeclaration();
        possibleMiscellaneous();
        possibleDocumentTypeDeclaration();
        possibleMiscellaneous();
    }
    bool possibleXmlDeclaration() {
        if (!accept(L"<?xml"))
            return false;
        if (!reader.findString(L"?>", nullptr))
            return failed(XmlParserErrorXmlDeclarationMalformed);
        reader.skipString(L"?>");
        return true;
    }
    bool possibleMiscellaneous() {
        bool any = false;
        bool matched = true;
        while (matched && reader.more()) {
            const bool comment = possibleComment();
            const bool instruction = possibleProcessingInstruction();
            const bool space = possibleWhiteSpace();
            matched = comment || instruction || space;
            any = any || matched;
        }
        return any;
    }
    void parseElement() {
        if (!possibleElement())
            error(XmlParserErrorElementMalformed);
    }
    bool possibleElement() {
        std::wstring name;
        bool empty = false;
        if (!possibleElementStart(name, empty))
            return false;
        if (!empty) {
            parseContent();
            parseElementEnd(name);
        }
        if (events)
            events->elementEnd();
        return true;
    }
    bool possibleElementStart(std::wstring& name, bool& empty) {
        if (!accept(L"<"))
            return false;
        parseName(name);
        if (events)
            events->elementStart(wide(name));
        while (possibleWhiteSpace() && possibleAttribute()) {
        }
        if (accept(L">")) {
            empty = false;
            return true;
        }
        if (accept(L"/>")) {
            empty = true;
            return true;
        }
        return failed(XmlParserErrorElementMalformed);
    }
    void parseElementEnd(const std::wstring& name) {
        if (!accept(L"</")) {
            error(XmlParserErrorElementMalformed);
            return;
        }
        std::wstring end;
        parseName(end);
        if (end != name) {
            error(XmlParserErrorElementMalformed);
            return;
        }
        possibleWhiteSpace();
        if (!accept(L">"))
            error(XmlParserErrorElementMalformed);
    }
    void parseContent() {
        while (!reader.peekString(L"</"))
            if (!possibleCdataSection() && !possibleComment() && !possibleProcessingInstruction() &&
                !possibleElement() && !possibleCharacterData()) {
                error(XmlParserErrorContentMalformed);
                return;
            }
    }
    bool possibleCdataSection() {
        if (!accept(L"<![CDATA["))
            return false;
        std::wstring text;
        if (!reader.findString(L"]]>", &text))
            return failed(XmlParserErrorCdataSectionMalformed);
        reader.skipString(L"]]>");
        if (events)
            events->characterData(wide(text));
        return true;
    }
    bool possibleComment() {
        if (!accept(L"<!--"))
            return false;
        if (!reader.findString(L"-->", nullptr))
            return failed(XmlParserErrorCommentMalformed);
        reader.skipString(L"-->");
        return true;
    }
    bool possibleProcessingInstruction() {
        if (!accept(L"<?"))
            return false;
        std::wstring target;
        std::wstring data;
        parseName(target);
        if (possibleWhiteSpace())
            reader.findString(L"?>", &data);
        if (!accept(L"?>"))
            return failed(XmlParserErrorProcessingInstructionMalformed);
        if (events)
            events->processingInstruction(wide(target), wide(data));
        return true;
    }
    bool possibleCharacterData() {
        std::wstring text;
        reader.findCharacter(L'<', &text);
        // cppcheck-suppress knownConditionTrueFalse; the reader fills the text
        if (text.empty())
            return false;
        if (events)
            events->characterData(wide(text));
        return true;
    }
    bool possibleAttribute() {
        std::wstring name;
        std::wstring value;
        if (!possibleName(name))
            return false;
        if (!acceptCharacter(L'='))
            return failed(XmlParserErrorAttributeMalformed);
        if (!possibleAttributeValue(value))
            return failed(XmlParserErrorAttributeMalformed);
        if (events)
            events->attribute(wide(name), wide(value));
        return true;
    }
    /// 0 when there is none, 1 when it is not closed, 2 when it is.
    int quoted() {
        wchar_t quote = 0;
        if (!reader.previewCharacter(quote) || (quote != L'\'' && quote != L'"'))
            return 0;
        reader.skipCharacter(quote);
        literalText.clear();
        wchar_t c = 0;
        while (reader.previewCharacter(c)) {
            reader.skipCharacter(c);
            if (c == quote)
                return 2;
            literalText += c;
        }
        return 1;
    }
    bool possibleAttributeValue(std::wstring& found) {
        const int closed = quoted();
        found = literalText;
        if (closed == 1)
            error(XmlParserErrorAttributeValueMalformed);
        return closed == 2;
    }
    static bool isWhite(wchar_t c) { return c <= 32; }
    static bool isName(wchar_t c) { return c > 32 && !std::wcschr(L"()*+/=>?[", c); }
    bool possibleName(std::wstring& name) {
        std::wstring found;
        wchar_t c = 0;
        while (reader.previewCharacter(c) && isName(c)) {
            found += c;
            reader.skipCharacter(c);
        }
        if (found.empty())
            return false;
        name = found;
        return true;
    }
    void parseName(std::wstring& name) {
        if (!possibleName(name))
            error(XmlParserErrorNameMalformed);
    }
    void parseName() {
        std::wstring name;
        parseName(name);
    }
    bool possibleWhiteSpace() {
        bool any = false;
        wchar_t c = 0;
        while (reader.previewCharacter(c) && isWhite(c)) {
            reader.skipCharacter(c);
            any = true;
        }
        return any;
    }
    bool requireWhiteSpace(OEXmlParserErrorClass errorClass) {
        return possibleWhiteSpace() || failed(errorClass);
    }
    bool requireEnd(OEXmlParserErrorClass errorClass) {
        possibleWhiteSpace();
        return acceptCharacter(L'>') || failed(errorClass);
    }

    bool possibleDocumentTypeDeclaration() {
        if (!reader.peekString(L"<!DOCTYPE"))
            return false;
        parseDocumentType();
        return true;
    }
    void parseDocumentType() {
        reader.skipString(L"<!DOCTYPE");
        requireWhiteSpace(XmlParserErrorDocumentTypeDeclarationMalformed);
        parseName();
        possibleWhiteSpace();
        if (possibleExternalIdentifier())
            possibleWhiteSpace();
        if (acceptCharacter(L'[')) {
            for (bool matched = true; matched;) {
                const bool declaration = possibleMarkupDeclaration();
                const bool reference = possibleParameterEntityReference();
                const bool space = possibleWhiteSpace();
                matched = declaration || reference || space;
            }
            if (!acceptCharacter(L']')) {
                error(XmlParserErrorDocumentTypeDeclarationMalformed);
                return;
            }
            possibleWhiteSpace();
        }
        if (!acceptCharacter(L'>'))
            error(XmlParserErrorDocumentTypeDeclarationMalformed);
    }
    bool possibleMarkupDeclaration() {
        return possibleElementDeclaration() || possibleAttributeListDeclaration() ||
               possibleEntityDeclaration() || possibleNotationDeclaration() ||
               possibleProcessingInstruction() || possibleComment();
    }
    bool possibleElementDeclaration() {
        const auto malformed = XmlParserErrorElementDeclarationMalformed;
        if (!accept(L"<!ELEMENT"))
            return false;
        if (!requireWhiteSpace(malformed))
            return false;
        parseName();
        if (!requireWhiteSpace(malformed))
            return false;
        if (!reader.findCharacter(L'>', nullptr))
            error(XmlParserErrorContentSpecificationMalformed);
        return requireEnd(malformed);
    }
    bool possibleAttributeListDeclaration() {
        const auto malformed = XmlParserErrorAttributeListDeclarationMalformed;
        if (!accept(L"<!ATTLIST"))
            return false;
        if (!requireWhiteSpace(malformed))
            return false;
        parseName();
        while (possibleAttributeDefinition()) {
        }
        return requireEnd(malformed);
    }
    bool possibleAttributeDefinition() {
        const auto malformed = XmlParserErrorAttributeDefinitionMalformed;
        std::wstring name;
        if (!possibleWhiteSpace() || !possibleName(name))
            return false;
        if (!requireWhiteSpace(malformed))
            return false;
        parseAttributeType();
        if (!requireWhiteSpace(malformed))
            return false;
        parseDefaultDeclaration();
        return true;
    }
    void parseAttributeType() {
        for (const wchar_t* keyword : {L"CDATA", L"ID", L"IDREF", L"IDREFS", L"ENTITY", L"ENTITIES",
                                       L"NMTOKEN", L"NMTOKENS"})
            if (accept(keyword))
                return;
        if (!possibleAttributeTypeEnumerated())
            error(XmlParserErrorAttributeTypeMalformed);
    }
    bool possibleAttributeTypeEnumerated() {
        const auto malformed = XmlParserErrorAttributeTypeMalformed;
        if (accept(L"NOTATION")) {
            if (!requireWhiteSpace(malformed))
                return false;
            if (!reader.peekCharacter(L'('))
                return failed(malformed);
        } else if (!reader.peekCharacter(L'('))
            return false;
        for (unsigned long open = 0;;) {
            wchar_t c = 0;
            if (!reader.previewCharacter(c))
                return failed(malformed);
            reader.skipCharacter(c);
            if (c == L'(')
                ++open;
            if (c == L')' && --open == 0)
                return true;
        }
    }
    void parseDefaultDeclaration() {
        if (accept(L"#REQUIRED") || accept(L"#IMPLIED"))
            return;
        if (accept(L"#FIXED") && !requireWhiteSpace(XmlParserErrorDefaultDeclarationMalformed))
            return;
        std::wstring found;
        if (!possibleAttributeValue(found))
            error(XmlParserErrorAttributeValueMalformed);
    }
    bool possibleEntityDeclaration() {
        const auto malformed = XmlParserErrorEntityDeclarationMalformed;
        if (!accept(L"<!ENTITY"))
            return false;
        if (!requireWhiteSpace(malformed))
            return false;
        const bool parameter = acceptCharacter(L'%');
        if (parameter && !requireWhiteSpace(malformed))
            return false;
        parseName();
        parseEntityDefinition(parameter);
        return requireEnd(malformed);
    }
    void parseEntityDefinition(bool parameter) {
        if (possibleWhiteSpace()) {
            const int closed = quoted();
            if (closed == 1)
                error(XmlParserErrorEntityValueMalformed);
            if (closed == 2)
                return;
            if (possibleExternalIdentifier()) {
                if (!parameter)
                    possibleNotationDataDeclaration();
                return;
            }
        }
        error(XmlParserErrorEntityDeclarationMalformed);
    }
    void possibleNotationDataDeclaration() {
        if (possibleWhiteSpace() && accept(L"NDATA") &&
            requireWhiteSpace(XmlParserErrorNotationDataDeclarationMalformed))
            parseName();
    }
    bool possibleNotationDeclaration() {
        const auto malformed = XmlParserErrorNotationDeclarationMalformed;
        if (!accept(L"<!NOTATION"))
            return false;
        if (!requireWhiteSpace(malformed))
            return false;
        parseName();
        if (!requireWhiteSpace(malformed))
            return false;
        if (!reader.findCharacter(L'>', nullptr))
            return failed(malformed);
        reader.skipCharacter(L'>');
        return true;
    }
    void literal(OEXmlParserErrorClass errorClass) {
        if (quoted() != 2)
            error(errorClass);
    }
    bool possibleExternalIdentifier() {
        return possiblePublicIdentifier() || possibleSystemIdentifier();
    }
    bool possiblePublicIdentifier() {
        if (!accept(L"PUBLIC"))
            return false;
        if (!requireWhiteSpace(XmlParserErrorPublicIdentifierMalformed))
            return false;
        literal(XmlParserErrorPublicIdentifierMalformed);
        if (!requireWhiteSpace(XmlParserErrorPublicIdentifierMalformed))
            return false;
        literal(XmlParserErrorSystemIdentifierMalformed);
        return true;
    }
    bool possibleSystemIdentifier() {
        if (!accept(L"SYSTEM"))
            return false;
        if (!requireWhiteSpace(XmlParserErrorSystemIdentifierMalformed))
            return false;
        literal(XmlParserErrorSystemIdentifierMalformed);
        return true;
    }
    bool possibleParameterEntityReference() {
        if (!accept(L"%"))
            return false;
        if (!reader.findCharacter(L';', nullptr))
            return failed(XmlParserErrorParameterEntityReferenceMalformed);
        reader.skipCharacter(L';');
        return true;
    }

    Reader& reader;
    OCXmlEvents* events;
    std::wstring literalText;
};

/// How a document is parsed.
struct Conditions {
    OEXmlEncoding encoding = XmlEncodingAnsi;
    bool errorsReturn = false;
    bool withEvents = true;
    unsigned long portion = ~0UL;
    unsigned long failingCall = ~0UL;
    unsigned long failingEvent = ~0UL;
    /// Whether the events look at the reader's current character, which may make it read.
    bool eventsLook = false;
    /// Whether each start of an element named "skip" consumes up to the next ";" by itself.
    bool eventsConsume = false;
};

/// A parse under the given conditions, with everything that it lets anybody see.
class Run {
public:
    Run(const std::string& document, const Conditions& given)
        : conditions(given), stream(document, &log), events(log) {
        stream.portion = conditions.portion;
        stream.failingCall = conditions.failingCall;
        events.errorsReturn = conditions.errorsReturn;
        events.failingEvent = conditions.failingEvent;
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// The library's parser with a reader of its own.
    Log privateReader() {
        OCXmlParser parser;
        if (conditions.withEvents)
            parser.setEvents(events);
        logged(log, [&] { parser.parse(stream); });
        return std::move(log);
    }
    /// The library's parser with a reader that is given to it.
    Log sharedReader() {
        OCXmlParserSource source(stream, conditions.encoding);
        OCXmlParserReader reader(source);
        watch([&](wchar_t& c) { return reader.previewCharacter(c); },
              [&] { reader.findCharacter(L';'); });
        OCXmlParser parser;
        if (conditions.withEvents)
            parser.setEvents(events);
        logged(log, [&] { parser.parse(reader); });
        logged(log, [&] {
            OCWideString rest;
            reader.findCharacter(0x7FFFFFFF, rest);
            log.push_back("left " + printable(rest));
        });
        return std::move(log);
    }
    /// The plain parser; with the rest that it leaves when `withRest` is set.
    Log plain(bool withRest) {
        Reader reader(stream, conditions.encoding);
        watch([&](wchar_t& c) { return reader.previewCharacter(c); },
              [&] { reader.findCharacter(L';', nullptr); });
        Parser parser(reader, conditions.withEvents ? &events : nullptr);
        logged(log, [&] { parser.parseDocument(); });
        if (withRest)
            logged(log, [&] {
                std::wstring rest;
                reader.findCharacter(0x7FFFFFFF, &rest);
                log.push_back("left " + printable(rest));
            });
        return std::move(log);
    }

private:
    void watch(const std::function<bool(wchar_t&)>& preview, const std::function<void()>& consume) {
        events.at = [=](const std::string& event) {
            wchar_t c = 0;
            if (conditions.eventsLook)
                log.push_back(preview(c) ? "before " + printable(&c, 1) : "before the end");
            if (conditions.eventsConsume && event == "elementStart skip")
                consume();
        };
    }

    Conditions conditions;
    Log log;
    LoggingStream stream;
    LoggingEvents events;
};

/// The entries that are no calls on the stream.
inline Log withoutCalls(const Log& log) {
    Log result;
    for (const std::string& entry : log)
        if (entry.compare(0, 5, "read ") != 0 && entry.compare(0, 5, "seek ") != 0)
            result.push_back(entry);
    return result;
}

} // namespace xmlmodel

#endif
