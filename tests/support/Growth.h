#ifndef ORVABASE_TESTS_GROWTH_H
#define ORVABASE_TESTS_GROWTH_H

#include <algorithm>
#include <ctime>

namespace growth {

/// The processor time of `operation(n)`, the best of three runs, in seconds.
template<class Operation>
double timeOf(Operation operation, unsigned long n) {
    double best = 0;
    for (int run = 0; run < 3; ++run) {
        const std::clock_t start = std::clock();
        operation(n);
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        best = run == 0 ? seconds : std::min(best, seconds);
    }
    return best;
}

/// The same for `operation(subject)`, where `prepare(n)` makes the subject in time that does not
/// count.
template<class Prepare, class Operation>
double timeOf(Prepare prepare, Operation operation, unsigned long n) {
    double best = 0;
    for (int run = 0; run < 3; ++run) {
        const auto subject = prepare(n);
        const std::clock_t start = std::clock();
        operation(*subject);
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        best = run == 0 ? seconds : std::min(best, seconds);
    }
    return best;
}

/// How many times as long `operation` takes for eight times as much: about 8 where the time is
/// linear (a little more for n log n, and where caches end), about 64 where it is quadratic.
///
///     EXPECT_LT(growth::ofEightTimes([](unsigned long n) { … }, 50000), 30);
template<class Operation>
double ofEightTimes(Operation operation, unsigned long n) {
    // Below a millisecond the clock is too coarse.
    return timeOf(operation, 8 * n) / std::max(timeOf(operation, n), 0.001);
}

template<class Prepare, class Operation>
double ofEightTimes(Prepare prepare, Operation operation, unsigned long n) {
    return timeOf(prepare, operation, 8 * n) / std::max(timeOf(prepare, operation, n), 0.001);
}

} // namespace growth

#endif
