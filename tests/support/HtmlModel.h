#ifndef ORVABASE_TESTS_HTMLMODEL_H
#define ORVABASE_TESTS_HTMLMODEL_H

// A second HTML parser, written as plainly as possible: one byte at a time over a buffer that loses
// each byte when it is consumed. The tests and the fuzz target hold the library's parser against
// it: the same events in the same order, between the same calls on the stream.

#include "OCHtmlParser.h"
#include "XmlModel.h"

#include <functional>
#include <string>

namespace htmlmodel {

using xmlmodel::Interruption;
using xmlmodel::Log;
using xmlmodel::logged;
using xmlmodel::LoggingStream;
using xmlmodel::withoutCalls;

inline std::string printable(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (c >= 32 && c < 127 && c != '\\')
            result += c;
        else
            result += "\\" + std::to_string(static_cast<int>(static_cast<unsigned char>(c))) + ";";
    return result;
}
inline std::string printable(const OCAnsiString& text) {
    return printable(std::string(text.getString(), text.getLength()));
}

/// Writes every event to a log.
class LoggingEvents : public OCHtmlParserEvents {
public:
    explicit LoggingEvents(Log& target) : log(target) {}

    /// Whether a reported error lets the parse go on.
    bool errorsReturn = false;
    /// The event, counted from 0, that throws instead.
    unsigned long failingEvent = ~0UL;
    /// Run at each event, with the event's text.
    std::function<void(const std::string&)> at;

    void attribute(const OCAnsiString& name, const OCAnsiString& value) override {
        note("attribute " + printable(name) + "=" + printable(value));
    }
    void characterData(const OCAnsiString& text) override { note("text " + printable(text)); }
    void comment(const OCAnsiString& text) override { note("comment " + printable(text)); }
    void documentEnd() override { note("documentEnd"); }
    void documentStart() override { note("documentStart"); }
    void documentType(const OCAnsiString& text) override { note("doctype " + printable(text)); }
    void elementEnd(const OCAnsiString& name) override { note("end " + printable(name)); }
    void elementStart(const OCAnsiString& name) override { note("start " + printable(name)); }
    void elementStartComplete(const OCAnsiString& name) override {
        note("complete " + printable(name));
    }
    void error(OEHtmlErrorClass errorClass) override {
        note("error " + std::to_string(int(errorClass)));
        if (!errorsReturn)
            OCHtmlParserEvents::error(errorClass);
    }
    void warning(OEHtmlWarningClass) override { note("warning"); }

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

class Reader {
public:
    explicit Reader(OCStream& input) : stream(input) {}

    bool growBuffer(unsigned long count) {
        while (buffer.size() < count) {
            char block[128];
            unsigned long size = 128;
            if (!stream.read(block, size))
                return false;
            buffer.append(block, size);
        }
        return true;
    }
    bool peekCharacter(char c) { return growBuffer(1) && fold(buffer[0]) == fold(c); }
    bool previewCharacter(char& c) {
        if (!growBuffer(1))
            return false;
        c = buffer[0];
        return true;
    }
    void skip(unsigned long count) {
        if (growBuffer(count))
            buffer.erase(0, count);
        else
            buffer.clear();
    }
    bool peekString(const std::string& s) {
        if (s.empty() || !growBuffer(s.size()))
            return false;
        for (std::size_t i = 0; i < s.size(); ++i)
            if (fold(buffer[i]) != fold(s[i]))
                return false;
        return true;
    }
    bool findCharacter(char c, std::string* skipped) {
        while (growBuffer(1)) {
            if (buffer[0] == c)
                return true;
            const std::size_t found = buffer.find(c, 1);
            const std::size_t passed = found == std::string::npos ? buffer.size() : found;
            if (skipped)
                skipped->append(buffer, 0, passed);
            buffer.erase(0, passed);
            if (found != std::string::npos)
                return true;
        }
        return false;
    }
    bool findString(const std::string& s, std::string* skipped) {
        while (!s.empty() && findCharacter(s[0], skipped)) {
            if (peekString(s))
                return true;
            if (skipped)
                *skipped += s[0];
            skip(1);
        }
        return false;
    }

private:
    static char fold(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

    OCStream& stream;
    std::string buffer;
};

class Parser {
public:
    Parser(Reader& input, OCHtmlParserEvents* target) : reader(input), events(target) {}

    void parseDocument() {
        if (events)
            events->documentStart();
        while (text() || comment() || documentType() || endTag() || startTag()) {
        }
        if (events)
            events->documentEnd();
    }

private:
    // Each is true when its construct has begun, whatever became of it.

