#include "X11ScreenStreaming.h"

#include "ScreenCoordinates.h"
#include "X11SharedSegment.h"

#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace tosvar {

namespace {

struct XcbConnection {
    xcb_connection_t* xcb = nullptr;
    xcb_window_t root = 0;
    int rootWidth = 0, rootHeight = 0, depth = 0;

    explicit XcbConnection(const std::string& display) {
        xcb = xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr);
        if (xcb_connection_has_error(xcb)) return;
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data;
        root = screen->root;
        rootWidth = screen->width_in_pixels;
        rootHeight = screen->height_in_pixels;
        depth = screen->root_depth;
    }
    ~XcbConnection() {
        if (xcb) xcb_disconnect(xcb);
    }
    XcbConnection(const XcbConnection&) = delete;
    XcbConnection& operator=(const XcbConnection&) = delete;

    bool ok() const { return xcb && !xcb_connection_has_error(xcb); }
};

// Root pixels of a display rectangle in screen points.
PixelRect rootPixels(const Rect& screenPoints, const Rect& mainGlobalFrame, double scale) {
    const Rect global = ScreenCoordinates::toGlobal(screenPoints, mainGlobalFrame);
    return {static_cast<int>(std::lround(global.minX() * scale)), static_cast<int>(std::lround(global.minY() * scale)),
            static_cast<int>(std::lround(global.width() * scale)), static_cast<int>(std::lround(global.height() * scale))};
}

// The pointer as XFixes shows it: premultiplied ARGB pixels and where they go.
struct Cursor {
    int x = 0, y = 0; // top-left corner on the root
    int width = 0, height = 0;
    std::uint32_t serial = 0;
    std::vector<std::uint32_t> pixels;

    bool samePlace(const Cursor& other) const {
        return x == other.x && y == other.y && serial == other.serial && width == other.width;
    }
};

std::optional<Cursor> readCursor(xcb_connection_t* xcb) {
    xcb_xfixes_get_cursor_image_reply_t* reply =
        xcb_xfixes_get_cursor_image_reply(xcb, xcb_xfixes_get_cursor_image(xcb), nullptr);
    if (!reply) return std::nullopt;
    Cursor cursor{reply->x - reply->xhot, reply->y - reply->yhot, reply->width, reply->height, reply->cursor_serial, {}};
    const std::uint32_t* pixels = xcb_xfixes_get_cursor_image_cursor_image(reply);
    cursor.pixels.assign(pixels, pixels + static_cast<std::size_t>(cursor.width) * static_cast<std::size_t>(cursor.height));
    std::free(reply);
    return cursor;
}

// Draws the pointer over a BGRA frame whose top-left corner is `area`'s.
void drawCursor(MutableImage& frame, const PixelRect& area, const Cursor& cursor) {
    for (int cy = 0; cy < cursor.height; ++cy) {
        const int y = cursor.y + cy - area.y;
        if (y < 0 || y >= frame.height()) continue;
        std::uint8_t* row = frame.row(y);
        for (int cx = 0; cx < cursor.width; ++cx) {
            const int x = cursor.x + cx - area.x;
            if (x < 0 || x >= frame.width()) continue;
            const std::uint32_t argb = cursor.pixels[static_cast<std::size_t>(cy * cursor.width + cx)];
            const std::uint32_t alpha = argb >> 24;
            if (alpha == 0) continue;
            std::uint8_t* p = row + 4 * x;
            const std::uint32_t keep = 255 - alpha;
            p[0] = static_cast<std::uint8_t>((argb & 0xff) + (p[0] * keep + 127) / 255);
            p[1] = static_cast<std::uint8_t>(((argb >> 8) & 0xff) + (p[1] * keep + 127) / 255);
            p[2] = static_cast<std::uint8_t>(((argb >> 16) & 0xff) + (p[2] * keep + 127) / 255);
        }
    }
}

