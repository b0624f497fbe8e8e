#include "OCCountdown.h"

#include <sys/time.h>
#include <unistd.h>

OCCountdown::OCCountdown(unsigned int milliseconds) : deadline(0) {
    restart(milliseconds);
}

OCCountdown::~OCCountdown() noexcept = default;

void OCCountdown::restart(unsigned int milliseconds) {
    deadline = currentTime() + milliseconds;
}

unsigned long OCCountdown::currentTime() const {
    struct timeval now;
    if (gettimeofday(&now, nullptr) != 0)
        throw OXCountdown_AcquireTimeError();
    return static_cast<unsigned long>(now.tv_sec) * 1000 +
           static_cast<unsigned long>(now.tv_usec) / 1000;
}

bool OCCountdown::timeout() const {
    return currentTime() >= deadline;
}

unsigned int OCCountdown::remaining() const {
    const unsigned long now = currentTime();
    return now < deadline ? static_cast<unsigned int>(deadline - now) : 0;
}

void OCCountdown::delay(unsigned int milliseconds) {
    usleep(milliseconds * 1000);
}

OXCountdown::OXCountdown() = default;
OXCountdown::~OXCountdown() noexcept = default;

OXCountdown_AcquireTimeError::OXCountdown_AcquireTimeError() {
    setClass("OXCountdown_AcquireTimeError");
    setMessage("Error acquiring the current time");
}
OXCountdown_AcquireTimeError::~OXCountdown_AcquireTimeError() noexcept = default;
