// Vectors of object pointers beside std::vector<void*>.

#include "OCVector.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr unsigned long pushes = 1000000;

void pushOrvabase(benchmark::State& state) {
    OCObject element;
    for (auto _ : state) {
        OCVector vector;
        for (unsigned long i = 0; i < pushes; ++i)
            vector.addElement(element);
        benchmark::DoNotOptimize(vector.getCount());
        benchmark::ClobberMemory();
    }
}

void pushStandard(benchmark::State& state) {
    OCObject element;
    for (auto _ : state) {
        std::vector<void*> vector;
        for (unsigned long i = 0; i < pushes; ++i)
            vector.push_back(&element);
        benchmark::DoNotOptimize(vector.data());
        benchmark::ClobberMemory();
    }
}

void pushInTurnOrvabase(benchmark::State& state) {
    OCObject element;
    for (auto _ : state) {
        OCVector first;
        OCVector second;
        for (unsigned long i = 0; i < pushes / 2; ++i) {
            first.addElement(element);
            second.addElement(element);
        }
        benchmark::DoNotOptimize(first.getCount());
        benchmark::DoNotOptimize(second.getCount());
        benchmark::ClobberMemory();
    }
}

void pushInTurnStandard(benchmark::State& state) {
    OCObject element;
    for (auto _ : state) {
        std::vector<void*> first;
        std::vector<void*> second;
        for (unsigned long i = 0; i < pushes / 2; ++i) {
            first.push_back(&element);
            second.push_back(&element);
        }
        benchmark::DoNotOptimize(first.data());
        benchmark::DoNotOptimize(second.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(pushOrvabase)->Name("BM_push_1M_pointers/orvabase")->Unit(benchmark::kMicrosecond);
BENCHMARK(pushStandard)->Name("BM_push_1M_pointers/std_vector")->Unit(benchmark::kMicrosecond);
BENCHMARK(pushInTurnOrvabase)
    ->Name("BM_push_two_vectors_in_turn_500K/orvabase")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(pushInTurnStandard)
    ->Name("BM_push_two_vectors_in_turn_500K/std_vector")
    ->Unit(benchmark::kMicrosecond);

} // namespace
