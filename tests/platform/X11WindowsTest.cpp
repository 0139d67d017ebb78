// The window list and window grabs against windows Qt puts on the server.
#include "SolidWindow.h"
#include "X11DisplayCapturer.h"
#include "X11WindowList.h"

#include <QApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace tosvar;

namespace {

template <typename Condition>
bool waitFor(Condition condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < 5000) QApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

} // namespace

TEST(X11Windows, ListsWindowsFrontToBackAndGrabsOneByItsId) {
    xvfbApplication();
    const auto back = showSolidWindow(QRect(100, 100, 300, 200), QColor(200, 40, 40));
    const auto front = showSolidWindow(QRect(150, 120, 100, 60), QColor(40, 40, 200));
    front->raise();
    const auto backID = static_cast<std::uint32_t>(back->winId());
    const auto frontID = static_cast<std::uint32_t>(front->winId());

    X11WindowList list;
    std::vector<WindowInfo> windows;
    auto indexOf = [&](std::uint32_t id) {
        for (std::size_t i = 0; i < windows.size(); ++i)
            if (windows[i].id == id) return static_cast<int>(i);
        return -1;
    };
    ASSERT_TRUE(waitFor([&] {
        windows = list.onScreenWindows();
        return indexOf(backID) >= 0 && indexOf(frontID) >= 0;
    }));
    EXPECT_LT(indexOf(frontID), indexOf(backID)) << "front to back";
    const WindowInfo& info = windows[static_cast<std::size_t>(indexOf(backID))];
    EXPECT_EQ(info.bounds, Rect(100, 100, 300, 200));
    EXPECT_EQ(info.ownerPID, ::getpid());
    EXPECT_DOUBLE_EQ(info.alpha, 1);
    EXPECT_EQ(info.layer, WindowLevel::menu) << "a window the manager never sees counts as a menu";

    X11DisplayCapturer capturer(Rect(0, 0, 1280, 800));
    std::optional<ImageBuffer> image;
    ASSERT_TRUE(waitFor([&] {
        image = capturer.captureWindow(frontID);
        return image && image->pixel(5, 5) == (Rgba8{40, 40, 200, 255});
    }));
    EXPECT_EQ(image->width(), 100);
    EXPECT_EQ(image->height(), 60);
    EXPECT_FALSE(capturer.captureWindow(0x7fffff)) << "no such window";
}
