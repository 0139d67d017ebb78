#include "ScrollKernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

using namespace tosvar;
using namespace tosvar::ScrollKernels;

// Each vector kernel against a plain loop, on random gray levels and lengths
// that cross the lane and flush boundaries. Integer inputs keep every sum
// exact, so the results must be equal, not merely close.
namespace {

struct Random {
    std::mt19937 engine{20240611};
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
    std::vector<float> grays(int count) {
        std::vector<float> values(static_cast<std::size_t>(count));
        for (float& v : values) v = static_cast<float>(below(256));
        return values;
    }
    std::vector<std::uint8_t> bytes(int count) {
        std::vector<std::uint8_t> values(static_cast<std::size_t>(count));
        for (auto& v : values) v = static_cast<std::uint8_t>(below(256));
        return values;
    }
    // Lengths around every edge the kernels care about, and some at random.
    std::vector<int> lengths() {
        std::vector<int> counts = {0, 1, 7, 8, 9, 255, 256, 2047, 2048, 2049, 4096, 4095 + 16 * 255};
        for (int i = 0; i < 20; ++i) counts.push_back(below(10000));
        return counts;
    }
};

} // namespace

TEST(ScrollKernels, FloatSumsEqualPlainLoops) {
    Random random;
    for (int count : random.lengths()) {
        const auto a = random.grays(count), b = random.grays(count), c = random.grays(count);
        double diff = 0, changed = 0, sa = 0, sb = 0, qa = 0, qb = 0, dot = 0;
        for (int i = 0; i < count; ++i) {
            diff += std::fabs(double(a[i]) - b[i]);
            if (std::fabs(double(a[i]) - c[i]) > 3.0) changed += std::fabs(double(a[i]) - b[i]);
            sa += a[i], sb += b[i], qa += double(a[i]) * a[i], qb += double(b[i]) * b[i], dot += double(a[i]) * b[i];
        }
        EXPECT_EQ(absDiffSum(a.data(), b.data(), count), diff) << count;
        EXPECT_EQ(changedAbsDiffSum(a.data(), b.data(), c.data(), count, 3.0f), changed) << count;
        const PearsonSums sums = pearsonSums(a.data(), b.data(), count);
        EXPECT_EQ(sums.sumA, sa) << count;
        EXPECT_EQ(sums.sumB, sb) << count;
        EXPECT_EQ(sums.sumSqA, qa) << count;
        EXPECT_EQ(sums.sumSqB, qb) << count;
        EXPECT_EQ(sums.dot, dot) << count;
    }
}

TEST(ScrollKernels, ByteCountsEqualPlainLoops) {
    Random random;
    for (int count : random.lengths()) {
        const auto a = random.bytes(count), b = random.bytes(count);
        for (int tolerance : {-1, 0, 12, 254, 255}) {
            int mismatches = 0, edges = 0;
            for (int i = 0; i < count; ++i) mismatches += std::abs(a[i] - b[i]) > tolerance;
            for (int i = 0; i + 1 < count; ++i) edges += std::abs(a[i] - a[i + 1]) > tolerance;
            EXPECT_EQ(mismatchCount(a.data(), b.data(), count, tolerance), mismatches) << count << " " << tolerance;
            EXPECT_EQ(edgeCount(a.data(), count, tolerance), edges) << count << " " << tolerance;
        }
    }
}

TEST(ScrollKernels, GrayRowWeighsEachByteOrder) {
    Random random;
    const int count = 1000;
    const auto pixels = random.bytes(4 * count);
    for (PixelOrder order : {PixelOrder::rgba, PixelOrder::bgra, PixelOrder::argb, PixelOrder::abgr}) {
        const ChannelOffsets o = channelOffsets(order);
        std::vector<std::uint8_t> out(count);
        grayRow(pixels.data(), count, grayWeights(order), out.data());
        for (int x = 0; x < count; ++x) {
            const std::uint8_t* p = pixels.data() + 4 * x;
            ASSERT_EQ(out[x], (77 * p[o.r] + 150 * p[o.g] + 29 * p[o.b]) / 256) << x;
        }
    }
}

TEST(ScrollKernels, ResamplerAveragesTheCoveredSpanRoundingHalfUp) {
    Random random;
    std::vector<std::uint32_t> prefix;
    for (auto [source, target] : {std::pair{5, 2}, {7, 3}, {768, 384}, {1568, 384}, {3168, 384}, {1000, 999}, {9, 9}}) {
        ASSERT_TRUE(ColumnResampler::fits(source, target));
        const ColumnResampler resampler(source, target);
        const auto in = random.bytes(source);
        std::vector<std::uint8_t> out(target);
        resampler.resample(in.data(), out.data(), prefix);
        for (int c = 0; c < target; ++c) {
            // The span [c * source, (c + 1) * source) in units of 1 / target.
            const long long from = static_cast<long long>(c) * source, to = from + source;
            long long weighted = 0;
            for (int x = 0; x < source; ++x) {
                const long long overlap = std::min(to, (x + 1LL) * target) - std::max(from, static_cast<long long>(x) * target);
                if (overlap > 0) weighted += overlap * in[x];
            }
            ASSERT_EQ(out[c], (weighted + source / 2) / source) << source << "->" << target << " column " << c;
        }
    }
    EXPECT_FALSE(ColumnResampler::fits(50000, 384));
}
