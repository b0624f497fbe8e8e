#include "OCCountdown.h"

#include "support/ClockCalls.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

const char* const clockFailure = "OXCountdown_AcquireTimeError: Error acquiring the current time";

} // namespace

TEST(OCCountdown, HoldsADeadline) {
    EXPECT_EQ(sizeof(OCCountdown), 16U);
    EXPECT_EQ(slots::slotCount<OCCountdown>(), 2U);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCCountdown>);
}

TEST(OCCountdown, TheTimeIsInMillisecondsSinceTheEpoch) {
    TestClock clock(1700000000, 123999);
    OCCountdown countdown(0);
    EXPECT_EQ(countdown.currentTime(), 1700000000123UL);
    clock.advanceMicroseconds(1);
    EXPECT_EQ(countdown.currentTime(), 1700000000124UL);
}

TEST(OCCountdown, ZeroMillisecondsHaveExpiredAtOnce) {
    TestClock clock(1000);
    OCCountdown countdown(0);
    EXPECT_TRUE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 0U);
}

TEST(OCCountdown, ExpiresWhenItsTimeIsReached) {
    TestClock clock(1000, 999);
    OCCountdown countdown(1000);
    EXPECT_FALSE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 1000U);
    clock.advanceMilliseconds(1);
    EXPECT_EQ(countdown.remaining(), 999U);
    clock.advanceMilliseconds(998);
    EXPECT_FALSE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 1U);
    clock.advanceMilliseconds(1);
    EXPECT_TRUE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 0U);
    clock.advanceMilliseconds(100000);
    EXPECT_TRUE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 0U);
}

TEST(OCCountdown, RestartSetsANewDeadline) {
    TestClock clock(1000);
    OCCountdown countdown(0);
    countdown.restart(50);
    EXPECT_FALSE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 50U);
    clock.advanceMilliseconds(10);
    countdown.restart(20);
    EXPECT_EQ(countdown.remaining(), 20U);
}

TEST(OCCountdown, TheLongestTimeFits) {
    TestClock clock(1000);
    OCCountdown countdown(4294967295U);
    EXPECT_EQ(countdown.remaining(), 4294967295U);
    clock.advanceMilliseconds(4294967294);
    EXPECT_FALSE(countdown.timeout());
    clock.advanceMilliseconds(1);
    EXPECT_TRUE(countdown.timeout());
}

TEST(OCCountdown, WhatRemainsIsTruncatedTo32Bits) {
    TestClock clock(10000000);
    OCCountdown countdown(1000);
    clock.advanceMilliseconds(-4294967296L - 5);
    EXPECT_FALSE(countdown.timeout());
    EXPECT_EQ(countdown.remaining(), 1005U);
}

TEST(OCCountdown, CopiesTakeTheDeadline) {
    TestClock clock(1000);
    const OCCountdown original(700);
    clock.advanceMilliseconds(100);
    const OCCountdown copy(original);
    EXPECT_EQ(copy.remaining(), 600U);
    OCCountdown assigned(1);
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(assigned.remaining(), 600U);
    OCCountdown again(2);
    EXPECT_EQ(&again.assign(original), &again);
    EXPECT_EQ(again.remaining(), 600U);
    again.assign(again);
    EXPECT_EQ(again.remaining(), 600U);
}

TEST(OCCountdown, AFailingClockThrows) {
    TestClock* clock = new TestClock(1000);
    OCCountdown countdown(5000);
    delete clock;
    {
        Failing failing(calls::gettimeofday, EFAULT);
        EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([] { OCCountdown failed(5); }),
                  clockFailure);
        EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([&] { countdown.restart(5); }),
                  clockFailure);
        EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([&] { countdown.currentTime(); }),
                  clockFailure);
        EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([&] { countdown.timeout(); }), clockFailure);
        EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([&] { countdown.remaining(); }),
                  clockFailure);
        EXPECT_EQ(failing.calls(), 5U);
    }
    TestClock later(1001);
    EXPECT_EQ(countdown.remaining(), 4000U);
}

TEST(OCCountdown, DelaysInMicrosecondsOf32Bits) {
    TestClock clock(1000);
    OCCountdown::delay(100);
    EXPECT_EQ(clock.slept, 100000U);
    OCCountdown::delay(0);
    EXPECT_EQ(clock.slept, 0U);
    OCCountdown::delay(4294967);
    EXPECT_EQ(clock.slept, 4294967000U);
    OCCountdown::delay(4294968);
    EXPECT_EQ(clock.slept, 704U);
    EXPECT_EQ(clock.sleeps, 4U);
}

TEST(OCCountdown, AnInterruptedDelayIsNotAFailure) {
    Failing failing(calls::usleep, EINTR);
    OCCountdown::delay(100);
    EXPECT_EQ(failing.calls(), 1U);
}

TEST(OCCountdown, RunsOnTheSystemsClock) {
    const OCCountdown countdown(60000);
    struct timeval now;
    ASSERT_EQ(::gettimeofday(&now, nullptr), 0);
    const unsigned long time = countdown.currentTime();
    EXPECT_NEAR(static_cast<double>(time),
                static_cast<double>(now.tv_sec) * 1000 + static_cast<double>(now.tv_usec) / 1000,
                10000);
    EXPECT_FALSE(countdown.timeout());
    EXPECT_LE(countdown.remaining(), 60000U);
    EXPECT_GT(countdown.remaining(), 0U);
}

TEST(OXCountdown, TheLeafStoresItsClassAndMessageWithoutDetails) {
    EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([] { throw OXCountdown_AcquireTimeError(); }),
              clockFailure);
    EXPECT_EQ(OXCountdown_AcquireTimeError().getDetails().getCount(), 0U);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXCountdown>));
    EXPECT_TRUE((std::is_base_of_v<OXCountdown, OXCountdown_AcquireTimeError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXCountdown>);
    EXPECT_EQ(sizeof(OXCountdown_AcquireTimeError), sizeof(OXAutoException));
}
