#pragma once

#include "AnnotationStyle.h"
#include "Point.h"

#include <vector>

// Bent segments and leaders. A bend is a signed `curvature`: how far the
// curve's apex stands from the chord's middle along the chord's normal
// (-dy, dx)/len. Drawn as one quadratic, or, once the user has placed mid
// points, as a spline through them.
namespace tosvar::SegmentCurve {

// The chord length from which a stroke's bend freezes its ratio.
inline constexpr double bendDirectionThreshold = 300;
// The largest bend of a drawn stroke, as a share of its chord.
inline constexpr double maxBendRatio = 0.25;
// How far a short stroke must wander from its chord before it bends.
inline constexpr double bendMinDeviation = 30;
// The deviation needed once a bend was let go, or on a long chord.
inline constexpr double bendReEngageDeviation = 60;

// The point the curve passes through midway: the chord's middle moved by
// `curvature` along the normal (the middle itself for a zero bend or chord).
Point apex(Point from, Point to, double curvature);
// The quadratic's control point: twice as far out as the apex.
Point control(Point from, Point to, double curvature);
// The bend whose apex is `apex`: its signed distance from the chord's middle
// along the normal; 0 for a zero-length chord.
double curvature(Point from, Point to, Point apex);

// max(count, 2) + 1 points of the quadratic, evenly spaced in t.
std::vector<Point> samples(Point from, Point control, Point to, int count);

// The polyline a segment or leader follows: the spline through its mid points
// when it has any, the two ends when it is straight, else the quadratic at
// 2 * perSegment steps.
std::vector<Point> spine(Point from, Point to, const AnnotationStyle& style, int perSegment);

// A centripetal Catmull-Rom spline through `points`, perSegment (at least 2)
// steps per span, passing through every point. Fewer than three points come
// back as they are.
std::vector<Point> splineSamples(const std::vector<Point>& points, int perSegment);

// The mid points of a style, or null when there are none (an empty list is none).
const std::vector<Point>* midPoints(const AnnotationStyle& style);

} // namespace tosvar::SegmentCurve
