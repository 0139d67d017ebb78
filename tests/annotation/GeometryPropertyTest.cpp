#include "ElementBounds.h"
#include "ElementRotation.h"
#include "AnnotationSamples.h"
#include "FakeTextMeasuring.h"
#include "HandleLayout.h"
#include "HitTesting.h"
#include "LeaderSupport.h"
#include "NearGeometry.h"
#include "PlaneMath.h"
#include "SegmentCurve.h"
#include "WatermarkLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

using namespace tosvar;
using namespace tosvar::samples;
using C = AnnotationKind::Case;

namespace {

const FakeTextMeasuring measure;
// The tolerance the editor hit-tests with.
constexpr double editorTolerance = 6;

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    double between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(engine_); }
    bool chance(double p) { return between(0, 1) < p; }
    Point point(const Rect& within) {
        return {between(within.minX(), within.maxX()), between(within.minY(), within.maxY())};
    }
    // A point no further than `radius` from the origin, evenly over the disc.
    Point inDisc(double radius) {
        const double angle = between(0, 2 * std::numbers::pi);
        const double r = radius * std::sqrt(between(0, 1));
        return {r * std::cos(angle), r * std::sin(angle)};
    }
    Rect rect(double minSide, double maxSide) {
        return Rect(between(0, 800), between(0, 800), between(minSide, maxSide), between(minSide, maxSide));
    }
    std::string word(int maxLength) {
        std::string out;
        for (int n = 1 + below(maxLength); n > 0; --n) out += static_cast<char>('a' + below(26));
        return out;
    }

private:
    std::mt19937 engine_;
};

// A point of the polyline at an even chance along its pieces.
Point alongPolyline(Random& random, const std::vector<Point>& points) {
    if (points.size() == 1) return points.front();
    const std::size_t piece = static_cast<std::size_t>(random.below(static_cast<int>(points.size()) - 1));
    return points[piece] + (points[piece + 1] - points[piece]) * random.between(0, 1);
}

Point onRectBorder(Random& random, const Rect& r) {
    const double t = random.between(0, 1);
    switch (random.below(4)) {
    case 0: return {r.minX() + t * r.width(), r.minY()};
    case 1: return {r.minX() + t * r.width(), r.maxY()};
    case 2: return {r.minX(), r.minY() + t * r.height()};
    default: return {r.maxX(), r.minY() + t * r.height()};
    }
}

// ---- Rotated resize ----

// The box whose handles a resize drags, in the element's own frame.
Rect handleBox(const AnnotationElement& e) {
    if (e.kind.is(C::text)) {
        return HandleLayout::textFrameBox(LeaderSupport::bodyRect(measure, e), e.style.fontSize);
    }
    return e.geometry.boundingBox();
}

AnnotationElement randomTurnedElement(Random& random) {
    static constexpr C boxKinds[] = {C::rectangle, C::ellipse, C::image,     C::mosaic,        C::blur,
                                     C::magnifier, C::spotlight, C::translatedText};
    AnnotationStyle style;
    style.rotation = random.between(-179, 179);
    switch (random.below(3)) {
    case 0: {
        AnnotationStyle textStyle = style;
        textStyle.fontSize = random.between(8, 80);
        return text(random.word(12) + "\n" + random.word(6), random.point(Rect(0, 0, 800, 800)), textStyle);
    }
    case 1: {
        std::vector<Point> path;
        const Rect area = random.rect(20, 300);
        for (int n = 3 + random.below(6); n > 0; --n) path.push_back(random.point(area));
        return element(AnnotationKind(C::freehand), Geometry::path(std::move(path)), style);
    }
    default:
        return shape(boxKinds[random.below(std::size(boxKinds))], random.rect(10, 400), style);
    }
}

} // namespace

TEST(GeometryProperties, ARotatedResizeKeepsTheOppositeHandleStillOnScreen) {
    Random random(20240611);
    for (int i = 0; i < 4000; ++i) {
        const AnnotationElement before = randomTurnedElement(random);
        const bool isText = before.kind.is(C::text);
        const RectHandle grip = isText ? static_cast<RectHandle>(2 * random.below(4))
                                       : static_cast<RectHandle>(random.below(8));
        const Point pointer = random.point(Rect(-400, -400, 1600, 1600));
        const ToolDraft::DragModifiers modifiers{random.chance(0.5), random.chance(0.25)};
        const AnnotationElement after =
            HandleLayout::resizeRotated(measure, before, Handle::rect(grip), pointer, modifiers);
        SCOPED_TRACE(testing::Message() << "element " << i << " grip " << static_cast<int>(grip)
                                        << " constrained " << modifiers.constrained << " from centre "
                                        << modifiers.fromCenter);

        if (modifiers.fromCenter) {
            // Growing about the centre leaves the centre where it was, a text about its body's centre.
            expectNear(ElementRotation::center(measure, after), ElementRotation::center(measure, before), 1e-6);
            continue;
        }
        const Rect oldBox = handleBox(before);
        // A box grip dragged across the far edge flips, and the edge it crossed stays.
        const Point local = ElementRotation::toLocal(measure, pointer, before);
        const RectHandle dragged =
            isText ? grip : *HandleLayout::effectiveHandle(Handle::rect(grip), oldBox, local).rectHandle();
        const Point stillBefore = ElementRotation::toWorld(measure, handlePoint(oldBox, oppositeOf(grip)), before);
        const Point stillAfter =
            ElementRotation::toWorld(measure, handlePoint(handleBox(after), oppositeOf(dragged)), after);
        expectNear(stillAfter, stillBefore, 1e-6);
    }
}

