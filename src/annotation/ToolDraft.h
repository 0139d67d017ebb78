#pragma once

#include "AnnotationElement.h"
#include "AnnotationStyle.h"
#include "AnnotationTool.h"
#include "Geometry.h"
#include "Point.h"
#include "Rect.h"
#include "Uuid.h"

#include <optional>
#include <string>

// The element a drag makes, rebuilt from the drag's start and current point on
// every step rather than accumulated.
namespace tosvar::ToolDraft {

// The modifier keys held during a drag.
struct DragModifiers {
    bool constrained = false; // squares, and lines snapped to 30 degrees
    bool fromCenter = false;  // the rectangle grows around the start
};

// The element `tool` makes for a drag from `start` to `current`, carrying `id`
// and `style` as given; absent for tools that make nothing by dragging here.
std::optional<AnnotationElement> element(AnnotationTool tool, Point start, Point current,
                                         const AnnotationStyle& style, const std::string& stepLabel,
                                         DragModifiers modifiers, Uuid id);

// The rectangle spanned by two points, with a non-negative size.
Rect rect(Point from, Point to);

// The rectangle of a drag: a square when constrained, centred on `start` when from the centre.
Rect dragRect(Point start, Point current, DragModifiers modifiers);

// `current` moved onto the nearest multiple of `stepDegrees` around `start`,
// keeping its distance, when it is within `toleranceDegrees` of it; else unchanged.
Point snappedToAngle(Point start, Point current, double stepDegrees, double toleranceDegrees);

Geometry translate(const Geometry& geometry, Point offset);

} // namespace tosvar::ToolDraft
