#pragma once

#include "Rect.h"

#include <optional>
#include <vector>

// Where the badge with a region's size stands: beside the region at one of
// its corners, on the side that has room and covers nothing, else inside.
// Points are the overlay's own (y down), so "above" is the smaller y.
namespace tosvar::RegionBadgeLayout {

enum class Slot { above, below, inside };
enum class Corner { topLeft, topRight, bottomLeft, bottomRight };

struct Placement {
    Slot slot = Slot::above;
    Rect frame;
    friend bool operator==(const Placement&, const Placement&) = default;
};

// A top corner tries above the region first, a bottom corner below it; a
// side counts when it stays 4 points inside `bounds` and meets none of `avoiding`.
Placement placement(Size badge, const Rect& region, const Rect& bounds, Corner corner, const std::vector<Rect>& avoiding);
// The corner of `rect` nearest `point`; the first of top-left, top-right,
// bottom-left, bottom-right on a tie.
Corner nearestCorner(Point point, const Rect& rect);

} // namespace tosvar::RegionBadgeLayout
