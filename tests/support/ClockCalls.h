#ifndef ORVABASE_TESTS_CLOCKCALLS_H
#define ORVABASE_TESTS_CLOCKCALLS_H

#include "support/SystemCalls.h"

#include <sys/time.h>
#include <unistd.h>

/// The replaceable functions on time.
namespace calls {
inline SystemCall<int(struct timeval*, void*)> gettimeofday{"gettimeofday"};
inline SystemCall<int(useconds_t)> usleep{"usleep"};
} // namespace calls

ORVABASE_TEST_REPLACES int gettimeofday(struct timeval* now, void* zone) noexcept {
    return calls::gettimeofday(now, zone);
}
ORVABASE_TEST_REPLACES int usleep(useconds_t microseconds) {
    return calls::usleep(microseconds);
}

/// A clock that stands still until it is moved: it takes the place of `gettimeofday`, and `usleep`
/// moves it instead of waiting, for the thread that makes it.
class TestClock {
public:
    explicit TestClock(long seconds, long microseconds = 0)
        : now(seconds * 1000000 + microseconds), reading(calls::gettimeofday,
                                                         [this](struct timeval* result, void*) {
                                                             result->tv_sec = now / 1000000;
                                                             result->tv_usec = now % 1000000;
                                                             return 0;
                                                         }),
          sleeping(calls::usleep, [this](useconds_t microsecondsToSleep) {
              ++sleeps;
              slept = microsecondsToSleep;
              now += microsecondsToSleep;
              return 0;
          }) {}

    void advanceMilliseconds(long milliseconds) { now += milliseconds * 1000; }
    void advanceMicroseconds(long microseconds) { now += microseconds; }

    /// How often the thread slept, and its last time in microseconds.
    unsigned long sleeps = 0;
    useconds_t slept = 0;

private:
    long now;
    Replacement<int(struct timeval*, void*)> reading;
    Replacement<int(useconds_t)> sleeping;
};

#endif
