#ifndef ORVABASE_TESTS_TIMEFAULTS_H
#define ORVABASE_TESTS_TIMEFAULTS_H

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <string>

// The C library's time functions, replaced in the test program: each call is counted and passed on,
// unless the test wants it to fail or to give a certain result.

struct ReplacedTimeCall {
    unsigned long calls = 0;
    bool fails = false;
};

struct ReplacedTimeCalls {
    ReplacedTimeCall time, gmtime_r, localtime_r, mktime, timegm, timelocal;
    bool clockStands = false;
    time_t now = 0;          // what `time` gives while the clock stands
    time_t lastMoment = 0;   // what `gmtime_r` or `localtime_r` was last asked for
    int lastIsdst = 0;       // the flag that `mktime` or `timelocal` was last given
    int forcedDayOfWeek = 0; // what `mktime` gives, when it is not 0
};

inline ReplacedTimeCalls replacedTimeCalls;

namespace timefaults {

template<typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

inline bool counted(ReplacedTimeCall& call) {
    ++call.calls;
    if (call.fails)
        errno = EOVERFLOW;
    return !call.fails;
}

} // namespace timefaults

extern "C" {

[[gnu::used]] inline time_t time(time_t* result) noexcept {
    static const auto original = timefaults::next<time_t (*)(time_t*)>("time");
    if (!timefaults::counted(replacedTimeCalls.time))
        return -1;
    if (!replacedTimeCalls.clockStands)
        return original(result);
    if (result != nullptr)
        *result = replacedTimeCalls.now;
    return replacedTimeCalls.now;
}

[[gnu::used]] inline struct tm* gmtime_r(const time_t* moment, struct tm* result) noexcept {
    static const auto original =
        timefaults::next<struct tm* (*)(const time_t*, struct tm*)>("gmtime_r");
    replacedTimeCalls.lastMoment = *moment;
    return timefaults::counted(replacedTimeCalls.gmtime_r) ? original(moment, result) : nullptr;
}

[[gnu::used]] inline struct tm* localtime_r(const time_t* moment, struct tm* result) noexcept {
    static const auto original =
        timefaults::next<struct tm* (*)(const time_t*, struct tm*)>("localtime_r");
    replacedTimeCalls.lastMoment = *moment;
    return timefaults::counted(replacedTimeCalls.localtime_r) ? original(moment, result) : nullptr;
}

[[gnu::used]] inline time_t mktime(struct tm* structure) noexcept {
    static const auto original = timefaults::next<time_t (*)(struct tm*)>("mktime");
    replacedTimeCalls.lastIsdst = structure->tm_isdst;
    if (!timefaults::counted(replacedTimeCalls.mktime))
        return -1;
    const time_t moment = original(structure);
    if (replacedTimeCalls.forcedDayOfWeek != 0)
        structure->tm_wday = replacedTimeCalls.forcedDayOfWeek;
    return moment;
}

[[gnu::used]] inline time_t timegm(struct tm* structure) noexcept {
    static const auto original = timefaults::next<time_t (*)(struct tm*)>("timegm");
    return timefaults::counted(replacedTimeCalls.timegm) ? original(structure) : -1;
}

[[gnu::used]] inline time_t timelocal(struct tm* structure) noexcept {
    static const auto original = timefaults::next<time_t (*)(struct tm*)>("timelocal");
    replacedTimeCalls.lastIsdst = structure->tm_isdst;
    return timefaults::counted(replacedTimeCalls.timelocal) ? original(structure) : -1;
}

} // extern "C"

/// A scope in which the replaced calls start from zero and after which none fails any more.
class TimeCallsScope {
public:
    TimeCallsScope() { replacedTimeCalls = ReplacedTimeCalls(); }
    ~TimeCallsScope() { replacedTimeCalls = ReplacedTimeCalls(); }
    ReplacedTimeCalls* operator->() { return &replacedTimeCalls; }
};

/// A scope in which the process is in a time zone, given as a POSIX text, so that neither the
/// host's zone nor its zone files play a part.
class TimeZoneScope {
public:
    explicit TimeZoneScope(const char* zone) {
        const char* const old = getenv("TZ");
        hadZone = old != nullptr;
        if (hadZone)
            oldZone = old;
        setenv("TZ", zone, 1);
        tzset();
    }
    TimeZoneScope(const TimeZoneScope&) = delete;
    TimeZoneScope& operator=(const TimeZoneScope&) = delete;
    ~TimeZoneScope() {
        if (hadZone)
            setenv("TZ", oldZone.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    bool hadZone;
    std::string oldZone;
};

namespace zones {

constexpr char utc[] = "UTC0";
/// Fixed, 5 hours behind UTC.
constexpr char fixedWest[] = "EST5";
/// Fixed, 5 hours and 30 minutes ahead of UTC.
constexpr char fixedEast[] = "IST-5:30";
/// One hour ahead of UTC, daylight saving from the last Sunday of March, 02:00 to 03:00, to the
/// last Sunday of October.
constexpr char berlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";
/// Three hours behind UTC, daylight saving from the third Sunday of October, 00:00 to 01:00, to the
/// third Sunday of February, 24:00 of the day before.
constexpr char saoPaulo[] = "BRT3BRST,M10.3.0/0,M2.3.0/0";

} // namespace zones

#endif
