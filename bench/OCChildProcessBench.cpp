// Starting a process and reaping it: three temporary files, fork, the overlay, and polling without
// a pause.

#include "OCChildProcess.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const char executable[] = "/bin/true";

void startWithLibrary(benchmark::State& state) {
    for (auto _ : state) {
        OCChildProcess process;
        process.setExecutionFilename(executable);
        process.processCreate();
        int status = 0;
        while (!process.processRequest(status)) {
        }
        benchmark::DoNotOptimize(status);
    }
}

int temporaryFile() {
    char name[] = "/var/tmp/benchXXXXXX";
    const int handle = mkstemp(name);
    unlink(name);
    return handle;
}

void startByHand(benchmark::State& state) {
    for (auto _ : state) {
        const int error = temporaryFile();
        const int input = temporaryFile();
        const int output = temporaryFile();
        char* const arguments[] = {const_cast<char*>(executable), nullptr};
        const pid_t child = fork();
        if (child == 0) {
            dup2(error, STDERR_FILENO);
            dup2(input, STDIN_FILENO);
            dup2(output, STDOUT_FILENO);
            execve(executable, arguments, environ);
            _exit(127);
        }
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
        }
        benchmark::DoNotOptimize(status);
        close(error);
        close(input);
        close(output);
    }
}

} // namespace

BENCHMARK(startWithLibrary)->Name("BM_start_and_reap/orvabase")->UseRealTime();
BENCHMARK(startByHand)->Name("BM_start_and_reap/fork_execve")->UseRealTime();
