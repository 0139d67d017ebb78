#include "SegmentCurve.h"

#include "PlaneMath.h"

#include <algorithm>
#include <cmath>

namespace tosvar::SegmentCurve {

namespace {

// Keeps the spline's knot arithmetic away from division by zero when points repeat.
constexpr double knotFloor = 0.0001;

Point lerp(Point a, Point b, double t) { return a + (b - a) * t; }

Point unitNormal(Point from, Point to, double length) {
    const Point d = to - from;
    return {-d.y / length, d.x / length};
}

Point offsetFromMiddle(Point from, Point to, double distance) {
    const Point middle = PlaneMath::midpoint(from, to);
    const double length = PlaneMath::distance(from, to);
    if (distance == 0 || length == 0) return middle;
    return middle + unitNormal(from, to, length) * distance;
}

} // namespace

Point apex(Point from, Point to, double curvature) { return offsetFromMiddle(from, to, curvature); }

Point control(Point from, Point to, double curvature) { return offsetFromMiddle(from, to, 2 * curvature); }

double curvature(Point from, Point to, Point apex) {
    const double length = PlaneMath::distance(from, to);
    if (length == 0) return 0;
    const Point d = to - from;
    const Point offset = apex - PlaneMath::midpoint(from, to);
    return (offset.y * d.x - offset.x * d.y) / length;
}

std::vector<Point> samples(Point from, Point control, Point to, int count) {
    const int n = std::max(count, 2);
    std::vector<Point> points;
    points.reserve(static_cast<std::size_t>(n) + 1);
    for (int i = 0; i <= n; ++i) {
        const double t = static_cast<double>(i) / n;
        points.push_back(lerp(lerp(from, control, t), lerp(control, to, t), t));
    }
    return points;
}

const std::vector<Point>* midPoints(const AnnotationStyle& style) {
    return style.midPoints && !style.midPoints->empty() ? &*style.midPoints : nullptr;
}

std::vector<Point> spine(Point from, Point to, const AnnotationStyle& style, int perSegment) {
    if (const std::vector<Point>* mids = midPoints(style)) {
        std::vector<Point> through{from};
        through.insert(through.end(), mids->begin(), mids->end());
        through.push_back(to);
        return splineSamples(through, perSegment);
    }
    if (style.curvature == 0) return {from, to};
    return samples(from, control(from, to, style.curvature), to, std::max(2 * perSegment, 2));
}

std::vector<Point> splineSamples(const std::vector<Point>& points, int perSegment) {
    const std::size_t n = points.size();
    if (n < 3) return points;
    const int per = std::max(perSegment, 2);
    const auto knotStep = [](Point a, Point b) { return std::sqrt(std::max(PlaneMath::distance(a, b), knotFloor)); };
    const auto ratio = [](double numerator, double denominator) {
        return numerator / std::max(denominator, knotFloor);
    };

    std::vector<Point> out;
    out.reserve((n - 1) * static_cast<std::size_t>(per) + 1);
    out.push_back(points.front());
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const Point p0 = points[i == 0 ? 0 : i - 1];
        const Point p1 = points[i];
        const Point p2 = points[i + 1];
        const Point p3 = points[std::min(i + 2, n - 1)];
        const double t1 = knotStep(p0, p1);
        const double t2 = t1 + knotStep(p1, p2);
        const double t3 = t2 + knotStep(p2, p3);
        for (int j = 1; j <= per; ++j) {
            const double t = t1 + (t2 - t1) * j / per;
            const Point a1 = lerp(p0, p1, ratio(t, t1));
            const Point a2 = lerp(p1, p2, ratio(t - t1, t2 - t1));
            const Point a3 = lerp(p2, p3, ratio(t - t2, t3 - t2));
            const Point b1 = lerp(a1, a2, ratio(t, t2));
            const Point b2 = lerp(a2, a3, ratio(t - t1, t3 - t1));
            out.push_back(lerp(b1, b2, ratio(t - t1, t2 - t1)));
        }
    }
    return out;
}

} // namespace tosvar::SegmentCurve
