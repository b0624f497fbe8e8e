// The parser and its reader do what plain ones do, call for call and event for event, on documents
// of every kind.

#include "support/HtmlModel.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using htmlmodel::Conditions;
using htmlmodel::Log;
using htmlmodel::Run;

std::string shown(const Log& log) {
    std::string text;
    for (const std::string& entry : log)
        text += entry + "\n";
    return text;
}

void expectAgreement(const std::string& document, const Conditions& conditions) {
    ASSERT_EQ(shown(Run(document, conditions).plain(true)),
              shown(Run(document, conditions).sharedReader()))
        << document;
    if (conditions.eventsLook || conditions.eventsConsume)
        return; // nobody can look at a private reader
    ASSERT_EQ(shown(Run(document, conditions).plain(false)),
              shown(Run(document, conditions).privateReader()))
        << document;
}

/// One of each construct, well-formed and malformed.
const char* const documents[] = {
    "",
    " ",
    "a",
    "<",
    "</",
    "<>",
    "</>",
    "< >",
    "</ >",
    "<a",
    "<a/",
    "<a/>",
    "<a / >",
    "< a >",
    "</ a >",
    "</a b>c",
    "</a <b>",
    "<P Class=x>Hi</p>",
    "<br/>",
    "<input disabled>",
    "<input disabled >",
    "<input disabled/>",
    "<a x = 'y'>",
    "<a x='y'z='w'>",
    "<a x='y>",
    "<a x=\"'\" y='\"'>",
    "<a x=y",
    "<a x=y ",
    "<a x=",
    "<a x= ",
    "<a x= >",
    "<a x=>",
    "<a x",
    "<a x ",
    "<a href=x/>",
    "<a =x>",
    "<a 'x'>",
    "<a\tb\n=\r'c'\f>",
    "<a x='1' y=\"2\" z=3 q>t</a>",
    "</b></c>",
    "<!DOCTYPE  html >",
    "<!doctype>",
    "<!doctypehtml>",
    "<!DocType html",
    "<!doctyp html>",
    "<!-- a -- b -->",
    "<!---->",
    "<!-->",
    "<!--->-->",
    "<!-- a ->",
    "<!-- a --",
    "<!-- a -- b",
    "<!--",
    "<!-a>",
    "<!x y>",
    "a &amp; b",
    "<?xml version='1.0'?><p>",
    "a < b",
    "a<b>c</b>d",
    "<script>if (a < b && c > d) e();</script>",
    "<\xC3\xA9>",
    "<a \xC3\xA9>\xFF</a>",
    "<skip>a;b<skip x=1;>c</skip;>;<skip><b><c><d;>",
    "<a:b_c-d!e1 f:g_h-i!j2='3'>",
};

/// All conditions but those that break off.
void agreeInManyWays(const std::string& document) {
    for (const bool errorsReturn : {false, true})
        for (const bool look : {false, true})
            for (const bool consume : {false, true})
                for (const unsigned long portion : {~0UL, 1UL, 7UL, 127UL}) {
                    Conditions conditions;
                    conditions.errorsReturn = errorsReturn;
                    conditions.eventsLook = look;
                    conditions.eventsConsume = consume;
                    conditions.portion = portion;
                    ASSERT_NO_FATAL_FAILURE(expectAgreement(document, conditions));
                }
}

TEST(OCHtmlModel, AgreesOnEachConstruct) {
    for (const char* document : documents)
        ASSERT_NO_FATAL_FAILURE(agreeInManyWays(document));
}

TEST(OCHtmlModel, AgreesOnPairsOfConstructs) {
    for (const char* first : documents)
        for (const char* second : documents) {
            Conditions conditions;
            conditions.errorsReturn = true;
            ASSERT_NO_FATAL_FAILURE(expectAgreement(std::string(first) + second, conditions));
        }
}

TEST(OCHtmlModel, AgreesWhereverABatchEnds) {
    for (const char* document : documents)
        for (unsigned long before = 110; before <= 130; ++before)
            for (const bool errorsReturn : {false, true}) {
                Conditions conditions;
                conditions.errorsReturn = errorsReturn;
                ASSERT_NO_FATAL_FAILURE(expectAgreement(std::string(before, 't') + document +
                                                            std::string(300, 'u') + document,
                                                        conditions));
            }
}

