#include "WaveformAccumulator.h"

#include <algorithm>

namespace tosvar {

WaveformAccumulator::WaveformAccumulator(int capacity) : capacity_(std::max(capacity, 2)) {
    buckets_.reserve(static_cast<std::size_t>(capacity_));
}

void WaveformAccumulator::add(float level) {
    pendingPeak_ = std::max(pendingPeak_, std::clamp(level, 0.0f, 1.0f));
    if (++pendingCount_ < reportsPerBucket_) return;
    buckets_.push_back(pendingPeak_);
    pendingPeak_ = 0;
    pendingCount_ = 0;
    if (static_cast<int>(buckets_.size()) >= capacity_) fold();
}

void WaveformAccumulator::fold() {
    std::vector<float> folded;
    folded.reserve(static_cast<std::size_t>(capacity_));
    for (std::size_t i = 0; i < buckets_.size(); i += 2)
        folded.push_back(i + 1 < buckets_.size() ? std::max(buckets_[i], buckets_[i + 1]) : buckets_[i]);
    buckets_ = std::move(folded);
    reportsPerBucket_ *= 2;
}

std::vector<float> WaveformAccumulator::snapshot() const {
    std::vector<float> bars = buckets_;
    if (pendingCount_ > 0) bars.push_back(pendingPeak_);
    return bars;
}

} // namespace tosvar
