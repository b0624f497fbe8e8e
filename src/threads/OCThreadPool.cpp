#include "OCThreadPool.h"

#include <cxxabi.h>
#include <sched.h>

namespace {

/// How often a worker that is idle looks whether it is to terminate, in milliseconds.
constexpr unsigned int idleInterval = 2000;
/// How often the constructor of a worker looks whether its thread has ended before it started.
constexpr unsigned int startInterval = 20;
/// How often a submitter looks whether his job was accepted before he goes to sleep. Most workers
/// are that fast; two sleeps and wakings a job are then saved, a third of its time.
constexpr int looksForAcceptance = 10;
/// How often an operation that must not be left out is tried.
constexpr int attempts = 1000;

/// Stands in a worker's job when the worker has none: nothing was handed over yet, or the worker
/// has taken it.
unsigned int nothingToRun(OCObject*) {
    return 1;
}

/// Stands in a worker's job when the submitter has taken his job back.
unsigned int takenBack(OCObject*) {
    return 0;
}

/// In a handler of every exception: what has no type is not a C++ exception but the unwinding of a
/// thread that is cancelled or leaves by pthread_exit, which must go on.
void passUnwinding() {
    if (abi::__cxa_current_exception_type() == nullptr)
        throw;
}

/// Whether `operation` comes through. It must not be a place where threads are cancelled.
template<class Operation>
bool attempt(Operation operation) noexcept {
    try {
        operation();
        return true;
    } catch (...) {
        return false;
    }
}

/// Tries until `operation` comes through.
template<class Operation>
void insist(Operation operation) noexcept {
    for (int tries = 0; tries < attempts && !attempt(operation); ++tries)
        sched_yield();
}

} // namespace

OCThreadPoolParameters::~OCThreadPoolParameters() noexcept = default;

OCThreadPoolJob::~OCThreadPoolJob() noexcept = default;

unsigned int OCThreadPoolJob::execute() const {
    if (callback == nullptr)
        return 1;
    try {
        try {
            return callback(object);
        } catch (...) {
            passUnwinding();
        }
    } catch (...) {
        // What was thrown may throw in its turn when it is destroyed.
        passUnwinding();
    }
    return 1;
}

// How a job changes hands. The submitter puts it into the worker's field, signals the job event and
// waits for the accepted event; the worker takes the job out and leaves nothingToRun in its place
// before it signals the accepted event. A submitter who cannot wait takes the job event's signal
// back, and the worker offers itself again when it finds takenBack. A worker that ends, for
// whatever reason, leaves the field alone and signals both events for good: so whoever finds the
// job event signalled before handing over, or his job still there after waiting, knows that nobody
// is going to run it.

OCThreadPoolWorker::OCThreadPoolWorker()
    : idleEvent(EventStateNotSignalled, EventTypeAutoReset),
      acceptedEvent(EventStateNotSignalled, EventTypeAutoReset),
      jobEvent(EventStateNotSignalled, EventTypeAutoReset), job(nothingToRun) {
    try {
        resumeThread();
        awaitStart();
    } catch (...) {
        stop();
        throw;
    }
}

OCThreadPoolWorker::~OCThreadPoolWorker() noexcept {
    stop();
}

/// Waits until the thread is in `execute`, whose end is always announced. A thread can fail before.
void OCThreadPoolWorker::awaitStart() {
    while (!acceptedEvent.waitFor(startInterval))
        if (joinEnded())
            throw OXThread_CreateError();
}

/// Ends and joins the thread at any cost: the object must not go while it runs.
void OCThreadPoolWorker::stop() noexcept {
    if (getIdentifier() == 0)
        return;
    bool asked = attempt([this] { terminateThread(); });
    while (!asked) {
        // The request stands when only waking the thread has failed.
        attempt([&] { asked = isTerminating(0); });
        if (!asked) {
            sched_yield();
            asked = attempt([this] { terminateThread(); });
        }
    }
    insist([this] { jobEvent.signalEvent(); });
    attempt([this] { waitFor(); });
}

unsigned int OCThreadPoolWorker::execute() {
    struct Retirement {
        ~Retirement() { worker.retire(); }
        OCThreadPoolWorker& worker;
    } const retirement{*this};

    try {
        acceptedEvent.signalEvent();
        while (!isTerminating(0)) {
            if (!jobEvent.waitFor(idleInterval) || isTerminating(0) ||
                job.getCallback() == nothingToRun)
                continue;
            const OCThreadPoolJob taken = job;
            job.setCallback(nothingToRun);
            if (taken.getCallback() == takenBack) {
                idleEvent.signalEvent();
                continue;
            }
            // The submitter may know by now, so from here on the job is run.
            const bool accepted = attempt([this] { acceptedEvent.signalEvent(); });
            if (!accepted)
                insist([this] { acceptedEvent.signalEvent(); });
            taken.execute();
            if (!accepted)
                return 1;
            idleEvent.signalEvent();
        }
        return 0;
    } catch (...) {
        passUnwinding();
        return 1;
    }
}

