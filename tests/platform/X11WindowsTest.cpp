// The window list and window grabs against windows Qt puts on the server.
#include "ChildProcess.h"
#include "SolidWindow.h"
#include "WindowPicking.h"
#include "X11DisplayCapturer.h"
#include "X11WindowList.h"

#include <QApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <cstdlib>
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

// With a window manager: the list has the managed windows front to back in
// their frames, the window under a point is the front one there, and a window
// half covered by another is still grabbed whole.
TEST(X11Windows, UnderAWindowManagerThePointFindsTheFrontWindowAndACoveredOneGrabsWhole) {
    xvfbApplication();
    ChildProcess manager({"openbox"});
    ASSERT_TRUE(manager.started()) << "openbox is missing (scripts/setup.sh installs it)";
    ASSERT_TRUE(waitFor([] { return std::system("xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'") == 0; }))
        << "the window manager never came up";
    // It names itself before it takes over the screen; give it that moment.
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 500) QApplication::processEvents(QEventLoop::AllEvents, 20);
    // Made before any window is covered, so every window keeps its own pixels.
    X11DisplayCapturer capturer(Rect(0, 0, 1280, 800));
    X11WindowList list;
    const auto back = showSolidWindow(QRect(100, 100, 300, 200), QColor(30, 170, 60), true);
    ASSERT_TRUE(waitFor([&] {
        for (const WindowInfo& w : list.onScreenWindows())
            if (w.id == static_cast<std::uint32_t>(back->winId()) && w.bounds.height() > 200) return true;
        return false;
    })) << "the manager never framed the window: " << [&] {
        std::string listed;
        for (const WindowInfo& w : list.onScreenWindows())
            listed += std::to_string(w.id) + " " + std::to_string(w.bounds.minX()) + "," + std::to_string(w.bounds.minY()) + " " +
                      std::to_string(w.bounds.width()) + "x" + std::to_string(w.bounds.height()) + "; ";
        return listed + " back=" + std::to_string(back->winId());
    }();
    const auto front = showSolidWindow(QRect(250, 180, 300, 200), QColor(200, 30, 30), true);
    front->raise();
    const auto backID = static_cast<std::uint32_t>(back->winId());
    const auto frontID = static_cast<std::uint32_t>(front->winId());

    std::vector<PickableWindow> windows;
    ASSERT_TRUE(waitFor([&] {
        const WindowPicking::ListingContext context{{0, 0, 1280, 800}, 800, {{0, 0, 1280, 800}}, 0, {}};
        windows = WindowPicking::onScreenWindowRects(list.onScreenWindows(), context);
        const auto at = WindowPicking::windowAt({300, 800 - 250.0}, windows);
        return at && at->id == frontID;
    })) << "the front window is not the one under the overlap";
    const auto backOnly = WindowPicking::windowAt({150, 800 - 150.0}, windows);
    ASSERT_TRUE(backOnly);
    EXPECT_EQ(backOnly->id, backID);
    EXPECT_GE(backOnly->fullRect.width(), 300) << "the frame is part of the window";

    // The grab is the window as it shows, frame and all, as large as the list says.
    const int frameLeft = static_cast<int>(100 - backOnly->fullRect.minX());
    const int frameTop = static_cast<int>(backOnly->fullRect.maxY() - (800 - 100));
    std::optional<ImageBuffer> image;
    ASSERT_TRUE(waitFor([&] {
        image = capturer.captureWindow(backID);
        return image && image->pixel(frameLeft + 20, frameTop + 20) == (Rgba8{30, 170, 60, 255});
    }));
    EXPECT_GT(frameTop, 0) << "a title bar above the window";
    EXPECT_EQ(image->width(), static_cast<int>(backOnly->fullRect.width()));
    EXPECT_EQ(image->height(), static_cast<int>(backOnly->fullRect.height()));
    EXPECT_EQ(image->pixel(frameLeft + 250, frameTop + 150), (Rgba8{30, 170, 60, 255})) << "the part the front window covers";
}
