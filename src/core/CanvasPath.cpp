#include "CanvasPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tosvar {

namespace {

// The distance of a cubic's control points from its ends that best follows a
// quarter circle.
constexpr double kappa = 0.5522847498307936;

} // namespace

void CanvasPath::moveTo(Point p) {
    verbs_.push_back(Verb::move);
    points_.push_back(p);
}

void CanvasPath::lineTo(Point p) {
    if (verbs_.empty()) return moveTo(p);
    verbs_.push_back(Verb::line);
    points_.push_back(p);
}

void CanvasPath::quadTo(Point control, Point to) {
    if (verbs_.empty()) moveTo(control);
    verbs_.push_back(Verb::quad);
    points_.insert(points_.end(), {control, to});
}

void CanvasPath::cubicTo(Point control1, Point control2, Point to) {
    if (verbs_.empty()) moveTo(control1);
    verbs_.push_back(Verb::cubic);
    points_.insert(points_.end(), {control1, control2, to});
}

void CanvasPath::close() {
    if (!verbs_.empty() && verbs_.back() != Verb::close) verbs_.push_back(Verb::close);
}

void CanvasPath::addPolyline(std::span<const Point> points) {
    if (points.empty()) return;
    moveTo(points.front());
    for (std::size_t i = 1; i < points.size(); ++i) lineTo(points[i]);
}

void CanvasPath::addPolygon(std::span<const Point> points) {
    if (points.empty()) return;
    addPolyline(points);
    close();
}

void CanvasPath::addRect(const Rect& rect) {
    const Rect r = rect.standardized();
    moveTo({r.minX(), r.minY()});
    lineTo({r.maxX(), r.minY()});
    lineTo({r.maxX(), r.maxY()});
    lineTo({r.minX(), r.maxY()});
    close();
}

void CanvasPath::addRoundedRect(const Rect& rect, double radius) {
    const Rect r = rect.standardized();
    const double rr = std::clamp(radius, 0.0, std::min(r.width(), r.height()) / 2);
    if (rr <= 0) return addRect(r);
    const double k = rr * (1 - kappa);
    const double x0 = r.minX(), x1 = r.maxX(), y0 = r.minY(), y1 = r.maxY();
    moveTo({x0 + rr, y0});
    lineTo({x1 - rr, y0});
    cubicTo({x1 - k, y0}, {x1, y0 + k}, {x1, y0 + rr});
    lineTo({x1, y1 - rr});
    cubicTo({x1, y1 - k}, {x1 - k, y1}, {x1 - rr, y1});
    lineTo({x0 + rr, y1});
    cubicTo({x0 + k, y1}, {x0, y1 - k}, {x0, y1 - rr});
    lineTo({x0, y0 + rr});
    cubicTo({x0, y0 + k}, {x0 + k, y0}, {x0 + rr, y0});
    close();
}

void CanvasPath::addEllipse(const Rect& rect) {
    const Rect r = rect.standardized();
    const double cx = r.midX(), cy = r.midY(), rx = r.width() / 2, ry = r.height() / 2;
    const double kx = rx * kappa, ky = ry * kappa;
    moveTo({cx + rx, cy});
    cubicTo({cx + rx, cy + ky}, {cx + kx, cy + ry}, {cx, cy + ry});
    cubicTo({cx - kx, cy + ry}, {cx - rx, cy + ky}, {cx - rx, cy});
    cubicTo({cx - rx, cy - ky}, {cx - kx, cy - ry}, {cx, cy - ry});
    cubicTo({cx + kx, cy - ry}, {cx + rx, cy - ky}, {cx + rx, cy});
    close();
}

void CanvasPath::addArc(Point center, double radius, double startRadians, double endRadians) {
    const double sweep = endRadians - startRadians;
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (std::numbers::pi / 2) - 1e-9)));
    const double step = sweep / pieces;
    const double handle = 4.0 / 3.0 * std::tan(step / 4) * radius;
    auto at = [&](double angle) { return Point{center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)}; };
    lineTo(at(startRadians));
    for (int i = 0; i < pieces; ++i) {
        const double a0 = startRadians + step * i, a1 = a0 + step;
        const Point p0 = at(a0), p1 = at(a1);
        cubicTo({p0.x - handle * std::sin(a0), p0.y + handle * std::cos(a0)},
                {p1.x + handle * std::sin(a1), p1.y - handle * std::cos(a1)}, p1);
    }
}

void CanvasPath::append(const CanvasPath& other) {
    verbs_.insert(verbs_.end(), other.verbs_.begin(), other.verbs_.end());
    points_.insert(points_.end(), other.points_.begin(), other.points_.end());
}

CanvasPath CanvasPath::transformed(const AffineTransform& transform) const {
    CanvasPath out = *this;
    for (Point& p : out.points_) p = transform.apply(p);
    return out;
}

Rect CanvasPath::controlBounds() const { return Rect::enclosing(points_); }

} // namespace tosvar
