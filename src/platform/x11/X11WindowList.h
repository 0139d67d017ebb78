#pragma once

#include "WindowListing.h"

#include <memory>
#include <string>

struct xcb_connection_t;

namespace tosvar {

// The window list from the X server: the window manager's stacking list
// (`_NET_CLIENT_LIST_STACKING`), or the root's children where no window
// manager keeps one. Owner from `_NET_WM_PID`, level from
// `_NET_WM_WINDOW_TYPE` (override-redirect windows count as menus), alpha from
// `_NET_WM_WINDOW_OPACITY`. Bounds are in pixels divided by `scale`.
class X11WindowList final : public WindowListing {
public:
    explicit X11WindowList(double scale = 1, const std::string& display = {});
    ~X11WindowList() override;

    std::vector<WindowInfo> onScreenWindows() override;

private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
    double scale_;
};

} // namespace tosvar
