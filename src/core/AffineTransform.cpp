#include "AffineTransform.h"

#include <cmath>

namespace tosvar {

AffineTransform AffineTransform::translation(double dx, double dy) { return {1, 0, 0, 1, dx, dy}; }

AffineTransform AffineTransform::scale(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }

AffineTransform AffineTransform::rotation(double radians) {
    const double cs = std::cos(radians);
    const double sn = std::sin(radians);
    return {cs, sn, -sn, cs, 0, 0};
}

AffineTransform AffineTransform::concatenating(const AffineTransform& t) const {
    return {a * t.a + b * t.c,           a * t.b + b * t.d,           c * t.a + d * t.c,
            c * t.b + d * t.d,           tx * t.a + ty * t.c + t.tx,  tx * t.b + ty * t.d + t.ty};
}

AffineTransform AffineTransform::translatedBy(double dx, double dy) const {
    return translation(dx, dy).concatenating(*this);
}

AffineTransform AffineTransform::scaledBy(double sx, double sy) const { return scale(sx, sy).concatenating(*this); }

AffineTransform AffineTransform::rotatedBy(double radians) const {
    return rotation(radians).concatenating(*this);
}

std::optional<AffineTransform> AffineTransform::inverted() const {
    const double det = a * d - b * c;
    if (det == 0 || !std::isfinite(det)) return std::nullopt;
    const double ia = d / det, ib = -b / det, ic = -c / det, id = a / det;
    return AffineTransform{ia, ib, ic, id, -(tx * ia + ty * ic), -(tx * ib + ty * id)};
}

Point AffineTransform::apply(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }

Size AffineTransform::apply(Size s) const { return {a * s.width + c * s.height, b * s.width + d * s.height}; }

Rect AffineTransform::apply(const Rect& r) const {
    if (r.isNull()) return Rect::null();
    const Point corners[] = {apply(Point{r.minX(), r.minY()}), apply(Point{r.maxX(), r.minY()}),
                             apply(Point{r.minX(), r.maxY()}), apply(Point{r.maxX(), r.maxY()})};
    return Rect::enclosing(corners);
}

} // namespace tosvar