/// Leaves the events as those of a worker that has ended.
void OCThreadPoolWorker::retire() noexcept {
    insist([this] { idleEvent.resetEvent(); });
    insist([this] { jobEvent.signalEvent(); });
    insist([this] { acceptedEvent.signalEvent(); });
}

void OCThreadPoolWorker::setJob(const OCThreadPoolJob& newJob) {
    bool ended = false;
    try {
        acceptedEvent.resetEvent();
        ended = jobEvent.waitFor(0);
    } catch (const OXException&) {
        offer();
        throw;
    }
    if (ended) {
        insist([this] { jobEvent.signalEvent(); });
        throw OXThreadPool_JobRefused();
    }
    job = newJob;
    try {
        jobEvent.signalEvent();
    } catch (const OXMutex_AcquireError&) {
        offer();
        throw;
    } catch (const OXException&) {
        if (withdrawJob())
            throw;
        // The worker has noticed all the same.
    }
    awaitAcceptance();
    if (job.getCallback() != nothingToRun) {
        insist([this] { acceptedEvent.signalEvent(); });
        throw OXThreadPool_JobRefused();
    }
}

/// Waits until the worker has taken the job or has ended. If waiting fails, the job is withdrawn;
/// if that is too late, the worker is about to announce what it does with it.
void OCThreadPoolWorker::awaitAcceptance() {
    if (isAcceptedSoon())
        return;
    for (int tries = 0;; ++tries) {
        try {
            acceptedEvent.waitFor();
            return;
        } catch (const OXException&) {
            if (withdrawJob())
                throw;
            if (tries >= attempts)
                throw;
        }
        sched_yield();
    }
}

/// Looks for the acceptance while letting other threads run. False settles nothing.
bool OCThreadPoolWorker::isAcceptedSoon() noexcept {
    bool accepted = false;
    for (int looks = 0; looks < looksForAcceptance && !accepted; ++looks) {
        sched_yield();
        if (!attempt([&] { accepted = acceptedEvent.waitFor(0); }))
            return false;
    }
    return accepted;
}

/// Takes the job back and has the worker mark itself as idle. False when the worker has noticed the
/// job already. The signal that was taken back may be that of a worker which has ended, so there is
/// one again afterwards.
bool OCThreadPoolWorker::withdrawJob() noexcept {
    bool withdrawn = false;
    attempt([&] { withdrawn = jobEvent.waitFor(0); });
    if (withdrawn) {
        job.setCallback(takenBack);
        insist([this] { jobEvent.signalEvent(); });
    }
    return withdrawn;
}

/// Marks the worker as idle, without a job.
void OCThreadPoolWorker::offer() noexcept {
    job.setCallback(nothingToRun);
    insist([this] { idleEvent.signalEvent(); });
}

void OCThreadPoolWorker::shutdown() {
    jobEvent.signalEvent();
    waitFor();
}

OCThreadPoolWorkerList::OCThreadPoolWorkerList(OCThreadPool& owner) : pool(owner) {
    try {
        initialize();
    } catch (...) {
        destroy();
        throw;
    }
}

OCThreadPoolWorkerList::~OCThreadPoolWorkerList() noexcept {
    attempt([this] { destroy(); });
}

void OCThreadPoolWorkerList::initialize() {
    initializeWorkers();
}

void OCThreadPoolWorkerList::initializeWorkers() {
    const OCThreadPoolParameters& parameters = pool.getParameters();
    const unsigned int size = parameters.getInitialSize();
    for (unsigned int tries = 0; tries < size && getCount() < parameters.getMaximumSize();
         ++tries) {
        OCThreadPoolWorker* worker = nullptr;
        if (createWorker(worker))
            worker->getIdleEvent().signalEvent();
    }
}

bool OCThreadPoolWorkerList::createWorker(OCThreadPoolWorker*& worker) {
    const unsigned long count = workers.getCount();
    if (count >= pool.getParameters().getMaximumSize())
        return false;
    OCThreadPoolWorker* created = nullptr;
    try {
        created = new OCThreadPoolWorker;
        workers.setCount(count + 1);
        workers.setElement(count, *created);
    } catch (...) {
        delete created;
        passUnwinding();
        return false;
    }
    worker = created;
    return true;
}

