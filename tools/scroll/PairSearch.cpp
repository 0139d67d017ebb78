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

std::variant<PairSearch::Measurement, PairSearch::Prepared> PairSearch::prepare(const ImageBuffer& prevFrame,
                                                                             const ImageBuffer& nextFrame,
                                                                             ScrollAxis axis) const {
    std::optional<ImageBuffer> prev = prevFrame, next = nextFrame;
    if (axis == ScrollAxis::horizontal) {
        prev = ScrollTranspose::transposed(prevFrame);
        next = ScrollTranspose::transposed(nextFrame);
        if (!prev || !next) return Measurement{};
    }
    if (prev->width() != next->width() || prev->height() != next->height()) return Measurement{};
    const int inset = ScrollStitcher::trailingInset(next->width());
    std::optional<ScrollPatch> prevPatch = ScrollPatch::fromImage(*prev, sampleColumns, inset);
    std::optional<ScrollPatch> nextPatch = ScrollPatch::fromImage(*next, sampleColumns, inset);
    if (!prevPatch || !nextPatch) return Measurement{};

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
    if (regionH <= std::max(overlap, 8)) return Measurement{};

    const int rowScale = stitcher_.coarseRowScale, columnScale = stitcher_.coarseColScale;
    ScrollPatch prevCoarse = prevPatch->coarsened(rowScale, columnScale);
    ScrollPatch nextCoarse = nextPatch->coarsened(rowScale, columnScale);
    return Prepared{*prev,       *next,     std::move(*prevPatch), std::move(*nextPatch), std::move(prevCoarse),
                    std::move(nextCoarse), regionTop, regionBottom,          regionH - overlap};
}

ScrollStitcher PairSearch::stitcherFor(const Prepared& pair) const {
    ScrollStitcher stitcher = stitcher_;
    stitcher.frameWidth = pair.next.width();
    stitcher.frameHeight = pair.next.height();
    stitcher.lastFrame = pair.prev;
    stitcher.pendingFrame = pair.next;
    return stitcher;
}

PairSearch::Measurement PairSearch::search(const Prepared& pair) {
    const ScrollStitcher stitcher = stitcherFor(pair);
    const std::optional<int> delta = stitcher.findDelta(pair.prevPatch, pair.prevCoarse, pair.nextPatch, pair.nextCoarse,
                                                        pair.regionTop, pair.regionBottom, pair.maxOffset);
    if (delta) {
        stitcher_.updateDynamics(pair.prevPatch, pair.nextPatch, *delta);
        if (*delta != 0) stitcher_.lastDelta = *delta;
    }
    return {delta, false};
}

PairSearch::Measurement PairSearch::measure(const ImageBuffer& prev, const ImageBuffer& next, ScrollAxis axis) {
    std::variant<Measurement, Prepared> prepared = prepare(prev, next, axis);
    if (const Measurement* verdict = std::get_if<Measurement>(&prepared)) return *verdict;
    return search(std::get<Prepared>(prepared));
}

Outcome judge(const PairSearch::Measurement& measurement, int trueDelta, const std::vector<ShiftRange>& alike) {
    if (measurement.delta == trueDelta) return Outcome::exact;
    if (!measurement.delta || measurement.unchanged) return Outcome::none;
    const int found = *measurement.delta;
    if (std::any_of(alike.begin(), alike.end(), [&](const ShiftRange& r) { return r.contains(found); }))
        return Outcome::alike;
    return Outcome::wrong;
}

} // namespace tosvar::ScrollCorpus
