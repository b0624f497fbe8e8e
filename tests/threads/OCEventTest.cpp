#include "OCEvent.h"

#include "support/ClockCalls.h"
#include "support/FaultInjection.h"
#include "support/Gate.h"
#include "support/Slots.h"
#include "support/ThreadCalls.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using Log = std::vector<std::string>;

/// Raised each time that some thread goes to sleep on an event. The thread holds the event's mutex
/// then until it sleeps, so whoever uses the event after `await` finds it asleep.
class Sleepers {
public:
    Sleepers()
        : waiting(
              calls::pthread_cond_wait,
              [this](pthread_cond_t* condition, pthread_mutex_t* mutex) {
                  asleep.raise();
                  return calls::pthread_cond_wait.original(condition, mutex);
              },
              Threads::Every) {}
    Gate asleep;

private:
    Replacement<int(pthread_cond_t*, pthread_mutex_t*)> waiting;
};

int field(const OCEvent& event, unsigned long offset) {
    int value;
    std::memcpy(&value, reinterpret_cast<const char*>(&event) + offset, sizeof value);
    return value;
}

int created(const OCEvent& event) {
    return field(event, 8);
}
int state(const OCEvent& event) {
    return field(event, 72);
}
int type(const OCEvent& event) {
    return field(event, 76);
}

} // namespace

TEST(OCEvent, HoldsFlagMutexStateTypeAndConditionInThatOrder) {
    EXPECT_EQ(sizeof(OCEvent), 128U);
    EXPECT_EQ(sizeof(OEEventState), 4U);
    EXPECT_EQ(sizeof(OEEventType), 4U);
    EXPECT_EQ(slots::slotCount<OCEvent>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCEvent>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCEvent>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCEvent>);
    OCEvent event(EventStateSignalled, EventTypeManualReset);
    EXPECT_EQ(created(event), 1);
    EXPECT_EQ(state(event), 1);
    EXPECT_EQ(type(event), 1);
}

TEST(OCEvent, StatesAndTypesHaveTheirValues) {
    EXPECT_EQ(EventStateNotSignalled, 0);
    EXPECT_EQ(EventStateSignalled, 1);
    EXPECT_EQ(EventTypeAutoReset, 0);
    EXPECT_EQ(EventTypeManualReset, 1);
}

TEST(OCEvent, TheDefaultEventIsNotSignalledAndResetsItselfWithoutACreatedCondition) {
    unsigned long made;
    unsigned long destroyed;
    {
        Counting making(calls::pthread_cond_init);
        Counting destroying(calls::pthread_cond_destroy);
        {
            OCEvent event;
            EXPECT_EQ(created(event), 0);
            EXPECT_EQ(state(event), 0);
            EXPECT_EQ(type(event), 0);
            static const char zeros[sizeof(pthread_cond_t)] = {};
            EXPECT_EQ(std::memcmp(reinterpret_cast<char*>(&event) + 80, zeros, sizeof zeros), 0);
            EXPECT_FALSE(event.waitFor(0));
            event.signalEvent();
            EXPECT_TRUE(event.waitFor(0));
            EXPECT_FALSE(event.waitFor(0));
        }
        made = making.calls();
        destroyed = destroying.calls();
    }
    EXPECT_EQ(made, 0U);
    EXPECT_EQ(destroyed, 0U);
}

TEST(OCEvent, TheDefaultEventWakesAnotherThread) {
    Sleepers sleepers;
    OCEvent event;
    std::thread waiter([&] { event.waitFor(); });
    sleepers.asleep.await();
    event.signalEvent();
    waiter.join();
    EXPECT_EQ(state(event), 0);
}

TEST(OCEvent, AnAutoResetEventLetsOneWaiterThroughForEachSignal) {
    Sleepers sleepers;
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    Gate passed;
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back([&] {
            event.waitFor();
            passed.raise();
        });
    sleepers.asleep.await(3);
    for (unsigned int left = 3; left-- > 0;) {
        event.signalEvent();
        passed.await();
        // All wake; those that find the signal consumed go back to sleep.
        sleepers.asleep.await(left);
        EXPECT_FALSE(passed.isRaised());
    }
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_FALSE(event.waitFor(0));
}

