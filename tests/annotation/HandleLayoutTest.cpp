#include "ElementRotation.h"
#include "FakeTextMeasuring.h"
#include "HandleLayout.h"
#include "LeaderSupport.h"
#include "LensDial.h"
#include "SegmentCurve.h"

#include "NearGeometry.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tosvar;
using namespace tosvar::samples;
using C = AnnotationKind::Case;
using Kind = Handle::Kind;
using ToolDraft::DragModifiers;

namespace {

const FakeTextMeasuring measure;
constexpr DragModifiers plain{};
constexpr DragModifiers constrained{true, false};
constexpr DragModifiers fromCenter{false, true};



std::string kinds(const std::vector<HandleLayout::PlacedHandle>& handles) {
    std::string out;
    for (const auto& [handle, point] : handles) {
        if (auto h = handle.rectHandle()) {
            out += "r" + std::to_string(static_cast<int>(*h));
        } else if (auto i = handle.midPointIndex()) {
            out += "m" + std::to_string(*i);
        } else {
            out += "k" + std::to_string(static_cast<int>(handle.kind()));
        }
        out += ' ';
    }
    return out;
}

Point placed(const std::vector<HandleLayout::PlacedHandle>& handles, Handle handle) {
    for (const auto& placedHandle : handles) {
        if (placedHandle.handle == handle) return placedHandle.point;
    }
    ADD_FAILURE() << "no such handle";
    return {};
}

Rect rectOf(const AnnotationElement& e) { return *e.geometry.asRect(); }

AnnotationElement resize(const AnnotationElement& e, Handle h, Point p, DragModifiers modifiers = plain) {
    return HandleLayout::resize(measure, e, h, p, modifiers);
}

const Handle topLeft = Handle::rect(RectHandle::topLeft);
const Handle right = Handle::rect(RectHandle::right);
const Handle bottomRight = Handle::rect(RectHandle::bottomRight);

} // namespace

TEST(HandleLayoutHandles, WhichHandlesEachElementShowsInOrder) {
    AnnotationStyle bent;
    bent.curvature = 10;
    const AnnotationElement arrow = element(AnnotationKind(C::arrow), Geometry::segment({0, 0}, {100, 0}), bent);
    EXPECT_EQ(kinds(HandleLayout::handles(measure, arrow)), "k2 k3 k5 ");
    expectNear(placed(HandleLayout::handles(measure, arrow), Handle::plain(Kind::curveMid)), {50, 10});
    bent.midPoints = std::vector<Point>{{30, 5}, {60, 9}};
    EXPECT_EQ(kinds(HandleLayout::handles(measure, element(AnnotationKind(C::arrow), Geometry::segment({0, 0}, {100, 0}),
                                                           bent))),
              "k2 k3 m0 m1 ");

    EXPECT_EQ(kinds(HandleLayout::handles(measure, shape(C::ellipse, Rect(0, 0, 100, 50)))), "r0 r1 r2 r3 r4 r5 r6 r7 ");
    EXPECT_EQ(kinds(HandleLayout::handles(measure, shape(C::rectangle, Rect(0, 0, 100, 50)))),
              "r0 r1 r2 r3 r4 r5 r6 r7 k4 ");
    EXPECT_EQ(kinds(HandleLayout::handles(measure, shape(C::magnifier, Rect(0, 0, 100, 50)))),
              "r0 r1 r2 r3 r4 r5 r6 r7 k4 k8 k9 ");
    EXPECT_EQ(kinds(HandleLayout::handles(measure, shape(C::watermark, Rect(0, 0, 100, 50)))), "k6 r4 ");
    const std::vector<HandleLayout::PlacedHandle> box = HandleLayout::handles(measure, shape(C::image, Rect(10, 60, 100, -50)));
    expectNear(placed(box, topLeft), {10, 10});
    expectNear(placed(box, Handle::rect(RectHandle::right)), {110, 35});
    expectNear(placed(box, Handle::rect(RectHandle::bottomLeft)), {10, 60});

    EXPECT_EQ(kinds(HandleLayout::handles(measure, element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {9, 9}})))),
              "r0 r1 r2 r3 r4 r5 r6 r7 ");
    EXPECT_EQ(kinds(HandleLayout::handles(measure, element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {9, 0}})))),
              "");
    EXPECT_EQ(kinds(HandleLayout::pathPointHandles(element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {9, 0}})))),
              "m0 m1 ");
    EXPECT_EQ(kinds(HandleLayout::pathPointHandles(arrow)), "");
}

