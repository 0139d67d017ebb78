#include "RegionSelectionChrome.h"

#include "HandleLayout.h"

#include <algorithm>
#include <cmath>

namespace tosvar::RegionSelectionChrome {

namespace {

// The stretch of a side between the corner legs; its middle when the legs meet.
Segment sideBetween(Point a, Point b, double leg) {
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    if (length <= 2 * leg) {
        const Point middle{(a.x + b.x) / 2, (a.y + b.y) / 2};
        return {middle, middle};
    }
    const double ux = (b.x - a.x) / length, uy = (b.y - a.y) / length;
    return {{a.x + ux * leg, a.y + uy * leg}, {b.x - ux * leg, b.y - uy * leg}};
}

HandleEntry corner(RectHandle handle, Point at, double dx, double dy, double leg) {
    return {handle, {{at, {at.x + dx * leg, at.y}}, {at, {at.x, at.y + dy * leg}}}};
}

} // namespace

std::vector<HandleEntry> handleEntries(const Rect& rect, double leg) {
    const double x0 = rect.minX(), x1 = rect.maxX(), y0 = rect.minY(), y1 = rect.maxY();
    const double l = std::min({leg, rect.width() / 2, rect.height() / 2});
    return {
        corner(RectHandle::topLeft, {x0, y0}, 1, 1, l),
        corner(RectHandle::topRight, {x1, y0}, -1, 1, l),
        corner(RectHandle::bottomLeft, {x0, y1}, 1, -1, l),
        corner(RectHandle::bottomRight, {x1, y1}, -1, -1, l),
        {RectHandle::top, {sideBetween({x0, y0}, {x1, y0}, l)}},
        {RectHandle::bottom, {sideBetween({x0, y1}, {x1, y1}, l)}},
        {RectHandle::left, {sideBetween({x0, y0}, {x0, y1}, l)}},
        {RectHandle::right, {sideBetween({x1, y0}, {x1, y1}, l)}},
    };
}

std::vector<HandleEntry> drawnHandles(const Rect& rect) {
    std::vector<HandleEntry> entries = handleEntries(rect, cornerLeg);
    for (HandleEntry& entry : entries) {
        if (isCorner(entry.handle)) continue;
        const Point middle = handlePoint(rect, entry.handle);
        const bool horizontal = entry.handle == RectHandle::top || entry.handle == RectHandle::bottom;
        const double half = std::min(edgeTick, horizontal ? rect.width() : rect.height()) / 2;
        entry.segments = {horizontal ? Segment{{middle.x - half, middle.y}, {middle.x + half, middle.y}}
                                     : Segment{{middle.x, middle.y - half}, {middle.x, middle.y + half}}};
    }
    return entries;
}

double distanceToSegment(Point p, const Segment& s) {
    const double dx = s.to.x - s.from.x, dy = s.to.y - s.from.y;
    const double lengthSquared = dx * dx + dy * dy;
    const double t = lengthSquared > 0 ? std::clamp(((p.x - s.from.x) * dx + (p.y - s.from.y) * dy) / lengthSquared, 0.0, 1.0) : 0;
    return std::hypot(p.x - (s.from.x + t * dx), p.y - (s.from.y + t * dy));
}

std::optional<RectHandle> handleHit(const Rect& rect, Point p, double tolerance, double leg, double innerTolerance) {
    const double limit = rect.contains(p) ? innerTolerance : tolerance;
    for (const HandleEntry& entry : handleEntries(rect, leg))
        for (const Segment& segment : entry.segments)
            if (distanceToSegment(p, segment) <= limit) return entry.handle;
    return std::nullopt;
}

Point radiusGrip(const Rect& rect, double radius) {
    const double d = std::min(std::max(radius, 14.0), std::min(rect.width(), rect.height()) / 2);
    return {rect.minX() + d, rect.minY() + d};
}

bool radiusGripHit(const Rect& rect, double radius, Point p) {
    const Point grip = radiusGrip(rect, radius);
    return std::abs(p.x - grip.x) <= 8 && std::abs(p.y - grip.y) <= 8;
}

double draggedRadius(const Rect& rect, double baseRadius, Point grip, Point pointer) {
    const double delta = std::min(pointer.x - grip.x, pointer.y - grip.y);
    return std::clamp(baseRadius + delta, 0.0, std::min(rect.width(), rect.height()) / 2);
}

Point removeBadgeCenter(const Rect& window, const Rect& bounds) {
    return {std::min(window.minX() + 12, bounds.maxX() - 12), std::max(window.minY() + 12, bounds.minY() + 12)};
}

Rect resized(const Rect& rect, RectHandle handle, Point p, bool keepAspect, bool fromCenter, double minSize, const Rect& bounds) {
    const Point to{std::clamp(p.x, bounds.minX(), bounds.maxX()), std::clamp(p.y, bounds.minY(), bounds.maxY())};
    Rect out;
    if (keepAspect) {
        out = HandleLayout::aspectResizedRect(rect, handle, to, fromCenter);
    } else if (fromCenter) {
        // The owned edges follow the pointer and the opposite ones mirror them.
        const HandleSides sides = sidesOf(handle);
        const Point c = rect.center();
        const double halfW = sides.x ? std::abs(to.x - c.x) : rect.width() / 2;
        const double halfH = sides.y ? std::abs(to.y - c.y) : rect.height() / 2;
        out = Rect(c.x - halfW, c.y - halfH, 2 * halfW, 2 * halfH);
    } else {
        out = HandleLayout::resizedRect(rect, handle, to);
    }
    out = out.intersection(bounds);
    if (out.isNull()) return rect;
    // A side that would fall below the minimum keeps its old extent.
    double x0 = out.minX(), x1 = out.maxX(), y0 = out.minY(), y1 = out.maxY();
    if (x1 - x0 < minSize) x0 = rect.minX(), x1 = rect.maxX();
    if (y1 - y0 < minSize) y0 = rect.minY(), y1 = rect.maxY();
    return Rect::fromEdges(x0, y0, x1, y1);
}

ResizeCursor cursorHandle(RectHandle handle) {
    switch (handle) {
    case RectHandle::top:
    case RectHandle::bottom: return ResizeCursor::vertical;
    case RectHandle::left:
    case RectHandle::right: return ResizeCursor::horizontal;
    case RectHandle::topLeft:
    case RectHandle::bottomRight: return ResizeCursor::diagonalDown;
    case RectHandle::topRight:
    case RectHandle::bottomLeft: return ResizeCursor::diagonalUp;
    }
    return ResizeCursor::horizontal;
}

} // namespace tosvar::RegionSelectionChrome
