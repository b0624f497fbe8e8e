#include "OCThreadPool.h"

#include "support/ClockCalls.h"
#include "support/FaultInjection.h"
#include "support/Forked.h"
#include "support/Gate.h"
#include "support/Slots.h"
#include "support/ThreadCalls.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr const char* refused = "OXThreadPool_JobRefused: The thread pool job was refused";
constexpr const char* clockFailure =
    "OXEvent_TimeError: Error acquiring current system time (Bad address)";

OCThreadPoolParameters sizes(unsigned int initial, unsigned int maximum) {
    OCThreadPoolParameters parameters;
    parameters.setInitialSize(initial);
    parameters.setMaximumSize(maximum);
    return parameters;
}

/// What jobs work on: they count themselves, say that they run and wait until they may end.
class Task : public OCObject {
public:
    /// A job that ends at once.
    OCThreadPoolJob quick() {
        return OCThreadPoolJob(
            [](OCObject* object) {
                Task& task = *static_cast<Task*>(object);
                ++task.runs;
                task.thread = OCThread::currentIdentifier();
                task.started.raise();
                return 0U;
            },
            this);
    }
    /// A job that lasts until `mayEnd` is raised.
    OCThreadPoolJob lasting() {
        return OCThreadPoolJob(
            [](OCObject* object) {
                Task& task = *static_cast<Task*>(object);
                ++task.runs;
                task.started.raise();
                task.mayEnd.await();
                ++task.ends;
                return 0U;
            },
            this);
    }
    std::atomic<int> runs{0};
    std::atomic<int> ends{0};
    std::atomic<pthread_t> thread{0};
    Gate started;
    Gate mayEnd;
};

/// Waits until `worker` is idle, and leaves it so.
void awaitIdle(OCThreadPoolWorker& worker) {
    worker.getIdleEvent().waitFor();
    worker.getIdleEvent().signalEvent();
}

void awaitIdle(OCThreadPool& pool) {
    for (unsigned int i = 0; i < pool.getWorkers().getCount(); ++i)
        awaitIdle(pool.getWorkers().getWorker(i));
}

/// Watches the joining of threads by this one.
class Joins {
public:
    Joins()
        : joining(calls::pthread_join, [this](pthread_t thread, void** result) {
              void* value = nullptr;
              const int code = calls::pthread_join.original(thread, &value);
              threads.push_back(thread);
              exitValues.push_back(reinterpret_cast<std::uintptr_t>(value));
              if (result != nullptr)
                  *result = value;
              return code;
          }) {}
    std::vector<pthread_t> threads;
    std::vector<std::uintptr_t> exitValues;

private:
    Replacement<int(pthread_t, void**)> joining;
};

/// Watches the first mutex that this thread locks, and what else it locks meanwhile and outside.
class FirstMutex {
public:
    FirstMutex()
        : locking(calls::pthread_mutex_lock,
                  [this](pthread_mutex_t* mutex) {
                      if (first == nullptr)
                          first = mutex;
                      if (mutex == first)
                          ++held;
                      else
                          ++(held == 0 ? outside : others);
                      return calls::pthread_mutex_lock.original(mutex);
                  }),
          unlocking(calls::pthread_mutex_unlock, [this](pthread_mutex_t* mutex) {
              held -= mutex == first ? 1 : 0;
              return calls::pthread_mutex_unlock.original(mutex);
          }) {}
    int held = 0;
    int others = 0;
    int outside = 0;

private:
    pthread_mutex_t* first = nullptr;
    Replacement<int(pthread_mutex_t*)> locking;
    Replacement<int(pthread_mutex_t*)> unlocking;
};

/// Raised each time that a worker goes to sleep. The worker holds the event's mutex then until it
/// sleeps, so whoever signals the event after `await` finds it asleep.
class Sleepers {
public:
    Sleepers()
        : owner(pthread_self()),
          waiting(
              calls::pthread_cond_timedwait,
              [this](pthread_cond_t* condition, pthread_mutex_t* mutex,
                     const struct timespec* deadline) {
                  if (!pthread_equal(pthread_self(), owner))
                      asleep.raise();
                  return calls::pthread_cond_timedwait.original(condition, mutex, deadline);
              },
              Threads::Every) {}
    Gate asleep;

private:
    pthread_t owner;
    Replacement<int(pthread_cond_t*, pthread_mutex_t*, const struct timespec*)> waiting;
};

/// Keeps the first signal of this thread from waking anybody until this thread waits without a
/// time-out, as it does for a worker that takes its time.
class LateSignal {
public:
    LateSignal()
        : signalling(calls::pthread_cond_broadcast,
                     [this](pthread_cond_t* condition) {
                         if (late == nullptr) {
                             late = condition;
                             return 0;
                         }
                         return calls::pthread_cond_broadcast.original(condition);
                     }),
          waiting(calls::pthread_cond_wait,
                  [this](pthread_cond_t* condition, pthread_mutex_t* mutex) {
                      ++waits;
                      calls::pthread_cond_broadcast.original(late);
                      return calls::pthread_cond_wait.original(condition, mutex);
                  }) {}
    pthread_cond_t* late = nullptr;
    unsigned int waits = 0;

private:
    Replacement<int(pthread_cond_t*)> signalling;
    Replacement<int(pthread_cond_t*, pthread_mutex_t*)> waiting;
};

/// Makes the clock fail for every thread but the one that makes it, and for that one too if it is
/// said so.
class BrokenClock {
public:
    explicit BrokenClock(bool forAll)
        : all(forAll), owner(pthread_self()),
          reading(
              calls::gettimeofday,
              [this](struct timeval* now, void* zone) {
                  if (!all && pthread_equal(pthread_self(), owner))
                      return calls::gettimeofday.original(now, zone);
                  failed.raise();
                  errno = EFAULT;
                  return -1;
              },
              Threads::Every) {}
    Gate failed;

private:
    bool all;
    pthread_t owner;
    Replacement<int(struct timeval*, void*)> reading;
};

} // namespace

TEST(OCThreadPoolParameters, HaveTheirDefaultsAndKeepWhatTheyAreGiven) {
    EXPECT_EQ(sizeof(OCThreadPoolParameters), 24U);
    EXPECT_EQ(slots::slotCount<OCThreadPoolParameters>(), 2U);
    OCThreadPoolParameters parameters;
    EXPECT_EQ(parameters.getAverageSize(), 10U);
    EXPECT_EQ(parameters.getInitialSize(), 1U);
    EXPECT_EQ(parameters.getMaximumSize(), 20U);
    parameters.setAverageSize(4294967295U);
    parameters.setInitialSize(7);
    parameters.setMaximumSize(0);
    const OCThreadPoolParameters copy(parameters);
    EXPECT_EQ(copy.getAverageSize(), 4294967295U);
    EXPECT_EQ(copy.getInitialSize(), 7U);
    EXPECT_EQ(copy.getMaximumSize(), 0U);
    OCThreadPoolParameters assigned;
    assigned = copy;
    EXPECT_EQ(assigned.getAverageSize(), 4294967295U);
    EXPECT_EQ(assigned.getInitialSize(), 7U);
    EXPECT_EQ(assigned.getMaximumSize(), 0U);
}

TEST(OCThreadPoolJob, CallsItsFunctionWithItsObject) {
    EXPECT_EQ(sizeof(OCThreadPoolJob), 24U);
    EXPECT_EQ(slots::slotCount<OCThreadPoolJob>(), 2U);
    EXPECT_TRUE((std::is_same_v<OCThreadPoolJob::Callback, unsigned int (*)(OCObject*)>));
    static OCObject* seen;
    const OCThreadPoolJob::Callback callback = [](OCObject* object) {
        seen = object;
        return 4294967295U;
    };
    Task task;
    OCThreadPoolJob job(callback, &task);
    EXPECT_EQ(job.getCallback(), callback);
    EXPECT_EQ(job.getObject(), &task);
    EXPECT_EQ(job.execute(), 4294967295U);
    EXPECT_EQ(seen, &task);
    Task other;
    job.setObject(&other);
    job.setCallback([](OCObject* object) {
        seen = object;
        return 0U;
    });
    EXPECT_EQ(job.execute(), 0U);
    EXPECT_EQ(seen, &other);
    const OCThreadPoolJob copy(job);
    seen = nullptr;
    EXPECT_EQ(copy.execute(), 0U);
    EXPECT_EQ(seen, &other);
    job.setObject(nullptr);
    EXPECT_EQ(job.execute(), 0U);
    EXPECT_EQ(seen, nullptr);
    OCThreadPoolJob assigned;
    assigned = copy;
    EXPECT_EQ(assigned.execute(), 0U);
    EXPECT_EQ(seen, &other);
}

