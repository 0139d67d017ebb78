#pragma once

#include "HashCombine.h"

namespace tosvar {

// A location in a plane of doubles. Which way y grows depends on the space the
// caller works in (screen points: y up; image pixels: y down).
struct Point {
    double x = 0;
    double y = 0;

    friend constexpr bool operator==(const Point&, const Point&) = default;
    friend constexpr Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
    friend constexpr Point operator*(Point a, double s) { return {a.x * s, a.y * s}; }
};

} // namespace tosvar

template <>
struct std::hash<tosvar::Point> {
    std::size_t operator()(const tosvar::Point& p) const noexcept { return tosvar::hashValues(p.x, p.y); }
};
