#pragma once

#include "AnnotationElement.h"
#include "AnnotationFonts.h"
#include "CanvasPath.h"
#include "DrawingCanvas.h"
#include "MosaicEngine.h"
#include "Size.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tosvar::ElementDrawing {

// The outline of a leader with a head: its spine, where the head begins
// (`base`, reached after spine point `baseIndex`), the head's unit normal and
// the half widths of shaft and head.
struct LeaderShape {
    std::vector<Point> spine;
    std::size_t baseIndex = 0;
    Point base;
    Point headNormal;
    Point tip;
    double shaftHalf = 0;
    double headHalf = 0;
};

struct ShadowMetrics {
    Size offset; // y down
    double blur = 0;
};

struct Options {
    bool hideWatermarkCenterTile = false;
    bool hideStepBadgeNumber = false;
    bool hideTextGlyphs = false;
};

// Draws one element onto `canvas` (image pixels, y down, `canvasSize` the
// base image's size). Region effects reveal `mosaic`'s bitmaps, and the
// magnifier its base; without an engine they draw nothing. Spotlights draw
// nothing here (see `drawSpotlights`). Returns why the element could not be
// drawn when its data is unusable: geometry of the wrong kind, coordinates
// out of any sensible range, picture bytes that do not decode. An element
// that simply has nothing to show (empty text, a hidden block) is no problem.
std::optional<std::string> draw(const AnnotationElement& element, DrawingCanvas& canvas, const AnnotationFonts& fonts,
                                Size canvasSize, MosaicEngine* mosaic, const Options& options = {});

// Every spotlight at once: one veil with a hole for each, then their shadows
// and borders.
void drawSpotlights(std::span<const AnnotationElement* const> spotlights, DrawingCanvas& canvas, const AnnotationFonts& fonts,
                    Size canvasSize);

// Black for light colours, white for dark ones: what a contrast outline takes.
RGBAColor outlineColor(const RGBAColor& color);
// Luminance as the outline and badge label rules weigh it.
double luminance(const RGBAColor& color);

// The shadow of a style: `shadowRadius` or `defaultBlur`, offset by
// `shadowOffset` (stored y up) or half the blur downwards.
ShadowMetrics shadowMetrics(const AnnotationStyle& style, double defaultBlur);

// None for fewer than two spine points or a spine of length 1 or less.
std::optional<LeaderShape> leaderShape(Point from, Point to, std::optional<Point> control,
                                       std::optional<std::vector<Point>> spineOverride, double lineWidth);
// The solid leader: a shaft of `shaftHalf` widening into the head.
CanvasPath leaderArrowPath(const LeaderShape& shape);

// The rect of a mosaic, blur, magnifier or spotlight grown by `expandedBy`,
// with its corners and rotation; none for other geometry.
std::optional<CanvasPath> regionOutlinePath(const AnnotationElement& element, const AnnotationFonts& fonts, double expandedBy);

// Whether drawing an element of this style needs its parts composited as one
// picture when it is translucent or shadowed.
bool needsGroupCompositing(const AnnotationElement& element);

} // namespace tosvar::ElementDrawing
