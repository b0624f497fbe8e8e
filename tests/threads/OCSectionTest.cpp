#include "OCSection.h"

#include "support/Gate.h"
#include "support/Slots.h"
#include "support/ThreadCalls.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <random>
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
    void await(unsigned int times = 1) { asleep.await(times); }
    bool anyMore() { return asleep.isRaised(); }

private:
    Gate asleep;
    Replacement<int(pthread_cond_t*, pthread_mutex_t*)> waiting;
};

/// A thread that enters a section, stays inside until it is told to leave, and leaves.
class Visitor {
public:
    /// `arrivals` is raised too when the thread is inside.
    Visitor(OCAbstractSection& visited, unsigned int visitMode, Gate* arrivals = nullptr)
        : section(visited), mode(visitMode), arrived(arrivals), thread([this] { visit(); }) {}
    ~Visitor() {
        if (thread.joinable())
            leave();
    }
    void awaitInside() { entered.await(); }
    bool isInside() { return entered.isRaised(); }
    void leave() {
        mayLeave.raise();
        thread.join();
    }

private:
    void visit() {
        section.enter(mode);
        entered.raise();
        if (arrived != nullptr)
            arrived->raise();
        mayLeave.await();
        section.leave(mode);
    }

    OCAbstractSection& section;
    unsigned int mode;
    Gate* arrived;
    Gate entered;
    Gate mayLeave;
    std::thread thread;
};

constexpr unsigned int reading = ReadWriteSectionModeReading;
constexpr unsigned int writing = ReadWriteSectionModeWriting;

unsigned int counter(const OCReadWriteSection& section, unsigned long offset) {
    unsigned int value;
    std::memcpy(&value, reinterpret_cast<const char*>(&section) + offset, sizeof value);
    return value;
}

unsigned int readers(const OCReadWriteSection& section) {
    return counter(section, 328);
}
unsigned int writers(const OCReadWriteSection& section) {
    return counter(section, 332);
}

/// Fields of the section's events, which follow the 72 bytes of table pointer and guard. Created,
/// state and type lie at 8, 72 and 76 of each.
unsigned int readersMayEnter(const OCReadWriteSection& section, unsigned long offset) {
    return counter(section, 72 + offset);
}
unsigned int writerMayEnter(const OCReadWriteSection& section, unsigned long offset) {
    return counter(section, 200 + offset);
}

/// Whether readers and writers get in and out without having to wait.
void expectFree(OCReadWriteSection& section) {
    std::string failure;
    {
        // A wait would report this failure instead of waiting without end.
        FailingThreadCall failing(calls::pthread_cond_wait, EINVAL);
        failure = thrown<OXException>([&] {
            section.startReading();
            section.startReading();
            section.stopReading();
            section.stopReading();
            section.startWriting();
            section.stopWriting();
            section.startReading();
            section.stopReading();
        });
    }
    EXPECT_EQ(failure, "nothing");
    EXPECT_EQ(readers(section), 0U);
    EXPECT_EQ(writers(section), 0U);
}

} // namespace

TEST(OCAbstractSection, HasEnterAndLeaveBehindTheDestructor) {
    EXPECT_EQ(sizeof(OCAbstractSection), 8U);
    EXPECT_EQ(slots::slotOf(&OCAbstractSection::enter), 2U);
    EXPECT_EQ(slots::slotOf(&OCAbstractSection::leave), 3U);
    EXPECT_EQ(slots::slotCount<OCAbstractSection>(), 4U);
    EXPECT_TRUE(std::is_abstract_v<OCAbstractSection>);
}

TEST(OCCriticalSection, HoldsAMutexAndAddsNoSlot) {
    EXPECT_EQ(sizeof(OCCriticalSection), 64U);
    EXPECT_EQ(slots::slotOf(&OCCriticalSection::enter), 2U);
    EXPECT_EQ(slots::slotOf(&OCCriticalSection::leave), 3U);
    EXPECT_EQ(slots::slotCount<OCCriticalSection>(), 4U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCCriticalSection>);
    EXPECT_TRUE((std::is_base_of_v<OCAbstractSection, OCCriticalSection>));
}

