#include "ElementRotation.h"
#include "FakeTextMeasuring.h"
#include "HitTesting.h"
#include "LeaderSupport.h"
#include "SegmentCurve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace tosvar;
using namespace tosvar::samples;
using C = AnnotationKind::Case;

namespace {

const FakeTextMeasuring measure;

bool hits(const AnnotationElement& e, Point p, double tolerance = 0) {
    return HitTesting::hitTest(measure, e, p, tolerance);
}

AnnotationStyle lineWidth(double width) {
    AnnotationStyle style;
    style.lineWidth = width;
    return style;
}

} // namespace

TEST(HitTestingDistances, SegmentsRectanglesAndEllipses) {
    EXPECT_DOUBLE_EQ(HitTesting::distanceToSegment({5, 3}, {0, 0}, {10, 0}), 3);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToSegment({13, 4}, {0, 0}, {10, 0}), 5); // beyond the end
    EXPECT_DOUBLE_EQ(HitTesting::distanceToSegment({3, 4}, {0, 0}, {0, 0}), 5);   // zero length
    EXPECT_EQ(HitTesting::nearestPointOnSegment({-4, 7}, {0, 0}, {10, 0}), (Point{0, 0}));

    const Rect box(0, 0, 100, 50);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToRectBorder({10, 20}, box), 10);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToRectBorder({50, 45}, box), 5);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToRectBorder({103, 54}, box), 5);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToRectBorder({50, -7}, box), 7);

    // The exact centre is the shorter semi-axis away; along an axis the distance is exact.
    EXPECT_DOUBLE_EQ(HitTesting::distanceToEllipseBorder({50, 25}, box), 25);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToEllipseBorder({110, 25}, box), 10);
    EXPECT_DOUBLE_EQ(HitTesting::distanceToEllipseBorder({50, 15}, box), 15);
    // An ellipse half a pixel thin measures as its rectangle; a little
    // thicker, the radial measure runs far along the long axis.
    EXPECT_DOUBLE_EQ(HitTesting::distanceToEllipseBorder({10, 3}, Rect(0, 0, 100, 1)), 2);
    EXPECT_GT(HitTesting::distanceToEllipseBorder({10, 3.1}, Rect(0, 0, 100, 1.2)), 20);
}

TEST(HitTestingShapes, FilledInsidesStrokedBordersAndTheFloorOfFive) {
    const AnnotationElement outline = shape(C::rectangle, Rect(0, 0, 100, 60), lineWidth(0));
    EXPECT_FALSE(hits(outline, {50, 30}));
    EXPECT_TRUE(hits(outline, {50, 5}));  // the reach never falls below 5
    EXPECT_FALSE(hits(outline, {50, 5.5}));
    EXPECT_FALSE(hits(outline, {50, 6}));
    EXPECT_TRUE(hits(outline, {50, 6}, 6));

    AnnotationStyle filled = lineWidth(0);
    filled.fillColor = RGBAColor::Palette::blue;
    EXPECT_TRUE(hits(shape(C::rectangle, Rect(0, 0, 100, 60), filled), {50, 30}));
    EXPECT_TRUE(hits(shape(C::ellipse, Rect(0, 0, 100, 60), filled), {50, 30}));
    EXPECT_FALSE(hits(shape(C::ellipse, Rect(0, 0, 100, 60), filled), {3, 3}));       // a corner outside the ellipse
    EXPECT_FALSE(hits(shape(C::ellipse, Rect(0, 0, 100, 60), lineWidth(0)), {50, 30})); // hollow

    // Region effects and pictures are targets all over, grown by the tolerance.
    for (C kind : {C::mosaic, C::blur, C::magnifier, C::image, C::translatedText}) {
        const AnnotationElement region = shape(kind, Rect(0, 0, 100, 60));
        EXPECT_TRUE(hits(region, {50, 30}));
        EXPECT_TRUE(hits(region, {-3, 30}, 4));
        EXPECT_FALSE(hits(region, {-5, 30}, 4));
    }
}

