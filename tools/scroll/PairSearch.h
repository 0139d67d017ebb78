#pragma once

#include "ImageBuffer.h"
#include "ScrollBand.h"
#include "ScrollStitcher.h"

#include <optional>

namespace tosvar::ScrollCorpus {

// The movement between consecutive frames, measured the way a stitcher's
// ingest does it but from each pair alone: the unchanged rows at the top
// and bottom bound the region, and only the last movement is carried from
// pair to pair. No sticky-bar votes or moving-row history, so it measures
// the search itself.
class PairSearch {
public:
    explicit PairSearch(WorkerPool* workers = nullptr);

    // 0 for frames that did not move (or differ only in a thin strip),
    // nothing when no movement is proven. Sideways frames are transposed first.
    std::optional<int> measure(const ImageBuffer& prev, const ImageBuffer& next, ScrollAxis axis);

private:
    ScrollStitcher stitcher_;
};

} // namespace tosvar::ScrollCorpus