TEST(OCCriticalSection, LetsOneThreadInWhateverTheMode) {
    OCCriticalSection section;
    section.enter(0);
    section.enter(77); // recursive
    Gate entering;
    std::atomic<bool> inside{false};
    std::thread other([&] {
        entering.raise();
        section.enter(5);
        inside = true;
        section.leave(6);
    });
    entering.await();
    EXPECT_FALSE(inside);
    section.leave(1);
    EXPECT_FALSE(inside);
    section.leave(0);
    other.join();
    EXPECT_TRUE(inside);
}

TEST(OCCriticalSection, ExcludesThreads) {
    OCCriticalSection section;
    unsigned long count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 3000; ++n) {
                OCCriticalSectionLock lock(section);
                ++count;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 12000U);
}

TEST(OCCriticalSection, ThrowsWhatItsMutexThrows) {
    std::string creating;
    std::string entering;
    std::string locking;
    {
        FailingThreadCall failing(calls::pthread_mutex_init, ENOMEM);
        creating = thrown<OXMutex_CreateError>([] { OCCriticalSection section; });
    }
    OCCriticalSection section;
    {
        FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL);
        entering = thrown<OXMutex_AcquireError>([&] { section.enter(0); });
        locking = thrown<OXMutex_AcquireError>([&] { OCCriticalSectionLock lock(section); });
    }
    EXPECT_EQ(creating, "OXMutex_CreateError: Error creating synchronization mutex (Cannot "
                        "allocate memory)");
    EXPECT_EQ(entering, "OXMutex_AcquireError: Error waiting for synchronization mutex (Invalid "
                        "argument)");
    EXPECT_EQ(locking, entering);
}

TEST(OCReadWriteSection, HoldsGuardEventsAndCountersAndAddsNoSlot) {
    EXPECT_EQ(sizeof(OCReadWriteSection), 336U);
    EXPECT_EQ(sizeof(OEReadWriteSectionMode), 4U);
    EXPECT_EQ(slots::slotOf(&OCReadWriteSection::enter), 2U);
    EXPECT_EQ(slots::slotOf(&OCReadWriteSection::leave), 3U);
    EXPECT_EQ(slots::slotCount<OCReadWriteSection>(), 4U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCReadWriteSection>);
    EXPECT_EQ(ReadWriteSectionModeReading, 0);
    EXPECT_EQ(ReadWriteSectionModeWriting, 1);
}

TEST(OCReadWriteSection, IsFreeAtFirstAndAfterEachUse) {
    OCReadWriteSection section;
    expectFree(section);
    expectFree(section);
}

TEST(OCReadWriteSection, ItsEventsAreAManualResetOneForReadersAndAnAutoResetOneForWriters) {
    OCReadWriteSection section;
    EXPECT_EQ(readersMayEnter(section, 8), 1U);
    EXPECT_EQ(readersMayEnter(section, 72), 1U);
    EXPECT_EQ(readersMayEnter(section, 76), 1U);
    EXPECT_EQ(writerMayEnter(section, 8), 1U);
    EXPECT_EQ(writerMayEnter(section, 72), 0U);
    EXPECT_EQ(writerMayEnter(section, 76), 0U);
    section.startWriting();
    EXPECT_EQ(readersMayEnter(section, 72), 0U);
    section.stopWriting();
    EXPECT_EQ(readersMayEnter(section, 72), 1U);
}

TEST(OCReadWriteSection, LetsManyReadersInAtOnce) {
    OCReadWriteSection section;
    Visitor one(section, reading);
    Visitor two(section, reading);
    one.awaitInside();
    two.awaitInside();
    section.enter(reading);
    EXPECT_EQ(readers(section), 3U);
    section.leave(reading);
    one.leave();
    two.leave();
    expectFree(section);
}

TEST(OCReadWriteSection, IgnoresUnknownModes) {
    OCReadWriteSection section;
    for (const unsigned int mode : {2U, 3U, 0xFFFFFFFFU}) {
        section.enter(mode);
        section.leave(mode);
        EXPECT_EQ(readers(section), 0U);
        EXPECT_EQ(writers(section), 0U);
    }
    section.enter(writing);
    section.enter(2); // would wait otherwise
    section.leave(2);
    EXPECT_EQ(writers(section), 1U);
    section.leave(writing);
    expectFree(section);
}

TEST(OCReadWriteSection, AReaderWaitsForTheWriter) {
    Sleepers sleepers;
    OCReadWriteSection section;
    section.startWriting();
    Visitor reader(section, reading);
    sleepers.await();
    EXPECT_FALSE(reader.isInside());
    EXPECT_EQ(readers(section), 0U);
    section.stopWriting();
    reader.awaitInside();
    EXPECT_EQ(readers(section), 1U);
    reader.leave();
    expectFree(section);
}

