#pragma once

#include "AccessibleElements.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

struct DetectedElement {
    AccessibleElements::Handle element;
    Rect frame; // global, top-left
};

namespace ElementDetection {

inline constexpr int maxDepth = 16;
inline constexpr double repeatTolerance = 2;
inline constexpr double minViewSide = 8;
inline constexpr double coarseShare = 0.6;
inline constexpr double queryMove = 4;
inline constexpr double snapQueryMove = 6;
inline constexpr double snapDistance = 8;
inline constexpr int maxRedetectAttempts = 5;

// The element at `point` and its ancestors up to `depth` steps, deepest
// first, each with a frame of at least 1x1; a level whose frame repeats the
// one below it within 2 points is the same level. Stops at an element
// without a frame.
std::vector<DetectedElement> elementChain(AccessibleElements& elements, const Point& point, std::int64_t pid,
                                          int depth = maxDepth);

// A chain too coarse to use: a web page as its root, or a deepest element
// taking more than 0.6 of the window both ways. Its program has not built its
// tree yet.
bool isCoarse(const std::vector<Rect>& viewRects, std::optional<std::string_view> rootRole, const Rect& window);

// The frames in view coordinates, clipped to `bounds`, without those under 8 points a side.
std::vector<Rect> viewRects(const std::vector<Rect>& frames, const std::function<Rect(const Rect&)>& toView,
                            const Rect& bounds);

// When the n-th retry to read a woken program's tree runs (0-based); none after the fifth.
std::optional<double> redetectDelay(int attempt);

// The drag point snapped to the nearest edge of a candidate strictly within
// 8 points, x and y each on its own.
Point snappedDragPoint(const Point& point, const std::vector<Rect>& candidates);

} // namespace ElementDetection

} // namespace tosvar
