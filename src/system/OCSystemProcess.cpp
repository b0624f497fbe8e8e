#include "OCSystemProcess.h"

#include "OCMemory.h"
#include "OCSystemError.h"

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned long pathSize = 4096;

/// What the process was started as and from; empty until it is told, which is once.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): the process has one of each
char startedAs[pathSize];
char startedFrom[pathSize];
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

constexpr unsigned int processorCount = CPU_SETSIZE;
static_assert(processorCount == 1024 && sizeof(cpu_set_t) == 128, "sixteen words of 64 bits");

bool query(const char* kept, OCFilePath& path) {
    if (kept[0] == '\0')
        return false;
    path = kept;
    return true;
}

} // namespace

OXSystemProcess::OXSystemProcess() = default;
OXSystemProcess::~OXSystemProcess() noexcept = default;

OXSystemProcess_GetAffinityError::OXSystemProcess_GetAffinityError() {
    setClass("OXSystemProcess_GetAffinityError");
    setMessage("Error getting process affinity");
}
OXSystemProcess_GetAffinityError::~OXSystemProcess_GetAffinityError() noexcept = default;

OXSystemProcess_SetAffinityError::OXSystemProcess_SetAffinityError() {
    setClass("OXSystemProcess_SetAffinityError");
    setMessage("Error setting process affinity");
}
OXSystemProcess_SetAffinityError::~OXSystemProcess_SetAffinityError() noexcept = default;

OXSystemProcess_LocateCurrentDirectoryError::OXSystemProcess_LocateCurrentDirectoryError() {
    setClass("OXSystemProcess_LocateCurrentDirectoryError");
    setMessage("Error locating current directory");
}
OXSystemProcess_LocateCurrentDirectoryError::
    ~OXSystemProcess_LocateCurrentDirectoryError() noexcept = default;

OXSystemProcess_LocateCurrentExecutableError::OXSystemProcess_LocateCurrentExecutableError() {
    setClass("OXSystemProcess_LocateCurrentExecutableError");
    setMessage("Error locating current executable");
}
OXSystemProcess_LocateCurrentExecutableError::
    ~OXSystemProcess_LocateCurrentExecutableError() noexcept = default;

OXSystemProcess_SetGroupIdentifierError::OXSystemProcess_SetGroupIdentifierError(
    unsigned int code) {
    setClass("OXSystemProcess_SetGroupIdentifierError");
    setMessage("Error setting group identifier");
    getDetails().addString(systemErrorText(code));
}
OXSystemProcess_SetGroupIdentifierError::~OXSystemProcess_SetGroupIdentifierError() noexcept =
    default;

OXSystemProcess_SetUserIdentifierError::OXSystemProcess_SetUserIdentifierError(unsigned int code) {
    setClass("OXSystemProcess_SetUserIdentifierError");
    setMessage("Error setting user identifier");
    getDetails().addString(systemErrorText(code));
}
OXSystemProcess_SetUserIdentifierError::~OXSystemProcess_SetUserIdentifierError() noexcept =
    default;

OCSystemProcessAffinity::~OCSystemProcessAffinity() noexcept = default;

void OCSystemProcessAffinity::clear() noexcept {
    CPU_ZERO(&affinity);
}

bool OCSystemProcessAffinity::getSwitch(unsigned int processor) const noexcept {
    return processor < processorCount && CPU_ISSET(processor, &affinity);
}

void OCSystemProcessAffinity::setSwitch(unsigned int processor, bool on) noexcept {
    if (processor >= processorCount)
        return;
    if (on)
        CPU_SET(processor, &affinity);
    else
        CPU_CLR(processor, &affinity);
}

int OCSystemProcess::getIdentifier() noexcept {
    return getpid();
}

unsigned int OCSystemProcess::getUserIdentifier() noexcept {
    return getuid();
}

unsigned int OCSystemProcess::getEffectiveUserIdentifier() noexcept {
    return geteuid();
}

unsigned int OCSystemProcess::getGroupIdentifier() noexcept {
    return getgid();
}

void OCSystemProcess::setUserIdentifier(unsigned int identifier) {
    if (setuid(identifier) != 0) {
        const int code = errno;
        throw OXSystemProcess_SetUserIdentifierError(static_cast<unsigned int>(code));
    }
}

void OCSystemProcess::setGroupIdentifier(unsigned int identifier) {
    if (setgid(identifier) != 0) {
        const int code = errno;
        throw OXSystemProcess_SetGroupIdentifierError(static_cast<unsigned int>(code));
    }
}

cpu_set_t OCSystemProcess::getAffinity() {
    cpu_set_t affinity;
    if (sched_getaffinity(0, sizeof affinity, &affinity) != 0)
        throw OXSystemProcess_GetAffinityError();
    return affinity;
}

void OCSystemProcess::setAffinity(const cpu_set_t& affinity) {
    if (sched_setaffinity(0, sizeof affinity, &affinity) != 0)
        throw OXSystemProcess_SetAffinityError();
}

OCFilePath OCSystemProcess::locateCurrentDirectory() {
    char path[pathSize];
    if (getcwd(path, sizeof path) == nullptr)
        throw OXSystemProcess_LocateCurrentDirectoryError();
    return OCFilePath(path);
}

OCFilePath OCSystemProcess::locateCurrentExecutable() {
    OCFilePath as;
    OCFilePath from;
    if (OCSystemProcessProperties::queryStartedAs(as)) {
        if (!as.isRelative())
            return as;
        if (OCSystemProcessProperties::queryStartedFrom(from))
            return from / as;
    }
    return guessCurrentExecutable();
}

OCFilePath OCSystemProcess::guessCurrentExecutable() {
    char path[pathSize];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length < 0)
        throw OXSystemProcess_LocateCurrentExecutableError();
    return OCAnsiString(path, static_cast<unsigned long>(length));
}

int OCSystemProcess::daemonize() {
    const pid_t child = fork();
    if (child != 0)
        return child > 0 ? 2 : 0;
    setsid();
    close(0);
    close(1);
    close(2);
    umask(027);
    return 1;
}

void OCSystemProcessProperties::initialize(int argc, char** argv) {
    initializeStartedAs(argc, argv);
    initializeStartedFrom();
}

void OCSystemProcessProperties::initializeStartedAs(int argc, char** argv) noexcept {
    if (argc == 0 || argv == nullptr || argv[0] == nullptr)
        return;
    const unsigned long length = std::strlen(argv[0]);
    if (length < sizeof startedAs)
        memoryCopy(startedAs, argv[0], length + 1);
}

void OCSystemProcessProperties::initializeStartedFrom() {
    const OCFilePath directory = OCSystemProcess::locateCurrentDirectory();
    if (directory.getLength() < sizeof startedFrom)
        memoryCopy(startedFrom, directory.getString(), directory.getLength() + 1);
}

bool OCSystemProcessProperties::queryStartedAs(OCFilePath& path) {
    return query(startedAs, path);
}

bool OCSystemProcessProperties::queryStartedFrom(OCFilePath& path) {
    return query(startedFrom, path);
}
