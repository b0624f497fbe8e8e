#include "OCThread.h"

#include <cstdint>
#include <cxxabi.h>

namespace {

void* runThread(void* object) {
    unsigned int result = 1;
    try {
        result = static_cast<OCThread*>(object)->entry();
    } catch (...) {
        // What has no type is not a C++ exception but the unwinding of a thread that is cancelled
        // or leaves by pthread_exit, which must go on.
        if (abi::__cxa_current_exception_type() == nullptr)
            throw;
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the way in which threads hand a number over
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(result));
}

} // namespace

OCThread::OCThread()
    : identifier(0), resumeEvent(EventStateNotSignalled, EventTypeManualReset),
      terminateEvent(EventStateNotSignalled, EventTypeManualReset) {
    try {
        initialize();
    } catch (...) {
        destroy();
        throw;
    }
}

OCThread::~OCThread() {
    try {
        destroy();
    } catch (...) {
    }
}

void OCThread::initialize() {
    initializeThread();
}

void OCThread::initializeThread() {
    destroyThread();
    pthread_t thread = 0;
    if (pthread_create(&thread, nullptr, runThread, this) != 0)
        throw OXThread_CreateError();
    identifier = thread;
}

unsigned int OCThread::entry() {
    resumeEvent.waitFor();
    if (terminateEvent.waitFor(0))
        return 0;
    return execute();
}

void OCThread::resumeThread() {
    resumeEvent.signalEvent();
}

void OCThread::terminateThread() {
    terminateEvent.signalEvent();
    resumeThread();
}

bool OCThread::isTerminating(unsigned int milliseconds) const {
    return terminateEvent.waitFor(milliseconds);
}

void OCThread::waitFor() {
    if (identifier == 0 || pthread_join(identifier, nullptr) != 0)
        throw OXThread_WaitError();
    identifier = 0;
}

bool OCThread::joinEnded() noexcept {
    if (identifier == 0 || pthread_tryjoin_np(identifier, nullptr) != 0)
        return false;
    identifier = 0;
    return true;
}

void OCThread::destroyThread() {
    if (identifier == 0)
        return;
    terminateThread();
    waitFor();
}

OXThread::OXThread() = default;
OXThread::~OXThread() noexcept = default;

OXThread_CreateError::OXThread_CreateError() {
    setClass("OXThread_CreateError");
    setMessage("Error creating thread");
}
OXThread_CreateError::~OXThread_CreateError() noexcept = default;

OXThread_WaitError::OXThread_WaitError() {
    setClass("OXThread_WaitError");
    setMessage("Error waiting for thread");
}
OXThread_WaitError::~OXThread_WaitError() noexcept = default;
