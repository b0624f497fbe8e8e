#include "OCThreadPool.h"

#include "support/Gate.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

TEST(OCThreadPool, HasTheFieldsOfItsParts) {
    EXPECT_EQ(sizeof(OCThreadPoolParameters), 24U);
    EXPECT_EQ(sizeof(OCThreadPoolJob), 24U);
    EXPECT_EQ(sizeof(OCThreadPoolWorker), 680U);
    EXPECT_EQ(sizeof(OCThreadPoolWorkerList), 56U);
    EXPECT_EQ(sizeof(OCThreadPool), 88U);
    EXPECT_EQ(sizeof(OCThreadPoolStatistics), 16U);
    EXPECT_EQ(slots::slotOf(&OCThreadPoolWorker::execute), 2U);
    EXPECT_EQ(slots::slotCount<OCThreadPoolWorker>(), 3U);
}

TEST(OCThreadPool, RunsAJob) {
    OCThreadPool pool((OCThreadPoolParameters()));
    static Gate done;
    pool.execute(OCThreadPoolJob([](OCObject*) {
        done.raise();
        return 0U;
    }));
    done.await();
    pool.shutdown();
    pool.shutdown();
    EXPECT_THROW(pool.execute(OCThreadPoolJob()), OXThreadPool_JobRefused);
}
