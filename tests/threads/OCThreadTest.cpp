#include "OCThread.h"

#include "support/ClockCalls.h"
#include "support/Gate.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/ThreadCalls.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

/// A thread that runs a function.
class FunctionThread : public OCThread {
public:
    explicit FunctionThread(std::function<unsigned int(FunctionThread&)> code)
        : function(std::move(code)) {}
    ~FunctionThread() override {
        try {
            destroy();
        } catch (const OXException&) {
        }
    }
    unsigned int execute() override {
        ++executions;
        return function(*this);
    }
    std::atomic<int> executions{0};

private:
    std::function<unsigned int(FunctionThread&)> function;
};

/// Watches the joining of threads.
class Joins {
public:
    Joins()
        : joining(calls::pthread_join, [this](pthread_t thread, void** result) {
              ++count;
              joined = thread;
              void* value = nullptr;
              const int code = calls::pthread_join.original(thread, &value);
              exitValue = reinterpret_cast<std::uintptr_t>(value);
              if (result != nullptr)
                  *result = value;
              return code;
          }) {}
    int count = 0;
    pthread_t joined = 0;
    std::uintptr_t exitValue = 99;

private:
    Replacement<int(pthread_t, void**)> joining;
};

} // namespace

TEST(OCThread, HoldsTheIdentifierAndTwoEvents) {
    EXPECT_EQ(sizeof(OCThread), 272U);
    EXPECT_EQ(slots::slotOf(&OCThread::execute), 2U);
    EXPECT_EQ(slots::slotCount<OCThread>(), 3U);
    EXPECT_TRUE(std::is_abstract_v<OCThread>);
    EXPECT_FALSE(std::is_copy_constructible_v<FunctionThread>);
    EXPECT_FALSE(std::is_copy_assignable_v<FunctionThread>);
    const FunctionThread thread([](FunctionThread&) { return 0U; });
    pthread_t identifier;
    std::memcpy(&identifier, reinterpret_cast<const char*>(&thread) + 8, sizeof identifier);
    EXPECT_TRUE(pthread_equal(identifier, thread.getIdentifier()));
}

TEST(OCThread, ItsEventsAreManualResetOnesThatAreNotSignalled) {
    const FunctionThread thread([](FunctionThread&) { return 0U; });
    // The events follow the table pointer and the identifier; created, state and type lie at 8, 72
    // and 76 of each.
    for (const unsigned long event : {16UL, 144UL}) {
        const auto field = [&](unsigned long offset) {
            int value;
            std::memcpy(&value, reinterpret_cast<const char*>(&thread) + event + offset,
                        sizeof value);
            return value;
        };
        EXPECT_EQ(field(8), 1);
        EXPECT_EQ(field(72), 0);
        EXPECT_EQ(field(76), 1);
    }
}

TEST(OCThread, IsCreatedWithDefaultAttributesAndItselfAsTheArgument) {
    const pthread_attr_t* attributes = nullptr;
    void* argument = nullptr;
    int count = 0;
    Replacement creating(calls::pthread_create, [&](pthread_t* thread, const pthread_attr_t* wanted,
                                                    void* (*routine)(void*), void* object) {
        ++count;
        attributes = wanted;
        argument = object;
        return calls::pthread_create.original(thread, wanted, routine, object);
    });
    FunctionThread thread([](FunctionThread&) { return 0U; });
    EXPECT_EQ(count, 1);
    EXPECT_EQ(attributes, nullptr);
    EXPECT_EQ(argument, static_cast<OCThread*>(&thread));
    EXPECT_NE(thread.getIdentifier(), 0U);
}

TEST(OCThread, RunsWhenItIsResumedAndReturnsItsResult) {
    pthread_t inside = 0;
    FunctionThread thread([&](FunctionThread& self) {
        inside = OCThread::currentIdentifier();
        EXPECT_EQ(self.getIdentifier(), inside);
        return 4294967295U;
    });
    const pthread_t identifier = thread.getIdentifier();
    EXPECT_NE(identifier, OCThread::currentIdentifier());
    EXPECT_EQ(OCThread::currentIdentifier(), pthread_self());
    EXPECT_EQ(thread.executions, 0);
    thread.resumeThread();
    Joins joins;
    thread.waitFor();
    EXPECT_EQ(joins.count, 1);
    EXPECT_EQ(joins.joined, identifier);
    EXPECT_EQ(joins.exitValue, 4294967295U);
    EXPECT_EQ(thread.executions, 1);
    EXPECT_EQ(inside, identifier);
    EXPECT_EQ(thread.getIdentifier(), 0U);
}