TEST(OCHtmlModel, AgreesWithoutEvents) {
    for (const char* document : documents) {
        Conditions conditions;
        conditions.withEvents = false;
        ASSERT_NO_FATAL_FAILURE(expectAgreement(document, conditions));
    }
}

TEST(OCHtmlModel, AgreesWhereverTheStreamFails) {
    for (const char* document : documents)
        for (const unsigned long portion : {1UL, 5UL}) {
            const std::string text = std::string(document) + "<x y='z'>t</x>";
            for (unsigned long call = 0; call < text.size() / portion + 8; ++call) {
                Conditions conditions;
                conditions.errorsReturn = true;
                conditions.portion = portion;
                conditions.failingCall = call;
                ASSERT_NO_FATAL_FAILURE(expectAgreement(text, conditions));
            }
        }
}

TEST(OCHtmlModel, AgreesWhicheverEventFails) {
    for (const char* document : documents)
        for (unsigned long event = 0; event < 16; ++event) {
            Conditions conditions;
            conditions.errorsReturn = true;
            conditions.failingEvent = event;
            ASSERT_NO_FATAL_FAILURE(expectAgreement(document, conditions));
        }
}

TEST(OCHtmlModel, AgreesOnTokensOfEveryLength) {
    for (const unsigned long length :
         {1UL,   15UL,   16UL,   63UL,   64UL,   65UL,   118UL,  127UL,  128UL,   129UL,  255UL,
          256UL, 2047UL, 2048UL, 4094UL, 4095UL, 4096UL, 4097UL, 8192UL, 33000UL, 70000UL}) {
        const std::string run(length, 'r');
        const std::string blank(length, ' ');
        for (const std::string& document :
             {"<p>" + run + "</p>", "<" + run + ">", "</" + run + ">", "<a " + run + ">",
              "<a b=" + run + ">", "<a b='" + run + "' " + run + "=\"" + run + "\">",
              "<!--" + run + "--" + run + ">", "<!doctype " + blank + run + blank + ">",
              "<" + blank + "a" + blank + "b" + blank + "=" + blank + "c" + blank + ">",
              "<a b='" + run, "<!--" + run, "<!--" + run + "--" + run, "<!doctype " + run,
              "<a b=" + run, "<" + run, run})
            for (const bool errorsReturn : {false, true}) {
                Conditions conditions;
                conditions.errorsReturn = errorsReturn;
                ASSERT_NO_FATAL_FAILURE(expectAgreement(document, conditions));
            }
    }
}

TEST(OCHtmlModel, AgreesOnRandomDocuments) {
    const unsigned seed = 20240607;
    std::mt19937 random(seed);
    const char* const pieces[] = {"<",           ">",          "/",
                                  "</",          "/>",         "<!--",
                                  "--",          "-->",        "=",
                                  "='",          "'",          "\"",
                                  "=\"",         " ",          "\n",
                                  "a",           "B",          "div",
                                  "skip",        ";",          "<!doctype",
                                  "<!DOCTYPE ",  "!",          "-",
                                  ":",           "_",          "?",
                                  "&amp;",       "\xE9",       "text of some length ",
                                  "<p class=x>", "</p>",       "<a href='#x'>",
                                  "<br/>",       "<!-- c -->", "\t",
                                  "1",           "<b"};
    constexpr unsigned count = sizeof pieces / sizeof *pieces;
    for (unsigned run = 0; run < 6000; ++run) {
        std::string document;
        const unsigned long length = random() % 60;
        for (unsigned long i = 0; i < length; ++i) {
            document += pieces[random() % count];
            if (random() % 40 == 0)
                document += std::string(random() % 300, "ar <>'-"[random() % 7]);
        }
        Conditions conditions;
        conditions.errorsReturn = random() % 4 != 0;
        conditions.withEvents = random() % 16 != 0;
        conditions.eventsLook = random() % 4 == 0;
        conditions.eventsConsume = random() % 4 == 0;
        const unsigned long portions[] = {~0UL, ~0UL, 1, 3, 60, 128, 1 + random() % 140};
        conditions.portion = portions[random() % 7];
        if (random() % 8 == 0)
            conditions.failingCall = random() % 40;
        if (random() % 8 == 0)
            conditions.failingEvent = random() % 40;
        SCOPED_TRACE("seed " + std::to_string(seed) + ", run " + std::to_string(run));
        ASSERT_NO_FATAL_FAILURE(expectAgreement(document, conditions));
    }
}