TEST(OCEvent, AManualResetEventLetsAllWaitersThroughAndStaysSignalled) {
    Sleepers sleepers;
    OCEvent event(EventStateNotSignalled, EventTypeManualReset);
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back([&] { event.waitFor(); });
    sleepers.asleep.await(3);
    event.signalEvent();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(state(event), 1);
    event.waitFor();
    EXPECT_TRUE(event.waitFor(0));
    EXPECT_TRUE(event.waitFor(0));
    event.resetEvent();
    EXPECT_FALSE(event.waitFor(0));
}

TEST(OCEvent, AnyTypeButZeroIsManualReset) {
    for (const int value : {2, -1}) {
        OCEvent event(EventStateSignalled, static_cast<OEEventType>(value));
        event.waitFor();
        EXPECT_TRUE(event.waitFor(0));
        EXPECT_EQ(state(event), 1);
        EXPECT_EQ(type(event), value);
    }
}

TEST(OCEvent, ASignalWithoutAWaiterIsKept) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    event.signalEvent();
    event.signalEvent();
    event.waitFor();
    EXPECT_FALSE(event.waitFor(0));
}

TEST(OCEvent, ATimeOutOfZeroOnlyLooks) {
    OCEvent automatic(EventStateSignalled, EventTypeAutoReset);
    EXPECT_TRUE(automatic.waitFor(0));
    EXPECT_FALSE(automatic.waitFor(0));
    OCEvent manual(EventStateSignalled, EventTypeManualReset);
    EXPECT_TRUE(manual.waitFor(0));
    EXPECT_TRUE(manual.waitFor(0));
}

TEST(OCEvent, ResettingTakesTheSignalBack) {
    OCEvent event(EventStateSignalled, EventTypeAutoReset);
    event.resetEvent();
    EXPECT_FALSE(event.waitFor(0));
    event.resetEvent();
    EXPECT_EQ(state(event), 0);
}

TEST(OCEvent, AnUntimedWaitTakesAnyStateButZeroAsSignalled) {
    for (const int value : {2, -1}) {
        OCEvent automatic(static_cast<OEEventState>(value), EventTypeAutoReset);
        automatic.waitFor();
        EXPECT_EQ(state(automatic), 0);
        OCEvent manual(static_cast<OEEventState>(value), EventTypeManualReset);
        manual.waitFor();
        EXPECT_EQ(state(manual), value);
    }
}

TEST(OCEvent, ATimedWaitTakesOnlyStateOneAsSignalled) {
    for (const int value : {2, -1}) {
        OCEvent event(static_cast<OEEventState>(value), EventTypeAutoReset);
        EXPECT_FALSE(event.waitFor(0));
        EXPECT_EQ(state(event), value);
    }
}

TEST(OCEvent, AnUntimedWaitGoesOnAfterAnInterruptionOrAWakeUpWithoutASignal) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    int number = 0;
    {
        Replacement waiting(calls::pthread_cond_wait, [&](pthread_cond_t*, pthread_mutex_t*) {
            ++number;
            if (number == 1)
                return EINTR;
            if (number == 3)
                event.signalEvent();
            return 0;
        });
        event.waitFor();
    }
    EXPECT_EQ(number, 3);
    EXPECT_EQ(state(event), 0);
}

