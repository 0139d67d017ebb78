#pragma once

#include "Point.h"
#include "Size.h"

#include <array>
#include <vector>

namespace tosvar {

// The repeated watermark text across a canvas: tiles in a brick pattern,
// turned about the canvas centre (moved by `offset`). Every function takes
// the measured size of the text (an empty text measures as a blank).
namespace WatermarkLayout {

// Centres of every tile that may touch the canvas, row by row; tiles past the
// edge are kept for the drawing to clip. Empty for a canvas without area.
std::vector<Point> tileCenters(const Size& textSize, double fontSize, double angleDegrees, double spacing,
                               const Size& offset, const Size& canvas);

// The centre tile's corners: top left, top right, bottom right, bottom left.
std::array<Point, 4> centerTileCorners(const Size& textSize, double angleDegrees, const Size& offset, const Size& canvas);

// Whether `point` lies on the centre tile, widened by `tolerance`.
bool centerTileHitTest(const Size& textSize, bool textIsEmpty, double angleDegrees, const Size& offset, const Size& canvas,
                       const Point& point, double tolerance);

} // namespace WatermarkLayout

} // namespace tosvar
