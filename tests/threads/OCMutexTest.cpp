#include "OCMutex.h"

#include "support/FaultInjection.h"
#include "support/Gate.h"
#include "support/Slots.h"
#include "support/ThreadCalls.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

/// What another thread gets when it tries to take the mutex; it gives it back at once.
int tryFromAnotherThread(OCMutex& mutex) {
    int result = -1;
    std::thread([&] {
        result = pthread_mutex_trylock(mutex.internalStructure());
        if (result == 0)
            pthread_mutex_unlock(mutex.internalStructure());
    }).join();
    return result;
}

} // namespace

TEST(OCMutex, HoldsAFlagAndTheSystemsMutex) {
    EXPECT_EQ(sizeof(OCMutex), 56U);
    EXPECT_EQ(slots::slotCount<OCMutex>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCMutex>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCMutex>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCMutex>);
    OCMutex mutex;
    EXPECT_EQ(reinterpret_cast<char*>(mutex.internalStructure()) - reinterpret_cast<char*>(&mutex),
              16);
    int created;
    std::memcpy(&created, reinterpret_cast<char*>(&mutex) + 8, sizeof created);
    EXPECT_EQ(created, 1);
}

TEST(OCMutex, IsZeroBeforeItIsCreated) {
    alignas(OCMutex) unsigned char memory[sizeof(OCMutex)];
    std::memset(memory, 0xFF, sizeof memory);
    bool zero = false;
    {
        Replacement creating(calls::pthread_mutex_init,
                             [&](pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
                                 const unsigned char zeros[sizeof(pthread_mutex_t)] = {};
                                 // Of every byte.
                                 // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-exp42-c,cert-flp37-c)
                                 zero = std::memcmp(mutex, zeros, sizeof zeros) == 0;
                                 return calls::pthread_mutex_init.original(mutex, attributes);
                             });
        const OCMutex* const mutex = new (memory) OCMutex;
        mutex->~OCMutex();
    }
    EXPECT_TRUE(zero);
}

TEST(OCMutex, IsCreatedRecursive) {
    int type = -1;
    {
        Replacement setting(
            calls::pthread_mutexattr_settype, [&](pthread_mutexattr_t* attributes, int wanted) {
                type = wanted;
                return calls::pthread_mutexattr_settype.original(attributes, wanted);
            });
        OCMutex mutex;
    }
    EXPECT_EQ(type, PTHREAD_MUTEX_RECURSIVE);
}

TEST(OCMutex, AThreadThatAcquiresTwiceReleasesTwice) {
    OCMutex mutex;
    EXPECT_EQ(tryFromAnotherThread(mutex), 0);
    mutex.acquireMutex();
    mutex.acquireMutex();
    EXPECT_EQ(tryFromAnotherThread(mutex), EBUSY);
    EXPECT_EQ(mutex.releaseMutex(), 0);
    EXPECT_EQ(tryFromAnotherThread(mutex), EBUSY);
    EXPECT_EQ(mutex.releaseMutex(), 0);
    EXPECT_EQ(tryFromAnotherThread(mutex), 0);
}

TEST(OCMutex, WaitsUntilTheOtherThreadReleases) {
    OCMutex mutex;
    Gate acquiring;
    int order = 0;
    int mine = 0;
    int others = 0;
    mutex.acquireMutex();
    std::thread other([&] {
        acquiring.raise();
        mutex.acquireMutex();
        others = ++order;
        mutex.releaseMutex();
    });
    acquiring.await();
    mine = ++order;
    mutex.releaseMutex();
    other.join();
    EXPECT_EQ(mine, 1);
    EXPECT_EQ(others, 2);
}

TEST(OCMutex, LetsOneThreadInAtATime) {
    OCMutex mutex;
    unsigned long counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 5000; ++n) {
                OCMutexLock lock(mutex);
                OCMutexLock again(mutex);
                ++counter;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(counter, 20000U);
}

TEST(OCMutex, EachStepOfCreationReportsItsFailure) {
    const char* expected =
        "OXMutex_CreateError: Error creating synchronization mutex (Cannot allocate memory)";
    std::string attributes;
    std::string type;
    std::string mutex;
    unsigned long destroyed;
    {
        Counting destroying(calls::pthread_mutex_destroy);
        {
            FailingThreadCall failing(calls::pthread_mutexattr_init, ENOMEM);
            attributes = thrown<OXMutex_CreateError>([] { OCMutex failed; });
        }
        {
            FailingThreadCall failing(calls::pthread_mutexattr_settype, ENOMEM);
            type = thrown<OXMutex_CreateError>([] { OCMutex failed; });
        }
        {
            FailingThreadCall failing(calls::pthread_mutex_init, ENOMEM);
            mutex = thrown<OXMutex_CreateError>([] { OCMutex failed; });
        }
        destroyed = destroying.calls();
    }
    EXPECT_EQ(attributes, expected);
    EXPECT_EQ(type, expected);
    EXPECT_EQ(mutex, expected);
    EXPECT_EQ(destroyed, 0U);
}

