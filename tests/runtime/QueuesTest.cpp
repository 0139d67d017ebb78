#include "SerialQueue.h"
#include "WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <vector>

using namespace tosvar;

TEST(SerialQueue, RunsInOrderOnItsOwnThread) {
    std::vector<int> order;
    std::thread::id worker;
    {
        SerialQueue queue("app.vemla.test.serial");
        EXPECT_EQ(queue.label(), "app.vemla.test.serial");
        for (int i = 0; i < 500; ++i) queue.async([&order, i] { order.push_back(i); });
        queue.sync([&] {
            worker = std::this_thread::get_id();
            EXPECT_TRUE(queue.isCurrent());
        });
        EXPECT_FALSE(queue.isCurrent());
        EXPECT_EQ(order.size(), 500u);
        queue.async([&order] { order.push_back(500); }); // drained on destruction
    }
    ASSERT_EQ(order.size(), 501u);
    for (int i = 0; i <= 500; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(WorkerPool, RunsEverythingAcrossItsThreads) {
    std::atomic<int> sum{0};
    std::mutex mutex;
    std::set<std::thread::id> threads;
    {
        WorkerPool pool(3, "test.pool");
        EXPECT_EQ(pool.threadCount(), 3u);
        for (int i = 1; i <= 1000; ++i) {
            pool.detach([&, i] {
                sum += i;
                std::lock_guard lock(mutex);
                threads.insert(std::this_thread::get_id());
            });
        }
    }
    EXPECT_EQ(sum.load(), 500500);
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}
