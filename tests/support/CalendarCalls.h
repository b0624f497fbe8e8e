#ifndef ORVABASE_TESTS_CALENDARCALLS_H
#define ORVABASE_TESTS_CALENDARCALLS_H

#include "support/SystemCalls.h"

#include <ctime>

/// The replaceable functions on dates, for programs that do without those of TimeFaults.h.
namespace calls {
inline SystemCall<struct tm*(const time_t*, struct tm*)> gmtime_r{"gmtime_r"};
} // namespace calls

ORVABASE_TEST_REPLACES struct tm* gmtime_r(const time_t* seconds, struct tm* fields) noexcept {
    return calls::gmtime_r(seconds, fields);
}

#endif
