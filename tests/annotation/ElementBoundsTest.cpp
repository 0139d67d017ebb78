#include "AnnotationSamples.h"
#include "ElementBounds.h"
#include "ElementRotation.h"
#include "FakeTextMeasuring.h"
#include "LeaderSupport.h"
#include "SegmentCurve.h"

#include "NearGeometry.h"

#include <gtest/gtest.h>

using namespace tosvar;
using namespace tosvar::samples;
using C = AnnotationKind::Case;

namespace {

const FakeTextMeasuring measure;


AnnotationStyle withLeader(Point tip, double curvature = 0) {
    AnnotationStyle style;
    style.leaderTip = tip;
    style.curvature = curvature;
    return style;
}


} // namespace

TEST(GeometryBoundingBox, EveryCaseHasANonNegativeBox) {
    EXPECT_EQ(Geometry::segment({30, 5}, {10, 25}).boundingBox(), Rect(10, 5, 20, 20));
    EXPECT_EQ(Geometry::rect(Rect(50, 60, -20, -30)).boundingBox(), Rect(30, 30, 20, 30));
    EXPECT_EQ(Geometry::path({{3, 9}, {-1, 4}, {7, 2}}).boundingBox(), Rect(-1, 2, 8, 7));
    EXPECT_EQ(Geometry::path({}).boundingBox(), Rect());
    EXPECT_EQ(Geometry::point({4, 5}).boundingBox(), Rect(4, 5, 0, 0));
}

TEST(ElementBoundsTextSize, LinesGapsBlankLinesAndTheWidthFloor) {
    EXPECT_EQ(ElementBounds::textSize(measure, "hello", 20), (Size{50, 20}));
    // Three lines of 20 with two quarter-line gaps; the widest line sets the width.
    EXPECT_EQ(ElementBounds::textSize(measure, "ab\nabcdef\n", 20), (Size{60, 70}));
    // Empty text and a lone character still measure 0.6 em wide and one line high.
    EXPECT_EQ(ElementBounds::textSize(measure, "", 20), (Size{12, 20}));
    EXPECT_EQ(ElementBounds::textSize(measure, "i", 20), (Size{12, 20}));
    EXPECT_EQ(ElementBounds::textSize(measure, "wörd", 10), (Size{20, 10}));
}

TEST(ElementBoundsVisualBox, BodiesLeadersAndBentSegments) {
    EXPECT_EQ(ElementBounds::visualBox(measure, text("hello", {100, 100})), Rect(94, 94, 72, 36));
    EXPECT_EQ(ElementBounds::visualBox(measure, badge({50, 50})), Rect(26, 26, 48, 48));
    AnnotationStyle small;
    small.fontSize = 5;
    EXPECT_EQ(ElementBounds::visualBox(measure, badge({50, 50}, small)), Rect(38, 38, 24, 24));

    // A straight leader reaches to its tip only; a bent one takes in its control point too.
    EXPECT_EQ(ElementBounds::visualBox(measure, badge({50, 50}, withLeader({200, 50}))), Rect(26, 26, 174, 48));
    const AnnotationElement bent = badge({50, 50}, withLeader({200, 50}, 30));
    const Point control = SegmentCurve::control(LeaderSupport::startOrCenter(measure, bent), {200, 50}, 30);
    EXPECT_GT(control.y, 74);
    EXPECT_DOUBLE_EQ(ElementBounds::visualBox(measure, bent).maxY(), control.y);

    AnnotationStyle curved;
    curved.curvature = -10;
    EXPECT_EQ(ElementBounds::visualBox(measure, element(AnnotationKind(C::line), Geometry::segment({0, 0}, {100, 0}),
                                                        curved)),
              Rect(0, -20, 100, 20));
    curved.midPoints = std::vector<Point>{{50, 40}};
    EXPECT_EQ(ElementBounds::visualBox(measure, element(AnnotationKind(C::line), Geometry::segment({0, 0}, {100, 0}),
                                                        curved)),
              Rect(0, 0, 100, 40));
    // A text on anything but a point has no body: just its geometry's box.
    EXPECT_EQ(ElementBounds::visualBox(measure, element(AnnotationKind::text("x"), Geometry::rect(Rect(1, 2, 3, 4)))),
              Rect(1, 2, 3, 4));
}

TEST(LeaderSupportBodies, TextAndBadgeBodiesAndOffPointGeometry) {
    EXPECT_EQ(LeaderSupport::bodyRect(measure, text("hi", {10, 20})), Rect(10, 20, 24, 24));
    EXPECT_EQ(LeaderSupport::bodyRect(measure, badge({10, 20})), Rect(-14, -4, 48, 48));
    EXPECT_EQ(LeaderSupport::bodyRect(measure, element(AnnotationKind::text("hi"), Geometry::segment({5, 5}, {9, 9}))),
              Rect());
    EXPECT_EQ(LeaderSupport::bodyRect(measure, element(AnnotationKind::stepBadge("1"), Geometry::rect(Rect(5, 5, 9, 9)))),
              Rect());
    EXPECT_EQ(LeaderSupport::bodyRect(measure, shape(C::rectangle, Rect(5, 5, -4, 9))), Rect(1, 5, 4, 9));
    EXPECT_TRUE(LeaderSupport::supportsLeader(C::stepBadge));
    EXPECT_FALSE(LeaderSupport::supportsLeader(C::arrow));
}

