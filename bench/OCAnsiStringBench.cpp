// The narrow string beside the standard library's string, the C library's text functions, Abseil
// and Qt. Peers that a work has no counterpart in are left out.

#include "OCAnsiString.h"

#include <absl/strings/str_cat.h>
#include <absl/strings/str_replace.h>
#include <benchmark/benchmark.h>

#include <QByteArray>
#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

constexpr unsigned long textSize = 64UL * 1024;

/// A pointer that the compiler knows nothing about.
const char* hidden(const char* text) {
    DoNotOptimize(text);
    return text;
}

// Construct and copy

template<typename String>
void constructAndCopy(State& state, unsigned long count) {
    // Not beside the strings on the stack, where a read-ahead of the text would wait for their
    // stores.
    static char text[128];
    std::memset(text, 'x', count);
    text[count] = 0;
    for (auto _ : state) {
        String first(hidden(text));
        String second(first);
        DoNotOptimize(&second);
        ClobberMemory();
    }
}

// Append

template<typename String>
void appendCharacters(State& state, unsigned long total) {
    for (auto _ : state) {
        String text;
        for (unsigned long i = 0; i < total; ++i)
            text += static_cast<char>('a' + i % 26);
        DoNotOptimize(&text);
        ClobberMemory();
    }
}

template<typename String>
void appendEights(State& state, unsigned long total) {
    const char* const piece = "abcdefgh";
    for (auto _ : state) {
        String text;
        for (unsigned long i = 0; i + 8 <= total; i += 8)
            text.append(hidden(piece), 8);
        DoNotOptimize(&text);
        ClobberMemory();
    }
}

// Path join

constexpr const char* directory = "/usr/local/share";
constexpr const char* file = "documents/readme.txt";

void joinOurs(State& state) {
    const OCAnsiString left(directory);
    const OCAnsiString right(file);
    for (auto _ : state) {
        OCAnsiString path = left / right;
        DoNotOptimize(&path);
        ClobberMemory();
    }
}

void joinString(State& state) {
    const std::string left(directory);
    const std::string right(file);
    for (auto _ : state) {
        std::string path;
        path.reserve(left.size() + 1 + right.size());
        path = left;
        if (path.back() != '/')
            path += '/';
        path += right;
        DoNotOptimize(&path);
        ClobberMemory();
    }
}

void joinStrCat(State& state) {
    const std::string left(directory);
    const std::string right(file);
    for (auto _ : state) {
        std::string path = absl::StrCat(left, "/", right);
        DoNotOptimize(&path);
        ClobberMemory();
    }
}

// Find: the pattern stands only at the end of the text.

struct Search {
    std::string text;
    std::string pattern;
};

/// Words of lower-case letters; "q" does not occur, "e" often does.
std::string words(unsigned long count) {
    std::mt19937 random(1);
    const std::string letters = "eeeetttaaaooinnnsshhrrdlucm    ";
    std::string text;
    while (text.size() < count)
        text += letters[random() % letters.size()];
    return text;
}

Search makeSearch(const std::string& pattern) {
    Search search{words(textSize), pattern};
    search.text.replace(textSize - pattern.size(), pattern.size(), pattern);
    return search;
}

const Search& rareFirst() {
    static const Search search = makeSearch("quizmaster");
    return search;
}

const Search& commonFirst() {
    static const Search search = makeSearch("elderberry");
    return search;
}

const Search& insensitive() {
    static const Search search = [] {
        Search made = makeSearch("ElderBerry");
        made.pattern = "eLDERbERRY";
        return made;
    }();
    return search;
}

void findOurs(State& state, const Search& search, OEStringCase sense) {
    const OCAnsiString text(search.text.data(), search.text.size());
    const OCAnsiString pattern(search.pattern.c_str());
    for (auto _ : state) {
        unsigned long position = 0;
        if (!text.indexOf(pattern, position, sense))
            state.SkipWithError("not found");
        DoNotOptimize(position);
    }
}

void findString(State& state, const Search& search) {
    for (auto _ : state) {
        std::string::size_type position = search.text.find(search.pattern);
        DoNotOptimize(position);
    }
}

void findMemmem(State& state, const Search& search) {
    for (auto _ : state) {
        const void* position = memmem(search.text.data(), search.text.size(), search.pattern.data(),
                                      search.pattern.size());
        DoNotOptimize(position);
    }
}

