// Named lists beside a std::map whose comparator folds names.

#include "OCNamedList.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <strings.h>

namespace {

constexpr unsigned long count = 1000;

/// Names such as settings have: words with periods between them, in mixed case.
const std::vector<std::string>& names() {
    static const std::vector<std::string> made = [] {
        static const char* const words[] = {"Window", "font",   "Path", "color", "history",
                                            "Server", "remote", "Log",  "cache", "user"};
        std::mt19937 random(99);
        std::vector<std::string> result;
        for (unsigned long i = 0; i < count; ++i)
            result.push_back(std::string(words[random() % 10]) + "." + words[random() % 10] + "." +
                             words[random() % 10] + std::to_string(i));
        return result;
    }();
    return made;
}

/// The same names in another case and another order.
const std::vector<std::string>& questions() {
    static const std::vector<std::string> made = [] {
        std::vector<std::string> result = names();
        for (std::string& name : result) {
            for (char& c : name)
                c = c >= 'a' && c <= 'z' && (&c - name.data()) % 3 == 0 ? static_cast<char>(c - 32)
                                                                        : c;
        }
        std::shuffle(result.begin(), result.end(), std::mt19937(7));
        return result;
    }();
    return made;
}

/// Folds as it goes, as short comparators are mostly written.
struct Folding {
    static unsigned char fold(char c) {
        return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    bool operator()(const std::string& a, const std::string& b) const {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                            [](char x, char y) { return fold(x) < fold(y); });
    }
};

/// Leaves it to the C library.
struct FoldingByCall {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};

void lookUpOrvabase(benchmark::State& state) {
    OCNamedList list(NamedListCaseInsensitive, NamedListModeSorted);
    for (const std::string& name : names())
        list.setValue(OCAnsiString(name.data(), name.size()), "value");
    std::vector<OCAnsiString> asked;
    for (const std::string& name : questions())
        asked.emplace_back(name.data(), name.size());
    for (auto _ : state) {
        unsigned long sum = 0;
        for (const OCAnsiString& name : asked)
            sum += list.getValue(name).getLength();
        benchmark::DoNotOptimize(sum);
    }
}

template<class Order>
void lookUpMap(benchmark::State& state) {
    std::map<std::string, std::string, Order> map;
    for (const std::string& name : names())
        map[name] = "value";
    const std::vector<std::string>& asked = questions();
    for (auto _ : state) {
        unsigned long sum = 0;
        for (const std::string& name : asked)
            sum += map.find(name)->second.size();
        benchmark::DoNotOptimize(sum);
    }
}

void appendOrvabase(benchmark::State& state) {
    OCNamedList list(NamedListCaseInsensitive, NamedListModeSorted);
    OCNamedList source(NamedListCaseInsensitive, NamedListModeUnsorted);
    for (const std::string& name : names())
        source.addElement(OCAnsiString(name.data(), name.size()), "value");
    for (auto _ : state) {
        OCNamedList target(list);
        target.append(source);
        benchmark::DoNotOptimize(target.getCount());
    }
}

void appendMap(benchmark::State& state) {
    std::vector<std::pair<std::string, std::string>> source;
    for (const std::string& name : names())
        source.emplace_back(name, "value");
    for (auto _ : state) {
        std::map<std::string, std::string, Folding> target;
        for (const auto& item : source)
            target[item.first] = item.second;
        benchmark::DoNotOptimize(target.size());
    }
}

BENCHMARK(lookUpOrvabase)->Name("BM_look_up_1000_names/orvabase");
BENCHMARK(lookUpMap<Folding>)->Name("BM_look_up_1000_names/std_map");
BENCHMARK(lookUpMap<FoldingByCall>)->Name("BM_look_up_1000_names/std_map_strcasecmp");
BENCHMARK(appendOrvabase)->Name("BM_append_1000_names/orvabase");
BENCHMARK(appendMap)->Name("BM_append_1000_names/std_map");

} // namespace
