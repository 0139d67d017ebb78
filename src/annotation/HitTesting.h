#pragma once

#include "Point.h"

namespace tosvar::HitTesting {

// Distance from `p` to the segment a-b (not the infinite line); a segment of
// zero length measures to `a`.
double distanceToSegment(Point p, Point a, Point b);

} // namespace tosvar::HitTesting