void findStrstr(State& state, const Search& search) {
    for (auto _ : state) {
        const char* position = strstr(search.text.c_str(), search.pattern.c_str());
        DoNotOptimize(position);
    }
}

void findStrcasestr(State& state, const Search& search) {
    for (auto _ : state) {
        const char* position = strcasestr(search.text.c_str(), search.pattern.c_str());
        DoNotOptimize(position);
    }
}

// Fold: a folded copy

std::string mixedCase() {
    std::string text = words(textSize);
    for (unsigned long i = 0; i < text.size(); i += 3)
        text[i] = static_cast<char>(toupper(text[i]));
    return text;
}

void lowerOurs(State& state) {
    const std::string source = mixedCase();
    const OCAnsiString text(source.data(), source.size());
    for (auto _ : state) {
        OCAnsiString lower(text);
        lower.lowerCase();
        DoNotOptimize(&lower);
        ClobberMemory();
    }
}

void lowerQt(State& state) {
    const std::string source = mixedCase();
    const QByteArray text(source.data(), static_cast<int>(source.size()));
    for (auto _ : state) {
        QByteArray lower = text.toLower();
        DoNotOptimize(&lower);
        ClobberMemory();
    }
}

// Replace: every hundredth place is a hit.

std::string replaceText() {
    std::string text = words(textSize);
    for (unsigned long i = 50; i + 100 < text.size(); i += 100)
        text.replace(i, 3, "end");
    return text;
}

void replaceOurs(State& state) {
    const std::string source = replaceText();
    const OCAnsiString text(source.data(), source.size());
    const OCAnsiString from("end");
    const OCAnsiString to("finish");
    for (auto _ : state) {
        OCAnsiString replaced(text);
        replaced.replace(from, to);
        DoNotOptimize(&replaced);
        ClobberMemory();
    }
}

void replaceAbseil(State& state) {
    const std::string source = replaceText();
    for (auto _ : state) {
        std::string replaced = absl::StrReplaceAll(source, {{"end", "finish"}});
        DoNotOptimize(&replaced);
        ClobberMemory();
    }
}

// URL form: one byte in seven or so needs escaping

std::string formText() {
    std::mt19937 random(2);
    const std::string letters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ012345 ./=&\xe9\xc3";
    std::string text;
    while (text.size() < 1024)
        text += letters[random() % letters.size()];
    return text;
}

void escapeOurs(State& state) {
    const std::string source = formText();
    const OCAnsiString text(source.data(), source.size());
    for (auto _ : state) {
        OCAnsiString escaped(text);
        escaped.escape();
        DoNotOptimize(&escaped);
        ClobberMemory();
    }
}

void escapeQt(State& state) {
    const std::string source = formText();
    const QByteArray text(source.data(), static_cast<int>(source.size()));
    for (auto _ : state) {
        QByteArray escaped = text.toPercentEncoding();
        DoNotOptimize(&escaped);
        ClobberMemory();
    }
}

void unescapeOurs(State& state) {
    const std::string source = formText();
    const OCAnsiString text = OCAnsiString(source.data(), source.size()).escape();
    for (auto _ : state) {
        OCAnsiString plain(text);
        plain.unescape();
        DoNotOptimize(&plain);
        ClobberMemory();
    }
}

void unescapeQt(State& state) {
    const std::string source = formText();
    const QByteArray text =
        QByteArray(source.data(), static_cast<int>(source.size())).toPercentEncoding();
    for (auto _ : state) {
        QByteArray plain = QByteArray::fromPercentEncoding(text);
        DoNotOptimize(&plain);
        ClobberMemory();
    }
}

// Compare

void equalOurs(State& state) {
    const std::string source = words(textSize);
    const OCAnsiString a(source.data(), source.size());
    const OCAnsiString b(a);
    for (auto _ : state) {
        bool equal = a == b;
        DoNotOptimize(equal);
        ClobberMemory();
    }
}

void equalMemcmp(State& state) {
    const std::string a = words(textSize);
    const std::string b = a;
    for (auto _ : state) {
        bool equal = memcmp(a.data(), hidden(b.data()), a.size()) == 0;
        DoNotOptimize(equal);
        ClobberMemory();
    }
}