class X11ScreenStream final : public ScreenStream {
public:
    X11ScreenStream(std::unique_ptr<XcbConnection> connection, PixelRect display, double scale,
                    const StreamConfiguration& configuration, ScreenStreamHandlers handlers)
        : connection_(std::move(connection)), display_(display), scale_(scale), configuration_(configuration),
          handlers_(std::move(handlers)) {
        xcb_connection_t* xcb = connection_->xcb;
        std::free(xcb_damage_query_version_reply(xcb, xcb_damage_query_version(xcb, 1, 1), nullptr));
        std::free(xcb_xfixes_query_version_reply(xcb, xcb_xfixes_query_version(xcb, 4, 0), nullptr));
        damage_ = xcb_generate_id(xcb);
        xcb_damage_create(xcb, damage_, connection_->root, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        xcb_flush(xcb);
        thread_ = std::thread([this] { run(); });
    }
    ~X11ScreenStream() override { stop(); }

    std::optional<Error> updateConfiguration(const StreamConfiguration& configuration) override {
        if (stopped_) return Error{"the screen stream has stopped"};
        {
            const std::lock_guard lock(mutex_);
            configuration_ = configuration;
            changed_ = true;
        }
        wake_.notify_one();
        return std::nullopt;
    }

    // The root shows every window; there is nothing to filter (see the class note).
    std::optional<Error> updateContentFilter(const ContentFilter&) override {
        if (stopped_) return Error{"the screen stream has stopped"};
        return std::nullopt;
    }

    void stop() override {
        {
            const std::lock_guard lock(mutex_);
            if (stopping_) return;
            stopping_ = true;
        }
        wake_.notify_one();
        if (thread_.joinable()) thread_.join();
        stopped_ = true;
    }

private:
    void run() {
        xcb_connection_t* xcb = connection_->xcb;
        auto next = std::chrono::steady_clock::now();
        bool dirty = true; // the first frame goes out at once
        std::optional<Cursor> lastCursor;
        for (;;) {
            StreamConfiguration configuration;
            {
                std::unique_lock lock(mutex_);
                wake_.wait_until(lock, next, [this] { return stopping_ || changed_; });
                if (stopping_) return;
                if (changed_) dirty = true;
                changed_ = false;
                configuration = configuration_;
            }
            const auto interval = std::chrono::microseconds(1'000'000 / std::max(configuration.fps, 1));
            next = std::max(next + interval, std::chrono::steady_clock::now());

            while (xcb_generic_event_t* event = xcb_poll_for_event(xcb)) {
                dirty = true; // only damage is asked for
                std::free(event);
            }
            if (xcb_connection_has_error(xcb)) {
                stopped_ = true;
                if (handlers_.onStopped) handlers_.onStopped(Error{"the connection to the X server was lost"});
                return;
            }
            const PixelRect area = captureArea(configuration);
            std::optional<Cursor> cursor;
            if (configuration.showsCursor) {
                cursor = readCursor(xcb);
                if (cursor && (!lastCursor || !cursor->samePlace(*lastCursor))) dirty = true;
            }
            if (!dirty || area.isEmpty()) continue;
            // Cleared before the grab: what changes during it is reported again.
            xcb_damage_subtract(xcb, damage_, XCB_NONE, XCB_NONE);
            std::optional<MutableImage> frame = grab(area);
            if (!frame) continue;
            if (cursor) drawCursor(*frame, area, *cursor);
            lastCursor = cursor;
            dirty = false;
            handlers_.onFrame({std::move(*frame).freeze(), mediaClockNow()});
        }
    }

    PixelRect captureArea(const StreamConfiguration& configuration) const {
        PixelRect area = display_;
        if (configuration.sourceRect) {
            const Rect& r = *configuration.sourceRect;
            area = {display_.x + static_cast<int>(std::lround(r.minX() * scale_)),
                    display_.y + static_cast<int>(std::lround(r.minY() * scale_)),
                    static_cast<int>(std::lround(r.width() * scale_)), static_cast<int>(std::lround(r.height() * scale_))};
        }
        return area.intersection({0, 0, connection_->rootWidth, connection_->rootHeight});
    }

    std::optional<MutableImage> grab(const PixelRect& area) {
        xcb_connection_t* xcb = connection_->xcb;
        const std::size_t rowBytes = static_cast<std::size_t>(area.width) * 4;
        const std::size_t bytes = rowBytes * static_cast<std::size_t>(area.height);
        if (!segment_ || segment_->capacity() < bytes) segment_ = std::make_unique<SharedSegment>(xcb, bytes);
        if (!segment_->usable()) return std::nullopt;
        xcb_shm_get_image_reply_t* reply = xcb_shm_get_image_reply(
            xcb,
            xcb_shm_get_image(xcb, connection_->root, static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
                              static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height), ~0u,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, segment_->segment(), 0),
            nullptr);
        if (!reply) return std::nullopt;
        std::free(reply);
        MutableImage frame(area.width, area.height, PixelOrder::bgra, PixelMemoryFill::uninitialized);
        for (int y = 0; y < area.height; ++y)
            std::memcpy(frame.row(y), segment_->data() + static_cast<std::size_t>(y) * rowBytes, rowBytes);
        return frame;
    }

