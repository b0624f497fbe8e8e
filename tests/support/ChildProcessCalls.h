#ifndef ORVABASE_TESTS_CHILDPROCESSCALLS_H
#define ORVABASE_TESTS_CHILDPROCESSCALLS_H

#include "support/SystemCalls.h"

#include <csignal>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

/// The replaceable functions on child processes. Replacements go on in a child that is forked
/// meanwhile.
namespace calls {
inline SystemCall<pid_t()> fork{"fork"};
inline SystemCall<int(const char*, char* const*, char* const*)> execve{"execve"};
inline SystemCall<int(int, int)> dup2{"dup2"};
inline SystemCall<int(const char*)> chdir{"chdir"};
inline SystemCall<pid_t(pid_t, int*, int)> waitpid{"waitpid"};
inline SystemCall<int(pid_t, int)> kill{"kill"};
} // namespace calls

ORVABASE_TEST_REPLACES pid_t fork() noexcept {
    return calls::fork();
}
ORVABASE_TEST_REPLACES int execve(const char* path, char* const* arguments,
                                  char* const* environment) noexcept {
    return calls::execve(path, arguments, environment);
}
ORVABASE_TEST_REPLACES int dup2(int from, int to) noexcept {
    return calls::dup2(from, to);
}
ORVABASE_TEST_REPLACES int chdir(const char* path) noexcept {
    return calls::chdir(path);
}
ORVABASE_TEST_REPLACES pid_t waitpid(pid_t process, int* status, int options) {
    return calls::waitpid(process, status, options);
}
ORVABASE_TEST_REPLACES int kill(pid_t process, int signal) noexcept {
    return calls::kill(process, signal);
}

#endif
