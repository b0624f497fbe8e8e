#ifndef ORVABASE_TESTS_FILECALLS_H
#define ORVABASE_TESTS_FILECALLS_H

#include "support/SystemCalls.h"

#include <cstdarg>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

/// The replaceable functions on files. `open` and `fcntl` are passed their third argument whether
/// or not the caller gave one.
namespace calls {
inline SystemCall<ssize_t(int, void*, size_t)> read{"read"};
inline SystemCall<ssize_t(int, const void*, size_t)> write{"write"};
inline SystemCall<off_t(int, off_t, int)> lseek{"lseek"};
inline SystemCall<int(int, off_t)> ftruncate{"ftruncate"};
inline SystemCall<int(const char*, int, mode_t)> open{"open"};
inline SystemCall<int(int)> close{"close"};
inline SystemCall<int(int, struct stat*)> fstat{"fstat"};
inline SystemCall<int(int, int, void*)> fcntl{"fcntl"};
} // namespace calls

ORVABASE_TEST_REPLACES ssize_t read(int handle, void* buffer, size_t count) {
    return calls::read(handle, buffer, count);
}
ORVABASE_TEST_REPLACES ssize_t write(int handle, const void* buffer, size_t count) {
    return calls::write(handle, buffer, count);
}
ORVABASE_TEST_REPLACES off_t lseek(int handle, off_t offset, int origin) noexcept {
    return calls::lseek(handle, offset, origin);
}
ORVABASE_TEST_REPLACES int ftruncate(int handle, off_t size) noexcept {
    return calls::ftruncate(handle, size);
}
ORVABASE_TEST_REPLACES int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return calls::open(path, flags, mode);
}
ORVABASE_TEST_REPLACES int close(int handle) {
    return calls::close(handle);
}
ORVABASE_TEST_REPLACES int fstat(int handle, struct stat* status) noexcept {
    return calls::fstat(handle, status);
}
ORVABASE_TEST_REPLACES int fcntl(int handle, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void* argument = va_arg(rest, void*);
    va_end(rest);
    return calls::fcntl(handle, command, argument);
}

#endif
