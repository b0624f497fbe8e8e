#ifndef ORVABASE_TESTS_LOADERCALLS_H
#define ORVABASE_TESTS_LOADERCALLS_H

#include "support/SystemCalls.h"

#include <dlfcn.h>

/// The replaceable functions of the dynamic loader (`dlsym` is needed to find the others).
namespace calls {
inline SystemCall<void*(const char*, int)> dlopen{"dlopen"};
inline SystemCall<int(void*)> dlclose{"dlclose"};
inline SystemCall<char*()> dlerror{"dlerror"};
} // namespace calls

ORVABASE_TEST_REPLACES void* dlopen(const char* path, int flags) noexcept {
    return calls::dlopen(path, flags);
}
ORVABASE_TEST_REPLACES int dlclose(void* handle) {
    return calls::dlclose(handle);
}
ORVABASE_TEST_REPLACES char* dlerror() noexcept {
    return calls::dlerror();
}

#endif
