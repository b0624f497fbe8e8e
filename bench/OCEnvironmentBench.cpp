// The environment and argument vectors of a new process beside std::vector<std::string> with a
// vector of pointers.

#include "OCEnvironment.h"

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

namespace {

constexpr unsigned long entryCount = 1000;

/// Names and values such as an environment has: values of 8 to 70 characters.
const std::vector<std::pair<std::string, std::string>>& variables() {
    static const std::vector<std::pair<std::string, std::string>> made = [] {
        std::vector<std::pair<std::string, std::string>> entries;
        for (unsigned long i = 0; i < entryCount; ++i) {
            std::string number = std::to_string(i);
            number.insert(0, 4 - number.size(), '0');
            entries.emplace_back("ORVABASE_" + number, "/usr/" + std::string(3 + i % 63, 'v'));
        }
        return entries;
    }();
    return made;
}

void buildOrvabase(benchmark::State& state) {
    OCEnvironmentBlock block;
    OCStringList arguments(StringListCaseInsensitive, StringListModeUnsorted);
    for (const auto& each : variables()) {
        block.getVariables().setValue(each.first.c_str(), each.second.c_str());
        arguments.addString(each.second.c_str());
    }
    for (auto _ : state) {
        OCEnvironmentBufferArray environment(block);
        OCStringArray vector;
        for (unsigned long i = 0; i < arguments.getCount(); ++i)
            vector.addString(arguments.getString(i));
        benchmark::DoNotOptimize(environment.getBuffer());
        benchmark::DoNotOptimize(vector.getBuffer());
        benchmark::ClobberMemory();
    }
}

void buildStandard(benchmark::State& state) {
    std::vector<std::string> arguments;
    for (const auto& each : variables())
        arguments.push_back(each.second);
    for (auto _ : state) {
        std::vector<std::string> environment;
        std::vector<char*> environmentPointers;
        // The vectors grow as the block does. NOLINTBEGIN(performance-inefficient-vector-operation)
        for (const auto& each : variables())
            environment.push_back(each.first + "=" + each.second);
        for (std::string& each : environment)
            environmentPointers.push_back(each.data());
        environmentPointers.push_back(nullptr);
        std::vector<std::string> copies;
        std::vector<char*> pointers;
        for (const std::string& each : arguments)
            copies.push_back(each);
        for (std::string& each : copies)
            pointers.push_back(each.data());
        // NOLINTEND(performance-inefficient-vector-operation)
        pointers.push_back(nullptr);
        benchmark::DoNotOptimize(environmentPointers.data());
        benchmark::DoNotOptimize(pointers.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(buildOrvabase)->Name("BM_environment_and_arguments_1000/orvabase");
BENCHMARK(buildStandard)->Name("BM_environment_and_arguments_1000/std_vector");

} // namespace
