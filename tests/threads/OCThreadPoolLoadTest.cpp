// The pool under load, and at rest.
//
// The everyday forms are short. With ORVABASE_LONG_TESTS set in the environment, as in
//
//     ORVABASE_LONG_TESTS=1 scripts/test release threads
//
// a million jobs are submitted (50,000 under ThreadSanitizer).

#include "OCThreadPool.h"

#include "support/FaultInjection.h"
#include "support/Gate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

OCThreadPoolParameters sizes(unsigned int initial, unsigned int maximum) {
    OCThreadPoolParameters parameters;
    parameters.setInitialSize(initial);
    parameters.setMaximumSize(maximum);
    return parameters;
}

unsigned long jobsToSubmit() {
    if (std::getenv("ORVABASE_LONG_TESTS") == nullptr)
        return fault::sanitized ? 4000 : 40000;
#if defined(__SANITIZE_THREAD__)
    return 50000;
#else
    return 1000000;
#endif
}

/// A job that counts how often it is run.
class Counted : public OCObject {
public:
    OCThreadPoolJob job() {
        return OCThreadPoolJob(
            [](OCObject* object) {
                ++static_cast<Counted*>(object)->runs;
                return 0U;
            },
            this);
    }
    std::atomic<unsigned int> runs{0};
};

/// The processor time that the process has used, in seconds.
double processorTime() {
    struct timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

} // namespace

TEST(OCThreadPoolLoad, EightThreadsSubmitJobsOfWhichEachIsRunOnce) {
    constexpr unsigned long submitters = 8;
    const unsigned long each = jobsToSubmit() / submitters;
    std::vector<Counted> jobs(each * submitters);
    std::atomic<unsigned long> refusals{0};
    {
        OCThreadPool pool(sizes(1, 6));
        std::vector<std::thread> threads;
        for (unsigned long submitter = 0; submitter < submitters; ++submitter)
            threads.emplace_back([&, submitter] {
                for (unsigned long i = submitter * each; i < (submitter + 1) * each;) {
                    try {
                        pool.execute(jobs[i].job());
                        ++i;
                    } catch (const OXThreadPool_JobRefused&) {
                        ++refusals; // all workers are busy
                        std::this_thread::yield();
                    }
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_LE(pool.getWorkers().getCount(), 6U);
    }
    const auto runOnce = [](const Counted& job) { return job.runs == 1; };
    EXPECT_EQ(std::count_if(jobs.begin(), jobs.end(), runOnce), static_cast<long>(jobs.size()));
    RecordProperty("refusals", std::to_string(refusals));
}

TEST(OCThreadPoolLoad, EachJobTakenBeforeAShutdownIsRunAndEachLaterOneRefused) {
    const int rounds = fault::sanitized ? 20 : 100;
    constexpr unsigned long submitters = 3;
    constexpr unsigned long limit = 5000;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::vector<Counted>> jobs;
        for (unsigned long i = 0; i < submitters; ++i)
            jobs.emplace_back(limit);
        std::vector<std::vector<unsigned char>> taken(submitters,
                                                      std::vector<unsigned char>(limit));
        Gate submitted;
        std::atomic<bool> stopped{false};
        OCThreadPool pool(sizes(2, 4));
        std::vector<std::thread> threads;
        for (unsigned long submitter = 0; submitter < submitters; ++submitter)
            threads.emplace_back([&, submitter] {
                for (unsigned long i = 0; i < limit; ++i) {
                    const bool late = stopped;
                    try {
                        pool.execute(jobs[submitter][i].job());
                        taken[submitter][i] = 1;
                        EXPECT_FALSE(late);
                    } catch (const OXThreadPool_JobRefused&) {
                        if (late)
                            break;
                    }
                    submitted.raise();
                }
            });
        std::thread counter([&] {
            const OCThreadPoolStatistics statistics(pool);
            while (!stopped) {
                EXPECT_LE(statistics.countIdleWorkers(), 4U);
                std::this_thread::yield();
            }
        });
        submitted.await(static_cast<unsigned int>(round % 50) + 1);
        pool.shutdown();
        stopped = true;
        for (std::thread& thread : threads)
            thread.join();
        counter.join();
        for (unsigned long submitter = 0; submitter < submitters; ++submitter)
            for (unsigned long i = 0; i < limit; ++i)
                ASSERT_EQ(jobs[submitter][i].runs, taken[submitter][i]);
    }
}

TEST(OCThreadPoolLoad, PoolsComeAndGoUnderLoad) {
    const int rounds = fault::sanitized ? 50 : 300;
    for (int round = 0; round < rounds; ++round) {
        std::vector<Counted> jobs(50);
        unsigned int taken = 0;
        {
            OCThreadPool pool(sizes(static_cast<unsigned int>(round % 4), 3));
            for (Counted& job : jobs) {
                try {
                    pool.execute(job.job());
                    ++taken;
                } catch (const OXThreadPool_JobRefused&) {
                }
            }
        }
        unsigned int runs = 0;
        for (const Counted& job : jobs)
            runs += job.runs;
        ASSERT_EQ(runs, taken);
        ASSERT_GE(taken, 1U);
    }
}

TEST(OCThreadPoolLoad, TwentyIdleWorkersUseLessThanAThousandthOfACore) {
    OCThreadPool pool(sizes(20, 20));
    // The best of several stretches, each of which every worker wakes in.
    double best = 1;
    for (int stretch = 0; stretch < 3 && best >= 0.001; ++stretch) {
        const double before = processorTime();
        struct timespec time = {2, 100000000};
        while (nanosleep(&time, &time) != 0) {
        }
        best = std::min(best, (processorTime() - before) / 2.1);
    }
    EXPECT_LT(best, fault::sanitized ? 0.02 : 0.001);
    RecordProperty("core_permille", std::to_string(best * 1000));
}
