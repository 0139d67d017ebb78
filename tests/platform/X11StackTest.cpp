// Proves the display stack the capture code stands on: a Qt window mapped on
// our own Xvfb shows up, pixel for pixel, in a grab of the X11 root window.
#include "SolidWindow.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>

#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

using namespace tosvar;

namespace {

struct RootGrab {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bgrx; // 32 bits per pixel, as a 24-bit server sends them

    std::array<int, 3> rgb(int x, int y) const {
        const std::uint8_t* p = bgrx.data() + (static_cast<std::size_t>(y) * width + x) * 4;
        return {p[2], p[1], p[0]};
    }
};

RootGrab grabRoot(const std::string& display) {
    RootGrab grab;
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(xcb_connect(display.c_str(), nullptr),
                                                                             &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) return grab;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    grab.width = screen->width_in_pixels;
    grab.height = screen->height_in_pixels;
    auto cookie = xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                static_cast<std::uint16_t>(grab.width), static_cast<std::uint16_t>(grab.height),
                                ~0u);
    std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(connection.get(), cookie, nullptr), &std::free);
    if (!reply) return grab;
    const std::uint8_t* data = xcb_get_image_data(reply.get());
    grab.bgrx.assign(data, data + xcb_get_image_data_length(reply.get()));
    return grab;
}

} // namespace

TEST(X11Stack, QtWindowIsReadBackThroughARootGrab) {
    const XvfbServer& server = XvfbServer::shared();
    xvfbApplication();
    const auto window = showSolidWindow(QRect(100, 120, 200, 150), QColor(250, 20, 130));

    // Wait until the server has drawn the window, or give up after five seconds.
    RootGrab grab;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 5000) {
        QApplication::processEvents(QEventLoop::AllEvents, 50);
        grab = grabRoot(server.display());
        if (!grab.bgrx.empty() && grab.rgb(150, 170) == (std::array<int, 3>{250, 20, 130})) break;
    }
    ASSERT_EQ(grab.width, server.width());
    ASSERT_EQ(grab.height, server.height());
    EXPECT_EQ(grab.rgb(100, 120), (std::array<int, 3>{250, 20, 130}));
    EXPECT_EQ(grab.rgb(299, 269), (std::array<int, 3>{250, 20, 130}));
    EXPECT_NE(grab.rgb(99, 120), (std::array<int, 3>{250, 20, 130}));
    EXPECT_NE(grab.rgb(300, 269), (std::array<int, 3>{250, 20, 130}));
}
