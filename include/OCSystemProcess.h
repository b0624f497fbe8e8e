#ifndef ORVABASE_OCSYSTEMPROCESS_H
#define ORVABASE_OCSYSTEMPROCESS_H

#include "OCFilePath.h"
#include "OXSystem.h"

#include <sched.h>

/// A set of processors, numbered from 0 to 1023.
///
/// A value: copies are independent. For use by one thread at a time.
///
///     OCSystemProcessAffinity processors;
///     processors.setSwitch(0, true);
///     processors.setSwitch(2, true);
///     OCSystemProcess::setAffinity(processors.getAffinity());   // only the first and the third
class ORVABASE_EXPORT OCSystemProcessAffinity : public OCObject {
public:
    /// No processor.
    OCSystemProcessAffinity() noexcept { clear(); }
    /// The processors of a set in the system's form.
    OCSystemProcessAffinity(const cpu_set_t& processors) noexcept : affinity(processors) {}
    OCSystemProcessAffinity(const OCSystemProcessAffinity&) noexcept = default;
    OCSystemProcessAffinity& operator=(const OCSystemProcessAffinity&) noexcept = default;
    ~OCSystemProcessAffinity() noexcept override;

    /// Takes all processors out of the set.
    void clear() noexcept;
    /// A copy of the set in the system's form.
    cpu_set_t getAffinity() const noexcept { return affinity; }
    /// Whether the processor is in the set; false for a number above 1023.
    bool getSwitch(unsigned int processor) const noexcept;
    /// Puts a processor into the set or takes it out. Numbers above 1023 are ignored.
    void setSwitch(unsigned int processor, bool on) noexcept;

private:
    cpu_set_t affinity;
};

/// The running process: its identifiers, its processors, where it runs and what it was started
/// from, its user and its way into the background. It cannot be instantiated.
///
/// What is changed is changed for the process as a whole, except the affinity, which is the calling
/// thread's.
///
///     OCFilePath directory = OCSystemProcess::locateCurrentExecutable().removeFilename();
class ORVABASE_EXPORT OCSystemProcess {
public:
    OCSystemProcess() = delete;

    /// The number of the process, and those of its user and its group.
    static int getIdentifier() noexcept;
    static unsigned int getUserIdentifier() noexcept;
    static unsigned int getEffectiveUserIdentifier() noexcept;
    static unsigned int getGroupIdentifier() noexcept;

    /// Makes the process another user's. Without privileges only the process's own users are
    /// possible; a privileged process cannot get back.
    /// @throws OXSystemProcess_SetUserIdentifierError with the system's text.
    static void setUserIdentifier(unsigned int identifier);
    /// Makes the process another group's; call it before the user is changed.
    /// @throws OXSystemProcess_SetGroupIdentifierError with the system's text.
    static void setGroupIdentifier(unsigned int identifier);

    /// The processors that the calling thread may run on.
    /// @throws OXSystemProcess_GetAffinityError, for one on machines with more than 1024
    /// processors.
    static cpu_set_t getAffinity();
    /// Keeps the calling thread, and threads that it starts, on these processors.
    /// @throws OXSystemProcess_SetAffinityError when none of them can be used.
    static void setAffinity(const cpu_set_t& affinity);

    /// The current directory.
    /// @throws OXSystemProcess_LocateCurrentDirectoryError when it has been removed, cannot be read
    /// or has a path of 4096 bytes or more.
    static OCFilePath locateCurrentDirectory();
    /// The path of the program's file, as the process was started: an absolute path given then, or
    /// else the directory of that time joined with the relative path. Without a call of
    /// `OCSystemProcessProperties::initialize` it is `guessCurrentExecutable()`.
    ///
    /// Note: a program that was found by `PATH` was started as its bare name, so the result may not
    /// exist.
    /// @throws OXSystemProcess_LocateCurrentExecutableError
    static OCFilePath locateCurrentExecutable();
    /// The path of the program's file as the system knows it, links resolved. The system marks a
    /// file that is not there any more by ` (deleted)` behind the path; a path longer than 4096
    /// bytes is cut there.
    /// @throws OXSystemProcess_LocateCurrentExecutableError
    static OCFilePath guessCurrentExecutable();

