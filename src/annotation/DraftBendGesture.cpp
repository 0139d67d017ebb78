#include "DraftBendGesture.h"

#include "PlaneMath.h"
#include "SegmentCurve.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

namespace {

// The signed distance of the path point farthest from the chord; the first
// of equals wins.
double largestDeviation(const std::vector<Point>& path, Point a, Point b, double length) {
    const Point d = b - a;
    double largest = 0;
    for (Point p : path) {
        const double deviation = (d.x * (p.y - a.y) - d.y * (p.x - a.x)) / length;
        if (std::abs(deviation) > std::abs(largest)) largest = deviation;
    }
    return largest;
}

} // namespace

double DraftBendGesture::update(Point chordFrom, Point chordTo, Point current) {
    using namespace SegmentCurve;
    path.push_back(current);
    const double length = PlaneMath::distance(chordFrom, chordTo);
    double longest = maxLength;

    if (length < 0.5 * longest && longest - length > retractionSlack) {
        reset(current);
        maxLength = length;
        return 0;
    }
    if (released && !side) {
        path = {current};
        ratio.reset();
        maxLength = std::max(length, longest);
        return 0;
    }

    double threshold = bendMinDeviation;
    if (length >= bendDirectionThreshold) {
        locked = true;
        threshold = bendReEngageDeviation;
    } else {
        if (locked) {
            locked = false;
            path = {current};
            side.reset();
            longest = length;
        }
        threshold = released ? bendReEngageDeviation : bendMinDeviation;
    }

    const double deviation = length == 0 ? 0 : largestDeviation(path, chordFrom, chordTo, length);
    const double sign = deviation < 0 ? -1 : 1;
    maxLength = std::max(length, longest);
    if (length == 0 || std::abs(deviation) < threshold || (side && *side != sign)) {
        if (side) {
            path = {current};
            released = true;
        }
        side.reset();
        ratio.reset();
        return 0;
    }
    if (length < bendDirectionThreshold || !side) {
        const double limit = maxBendRatio * length;
        ratio = std::clamp(deviation, -limit, limit) / length;
        side = sign;
    }
    return length * ratio.value_or(0);
}

void DraftBendGesture::pinStraight(Point at) { reset(at); }

void DraftBendGesture::reset(Point at) {
    path = {at};
    side.reset();
    locked = false;
    released = false;
    maxLength = 0;
    ratio.reset();
}

} // namespace tosvar
