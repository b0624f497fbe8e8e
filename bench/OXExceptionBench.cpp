// Throwing, catching and reading a failure beside std::runtime_error.

#include "OCMemoryBuffer.h"

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

namespace {

// Not inlined, as a failure is thrown some calls away from its handler.
[[gnu::noinline]] void failOrvabase() {
    throw OXMemoryBuffer_NoData();
}

[[gnu::noinline]] void failStandard() {
    throw std::runtime_error("The memory buffer does not contain any data");
}

void throwOrvabase(benchmark::State& state) {
    for (auto _ : state) {
        try {
            failOrvabase();
        } catch (const OXException& failure) {
            const OCAnsiString message = failure.getMessage();
            benchmark::DoNotOptimize(message.getString());
        }
    }
}

void throwStandard(benchmark::State& state) {
    for (auto _ : state) {
        try {
            failStandard();
        } catch (const std::exception& failure) {
            const std::string message = failure.what();
            benchmark::DoNotOptimize(message.data());
        }
    }
}

BENCHMARK(throwOrvabase)->Name("BM_throw_and_catch/orvabase");
BENCHMARK(throwStandard)->Name("BM_throw_and_catch/std_runtime_error");

} // namespace
