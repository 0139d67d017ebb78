#include "RegionToolbarLayout.h"

#include <algorithm>

namespace tosvar::RegionToolbarLayout {

namespace {

constexpr double margin = 8;
constexpr double gap = 10;
constexpr double insideLift = 16;

} // namespace

Placement place(Size toolbar, const Rect& region, const Rect& bounds, std::optional<Point> manualTopCenter) {
    const double w = toolbar.width, h = toolbar.height;
    auto centreX = [&](double x) {
        return std::clamp(x, bounds.minX() + w / 2 + margin, std::max(bounds.minX() + w / 2 + margin, bounds.maxX() - margin - w / 2));
    };
    if (manualTopCenter) {
        const double x = centreX(manualTopCenter->x);
        const double top = std::clamp(manualTopCenter->y, bounds.minY() + margin, std::max(bounds.minY() + margin, bounds.maxY() - margin - h));
        return {Rect(x - w / 2, top, w, h), top + h / 2 < region.midY()};
    }
    const double x = centreX(region.midX()) - w / 2;
    if (bounds.maxY() - region.maxY() - gap - h >= margin) return {Rect(x, region.maxY() + gap, w, h), false};
    if (region.minY() - bounds.minY() - gap - h >= margin) return {Rect(x, region.minY() - gap - h, w, h), true};
    return {Rect(x, region.maxY() - insideLift - h, w, h), false};
}

} // namespace tosvar::RegionToolbarLayout
