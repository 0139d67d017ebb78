#include "ToolDraft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace tosvar;
using C = AnnotationKind::Case;

namespace {

Point atDegrees(Point start, double radius, double degrees) {
    const double radians = degrees * std::numbers::pi / 180;
    return {start.x + radius * std::cos(radians), start.y + radius * std::sin(radians)};
}

double degreesOf(Point start, Point end) {
    return std::atan2(end.y - start.y, end.x - start.x) * 180 / std::numbers::pi;
}

} // namespace

TEST(AnnotationTool, KeysDragCreationAndOrder) {
    std::string keys;
    std::string dragged;
    for (AnnotationTool tool : allAnnotationTools) {
        keys += shortcutKey(tool).empty() ? std::string("-") : std::string(shortcutKey(tool));
        dragged += isDragCreated(tool) ? 'y' : 'n';
        EXPECT_EQ(enumFromRaw<AnnotationTool>(rawValue(tool)), tool);
    }
    EXPECT_EQ(keys, "valrop-tnwmbgsc");
    EXPECT_EQ(dragged, "nyyyyyynnnyyyyn");
    EXPECT_EQ(rawValue(AnnotationTool::stepBadge), "stepBadge");
    EXPECT_EQ(allAnnotationTools.front(), AnnotationTool::select);
    EXPECT_EQ(allAnnotationTools.back(), AnnotationTool::crop);
}

TEST(AnnotationTool, ToolForKey) {
    EXPECT_EQ(toolForKey("a"), AnnotationTool::arrow);
    EXPECT_EQ(toolForKey("g"), AnnotationTool::magnifier);
    EXPECT_EQ(toolForKey("c"), AnnotationTool::crop);
    EXPECT_FALSE(toolForKey("x"));
    EXPECT_FALSE(toolForKey("A"));
    EXPECT_FALSE(toolForKey("ab"));
    EXPECT_FALSE(toolForKey("")); // the highlighter has no key, not the empty one
}

TEST(ToolDraft, SnappingIsAMagnetNotALock) {
    const Point start{100, 50};
    EXPECT_EQ(ToolDraft::snappedToAngle(start, start, 30, 2), start);

    const Point near = atDegrees(start, 80, 31.5);
    const Point snapped = ToolDraft::snappedToAngle(start, near, 30, 2);
    EXPECT_NEAR(degreesOf(start, snapped), 30, 1e-12);
    EXPECT_NEAR(std::hypot(snapped.x - start.x, snapped.y - start.y), 80, 1e-12);

    const Point far = atDegrees(start, 80, 33);
    EXPECT_EQ(ToolDraft::snappedToAngle(start, far, 30, 2), far);

    // Up and left (y down): -150 degrees is a multiple of 30 too.
    const Point upLeft = ToolDraft::snappedToAngle(start, atDegrees(start, 10, -151.9), 30, 2);
    EXPECT_NEAR(degreesOf(start, upLeft), -150, 1e-12);
    EXPECT_NEAR(degreesOf(start, ToolDraft::snappedToAngle(start, atDegrees(start, 10, 178.5), 30, 2)), 180, 1e-12);
}

TEST(ToolDraft, ConstrainedArrowEndsOnThirtyDegrees) {
    const Point start{10, 10};
    const auto end = [&](double degrees, bool constrained) {
        const auto element = ToolDraft::element(AnnotationTool::arrow, start, atDegrees(start, 120, degrees), {}, "",
                                                {.constrained = constrained}, Uuid::random());
        return element->geometry.asSegment()->to;
    };
    EXPECT_NEAR(degreesOf(start, end(31.5, true)), 30, 1e-12);
    EXPECT_NEAR(degreesOf(start, end(33, true)), 33, 1e-12);
    EXPECT_NEAR(degreesOf(start, end(31.5, false)), 31.5, 1e-12);
}