TEST(HandleLayoutHandles, TextsAndBadgesWithAndWithoutLeaders) {
    AnnotationStyle style;
    style.fontSize = 20;
    const AnnotationElement t = text("abcdefghij", {0, 0}, style); // body (0,0)-(100,20), frame (-20,-22)-(120,38)
    EXPECT_EQ(HandleLayout::textFrameBox(Rect(0, 0, 100, 20), 20), Rect(-20, -22, 140, 60));
    const std::vector<HandleLayout::PlacedHandle> plainText = HandleLayout::handles(measure, t);
    EXPECT_EQ(kinds(plainText), "r0 r2 r4 r6 k7 ");
    expectNear(placed(plainText, bottomRight), {120, 38});
    expectNear(placed(plainText, Handle::plain(Kind::leaderSpawn)), {50, -22});

    style.leaderTip = Point{50, 200};
    const std::vector<HandleLayout::PlacedHandle> led = HandleLayout::handles(measure, text("abcdefghij", {0, 0}, style));
    EXPECT_EQ(kinds(led), "r0 r2 r4 r6 k3 k5 ");
    const Point start = LeaderSupport::startOrCenter(measure, text("abcdefghij", {0, 0}, style));
    expectNear(placed(led, Handle::plain(Kind::curveMid)), SegmentCurve::apex(start, {50, 200}, 0));

    const std::vector<HandleLayout::PlacedHandle> plainBadge = HandleLayout::handles(measure, badge({100, 100}));
    EXPECT_EQ(kinds(plainBadge), "r4 k7 ");
    expectNear(placed(plainBadge, bottomRight), {124, 124});
    expectNear(placed(plainBadge, Handle::plain(Kind::leaderSpawn)), {100, 76});
    AnnotationStyle bentLeader;
    bentLeader.leaderTip = Point{300, 100};
    bentLeader.midPoints = std::vector<Point>{{200, 150}};
    EXPECT_EQ(kinds(HandleLayout::handles(measure, badge({100, 100}, bentLeader))), "r4 k3 m0 ");
    EXPECT_EQ(kinds(HandleLayout::handles(measure, element(AnnotationKind(C::arrow), Geometry::point({5, 5})))), "r4 ");
}

TEST(HandleLayoutHandles, TheCornerKnobStandsAtLeastEighteenIn) {
    const auto knob = [](double radius, Rect rect) {
        AnnotationStyle style;
        style.cornerRadius = radius;
        return placed(HandleLayout::handles(measure, shape(C::rectangle, rect, style)), Handle::plain(Kind::cornerRadius));
    };
    expectNear(knob(0, Rect(0, 0, 100, 60)), {18, 18});
    expectNear(knob(25, Rect(0, 0, 100, 60)), {25, 25});
    expectNear(knob(0, Rect(0, 0, 100, 30)), {15, 15}); // the centre of the short side
    expectNear(knob(40, Rect(0, 0, 100, 60)), {30, 30});
}

