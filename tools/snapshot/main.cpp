// tosvar-snapshot OUT.png: writes what the X server shows on its root window
// to a PNG. A developer tool for looking at the application under Xvfb.
#include "PngEncoder.h"

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tosvar-snapshot OUT.png   (grabs the root window of $DISPLAY)\n");
        return 2;
    }
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(xcb_connect(nullptr, nullptr),
                                                                             &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) {
        std::fprintf(stderr, "tosvar-snapshot: cannot connect to the X server at DISPLAY\n");
        return 1;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    if (screen->root_depth != 24 && screen->root_depth != 32) {
        std::fprintf(stderr, "tosvar-snapshot: a %d-bit screen is not supported\n", screen->root_depth);
        return 1;
    }
    auto cookie = xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                screen->width_in_pixels, screen->height_in_pixels, ~0u);
    std::shared_ptr<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection.get(), cookie, nullptr), &std::free);
    if (!reply) {
        std::fprintf(stderr, "tosvar-snapshot: the X server refused the grab\n");
        return 1;
    }
    // Depth-24 pixels arrive as BGRX; the padding byte is not alpha.
    tosvar::MutableImage image(screen->width_in_pixels, screen->height_in_pixels, tosvar::PixelOrder::bgra);
    const std::uint8_t* data = xcb_get_image_data(reply.get());
    const std::size_t rowBytes = std::size_t(screen->width_in_pixels) * 4;
    for (int y = 0; y < image.height(); ++y) {
        std::uint8_t* row = image.row(y);
        std::copy(data + y * rowBytes, data + (y + 1) * rowBytes, row);
        for (int x = 0; x < image.width(); ++x) row[4 * x + 3] = 255;
    }
    if (auto error = tosvar::PngEncoder::writeFile(std::move(image).freeze(), argv[1])) {
        std::fprintf(stderr, "tosvar-snapshot: %s\n", error->message.c_str());
        return 1;
    }
    return 0;
}
