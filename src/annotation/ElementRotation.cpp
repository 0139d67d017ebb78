#include "ElementRotation.h"

#include "LeaderSupport.h"
#include "PlaneMath.h"

#include <cmath>

namespace tosvar::ElementRotation {

bool supportsRotation(AnnotationKind::Case kind) {
    using C = AnnotationKind::Case;
    switch (kind) {
    case C::text:
    case C::stepBadge:
    case C::image:
    case C::translatedText:
    case C::rectangle:
    case C::ellipse:
    case C::freehand:
    case C::mosaic:
    case C::blur:
    case C::magnifier:
    case C::spotlight:
        return true;
    case C::watermark:
    case C::arrow:
    case C::line:
    case C::highlighter:
        return false;
    }
    return false;
}

double degrees(const AnnotationElement& element) {
    if (!supportsRotation(element.kind.kindCase())) return 0;
    return element.style.rotation.value_or(0);
}

Point center(const TextMeasuring& measure, const AnnotationElement& element) {
    if (element.geometry.asPoint()) return LeaderSupport::center(measure, element);
    return element.geometry.boundingBox().center();
}

Point rotate(Point p, Point around, double degrees) {
    if (degrees == 0) return p;
    const double radians = PlaneMath::radians(degrees);
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    const Point d = p - around;
    return {around.x + d.x * cosine - d.y * sine, around.y + d.x * sine + d.y * cosine};
}

namespace {

// `p` turned about the element's centre by `sign` times its rotation; the
// centre is only measured when there is a turn to make.
Point turned(const TextMeasuring& measure, Point p, const AnnotationElement& element, double sign) {
    const double turn = degrees(element);
    if (turn == 0) return p;
    return rotate(p, center(measure, element), sign * turn);
}

} // namespace

Point toWorld(const TextMeasuring& measure, Point p, const AnnotationElement& element) {
    return turned(measure, p, element, 1);
}

Point toLocal(const TextMeasuring& measure, Point p, const AnnotationElement& element) {
    return turned(measure, p, element, -1);
}

std::array<Point, 4> worldCorners(const TextMeasuring& measure, const Rect& rect, const AnnotationElement& element) {
    std::array<Point, 4> corners{Point{rect.minX(), rect.minY()}, Point{rect.maxX(), rect.minY()},
                                 Point{rect.maxX(), rect.maxY()}, Point{rect.minX(), rect.maxY()}};
    const double turn = degrees(element);
    if (turn == 0) return corners;
    const Point c = center(measure, element);
    for (Point& corner : corners) corner = rotate(corner, c, turn);
    return corners;
}

Rect worldBounds(const TextMeasuring& measure, const Rect& rect, const AnnotationElement& element) {
    if (degrees(element) == 0) return rect;
    const std::array<Point, 4> corners = worldCorners(measure, rect, element);
    return Geometry::path({corners.begin(), corners.end()}).boundingBox();
}

} // namespace tosvar::ElementRotation
