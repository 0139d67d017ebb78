#pragma once

#include "AnnotationElement.h"
#include "Point.h"
#include "Rect.h"
#include "TextMeasuring.h"

#include <optional>
#include <vector>

// The leader line that a text or step badge can point with: from where it
// leaves the body to its tip. The tip is stored in image coordinates and does
// not turn with the body.
namespace tosvar::LeaderSupport {

std::optional<Point> tip(const AnnotationElement& element);
// Only texts and step badges carry leaders.
bool supportsLeader(AnnotationKind::Case kind);

// A text or badge at a point with a tip.
bool hasLeader(const AnnotationElement& element);

// The half side of a step badge's square: its font size, at least 12.
double badgeRadius(const AnnotationStyle& style);

// A text's measured box at its point, a badge's square around its centre, the
// zero rectangle for either with other geometry; for every other kind the
// geometry's bounding box.
Rect bodyRect(const TextMeasuring& measure, const AnnotationElement& element);
Point center(const TextMeasuring& measure, const AnnotationElement& element);

// Points along the leader from the body's centre to the tip: 49 of its
// quadratic, or the spline through its mid points at 12 per span.
std::vector<Point> exitSamples(Point center, Point tip, const AnnotationStyle& style);

// Where the drawn leader leaves the body: the first exit sample outside the
// badge's disc, or outside the text's body grown by a fifth of the font size
// (judged in the body's unrotated frame). Absent without a tip, or when no
// sample gets out. Kinds without leaders start at their centre.
std::optional<Point> leaderStart(const TextMeasuring& measure, const AnnotationElement& element);
// `leaderStart`, or the body's centre when the leader never leaves the body.
Point startOrCenter(const TextMeasuring& measure, const AnnotationElement& element);
// The same two for a body already measured by `bodyRect`.
std::optional<Point> leaderStart(const AnnotationElement& element, const Rect& body);
Point startOrCenter(const AnnotationElement& element, const Rect& body);

} // namespace tosvar::LeaderSupport