TEST(OCThreadPoolJob, GivesOneWithoutAFunctionOrWhenTheFunctionThrows) {
    OCThreadPoolJob job;
    EXPECT_EQ(job.getCallback(), nullptr);
    EXPECT_EQ(job.getObject(), nullptr);
    EXPECT_EQ(job.execute(), 1U);
    Task task;
    job.setObject(&task);
    EXPECT_EQ(job.execute(), 1U);
    job.setCallback([](OCObject*) -> unsigned int { throw OXThread_WaitError(); });
    EXPECT_EQ(job.execute(), 1U);
    job.setCallback([](OCObject*) -> unsigned int { throw std::runtime_error("out of a job"); });
    EXPECT_EQ(job.execute(), 1U);
    job.setCallback([](OCObject*) -> unsigned int { throw 7; });
    EXPECT_EQ(job.execute(), 1U);
}

TEST(OCThreadPoolJob, GivesOneWhenWhatWasThrownThrowsInItsDestructor) {
    struct Thrown {
        ~Thrown() noexcept(false) { throw 5; }
    };
    // In a process of its own, because the C++ library never frees such an object.
    EXPECT_EQ("1", inChild([] {
                  const OCThreadPoolJob job([](OCObject*) -> unsigned int { throw Thrown(); });
                  return std::to_string(job.execute());
              }));
}

TEST(OCThreadPoolWorker, AddsThreeEventsAndAJobToTheThread) {
    EXPECT_EQ(sizeof(OCThreadPoolWorker), 680U);
    EXPECT_EQ(slots::slotOf(&OCThreadPoolWorker::execute), 2U);
    EXPECT_EQ(slots::slotCount<OCThreadPoolWorker>(), 3U);
    EXPECT_TRUE((std::is_base_of_v<OCThread, OCThreadPoolWorker>));
    EXPECT_FALSE(std::is_copy_constructible_v<OCThreadPoolWorker>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCThreadPoolWorker>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCThreadPoolWorker>);
    OCThreadPoolWorker worker;
    const OCThreadPoolWorker& constant = worker;
    EXPECT_EQ(&worker.getIdleEvent(), &constant.getIdleEvent());
    EXPECT_EQ(reinterpret_cast<char*>(&worker.getIdleEvent()) - reinterpret_cast<char*>(&worker),
              272);
}

TEST(OCThreadPoolWorker, RunsFromItsConstructionOnAndIsNotIdleYet) {
    Task task;
    OCThreadPoolWorker worker;
    EXPECT_NE(worker.getIdentifier(), 0U);
    EXPECT_FALSE(worker.isTerminating(0));
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    worker.setJob(task.quick());
    task.started.await();
    EXPECT_EQ(task.thread, worker.getIdentifier());
    worker.getIdleEvent().waitFor();
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, TakesAJobOverBeforeItRunsItAndIsIdleAfterIt) {
    Task task;
    OCThreadPoolWorker worker;
    {
        // The job is copied.
        const OCThreadPoolJob job = task.lasting();
        worker.setJob(job);
    }
    task.started.await();
    EXPECT_EQ(task.ends, 0);
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    task.mayEnd.raise();
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.ends, 1);
}

TEST(OCThreadPoolWorker, GoesOnAfterAJobThatThrowsOrHasNoFunction) {
    Task task;
    OCThreadPoolWorker worker;
    worker.setJob(OCThreadPoolJob());
    worker.getIdleEvent().waitFor();
    worker.setJob(OCThreadPoolJob([](OCObject*) -> unsigned int { throw 7; }));
    worker.getIdleEvent().waitFor();
    for (int i = 0; i < 3; ++i) {
        worker.setJob(task.quick());
        worker.getIdleEvent().waitFor();
    }
    EXPECT_EQ(task.runs, 3);
}

TEST(OCThreadPoolWorker, IsWokenAndJoinedByShutdown) {
    OCThreadPoolWorker worker;
    const pthread_t thread = worker.getIdentifier();
    Joins joins;
    worker.terminateThread();
    worker.shutdown();
    ASSERT_EQ(joins.threads.size(), 1U);
    EXPECT_EQ(joins.threads[0], thread);
    EXPECT_EQ(joins.exitValues[0], 0U);
    EXPECT_EQ(worker.getIdentifier(), 0U);
    EXPECT_EQ(thrown<OXThread_WaitError>([&] { worker.shutdown(); }),
              "OXThread_WaitError: Error waiting for thread");
}

TEST(OCThreadPoolWorker, RefusesJobsOnceItHasEnded) {
    Task task;
    OCThreadPoolWorker worker;
    worker.setJob(task.quick());
    worker.getIdleEvent().waitFor();
    worker.getIdleEvent().signalEvent();
    worker.terminateThread();
    worker.shutdown();
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { worker.setJob(task.quick()); }), refused);
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, RefusesAJobWhenTerminationArrivesWithIt) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    std::string failure;
    {
        bool asked = false;
        Replacement signalling(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            if (!asked) {
                asked = true;
                worker.terminateThread();
            }
            return calls::pthread_cond_broadcast.original(condition);
        });
        failure = thrown<OXThreadPool_JobRefused>([&] { worker.setJob(task.quick()); });
    }
    EXPECT_EQ(failure, refused);
    Joins joins;
    worker.waitFor();
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0}));
    EXPECT_EQ(task.runs, 0);
}

TEST(OCThreadPoolWorker, RefusesJobsOnceItHasEndedAlsoAfterAFailedHandOver) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    const pthread_t submitter = pthread_self();
    Gate ended;
    bool asked = false;
    std::string failure;
    {
        Replacement signalling(
            calls::pthread_cond_broadcast,
            [&](pthread_cond_t* condition) {
                if (!pthread_equal(pthread_self(), submitter)) {
                    ended.raise();
                } else if (!asked) {
                    asked = true;
                    worker.terminateThread();
                }
                return calls::pthread_cond_broadcast.original(condition);
            },
            Threads::Every);
        // Looking for the acceptance fails, and so does waiting for it, when the worker has ended.
        Failing reading(calls::gettimeofday, EFAULT, 2, 1);
        bool waited = false;
        Replacement locking(calls::pthread_mutex_lock, [&](pthread_mutex_t* mutex) {
            if (reading.calls() < 2 || waited)
                return calls::pthread_mutex_lock.original(mutex);
            waited = true;
            ended.await(2);
            return EINVAL;
        });
        failure = thrown<OXMutex_AcquireError>([&] { worker.setJob(task.quick()); });
        EXPECT_TRUE(waited);
    }
    EXPECT_EQ(failure,
              "OXMutex_AcquireError: Error waiting for synchronization mutex (Invalid argument)");
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { worker.setJob(task.quick()); }), refused);
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    EXPECT_EQ(task.runs, 0);
}

TEST(OCThreadPoolWorker, RunsAJobThatItTookOverBeforeTerminationArrives) {
    Task task;
    OCThreadPoolWorker worker;
    worker.setJob(task.lasting());
    worker.terminateThread();
    task.mayEnd.raise();
    Joins joins;
    worker.shutdown();
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0}));
    EXPECT_EQ(task.ends, 1);
}

TEST(OCThreadPoolWorker, LooksEveryTwoSecondsWhetherItIsToTerminate) {
    struct timespec deadline = {};
    Gate waiting;
    Gate timedOut;
    const pthread_t owner = pthread_self();
    Joins joins;
    Replacement clock(
        calls::gettimeofday,
        [](struct timeval* now, void*) {
            now->tv_sec = 1000;
            now->tv_usec = 5000;
            return 0;
        },
        Threads::Every);
    Replacement sleeping(
        calls::pthread_cond_timedwait,
        [&](pthread_cond_t* condition, pthread_mutex_t* mutex, const struct timespec* wanted) {
            if (pthread_equal(pthread_self(), owner))
                return calls::pthread_cond_timedwait.original(condition, mutex, wanted);
            deadline = *wanted;
            waiting.raise();
            timedOut.await();
            return ETIMEDOUT;
        },
        Threads::Every);
    OCThreadPoolWorker worker;
    waiting.await();
    EXPECT_EQ(deadline.tv_sec, 1002);
    EXPECT_EQ(deadline.tv_nsec, 5000000);
    timedOut.raise();
    waiting.await(); // it goes back to waiting
    worker.terminateThread();
    timedOut.raise();
    worker.waitFor(); // without having been woken
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0}));
}

