#include "WatermarkLayout.h"

#include "ElementBounds.h"
#include "ElementRotation.h"

#include <algorithm>
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

std::vector<Point> tileCenters(const TextMeasuring& measure, std::string_view text, double fontSize, double angleDegrees,
                               double spacing, Size offset, Size canvas) {
    std::vector<Point> centres;
    if (!(canvas.width > 0) || !(canvas.height > 0)) return centres;
    const Size tile = tileSize(measure, text, fontSize);
    const double gap = 3 * fontSize * std::max(spacing, 0.1);
    const double stepX = std::max(tile.width + gap, 1.0);
    const double stepY = std::max(tile.height + gap, 1.0);
    const Point c = tileCenter(offset, canvas);
    double reach = 0;
    for (const Point corner : {Point{0, 0}, Point{canvas.width, 0}, Point{0, canvas.height}, Point{canvas.width, canvas.height}})
        reach = std::max(reach, std::hypot(corner.x - c.x, corner.y - c.y));
    const int nx = static_cast<int>(std::ceil(reach / stepX)) + 2;
    const int ny = static_cast<int>(std::ceil(reach / stepY)) + 1;
    for (int j = -ny; j <= ny; ++j)
        for (int i = -nx; i <= nx; ++i) {
            const Point unturned{c.x + i * stepX + (j % 2 != 0 ? stepX / 2 : 0), c.y + j * stepY};
            centres.push_back(ElementRotation::rotate(unturned, c, angleDegrees));
        }
    return centres;
}

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
