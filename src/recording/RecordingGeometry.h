#pragma once

#include <algorithm>
#include <cmath>

namespace tosvar::RecordingGeometry {

// Pixels for a length in points: rounded, at least 2, and even, since video
// frames need even sides.
inline int evenPixels(double points, double scale) {
    const long pixels = std::max(2L, std::lround(points * scale));
    return static_cast<int>(pixels & ~1L);
}

} // namespace tosvar::RecordingGeometry
