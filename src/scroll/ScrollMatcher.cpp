#include "ScrollMatcher.h"

#include "ScrollKernels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace tosvar::ScrollMatcher {

namespace {

bool inBoth(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int delta) {
    return band.start >= 0 && band.end() <= next.height && band.start + delta >= 0 && band.end() + delta <= prev.height;
}

// Whether row `y` of `a` and row `otherY` of `b` agree within the threshold.
bool rowsMatch(const ScrollPatch& a, int y, const ScrollPatch& b, int otherY, double threshold) {
    return a.rowMAD(y, b, otherY) <= threshold;
}

} // namespace

std::optional<double> bandScore(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int delta) {
    if (band.height <= 0 || next.width != prev.width || next.width <= 0 || !inBoth(next, prev, band, delta))
        return std::nullopt;
    double sum = 0;
    for (int y = band.start; y < band.end(); ++y)
        sum += ScrollKernels::absDiffSum(next.row(y), prev.row(y + delta), next.width);
    return sum / (double(band.height) * next.width);
}

std::vector<std::optional<double>> bandScores(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band,
                                              ScrollShiftRange deltas) {
    std::vector<std::optional<double>> scores;
    for (int d = deltas.first; d <= deltas.last; ++d) scores.push_back(bandScore(next, prev, band, d));
    return scores;
}

std::vector<ScrollCandidate> localMinima(const std::vector<std::optional<double>>& scores, int base, double gate,
                                         int limit, int separation) {
    std::vector<ScrollCandidate> qualified;
    const int count = static_cast<int>(scores.size());
    for (int i = 0; i < count; ++i) {
        if (!scores[i] || *scores[i] > gate) continue;
        if (i > 0 && scores[i - 1] && *scores[i] > *scores[i - 1]) continue;
        if (i + 1 < count && scores[i + 1] && *scores[i] > *scores[i + 1]) continue;
        qualified.push_back({base + i, *scores[i]});
    }
    std::stable_sort(qualified.begin(), qualified.end(),
                     [](const ScrollCandidate& a, const ScrollCandidate& b) { return a.mad < b.mad; });
    std::vector<ScrollCandidate> kept;
    for (const ScrollCandidate& candidate : qualified) {
        if (static_cast<int>(kept.size()) >= limit) break;
        const bool apart = std::all_of(kept.begin(), kept.end(), [&](const ScrollCandidate& k) {
            return std::abs(k.delta - candidate.delta) >= separation;
        });
        if (apart) kept.push_back(candidate);
    }
    return kept;
}

std::optional<int> refine(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int around, int window,
                          ScrollShiftRange bounds) {
    std::optional<int> best;
    double bestScore = std::numeric_limits<double>::infinity();
    for (int d = std::max(around - window, bounds.first); d <= std::min(around + window, bounds.last); ++d) {
        const std::optional<double> score = bandScore(next, prev, band, d);
        if (score && *score < bestScore) {
            bestScore = *score;
            best = d;
        }
    }
    return best;
}

std::optional<ScrollBand> adjustedBand(ScrollBand nominal, int delta, int regionTop, int regionBottom, int minRows) {
    const int start = std::max(regionTop - delta, nominal.start);
    const int end = std::min({start + nominal.height, regionBottom, regionBottom - delta});
    if (end - start < minRows || end - start < 0) return std::nullopt;
    return ScrollBand{start, end - start};
}

std::optional<double> bandPearson(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int delta) {
    if (band.height <= 0 || next.width != prev.width || next.width <= 0 || !inBoth(next, prev, band, delta))
        return std::nullopt;
    ScrollKernels::PearsonSums sums;
    for (int y = band.start; y < band.end(); ++y) sums += ScrollKernels::pearsonSums(next.row(y), prev.row(y + delta), next.width);
    const double n = double(band.height) * next.width;
    const double varA = n * sums.sumSqA - sums.sumA * sums.sumA;
    const double varB = n * sums.sumSqB - sums.sumB * sums.sumB;
    if (varA <= 0 || varB <= 0) return std::nullopt;
    return (n * sums.dot - sums.sumA * sums.sumB) / (std::sqrt(varA) * std::sqrt(varB));
}

ScrollRuns identicalRuns(const ScrollPatch& prev, const ScrollPatch& next, double staticThreshold) {
    const int height = std::min(prev.height, next.height);
    ScrollRuns runs;
    while (runs.top < height && rowsMatch(next, runs.top, prev, runs.top, staticThreshold)) ++runs.top;
    while (runs.bottom < height - runs.top &&
           rowsMatch(next, height - 1 - runs.bottom, prev, height - 1 - runs.bottom, staticThreshold))
        ++runs.bottom;
    return runs;
}

