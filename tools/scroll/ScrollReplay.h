#pragma once

#include "ImageBuffer.h"
#include "ScrollAxisDetector.h"
#include "ScrollStitcher.h"

#include <optional>

namespace tosvar::ScrollCorpus {

// Feeds frames to stitchers as a capture session would. With a known axis
// one stitcher takes them; otherwise a vertical and a horizontal stitcher
// both do until the detector decides, and the winner goes on alone.
class ScrollReplay {
public:
    explicit ScrollReplay(std::optional<ScrollAxis> axis, WorkerPool* workers = nullptr);

    // The result of the stitcher followed so far (the vertical one until a
    // sideways decision).
    ScrollStitcher::Result ingest(const ImageBuffer& frame);

    const ScrollStitcher& stitcher() const { return stitcher_; }
    std::optional<ScrollAxis> decidedAxis() const { return decided_; }

private:
    ScrollStitcher stitcher_;                  // of the given axis, else vertical until decided
    std::optional<ScrollStitcher> horizontal_; // while the axis is undecided
    ScrollAxisDetector detector_;
    std::optional<ScrollAxis> decided_;
};

} // namespace tosvar::ScrollCorpus
