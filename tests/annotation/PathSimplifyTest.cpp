#include "HitTesting.h"
#include "PathSimplify.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using namespace tosvar;

namespace {

// A hand-drawn looking stroke: steps of one pixel whose heading wanders.
std::vector<Point> wanderingStroke(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> turn(0, 0.08);
    std::vector<Point> points;
    points.reserve(count);
    Point p{0, 0};
    double heading = 0;
    for (std::size_t i = 0; i < count; ++i) {
        points.push_back(p);
        heading += turn(random);
        p = p + Point{std::cos(heading), std::sin(heading)};
    }
    return points;
}

// Each dropped point lies within `tolerance` of the kept segment spanning it.
void expectFaithful(const std::vector<Point>& points, const std::vector<Point>& kept, double tolerance) {
    ASSERT_GE(kept.size(), 2u);
    EXPECT_EQ(kept.front(), points.front());
    EXPECT_EQ(kept.back(), points.back());
    std::size_t segment = 0; // index into kept of the segment's start
    for (const Point& p : points) {
        if (segment + 1 < kept.size() && p == kept[segment + 1]) {
            ++segment;
            continue;
        }
        if (p == kept[segment]) continue;
        ASSERT_LT(segment + 1, kept.size());
        ASSERT_LE(HitTesting::distanceToSegment(p, kept[segment], kept[segment + 1]), tolerance);
    }
}

// The plain algorithm: every range scanned point by point.
std::vector<Point> referenceSimplify(const std::vector<Point>& points, double tolerance) {
    std::vector<bool> kept(points.size(), false);
    kept.front() = kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> ranges{{0, points.size() - 1}};
    while (!ranges.empty()) {
        const auto [a, b] = ranges.back();
        ranges.pop_back();
        std::size_t farthest = a + 1;
        double farthestDistance = -1;
        for (std::size_t i = a + 1; i < b; ++i) {
            const double d = HitTesting::distanceToSegment(points[i], points[a], points[b]);
            if (d > farthestDistance) {
                farthest = i;
                farthestDistance = d;
            }
        }
        if (farthestDistance > tolerance) {
            kept[farthest] = true;
            ranges.emplace_back(a, farthest);
            ranges.emplace_back(farthest, b);
        }
    }
    std::vector<Point> result;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (kept[i]) result.push_back(points[i]);
    return result;
}

bool sameIncludingNaN(const std::vector<Point>& x, const std::vector<Point>& y) {
    const auto same = [](double u, double v) { return u == v || (std::isnan(u) && std::isnan(v)); };
    return std::equal(x.begin(), x.end(), y.begin(), y.end(),
                      [&](Point p, Point q) { return same(p.x, q.x) && same(p.y, q.y); });
}

} // namespace

TEST(PathSimplify, AStraightRunKeepsOnlyItsEnds) {
    std::vector<Point> run;
    for (int i = 0; i <= 50; ++i) run.push_back({i * 2.0, i * 1.0});
    EXPECT_EQ(PathSimplify::simplify(run, 3.0), (std::vector<Point>{{0, 0}, {100, 50}}));
}

TEST(PathSimplify, ShortPathsAndNonPositiveTolerancesComeBackUnchanged) {
    const std::vector<Point> two{{0, 0}, {5, 5}};
    EXPECT_EQ(PathSimplify::simplify(two, 3), two);
    EXPECT_EQ(PathSimplify::simplify({}, 3), std::vector<Point>{});
    const std::vector<Point> bent{{0, 0}, {5, 0.1}, {10, 0}};
    EXPECT_EQ(PathSimplify::simplify(bent, 0), bent);
    EXPECT_EQ(PathSimplify::simplify(bent, -1), bent);
    EXPECT_EQ(PathSimplify::simplify(bent, std::nan("")), bent);
    EXPECT_EQ(PathSimplify::simplify(bent, 0.05), bent);
    EXPECT_EQ(PathSimplify::simplify(bent, 0.1), (std::vector<Point>{{0, 0}, {10, 0}})); // strictly greater
}

TEST(PathSimplify, TheEarliestOfEquallyFarPointsIsKept) {
    // Both plateau points are 2 from the chord; keeping the first leaves the
    // second 0.71 from the new chord, and the other way round alike.
    const std::vector<Point> plateau{{0, 0}, {1, 2}, {2, 2}, {3, 0}};
    EXPECT_EQ(PathSimplify::simplify(plateau, 1), (std::vector<Point>{{0, 0}, {1, 2}, {3, 0}}));
}

TEST(PathSimplify, ZeroLengthChordsMeasureFromTheirStart) {
    // A closed loop: first and last points coincide.
    const std::vector<Point> loop{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
    const std::vector<Point> kept = PathSimplify::simplify(loop, 1);
    EXPECT_EQ(kept, loop);
}

TEST(PathSimplify, LongStrokesStayFaithful) {
    for (double tolerance : {0.75, 3.0}) {
        const std::vector<Point> stroke = wanderingStroke(100'000, 3);
        const std::vector<Point> kept = PathSimplify::simplify(stroke, tolerance);
        EXPECT_LT(kept.size(), stroke.size() / 4);
        expectFaithful(stroke, kept, tolerance);
    }
}

TEST(PathSimplify, KeepsExactlyWhatAPlainScanKeeps) {
    std::mt19937 random(5);
    std::uniform_int_distribution<int> grid(0, 4);
    std::vector<Point> ties; // a small integer grid: equal distances everywhere
    for (int i = 0; i < 3000; ++i) ties.push_back({static_cast<double>(grid(random)), static_cast<double>(grid(random))});

    std::vector<Point> loops;
    for (int i = 0; i < 6000; ++i) {
        const double t = i * 0.01;
        loops.push_back({t * 8 + 40 * std::cos(t * 1.7), 60 * std::sin(t * 2.3)});
    }

    std::vector<Point> zigzag; // every corner kept, ties between the peaks
    for (int i = 0; i < 1500; ++i) zigzag.push_back({static_cast<double>(i), i % 2 == 0 ? 0.0 : 10.0});

    std::vector<Point> farAway = wanderingStroke(4000, 9);
    for (Point& p : farAway) p = p + Point{1e15, -3e14};

    std::vector<Point> broken = wanderingStroke(2000, 4);
    broken[700].x = std::nan("");
    broken[1200].y = std::numeric_limits<double>::infinity();
    broken[1500] = {-std::numeric_limits<double>::infinity(), std::nan("")};

    const std::vector<std::pair<const char*, const std::vector<Point>*>> shapes{
        {"integer grid", &ties}, {"loops", &loops}, {"zigzag", &zigzag}, {"far from the origin", &farAway},
        {"not-a-number and infinite points", &broken}};
    for (const auto& [name, shape] : shapes)
        for (double tolerance : {0.5, 1.0, 3.0})
            EXPECT_TRUE(sameIncludingNaN(PathSimplify::simplify(*shape, tolerance), referenceSimplify(*shape, tolerance)))
                << name << " at " << tolerance;
}
