#pragma once

#include "Point.h"

#include <vector>

namespace tosvar::PathSimplify {

// Thins a stroke (Douglas-Peucker): keeps the ends and every point that lies
// further than `tolerance` from the chord of the range it splits; of equally
// far points the earliest is kept. Works from an explicit stack, so stroke
// length never reaches the call stack, and skips runs of points that cannot
// be the farthest, so a stroke that loops back and forth costs about
// n log n rather than n squared. Fewer than 3 points, or a tolerance not
// above 0, come back unchanged.
std::vector<Point> simplify(const std::vector<Point>& points, double tolerance);

} // namespace tosvar::PathSimplify
