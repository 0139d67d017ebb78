#include "DraftBendGesture.h"
#include "PlaneMath.h"
#include "SegmentCurve.h"

#include "NearGeometry.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tosvar;
using namespace tosvar::samples;

TEST(SegmentCurve, ApexControlAndCurvatureAgree) {
    expectNear(SegmentCurve::apex({0, 0}, {100, 0}, 10), {50, 10});
    expectNear(SegmentCurve::control({0, 0}, {100, 0}, 10), {50, 20});
    expectNear(SegmentCurve::apex({0, 0}, {0, 100}, 10), {-10, 50});
    EXPECT_DOUBLE_EQ(SegmentCurve::curvature({0, 0}, {100, 0}, {50, -7}), -7);
    EXPECT_DOUBLE_EQ(SegmentCurve::curvature({0, 0}, {100, 0}, {80, 10}), 10); // only the normal part counts
    // A zero chord has no direction to bend in.
    expectNear(SegmentCurve::apex({5, 5}, {5, 5}, 10), {5, 5});
    EXPECT_EQ(SegmentCurve::curvature({5, 5}, {5, 5}, {9, 9}), 0);

    // The quadratic through the control point passes through the apex.
    const Point from{12, -3};
    const Point to{-40, 77};
    const std::vector<Point> quadratic = SegmentCurve::samples(from, SegmentCurve::control(from, to, 23), to, 8);
    ASSERT_EQ(quadratic.size(), 9u);
    expectNear(quadratic[4], SegmentCurve::apex(from, to, 23));
    EXPECT_NEAR(SegmentCurve::curvature(from, to, quadratic[4]), 23, 1e-9);
    EXPECT_EQ(SegmentCurve::samples(from, from, to, 0).size(), 3u);
}

TEST(SegmentCurve, SpineIsStraightBentOrSplined) {
    AnnotationStyle style;
    EXPECT_EQ(SegmentCurve::spine({0, 0}, {10, 0}, style, 16), (std::vector<Point>{{0, 0}, {10, 0}}));
    style.curvature = 5;
    EXPECT_EQ(SegmentCurve::spine({0, 0}, {10, 0}, style, 16).size(), 33u);
    EXPECT_EQ(SegmentCurve::spine({0, 0}, {10, 0}, style, 0).size(), 3u);
    style.midPoints = std::vector<Point>{};
    EXPECT_EQ(SegmentCurve::spine({0, 0}, {10, 0}, style, 16).size(), 33u); // an empty list is no list
    style.midPoints = std::vector<Point>{{3, 4}, {7, -4}};
    const std::vector<Point> spline = SegmentCurve::spine({0, 0}, {10, 0}, style, 16);
    ASSERT_EQ(spline.size(), 49u);
    EXPECT_EQ(spline[16], (Point{3, 4}));
}

TEST(SegmentCurve, SplinePassesThroughEveryPointAndSurvivesRepeats) {
    EXPECT_EQ(SegmentCurve::splineSamples({{1, 2}, {3, 4}}, 8), (std::vector<Point>{{1, 2}, {3, 4}}));
    const std::vector<Point> through{{0, 0}, {40, 10}, {40, 10}, {90, -30}, {100, 0}};
    const std::vector<Point> spline = SegmentCurve::splineSamples(through, 1); // at least 2 per span
    ASSERT_EQ(spline.size(), 9u);
    for (std::size_t i = 0; i < through.size(); ++i) expectNear(spline[2 * i], through[i]);
    for (Point p : spline) EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
}

namespace {

// A stroke drawn from the origin: the chord follows the pointer.
struct Stroke {
    DraftBendGesture gesture;
    double to(Point p) { return gesture.update({0, 0}, p, p); }
};

} // namespace