TEST(OCThreadPoolWorker, AWakeUpWithoutAJobRunsNothing) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    worker.setJob(task.quick());
    worker.getIdleEvent().waitFor();
    sleepers.asleep.await();
    {
        // Wakes the worker and does not join.
        FailingThreadCall failing(calls::pthread_join, EINVAL);
        EXPECT_THROW(worker.shutdown(), OXThread_WaitError);
    }
    sleepers.asleep.await();
    EXPECT_EQ(task.runs, 1);
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    worker.setJob(task.quick());
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 2);
}

TEST(OCThreadPoolWorker, DestructionWaitsForItsJob) {
    Task task;
    Joins joins;
    {
        OCThreadPoolWorker worker;
        worker.setJob(task.lasting());
        task.mayEnd.raise();
    }
    EXPECT_EQ(task.ends, 1);
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0}));
}

TEST(OCThreadPoolWorker, DestructionJoinsWhateverCallFailsOnce) {
    for (unsigned long number = 1; number <= 12; ++number) {
        SCOPED_TRACE(number);
        for (const bool locking : {true, false}) {
            Task task;
            Joins joins;
            unsigned char place[sizeof(OCThreadPoolWorker)]
                __attribute__((aligned(alignof(OCThreadPoolWorker))));
            OCThreadPoolWorker* worker = new (place) OCThreadPoolWorker;
            worker->setJob(task.quick());
            if (locking) {
                FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL, number, 1);
                worker->~OCThreadPoolWorker();
            } else {
                FailingThreadCall failing(calls::pthread_cond_broadcast, EINVAL, number, 1);
                worker->~OCThreadPoolWorker();
            }
            EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0}));
            EXPECT_EQ(task.runs, 1);
        }
    }
}

TEST(OCThreadPoolWorker, AFailingClockEndsItWithOne) {
    Task task;
    OCThreadPoolWorker worker;
    worker.setJob(task.lasting());
    task.started.await();
    Joins joins;
    {
        BrokenClock clock(false);
        task.mayEnd.raise();
        clock.failed.await();
        worker.waitFor();
    }
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({1}));
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { worker.setJob(task.quick()); }), refused);
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, AFailingWaitForAJobEndsItWithOne) {
    Joins joins;
    const pthread_t owner = pthread_self();
    std::string failure;
    Gate failed;
    Replacement waiting(
        calls::pthread_cond_timedwait,
        [&](pthread_cond_t* condition, pthread_mutex_t* mutex, const struct timespec* deadline) {
            if (pthread_equal(pthread_self(), owner))
                return calls::pthread_cond_timedwait.original(condition, mutex, deadline);
            failed.raise();
            return EPERM;
        },
        Threads::Every);
    OCThreadPoolWorker worker;
    failed.await();
    worker.waitFor();
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({1}));
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { worker.setJob(OCThreadPoolJob()); }), refused);
}

TEST(OCThreadPoolWorker, AJobWhoseAcceptanceCannotBeSignalledIsRunAndEndsIt) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    const pthread_t owner = pthread_self();
    std::atomic<int> broadcasts{0};
    Joins joins;
    {
        Replacement signalling(
            calls::pthread_cond_broadcast,
            [&](pthread_cond_t* condition) {
                if (!pthread_equal(pthread_self(), owner) && ++broadcasts == 1)
                    return EINVAL;
                return calls::pthread_cond_broadcast.original(condition);
            },
            Threads::Every);
        worker.setJob(task.quick());
        worker.waitFor();
    }
    EXPECT_EQ(task.runs, 1);
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({1}));
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { worker.setJob(task.quick()); }), refused);
}

TEST(OCThreadPoolWorker, AJobAfterWhichIdlenessCannotBeSignalledEndsIt) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    const pthread_t owner = pthread_self();
    std::atomic<int> broadcasts{0};
    Joins joins;
    {
        Replacement signalling(
            calls::pthread_cond_broadcast,
            [&](pthread_cond_t* condition) {
                // The first one tells that the job is accepted.
                if (!pthread_equal(pthread_self(), owner) && ++broadcasts == 2)
                    return EINVAL;
                return calls::pthread_cond_broadcast.original(condition);
            },
            Threads::Every);
        worker.setJob(task.quick());
        worker.terminateThread(); // so that it ends in any case
        worker.waitFor();
    }
    EXPECT_EQ(task.runs, 1);
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({1}));
    EXPECT_FALSE(worker.getIdleEvent().waitFor(0));
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { worker.setJob(task.quick()); }), refused);
}

TEST(OCThreadPoolWorker, AJobWhoseSignalFailsIsTakenBack) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    std::string failure;
    {
        FailingThreadCall failing(calls::pthread_cond_broadcast, EINVAL, 1, 1);
        failure = thrown<OXEvent_SignalError>([&] { worker.setJob(task.quick()); });
    }
    EXPECT_EQ(failure,
              "OXEvent_SignalError: Error signaling synchronization event (Invalid argument)");
    // The worker is free again.
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 0);
    worker.setJob(task.quick());
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, AJobThatIsNoticedAlthoughItsSignalFailsIsRun) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    {
        int broadcasts = 0;
        Replacement signalling(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            if (++broadcasts > 1)
                return calls::pthread_cond_broadcast.original(condition);
            // Lets the worker go on before the submitter does.
            calls::pthread_cond_broadcast.original(condition);
            return EINVAL;
        });
        int looks = 0;
        Replacement reading(calls::gettimeofday, [&](struct timeval* now, void* zone) {
            // The look at whether the job can be taken back, the second one, is too late.
            if (++looks == 2) {
                errno = EFAULT;
                return -1;
            }
            return calls::gettimeofday.original(now, zone);
        });
        worker.setJob(task.quick());
    }
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, AJobIsTakenBackWhenWaitingForItsAcceptanceFails) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    std::string failure;
    {
        int broadcasts = 0;
        Replacement signalling(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            // Says that it woke the worker, and does not.
            return ++broadcasts == 1 ? 0 : calls::pthread_cond_broadcast.original(condition);
        });
        FailingThreadCall failing(calls::pthread_cond_wait, EPERM);
        failure = thrown<OXEvent_WaitError>([&] { worker.setJob(task.quick()); });
    }
    EXPECT_EQ(failure, "OXEvent_WaitError: Error waiting for synchronization event (Operation not "
                       "permitted)");
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 0);
    worker.setJob(task.quick());
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, AJobThatCannotBeTakenBackAnyMoreIsRun) {
    Task task;
    OCThreadPoolWorker worker;
    bool waited = false;
    std::string failure;
    {
        Replacement waiting(calls::pthread_cond_wait,
                            [&](pthread_cond_t* condition, pthread_mutex_t* mutex) {
                                if (waited)
                                    return calls::pthread_cond_wait.original(condition, mutex);
                                waited = true;
                                // The worker takes the job while the wait, which releases the
                                // mutex, fails.
                                calls::pthread_mutex_unlock(mutex);
                                task.started.await();
                                calls::pthread_mutex_lock(mutex);
                                return EPERM;
                            });
        failure = thrown<OXException>([&] { worker.setJob(task.quick()); });
    }
    EXPECT_EQ(failure, "nothing");
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, AFailedLookForTheAcceptanceSettlesNothing) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    {
        LateSignal signal;
        Failing failing(calls::gettimeofday, EFAULT, 2);
        worker.setJob(task.quick());
        EXPECT_GE(signal.waits, 1U);
        EXPECT_EQ(failing.calls(), 2U);
    }
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPoolWorker, AnAcceptanceThatNobodyWaitedForDoesNotCountForTheNextJob) {
    Task task;
    Sleepers sleepers;
    OCThreadPoolWorker worker;
    sleepers.asleep.await();
    {
        // The job is handed over, and then nothing can be waited for or taken back.
        FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL, 4);
        EXPECT_THROW(worker.setJob(task.quick()), OXMutex_AcquireError);
    }
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 1);
    sleepers.asleep.await();
    {
        LateSignal signal;
        worker.setJob(task.quick());
        EXPECT_GE(signal.waits, 1U);
    }
    worker.getIdleEvent().waitFor();
    EXPECT_EQ(task.runs, 2);
}

TEST(OCThreadPoolWorker, HandingOverWaitsWithoutATimeOut) {
    Task task;
    OCThreadPoolWorker worker;
    worker.setJob(task.quick());
    worker.getIdleEvent().waitFor();
    unsigned long timed;
    {
        Counting waits(calls::pthread_cond_timedwait);
        worker.setJob(task.quick());
        timed = waits.calls();
    }
    EXPECT_EQ(timed, 0U);
    worker.getIdleEvent().waitFor();
}

