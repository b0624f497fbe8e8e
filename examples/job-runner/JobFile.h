#ifndef JOB_RUNNER_JOB_FILE_H
#define JOB_RUNNER_JOB_FILE_H

#include "Job.h"

/// Adds the jobs of a job file (docs/job-runner.md describes it) to `jobs`. A job that has no time
/// limit of its own gets `limit`, in milliseconds.
/// @throws OXJobRunner_BadFile with one line that says what is wrong.
void readJobFile(const OCFilePath& path, unsigned int limit, JobList& jobs);

#endif