namespace {

// ---- Hit testing against what is drawn ----

AnnotationElement randomDrawnElement(Random& random) {
    AnnotationStyle style;
    style.lineWidth = random.between(1, 12);
    if (random.chance(0.5)) style.fillColor = RGBAColor::Palette::green;
    const C kind = static_cast<C>(random.below(15));
    const bool turns = ElementRotation::supportsRotation(kind) && random.chance(0.6);
    if (turns) style.rotation = random.between(-180, 180);

    switch (kind) {
    case C::arrow:
    case C::line: {
        const Point from = random.point(Rect(0, 0, 800, 800));
        const Point to = random.point(Rect(0, 0, 800, 800));
        if (random.chance(0.4)) style.curvature = random.between(-0.25, 0.25) * PlaneMath::distance(from, to);
        if (random.chance(0.3)) {
            std::vector<Point> mids;
            for (int n = 1 + random.below(3); n > 0; --n) mids.push_back(random.point(Geometry::segment(from, to).boundingBox()));
            style.midPoints = mids;
        }
        return element(AnnotationKind(kind), Geometry::segment(from, to), style);
    }
    case C::freehand:
    case C::highlighter: {
        std::vector<Point> path;
        const Rect area = random.rect(1, 300);
        for (int n = 1 + random.below(8); n > 0; --n) path.push_back(random.point(area));
        return element(AnnotationKind(kind), Geometry::path(std::move(path)), style);
    }
    case C::text:
    case C::stepBadge: {
        style.fontSize = random.between(6, 60);
        // A leader does not turn with its body, while the reported bounds turn
        // the whole box; leaders go on unturned bodies here.
        if (!turns && random.chance(0.6)) {
            style.leaderTip = random.point(Rect(-200, -200, 1200, 1200));
            if (random.chance(0.5)) style.curvature = random.between(-80, 80);
            if (random.chance(0.5)) style.leaderWidth = random.between(2, 20);
        }
        const Point at = random.point(Rect(0, 0, 800, 800));
        if (kind == C::stepBadge) return element(AnnotationKind::stepBadge("7"), Geometry::point(at), style);
        return text(random.word(10) + (random.chance(0.5) ? "\n" + random.word(14) : ""), at, style);
    }
    case C::watermark:
        style.fontSize = random.between(8, 40);
        style.watermarkAngle = random.between(-180, 180);
        style.watermarkOffset = Size{random.between(-200, 200), random.between(-200, 200)};
        return element(AnnotationKind::watermark(random.word(12)), Geometry::rect(Rect(0, 0, 1200, 900)), style);
    case C::ellipse: {
        // Hit testing measures to an ellipse along its radius, which overstates
        // the distance of a lopsided one; within the editor's tolerance that
        // holds up to a ratio of three.
        const double a = random.between(5, 200);
        const double b = a * random.between(1.0 / 3, 3);
        return shape(kind, Rect(random.between(0, 800), random.between(0, 800), 2 * a, 2 * b), style);
    }
    case C::translatedText:
        return element(AnnotationKind::translatedText({"Hallo", "Hello", std::nullopt, "en", false, false,
                                                       std::nullopt, false}),
                       Geometry::rect(random.rect(10, 300)), style);
    default:
        return shape(kind, random.rect(1, 400), style);
    }
}

// A point the element paints over, with whether it is in the body's own
// frame (and so still to be turned) or already on screen.
struct DrawnPoint {
    Point p;
    bool local;
};

DrawnPoint randomDrawnPoint(Random& random, const AnnotationElement& e) {
    const AnnotationStyle& style = e.style;
    const double halfLine = style.lineWidth / 2;
    const Point stroke = random.inDisc(halfLine);
    if (const Geometry::Segment* s = e.geometry.asSegment()) {
        if (SegmentCurve::midPoints(style)) {
            return {alongPolyline(random, SegmentCurve::spine(s->from, s->to, style, 24)) + stroke, true};
        }
        const Point control = SegmentCurve::control(s->from, s->to, style.curvature);
        const double t = random.between(0, 1);
        return {s->from * ((1 - t) * (1 - t)) + control * (2 * t * (1 - t)) + s->to * (t * t) + stroke, true};
    }
    if (const std::vector<Point>* path = e.geometry.asPath()) {
        const bool smooth = e.kind.is(C::freehand);
        return {alongPolyline(random, smooth ? SegmentCurve::splineSamples(*path, 8) : *path) + stroke, true};
    }
    if (e.geometry.asPoint()) {
        if (const std::optional<Point> tip = LeaderSupport::tip(e); tip && random.chance(0.5)) {
            const double half = style.leaderWidth.value_or(8) / 2;
            const Point start = LeaderSupport::startOrCenter(measure, e);
            return {alongPolyline(random, SegmentCurve::spine(start, *tip, style, 24)) + random.inDisc(half), false};
        }
        const Rect body = LeaderSupport::bodyRect(measure, e);
        if (e.kind.is(C::stepBadge)) return {body.center() + random.inDisc(body.width() / 2), true};
        return {random.point(body), true};
    }
    const Rect r = e.geometry.boundingBox();
    switch (e.kind.kindCase()) {
    case C::watermark: {
        // The repeats are decoration: only the centre tile is the element's to grab.
        const std::array<Point, 4> tile = WatermarkLayout::centerTileCorners(
            measure, e.kind.textPayload(), style.fontSize, style.watermarkAngle, style.watermarkOffset, r.size);
        return {tile[0] + (tile[1] - tile[0]) * random.between(0, 1) + (tile[3] - tile[0]) * random.between(0, 1),
                false};
    }
    case C::spotlight:
        // The veil covers everything but the holes, and a hole shows what lies
        // beneath; only the rim is the spotlight's own.
        return {onRectBorder(random, r) + random.inDisc(2), true};
    case C::rectangle:
        if (style.fillColor && random.chance(0.5)) return {random.point(r), true};
        return {onRectBorder(random, r) + stroke, true};
    case C::ellipse: {
        if (style.fillColor && random.chance(0.5)) {
            const Point unit = random.inDisc(1);
            return {r.center() + Point{unit.x * r.width() / 2, unit.y * r.height() / 2}, true};
        }
        const double angle = random.between(0, 2 * std::numbers::pi);
        return {r.center() + Point{std::cos(angle) * r.width() / 2, std::sin(angle) * r.height() / 2} + stroke, true};
    }
    default: // region effects, pictures and translated blocks paint their whole box
        return {random.point(r), true};
    }
}

double longestSpan(const std::vector<Point>& points) {
    double longest = 0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) longest = std::max(longest, PlaneMath::distance(points[i], points[i + 1]));
    return longest;
}