TEST(HandleLayoutFlip, AHandleFlipsWhenThePointerCrossesTheOppositeEdge) {
    const Rect box(0, 0, 100, 50);
    EXPECT_EQ(HandleLayout::effectiveHandle(Handle::rect(RectHandle::left), box, {150, 20}), right);
    EXPECT_EQ(HandleLayout::effectiveHandle(Handle::rect(RectHandle::left), box, {80, 20}),
              Handle::rect(RectHandle::left));
    EXPECT_EQ(HandleLayout::effectiveHandle(Handle::rect(RectHandle::top), box, {50, 60}),
              Handle::rect(RectHandle::bottom));
    EXPECT_EQ(HandleLayout::effectiveHandle(topLeft, box, {120, 70}), bottomRight);
    EXPECT_EQ(HandleLayout::effectiveHandle(topLeft, box, {120, 20}), Handle::rect(RectHandle::topRight));
    EXPECT_EQ(HandleLayout::effectiveHandle(bottomRight, box, {-1, -1}), topLeft);
    EXPECT_EQ(HandleLayout::effectiveHandle(Handle::plain(Kind::lensPan), box, {-1, -1}), Handle::plain(Kind::lensPan));
    EXPECT_EQ(oppositeOf(RectHandle::top), RectHandle::bottom);
    EXPECT_EQ(oppositeOf(RectHandle::bottomLeft), RectHandle::topRight);
}

TEST(HandleLayoutRects, FreeAndAspectResizes) {
    const Rect box(0, 0, 100, 50);
    EXPECT_EQ(HandleLayout::resizedRect(box, RectHandle::right, {150, 999}), Rect(0, 0, 150, 50));
    EXPECT_EQ(HandleLayout::resizedRect(box, RectHandle::left, {150, 999}), Rect(100, 0, 50, 50));
    EXPECT_EQ(HandleLayout::resizedRect(box, RectHandle::topLeft, {10, -10}), Rect(10, -10, 90, 60));

    // Corners take the larger of the two pulls, laid towards the pointer.
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::bottomRight, {300, 60}, false), Rect(0, 0, 300, 150));
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::bottomRight, {50, 100}, false), Rect(0, 0, 200, 100));
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::bottomRight, {-40, 10}, false), Rect(-40, 0, 40, 20));
    // Sides keep the opposite edge and centre the other axis.
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::bottom, {0, 100}, false), Rect(-50, 0, 200, 100));
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::left, {-100, 0}, false), Rect(-100, -25, 200, 100));
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::top, {0, 70}, false), Rect(30, 50, 40, 20));
    // About the centre (50,25).
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::right, {150, 0}, true), Rect(-50, -25, 200, 100));
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::top, {0, 0}, true), Rect(0, 0, 100, 50));
    EXPECT_EQ(HandleLayout::aspectResizedRect(box, RectHandle::topLeft, {40, 0}, true), Rect(0, 0, 100, 50));
    // Without an area there is no aspect to keep.
    EXPECT_EQ(HandleLayout::aspectResizedRect(Rect(0, 0, 100, 0), RectHandle::bottom, {0, 30}, false),
              Rect(0, 0, 100, 30));
}

TEST(HandleLayoutResize, PicturesKeepTheirAspectUnlessFreedAndRectanglesTheReverse) {
    EXPECT_TRUE(HandleLayout::effectiveConstraint(C::image, false));
    EXPECT_FALSE(HandleLayout::effectiveConstraint(C::image, true));
    EXPECT_TRUE(HandleLayout::effectiveConstraint(C::rectangle, true));

    const AnnotationElement picture = shape(C::image, Rect(0, 0, 100, 50));
    EXPECT_EQ(rectOf(resize(picture, bottomRight, {300, 60})), Rect(0, 0, 300, 150));
    EXPECT_EQ(rectOf(resize(picture, bottomRight, {300, 60}, constrained)), Rect(0, 0, 300, 60));
    EXPECT_EQ(rectOf(resize(picture, right, {80, 0}, {true, true})), Rect(20, 0, 60, 50));

    const AnnotationElement box = shape(C::rectangle, Rect(0, 0, 100, 50));
    EXPECT_EQ(rectOf(resize(box, bottomRight, {300, 60})), Rect(0, 0, 300, 60));
    EXPECT_EQ(rectOf(resize(box, bottomRight, {300, 60}, constrained)), Rect(0, 0, 300, 300));
    EXPECT_EQ(rectOf(resize(box, bottomRight, {-30, 10}, constrained)), Rect(-30, 0, 30, 30));
    EXPECT_EQ(rectOf(resize(box, bottomRight, {70, 45}, fromCenter)), Rect(30, 5, 40, 40));
    EXPECT_EQ(rectOf(resize(box, bottomRight, {70, 45}, {true, true})), Rect(30, 5, 40, 40));
    EXPECT_EQ(rectOf(resize(box, bottomRight, {90, 45}, {true, true})), Rect(10, -15, 80, 80));
    // A handle that does not belong to the geometry changes nothing.
    EXPECT_EQ(resize(box, Handle::plain(Kind::segmentEnd), {1, 1}), box);
}

