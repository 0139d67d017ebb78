#pragma once

#include "Point.h"

#include <optional>
#include <vector>

namespace tosvar {

// Decides, while a line or arrow is being drawn, whether the stroke bends and
// by how much. A short stroke bends only to the side the pointer first
// wandered to; past `SegmentCurve::bendDirectionThreshold` the ratio of bend
// to chord freezes so the bend grows with the chord; crossing to the other
// side lets the bend go for the rest of the stroke; pulling the end back by
// more than half the longest chord (and at least `retractionSlack`) starts
// everything over.
struct DraftBendGesture {
    // How far, beyond half, the chord must shrink before the gesture starts over.
    static constexpr double retractionSlack = 30;

    std::vector<Point> path;     // pointer positions since the bend last started over
    std::optional<double> side;  // -1 or +1 once committed; absent while straight
    bool locked = false;         // the chord has reached the direction threshold
    bool released = false;       // a committed bend was let go
    double maxLength = 0;        // the longest chord seen
    std::optional<double> ratio; // bend over chord length, frozen while locked

    // Takes the pointer at `current` for the chord a-b and returns the
    // curvature to draw with.
    double update(Point chordFrom, Point chordTo, Point current);

    // Both start a straight stroke at `at`.
    void pinStraight(Point at);
    void reset(Point at);

    friend bool operator==(const DraftBendGesture&, const DraftBendGesture&) = default;
};

} // namespace tosvar
