#include "Geometry.h"

namespace tosvar {

namespace {

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace

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