TEST(HandleLayoutResize, PathsScaleEveryPointIntoTheNewBox) {
    const AnnotationElement stroke =
        element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {50, 20}, {100, 40}}));
    EXPECT_EQ(*resize(stroke, bottomRight, {200, 20}).geometry.asPath(),
              (std::vector<Point>{{0, 0}, {100, 10}, {200, 20}}));
    const AnnotationElement flat = element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {100, 0}}));
    EXPECT_EQ(resize(flat, bottomRight, {200, 20}), flat);
}

TEST(HandleLayoutResize, SegmentEndsAndBendsFollowThePointer) {
    const AnnotationElement line = element(AnnotationKind(C::line), Geometry::segment({0, 0}, {100, 0}));
    EXPECT_EQ(resize(line, Handle::plain(Kind::segmentStart), {-5, 7}).geometry, Geometry::segment({-5, 7}, {100, 0}));
    const Geometry snapped = resize(line, Handle::plain(Kind::segmentEnd), {100, 3}, constrained).geometry;
    expectNear(snapped.asSegment()->to, {std::hypot(100, 3), 0});
    EXPECT_DOUBLE_EQ(resize(line, Handle::plain(Kind::curveMid), {40, -12}).style.curvature, -12);
}

TEST(HandleLayoutResize, AMidPointDroppedNearTheLineBetweenItsNeighboursLandsOnIt) {
    AnnotationStyle style;
    style.midPoints = std::vector<Point>{{50, 40}, {100, 40}};
    const AnnotationElement line = element(AnnotationKind(C::line), Geometry::segment({0, 0}, {150, 0}), style);
    // Mid point 0 lies between the start (0,0) and mid point 1 (100,40).
    EXPECT_EQ(resize(line, Handle::midPoint(0), {50, 30}).style.midPoints->front(), (Point{50, 30}));
    const Point landed = resize(line, Handle::midPoint(0), {49, 22}).style.midPoints->front();
    EXPECT_NEAR(landed.y, landed.x * 0.4, 1e-9);
    EXPECT_EQ(resize(line, Handle::midPoint(2), {1, 1}), line);

    const AnnotationElement stroke = element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {5, 5}}));
    EXPECT_EQ(*resize(stroke, Handle::midPoint(1), {9, 9}).geometry.asPath(), (std::vector<Point>{{0, 0}, {9, 9}}));
}

TEST(HandleLayoutResize, CornerRadiusFollowsTheKnob) {
    AnnotationStyle style;
    style.cornerRadius = 0;
    const AnnotationElement box = shape(C::rectangle, Rect(0, 0, 100, 60), style);
    // The knob stands at (18,18) for a radius of 0.
    EXPECT_DOUBLE_EQ(resize(box, Handle::plain(Kind::cornerRadius), {28, 40}).style.cornerRadius, 10);
    EXPECT_DOUBLE_EQ(resize(box, Handle::plain(Kind::cornerRadius), {10, 40}).style.cornerRadius, 0);
    EXPECT_DOUBLE_EQ(resize(box, Handle::plain(Kind::cornerRadius), {90, 90}).style.cornerRadius, 30);
}

