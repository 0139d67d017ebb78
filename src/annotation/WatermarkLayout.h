#pragma once

#include "Point.h"
#include "Size.h"
#include "TextMeasuring.h"

#include <array>
#include <string_view>
#include <vector>

// The repeated watermark text: tiles of the text turned by one angle about
// the canvas centre moved by the offset. Only the centre tile can be touched.
namespace tosvar::WatermarkLayout {

// Centres of every tile that may touch the canvas, row by row (rows of j,
// then columns of i), every odd row shifted half a step: a brick pattern.
// Tiles past the edge are kept for the drawing to clip; the reach is
// measured from the moved centre. Empty for a canvas without area.
std::vector<Point> tileCenters(const TextMeasuring& measure, std::string_view text, double fontSize, double angleDegrees,
                               double spacing, Size offset, Size canvas);

// The centre tile's corners (top-left, top-right, bottom-right, bottom-left)
// after turning. Empty text is measured as a single space.
std::array<Point, 4> centerTileCorners(const TextMeasuring& measure, std::string_view text, double fontSize,
                                       double angleDegrees, Size offset, Size canvas);

// Whether `at` lies within `tolerance` of the centre tile, judged in the
// tile's own turned frame. Never for empty text or a canvas without area.
bool centerTileHitTest(const TextMeasuring& measure, std::string_view text, double fontSize, double angleDegrees,
                       Size offset, Size canvas, Point at, double tolerance);

} // namespace tosvar::WatermarkLayout
