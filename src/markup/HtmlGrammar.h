#ifndef ORVABASE_HTMLGRAMMAR_H
#define ORVABASE_HTMLGRAMMAR_H

#include "OCHtmlParser.h"
#include "markup/HtmlCursor.h"

namespace orvabase {

/// The grammar operations of the HTML parser, for one running operation with its own cursor. They
/// mean what the parser's operations of the same names mean; those that return nothing there tell
/// here whether they found what they require.
class HtmlGrammar {
public:
    HtmlGrammar(OCHtmlParser& owner, OCHtmlParserReader& reader,
                HtmlCursor::Access access = HtmlCursor::Shared)
        : parser(owner), cursor(reader, access) {}
    HtmlGrammar(const HtmlGrammar&) = delete;
    HtmlGrammar& operator=(const HtmlGrammar&) = delete;

    void parseDocument();
    bool possibleMiscellaneous();
    bool possibleCharacterData();
    bool possibleComment();
    bool possibleCommentBegin() { return cursor.accept("<!--"); }
    bool parseCommentContents();
    bool parseCommentEnd();
    bool possibleDocumentType();
    bool possibleDocumentTypeBegin() { return cursor.accept("<!doctype"); }
    bool parseDocumentTypeContents();
    bool parseDocumentTypeEnd();
    bool possibleElement();
    bool possibleElementEnd();
    bool possibleElementStart();
    bool possibleElementStartBegin(OCAnsiString& name);
    void parseAttributeList();
    bool parseElementStartEnd(const OCAnsiString& name);
    bool parseElementStartEndContent(const OCAnsiString& name);
    bool parseElementStartEndEmpty(const OCAnsiString& name);
    bool possibleAttribute();
    bool parseAttributeValue(OCAnsiString& target);
    bool parseAttributeValueQuoted(OCAnsiString& target);
    bool parseAttributeValueSimple(OCAnsiString& target);
    bool possibleName(OCAnsiString& name) { return cursor.takeName(name); }
    bool possibleWhiteSpace() { return cursor.skipWhiteSpace(); }

private:
    /// What became of a construct: it does not begin here, it began and is malformed, or it is
    /// consumed.
    enum Outcome { Absent, Malformed, Present };

    template<typename Event>
    void report(Event event);
    bool error(OEHtmlErrorClass errorClass);
    void parseName(OCAnsiString& name);
    Outcome markup();
    Outcome comment();
    Outcome documentType();
    Outcome elementEnd();
    Outcome elementStart();
    Outcome endTag();
    Outcome startTag();
    void beginElement(OCAnsiString& name);
    void completeElement(const OCAnsiString& name);

    OCHtmlParser& parser;
    OCAnsiString elementName;
    OCAnsiString text;
    OCAnsiString value;
    HtmlCursor cursor; // destroyed first, as a token that it collects is in one of the strings
};

} // namespace orvabase

#endif
