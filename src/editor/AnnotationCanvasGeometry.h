#pragma once

#include "AnnotationElement.h"
#include "Handle.h"
#include "HandleLayout.h"
#include "Rect.h"
#include "Size.h"
#include "TextMeasuring.h"

#include <optional>
#include <span>
#include <vector>

namespace tosvar {

// Where a document sits in a canvas view and how the two kinds of points map
// onto each other. View points are the widget's own (origin top-left, y down,
// like image pixels), so the mapping is a scale and an offset.
struct AnnotationCanvasGeometry {
    Size bounds;          // the view, in view points
    Size imageSize;       // the document, in pixels
    double zoomScale = 1; // 1..6, on top of the fit

    static constexpr double minimumZoom = 1;
    static constexpr double maximumZoom = 6;

    // The image fitted into the bounds, times the zoom, centred; the bounds
    // themselves when either size is empty.
    Rect contentRect() const;
    // View points per image pixel.
    double imageScale() const;
    Point viewPoint(Point image) const;
    Point imagePoint(Point view) const;
    Rect viewRect(const Rect& image) const;
    Rect imageRect(const Rect& view) const;
};

namespace AnnotationCanvasHits {

// The handles of the primary selection as they stand on screen: turned with
// the element, except those of a text's or badge's leader, which do not turn.
std::vector<HandleLayout::PlacedHandle> worldHandles(const TextMeasuring& measure, const AnnotationElement& element, bool pathEditing);

// Which live handle of `element` the view point `at` grabs: the first within
// 7 view points on both axes (the lens pan 11, its zoom dot 9). The lens
// handles are live while the pointer is over the lens (`rectHovered`) or a
// lens drag runs; the corner knob while the pointer is over the box or the
// knob is the hovered handle.
struct HandleContext {
    bool rectHovered = false;
    bool lensDragging = false;
    std::optional<Handle> hovered;
    bool pathEditing = false;
};
std::optional<Handle> handleHit(const TextMeasuring& measure, const AnnotationElement& element, const AnnotationCanvasGeometry& view,
                                Point at, const HandleContext& context);

// The corner whose rotation ring (8 to 18 view points out, on the outward
// side only) holds `at`; none for kinds that do not turn.
std::optional<RectHandle> rotateZoneHit(const TextMeasuring& measure, const AnnotationElement& element,
                                        const AnnotationCanvasGeometry& view, Point at);

// What a drag step can change on screen, in view points: the selected
// elements' boxes grown by (56 + 5 line widths) pixels and 24 points, and
// the marquee grown by 2. None when nothing applies.
std::optional<Rect> interactionDirtyRect(const TextMeasuring& measure, std::span<const AnnotationElement* const> selected,
                                         std::optional<Rect> marquee, const AnnotationCanvasGeometry& view);

} // namespace AnnotationCanvasHits

} // namespace tosvar
