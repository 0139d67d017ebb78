#pragma once

#include "Point.h"

#include <cmath>
#include <numbers>

// Small vector helpers shared by the geometry of elements.
namespace tosvar::PlaneMath {

inline double length(Point v) { return std::hypot(v.x, v.y); }
inline double distance(Point a, Point b) { return length(b - a); }
inline Point midpoint(Point a, Point b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }
inline double radians(double degrees) { return degrees * std::numbers::pi / 180; }
inline double degrees(double radians) { return radians * 180 / std::numbers::pi; }

} // namespace tosvar::PlaneMath