TEST(OCEvent, AnUntimedWaitReportsEveryOtherFailure) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    for (const int code : {EINVAL, ETIMEDOUT}) {
        std::string failure;
        unsigned long waits;
        {
            FailingThreadCall failing(calls::pthread_cond_wait, code);
            failure = thrown<OXEvent_WaitError>([&] { event.waitFor(); });
            waits = failing.calls();
        }
        EXPECT_EQ(failure,
                  std::string("OXEvent_WaitError: Error waiting for synchronization event (") +
                      (code == EINVAL ? "Invalid argument" : "Connection timed out") + ")");
        EXPECT_EQ(waits, 1U);
    }
    // The event's mutex has been released.
    std::thread([&] { event.signalEvent(); }).join();
    EXPECT_TRUE(event.waitFor(0));
}

TEST(OCEvent, ATimedWaitIsTrueWhenAnotherThreadSignals) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    Gate asleep;
    bool result = false;
    {
        Replacement waiting(
            calls::pthread_cond_timedwait,
            [&](pthread_cond_t* condition, pthread_mutex_t* mutex, const struct timespec* until) {
                asleep.raise();
                return calls::pthread_cond_timedwait.original(condition, mutex, until);
            },
            Threads::Every);
        std::thread waiter([&] { result = event.waitFor(600000); });
        asleep.await();
        event.signalEvent();
        waiter.join();
    }
    EXPECT_TRUE(result);
    EXPECT_EQ(state(event), 0);
}

TEST(OCEvent, ATimedWaitEndsWhenItsTimeIsOver) {
    OCEvent event(EventStateNotSignalled, EventTypeManualReset);
    struct timeval before;
    struct timeval after;
    ::gettimeofday(&before, nullptr);
    EXPECT_FALSE(event.waitFor(20));
    ::gettimeofday(&after, nullptr);
    const long took = (after.tv_sec - before.tv_sec) * 1000000 + (after.tv_usec - before.tv_usec);
    EXPECT_GE(took, 19000); // the deadline is in whole milliseconds
}

TEST(OCEvent, ATimedWaitKeepsItsDeadlineWhenItGoesOn) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    TestClock clock(1000, 250999);
    Log deadlines;
    bool result;
    {
        Replacement waiting(calls::pthread_cond_timedwait,
                            [&](pthread_cond_t*, pthread_mutex_t*, const struct timespec* until) {
                                deadlines.push_back(std::to_string(until->tv_sec) + " " +
                                                    std::to_string(until->tv_nsec));
                                clock.advanceMilliseconds(100);
                                if (deadlines.size() == 1)
                                    return EINTR;
                                if (deadlines.size() == 3)
                                    event.signalEvent();
                                return 0;
                            });
        result = event.waitFor(1500);
    }
    EXPECT_TRUE(result);
    EXPECT_EQ(deadlines, Log(3, "1001 750000000"));
    EXPECT_EQ(state(event), 0);
}

TEST(OCEvent, ATimedWaitThatTimesOutDoesNotLookAgain) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    bool result;
    {
        Replacement waiting(calls::pthread_cond_timedwait,
                            [&](pthread_cond_t*, pthread_mutex_t*, const struct timespec*) {
                                event.signalEvent();
                                return ETIMEDOUT;
                            });
        result = event.waitFor(1000);
    }
    EXPECT_FALSE(result);
    EXPECT_TRUE(event.waitFor(0));
}

TEST(OCEvent, ATimedWaitReportsEveryOtherFailure) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    std::string failure;
    {
        FailingThreadCall failing(calls::pthread_cond_timedwait, EPERM);
        failure = thrown<OXEvent_WaitError>([&] { event.waitFor(5); });
    }
    EXPECT_EQ(failure, "OXEvent_WaitError: Error waiting for synchronization event (Operation not "
                       "permitted)");
    std::thread([&] { event.signalEvent(); }).join();
    EXPECT_TRUE(event.waitFor(0));
}