TEST(OCThreadPoolWorker, IsReportedWhenItCannotBeMadeAndLeavesNothing) {
    const auto madeWith = [](auto& call, int code, unsigned long number, unsigned long& created) {
        Counting creating(calls::pthread_create);
        FailingThreadCall failing(call, code, number, 1);
        const std::string failure = thrown<OXException>([] { OCThreadPoolWorker worker; });
        created = creating.calls();
        return failure.substr(0, failure.find(':'));
    };
    for (unsigned long number = 1; number <= 5; ++number) {
        Joins joins;
        unsigned long created;
        EXPECT_EQ(madeWith(calls::pthread_mutex_init, EAGAIN, number, created),
                  "OXMutex_CreateError");
        EXPECT_EQ(joins.threads.size(), number > 2 ? 1U : 0U);
        EXPECT_EQ(created, joins.threads.size());
    }
    for (unsigned long number = 1; number <= 5; ++number) {
        Joins joins;
        unsigned long created;
        EXPECT_EQ(madeWith(calls::pthread_cond_init, EAGAIN, number, created),
                  "OXEvent_CreateError");
        EXPECT_EQ(created, joins.threads.size());
    }
}

TEST(OCThreadPoolWorker, AThreadThatEndsBeforeItStartsIsAFailureToCreateIt) {
    BrokenClock clock(false);
    unsigned long joins;
    std::string failure;
    {
        Counting joining(calls::pthread_join);
        failure = thrown<OXThread_CreateError>([] { OCThreadPoolWorker worker; });
        joins = joining.calls();
    }
    EXPECT_EQ(failure, "OXThread_CreateError: Error creating thread");
    EXPECT_EQ(joins, 0U); // it was joined by looking whether it had ended
}

TEST(OCThreadPoolWorkerList, HoldsItsPoolAndAVector) {
    EXPECT_EQ(sizeof(OCThreadPoolWorkerList), 56U);
    EXPECT_EQ(slots::slotCount<OCThreadPoolWorkerList>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCThreadPoolWorkerList>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCThreadPoolWorkerList>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCThreadPoolWorkerList>);
}

TEST(OCThreadPoolWorkerList, MakesTheInitialWorkersIdleAndStopsAtTheMaximum) {
    const auto counts = [](unsigned int initial, unsigned int maximum) {
        OCThreadPool pool(sizes(initial, maximum));
        const unsigned int count = pool.getWorkers().getCount();
        EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), count);
        return count;
    };
    EXPECT_EQ(counts(1, 20), 1U);
    EXPECT_EQ(counts(0, 20), 0U);
    EXPECT_EQ(counts(5, 2), 2U);
    EXPECT_EQ(counts(2, 2), 2U);
    EXPECT_EQ(counts(5, 0), 0U);
    EXPECT_EQ(counts(4294967295U, 3), 3U);
}

TEST(OCThreadPoolWorkerList, GivesItsWorkersByIndexInTheOrderOfTheirCreation) {
    std::vector<pthread_t> created;
    Replacement creating(calls::pthread_create, [&](pthread_t* thread,
                                                    const pthread_attr_t* attributes,
                                                    void* (*routine)(void*), void* object) {
        const int code = calls::pthread_create.original(thread, attributes, routine, object);
        created.push_back(*thread);
        return code;
    });
    OCThreadPool pool(sizes(2, 3));
    OCThreadPoolWorkerList& workers = pool.getWorkers();
    OCThreadPoolWorker* third = nullptr;
    EXPECT_TRUE(workers.createWorker(third));
    ASSERT_EQ(workers.getCount(), 3U);
    ASSERT_EQ(created.size(), 3U);
    const OCThreadPoolWorkerList& constant = workers;
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(workers.getWorker(i).getIdentifier(), created[i]);
        EXPECT_EQ(&constant.getWorker(i), &workers.getWorker(i));
    }
    EXPECT_EQ(&workers.getWorker(2), third);
    EXPECT_FALSE(third->getIdleEvent().waitFor(0));
    EXPECT_EQ(thrown<OXVector_NoSuchIndex>([&] { workers.getWorker(3); }),
              "OXVector_NoSuchIndex: Vector index out of bounds (3)");
    EXPECT_EQ(thrown<OXVector_NoSuchIndex>([&] { constant.getWorker(4294967295U); }),
              "OXVector_NoSuchIndex: Vector index out of bounds (4294967295)");
}

TEST(OCThreadPoolWorkerList, MakesNoWorkerBeyondTheMaximum) {
    OCThreadPool pool(sizes(1, 1));
    OCThreadPoolWorker* worker = nullptr;
    EXPECT_FALSE(pool.getWorkers().createWorker(worker));
    EXPECT_EQ(worker, nullptr);
    EXPECT_EQ(pool.getWorkers().getCount(), 1U);
    pool.getParameters().setMaximumSize(2);
    EXPECT_TRUE(pool.getWorkers().createWorker(worker));
    EXPECT_EQ(pool.getWorkers().getCount(), 2U);
    EXPECT_EQ(worker, &pool.getWorkers().getWorker(1));
    pool.getParameters().setMaximumSize(0);
    OCThreadPoolWorker* other = nullptr;
    EXPECT_FALSE(pool.getWorkers().createWorker(other));
    EXPECT_EQ(other, nullptr);
}

TEST(OCThreadPoolWorkerList, AWorkerThatCannotBeMadeChangesNothing) {
    OCThreadPool pool(sizes(1, 20));
    OCThreadPoolWorkerList& workers = pool.getWorkers();
    OCThreadPoolWorker* worker = nullptr;
    const auto creates = [&](auto& call, unsigned long number) {
        FailingThreadCall failing(call, EAGAIN, number, 1);
        return workers.createWorker(worker);
    };
    EXPECT_FALSE(creates(calls::pthread_create, 1));
    for (unsigned long number = 1; number <= 5; ++number) {
        EXPECT_FALSE(creates(calls::pthread_mutex_init, number));
        EXPECT_FALSE(creates(calls::pthread_cond_init, number));
        EXPECT_FALSE(creates(calls::pthread_condattr_init, number));
    }
    EXPECT_FALSE(creates(calls::pthread_cond_broadcast, 1));
    EXPECT_EQ(worker, nullptr);
    EXPECT_EQ(workers.getCount(), 1U);
    EXPECT_TRUE(workers.createWorker(worker));
    EXPECT_EQ(workers.getCount(), 2U);
}

TEST(OCThreadPoolWorkerList, AWorkerForWhichThereIsNoMemoryChangesNothing) {
    unsigned long failures = 0;
    for (unsigned long number = 1;; ++number) {
        OCThreadPool pool(sizes(0, 80));
        OCThreadPoolWorkerList& workers = pool.getWorkers();
        OCThreadPoolWorker* worker = nullptr;
        const long before = fault::heapRecord().liveBlocks;
        bool created;
        bool triggered;
        {
            fault::HeapFault fault(number);
            created = workers.createWorker(worker);
            triggered = fault.triggered();
        }
        if (!triggered) {
            EXPECT_TRUE(created);
            break;
        }
        ++failures;
        EXPECT_FALSE(created);
        EXPECT_EQ(worker, nullptr);
        EXPECT_EQ(workers.getCount(), 0U);
        EXPECT_LE(fault::heapRecord().liveBlocks, before);
        EXPECT_TRUE(workers.createWorker(worker));
        EXPECT_EQ(workers.getCount(), 1U);
    }
    EXPECT_GE(failures, 2U); // the worker and the list
}

TEST(OCThreadPoolWorkerList, FindsTheFirstIdleWorkerAndClaimsIt) {
    OCThreadPool pool(sizes(3, 3));
    OCThreadPoolWorkerList& workers = pool.getWorkers();
    for (const unsigned int expected : {0U, 1U, 2U}) {
        OCThreadPoolWorker* worker = nullptr;
        EXPECT_TRUE(workers.findWorker(worker));
        EXPECT_EQ(worker, &workers.getWorker(expected));
    }
    OCThreadPoolWorker* none = nullptr;
    EXPECT_FALSE(workers.findWorker(none));
    EXPECT_EQ(none, nullptr);
    workers.getWorker(2).getIdleEvent().signalEvent();
    workers.getWorker(1).getIdleEvent().signalEvent();
    OCThreadPoolWorker* worker = nullptr;
    EXPECT_TRUE(workers.findWorker(worker));
    EXPECT_EQ(worker, &workers.getWorker(1));
}

