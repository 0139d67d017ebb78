#pragma once

#include "MediaSamples.h"

#include <optional>

namespace tosvar {

// Takes paused stretches out of a movie's timeline. After a resume, the gap
// between the last frame before the pause and the first one after it shrinks
// to one nominal frame interval; every later time moves back by what was cut.
class PauseTimeline {
public:
    explicit PauseTimeline(int fps);

    void markResumeBoundary() { resumePending_ = true; }
    // The time a frame stamped `pts` takes in the movie; advances the cut.
    MediaTime adjusted(MediaTime pts);
    // What has been cut so far; sound uses it without advancing anything.
    MediaTime currentOffset() const { return offset_; }

private:
    MediaTime offset_{0};
    std::optional<MediaTime> lastInputPTS_;
    bool resumePending_ = false;
    MediaTime nominalGap_;
};

} // namespace tosvar
