#pragma once

#include "Rect.h"

#include <cstdint>
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
} // namespace WindowLevel

// The windows on screen, front to back.
class WindowListing {
public:
    virtual ~WindowListing() = default;
    virtual std::vector<WindowInfo> onScreenWindows() = 0;
};

} // namespace tosvar
