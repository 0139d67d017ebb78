#pragma once

#include "AnnotationElement.h"
#include "Point.h"
#include "Rect.h"
#include "TextMeasuring.h"
#include "Uuid.h"

#include <optional>
#include <span>

// What "on the element" means for a pointer, in image pixels (y down). A
// pointer is tested in the element's unrotated frame, except against a
// leader, which does not turn with its body.
namespace tosvar::HitTesting {

// Whether `p` touches `element`. Strokes and borders are hit within half the
// line width plus `tolerance`, never less than 5; filled shapes, pictures and
// region effects anywhere inside; a spotlight only on its border; a
// watermark only on its centre tile; a text or badge on its body or within
// reach of its leader. Hidden translated blocks are never hit.
bool hitTest(const TextMeasuring& measure, const AnnotationElement& element, Point p, double tolerance);

// The id of the last element in paint order that `p` hits.
std::optional<Uuid> topmost(const TextMeasuring& measure, std::span<const AnnotationElement> elements, Point p,
                            double tolerance);

// Whether `p` grabs the leader of a text or badge rather than its body: off
// the body and within reach (at least 6) of the leader.
bool isOverLeader(const TextMeasuring& measure, const AnnotationElement& element, Point p, double tolerance);

// The point of the segment a-b (not the infinite line) nearest to `p`; `a`
// for a segment of zero length.
Point nearestPointOnSegment(Point p, Point a, Point b);
double distanceToSegment(Point p, Point a, Point b);
// Distance from `p` to the outline of `rect`, from inside or out.
double distanceToRectBorder(Point p, const Rect& rect);
// An approximate distance from `p` to the outline of the ellipse in `rect`;
// an ellipse thinner than a pixel measures as its rectangle.
double distanceToEllipseBorder(Point p, const Rect& rect);

} // namespace tosvar::HitTesting