bool OCThreadPoolWorkerList::findWorker(OCThreadPoolWorker*& worker) {
    const unsigned int count = getCount();
    for (unsigned int index = 0; index < count; ++index) {
        OCThreadPoolWorker& candidate = getWorker(index);
        if (candidate.getIdleEvent().waitFor(0)) {
            worker = &candidate;
            return true;
        }
    }
    return false;
}

void OCThreadPoolWorkerList::shutdown() {
    for (unsigned int index = 0;; ++index) {
        OCThreadPoolWorker* worker = nullptr;
        {
            // A submission is either over when the worker is asked to terminate, or is refused.
            OCCriticalSectionLock lock(pool.getSynchronizer());
            if (index >= getCount())
                return;
            worker = &getWorker(index);
            if (worker->getIdentifier() == 0)
                continue;
            worker->terminateThread();
        }
        // A job that is waited for may need the synchronizer.
        worker->shutdown();
    }
}

void OCThreadPoolWorkerList::destroyWorkers() {
    OCVectorUtilities(workers).deleteElements();
}

OCThreadPool::OCThreadPool(const OCThreadPoolParameters& poolParameters)
    : parameters(nullptr), workerList(nullptr) {
    try {
        initialize(poolParameters);
    } catch (...) {
        destroy();
        throw;
    }
}

OCThreadPool::~OCThreadPool() noexcept {
    try {
        shutdown();
    } catch (const OXException&) {
    }
    destroy();
}

void OCThreadPool::initialize(const OCThreadPoolParameters& poolParameters) {
    initializeParameters(poolParameters);
    initializeWorkers();
}

void OCThreadPool::initializeParameters(const OCThreadPoolParameters& poolParameters) {
    OCThreadPoolParameters* const copy = new OCThreadPoolParameters(poolParameters);
    destroyParameters();
    parameters = copy;
}

void OCThreadPool::initializeWorkers() {
    destroyWorkers();
    workerList = new OCThreadPoolWorkerList(*this);
}

void OCThreadPool::destroy() {
    destroyWorkers();
    destroyParameters();
}

void OCThreadPool::destroyWorkers() {
    delete workerList;
    workerList = nullptr;
}

void OCThreadPool::destroyParameters() {
    delete parameters;
    parameters = nullptr;
}

/// Shutting down asks the first worker first, so that one tells.
bool OCThreadPool::isShutDown() {
    return workerList == nullptr ||
           (workerList->getCount() != 0 && workerList->getWorker(0).isTerminating(0));
}

void OCThreadPool::execute(const OCThreadPoolJob& job) {
    OCCriticalSectionLock lock(synchronizer);
    if (isShutDown())
        throw OXThreadPool_JobRefused();
    for (;;) {
        OCThreadPoolWorker* worker = nullptr;
        if (!workerList->findWorker(worker) && !workerList->createWorker(worker))
            throw OXThreadPool_JobRefused();
        try {
            worker->setJob(job);
            return;
        } catch (const OXThreadPool_JobRefused&) {
            // The worker has ended; another one may take the job.
        }
    }
}

void OCThreadPool::shutdown() {
    if (workerList != nullptr)
        workerList->shutdown();
}

OCThreadPoolStatistics::~OCThreadPoolStatistics() noexcept = default;

unsigned int OCThreadPoolStatistics::countBusyWorkers() const {
    OCCriticalSectionLock lock(pool.getSynchronizer());
    return pool.getWorkers().getCount() - countIdleWorkers();
}

unsigned int OCThreadPoolStatistics::countIdleWorkers() const {
    OCCriticalSectionLock lock(pool.getSynchronizer());
    OCThreadPoolWorkerList& workers = pool.getWorkers();
    const unsigned int count = workers.getCount();
    unsigned int idle = 0;
    for (unsigned int index = 0; index < count; ++index) {
        OCThreadPoolWorker& worker = workers.getWorker(index);
        OCEvent& event = worker.getIdleEvent();
        if (!event.waitFor(0))
            continue;
        try {
            event.signalEvent();
        } catch (const OXException&) {
            insist([&event] { event.signalEvent(); });
            throw;
        }
        // A worker that ends takes its signal back, perhaps just before it was given back here.
        if (worker.isTerminating(0))
            event.resetEvent();
        else
            ++idle;
    }
    return idle;
}

OXThreadPool::OXThreadPool() = default;
OXThreadPool::~OXThreadPool() noexcept = default;

OXThreadPool_JobRefused::OXThreadPool_JobRefused() {
    setClass("OXThreadPool_JobRefused");
    setMessage("The thread pool job was refused");
}
OXThreadPool_JobRefused::~OXThreadPool_JobRefused() noexcept = default;
