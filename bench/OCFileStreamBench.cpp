// Copying a file through two file streams beside the bare system calls with the same blocks.

#include "OCFileStream.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

using benchmark::State;

constexpr unsigned long blockSize = 16UL * 1024;
constexpr unsigned long fileSize = 4UL * 1024 * 1024;

/// A source file and the name of a target, gone at the end of the program.
struct Files {
    Files() {
        char pattern[] = "/tmp/orvabase-bench-XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            std::abort();
        directory = pattern;
        source = directory + "/source";
        target = directory + "/target";
        const std::string content(fileSize, 'x');
        std::FILE* file = std::fopen(source.c_str(), "wb");
        if (file == nullptr || std::fwrite(content.data(), 1, fileSize, file) != fileSize)
            std::abort();
        std::fclose(file);
    }
    ~Files() {
        unlink(source.c_str());
        unlink(target.c_str());
        rmdir(directory.c_str());
    }
    std::string directory;
    std::string source;
    std::string target;
};

const Files& files() {
    static const Files made;
    return made;
}

void copyByStreams(State& state) {
    const OCFilePath source(files().source.c_str());
    const OCFilePath target(files().target.c_str());
    static char block[blockSize];
    for (auto _ : state) {
        OCFileStream from(source, FileCreateModeRead, FileShareModeRead);
        OCFileStream to(target, FileCreateModeCreate, FileShareModeNone);
        unsigned long count = blockSize;
        while (from.read(block, count)) {
            to.writeBuffer(block, count);
            count = blockSize;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(fileSize));
}

void copyBySystemCalls(State& state) {
    static char block[blockSize];
    for (auto _ : state) {
        const int from = open(files().source.c_str(), O_RDONLY);
        const int to = open(files().target.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0644);
        ssize_t count = 0;
        while ((count = read(from, block, blockSize)) > 0) {
            if (write(to, block, static_cast<size_t>(count)) != count)
                std::abort();
        }
        close(to);
        close(from);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(fileSize));
}

BENCHMARK(copyByStreams)->Name("BM_file_copy_16K_blocks/orvabase");
BENCHMARK(copyBySystemCalls)->Name("BM_file_copy_16K_blocks/read_write");

} // namespace
