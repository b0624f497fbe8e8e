// The thread pool beside the same hand-over written plainly with the standard library.

#include "OCThreadPool.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <semaphore.h>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace {

using benchmark::State;

/// A pool without a queue as one writes it down: workers are made on demand, a job goes to the
/// first idle one, and whoever submits waits until the worker has taken it.
class PlainPool {
public:
    typedef unsigned int (*Callback)(void*);

    explicit PlainPool(unsigned int initialSize, unsigned int maximumSize) : maximum(maximumSize) {
        while (workers.size() < initialSize)
            workers.push_back(std::make_unique<Worker>(true));
    }

    bool execute(Callback callback, void* object) {
        std::lock_guard<std::mutex> lock(mutex);
        for (const auto& worker : workers) {
            if (worker->claim()) {
                worker->run(callback, object);
                return true;
            }
        }
        if (workers.size() == maximum)
            return false;
        workers.push_back(std::make_unique<Worker>(false));
        workers.back()->run(callback, object);
        return true;
    }

private:
    class Worker {
    public:
        explicit Worker(bool isIdle) : idle(isIdle), thread([this] { loop(); }) {}
        ~Worker() {
            {
                std::lock_guard<std::mutex> lock(mutex);
                terminating = true;
                handedOver.notify_one();
            }
            thread.join();
        }
        bool claim() {
            std::lock_guard<std::mutex> lock(mutex);
            const bool claimed = idle;
            idle = false;
            return claimed;
        }
        void run(Callback function, void* argument) {
            std::unique_lock<std::mutex> lock(mutex);
            callback = function;
            object = argument;
            pending = true;
            handedOver.notify_one();
            accepted.wait(lock, [this] { return !pending; });
        }

    private:
        void loop() {
            std::unique_lock<std::mutex> lock(mutex);
            while (true) {
                handedOver.wait(lock, [this] { return pending || terminating; });
                if (!pending)
                    return;
                const Callback function = callback;
                void* const argument = object;
                pending = false;
                accepted.notify_one();
                lock.unlock();
                function(argument);
                lock.lock();
                idle = true;
            }
        }

        std::mutex mutex;
        std::condition_variable handedOver;
        std::condition_variable accepted;
        bool idle;
        bool pending = false;
        bool terminating = false;
        Callback callback = nullptr;
        void* object = nullptr;
        std::thread thread;
    };

    std::mutex mutex;
    unsigned int maximum;
    std::vector<std::unique_ptr<Worker>> workers;
};

class Done : public OCObject {
public:
    Done() { sem_init(&semaphore, 0, 0); }
    Done(const Done&) = delete;
    Done& operator=(const Done&) = delete;
    ~Done() override { sem_destroy(&semaphore); }
    void raise() { sem_post(&semaphore); }
    void await() {
        while (sem_wait(&semaphore) != 0) {
        }
    }

private:
    sem_t semaphore;
};

OCThreadPoolParameters sizes(unsigned int initial, unsigned int maximum) {
    OCThreadPoolParameters parameters;
    parameters.setInitialSize(initial);
    parameters.setMaximumSize(maximum);
    return parameters;
}

// One job, from its submission to its end

void orvabaseOneJob(State& state) {
    OCThreadPool pool(sizes(2, 20));
    Done done;
    const OCThreadPoolJob job(
        [](OCObject* object) {
            static_cast<Done*>(object)->raise();
            return 0U;
        },
        &done);
    for (auto _ : state) {
        pool.execute(job);
        done.await();
    }
}

void plainOneJob(State& state) {
    PlainPool pool(2, 20);
    Done done;
    for (auto _ : state) {
        pool.execute(
            [](void* object) {
                static_cast<Done*>(object)->raise();
                return 0U;
            },
            &done);
        done.await();
    }
}

// Many jobs from one thread

constexpr unsigned int jobCount = 10000;

class Countdown : public OCObject {
public:
    void finish() {
        if (left.fetch_sub(1) == 1)
            done.raise();
    }
    void await() { done.await(); }

private:
    std::atomic<unsigned int> left{jobCount};
    Done done;
};

void orvabaseManyJobs(State& state) {
    OCThreadPool pool(sizes(1, 20));
    for (auto _ : state) {
        Countdown countdown;
        const OCThreadPoolJob job(
            [](OCObject* object) {
                static_cast<Countdown*>(object)->finish();
                return 0U;
            },
            &countdown);
        for (unsigned int i = 0; i < jobCount;) {
            try {
                pool.execute(job);
                ++i;
            } catch (const OXThreadPool_JobRefused&) {
            }
        }
        countdown.await();
    }
    state.SetItemsProcessed(state.iterations() * jobCount);
}

void plainManyJobs(State& state) {
    PlainPool pool(1, 20);
    for (auto _ : state) {
        Countdown countdown;
        for (unsigned int i = 0; i < jobCount;) {
            if (pool.execute(
                    [](void* object) {
                        static_cast<Countdown*>(object)->finish();
                        return 0U;
                    },
                    &countdown))
                ++i;
        }
        countdown.await();
    }
    state.SetItemsProcessed(state.iterations() * jobCount);
}

// What idle workers cost: processor time in thousandths of a core

double processorSeconds() {
    struct timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void orvabaseIdle(State& state) {
    OCThreadPool pool(sizes(20, 20));
    constexpr unsigned int seconds = 6;
    double used = 0;
    for (auto _ : state) {
        const double before = processorSeconds();
        sleep(seconds);
        used += processorSeconds() - before;
    }
    state.counters["core_permille"] =
        used * 1000 / (seconds * static_cast<double>(state.iterations()));
}

BENCHMARK(orvabaseOneJob)->Name("BM_pool_one_job/orvabase")->UseRealTime();
BENCHMARK(plainOneJob)->Name("BM_pool_one_job/std_thread")->UseRealTime();
BENCHMARK(orvabaseManyJobs)->Name("BM_pool_10K_jobs/orvabase")->UseRealTime();
BENCHMARK(plainManyJobs)->Name("BM_pool_10K_jobs/std_thread")->UseRealTime();
BENCHMARK(orvabaseIdle)->Name("BM_pool_20_idle_workers/orvabase")->Iterations(1)->UseRealTime();

} // namespace
