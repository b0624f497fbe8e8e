#include "OCSection.h"

OCAbstractSection::~OCAbstractSection() = default;

OCCriticalSection::OCCriticalSection() = default;
OCCriticalSection::~OCCriticalSection() noexcept = default;

void OCCriticalSection::enter(unsigned int) {
    mutex.acquireMutex();
}

void OCCriticalSection::leave(unsigned int) {
    mutex.releaseMutex();
}

OCReadWriteSection::OCReadWriteSection()
    : readersMayEnter(EventStateSignalled, EventTypeManualReset),
      writerMayEnter(EventStateNotSignalled, EventTypeAutoReset), readers(0), writers(0) {}

OCReadWriteSection::~OCReadWriteSection() noexcept = default;

void OCReadWriteSection::enter(unsigned int mode) {
    if (mode == ReadWriteSectionModeReading)
        startReading();
    else if (mode == ReadWriteSectionModeWriting)
        startWriting();
}

void OCReadWriteSection::leave(unsigned int mode) {
    if (mode == ReadWriteSectionModeReading)
        stopReading();
    else if (mode == ReadWriteSectionModeWriting)
        stopWriting();
}

void OCReadWriteSection::startReading() {
    OCCriticalSectionLock lock(guard);
    while (writers != 0) {
        lock.manualLeave();
        readersMayEnter.waitFor();
        lock.manualEnter();
    }
    ++readers;
}

void OCReadWriteSection::startWriting() {
    {
        OCCriticalSectionLock lock(guard);
        readersMayEnter.resetEvent();
        ++writers;
        if (readers == 0 && writers < 2)
            return;
    }
    try {
        writerMayEnter.waitFor();
    } catch (...) {
        withdrawWriter();
        throw;
    }
}

void OCReadWriteSection::stopReading() {
    OCCriticalSectionLock lock(guard);
    // Whoever is let in here finds the counters right: they are read under the guard only.
    if (readers == 1 && writers != 0)
        writerMayEnter.signalEvent();
    --readers;
}

void OCReadWriteSection::stopWriting() {
    OCCriticalSectionLock lock(guard);
    if (writers != 1)
        writerMayEnter.signalEvent();
    else
        readersMayEnter.signalEvent();
    --writers;
}

/// Takes a writer back whose wait failed. If it was the last one, a turn that was meant for it must
/// not be left for the next writer, and the readers may enter again.
void OCReadWriteSection::withdrawWriter() noexcept {
    try {
        OCCriticalSectionLock lock(guard);
        if (--writers == 0) {
            writerMayEnter.resetEvent();
            readersMayEnter.signalEvent();
        }
    } catch (...) {
    }
}

OCAbstractSectionLock::~OCAbstractSectionLock() = default;

OCCriticalSectionLock::OCCriticalSectionLock(OCCriticalSection& target)
    : OCAbstractSectionLock(target), entered(true) {
    abstractEnter(0);
}

OCCriticalSectionLock::~OCCriticalSectionLock() noexcept {
    try {
        if (entered)
            abstractLeave(0);
    } catch (...) {
    }
}

void OCCriticalSectionLock::manualEnter() {
    abstractEnter(0);
    entered = true;
}

void OCCriticalSectionLock::manualLeave() {
    abstractLeave(0);
    entered = false;
}

OCReadWriteSectionLock::OCReadWriteSectionLock(OCReadWriteSection& target,
                                               OEReadWriteSectionMode sectionMode)
    : OCAbstractSectionLock(target), entered(true), mode(sectionMode) {
    abstractEnter(static_cast<unsigned int>(mode));
}

OCReadWriteSectionLock::~OCReadWriteSectionLock() noexcept {
    try {
        if (entered)
            abstractLeave(static_cast<unsigned int>(mode));
    } catch (...) {
    }
}

void OCReadWriteSectionLock::manualEnter() {
    abstractEnter(static_cast<unsigned int>(mode));
    entered = true;
}

void OCReadWriteSectionLock::manualLeave() {
    abstractLeave(static_cast<unsigned int>(mode));
    entered = false;
}
