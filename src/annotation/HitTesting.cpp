#include "HitTesting.h"

#include "ElementBounds.h"
#include "ElementRotation.h"
#include "LeaderSupport.h"
#include "PlaneMath.h"
#include "SegmentCurve.h"
#include "WatermarkLayout.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tosvar::HitTesting {

namespace {

using C = AnnotationKind::Case;

// The least reach of a stroke or border, so thin lines stay easy to grab.
constexpr double minimumReach = 5;
// The least reach of a leader when deciding between body and leader.
constexpr double minimumLeaderGrabReach = 6;
// Curves are tested against this many steps per span or half quadratic.
constexpr int strokeSamplesPerSegment = 16;
constexpr int fineSamplesPerSegment = 8;
// An ellipse with a semi-axis this thin measures as its rectangle.
constexpr double thinSemiAxis = 0.5;

bool nearPolyline(Point p, const std::vector<Point>& points, double reach) {
    if (points.size() == 1) return PlaneMath::distance(p, points.front()) <= reach;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        if (distanceToSegment(p, points[i], points[i + 1]) <= reach) return true;
    }
    return false;
}

bool grownContains(const Rect& rect, double by, Point p) { return rect.insetBy(-by, -by).contains(p); }

bool insideEllipse(Point p, const Rect& rect) {
    const double a = rect.width() / 2;
    const double b = rect.height() / 2;
    if (a <= 0 || b <= 0) return false;
    const double dx = (p.x - rect.midX()) / a;
    const double dy = (p.y - rect.midY()) / b;
    return dx * dx + dy * dy <= 1;
}

// Within reach of the leader's spine, from where it leaves the body to its tip.
bool nearLeader(const AnnotationElement& element, const Rect& body, Point p, double tolerance, double floor) {
    const double halfWidth = element.style.leaderWidth ? *element.style.leaderWidth / 2 : 4;
    const double reach = std::max(tolerance + halfWidth, floor);
    const Point start = LeaderSupport::startOrCenter(element, body);
    return nearPolyline(p, SegmentCurve::spine(start, *element.style.leaderTip, element.style, fineSamplesPerSegment),
                        reach);
}

// The body of a text or badge, measured once, and the pointer in its
// unrotated frame: the body turns about its own centre.
struct BodyAndPointer {
    Rect body;
    Point local;
};

BodyAndPointer bodyAndPointer(const TextMeasuring& measure, const AnnotationElement& element, Point p) {
    const Rect body = LeaderSupport::bodyRect(measure, element);
    return {body, ElementRotation::rotate(p, body.center(), -ElementRotation::degrees(element))};
}

bool hitsRect(const TextMeasuring& measure, const AnnotationElement& element, const Rect& rect, Point q,
              double tolerance, double reach) {
    const AnnotationStyle& style = element.style;
    switch (element.kind.kindCase()) {
    case C::mosaic:
    case C::blur:
    case C::magnifier:
    case C::image:
    case C::translatedText:
        return grownContains(rect, tolerance, q);
    case C::spotlight:
        return distanceToRectBorder(q, rect) <= reach;
    case C::watermark:
        return WatermarkLayout::centerTileHitTest(measure, element.kind.textPayload(), style.fontSize,
                                                  style.watermarkAngle, style.watermarkOffset, rect.size, q, reach);
    case C::ellipse:
        if (style.fillColor && insideEllipse(q, rect)) return true;
        return distanceToEllipseBorder(q, rect) <= reach;
    default:
        if (style.fillColor && rect.contains(q)) return true;
        return distanceToRectBorder(q, rect) <= reach;
    }
}

bool hitsPath(const AnnotationElement& element, const std::vector<Point>& path, Point q, double reach) {
    if (path.empty()) return false;
    if (element.kind.is(C::freehand)) {
        return nearPolyline(q, SegmentCurve::splineSamples(path, fineSamplesPerSegment), reach);
    }
    return nearPolyline(q, path, reach);
}

