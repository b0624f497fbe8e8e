#include "OCMutex.h"

#include "OCMemory.h"
#include "OCSystemError.h"

OCMutex::OCMutex() : created(0) {
    memoryZero(&mutex, sizeof mutex);
    try {
        createMutex();
    } catch (...) {
        destroy();
        throw;
    }
}

OCMutex::~OCMutex() noexcept {
    destroy();
}

void OCMutex::createMutex() {
    pthread_mutexattr_t attributes;
    int result = pthread_mutexattr_init(&attributes);
    if (result == 0) {
        result = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        if (result == 0)
            result = pthread_mutex_init(&mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    if (result != 0)
        throw OXMutex_CreateError(static_cast<unsigned int>(result));
    created = 1;
}

void OCMutex::destroyMutex() noexcept {
    if (created == 0)
        return;
    pthread_mutex_destroy(&mutex);
    created = 0;
}

void OCMutex::throwAcquireError(int result) {
    throw OXMutex_AcquireError(static_cast<unsigned int>(result));
}

OXMutex::OXMutex() = default;
OXMutex::~OXMutex() noexcept = default;

OXMutex_AcquireError::OXMutex_AcquireError(unsigned int code) {
    setClass("OXMutex_AcquireError");
    setMessage("Error waiting for synchronization mutex");
    getDetails().addString(systemErrorText(code));
}
OXMutex_AcquireError::~OXMutex_AcquireError() noexcept = default;

OXMutex_CreateError::OXMutex_CreateError(unsigned int code) {
    setClass("OXMutex_CreateError");
    setMessage("Error creating synchronization mutex");
    getDetails().addString(systemErrorText(code));
}
OXMutex_CreateError::~OXMutex_CreateError() noexcept = default;
