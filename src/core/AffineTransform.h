#pragma once

#include "Point.h"
#include "Rect.h"
#include "Size.h"

#include <optional>

namespace tosvar {

// A 2-D affine transform in the platform's row-vector convention:
//   x' = a*x + c*y + tx
//   y' = b*x + d*y + ty
// `concatenating(t)` applies this transform first, then t.
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    static constexpr AffineTransform identity() { return {}; }
    static AffineTransform translation(double dx, double dy);
    static AffineTransform scale(double sx, double sy);
    // Counter-clockwise in a y-up space, clockwise on a y-down image.
    static AffineTransform rotation(double radians);

    bool isIdentity() const { return *this == identity(); }
    AffineTransform concatenating(const AffineTransform& then) const;
    AffineTransform translatedBy(double dx, double dy) const;
    AffineTransform scaledBy(double sx, double sy) const;
    AffineTransform rotatedBy(double radians) const;
    // None when the transform is singular.
    std::optional<AffineTransform> inverted() const;

    Point apply(Point p) const;
    // Sizes ignore the translation.
    Size apply(Size s) const;
    // The bounding box of the transformed corners; null stays null.
    Rect apply(const Rect& r) const;

    friend constexpr bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

} // namespace tosvar

template <>
struct std::hash<tosvar::AffineTransform> {
    std::size_t operator()(const tosvar::AffineTransform& t) const noexcept {
        return tosvar::hashValues(t.a, t.b, t.c, t.d, t.tx, t.ty);
    }
};