ScrollRuns stickyRuns(const ScrollPatch& prev, const ScrollPatch& next, int delta, double staticThreshold) {
    const int height = std::min(prev.height, next.height);
    // Whether an unchanged row proves that it stays put: a row that also
    // matches its scrolled partner is flat background and proves nothing.
    auto proves = [&](int y) {
        if (prev.containsRow(y + delta) && rowsMatch(next, y, prev, y + delta, staticThreshold)) return false;
        if (next.containsRow(y - delta)) return !rowsMatch(prev, y, next, y - delta, staticThreshold);
        return prev.containsRow(y + delta);
    };
    ScrollRuns runs;
    for (int y = 0; y < height && rowsMatch(next, y, prev, y, staticThreshold); ++y)
        if (proves(y)) runs.top = y + 1;
    for (int y = height - 1; y >= 0 && rowsMatch(next, y, prev, y, staticThreshold); --y)
        if (proves(y)) runs.bottom = height - y;
    runs.top = std::min(runs.top, height);
    runs.bottom = std::min(runs.bottom, height);
    return runs;
}

namespace {

// One band of `showsHorizontalShift`: whether its rows moved sideways.
bool bandMovedSideways(const ScrollPatch& prev, const ScrollPatch& next, int start, int rows) {
    const int width = next.width;
    std::vector<double> inPlace(static_cast<std::size_t>(width), 0.0);
    for (int y = start; y < start + rows; ++y)
        for (int x = 0; x < width; ++x) inPlace[x] += std::fabs(next.at(x, y) - prev.at(x, y));
    std::vector<int> changed;
    double changedDifference = 0;
    for (int x = 0; x < width; ++x) {
        inPlace[x] /= rows;
        if (inPlace[x] > 2.0) {
            changed.push_back(x);
            changedDifference += inPlace[x];
        }
    }
    const int needed = width < 64 ? 8 : width / 8;
    if (static_cast<int>(changed.size()) < needed) return false;

    // Coarse search on column pairs averaged to half width.
    const int half = width / 2;
    auto halved = [&](const ScrollPatch& patch) {
        std::vector<float> out(static_cast<std::size_t>(half) * rows);
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < half; ++c)
                out[std::size_t(r) * half + c] = (patch.at(2 * c, start + r) + patch.at(2 * c + 1, start + r)) / 2;
        return out;
    };
    const std::vector<float> nextHalf = halved(next), prevHalf = halved(prev);
    std::vector<int> halfChanged;
    for (int x : changed)
        if (x / 2 < half && (halfChanged.empty() || halfChanged.back() != x / 2)) halfChanged.push_back(x / 2);

    // Cost of a shift over the columns that stay inside; nothing when fewer
    // than a third of them fit.
    auto cost = [&](const std::vector<int>& columns, int shift, int limit, auto cell) -> std::optional<double> {
        double sum = 0;
        int fitting = 0;
        for (int c : columns) {
            if (c + shift < 0 || c + shift >= limit) continue;
            ++fitting;
            for (int r = 0; r < rows; ++r) sum += cell(r, c, c + shift);
        }
        if (fitting * 3 < static_cast<int>(columns.size()) || fitting == 0) return std::nullopt;
        return sum / fitting;
    };
    auto halfCell = [&](int r, int c, int shifted) {
        return std::fabs(nextHalf[std::size_t(r) * half + c] - prevHalf[std::size_t(r) * half + shifted]);
    };
    auto fullCell = [&](int r, int c, int shifted) {
        return std::fabs(next.at(c, start + r) - prev.at(shifted, start + r));
    };

    std::optional<int> coarseShift;
    double coarseCost = std::numeric_limits<double>::infinity();
    for (int s = -(width / 4); s <= width / 4; ++s) {
        if (s == 0) continue;
        const std::optional<double> c = cost(halfChanged, s, half, halfCell);
        if (c && *c < coarseCost) {
            coarseCost = *c;
            coarseShift = s;
        }
    }
    if (!coarseShift) return false;

    double fineCost = std::numeric_limits<double>::infinity();
    for (int s = 2 * *coarseShift - 2; s <= 2 * *coarseShift + 2; ++s) {
        if (s == 0 || std::abs(s) > width / 2) continue;
        const std::optional<double> c = cost(changed, s, width, fullCell);
        if (c) fineCost = std::min(fineCost, *c / rows);
    }
    const double meanChanged = changedDifference / static_cast<double>(changed.size());
    return fineCost < 0.4 * meanChanged && fineCost < 10.0;
}

} // namespace

bool showsHorizontalShift(const ScrollPatch& prev, const ScrollPatch& next, int bands, int bandRows) {
    if (prev.width != next.width || prev.height != next.height || next.width < 32 || bandRows < 1) return false;
    const int height = next.height;
    const int margin = height * 15 / 100;
    const int usable = height - 2 * margin;
    if (usable < 2 * bandRows) return false;
    const int planned = std::min(bands, usable / (bandRows + 4));
    const int count = std::max(planned, 2);
    int votes = 0;
    for (int k = 0; k < count; ++k)
        if (bandMovedSideways(prev, next, margin + (usable - bandRows) * k / (count - 1), bandRows)) ++votes;
    const int needed = planned < 6 ? 2 : count / 3;
    return votes >= needed;
}

} // namespace tosvar::ScrollMatcher
