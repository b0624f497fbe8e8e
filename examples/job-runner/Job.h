#ifndef JOB_RUNNER_JOB_H
#define JOB_RUNNER_JOB_H

#include <orvabase.h>

enum JobState { JobWaiting, JobRunning, JobSucceeded, JobFailed, JobSkipped };

/// What a job wrote to one of its standard streams.
struct Capture {
    /// How much of it is kept, in bytes.
    static const unsigned long maximum = 1024UL * 1024;

    OCAnsiString text;
    unsigned long size = 0; ///< of all that was written
};

/// A job: what the job file says about it, and how it went.
///
/// While it runs, the outcome belongs to the thread that runs it; the state always belongs to the
/// thread that schedules the jobs.
class Job : public OCObject {
public:
    Job()
        : arguments(StringListCaseSensitive, StringListModeUnsorted),
          variables(NamedListCaseSensitive, NamedListModeUnsorted),
          prerequisiteNames(StringListCaseSensitive, StringListModeUnsorted) {}

    bool isSettled() const { return state > JobRunning; }
    /// Whether all prerequisites have succeeded.
    bool isReady() const;
    /// The first prerequisite that failed or was skipped, or null.
    const Job* findBlocker() const;
    const char* getStateName() const;
    /// Starts the executable, waits for its end and stores the outcome, whatever happens. The state
    /// stays.
    void run() noexcept;
    /// Sets the state by the outcome.
    void settle();

    // The definition.
    OCAnsiString name;
    OCFilePath executable;
    OCStringList arguments;
    OCNamedList variables;
    OCFilePath directory;
    OCAnsiString input;
    unsigned int limit = 0; ///< milliseconds
    OCStringList prerequisiteNames;
    OCVector prerequisites; ///< the jobs of these names, not owned

    // The state, and the outcome.
    JobState state = JobWaiting;
    OCUniqueIdentifier identifier;
    OCDateTime started;        ///< UTC
    unsigned int duration = 0; ///< milliseconds
    int processIdentifier = 0; ///< 0: no process was made
    int exitStatus = -1;       ///< -1: the process did not end by itself
    OCAnsiString failureClass; ///< of the exception that ended the job, if one did
    OCAnsiString failureMessage;
    Capture output;
    Capture errors;

private:
    void execute();
    void configure(OCChildProcess& process) const;
    void setFailure(const OXException& failure);
};

/// The jobs in their order, which it owns.
class JobList : public OCObject {
public:
    JobList() = default;
    JobList(const JobList&) = delete;
    JobList& operator=(const JobList&) = delete;
    ~JobList() override { OCVectorUtilities(jobs).deleteElements(); }

    /// Adds an empty job at the end.
    Job& addJob();
    unsigned long getCount() const { return jobs.getCount(); }
    unsigned long countState(JobState state) const;
    Job& getJob(unsigned long index) { return static_cast<Job&>(jobs.getElement(index)); }
    const Job& getJob(unsigned long index) const {
        return static_cast<const Job&>(jobs.getElement(index));
    }

private:
    OCVector jobs;
};

#endif