// The reader

/// Applies the same operations to both readers, and compares what they return and what the stream
/// sees.
class ReaderPair {
public:
    ReaderPair(const std::string& content, unsigned long portion)
        : stream(content, &log), modelStream(content, &modelLog), reader(stream),
          model(modelStream) {
        stream.portion = portion;
        modelStream.portion = portion;
    }

    void find(const std::string& text) {
        OCAnsiString skipped("kept");
        std::string modelSkipped("kept");
        const OCAnsiString wanted(text.data(), text.size());
        const bool found = reader.findString(wanted, skipped);
        ASSERT_EQ(model.findString(text, &modelSkipped), found) << text;
        ASSERT_EQ(modelSkipped, std::string(skipped.getString(), skipped.getLength())) << text;
    }
    void peek(const std::string& text) {
        const OCAnsiString wanted(text.data(), text.size());
        ASSERT_EQ(model.peekString(text), reader.peekString(wanted)) << text;
    }
    void skip(unsigned long count) {
        OCAnsiString text;
        reader.skipString(text.setLength(count).fill('x'));
        if (count > 0)
            model.skip(count);
    }
    void grow(unsigned long count) { ASSERT_EQ(model.growBuffer(count), reader.growBuffer(count)); }
    void find(char c) {
        std::string modelSkipped;
        OCAnsiString skipped;
        ASSERT_EQ(model.findCharacter(c, &modelSkipped), reader.findCharacter(c, skipped));
        ASSERT_EQ(modelSkipped, std::string(skipped.getString(), skipped.getLength()));
    }
    void peek(char c) { ASSERT_EQ(model.peekCharacter(c), reader.peekCharacter(c)); }
    void compareCalls() { ASSERT_EQ(shown(modelLog), shown(log)); }

private:
    Log log;
    Log modelLog;
    htmlmodel::LoggingStream stream;
    htmlmodel::LoggingStream modelStream;
    OCHtmlParserReader reader;
    htmlmodel::Reader model;
};

TEST(OCHtmlModel, ReadersAgreeOnRandomOperations) {
    const unsigned seed = 77003;
    std::mt19937 random(seed);
    for (unsigned run = 0; run < 4000; ++run) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", run " + std::to_string(run));
        // Few different characters, so that long texts begin often and match rarely.
        const char* const alphabet = run % 2 == 0 ? "aA" : "abAB-";
        const unsigned long size = run % 2 == 0 ? 2 : 5;
        const auto text = [&](unsigned long length) {
            std::string result;
            while (result.size() < length)
                if (random() % 8 == 0 && !result.empty())
                    result += result.substr(0, length - result.size());
                else
                    result += alphabet[random() % size];
            return result;
        };
        const std::string content = text(random() % 900);
        const unsigned long portions[] = {~0UL, 1, 9, 128};
        ReaderPair readers(content, portions[random() % 4]);
        for (unsigned i = 0; i < 12; ++i) {
            switch (random() % 7) {
            case 0:
                readers.find(text(random() % 10));
                break;
            case 1: {
                // a text that occurs, with another case
                const unsigned long start = random() % (content.size() + 1);
                std::string wanted = content.substr(start, random() % 200);
                for (char& c : wanted)
                    if (random() % 4 == 0 && c != '-')
                        c = static_cast<char>(c ^ 0x20);
                readers.find(wanted);
                break;
            }
            case 2:
                readers.peek(text(random() % 20));
                break;
            case 3:
                readers.skip(random() % 30);
                break;
            case 4:
                readers.grow(random() % 300);
                break;
            case 5:
                readers.find(alphabet[random() % size]);
                break;
            case 6:
                readers.peek(alphabet[random() % size]);
                break;
            }
            if (testing::Test::HasFatalFailure())
                return;
        }
        readers.compareCalls();
        if (testing::Test::HasFatalFailure())
            return;
    }
}

} // namespace
