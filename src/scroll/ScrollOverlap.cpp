#include "ScrollOverlap.h"

#include "ScrollKernels.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tosvar::ScrollOverlap {

namespace {

// Variance above 25 gray levels squared, kept in sums: n * sumSq - sum^2 > n^2 * 25.
bool textured(double n, double sum, double sumSq) { return n * sumSq - sum * sum > n * n * 25.0; }

double pearson(const ScrollKernels::PearsonSums& s, double n) {
    return (n * s.dot - s.sumA * s.sumB) /
           (std::sqrt(n * s.sumSqA - s.sumA * s.sumA) * std::sqrt(n * s.sumSqB - s.sumB * s.sumB));
}

} // namespace

std::optional<std::vector<double>> blockProfile(const ScrollPatch& next, const ScrollPatch& prev, int delta,
                                                int regionTop, int regionBottom, const std::vector<float>& texture,
                                                float textureGate, int blocks) {
    if (next.width != prev.width || next.width <= 0) return std::nullopt;
    const int y0 = std::max({regionTop - delta, regionTop, 0, -delta});
    const int y1 = std::min({regionBottom, regionBottom - delta, next.height, prev.height - delta,
                             static_cast<int>(texture.size())});
    if (y1 - y0 < 16) return std::nullopt;
    const ScrollBlockSplit split = ScrollBlockSplit::of(next.width, blocks);
    std::vector<double> sums(static_cast<std::size_t>(split.count), 0.0);
    int used = 0;
    for (int y = y0; y < y1; ++y) {
        if (texture[y] < textureGate) continue;
        ++used;
        const float* a = next.row(y);
        const float* b = prev.row(y + delta);
        for (int k = 0; k < split.count; ++k)
            sums[k] += ScrollKernels::absDiffSum(a + k * split.width, b + k * split.width, split.width);
    }
    if (used < 6) return std::nullopt;
    for (double& sum : sums) sum /= double(used) * split.width;
    return sums;
}

std::optional<double> trimmedScore(const ScrollPatch& next, const ScrollPatch& prev, int delta, int regionTop,
                                   int regionBottom, const std::vector<float>& texture, float textureGate,
                                   int blocks) {
    std::optional<std::vector<double>> profile =
        blockProfile(next, prev, delta, regionTop, regionBottom, texture, textureGate, blocks);
    if (!profile) return std::nullopt;
    std::sort(profile->begin(), profile->end());
    const int count = static_cast<int>(profile->size());
    const int k = std::max(count * 3, 4) / 4;
    double sum = 0;
    for (int i = 0; i < std::min(k, count); ++i) sum += (*profile)[i];
    return sum / k;
}

std::vector<bool> fixedBlocks(const ScrollPatch& next, const ScrollPatch& prev, int y0, int y1, int blocks,
                              double rowTolerance, double minTexture) {
    y0 = std::max(y0, 0);
    y1 = std::min({y1, next.height, prev.height});
    if (y1 <= y0 || next.width != prev.width || next.width <= 0) return {};
    const ScrollBlockSplit split = ScrollBlockSplit::of(next.width, blocks);
    std::vector<int> changedRows(static_cast<std::size_t>(split.count), 0);
    std::vector<double> gradient(static_cast<std::size_t>(split.count), 0.0);
    for (int y = y0; y < y1; ++y) {
        for (int k = 0; k < split.count; ++k) {
            const int x = k * split.width;
            if (ScrollKernels::absDiffSum(next.row(y) + x, prev.row(y) + x, split.width) / split.width > rowTolerance)
                ++changedRows[k];
            if (y + 1 < y1) gradient[k] += ScrollKernels::absDiffSum(next.row(y + 1) + x, next.row(y) + x, split.width);
        }
    }
    const int rows = y1 - y0;
    const int allowance = rows >= 200 ? rows / 200 : 1;
    std::vector<bool> fixed(static_cast<std::size_t>(split.count), false);
    for (int k = 0; k < split.count; ++k)
        fixed[k] = changedRows[k] <= allowance && gradient[k] / (double(split.width) * std::max(rows - 1, 1)) >= minTexture;
    return fixed;
}

