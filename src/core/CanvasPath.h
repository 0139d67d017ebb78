#pragma once

#include "AffineTransform.h"
#include "Point.h"
#include "Rect.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tosvar {

// An outline to fill, stroke or clip by: moves, lines, quadratic and cubic
// curves and closes, in the coordinates of whoever draws it. Rounded
// rectangles, ellipses and arcs are stored as the cubics that approximate
// them, so a path is only points and can be transformed exactly.
class CanvasPath {
public:
    enum class Verb : std::uint8_t { move, line, quad, cubic, close };

    void moveTo(Point p);
    void lineTo(Point p);
    void quadTo(Point control, Point to);
    void cubicTo(Point control1, Point control2, Point to);
    void close();

    // A closed polygon or an open polyline through the points.
    void addPolygon(std::span<const Point> points);
    void addPolyline(std::span<const Point> points);
    void addRect(const Rect& rect);
    // Corners rounded by `radius`, limited to half the smaller side.
    void addRoundedRect(const Rect& rect, double radius);
    void addEllipse(const Rect& rect);
    // An arc of the circle about `center`, from `startRadians` to `endRadians`
    // (turning with y, so clockwise on a y-down image when the end is larger),
    // joined to the current point by a line, or starting the path when empty.
    void addArc(Point center, double radius, double startRadians, double endRadians);

    // Adds the subpaths of `other` after this path's.
    void append(const CanvasPath& other);

    CanvasPath transformed(const AffineTransform& transform) const;

    bool isEmpty() const { return verbs_.empty(); }
    // The box of every point, control points included; null when empty.
    Rect controlBounds() const;
    std::span<const Verb> verbs() const { return verbs_; }
    // The points of the verbs in order: one for move and line, two for quad,
    // three for cubic, none for close.
    std::span<const Point> points() const { return points_; }

    friend bool operator==(const CanvasPath&, const CanvasPath&) = default;

private:
    std::vector<Verb> verbs_;
    std::vector<Point> points_;
};

} // namespace tosvar
