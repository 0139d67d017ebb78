#pragma once

#include "AnnotationElement.h"
#include "Handle.h"
#include "Point.h"
#include "Rect.h"
#include "TextMeasuring.h"
#include "ToolDraft.h"

#include <vector>

// The grips an element shows and what dragging each one does. Positions are
// image pixels in the element's unrotated frame; every operation returns a
// changed copy, and hands back the element unchanged when a handle does not
// apply to it.
namespace tosvar::HandleLayout {

// How far the dashed frame of a text stands off its body.
inline constexpr double textFramePadding = 20;
// The frame sits higher than the body by this share of the font size, rounded.
inline constexpr double textFrameLiftRatio = 0.1;
// The watermark dial sets spacings in this range.
inline constexpr double minimumWatermarkSpacing = 0.3;
inline constexpr double maximumWatermarkSpacing = 4;

struct PlacedHandle {
    Handle handle;
    Point point;
    friend bool operator==(const PlacedHandle&, const PlacedHandle&) = default;
};

// The handles of an element in drawing order.
std::vector<PlacedHandle> handles(const TextMeasuring& measure, const AnnotationElement& element);
// A `midPoint` handle at every point of a path; nothing for other geometry.
std::vector<PlacedHandle> pathPointHandles(const AnnotationElement& element);

// The dashed frame around a text: its body grown by the padding, lifted.
Rect textFrameBox(const Rect& body, double fontSize);
// How far in from the top-left corner the corner-radius knob stands: the
// radius, but at least 18, and no more than half the shorter side.
double cornerKnobInset(const AnnotationStyle& style, const Rect& rect);

// Whether a drag keeps proportions: the modifier asks for it, except on a
// picture, which keeps them unless the modifier frees it.
bool effectiveConstraint(AnnotationKind::Case kind, bool requested);
// A box grip flipped along each axis where the pointer has crossed the
// opposite edge; other handles pass through.
Handle effectiveHandle(Handle handle, const Rect& rect, Point p);

// `rect` with the edges that `handle` owns moved to `p`, standardized.
Rect resizedRect(const Rect& rect, RectHandle handle, Point p);
// `rect` resized by `handle` towards `p` keeping its aspect, about its centre
// or from the opposite side; a box without area resizes freely.
Rect aspectResizedRect(const Rect& rect, RectHandle handle, Point p, bool fromCenter);

// `element` with `handle` dragged to `p` (in the element's local frame).
// `constrained` keeps proportions (see `effectiveConstraint`), makes squares
// and snaps leader tips and segment ends to 30 degree steps; `fromCenter`
// grows about the centre.
AnnotationElement resize(const TextMeasuring& measure, const AnnotationElement& element, Handle handle, Point p,
                         ToolDraft::DragModifiers modifiers);
// `resize` for a pointer in image coordinates on a turned element: the side
// opposite the grip stays where it stands on screen.
AnnotationElement resizeRotated(const TextMeasuring& measure, const AnnotationElement& element, Handle handle, Point p,
                                ToolDraft::DragModifiers modifiers);

// Adds a bend point at `p` to a segment, a leader or a path, between the two
// points the curve passes nearest; a bent segment or leader first turns its
// apex into a mid point.
AnnotationElement insertingMidPoint(const TextMeasuring& measure, const AnnotationElement& element, Point p);
// Removes path point or mid point `index`; a path keeps at least two points.
AnnotationElement removingMidPoint(const AnnotationElement& element, std::size_t index);
// The gap between mid points (0 before the first) that a point inserted at
// `p` belongs in, for the curve from `start` through `mids` to `end`.
std::size_t nearestGap(Point p, Point start, Point end, const std::vector<Point>& mids);

// How far the watermark dial stands from the tile centre per unit of
// spacing: 0.12 of the shorter side, at least 1.
double watermarkSpacingUnit(const Rect& rect);
// Where the angle and spacing dial of a watermark stands.
Point watermarkDialPosition(const AnnotationElement& element, const Rect& rect);
// The bottom-right corner of the watermark's centre tile, where its size grip stands.
Point watermarkSizeGrip(const TextMeasuring& measure, const AnnotationElement& element, const Rect& rect);

} // namespace tosvar::HandleLayout
