#include "markup/HtmlGrammar.h"

namespace orvabase {

template<typename Event>
void HtmlGrammar::report(Event event) {
    if (!parser.hasParserEvents())
        return;
    cursor.leave();
    event(parser.getParserEvents());
    cursor.enter();
}

/// Reports a malformation; false when that returns.
bool HtmlGrammar::error(OEHtmlErrorClass errorClass) {
    cursor.leave();
    parser.error(errorClass);
    cursor.enter();
    return false;
}

void HtmlGrammar::parseDocument() {
    report([](OCHtmlParserEvents& events) { events.documentStart(); });
    while (possibleMiscellaneous()) {
    }
    report([](OCHtmlParserEvents& events) { events.documentEnd(); });
}

bool HtmlGrammar::possibleMiscellaneous() {
    return possibleCharacterData() || markup() != Absent;
}

bool HtmlGrammar::possibleCharacterData() {
    char c = 0;
    if (!cursor.preview(c) || c == '<')
        return false;
    cursor.takeUntil('<', text);
    report([&](OCHtmlParserEvents& events) { events.characterData(text); });
    cursor.giveBack(text);
    return true;
}

/// A comment, a document type or an element, where the character data ends: at a "<" or at the end.
HtmlGrammar::Outcome HtmlGrammar::markup() {
    constexpr unsigned long longestOpening = sizeof "<!doctype" - 1;
    // The openings are told apart by their second character. That must not look further ahead than
    // trying them one by one does.
    if (cursor.available() >= longestOpening && cursor.begin()[1] != '!') {
        if (cursor.begin()[1] != '/') {
            cursor.advance(1);
            return startTag();
        }
        cursor.advance(2);
        return endTag();
    }
    Outcome outcome = comment();
    if (outcome == Absent)
        outcome = documentType();
    if (outcome == Absent)
        outcome = elementEnd();
    if (outcome == Absent)
        outcome = elementStart();
    return outcome;
}

HtmlGrammar::Outcome HtmlGrammar::comment() {
    if (!possibleCommentBegin())
        return Absent;
    return parseCommentContents() && parseCommentEnd() ? Present : Malformed;
}

bool HtmlGrammar::possibleComment() {
    return comment() == Present;
}

bool HtmlGrammar::parseCommentContents() {
    cursor.beginToken(text);
    const bool found = cursor.find("--", 2);
    cursor.endToken();
    if (found)
        report([&](OCHtmlParserEvents& events) { events.comment(text); });
    cursor.giveBack(text);
    return found || error(HtmlErrorCommentMalformed);
}

bool HtmlGrammar::parseCommentEnd() {
    if (!cursor.accept("--") || !cursor.find('>'))
        return error(HtmlErrorCommentMalformed);
    cursor.advance(1);
    return true;
}

HtmlGrammar::Outcome HtmlGrammar::documentType() {
    if (!possibleDocumentTypeBegin())
        return Absent;
    return parseDocumentTypeContents() && parseDocumentTypeEnd() ? Present : Malformed;
}

bool HtmlGrammar::possibleDocumentType() {
    return documentType() == Present;
}

bool HtmlGrammar::parseDocumentTypeContents() {
    const bool found = cursor.takeUntil('>', text);
    if (found) {
        text.trim();
        report([&](OCHtmlParserEvents& events) { events.documentType(text); });
    }
    cursor.giveBack(text);
    return found || error(HtmlErrorDocumentTypeMalformed);
}

bool HtmlGrammar::parseDocumentTypeEnd() {
    return cursor.accept('>') || error(HtmlErrorDocumentTypeMalformed);
}

bool HtmlGrammar::possibleElement() {
    Outcome outcome = elementEnd();
    if (outcome == Absent)
        outcome = elementStart();
    return outcome == Present;
}

HtmlGrammar::Outcome HtmlGrammar::elementEnd() {
    return cursor.accept("</") ? endTag() : Absent;
}

bool HtmlGrammar::possibleElementEnd() {
    return elementEnd() == Present;
}

/// An end tag, from behind its opening on.
HtmlGrammar::Outcome HtmlGrammar::endTag() {
    cursor.skipWhiteSpace();
    parseName(elementName);
    report([&](OCHtmlParserEvents& events) { events.elementEnd(elementName); });
    cursor.giveBack(elementName);
    cursor.skipWhiteSpace();
    return cursor.accept('>') || error(HtmlErrorElementEndMalformed) ? Present : Malformed;
}

HtmlGrammar::Outcome HtmlGrammar::elementStart() {
    return cursor.accept('<') ? startTag() : Absent;
}

bool HtmlGrammar::possibleElementStart() {
    return elementStart() == Present;
}

/// A start tag, from behind its opening on.
HtmlGrammar::Outcome HtmlGrammar::startTag() {
    beginElement(elementName);
    parseAttributeList();
    const bool ended = parseElementStartEnd(elementName);
    cursor.giveBack(elementName);
    return ended ? Present : Malformed;
}

bool HtmlGrammar::possibleElementStartBegin(OCAnsiString& name) {
    if (!cursor.accept('<'))
        return false;
    beginElement(name);
    return true;
}

void HtmlGrammar::beginElement(OCAnsiString& name) {
    cursor.skipWhiteSpace();
    parseName(name);
    report([&](OCHtmlParserEvents& events) { events.elementStart(name); });
}

void HtmlGrammar::parseName(OCAnsiString& name) {
    if (cursor.takeName(name))
        return;
    name.clear();
    error(HtmlErrorNameMalformed);
}

void HtmlGrammar::parseAttributeList() {
    while (cursor.skipWhiteSpace() || possibleAttribute()) {
    }
}

bool HtmlGrammar::parseElementStartEnd(const OCAnsiString& name) {
    if (cursor.peek('>'))
        return parseElementStartEndContent(name);
    return parseElementStartEndEmpty(name);
}

bool HtmlGrammar::parseElementStartEndContent(const OCAnsiString& name) {
    if (!cursor.accept('>'))
        return error(HtmlErrorElementStartMalformed);
    completeElement(name);
    return true;
}

bool HtmlGrammar::parseElementStartEndEmpty(const OCAnsiString& name) {
    if (!cursor.accept("/>"))
        return error(HtmlErrorElementStartMalformed);
    completeElement(name);
    report([&](OCHtmlParserEvents& events) { events.elementEnd(name); });
    return true;
}

void HtmlGrammar::completeElement(const OCAnsiString& name) {
    report([&](OCHtmlParserEvents& events) { events.elementStartComplete(name); });
}

bool HtmlGrammar::possibleAttribute() {
    OCAnsiString& name = text;
    if (!cursor.takeName(name))
        return false;
    cursor.skipWhiteSpace();
    if (cursor.accept('=')) {
        cursor.skipWhiteSpace();
        if (!parseAttributeValue(value)) {
            cursor.giveBack(name);
            cursor.giveBack(value);
            return false;
        }
    } else
        value.clear();
    report([&](OCHtmlParserEvents& events) { events.attribute(name, value); });
    cursor.giveBack(name);
    cursor.giveBack(value);
    return true;
}

bool HtmlGrammar::parseAttributeValue(OCAnsiString& target) {
    char c = 0;
    if (cursor.preview(c) && (c == '\'' || c == '"'))
        return parseAttributeValueQuoted(target);
    return parseAttributeValueSimple(target);
}

bool HtmlGrammar::parseAttributeValueQuoted(OCAnsiString& target) {
    char quote = 0;
    if (!cursor.preview(quote) || (quote != '\'' && quote != '"'))
        return error(HtmlErrorAttributeMalformed);
    cursor.advance(1);
    if (!cursor.takeUntil(quote, target))
        return error(HtmlErrorAttributeMalformed);
    cursor.advance(1);
    return true;
}

bool HtmlGrammar::parseAttributeValueSimple(OCAnsiString& target) {
    return cursor.takeSimpleValue(target) || error(HtmlErrorAttributeMalformed);
}

} // namespace orvabase
