#include "PathSimplify.h"

#include "HitTesting.h"

#include <utility>

namespace tosvar::PathSimplify {

std::vector<Point> simplify(const std::vector<Point>& points, double tolerance) {
    const std::size_t n = points.size();
    if (n < 3 || !(tolerance > 0)) return points;

    std::vector<bool> kept(n, false);
    kept.front() = kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> ranges{{0, n - 1}};
    while (!ranges.empty()) {
        const auto [a, b] = ranges.back();
        ranges.pop_back();
        if (b <= a + 1) continue;
        std::size_t farthest = a + 1;
        double farthestDistance = -1;
        for (std::size_t i = a + 1; i < b; ++i) {
            const double distance = HitTesting::distanceToSegment(points[i], points[a], points[b]);
            if (distance > farthestDistance) {
                farthest = i;
                farthestDistance = distance;
            }
        }
        if (farthestDistance > tolerance) {
            kept[farthest] = true;
            ranges.emplace_back(a, farthest);
            ranges.emplace_back(farthest, b);
        }
    }

    std::vector<Point> result;
    for (std::size_t i = 0; i < n; ++i)
        if (kept[i]) result.push_back(points[i]);
    return result;
}

} // namespace tosvar::PathSimplify
