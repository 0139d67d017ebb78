#include "WatermarkLayout.h"

#include "ElementBounds.h"
#include "ElementRotation.h"

#include <cmath>

namespace tosvar::WatermarkLayout {

namespace {

Point tileCenter(Size offset, Size canvas) {
    return {canvas.width / 2 + offset.width, canvas.height / 2 + offset.height};
}

Size tileSize(const TextMeasuring& measure, std::string_view text, double fontSize) {
    return ElementBounds::textSize(measure, text.empty() ? " " : text, fontSize);
}

} // namespace

std::array<Point, 4> centerTileCorners(const TextMeasuring& measure, std::string_view text, double fontSize,
                                       double angleDegrees, Size offset, Size canvas) {
    const Point c = tileCenter(offset, canvas);
    const Size tile = tileSize(measure, text, fontSize);
    const double halfW = tile.width / 2;
    const double halfH = tile.height / 2;
    std::array<Point, 4> corners{Point{c.x - halfW, c.y - halfH}, Point{c.x + halfW, c.y - halfH},
                                 Point{c.x + halfW, c.y + halfH}, Point{c.x - halfW, c.y + halfH}};
    for (Point& corner : corners) corner = ElementRotation::rotate(corner, c, angleDegrees);
    return corners;
}

bool centerTileHitTest(const TextMeasuring& measure, std::string_view text, double fontSize, double angleDegrees,
                       Size offset, Size canvas, Point at, double tolerance) {
    if (text.empty() || !(canvas.width > 0) || !(canvas.height > 0)) return false;
    const Size tile = tileSize(measure, text, fontSize);
    // Turning the pointer back by the angle puts it in the tile's own frame.
    const Point c = tileCenter(offset, canvas);
    const Point local = ElementRotation::rotate(at, c, -angleDegrees) - c;
    return std::abs(local.x) <= tolerance + tile.width / 2 && std::abs(local.y) <= tolerance + tile.height / 2;
}

} // namespace tosvar::WatermarkLayout
