// Numbers to text and back, beside the standard library. Each measurement goes through the same
// numbers: of all lengths in random order, or, where the name says so, mostly of ten digits.

#include "OCInteger.h"
#include "OCStringConversion.h"

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <random>
#include <string>
#include <vector>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

constexpr unsigned long count = 64;

enum Length { AnyLength, LongOnly };

std::vector<int> numbers(Length length) {
    std::mt19937 random(11);
    std::vector<int> result;
    for (unsigned long i = 0; i < count; ++i) {
        const auto number = static_cast<int>(random());
        result.push_back(length == AnyLength ? number >> (random() % 31) : number);
    }
    return result;
}

std::vector<std::string> texts(Length length) {
    std::vector<std::string> result;
    for (int number : numbers(length))
        result.push_back(std::to_string(static_cast<unsigned int>(number < 0 ? ~number : number)));
    return result;
}

template<typename Convert>
void toText(State& state, Length length, Convert convert) {
    const std::vector<int> source = numbers(length);
    for (auto _ : state)
        for (int number : source)
            convert(number);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(count));
}

void toTextOurs(State& state, Length length) {
    toText(state, length, [](int number) {
        OCAnsiString text = OCStringConversion::fromInteger(number, 10);
        DoNotOptimize(&text);
        ClobberMemory();
    });
}

void toTextToString(State& state, Length length) {
    toText(state, length, [](int number) {
        std::string text = std::to_string(number);
        DoNotOptimize(&text);
        ClobberMemory();
    });
}

void toTextToChars(State& state, Length length) {
    toText(state, length, [](int number) {
        std::array<char, 16> text;
        char* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
        DoNotOptimize(end);
        ClobberMemory();
    });
}

void toHexOurs(State& state) {
    toText(state, AnyLength, [](int number) {
        OCAnsiString text = OCStringConversion::fromInteger(static_cast<unsigned int>(number), 16);
        DoNotOptimize(&text);
        ClobberMemory();
    });
}

void toHexToChars(State& state) {
    toText(state, AnyLength, [](int number) {
        std::array<char, 16> text;
        char* const end = std::to_chars(text.data(), text.data() + text.size(),
                                        static_cast<unsigned int>(number), 16)
                              .ptr;
        DoNotOptimize(end);
        ClobberMemory();
    });
}

void fromTextOurs(State& state, Length length) {
    std::vector<OCAnsiString> source;
    for (const std::string& text : texts(length))
        source.emplace_back(text.data(), text.size());
    for (auto _ : state)
        for (const OCAnsiString& text : source) {
            unsigned int number = OCUnsignedIntegerConversion::fromString(text, 10);
            DoNotOptimize(number);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(count));
}

void fromTextFromChars(State& state, Length length) {
    const std::vector<std::string> source = texts(length);
    for (auto _ : state)
        for (const std::string& text : source) {
            unsigned int number = 0;
            std::from_chars(text.data(), text.data() + text.size(), number, 10);
            DoNotOptimize(number);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(count));
}

template<typename Function, typename... Arguments>
void work(const char* name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name, [=](State& state) { function(state, arguments...); });
}

const bool registered = [] {
    work("BM_integer_to_text/orvabase", toTextOurs, AnyLength);
    work("BM_integer_to_text/std_to_string", toTextToString, AnyLength);
    work("BM_integer_to_text/std_to_chars", toTextToChars, AnyLength);
    work("BM_long_integer_to_text/orvabase", toTextOurs, LongOnly);
    work("BM_long_integer_to_text/std_to_string", toTextToString, LongOnly);
    work("BM_long_integer_to_text/std_to_chars", toTextToChars, LongOnly);
    work("BM_integer_to_hexadecimal/orvabase", toHexOurs);
    work("BM_integer_to_hexadecimal/std_to_chars", toHexToChars);
    work("BM_text_to_integer/orvabase", fromTextOurs, AnyLength);
    work("BM_text_to_integer/std_from_chars", fromTextFromChars, AnyLength);
    work("BM_text_to_long_integer/orvabase", fromTextOurs, LongOnly);
    work("BM_text_to_long_integer/std_from_chars", fromTextFromChars, LongOnly);
    return true;
}();

} // namespace