TEST(OCThreadPoolWorkerList, DoesNotFindAWorkerThatHasEnded) {
    Task task;
    OCThreadPool pool(sizes(3, 3));
    OCThreadPoolWorkerList& workers = pool.getWorkers();
    workers.getWorker(1).terminateThread();
    workers.getWorker(1).shutdown();
    OCThreadPoolWorker* worker = nullptr;
    EXPECT_TRUE(workers.findWorker(worker));
    EXPECT_TRUE(workers.findWorker(worker));
    EXPECT_EQ(worker, &workers.getWorker(2));
    EXPECT_FALSE(workers.findWorker(worker));
}

TEST(OCThreadPool, HoldsTheSynchronizerTheParametersAndTheWorkers) {
    EXPECT_EQ(sizeof(OCThreadPool), 88U);
    EXPECT_EQ(slots::slotCount<OCThreadPool>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCThreadPool>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCThreadPool>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCThreadPool>);
    OCThreadPoolParameters parameters = sizes(2, 5);
    parameters.setAverageSize(77);
    OCThreadPool pool(parameters);
    const OCThreadPool& constant = pool;
    EXPECT_EQ(constant.getParameters().getAverageSize(), 77U);
    EXPECT_EQ(pool.getParameters().getInitialSize(), 2U);
    EXPECT_EQ(pool.getParameters().getMaximumSize(), 5U);
    EXPECT_NE(&pool.getParameters(), &parameters);
    parameters.setMaximumSize(1);
    EXPECT_EQ(pool.getParameters().getMaximumSize(), 5U);
    EXPECT_EQ(&constant.getParameters(), &pool.getParameters());
    EXPECT_EQ(&constant.getWorkers(), &pool.getWorkers());
    EXPECT_EQ(&constant.getSynchronizer(), &pool.getSynchronizer());
    EXPECT_EQ(static_cast<void*>(&pool.getSynchronizer()),
              static_cast<void*>(reinterpret_cast<char*>(&pool) + 8));
    EXPECT_EQ(constant.getWorkers().getCount(), 2U);
}

TEST(OCThreadPool, ReturnsWhenTheWorkerHasTakenTheJobOver) {
    Task task;
    OCThreadPool pool((OCThreadPoolParameters()));
    pool.execute(task.lasting());
    task.started.await();
    EXPECT_EQ(task.ends, 0);
    task.mayEnd.raise();
    awaitIdle(pool);
    EXPECT_EQ(task.ends, 1);
}

TEST(OCThreadPool, MakesWorkersOnlyWhileAllAreBusyAndRefusesTheJobBeyondTheMaximum) {
    Task task;
    OCThreadPool pool((OCThreadPoolParameters()));
    EXPECT_EQ(pool.getWorkers().getCount(), 1U);
    for (unsigned int i = 1; i <= 20; ++i) {
        pool.execute(task.lasting());
        EXPECT_EQ(pool.getWorkers().getCount(), i);
    }
    task.started.await(20);
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.lasting()); }), refused);
    EXPECT_EQ(pool.getWorkers().getCount(), 20U);
    for (int i = 0; i < 20; ++i)
        task.mayEnd.raise();
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 20);
    EXPECT_EQ(task.ends, 20);
    pool.execute(task.quick());
    EXPECT_EQ(pool.getWorkers().getCount(), 20U);
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 21);
}

TEST(OCThreadPool, TheAverageSizeIsNotLookedAt) {
    for (const unsigned int average : {0U, 1U, 4294967295U}) {
        Task task;
        OCThreadPoolParameters parameters = sizes(3, 5);
        parameters.setAverageSize(average);
        OCThreadPool pool(parameters);
        EXPECT_EQ(pool.getWorkers().getCount(), 3U);
        for (int i = 0; i < 5; ++i)
            pool.execute(task.lasting());
        EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.lasting()); }), refused);
        for (int i = 0; i < 5; ++i)
            task.mayEnd.raise();
        awaitIdle(pool);
        pool.execute(task.quick());
        awaitIdle(pool);
        EXPECT_EQ(pool.getWorkers().getCount(), 5U);
        EXPECT_EQ(pool.getParameters().getAverageSize(), average);
    }
}

TEST(OCThreadPool, MakesItsFirstWorkerForTheFirstJob) {
    Task task;
    OCThreadPool pool(sizes(0, 1));
    EXPECT_EQ(pool.getWorkers().getCount(), 0U);
    pool.execute(task.lasting());
    EXPECT_EQ(pool.getWorkers().getCount(), 1U);
    EXPECT_FALSE(pool.getWorkers().getWorker(0).getIdleEvent().waitFor(0));
    task.mayEnd.raise();
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPool, RefusesEveryJobWithAMaximumOfZero) {
    Task task;
    OCThreadPool pool(sizes(5, 0));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    EXPECT_EQ(task.runs, 0);
}

TEST(OCThreadPool, PrefersEarlierWorkers) {
    OCThreadPool pool(sizes(3, 3));
    for (int i = 0; i < 5; ++i) {
        Task task;
        pool.execute(task.quick());
        awaitIdle(pool);
        EXPECT_EQ(task.thread, pool.getWorkers().getWorker(0).getIdentifier());
    }
    Task lasting;
    pool.execute(lasting.lasting());
    Task task;
    pool.execute(task.quick());
    task.started.await();
    EXPECT_EQ(task.thread, pool.getWorkers().getWorker(1).getIdentifier());
    lasting.mayEnd.raise();
}

TEST(OCThreadPool, AJobThatThrowsOrHasNoFunctionLeavesItsWorkerIdle) {
    Task task;
    OCThreadPool pool(sizes(1, 1));
    pool.execute(OCThreadPoolJob());
    awaitIdle(pool);
    pool.execute(OCThreadPoolJob([](OCObject*) -> unsigned int { throw OXThread_WaitError(); }));
    awaitIdle(pool);
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 1U);
    pool.execute(task.quick());
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPool, AJobThatEndsItsThreadEndsTheWorker) {
    Task task;
    OCThreadPool pool(sizes(1, 2));
    Joins joins;
    pool.execute(OCThreadPoolJob([](OCObject*) -> unsigned int {
#if defined(__SANITIZE_ADDRESS__)
        __lsan_disable(); // the C library loads its unwinder now and keeps what it allocates for it
#endif
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        pthread_exit(reinterpret_cast<void*>(std::uintptr_t(12)));
    }));
    pool.execute(task.quick());
    task.started.await();
    EXPECT_EQ(pool.getWorkers().getCount(), 2U);
    EXPECT_EQ(task.thread, pool.getWorkers().getWorker(1).getIdentifier());
    awaitIdle(pool.getWorkers().getWorker(1));
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 1U);
    pool.shutdown();
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({12, 0}));
}

TEST(OCThreadPool, GoesOnWithoutAWorkerThatHasFailed) {
    Task task;
    Sleepers sleepers;
    OCThreadPool pool(sizes(2, 3));
    sleepers.asleep.await(2); // the second one needs no clock for some time
    {
        // The loop of the first worker ends.
        Task last;
        pool.execute(last.lasting());
        last.started.await();
        Joins joins;
        BrokenClock clock(false);
        last.mayEnd.raise();
        clock.failed.await();
        pool.getWorkers().getWorker(0).waitFor();
        EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({1}));
    }
    for (int i = 0; i < 3; ++i) {
        pool.execute(task.quick());
        task.started.await();
        awaitIdle(pool.getWorkers().getWorker(1));
        EXPECT_EQ(task.thread, pool.getWorkers().getWorker(1).getIdentifier());
    }
    // Also when its idle signal is given back by someone who looked at it just before.
    pool.getWorkers().getWorker(0).getIdleEvent().signalEvent();
    pool.execute(task.quick());
    task.started.await();
    EXPECT_EQ(task.thread, pool.getWorkers().getWorker(1).getIdentifier());
    EXPECT_EQ(pool.getWorkers().getCount(), 2U);
    EXPECT_EQ(task.runs, 4);
}

TEST(OCThreadPool, GoesOnWithoutAWorkerThatEndsInsteadOfTakingTheJob) {
    Task task;
    OCThreadPool pool(sizes(2, 2));
    {
        bool asked = false;
        Replacement signalling(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            if (!asked) {
                asked = true;
                pool.getWorkers().getWorker(0).terminateThread();
            }
            return calls::pthread_cond_broadcast.original(condition);
        });
        pool.execute(task.quick());
    }
    task.started.await();
    EXPECT_EQ(task.runs, 1);
    EXPECT_EQ(task.thread, pool.getWorkers().getWorker(1).getIdentifier());
}

