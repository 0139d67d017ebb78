#include "DisplayGrabber.h"
#include "WindowListing.h"

#include "Log.h"

#include <gtest/gtest.h>

#include <mutex>
#include <set>

namespace tosvar {
namespace {

// Displays of known sizes; those in `failing` give nothing.
class FakeDisplays final : public DisplayCapturing {
public:
    std::optional<CapturedDisplay> capture(const ScreenInfo& screen) override {
        std::lock_guard lock(mutex);
        if (failing.contains(screen.frame.minX())) return std::nullopt;
        MutableImage image(static_cast<int>(screen.frame.width() * screen.backingScale), static_cast<int>(screen.frame.height() * screen.backingScale));
        return CapturedDisplay{std::move(image).freeze(), screen, 0};
    }
    std::set<double> failing; // by the frame's left edge
    std::mutex mutex;
};

class LogLines {
public:
    LogLines() {
        setLogSink([this](std::string_view line) {
            std::lock_guard lock(mutex_);
            lines_.emplace_back(line);
        });
    }
    ~LogLines() { setLogSink(nullptr); }
    std::vector<std::string> lines() {
        std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

const std::vector<ScreenInfo> threeScreens{
    {{0, 0, 1440, 900}, {0, 0, 1440, 875}, 2},
    {{1440, 0, 1920, 1080}, {1440, 0, 1920, 1080}, 1},
    {{-1280, 200, 1280, 1024}, {-1280, 200, 1280, 1024}, 1.5},
};

TEST(DisplayGrabber, GrabsEveryDisplayInOrderWithItsScaleAndSaysHowEachWent) {
    FakeDisplays displays;
    displays.failing = {1440};
    LogLines log;
    // Parts run last first, to show each writes only its own slot.
    const ParallelRunner backwards = [](int count, const std::function<void(int, int)>& body) {
        for (int i = count - 1; i >= 0; --i) body(i, i + 1);
    };
    const auto results = DisplayGrabber::grab(displays, DisplayGrabber::targets(threeScreens), backwards);
    ASSERT_EQ(results.size(), 3u);
    ASSERT_TRUE(results[0] && results[2]);
    EXPECT_FALSE(results[1]);
    EXPECT_EQ(results[0]->image.width(), 2880);
    EXPECT_DOUBLE_EQ(results[0]->scale, 2);
    EXPECT_DOUBLE_EQ(results[2]->scale, 1.5);
    EXPECT_EQ(results[2]->screen, threeScreens[2]);
    const std::vector<std::string> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with("display grab: 1=")) << lines[0];
    EXPECT_NE(lines[0].find(" 2="), std::string::npos);
    EXPECT_NE(lines[0].find("ms(failed) 3="), std::string::npos) << lines[0];
}

TEST(DisplayGrabber, GrabAllLeavesOutTheDisplaysThatFailed) {
    class Layout final : public ScreenLayout {
    public:
        std::vector<ScreenInfo> screens() const override { return threeScreens; }
        Point mouseLocation() const override { return {-100, 500}; }
    } layout;
    FakeDisplays displays;
    displays.failing = {0};
    const std::vector<CapturedDisplay> all = DisplayGrabber::grabAll(displays, layout);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].screen, threeScreens[1]);
    const std::optional<CapturedDisplay> under = displays.captureScreenUnderCursor(layout);
    ASSERT_TRUE(under);
    EXPECT_EQ(under->screen, threeScreens[2]) << "the pointer stands on the display left of the main one";
}

} // namespace
} // namespace tosvar

namespace tosvar {
namespace {

TEST(WindowLevel, TheWindowsFirstKnownTypeDecides) {
    struct Row {
        std::vector<std::string> types;
        bool overrideRedirect;
        int level;
    };
    const Row rows[] = {
        {{}, false, WindowLevel::normal},
        {{}, true, WindowLevel::menu},
        {{"_NET_WM_WINDOW_TYPE_DOCK"}, false, WindowLevel::dock},
        {{"_NET_WM_WINDOW_TYPE_POPUP_MENU"}, false, WindowLevel::menu},
        {{"_NET_WM_WINDOW_TYPE_TOOLTIP"}, true, WindowLevel::menu},
        {{"_NET_WM_WINDOW_TYPE_DESKTOP"}, false, WindowLevel::desktop},
        {{"_NET_WM_WINDOW_TYPE_NORMAL"}, true, WindowLevel::menu},
        {{"_NET_WM_WINDOW_TYPE_NORMAL"}, false, WindowLevel::normal},
        {{"_NET_WM_WINDOW_TYPE_DIALOG", "_NET_WM_WINDOW_TYPE_DOCK"}, false, WindowLevel::dock},
        {{"_NET_WM_WINDOW_TYPE_POPUP_MENU", "_NET_WM_WINDOW_TYPE_DOCK"}, false, WindowLevel::menu},
        {{"_SOMETHING_ELSE"}, false, WindowLevel::normal},
    };
    for (const Row& row : rows) EXPECT_EQ(WindowLevel::forTypes(row.types, row.overrideRedirect), row.level) << ::testing::PrintToString(row.types);
}

} // namespace
} // namespace tosvar
