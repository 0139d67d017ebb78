#include "ScrollStitcher.h"

namespace tosvar {

ScrollStitcher::ScrollStitcher(int sampleColumns_, double matchThreshold_, double staticThreshold_, int minOverlap_,
                               ScrollAxis axis_)
    : sampleColumns(sampleColumns_),
      matchThreshold(matchThreshold_),
      staticThreshold(staticThreshold_),
      minOverlap(minOverlap_),
      axis(axis_) {}

int ScrollStitcher::trailingInset(int width) {
    if (width >= 800) return 32;
    if (width >= 240) return 12;
    return 0;
}

} // namespace tosvar
