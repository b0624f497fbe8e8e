#include "OCCountdown.h"
#include "OCSection.h"
#include "OCStopwatch.h"
#include "OCThread.h"

#include "support/FaultInjection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>

namespace {

/// Making an exception with a detail takes memory: whichever request fails, that is the failure
/// reported, and nothing is left behind.
template<class Exception>
void expectCleanFailure() {
    EXPECT_EQ(fault::blocksLeftBy(
                  [] { EXPECT_GE(fault::failEachRequest([] { Exception made(ENOENT); }), 1U); }),
              0);
}

} // namespace

TEST(ThreadExceptions, MakingOneInExhaustedMemoryIsAnAllocationFailure) {
    expectCleanFailure<OXMutex_AcquireError>();
    expectCleanFailure<OXMutex_CreateError>();
    expectCleanFailure<OXEvent_CreateError>();
    expectCleanFailure<OXEvent_SignalError>();
    expectCleanFailure<OXEvent_TimeError>();
    expectCleanFailure<OXEvent_WaitError>();
}

TEST(ThreadExceptions, ThoseWithoutDetailsTakeNoMemory) {
    EXPECT_EQ(fault::failEachRequest([] {
                  OXThread_CreateError create;
                  OXThread_WaitError wait;
                  OXCountdown_AcquireTimeError countdown;
                  OXStopwatch_QueryValueError stopwatch;
              }),
              0U);
}

TEST(ThreadExceptions, ObjectsAreDeletedThroughAnyOfTheirBases) {
    OCMutex mutex;
    OCCriticalSection critical;
    OCReadWriteSection readWrite;
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  for (OCObject* object : std::initializer_list<OCObject*>{
                           new OXMutex_AcquireError(EIO), new OXMutex_CreateError(EIO),
                           new OXEvent_CreateError(EIO), new OXEvent_SignalError(EIO),
                           new OXEvent_TimeError(EIO), new OXEvent_WaitError(EIO),
                           new OXThread_CreateError, new OXThread_WaitError,
                           new OXCountdown_AcquireTimeError, new OXStopwatch_QueryValueError,
                           new OCMutex, new OCMutexLock(mutex), new OCEvent, new OCCriticalSection,
                           new OCReadWriteSection, new OCCriticalSectionLock(critical),
                           new OCReadWriteSectionLock(readWrite, ReadWriteSectionModeReading),
                           new OCCountdown(5), new OCStopwatch})
                      delete object;
              }),
              0);
}

TEST(ThreadExceptions, AreCaughtByTheirFamilies) {
    EXPECT_THROW(throw OXMutex_AcquireError(EINVAL), OXMutex);
    EXPECT_THROW(throw OXEvent_WaitError(EINVAL), OXEvent);
    EXPECT_THROW(throw OXThread_WaitError(), OXThread);
    EXPECT_THROW(throw OXCountdown_AcquireTimeError(), OXCountdown);
    EXPECT_THROW(throw OXStopwatch_QueryValueError(), OXStopwatch);
    EXPECT_THROW(throw OXThread_WaitError(), OXAutoException);
}

TEST(ThreadExceptions, SynchronisationTakesNoMemory) {
    // Mutexes, events and sections live in their objects: an operation on them cannot run out.
    EXPECT_EQ(fault::failEachRequest([] {
                  OCReadWriteSection section;
                  { OCReadWriteSectionLock lock(section, ReadWriteSectionModeReading); }
                  { OCReadWriteSectionLock lock(section, ReadWriteSectionModeWriting); }
                  OCCriticalSection critical;
                  OCCriticalSectionLock lock(critical);
                  OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
                  event.signalEvent();
                  event.waitFor();
                  event.waitFor(0);
                  OCCountdown(0).timeout();
                  OCStopwatch().getTime();
              }),
              0U);
}
