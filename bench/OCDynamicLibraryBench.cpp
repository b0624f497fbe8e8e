// Loading a shared object, finding a symbol and unloading, beside the calls of the C library.

#include "OCDynamicLibrary.h"

#include <benchmark/benchmark.h>

#include <dlfcn.h>

namespace {

void loadOrvabase(benchmark::State& state) {
    for (auto _ : state) {
        OCDynamicLibrary library(BENCH_SAMPLE);
        benchmark::DoNotOptimize(library.locateCode("sampleCode"));
    }
}

void loadPlain(benchmark::State& state) {
    for (auto _ : state) {
        void* const handle = dlopen(BENCH_SAMPLE, RTLD_NOW | RTLD_GLOBAL);
        if (handle == nullptr) {
            state.SkipWithError("no sample");
            break;
        }
        benchmark::DoNotOptimize(dlsym(handle, "sampleCode"));
        dlclose(handle);
    }
}

BENCHMARK(loadOrvabase)->Name("BM_load_find_unload/orvabase");
BENCHMARK(loadPlain)->Name("BM_load_find_unload/dlopen");

} // namespace
