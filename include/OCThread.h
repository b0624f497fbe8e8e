#ifndef ORVABASE_OCTHREAD_H
#define ORVABASE_OCTHREAD_H

#include "OCEvent.h"

/// A thread that is created suspended, runs `execute` once it is resumed, and is asked, not forced,
/// to stop.
///
/// The owner calls the public operations; `execute` runs in the new thread and calls
/// `isTerminating` in its loop, also as its way to sleep. Resuming and terminating may be requested
/// from any thread; the other operations belong to the owner.
///
/// Every class that derives from it calls `destroy()` in its own destructor, so that the thread has
/// ended before the derived part of the object goes.
///
///     class Ticker : public OCThread {
///     public:
///         ~Ticker() override { destroy(); }
///         unsigned int execute() override {
///             while (!isTerminating(1000))
///                 tick();
///             return 0;
///         }
///     };
///
///     Ticker ticker;
///     ticker.resumeThread();
class ORVABASE_EXPORT OCThread : public OCObject {
public:
    /// Creates the thread, which waits to be resumed.
    /// @throws OXThread_CreateError; OXMutex_CreateError and OXEvent_CreateError with the system's
    /// text.
    OCThread();
    OCThread(const OCThread&) = delete;
    OCThread& operator=(const OCThread&) = delete;
    /// Asks the thread to stop and waits until it has; an exception is dropped.
    ~OCThread() override;

    /// What the thread does once it is resumed; the result is the thread's exit value. An exception
    /// that it lets out ends the thread with 1.
    virtual unsigned int execute() = 0;

    /// What the new thread runs: waits to be resumed, then returns 0 if the thread is to terminate
    /// already, and otherwise what `execute` returns.
    unsigned int entry();
    /// Lets the thread run.
    /// @throws OXEvent_SignalError, OXMutex_AcquireError, each with the system's text.
    void resumeThread();
    /// Asks the thread to stop: `isTerminating` is true from now on. A thread that was not resumed
    /// ends without `execute`.
    /// @throws OXEvent_SignalError, OXMutex_AcquireError, each with the system's text.
    void terminateThread();
    /// Waits up to `milliseconds` until the thread is asked to stop. True as soon as it is, false
    /// after that time.
    /// @throws OXEvent_TimeError, OXEvent_WaitError, OXMutex_AcquireError, each with the system's
    /// text.
    bool isTerminating(unsigned int milliseconds) const;
    /// Waits until the thread has ended. The identifier is 0 then.
    /// @throws OXThread_WaitError, also when the thread has been waited for before.
    void waitFor();

    /// The system's identifier of the thread, or 0 when the thread has been waited for.
    pthread_t getIdentifier() const { return identifier; }
    /// The identifier of the thread that calls.
    static pthread_t currentIdentifier() noexcept { return pthread_self(); }

    /// Asks the thread to stop and waits until it has, unless it has been waited for before.
    /// @throws what `terminateThread` and `waitFor` throw.
    void destroyThread();
    void destroy() { destroyThread(); }

    /// The step of construction: creates the thread, which waits to be resumed. A thread that there
    /// is already is ended first, as by `destroyThread`.
    ///
    /// Note: requests stay. A new thread of an object that was resumed before runs at once, and one
    /// of an object that was asked to stop ends at once without `execute`.
    /// @throws OXThread_CreateError, and what `destroyThread` throws.
    void initialize();
    void initializeThread();

protected:
    /// Waits for the thread, as `waitFor` does, if it has ended already. False when it has not, or
    /// has been waited for before.
    bool joinEnded() noexcept;

private:
    pthread_t identifier;
    OCEvent resumeEvent;
    mutable OCEvent terminateEvent;
};

/// The family of the thread's failures.
class ORVABASE_EXPORT OXThread : public OXAutoException {
public:
    ~OXThread() noexcept override;

protected:
    OXThread();
};

/// "Error creating thread".
class ORVABASE_EXPORT OXThread_CreateError : public OXThread {
public:
    OXThread_CreateError();
    ~OXThread_CreateError() noexcept override;
};

/// "Error waiting for thread".
class ORVABASE_EXPORT OXThread_WaitError : public OXThread {
public:
    OXThread_WaitError();
    ~OXThread_WaitError() noexcept override;
};

#endif
