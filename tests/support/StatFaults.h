#ifndef ORVABASE_TESTS_STATFAULTS_H
#define ORVABASE_TESTS_STATFAULTS_H

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <sys/stat.h>

// `stat` and `lstat`, replaced in the test program: each call is counted and passed on, unless the
// test wants it to fail or to report a certain mode, size or time.

struct ReplacedStatCalls {
    unsigned long statCalls = 0;
    unsigned long lstatCalls = 0;
    char lastPath[256] = {}; // its beginning
    bool fails = false;
    bool answers = false; // with `answer`
    struct stat answer = {};
};

inline ReplacedStatCalls replacedStatCalls;

namespace statfaults {

typedef int (*StatFunction)(const char*, struct stat*);

inline int examine(const char* name, const char* path, struct stat* status) {
    strncpy(replacedStatCalls.lastPath, path, sizeof replacedStatCalls.lastPath - 1);
    if (replacedStatCalls.fails) {
        errno = EIO;
        return -1;
    }
    if (replacedStatCalls.answers) {
        *status = replacedStatCalls.answer;
        return 0;
    }
    return reinterpret_cast<StatFunction>(dlsym(RTLD_NEXT, name))(path, status);
}

} // namespace statfaults

extern "C" {

[[gnu::used]] inline int stat(const char* path, struct stat* status) noexcept {
    ++replacedStatCalls.statCalls;
    return statfaults::examine("stat", path, status);
}

[[gnu::used]] inline int lstat(const char* path, struct stat* status) noexcept {
    ++replacedStatCalls.lstatCalls;
    return statfaults::examine("lstat", path, status);
}

} // extern "C"

/// A scope in which the replaced calls start from zero and after which none fails any more.
class StatCallsScope {
public:
    StatCallsScope() { replacedStatCalls = ReplacedStatCalls(); }
    ~StatCallsScope() { replacedStatCalls = ReplacedStatCalls(); }
    ReplacedStatCalls* operator->() { return &replacedStatCalls; }
};

#endif
