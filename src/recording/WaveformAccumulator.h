#pragma once

#include <vector>

namespace tosvar {

// A waveform of fixed width for a recording of unknown length: levels fill
// buckets, and whenever the buckets run out, neighbours merge into their
// maximum and each bucket takes twice as many levels from then on. So it
// always covers the whole recording with at most `capacity` bars.
class WaveformAccumulator {
public:
    static constexpr int defaultCapacity = 240;

    explicit WaveformAccumulator(int capacity = defaultCapacity);

    void add(float level);
    // The bars so far, plus the bucket being filled when it holds anything.
    std::vector<float> snapshot() const;

    int capacity() const { return capacity_; }
    const std::vector<float>& buckets() const { return buckets_; }
    int reportsPerBucket() const { return reportsPerBucket_; }

private:
    void fold();

    int capacity_;
    std::vector<float> buckets_;
    int reportsPerBucket_ = 1;
    float pendingPeak_ = 0;
    int pendingCount_ = 0;
};

} // namespace tosvar
