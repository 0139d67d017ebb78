#include "HandleLayout.h"

#include "ElementBounds.h"
#include "ElementRotation.h"
#include "HitTesting.h"
#include "LeaderSupport.h"
#include "PlaneMath.h"
#include "SegmentCurve.h"

#include <algorithm>
#include <cmath>

namespace tosvar::HandleLayout {

namespace {

using C = AnnotationKind::Case;
using Kind = Handle::Kind;

// Snapping of leader tips and segment ends under the constraint.
constexpr double snapStepDegrees = 30;
constexpr double snapToleranceDegrees = 2;
// The constrained watermark dial turns in these steps.
constexpr double watermarkAngleStep = 15;
// The smallest font size a drag can leave.
constexpr double minimumFontSize = 8;
// A mid point dropped this close to the line between its neighbours lands on it.
constexpr double midPointStraightenDistance = 4;

// The direction from an anchor towards the pointer along one axis, or the
// grip's own side when the pointer is level with the anchor.
int towards(double delta, int ownSide) { return delta > 0 ? 1 : delta < 0 ? -1 : ownSide; }

// The box of size (width, height) with one corner at `anchor`, reaching out
// along each axis in the given direction.
Rect laidFrom(Point anchor, double width, double height, int directionX, int directionY) {
    return Rect(directionX > 0 ? anchor.x : anchor.x - width, directionY > 0 ? anchor.y : anchor.y - height, width,
                height);
}

Rect centredOn(Point c, double halfWidth, double halfHeight) {
    return Rect(c.x - halfWidth, c.y - halfHeight, 2 * halfWidth, 2 * halfHeight);
}

// The box resize of rectangles and paths: about the centre, a square from
// the opposite corner, or the free move of the owned edges.
Rect resizedBox(const Rect& box, RectHandle handle, Point p, bool constrained, bool fromCenter) {
    const Rect r = box.standardized();
    const HandleSides sides = sidesOf(handle);
    if (fromCenter) {
        const Point c = r.center();
        double halfWidth = sides.x != 0 ? std::abs(p.x - c.x) : r.width() / 2;
        double halfHeight = sides.y != 0 ? std::abs(p.y - c.y) : r.height() / 2;
        if (constrained && isCorner(handle)) halfWidth = halfHeight = std::max(halfWidth, halfHeight);
        return centredOn(c, halfWidth, halfHeight);
    }
    if (constrained && isCorner(handle)) {
        const Point anchor = handlePoint(r, oppositeOf(handle));
        const Point d = p - anchor;
        const double side = std::max(std::abs(d.x), std::abs(d.y));
        return laidFrom(anchor, side, side, towards(d.x, sides.x), towards(d.y, sides.y));
    }
    return resizedRect(r, handle, p);
}

AnnotationElement withLeaderTipAt(const TextMeasuring& measure, AnnotationElement element, Point p, bool constrained) {
    AnnotationStyle& style = element.style;
    if (LeaderSupport::bodyRect(measure, element).contains(ElementRotation::toLocal(measure, p, element))) {
        style.leaderTip.reset();
        style.curvature = 0;
        style.leaderWidth.reset();
        return element;
    }
    const Point center = LeaderSupport::center(measure, element);
    style.leaderTip = constrained ? ToolDraft::snappedToAngle(center, p, snapStepDegrees, snapToleranceDegrees) : p;
    return element;
}

AnnotationElement watermarkDragged(const TextMeasuring& measure, AnnotationElement element, const Rect& rect,
                                   Handle handle, Point p, bool constrained) {
    AnnotationStyle& style = element.style;
    const Point c = rect.center() + Point{style.watermarkOffset.width, style.watermarkOffset.height};
    const Point d = p - c;
    const double reach = PlaneMath::length(d);
    if (handle.is(Kind::watermarkDial)) {
        if (reach > 1) {
            const double angle = PlaneMath::degrees(std::atan2(-d.x, d.y));
            style.watermarkAngle = constrained ? std::round(angle / watermarkAngleStep) * watermarkAngleStep : angle;
        }
        style.watermarkSpacing =
            std::clamp(reach / watermarkSpacingUnit(rect), minimumWatermarkSpacing, maximumWatermarkSpacing);
        return element;
    }
    const double gripReach = PlaneMath::distance(c, watermarkSizeGrip(measure, element, rect));
    style.fontSize = std::max(style.fontSize * reach / std::max(gripReach, 1.0), minimumFontSize);
    return element;
}

AnnotationElement cornerRadiusDragged(AnnotationElement element, const Rect& rect, Point p) {
    const double half = std::min(rect.width(), rect.height()) / 2;
    const double inset = cornerKnobInset(element.style, rect);
    const double delta = std::min(p.x - (rect.minX() + inset), p.y - (rect.minY() + inset));
    element.style.cornerRadius = std::clamp(std::min(element.style.cornerRadius, half) + delta, 0.0, half);
    return element;
}

// Moves mid point `index` of a segment, straightening it onto the line
// between its neighbours when dropped close to it.
std::optional<std::vector<Point>> segmentMidPointMoved(const Geometry::Segment& segment,
                                                       const std::vector<Point>& mids, std::size_t index, Point p) {
    if (index >= mids.size()) return std::nullopt;
    const Point previous = index == 0 ? segment.from : mids[index - 1];
    const Point next = index + 1 == mids.size() ? segment.to : mids[index + 1];
    const Point onLine = HitTesting::nearestPointOnSegment(p, previous, next);
    if (PlaneMath::distance(onLine, p) < midPointStraightenDistance) p = onLine;
    std::vector<Point> moved = mids;
    moved[index] = p;
    return moved;
}

AnnotationElement midPointDragged(AnnotationElement element, std::size_t index, Point p) {
    AnnotationStyle& style = element.style;
    if (const Geometry::Segment* segment = element.geometry.asSegment()) {
        const std::vector<Point>* mids = SegmentCurve::midPoints(style);
        if (!mids) return element;
        if (auto moved = segmentMidPointMoved(*segment, *mids, index, p)) style.midPoints = std::move(*moved);
    } else if (element.geometry.asPoint()) {
        if (style.midPoints && index < style.midPoints->size()) (*style.midPoints)[index] = p;
    } else if (const std::vector<Point>* path = element.geometry.asPath()) {
        if (index < path->size()) {
            std::vector<Point> moved = *path;
            moved[index] = p;
            element.geometry = Geometry::path(std::move(moved));
        }
    }
    return element;
}

std::vector<Point> mappedBetween(const std::vector<Point>& points, const Rect& from, const Rect& to) {
    const double scaleX = to.width() / from.width();
    const double scaleY = to.height() / from.height();
    std::vector<Point> mapped;
    mapped.reserve(points.size());
    for (Point p : points) {
        mapped.push_back({to.minX() + (p.x - from.minX()) * scaleX, to.minY() + (p.y - from.minY()) * scaleY});
    }
    return mapped;
}

// A text dragged by a corner of its frame: the font size follows the frame's
// diagonal, and the opposite corner (or, from the centre, the body's centre)
// stays put.
AnnotationElement textFrameDragged(const TextMeasuring& measure, AnnotationElement element, RectHandle handle,
                                   Point p, bool constrained, bool fromCenter) {
    AnnotationStyle& style = element.style;
    const Rect body = LeaderSupport::bodyRect(measure, element);
    const Rect frame = textFrameBox(body, style.fontSize);
    if (!(frame.width() > 0) || !(frame.height() > 0)) return element;
    const Point fixed = fromCenter ? frame.center() : handlePoint(frame, oppositeOf(handle));
    // From the centre the pointer holds half the frame: half the body and one padding.
    const double share = fromCenter ? 0.5 : 1;
    const double w = body.width() * share;
    const double h = body.height() * share;
    const double pad = 2 * textFramePadding * share;
    const double reach = PlaneMath::distance(fixed, p);
    const double a = w * w + h * h;
    const double b = 2 * pad * (w + h);
    const double discriminant = b * b - 4 * a * (2 * pad * pad - reach * reach);
    if (a == 0 || discriminant < 0) return element;
    const double scale = std::max((std::sqrt(discriminant) - b) / (2 * a), 0.0);
    double fontSize = style.fontSize * scale;
    if (constrained) fontSize = std::round(fontSize);
    style.fontSize = std::max(fontSize, minimumFontSize);

    const Size grown = ElementBounds::textSize(measure, element.kind.textPayload(), style.fontSize);
    Point origin;
    if (fromCenter) {
        origin = body.center() - Point{grown.width / 2, grown.height / 2};
    } else {
        const double fx = (fixed.x - frame.minX()) / frame.width();
        const double fy = (fixed.y - frame.minY()) / frame.height();
        const double framePad = 2 * textFramePadding;
        origin = {fixed.x - (grown.width + framePad) * fx + textFramePadding,
                  fixed.y - (grown.height + framePad) * fy + std::round(textFrameLiftRatio * style.fontSize) +
                      textFramePadding};
    }
    element.geometry = Geometry::point(origin);
    return element;
}

// A badge, or any point element but a framed text, grows with the pointer's
// distance from its point.
AnnotationElement pointSizeDragged(const TextMeasuring& measure, AnnotationElement element, Point at, Point p) {
    const Rect body = LeaderSupport::bodyRect(measure, element);
    const double grip = PlaneMath::distance(at, {body.maxX(), body.maxY()});
    element.style.fontSize =
        std::max(element.style.fontSize * PlaneMath::distance(at, p) / std::max(grip, 1.0), minimumFontSize);
    return element;
}

} // namespace

Rect resizedRect(const Rect& rect, RectHandle handle, Point p) {
    const HandleSides sides = sidesOf(handle);
    double minX = rect.minX(), minY = rect.minY(), maxX = rect.maxX(), maxY = rect.maxY();
    if (sides.x < 0) minX = p.x;
    if (sides.x > 0) maxX = p.x;
    if (sides.y < 0) minY = p.y;
    if (sides.y > 0) maxY = p.y;
    return Rect::fromEdges(minX, minY, maxX, maxY).standardized();
}

Rect aspectResizedRect(const Rect& rect, RectHandle handle, Point p, bool fromCenter) {
    const Rect r = rect.standardized();
    if (r.width() == 0 || r.height() == 0) return resizedRect(r, handle, p);
    const double aspect = r.width() / r.height();
    const HandleSides sides = sidesOf(handle);
    if (fromCenter) {
        const Point c = r.center();
        const double dx = std::abs(p.x - c.x);
        const double dy = std::abs(p.y - c.y);
        double width = 0;
        if (sides.x == 0) {
            width = 2 * dy * aspect;
        } else if (sides.y == 0) {
            width = 2 * dx;
        } else {
            width = std::max(2 * dx, aspect * 2 * dy);
        }
        return centredOn(c, width / 2, width / aspect / 2);
    }
    const Point anchor = handlePoint(r, oppositeOf(handle));
    const Point d = p - anchor;
    if (isCorner(handle)) {
        const double width = std::max(std::abs(d.x), aspect * std::abs(d.y));
        return laidFrom(anchor, width, width / aspect, towards(d.x, sides.x), towards(d.y, sides.y));
    }
    if (sides.x == 0) {
        const double height = std::abs(d.y);
        const double width = height * aspect;
        return laidFrom({r.midX() - width / 2, anchor.y}, width, height, 1, towards(d.y, sides.y));
    }
    const double width = std::abs(d.x);
    const double height = width / aspect;
    return laidFrom({anchor.x, r.midY() - height / 2}, width, height, towards(d.x, sides.x), 1);
}

AnnotationElement resize(const TextMeasuring& measure, const AnnotationElement& element, Handle handle, Point p,
                         ToolDraft::DragModifiers modifiers) {
    const C kind = element.kind.kindCase();
    const bool constrained = effectiveConstraint(kind, modifiers.constrained);
    const std::optional<RectHandle> boxHandle = handle.rectHandle();
    const Geometry& geometry = element.geometry;
    const Rect* rect = geometry.asRect();
    AnnotationElement out = element;

    if (kind == C::image && rect && boxHandle) {
        out.geometry = Geometry::rect(constrained ? aspectResizedRect(*rect, *boxHandle, p, modifiers.fromCenter)
                                                  : resizedBox(*rect, *boxHandle, p, false, modifiers.fromCenter));
        return out;
    }
    const bool leader = LeaderSupport::hasLeader(element);
    if (LeaderSupport::supportsLeader(kind) && geometry.asPoint() &&
        (handle.is(Kind::leaderSpawn) || (handle.is(Kind::segmentEnd) && leader))) {
        return withLeaderTipAt(measure, out, p, constrained);
    }
    if (handle.is(Kind::curveMid) && leader) {
        out.style.curvature =
            SegmentCurve::curvature(LeaderSupport::startOrCenter(measure, element), *element.style.leaderTip, p);
        return out;
    }
    if (kind == C::watermark && rect) {
        return watermarkDragged(measure, out, rect->standardized(), handle, p, constrained);
    }
    if (handle.is(Kind::cornerRadius) && rect) return cornerRadiusDragged(out, rect->standardized(), p);

    const Geometry::Segment* segment = geometry.asSegment();
    if (handle.is(Kind::curveMid) && segment) {
        out.style.curvature = SegmentCurve::curvature(segment->from, segment->to, p);
        return out;
    }
    if (const std::optional<std::size_t> index = handle.midPointIndex()) return midPointDragged(out, *index, p);

    if (segment && (handle.is(Kind::segmentStart) || handle.is(Kind::segmentEnd))) {
        const bool start = handle.is(Kind::segmentStart);
        const Point other = start ? segment->to : segment->from;
        const Point end = constrained ? ToolDraft::snappedToAngle(other, p, snapStepDegrees, snapToleranceDegrees) : p;
        out.geometry = start ? Geometry::segment(end, other) : Geometry::segment(other, end);
        return out;
    }
    if (rect && boxHandle) {
        out.geometry = Geometry::rect(resizedBox(*rect, *boxHandle, p, constrained, modifiers.fromCenter));
        return out;
    }
    if (const std::vector<Point>* path = geometry.asPath(); path && boxHandle) {
        const Rect box = geometry.boundingBox();
        if (!(box.width() > 0) || !(box.height() > 0)) return out;
        const Rect resized = resizedBox(box, *boxHandle, p, constrained, modifiers.fromCenter);
        out.geometry = Geometry::path(mappedBetween(*path, box, resized));
        return out;
    }
    if (const Point* at = geometry.asPoint()) {
        if (kind == C::text && boxHandle) {
            return textFrameDragged(measure, out, *boxHandle, p, constrained, modifiers.fromCenter);
        }
        return pointSizeDragged(measure, out, *at, p);
    }
    return out;
}

AnnotationElement resizeRotated(const TextMeasuring& measure, const AnnotationElement& element, Handle handle, Point p,
                                ToolDraft::DragModifiers modifiers) {
    const bool turnsWithBody = handle.is(Kind::rect) || handle.is(Kind::cornerRadius) ||
                               (handle.is(Kind::midPoint) && !element.geometry.asPoint());
    const double turn = ElementRotation::degrees(element);
    if (!turnsWithBody || turn == 0) return resize(measure, element, handle, p, modifiers);

    const Point before = ElementRotation::center(measure, element);
    AnnotationElement out =
        resize(measure, element, handle, ElementRotation::rotate(p, before, -turn), modifiers);
    // The element turns about its centre, so a new centre would swing the
    // side that stayed put; shift it back to where it stood on screen.
    const Point shift = before - ElementRotation::center(measure, out);
    out.geometry = out.geometry.translated(shift - ElementRotation::rotate(shift, {}, turn));
    return out;
}

} // namespace tosvar::HandleLayout