TEST(OCThread, EndsWithoutExecutingWhenItWasNeverResumed) {
    Joins joins;
    std::atomic<int> executions{0};
    {
        FunctionThread thread([&](FunctionThread&) {
            ++executions;
            return 5U;
        });
    }
    EXPECT_EQ(joins.count, 1);
    EXPECT_EQ(joins.exitValue, 0U);
    EXPECT_EQ(executions, 0);
}

TEST(OCThread, EndsWithoutExecutingWhenItIsTerminatedBeforeItIsResumed) {
    Joins joins;
    FunctionThread thread([](FunctionThread&) { return 5U; });
    EXPECT_FALSE(thread.isTerminating(0));
    thread.terminateThread();
    EXPECT_TRUE(thread.isTerminating(0));
    thread.resumeThread();
    thread.waitFor();
    EXPECT_EQ(joins.exitValue, 0U);
    EXPECT_EQ(thread.executions, 0);
    EXPECT_TRUE(thread.isTerminating(0));
}

TEST(OCThread, IsAskedToTerminateBeforeItIsResumed) {
    FunctionThread thread([](FunctionThread&) { return 0U; });
    std::vector<long> signalled;
    {
        Replacement signalling(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            signalled.push_back(reinterpret_cast<char*>(condition) -
                                reinterpret_cast<char*>(&thread));
            return calls::pthread_cond_broadcast.original(condition);
        });
        thread.terminateThread();
    }
    thread.waitFor();
    // The condition is the last field of an event, at 80.
    EXPECT_EQ(signalled, std::vector<long>({144 + 80, 16 + 80}));
    EXPECT_EQ(thread.executions, 0);
}

TEST(OCThread, StaysResumedAndTerminatingOnceItIsAskedTo) {
    FunctionThread thread([](FunctionThread&) { return 5U; });
    thread.resumeThread();
    thread.waitFor();
    std::string failure;
    unsigned int result = 99;
    {
        // A wait would report this failure instead of waiting without end.
        FailingThreadCall failing(calls::pthread_cond_wait, EINVAL);
        failure = thrown<OXException>([&] { result = thread.entry(); });
    }
    EXPECT_EQ(failure, "nothing");
    EXPECT_EQ(result, 5U);
    EXPECT_EQ(thread.executions, 2);
    thread.terminateThread();
    EXPECT_EQ(thread.entry(), 0U);
    EXPECT_EQ(thread.entry(), 0U);
    EXPECT_EQ(thread.executions, 2);
}

TEST(OCThread, IsAskedNotForcedToTerminate) {
    Gate running;
    Gate mayEnd;
    Joins joins;
    FunctionThread thread([&](FunctionThread& self) {
        EXPECT_FALSE(self.isTerminating(0));
        running.raise();
        while (!self.isTerminating(600000)) {
        }
        EXPECT_TRUE(self.isTerminating(0));
        mayEnd.await();
        return 7U;
    });
    thread.resumeThread();
    running.await();
    thread.terminateThread();
    EXPECT_TRUE(thread.isTerminating(0));
    EXPECT_NE(thread.getIdentifier(), 0U);
    mayEnd.raise();
    thread.waitFor();
    EXPECT_EQ(joins.exitValue, 7U);
    EXPECT_EQ(thread.executions, 1);
}

TEST(OCThread, IsTerminatingIsConstAndWaitsForItsTime) {
    FunctionThread thread([](FunctionThread&) { return 0U; });
    const OCThread& constant = thread;
    std::vector<long> deadlines;
    bool result;
    {
        TestClock clock(1000, 250000);
        Replacement waiting(calls::pthread_cond_timedwait, [&](pthread_cond_t*, pthread_mutex_t*,
                                                               const struct timespec* until) {
            deadlines.push_back(until->tv_sec * 1000 + until->tv_nsec / 1000000);
            return ETIMEDOUT;
        });
        result = constant.isTerminating(600000);
    }
    EXPECT_FALSE(result);
    EXPECT_EQ(deadlines, std::vector<long>({1600250}));
}

TEST(OCThread, DestructionTerminatesAndJoinsARunningThread) {
    Gate running;
    std::atomic<bool> ended{false};
    Joins joins;
    {
        FunctionThread thread([&](FunctionThread& self) {
            running.raise();
            while (!self.isTerminating(600000)) {
            }
            ended = true;
            return 3U;
        });
        thread.resumeThread();
        running.await();
    }
    EXPECT_TRUE(ended);
    EXPECT_EQ(joins.count, 1);
    EXPECT_EQ(joins.exitValue, 3U);
}