/// Strings of 20 characters of which the first ten to sixteen are the same in all.
template<typename String>
std::vector<String> prefixed() {
    std::mt19937 random(3);
    std::vector<String> strings;
    for (int i = 0; i < 64; ++i) {
        std::string text = "common-prefix-of-all";
        for (unsigned long at = 10 + random() % 7; at < text.size(); ++at)
            text[at] = static_cast<char>('a' + random() % 26);
        // Not every String takes a std::string. NOLINTNEXTLINE(readability-redundant-string-cstr)
        strings.push_back(String(text.c_str()));
    }
    return strings;
}

template<typename String>
void order(State& state) {
    const std::vector<String> strings = prefixed<String>();
    for (auto _ : state) {
        unsigned long less = 0;
        for (unsigned long i = 0; i + 1 < strings.size(); ++i)
            less += strings[i] < strings[i + 1] ? 1UL : 0UL;
        DoNotOptimize(less);
        ClobberMemory();
    }
}

template<typename Function, typename... Arguments>
void work(const char* name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name, [=](State& state) { function(state, arguments...); });
}

const bool registered = [] {
    work("BM_copy_11_characters/orvabase", constructAndCopy<OCAnsiString>, 11UL);
    work("BM_copy_11_characters/std_string", constructAndCopy<std::string>, 11UL);
    work("BM_copy_40_characters/orvabase", constructAndCopy<OCAnsiString>, 40UL);
    work("BM_copy_40_characters/std_string", constructAndCopy<std::string>, 40UL);
    work("BM_copy_100_characters/orvabase", constructAndCopy<OCAnsiString>, 100UL);
    work("BM_copy_100_characters/std_string", constructAndCopy<std::string>, 100UL);
    work("BM_append_1_up_to_100/orvabase", appendCharacters<OCAnsiString>, 100UL);
    work("BM_append_1_up_to_100/std_string", appendCharacters<std::string>, 100UL);
    work("BM_append_1_up_to_64K/orvabase", appendCharacters<OCAnsiString>, textSize);
    work("BM_append_1_up_to_64K/std_string", appendCharacters<std::string>, textSize);
    work("BM_append_8_up_to_100/orvabase", appendEights<OCAnsiString>, 100UL);
    work("BM_append_8_up_to_100/std_string", appendEights<std::string>, 100UL);
    work("BM_append_8_up_to_64K/orvabase", appendEights<OCAnsiString>, textSize);
    work("BM_append_8_up_to_64K/std_string", appendEights<std::string>, textSize);
    work("BM_find_64K_rare_first/orvabase",
         [](State& state) { findOurs(state, rareFirst(), StringCaseSensitive); });
    work("BM_find_64K_rare_first/std_string", [](State& state) { findString(state, rareFirst()); });
    work("BM_find_64K_rare_first/memmem", [](State& state) { findMemmem(state, rareFirst()); });
    work("BM_find_64K_rare_first/strstr", [](State& state) { findStrstr(state, rareFirst()); });
    work("BM_find_64K_common_first/orvabase",
         [](State& state) { findOurs(state, commonFirst(), StringCaseSensitive); });
    work("BM_find_64K_common_first/std_string",
         [](State& state) { findString(state, commonFirst()); });
    work("BM_find_64K_common_first/memmem", [](State& state) { findMemmem(state, commonFirst()); });
    work("BM_find_64K_common_first/strstr", [](State& state) { findStrstr(state, commonFirst()); });
    work("BM_find_64K_insensitive/orvabase",
         [](State& state) { findOurs(state, insensitive(), StringCaseInsensitive); });
    work("BM_find_64K_insensitive/strcasestr",
         [](State& state) { findStrcasestr(state, insensitive()); });
    work("BM_path_join/orvabase", joinOurs);
    work("BM_path_join/std_string", joinString);
    work("BM_path_join/abseil", joinStrCat);
    work("BM_lower_case_64K/orvabase", lowerOurs);
    work("BM_lower_case_64K/qt", lowerQt);
    work("BM_replace_all_64K/orvabase", replaceOurs);
    work("BM_replace_all_64K/abseil", replaceAbseil);
    work("BM_escape_1K/orvabase", escapeOurs);
    work("BM_escape_1K/qt", escapeQt);
    work("BM_unescape_1K/orvabase", unescapeOurs);
    work("BM_unescape_1K/qt", unescapeQt);
    work("BM_equal_64K/orvabase", equalOurs);
    work("BM_equal_64K/memcmp", equalMemcmp);
    work("BM_order_20_characters/orvabase", order<OCAnsiString>);
    work("BM_order_20_characters/std_string", order<std::string>);
    return true;
}();

} // namespace