TEST(OCEvent, AFailingClockThrowsAndLeavesTheSignal) {
    OCEvent event(EventStateSignalled, EventTypeAutoReset);
    const char* expected = "OXEvent_TimeError: Error acquiring current system time (Bad address)";
    {
        Failing failing(calls::gettimeofday, EFAULT);
        EXPECT_EQ(thrown<OXEvent_TimeError>([&] { event.waitFor(5); }), expected);
        EXPECT_EQ(thrown<OXEvent_TimeError>([&] { event.waitFor(0); }), expected);
        struct timespec timeout;
        EXPECT_EQ(thrown<OXEvent_TimeError>([&] { event.buildTimeout(&timeout, 5); }), expected);
        EXPECT_EQ(failing.calls(), 3U);
        event.waitFor(); // which needs no clock
        event.signalEvent();
    }
    EXPECT_TRUE(event.waitFor(0));
}

TEST(OCEvent, TheErrorNumberOfTheClockIsTakenBeforeTheExceptionIsMade) {
    OCEvent event(EventStateSignalled, EventTypeAutoReset);
    std::string text;
    {
        Failing failing(calls::gettimeofday, EFAULT);
        fault::HeapFault heap(1); // the exception object then comes from a reserve
        try {
            event.waitFor(5);
        } catch (const OXEvent_TimeError& failure) {
            heap.disarm();
            text = failure.getMessage().getString();
        }
        EXPECT_TRUE(heap.triggered());
    }
    EXPECT_EQ(text, "Error acquiring current system time (Bad address)");
}

TEST(OCEvent, TheTimeOutIsTheTimeOfDayInWholeMilliseconds) {
    const OCEvent event;
    struct timespec timeout;
    {
        TestClock clock(1000, 999999);
        event.buildTimeout(&timeout, 0);
        EXPECT_EQ(timeout.tv_sec, 1000);
        EXPECT_EQ(timeout.tv_nsec, 999000000);
        event.buildTimeout(&timeout, 1);
        EXPECT_EQ(timeout.tv_sec, 1001);
        EXPECT_EQ(timeout.tv_nsec, 0);
        event.buildTimeout(&timeout, 1002);
        EXPECT_EQ(timeout.tv_sec, 1002);
        EXPECT_EQ(timeout.tv_nsec, 1000000);
    }
    TestClock clock(1700000000, 123456);
    event.buildTimeout(&timeout, 4294967295U);
    EXPECT_EQ(timeout.tv_sec, 1704294967);
    EXPECT_EQ(timeout.tv_nsec, 418000000);
}

TEST(OCEvent, EachStepOfCreationReportsItsFailureAndNothingIsLeft) {
    std::string attributes;
    std::string condition;
    std::string mutex;
    unsigned long conditions;
    unsigned long mutexes;
    {
        Counting destroyingConditions(calls::pthread_cond_destroy);
        Counting destroyingMutexes(calls::pthread_mutex_destroy);
        {
            FailingThreadCall failing(calls::pthread_condattr_init, ENOMEM);
            attributes = thrown<OXEvent_CreateError>(
                [] { OCEvent event(EventStateSignalled, EventTypeAutoReset); });
        }
        {
            FailingThreadCall failing(calls::pthread_cond_init, EAGAIN);
            condition = thrown<OXEvent_CreateError>(
                [] { OCEvent event(EventStateSignalled, EventTypeAutoReset); });
        }
        mutexes = destroyingMutexes.calls();
        {
            FailingThreadCall failing(calls::pthread_mutex_init, EPERM);
            mutex = thrown<OXMutex_CreateError>(
                [] { OCEvent event(EventStateSignalled, EventTypeAutoReset); });
        }
        conditions = destroyingConditions.calls();
    }
    EXPECT_EQ(attributes, "OXEvent_CreateError: Error creating synchronization event (Cannot "
                          "allocate memory)");
    EXPECT_EQ(condition, "OXEvent_CreateError: Error creating synchronization event (Resource "
                         "temporarily unavailable)");
    EXPECT_EQ(mutex, "OXMutex_CreateError: Error creating synchronization mutex (Operation not "
                     "permitted)");
    EXPECT_EQ(conditions, 0U);
    EXPECT_EQ(mutexes, 2U);
}

