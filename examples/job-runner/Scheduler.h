#ifndef JOB_RUNNER_SCHEDULER_H
#define JOB_RUNNER_SCHEDULER_H

#include "Job.h"
#include "Progress.h"

/// Runs jobs on a thread pool, in their order as far as prerequisites and free workers allow.
///
/// A pool refuses a job when all its workers are busy, so the scheduler hands over no more jobs
/// than there are workers, and waits for one to end before the next.
class Scheduler : public OCObject {
public:
    Scheduler(JobList& list, unsigned int workers, Progress& display);

    /// Returns when every job has succeeded, failed or been skipped.
    void run();

private:
    class Task;
    class TaskList : public OCVector {
    public:
        ~TaskList() noexcept override { OCVectorUtilities(*this).deleteElements(); }
    };

    static unsigned int runTask(OCObject* object);
    static OCThreadPoolParameters parametersOf(unsigned int workers);
    bool startReadyJobs();
    void start(Job& job);
    void noteEnd(Task& task);
    void collectEndedJobs();

    JobList& jobs;
    const unsigned int workerCount;
    Progress& progress;
    TaskList running;
    OCCriticalSection section; ///< guards what tasks say about their end
    OCEvent jobEnded;
    OCThreadPool pool; ///< the last one: its destructor waits for the running tasks
};

#endif
