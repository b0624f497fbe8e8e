#ifndef JOB_RUNNER_PROGRESS_H
#define JOB_RUNNER_PROGRESS_H

#include "Job.h"
#include "StandardStream.h"

/// Tells on standard error how far the jobs are: on a terminal by one line that changes, elsewhere
/// by a line for each job that is done.
///
/// Nothing depends on it: when standard error cannot be written, it falls silent.
class Progress : public OCObject {
public:
    Progress(unsigned long jobCount, bool quiet);
    /// Takes the changing line away.
    ~Progress() override;

    void jobStarted(const Job& job);
    /// The job has succeeded, failed or been skipped.
    void jobSettled(const Job& job);

private:
    void update();
    void print(const OCAnsiString& text);

    const unsigned long total;
    bool silent;
    bool terminal;
    unsigned long settled = 0;
    unsigned long unsuccessful = 0;
    OCStringList running; ///< names
    StandardStream stream;
};

#endif