TEST(OCEvent, AFailureOfCreationIsReportedAlsoWhenTheMutexFailsToo) {
    std::string failure;
    {
        FailingThreadCall creating(calls::pthread_cond_init, EAGAIN);
        FailingThreadCall locking(calls::pthread_mutex_lock, EINVAL);
        failure = thrown<OXEvent_CreateError>(
            [] { OCEvent event(EventStateSignalled, EventTypeAutoReset); });
    }
    EXPECT_EQ(failure, "OXEvent_CreateError: Error creating synchronization event (Resource "
                       "temporarily unavailable)");
}

TEST(OCEvent, ACreationByHandThatFailsChangesNothing) {
    OCEvent event;
    event.signalEvent();
    std::string failure;
    {
        FailingThreadCall creating(calls::pthread_cond_init, EAGAIN);
        failure = thrown<OXEvent_CreateError>(
            [&] { event.createEvent(EventStateNotSignalled, EventTypeManualReset); });
    }
    EXPECT_EQ(failure, "OXEvent_CreateError: Error creating synchronization event (Resource "
                       "temporarily unavailable)");
    EXPECT_EQ(created(event), 0);
    EXPECT_EQ(state(event), 1);
    EXPECT_EQ(type(event), 0);
    event.createEvent(EventStateNotSignalled, EventTypeManualReset);
    EXPECT_EQ(created(event), 1);
    EXPECT_EQ(state(event), 0);
    EXPECT_EQ(type(event), 1);
}

TEST(OCEvent, AFailingBroadcastIsReportedAndTheStateIsSet) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    std::string failure;
    {
        FailingThreadCall failing(calls::pthread_cond_broadcast, EINVAL);
        failure = thrown<OXEvent_SignalError>([&] { event.signalEvent(); });
    }
    EXPECT_EQ(failure,
              "OXEvent_SignalError: Error signaling synchronization event (Invalid argument)");
    std::thread([&] { EXPECT_TRUE(event.waitFor(0)); }).join();
}

TEST(OCEvent, EveryOperationReportsAMutexThatCannotBeAcquired) {
    OCEvent event(EventStateSignalled, EventTypeAutoReset);
    const auto failureOf = [&](auto operation) {
        FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL);
        return thrown<OXMutex_AcquireError>(operation);
    };
    const char* expected =
        "OXMutex_AcquireError: Error waiting for synchronization mutex (Invalid argument)";
    EXPECT_EQ(failureOf([&] { event.signalEvent(); }), expected);
    EXPECT_EQ(failureOf([&] { event.resetEvent(); }), expected);
    EXPECT_EQ(failureOf([&] { event.waitFor(); }), expected);
    EXPECT_EQ(failureOf([&] { event.waitFor(5); }), expected);
    EXPECT_EQ(failureOf([&] { event.destroyEvent(); }), expected);
    EXPECT_EQ(failureOf([&] { event.destroy(); }), expected);
    EXPECT_TRUE(event.waitFor(0));
}

TEST(OCEvent, EveryOperationRunsUnderTheEventsMutex) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    Log log;
    {
        Replacement locking(calls::pthread_mutex_lock, [&](pthread_mutex_t* mutex) {
            log.push_back("lock");
            return calls::pthread_mutex_lock.original(mutex);
        });
        Replacement unlocking(calls::pthread_mutex_unlock, [&](pthread_mutex_t* mutex) {
            log.push_back("unlock");
            return calls::pthread_mutex_unlock.original(mutex);
        });
        Replacement broadcasting(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            log.push_back("broadcast");
            return calls::pthread_cond_broadcast.original(condition);
        });
        Replacement destroying(calls::pthread_cond_destroy, [&](pthread_cond_t* condition) {
            log.push_back("destroy");
            return calls::pthread_cond_destroy.original(condition);
        });
        event.signalEvent();
        event.resetEvent();
        event.signalEvent();
        event.waitFor();
        event.destroyEvent();
        event.destroyEvent();
    }
    EXPECT_EQ(log,
              Log({"lock", "broadcast", "unlock", "lock", "unlock", "lock", "broadcast", "unlock",
                   "lock", "unlock", "lock", "destroy", "unlock", "lock", "unlock"}));
}

