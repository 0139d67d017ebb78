#include "PathSimplify.h"

#include "HitTesting.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <queue>
#include <utility>

namespace tosvar::PathSimplify {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Box {
    double minX = infinity;
    double minY = infinity;
    double maxX = -infinity;
    double maxY = -infinity;

    void add(Point p) {
        minX = std::min(minX, p.x);
        minY = std::min(minY, p.y);
        maxX = std::max(maxX, p.x);
        maxY = std::max(maxY, p.y);
    }
    void add(const Box& b) {
        minX = std::min(minX, b.minX);
        minY = std::min(minY, b.minY);
        maxX = std::max(maxX, b.maxX);
        maxY = std::max(maxY, b.maxY);
    }
};

// Finds, for a range of a stroke, the earliest point farthest from the chord
// of its ends: exactly what a scan of every point finds. A long stroke that
// loops back and forth is split one loop at a time, so plain scans would add
// up to quadratic work; instead the bounding boxes of blocks of points, kept
// in an implicit binary tree, let whole blocks be skipped. Distance to a
// segment is convex, so no point of a box lies farther than its farthest
// corner; the bound is widened by a margin for rounding, which only costs
// a little skipping, never a wrong answer.
class FarthestPointSearch {
public:
    explicit FarthestPointSearch(const std::vector<Point>& points) : points_(points) {
        const std::size_t blocks = (points.size() + blockSize - 1) / blockSize;
        leaves_ = std::bit_ceil(std::max<std::size_t>(blocks, 1));
        boxes_.resize(2 * leaves_);
        for (std::size_t i = 0; i < points.size(); ++i) boxes_[leaves_ + i / blockSize].add(points[i]);
        for (std::size_t node = leaves_ - 1; node >= 1; --node) {
            boxes_[node] = boxes_[2 * node];
            boxes_[node].add(boxes_[2 * node + 1]);
        }
    }

    // The earliest index strictly between a and b whose point lies farthest
    // from segment a-b, when that distance exceeds `tolerance`.
    std::optional<std::size_t> farthestBeyond(std::size_t a, std::size_t b, double tolerance) const {
        if (b - a <= directScanLimit) {
            std::size_t farthest = a + 1;
            double farthestDistance = -1;
            for (std::size_t i = a + 1; i < b; ++i) {
                const double distance = distanceOf(i, a, b);
                if (distance > farthestDistance) {
                    farthest = i;
                    farthestDistance = distance;
                }
            }
            if (farthestDistance > tolerance) return farthest;
            return std::nullopt;
        }
        const double largest = largestDistance(a, b);
        if (!(largest > tolerance)) return std::nullopt;
        return firstAt(a, b, largest);
    }

private:
    static constexpr std::size_t blockSize = 16;
    static constexpr std::size_t directScanLimit = 256;

    // A subtree: its node and the blocks it covers, [firstBlock, endBlock).
    struct Span {
        std::size_t node;
        std::size_t firstBlock;
        std::size_t endBlock;
        double bound;
        friend bool operator<(const Span& x, const Span& y) { return x.bound < y.bound; }
    };

    double distanceOf(std::size_t i, std::size_t a, std::size_t b) const {
        return HitTesting::distanceToSegment(points_[i], points_[a], points_[b]);
    }

    // No point of the box is farther than this from segment a-b (by computed distance).
    double bound(const Box& box, Point a, Point b) const {
        const double corners = std::max({HitTesting::distanceToSegment({box.minX, box.minY}, a, b),
                                         HitTesting::distanceToSegment({box.maxX, box.minY}, a, b),
                                         HitTesting::distanceToSegment({box.minX, box.maxY}, a, b),
                                         HitTesting::distanceToSegment({box.maxX, box.maxY}, a, b)});
        const double magnitude = std::max({std::abs(box.minX), std::abs(box.maxX), std::abs(box.minY),
                                           std::abs(box.maxY), std::abs(a.x), std::abs(a.y), std::abs(b.x),
                                           std::abs(b.y)});
        const double widened = corners + 1e-12 * magnitude + 1e-300;
        return std::isnan(widened) ? infinity : widened;
    }

