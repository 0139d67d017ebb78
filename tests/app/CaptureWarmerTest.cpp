#include "CaptureWarmer.h"

#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

struct OneScreen final : ScreenLayout {
    Point mouse{10, 10};
    std::vector<ScreenInfo> screens() const override { return {{Rect(0, 0, 100, 80), Rect(0, 0, 100, 80), 1}}; }
    Point mouseLocation() const override { return mouse; }
};

struct CountingDisplays final : DisplayCapturing {
    int grabs = 0;
    std::optional<CapturedDisplay> capture(const ScreenInfo&) override {
        ++grabs;
        return std::nullopt;
    }
};

struct Warmer : ::testing::Test {
    VirtualMainQueue queue;
    OneScreen layout;
    std::shared_ptr<CountingDisplays> displays = std::make_shared<CountingDisplays>();
    bool mayCapture = true;
    std::vector<std::function<void()>> detached;

    CaptureWarmer make() {
        return CaptureWarmer(queue, displays, layout, [this] { return mayCapture; },
                             [this](std::function<void()> work) { detached.push_back(std::move(work)); });
    }
    void runDetached() {
        for (auto& work : detached) work();
        detached.clear();
    }
};

} // namespace

TEST_F(Warmer, GrabsOffTheMainThreadAtStartAndEveryFourMinutes) {
    CaptureWarmer warmer = make();
    warmer.start();
    EXPECT_EQ(displays->grabs, 0) << "the grab belongs to the detached work";
    runDetached();
    EXPECT_EQ(displays->grabs, 1);

    warmer.start(); // a second start changes nothing
    queue.advance(CaptureWarmer::periodSeconds - 1);
    runDetached();
    EXPECT_EQ(displays->grabs, 1);
    queue.advance(1);
    runDetached();
    EXPECT_EQ(displays->grabs, 2);
    queue.advance(CaptureWarmer::periodSeconds);
    runDetached();
    EXPECT_EQ(displays->grabs, 3);
}

TEST_F(Warmer, NothingWithoutScreenAccessOrWithThePointerOffEveryScreen) {
    CaptureWarmer warmer = make();
    mayCapture = false;
    warmer.start();
    warmer.warm("wake");
    layout.mouse = {500, 500};
    mayCapture = true;
    warmer.warm("wake");
    EXPECT_TRUE(detached.empty());
}

TEST_F(Warmer, StopsItsTimerWhenGone) {
    {
        CaptureWarmer warmer = make();
        warmer.start();
    }
    runDetached();
    queue.advance(10 * CaptureWarmer::periodSeconds);
    runDetached();
    EXPECT_EQ(displays->grabs, 1);
}