TEST(OCReadWriteSection, AWaitingWriterHoldsNewReadersBackUntilItHasLeft) {
    Sleepers sleepers;
    OCReadWriteSection section;
    Visitor first(section, reading);
    Visitor second(section, reading);
    first.awaitInside();
    second.awaitInside();
    Visitor writer(section, writing);
    sleepers.await();
    Visitor third(section, reading);
    sleepers.await();
    EXPECT_EQ(readers(section), 2U);
    EXPECT_EQ(writers(section), 1U);
    first.leave();
    EXPECT_FALSE(writer.isInside());
    EXPECT_FALSE(third.isInside());
    EXPECT_EQ(readers(section), 1U);
    second.leave();
    writer.awaitInside();
    EXPECT_FALSE(third.isInside());
    EXPECT_FALSE(sleepers.anyMore()); // nobody was woken in vain
    EXPECT_EQ(readers(section), 0U);
    writer.leave();
    third.awaitInside();
    third.leave();
    expectFree(section);
}

TEST(OCReadWriteSection, WritersHandOverToWritersBeforeReadersGetIn) {
    Sleepers sleepers;
    OCReadWriteSection section;
    Visitor first(section, writing);
    first.awaitInside();
    Visitor second(section, writing);
    sleepers.await();
    Visitor readerOne(section, reading);
    sleepers.await();
    Visitor readerTwo(section, reading);
    sleepers.await();
    EXPECT_EQ(writers(section), 2U);
    first.leave();
    second.awaitInside();
    EXPECT_EQ(writers(section), 1U);
    // A writer that arrives now still comes before the readers.
    Visitor third(section, writing);
    sleepers.await();
    second.leave();
    third.awaitInside();
    EXPECT_FALSE(readerOne.isInside());
    EXPECT_FALSE(readerTwo.isInside());
    EXPECT_FALSE(sleepers.anyMore());
    third.leave();
    readerOne.awaitInside();
    readerTwo.awaitInside();
    readerOne.leave();
    readerTwo.leave();
    expectFree(section);
}

TEST(OCReadWriteSection, TheReadersEventStaysDownWhileWritersHandOver) {
    Sleepers sleepers;
    OCReadWriteSection section;
    section.startWriting();
    Visitor next(section, writing);
    sleepers.await();
    section.stopWriting();
    next.awaitInside();
    EXPECT_EQ(readersMayEnter(section, 72), 0U);
    next.leave();
    EXPECT_EQ(readersMayEnter(section, 72), 1U);
}

TEST(OCReadWriteSection, AReaderWaitsAgainForAWriterThatCameBetweenItsSignalAndItsTurn) {
    OCReadWriteSection section;
    section.startWriting();
    unsigned int waits = 0;
    {
        bool awake = false;
        Replacement waiting(calls::pthread_cond_wait, [&](pthread_cond_t*, pthread_mutex_t* mutex) {
            pthread_mutex_unlock(mutex);
            section.stopWriting();
            pthread_mutex_lock(mutex);
            awake = ++waits == 1;
            return 0;
        });
        // The next mutex that the reader locks when it is awake is the guard.
        Replacement locking(calls::pthread_mutex_lock, [&](pthread_mutex_t* mutex) {
            if (awake) {
                awake = false;
                section.startWriting();
            }
            return calls::pthread_mutex_lock.original(mutex);
        });
        section.startReading();
    }
    EXPECT_EQ(waits, 2U);
    EXPECT_EQ(readers(section), 1U);
    EXPECT_EQ(writers(section), 0U);
    section.stopReading();
    expectFree(section);
}

TEST(OCReadWriteSection, OneWriterIsLetInAtATime) {
    Sleepers sleepers;
    OCReadWriteSection section;
    section.startReading();
    Gate arrivals;
    Visitor one(section, writing, &arrivals);
    sleepers.await();
    Visitor two(section, writing, &arrivals);
    sleepers.await();
    section.stopReading();
    // Both were woken; the one that was not let in sleeps again.
    arrivals.await();
    sleepers.await();
    EXPECT_NE(one.isInside(), two.isInside());
    Visitor& inside = one.isInside() ? one : two;
    Visitor& waiting = one.isInside() ? two : one;
    inside.leave();
    waiting.awaitInside();
    waiting.leave();
    expectFree(section);
}

