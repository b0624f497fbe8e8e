#include "Job.h"
#include "Errors.h"
#include "Text.h"

namespace {

/// How long a process that was killed may take to end, in milliseconds.
const unsigned int reapingLimit = 10000;

/// Ends the process and waits for its end, so that no zombie stays.
void killProcess(OCChildProcess& process) {
    int status = 0;
    process.processKill();
    try {
        process.processWait(status, reapingLimit);
    } catch (const OXChildProcess&) {
        // It ended by the signal, as it should.
    }
}

/// Waits for the process and returns its exit status. When it throws, the process has ended.
int waitForExit(OCChildProcess& process, unsigned int limit) {
    int status = 0;
    try {
        // The process may have ended after the wait's last look.
        if (process.processWait(status, limit) || process.processRequest(status))
            return status;
    } catch (const OXChildProcess_UnexpectedSignal&) {
        throw;
    } catch (const OXException&) {
        killProcess(process);
        throw;
    }
    killProcess(process);
    throw OXChildProcess_WaitTimeout();
}

void captureStream(OCStream& stream, Capture& capture) {
    capture.size = stream.getSize();
    capture.text.setLength(capture.size < Capture::maximum ? capture.size : Capture::maximum);
    stream.setPosition(0);
    try {
        stream.readBuffer(capture.text.getString(), capture.text.getLength());
    } catch (const OXException&) {
        capture.text.clear();
        throw;
    }
}

} // namespace

bool Job::isReady() const {
    for (unsigned long i = 0; i < prerequisites.getCount(); ++i) {
        if (static_cast<const Job&>(prerequisites.getElement(i)).state != JobSucceeded)
            return false;
    }
    return true;
}

const Job* Job::findBlocker() const {
    for (unsigned long i = 0; i < prerequisites.getCount(); ++i) {
        const Job& job = static_cast<const Job&>(prerequisites.getElement(i));
        if (job.isSettled() && job.state != JobSucceeded)
            return &job;
    }
    return nullptr;
}

const char* Job::getStateName() const {
    static const char* const names[] = {"waiting", "running", "succeeded", "failed", "skipped"};
    return names[state];
}

void Job::run() noexcept {
    try {
        OCStopwatch stopwatch;
        try {
            started.assignCurrentSystemTime();
            execute();
        } catch (const OXException& failure) {
            setFailure(failure);
        }
        duration = elapsedMilliseconds(stopwatch);
    } catch (const OXException&) {
        exitStatus = -1; // Not even the failure could be told.
    }
}

void Job::settle() {
    state = exitStatus == 0 && failureClass.getLength() == 0 ? JobSucceeded : JobFailed;
}

void Job::execute() {
    OCChildProcess process;
    configure(process);
    process.processCreate();
    processIdentifier = process.getHandles().getProcessIdentifier();
    try {
        exitStatus = waitForExit(process, limit);
    } catch (const OXException& failure) {
        setFailure(failure);
    }
    captureStream(process.getStandardOutput().getStream(), output);
    captureStream(process.getStandardError().getStream(), errors);
}

void Job::configure(OCChildProcess& process) const {
    const bool here = directory.getLength() == 0;
    if (!here && directory.getFileType(true) != FileTypeDirectory)
        throw OXJobRunner_NoDirectory(directory);
    // A process that cannot be started ends by the signal SIGABRT, whatever the reason: a missing
    // file is worth a message that says so.
    const bool asItStands = here || executable[0] == '/';
    if (!(asItStands ? executable : OCFilePath(directory / executable)).existsFile(true))
        throw OXJobRunner_NoExecutable(executable);

    process.setExecutionFilename(executable);
    process.getExecutionArguments() = arguments;
    process.setExecutionDirectory(directory);
    OCNamedList& environment = process.getEnvironment().getVariables();
    for (unsigned long i = 0; i < variables.getCount(); ++i)
        environment.setValue(variables.getName(i), variables.getValue(i));
    OCStream& stream = process.getStandardInput().getStream();
    OCStringUtilities::exportStream(input, stream);
    stream.setPosition(0);
}

void Job::setFailure(const OXException& failure) {
    if (failureClass.getLength() > 0)
        return;
    failureMessage = failure.getMessage();
    failureClass = failure.getClass();
}

Job& JobList::addJob() {
    Job* const job = new Job;
    try {
        jobs.addElement(*job);
    } catch (...) {
        delete job;
        throw;
    }
    return *job;
}

unsigned long JobList::countState(JobState state) const {
    unsigned long count = 0;
    for (unsigned long i = 0; i < getCount(); ++i) {
        if (getJob(i).state == state)
            ++count;
    }
    return count;
}
