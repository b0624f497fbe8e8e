// The wide string beside the standard library's and Qt's: between bytes and wide characters, and
// the work that parsers do with short texts.

#include "OCWideString.h"

#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QString>
#include <cstring>
#include <string>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

constexpr unsigned long textSize = 64 * 1024;

std::string letters(unsigned long count) {
    std::string result;
    for (unsigned long i = 0; i < count; ++i)
        result += static_cast<char>('a' + i * 7 % 26);
    return result;
}

std::wstring wideLetters(unsigned long count) {
    const std::string narrow = letters(count);
    return std::wstring(narrow.begin(), narrow.end());
}

/// A pointer that the compiler knows nothing about.
const wchar_t* hidden(const wchar_t* text) {
    DoNotOptimize(text);
    return text;
}

// Widen

void widenOurs(State& state) {
    const std::string source = letters(textSize);
    const OCAnsiString narrow(source.data(), source.size());
    for (auto _ : state) {
        OCWideString wide(narrow);
        DoNotOptimize(&wide);
        ClobberMemory();
    }
}

void widenString(State& state) {
    const std::string narrow = letters(textSize);
    for (auto _ : state) {
        std::wstring wide(narrow.begin(), narrow.end());
        DoNotOptimize(&wide);
        ClobberMemory();
    }
}

void widenQt(State& state) {
    const std::string narrow = letters(textSize);
    for (auto _ : state) {
        QString wide = QString::fromLatin1(narrow.data(), static_cast<int>(narrow.size()));
        DoNotOptimize(&wide);
        ClobberMemory();
    }
}

// Narrow

void narrowOurs(State& state) {
    const std::wstring source = wideLetters(textSize);
    const OCWideString wide(source.data(), source.size());
    for (auto _ : state) {
        OCAnsiString narrow(wide);
        DoNotOptimize(&narrow);
        ClobberMemory();
    }
}

void narrowString(State& state) {
    const std::wstring wide = wideLetters(textSize);
    for (auto _ : state) {
        std::string narrow(wide.begin(), wide.end());
        DoNotOptimize(&narrow);
        ClobberMemory();
    }
}

void narrowQt(State& state) {
    const std::string source = letters(textSize);
    const QString wide = QString::fromLatin1(source.data(), static_cast<int>(source.size()));
    for (auto _ : state) {
        QByteArray narrow = wide.toLatin1();
        DoNotOptimize(&narrow);
        ClobberMemory();
    }
}

// Short texts

template<typename String>
void constructAndCopy(State& state, unsigned long count) {
    const std::wstring source = wideLetters(count);
    for (auto _ : state) {
        String first(hidden(source.data()), count);
        String second(first);
        DoNotOptimize(&second);
        ClobberMemory();
    }
}

/// A text that is filled again and again, as a parser's is.
template<typename String>
void reuse(State& state, unsigned long count) {
    const std::wstring source = wideLetters(count);
    String text;
    for (auto _ : state) {
        text.clear();
        text.append(hidden(source.data()), count);
        DoNotOptimize(&text);
        ClobberMemory();
    }
}

template<typename String>
void appendCharacters(State& state, unsigned long total) {
    for (auto _ : state) {
        String text;
        for (unsigned long i = 0; i < total; ++i)
            text += static_cast<wchar_t>('a' + i % 26);
        DoNotOptimize(&text);
        ClobberMemory();
    }
}

template<typename String>
void equal(State& state, unsigned long count) {
    const std::wstring source = wideLetters(count);
    const String a(source.data(), count);
    const String b(source.data(), count);
    for (auto _ : state) {
        bool same = a == b;
        DoNotOptimize(same);
        ClobberMemory();
    }
}

bool find(const OCWideString& text, const OCWideString& pattern) {
    return text.contains(pattern);
}

bool find(const std::wstring& text, const std::wstring& pattern) {
    return text.find(pattern) != std::wstring::npos;
}

template<typename String>
void findAtTheEnd(State& state) {
    const std::wstring source = wideLetters(textSize) + L"needle";
    const String text(source.data(), source.size());
    const String pattern(L"needle");
    for (auto _ : state) {
        bool found = find(text, pattern);
        DoNotOptimize(found);
        ClobberMemory();
    }
}

template<typename Function, typename... Arguments>
void work(const char* name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name, [=](State& state) { function(state, arguments...); });
}

const bool registered = [] {
    work("BM_widen_64K/orvabase", widenOurs);
    work("BM_widen_64K/std_wstring", widenString);
    work("BM_widen_64K/qt", widenQt);
    work("BM_narrow_64K/orvabase", narrowOurs);
    work("BM_narrow_64K/std_string", narrowString);
    work("BM_narrow_64K/qt", narrowQt);
    work("BM_wide_copy_8_characters/orvabase", constructAndCopy<OCWideString>, 8UL);
    work("BM_wide_copy_8_characters/std_wstring", constructAndCopy<std::wstring>, 8UL);
    work("BM_wide_copy_100_characters/orvabase", constructAndCopy<OCWideString>, 100UL);
    work("BM_wide_copy_100_characters/std_wstring", constructAndCopy<std::wstring>, 100UL);
    work("BM_wide_reuse_8_characters/orvabase", reuse<OCWideString>, 8UL);
    work("BM_wide_reuse_8_characters/std_wstring", reuse<std::wstring>, 8UL);
    work("BM_wide_reuse_40_characters/orvabase", reuse<OCWideString>, 40UL);
    work("BM_wide_reuse_40_characters/std_wstring", reuse<std::wstring>, 40UL);
    work("BM_wide_append_1_up_to_100/orvabase", appendCharacters<OCWideString>, 100UL);
    work("BM_wide_append_1_up_to_100/std_wstring", appendCharacters<std::wstring>, 100UL);
    work("BM_wide_append_1_up_to_64K/orvabase", appendCharacters<OCWideString>, textSize);
    work("BM_wide_append_1_up_to_64K/std_wstring", appendCharacters<std::wstring>, textSize);
    work("BM_wide_equal_12_characters/orvabase", equal<OCWideString>, 12UL);
    work("BM_wide_equal_12_characters/std_wstring", equal<std::wstring>, 12UL);
    work("BM_wide_find_64K/orvabase", findAtTheEnd<OCWideString>);
    work("BM_wide_find_64K/std_wstring", findAtTheEnd<std::wstring>);
    return true;
}();

} // namespace
