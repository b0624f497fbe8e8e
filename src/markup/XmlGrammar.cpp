#include "markup/XmlGrammar.h"

#include "OCMemory.h"

#include <cwchar>

namespace orvabase {

namespace {

/// Below this the names' storage is not worth giving back.
constexpr unsigned long namesKept = 4096;

} // namespace

void XmlOpenNames::push(const OCWideString& name) {
    const unsigned long length = name.getLength();
    const unsigned long reserved = names.getLength();
    if (length >= reserved - used) {
        // By an eighth, so that reserving takes linear time in all and little memory.
        const unsigned long wanted = used + length + 1;
        const unsigned long step = reserved + reserved / 8 + 127;
        names.setLength(wanted < step ? step : wanted);
    }
    std::wmemcpy(names.getString() + used, name.getString(), length);
    top = used;
    used += length + 1;
    names.getString()[used - 1] = 0;
}

void XmlOpenNames::pop() noexcept {
    const wchar_t* const start = names.getString();
    used = top;
    if (used > 0)
        for (--top; top > 0 && start[top - 1] != 0;)
            --top;
    if (names.getLength() > namesKept && used < names.getLength() / 4)
        shrink();
}

void XmlOpenNames::shrink() noexcept {
    names.setLength(used * 2);
}

template<typename Event>
void XmlGrammar::report(Event event) {
    if (!parser.hasEvents())
        return;
    cursor.leave();
    event(parser.getEvents());
    cursor.enter();
}

void XmlGrammar::error(OEXmlParserErrorClass errorClass) {
    cursor.leave();
    parser.error(errorClass);
    cursor.enter();
}

void XmlGrammar::parseDocument() {
    report([](OCXmlEvents& events) { events.documentStart(); });
    parseProlog();
    parseElement();
    while (possibleMiscellaneous()) {
    }
    report([](OCXmlEvents& events) { events.documentEnd(); });
}

void XmlGrammar::parseProlog() {
    possibleXmlDeclaration();
    possibleMiscellaneous();
    possibleDocumentTypeDeclaration();
    possibleMiscellaneous();
}

bool XmlGrammar::possibleXmlDeclaration() {
    if (!cursor.accept(L"<?xml"))
        return false;
    if (!cursor.findAndSkip(L"?>")) {
        error(XmlParserErrorXmlDeclarationMalformed);
        return false;
    }
    return true;
}

bool XmlGrammar::possibleMiscellaneous() {
    bool any = false;
    bool matched = true;
    while (matched && cursor.more()) {
        matched = possibleComment();
        matched = possibleProcessingInstruction() || matched;
        matched = possibleWhiteSpace() || matched;
        any = any || matched;
    }
    return any;
}

bool XmlGrammar::possibleDocumentTypeDeclaration() {
    if (!cursor.peek(L"<!DOCTYPE"))
        return false;
    DtdGrammar(*this).parse();
    return true;
}

void XmlGrammar::parseElement() {
    if (!possibleElement())
        error(XmlParserErrorElementMalformed);
}

bool XmlGrammar::possibleElement() {
    bool empty = false;
    if (!possibleElementStart(elementName, empty))
        return false;
    if (empty) {
        endElement();
        return true;
    }
    openNames.push(elementName);
    cursor.giveBack(elementName);
    while (!openNames.isEmpty())
        if (!possibleContent())
            closeElement();
    return true;
}

bool XmlGrammar::possibleElementStart(OCWideString& name, bool& empty) {
    if (!cursor.accept(L'<'))
        return false;
    if (!cursor.takeName(name)) {
        name.clear();
        error(XmlParserErrorNameMalformed);
    }
    report([&](OCXmlEvents& events) { events.elementStart(name); });
    while (cursor.skipWhiteSpace() && possibleAttribute()) {
    }
    if (cursor.accept(L'>')) {
        empty = false;
        return true;
    }
    if (cursor.accept(L"/>")) {
        empty = true;
        return true;
    }
    error(XmlParserErrorElementMalformed);
    return false;
}

void XmlGrammar::parseElementEnd(const wchar_t* name, unsigned long length) {
    if (!cursor.accept(L"</")) {
        error(XmlParserErrorElementMalformed);
        return;
    }
    if (!cursor.acceptAvailableName(name, length)) {
        if (!cursor.takeName(text)) {
            text.clear();
            error(XmlParserErrorNameMalformed);
        }
        const bool same =
            text.getLength() == length && std::wmemcmp(text.getString(), name, length) == 0;
        cursor.giveBack(text);
        if (!same) {
            error(XmlParserErrorElementMalformed);
            return;
        }
    }
    cursor.skipWhiteSpace();
    if (!cursor.accept(L'>'))
        error(XmlParserErrorElementMalformed);
}

void XmlGrammar::parseContent() {
    for (;;) {
        if (possibleContent())
            continue;
        if (openNames.isEmpty())
            return;
        closeElement();
    }
}

/// One piece of the content of the innermost open element, of a child element its start. False when
/// the content has ended.
bool XmlGrammar::possibleContent() {
    constexpr unsigned long longestOpening = sizeof "<![CDATA[" - 1;
    if (cursor.available() >= longestOpening && *cursor.begin() != L'<') {
        characterData();
        return true;
    }
    if (cursor.peek(L"</"))
        return false;
    if (possibleCdataSection() || possibleComment() || possibleProcessingInstruction())
        return true;
    bool empty = false;
    if (possibleElementStart(elementName, empty)) {
        if (empty)
            endElement();
        else
            openNames.push(elementName);
        cursor.giveBack(elementName);
        return true;
    }
    if (possibleCharacterData())
        return true;
    error(XmlParserErrorContentMalformed);
    return false;
}

void XmlGrammar::endElement() {
    report([](OCXmlEvents& events) { events.elementEnd(); });
}

void XmlGrammar::closeElement() {
    parseElementEnd(openNames.name(), openNames.nameLength());
    openNames.pop();
    endElement();
}

bool XmlGrammar::possibleCdataSection() {
    if (!cursor.accept(L"<![CDATA["))
        return false;
    cursor.beginToken(text);
    const bool closed = cursor.find(L"]]>", 3);
    cursor.endToken();
    if (!closed) {
        cursor.giveBack(text);
        error(XmlParserErrorCdataSectionMalformed);
        return false;
    }
    cursor.advance(3);
    report([&](OCXmlEvents& events) { events.characterData(text); });
    cursor.giveBack(text);
    return true;
}

bool XmlGrammar::possibleComment() {
    if (!cursor.accept(L"<!--"))
        return false;
    if (!cursor.findAndSkip(L"-->")) {
        error(XmlParserErrorCommentMalformed);
        return false;
    }
    return true;
}

bool XmlGrammar::possibleProcessingInstruction() {
    if (!cursor.accept(L"<?"))
        return false;
    OCWideString& target = text;
    OCWideString& data = value;
    if (!cursor.takeName(target)) {
        target.clear();
        error(XmlParserErrorNameMalformed);
    }
    if (cursor.skipWhiteSpace()) {
        cursor.beginToken(data);
        cursor.find(L"?>", 2);
        cursor.endToken();
    } else
        data.clear();
    const bool closed = cursor.accept(L"?>");
    if (closed)
        report([&](OCXmlEvents& events) { events.processingInstruction(target, data); });
    else
        error(XmlParserErrorProcessingInstructionMalformed);
    cursor.giveBack(target);
    cursor.giveBack(data);
    return closed;
}

bool XmlGrammar::possibleCharacterData() {
    wchar_t c = 0;
    if (!cursor.preview(c) || c == L'<')
        return false;
    characterData();
    return true;
}

void XmlGrammar::characterData() {
    cursor.takeUntil(L'<', text);
    report([&](OCXmlEvents& events) { events.characterData(text); });
    cursor.giveBack(text);
}

bool XmlGrammar::possibleAttribute() {
    OCWideString& name = text;
    if (!cursor.takeAvailableAttribute(name, value)) {
        if (!cursor.takeName(name))
            return false;
        if (!cursor.accept(L'=') || !possibleAttributeValue(&value)) {
            error(XmlParserErrorAttributeMalformed);
            return false;
        }
    }
    report([&](OCXmlEvents& events) { events.attribute(name, value); });
    cursor.giveBack(name);
    cursor.giveBack(value);
    return true;
}

void XmlGrammar::parseName() {
    if (!cursor.skipName())
        error(XmlParserErrorNameMalformed);
}

XmlGrammar::Quoted XmlGrammar::quoted(OCWideString* target, unsigned long kept) {
    wchar_t quote = 0;
    if (!cursor.preview(quote) || (quote != L'\'' && quote != L'"'))
        return QuotedAbsent;
    cursor.advance(1);
    bool closed = false;
    if (!target)
        closed = cursor.find(quote);
    else if (kept == 0)
        closed = cursor.takeUntil(quote, *target);
    else {
        cursor.beginToken(*target, kept);
        closed = cursor.find(quote);
        cursor.endToken();
    }
    if (!closed)
        return QuotedOpen;
    cursor.advance(1);
    return QuotedClosed;
}

bool XmlGrammar::possibleAttributeValue(OCWideString* target, unsigned long kept) {
    const Quoted found = quoted(target, kept);
    if (found == QuotedOpen)
        error(XmlParserErrorAttributeValueMalformed);
    return found == QuotedClosed;
}

void XmlGrammar::parseAttributeValue(OCWideString* target, unsigned long kept) {
    if (!possibleAttributeValue(target, kept))
        error(XmlParserErrorAttributeValueMalformed);
}

} // namespace orvabase