TEST(HandleLayoutResize, LeadersSpawnSnapBendAndDieOnTheirBody) {
    const AnnotationElement b = badge({100, 100});
    EXPECT_EQ(resize(b, Handle::plain(Kind::leaderSpawn), {300, 140}).style.leaderTip, (Point{300, 140}));
    const Point snapped = *resize(b, Handle::plain(Kind::leaderSpawn), {300, 105}, constrained).style.leaderTip;
    expectNear(snapped, {100 + std::hypot(200, 5), 100});

    AnnotationStyle led;
    led.leaderTip = Point{300, 100};
    led.curvature = 12;
    led.leaderWidth = 10;
    const AnnotationElement withLeader = badge({100, 100}, led);
    const AnnotationElement dropped = resize(withLeader, Handle::plain(Kind::segmentEnd), {110, 90});
    EXPECT_FALSE(dropped.style.leaderTip);
    EXPECT_EQ(dropped.style.curvature, 0);
    EXPECT_FALSE(dropped.style.leaderWidth);

    const AnnotationElement bent = resize(withLeader, Handle::plain(Kind::curveMid), {200, 130});
    const Point start = LeaderSupport::startOrCenter(measure, withLeader);
    EXPECT_DOUBLE_EQ(bent.style.curvature, SegmentCurve::curvature(start, {300, 100}, {200, 130}));
    EXPECT_GT(bent.style.curvature, 25);
}

TEST(HandleLayoutResize, BadgesScaleWithTheGripAndStopAtEight) {
    const AnnotationElement b = badge({100, 100}); // grip at (124,124)
    EXPECT_DOUBLE_EQ(resize(b, bottomRight, {148, 148}).style.fontSize, 48);
    EXPECT_DOUBLE_EQ(resize(b, bottomRight, {101, 100}).style.fontSize, 8);
}

TEST(HandleLayoutResize, TextFramesScaleTheFontAndKeepTheOppositeCorner) {
    AnnotationStyle style;
    style.fontSize = 20;
    const AnnotationElement t = text("abcdefghij", {0, 0}, style); // frame (-20,-22)-(120,38)
    // Doubling the body: the frame becomes 240 by 80 from the fixed top-left corner.
    const AnnotationElement doubled = resize(t, bottomRight, {220, 58});
    EXPECT_NEAR(doubled.style.fontSize, 40, 1e-9);
    const Rect frame = HandleLayout::textFrameBox(LeaderSupport::bodyRect(measure, doubled), doubled.style.fontSize);
    expectNear(frame.origin, {-20, -22});
    expectNear({frame.maxX(), frame.maxY()}, {220, 58});

    EXPECT_DOUBLE_EQ(resize(t, bottomRight, {40, 20}).style.fontSize, 8);
    EXPECT_EQ(resize(t, bottomRight, {0, 0}), t); // closer than an empty frame's corner: no size fits
    EXPECT_DOUBLE_EQ(resize(t, bottomRight, {150, 45}, constrained).style.fontSize,
                     std::round(resize(t, bottomRight, {150, 45}).style.fontSize));
    // From the centre the body's centre stays.
    const AnnotationElement grown = resize(t, topLeft, {-70, -40}, fromCenter);
    EXPECT_GT(grown.style.fontSize, 20);
    expectNear(LeaderSupport::center(measure, grown), {50, 10});
}

