#include "OCEvent.h"

#include "OCMemory.h"
#include "OCSystemError.h"

#include <cerrno>
#include <sys/time.h>

OCEvent::OCEvent() : created(0), state(EventStateNotSignalled), type(EventTypeAutoReset) {
    // Zeros are what PTHREAD_COND_INITIALIZER gives: this condition variable needs no creation.
    memoryZero(&condition, sizeof condition);
}

OCEvent::OCEvent(OEEventState initialState, OEEventType eventType)
    : created(0), state(EventStateNotSignalled), type(EventTypeAutoReset) {
    memoryZero(&condition, sizeof condition);
    try {
        createEvent(initialState, eventType);
    } catch (...) {
        destroyQuietly();
        throw;
    }
}

OCEvent::~OCEvent() noexcept {
    destroyQuietly();
}

void OCEvent::destroyQuietly() noexcept {
    try {
        destroy();
    } catch (...) {
    }
}

void OCEvent::createEvent(OEEventState initialState, OEEventType eventType) {
    pthread_condattr_t attributes;
    int result = pthread_condattr_init(&attributes);
    if (result == 0) {
        result = pthread_cond_init(&condition, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    if (result != 0)
        throw OXEvent_CreateError(static_cast<unsigned int>(result));
    state = initialState;
    type = eventType;
    created = 1;
}

void OCEvent::destroyEvent() {
    OCMutexLock lock(mutex);
    if (created == 0)
        return;
    pthread_cond_destroy(&condition);
    created = 0;
}

void OCEvent::signalEvent() {
    OCMutexLock lock(mutex);
    state = EventStateSignalled;
    const int result = pthread_cond_broadcast(&condition);
    if (result != 0)
        throw OXEvent_SignalError(static_cast<unsigned int>(result));
}

void OCEvent::resetEvent() {
    OCMutexLock lock(mutex);
    state = EventStateNotSignalled;
}

void OCEvent::waitFor() {
    OCMutexLock lock(mutex);
    while (state == EventStateNotSignalled) {
        const int result = pthread_cond_wait(&condition, mutex.internalStructure());
        if (result != 0 && result != EINTR)
            throw OXEvent_WaitError(static_cast<unsigned int>(result));
    }
    if (type == EventTypeAutoReset)
        state = EventStateNotSignalled;
}

bool OCEvent::waitFor(unsigned int milliseconds) {
    OCMutexLock lock(mutex);
    struct timespec deadline;
    buildTimeout(&deadline, milliseconds);
    while (state != EventStateSignalled) {
        // A deadline in whole milliseconds that begins now has passed. The system would put the
        // thread to sleep all the same, for the slack of its timers.
        if (milliseconds == 0)
            return false;
        const int result = pthread_cond_timedwait(&condition, mutex.internalStructure(), &deadline);
        if (result == ETIMEDOUT)
            return false;
        if (result != 0 && result != EINTR)
            throw OXEvent_WaitError(static_cast<unsigned int>(result));
    }
    if (type == EventTypeAutoReset)
        state = EventStateNotSignalled;
    return true;
}

void OCEvent::buildTimeout(struct timespec* timeout, unsigned int milliseconds) const {
    struct timeval now;
    if (gettimeofday(&now, nullptr) != 0) {
        const unsigned int code = static_cast<unsigned int>(errno);
        throw OXEvent_TimeError(code);
    }
    const long deadline = now.tv_sec * 1000 + now.tv_usec / 1000 + static_cast<long>(milliseconds);
    timeout->tv_sec = deadline / 1000;
    timeout->tv_nsec = deadline % 1000 * 1000000;
}

OXEvent::OXEvent() = default;
OXEvent::~OXEvent() noexcept = default;

OXEvent_CreateError::OXEvent_CreateError(unsigned int code) {
    setClass("OXEvent_CreateError");
    setMessage("Error creating synchronization event");
    getDetails().addString(systemErrorText(code));
}
OXEvent_CreateError::~OXEvent_CreateError() noexcept = default;

OXEvent_SignalError::OXEvent_SignalError(unsigned int code) {
    setClass("OXEvent_SignalError");
    setMessage("Error signaling synchronization event");
    getDetails().addString(systemErrorText(code));
}
OXEvent_SignalError::~OXEvent_SignalError() noexcept = default;

OXEvent_TimeError::OXEvent_TimeError(unsigned int code) {
    setClass("OXEvent_TimeError");
    setMessage("Error acquiring current system time");
    getDetails().addString(systemErrorText(code));
}
OXEvent_TimeError::~OXEvent_TimeError() noexcept = default;

OXEvent_WaitError::OXEvent_WaitError(unsigned int code) {
    setClass("OXEvent_WaitError");
    setMessage("Error waiting for synchronization event");
    getDetails().addString(systemErrorText(code));
}
OXEvent_WaitError::~OXEvent_WaitError() noexcept = default;
