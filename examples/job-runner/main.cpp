// Runs the jobs of a job file: job-runner [OPTION…] FILE
//
// docs/job-runner.md describes job files and reports; --help lists the options.
//
//     Options     the command line                    Scheduler   which job runs when
//     JobFile     XML file -> jobs                     Progress    what a terminal shows meanwhile
//     Job         a job, its process, its outcome      Report      jobs -> XML report, table

#include "Errors.h"
#include "JobFile.h"
#include "Options.h"
#include "Progress.h"
#include "Report.h"
#include "Scheduler.h"
#include "StandardStream.h"
#include "Text.h"
#include <unistd.h>

namespace {

enum ExitStatus { AllSucceeded = 0, SomeFailed = 1, CannotRun = 2 };

void print(const OCAnsiString& text) {
    try {
        StandardStream(STDOUT_FILENO).print(text);
    } catch (const OXStream& failure) {
        throw OXJobRunner_BadFile("standard output", failure);
    }
}

/// Writes `content` to the report's file, which is emptied before.
void saveReport(const OCFilePath& path, OCStream& content) {
    try {
        OCFileStream file(path, FileCreateModeCreate, FileShareModeNone);
        OCStreamTransfer transfer;
        transfer.useSource(content);
        transfer.useTarget(file);
        transfer.execute();
    } catch (const OXStream& failure) {
        throw OXJobRunner_BadFile(path, failure);
    }
}

void runJobs(JobList& jobs, Run& run, bool quiet) {
    OCStopwatch stopwatch;
    run.identifier = makeIdentifier();
    run.started.assignCurrentSystemTime();
    for (unsigned long i = 0; i < jobs.getCount(); ++i)
        jobs.getJob(i).identifier = makeIdentifier();
    Progress progress(jobs.getCount(), quiet);
    Scheduler(jobs, run.workers, progress).run();
    run.duration = elapsedMilliseconds(stopwatch);
}

ExitStatus execute(const Options& options) {
    JobList jobs;
    readJobFile(options.file, options.limit, jobs);
    if (options.report.getLength() > 0) {
        // A report that cannot be written is told before the jobs run, not after.
        OCNullStream nothing;
        saveReport(options.report, nothing);
    }
    Run run;
    run.workers = options.workers;
    runJobs(jobs, run, options.quiet);
    if (options.report.getLength() > 0) {
        OCMemoryStream report;
        report.setBlockSize(Capture::maximum);
        writeReport(report, options.file, run, jobs);
        report.setPosition(0);
        saveReport(options.report, report);
    }
    if (!options.quiet)
        print(makeTable(run, jobs));
    return jobs.countState(JobSucceeded) == jobs.getCount() ? AllSucceeded : SomeFailed;
}

ExitStatus start(int argc, char** argv) {
    Options options;
    options.read(argc, argv);
    if (options.help) {
        print(Options::getUsage());
        return AllSucceeded;
    }
    if (options.version) {
        print("job-runner " + OCVersion(1, 0).toString() + "\n");
        return AllSucceeded;
    }
    return execute(options);
}

void complain(const OCAnsiString& text) {
    try {
        StandardStream(STDERR_FILENO).print("job-runner: " + visible(text) + "\n");
    } catch (const OXException&) {
        // There is nobody left to tell.
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        return start(argc, argv);
    } catch (const OXJobRunner& failure) {
        complain(failure.getMessage());
    } catch (const OXException& failure) {
        complain(failure.getClass() + ": " + failure.getMessage());
    }
    return CannotRun;
}
