#ifndef ORVABASE_TESTS_SYSTEMPROCESSCALLS_H
#define ORVABASE_TESTS_SYSTEMPROCESSCALLS_H

#include "support/SystemCalls.h"

#include <sched.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

/// The replaceable functions on the process as a whole and on the machine.
namespace calls {
inline SystemCall<pid_t()> fork{"fork"};
inline SystemCall<pid_t()> setsid{"setsid"};
inline SystemCall<mode_t(mode_t)> umask{"umask"};
inline SystemCall<int(uid_t)> setuid{"setuid"};
inline SystemCall<int(gid_t)> setgid{"setgid"};
inline SystemCall<pid_t()> getpid{"getpid"};
inline SystemCall<uid_t()> getuid{"getuid"};
inline SystemCall<uid_t()> geteuid{"geteuid"};
inline SystemCall<gid_t()> getgid{"getgid"};
inline SystemCall<int(pid_t, size_t, cpu_set_t*)> sched_getaffinity{"sched_getaffinity",
                                                                    "GLIBC_2.3.4"};
inline SystemCall<int(pid_t, size_t, const cpu_set_t*)> sched_setaffinity{"sched_setaffinity",
                                                                          "GLIBC_2.3.4"};
inline SystemCall<char*(char*, size_t)> getcwd{"getcwd"};
inline SystemCall<ssize_t(const char*, char*, size_t)> readlink{"readlink"};
inline SystemCall<int(char*, size_t)> gethostname{"gethostname"};
inline SystemCall<long(int)> sysconf{"sysconf"};
} // namespace calls

ORVABASE_TEST_REPLACES pid_t fork() noexcept {
    return calls::fork();
}
ORVABASE_TEST_REPLACES pid_t setsid() noexcept {
    return calls::setsid();
}
ORVABASE_TEST_REPLACES mode_t umask(mode_t mask) noexcept {
    return calls::umask(mask);
}
ORVABASE_TEST_REPLACES int setuid(uid_t identifier) noexcept {
    return calls::setuid(identifier);
}
ORVABASE_TEST_REPLACES int setgid(gid_t identifier) noexcept {
    return calls::setgid(identifier);
}
ORVABASE_TEST_REPLACES pid_t getpid() noexcept {
    return calls::getpid();
}
ORVABASE_TEST_REPLACES uid_t getuid() noexcept {
    return calls::getuid();
}
ORVABASE_TEST_REPLACES uid_t geteuid() noexcept {
    return calls::geteuid();
}
ORVABASE_TEST_REPLACES gid_t getgid() noexcept {
    return calls::getgid();
}
ORVABASE_TEST_REPLACES int sched_getaffinity(pid_t process, size_t size, cpu_set_t* set) noexcept {
    return calls::sched_getaffinity(process, size, set);
}
ORVABASE_TEST_REPLACES int sched_setaffinity(pid_t process, size_t size,
                                             const cpu_set_t* set) noexcept {
    return calls::sched_setaffinity(process, size, set);
}
ORVABASE_TEST_REPLACES char* getcwd(char* buffer, size_t size) noexcept {
    return calls::getcwd(buffer, size);
}
ORVABASE_TEST_REPLACES ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
    return calls::readlink(path, buffer, size);
}
ORVABASE_TEST_REPLACES int gethostname(char* buffer, size_t size) noexcept {
    return calls::gethostname(buffer, size);
}
ORVABASE_TEST_REPLACES long sysconf(int name) noexcept {
    return calls::sysconf(name);
}

#endif