TEST(OCThread, AnExceptionThatExecuteLetsOutEndsTheThreadWithOne) {
    const auto exitValueOf = [](std::function<unsigned int(FunctionThread&)> code) {
        Joins joins;
        FunctionThread thread(std::move(code));
        thread.resumeThread();
        thread.waitFor();
        EXPECT_EQ(thread.executions, 1);
        return joins.exitValue;
    };
    EXPECT_EQ(exitValueOf([](FunctionThread&) -> unsigned int { throw 7; }), 1U);
    EXPECT_EQ(exitValueOf([](FunctionThread&) -> unsigned int {
                  throw std::runtime_error("out of execute");
              }),
              1U);
    EXPECT_EQ(exitValueOf([](FunctionThread&) -> unsigned int { throw OXThread_WaitError(); }), 1U);
}

TEST(OCThread, MayExitByTheSystemsOwnMeans) {
    Joins joins;
    FunctionThread thread([](FunctionThread&) -> unsigned int {
#if defined(__SANITIZE_ADDRESS__)
        __lsan_disable(); // the C library loads its unwinder now and keeps what it allocates for it
#endif
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        pthread_exit(reinterpret_cast<void*>(std::uintptr_t(12)));
    });
    thread.resumeThread();
    thread.waitFor();
    EXPECT_EQ(joins.exitValue, 12U);
}

TEST(OCThread, AFailingWaitToBeResumedEndsTheThreadWithOne) {
    Joins joins;
    Gate failed;
    Replacement waiting(
        calls::pthread_cond_wait,
        [&](pthread_cond_t*, pthread_mutex_t*) {
            failed.raise();
            return EINVAL;
        },
        Threads::Every);
    FunctionThread thread([](FunctionThread&) { return 5U; });
    failed.await();
    thread.waitFor();
    EXPECT_EQ(joins.exitValue, 1U);
    EXPECT_EQ(thread.executions, 0);
}

TEST(OCThread, CanBeWaitedForOnce) {
    FunctionThread thread([](FunctionThread&) { return 0U; });
    thread.resumeThread();
    thread.waitFor();
    Joins joins;
    EXPECT_EQ(thrown<OXThread_WaitError>([&] { thread.waitFor(); }),
              "OXThread_WaitError: Error waiting for thread");
    thread.destroyThread();
    thread.destroy();
    EXPECT_EQ(joins.count, 0);
    EXPECT_EQ(thread.getIdentifier(), 0U);
}

TEST(OCThread, CanBeCreatedAgainAndIsStillResumed) {
    FunctionThread thread([](FunctionThread&) { return 0U; });
    thread.resumeThread();
    thread.waitFor();
    EXPECT_EQ(thread.executions, 1);
    thread.initialize();
    EXPECT_NE(thread.getIdentifier(), 0U);
    thread.waitFor();
    EXPECT_EQ(thread.executions, 2);
    thread.terminateThread();
    thread.initializeThread();
    thread.waitFor();
    EXPECT_EQ(thread.executions, 2);
    EXPECT_EQ(thread.getIdentifier(), 0U);
}

TEST(OCThread, IsEndedBeforeItIsCreatedAgain) {
    Gate running;
    FunctionThread thread([&](FunctionThread& self) {
        running.raise();
        self.isTerminating(~0U);
        return 0U;
    });
    thread.resumeThread();
    running.await();
    int joined = 0;
    {
        Replacement joining(calls::pthread_join, [&](pthread_t identifier, void** result) {
            joined += pthread_equal(identifier, thread.getIdentifier()) != 0;
            return calls::pthread_join.original(identifier, result);
        });
        thread.initialize();
    }
    EXPECT_EQ(joined, 1);
    thread.waitFor();
    EXPECT_EQ(thread.executions, 1);
}

TEST(OCThread, AFailingJoinThrowsAndKeepsTheIdentifier) {
    FunctionThread thread([](FunctionThread&) { return 0U; });
    thread.resumeThread();
    std::string waiting;
    std::string destroying;
    {
        FailingThreadCall failing(calls::pthread_join, EDEADLK);
        waiting = thrown<OXThread_WaitError>([&] { thread.waitFor(); });
        destroying = thrown<OXThread_WaitError>([&] { thread.destroyThread(); });
    }
    EXPECT_EQ(waiting, "OXThread_WaitError: Error waiting for thread");
    EXPECT_EQ(destroying, "OXThread_WaitError: Error waiting for thread");
    EXPECT_NE(thread.getIdentifier(), 0U);
    EXPECT_TRUE(thread.isTerminating(0));
    thread.waitFor();
    EXPECT_EQ(thread.getIdentifier(), 0U);
}

