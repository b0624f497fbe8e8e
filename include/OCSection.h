#ifndef ORVABASE_OCSECTION_H
#define ORVABASE_OCSECTION_H

#include "OCEvent.h"

/// How a read/write section is entered. It ignores any other value.
enum OEReadWriteSectionMode : int {
    ReadWriteSectionModeReading = 0,
    ReadWriteSectionModeWriting = 1
};

/// A part of a program that threads enter and leave, by rules that the derived class makes. The
/// mode says how, where there is more than one way.
class ORVABASE_EXPORT OCAbstractSection : public OCObject {
public:
    OCAbstractSection() noexcept = default;
    OCAbstractSection(const OCAbstractSection&) = delete;
    OCAbstractSection& operator=(const OCAbstractSection&) = delete;
    ~OCAbstractSection() override;

    /// Waits until the section may be entered and enters it.
    virtual void enter(unsigned int mode) = 0;
    /// Leaves the section, which must have been entered in the same mode.
    virtual void leave(unsigned int mode) = 0;
};

/// A section with one thread inside. That thread may enter again and leaves as often.
///
///     OCCriticalSection section;
///     OCCriticalSectionLock lock(section);   // left at the end of the scope
class ORVABASE_EXPORT OCCriticalSection : public OCAbstractSection {
public:
    /// @throws OXMutex_CreateError with the system's text.
    OCCriticalSection();
    ~OCCriticalSection() noexcept override;

    /// The mode is ignored.
    /// @throws OXMutex_AcquireError with the system's text.
    void enter(unsigned int mode) override;
    /// The mode is ignored.
    void leave(unsigned int mode) override;

private:
    OCMutex mutex;
};

/// A section with many readers or one writer inside.
///
/// Writers come first: as soon as one waits, no new reader gets in, and a writer hands over to the
/// next writer before the readers get back in. So readers can starve while writers keep arriving.
///
/// Note: a writer that enters again waits for itself, and so does a reader that wants to become a
/// writer; neither is detected. Leaving a section that was not entered spoils its counters.
///
///     OCReadWriteSection section;
///     OCReadWriteSectionLock lock(section, ReadWriteSectionModeReading);
class ORVABASE_EXPORT OCReadWriteSection : public OCAbstractSection {
public:
    /// @throws OXMutex_CreateError, OXEvent_CreateError, each with the system's text.
    OCReadWriteSection();
    ~OCReadWriteSection() noexcept override;

    /// Enters as a reader (mode 0) or as the writer (mode 1); does nothing for any other mode.
    /// @throws what the mutex and the events throw; the section is then not entered.
    void enter(unsigned int mode) override;
    /// Leaves as a reader (mode 0) or as the writer (mode 1); does nothing for any other mode.
    /// @throws what the mutex and the events throw.
    void leave(unsigned int mode) override;

    /// What `enter` does for mode 0: waits while a writer is inside or waiting.
    void startReading();
    /// What `enter` does for mode 1: keeps new readers out and waits until nobody is inside.
    void startWriting();
    /// What `leave` does for mode 0: the last reader lets a waiting writer in.
    void stopReading();
    /// What `leave` does for mode 1: lets the next writer in, or all readers if none waits.
    void stopWriting();

private:
    void withdrawWriter() noexcept;

    OCCriticalSection guard;
    OCEvent readersMayEnter;
    OCEvent writerMayEnter;
    unsigned int readers;
    unsigned int writers;
};

/// Keeps a section entered for the length of a scope, and can leave and enter it by hand meanwhile.
/// It refers to the section, which must outlive it, and belongs to one thread.
class ORVABASE_EXPORT OCAbstractSectionLock : public OCObject {
public:
    /// A lock of `target`, which is not entered yet.
    explicit OCAbstractSectionLock(OCAbstractSection& target) noexcept : section(target) {}
    OCAbstractSectionLock(const OCAbstractSectionLock&) = delete;
    OCAbstractSectionLock& operator=(const OCAbstractSectionLock&) = delete;
    ~OCAbstractSectionLock() override;

    /// Enters the section again after `manualLeave`.
    virtual void manualEnter() = 0;
    /// Leaves the section before the end of the scope.
    virtual void manualLeave() = 0;

    /// Call the section's `enter` and `leave`; the lock takes no notice of it.
    void abstractEnter(unsigned int mode) { section.enter(mode); }
    void abstractLeave(unsigned int mode) { section.leave(mode); }

private:
    OCAbstractSection& section;
};

/// The scoped lock of a critical section.
class ORVABASE_EXPORT OCCriticalSectionLock : public OCAbstractSectionLock {
public:
    /// Enters `target`.
    /// @throws OXMutex_AcquireError with the system's text.
    explicit OCCriticalSectionLock(OCCriticalSection& target);
    /// Leaves the section if it is entered.
    ~OCCriticalSectionLock() noexcept override;

    /// Enters.
    ///
    /// Note: entering twice, as the recursive section allows, is undone only once at the end.
    /// @throws OXMutex_AcquireError with the system's text.
    void manualEnter() override;
    /// Leaves.
    void manualLeave() override;

private:
    bool entered;
};

/// The scoped lock of a read/write section, always in the mode it was made with.
class ORVABASE_EXPORT OCReadWriteSectionLock : public OCAbstractSectionLock {
public:
    /// Enters `target` in `sectionMode`.
    /// @throws what the section throws.
    OCReadWriteSectionLock(OCReadWriteSection& target, OEReadWriteSectionMode sectionMode);
    /// Leaves the section if it is entered; an exception is dropped.
    ~OCReadWriteSectionLock() noexcept override;

    /// Enters, in the mode of the lock. The section must have been left by `manualLeave`.
    /// @throws what the section throws; the lock then counts as not entered.
    void manualEnter() override;
    /// Leaves, in the mode of the lock.
    /// @throws what the section throws; the lock then counts as entered.
    void manualLeave() override;

private:
    bool entered;
    OEReadWriteSectionMode mode;
};

#endif