TEST(OCThreadPool, ASubmissionIsInsideTheSynchronizerForItsWholeRun) {
    for (const unsigned int initial : {0U, 1U}) {
        Task task;
        OCThreadPool pool(sizes(initial, 1));
        int others;
        int outside;
        {
            FirstMutex synchronizer;
            pool.execute(task.quick());
            EXPECT_EQ(synchronizer.held, 0);
            others = synchronizer.others;
            outside = synchronizer.outside;
        }
        EXPECT_GE(others,
                  4); // to look for an earlier job, to hand over, to wait for the acceptance
        EXPECT_EQ(outside, 0);
        awaitIdle(pool);
        EXPECT_EQ(task.runs, 1);
    }
}

TEST(OCThreadPool, LookingForAnIdleWorkerTakesNoTime) {
    Task task;
    OCThreadPool pool(sizes(3, 3));
    for (int i = 0; i < 3; ++i)
        pool.execute(task.lasting());
    std::string failure;
    unsigned long waits;
    {
        Counting waiting(calls::pthread_cond_timedwait);
        failure = thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); });
        EXPECT_EQ(OCThreadPoolStatistics(pool).countBusyWorkers(), 3U);
        EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 0U);
        waits = waiting.calls();
    }
    EXPECT_EQ(failure, refused);
    EXPECT_EQ(waits, 0U);
    for (int i = 0; i < 3; ++i)
        task.mayEnd.raise();
}

TEST(OCThreadPool, ASubmissionToAnIdleWorkerTakesNoMemory) {
    Task task;
    OCThreadPool pool((OCThreadPoolParameters()));
    const OCThreadPoolJob job = task.quick();
    const unsigned long before = fault::heapRecord().requests;
    pool.execute(job);
    EXPECT_EQ(fault::heapRecord().requests, before);
    awaitIdle(pool);
}

TEST(OCThreadPool, RefusesAJobForWhichNoWorkerCanBeMade) {
    Task task;
    OCThreadPool pool(sizes(0, 2));
    const auto failureWith = [&](auto& call) {
        FailingThreadCall failing(call, EAGAIN);
        return thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); });
    };
    EXPECT_EQ(failureWith(calls::pthread_create), refused);
    EXPECT_EQ(failureWith(calls::pthread_mutex_init), refused);
    EXPECT_EQ(failureWith(calls::pthread_cond_init), refused);
    EXPECT_EQ(failureWith(calls::pthread_condattr_init), refused);
    EXPECT_EQ(failureWith(calls::pthread_mutexattr_init), refused);
    {
        BrokenClock clock(true);
        EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    }
    {
        BrokenClock clock(false);
        EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    }
    EXPECT_EQ(pool.getWorkers().getCount(), 0U);
    EXPECT_EQ(task.runs, 0);
    pool.execute(task.quick());
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPool, AJobIsRunOrReportedAsFailedWhateverCallFailsOnce) {
    const auto submits = [](auto& call, unsigned long number, std::string& failure) {
        Task task;
        OCThreadPool pool(sizes(2, 2));
        bool reached;
        {
            FailingThreadCall failing(call, EINVAL, number, 1);
            failure = thrown<OXException>([&] { pool.execute(task.quick()); });
            reached = failing.calls() >= number;
        }
        const bool run = failure == "nothing";
        if (run)
            task.started.await();
        awaitIdle(pool);
        EXPECT_EQ(task.runs, run ? 1 : 0) << failure;
        // Both workers are there for the next jobs.
        Task lasting;
        pool.execute(lasting.lasting());
        pool.execute(lasting.lasting());
        lasting.mayEnd.raise();
        lasting.mayEnd.raise();
        lasting.started.await(2);
        EXPECT_EQ(task.runs, run ? 1 : 0) << failure;
        failure = failure.substr(0, failure.find(':'));
        return reached;
    };
    std::string failure;
    unsigned long number = 1;
    for (; submits(calls::pthread_mutex_lock, number, failure); ++number)
        EXPECT_TRUE(failure == "OXMutex_AcquireError" || failure == "nothing") << failure;
    EXPECT_GE(number, 7U);
    for (number = 1; submits(calls::pthread_cond_broadcast, number, failure); ++number)
        EXPECT_TRUE(failure == "OXEvent_SignalError" || failure == "nothing") << failure;
    EXPECT_GE(number, 2U);
    submits(calls::pthread_cond_wait, 1, failure);
    EXPECT_TRUE(failure == "OXEvent_WaitError" || failure == "nothing") << failure;
}

TEST(OCThreadPool, ASubmissionWhoseThreadCanLockNothingAnyMoreReturns) {
    for (unsigned long number = 1; number <= 8; ++number) {
        SCOPED_TRACE(number);
        Task task;
        OCThreadPool pool(sizes(1, 1));
        std::string failure;
        {
            FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL, number);
            failure = thrown<OXMutex_AcquireError>([&] { pool.execute(task.quick()); });
        }
        if (number < 7) {
            EXPECT_EQ(failure, "OXMutex_AcquireError: Error waiting for synchronization mutex "
                               "(Invalid argument)");
        }
        pool.shutdown();
        EXPECT_LE(task.runs, 1);
    }
}

TEST(OCThreadPool, AFailingClockIsReportedAndTheJobIsNotRun) {
    Task task;
    OCThreadPool pool(sizes(1, 1));
    for (unsigned long number = 1; number <= 3; ++number) {
        {
            Failing failing(calls::gettimeofday, EFAULT, number, 1);
            EXPECT_EQ(thrown<OXEvent_TimeError>([&] { pool.execute(task.quick()); }), clockFailure);
        }
        awaitIdle(pool);
    }
    EXPECT_EQ(task.runs, 0);
}

TEST(OCThreadPool, AClockThatFailsAfterTheHandOverDoesNotMatter) {
    Task task;
    OCThreadPool pool(sizes(1, 1));
    {
        Failing failing(calls::gettimeofday, EFAULT, 4);
        pool.execute(task.quick());
        EXPECT_EQ(failing.calls(), 4U);
    }
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 1);
}

TEST(OCThreadPool, AConstructorThatFailsLeavesNothing) {
    const auto constructs = [](auto& call, int code, unsigned long number, std::string& failure) {
        unsigned long created;
        unsigned long joined;
        bool reached;
        {
            Counting creating(calls::pthread_create);
            Counting joining(calls::pthread_join);
            FailingThreadCall failing(call, code, number, 1);
            failure = thrown<OXException>([] { OCThreadPool pool(sizes(2, 2)); });
            reached = failing.calls() >= number;
            created = creating.calls();
            joined = joining.calls();
        }
        EXPECT_EQ(created, joined);
        failure = failure.substr(0, failure.find(':'));
        return reached;
    };
    std::string failure;
    EXPECT_TRUE(constructs(calls::pthread_mutex_init, EAGAIN, 1, failure));
    EXPECT_EQ(failure, "OXMutex_CreateError"); // of the synchronizer
    for (unsigned long number = 2; constructs(calls::pthread_mutex_init, EAGAIN, number, failure);
         ++number)
        EXPECT_EQ(failure, "nothing"); // a worker is left out
    bool signalled = false;
    for (unsigned long number = 1;
         constructs(calls::pthread_cond_broadcast, EINVAL, number, failure); ++number) {
        EXPECT_TRUE(failure == "nothing" || failure == "OXEvent_SignalError") << failure;
        signalled = signalled || failure == "OXEvent_SignalError";
    }
    EXPECT_TRUE(signalled);
}

TEST(OCThreadPool, AConstructorWithoutMemoryLeavesNothing) {
    const unsigned long failures = fault::failEachRequest([] {
        const OCThreadPoolParameters parameters = sizes(1, 1);
        OCThreadPool pool(parameters);
        EXPECT_LE(pool.getWorkers().getCount(), 1U);
    });
    EXPECT_EQ(failures, 2U); // the parameters and the list; a worker is left out
    { OCThreadPool pool(sizes(1, 1)); }
    EXPECT_LE(fault::blocksLeftBy([] { OCThreadPool pool(sizes(3, 3)); }), 0);
}