TEST(OCMutex, AFailingAcquisitionThrowsWithTheSystemsText) {
    OCMutex mutex;
    std::string direct;
    std::string scoped;
    unsigned long unlocked;
    {
        FailingThreadCall failing(calls::pthread_mutex_lock, EAGAIN);
        direct = thrown<OXMutex_AcquireError>([&] { mutex.acquireMutex(); });
    }
    {
        FailingThreadCall failing(calls::pthread_mutex_lock, EAGAIN);
        Counting unlocking(calls::pthread_mutex_unlock);
        scoped = thrown<OXMutex_AcquireError>([&] { OCMutexLock lock(mutex); });
        unlocked = unlocking.calls();
    }
    const char* expected = "OXMutex_AcquireError: Error waiting for synchronization mutex "
                           "(Resource temporarily unavailable)";
    EXPECT_EQ(direct, expected);
    EXPECT_EQ(scoped, expected);
    EXPECT_EQ(unlocked, 0U);
    EXPECT_EQ(tryFromAnotherThread(mutex), 0);
}

TEST(OCMutex, TheResultOfAReleaseIsReturned) {
    OCMutex mutex;
    mutex.acquireMutex();
    int result;
    {
        FailingThreadCall failing(calls::pthread_mutex_unlock, EPERM);
        result = mutex.releaseMutex();
    }
    EXPECT_EQ(result, EPERM);
    EXPECT_EQ(mutex.releaseMutex(), 0);
}

TEST(OCMutex, IsDestroyedOnce) {
    unsigned long byHand;
    unsigned long atTheEnd;
    {
        Counting destroying(calls::pthread_mutex_destroy);
        {
            OCMutex mutex;
            mutex.destroyMutex();
            mutex.destroyMutex();
            mutex.destroy();
            byHand = destroying.calls();
        }
        { OCMutex mutex; }
        atTheEnd = destroying.calls();
    }
    EXPECT_EQ(byHand, 1U);
    EXPECT_EQ(atTheEnd, 2U);
}

TEST(OCMutex, CanBeCreatedAgain) {
    OCMutex mutex;
    mutex.destroyMutex();
    mutex.createMutex();
    mutex.acquireMutex();
    mutex.acquireMutex();
    EXPECT_EQ(mutex.releaseMutex(), 0);
    EXPECT_EQ(mutex.releaseMutex(), 0);
}

#if !defined(__SANITIZE_THREAD__) // which stops at such misuse
TEST(OCMutex, ADestroyedMutexCannotBeAcquired) {
    OCMutex mutex;
    mutex.destroyMutex();
    EXPECT_EQ(thrown<OXMutex_AcquireError>([&] { mutex.acquireMutex(); }),
              "OXMutex_AcquireError: Error waiting for synchronization mutex (Invalid argument)");
}

TEST(OCMutex, OnlyTheHolderCanRelease) {
    OCMutex mutex;
    EXPECT_EQ(mutex.releaseMutex(), EPERM);
}
#endif

TEST(OCMutexLock, HoldsTheMutexForTheScope) {
    EXPECT_EQ(sizeof(OCMutexLock), 16U);
    EXPECT_EQ(slots::slotCount<OCMutexLock>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCMutexLock>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCMutexLock>);
    OCMutex mutex;
    {
        OCMutexLock lock(mutex);
        EXPECT_EQ(tryFromAnotherThread(mutex), EBUSY);
        { OCMutexLock inner(mutex); }
        EXPECT_EQ(tryFromAnotherThread(mutex), EBUSY);
    }
    EXPECT_EQ(tryFromAnotherThread(mutex), 0);
}

TEST(OCMutexLock, LetsTheMutexGoWhenAnExceptionLeavesTheScope) {
    OCMutex mutex;
    try {
        OCMutexLock lock(mutex);
        throw 7;
    } catch (int) {
    }
    EXPECT_EQ(tryFromAnotherThread(mutex), 0);
}

TEST(OXMutex, LeavesStoreTheirClassMessageAndTheSystemsText) {
    EXPECT_EQ(thrown<OXMutex_AcquireError>([] { throw OXMutex_AcquireError(EDEADLK); }),
              "OXMutex_AcquireError: Error waiting for synchronization mutex (Resource deadlock "
              "avoided)");
    EXPECT_EQ(thrown<OXMutex_CreateError>([] { throw OXMutex_CreateError(EPERM); }),
              "OXMutex_CreateError: Error creating synchronization mutex (Operation not "
              "permitted)");
    EXPECT_EQ(OXMutex_AcquireError(EPERM).getDetails().getCount(), 1U);
    EXPECT_EQ(OXMutex_CreateError(EPERM).getDetails().getCount(), 1U);
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXMutex>));
    EXPECT_TRUE((std::is_base_of_v<OXMutex, OXMutex_AcquireError>));
    EXPECT_TRUE((std::is_base_of_v<OXMutex, OXMutex_CreateError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXMutex>);
    EXPECT_EQ(sizeof(OXMutex_AcquireError), sizeof(OXAutoException));
}