TEST(HitTestingShapes, ASpotlightIsAHoleThatClicksPassThrough) {
    const AnnotationElement below = shape(C::image, Rect(0, 0, 200, 200));
    const AnnotationElement spotlight = shape(C::spotlight, Rect(50, 50, 100, 100));
    EXPECT_FALSE(hits(spotlight, {100, 100}));
    EXPECT_TRUE(hits(spotlight, {52, 100}));
    EXPECT_TRUE(hits(spotlight, {46, 100}));

    const std::vector<AnnotationElement> elements{below, spotlight};
    EXPECT_EQ(HitTesting::topmost(measure, elements, {100, 100}, 0), below.id);
    EXPECT_EQ(HitTesting::topmost(measure, elements, {51, 100}, 0), spotlight.id);
    EXPECT_EQ(HitTesting::topmost(measure, elements, {500, 500}, 0), std::nullopt);
}

TEST(HitTestingShapes, TopmostTakesTheLaterOfOverlappingElementsAndSkipsHiddenBlocks) {
    const AnnotationElement first = shape(C::mosaic, Rect(0, 0, 100, 100));
    const AnnotationElement second = shape(C::blur, Rect(50, 50, 100, 100));
    const std::vector<AnnotationElement> elements{first, second};
    EXPECT_EQ(HitTesting::topmost(measure, elements, {75, 75}, 0), second.id);
    EXPECT_EQ(HitTesting::topmost(measure, elements, {25, 25}, 0), first.id);

    TranslatedBlock hidden{"Hallo", "Hello", std::nullopt, "en", false, false, std::nullopt, true};
    const AnnotationElement block =
        element(AnnotationKind::translatedText(hidden), Geometry::rect(Rect(0, 0, 200, 200)));
    EXPECT_FALSE(hits(block, {75, 75}));
    const std::vector<AnnotationElement> withHidden{first, block};
    EXPECT_EQ(HitTesting::topmost(measure, withHidden, {75, 75}, 0), first.id);
}

TEST(HitTestingShapes, ARotatedRectangleIsHitInItsOwnFrame) {
    AnnotationStyle turned;
    turned.fillColor = RGBAColor::Palette::red;
    turned.rotation = 45;
    const AnnotationElement diamond = shape(C::rectangle, Rect(0, 0, 100, 100), turned);
    // A corner of the unturned box lies outside the turned square; the tip
    // of the turned square lies outside the unturned box.
    EXPECT_FALSE(hits(diamond, {3, 3}));
    EXPECT_TRUE(hits(diamond, {50, -18}));
    EXPECT_TRUE(hits(diamond, {50, 50}));
}

TEST(HitTestingStrokes, SegmentsFollowTheirBendAndPathsTheirDrawnCurve) {
    AnnotationStyle bent;
    bent.curvature = 30;
    const AnnotationElement arrow = element(AnnotationKind(C::arrow), Geometry::segment({0, 0}, {200, 0}), bent);
    EXPECT_TRUE(hits(arrow, {100, 30}));
    EXPECT_FALSE(hits(arrow, {100, 0}));
    EXPECT_TRUE(hits(element(AnnotationKind(C::line), Geometry::segment({0, 0}, {200, 0})), {100, 4}));

    EXPECT_FALSE(hits(element(AnnotationKind(C::freehand), Geometry::path({})), {0, 0}));
    EXPECT_TRUE(hits(element(AnnotationKind(C::freehand), Geometry::path({{10, 10}})), {13, 14}));
    EXPECT_FALSE(hits(element(AnnotationKind(C::freehand), Geometry::path({{10, 10}})), {14, 14}));

    // The spline of a freehand stroke swings wide of its raw points; a
    // highlighter is drawn, and hit, through the raw points.
    const std::vector<Point> corner{{0, 0}, {100, 0}, {100, 100}};
    const std::vector<Point> curve = SegmentCurve::splineSamples(corner, 8);
    const Point widest = *std::min_element(curve.begin(), curve.end(), [](Point a, Point b) { return a.y < b.y; });
    ASSERT_LT(widest.y, -6);
    EXPECT_TRUE(hits(element(AnnotationKind(C::freehand), Geometry::path(corner)), widest));
    EXPECT_FALSE(hits(element(AnnotationKind(C::highlighter), Geometry::path(corner)), widest));
}

