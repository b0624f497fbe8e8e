#ifndef JOB_RUNNER_REPORT_H
#define JOB_RUNNER_REPORT_H

#include "Job.h"

/// When a run began and how long it took.
struct Run {
    OCUniqueIdentifier identifier;
    OCDateTime started;    ///< UTC
    unsigned int duration; ///< milliseconds
    unsigned int workers;
};

/// Writes the XML report (docs/job-runner.md describes it) to `stream`.
void writeReport(OCStream& stream, const OCFilePath& jobFile, const Run& run, const JobList& jobs);

/// The table of the jobs with a summary, as text.
OCAnsiString makeTable(const Run& run, const JobList& jobs);

#endif
