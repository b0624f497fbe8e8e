#ifndef ORVABASE_OCCOUNTDOWN_H
#define ORVABASE_OCCOUNTDOWN_H

#include "OXException.h"

/// A deadline in milliseconds of the wall clock, for loops that poll with a time-out.
///
/// Note: when the system's time is set, the deadline comes nearer or goes farther.
///
///     OCCountdown countdown(5000);
///     while (!ready() && !countdown.timeout())
///         OCCountdown::delay(100);
class ORVABASE_EXPORT OCCountdown : public OCObject {
public:
    /// A deadline `milliseconds` from now.
    /// @throws OXCountdown_AcquireTimeError
    explicit OCCountdown(unsigned int milliseconds);
    OCCountdown(const OCCountdown& other) noexcept = default;
    OCCountdown& operator=(const OCCountdown& other) noexcept { return assign(other); }
    ~OCCountdown() noexcept override;

    /// Takes `other`'s deadline.
    OCCountdown& assign(const OCCountdown& other) noexcept {
        deadline = other.deadline;
        return *this;
    }

    /// Sets the deadline to `milliseconds` from now.
    /// @throws OXCountdown_AcquireTimeError; the deadline is then as it was.
    void restart(unsigned int milliseconds);
    /// The time of day in milliseconds since the beginning of 1970.
    /// @throws OXCountdown_AcquireTimeError
    unsigned long currentTime() const;
    /// Whether the deadline has been reached: at once for 0 milliseconds.
    /// @throws OXCountdown_AcquireTimeError
    bool timeout() const;
    /// The milliseconds left, 0 when the deadline has been reached.
    ///
    /// Note: only the low 32 bits are returned.
    /// @throws OXCountdown_AcquireTimeError
    unsigned int remaining() const;

    /// Suspends the calling thread for `milliseconds`, or until a signal interrupts it.
    ///
    /// Note: the time is handed on in microseconds, computed in 32 bits: from 4294968 milliseconds
    /// on it wraps around.
    static void delay(unsigned int milliseconds);

private:
    unsigned long deadline;
};

/// The family of the countdown's failures.
class ORVABASE_EXPORT OXCountdown : public OXAutoException {
public:
    ~OXCountdown() noexcept override;

protected:
    OXCountdown();
};

/// "Error acquiring the current time".
class ORVABASE_EXPORT OXCountdown_AcquireTimeError : public OXCountdown {
public:
    OXCountdown_AcquireTimeError();
    ~OXCountdown_AcquireTimeError() noexcept override;
};

#endif
