// A display grab through the X server sees what Qt put on screen, at the
// place the screen layout says it is.
#include "QtScreenLayout.h"
#include "SolidWindow.h"
#include "DisplayGrabber.h"
#include "X11DisplayCapturer.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <cstdlib>
#include <xcb/xcb.h>

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

namespace {

// Paints blocks of colour straight onto the root window of `display`.
void paintRoot(const std::string& display, int width, int height) {
    xcb_connection_t* xcb = xcb_connect(display.c_str(), nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data;
    const xcb_gcontext_t gc = xcb_generate_id(xcb);
    xcb_create_gc(xcb, gc, screen->root, 0, nullptr);
    for (int y = 0; y < height; y += 50)
        for (int x = 0; x < width; x += 50) {
            const std::uint32_t colour = static_cast<std::uint32_t>((x * 7 + y * 13) % 256) << 16 |
                                         static_cast<std::uint32_t>((x * 3) % 256) << 8 | static_cast<std::uint32_t>(y % 256);
            xcb_change_gc(xcb, gc, XCB_GC_FOREGROUND, &colour);
            const xcb_rectangle_t block{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 50, 50};
            xcb_poly_fill_rectangle(xcb, screen->root, gc, 1, &block);
        }
    xcb_free_gc(xcb, gc);
    std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr)); // a round trip: all drawn
    xcb_disconnect(xcb);
}

} // namespace

// Two monitors laid side by side on one X screen (Xvfb offers one RandR
// monitor, so the layout says where they are): each one frozen is exactly
// its part of the root.
TEST(X11DisplayCapturer, EachMonitorFrozenIsItsPartOfTheRoot) {
    XvfbServer server(1200, 500);
    paintRoot(server.display(), 1200, 500);
    // The main monitor is 700x500 at the left; the second 500x400 beside it,
    // top-aligned. Screen points have their origin at the main one's bottom left.
    const Rect main(0, 0, 700, 500);
    const std::vector<ScreenInfo> monitors{{main, main, 1}, {{700, 100, 500, 400}, {700, 100, 500, 400}, 1}};
    const ScreenInfo wholeRoot{{0, 0, 1200, 500}, {0, 0, 1200, 500}, 1};
    X11DisplayCapturer capturer(main, server.display());
    ASSERT_TRUE(capturer.isConnected());
    const std::optional<CapturedDisplay> root = capturer.capture(wholeRoot);
    ASSERT_TRUE(root);
    const auto grabs = DisplayGrabber::grab(capturer, DisplayGrabber::targets(monitors));
    ASSERT_TRUE(grabs[0] && grabs[1]);
    EXPECT_TRUE(grabs[0]->image.samePixels(root->image.cropped({0, 0, 700, 500})));
    EXPECT_TRUE(grabs[1]->image.samePixels(root->image.cropped({700, 0, 500, 400})));
    EXPECT_NE(grabs[1]->image.pixel(10, 10), grabs[1]->image.pixel(60, 60)) << "the root shows its blocks";
    EXPECT_EQ(grabs[1]->image.width(), 500);
    EXPECT_DOUBLE_EQ(grabs[1]->scale, 1);
}
