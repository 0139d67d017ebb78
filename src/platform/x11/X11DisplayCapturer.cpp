#include "X11DisplayCapturer.h"

#include "Log.h"
#include "ScreenCoordinates.h"
#include "X11SharedSegment.h"

#include <xcb/composite.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace tosvar {

struct X11DisplayCapturer::Connection {
    xcb_connection_t* xcb = nullptr;
    xcb_window_t root = 0;
    int rootWidth = 0;
    int rootHeight = 0;
    int depth = 0;
    bool shm = false;
    std::unique_ptr<SharedSegment> segment; // detached before the connection closes

    ~Connection() {
        segment.reset();
        if (xcb) xcb_disconnect(xcb);
    }

    SharedSegment* segmentFor(std::size_t bytes) {
        if (!segment || segment->capacity() < bytes) segment = std::make_unique<SharedSegment>(xcb, bytes);
        return segment->usable() ? segment.get() : nullptr;
    }
};

namespace {

// Copies BGRX rows into an image, making the padding byte an opaque alpha;
// BGRA rows of a 32-bit visual (premultiplied already) keep theirs.
ImageBuffer imageFromRows(const std::uint8_t* pixels, int width, int height, bool keepAlpha = false) {
    MutableImage image(width, height, PixelOrder::bgra, PixelMemoryFill::uninitialized);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image.row(y);
        std::memcpy(row, pixels + static_cast<std::size_t>(y) * rowBytes, rowBytes);
        if (!keepAlpha)
            for (int x = 0; x < width; ++x) row[4 * x + 3] = 255;
    }
    return std::move(image).freeze();
}

// A plain image request for an area of any drawable; none when it fails.
std::optional<ImageBuffer> getImage(xcb_connection_t* xcb, xcb_drawable_t drawable, const PixelRect& area, bool keepAlpha) {
    xcb_get_image_reply_t* reply = xcb_get_image_reply(
        xcb,
        xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(area.x),
                      static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height), ~0u),
        nullptr);
    std::optional<ImageBuffer> image;
    const std::size_t bytes = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) * 4;
    if (reply && static_cast<std::size_t>(xcb_get_image_data_length(reply)) >= bytes)
        image = imageFromRows(xcb_get_image_data(reply), area.width, area.height, keepAlpha);
    std::free(reply);
    return image;
}

} // namespace

X11DisplayCapturer::X11DisplayCapturer(Rect mainGlobalFrame, const std::string& display)
    : connection_(std::make_unique<Connection>()), mainGlobalFrame_(mainGlobalFrame) {
    Connection& c = *connection_;
    c.xcb = xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr);
    if (xcb_connection_has_error(c.xcb)) {
        logLine("display grab: cannot connect to the X server");
        return;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c.xcb)).data;
    c.root = screen->root;
    c.rootWidth = screen->width_in_pixels;
    c.rootHeight = screen->height_in_pixels;
    c.depth = screen->root_depth;
    xcb_shm_query_version_reply_t* version = xcb_shm_query_version_reply(c.xcb, xcb_shm_query_version(c.xcb), nullptr);
    c.shm = version != nullptr;
    std::free(version);
    // Every window kept in a pixmap of its own from now on, so a window that
    // gets covered can still be grabbed whole. The redirect lasts as long as
    // this connection; the server goes on painting the screen as before.
    xcb_composite_query_version_reply_t* composite =
        xcb_composite_query_version_reply(c.xcb, xcb_composite_query_version(c.xcb, 0, 4), nullptr);
    if (composite) {
        xcb_composite_redirect_subwindows(c.xcb, c.root, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        xcb_flush(c.xcb);
    } else {
        logLine("windowGrab: the X server has no Composite extension; covered windows are grabbed as seen");
    }
    std::free(composite);
}

X11DisplayCapturer::~X11DisplayCapturer() = default;

bool X11DisplayCapturer::isConnected() const { return connection_->xcb && !xcb_connection_has_error(connection_->xcb); }