TEST(OCThreadPool, LeavesOutInitialWorkersThatCannotBeMade) {
    unsigned long created;
    {
        Counting creating(calls::pthread_mutexattr_init);
        FailingThreadCall failing(calls::pthread_create, EAGAIN, 2, 1);
        OCThreadPool pool(sizes(3, 20));
        created = failing.calls();
        EXPECT_EQ(pool.getWorkers().getCount(), 2U);
        EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 2U);
    }
    EXPECT_EQ(created, 3U);
}

TEST(OCThreadPool, ShutdownJoinsTheWorkersInTheirOrderAndRefusesFromThenOn) {
    Task task;
    OCThreadPool pool(sizes(3, 20));
    std::vector<pthread_t> threads;
    for (unsigned int i = 0; i < 3; ++i)
        threads.push_back(pool.getWorkers().getWorker(i).getIdentifier());
    Joins joins;
    pool.shutdown();
    EXPECT_EQ(joins.threads, threads);
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0, 0, 0}));
    EXPECT_EQ(pool.getWorkers().getCount(), 3U);
    EXPECT_EQ(pool.getWorkers().getWorker(2).getIdentifier(), 0U);
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    pool.shutdown();
    EXPECT_EQ(joins.threads.size(), 3U);
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    EXPECT_EQ(pool.getWorkers().getCount(), 3U);
    EXPECT_EQ(task.runs, 0);
    OCThreadPoolWorker* worker = nullptr;
    EXPECT_FALSE(pool.getWorkers().findWorker(worker));
    EXPECT_EQ(OCThreadPoolStatistics(pool).countBusyWorkers(), 3U);
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 0U);
}

TEST(OCThreadPool, ShutdownIsInsideTheSynchronizerOnlyWhileItAsksAWorkerToTerminate) {
    OCThreadPool pool(sizes(2, 2));
    std::string steps;
    {
        FirstMutex synchronizer;
        Replacement signalling(calls::pthread_cond_broadcast, [&](pthread_cond_t* condition) {
            steps += synchronizer.held > 0 ? "inside " : "outside ";
            return calls::pthread_cond_broadcast.original(condition);
        });
        Replacement joining(calls::pthread_join, [&](pthread_t thread, void** result) {
            steps += synchronizer.held > 0 ? "joins inside, " : "joins, ";
            return calls::pthread_join.original(thread, result);
        });
        pool.shutdown();
    }
    // Each worker's terminate and resume events, and its job event.
    EXPECT_EQ(steps, "inside inside outside joins, inside inside outside joins, ");
}

TEST(OCThreadPool, DestructionAfterShutdownJoinsNothing) {
    Joins joins;
    {
        OCThreadPool pool(sizes(2, 2));
        pool.shutdown();
        EXPECT_EQ(joins.threads.size(), 2U);
    }
    EXPECT_EQ(joins.threads.size(), 2U);
}

TEST(OCThreadPool, APoolWithoutWorkersStaysUsableAfterShutdown) {
    Task task;
    OCThreadPool pool(sizes(0, 1));
    pool.shutdown();
    pool.execute(task.quick());
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 1);
    pool.shutdown();
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
}

TEST(OCThreadPool, ShutdownWaitsForRunningJobsAndStopsOneWorkerAfterTheOther) {
    Task first;
    Task second;
    OCThreadPool pool(sizes(3, 20));
    pool.execute(first.lasting());
    pool.execute(second.lasting());
    OCThreadPoolWorkerList& workers = pool.getWorkers();
    Gate joining;
    std::thread stopper([&] {
        Replacement watching(calls::pthread_join, [&](pthread_t thread, void** result) {
            joining.raise();
            return calls::pthread_join.original(thread, result);
        });
        pool.shutdown();
    });
    joining.await(); // for the first worker
    EXPECT_TRUE(workers.getWorker(0).isTerminating(0));
    EXPECT_FALSE(workers.getWorker(1).isTerminating(0));
    EXPECT_FALSE(workers.getWorker(2).isTerminating(0));
    // Nobody is kept waiting meanwhile, and no job is taken although a worker is idle.
    Task task;
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 1U);
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 1U);
    first.mayEnd.raise();
    joining.await();
    EXPECT_TRUE(workers.getWorker(1).isTerminating(0));
    EXPECT_FALSE(workers.getWorker(2).isTerminating(0));
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    second.mayEnd.raise();
    stopper.join();
    EXPECT_EQ(first.ends, 1);
    EXPECT_EQ(second.ends, 1);
    EXPECT_EQ(task.runs, 0);
    EXPECT_EQ(workers.getCount(), 3U);
}

TEST(OCThreadPool, AJobMaySubmitToItsOwnPoolAlsoWhileItIsShutDown) {
    struct Chain : Task {
        OCThreadPool* pool;
        Task next;
        Gate joining;
        std::string failure;
    } chain;
    OCThreadPool pool(sizes(1, 20));
    chain.pool = &pool;
    pool.execute(OCThreadPoolJob(
        [](OCObject* object) {
            Chain& self = *static_cast<Chain*>(object);
            self.pool->execute(self.next.quick());
            self.started.raise();
            self.joining.await();
            self.failure =
                thrown<OXThreadPool_JobRefused>([&] { self.pool->execute(self.next.quick()); });
            return 0U;
        },
        &chain));
    Replacement watching(calls::pthread_join, [&](pthread_t thread, void** result) {
        chain.joining.raise();
        return calls::pthread_join.original(thread, result);
    });
    chain.started.await();
    pool.shutdown();
    EXPECT_EQ(chain.failure, refused);
    EXPECT_EQ(chain.next.runs, 1);
}

TEST(OCThreadPool, AJobCannotShutItsOwnPoolDown) {
    struct Suicide : Task {
        OCThreadPool* pool;
        std::string failure;
    } suicide;
#if defined(__SANITIZE_THREAD__)
    // Which loses a thread that tries to join itself.
    Replacement joining(
        calls::pthread_join,
        [](pthread_t thread, void** result) {
            return pthread_equal(thread, pthread_self())
                       ? EDEADLK
                       : calls::pthread_join.original(thread, result);
        },
        Threads::Every);
#endif
    OCThreadPool pool(sizes(1, 1));
    suicide.pool = &pool;
    pool.execute(OCThreadPoolJob(
        [](OCObject* object) {
            Suicide& self = *static_cast<Suicide*>(object);
            self.failure = thrown<OXThread_WaitError>([&] { self.pool->shutdown(); });
            self.started.raise();
            return 0U;
        },
        &suicide));
    suicide.started.await();
    EXPECT_EQ(suicide.failure, "OXThread_WaitError: Error waiting for thread");
    pool.shutdown();
    EXPECT_EQ(pool.getWorkers().getWorker(0).getIdentifier(), 0U);
}

TEST(OCThreadPool, AShutdownThatFailsCanBeRepeated) {
    Task task;
    OCThreadPool pool(sizes(2, 2));
    std::string failure;
    {
        FailingThreadCall failing(calls::pthread_join, EDEADLK, 1, 1);
        failure = thrown<OXThread_WaitError>([&] { pool.shutdown(); });
    }
    EXPECT_EQ(failure, "OXThread_WaitError: Error waiting for thread");
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    Joins joins;
    pool.shutdown();
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0, 0}));
}

TEST(OCThreadPool, DestructionJoinsWhateverCallFailsOnce) {
    for (unsigned long number = 1; number <= 20; ++number) {
        SCOPED_TRACE(number);
        Task task;
        Joins joins;
        OCThreadPool* pool = new OCThreadPool(sizes(2, 2));
        pool->execute(task.quick());
        if (number % 2 == 0) {
            FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL, number / 2, 1);
            delete pool;
        } else {
            FailingThreadCall failing(calls::pthread_cond_broadcast, EINVAL, number / 2 + 1, 1);
            delete pool;
        }
        EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0, 0}));
        EXPECT_EQ(task.runs, 1);
    }
}

TEST(OCThreadPool, DestructionWhileBusyJoinsEverything) {
    Task task;
    Joins joins;
    {
        OCThreadPool pool(sizes(2, 10));
        for (int i = 0; i < 10; ++i)
            pool.execute(task.lasting());
        for (int i = 0; i < 10; ++i)
            task.mayEnd.raise();
    }
    EXPECT_EQ(task.ends, 10);
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>(10, 0));
}

TEST(OCThreadPool, DestructionWakesIdleWorkers) {
    Sleepers sleepers;
    Joins joins;
    {
        OCThreadPool pool(sizes(3, 3));
        sleepers.asleep.await(3);
    }
    EXPECT_EQ(joins.exitValues, std::vector<std::uintptr_t>({0, 0, 0}));
    // None of them went back to sleep.
    EXPECT_FALSE(sleepers.asleep.isRaised());
}

