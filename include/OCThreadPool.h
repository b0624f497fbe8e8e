#ifndef ORVABASE_OCTHREADPOOL_H
#define ORVABASE_OCTHREADPOOL_H

#include "OCSection.h"
#include "OCThread.h"
#include "OCVector.h"

class OCThreadPool;

/// How many workers a pool has. Nothing is checked: an initial size above the maximum makes the
/// maximum.
class ORVABASE_EXPORT OCThreadPoolParameters : public OCObject {
public:
    /// An average size of 10, an initial size of 1 and a maximum of 20.
    OCThreadPoolParameters() noexcept : averageSize(10), initialSize(1), maximumSize(20) {}
    OCThreadPoolParameters(const OCThreadPoolParameters&) noexcept = default;
    OCThreadPoolParameters& operator=(const OCThreadPoolParameters&) noexcept = default;
    ~OCThreadPoolParameters() noexcept override;

    /// Note: the average size is only kept; a pool takes no notice of it.
    unsigned int getAverageSize() const { return averageSize; }
    /// The number of workers that a pool is constructed with.
    unsigned int getInitialSize() const { return initialSize; }
    /// The number of workers that a pool does not exceed.
    unsigned int getMaximumSize() const { return maximumSize; }
    /// Set the numbers.
    void setAverageSize(unsigned int size) { averageSize = size; }
    void setInitialSize(unsigned int size) { initialSize = size; }
    void setMaximumSize(unsigned int size) { maximumSize = size; }

private:
    unsigned int averageSize;
    unsigned int initialSize;
    unsigned int maximumSize;
};

/// A function, and the object that it is called with. The object is the caller's and is shared with
/// the thread that runs the job, without any locking.
class ORVABASE_EXPORT OCThreadPoolJob : public OCObject {
public:
    /// The type of a job's function.
    typedef unsigned int (*Callback)(OCObject*);

    /// A job without a function and an object.
    OCThreadPoolJob() noexcept : object(nullptr), callback(nullptr) {}
    /// The job of calling `function` with `argument`.
    explicit OCThreadPoolJob(Callback function, OCObject* argument = nullptr) noexcept
        : object(argument), callback(function) {}
    OCThreadPoolJob(const OCThreadPoolJob&) noexcept = default;
    OCThreadPoolJob& operator=(const OCThreadPoolJob&) noexcept = default;
    ~OCThreadPoolJob() noexcept override;

    /// The object and the function; null when there is none.
    OCObject* getObject() const { return object; }
    Callback getCallback() const { return callback; }
    /// Both may be null.
    void setObject(OCObject* argument) { object = argument; }
    void setCallback(Callback function) { callback = function; }

    /// Calls the function with the object. The result is the function's; it is 1 when there is no
    /// function or the function throws. The exception is dropped.
    unsigned int execute() const;

private:
    OCObject* object;
    Callback callback;
};

/// A thread of a pool, which waits for jobs and runs one after the other.
///
/// The pool makes and uses it. By hand, one thread at a time may hand over jobs, and only to a
/// worker that it has claimed by waiting for the idle event.
class ORVABASE_EXPORT OCThreadPoolWorker : public OCThread {
public:
    /// Starts the thread, which waits for its first job when the constructor returns. The worker
    /// is not marked as idle.
    /// @throws OXThread_CreateError, also when the thread ended at once; OXMutex_CreateError,
    /// OXMutex_AcquireError and the family of OXEvent, with the system's text. No thread is left
    /// then.
    OCThreadPoolWorker();
    OCThreadPoolWorker(const OCThreadPoolWorker&) = delete;
    OCThreadPoolWorker& operator=(const OCThreadPoolWorker&) = delete;
    /// Asks the worker to stop and waits until its job has returned and its thread has ended.
    ~OCThreadPoolWorker() noexcept override;

    /// What the thread does: takes over jobs and runs them until it is to terminate. The result is
    /// 0, or 1 when one of its events fails. A job that was taken over is run in any case.
    ///
    /// Note: an idle worker looks every two seconds whether it is to terminate; `shutdown` wakes
    /// it.
    unsigned int execute() override;