TEST(OCEvent, TheConditionIsDestroyedOnce) {
    unsigned long byHand;
    unsigned long atTheEnd;
    {
        Counting destroying(calls::pthread_cond_destroy);
        {
            OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
            event.destroyEvent();
            event.destroy();
            byHand = destroying.calls();
        }
        { OCEvent event(EventStateNotSignalled, EventTypeAutoReset); }
        atTheEnd = destroying.calls();
    }
    EXPECT_EQ(byHand, 1U);
    EXPECT_EQ(atTheEnd, 2U);
}

TEST(OCEvent, CanBeCreatedAgain) {
    OCEvent event(EventStateSignalled, EventTypeManualReset);
    event.destroyEvent();
    EXPECT_EQ(created(event), 0);
    event.createEvent(EventStateSignalled, EventTypeAutoReset);
    EXPECT_TRUE(event.waitFor(0));
    EXPECT_FALSE(event.waitFor(0));
}

TEST(OCEvent, TheDestructorDropsAFailure) {
    unsigned long destroyed;
    {
        Counting destroying(calls::pthread_cond_destroy);
        {
            OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
            FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL);
            event.~OCEvent();
            new (&event) OCEvent(EventStateNotSignalled, EventTypeAutoReset);
            destroyed = destroying.calls();
        }
    }
    EXPECT_EQ(destroyed, 0U);
}

TEST(OCEvent, HandsWorkBackAndForthBetweenTwoThreads) {
    OCEvent ping(EventStateNotSignalled, EventTypeAutoReset);
    OCEvent pong(EventStateNotSignalled, EventTypeAutoReset);
    unsigned long value = 0; // guarded by nothing but the events
    std::thread other([&] {
        for (int i = 0; i < 2000; ++i) {
            ping.waitFor();
            ++value;
            pong.signalEvent();
        }
    });
    for (int i = 0; i < 2000; ++i) {
        ++value;
        ping.signalEvent();
        EXPECT_TRUE(pong.waitFor(600000));
    }
    other.join();
    EXPECT_EQ(value, 4000U);
}

TEST(OXEvent, LeavesStoreTheirClassMessageAndTheSystemsText) {
    EXPECT_EQ(thrown<OXEvent_CreateError>([] { throw OXEvent_CreateError(EPERM); }),
              "OXEvent_CreateError: Error creating synchronization event (Operation not "
              "permitted)");
    EXPECT_EQ(thrown<OXEvent_SignalError>([] { throw OXEvent_SignalError(EPERM); }),
              "OXEvent_SignalError: Error signaling synchronization event (Operation not "
              "permitted)");
    EXPECT_EQ(thrown<OXEvent_TimeError>([] { throw OXEvent_TimeError(EPERM); }),
              "OXEvent_TimeError: Error acquiring current system time (Operation not permitted)");
    EXPECT_EQ(thrown<OXEvent_WaitError>([] { throw OXEvent_WaitError(EPERM); }),
              "OXEvent_WaitError: Error waiting for synchronization event (Operation not "
              "permitted)");
    EXPECT_EQ(OXEvent_WaitError(EPERM).getDetails().getCount(), 1U);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXEvent>));
    EXPECT_TRUE((std::is_base_of_v<OXEvent, OXEvent_CreateError>));
    EXPECT_TRUE((std::is_base_of_v<OXEvent, OXEvent_SignalError>));
    EXPECT_TRUE((std::is_base_of_v<OXEvent, OXEvent_TimeError>));
    EXPECT_TRUE((std::is_base_of_v<OXEvent, OXEvent_WaitError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXEvent>);
    EXPECT_EQ(sizeof(OXEvent_WaitError), sizeof(OXAutoException));
}