TEST(OCReadWriteSection, AWriterWhoseWaitFailsIsNotInsideAndHoldsNobodyBack) {
    OCReadWriteSection section;
    section.startReading();
    std::string failure;
    {
        FailingThreadCall failing(calls::pthread_cond_wait, EINVAL);
        failure = thrown<OXEvent_WaitError>([&] { section.startWriting(); });
    }
    EXPECT_EQ(failure,
              "OXEvent_WaitError: Error waiting for synchronization event (Invalid argument)");
    EXPECT_EQ(readers(section), 1U);
    EXPECT_EQ(writers(section), 0U);
    section.stopReading();
    expectFree(section);
}

TEST(OCReadWriteSection, AWriterWhoseWaitFailsLetsTheReadersInThatItHeldBack) {
    OCReadWriteSection section;
    section.startReading();
    std::unique_ptr<Visitor> reader;
    std::string failure;
    {
        Gate asleep;
        const pthread_t writer = pthread_self();
        Replacement waiting(
            calls::pthread_cond_wait,
            [&](pthread_cond_t* condition, pthread_mutex_t* mutex) {
                if (!pthread_equal(pthread_self(), writer)) {
                    asleep.raise();
                    return calls::pthread_cond_wait.original(condition, mutex);
                }
                // A reader arrives while the writer sleeps.
                pthread_mutex_unlock(mutex);
                reader = std::make_unique<Visitor>(section, reading);
                asleep.await();
                pthread_mutex_lock(mutex);
                return EINVAL;
            },
            Threads::Every);
        failure = thrown<OXEvent_WaitError>([&] { section.startWriting(); });
        reader->awaitInside();
    }
    EXPECT_EQ(failure,
              "OXEvent_WaitError: Error waiting for synchronization event (Invalid argument)");
    EXPECT_EQ(readers(section), 2U);
    reader->leave();
    section.stopReading();
    expectFree(section);
}

TEST(OCReadWriteSection, ATurnGivenToAWriterWhoseWaitFailsIsNotLeftForTheNextOne) {
    OCReadWriteSection section;
    section.startReading();
    std::string failure;
    {
        // The last reader leaves while the writer sleeps.
        Replacement waiting(calls::pthread_cond_wait, [&](pthread_cond_t*, pthread_mutex_t* mutex) {
            pthread_mutex_unlock(mutex);
            section.stopReading();
            pthread_mutex_lock(mutex);
            return EINVAL;
        });
        failure = thrown<OXEvent_WaitError>([&] { section.startWriting(); });
    }
    EXPECT_EQ(failure,
              "OXEvent_WaitError: Error waiting for synchronization event (Invalid argument)");
    expectFree(section);
    // With a reader inside a writer must wait, which fails here.
    section.startReading();
    {
        FailingThreadCall failing(calls::pthread_cond_wait, EINVAL);
        failure = thrown<OXEvent_WaitError>([&] { section.startWriting(); });
    }
    EXPECT_EQ(failure,
              "OXEvent_WaitError: Error waiting for synchronization event (Invalid argument)");
    section.stopReading();
}

TEST(OCReadWriteSection, AWriterWhoseWaitFailsLeavesTheTurnToTheOtherWriters) {
    Sleepers sleepers;
    OCReadWriteSection section;
    section.startReading();
    Visitor writer(section, writing);
    sleepers.await();
    std::string failure;
    {
        // The guard and the readers' event come before the writers' event.
        FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL, 3, 1);
        failure = thrown<OXMutex_AcquireError>([&] { section.startWriting(); });
    }
    EXPECT_EQ(failure, "OXMutex_AcquireError: Error waiting for synchronization mutex (Invalid "
                       "argument)");
    EXPECT_EQ(writers(section), 1U);
    EXPECT_FALSE(writer.isInside());
    section.stopReading();
    writer.awaitInside();
    Visitor reader(section, reading);
    sleepers.await();
    EXPECT_FALSE(reader.isInside());
    writer.leave();
    reader.awaitInside();
    reader.leave();
    expectFree(section);
}

