#include "OCChildProcess.h"

#include "OCCountdown.h"
#include "OCStringConversion.h"
#include "OCSystemError.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr unsigned int executionLimit = 30000; // milliseconds
constexpr unsigned int waitStep = 20;          // milliseconds

/// Moves a stream's descriptor out of the way of the three standard ones, for as long as the object
/// lives; the executable does not inherit the new one. When that fails, the stream has no
/// descriptor meanwhile, which its duplication then reports.
class DescriptorMove {
public:
    explicit DescriptorMove(OCHandleStream& moved) noexcept
        : stream(moved), original(moved.getHandle()) {
        if (isStandard())
            stream.setHandle(fcntl(original, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    }
    DescriptorMove(const DescriptorMove&) = delete;
    DescriptorMove& operator=(const DescriptorMove&) = delete;
    ~DescriptorMove() {
        if (!isStandard())
            return;
        if (stream.getHandle() != -1)
            close(stream.getHandle());
        stream.setHandle(original);
    }

private:
    bool isStandard() const { return original >= STDIN_FILENO && original <= STDERR_FILENO; }

    OCHandleStream& stream;
    const int original;
};

bool duplicate(const OCHandleStream* stream, int descriptor) noexcept {
    return stream != nullptr && dup2(stream->getHandle(), descriptor) != -1;
}

/// Looks once whether the child `identifier` has ended.
bool hasEnded(int identifier, int& exitStatus) {
    if (identifier <= 0) // which would mean any child
        throw OXChildProcess_WaitFailed();
    int status = 0;
    const int ended = waitpid(identifier, &status, WNOHANG);
    if (ended == 0)
        return false;
    if (ended != identifier)
        throw OXChildProcess_WaitFailed();
    if (WIFEXITED(status)) {
        exitStatus = WEXITSTATUS(status);
        return true;
    }
    if (WIFSIGNALED(status))
        throw OXChildProcess_UnexpectedSignal(static_cast<unsigned int>(WTERMSIG(status)));
    throw OXChildProcess_WaitFailed();
}

} // namespace

OCChildProcessObject::~OCChildProcessObject() noexcept = default;

OCChildProcessHandles::~OCChildProcessHandles() noexcept {
    destroy();
}

OCChildProcessOptions::~OCChildProcessOptions() noexcept = default;

OCChildProcessContext::OCChildProcessContext(OCChildProcess& owner)
    : OCChildProcessObject(owner), environment(owner.getEnvironment()) {
    initialize();
}

OCChildProcessContext::~OCChildProcessContext() noexcept = default;

void OCChildProcessContext::initialize() {
    initializeArguments();
}

void OCChildProcessContext::initializeArguments() {
    arguments.addString(getProcess().getExecutionFilename());
    const OCStringList& list = getProcess().getExecutionArguments();
    for (unsigned long i = 0; i != list.getCount(); ++i)
        arguments.addString(list.getString(i));
}

OCChildProcessStream::OCChildProcessStream(OCChildProcess& owner) : OCChildProcessObject(owner) {}

OCChildProcessStream::~OCChildProcessStream() noexcept = default;

OCChildProcessStream_StandardInput::~OCChildProcessStream_StandardInput() noexcept = default;

bool OCChildProcessStream_StandardInput::duplicateHandle() {
    OCHandleStream* diverted = nullptr;
    return !getProcess().divertStandardInput(&diverted) || duplicate(diverted, STDIN_FILENO);
}

OCChildProcessStream_StandardOutput::~OCChildProcessStream_StandardOutput() noexcept = default;

bool OCChildProcessStream_StandardOutput::duplicateHandle() {
    OCHandleStream* diverted = nullptr;
    return !getProcess().divertStandardOutput(&diverted) || duplicate(diverted, STDOUT_FILENO);
}

OCChildProcessStream_StandardError::~OCChildProcessStream_StandardError() noexcept = default;

bool OCChildProcessStream_StandardError::duplicateHandle() {
    OCHandleStream* diverted = nullptr;
    return !getProcess().divertStandardError(&diverted) || duplicate(diverted, STDERR_FILENO);
}

OCChildProcess::OCChildProcess()
    : handles(*this), options(*this), standardError(*this), standardInput(*this),
      standardOutput(*this), executionArguments(StringListCaseInsensitive, StringListModeUnsorted) {
    initialize();
}

OCChildProcess::~OCChildProcess() = default;

void OCChildProcess::setExecutionDirectory(const OCFilePath& directory) {
    executionDirectory = directory;
}

void OCChildProcess::setExecutionFilename(const OCFilePath& filename) {
    executionFilename = filename;
}

int OCChildProcess::execute() {
    processCreate();
    try {
        int exitStatus = 0;
        if (!processWait(exitStatus, executionLimit))
            throw OXChildProcess_WaitTimeout();
        return exitStatus;
    } catch (const OXChildProcess&) {
        processKill();
        throw;
    }
}

void OCChildProcess::processCreate() {
    OCChildProcessContext context(*this);
    const int identifier = processFork();
    if (identifier == 0) {
        try {
            processPrepare();
            processOverlay(context);
        } catch (...) {
            // The parent is told by the signal.
        }
        abort();
    }
    handles.setProcessIdentifier(identifier);
}

int OCChildProcess::processFork() {
    const int identifier = fork();
    if (identifier == -1) {
        const unsigned int code = static_cast<unsigned int>(errno);
        throw OXChildProcess_ExecuteError(code);
    }
    return identifier;
}

void OCChildProcess::processPrepare() {
    if (hasExecutionDirectory() && chdir(executionDirectory.getString()) == -1) {
        const unsigned int code = static_cast<unsigned int>(errno);
        throw OXChildProcess_ExecuteError(code);
    }
}

bool OCChildProcess::processOverlay(OCChildProcessContext& context) {
    // When this process had closed a standard descriptor, one of the files may have got its number.
    const DescriptorMove error(standardError.getStream());
    const DescriptorMove input(standardInput.getStream());
    const DescriptorMove output(standardOutput.getStream());
    if (!standardError.duplicateHandle() || !standardInput.duplicateHandle() ||
        !standardOutput.duplicateHandle())
        return false;
    return execve(executionFilename.getString(), context.acquireArguments(),
                  context.acquireEnvironment()) != -1;
}

bool OCChildProcess::processWait(int& exitStatus, unsigned int timeoutMilliseconds) {
    const int identifier = handles.getProcessIdentifier(); // whatever stopWaiting() starts
    const OCCountdown countdown(timeoutMilliseconds);
    while (!countdown.timeout() && !stopWaiting()) {
        if (hasEnded(identifier, exitStatus))
            return true;
        OCCountdown::delay(waitStep);
    }
    return false;
}

bool OCChildProcess::processRequest(int& exitStatus) {
    return hasEnded(handles.getProcessIdentifier(), exitStatus);
}

void OCChildProcess::processKill() {
    const int identifier = handles.getProcessIdentifier();
    if (identifier > 0) // others would mean whole groups of processes
        kill(identifier, SIGKILL);
}

bool OCChildProcess::divertStandardError(OCHandleStream** stream) {
    *stream = &standardError.getStream();
    return true;
}

bool OCChildProcess::divertStandardInput(OCHandleStream** stream) {
    *stream = &standardInput.getStream();
    return true;
}

bool OCChildProcess::divertStandardOutput(OCHandleStream** stream) {
    *stream = &standardOutput.getStream();
    return true;
}

bool OCChildProcess::stopWaiting() {
    return false;
}

void OCChildProcess::initialize() {
    initializeEnvironment();
}

void OCChildProcess::initializeEnvironment() {
    environment.readProcessEnvironment();
}

OXChildProcess::OXChildProcess() = default;
OXChildProcess::~OXChildProcess() noexcept = default;

OXChildProcess_ExecuteError::OXChildProcess_ExecuteError(unsigned int code) {
    setClass("OXChildProcess_ExecuteError");
    setMessage("Executing the child process failed");
    getDetails().addString(systemErrorText(code));
}
OXChildProcess_ExecuteError::~OXChildProcess_ExecuteError() noexcept = default;

OXChildProcess_UnexpectedSignal::OXChildProcess_UnexpectedSignal(unsigned int number) {
    setClass("OXChildProcess_UnexpectedSignal");
    setMessage("Unexpected signal in child process");
    getDetails().addString(OCStringConversion::fromInteger(number, 10));
}
OXChildProcess_UnexpectedSignal::~OXChildProcess_UnexpectedSignal() noexcept = default;

OXChildProcess_WaitFailed::OXChildProcess_WaitFailed() {
    setClass("OXChildProcess_WaitFailed");
    setMessage("Waiting for the child process failed");
}
OXChildProcess_WaitFailed::~OXChildProcess_WaitFailed() noexcept = default;

OXChildProcess_WaitTimeout::OXChildProcess_WaitTimeout() {
    setClass("OXChildProcess_WaitTimeout");
    setMessage("Waiting for the child process timed out");
}
OXChildProcess_WaitTimeout::~OXChildProcess_WaitTimeout() noexcept = default;
