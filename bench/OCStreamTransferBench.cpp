// Transferring 256 MiB from a file to another beside a loop over the bare system calls with the
// same blocks. The target is written over, so that making and freeing its pages is nobody's time.

#include "OCFileStream.h"
#include "OCStreamTransfer.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

using benchmark::State;

constexpr unsigned long blockSize = 16UL * 1024;
constexpr unsigned long fileSize = 256UL * 1024 * 1024;

/// A source file and a target of the same size, gone at the end of the program.
struct Files {
    Files() {
        char pattern[] = "/tmp/orvabase-bench-XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            std::abort();
        directory = pattern;
        source = directory + "/source";
        target = directory + "/target";
        fill(source, 'x');
        fill(target, '-');
    }
    ~Files() {
        unlink(source.c_str());
        unlink(target.c_str());
        rmdir(directory.c_str());
    }
    static void fill(const std::string& path, char c) {
        const std::string block(1024UL * 1024, c);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        for (unsigned long done = 0; done < fileSize; done += block.size()) {
            if (write(file, block.data(), block.size()) != static_cast<ssize_t>(block.size()))
                std::abort();
        }
        close(file);
    }
    std::string directory;
    std::string source;
    std::string target;
};

const Files& files() {
    static const Files made;
    return made;
}

void transferFiles(State& state) {
    const OCFilePath source(files().source.c_str());
    const OCFilePath target(files().target.c_str());
    for (auto _ : state) {
        OCFileStream from(source, FileCreateModeRead, FileShareModeRead);
        OCFileStream to(target, FileCreateModeWrite, FileShareModeNone);
        OCStreamTransfer transfer;
        transfer.useSource(from);
        transfer.useTarget(to);
        transfer.execute();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(fileSize));
}

void copyBySystemCalls(State& state) {
    static char block[blockSize];
    for (auto _ : state) {
        const int from = open(files().source.c_str(), O_RDONLY);
        const int to = open(files().target.c_str(), O_WRONLY);
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

BENCHMARK(transferFiles)->Name("BM_transfer_256M/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(copyBySystemCalls)->Name("BM_transfer_256M/read_write")->Unit(benchmark::kMillisecond);

} // namespace
