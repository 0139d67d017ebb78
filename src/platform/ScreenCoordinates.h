#pragma once

#include "PixelRect.h"
#include "Rect.h"

// Between screen points (origin at the bottom left of the main display, y up)
// and the desktop's global coordinates (origin at the top left of the root
// window, y down), given where the main display stands in the latter.
namespace tosvar::ScreenCoordinates {

inline Rect fromGlobal(const Rect& global, const Rect& mainGlobal) {
    return Rect(global.minX() - mainGlobal.minX(), mainGlobal.maxY() - global.maxY(), global.width(), global.height());
}

inline Rect toGlobal(const Rect& points, const Rect& mainGlobal) {
    return Rect(points.minX() + mainGlobal.minX(), mainGlobal.maxY() - points.maxY(), points.width(), points.height());
}

inline Point pointFromGlobal(Point global, const Rect& mainGlobal) {
    return {global.x - mainGlobal.minX(), mainGlobal.maxY() - global.y};
}

} // namespace tosvar::ScreenCoordinates