// How far beyond its reported bounds an element can still be hit: the reach
// of its strokes or leader, and the swing of a spline past the points it
// runs through (a few tenths of its longest span at most).
double reachBeyondBounds(const AnnotationElement& e) {
    const AnnotationStyle& style = e.style;
    double reach = std::max({style.lineWidth / 2 + editorTolerance, 5.0});
    if (style.leaderTip) reach = std::max(reach, style.leaderWidth.value_or(8) / 2 + editorTolerance);
    std::vector<Point> splined;
    if (const Geometry::Segment* s = e.geometry.asSegment(); s && SegmentCurve::midPoints(style)) {
        splined = {s->from};
        splined.insert(splined.end(), style.midPoints->begin(), style.midPoints->end());
        splined.push_back(s->to);
    } else if (e.kind.is(C::freehand) && e.geometry.asPath()) {
        splined = *e.geometry.asPath();
    }
    return reach + 0.25 * longestSpan(splined);
}

bool withinClosed(const Rect& r, Point p) {
    return p.x >= r.minX() && p.x <= r.maxX() && p.y >= r.minY() && p.y <= r.maxY();
}

} // namespace

TEST(GeometryProperties, APointDrawnInsideTheBoundsIsHitAndOneWellOutsideIsNot) {
    Random random(1207);
    int drawnInside = 0;
    int wellOutside = 0;
    for (int i = 0; i < 4000; ++i) {
        const AnnotationElement e = randomDrawnElement(random);
        const Rect bounds = ElementRotation::worldBounds(measure, ElementBounds::visualBox(measure, e), e);
        for (int k = 0; k < 12; ++k) {
            const DrawnPoint drawn = randomDrawnPoint(random, e);
            const Point p = drawn.local ? ElementRotation::toWorld(measure, drawn.p, e) : drawn.p;
            if (!bounds.contains(p)) continue;
            ++drawnInside;
            ASSERT_TRUE(HitTesting::hitTest(measure, e, p, editorTolerance))
                << "element " << i << " at " << p.x << "," << p.y << ": " << testing::PrintToString(e);
        }
        const double margin = reachBeyondBounds(e) + 1;
        const Rect near = bounds.insetBy(-margin, -margin);
        for (int k = 0; k < 12; ++k) {
            const Point p = random.point(near.insetBy(-300, -300));
            if (withinClosed(near, p)) continue;
            ++wellOutside;
            ASSERT_FALSE(HitTesting::hitTest(measure, e, p, editorTolerance))
                << "element " << i << " at " << p.x << "," << p.y << ": " << testing::PrintToString(e);
        }
    }
    // Enough of both kinds of point were tried for the property to mean something.
    EXPECT_GT(drawnInside, 20000);
    EXPECT_GT(wellOutside, 20000);
}
