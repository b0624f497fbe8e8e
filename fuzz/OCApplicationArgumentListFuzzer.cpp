// Application arguments against a plain model: the input as one text, as the arguments of a program
// (each ends at a zero byte), and as one argument with all its bytes.

#include "OCApplicationArguments.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Argument {
    int type;
    std::string name;
    std::string value;
};

typedef std::vector<Argument> Arguments;

void addPlain(const std::string& text, Arguments& arguments) {
    if (text.size() < 2 || text[0] != '-') {
        arguments.push_back({2, "", text});
    } else if (text[1] != '-') {
        std::string rest = text.substr(1);
        while (!rest.empty()) {
            Argument option = {0, rest.substr(0, 1), ""};
            rest.erase(0, 1);
            if (!rest.empty() && rest[0] == '=') {
                option.value = rest.substr(1);
                rest.clear();
            }
            arguments.push_back(option);
        }
    } else {
        const std::string rest = text.substr(2);
        const std::size_t equals = rest.find('=');
        const std::string name = rest.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : rest.substr(equals + 1);
        if (!name.empty())
            arguments.push_back({name.size() == 1 ? 0 : 1, name, value});
    }
}

/// Only the first character of the text may be a space of a piece.
Arguments splitPlain(const std::string& text) {
    Arguments arguments;
    std::string piece;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != ' ' || i == 0)
            piece += text[i];
        if (!piece.empty() && (i + 1 == text.size() || text[i + 1] == ' ')) {
            addPlain(piece, arguments);
            piece.clear();
        }
    }
    return arguments;
}

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

void requireSame(const Arguments& expected, const OCApplicationArgumentList& list,
                 const char* form) {
    bool same = list.getCount() == expected.size() && list.isEmpty() == expected.empty();
    for (unsigned long i = 0; same && i < expected.size(); ++i) {
        const OCApplicationArgument& argument = list.getArgument(i);
        same = argument.getType() == expected[i].type &&
               standard(argument.getName()) == expected[i].name &&
               standard(argument.getValue()) == expected[i].value &&
               argument.hasName() != expected[i].name.empty() &&
               argument.hasValue() != expected[i].value.empty();
    }
    if (!same) {
        fprintf(stderr, "violated: %s: %lu arguments instead of %zu, or others\n", form,
                list.getCount(), expected.size());
        abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    OCApplicationArgumentList list;

    list.assign(input.c_str());
    const std::string untilZero = input.substr(0, input.find('\0'));
    requireSame(splitPlain(untilZero), list, "one text");

    std::vector<std::string> texts;
    for (std::size_t begin = 0; begin < size; begin += texts.back().size() + 1)
        texts.emplace_back(input.c_str() + begin);
    std::vector<char*> pointers;
    Arguments expected;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        pointers.push_back(texts[i].data());
        if (i != 0)
            addPlain(texts[i], expected);
    }
    pointers.push_back(nullptr);
    list.assign(static_cast<int>(texts.size()), pointers.data());
    requireSame(expected, list, "arguments of a program");

    addPlain(input, expected);
    list.addArgument(OCAnsiString(input.data(), size));
    requireSame(expected, list, "an added argument");
    return 0;
}
