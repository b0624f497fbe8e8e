#ifndef ORVABASE_TESTS_THREADCALLS_H
#define ORVABASE_TESTS_THREADCALLS_H

#include "support/SystemCalls.h"

#include <pthread.h>

/// The replaceable functions on threads.
///
/// The test framework and the exceptions' unwinder lock mutexes too: keep the scope of a
/// replacement to the call under test.
namespace calls {
inline SystemCall<int(pthread_mutexattr_t*)> pthread_mutexattr_init{"pthread_mutexattr_init"};
inline SystemCall<int(pthread_mutexattr_t*, int)> pthread_mutexattr_settype{
    "pthread_mutexattr_settype"};
inline SystemCall<int(pthread_mutex_t*, const pthread_mutexattr_t*)> pthread_mutex_init{
    "pthread_mutex_init"};
inline SystemCall<int(pthread_mutex_t*)> pthread_mutex_lock{"pthread_mutex_lock"};
inline SystemCall<int(pthread_mutex_t*)> pthread_mutex_unlock{"pthread_mutex_unlock"};
inline SystemCall<int(pthread_mutex_t*)> pthread_mutex_destroy{"pthread_mutex_destroy"};
inline SystemCall<int(pthread_condattr_t*)> pthread_condattr_init{"pthread_condattr_init"};
inline SystemCall<int(pthread_cond_t*, const pthread_condattr_t*)> pthread_cond_init{
    "pthread_cond_init", "GLIBC_2.3.2"};
inline SystemCall<int(pthread_cond_t*)> pthread_cond_destroy{"pthread_cond_destroy", "GLIBC_2.3.2"};
inline SystemCall<int(pthread_cond_t*)> pthread_cond_broadcast{"pthread_cond_broadcast",
                                                               "GLIBC_2.3.2"};
inline SystemCall<int(pthread_cond_t*, pthread_mutex_t*)> pthread_cond_wait{"pthread_cond_wait",
                                                                            "GLIBC_2.3.2"};
inline SystemCall<int(pthread_cond_t*, pthread_mutex_t*, const struct timespec*)>
    pthread_cond_timedwait{"pthread_cond_timedwait", "GLIBC_2.3.2"};
inline SystemCall<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)> pthread_create{
    "pthread_create"};
inline SystemCall<int(pthread_t, void**)> pthread_join{"pthread_join"};
} // namespace calls

ORVABASE_TEST_REPLACES int pthread_mutexattr_init(pthread_mutexattr_t* attributes) noexcept {
    return calls::pthread_mutexattr_init(attributes);
}
ORVABASE_TEST_REPLACES int pthread_mutexattr_settype(pthread_mutexattr_t* attributes,
                                                     int type) noexcept {
    return calls::pthread_mutexattr_settype(attributes, type);
}
ORVABASE_TEST_REPLACES int pthread_mutex_init(pthread_mutex_t* mutex,
                                              const pthread_mutexattr_t* attributes) noexcept {
    return calls::pthread_mutex_init(mutex, attributes);
}
ORVABASE_TEST_REPLACES int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    return calls::pthread_mutex_lock(mutex);
}
ORVABASE_TEST_REPLACES int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    return calls::pthread_mutex_unlock(mutex);
}
ORVABASE_TEST_REPLACES int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept {
    return calls::pthread_mutex_destroy(mutex);
}
ORVABASE_TEST_REPLACES int pthread_condattr_init(pthread_condattr_t* attributes) noexcept {
    return calls::pthread_condattr_init(attributes);
}
ORVABASE_TEST_REPLACES int pthread_cond_init(pthread_cond_t* condition,
                                             const pthread_condattr_t* attributes) noexcept {
    return calls::pthread_cond_init(condition, attributes);
}
ORVABASE_TEST_REPLACES int pthread_cond_destroy(pthread_cond_t* condition) noexcept {
    return calls::pthread_cond_destroy(condition);
}
ORVABASE_TEST_REPLACES int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
    return calls::pthread_cond_broadcast(condition);
}
ORVABASE_TEST_REPLACES int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    return calls::pthread_cond_wait(condition, mutex);
}
ORVABASE_TEST_REPLACES int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                                  const struct timespec* deadline) {
    return calls::pthread_cond_timedwait(condition, mutex, deadline);
}
ORVABASE_TEST_REPLACES int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                          void* (*routine)(void*), void* argument) noexcept {
    return calls::pthread_create(thread, attributes, routine, argument);
}
ORVABASE_TEST_REPLACES int pthread_join(pthread_t thread, void** result) {
    return calls::pthread_join(thread, result);
}

/// A failure of one of these functions: it returns the error number.
template<class Signature>
class FailingThreadCall;

template<class... Arguments>
class FailingThreadCall<int(Arguments...)> {
public:
    FailingThreadCall(SystemCall<int(Arguments...)>& target, int code, unsigned long first = 1,
                      unsigned long times = ~0UL)
        : replacement(target, [this, &target, code, first, times](Arguments... arguments) {
              const unsigned long number = ++count;
              if (number < first || number - first >= times)
                  return target.original(arguments...);
              return code;
          }) {}
    unsigned long calls() const { return count; }

private:
    std::atomic<unsigned long> count{0};
    Replacement<int(Arguments...)> replacement;
};

template<class Signature>
FailingThreadCall(SystemCall<Signature>&, int) -> FailingThreadCall<Signature>;
template<class Signature>
FailingThreadCall(SystemCall<Signature>&, int, unsigned long) -> FailingThreadCall<Signature>;
template<class Signature>
FailingThreadCall(SystemCall<Signature>&, int, unsigned long, unsigned long)
    -> FailingThreadCall<Signature>;

#endif
