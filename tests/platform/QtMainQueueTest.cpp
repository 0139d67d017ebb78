#include "QtMainQueue.h"

#include "TestApplication.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace tosvar;

namespace {

// Spins the event loop until `done` or a generous limit.
void spinUntil(const std::function<bool()>& done, int limitMs = 5000) {
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (done()) loop.quit();
    });
    poll.start(1);
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

TEST(QtMainQueue, TimersRunInOrderAndCancelledOnesDoNot) {
    testApplication<QCoreApplication>();
    QtMainQueue queue;
    std::string log;
    queue.after(0.03, [&] { log += "late "; });
    queue.after(0.0, [&] { log += "now "; });
    TimerHandle cancelled = queue.after(0.01, [&] { log += "cancelled "; });
    cancelled.cancel();
    const double start = queue.now();
    spinUntil([&] { return log.find("late") != std::string::npos; });
    EXPECT_EQ(log, "now late ");
    EXPECT_GE(queue.now() - start, 0.029);
}

TEST(QtMainQueue, RepeatingTimerAndAsyncFromAnotherThread) {
    testApplication<QCoreApplication>();
    QtMainQueue queue;
    int ticks = 0;
    TimerHandle timer;
    timer = queue.every(0.005, [&] {
        if (++ticks == 3) timer.cancel();
    });
    std::thread::id ranOn;
    std::thread([&] { queue.async([&] { ranOn = std::this_thread::get_id(); }); }).join();
    spinUntil([&] { return ticks >= 3 && ranOn != std::thread::id(); });
    spinUntil([] { return false; }, 30); // a cancelled timer stays quiet
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}
