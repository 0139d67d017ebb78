#include "PauseTimeline.h"

#include <algorithm>

namespace tosvar {

PauseTimeline::PauseTimeline(int fps) : nominalGap_(MediaTime(1'000'000) / std::max(fps, 1)) {}

MediaTime PauseTimeline::adjusted(MediaTime pts) {
    if (resumePending_ && lastInputPTS_) {
        const MediaTime gap = pts - *lastInputPTS_;
        if (gap > nominalGap_) offset_ += gap - nominalGap_;
    }
    resumePending_ = false;
    lastInputPTS_ = pts;
    return pts - offset_;
}

} // namespace tosvar