TEST(DraftBendGesture, AShortStrokeBendsToItsFirstSideWithinAQuarterOfItsChord) {
    Stroke timid;
    timid.gesture.reset({0, 0});
    EXPECT_EQ(timid.to({50, 20}), 0);
    EXPECT_EQ(timid.to({100, 0}), 0); // 20 off the chord is not yet a bend

    Stroke stroke;
    stroke.gesture.reset({0, 0});
    EXPECT_EQ(stroke.to({50, 35}), 0);         // on the chord itself
    EXPECT_DOUBLE_EQ(stroke.to({100, 0}), 25); // 35 off, held to a quarter of 100
    EXPECT_EQ(stroke.gesture.side, 1);
    EXPECT_DOUBLE_EQ(stroke.to({200, 0}), 35); // freely following while short
    EXPECT_DOUBLE_EQ(*stroke.gesture.ratio, 35.0 / 200);
}

TEST(DraftBendGesture, ALongStrokeFreezesItsRatioSoTheBendGrowsWithTheChord) {
    Stroke stroke;
    stroke.gesture.reset({0, 0});
    stroke.to({150, 50});
    EXPECT_EQ(stroke.to({300, 0}), 0); // long chords need 60
    stroke.to({150, 70});
    EXPECT_DOUBLE_EQ(stroke.to({300, 0}), 70);
    EXPECT_TRUE(stroke.gesture.locked);
    EXPECT_DOUBLE_EQ(stroke.to({600, 0}), 140);
    EXPECT_DOUBLE_EQ(stroke.gesture.maxLength, 600);

    // Pulling back by more than half the longest chord starts over.
    EXPECT_EQ(stroke.to({250, 0}), 0);
    EXPECT_EQ(stroke.gesture, (DraftBendGesture{{{250, 0}}, std::nullopt, false, false, 250, std::nullopt}));
}

TEST(DraftBendGesture, FallingBackUnderTheThresholdUnlocksAndStraightensWithoutRetracting) {
    Stroke stroke;
    stroke.gesture.reset({0, 0});
    stroke.to({150, 70});
    stroke.to({400, 0});
    ASSERT_TRUE(stroke.gesture.locked);
    EXPECT_EQ(stroke.to({250, 0}), 0); // more than half of 400 remains: not a retraction
    EXPECT_FALSE(stroke.gesture.locked);
    EXPECT_EQ(stroke.gesture.path, (std::vector<Point>{{250, 0}}));
    EXPECT_DOUBLE_EQ(stroke.gesture.maxLength, 250);
}

TEST(DraftBendGesture, ASmallRetractionIsNotAStartOver) {
    Stroke stroke;
    stroke.gesture.reset({0, 0});
    stroke.to({25, -35});
    EXPECT_DOUBLE_EQ(stroke.to({50, 0}), -12.5);
    // Less than half of 50, but by only 26.
    EXPECT_DOUBLE_EQ(stroke.to({24, 0}), -6);
    EXPECT_EQ(stroke.gesture.side, -1);
}

TEST(DraftBendGesture, CrossingTheChordStraightensForTheRestOfTheStrokeRatherThanReEngagingAtSixty) {
    Stroke stroke;
    stroke.gesture.reset({0, 0});
    stroke.to({50, -40});
    ASSERT_LT(stroke.to({100, 0}), 0);
    // The chord swings past the earlier points: they now lie on the other side.
    EXPECT_EQ(stroke.to({100, -150}), 0);
    EXPECT_TRUE(stroke.gesture.released);
    EXPECT_FALSE(stroke.gesture.side);

    // Once let go, no deviation brings the bend back, however far past 60.
    stroke.to({100, 100});
    EXPECT_EQ(stroke.to({200, -150}), 0);
    stroke.to({0, 250});
    EXPECT_EQ(stroke.to({200, -150}), 0);
    EXPECT_TRUE(stroke.gesture.released);

    // Only a retraction, or a fresh start, lets the stroke bend again.
    EXPECT_EQ(stroke.to({40, -30}), 0);
    EXPECT_FALSE(stroke.gesture.released);
    stroke.to({30, -40});
    EXPECT_DOUBLE_EQ(stroke.to({100, 0}), -25);
}

TEST(DraftBendGesture, PinStraightAndResetStartAFreshStroke) {
    DraftBendGesture gesture{{{1, 1}, {2, 2}}, 1.0, true, true, 500, 0.2};
    gesture.pinStraight({7, 8});
    EXPECT_EQ(gesture, (DraftBendGesture{{{7, 8}}, std::nullopt, false, false, 0, std::nullopt}));
}
