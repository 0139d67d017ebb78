#include "ElementBounds.h"

#include "ElementDrawingMetrics.h"
#include "LeaderSupport.h"
#include "SegmentCurve.h"

#include <algorithm>
#include <numeric>

namespace tosvar::ElementBounds {

namespace {

// Room left around a text's body for its selection frame.
constexpr double textBoxMargin = 6;

Rect including(const Rect& box, Point p) { return box.unionWith(Rect(p, Size{})); }

// `box` (the body, perhaps with a margin) grown to take in the leader's tip
// and, when bent, its control point.
Rect withLeader(const AnnotationElement& element, const Rect& body, Rect box) {
    const std::optional<Point> tip = LeaderSupport::tip(element);
    if (!tip) return box;
    box = including(box, *tip);
    if (element.style.curvature == 0) return box;
    const Point start = LeaderSupport::startOrCenter(element, body);
    return including(box, SegmentCurve::control(start, *tip, element.style.curvature));
}

} // namespace

Size textSize(const TextMeasuring& measure, std::string_view text, double fontSize) {
    const double lineHeight = measure.metrics(fontSize).lineHeight();
    double widest = 0;
    int lines = 0;
    std::size_t begin = 0;
    while (true) {
        const std::size_t end = text.find('\n', begin);
        const std::string_view line = text.substr(begin, end == std::string_view::npos ? end : end - begin);
        widest = std::max(widest, measure.lineWidth(line.empty() ? " " : line, fontSize));
        ++lines;
        if (end == std::string_view::npos) break;
        begin = end + 1;
    }
    return {std::max(widest, 0.6 * fontSize),
            lines * lineHeight + (lines - 1) * ElementDrawing::textLineGapRatio * lineHeight};
}

Rect visualBox(const TextMeasuring& measure, const AnnotationElement& element) {
    using C = AnnotationKind::Case;
    const AnnotationStyle& style = element.style;
    if (element.geometry.asPoint() && LeaderSupport::supportsLeader(element.kind.kindCase())) {
        const Rect body = LeaderSupport::bodyRect(measure, element);
        const double margin = element.kind.is(C::text) ? textBoxMargin : 0;
        return withLeader(element, body, body.insetBy(-margin, -margin));
    }
    const Rect box = element.geometry.boundingBox();
    if (const Geometry::Segment* segment = element.geometry.asSegment()) {
        if (const std::vector<Point>* mids = SegmentCurve::midPoints(style)) {
            return std::accumulate(mids->begin(), mids->end(), box, including);
        }
        if (style.curvature != 0) return including(box, SegmentCurve::control(segment->from, segment->to, style.curvature));
    }
    return box;
}

} // namespace tosvar::ElementBounds
