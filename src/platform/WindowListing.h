#pragma once

#include "Rect.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tosvar {

// One entry of the window list, as the window server tells it.
struct WindowInfo {
    std::uint32_t id = 0;
    std::int64_t ownerPID = 0; // 0 when the window does not say
    int layer = 0;             // a window level (see `WindowLevel`)
    double alpha = 1;
    Rect bounds;               // global, top-left origin, y down, points
    friend bool operator==(const WindowInfo&, const WindowInfo&) = default;
};

// The levels window types map to.
namespace WindowLevel {
inline constexpr int normal = 0;
inline constexpr int dock = 20;
inline constexpr int menu = 101;
inline constexpr int screenSaver = 1000;
// Below every window: a desktop, which is never a pick target.
inline constexpr int desktop = -1;

// The level of a window from its `_NET_WM_WINDOW_TYPE` names, in the
// window's order of preference: the first dock, menu-like or desktop type
// decides. Otherwise a window that bypasses the window manager counts as a
// menu, whatever type it names, and any other as a normal window.
int forTypes(const std::vector<std::string>& typeNames, bool overrideRedirect);
} // namespace WindowLevel

// The windows on screen, front to back.
class WindowListing {
public:
    virtual ~WindowListing() = default;
    virtual std::vector<WindowInfo> onScreenWindows() = 0;
};

} // namespace tosvar
