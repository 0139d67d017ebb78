#include "AudioLevel.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

float AudioLevel::peakLevel(std::span<const float> samples) {
    float peak = 0;
    for (std::size_t i = 0; i < samples.size(); i += 4) peak = std::max(peak, std::fabs(samples[i]));
    return std::min(peak, 1.0f);
}

std::optional<float> AudioLevelThrottle::add(float level, MediaTime at) {
    pendingPeak_ = std::max(pendingPeak_, level);
    if (lastReport_ && mediaSeconds(at - *lastReport_) < interval) return std::nullopt;
    lastReport_ = at;
    const float report = pendingPeak_;
    pendingPeak_ = 0;
    return report;
}

} // namespace tosvar
