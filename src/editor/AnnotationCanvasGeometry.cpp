#include "AnnotationCanvasGeometry.h"

#include "ElementBounds.h"
#include "ElementRotation.h"
#include "LeaderSupport.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

Rect AnnotationCanvasGeometry::contentRect() const {
    if (!(bounds.width > 0) || !(bounds.height > 0) || !(imageSize.width > 0) || !(imageSize.height > 0))
        return {0, 0, bounds.width, bounds.height};
    const double fit = std::min(bounds.width / imageSize.width, bounds.height / imageSize.height) * zoomScale;
    const double w = imageSize.width * fit, h = imageSize.height * fit;
    return {(bounds.width - w) / 2, (bounds.height - h) / 2, w, h};
}

double AnnotationCanvasGeometry::imageScale() const {
    return std::max(contentRect().width() / std::max(imageSize.width, 1.0), 0.0001);
}

Point AnnotationCanvasGeometry::viewPoint(Point p) const {
    const Rect content = contentRect();
    const double s = imageScale();
    return {content.minX() + p.x * s, content.minY() + p.y * s};
}

Point AnnotationCanvasGeometry::imagePoint(Point v) const {
    const Rect content = contentRect();
    const double s = imageScale();
    return {(v.x - content.minX()) / s, (v.y - content.minY()) / s};
}

Rect AnnotationCanvasGeometry::viewRect(const Rect& image) const {
    const Rect r = image.standardized();
    const Point origin = viewPoint(r.origin);
    const double s = imageScale();
    return {origin.x, origin.y, r.width() * s, r.height() * s};
}

Rect AnnotationCanvasGeometry::imageRect(const Rect& view) const {
    const Rect r = view.standardized();
    const Point origin = imagePoint(r.origin);
    const double s = imageScale();
    return {origin.x, origin.y, r.width() / s, r.height() / s};
}

namespace AnnotationCanvasHits {

namespace {

using C = AnnotationKind::Case;

bool turnsWithBody(const AnnotationElement& element, const Handle& handle) {
    if (!element.geometry.asPoint()) return true;
    return handle.is(Handle::Kind::rect) || handle.is(Handle::Kind::leaderSpawn);
}

} // namespace

std::vector<HandleLayout::PlacedHandle> worldHandles(const TextMeasuring& measure, const AnnotationElement& element, bool pathEditing) {
    std::vector<HandleLayout::PlacedHandle> handles =
        pathEditing && element.geometry.asPath() ? HandleLayout::pathPointHandles(element) : HandleLayout::handles(measure, element);
    for (HandleLayout::PlacedHandle& h : handles)
        if (turnsWithBody(element, h.handle)) h.point = ElementRotation::toWorld(measure, h.point, element);
    return handles;
}

std::optional<Handle> handleHit(const TextMeasuring& measure, const AnnotationElement& element, const AnnotationCanvasGeometry& view,
                                Point at, const HandleContext& context) {
    const bool lensLive = element.kind.is(C::magnifier) && (context.rectHovered || context.lensDragging);
    for (const HandleLayout::PlacedHandle& placed : worldHandles(measure, element, context.pathEditing)) {
        double tolerance = 7;
        switch (placed.handle.kind()) {
        case Handle::Kind::lensPan:
            if (!lensLive) continue;
            tolerance = 11;
            break;
        case Handle::Kind::lensZoom:
            if (!lensLive) continue;
            tolerance = 9;
            break;
        case Handle::Kind::cornerRadius:
            if (context.lensDragging || !(context.rectHovered || context.hovered == placed.handle)) continue;
            break;
        default: break;
        }
        const Point v = view.viewPoint(placed.point);
        if (std::abs(v.x - at.x) <= tolerance && std::abs(v.y - at.y) <= tolerance) return placed.handle;
    }
    return std::nullopt;
}

std::optional<RectHandle> rotateZoneHit(const TextMeasuring& measure, const AnnotationElement& element,
                                        const AnnotationCanvasGeometry& view, Point at) {
    if (!ElementRotation::supportsRotation(element.kind.kindCase())) return std::nullopt;
    Rect box;
    if (element.kind.is(C::text)) box = HandleLayout::textFrameBox(LeaderSupport::bodyRect(measure, element), element.style.fontSize);
    else if (element.kind.is(C::stepBadge)) box = LeaderSupport::bodyRect(measure, element);
    else box = ElementBounds::visualBox(measure, element);
    if (!(box.width() > 1) || !(box.height() > 1)) return std::nullopt;
    const std::array<Point, 4> corners = ElementRotation::worldCorners(measure, box, element);
    static constexpr std::array<RectHandle, 4> names{RectHandle::topLeft, RectHandle::topRight, RectHandle::bottomRight, RectHandle::bottomLeft};
    static constexpr std::array<Point, 4> outward{Point{-1, -1}, Point{1, -1}, Point{1, 1}, Point{-1, 1}};
    const double radians = ElementRotation::degrees(element) * 3.14159265358979323846 / 180;
    for (std::size_t i = 0; i < 4; ++i) {
        const Point corner = view.viewPoint(corners[i]);
        const Point offset = at - corner;
        const double d = std::hypot(offset.x, offset.y);
        if (d <= 8 || d > 18) continue;
        const Point out{outward[i].x * std::cos(radians) - outward[i].y * std::sin(radians),
                        outward[i].x * std::sin(radians) + outward[i].y * std::cos(radians)};
        if (out.x * offset.x + out.y * offset.y > 0) return names[i];
    }
    return std::nullopt;
}

std::optional<Rect> interactionDirtyRect(const TextMeasuring& measure, std::span<const AnnotationElement* const> selected,
                                         std::optional<Rect> marquee, const AnnotationCanvasGeometry& view) {
    std::optional<Rect> dirty;
    auto add = [&](const Rect& r) { dirty = dirty ? dirty->unionWith(r) : r; };
    const double s = view.imageScale();
    for (const AnnotationElement* element : selected) {
        const Rect box = ElementBounds::visualBox(measure, *element);
        const Rect turned = ElementRotation::worldBounds(measure, box, *element);
        const double grow = (56 + 5 * element->style.lineWidth) * s + 24;
        add(view.viewRect(box.unionWith(turned)).insetBy(-grow, -grow));
    }
    if (marquee) add(view.viewRect(*marquee).insetBy(-2, -2));
    return dirty;
}

} // namespace AnnotationCanvasHits

} // namespace tosvar
