#pragma once

#include "Point.h"
#include "Rect.h"

#include <variant>
#include <vector>

namespace tosvar {

// Where an element sits, in image pixels (origin top-left, y down): a segment
// between two points, a rectangle, a path of points, or a single point.
struct Geometry {
    struct Segment {
        Point from;
        Point to;
        friend bool operator==(const Segment&, const Segment&) = default;
    };
    using Value = std::variant<Segment, Rect, std::vector<Point>, Point>;

    Value value;

    static Geometry segment(Point from, Point to) { return {Segment{from, to}}; }
    static Geometry rect(Rect rect) { return {rect}; }
    static Geometry path(std::vector<Point> points) { return {std::move(points)}; }
    static Geometry point(Point point) { return {point}; }

    // The value of one case, or null when the geometry is another case.
    const Segment* asSegment() const { return std::get_if<Segment>(&value); }
    const Rect* asRect() const { return std::get_if<Rect>(&value); }
    const std::vector<Point>* asPath() const { return std::get_if<std::vector<Point>>(&value); }
    const Point* asPoint() const { return std::get_if<Point>(&value); }

    // The box around the geometry with a non-negative size: the span of a
    // segment, the rectangle standardized, the extremes of a path (zero at the
    // origin when empty), or a zero-size box at the point.
    Rect boundingBox() const;

    // A copy moved by `offset`: both ends, the rectangle's origin, every path point, or the point.
    Geometry translated(Point offset) const;

    friend bool operator==(const Geometry&, const Geometry&) = default;
};

std::size_t hashValue(const Geometry& geometry);

} // namespace tosvar

template <>
struct std::hash<tosvar::Geometry> {
    std::size_t operator()(const tosvar::Geometry& g) const noexcept { return tosvar::hashValue(g); }
};
