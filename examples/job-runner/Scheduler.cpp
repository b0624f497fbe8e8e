#include "Scheduler.h"

/// A job on its way through the pool.
class Scheduler::Task : public OCObject {
public:
    Task(Scheduler& owner, Job& target) : scheduler(owner), job(target) {}

    Scheduler& scheduler;
    Job& job;
    bool ended = false; ///< inside the scheduler's section
};

Scheduler::Scheduler(JobList& list, unsigned int workers, Progress& display)
    : jobs(list), workerCount(workers), progress(display),
      jobEnded(EventStateNotSignalled, EventTypeAutoReset), pool(parametersOf(workers)) {}

OCThreadPoolParameters Scheduler::parametersOf(unsigned int workers) {
    OCThreadPoolParameters parameters;
    parameters.setInitialSize(0);
    parameters.setMaximumSize(workers);
    return parameters;
}

void Scheduler::run() {
    for (;;) {
        // A worker is free a moment after its job has said that it ends: a job that comes in
        // between is refused, and offered again soon.
        const bool refused = !startReadyJobs();
        if (refused)
            jobEnded.waitFor(1);
        else if (running.getCount() > 0)
            jobEnded.waitFor();
        else
            return;
        collectEndedJobs();
    }
}

/// Starts or skips what can be started or skipped now. False when the pool refused a job.
bool Scheduler::startReadyJobs() {
    for (unsigned long i = 0; i < jobs.getCount(); ++i) {
        Job& job = jobs.getJob(i);
        if (job.state != JobWaiting)
            continue;
        if (job.findBlocker()) {
            job.state = JobSkipped;
            progress.jobSettled(job);
        } else if (running.getCount() < workerCount && job.isReady()) {
            try {
                start(job);
            } catch (const OXThreadPool_JobRefused&) {
                if (pool.getWorkers().getCount() == 0)
                    throw; // The system gives us no thread at all.
                return false;
            }
        }
    }
    return true;
}

void Scheduler::start(Job& job) {
    Task* const task = new Task(*this, job);
    try {
        running.addElement(*task);
    } catch (...) {
        delete task;
        throw;
    }
    try {
        pool.execute(OCThreadPoolJob(runTask, task));
    } catch (...) {
        OCVectorUtilities(running).deleteElements(running.getCount() - 1, 1);
        throw;
    }
    job.state = JobRunning;
    progress.jobStarted(job);
}

unsigned int Scheduler::runTask(OCObject* object) {
    Task& task = static_cast<Task&>(*object);
    task.job.run();
    task.scheduler.noteEnd(task);
    return 0;
}

void Scheduler::noteEnd(Task& task) {
    {
        OCCriticalSectionLock lock(section);
        task.ended = true;
    }
    jobEnded.signalEvent();
}

void Scheduler::collectEndedJobs() {
    for (unsigned long i = 0; i < running.getCount();) {
        Task& task = static_cast<Task&>(running.getElement(i));
        bool ended = false;
        {
            OCCriticalSectionLock lock(section);
            ended = task.ended;
        }
        if (!ended) {
            ++i;
            continue;
        }
        Job& job = task.job;
        OCVectorUtilities(running).deleteElements(i, 1);
        job.settle();
        progress.jobSettled(job);
    }
}
