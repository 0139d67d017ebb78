#include "ScrollStitcher.h"

namespace tosvar {

ScrollStitcher::ScrollStitcher(int sampleColumns_, double matchThreshold_, double staticThreshold_, int minOverlap_,
                               ScrollAxis axis_)
    : sampleColumns(sampleColumns_),
      matchThreshold(matchThreshold_),
      staticThreshold(staticThreshold_),
      minOverlap(minOverlap_),
      axis(axis_) {}

void ScrollStitcher::updateDynamics(const ScrollPatch& prev, const ScrollPatch& next, int delta) {
    if (dynRows.size() != static_cast<std::size_t>(next.height)) dynRows.assign(static_cast<std::size_t>(next.height), 0.0f);
    const double moving = staticThreshold * 3 + 6;
    for (int y = 0; y < next.height; ++y) {
        const float decayed = dynRows[y] * 0.6f;
        const bool partnered = prev.containsRow(y + delta) && prev.containsRow(y);
        dynRows[y] = partnered && next.changedRowMAD(y, prev, y + delta, staticThreshold) > moving ? 1.0f : decayed;
    }
}

int ScrollStitcher::trailingInset(int width) {
    if (width >= 800) return 32;
    if (width >= 240) return 12;
    return 0;
}

} // namespace tosvar
