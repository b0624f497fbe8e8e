// Taking a million different paths apart into drive, directory, filename and extension.

#include "OCFilePath.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t count = 1000000;

struct Paths {
    std::vector<std::string> texts;

    Paths() {
        static const char* const names[] = {"usr", "share", "doc",     "lib", "x86_64-linux-gnu",
                                            "var", "log",   "project", "src", "include"};
        static const char* const files[] = {"readme.txt", "archive.tar.gz", "Makefile", ".profile",
                                            "main.cpp",   "index.html",     "core",     "a.out"};
        std::mt19937 random(71);
        texts.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            std::string text;
            for (unsigned long depth = 1 + random() % 6; depth > 0; --depth)
                text += std::string("/") + names[random() % 10];
            texts.push_back(text + "/" + files[random() % 8]);
        }
    }
};

const Paths& paths() {
    static const Paths made;
    return made;
}

void takeApartWithLibrary(benchmark::State& state) {
    const std::vector<std::string>& texts = paths().texts;
    std::size_t i = 0;
    for (auto _ : state) {
        const OCFilePath path(texts[i].c_str());
        OCFilePath drive;
        OCFilePath directory(path);
        OCFilePath name(path);
        OCFilePath extension;
        if (path.hasDrive())
            (drive = path).extractDrive();
        directory.removeFilename();
        name.extractFilename();
        if (name.hasExtension())
            (extension = name).extractExtension();
        benchmark::DoNotOptimize(drive.getString());
        benchmark::DoNotOptimize(directory.getString());
        benchmark::DoNotOptimize(name.getString());
        benchmark::DoNotOptimize(extension.getString());
        i = (i + 1) % count;
    }
}

void takeApartWithFilesystem(benchmark::State& state) {
    const std::vector<std::string>& texts = paths().texts;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::filesystem::path path(texts[i]);
        const std::filesystem::path drive = path.root_name();
        const std::filesystem::path directory = path.parent_path();
        const std::filesystem::path name = path.filename();
        const std::filesystem::path extension = path.extension();
        benchmark::DoNotOptimize(drive.c_str());
        benchmark::DoNotOptimize(directory.c_str());
        benchmark::DoNotOptimize(name.c_str());
        benchmark::DoNotOptimize(extension.c_str());
        i = (i + 1) % count;
    }
}

BENCHMARK(takeApartWithLibrary)->Name("BM_path_take_apart/orvabase");
BENCHMARK(takeApartWithFilesystem)->Name("BM_path_take_apart/std_filesystem");

} // namespace
