// Prints the links and the plain text of HTML pages:
// html-links [--links | --text] FILE…
//
// A link is the address of an `a`, `area`, `link`, `img`, `script`, `iframe` or `frame` element.
// The text is that of the page without what browsers do not show; its common references are
// replaced, and each run of white space is one space or, around what begins a new line, a line end.

#include <cstdio>
#include <cstring>
#include <orvabase.h>

namespace {

bool same(const OCAnsiString& name, const char* other) {
    return name.compare(other, StringCaseInsensitive) == CompareResultEqual;
}

bool isOneOf(const OCAnsiString& name, const char* const* names) {
    for (; *names; ++names)
        if (same(name, *names))
            return true;
    return false;
}

/// Replaces the references that nearly all pages need. Numeric ones become UTF-8.
OCAnsiString decoded(const OCAnsiString& text) {
    static const struct {
        const char* name;
        const char* character;
    } named[] = {{"amp", "&"},   {"lt", "<"},   {"gt", ">"},
                 {"quot", "\""}, {"apos", "'"}, {"nbsp", " "}};
    OCAnsiString result;
    unsigned long begin = 0;
    for (unsigned long i = 0; i < text.getLength(); ++i) {
        if (text.getString()[i] != '&')
            continue;
        const char* const name = text.getString() + i + 1;
        const unsigned long length = std::strcspn(name, ";& \n<");
        if (length == 0 || length > 8 || name[length] != ';')
            continue;
        OCAnsiString replacement;
        unsigned int code = 0;
        if (*name == '#' && std::sscanf(name, "#%u;", &code) != 1)
            std::sscanf(name, "#%*1[xX]%x;", &code);
        if (code >= 0x10000)
            code = 0xFFFD;
        if (code >= 0x800) {
            replacement.append(static_cast<char>(0xE0 | code >> 12));
            replacement.append(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
            replacement.append(static_cast<char>(0x80 | (code & 0x3F)));
        } else if (code >= 0x80) {
            replacement.append(static_cast<char>(0xC0 | code >> 6));
            replacement.append(static_cast<char>(0x80 | (code & 0x3F)));
        } else if (code > 0)
            replacement.append(static_cast<char>(code));
        for (const auto& entry : named)
            if (length == std::strlen(entry.name) && std::memcmp(name, entry.name, length) == 0)
                replacement.assign(entry.character);
        if (replacement.getLength() == 0)
            continue;
        result.append(text.getString() + begin, i - begin);
        result.append(replacement);
        i += length + 1;
        begin = i + 1;
    }
    result.append(text.getString() + begin, text.getLength() - begin);
    return result;
}

void printLine(const OCAnsiString& text) {
    std::fwrite(text.getString(), 1, text.getLength(), stdout);
    std::putchar('\n');
}

class Page : public OCHtmlParserEvents {
public:
    Page(bool wantLinks, bool wantText) : links(wantLinks), texts(wantText) {}

    void attribute(const OCAnsiString& name, const OCAnsiString& value) override {
        static const char* const bySource[] = {"img", "script", "iframe", "frame", nullptr};
        static const char* const byReference[] = {"a", "area", "link", nullptr};
        if (!links)
            return;
        if ((same(name, "href") && isOneOf(element, byReference)) ||
            (same(name, "src") && isOneOf(element, bySource)))
            printLine(decoded(value));
    }
    void characterData(const OCAnsiString& text) override {
        if (!texts || hidden)
            return;
        for (unsigned long i = 0; i < text.getLength(); ++i) {
            const char c = text.getString()[i];
            if (static_cast<unsigned char>(c) <= 32) {
                space = true;
                continue;
            }
            if (space && line.getLength() > 0)
                line.append(' ');
            space = false;
            line.append(c);
        }
    }
    void documentEnd() override { endLine(); }
    void elementEnd(const OCAnsiString& name) override {
        if (hidden && same(name, hidden))
            hidden = nullptr;
        breakLine(name);
    }
    void elementStart(const OCAnsiString& name) override {
        static const char* const hiding[] = {"script", "style", "title"};
        element = name;
        for (const char* other : hiding)
            if (!hidden && same(name, other))
                hidden = other;
        breakLine(name);
    }
    /// Browsers show what they can: a malformed piece is passed over.
    void error(OEHtmlErrorClass) override { ++errors; }

    unsigned long errors = 0;

private:
    void breakLine(const OCAnsiString& name) {
        static const char* const inlines[] = {
            "a",    "abbr",  "acronym", "b",      "code",   "em",  "font", "i",    "kbd",
            "samp", "small", "span",    "strong", "sub",    "sup", "tt",   "u",    "var",
            "img",  "cite",  "dfn",     "q",      "strike", "del", "ins",  nullptr};
        if (texts && !isOneOf(name, inlines))
            endLine();
    }
    void endLine() {
        if (line.getLength() > 0)
            printLine(decoded(line));
        line.clear();
        space = false;
    }

    const bool links;
    const bool texts;
    OCAnsiString element;
    OCAnsiString line;
    bool space = false;
    const char* hidden = nullptr;
};

void print(const OCFilePath& path, bool links, bool text) {
    OCFileStream stream(path, FileCreateModeRead, FileShareModeRead);
    Page page(links, text);
    OCHtmlParser parser;
    parser.setParserEvents(page);
    parser.parse(stream);
    if (page.errors > 0) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s: %lu malformed\n", path.getString(), page.errors);
    }
}

int usage(const char* program) {
    std::fprintf(stderr, "usage: %s [--links | --text] FILE...\n", program);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    bool links = true;
    bool text = true;
    int first = 1;
    if (argc > 1 && std::strncmp(argv[1], "--", 2) == 0) {
        links = std::strcmp(argv[1], "--links") == 0;
        text = std::strcmp(argv[1], "--text") == 0;
        if (!links && !text)
            return usage(argv[0]);
        first = 2;
    }
    if (first == argc)
        return usage(argv[0]);
    int status = 0;
    for (int i = first; i < argc; ++i) {
        try {
            print(argv[i], links, text);
        } catch (const OXException& failure) {
            std::fflush(stdout);
            std::fprintf(stderr, "%s: %s: %s\n", argv[i], failure.getClass().getString(),
                         failure.getMessage().getString());
            status = 1;
        }
    }
    return status;
}
