#pragma once

#include "MediaSamples.h"

#include <optional>
#include <span>

namespace tosvar {

namespace AudioLevel {

// The loudest of every fourth value, as a level from 0 to 1. Reading a quarter
// of the values is plenty for a meter and keeps the intake cheap.
float peakLevel(std::span<const float> samples);

} // namespace AudioLevel

// Gathers levels and lets at most one report through every 0.05 seconds of
// media time, carrying the loudest level since the last report. Not
// thread-safe: the sample queue owns it.
class AudioLevelThrottle {
public:
    static constexpr double interval = 0.05;

    // The level to report now, if the interval has passed.
    std::optional<float> add(float level, MediaTime at);

private:
    float pendingPeak_ = 0;
    std::optional<MediaTime> lastReport_;
};

} // namespace tosvar
