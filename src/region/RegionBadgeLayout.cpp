#include "RegionBadgeLayout.h"

#include <algorithm>
#include <cmath>

namespace tosvar::RegionBadgeLayout {

namespace {

constexpr double gap = 4;

bool isTop(Corner c) { return c == Corner::topLeft || c == Corner::topRight; }
bool isLeft(Corner c) { return c == Corner::topLeft || c == Corner::bottomLeft; }

} // namespace

Placement placement(Size badge, const Rect& region, const Rect& bounds, Corner corner, const std::vector<Rect>& avoiding) {
    const Rect usable = bounds.insetBy(gap, gap);
    const double x0 = isLeft(corner) ? region.minX() : region.maxX() - badge.width;
    const double x = std::clamp(x0, usable.minX(), std::max(usable.minX(), usable.maxX() - badge.width));
    const Rect above(x, region.minY() - gap - badge.height, badge.width, badge.height);
    const Rect below(x, region.maxY() + gap, badge.width, badge.height);
    auto counts = [&](const Rect& frame) {
        if (!usable.contains(frame)) return false;
        return std::none_of(avoiding.begin(), avoiding.end(), [&](const Rect& r) { return r.intersects(frame); });
    };
    const Placement first = isTop(corner) ? Placement{Slot::above, above} : Placement{Slot::below, below};
    const Placement second = isTop(corner) ? Placement{Slot::below, below} : Placement{Slot::above, above};
    if (counts(first.frame)) return first;
    if (counts(second.frame)) return second;
    const double y = isTop(corner) ? region.minY() + gap : region.maxY() - gap - badge.height;
    const double insideX = std::clamp(isLeft(corner) ? region.minX() + gap : region.maxX() - gap - badge.width, usable.minX(),
                                      std::max(usable.minX(), usable.maxX() - badge.width));
    return {Slot::inside, Rect(insideX, y, badge.width, badge.height)};
}

Corner nearestCorner(Point point, const Rect& rect) {
    const std::pair<Corner, Point> corners[] = {{Corner::topLeft, {rect.minX(), rect.minY()}},
                                                {Corner::topRight, {rect.maxX(), rect.minY()}},
                                                {Corner::bottomLeft, {rect.minX(), rect.maxY()}},
                                                {Corner::bottomRight, {rect.maxX(), rect.maxY()}}};
    Corner best = Corner::topLeft;
    double bestDistance = INFINITY;
    for (const auto& [corner, at] : corners)
        if (const double d = std::hypot(point.x - at.x, point.y - at.y); d < bestDistance) best = corner, bestDistance = d;
    return best;
}

} // namespace tosvar::RegionBadgeLayout
