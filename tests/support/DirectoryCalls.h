#ifndef ORVABASE_TESTS_DIRECTORYCALLS_H
#define ORVABASE_TESTS_DIRECTORYCALLS_H

#include "support/SystemCalls.h"

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

/// The replaceable functions on directories and on names of files.
namespace calls {
inline SystemCall<DIR*(const char*)> opendir{"opendir"};
inline SystemCall<struct dirent*(DIR*)> readdir{"readdir"};
inline SystemCall<void(DIR*)> rewinddir{"rewinddir"};
inline SystemCall<int(DIR*)> closedir{"closedir"};
inline SystemCall<int(const char*, mode_t)> mkdir{"mkdir"};
inline SystemCall<int(const char*)> rmdir{"rmdir"};
inline SystemCall<int(const char*)> remove{"remove"};
inline SystemCall<int(const char*)> unlink{"unlink"};
inline SystemCall<int(char*)> mkstemp{"mkstemp"};
inline SystemCall<char*(char*)> mkdtemp{"mkdtemp"};
} // namespace calls

ORVABASE_TEST_REPLACES DIR* opendir(const char* path) {
    return calls::opendir(path);
}
ORVABASE_TEST_REPLACES struct dirent* readdir(DIR* directory) {
    return calls::readdir(directory);
}
ORVABASE_TEST_REPLACES void rewinddir(DIR* directory) noexcept {
    calls::rewinddir(directory);
}
ORVABASE_TEST_REPLACES int closedir(DIR* directory) {
    return calls::closedir(directory);
}
ORVABASE_TEST_REPLACES int mkdir(const char* path, mode_t mode) noexcept {
    return calls::mkdir(path, mode);
}
ORVABASE_TEST_REPLACES int rmdir(const char* path) noexcept {
    return calls::rmdir(path);
}
ORVABASE_TEST_REPLACES int remove(const char* path) noexcept {
    return calls::remove(path);
}
ORVABASE_TEST_REPLACES int unlink(const char* path) noexcept {
    return calls::unlink(path);
}
ORVABASE_TEST_REPLACES int mkstemp(char* path) {
    return calls::mkstemp(path);
}
ORVABASE_TEST_REPLACES char* mkdtemp(char* path) noexcept {
    return calls::mkdtemp(path);
}

#endif