TEST(LeaderSupportStart, WhereTheLeaderLeavesItsBody) {
    // A badge's leader leaves its disc at the first sample beyond the radius:
    // 48 steps from (50,50) to (146,50) are 2 apart, so the 13th sample at x = 76.
    const AnnotationElement b = badge({50, 50}, withLeader({146, 50}));
    expectNear(*LeaderSupport::leaderStart(measure, b), {76, 50});
    // A tip inside the disc never leaves it.
    EXPECT_FALSE(LeaderSupport::leaderStart(measure, badge({50, 50}, withLeader({60, 50}))));
    EXPECT_FALSE(LeaderSupport::leaderStart(measure, badge({50, 50})));
    expectNear(LeaderSupport::startOrCenter(measure, badge({50, 50}, withLeader({60, 50}))), {50, 50});

    // A text's body (0,0)-(100,20) grown by 4: the leader straight down from
    // the centre (50,10), in steps of 97/48, leaves it at the 7th sample, past y = 24.
    AnnotationStyle style = withLeader({50, 107});
    style.fontSize = 20;
    const AnnotationElement t = text("abcdefghij", {0, 0}, style);
    const double step = 97.0 / 48;
    expectNear(*LeaderSupport::leaderStart(measure, t), {50, 10 + 7 * step});
    // Turned a quarter, the body stands 108 high about its centre, so the same
    // leader leaves it only past y = 64, at the 27th sample.
    AnnotationElement turned = t;
    turned.style.rotation = 90;
    expectNear(*LeaderSupport::leaderStart(measure, turned), {50, 10 + 27 * step});
    // Kinds without leaders start at their centre.
    AnnotationStyle tipped;
    tipped.leaderTip = Point{500, 500};
    expectNear(*LeaderSupport::leaderStart(measure, shape(C::rectangle, Rect(0, 0, 10, 20), tipped)), {5, 10});
}

TEST(LeaderSupportExitSamples, QuadraticOrSplineThroughTheMidPoints) {
    AnnotationStyle style;
    const std::vector<Point> straight = LeaderSupport::exitSamples({0, 0}, {48, 0}, style);
    ASSERT_EQ(straight.size(), 49u);
    expectNear(straight[1], {1, 0});
    style.curvature = 10;
    const std::vector<Point> bent = LeaderSupport::exitSamples({0, 0}, {48, 0}, style);
    expectNear(bent[24], SegmentCurve::apex({0, 0}, {48, 0}, 10));
    style.midPoints = std::vector<Point>{{24, 30}};
    const std::vector<Point> spline = LeaderSupport::exitSamples({0, 0}, {48, 0}, style);
    ASSERT_EQ(spline.size(), 25u);
    expectNear(spline[12], {24, 30});
}

TEST(ElementRotation, SupportDegreesAndCentres) {
    std::string turning;
    for (const AnnotationElement& e : oneOfEveryKind({})) turning += ElementRotation::supportsRotation(e.kind.kindCase()) ? 'y' : 'n';
    EXPECT_EQ(turning, "nnyyynyynyyyyyy");

    AnnotationStyle turned;
    turned.rotation = 30;
    EXPECT_EQ(ElementRotation::degrees(shape(C::rectangle, Rect(0, 0, 10, 10), turned)), 30);
    EXPECT_EQ(ElementRotation::degrees(shape(C::watermark, Rect(0, 0, 10, 10), turned)), 0);
    EXPECT_EQ(ElementRotation::degrees(shape(C::rectangle, Rect(0, 0, 10, 10))), 0);

    expectNear(ElementRotation::center(measure, text("hello", {100, 100})), {130, 112});
    expectNear(ElementRotation::center(measure, shape(C::ellipse, Rect(10, 10, -10, 30))), {5, 25});
}

TEST(ElementRotation, TurnsClockwiseOnScreenAndBack) {
    expectNear(ElementRotation::rotate({10, 0}, {0, 0}, 90), {0, 10});
    expectNear(ElementRotation::rotate({15, 5}, {5, 5}, -90), {5, -5});
    EXPECT_EQ(ElementRotation::rotate({1.5, 2.5}, {100, 100}, 0), (Point{1.5, 2.5}));

    AnnotationStyle turned;
    turned.rotation = 90;
    const AnnotationElement box = shape(C::rectangle, Rect(0, 0, 40, 20), turned);
    expectNear(ElementRotation::toWorld(measure, {40, 0}, box), {30, 30});
    expectNear(ElementRotation::toLocal(measure, {30, 30}, box), {40, 0});

    const std::array<Point, 4> corners = ElementRotation::worldCorners(measure, Rect(0, 0, 40, 20), box);
    expectNear(corners[0], {30, -10});
    expectNear(corners[1], {30, 30});
    expectNear(corners[2], {10, 30});
    expectNear(corners[3], {10, -10});
    expectNear(ElementRotation::worldBounds(measure, Rect(0, 0, 40, 20), box), Rect(10, -10, 20, 40));

    // A turn on a kind that cannot turn, or no turn at all, leaves the box alone.
    turned.rotation = 0;
    EXPECT_EQ(ElementRotation::worldBounds(measure, Rect(0, 0, 40, 20), shape(C::rectangle, Rect(0, 0, 40, 20), turned)),
              Rect(0, 0, 40, 20));
    turned.rotation = 45;
    EXPECT_EQ(ElementRotation::worldBounds(measure, Rect(0, 0, 40, 20), shape(C::watermark, Rect(0, 0, 40, 20), turned)),
              Rect(0, 0, 40, 20));
}
