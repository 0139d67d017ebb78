#include "HitTesting.h"
#include "PathSimplify.h"

#include <gtest/gtest.h>

#include <cmath>
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
