// Takes locators apart, or edits them and writes them back: url [--html] [EDIT…] LOCATOR…
//
// Without an edit the parts and parameters of each locator are printed, each on a line of its own.
// Edits are made in the order given, and each locator is then printed as a text:
//
//     --set NAME=VALUE    sets the parameter NAME, which is in it once afterwards
//     --add NAME=VALUE    adds a parameter behind all others
//     --remove NAME       removes every parameter of this name
//     --protocol TEXT     sets a part; an empty TEXT removes it
//     --server TEXT
//     --port NUMBER       0 removes it
//     --resource PATH
//     --html              writes "&amp;" between parameters; alone, it writes the locators as they
//     are

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <orvabase.h>

namespace {

const char* const edits[] = {"--set",    "--add",  "--remove",  "--protocol",
                             "--server", "--port", "--resource"};

bool isEdit(const char* argument) {
    return std::any_of(std::begin(edits), std::end(edits),
                       [argument](const char* edit) { return std::strcmp(argument, edit) == 0; });
}

/// `NAME=VALUE` or just `NAME`, where `%` and `+` mean themselves.
struct Parameter {
    explicit Parameter(const OCAnsiString& text) : name(text) {
        unsigned long place = 0;
        if (text.indexOf('=', place)) {
            name.left(place);
            value.assign(text.getString() + place + 1, text.getLength() - place - 1);
        }
    }

    OCAnsiString name;
    OCAnsiString value;
};

void apply(OCResourceLocator& locator, const OCAnsiString& edit, const OCAnsiString& text) {
    OCQueryString& parameters = locator.getParameters();
    const Parameter parameter(text);
    if (edit == "--set")
        parameters.setValue(parameter.name, parameter.value);
    else if (edit == "--add")
        parameters.addElement(parameter.name, parameter.value);
    else if (edit == "--remove")
        parameters.removeElement(text);
    else if (edit == "--protocol")
        locator.setProtocol(text);
    else if (edit == "--server")
        locator.setServer(text);
    else if (edit == "--port")
        locator.setPort(OCUnsignedIntegerConversion::fromString(text, 10));
    else
        locator.setResource(text);
}

/// Prints a text in one line: what a terminal would act on, as `\x` and two digits.
void printText(const char* before, const OCAnsiString& text, const char* behind) {
    std::fputs(before, stdout);
    for (unsigned long i = 0; i < text.getLength(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 32 || byte == 127)
            std::printf("\\x%02x", byte);
        else
            std::putchar(byte);
    }
    std::fputs(behind, stdout);
}

void printParts(const OCResourceLocator& locator) {
    if (locator.hasProtocol())
        printText("protocol: ", locator.getProtocol(), "\n");
    if (locator.hasServer())
        printText("server: ", locator.getServer(), "\n");
    if (locator.hasPort())
        std::printf("port: %u\n", locator.getPort());
    if (locator.hasResource())
        printText("resource: ", locator.getResource(), "\n");
    const OCQueryString& parameters = locator.getParameters();
    for (unsigned long i = 0; i < parameters.getCount(); ++i) {
        printText("parameter: ", parameters.getName(i), " = ");
        printText("", parameters.getValue(i), "\n");
    }
}

int usage(const char* program) {
    std::fprintf(stderr,
                 "usage: %s [--html] [--set NAME=VALUE] [--add NAME=VALUE] [--remove NAME] "
                 "[--protocol TEXT] [--server TEXT] [--port NUMBER] [--resource PATH] LOCATOR...\n",
                 program);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    OEQueryStringFormat format = QueryStringFormatPlain;
    bool write = false;
    int first = 1;
    for (; first < argc && std::strncmp(argv[first], "--", 2) == 0; ++first) {
        if (std::strcmp(argv[first], "--html") == 0)
            format = QueryStringFormatHtml;
        else if (!isEdit(argv[first]) || ++first == argc)
            return usage(argv[0]);
        write = true;
    }
    if (first == argc)
        return usage(argv[0]);

    int status = 0;
    for (int i = first; i < argc; ++i) {
        try {
            OCResourceLocator locator{OCAnsiString(argv[i])};
            for (int edit = 1; edit < first; ++edit) {
                if (std::strcmp(argv[edit], "--html") != 0) {
                    apply(locator, argv[edit], argv[edit + 1]);
                    ++edit;
                }
            }
            if (write)
                printText("", locator.getText(format), "\n");
            else
                printParts(locator);
        } catch (const OXException& failure) {
            std::fflush(stdout);
            std::fprintf(stderr, "%s: %s: %s\n", argv[i], failure.getClass().getString(),
                         failure.getMessage().getString());
            status = 1;
        }
    }
    return status;
}
