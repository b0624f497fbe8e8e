#include "OCStopwatch.h"

#include "support/ClockCalls.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

const char* const clockFailure = "OXStopwatch_QueryValueError: Can not query stopwatch value";

} // namespace

TEST(OCStopwatch, HoldsTwoNumbers) {
    EXPECT_EQ(sizeof(OCStopwatch), 24U);
    EXPECT_EQ(slots::slotCount<OCStopwatch>(), 2U);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStopwatch>);
}

TEST(OCStopwatch, TheClockIsInSecondsWithMicroseconds) {
    TestClock clock(1000, 250000);
    const OCStopwatch stopwatch;
    EXPECT_EQ(stopwatch.queryFrequency(), 1.0);
    EXPECT_EQ(stopwatch.queryValue(), 1000.25);
    clock.advanceMicroseconds(500000);
    EXPECT_EQ(stopwatch.queryValue(), 1000.75);
}

TEST(OCStopwatch, MeasuresFromItsConstructionOrReset) {
    TestClock clock(1000);
    OCStopwatch stopwatch;
    EXPECT_EQ(stopwatch.getTime(), 0.0);
    clock.advanceMilliseconds(1500);
    EXPECT_EQ(stopwatch.getTime(), 1.5);
    clock.advanceMilliseconds(500);
    EXPECT_EQ(stopwatch.getTime(), 2.0);
    stopwatch.resetTime();
    EXPECT_EQ(stopwatch.getTime(), 0.0);
    clock.advanceMilliseconds(250);
    EXPECT_EQ(stopwatch.getTime(), 0.25);
    const OCStopwatch copy(stopwatch);
    EXPECT_EQ(copy.getTime(), 0.25);
}

TEST(OCStopwatch, GoesBackWithTheWallClock) {
    TestClock clock(1000);
    const OCStopwatch stopwatch;
    clock.advanceMilliseconds(-2000);
    EXPECT_EQ(stopwatch.getTime(), -2.0);
}

TEST(OCStopwatch, AFailingClockThrowsAndTheMeasurementGoesOn) {
    TestClock* clock = new TestClock(1000);
    OCStopwatch stopwatch;
    delete clock;
    {
        Failing failing(calls::gettimeofday, EFAULT);
        EXPECT_EQ(thrown<OXStopwatch_QueryValueError>([] { OCStopwatch failed; }), clockFailure);
        EXPECT_EQ(thrown<OXStopwatch_QueryValueError>([&] { stopwatch.getTime(); }), clockFailure);
        EXPECT_EQ(thrown<OXStopwatch_QueryValueError>([&] { stopwatch.resetTime(); }),
                  clockFailure);
        EXPECT_EQ(thrown<OXStopwatch_QueryValueError>([&] { stopwatch.queryValue(); }),
                  clockFailure);
        EXPECT_EQ(failing.calls(), 4U);
    }
    TestClock later(1003);
    EXPECT_EQ(stopwatch.getTime(), 3.0);
}

TEST(OCStopwatch, RunsOnTheSystemsClock) {
    const OCStopwatch stopwatch;
    const double first = stopwatch.getTime();
    const double second = stopwatch.getTime();
    EXPECT_GE(first, 0.0);
    EXPECT_GE(second, first);
    EXPECT_LT(second, 600.0);
}

TEST(OXStopwatch, TheLeafStoresItsClassAndMessageWithoutDetails) {
    EXPECT_EQ(thrown<OXStopwatch_QueryValueError>([] { throw OXStopwatch_QueryValueError(); }),
              clockFailure);
    EXPECT_EQ(OXStopwatch_QueryValueError().getDetails().getCount(), 0U);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXStopwatch>));
    EXPECT_TRUE((std::is_base_of_v<OXStopwatch, OXStopwatch_QueryValueError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXStopwatch>);
    EXPECT_EQ(sizeof(OXStopwatch_QueryValueError), sizeof(OXAutoException));
}