TEST(ToolDraft, DragRectangles) {
    const Point start{100, 100};
    EXPECT_EQ(ToolDraft::dragRect(start, {130, 120}, {}), Rect(100, 100, 30, 20));
    EXPECT_EQ(ToolDraft::dragRect(start, {70, 90}, {}), Rect(70, 90, 30, 10));
    // Constrained to the upper left: a square going up and left from start.
    EXPECT_EQ(ToolDraft::dragRect(start, {70, 90}, {.constrained = true}), Rect(70, 70, 30, 30));
    EXPECT_EQ(ToolDraft::dragRect(start, {110, 60}, {.constrained = true}), Rect(100, 60, 40, 40));
    EXPECT_EQ(ToolDraft::dragRect(start, {110, 95}, {.fromCenter = true}), Rect(90, 95, 20, 10));
    EXPECT_EQ(ToolDraft::dragRect(start, {110, 95}, {.constrained = true, .fromCenter = true}), Rect(90, 90, 20, 20));
    EXPECT_EQ(ToolDraft::dragRect(start, start, {.constrained = true}), Rect(100, 100, 0, 0));
    EXPECT_EQ(ToolDraft::rect({5, 9}, {1, 2}), Rect(1, 2, 4, 7));
}

TEST(ToolDraft, ElementsByTool) {
    const Point start{50, 60};
    const Point current{60, 100};
    AnnotationStyle style;
    style.lineWidth = 9;
    const Uuid id = Uuid::random();
    struct Row {
        AnnotationTool tool;
        std::optional<AnnotationKind> kind;
        std::optional<Geometry> geometry;
    };
    const Geometry dragged = Geometry::rect(Rect(50, 60, 10, 40));
    const std::vector<Row> rows{
        {AnnotationTool::select, {}, {}},
        {AnnotationTool::arrow, AnnotationKind(C::arrow), Geometry::segment(start, current)},
        {AnnotationTool::line, AnnotationKind(C::line), Geometry::segment(start, current)},
        {AnnotationTool::rectangle, AnnotationKind(C::rectangle), dragged},
        {AnnotationTool::ellipse, AnnotationKind(C::ellipse), dragged},
        {AnnotationTool::freehand, AnnotationKind(C::freehand), Geometry::path({start, current})},
        {AnnotationTool::highlighter, AnnotationKind(C::highlighter), Geometry::path({start, current})},
        {AnnotationTool::text, {}, {}},
        {AnnotationTool::stepBadge, AnnotationKind::stepBadge("7"), Geometry::point(start)},
        {AnnotationTool::watermark, {}, {}},
        {AnnotationTool::mosaic, AnnotationKind(C::mosaic), dragged},
        {AnnotationTool::blur, AnnotationKind(C::blur), dragged},
        // A square centred on start with half-side the larger of 10 and 40: side 80.
        {AnnotationTool::magnifier, AnnotationKind(C::magnifier), Geometry::rect(Rect(10, 20, 80, 80))},
        {AnnotationTool::spotlight, AnnotationKind(C::spotlight), dragged},
        {AnnotationTool::crop, {}, {}},
    };
    ASSERT_EQ(rows.size(), allAnnotationTools.size());
    for (const Row& row : rows) {
        const auto element = ToolDraft::element(row.tool, start, current, style, "7", {}, id);
        ASSERT_EQ(element.has_value(), row.kind.has_value()) << rawValue(row.tool);
        if (!element) continue;
        EXPECT_EQ(element->kind, *row.kind) << rawValue(row.tool);
        EXPECT_EQ(element->geometry, *row.geometry) << rawValue(row.tool);
        EXPECT_EQ(element->id, id);
        EXPECT_EQ(element->style, style);
    }
    // The magnifier ignores both modifiers.
    EXPECT_EQ(ToolDraft::element(AnnotationTool::magnifier, start, current, style, "", {true, true}, id)->geometry,
              Geometry::rect(Rect(10, 20, 80, 80)));
}

TEST(ToolDraft, TranslateMovesTheGeometry) {
    EXPECT_EQ(ToolDraft::translate(Geometry::segment({0, 0}, {1, 1}), {2, 3}), Geometry::segment({2, 3}, {3, 4}));
}