TEST(OCThread, TheDestructorDropsAFailure) {
    // Joins in truth, so that nothing outlives the object, and says that it failed.
    int joins = 0;
    pthread_t joined = 0;
    Replacement joining(calls::pthread_join, [&](pthread_t thread, void** result) {
        ++joins;
        if (joined != thread)
            calls::pthread_join.original(thread, result);
        joined = thread;
        return ESRCH;
    });
    {
        class Bare : public OCThread {
        public:
            unsigned int execute() override { return 0; }
        } thread;
    }
    EXPECT_EQ(joins, 1);
}

TEST(OCThread, AFailingCreationThrowsAndLeavesNothing) {
    std::string failure;
    unsigned long conditions;
    unsigned long mutexes;
    unsigned long joins;
    {
        Counting destroyingConditions(calls::pthread_cond_destroy);
        Counting destroyingMutexes(calls::pthread_mutex_destroy);
        Counting joining(calls::pthread_join);
        FailingThreadCall failing(calls::pthread_create, EAGAIN);
        failure = thrown<OXThread_CreateError>(
            [] { FunctionThread thread([](FunctionThread&) { return 0U; }); });
        conditions = destroyingConditions.calls();
        mutexes = destroyingMutexes.calls();
        joins = joining.calls();
    }
    EXPECT_EQ(failure, "OXThread_CreateError: Error creating thread");
    EXPECT_EQ(conditions, 2U);
    EXPECT_EQ(mutexes, 2U);
    EXPECT_EQ(joins, 0U);
}

TEST(OCThread, AnEventThatCannotBeCreatedIsReportedBeforeTheThreadExists) {
    for (const unsigned long number : {1UL, 2UL}) {
        std::string failure;
        unsigned long created;
        {
            Counting creating(calls::pthread_create);
            FailingThreadCall failing(calls::pthread_cond_init, EAGAIN, number);
            failure = thrown<OXEvent_CreateError>(
                [] { FunctionThread thread([](FunctionThread&) { return 0U; }); });
            created = creating.calls();
        }
        EXPECT_EQ(failure, "OXEvent_CreateError: Error creating synchronization event (Resource "
                           "temporarily unavailable)");
        EXPECT_EQ(created, 0U);
    }
}

TEST(OCThread, RequestsReportWhatTheirEventsThrow) {
    FunctionThread thread([](FunctionThread&) { return 0U; });
    std::string resuming;
    std::string terminating;
    {
        FailingThreadCall failing(calls::pthread_cond_broadcast, EINVAL);
        resuming = thrown<OXEvent_SignalError>([&] { thread.resumeThread(); });
        terminating = thrown<OXEvent_SignalError>([&] { thread.terminateThread(); });
    }
    EXPECT_EQ(resuming,
              "OXEvent_SignalError: Error signaling synchronization event (Invalid argument)");
    EXPECT_EQ(terminating, resuming);
}

TEST(OCThread, ManyThreadsComeAndGo) {
    const long before = openDescriptors();
    std::atomic<int> executed{0};
    for (int i = 0; i < 50; ++i) {
        FunctionThread one([&](FunctionThread& self) {
            ++executed;
            self.isTerminating(0);
            return 0U;
        });
        FunctionThread two([&](FunctionThread&) {
            ++executed;
            return 0U;
        });
        one.resumeThread();
        one.waitFor();
        if (i % 2 == 0)
            two.resumeThread();
        if (i % 4 == 0)
            two.waitFor();
    }
    EXPECT_GE(executed, 63);
    EXPECT_LE(executed, 75);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(OXThread, LeavesStoreTheirClassAndMessageWithoutDetails) {
    EXPECT_EQ(thrown<OXThread_CreateError>([] { throw OXThread_CreateError(); }),
              "OXThread_CreateError: Error creating thread");
    EXPECT_EQ(thrown<OXThread_WaitError>([] { throw OXThread_WaitError(); }),
              "OXThread_WaitError: Error waiting for thread");
    EXPECT_EQ(OXThread_CreateError().getDetails().getCount(), 0U);
    EXPECT_EQ(OXThread_WaitError().getDetails().getCount(), 0U);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXThread>));
    EXPECT_TRUE((std::is_base_of_v<OXThread, OXThread_CreateError>));
    EXPECT_TRUE((std::is_base_of_v<OXThread, OXThread_WaitError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXThread>);
    EXPECT_EQ(sizeof(OXThread_WaitError), sizeof(OXAutoException));
}
