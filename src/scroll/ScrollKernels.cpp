#include "ScrollKernels.h"

#include <algorithm>
#include <cmath>

namespace tosvar::ScrollKernels {

namespace {

constexpr int lanes = 8;
// 256 products of two gray levels per lane stay below 2^24, where floats
// still count every integer exactly.
constexpr int flushEvery = 256 * lanes;

double laneTotal(const float (&lane)[lanes]) {
    double total = 0;
    for (float v : lane) total += v;
    return total;
}

// The sum of `term(i)` over [0, count), in lanes flushed every `flushEvery` terms.
template <typename Term>
double laneSum(int count, Term term) {
    double total = 0;
    for (int begin = 0; begin < count; begin += flushEvery) {
        const int end = std::min(count, begin + flushEvery);
        float lane[lanes] = {};
        int i = begin;
        for (; i + lanes <= end; i += lanes)
            for (int k = 0; k < lanes; ++k) lane[k] += term(i + k);
        for (int k = 0; i < end; ++i, ++k) lane[k] += term(i);
        total += laneTotal(lane);
    }
    return total;
}

} // namespace

GrayWeights grayWeights(PixelOrder order) {
    const ChannelOffsets o = channelOffsets(order);
    GrayWeights weights;
    weights.byte[o.r] = 77;
    weights.byte[o.g] = 150;
    weights.byte[o.b] = 29;
    weights.byte[o.a] = 0;
    return weights;
}

void grayRow(const std::uint8_t* pixels, int count, const GrayWeights& weights, std::uint8_t* out) {
    const std::uint32_t w0 = weights.byte[0], w1 = weights.byte[1], w2 = weights.byte[2], w3 = weights.byte[3];
    for (int x = 0; x < count; ++x) {
        const std::uint8_t* p = pixels + 4 * x;
        out[x] = static_cast<std::uint8_t>((w0 * p[0] + w1 * p[1] + w2 * p[2] + w3 * p[3]) >> 8);
    }
}

bool ColumnResampler::fits(int sourceWidth, int targetWidth) {
    return std::uint64_t(256) * std::uint64_t(std::max(sourceWidth, 1)) * std::uint64_t(std::max(targetWidth, 1)) <=
           0xffffffffu;
}

ColumnResampler::ColumnResampler(int sourceWidth, int targetWidth)
    : sourceWidth_(sourceWidth), targetWidth_(targetWidth) {
    edges_.reserve(static_cast<std::size_t>(targetWidth_) + 1);
    for (int c = 0; c <= targetWidth_; ++c) {
        const std::uint64_t position = std::uint64_t(c) * std::uint64_t(sourceWidth_); // in 1 / targetWidth
        edges_.push_back({static_cast<int>(position / std::uint64_t(targetWidth_)),
                          static_cast<std::uint32_t>(position % std::uint64_t(targetWidth_))});
    }
}

void ColumnResampler::resample(const std::uint8_t* in, std::uint8_t* out, std::vector<std::uint32_t>& prefix) const {
    prefix.resize(static_cast<std::size_t>(sourceWidth_) + 1);
    std::uint32_t running = 0;
    prefix[0] = 0;
    for (int x = 0; x < sourceWidth_; ++x) prefix[x + 1] = running += in[x];
    // The integral of the row up to an edge, scaled by the target width. The
    // last edge sits on the end of the row with no fraction, so `in` is never
    // read past its end.
    const std::uint32_t t = static_cast<std::uint32_t>(targetWidth_);
    auto integral = [&](const Edge& e) {
        return e.fraction == 0 ? prefix[e.pixel] * t : prefix[e.pixel] * t + e.fraction * in[e.pixel];
    };
    const std::uint32_t source = static_cast<std::uint32_t>(sourceWidth_);
    const std::uint32_t half = source / 2;
    std::uint32_t left = integral(edges_[0]);
    for (int c = 0; c < targetWidth_; ++c) {
        const std::uint32_t right = integral(edges_[c + 1]);
        out[c] = static_cast<std::uint8_t>((right - left + half) / source);
        left = right;
    }
}

void widen(const std::uint8_t* in, float* out, int count) {
    for (int i = 0; i < count; ++i) out[i] = in[i];
}

double absDiffSum(const float* a, const float* b, int count) {
    return laneSum(count, [=](int i) { return std::fabs(a[i] - b[i]); });
}

double changedAbsDiffSum(const float* a, const float* b, const float* c, int count, float threshold) {
    // A product with the condition rather than a branch keeps the loop straight.
    return laneSum(count, [=](int i) { return static_cast<float>(std::fabs(a[i] - c[i]) > threshold) * std::fabs(a[i] - b[i]); });
}

PearsonSums& PearsonSums::operator+=(const PearsonSums& other) {
    sumA += other.sumA;
    sumB += other.sumB;
    sumSqA += other.sumSqA;
    sumSqB += other.sumSqB;
    dot += other.dot;
    return *this;
}

PearsonSums pearsonSums(const float* a, const float* b, int count) {
    PearsonSums sums;
    for (int begin = 0; begin < count; begin += flushEvery) {
        const int end = std::min(count, begin + flushEvery);
        float sa[lanes] = {}, sb[lanes] = {}, qa[lanes] = {}, qb[lanes] = {}, ab[lanes] = {};
        int i = begin;
        for (; i + lanes <= end; i += lanes) {
            for (int k = 0; k < lanes; ++k) {
                const float x = a[i + k], y = b[i + k];
                sa[k] += x;
                sb[k] += y;
                qa[k] += x * x;
                qb[k] += y * y;
                ab[k] += x * y;
            }
        }
        for (int k = 0; i < end; ++i, ++k) {
            const float x = a[i], y = b[i];
            sa[k] += x;
            sb[k] += y;
            qa[k] += x * x;
            qb[k] += y * y;
            ab[k] += x * y;
        }
        sums += {laneTotal(sa), laneTotal(sb), laneTotal(qa), laneTotal(qb), laneTotal(ab)};
    }
    return sums;
}

int mismatchCount(const std::uint8_t* a, const std::uint8_t* b, int count, int tolerance) {
    if (tolerance < 0) return std::max(count, 0);
    if (tolerance >= 255) return 0;
    const auto tol = static_cast<std::uint8_t>(tolerance);
    int total = 0;
    // Byte counters cannot overflow within 255 elements per lane.
    constexpr int block = 255 * 16;
    for (int begin = 0; begin < count; begin += block) {
        const int end = std::min(count, begin + block);
        std::uint8_t lane[16] = {};
        int i = begin;
        for (; i + 16 <= end; i += 16)
            for (int k = 0; k < 16; ++k) {
                const std::uint8_t x = a[i + k], y = b[i + k];
                const std::uint8_t d = x > y ? x - y : y - x;
                lane[k] += d > tol;
            }
        for (int k = 0; k < 16; ++k) total += lane[k];
        for (; i < end; ++i) total += std::abs(int(a[i]) - int(b[i])) > tol;
    }
    return total;
}

int edgeCount(const std::uint8_t* p, int count, int tolerance) {
    return count < 2 ? 0 : mismatchCount(p, p + 1, count - 1, tolerance);
}

} // namespace tosvar::ScrollKernels