std::vector<bool> texturedBlocks(const ScrollPatch& next, int y0, int y1, const std::vector<float>& texture,
                                 float textureGate, int blocks, double minTexture) {
    y0 = std::max(y0, 0);
    y1 = std::min({y1, next.height, static_cast<int>(texture.size())});
    if (next.width <= 0) return {};
    const ScrollBlockSplit split = ScrollBlockSplit::of(next.width, blocks);
    std::vector<double> gradient(static_cast<std::size_t>(split.count), 0.0);
    int used = 0;
    for (int y = y0; y + 1 < y1; ++y) {
        if (texture[y] < textureGate) continue;
        ++used;
        for (int k = 0; k < split.count; ++k) {
            const int x = k * split.width;
            gradient[k] += ScrollKernels::absDiffSum(next.row(y + 1) + x, next.row(y) + x, split.width);
        }
    }
    std::vector<bool> structured(static_cast<std::size_t>(split.count), false);
    if (used == 0) return structured;
    for (int k = 0; k < split.count; ++k) structured[k] = gradient[k] / (double(split.width) * used) >= minTexture;
    return structured;
}

std::vector<double> jointScores(const std::vector<std::vector<double>>& profiles, double tau,
                                const std::vector<bool>& excluding) {
    if (profiles.empty()) return {};
    std::size_t blocks = profiles.front().size();
    for (const auto& profile : profiles) blocks = std::min(blocks, profile.size());
    std::vector<std::size_t> informative;
    for (std::size_t b = 0; b < blocks; ++b) {
        if (b < excluding.size() && excluding[b]) continue;
        double lowest = std::numeric_limits<double>::infinity();
        for (const auto& profile : profiles) lowest = std::min(lowest, profile[b]);
        if (lowest <= tau) informative.push_back(b);
    }
    std::vector<double> scores(profiles.size(), std::numeric_limits<double>::max());
    if (informative.empty()) return scores;
    for (std::size_t h = 0; h < profiles.size(); ++h) {
        double sum = 0;
        for (std::size_t b : informative) sum += profiles[h][b];
        scores[h] = sum / static_cast<double>(informative.size());
    }
    return scores;
}

std::optional<std::vector<std::optional<double>>> blockPearsonScan(const ScrollPatch& next, const ScrollPatch& window,
                                                                   ScrollBand band, int blocks) {
    if (next.width != window.width || next.width <= 0 || band.height <= 0 || !next.containsRows(band) ||
        window.height < band.height)
        return std::nullopt;
    const ScrollBlockSplit split = ScrollBlockSplit::of(next.width, blocks);
    const double n = double(band.height) * split.width;
    std::vector<int> texturedBlocks;
    for (int k = 0; k < split.count; ++k) {
        ScrollKernels::PearsonSums sums;
        for (int y = band.start; y < band.end(); ++y) {
            const float* a = next.row(y) + k * split.width;
            sums += ScrollKernels::pearsonSums(a, a, split.width);
        }
        if (textured(n, sums.sumA, sums.sumSqA)) texturedBlocks.push_back(k);
    }
    if (texturedBlocks.size() < 3) return std::nullopt;

    std::vector<std::optional<double>> scores;
    std::vector<double> values;
    for (int offset = 0; offset + band.height <= window.height; ++offset) {
        values.clear();
        for (int k : texturedBlocks) {
            ScrollKernels::PearsonSums sums;
            for (int r = 0; r < band.height; ++r)
                sums += ScrollKernels::pearsonSums(next.row(band.start + r) + k * split.width,
                                                   window.row(offset + r) + k * split.width, split.width);
            if (textured(n, sums.sumB, sums.sumSqB)) values.push_back(pearson(sums, n));
        }
        if (values.size() < 3) {
            scores.emplace_back();
            continue;
        }
        std::sort(values.begin(), values.end());
        scores.emplace_back(values[values.size() / 2]);
    }
    return scores;
}

std::optional<double> texturedColumnPearson(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band,
                                            int delta) {
    if (next.width != prev.width || band.height < 2 || !next.containsRows(band) ||
        !prev.containsRows({band.start + delta, band.height}))
        return std::nullopt;
    const double rows = band.height;
    ScrollKernels::PearsonSums total;
    int columns = 0;
    for (int x = 0; x < next.width; ++x) {
        ScrollKernels::PearsonSums column;
        for (int y = band.start; y < band.end(); ++y) {
            const double a = next.at(x, y), b = prev.at(x, y + delta);
            column += {a, b, a * a, b * b, a * b};
        }
        if (!textured(rows, column.sumA, column.sumSqA)) continue;
        total += column;
        ++columns;
    }
    if (columns == 0) return std::nullopt;
    const double n = rows * columns;
    if (n * total.sumSqB - total.sumB * total.sumB <= n * n) return std::nullopt;
    return pearson(total, n);
}

} // namespace tosvar::ScrollOverlap
