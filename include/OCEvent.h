#ifndef ORVABASE_OCEVENT_H
#define ORVABASE_OCEVENT_H

#include "OCMutex.h"

// NOLINTNEXTLINE(modernize-deprecated-headers): the one of POSIX
#include <time.h>

/// Whether an event is signalled. Other values are kept as they are; see `OCEvent`'s waits.
enum OEEventState : int { EventStateNotSignalled = 0, EventStateSignalled = 1 };

/// Whether a completed wait consumes the signal (auto-reset) or leaves it until `resetEvent` (any
/// value but 0).
enum OEEventType : int { EventTypeAutoReset = 0, EventTypeManualReset = 1 };

/// A flag that threads can wait for.
///
/// An auto-reset event lets one waiter through for each signal; a manual-reset one lets every
/// waiter through until it is reset. A signal that nobody waits for is kept. Any number of threads
/// may signal, reset and wait at once; an event that a thread still waits for must not be
/// destroyed.
///
///     OCEvent ready(EventStateNotSignalled, EventTypeManualReset);
///     ready.signalEvent();          // one thread
///     if (ready.waitFor(500)) …     // another: true within half a second
class ORVABASE_EXPORT OCEvent : public OCObject {
public:
    /// An auto-reset event that is not signalled.
    /// @throws OXMutex_CreateError with the system's text.
    OCEvent();
    /// An event of that state and type.
    /// @throws OXMutex_CreateError, OXEvent_CreateError, each with the system's text.
    OCEvent(OEEventState initialState, OEEventType eventType);
    OCEvent(const OCEvent&) = delete;
    OCEvent& operator=(const OCEvent&) = delete;
    ~OCEvent() noexcept override;

    /// Signals the event and wakes every waiter. With an auto-reset event the first of them to run
    /// consumes the signal and the others go on waiting.
    /// @throws OXEvent_SignalError, OXMutex_AcquireError, each with the system's text.
    void signalEvent();
    /// Takes the signal back.
    /// @throws OXMutex_AcquireError with the system's text.
    void resetEvent();

    /// Waits until the event is signalled.
    ///
    /// Note: any state but 0 counts as signalled here.
    /// @throws OXEvent_WaitError, OXMutex_AcquireError, each with the system's text.
    void waitFor();
    /// Waits until the event is signalled (true), but for at most `milliseconds` of the wall clock
    /// (false). A time-out of 0 only looks.
    ///
    /// Note: only state 1 counts as signalled here. The deadline is computed before the state is
    /// looked at, so that a failing clock throws and leaves the signal.
    /// @throws OXEvent_TimeError, OXEvent_WaitError, OXMutex_AcquireError, each with the system's
    /// text.
    bool waitFor(unsigned int milliseconds);

    /// Sets `timeout` to the time of day `milliseconds` from now, in whole milliseconds.
    /// @throws OXEvent_TimeError with the system's text.
    void buildTimeout(struct timespec* timeout, unsigned int milliseconds) const;

    /// Creates the system's condition variable and sets the state and the type, for an object that
    /// was made by the default constructor or has been through `destroyEvent`.
    /// @throws OXEvent_CreateError with the system's text; nothing is changed then.
    void createEvent(OEEventState initialState, OEEventType eventType);
    /// Destroys the system's condition variable, if one was created.
    /// @throws OXMutex_AcquireError with the system's text.
    void destroyEvent();
    void destroy() { destroyEvent(); }

private:
    void destroyQuietly() noexcept;

    int created;
    OCMutex mutex;
    OEEventState state;
    OEEventType type;
    pthread_cond_t condition;
};

/// The family of the event's failures.
class ORVABASE_EXPORT OXEvent : public OXAutoException {
public:
    ~OXEvent() noexcept override;

protected:
    OXEvent();
};

/// "Error creating synchronization event", with the system's text for `code`.
class ORVABASE_EXPORT OXEvent_CreateError : public OXEvent {
public:
    explicit OXEvent_CreateError(unsigned int code);
    ~OXEvent_CreateError() noexcept override;
};

/// "Error signaling synchronization event", with the system's text for `code`.
class ORVABASE_EXPORT OXEvent_SignalError : public OXEvent {
public:
    explicit OXEvent_SignalError(unsigned int code);
    ~OXEvent_SignalError() noexcept override;
};

/// "Error acquiring current system time", with the system's text for `code`.
class ORVABASE_EXPORT OXEvent_TimeError : public OXEvent {
public:
    explicit OXEvent_TimeError(unsigned int code);
    ~OXEvent_TimeError() noexcept override;
};

/// "Error waiting for synchronization event", with the system's text for `code`.
class ORVABASE_EXPORT OXEvent_WaitError : public OXEvent {
public:
    explicit OXEvent_WaitError(unsigned int code);
    ~OXEvent_WaitError() noexcept override;
};

#endif
