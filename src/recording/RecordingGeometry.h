#pragma once

#include "Rect.h"

#include <algorithm>
#include <cmath>

namespace tosvar::RecordingGeometry {

// Pixels for a length in points: rounded, at least 2, and even, since video
// frames need even sides.
inline int evenPixels(double points, double scale) {
    const long pixels = std::max(2L, std::lround(points * scale));
    return static_cast<int>(pixels & ~1L);
}

// `rect` moved by `delta`, its origin rounded and kept so the rectangle
// stays inside `bounds`; the size stays.
inline Rect movedRegion(const Rect& rect, Point delta, const Rect& bounds) {
    const double x = std::clamp(std::round(rect.minX() + delta.x), bounds.minX(), std::max(bounds.minX(), bounds.maxX() - rect.width()));
    const double y = std::clamp(std::round(rect.minY() + delta.y), bounds.minY(), std::max(bounds.minY(), bounds.maxY() - rect.height()));
    return Rect(x, y, rect.width(), rect.height());
}

} // namespace tosvar::RecordingGeometry
