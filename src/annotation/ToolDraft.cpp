#include "ToolDraft.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tosvar::ToolDraft {

namespace {

constexpr double snapStepDegrees = 30;
constexpr double snapToleranceDegrees = 2;

} // namespace

std::optional<AnnotationElement> element(AnnotationTool tool, Point start, Point current,
                                         const AnnotationStyle& style, const std::string& stepLabel,
                                         DragModifiers modifiers, Uuid id) {
    using C = AnnotationKind::Case;
    const auto make = [&](AnnotationKind kind, Geometry geometry) {
        return AnnotationElement{id, std::move(kind), std::move(geometry), style};
    };
    const auto segment = [&] {
        const Point end =
            modifiers.constrained ? snappedToAngle(start, current, snapStepDegrees, snapToleranceDegrees) : current;
        return Geometry::segment(start, end);
    };
    const auto dragged = [&] { return Geometry::rect(dragRect(start, current, modifiers)); };

    switch (tool) {
    case AnnotationTool::arrow: return make(AnnotationKind(C::arrow), segment());
    case AnnotationTool::line: return make(AnnotationKind(C::line), segment());
    case AnnotationTool::rectangle: return make(AnnotationKind(C::rectangle), dragged());
    case AnnotationTool::ellipse: return make(AnnotationKind(C::ellipse), dragged());
    case AnnotationTool::mosaic: return make(AnnotationKind(C::mosaic), dragged());
    case AnnotationTool::blur: return make(AnnotationKind(C::blur), dragged());
    case AnnotationTool::spotlight: return make(AnnotationKind(C::spotlight), dragged());
    case AnnotationTool::freehand: return make(AnnotationKind(C::freehand), Geometry::path({start, current}));
    case AnnotationTool::highlighter: return make(AnnotationKind(C::highlighter), Geometry::path({start, current}));
    case AnnotationTool::stepBadge: return make(AnnotationKind::stepBadge(stepLabel), Geometry::point(start));
    case AnnotationTool::magnifier: {
        const double half = std::max(std::abs(current.x - start.x), std::abs(current.y - start.y));
        return make(AnnotationKind(C::magnifier), Geometry::rect(Rect(start.x - half, start.y - half, 2 * half, 2 * half)));
    }
    case AnnotationTool::select:
    case AnnotationTool::text:
    case AnnotationTool::watermark:
    case AnnotationTool::crop:
        return std::nullopt;
    }
    return std::nullopt;
}

Rect rect(Point from, Point to) {
    return Rect(std::min(from.x, to.x), std::min(from.y, to.y), std::abs(to.x - from.x), std::abs(to.y - from.y));
}

Rect dragRect(Point start, Point current, DragModifiers modifiers) {
    Point d = current - start;
    if (modifiers.constrained) {
        const double side = std::max(std::abs(d.x), std::abs(d.y));
        d = {std::copysign(side, d.x), std::copysign(side, d.y)};
    }
    if (modifiers.fromCenter) {
        const double halfWidth = std::abs(d.x);
        const double halfHeight = std::abs(d.y);
        return Rect(start.x - halfWidth, start.y - halfHeight, 2 * halfWidth, 2 * halfHeight);
    }
    return rect(start, start + d);
}

Point snappedToAngle(Point start, Point current, double stepDegrees, double toleranceDegrees) {
    const Point d = current - start;
    const double radius = std::hypot(d.x, d.y);
    if (radius == 0) return current;
    const double degrees = std::atan2(d.y, d.x) * 180 / std::numbers::pi;
    const double snapped = std::round(degrees / stepDegrees) * stepDegrees;
    if (std::abs(degrees - snapped) > toleranceDegrees) return current;
    const double radians = snapped * std::numbers::pi / 180;
    return {start.x + radius * std::cos(radians), start.y + radius * std::sin(radians)};
}

Geometry translate(const Geometry& geometry, Point offset) { return geometry.translated(offset); }

} // namespace tosvar::ToolDraft
