#include "PairSearch.h"

#include "ScrollMatcher.h"
#include "ScrollTranspose.h"

#include <algorithm>

namespace tosvar::ScrollCorpus {

namespace {

constexpr int sampleColumns = 384;
constexpr float flatTexture = 0.35f;

} // namespace

PairSearch::PairSearch(WorkerPool* workers) : stitcher_(sampleColumns, 18.0, 3.0, 0, ScrollAxis::vertical) {
    stitcher_.workers = workers;
}

PairSearch::Measurement PairSearch::measure(const ImageBuffer& prevFrame, const ImageBuffer& nextFrame, ScrollAxis axis) {
    std::optional<ImageBuffer> prev = prevFrame, next = nextFrame;
    if (axis == ScrollAxis::horizontal) {
        prev = ScrollTranspose::transposed(prevFrame);
        next = ScrollTranspose::transposed(nextFrame);
        if (!prev || !next) return {};
    }
    if (prev->width() != next->width() || prev->height() != next->height()) return {};
    const int inset = ScrollStitcher::trailingInset(next->width());
    const std::optional<ScrollPatch> prevPatch = ScrollPatch::fromImage(*prev, sampleColumns, inset);
    const std::optional<ScrollPatch> nextPatch = ScrollPatch::fromImage(*next, sampleColumns, inset);
    if (!prevPatch || !nextPatch) return {};

    const int h = nextPatch->height;
    const ScrollRuns same = ScrollMatcher::identicalRuns(*prevPatch, *nextPatch, stitcher_.staticThreshold);
    const Measurement unchanged{0, true};
    if (same.top + same.bottom >= h) return unchanged;
    // Flat rows at the inner edge of an unchanged run may still be content.
    const std::vector<float> texture = prevPatch->rowTexture();
    int top = same.top, bottom = same.bottom;
    while (top > 0 && texture[top - 1] < flatTexture) --top;
    while (bottom > 0 && texture[h - bottom] < flatTexture) --bottom;
    const int regionTop = top, regionBottom = h - bottom, regionH = regionBottom - regionTop;
    const int limit = h < 128 ? 16 : h / 8;
    if ((h - same.bottom) - same.top < limit && h - 2 * limit <= same.top + same.bottom) return unchanged;
    const int overlap = regionH < 16 ? 4 : regionH / 4;
    if (regionH <= std::max(overlap, 8)) return {};

    stitcher_.frameWidth = next->width();
    stitcher_.frameHeight = next->height();
    stitcher_.lastFrame = prev;
    stitcher_.pendingFrame = next;
    const std::optional<int> delta =
        stitcher_.findDelta(*prevPatch, prevPatch->coarsened(stitcher_.coarseRowScale, stitcher_.coarseColScale),
                            *nextPatch, nextPatch->coarsened(stitcher_.coarseRowScale, stitcher_.coarseColScale),
                            regionTop, regionBottom, regionH - overlap);
    if (delta) {
        stitcher_.updateDynamics(*prevPatch, *nextPatch, *delta);
        if (*delta != 0) stitcher_.lastDelta = *delta;
    }
    return {delta, false};
}

Outcome judge(const PairSearch::Measurement& measurement, int trueDelta) {
    if (measurement.delta == trueDelta) return Outcome::exact;
    if (!measurement.delta || measurement.unchanged) return Outcome::none;
    return Outcome::wrong;
}

} // namespace tosvar::ScrollCorpus
