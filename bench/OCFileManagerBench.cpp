// Listing a directory of 10,000 entries, and deleting a tree of 10,000 files.

#include "OCFileFinder.h"
#include "OCFileManager.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

// A directory of its own, in memory where the system has that, so that a disk's work does not hide
// the library's.
class Scratch {
public:
    Scratch() {
        path = (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
               std::string("/orvabase-bench-XXXXXX");
        if (mkdtemp(path.data()) == nullptr)
            std::abort();
    }
    ~Scratch() { std::filesystem::remove_all(path); }

    std::string path;
};

void makeFiles(const std::string& directory, int count) {
    for (int i = 0; i < count; ++i) {
        const std::string name =
            directory + "/document-" + std::to_string(i * 7919 % count) + ".txt";
        const int handle = open(name.c_str(), O_WRONLY | O_CREAT, 0600);
        if (handle == -1)
            std::abort();
        close(handle);
    }
}

// 100 directories of 100 files in two levels.
std::string makeTree(const std::string& directory) {
    std::string top = directory + "/tree";
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j) {
            const std::string path =
                top + "/directory-" + std::to_string(i) + "/directory-" + std::to_string(j);
            std::filesystem::create_directories(path);
            makeFiles(path, 100);
        }
    return top;
}

// What a caller does with each entry: its path.
void listWithLibrary(benchmark::State& state) {
    Scratch scratch;
    makeFiles(scratch.path, 10000);
    const OCFilePath directory(scratch.path.c_str());
    for (auto _ : state) {
        unsigned long count = 0;
        OCFileFinder finder(directory);
        for (bool found = finder.findFirst(); found; found = finder.findNext()) {
            const OCFilePath path(directory / finder.getFilename());
            count += path.getLength();
        }
        benchmark::DoNotOptimize(count);
    }
}

void listWithFilesystem(benchmark::State& state) {
    Scratch scratch;
    makeFiles(scratch.path, 10000);
    const std::filesystem::path directory(scratch.path);
    for (auto _ : state) {
        unsigned long count = 0;
        for (const std::filesystem::directory_entry& entry :
             std::filesystem::directory_iterator(directory))
            count += entry.path().native().size();
        benchmark::DoNotOptimize(count);
    }
}

template<class Deletion>
void deleteTree(benchmark::State& state, Deletion deletion) {
    Scratch scratch;
    for (auto _ : state) {
        state.PauseTiming();
        const std::string top = makeTree(scratch.path);
        state.ResumeTiming();
        deletion(top);
    }
    if (!std::filesystem::is_empty(scratch.path))
        state.SkipWithError("the tree is still there");
}

void deleteWithLibrary(benchmark::State& state) {
    deleteTree(state, [](const std::string& top) {
        OCFileManager().deleteDirectory(OCFilePath(top.c_str()), true);
    });
}

void deleteWithFilesystem(benchmark::State& state) {
    deleteTree(state, [](const std::string& top) { std::filesystem::remove_all(top); });
}

BENCHMARK(listWithLibrary)->Name("BM_list_directory_10K/orvabase");
BENCHMARK(listWithFilesystem)->Name("BM_list_directory_10K/std_filesystem");
BENCHMARK(deleteWithLibrary)->Name("BM_delete_tree_10K/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(deleteWithFilesystem)
    ->Name("BM_delete_tree_10K/std_filesystem")
    ->Unit(benchmark::kMillisecond);

} // namespace
