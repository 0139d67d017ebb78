#include "ElementChain.h"

#include "Log.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tosvar::ElementDetection {

namespace {

bool repeats(const Rect& a, const Rect& b) {
    return std::abs(a.minX() - b.minX()) <= repeatTolerance && std::abs(a.minY() - b.minY()) <= repeatTolerance &&
           std::abs(a.width() - b.width()) <= repeatTolerance && std::abs(a.height() - b.height()) <= repeatTolerance;
}

void debugLine(const std::string& text) {
    static const bool enabled = std::getenv("VEMLA_AX_DEBUG") != nullptr;
    if (enabled) std::fprintf(stderr, "[AX] %s\n", text.c_str());
}

// Moves `snapped` to the nearest of `edges` closer to `value` than `best`.
void snapToNearest(double value, std::initializer_list<double> edges, double& best, double& snapped) {
    for (double edge : edges) {
        const double distance = std::abs(edge - value);
        if (distance < best) {
            best = distance;
            snapped = edge;
        }
    }
}

} // namespace

std::vector<DetectedElement> elementChain(AccessibleElements& elements, const Point& point, std::int64_t pid,
                                          int depth) {
    std::vector<DetectedElement> chain;
    AccessibleElements::Handle element = elements.elementAt(point, pid);
    if (!element) debugLine("no element at the point of pid " + std::to_string(pid));
    for (int step = 0; element && step <= depth; ++step) {
        const std::optional<Rect> frame = elements.frame(element);
        if (!frame || frame->width() < 1 || frame->height() < 1) {
            debugLine("an element without a frame ends the walk at level " + std::to_string(step));
            break;
        }
        if (chain.empty() || !repeats(chain.back().frame, *frame)) chain.push_back({element, *frame});
        element = elements.parent(element);
    }
    debugLine("chain of " + std::to_string(chain.size()) + " levels");
    return chain;
}

bool isCoarse(const std::vector<Rect>& rects, std::optional<std::string_view> rootRole, const Rect& window) {
    if (rootRole == "AXWebArea") return true;
    if (rects.empty()) return false;
    return rects.front().width() > coarseShare * window.width() && rects.front().height() > coarseShare * window.height();
}

std::vector<Rect> viewRects(const std::vector<Rect>& frames, const std::function<Rect(const Rect&)>& toView,
                            const Rect& bounds) {
    std::vector<Rect> rects;
    for (const Rect& frame : frames) {
        const Rect clipped = toView(frame).intersection(bounds);
        if (!clipped.isNull() && clipped.width() >= minViewSide && clipped.height() >= minViewSide) rects.push_back(clipped);
    }
    return rects;
}

std::optional<double> redetectDelay(int attempt) {
    if (attempt < 0 || attempt >= maxRedetectAttempts) return std::nullopt;
    return (attempt + 1) * 0.2;
}

Point snappedDragPoint(const Point& point, const std::vector<Rect>& candidates) {
    Point result = point;
    double bestX = snapDistance, bestY = snapDistance; // strictly within
    for (const Rect& candidate : candidates) {
        snapToNearest(point.x, {candidate.minX(), candidate.maxX()}, bestX, result.x);
        snapToNearest(point.y, {candidate.minY(), candidate.maxY()}, bestY, result.y);
    }
    return result;
}

} // namespace tosvar::ElementDetection
