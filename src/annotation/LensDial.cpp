#include "LensDial.h"

#include <algorithm>
#include <cmath>

namespace tosvar::LensDial {

double ringRadius(const Rect& rect) { return std::clamp(0.24 * rect.height(), 26.0, 42.0); }

Point center(const Rect& rect) {
    const double height = rect.height();
    const double lowest = 0.5 * height - 16;
    const double drop = lowest < 0 ? 0 : std::min(0.22 * height + 10, lowest);
    return {rect.midX(), rect.midY() + drop};
}

Point dotPosition(const Rect& rect) { return center(rect) + Point{ringRadius(rect), 0}; }

double zoom(double startZoom, double draggedBy) {
    const double z = startZoom + draggedBy / pointsPerZoomUnit;
    if (z < zoomRange.lowerBound) return zoomRange.lowerBound;
    return std::round(std::min(z, zoomRange.upperBound) * 10) / 10;
}

double ringSwell(double startZoom, double currentZoom) { return std::clamp(4 * (currentZoom - startZoom), -12.0, 16.0); }

} // namespace tosvar::LensDial
