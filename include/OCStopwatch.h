#ifndef ORVABASE_OCSTOPWATCH_H
#define ORVABASE_OCSTOPWATCH_H

#include "OXException.h"

/// Measures elapsed time in seconds.
///
/// Note: it reads the wall clock, so setting the system's time shows up in what it measures.
///
///     OCStopwatch stopwatch;
///     work();
///     double seconds = stopwatch.getTime();
class ORVABASE_EXPORT OCStopwatch : public OCObject {
public:
    /// Starts measuring.
    /// @throws OXStopwatch_QueryValueError
    OCStopwatch();
    OCStopwatch(const OCStopwatch& other) noexcept = default;
    OCStopwatch& operator=(const OCStopwatch& other) noexcept = default;
    ~OCStopwatch() noexcept override;

    /// The seconds since the construction or the last `resetTime`.
    /// @throws OXStopwatch_QueryValueError
    double getTime() const;
    /// Starts measuring anew.
    /// @throws OXStopwatch_QueryValueError; the measurement then goes on.
    void resetTime();

    /// The clock's units per second: 1.
    double queryFrequency() const noexcept;
    /// The clock's value: the seconds since the beginning of 1970, with microseconds.
    /// @throws OXStopwatch_QueryValueError
    double queryValue() const;

private:
    double frequency;
    double start;
};

/// The family of the stopwatch's failures.
class ORVABASE_EXPORT OXStopwatch : public OXAutoException {
public:
    ~OXStopwatch() noexcept override;

protected:
    OXStopwatch();
};

/// "Can not query stopwatch value".
class ORVABASE_EXPORT OXStopwatch_QueryValueError : public OXStopwatch {
public:
    OXStopwatch_QueryValueError();
    ~OXStopwatch_QueryValueError() noexcept override;
};

#endif
