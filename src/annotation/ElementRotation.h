#pragma once

#include "AnnotationElement.h"
#include "Point.h"
#include "Rect.h"
#include "TextMeasuring.h"

#include <array>

// Rotation of an element's body about its centre. Degrees, positive turning
// clockwise on screen (y down). "Local" is the element's own unrotated frame,
// "world" the image.
namespace tosvar::ElementRotation {

bool supportsRotation(AnnotationKind::Case kind);
// The style's rotation for a kind that supports it; 0 otherwise or when unset.
double degrees(const AnnotationElement& element);
// The middle of the leader body for point geometry, of the bounding box otherwise.
Point center(const TextMeasuring& measure, const AnnotationElement& element);

// `p` turned by `degrees` about `around`; exactly `p` for 0.
Point rotate(Point p, Point around, double degrees);
Point toWorld(const TextMeasuring& measure, Point p, const AnnotationElement& element);
Point toLocal(const TextMeasuring& measure, Point p, const AnnotationElement& element);

// The corners of `rect` (top-left, top-right, bottom-right, bottom-left)
// turned about the element's centre.
std::array<Point, 4> worldCorners(const TextMeasuring& measure, const Rect& rect, const AnnotationElement& element);
// The axis-aligned box of the turned corners, or `rect` itself when the
// element is not turned.
Rect worldBounds(const TextMeasuring& measure, const Rect& rect, const AnnotationElement& element);

} // namespace tosvar::ElementRotation
