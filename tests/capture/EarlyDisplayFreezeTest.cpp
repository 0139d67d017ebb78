#include "EarlyDisplayFreeze.h"

#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

using namespace tosvar;

namespace {

// A display grab that finishes when the test lets it.
struct GatedDisplays final : DisplayCapturing {
    std::promise<void> open;
    std::shared_future<void> gate = open.get_future().share();
    std::optional<CapturedDisplay> capture(const ScreenInfo& screen) override {
        gate.wait();
        MutableImage image(4, 2);
        return CapturedDisplay{std::move(image).freeze(), screen, 1};
    }
};

struct Threads {
    std::vector<std::thread> running;
    EarlyDisplayFreeze::RunDetached runner() {
        return [this](std::function<void()> work) { running.emplace_back(std::move(work)); };
    }
    ~Threads() {
        for (auto& thread : running) thread.join();
    }
};

} // namespace

TEST(EarlyDisplayFreeze, ALateGrabStillArrivesAndLaterWaitsAnswerAtOnce) {
    Threads threads;
    auto displays = std::make_shared<GatedDisplays>();
    VirtualMainQueue queue;
    const ScreenInfo screen{Rect(0, 0, 4, 2), Rect(0, 0, 4, 2), 1};
    auto freeze = EarlyDisplayFreeze::begin(displays, screen, threads.runner());

    const auto started = EarlyDisplayFreeze::Clock::now();
    EXPECT_FALSE(freeze->wait(started + EarlyDisplayFreeze::deadline)) << "past the deadline the session goes on";
    std::optional<CapturedDisplay> delivered;
    freeze->onCompletion(queue, threads.runner(), [&](const std::optional<CapturedDisplay>& d) { delivered = d; });

    displays->open.set_value();
    ASSERT_TRUE(freeze->wait(EarlyDisplayFreeze::Clock::now() + std::chrono::seconds(10)));
    const auto again = EarlyDisplayFreeze::Clock::now();
    EXPECT_TRUE(freeze->wait(again)) << "a second wait after success answers at once";

    for (auto& thread : threads.running) thread.join();
    threads.running.clear();
    EXPECT_FALSE(delivered) << "the completion runs on the main queue";
    queue.runUntilIdle();
    ASSERT_TRUE(delivered);
    EXPECT_EQ(delivered->image.width(), 4);
}
