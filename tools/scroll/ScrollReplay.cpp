#include "ScrollReplay.h"

namespace tosvar::ScrollCorpus {

namespace {

// The settings a capture session uses.
ScrollStitcher sessionStitcher(ScrollAxis axis, WorkerPool* workers) {
    ScrollStitcher stitcher(384, 18.0, 3.0, 0, axis);
    stitcher.workers = workers;
    return stitcher;
}

} // namespace

ScrollReplay::ScrollReplay(std::optional<ScrollAxis> axis, WorkerPool* workers)
    : stitcher_(sessionStitcher(axis.value_or(ScrollAxis::vertical), workers)), decided_(axis) {
    if (!axis) horizontal_ = sessionStitcher(ScrollAxis::horizontal, workers);
}

ScrollStitcher::Result ScrollReplay::ingest(const ImageBuffer& frame) {
    const ScrollStitcher::Result vertical = stitcher_.ingest(frame);
    if (decided_) return vertical;
    const ScrollStitcher::Result sideways = horizontal_->ingest(frame);
    decided_ = detector_.observe(vertical.kind, sideways.kind);
    if (decided_ == ScrollAxis::horizontal) stitcher_ = std::move(*horizontal_);
    if (decided_) horizontal_.reset();
    return decided_ == ScrollAxis::horizontal ? sideways : vertical;
}

} // namespace tosvar::ScrollCorpus
