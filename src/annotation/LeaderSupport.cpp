#include "LeaderSupport.h"

#include "ElementBounds.h"
#include "ElementRotation.h"
#include "PlaneMath.h"
#include "SegmentCurve.h"

#include <algorithm>

namespace tosvar::LeaderSupport {

namespace {

// Steps of the quadratic and of each spline span that `exitSamples` walks.
constexpr int quadraticExitSteps = 48;
constexpr int splineExitSteps = 12;
// A text's leader starts this share of the font size clear of the body.
constexpr double textClearanceRatio = 0.2;

} // namespace

std::optional<Point> tip(const AnnotationElement& element) { return element.style.leaderTip; }

bool supportsLeader(AnnotationKind::Case kind) {
    return kind == AnnotationKind::Case::text || kind == AnnotationKind::Case::stepBadge;
}

bool hasLeader(const AnnotationElement& element) {
    return supportsLeader(element.kind.kindCase()) && element.geometry.asPoint() && element.style.leaderTip;
}

double badgeRadius(const AnnotationStyle& style) { return std::max(style.fontSize, 12.0); }

Rect bodyRect(const TextMeasuring& measure, const AnnotationElement& element) {
    using C = AnnotationKind::Case;
    const bool isText = element.kind.is(C::text);
    if (!isText && !element.kind.is(C::stepBadge)) return element.geometry.boundingBox();
    const Point* point = element.geometry.asPoint();
    if (!point) return Rect();
    if (isText) return Rect(*point, ElementBounds::textSize(measure, element.kind.textPayload(), element.style.fontSize));
    const double r = badgeRadius(element.style);
    return Rect(point->x - r, point->y - r, 2 * r, 2 * r);
}

Point center(const TextMeasuring& measure, const AnnotationElement& element) {
    return bodyRect(measure, element).center();
}

std::vector<Point> exitSamples(Point center, Point tip, const AnnotationStyle& style) {
    if (const std::vector<Point>* mids = SegmentCurve::midPoints(style)) {
        std::vector<Point> through{center};
        through.insert(through.end(), mids->begin(), mids->end());
        through.push_back(tip);
        return SegmentCurve::splineSamples(through, splineExitSteps);
    }
    const Point control = style.curvature == 0 ? PlaneMath::midpoint(center, tip)
                                               : SegmentCurve::control(center, tip, style.curvature);
    return SegmentCurve::samples(center, control, tip, quadraticExitSteps);
}

std::optional<Point> leaderStart(const TextMeasuring& measure, const AnnotationElement& element) {
    if (!tip(element)) return std::nullopt;
    return leaderStart(element, bodyRect(measure, element));
}

Point startOrCenter(const TextMeasuring& measure, const AnnotationElement& element) {
    return startOrCenter(element, bodyRect(measure, element));
}

std::optional<Point> leaderStart(const AnnotationElement& element, const Rect& body) {
    using C = AnnotationKind::Case;
    const std::optional<Point> leaderTip = tip(element);
    if (!leaderTip) return std::nullopt;
    const Point bodyCenter = body.center();
    if (element.kind.is(C::stepBadge)) {
        const double r = badgeRadius(element.style);
        for (Point p : exitSamples(bodyCenter, *leaderTip, element.style)) {
            if (PlaneMath::distance(p, bodyCenter) > r) return p;
        }
        return std::nullopt;
    }
    if (element.kind.is(C::text)) {
        const double clearance = element.style.fontSize * textClearanceRatio;
        const Rect grown = body.insetBy(-clearance, -clearance);
        // A text at a point turns about its body's centre.
        const double unturn = -ElementRotation::degrees(element);
        for (Point p : exitSamples(bodyCenter, *leaderTip, element.style)) {
            if (!grown.contains(ElementRotation::rotate(p, bodyCenter, unturn))) return p;
        }
        return std::nullopt;
    }
    return bodyCenter;
}

Point startOrCenter(const AnnotationElement& element, const Rect& body) {
    return leaderStart(element, body).value_or(body.center());
}

} // namespace tosvar::LeaderSupport