    /// Hands `newJob` to the worker and waits until the worker has taken it over.
    /// @throws OXThreadPool_JobRefused when the worker has ended or ends instead of taking it; what
    /// the events throw, and the worker is then idle again as soon as it notices, unless it has
    /// ended. The job is not run in either case.
    void setJob(const OCThreadPoolJob& newJob);
    /// Wakes the worker and waits until it has ended. It must have been asked to by
    /// `terminateThread` before.
    /// @throws OXThread_WaitError, also when it has been waited for before; OXEvent_SignalError and
    /// OXMutex_AcquireError with the system's text.
    void shutdown();

    /// Signalled while the worker is free to take a job. Whoever consumes the signal has claimed
    /// the worker. A worker that has ended is not free.
    OCEvent& getIdleEvent() { return idleEvent; }
    const OCEvent& getIdleEvent() const { return idleEvent; }

private:
    void awaitStart();
    void awaitAcceptance();
    bool isAcceptedSoon() noexcept;
    bool withdrawJob() noexcept;
    void offer() noexcept;
    void stop() noexcept;
    void retire() noexcept;

    OCEvent idleEvent;
    OCEvent acceptedEvent;
    OCEvent jobEvent;
    OCThreadPoolJob job;
};

/// The workers of a pool, in the order in which they were made. It owns them.
///
/// Except for `shutdown`, the caller is inside the pool's synchronizer.
class ORVABASE_EXPORT OCThreadPoolWorkerList : public OCObject {
public:
    /// Makes the initial workers of `owner`, which are idle. One that cannot be made is left out.
    /// @throws what marking a worker as idle throws.
    explicit OCThreadPoolWorkerList(OCThreadPool& owner);
    OCThreadPoolWorkerList(const OCThreadPoolWorkerList&) = delete;
    OCThreadPoolWorkerList& operator=(const OCThreadPoolWorkerList&) = delete;
    /// Stops, joins and deletes the workers.
    ~OCThreadPoolWorkerList() noexcept override;

    /// The number of workers, those included that have ended.
    unsigned int getCount() const { return static_cast<unsigned int>(workers.getCount()); }
    /// The worker at `index`, which stays the list's.
    /// @throws OXVector_NoSuchIndex
    OCThreadPoolWorker& getWorker(unsigned int index) {
        return static_cast<OCThreadPoolWorker&>(workers.getElement(index));
    }
    const OCThreadPoolWorker& getWorker(unsigned int index) const {
        return static_cast<const OCThreadPoolWorker&>(workers.getElement(index));
    }

    /// Makes a worker, which is not marked as idle, and sets `worker` to it. False, and nothing is
    /// changed, when there are as many workers as the pool may have or the worker cannot be made.
    bool createWorker(OCThreadPoolWorker*& worker);
    /// Claims the first worker that is idle and sets `worker` to it. False when none is idle.
    /// @throws what the events throw.
    bool findWorker(OCThreadPoolWorker*& worker);
    /// Stops and joins the workers, one after the other: what `OCThreadPool::shutdown` does.
    void shutdown();
    /// Stops, joins and deletes the workers.
    /// @throws OXMemory_AllocationError when the list cannot be made smaller; the workers are gone
    /// then.
    void destroyWorkers();
    void destroy() { destroyWorkers(); }

    /// The step of construction: makes as many workers as the pool begins with, idle, behind those
    /// that are there, up to the maximum.
    /// @throws what marking a worker as idle throws.
    void initialize();
    void initializeWorkers();

private:
    OCThreadPool& pool;
    OCVector workers;
};

/// Threads that are kept for running jobs.
///
/// A job goes to an idle worker, or to a new one while there are fewer than the maximum, and is
/// refused otherwise: there is no queue. Workers stay until the pool is shut down. Any number of
/// threads, jobs of the pool included, may submit jobs and count workers at once, also while one
/// thread shuts the pool down. Shutting down and destroying belong to one thread; nobody may use a
/// pool that is being destroyed.
///
///     unsigned int load(OCObject* page) { … return 0; }
///
///     OCThreadPool pool((OCThreadPoolParameters()));
///     pool.execute(OCThreadPoolJob(load, &page));
class ORVABASE_EXPORT OCThreadPool : public OCObject {
public:
    /// Makes the initial workers; one that cannot be made is left out, and made when it is needed.
    /// @throws OXMutex_CreateError with the system's text, OXMemory_AllocationError, and what
    /// marking a worker as idle throws.
    explicit OCThreadPool(const OCThreadPoolParameters& poolParameters);
    OCThreadPool(const OCThreadPool&) = delete;
    OCThreadPool& operator=(const OCThreadPool&) = delete;
    /// Waits for the running jobs and ends all workers.
    ~OCThreadPool() noexcept override;

