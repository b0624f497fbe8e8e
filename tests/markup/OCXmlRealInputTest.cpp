// Documents that others wrote, compared with what expat makes of them.

#include "OCFilePath.h"
#include "OCXmlParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <expat.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

/// What a parser makes of a document: its elements with the attributes that are written there, and
/// the text between two tags as one piece.
using Outline = std::vector<std::string>;

/// Replaces what both parsers know without declarations: the five predefined entities and
/// characters by number. Other references stay as they are.
std::string decoded(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t end = text[i] == '&' ? text.find(';', i) : std::string::npos;
        if (end == std::string::npos) {
            result += text[i];
            continue;
        }
        const std::string name = text.substr(i + 1, end - i - 1);
        static const std::pair<const char*, char> predefined[] = {
            {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
        const auto* known =
            std::find_if(std::begin(predefined), std::end(predefined),
                         [&](const std::pair<const char*, char>& p) { return name == p.first; });
        if (known != std::end(predefined))
            result += known->second;
        else if (name[0] == '#') {
            const bool isHexadecimal = name[1] == 'x';
            unsigned long code = std::strtoul(name.c_str() + (isHexadecimal ? 2 : 1), nullptr,
                                              isHexadecimal ? 16 : 10);
            // as UTF-8, which is what expat delivers
            if (code < 0x80)
                result += static_cast<char>(code);
            else if (code < 0x800) {
                result += static_cast<char>(0xC0 | code >> 6);
                result += static_cast<char>(0x80 | (code & 0x3F));
            } else {
                result += static_cast<char>(0xE0 | code >> 12);
                result += static_cast<char>(0x80 | (code >> 6 & 0x3F));
                result += static_cast<char>(0x80 | (code & 0x3F));
            }
        } else
            result += "&" + name + ";";
        i = end;
    }
    return result;
}

/// A line end of two characters, or of the wrong one, counts as one line feed.
std::string withLineFeeds(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r')
            result += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            result += '\n';
    return result;
}

/// In a value, each character of white space counts as a space.
std::string withSpaces(std::string text) {
    for (char& c : text)
        if (c == '\n' || c == '\t')
            c = ' ';
    return text;
}

class Collector {
public:
    void text(const std::string& piece) { pending += piece; }
    void tag(const std::string& entry) {
        if (!pending.empty())
            outline.push_back("text " + pending);
        pending.clear();
        outline.push_back(entry);
    }
    Outline outline;

private:
    std::string pending;
};

class LibraryEvents : public OCXmlEvents {
public:
    void attribute(const OCWideString& name, const OCWideString& value) override {
        collector.tag("attribute " + narrow(name) + "=" +
                      decoded(withSpaces(withLineFeeds(narrow(value)))));
    }
    void characterData(const OCWideString& text) override {
        collector.text(decoded(withLineFeeds(narrow(text))));
    }
    void elementEnd() override { collector.tag("end"); }
    void elementStart(const OCWideString& name) override { collector.tag("start " + narrow(name)); }

    Collector collector;

private:
    static std::string narrow(const OCWideString& text) {
        const OCAnsiString bytes(text);
        return std::string(bytes.getString(), bytes.getLength());
    }
};

/// The library's outline; false when it rejects the document.
bool parseWithLibrary(const std::string& path, Outline& outline) {
    LibraryEvents events;
    OCXmlParser parser;
    parser.setEvents(events);
    try {
        parser.parse(OCFilePath(path.c_str()));
    } catch (const OXXmlParser&) {
        return false;
    }
    outline = events.collector.outline;
    return true;
}

struct Expat {
    XML_Parser parser = XML_ParserCreate(nullptr);
    Collector collector;
    unsigned depth = 0;

    ~Expat() { XML_ParserFree(parser); }

    static void XMLCALL start(void* user, const XML_Char* name, const XML_Char** attributes) {
        auto& self = *static_cast<Expat*>(user);
        ++self.depth;
        self.collector.tag(std::string("start ") + name);
        const int written = XML_GetSpecifiedAttributeCount(self.parser);
        for (int i = 0; i < written; i += 2)
            self.collector.tag(std::string("attribute ") + attributes[i] + "=" + attributes[i + 1]);
    }
    static void XMLCALL end(void* user, const XML_Char*) {
        auto& self = *static_cast<Expat*>(user);
        --self.depth;
        self.collector.tag("end");
    }
    static void XMLCALL text(void* user, const XML_Char* text, int length) {
        static_cast<Expat*>(user)->collector.text(
            std::string(text, static_cast<std::size_t>(length)));
    }
    /// References to entities, which are not replaced when there is a handler for the rest.
    static void XMLCALL rest(void* user, const XML_Char* text, int length) {
        auto& self = *static_cast<Expat*>(user);
        if (self.depth > 0)
            self.collector.text(std::string(text, static_cast<std::size_t>(length)));
    }
};

bool parseWithExpat(const std::string& path, Outline& outline) {
    std::ifstream file(path, std::ios::binary);
    const std::string document(std::istreambuf_iterator<char>(file), {});
    Expat expat;
    XML_SetUserData(expat.parser, &expat);
    XML_SetElementHandler(expat.parser, Expat::start, Expat::end);
    XML_SetCharacterDataHandler(expat.parser, Expat::text);
    XML_SetDefaultHandler(expat.parser, Expat::rest);
    XML_SetCommentHandler(expat.parser, [](void*, const XML_Char*) {});
    XML_SetProcessingInstructionHandler(expat.parser,
                                        [](void*, const XML_Char*, const XML_Char*) {});
    XML_SetCdataSectionHandler(
        expat.parser, [](void*) {}, [](void*) {});
    if (XML_Parse(expat.parser, document.data(), static_cast<int>(document.size()), 1) !=
        XML_STATUS_OK)
        return false;
    outline = expat.collector.outline;
    return true;
}

/// Compares the outlines of a file that both accept; false when one does not.
bool compareFile(const std::string& path) {
    Outline library;
    Outline expat;
    if (!parseWithLibrary(path, library) || !parseWithExpat(path, expat))
        return false;
    for (std::size_t i = 0; i < std::min(library.size(), expat.size()); ++i)
        if (library[i] != expat[i]) {
            ADD_FAILURE() << path << ", entry " << i << "\nlibrary: " << library[i]
                          << "\nexpat:   " << expat[i];
            return true;
        }
    EXPECT_EQ(expat.size(), library.size()) << path;
    EXPECT_LT(1u, library.size()) << path;
    return true;
}

/// The files below a directory that end in ".xml", in order.
std::vector<std::string> xmlFiles(const std::string& directory) {
    std::vector<std::string> paths;
    std::error_code missing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory, missing))
        if (entry.path().extension() == ".xml" && std::filesystem::is_regular_file(entry))
            paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

unsigned compareFiles(const std::string& directory) {
    unsigned compared = 0;
    unsigned rejected = 0;
    for (const std::string& path : xmlFiles(directory))
        ++(compareFile(path) ? compared : rejected);
    std::printf("%s: %u compared, %u rejected by one of the parsers\n", directory.c_str(), compared,
                rejected);
    return compared;
}

TEST(OCXmlRealInput, AgreesWithExpatOnTheMimeDatabase) {
    const std::string path = "/usr/share/mime/packages/freedesktop.org.xml";
    EXPECT_TRUE(compareFile(path));
    EXPECT_LT(2000000u, std::filesystem::file_size(path));
}

TEST(OCXmlRealInput, AgreesWithExpatOnTheIsoCodes) {
    EXPECT_LE(10u, compareFiles("/usr/share/xml/iso-codes"));
}

TEST(OCXmlRealInput, AgreesWithExpatOnDocBook) {
    // The examples are documentation, which small installations leave out.
    EXPECT_LE(2u, compareFiles("/usr/share/xml/docbook"));
    compareFiles("/usr/share/doc/docbook-xml");
}

} // namespace
