#include "HitTesting.h"

#include <algorithm>
#include <cmath>

namespace tosvar::HitTesting {

double distanceToSegment(Point p, Point a, Point b) {
    const Point ab = b - a;
    const double lengthSquared = ab.x * ab.x + ab.y * ab.y;
    if (lengthSquared == 0) return std::hypot(p.x - a.x, p.y - a.y);
    const Point ap = p - a;
    const double t = std::clamp((ap.x * ab.x + ap.y * ab.y) / lengthSquared, 0.0, 1.0);
    const Point nearest = a + ab * t;
    return std::hypot(p.x - nearest.x, p.y - nearest.y);
}

} // namespace tosvar::HitTesting
