#include "HandleLayout.h"

#include "HitTesting.h"
#include "LeaderSupport.h"
#include "SegmentCurve.h"

#include <algorithm>
#include <limits>

namespace tosvar::HandleLayout {

namespace {

// Steps per span of the curve that inserted mid points are placed along.
constexpr int gapSamplesPerSegment = 16;
constexpr int pathSamplesPerSegment = 8;

// The index of the piece of `polyline` nearest to `p`; the first of equals.
std::size_t nearestPiece(Point p, const std::vector<Point>& polyline) {
    std::size_t nearest = 0;
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i + 1 < polyline.size(); ++i) {
        const double d = HitTesting::distanceToSegment(p, polyline[i], polyline[i + 1]);
        if (d < best) {
            best = d;
            nearest = i;
        }
    }
    return nearest;
}

// The style with a mid point at `p` on the curve from `start` to `end`; a
// bent curve without mid points first keeps its shape through its apex.
AnnotationStyle withMidPoint(AnnotationStyle style, Point start, Point end, Point p) {
    std::vector<Point> mids;
    if (const std::vector<Point>* existing = SegmentCurve::midPoints(style)) {
        mids = *existing;
    } else if (style.curvature != 0) {
        mids.push_back(SegmentCurve::apex(start, end, style.curvature));
        style.curvature = 0;
    }
    const std::size_t gap = nearestGap(p, start, end, mids);
    mids.insert(mids.begin() + static_cast<std::ptrdiff_t>(gap), p);
    style.midPoints = std::move(mids);
    return style;
}

} // namespace

std::size_t nearestGap(Point p, Point start, Point end, const std::vector<Point>& mids) {
    if (mids.empty()) return 0;
    std::vector<Point> through{start};
    through.insert(through.end(), mids.begin(), mids.end());
    through.push_back(end);
    const std::size_t piece = nearestPiece(p, SegmentCurve::splineSamples(through, gapSamplesPerSegment));
    return std::min(piece / gapSamplesPerSegment, mids.size());
}

AnnotationElement insertingMidPoint(const TextMeasuring& measure, const AnnotationElement& element, Point p) {
    AnnotationElement out = element;
    if (const Geometry::Segment* segment = element.geometry.asSegment()) {
        out.style = withMidPoint(element.style, segment->from, segment->to, p);
    } else if (LeaderSupport::hasLeader(element)) {
        out.style = withMidPoint(element.style, LeaderSupport::startOrCenter(measure, element),
                                 *element.style.leaderTip, p);
    } else if (const std::vector<Point>* path = element.geometry.asPath(); path && path->size() >= 2) {
        const bool straight = path->size() == 2;
        const std::size_t piece =
            nearestPiece(p, straight ? *path : SegmentCurve::splineSamples(*path, pathSamplesPerSegment));
        const std::size_t span = straight ? piece : piece / pathSamplesPerSegment;
        std::vector<Point> points = *path;
        points.insert(points.begin() + static_cast<std::ptrdiff_t>(span + 1), p);
        out.geometry = Geometry::path(std::move(points));
    }
    return out;
}

AnnotationElement removingMidPoint(const AnnotationElement& element, std::size_t index) {
    AnnotationElement out = element;
    if (const std::vector<Point>* path = element.geometry.asPath()) {
        if (path->size() <= 2 || index >= path->size()) return out;
        std::vector<Point> points = *path;
        points.erase(points.begin() + static_cast<std::ptrdiff_t>(index));
        out.geometry = Geometry::path(std::move(points));
        return out;
    }
    std::optional<std::vector<Point>>& mids = out.style.midPoints;
    if (!mids || index >= mids->size()) return out;
    mids->erase(mids->begin() + static_cast<std::ptrdiff_t>(index));
    if (mids->empty()) mids.reset();
    return out;
}

} // namespace tosvar::HandleLayout
