// Prints the events of XML files as an indented outline, and how long the parser takes for each:
// xml-events FILE…

#include <cstdio>
#include <orvabase.h>

namespace {

/// Counts what a document consists of.
class Counter : public OCXmlEvents {
public:
    void attribute(const OCWideString&, const OCWideString&) override { ++attributes; }
    void elementStart(const OCWideString&) override { ++elements; }

    unsigned long elements = 0;
    unsigned long attributes = 0;
};

/// Prints each event on a line of its own, but for text that only separates the markup.
class Outline : public OCXmlEvents {
public:
    void attribute(const OCWideString& name, const OCWideString& value) override {
        print("@", name, " = ", &value);
    }
    void characterData(const OCWideString& text) override {
        OCWideString visible(text);
        if (visible.trim().getLength() > 0)
            print("\"", text, "\"");
    }
    void elementEnd() override { --depth; }
    void elementStart(const OCWideString& name) override {
        print("", name, "");
        ++depth;
    }
    void processingInstruction(const OCWideString& target, const OCWideString& data) override {
        print("?", target, " ", &data);
    }

private:
    void print(const char* before, const OCWideString& text, const char* behind,
               const OCWideString* more = nullptr) const {
        for (unsigned long i = 0; i < depth; ++i)
            std::fputs("  ", stdout);
        std::fputs(before, stdout);
        printEscaped(text);
        std::fputs(behind, stdout);
        if (more)
            printEscaped(*more);
        std::putchar('\n');
    }

    /// The bytes as the file has them, but for those that a terminal would act on.
    static void printEscaped(const OCAnsiString& text) {
        for (unsigned long i = 0; i < text.getLength(); ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if (byte == '\n')
                std::fputs("\\n", stdout);
            else if (byte < 32 || byte == 127)
                std::printf("\\x%02x", byte);
            else
                std::putchar(byte);
        }
    }

    unsigned long depth = 0;
};

void printEvents(const OCFilePath& path) {
    OCXmlParser parser;
    Outline outline;
    parser.setEvents(outline);
    parser.parse(path);

    // Printing takes longer than parsing, so the time is taken without it.
    Counter counter;
    parser.setEvents(counter);
    const OCStopwatch stopwatch;
    parser.parse(path);
    const double seconds = stopwatch.getTime();
    const long bytes = path.getFileSize();
    std::printf("%s: %lu elements, %lu attributes, %ld bytes, %.6f seconds, %.1f MB/s\n",
                path.getString(), counter.elements, counter.attributes, bytes, seconds,
                seconds > 0 ? static_cast<double>(bytes) / 1e6 / seconds : 0.0);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FILE...\n", argv[0]);
        return 2;
    }
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        try {
            printEvents(argv[i]);
        } catch (const OXException& failure) {
            std::fflush(stdout);
            std::fprintf(stderr, "%s: %s: %s\n", argv[i], failure.getClass().getString(),
                         failure.getMessage().getString());
            status = 1;
        }
    }
    return status;
}
