// String filters beside the loop over getc_unlocked or putc_unlocked that they stand for.

#include "OCMemoryStream.h"
#include "OCStringFilter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>

namespace {

constexpr std::size_t size = 1024UL * 1024;

/// 1 MiB of prose, in which one character in twenty is none of ASCII's or not visible.
const std::string& prose() {
    static const std::string text = [] {
        std::mt19937 random(4711);
        std::string made;
        while (made.size() < size) {
            for (unsigned long n = 1 + random() % 9; n != 0; --n)
                made += static_cast<char>('a' + random() % 26);
            const unsigned long kind = random() % 8;
            made += kind == 0 ? "\n" : kind == 1 ? "\xc3\xa9" : kind == 2 ? " 1994 " : " ";
        }
        made.resize(size);
        return made;
    }();
    return text;
}

struct Octet {
    typedef OCOctetStringFilter Filter;
    static bool isValid(int) { return true; }
    static constexpr int mask = '.';
};
struct T61 : Octet {
    typedef OCT61StringFilter Filter;
};
struct Ia5 : Octet {
    typedef OCIa5StringFilter Filter;
    static bool isValid(int c) { return c < 128; }
};
struct Numeric {
    typedef OCNumericStringFilter Filter;
    static bool isValid(int c) { return (c >= '0' && c <= '9') || c == ' '; }
    static constexpr int mask = ' ';
};
struct Printable : Octet {
    typedef OCPrintableStringFilter Filter;
    static bool isValid(int c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == ' ' || c == '\'' || c == '(' || c == ')' || c == '+' || c == ',' || c == '-' ||
               c == '.' || c == '/' || c == ':' || c == '=' || c == '?';
    }
};
struct Visible : Octet {
    typedef OCVisibleStringFilter Filter;
    static bool isValid(int c) { return c >= 32 && c <= 126; }
};
struct Utf8 : Ia5 {
    typedef OCUtf8StringFilter Filter;
};

template<class Kind>
void readOrvabase(benchmark::State& state, OEStringFilterMode mode) {
    const typename Kind::Filter filter(mode);
    OCMemoryStream stream(prose().data(), size);
    for (auto _ : state) {
        stream.setPosition(0);
        benchmark::DoNotOptimize(filter.readAnsi(stream).getLength());
    }
}

template<class Kind>
void readStdio(benchmark::State& state, OEStringFilterMode mode) {
    std::string content = prose();
    std::FILE* const file = fmemopen(content.data(), size, "r");
    for (auto _ : state) {
        std::rewind(file);
        std::string text;
        for (int c = 0; (c = getc_unlocked(file)) != EOF;) {
            if (std::is_same_v<Kind, Utf8> && (c & 0xc0) == 0x80)
                continue;
            if (Kind::isValid(c))
                text += static_cast<char>(c);
            else if (mode == StringFilterModeReplace)
                text += static_cast<char>(Kind::mask);
        }
        benchmark::DoNotOptimize(text.size());
    }
    std::fclose(file);
}

template<class Kind>
void readWideOrvabase(benchmark::State& state, OEStringFilterMode mode) {
    const typename Kind::Filter filter(mode);
    OCMemoryStream stream(prose().data(), size);
    for (auto _ : state) {
        stream.setPosition(0);
        benchmark::DoNotOptimize(filter.readWide(stream).getLength());
    }
}

template<class Kind>
void readWideStdio(benchmark::State& state, OEStringFilterMode mode) {
    std::string content = prose();
    std::FILE* const file = fmemopen(content.data(), size, "r");
    for (auto _ : state) {
        std::rewind(file);
        std::wstring text;
        for (int c = 0; (c = getc_unlocked(file)) != EOF;) {
            if (Kind::isValid(c))
                text += static_cast<wchar_t>(static_cast<signed char>(c));
            else if (mode == StringFilterModeReplace)
                text += static_cast<wchar_t>(Kind::mask);
        }
        benchmark::DoNotOptimize(text.size());
    }
    std::fclose(file);
}

template<class Kind>
void writeOrvabase(benchmark::State& state) {
    const typename Kind::Filter filter(StringFilterModeReplace);
    const OCAnsiString text(prose().data(), size);
    OCMemoryStream stream;
    for (auto _ : state) {
        stream.setPosition(0);
        filter.writeAnsi(stream, text);
        benchmark::ClobberMemory();
    }
}

template<class Kind>
void writeStdio(benchmark::State& state) {
    std::string content(size + 1, '\0');
    std::FILE* const file = fmemopen(content.data(), content.size(), "w");
    for (auto _ : state) {
        std::rewind(file);
        for (const char c : prose()) {
            const int byte = static_cast<unsigned char>(c);
            putc_unlocked(Kind::isValid(byte) ? byte : Kind::mask, file);
        }
        std::fflush(file);
        benchmark::ClobberMemory();
    }
    std::fclose(file);
}

template<class Kind>
void writeWideOrvabase(benchmark::State& state) {
    const typename Kind::Filter filter(StringFilterModeReplace);
    const OCWideString text(OCAnsiString(prose().data(), size));
    OCMemoryStream stream;
    for (auto _ : state) {
        stream.setPosition(0);
        filter.writeWide(stream, text);
        benchmark::ClobberMemory();
    }
}

template<class Kind>
void writeWideStdio(benchmark::State& state) {
    std::string content(2 * size + 1, '\0');
    std::FILE* const file = fmemopen(content.data(), content.size(), "w");
    std::wstring text;
    for (const char c : prose())
        text += static_cast<wchar_t>(c);
    for (auto _ : state) {
        std::rewind(file);
        for (const wchar_t c : text) {
            const bool valid = c >= 0 && c <= 255 && Kind::isValid(c);
            putc_unlocked(valid ? c : Kind::mask, file);
            if (std::is_same_v<Kind, Utf8> && valid)
                putc_unlocked('.', file);
        }
        std::fflush(file);
        benchmark::ClobberMemory();
    }
    std::fclose(file);
}

template<class Kind>
void registerFilter(const std::string& name) {
    const auto add = [&](const std::string& work, auto orvabase, auto stdio, auto... arguments) {
        benchmark::RegisterBenchmark(("BM_filter_" + work + "_1M/orvabase").c_str(), orvabase,
                                     arguments...);
        benchmark::RegisterBenchmark(("BM_filter_" + work + "_1M/stdio").c_str(), stdio,
                                     arguments...);
    };
    add("read_" + name, readOrvabase<Kind>, readStdio<Kind>, StringFilterModeReplace);
    add("write_" + name, writeOrvabase<Kind>, writeStdio<Kind>);
}

const bool registered = [] {
    registerFilter<Octet>("octet");
    registerFilter<T61>("t61");
    registerFilter<Utf8>("utf8");
    registerFilter<Ia5>("ia5");
    registerFilter<Numeric>("numeric");
    registerFilter<Printable>("printable");
    registerFilter<Visible>("visible");
    const auto add = [](const char* name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name, function, arguments...);
    };
    add("BM_filter_skip_printable_1M/orvabase", readOrvabase<Printable>, StringFilterModeSkip);
    add("BM_filter_skip_printable_1M/stdio", readStdio<Printable>, StringFilterModeSkip);
    add("BM_filter_read_wide_1M/orvabase", readWideOrvabase<Visible>, StringFilterModeReplace);
    add("BM_filter_read_wide_1M/stdio", readWideStdio<Visible>, StringFilterModeReplace);
    add("BM_filter_write_wide_1M/orvabase", writeWideOrvabase<Visible>);
    add("BM_filter_write_wide_1M/stdio", writeWideStdio<Visible>);
    add("BM_filter_write_wide_utf8_1M/orvabase", writeWideOrvabase<Utf8>);
    add("BM_filter_write_wide_utf8_1M/stdio", writeWideStdio<Utf8>);
    return true;
}();

} // namespace