    // The subtrees below `span` that hold points strictly between a and b.
    template <typename Visit>
    void forEachChild(const Span& span, std::size_t a, std::size_t b, Visit&& visit) const {
        const std::size_t middle = (span.firstBlock + span.endBlock) / 2;
        const Span halves[2] = {{2 * span.node, span.firstBlock, middle, 0},
                                {2 * span.node + 1, middle, span.endBlock, 0}};
        for (Span child : halves) {
            const std::size_t firstPoint = child.firstBlock * blockSize;
            const std::size_t endPoint = std::min(child.endBlock * blockSize, points_.size());
            if (endPoint <= a + 1 || firstPoint >= b) continue;
            child.bound = bound(boxes_[child.node], points_[a], points_[b]);
            visit(child);
        }
    }

    std::pair<std::size_t, std::size_t> pointsOf(const Span& leaf, std::size_t a, std::size_t b) const {
        return {std::max(leaf.firstBlock * blockSize, a + 1), std::min(leaf.endBlock * blockSize, b)};
    }

    // The largest distance of any point strictly between a and b, or -1 when
    // none is a number; subtrees are opened most promising first.
    double largestDistance(std::size_t a, std::size_t b) const {
        double largest = -1;
        std::priority_queue<Span> open;
        open.push({1, 0, leaves_, infinity});
        while (!open.empty() && open.top().bound > largest) {
            const Span span = open.top();
            open.pop();
            if (span.endBlock - span.firstBlock == 1) {
                const auto [first, end] = pointsOf(span, a, b);
                for (std::size_t i = first; i < end; ++i) largest = std::max(largest, distanceOf(i, a, b));
                continue;
            }
            forEachChild(span, a, b, [&](const Span& child) {
                if (child.bound > largest) open.push(child);
            });
        }
        return largest;
    }

    // The earliest point strictly between a and b at exactly `distance`,
    // searched left to right past every subtree that cannot reach it.
    std::size_t firstAt(std::size_t a, std::size_t b, double distance) const {
        std::vector<Span> stack{{1, 0, leaves_, infinity}};
        while (!stack.empty()) {
            const Span span = stack.back();
            stack.pop_back();
            if (span.endBlock - span.firstBlock == 1) {
                const auto [first, end] = pointsOf(span, a, b);
                for (std::size_t i = first; i < end; ++i)
                    if (distanceOf(i, a, b) == distance) return i;
                continue;
            }
            Span children[2];
            std::size_t count = 0;
            forEachChild(span, a, b, [&](const Span& child) {
                if (!(child.bound < distance)) children[count++] = child;
            });
            while (count > 0) stack.push_back(children[--count]); // left child on top
        }
        return a + 1; // unreachable: `distance` was measured at a point of this range
    }

    const std::vector<Point>& points_;
    std::size_t leaves_ = 1;
    std::vector<Box> boxes_;
};

} // namespace

std::vector<Point> simplify(const std::vector<Point>& points, double tolerance) {
    const std::size_t n = points.size();
    if (n < 3 || !(tolerance > 0)) return points;

    const FarthestPointSearch search(points);
    std::vector<bool> kept(n, false);
    kept.front() = kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> ranges{{0, n - 1}};
    while (!ranges.empty()) {
        const auto [a, b] = ranges.back();
        ranges.pop_back();
        if (b <= a + 1) continue;
        if (const std::optional<std::size_t> farthest = search.farthestBeyond(a, b, tolerance)) {
            kept[*farthest] = true;
            ranges.emplace_back(a, *farthest);
            ranges.emplace_back(*farthest, b);
        }
    }

    std::vector<Point> result;
    for (std::size_t i = 0; i < n; ++i)
        if (kept[i]) result.push_back(points[i]);
    return result;
}

} // namespace tosvar::PathSimplify
