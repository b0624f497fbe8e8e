// Reading and writing a memory stream character by character beside the C library's streams over
// memory and the standard library's string buffer. Everyone uses what it has from before: nothing
// is opened, and no memory grows, while the time is taken.

#include "OCMemoryStream.h"
#include "OCStreamReader.h"
#include "OCStreamWriter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

constexpr unsigned long size = 1024UL * 1024;

std::string content() {
    std::string text(size, '\0');
    for (unsigned long i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

unsigned long sumOf(const std::string& text) {
    unsigned long sum = 0;
    for (const char c : text)
        sum += static_cast<unsigned char>(c);
    return sum;
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

void readerRead(State& state) {
    const std::string text = content();
    OCMemoryStream stream(text.data(), size);
    unsigned long sum = 0;
    for (auto _ : state) {
        stream.setPosition(0);
        OCStreamReader reader(stream);
        sum = 0;
        char c = 0;
        while (reader.readCharacter(c))
            sum += static_cast<unsigned char>(c);
        DoNotOptimize(sum);
    }
    require(sum == sumOf(text));
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void getcRead(State& state) {
    std::string text = content();
    std::FILE* file = fmemopen(text.data(), size, "rb");
    unsigned long sum = 0;
    for (auto _ : state) {
        std::rewind(file);
        sum = 0;
        int c = 0;
        while ((c = getc_unlocked(file)) != EOF)
            sum += static_cast<unsigned char>(c);
        DoNotOptimize(sum);
    }
    std::fclose(file);
    require(sum == sumOf(text));
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void bufferRead(State& state) {
    const std::string text = content();
    std::stringbuf memory(text, std::ios::in);
    unsigned long sum = 0;
    for (auto _ : state) {
        memory.pubseekpos(0, std::ios::in);
        sum = 0;
        int c = 0;
        while ((c = memory.sbumpc()) != std::stringbuf::traits_type::eof())
            sum += static_cast<unsigned char>(c);
        DoNotOptimize(sum);
    }
    require(sum == sumOf(text));
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void writerWrite(State& state) {
    const std::string text = content();
    OCMemoryStream stream(size);
    for (auto _ : state) {
        stream.setPosition(0);
        OCStreamWriter writer(stream);
        for (const char c : text)
            writer.writeCharacter(c);
        writer.flush();
    }
    require(stream.makeBuffer().compare(text.data(), size) == CompareResultEqual);
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void putcWrite(State& state) {
    const std::string text = content();
    std::string target(size + 1, '\0');
    std::FILE* file = fmemopen(target.data(), size + 1, "wb");
    for (auto _ : state) {
        std::rewind(file);
        for (const char c : text)
            putc_unlocked(c, file);
        std::fflush(file);
    }
    std::fclose(file);
    require(target.compare(0, size, text) == 0);
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void bufferWrite(State& state) {
    const std::string text = content();
    std::stringbuf memory(std::string(size, '\0'), std::ios::out);
    for (auto _ : state) {
        memory.pubseekpos(0, std::ios::out);
        for (const char c : text)
            memory.sputc(c);
    }
    require(memory.str() == text);
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

BENCHMARK(readerRead)->Name("BM_read_characters_1M/orvabase");
BENCHMARK(getcRead)->Name("BM_read_characters_1M/getc_unlocked");
BENCHMARK(bufferRead)->Name("BM_read_characters_1M/std_stringbuf");
BENCHMARK(writerWrite)->Name("BM_write_characters_1M/orvabase");
BENCHMARK(putcWrite)->Name("BM_write_characters_1M/putc_unlocked");
BENCHMARK(bufferWrite)->Name("BM_write_characters_1M/std_stringbuf");

} // namespace
