#include "WatermarkLayout.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tosvar::WatermarkLayout {

namespace {

Point centre(const Size& offset, const Size& canvas) { return {canvas.width / 2 + offset.width, canvas.height / 2 + offset.height}; }

Point turned(const Point& c, double x, double y, double radians) {
    return {c.x + x * std::cos(radians) - y * std::sin(radians), c.y + x * std::sin(radians) + y * std::cos(radians)};
}

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

} // namespace

std::vector<Point> tileCenters(const Size& text, double fontSize, double angleDegrees, double spacing, const Size& offset,
                               const Size& canvas) {
    std::vector<Point> centres;
    if (!(canvas.width > 0) || !(canvas.height > 0)) return centres;
    const double gap = 3 * fontSize * std::max(spacing, 0.1);
    const double stepX = std::max(text.width + gap, 1.0);
    const double stepY = std::max(text.height + gap, 1.0);
    const Point c = centre(offset, canvas);
    double reach = 0;
    for (const Point corner : {Point{0, 0}, Point{canvas.width, 0}, Point{0, canvas.height}, Point{canvas.width, canvas.height}})
        reach = std::max(reach, std::hypot(corner.x - c.x, corner.y - c.y));
    const int nx = static_cast<int>(std::ceil(reach / stepX)) + 2;
    const int ny = static_cast<int>(std::ceil(reach / stepY)) + 1;
    const double angle = radians(angleDegrees);
    for (int j = -ny; j <= ny; ++j)
        for (int i = -nx; i <= nx; ++i) {
            const double x = i * stepX + (j % 2 != 0 ? stepX / 2 : 0);
            centres.push_back(turned(c, x, j * stepY, angle));
        }
    return centres;
}

std::array<Point, 4> centerTileCorners(const Size& text, double angleDegrees, const Size& offset, const Size& canvas) {
    const Point c = centre(offset, canvas);
    const double angle = radians(angleDegrees);
    const double w = text.width / 2, h = text.height / 2;
    return {turned(c, -w, -h, angle), turned(c, w, -h, angle), turned(c, w, h, angle), turned(c, -w, h, angle)};
}

bool centerTileHitTest(const Size& text, bool textIsEmpty, double angleDegrees, const Size& offset, const Size& canvas,
                       const Point& point, double tolerance) {
    if (textIsEmpty || !(canvas.width > 0) || !(canvas.height > 0)) return false;
    const Point c = centre(offset, canvas);
    const double angle = radians(angleDegrees);
    const double dx = point.x - c.x, dy = point.y - c.y;
    return std::abs(dx * std::cos(angle) + dy * std::sin(angle)) <= tolerance + text.width / 2 &&
           std::abs(dy * std::cos(angle) - dx * std::sin(angle)) <= tolerance + text.height / 2;
}

} // namespace tosvar::WatermarkLayout