    std::unique_ptr<XcbConnection> connection_;
    PixelRect display_;
    double scale_;
    xcb_damage_damage_t damage_ = 0;
    std::unique_ptr<SharedSegment> segment_; // the stream thread's

    std::mutex mutex_;
    std::condition_variable wake_;
    StreamConfiguration configuration_;
    bool changed_ = false;
    bool stopping_ = false;
    std::atomic<bool> stopped_ = false;
    ScreenStreamHandlers handlers_;
    std::thread thread_;
};

} // namespace

X11ScreenStreaming::X11ScreenStreaming(Rect mainGlobalFrame, double pointScale, WindowListing* windows,
                                       std::string display)
    : mainGlobalFrame_(mainGlobalFrame), pointScale_(pointScale > 0 ? pointScale : 1), windows_(windows),
      display_(std::move(display)) {}

Expected<ShareableContent> X11ScreenStreaming::shareableContent() {
    XcbConnection connection(display_);
    if (!connection.ok()) return Error{"cannot connect to the X server"};
    ShareableContent content;
    const auto addDisplay = [&](int x, int y, int width, int height) {
        const Rect global(x / pointScale_, y / pointScale_, width / pointScale_, height / pointScale_);
        content.displays.push_back({ScreenCoordinates::fromGlobal(global, mainGlobalFrame_), pointScale_});
    };
    xcb_randr_get_monitors_reply_t* monitors = xcb_randr_get_monitors_reply(
        connection.xcb, xcb_randr_get_monitors(connection.xcb, connection.root, 1), nullptr);
    if (monitors) {
        for (auto it = xcb_randr_get_monitors_monitors_iterator(monitors); it.rem; xcb_randr_monitor_info_next(&it))
            addDisplay(it.data->x, it.data->y, it.data->width, it.data->height);
        std::free(monitors);
    }
    if (content.displays.empty()) addDisplay(0, 0, connection.rootWidth, connection.rootHeight);
    if (windows_)
        for (const WindowInfo& window : windows_->onScreenWindows())
            content.windows.push_back({window.id, window.ownerPID, window.bounds});
    return content;
}

Expected<std::unique_ptr<ScreenStream>> X11ScreenStreaming::startStream(const ContentFilter& filter,
                                                                        const StreamConfiguration& configuration,
                                                                        ScreenStreamHandlers handlers) {
    auto connection = std::make_unique<XcbConnection>(display_);
    if (!connection->ok()) return Error{"cannot connect to the X server"};
    if (connection->depth != 24 && connection->depth != 32)
        return Error{"a " + std::to_string(connection->depth) + "-bit screen cannot be recorded"};
    const PixelRect display = rootPixels(filter.displayFrame, mainGlobalFrame_, pointScale_);
    return std::unique_ptr<ScreenStream>(
        new X11ScreenStream(std::move(connection), display, pointScale_, configuration, std::move(handlers)));
}

} // namespace tosvar