TEST(HandleLayoutResize, WatermarkDialAndSizeGrip) {
    AnnotationStyle style;
    style.watermarkAngle = 0;
    style.fontSize = 20;
    const AnnotationElement mark = element(AnnotationKind::watermark("SECRET"), Geometry::rect(Rect(0, 0, 1000, 500)), style);
    // Spacing 1 puts the dial 60 below the centre; the grip is the tile's corner.
    expectNear(HandleLayout::watermarkDialPosition(mark, Rect(0, 0, 1000, 500)), {500, 310});
    expectNear(HandleLayout::watermarkSizeGrip(measure, mark, Rect(0, 0, 1000, 500)), {530, 260});

    const AnnotationElement turned = resize(mark, Handle::plain(Kind::watermarkDial), {380, 250});
    EXPECT_DOUBLE_EQ(turned.style.watermarkAngle, 90);
    EXPECT_DOUBLE_EQ(turned.style.watermarkSpacing, 2);
    EXPECT_NEAR(resize(mark, Handle::plain(Kind::watermarkDial), {441, 260}).style.watermarkAngle, 80.38, 0.01);
    EXPECT_DOUBLE_EQ(resize(mark, Handle::plain(Kind::watermarkDial), {441, 260}, constrained).style.watermarkAngle, 75);
    EXPECT_DOUBLE_EQ(resize(mark, Handle::plain(Kind::watermarkDial), {500, 255}).style.watermarkSpacing, 0.3);
    // Too near the centre to tell an angle: only the spacing follows.
    const AnnotationElement near = resize(turned, Handle::plain(Kind::watermarkDial), {500, 250.5});
    EXPECT_DOUBLE_EQ(near.style.watermarkAngle, 90);
    EXPECT_DOUBLE_EQ(near.style.watermarkSpacing, 0.3);

    EXPECT_DOUBLE_EQ(resize(mark, bottomRight, {560, 270}).style.fontSize, 40);
    EXPECT_DOUBLE_EQ(resize(mark, bottomRight, {501, 250}).style.fontSize, 8);
}

TEST(HandleLayoutRotatedResize, ARotatedRectanglesRightHandleKeepsItsLeftSideOnScreen) {
    AnnotationStyle style;
    style.rotation = 30;
    const AnnotationElement box = shape(C::rectangle, Rect(0, 0, 100, 50), style);
    const Point leftBefore = ElementRotation::toWorld(measure, {0, 25}, box);
    const Point pointer = ElementRotation::toWorld(measure, {160, 25}, box);
    const AnnotationElement wider = HandleLayout::resizeRotated(measure, box, right, pointer, plain);
    EXPECT_NEAR(rectOf(wider).width(), 160, 1e-9);
    expectNear(ElementRotation::toWorld(measure, {rectOf(wider).minX(), rectOf(wider).midY()}, wider), leftBefore);
    expectNear(ElementRotation::toWorld(measure, {rectOf(wider).maxX(), rectOf(wider).midY()}, wider), pointer);

    // Handles that do not turn with the body, and unturned elements, resize as they are.
    AnnotationStyle led = style;
    led.leaderTip = Point{300, 300};
    const AnnotationElement b = badge({100, 100}, led);
    EXPECT_EQ(HandleLayout::resizeRotated(measure, b, Handle::plain(Kind::segmentEnd), {10, 10}, plain),
              resize(b, Handle::plain(Kind::segmentEnd), {10, 10}));
    const AnnotationElement still = shape(C::rectangle, Rect(0, 0, 100, 50));
    EXPECT_EQ(HandleLayout::resizeRotated(measure, still, right, {160, 9}, plain), resize(still, right, {160, 9}));
}

