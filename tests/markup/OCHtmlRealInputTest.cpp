// Pages of other people, and what another parser of another language makes of them.

#include "OCFileStream.h"
#include "OCHtmlParser.h"
#include "support/HtmlModel.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using Outline = std::vector<std::string>;

/// The other parser's outline: names in lower case, references in values replaced, no texts.
/// A character is a byte.
const char script[] = R"(
import html.parser, sys

def shown(text):
    return "".join(c if 32 <= ord(c) < 127 and c != "\\" else "\\%d;" % ord(c) for c in text)

class Outline(html.parser.HTMLParser):
    # No element has a content of its own kind.
    CDATA_CONTENT_ELEMENTS = ()

    def handle_starttag(self, tag, attributes):
        print("start " + tag)
        for name, value in attributes:
            print("attribute " + name + "=" + shown(value or ""))
    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)
        print("end " + tag)
    def handle_endtag(self, tag):
        print("end " + tag)
    def handle_comment(self, data):
        print("comment " + shown(data.split("--")[0]))
    def handle_decl(self, declaration):
        print("doctype " + shown(declaration[len("doctype"):].strip()))

parser = Outline(convert_charrefs=False)
parser.feed(open(sys.argv[1], encoding="latin-1", newline="").read())
parser.close()
)";

Outline outlineOfPython(const std::string& path) {
    const ScratchDirectory scratch;
    const std::string program = scratch.write("outline.py", script);
    // NOLINTNEXTLINE(cert-env33-c)
    std::FILE* output = popen(("python3 '" + program + "' '" + path + "'").c_str(), "r");
    std::string text;
    char block[65536];
    for (std::size_t n; (n = std::fread(block, 1, sizeof block, output)) > 0;)
        text.append(block, n);
    EXPECT_EQ(0, pclose(output));
    Outline outline;
    for (std::size_t begin = 0, end; (end = text.find('\n', begin)) != std::string::npos;
         begin = end + 1)
        outline.push_back(text.substr(begin, end - begin));
    return outline;
}

class Collector : public OCHtmlParserEvents {
public:
    void attribute(const OCAnsiString& name, const OCAnsiString& value) override {
        outline.push_back("attribute " + lower(name) + "=" + htmlmodel::printable(value));
        ++attributes;
    }
    void characterData(const OCAnsiString& text) override { textBytes += text.getLength(); }
    void comment(const OCAnsiString& text) override {
        outline.push_back("comment " + htmlmodel::printable(text));
    }
    void documentType(const OCAnsiString& text) override {
        outline.push_back("doctype " + htmlmodel::printable(text));
    }
    void elementEnd(const OCAnsiString& name) override { outline.push_back("end " + lower(name)); }
    void elementStart(const OCAnsiString& name) override {
        outline.push_back("start " + lower(name));
        ++starts;
    }
    void elementStartComplete(const OCAnsiString&) override { ++completes; }

    Outline outline;
    unsigned long starts = 0;
    unsigned long completes = 0;
    unsigned long attributes = 0;
    unsigned long textBytes = 0;

private:
    static std::string lower(const OCAnsiString& name) {
        OCAnsiString folded(name);
        folded.lowerCase();
        return std::string(folded.getString(), folded.getLength());
    }
};

void comparePage(const std::string& path, Collector& collector) {
    OCFileStream stream(path.c_str(), FileCreateModeRead, FileShareModeRead);
    OCHtmlParser parser;
    parser.setParserEvents(collector);
    parser.parse(stream);
    EXPECT_EQ(collector.starts, collector.completes);

    Outline other = outlineOfPython(path);
    // References in attributes are replaced by the other parser; both are compared without them.
    const auto plain = [](Outline& outline) {
        for (std::string& entry : outline)
            if (entry.compare(0, 10, "attribute ") == 0)
                for (const auto& pair : std::map<std::string, std::string>{
                         {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}})
                    for (std::size_t at = 0; (at = entry.find(pair.first, at)) != std::string::npos;
                         ++at)
                        entry.replace(at, pair.first.size(), pair.second);
    };
    plain(other);
    plain(collector.outline);
    for (std::size_t i = 0; i < other.size() && i < collector.outline.size(); ++i)
        ASSERT_EQ(other[i], collector.outline[i]) << "entry " << i;
    ASSERT_EQ(other.size(), collector.outline.size());
}

/// What the pages hold outside of markup, counted without a parser.
unsigned long bytesOfText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string page(std::istreambuf_iterator<char>(file), {});
    unsigned long count = 0;
    for (std::size_t at = 0; at < page.size();) {
        if (page[at] != '<') {
            ++at;
            ++count;
            continue;
        }
        at = page.compare(at, 4, "<!--") == 0 ? page.find("-->", at) + 3 : page.find('>', at) + 1;
    }
    return count;
}

TEST(OCHtmlRealInput, AgreesWithPythonOnTheReferenceOfBash) {
    const std::string path = "/usr/share/doc/bash-doc/bashref.html";
    Collector collector;
    ASSERT_NO_FATAL_FAILURE(comparePage(path, collector));
    EXPECT_LT(19000u, collector.starts);
    EXPECT_LT(7000u, collector.attributes);
    EXPECT_EQ(bytesOfText(path), collector.textBytes);
}

TEST(OCHtmlRealInput, AgreesWithPythonOnTheManualOfBash) {
    const std::string path = "/usr/share/doc/bash-doc/bash.html";
    Collector collector;
    ASSERT_NO_FATAL_FAILURE(comparePage(path, collector));
    EXPECT_LT(5000u, collector.starts);
    EXPECT_EQ(bytesOfText(path), collector.textBytes);
}

/// Every way of reading a real page gives the same events.
TEST(OCHtmlRealInput, AgreesWithThePlainParserHoweverAPageIsRead) {
    std::ifstream file("/usr/share/doc/bash-doc/bash.html", std::ios::binary);
    const std::string page(std::istreambuf_iterator<char>(file), {});
    ASSERT_LT(300000u, page.size());
    htmlmodel::Conditions conditions;
    const htmlmodel::Log expected = htmlmodel::Run(page, conditions).plain(false);
    EXPECT_LT(10000u, expected.size());
    EXPECT_TRUE(expected == htmlmodel::Run(page, conditions).privateReader());
    for (const unsigned long portion : {1UL, 100UL}) {
        conditions.portion = portion;
        EXPECT_TRUE(htmlmodel::withoutCalls(expected) ==
                    htmlmodel::withoutCalls(htmlmodel::Run(page, conditions).privateReader()))
            << portion;
    }
}

} // namespace