std::optional<CapturedDisplay> X11DisplayCapturer::capture(const ScreenInfo& screen) {
    const std::lock_guard lock(mutex_);
    if (!isConnected()) return std::nullopt;
    Connection& c = *connection_;
    if (c.depth != 24 && c.depth != 32) {
        logLine("display grab: a " + std::to_string(c.depth) + "-bit screen is not supported");
        return std::nullopt;
    }
    const Rect global = ScreenCoordinates::toGlobal(screen.frame, mainGlobalFrame_);
    const double scale = screen.backingScale > 0 ? screen.backingScale : 1;
    const PixelRect area = PixelRect{static_cast<int>(std::lround(global.minX() * scale)),
                                     static_cast<int>(std::lround(global.minY() * scale)),
                                     static_cast<int>(std::lround(global.width() * scale)),
                                     static_cast<int>(std::lround(global.height() * scale))}
                               .intersection({0, 0, c.rootWidth, c.rootHeight});
    if (area.isEmpty()) return std::nullopt;

    ImageBuffer image;
    const std::size_t bytes = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) * 4;
    if (SharedSegment* segment = c.shm ? c.segmentFor(bytes) : nullptr) {
        xcb_shm_get_image_reply_t* reply = xcb_shm_get_image_reply(
            c.xcb,
            xcb_shm_get_image(c.xcb, c.root, static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
                              static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height), ~0u,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, segment->segment(), 0),
            nullptr);
        if (reply) image = imageFromRows(segment->data(), area.width, area.height);
        std::free(reply);
    }
    if (image.isEmpty()) {
        // Without shared memory: the plain request on the area of the root.
        if (std::optional<ImageBuffer> plain = getImage(c.xcb, c.root, area, false)) image = *plain;
    }
    if (image.isEmpty()) {
        logLine("display grab: the X server gave no image of " + std::to_string(area.width) + "x" + std::to_string(area.height) +
                " at " + std::to_string(area.x) + "," + std::to_string(area.y));
        return std::nullopt;
    }
    return CapturedDisplay{image, screen, static_cast<double>(area.width) / std::max(1.0, screen.frame.width())};
}

namespace {

// The child of the root that holds `window`: the frame a window manager put
// around it, or the window itself when it has none.
xcb_window_t topLevel(xcb_connection_t* xcb, xcb_window_t root, xcb_window_t window) {
    for (int depth = 0; depth < 16; ++depth) {
        xcb_query_tree_reply_t* tree = xcb_query_tree_reply(xcb, xcb_query_tree(xcb, window), nullptr);
        if (!tree) return window;
        const xcb_window_t parent = tree->parent;
        std::free(tree);
        if (parent == root || parent == XCB_NONE) return window;
        window = parent;
    }
    return window;
}

} // namespace

std::optional<ImageBuffer> X11DisplayCapturer::captureWindow(std::uint32_t clientID) {
    const std::lock_guard lock(mutex_);
    if (!isConnected()) return std::nullopt;
    xcb_connection_t* xcb = connection_->xcb;
    // The window as it shows: with the frame its manager drew round it.
    const xcb_window_t windowID = topLevel(xcb, connection_->root, clientID);
    xcb_get_geometry_reply_t* geometry = xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, windowID), nullptr);
    if (!geometry) {
        logLine("windowGrab id=" + std::to_string(clientID) + " unknown window → frozen-crop fallback");
        return std::nullopt;
    }
    const int width = geometry->width, height = geometry->height;
    const bool keepAlpha = geometry->depth == 32;
    const bool supported = geometry->depth == 24 || geometry->depth == 32;
    std::free(geometry);
    if (!supported || width < 1 || height < 1) return std::nullopt;

    // A compositing manager keeps the window's pixels off screen, whole and
    // with their alpha, even where other windows cover it.
    std::optional<ImageBuffer> image;
    const xcb_pixmap_t pixmap = xcb_generate_id(xcb);
    xcb_generic_error_t* error = xcb_request_check(xcb, xcb_composite_name_window_pixmap_checked(xcb, windowID, pixmap));
    if (!error) {
        image = getImage(xcb, pixmap, {0, 0, width, height}, keepAlpha);
        xcb_free_pixmap(xcb, pixmap);
    }
    std::free(error);
    const char* path = image ? "composite pixmap" : "window area";
    if (!image) image = getImage(xcb, windowID, {0, 0, width, height}, keepAlpha);
    if (!image) {
        logLine("windowGrab id=" + std::to_string(clientID) + " grab failed → frozen-crop fallback");
        return std::nullopt;
    }
    logLine("windowGrab id=" + std::to_string(clientID) + (windowID != clientID ? " (framed)" : "") + " " + path + " image=" +
            std::to_string(width) + "x" +
            std::to_string(height) + " ok");
    return image;
}

} // namespace tosvar