TEST(OCReadWriteSection, AWriterReportsItsOwnFailureAlsoWhenItCannotBeWithdrawn) {
    OCReadWriteSection section;
    section.startReading();
    std::string failure;
    {
        FailingThreadCall waiting(calls::pthread_cond_wait, EINVAL);
        // The fourth mutex is the guard, taken to withdraw.
        FailingThreadCall locking(calls::pthread_mutex_lock, EPERM, 4);
        failure = thrown<OXEvent_WaitError>([&] { section.startWriting(); });
    }
    EXPECT_EQ(failure,
              "OXEvent_WaitError: Error waiting for synchronization event (Invalid argument)");
    EXPECT_EQ(writers(section), 1U);
    section.stopReading();
}

TEST(OCReadWriteSection, AReaderWhoseWaitFailsIsNotInside) {
    OCReadWriteSection section;
    section.startWriting();
    std::string failure;
    {
        FailingThreadCall failing(calls::pthread_cond_wait, EINVAL);
        failure = thrown<OXEvent_WaitError>([&] { section.startReading(); });
    }
    EXPECT_EQ(failure,
              "OXEvent_WaitError: Error waiting for synchronization event (Invalid argument)");
    EXPECT_EQ(readers(section), 0U);
    section.stopWriting();
    expectFree(section);
}

TEST(OCReadWriteSection, AMutexThatCannotBeAcquiredChangesNothing) {
    // Each operation takes the guard, then the mutex of an event.
    const auto attempt = [](unsigned long number, bool inside, unsigned int mode, bool entering) {
        OCReadWriteSection section;
        if (inside)
            section.enter(mode);
        const unsigned int readersBefore = readers(section);
        const unsigned int writersBefore = writers(section);
        std::string failure;
        {
            FailingThreadCall failing(calls::pthread_mutex_lock, EINVAL, number, 1);
            failure = thrown<OXMutex_AcquireError>([&] {
                if (entering)
                    section.enter(mode);
                else
                    section.leave(mode);
            });
        }
        EXPECT_EQ(failure, "OXMutex_AcquireError: Error waiting for synchronization mutex "
                           "(Invalid argument)");
        EXPECT_EQ(readers(section), readersBefore);
        EXPECT_EQ(writers(section), writersBefore);
        if (inside)
            section.leave(mode);
        expectFree(section);
    };
    attempt(1, false, reading, true);
    attempt(1, true, reading, false);
    attempt(1, false, writing, true);
    attempt(2, false, writing, true);
    attempt(1, true, writing, false);
    attempt(2, true, writing, false);
}

TEST(OCReadWriteSection, CreationReportsTheFailureOfEachPartAndLeavesNothing) {
    std::string guard;
    std::string event;
    unsigned long mutexesMade;
    unsigned long mutexesDestroyed;
    unsigned long conditionsDestroyed;
    {
        FailingThreadCall failing(calls::pthread_mutex_init, EAGAIN);
        guard = thrown<OXMutex_CreateError>([] { OCReadWriteSection section; });
    }
    {
        Counting making(calls::pthread_mutex_init);
        Counting destroying(calls::pthread_mutex_destroy);
        Counting destroyingConditions(calls::pthread_cond_destroy);
        FailingThreadCall failing(calls::pthread_cond_init, EAGAIN, 2);
        event = thrown<OXEvent_CreateError>([] { OCReadWriteSection section; });
        mutexesMade = making.calls();
        mutexesDestroyed = destroying.calls();
        conditionsDestroyed = destroyingConditions.calls();
    }
    EXPECT_EQ(guard, "OXMutex_CreateError: Error creating synchronization mutex (Resource "
                     "temporarily unavailable)");
    EXPECT_EQ(event, "OXEvent_CreateError: Error creating synchronization event (Resource "
                     "temporarily unavailable)");
    EXPECT_EQ(mutexesMade, 3U);
    EXPECT_EQ(mutexesDestroyed, 3U);
    EXPECT_EQ(conditionsDestroyed, 1U);
}

