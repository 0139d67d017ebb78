#include "Geometry.h"

#include <algorithm>

namespace tosvar {

namespace {

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace

Rect Geometry::boundingBox() const {
    return std::visit(Overloaded{
                          [](const Segment& s) {
                              return Rect::fromEdges(std::min(s.from.x, s.to.x), std::min(s.from.y, s.to.y),
                                                     std::max(s.from.x, s.to.x), std::max(s.from.y, s.to.y));
                          },
                          [](const Rect& r) { return r.standardized(); },
                          [](const std::vector<Point>& points) {
                              if (points.empty()) return Rect();
                              const auto [minX, maxX] = std::minmax_element(
                                  points.begin(), points.end(), [](Point a, Point b) { return a.x < b.x; });
                              const auto [minY, maxY] = std::minmax_element(
                                  points.begin(), points.end(), [](Point a, Point b) { return a.y < b.y; });
                              return Rect::fromEdges(minX->x, minY->y, maxX->x, maxY->y);
                          },
                          [](const Point& p) { return Rect(p, Size{}); },
                      },
                      value);
}

Geometry Geometry::translated(Point offset) const {
    return std::visit(Overloaded{
                          [&](const Segment& s) { return segment(s.from + offset, s.to + offset); },
                          [&](const Rect& r) { return rect(Rect(r.origin + offset, r.size)); },
                          [&](const std::vector<Point>& points) {
                              std::vector<Point> moved;
                              moved.reserve(points.size());
                              for (const Point& p : points) moved.push_back(p + offset);
                              return path(std::move(moved));
                          },
                          [&](const Point& p) { return point(p + offset); },
                      },
                      value);
}

std::size_t hashValue(const Geometry& geometry) {
    std::size_t seed = geometry.value.index();
    std::visit(Overloaded{
                   [&](const Geometry::Segment& s) { hashCombine(seed, hashValues(s.from, s.to)); },
                   [&](const Rect& r) { hashCombine(seed, std::hash<Rect>{}(r)); },
                   [&](const std::vector<Point>& points) {
                       for (const Point& p : points) hashCombine(seed, hashValues(p));
                   },
                   [&](const Point& p) { hashCombine(seed, hashValues(p)); },
               },
               geometry.value);
    return seed;
}

} // namespace tosvar
