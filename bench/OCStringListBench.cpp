// String lists beside std::vector<std::string>, QList<QByteArray> and GLib's string vectors.

#include "OCStringList.h"

#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QList>
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <glib.h>

namespace {

/// Texts such as names and paths: 8 to 40 characters, many with the same beginning.
std::vector<std::string> makeTexts(unsigned long count) {
    static const char* const beginnings[] = {"", "", "usr/share/", "usr/lib/", "org.example."};
    std::mt19937 random(12345);
    std::vector<std::string> texts;
    for (unsigned long i = 0; i < count; ++i) {
        std::string text = beginnings[random() % 5];
        for (unsigned long n = 8 + random() % 20; n != 0; --n)
            text += static_cast<char>('a' + random() % 26);
        texts.push_back(text);
    }
    return texts;
}

/// 16 MiB of lines of 20 to 80 characters, ended by LF.
std::string makeLines() {
    constexpr std::size_t size = 16UL * 1024 * 1024;
    std::mt19937 random(54321);
    std::string text;
    text.reserve(size + 100);
    while (text.size() < size) {
        for (unsigned long n = 20 + random() % 61; n != 0; --n)
            text += static_cast<char>(' ' + random() % 95);
        text += '\n';
    }
    text.resize(size);
    return text;
}

const std::vector<std::string>& sortedTexts() {
    static const std::vector<std::string> texts = makeTexts(100000);
    return texts;
}

const std::vector<std::string>& insertedTexts() {
    static const std::vector<std::string> texts = makeTexts(20000);
    return texts;
}

const std::string& lines() {
    static const std::string text = makeLines();
    return text;
}

void sortOrvabase(benchmark::State& state) {
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    for (const std::string& text : sortedTexts())
        list += OCAnsiString(text.data(), text.size());
    for (auto _ : state) {
        state.PauseTiming();
        {
            OCStringList copy(list);
            state.ResumeTiming();
            copy.sort();
            benchmark::ClobberMemory();
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void sortStandard(benchmark::State& state) {
    const std::vector<std::string>& texts = sortedTexts();
    for (auto _ : state) {
        state.PauseTiming();
        {
            std::vector<std::string> copy(texts);
            state.ResumeTiming();
            std::sort(copy.begin(), copy.end());
            benchmark::ClobberMemory();
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void insertOrvabase(benchmark::State& state) {
    std::vector<OCAnsiString> texts;
    for (const std::string& text : insertedTexts())
        texts.emplace_back(text.data(), text.size());
    for (auto _ : state) {
        OCStringList list(StringListCaseSensitive, StringListModeSorted);
        for (const OCAnsiString& text : texts)
            list += text;
        benchmark::DoNotOptimize(list.getCount());
    }
}

void insertQt(benchmark::State& state) {
    std::vector<QByteArray> texts;
    for (const std::string& text : insertedTexts())
        texts.push_back(QByteArray(text.data(), static_cast<int>(text.size())));
    for (auto _ : state) {
        QList<QByteArray> list;
        for (const QByteArray& text : texts)
            list.insert(std::lower_bound(list.begin(), list.end(), text), text);
        benchmark::DoNotOptimize(list.size());
    }
}

void splitOrvabase(benchmark::State& state) {
    const OCAnsiString text(lines().data(), lines().size());
    for (auto _ : state) {
        OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
        OCStringListUtilities::importString(list, text);
        benchmark::DoNotOptimize(list.getCount());
    }
}

void splitGlib(benchmark::State& state) {
    const std::string& text = lines();
    for (auto _ : state) {
        gchar** const list = g_strsplit(text.c_str(), "\n", -1);
        benchmark::DoNotOptimize(list);
        g_strfreev(list);
    }
}

OCStringList makeList() {
    OCStringList list(StringListCaseSensitive, StringListModeUnsorted);
    OCStringListUtilities::importString(list, OCAnsiString(lines().data(), lines().size()));
    return list;
}

std::vector<std::string> makeVector() {
    std::vector<std::string> list;
    const std::string& text = lines();
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t to = std::min(text.find('\n', from), text.size());
        list.push_back(text.substr(from, to - from));
        from = to + 1;
    }
    return list;
}

// Made before the measurements scatter the heap, so that all of them find the same lists.
const OCStringList joinedList = makeList();
const std::vector<std::string> joinedVector = makeVector();

void joinOrvabase(benchmark::State& state) {
    for (auto _ : state) {
        const OCAnsiString text = OCStringListUtilities::exportString(joinedList);
        benchmark::DoNotOptimize(text.getString());
    }
}

void joinStandard(benchmark::State& state) {
    for (auto _ : state) {
        std::size_t size = 0;
        for (const std::string& line : joinedVector)
            size += line.size() + 2;
        std::string joined;
        joined.reserve(size);
        for (const std::string& line : joinedVector) {
            joined += line;
            joined.append("\r\n", 2);
        }
        benchmark::DoNotOptimize(joined.data());
    }
}

BENCHMARK(sortOrvabase)->Name("BM_sort_list_100K/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(sortStandard)->Name("BM_sort_list_100K/std_sort")->Unit(benchmark::kMillisecond);
BENCHMARK(insertOrvabase)->Name("BM_insert_sorted_20K/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(insertQt)->Name("BM_insert_sorted_20K/qt_list")->Unit(benchmark::kMillisecond);
BENCHMARK(splitOrvabase)->Name("BM_split_16M_into_lines/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(splitGlib)->Name("BM_split_16M_into_lines/glib")->Unit(benchmark::kMillisecond);
BENCHMARK(joinOrvabase)->Name("BM_join_16M_from_lines/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(joinStandard)->Name("BM_join_16M_from_lines/std_string")->Unit(benchmark::kMillisecond);

} // namespace
