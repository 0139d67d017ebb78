// A display grab through the X server sees what Qt put on screen, at the
// place the screen layout says it is.
#include "QtScreenLayout.h"
#include "SolidWindow.h"
#include "X11DisplayCapturer.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QWidget>

#include <gtest/gtest.h>

using namespace tosvar;

TEST(X11DisplayCapturer, GrabsTheDisplayUnderThePointer) {
    const XvfbServer& server = XvfbServer::shared();
    xvfbApplication();
    const auto window = showSolidWindow(QRect(40, 60, 100, 80), QColor(20, 160, 90));
    QCursor::setPos(70, 90);

    QtScreenLayout layout;
    const auto screens = layout.screens();
    ASSERT_EQ(screens.size(), 1u);
    EXPECT_EQ(screens[0].frame, Rect(0, 0, server.width(), server.height()));
    X11DisplayCapturer capturer(QtScreenLayout::mainGlobalFrame());
    ASSERT_TRUE(capturer.isConnected());

    std::optional<CapturedDisplay> grab;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 5000) {
        QApplication::processEvents(QEventLoop::AllEvents, 50);
        grab = capturer.captureScreenUnderCursor(layout);
        if (grab && grab->image.pixel(50, 70) == (Rgba8{20, 160, 90, 255})) break;
    }
    ASSERT_TRUE(grab.has_value());
    EXPECT_EQ(grab->image.width(), server.width());
    EXPECT_EQ(grab->image.height(), server.height());
    EXPECT_EQ(grab->scale, 1);
    EXPECT_EQ(grab->image.pixel(40, 60), (Rgba8{20, 160, 90, 255}));
    EXPECT_EQ(grab->image.pixel(139, 139), (Rgba8{20, 160, 90, 255}));
    EXPECT_NE(grab->image.pixel(140, 140), (Rgba8{20, 160, 90, 255}));
    EXPECT_TRUE(grab->image.isOpaque());
}
