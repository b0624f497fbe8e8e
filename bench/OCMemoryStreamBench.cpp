// The memory stream beside the standard library's string buffer: a fresh stream is filled piece by
// piece, rewound and read back in the same pieces.

#include "OCMemoryStream.h"

#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

void orvabaseStream(State& state, unsigned long piece, unsigned long total) {
    const std::string source(piece, 'x');
    std::string target(piece, '\0');
    for (auto _ : state) {
        OCMemoryStream memory;
        OCStream& stream = memory;
        for (unsigned long done = 0; done < total; done += piece)
            stream.writeBuffer(source.data(), piece);
        stream.setPosition(0);
        for (unsigned long done = 0; done < total; done += piece)
            stream.readBuffer(target.data(), piece);
        DoNotOptimize(target.data());
        ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(2 * total));
}

void stringBuffer(State& state, unsigned long piece, unsigned long total) {
    const std::string source(piece, 'x');
    std::string target(piece, '\0');
    for (auto _ : state) {
        std::stringbuf memory;
        std::streambuf& stream = memory;
        for (unsigned long done = 0; done < total; done += piece)
            stream.sputn(source.data(), static_cast<std::streamsize>(piece));
        stream.pubseekpos(0, std::ios::in);
        for (unsigned long done = 0; done < total; done += piece)
            stream.sgetn(target.data(), static_cast<std::streamsize>(piece));
        DoNotOptimize(target.data());
        ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(2 * total));
}

constexpr unsigned long KiB = 1024;

BENCHMARK_CAPTURE(orvabaseStream, small, 64, 1024 * KiB)
    ->Name("BM_memory_stream_64_bytes/orvabase");
BENCHMARK_CAPTURE(stringBuffer, small, 64, 1024 * KiB)
    ->Name("BM_memory_stream_64_bytes/std_stringbuf");
BENCHMARK_CAPTURE(orvabaseStream, large, 64 * KiB, 4096 * KiB)
    ->Name("BM_memory_stream_64K/orvabase");
BENCHMARK_CAPTURE(stringBuffer, large, 64 * KiB, 4096 * KiB)
    ->Name("BM_memory_stream_64K/std_stringbuf");

} // namespace