TEST(HandleLayoutMidPoints, InsertingKeepsTheCurveAndRemovingStopsAtTwoPathPoints) {
    AnnotationStyle bent;
    bent.curvature = 20;
    const AnnotationElement arc = element(AnnotationKind(C::arrow), Geometry::segment({0, 0}, {100, 0}), bent);
    const AnnotationElement split = HandleLayout::insertingMidPoint(measure, arc, {80, 10});
    EXPECT_EQ(split.style.curvature, 0);
    EXPECT_EQ(split.style.midPoints, (std::vector<Point>{{50, 20}, {80, 10}}));
    EXPECT_EQ(HandleLayout::insertingMidPoint(measure, split, {10, 5}).style.midPoints,
              (std::vector<Point>{{10, 5}, {50, 20}, {80, 10}}));
    EXPECT_EQ(HandleLayout::insertingMidPoint(measure, element(AnnotationKind(C::arrow), Geometry::segment({0, 0}, {100, 0})),
                                              {30, 3})
                  .style.midPoints,
              (std::vector<Point>{{30, 3}}));

    AnnotationStyle led;
    led.leaderTip = Point{300, 100};
    const AnnotationElement b = HandleLayout::insertingMidPoint(measure, badge({100, 100}, led), {200, 120});
    EXPECT_EQ(b.style.midPoints, (std::vector<Point>{{200, 120}}));
    const AnnotationElement bare = badge({100, 100});
    EXPECT_EQ(HandleLayout::insertingMidPoint(measure, bare, {200, 120}), bare);

    const AnnotationElement stroke = element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {100, 0}, {100, 100}}));
    EXPECT_EQ(*HandleLayout::insertingMidPoint(measure, stroke, {105, 60}).geometry.asPath(),
              (std::vector<Point>{{0, 0}, {100, 0}, {105, 60}, {100, 100}}));
    const AnnotationElement two = element(AnnotationKind(C::freehand), Geometry::path({{0, 0}, {100, 0}}));
    EXPECT_EQ(*HandleLayout::insertingMidPoint(measure, two, {50, 5}).geometry.asPath(),
              (std::vector<Point>{{0, 0}, {50, 5}, {100, 0}}));

    EXPECT_EQ(HandleLayout::removingMidPoint(two, 0), two);
    EXPECT_EQ(*HandleLayout::removingMidPoint(stroke, 1).geometry.asPath(), (std::vector<Point>{{0, 0}, {100, 100}}));
    EXPECT_EQ(HandleLayout::removingMidPoint(stroke, 3), stroke);
    EXPECT_EQ(HandleLayout::removingMidPoint(split, 0).style.midPoints, (std::vector<Point>{{80, 10}}));
    EXPECT_FALSE(HandleLayout::removingMidPoint(HandleLayout::removingMidPoint(split, 0), 0).style.midPoints);
}

TEST(LensDial, RingDotZoomAndSwell) {
    EXPECT_DOUBLE_EQ(LensDial::ringRadius(Rect(0, 0, 300, 50)), 26);
    EXPECT_DOUBLE_EQ(LensDial::ringRadius(Rect(0, 0, 300, 150)), 36);
    EXPECT_DOUBLE_EQ(LensDial::ringRadius(Rect(0, 300, 300, -400)), 42);
    expectNear(LensDial::center(Rect(0, 0, 200, 200)), {100, 154});
    expectNear(LensDial::center(Rect(0, 0, 200, 60)), {100, 44});  // 16 clear of the bottom
    expectNear(LensDial::center(Rect(0, 0, 200, 20)), {100, 10});  // too short to move
    expectNear(LensDial::dotPosition(Rect(0, 0, 200, 200)), {142, 154});

    EXPECT_DOUBLE_EQ(LensDial::zoom(4, 36), 5);
    EXPECT_DOUBLE_EQ(LensDial::zoom(4, 40), 5.1);
    EXPECT_DOUBLE_EQ(LensDial::zoom(4, -500), 1);
    EXPECT_DOUBLE_EQ(LensDial::zoom(4, 5000), 8);
    EXPECT_DOUBLE_EQ(LensDial::zoom(1.04, 0), 1);
    EXPECT_DOUBLE_EQ(LensDial::ringSwell(4, 5), 4);
    EXPECT_DOUBLE_EQ(LensDial::ringSwell(4, 9), 16);
    EXPECT_DOUBLE_EQ(LensDial::ringSwell(8, 1), -12);
}
