#pragma once

#include "Point.h"
#include "Rect.h"

// The dial drawn inside a magnifier: a ring whose centre pans the lens and a
// dot on its rim that zooms it by vertical drag.
namespace tosvar::LensDial {

struct ZoomRange {
    double lowerBound;
    double upperBound;
};
inline constexpr ZoomRange zoomRange{1, 8};
// Vertical drag, in pixels, that changes the zoom by one.
inline constexpr double pointsPerZoomUnit = 36;

// 0.24 of the height, kept between 26 and 42.
double ringRadius(const Rect& rect);
// Below the middle by 0.22 * height + 10, staying 16 clear of the bottom edge.
Point center(const Rect& rect);
// On the ring, right of its centre.
Point dotPosition(const Rect& rect);
// The zoom after dragging the dot by `dy` from `startZoom`: never below 1 nor
// above 8, in tenths.
double zoom(double startZoom, double draggedBy);
// How much the ring grows during a zoom drag, -12 to 16.
double ringSwell(double startZoom, double currentZoom);

} // namespace tosvar::LensDial
