#include "support/AllocationSweep.h"

#include "OCCountdown.h"
#include "OCEvent.h"
#include "OCMutex.h"
#include "OCSection.h"
#include "OCStopwatch.h"
#include "OCThreadPool.h"

#include <gtest/gtest.h>

namespace {

TEST(AllocationSweep, Synchronisation) {
    OCCriticalSection critical;
    OCReadWriteSection shared;
    OCMutex mutex;
    const auto make = sweep::results();
    make("mutex", [](auto&) { delete new OCMutex; });
    make("mutex lock", [&](auto&) { delete new OCMutexLock(mutex); });
    make("event", [](auto&) { delete new OCEvent; });
    make("critical section", [](auto&) { delete new OCCriticalSection; });
    make("critical section lock", [&](auto&) { delete new OCCriticalSectionLock(critical); });
    make("read/write section", [](auto&) { delete new OCReadWriteSection; });
    make("read/write section lock",
         [&](auto&) { delete new OCReadWriteSectionLock(shared, ReadWriteSectionModeReading); });
    make("countdown", [](auto&) { delete new OCCountdown(7); });
    make("stopwatch", [](auto&) { delete new OCStopwatch; });
    make("pool parameters", [](auto&) { delete new OCThreadPoolParameters; });
    make("pool job", [](auto&) { delete new OCThreadPoolJob; });
    // What was to be locked is free again.
    EXPECT_EQ(0, pthread_mutex_trylock(mutex.internalStructure()));
    mutex.releaseMutex();
    OCReadWriteSectionLock writing(shared, ReadWriteSectionModeWriting);
}

unsigned int answer(OCObject*) {
    return 7;
}

TEST(AllocationSweep, ThreadPool) {
    // A worker for which there is no memory is none, and a job that finds no worker is refused.
    OCThreadPoolParameters parameters;
    parameters.setInitialSize(0);
    unsigned long refusals = 0;
    for (unsigned long number = 1;; ++number) {
        OCThreadPool pool(parameters);
        bool refused = false;
        bool triggered = false;
        {
            fault::HeapFault fault(number);
            try {
                pool.execute(OCThreadPoolJob(answer));
            } catch (const OXThreadPool_JobRefused&) {
                refused = true;
            }
            triggered = fault.triggered();
        }
        // The heap of a thread sanitizer is asked for more than the library's own requests.
        if (!fault::sanitized || !triggered) {
            EXPECT_EQ(triggered, refused);
        }
        EXPECT_EQ(refused ? 0U : 1U, pool.getWorkers().getCount());
        refusals += refused;
        if (!triggered)
            break;
    }
    EXPECT_LE(fault::sanitized ? 1UL : 2UL, refusals);
}

} // namespace
