// Part of builds that measure coverage only, as a shared library that comes between a test program
// and the C library. gcov writes what it counted when a program ends by `exit`; this writes it as
// well before a process ends in another way or becomes another program, as children that the tests
// fork do.

#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): gcov's own functions
void __gcov_dump(void);
void __gcov_reset(void);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}

namespace {

template<class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// A child counts what it does itself; its parent writes what came before.
[[maybe_unused]] const int forksCounted = pthread_atfork(nullptr, nullptr, &__gcov_reset);

} // namespace

extern "C" {

__attribute__((visibility("default"))) void _exit(int status) {
    __gcov_dump();
    for (;;)
        syscall(SYS_exit_group, status);
}

__attribute__((visibility("default"))) void abort() noexcept {
    __gcov_dump();
    next<void()>("abort")();
    __builtin_unreachable();
}

__attribute__((visibility("default"))) int execve(const char* path, char* const* arguments,
                                                  char* const* environment) noexcept {
    __gcov_dump();
    __gcov_reset();
    return next<int(const char*, char* const*, char* const*)>("execve")(path, arguments,
                                                                        environment);
}
}