TEST(OCThreadPool, RefusesAfterItHasBeenDestroyedByHand) {
    Task task;
    OCThreadPool pool(sizes(2, 2));
    Joins joins;
    pool.destroy();
    EXPECT_EQ(joins.threads.size(), 2U);
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([&] { pool.execute(task.quick()); }), refused);
    pool.shutdown();
    pool.destroy();
    EXPECT_EQ(joins.threads.size(), 2U);
}

TEST(OCThreadPool, CanBeginAnew) {
    Task task;
    OCThreadPool pool(sizes(1, 1));
    pool.execute(task.quick());
    // Its own parameters will do.
    pool.getParameters().setInitialSize(2);
    pool.getParameters().setMaximumSize(3);
    {
        Joins joins;
        pool.initialize(pool.getParameters());
        EXPECT_EQ(joins.threads.size(), 1U);
    }
    EXPECT_EQ(task.runs, 1);
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 2U);
    EXPECT_EQ(pool.getParameters().getMaximumSize(), 3U);
    pool.shutdown();
    EXPECT_THROW(pool.execute(task.quick()), OXThreadPool_JobRefused);
    pool.initializeWorkers();
    EXPECT_EQ(pool.getWorkers().getCount(), 2U);
    pool.getWorkers().initialize();
    EXPECT_EQ(pool.getWorkers().getCount(), 3U);
    EXPECT_EQ(OCThreadPoolStatistics(pool).countIdleWorkers(), 3U);
    pool.destroy();
    pool.initialize(sizes(0, 1));
    EXPECT_EQ(pool.getWorkers().getCount(), 0U);
    pool.execute(task.quick());
    awaitIdle(pool);
    EXPECT_EQ(task.runs, 2);
}

TEST(OCThreadPoolStatistics, CountsIdleAndBusyWorkersAndLeavesThemAsTheyWere) {
    EXPECT_EQ(sizeof(OCThreadPoolStatistics), 16U);
    EXPECT_EQ(slots::slotCount<OCThreadPoolStatistics>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCThreadPoolStatistics>);
    Task task;
    OCThreadPool pool(sizes(3, 5));
    const OCThreadPoolStatistics statistics(pool);
    EXPECT_EQ(statistics.countBusyWorkers(), 0U);
    EXPECT_EQ(statistics.countIdleWorkers(), 3U);
    EXPECT_EQ(statistics.countIdleWorkers(), 3U);
    for (unsigned int i = 1; i <= 5; ++i) {
        pool.execute(task.lasting());
        EXPECT_EQ(statistics.countBusyWorkers(), i);
        EXPECT_EQ(statistics.countIdleWorkers(), i < 3 ? 3 - i : 0U);
    }
    for (int i = 0; i < 5; ++i)
        task.mayEnd.raise();
    awaitIdle(pool);
    EXPECT_EQ(statistics.countBusyWorkers(), 0U);
    EXPECT_EQ(statistics.countIdleWorkers(), 5U);
    OCThreadPoolWorker* worker = nullptr;
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(pool.getWorkers().findWorker(worker));
    OCThreadPool empty(sizes(0, 0));
    EXPECT_EQ(OCThreadPoolStatistics(empty).countBusyWorkers(), 0U);
    EXPECT_EQ(OCThreadPoolStatistics(empty).countIdleWorkers(), 0U);
}

TEST(OCThreadPoolStatistics, CountsInsideTheSynchronizer) {
    OCThreadPool pool(sizes(1, 1));
    const OCThreadPoolStatistics statistics(pool);
    std::atomic<bool> counted{false};
    Gate counting;
    std::thread other;
    {
        OCCriticalSectionLock lock(pool.getSynchronizer());
        other = std::thread([&] {
            Replacement locking(calls::pthread_mutex_lock, [&](pthread_mutex_t* mutex) {
                counting.raise();
                return calls::pthread_mutex_lock.original(mutex);
            });
            statistics.countIdleWorkers();
            counted = true;
        });
        counting.await();
        EXPECT_FALSE(counted);
    }
    other.join();
    EXPECT_TRUE(counted);
    for (const auto count :
         {&OCThreadPoolStatistics::countBusyWorkers, &OCThreadPoolStatistics::countIdleWorkers}) {
        FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL);
        EXPECT_THROW((statistics.*count)(), OXMutex_AcquireError);
    }
}

TEST(OCThreadPoolStatistics, CountsTheBusyWorkersOfOneMoment) {
    OCThreadPool pool(sizes(1, 2));
    const OCThreadPoolStatistics statistics(pool);
    unsigned int busy;
    {
        int locks = 0;
        Replacement locking(calls::pthread_mutex_lock, [&](pthread_mutex_t* mutex) {
            OCThreadPoolWorker* worker = nullptr;
            // Just before the synchronizer is entered.
            if (++locks == 1 && pool.getWorkers().createWorker(worker))
                worker->getIdleEvent().signalEvent();
            return calls::pthread_mutex_lock.original(mutex);
        });
        busy = statistics.countBusyWorkers();
    }
    EXPECT_EQ(pool.getWorkers().getCount(), 2U);
    EXPECT_EQ(busy, 0U);
}

TEST(OCThreadPoolStatistics, LosesNoIdleWorkerWhateverCallFailsOnce) {
    OCThreadPool pool(sizes(2, 2));
    const OCThreadPoolStatistics statistics(pool);
    const auto counts = [&](auto& call, unsigned long number, const std::string& expected) {
        std::string failure;
        bool reached;
        {
            FailingThreadCall failing(call, EINVAL, number, 1);
            failure = thrown<OXException>([&] { statistics.countIdleWorkers(); });
            reached = failing.calls() >= number;
        }
        EXPECT_EQ(failure.substr(0, failure.find(':')), reached ? expected : "nothing") << number;
        EXPECT_EQ(statistics.countIdleWorkers(), 2U) << number;
        return reached;
    };
    unsigned long number = 1;
    while (counts(calls::pthread_mutex_lock, number, "OXMutex_AcquireError"))
        ++number;
    EXPECT_GE(number, 6U); // the synchronizer, and each worker's signal twice
    for (number = 1; counts(calls::pthread_cond_broadcast, number, "OXEvent_SignalError");)
        ++number;
    EXPECT_EQ(number, 3U);
}

TEST(OCThreadPoolStatistics, AWorkerThatEndsWhileItIsCountedIsNotIdleAfterwards) {
    OCThreadPool pool(sizes(1, 1));
    const OCThreadPoolStatistics statistics(pool);
    unsigned int idle;
    {
        int locks = 0;
        Replacement locking(calls::pthread_mutex_lock, [&](pthread_mutex_t* mutex) {
            // Behind the synchronizer and the look at the worker: the signal is to be given back.
            if (++locks == 3)
                pool.shutdown();
            return calls::pthread_mutex_lock.original(mutex);
        });
        idle = statistics.countIdleWorkers();
    }
    EXPECT_EQ(idle, 0U);
    EXPECT_EQ(pool.getWorkers().getWorker(0).getIdentifier(), 0U);
    EXPECT_EQ(statistics.countIdleWorkers(), 0U);
    EXPECT_FALSE(pool.getWorkers().getWorker(0).getIdleEvent().waitFor(0));
}

TEST(OCThreadPoolStatistics, ReportsAFailingClock) {
    OCThreadPool pool(sizes(1, 1));
    const OCThreadPoolStatistics statistics(pool);
    {
        Failing failing(calls::gettimeofday, EFAULT);
        EXPECT_EQ(thrown<OXEvent_TimeError>([&] { statistics.countBusyWorkers(); }), clockFailure);
        EXPECT_EQ(thrown<OXEvent_TimeError>([&] { statistics.countIdleWorkers(); }), clockFailure);
    }
    EXPECT_EQ(statistics.countIdleWorkers(), 1U);
}

TEST(OXThreadPool, TheRefusalStoresItsClassAndMessageWithoutDetails) {
    EXPECT_EQ(thrown<OXThreadPool_JobRefused>([] { throw OXThreadPool_JobRefused(); }), refused);
    EXPECT_EQ(OXThreadPool_JobRefused().getDetails().getCount(), 0U);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXThreadPool>));
    EXPECT_TRUE((std::is_base_of_v<OXThreadPool, OXThreadPool_JobRefused>));
    EXPECT_FALSE(std::is_default_constructible_v<OXThreadPool>);
}
