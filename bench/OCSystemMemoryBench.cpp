// Reading the machine's memory figures, beside a standard stream and a map.

#include "OCSystemMemory.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <map>
#include <string>

namespace {

void readOrvabase(benchmark::State& state) {
    for (auto _ : state) {
        OCNamedList information(NamedListCaseInsensitive, NamedListModeUnsorted);
        OCSystemMemory::readInformation(information);
        benchmark::DoNotOptimize(information.getCount());
    }
}

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos)
        return "";
    return text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

void readStandard(benchmark::State& state) {
    for (auto _ : state) {
        std::map<std::string, std::string> information;
        std::ifstream file("/proc/meminfo");
        for (std::string line; std::getline(file, line);) {
            const std::size_t colon = line.find(':');
            if (colon != std::string::npos)
                information[trimmed(line.substr(0, colon))] = trimmed(line.substr(colon + 1));
        }
        benchmark::DoNotOptimize(information.size());
    }
}

BENCHMARK(readOrvabase)->Name("BM_read_memory_information/orvabase");
BENCHMARK(readStandard)->Name("BM_read_memory_information/std_ifstream");

} // namespace
