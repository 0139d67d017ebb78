#include "Rect.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tosvar {

Rect Rect::null() {
    constexpr double inf = std::numeric_limits<double>::infinity();
    return Rect(inf, inf, 0, 0);
}

Rect Rect::fromEdges(double minX, double minY, double maxX, double maxY) {
    return Rect(minX, minY, maxX - minX, maxY - minY);
}

Rect Rect::enclosing(std::span<const Point> points) {
    if (points.empty()) return null();
    double x0 = points[0].x, x1 = x0, y0 = points[0].y, y1 = y0;
    for (const Point& p : points) {
        x0 = std::min(x0, p.x);
        x1 = std::max(x1, p.x);
        y0 = std::min(y0, p.y);
        y1 = std::max(y1, p.y);
    }
    return fromEdges(x0, y0, x1, y1);
}

double Rect::minX() const { return size.width < 0 ? origin.x + size.width : origin.x; }
double Rect::maxX() const { return size.width < 0 ? origin.x : origin.x + size.width; }
double Rect::midX() const { return origin.x + size.width / 2; }
double Rect::minY() const { return size.height < 0 ? origin.y + size.height : origin.y; }
double Rect::maxY() const { return size.height < 0 ? origin.y : origin.y + size.height; }
double Rect::midY() const { return origin.y + size.height / 2; }
double Rect::width() const { return std::abs(size.width); }
double Rect::height() const { return std::abs(size.height); }

bool Rect::isNull() const { return std::isinf(origin.x) || std::isinf(origin.y); }

bool Rect::isEmpty() const { return isNull() || size.width == 0 || size.height == 0; }

Rect Rect::standardized() const {
    if (isNull()) return null();
    return Rect(minX(), minY(), width(), height());
}

Rect Rect::integral() const {
    if (isNull()) return null();
    return fromEdges(std::floor(minX()), std::floor(minY()), std::ceil(maxX()), std::ceil(maxY()));
}

Rect Rect::insetBy(double dx, double dy) const {
    if (isNull()) return null();
    const Rect r = standardized();
    const double w = r.size.width - 2 * dx;
    const double h = r.size.height - 2 * dy;
    if (w < 0 || h < 0) return null();
    return Rect(r.origin.x + dx, r.origin.y + dy, w, h);
}

Rect Rect::offsetBy(double dx, double dy) const {
    if (isNull()) return null();
    return Rect(origin.x + dx, origin.y + dy, size.width, size.height);
}

Rect Rect::intersection(const Rect& other) const {
    if (isNull() || other.isNull()) return null();
    const double x0 = std::max(minX(), other.minX());
    const double x1 = std::min(maxX(), other.maxX());
    const double y0 = std::max(minY(), other.minY());
    const double y1 = std::min(maxY(), other.maxY());
    if (x0 > x1 || y0 > y1) return null();
    return fromEdges(x0, y0, x1, y1);
}

Rect Rect::unionWith(const Rect& other) const {
    if (isNull()) return other.standardized();
    if (other.isNull()) return standardized();
    return fromEdges(std::min(minX(), other.minX()), std::min(minY(), other.minY()),
                     std::max(maxX(), other.maxX()), std::max(maxY(), other.maxY()));
}

bool Rect::intersects(const Rect& other) const { return !intersection(other).isEmpty(); }

bool Rect::contains(Point p) const {
    if (isEmpty()) return false;
    return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY();
}

bool Rect::contains(const Rect& other) const {
    if (isEmpty() || other.isEmpty()) return false;
    return other.minX() >= minX() && other.maxX() <= maxX() && other.minY() >= minY() &&
           other.maxY() <= maxY();
}

bool operator==(const Rect& a, const Rect& b) {
    if (a.isNull() || b.isNull()) return a.isNull() && b.isNull();
    return a.origin == b.origin && a.size == b.size;
}

} // namespace tosvar
