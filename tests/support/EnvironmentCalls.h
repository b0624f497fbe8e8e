#ifndef ORVABASE_TESTS_ENVIRONMENTCALLS_H
#define ORVABASE_TESTS_ENVIRONMENTCALLS_H

#include "support/SystemCalls.h"

#include <cstdlib>

/// The replaceable functions on the environment.
namespace calls {
inline SystemCall<char*(const char*)> getenv{"getenv"};
inline SystemCall<int(const char*, const char*, int)> setenv{"setenv"};
inline SystemCall<int(const char*)> unsetenv{"unsetenv"};
} // namespace calls

ORVABASE_TEST_REPLACES char* getenv(const char* name) noexcept {
    return calls::getenv(name);
}
ORVABASE_TEST_REPLACES int setenv(const char* name, const char* value, int overwrite) noexcept {
    return calls::setenv(name, value, overwrite);
}
ORVABASE_TEST_REPLACES int unsetenv(const char* name) noexcept {
    return calls::unsetenv(name);
}

#endif
