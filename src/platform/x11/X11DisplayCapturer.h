#pragma once

#include "DisplayCapturing.h"

#include <memory>
#include <mutex>
#include <string>

struct xcb_connection_t;

namespace tosvar {

// Grabs displays from the X server's root window. With MIT-SHM the pixels come
// through shared memory (well under a millisecond for a full HD display);
// without it, through the ordinary image request. Works on one connection of
// its own; any thread may call it, one grab at a time.
class X11DisplayCapturer final : public DisplayCapturing {
public:
    // `mainGlobalFrame`: where the main display stands on the root window, in
    // the same units as the frames it is asked for.
    explicit X11DisplayCapturer(Rect mainGlobalFrame, const std::string& display = {});
    ~X11DisplayCapturer() override;

    bool isConnected() const;
    std::optional<CapturedDisplay> capture(const ScreenInfo& screen) override;
    // The window's own pixels: its offscreen pixmap where a compositing
    // manager keeps one (with its alpha), else its area on screen.
    std::optional<ImageBuffer> captureWindow(std::uint32_t clientID) override;

private:
    struct Connection;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    Rect mainGlobalFrame_;
};

} // namespace tosvar
