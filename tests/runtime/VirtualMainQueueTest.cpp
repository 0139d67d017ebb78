#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

#include <string>

using namespace tosvar;

TEST(VirtualMainQueue, RunsWorkInTimeOrderAtItsMoment) {
    VirtualMainQueue queue;
    std::string log;
    queue.after(2.0, [&] { log += "b@" + std::to_string(static_cast<int>(queue.now())) + " "; });
    queue.after(1.0, [&] {
        log += "a ";
        queue.after(0.5, [&] { log += "a2 "; }); // scheduled from inside, due at 1.5
    });
    queue.after(1.0, [&] { log += "a' "; }); // same moment: scheduling order
    queue.advance(0.99);
    EXPECT_EQ(log, "");
    queue.advance(5);
    EXPECT_EQ(log, "a a' a2 b@2 ");
    EXPECT_DOUBLE_EQ(queue.now(), 5.99);
}

TEST(VirtualMainQueue, CancelledWorkNeverRuns) {
    VirtualMainQueue queue;
    int runs = 0;
    TimerHandle handle = queue.after(1, [&] { ++runs; });
    TimerHandle copy = handle;
    copy.cancel();
    EXPECT_TRUE(handle.isCancelled());
    queue.advance(2);
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(queue.pendingCount(), 0u);
}

TEST(VirtualMainQueue, RepeatingTimerFiresUntilCancelled) {
    VirtualMainQueue queue;
    int ticks = 0;
    TimerHandle timer;
    timer = queue.every(0.25, [&] {
        if (++ticks == 6) timer.cancel();
    });
    queue.advance(1.0);
    EXPECT_EQ(ticks, 4);
    queue.advance(10);
    EXPECT_EQ(ticks, 6);
}

TEST(VirtualMainQueue, AsyncFromAnotherThreadRunsOnAdvance) {
    VirtualMainQueue queue;
    bool ran = false;
    std::thread([&] { queue.async([&] { ran = true; }); }).join();
    EXPECT_FALSE(ran);
    queue.runUntilIdle();
    EXPECT_TRUE(ran);
}