bool hitsPoint(const TextMeasuring& measure, const AnnotationElement& element, Point p, double tolerance) {
    if (!LeaderSupport::supportsLeader(element.kind.kindCase())) {
        const Point q = ElementRotation::toLocal(measure, p, element);
        return grownContains(ElementBounds::visualBox(measure, element), tolerance, q);
    }
    const auto [body, q] = bodyAndPointer(measure, element, p);
    if (grownContains(body, tolerance, q)) return true;
    return element.style.leaderTip && nearLeader(element, body, p, tolerance, minimumReach);
}

} // namespace

bool hitTest(const TextMeasuring& measure, const AnnotationElement& element, Point p, double tolerance) {
    if (const TranslatedBlock* block = element.kind.blockPayload(); block && block->isHidden) return false;
    const Geometry& geometry = element.geometry;
    if (geometry.asPoint()) return hitsPoint(measure, element, p, tolerance);
    const Point q = ElementRotation::toLocal(measure, p, element);
    const double reach = std::max(element.style.lineWidth / 2 + tolerance, minimumReach);
    if (const Geometry::Segment* segment = geometry.asSegment()) {
        return nearPolyline(q, SegmentCurve::spine(segment->from, segment->to, element.style, strokeSamplesPerSegment),
                            reach);
    }
    if (const Rect* rect = geometry.asRect()) {
        return hitsRect(measure, element, rect->standardized(), q, tolerance, reach);
    }
    return hitsPath(element, *geometry.asPath(), q, reach);
}

std::optional<Uuid> topmost(const TextMeasuring& measure, std::span<const AnnotationElement> elements, Point p,
                            double tolerance) {
    for (auto it = elements.rbegin(); it != elements.rend(); ++it) {
        if (hitTest(measure, *it, p, tolerance)) return it->id;
    }
    return std::nullopt;
}

bool isOverLeader(const TextMeasuring& measure, const AnnotationElement& element, Point p, double tolerance) {
    if (!LeaderSupport::hasLeader(element)) return false;
    const auto [body, q] = bodyAndPointer(measure, element, p);
    if (grownContains(body, tolerance, q)) return false;
    return nearLeader(element, body, p, tolerance, minimumLeaderGrabReach);
}

Point nearestPointOnSegment(Point p, Point a, Point b) {
    const Point ab = b - a;
    const double lengthSquared = ab.x * ab.x + ab.y * ab.y;
    if (lengthSquared == 0) return a;
    const Point ap = p - a;
    return a + ab * std::clamp((ap.x * ab.x + ap.y * ab.y) / lengthSquared, 0.0, 1.0);
}

double distanceToSegment(Point p, Point a, Point b) { return PlaneMath::distance(nearestPointOnSegment(p, a, b), p); }

double distanceToRectBorder(Point p, const Rect& rect) {
    const double outsideX = std::max({rect.minX() - p.x, p.x - rect.maxX(), 0.0});
    const double outsideY = std::max({rect.minY() - p.y, p.y - rect.maxY(), 0.0});
    if (outsideX > 0 || outsideY > 0) return std::hypot(outsideX, outsideY);
    return std::min({p.x - rect.minX(), rect.maxX() - p.x, p.y - rect.minY(), rect.maxY() - p.y});
}

double distanceToEllipseBorder(Point p, const Rect& rect) {
    const double a = rect.width() / 2;
    const double b = rect.height() / 2;
    if (a <= thinSemiAxis || b <= thinSemiAxis) return distanceToRectBorder(p, rect);
    const double dx = p.x - rect.midX();
    const double dy = p.y - rect.midY();
    const double u = std::hypot(dx / a, dy / b);
    if (u <= 0.0001) return std::min(a, b);
    return std::abs(1 - 1 / u) * std::hypot(dx, dy);
}

} // namespace tosvar::HitTesting