TEST(HitTestingTextAndLeaders, ARotatedTextTestsItsBodyTurnedAndItsLeaderNot) {
    AnnotationStyle style;
    style.fontSize = 20;
    style.rotation = 30;
    style.leaderTip = Point{50, 200};
    const AnnotationElement t = text("abcdefghij", {0, 0}, style); // body (0,0)-(100,20), centre (50,10)

    // The body's far corner turns away from where it stood unturned.
    const Point turnedCorner = ElementRotation::toWorld(measure, {99, 19}, t);
    EXPECT_TRUE(hits(t, turnedCorner));
    EXPECT_FALSE(hits(t, {99, 19}));

    // The leader runs straight down from the body to (50,200) on screen.
    EXPECT_TRUE(hits(t, {53, 150}));
    EXPECT_FALSE(hits(t, {56, 150}));
    EXPECT_TRUE(HitTesting::isOverLeader(measure, t, {55.5, 150}, 0)); // the grab reach is at least 6
    EXPECT_FALSE(HitTesting::isOverLeader(measure, t, {50, 10}, 0));   // on the body
    EXPECT_FALSE(HitTesting::isOverLeader(measure, text("abc", {0, 0}), {50, 150}, 0));

    // A wider leader reaches further.
    AnnotationStyle wide = style;
    wide.leaderWidth = 20;
    EXPECT_TRUE(hits(text("abcdefghij", {0, 0}, wide), {59, 150}));
}

TEST(HitTestingTextAndLeaders, BadgesAndOtherPointKinds) {
    const AnnotationElement b = badge({100, 100});
    EXPECT_TRUE(hits(b, {120, 120})); // the body is the disc's square
    EXPECT_FALSE(hits(b, {125, 100}));
    EXPECT_TRUE(hits(b, {125, 100}, 2));
    // Kinds that do not live on a point are hit only within the tolerance of it.
    const AnnotationElement dot = element(AnnotationKind(C::rectangle), Geometry::point({10, 10}));
    EXPECT_FALSE(hits(dot, {10, 10}));
    EXPECT_TRUE(hits(dot, {12, 12}, 3));
}

TEST(HitTestingWatermark, OnlyTheCentreTileIsATarget) {
    AnnotationStyle style;
    style.fontSize = 20;
    style.watermarkAngle = 0;
    // "SECRET" is a 60 by 20 tile centred on the canvas (500,300); the next
    // tile along its row stands 60 + 3*20 further right.
    const AnnotationElement mark = element(AnnotationKind::watermark("SECRET"), Geometry::rect(Rect(0, 0, 1000, 600)), style);
    EXPECT_TRUE(hits(mark, {525, 305}));
    EXPECT_TRUE(hits(mark, {534, 305})); // within the reach of 5
    EXPECT_FALSE(hits(mark, {536, 305}));
    EXPECT_FALSE(hits(mark, {620, 305}));

    AnnotationStyle turned = style;
    turned.watermarkAngle = 90;
    turned.watermarkOffset = Size{100, 0};
    const AnnotationElement upright =
        element(AnnotationKind::watermark("SECRET"), Geometry::rect(Rect(0, 0, 1000, 600)), turned);
    EXPECT_TRUE(hits(upright, {605, 330}));
    EXPECT_FALSE(hits(upright, {630, 305}));

    EXPECT_FALSE(hits(element(AnnotationKind::watermark(""), Geometry::rect(Rect(0, 0, 1000, 600))), {500, 300}));
    EXPECT_FALSE(hits(element(AnnotationKind::watermark("SECRET"), Geometry::rect(Rect(0, 0, 1000, 0))), {500, 0}));
}