    /// Continues in a child process that is in a session of its own, with descriptors 0, 1 and 2
    /// closed and a file mode mask of 027. The result is 1 in the child; in the parent it is 2, or
    /// 0 when there is no child.
    ///
    /// Note: the parent has to end by itself. The current directory stays.
    static int daemonize();
};

/// What the process was started as and where, for `OCSystemProcess::locateCurrentExecutable`. It
/// cannot be instantiated.
///
/// `initialize` is for the beginning of `main`, before other threads start and the directory is
/// changed; nothing in the library calls it. There is no lock.
///
///     int main(int argc, char** argv) {
///         OCSystemProcessProperties::initialize(argc, argv);
class ORVABASE_EXPORT OCSystemProcessProperties {
public:
    OCSystemProcessProperties() = delete;

    /// Keeps `argv[0]` and the current directory.
    /// @throws OXSystemProcess_LocateCurrentDirectoryError; `argv[0]` is kept then.
    static void initialize(int argc, char** argv);
    /// Keeps `argv[0]`. Without arguments, or if it has 4096 characters or more, what was kept
    /// before stays.
    static void initializeStartedAs(int argc, char** argv) noexcept;
    /// Keeps the current directory.
    /// @throws OXSystemProcess_LocateCurrentDirectoryError; what was kept before stays then.
    static void initializeStartedFrom();

    /// What was kept: true and the path, or false with `path` untouched when nothing was.
    static bool queryStartedAs(OCFilePath& path);
    static bool queryStartedFrom(OCFilePath& path);
};

/// The family of the failures of `OCSystemProcess`.
class ORVABASE_EXPORT OXSystemProcess : public OXSystem {
public:
    ~OXSystemProcess() noexcept override;

protected:
    OXSystemProcess();
};

/// "Error getting process affinity".
class ORVABASE_EXPORT OXSystemProcess_GetAffinityError : public OXSystemProcess {
public:
    OXSystemProcess_GetAffinityError();
    ~OXSystemProcess_GetAffinityError() noexcept override;
};

/// "Error setting process affinity".
class ORVABASE_EXPORT OXSystemProcess_SetAffinityError : public OXSystemProcess {
public:
    OXSystemProcess_SetAffinityError();
    ~OXSystemProcess_SetAffinityError() noexcept override;
};

/// "Error locating current directory".
class ORVABASE_EXPORT OXSystemProcess_LocateCurrentDirectoryError : public OXSystemProcess {
public:
    OXSystemProcess_LocateCurrentDirectoryError();
    ~OXSystemProcess_LocateCurrentDirectoryError() noexcept override;
};

/// "Error locating current executable".
class ORVABASE_EXPORT OXSystemProcess_LocateCurrentExecutableError : public OXSystemProcess {
public:
    OXSystemProcess_LocateCurrentExecutableError();
    ~OXSystemProcess_LocateCurrentExecutableError() noexcept override;
};

/// "Error setting group identifier", with the system's text.
class ORVABASE_EXPORT OXSystemProcess_SetGroupIdentifierError : public OXSystemProcess {
public:
    explicit OXSystemProcess_SetGroupIdentifierError(unsigned int code);
    ~OXSystemProcess_SetGroupIdentifierError() noexcept override;
};

/// "Error setting user identifier", with the system's text.
class ORVABASE_EXPORT OXSystemProcess_SetUserIdentifierError : public OXSystemProcess {
public:
    explicit OXSystemProcess_SetUserIdentifierError(unsigned int code);
    ~OXSystemProcess_SetUserIdentifierError() noexcept override;
};

#endif
