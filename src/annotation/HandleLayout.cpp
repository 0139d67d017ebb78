#include "HandleLayout.h"

#include "LeaderSupport.h"
#include "LensDial.h"
#include "PlaneMath.h"
#include "SegmentCurve.h"
#include "WatermarkLayout.h"

#include <algorithm>
#include <cmath>

namespace tosvar::HandleLayout {

namespace {

using C = AnnotationKind::Case;
using Kind = Handle::Kind;

// The knob never sits closer to the corner than this, however small the radius.
constexpr double minimumKnobInset = 18;

bool hasCornerRadiusKnob(C kind) {
    return kind == C::rectangle || kind == C::mosaic || kind == C::blur || kind == C::magnifier || kind == C::spotlight;
}

void addBoxHandles(std::vector<PlacedHandle>& out, const Rect& box) {
    for (RectHandle h : allRectHandles) out.push_back({Handle::rect(h), handlePoint(box, h)});
}

void addMidPointHandles(std::vector<PlacedHandle>& out, const std::vector<Point>& points) {
    for (std::size_t i = 0; i < points.size(); ++i) out.push_back({Handle::midPoint(i), points[i]});
}

// The bend handles of a segment or leader from `start` to `end`: one per mid
// point, or the apex when there are none.
void addBendHandles(std::vector<PlacedHandle>& out, Point start, Point end, const AnnotationStyle& style) {
    if (const std::vector<Point>* mids = SegmentCurve::midPoints(style)) {
        addMidPointHandles(out, *mids);
    } else {
        out.push_back({Handle::plain(Kind::curveMid), SegmentCurve::apex(start, end, style.curvature)});
    }
}

void addRectHandles(std::vector<PlacedHandle>& out, const TextMeasuring& measure, const AnnotationElement& element,
                    const Rect& rect) {
    const C kind = element.kind.kindCase();
    if (kind == C::watermark) {
        out.push_back({Handle::plain(Kind::watermarkDial), watermarkDialPosition(element, rect)});
        out.push_back({Handle::rect(RectHandle::bottomRight), watermarkSizeGrip(measure, element, rect)});
        return;
    }
    addBoxHandles(out, rect);
    if (hasCornerRadiusKnob(kind)) {
        const double inset = cornerKnobInset(element.style, rect);
        out.push_back({Handle::plain(Kind::cornerRadius), {rect.minX() + inset, rect.minY() + inset}});
    }
    if (kind == C::magnifier) {
        out.push_back({Handle::plain(Kind::lensPan), LensDial::center(rect)});
        out.push_back({Handle::plain(Kind::lensZoom), LensDial::dotPosition(rect)});
    }
}

void addPointHandles(std::vector<PlacedHandle>& out, const TextMeasuring& measure, const AnnotationElement& element) {
    const Rect body = LeaderSupport::bodyRect(measure, element);
    const bool isText = element.kind.is(C::text);
    const Rect frame = textFrameBox(body, element.style.fontSize);
    if (isText) {
        for (RectHandle h : {RectHandle::topLeft, RectHandle::topRight, RectHandle::bottomRight, RectHandle::bottomLeft}) {
            out.push_back({Handle::rect(h), handlePoint(frame, h)});
        }
    } else {
        out.push_back({Handle::rect(RectHandle::bottomRight), handlePoint(body, RectHandle::bottomRight)});
    }
    if (!LeaderSupport::supportsLeader(element.kind.kindCase())) return;
    if (const std::optional<Point> tip = LeaderSupport::tip(element)) {
        out.push_back({Handle::plain(Kind::segmentEnd), *tip});
        addBendHandles(out, LeaderSupport::startOrCenter(measure, element), *tip, element.style);
    } else {
        out.push_back({Handle::plain(Kind::leaderSpawn), {body.midX(), (isText ? frame : body).minY()}});
    }
}

} // namespace

std::vector<PlacedHandle> handles(const TextMeasuring& measure, const AnnotationElement& element) {
    std::vector<PlacedHandle> out;
    const Geometry& geometry = element.geometry;
    if (const Geometry::Segment* segment = geometry.asSegment()) {
        out.push_back({Handle::plain(Kind::segmentStart), segment->from});
        out.push_back({Handle::plain(Kind::segmentEnd), segment->to});
        addBendHandles(out, segment->from, segment->to, element.style);
    } else if (const Rect* rect = geometry.asRect()) {
        addRectHandles(out, measure, element, rect->standardized());
    } else if (geometry.asPath()) {
        const Rect box = geometry.boundingBox();
        if (box.width() > 0 && box.height() > 0) addBoxHandles(out, box);
    } else {
        addPointHandles(out, measure, element);
    }
    return out;
}

std::vector<PlacedHandle> pathPointHandles(const AnnotationElement& element) {
    std::vector<PlacedHandle> out;
    if (const std::vector<Point>* path = element.geometry.asPath()) addMidPointHandles(out, *path);
    return out;
}

Rect textFrameBox(const Rect& body, double fontSize) {
    return body.insetBy(-textFramePadding, -textFramePadding).offsetBy(0, -std::round(textFrameLiftRatio * fontSize));
}

double cornerKnobInset(const AnnotationStyle& style, const Rect& rect) {
    return std::min(std::max(style.cornerRadius, minimumKnobInset), std::min(rect.width(), rect.height()) / 2);
}

bool effectiveConstraint(AnnotationKind::Case kind, bool requested) { return requested != (kind == C::image); }

Handle effectiveHandle(Handle handle, const Rect& rect, Point p) {
    const std::optional<RectHandle> h = handle.rectHandle();
    if (!h) return handle;
    const HandleSides sides = sidesOf(*h);
    const auto flipped = [](int side, double at, double minEdge, double maxEdge) {
        if (side < 0) return at > maxEdge ? 1 : -1;
        if (side > 0) return at < minEdge ? -1 : 1;
        return 0;
    };
    const std::optional<RectHandle> composed =
        composedHandle({flipped(sides.x, p.x, rect.minX(), rect.maxX()), flipped(sides.y, p.y, rect.minY(), rect.maxY())});
    return composed ? Handle::rect(*composed) : handle;
}

double watermarkSpacingUnit(const Rect& rect) { return std::max(0.12 * std::min(rect.width(), rect.height()), 1.0); }

Point watermarkDialPosition(const AnnotationElement& element, const Rect& rect) {
    const AnnotationStyle& style = element.style;
    const double radius = std::max(style.watermarkSpacing, minimumWatermarkSpacing) * watermarkSpacingUnit(rect);
    const double angle = PlaneMath::radians(style.watermarkAngle);
    return {rect.midX() + style.watermarkOffset.width - std::sin(angle) * radius,
            rect.midY() + style.watermarkOffset.height + std::cos(angle) * radius};
}

Point watermarkSizeGrip(const TextMeasuring& measure, const AnnotationElement& element, const Rect& rect) {
    const AnnotationStyle& style = element.style;
    return WatermarkLayout::centerTileCorners(measure, element.kind.textPayload(), style.fontSize, style.watermarkAngle,
                                              style.watermarkOffset, Size{rect.width(), rect.height()})[2];
}

} // namespace tosvar::HandleLayout