TEST(OCReadWriteSection, KeepsWritersAloneWhateverTheOrder) {
    OCReadWriteSection section;
    std::atomic<int> readersInside{0};
    std::atomic<int> writersInside{0};
    std::atomic<int> violations{0};
    unsigned long written = 0;
    std::vector<std::thread> threads;
    for (unsigned int seed = 1; seed <= 4; ++seed)
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            for (int i = 0; i < 1500; ++i) {
                if (random() % 3 == 0) {
                    OCReadWriteSectionLock lock(section, ReadWriteSectionModeWriting);
                    if (++writersInside != 1 || readersInside != 0)
                        ++violations;
                    ++written;
                    --writersInside;
                } else {
                    OCReadWriteSectionLock lock(section, ReadWriteSectionModeReading);
                    ++readersInside;
                    if (writersInside != 0)
                        ++violations;
                    --readersInside;
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(violations, 0);
    EXPECT_GT(written, 0U);
    expectFree(section);
}

namespace {

/// Sections that write down how they are entered and left, and can refuse it.
template<class Section>
class Recorded : public Section {
public:
    void enter(unsigned int mode) override {
        log.push_back("enter " + std::to_string(mode));
        if (refuseEntering)
            throw OXMutex_AcquireError(EINVAL);
    }
    void leave(unsigned int mode) override {
        log.push_back("leave " + std::to_string(mode));
        if (refuseLeaving)
            throw OXMutex_AcquireError(EINVAL);
    }
    Log log;
    bool refuseEntering = false;
    bool refuseLeaving = false;
};

} // namespace

TEST(OCAbstractSectionLock, HasManualEnterAndLeaveBehindTheDestructor) {
    EXPECT_EQ(sizeof(OCAbstractSectionLock), 16U);
    EXPECT_EQ(slots::slotOf(&OCAbstractSectionLock::manualEnter), 2U);
    EXPECT_EQ(slots::slotOf(&OCAbstractSectionLock::manualLeave), 3U);
    EXPECT_EQ(slots::slotCount<OCAbstractSectionLock>(), 4U);
    EXPECT_TRUE(std::is_abstract_v<OCAbstractSectionLock>);
}

TEST(OCAbstractSectionLock, PassesAnyModeOnToTheSection) {
    class Lock : public OCAbstractSectionLock {
    public:
        using OCAbstractSectionLock::OCAbstractSectionLock;
        void manualEnter() override { abstractEnter(42); }
        void manualLeave() override { abstractLeave(43); }
    };
    Recorded<OCCriticalSection> section;
    {
        Lock lock(section);
        lock.manualEnter();
        lock.manualLeave();
        lock.abstractEnter(7);
    }
    EXPECT_EQ(section.log, Log({"enter 42", "leave 43", "enter 7"}));
}

TEST(OCCriticalSectionLock, HoldsAReferenceAndAFlag) {
    EXPECT_EQ(sizeof(OCCriticalSectionLock), 24U);
    EXPECT_EQ(slots::slotOf(&OCCriticalSectionLock::manualEnter), 2U);
    EXPECT_EQ(slots::slotOf(&OCCriticalSectionLock::manualLeave), 3U);
    EXPECT_EQ(slots::slotCount<OCCriticalSectionLock>(), 4U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCCriticalSectionLock>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCCriticalSectionLock>);
}

TEST(OCCriticalSectionLock, EntersAndLeavesInModeZero) {
    Recorded<OCCriticalSection> section;
    {
        OCCriticalSectionLock lock(section);
        EXPECT_EQ(section.log, Log({"enter 0"}));
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0"}));
}

TEST(OCCriticalSectionLock, LeavesAtTheEndOnlyIfItIsEntered) {
    Recorded<OCCriticalSection> section;
    {
        OCCriticalSectionLock lock(section);
        lock.manualLeave();
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0"}));
    section.log.clear();
    {
        OCCriticalSectionLock lock(section);
        lock.manualLeave();
        lock.manualEnter();
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0", "enter 0", "leave 0"}));
}

TEST(OCCriticalSectionLock, WhatFailsChangesNothing) {
    Recorded<OCCriticalSection> section;
    section.refuseEntering = true;
    EXPECT_THROW({ OCCriticalSectionLock lock(section); }, OXMutex_AcquireError);
    EXPECT_EQ(section.log, Log({"enter 0"}));
    section.refuseEntering = false;
    section.log.clear();
    {
        OCCriticalSectionLock lock(section);
        section.refuseLeaving = true;
        EXPECT_THROW(lock.manualLeave(), OXMutex_AcquireError);
        section.refuseLeaving = false;
        lock.manualLeave();
        section.refuseEntering = true;
        EXPECT_THROW(lock.manualEnter(), OXMutex_AcquireError);
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0", "leave 0", "enter 0"}));
}

TEST(OCCriticalSectionLock, LeavesAtTheEndAfterAManualLeaveThatFailed) {
    Recorded<OCCriticalSection> section;
    {
        OCCriticalSectionLock lock(section);
        section.refuseLeaving = true;
        EXPECT_THROW(lock.manualLeave(), OXMutex_AcquireError);
        section.refuseLeaving = false;
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0", "leave 0"}));
}

TEST(OCCriticalSectionLock, TheDestructorDropsAFailure) {
    Recorded<OCCriticalSection> section;
    {
        OCCriticalSectionLock lock(section);
        section.refuseLeaving = true;
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0"}));
}

TEST(OCReadWriteSectionLock, HoldsAReferenceAFlagAndAMode) {
    EXPECT_EQ(sizeof(OCReadWriteSectionLock), 24U);
    EXPECT_EQ(slots::slotOf(&OCReadWriteSectionLock::manualEnter), 2U);
    EXPECT_EQ(slots::slotOf(&OCReadWriteSectionLock::manualLeave), 3U);
    EXPECT_EQ(slots::slotCount<OCReadWriteSectionLock>(), 4U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCReadWriteSectionLock>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCReadWriteSectionLock>);
    OCReadWriteSection section;
    const OCReadWriteSectionLock lock(section, static_cast<OEReadWriteSectionMode>(9));
    bool entered;
    int mode;
    std::memcpy(&entered, reinterpret_cast<const char*>(&lock) + 16, sizeof entered);
    std::memcpy(&mode, reinterpret_cast<const char*>(&lock) + 20, sizeof mode);
    EXPECT_TRUE(entered);
    EXPECT_EQ(mode, 9);
}

TEST(OCReadWriteSectionLock, EntersAndLeavesInItsModeThroughout) {
    for (const unsigned int mode : {0U, 1U, 9U}) {
        const std::string number = std::to_string(mode);
        Recorded<OCReadWriteSection> section;
        {
            OCReadWriteSectionLock lock(section, static_cast<OEReadWriteSectionMode>(mode));
            EXPECT_EQ(section.log, Log({"enter " + number}));
            lock.manualLeave();
            lock.manualEnter();
        }
        EXPECT_EQ(section.log, Log({"enter " + number, "leave " + number, "enter " + number,
                                    "leave " + number}));
    }
}

TEST(OCReadWriteSectionLock, DoesNotLeaveAgainAfterManualLeave) {
    Recorded<OCReadWriteSection> section;
    {
        OCReadWriteSectionLock lock(section, ReadWriteSectionModeWriting);
        lock.manualLeave();
    }
    EXPECT_EQ(section.log, Log({"enter 1", "leave 1"}));
}

TEST(OCReadWriteSectionLock, WhatFailsChangesNothing) {
    Recorded<OCReadWriteSection> section;
    section.refuseEntering = true;
    EXPECT_THROW({ OCReadWriteSectionLock lock(section, ReadWriteSectionModeReading); },
                 OXMutex_AcquireError);
    EXPECT_EQ(section.log, Log({"enter 0"}));
    section.refuseEntering = false;
    section.log.clear();
    {
        OCReadWriteSectionLock lock(section, ReadWriteSectionModeReading);
        section.refuseLeaving = true;
        EXPECT_THROW(lock.manualLeave(), OXMutex_AcquireError);
        section.refuseLeaving = false;
        lock.manualLeave();
        section.refuseEntering = true;
        EXPECT_THROW(lock.manualEnter(), OXMutex_AcquireError);
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0", "leave 0", "enter 0"}));
}

TEST(OCReadWriteSectionLock, LeavesAtTheEndAfterAManualLeaveThatFailed) {
    Recorded<OCReadWriteSection> section;
    {
        OCReadWriteSectionLock lock(section, ReadWriteSectionModeReading);
        section.refuseLeaving = true;
        EXPECT_THROW(lock.manualLeave(), OXMutex_AcquireError);
        section.refuseLeaving = false;
    }
    EXPECT_EQ(section.log, Log({"enter 0", "leave 0", "leave 0"}));
}

TEST(OCReadWriteSectionLock, TheDestructorDropsAFailure) {
    Recorded<OCReadWriteSection> section;
    {
        OCReadWriteSectionLock lock(section, ReadWriteSectionModeWriting);
        section.refuseLeaving = true;
    }
    EXPECT_EQ(section.log, Log({"enter 1", "leave 1"}));
}
