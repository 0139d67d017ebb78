#pragma once

#include "Rect.h"

#include <optional>

namespace tosvar {

// Where the floating toolbar of a region stands: centred under the region
// with a 10-point gap, else above it, else inside near its bottom; a bar the
// user dragged keeps its place (its top centre) within the bounds.
namespace RegionToolbarLayout {

struct Placement {
    Rect frame;
    bool above = false;
    friend bool operator==(const Placement&, const Placement&) = default;
};

Placement place(Size toolbar, const Rect& region, const Rect& bounds, std::optional<Point> manualTopCenter);

} // namespace RegionToolbarLayout

} // namespace tosvar
