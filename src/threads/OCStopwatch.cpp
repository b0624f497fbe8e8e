#include "OCStopwatch.h"

#include <sys/time.h>

OCStopwatch::OCStopwatch() : frequency(queryFrequency()), start(queryValue()) {}

OCStopwatch::~OCStopwatch() noexcept = default;

double OCStopwatch::getTime() const {
    return (queryValue() - start) / frequency;
}

void OCStopwatch::resetTime() {
    start = queryValue();
}

double OCStopwatch::queryFrequency() const noexcept {
    return 1.0;
}

double OCStopwatch::queryValue() const {
    struct timeval now;
    if (gettimeofday(&now, nullptr) != 0)
        throw OXStopwatch_QueryValueError();
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) / 1000000.0;
}

OXStopwatch::OXStopwatch() = default;
OXStopwatch::~OXStopwatch() noexcept = default;

OXStopwatch_QueryValueError::OXStopwatch_QueryValueError() {
    setClass("OXStopwatch_QueryValueError");
    setMessage("Can not query stopwatch value");
}
OXStopwatch_QueryValueError::~OXStopwatch_QueryValueError() noexcept = default;