    bool text() {
        std::string characters;
        reader.findCharacter('<', &characters);
        if (characters.empty())
            return false;
        if (events)
            events->characterData(narrow(characters));
        return true;
    }
    bool comment() {
        if (!accept("<!--"))
            return false;
        std::string characters;
        if (!reader.findString("--", &characters))
            return failed(HtmlErrorCommentMalformed);
        if (events)
            events->comment(narrow(characters));
        // An event may have consumed what was there.
        if (!accept("--") || !reader.findCharacter('>', nullptr))
            return failed(HtmlErrorCommentMalformed);
        reader.skip(1);
        return true;
    }
    bool documentType() {
        if (!accept("<!DocType"))
            return false;
        std::string characters;
        if (!reader.findCharacter('>', &characters))
            return failed(HtmlErrorDocumentTypeMalformed);
        while (!characters.empty() && isSpace(characters.front()))
            characters.erase(0, 1);
        while (!characters.empty() && isSpace(characters.back()))
            characters.pop_back();
        if (events)
            events->documentType(narrow(characters));
        if (!accept(">"))
            return failed(HtmlErrorDocumentTypeMalformed);
        return true;
    }
    bool endTag() {
        if (!accept("</"))
            return false;
        whiteSpace();
        const std::string name = requiredName();
        if (events)
            events->elementEnd(narrow(name));
        whiteSpace();
        if (!accept(">"))
            return failed(HtmlErrorElementEndMalformed);
        return true;
    }
    bool startTag() {
        if (!accept("<"))
            return false;
        whiteSpace();
        const std::string name = requiredName();
        if (events)
            events->elementStart(narrow(name));
        for (;;)
            if (!whiteSpace() && !attribute())
                break;
        if (accept(">")) {
            if (events)
                events->elementStartComplete(narrow(name));
            return true;
        }
        if (!accept("/>"))
            return failed(HtmlErrorElementStartMalformed);
        if (events) {
            events->elementStartComplete(narrow(name));
            events->elementEnd(narrow(name));
        }
        return true;
    }
    /// False when there is none and when it is malformed.
    bool attribute() {
        std::string name;
        if (!possibleName(name))
            return false;
        std::string value;
        whiteSpace();
        if (accept("=")) {
            whiteSpace();
            char quote = 0;
            if (reader.previewCharacter(quote) && (quote == '"' || quote == '\'')) {
                reader.skip(1);
                if (!reader.findCharacter(quote, &value)) {
                    failed(HtmlErrorAttributeMalformed);
                    return false;
                }
                reader.skip(1);
            } else {
                char c = 0;
                bool ended = false;
                while (!ended && reader.previewCharacter(c)) {
                    ended = isSpace(c) || c == '>';
                    if (!ended) {
                        value += c;
                        reader.skip(1);
                    }
                }
                if (!ended) {
                    failed(HtmlErrorAttributeMalformed);
                    return false;
                }
            }
        }
        if (events)
            events->attribute(narrow(name), narrow(value));
        return true;
    }
    std::string requiredName() {
        std::string name;
        if (!possibleName(name))
            failed(HtmlErrorNameMalformed);
        return name;
    }
    bool possibleName(std::string& name) {
        const std::string others = "!-:_";
        char c = 0;
        while (reader.previewCharacter(c) &&
               ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                others.find(c) != std::string::npos)) {
            name += c;
            reader.skip(1);
        }
        return !name.empty();
    }
    bool whiteSpace() {
        bool any = false;
        char c = 0;
        while (reader.previewCharacter(c) && isSpace(c)) {
            any = true;
            reader.skip(1);
        }
        return any;
    }

    static bool isSpace(char c) { return c >= 0 && c <= 32; }
    static OCAnsiString narrow(const std::string& text) {
        return OCAnsiString(text.data(), text.size());
    }
    bool accept(const std::string& text) {
        if (!reader.peekString(text))
            return false;
        reader.skip(text.size());
        return true;
    }
    bool failed(OEHtmlErrorClass errorClass) {
        if (!events)
            throw OXHtmlError_Unhandled();
        events->error(errorClass);
        return true;
    }

    Reader& reader;
    OCHtmlParserEvents* events;
};

/// How a document is parsed.
struct Conditions {
    bool errorsReturn = false;
    bool withEvents = true;
    unsigned long portion = ~0UL;
    unsigned long failingCall = ~0UL;
    unsigned long failingEvent = ~0UL;
    /// Whether the events look at the reader's current byte, which may make it read.
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
        OCHtmlParser parser;
        if (conditions.withEvents)
            parser.setParserEvents(events);
        logged(log, [&] { parser.parse(stream); });
        return std::move(log);
    }
    /// The library's parser with a reader that is given to it.
    Log sharedReader() {
        OCHtmlParserReader reader(stream);
        watch([&](char& c) { return reader.previewCharacter(c); },
              [&] { reader.findCharacter(';'); });
        OCHtmlParser parser;
        if (conditions.withEvents)
            parser.setParserEvents(events);
        logged(log, [&] { parser.parseDocument(reader); });
        logged(log, [&] {
            OCAnsiString rest;
            reader.findString(std::string(16, '\xFE').c_str(), rest);
            log.push_back("left " + printable(rest));
        });
        return std::move(log);
    }
    /// The plain parser; with the rest that it leaves when `withRest` is set.
    Log plain(bool withRest) {
        Reader reader(stream);
        watch([&](char& c) { return reader.previewCharacter(c); },
              [&] { reader.findCharacter(';', nullptr); });
        Parser parser(reader, conditions.withEvents ? &events : nullptr);
        logged(log, [&] { parser.parseDocument(); });
        if (withRest)
            logged(log, [&] {
                std::string rest;
                reader.findString(std::string(16, '\xFE'), &rest);
                log.push_back("left " + printable(rest));
            });
        return std::move(log);
    }

private:
    void watch(const std::function<bool(char&)>& preview, const std::function<void()>& consume) {
        events.at = [=](const std::string& event) {
            if (conditions.eventsLook) {
                char c = 0;
                log.push_back(preview(c) ? "before " + printable(std::string(1, c))
                                         : "before the end");
            }
            if (conditions.eventsConsume && event == "start skip")
                consume();
        };
    }

    Conditions conditions;
    Log log;
    LoggingStream stream;
    LoggingEvents events;
};

} // namespace htmlmodel

#endif
