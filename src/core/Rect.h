#pragma once

#include "Point.h"
#include "Size.h"

#include <span>

namespace tosvar {

// A rectangle with the platform's semantics: an origin and a size that may be
// negative until standardized, and a distinguished null rectangle (infinite
// origin, zero size) that stands for "no rectangle" in intersections and unions.
// Edges are computed on the standardized form, so minX <= maxX always.
struct Rect {
    Point origin;
    Size size;

    constexpr Rect() = default;
    constexpr Rect(Point o, Size s) : origin(o), size(s) {}
    constexpr Rect(double x, double y, double width, double height) : origin{x, y}, size{width, height} {}

    static Rect null();
    static Rect fromEdges(double minX, double minY, double maxX, double maxY);
    // The smallest rectangle holding every point; null for none.
    static Rect enclosing(std::span<const Point> points);

    double minX() const;
    double maxX() const;
    double midX() const;
    double minY() const;
    double maxY() const;
    double midY() const;
    double width() const;  // never negative
    double height() const; // never negative
    Point center() const { return {midX(), midY()}; }

    bool isNull() const;
    // Null, or zero in either dimension.
    bool isEmpty() const;

    Rect standardized() const;
    // The smallest rectangle with integral edges that holds this one.
    Rect integral() const;
    // Moves each edge inwards; a result with a negative size is null.
    Rect insetBy(double dx, double dy) const;
    Rect offsetBy(double dx, double dy) const;
    // Null when the rectangles do not touch; edge contact gives a zero-size rectangle.
    Rect intersection(const Rect& other) const;
    // The null rectangle is the identity of union.
    Rect unionWith(const Rect& other) const;
    // True when the intersection has an area.
    bool intersects(const Rect& other) const;
    // Half-open: the min edges belong to the rectangle, the max edges do not.
    bool contains(Point p) const;
    bool contains(const Rect& other) const;

    friend bool operator==(const Rect& a, const Rect& b);
};

} // namespace tosvar

template <>
struct std::hash<tosvar::Rect> {
    std::size_t operator()(const tosvar::Rect& r) const noexcept {
        if (r.isNull()) return 0; // every null rectangle is equal to every other
        return tosvar::hashValues(r.origin.x, r.origin.y, r.size.width, r.size.height);
    }
};