    /// Hands `job` to a worker and returns when the worker has taken it over. Submissions are made
    /// one at a time.
    ///
    /// Note: how a job ends is not reported, also when its function throws.
    /// @throws OXThreadPool_JobRefused when all workers are busy and no further one can be made,
    /// and during and after `shutdown`; what the events throw. The job is not run in either case.
    void execute(const OCThreadPoolJob& job);
    /// Stops and joins the workers, one after the other; each finishes its job first. From now on
    /// every job is refused. The second time it does nothing.
    ///
    /// Note: a pool that has no workers stays usable. A job that shuts down its own pool gets
    /// OXThread_WaitError, as its worker cannot wait for itself.
    /// @throws OXThread_WaitError, and what the events throw; workers may be left then, for the
    /// next attempt or the destructor.
    void shutdown();

    /// The pool's own copy of its parameters. A change, inside the synchronizer, counts from then
    /// on.
    OCThreadPoolParameters& getParameters() { return *parameters; }
    const OCThreadPoolParameters& getParameters() const { return *parameters; }
    /// What submissions and counts are inside of.
    OCCriticalSection& getSynchronizer() { return synchronizer; }
    const OCCriticalSection& getSynchronizer() const { return synchronizer; }
    /// The workers.
    OCThreadPoolWorkerList& getWorkers() { return *workerList; }
    const OCThreadPoolWorkerList& getWorkers() const { return *workerList; }

    /// Ends and deletes all workers.
    void destroyWorkers();
    /// Deletes the parameters.
    void destroyParameters();
    /// Ends the use of the pool: only `execute`, which refuses, `shutdown`, which does nothing, and
    /// `initialize` may still be called.
    void destroy();
    /// The steps of construction, for a pool that is to begin anew: each ends first what it is to
    /// make. The workers need the parameters. No other thread may use the pool meanwhile.
    /// @throws OXMemory_AllocationError, and what marking a worker as idle throws. Without memory
    /// for the parameters nothing is changed.
    void initialize(const OCThreadPoolParameters& poolParameters);
    void initializeParameters(const OCThreadPoolParameters& poolParameters);
    void initializeWorkers();

private:
    bool isShutDown();

    OCCriticalSection synchronizer;
    OCThreadPoolParameters* parameters;
    OCThreadPoolWorkerList* workerList;
};

/// Counts a pool's workers. It refers to the pool, which must outlive it.
///
/// The counts are snapshots: a worker that finishes its job meanwhile may count as busy. Workers
/// that have ended count as busy. Each operation looks at every worker.
class ORVABASE_EXPORT OCThreadPoolStatistics : public OCObject {
public:
    /// Refers to `target`.
    explicit OCThreadPoolStatistics(OCThreadPool& target) noexcept : pool(target) {}
    OCThreadPoolStatistics(const OCThreadPoolStatistics&) = delete;
    OCThreadPoolStatistics& operator=(const OCThreadPoolStatistics&) = delete;
    ~OCThreadPoolStatistics() noexcept override;

    /// The number of busy workers.
    /// @throws what the events throw.
    unsigned int countBusyWorkers() const;
    /// The number of idle workers.
    /// @throws what the events throw.
    unsigned int countIdleWorkers() const;

private:
    OCThreadPool& pool;
};

/// The family of the pool's failures.
class ORVABASE_EXPORT OXThreadPool : public OXAutoException {
public:
    ~OXThreadPool() noexcept override;

protected:
    OXThreadPool();
};

/// "The thread pool job was refused".
class ORVABASE_EXPORT OXThreadPool_JobRefused : public OXThreadPool {
public:
    OXThreadPool_JobRefused();
    ~OXThreadPool_JobRefused() noexcept override;
};

#endif
