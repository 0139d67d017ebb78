// The movement search of ScrollStitcher: candidates from a band scan, block
// arbitration, confirmation on a second band, and the slower fallbacks that
// run only when the cheap steps gave no answer.
#include "ScrollStitcher.h"

#include "ScrollKernels.h"
#include "ScrollMatcher.h"
#include "ScrollOverlap.h"
#include "ShiftScan.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace tosvar {

namespace {

using ScrollMatcher::adjustedBand;
using ScrollMatcher::bandScore;

// The least texture of a row worth matching, compared in the rows' own
// precision, and of a band on average.
constexpr float rowTextureGate = 0.35f;
constexpr double bandTextureGate = 0.35;
constexpr double aloneTexture = 0.55;

// Mean texture of any band in two reads.
class BandTexture {
public:
    explicit BandTexture(const std::vector<float>& texture) : prefix_(texture.size() + 1, 0.0) {
        for (std::size_t y = 0; y < texture.size(); ++y) prefix_[y + 1] = prefix_[y] + texture[y];
    }
    double operator()(ScrollBand band) const {
        const int rows = static_cast<int>(prefix_.size()) - 1;
        const int start = std::clamp(band.start, 0, rows);
        const int end = std::clamp(band.end(), start, rows);
        return end > start ? (prefix_[end] - prefix_[start]) / (end - start) : 0.0;
    }

private:
    std::vector<double> prefix_;
};

// The lowest score over shifts `from ... to` of a band fitted to each shift;
// the smallest shift wins a tie.
template <typename Score>
std::optional<ScrollCandidate> lowestScore(int from, int to, Score score) {
    std::optional<ScrollCandidate> best;
    for (int d = from; d <= to; ++d) {
        const std::optional<double> s = score(d);
        if (s && (!best || *s < best->mad)) best = ScrollCandidate{d, *s};
    }
    return best;
}

// Scores every shift of [-limit, limit] on a fitted band, on the pool when
// the range is large.
template <typename Score>
std::vector<std::optional<double>> scanScores(WorkerPool* pool, int limit, long long cellsPerShift, Score score) {
    std::vector<std::optional<double>> scores(static_cast<std::size_t>(2 * limit + 1));
    scanShifts(pool, 2 * limit + 1, cellsPerShift, [&](int i) { scores[i] = score(i - limit); });
    return scores;
}

// Keeps each candidate that lies 3 or more rows from every better one.
std::vector<ScrollCandidate> tidied(std::vector<ScrollCandidate> candidates) {
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const ScrollCandidate& a, const ScrollCandidate& b) { return a.mad < b.mad; });
    std::vector<ScrollCandidate> kept;
    for (const ScrollCandidate& c : candidates)
        if (std::all_of(kept.begin(), kept.end(), [&](const ScrollCandidate& k) { return std::abs(k.delta - c.delta) >= 3; }))
            kept.push_back(c);
    return kept;
}

// Sorting by a rule that is not a strict weak order: a stable insertion sort.
template <typename T, typename Before>
void insertionSort(std::vector<T>& items, Before before) {
    for (std::size_t i = 1; i < items.size(); ++i) {
        T item = items[i];
        std::size_t j = i;
        for (; j > 0 && before(item, items[j - 1]); --j) items[j] = items[j - 1];
        items[j] = item;
    }
}

bool sameSign(int delta, int reference) { return (delta >= 0) == (reference >= 0); }

// Arbitration works on 12 column blocks; a block is explained by a shift
// whose mean difference there is within `jointTau`.
constexpr int arbitrationBlocks = 12;
constexpr double jointTau = 6.0;

std::vector<bool> fixedArbitrationBlocks(const ScrollPatch& next, const ScrollPatch& prev, int regionTop, int regionBottom) {
    return ScrollOverlap::fixedBlocks(next, prev, regionTop, regionBottom, arbitrationBlocks, 2.0, 1.0);
}

// Blocks that no hypothesis explains are left out of the joint scores, so a
// wrong shift could win on blank margins or on the edges of section
// backgrounds alone. A shift proves itself when it explains at least half of
// the blocks that hold structure in the rows it compared and did not stay
// fixed: a moving part such as a video is outvoted, not outvoting.
bool explainsHalfTheStructure(const ScrollPatch& next, const std::vector<float>& texture, int delta, int regionTop,
                              int regionBottom, const std::vector<double>& profile, const std::vector<bool>& fixed) {
    const std::vector<bool> structured = ScrollOverlap::texturedBlocks(
        next, std::max(regionTop - delta, regionTop), std::min(regionBottom, regionBottom - delta), texture,
        rowTextureGate, arbitrationBlocks, 1.0);
    int moved = 0, explained = 0;
    for (std::size_t b = 0; b < structured.size() && b < profile.size(); ++b) {
        if (!structured[b] || (b < fixed.size() && fixed[b])) continue;
        ++moved;
        explained += profile[b] <= jointTau;
    }
    return 2 * explained >= moved;
}

struct Combined {
    int delta = 0;
    double combined = 0; // a sum of two band scores
};

} // namespace

std::vector<float> ScrollStitcher::maskDynamic(std::vector<float> texture) const {
    if (dynRows.size() != texture.size()) return texture;
    for (std::size_t y = 0; y < texture.size(); ++y)
        if (dynRows[y] > 0.3f) texture[y] = 0;
    return texture;
}

std::optional<ScrollBand> ScrollStitcher::selectMidBand(const std::vector<float>& texture, int regionTop,
                                                        int regionBottom, int bandH) const {
    const int regionH = regionBottom - regionTop;
    const int first = regionTop + std::max(regionH / 3, bandH + 4);
    const int last = regionBottom - bandH;
    if (first >= last || bandH <= 0 || first < 0 || regionBottom > static_cast<int>(texture.size())) return std::nullopt;
    const bool masked = dynRows.size() == texture.size();
    std::vector<double> prefix(static_cast<std::size_t>(regionBottom - first) + 1, 0.0);
    for (int y = first; y < regionBottom; ++y)
        prefix[y - first + 1] = prefix[y - first] + texture[y] - (masked ? 60.0 * dynRows[y] : 0.0);
    std::optional<ScrollBand> best;
    double bestSum = 0;
    for (int start = first; start <= last; start += 4) {
        const double sum = prefix[start - first + bandH] - prefix[start - first];
        if (!best || sum > bestSum) {
            best = ScrollBand{start, bandH};
            bestSum = sum;
        }
    }
    if (bestSum / bandH < 0.5) return std::nullopt;
    return best;
}

std::optional<int> ScrollStitcher::findDelta(const ScrollPatch& prev, const ScrollPatch& prevCoarse,
                                             const ScrollPatch& next, const ScrollPatch& nextCoarse, int regionTop,
                                             int regionBottom, int maxOffset) const {
    const int regionH = regionBottom - regionTop;
    if (regionH <= 0 || regionTop < 0 || regionBottom > next.height || next.width != prev.width ||
        next.height != prev.height || nextCoarse.width != prevCoarse.width || maxOffset < 0)
        return std::nullopt;
    const int bandH = regionH < 32 ? 8 : std::min(regionH / 4, 240);
    const int searchBand = std::min(bandH, regionH);
    const ScrollBand nominal{regionTop, searchBand};
    const std::vector<float> texture = maskDynamic(next.rowTexture());
    const BandTexture bandTexture(texture);
    const std::optional<ScrollBand> mid = selectMidBand(texture, regionTop, regionBottom, bandH);
    const int rs = std::max(coarseRowScale, 1);
    const bool coarsePath = regionH / rs >= 24 && maxOffset / rs >= 2;

    // The score of the search band fitted to a shift.
    auto searchScore = [&](int d, int minRows) -> std::optional<double> {
        const std::optional<ScrollBand> band = adjustedBand(nominal, d, regionTop, regionBottom, minRows);
        return band ? bandScore(next, prev, *band, d) : std::nullopt;
    };

    std::vector<ScrollCandidate> found;
    if (coarsePath) {
        const int cMax = maxOffset / rs;
        const int cTop = regionTop / rs, cBottom = regionBottom / rs;
        const ScrollBand coarseBand{cTop, std::max(searchBand / rs, 2)};
        const auto scores = scanScores(workers, cMax, static_cast<long long>(coarseBand.height) * nextCoarse.width,
                                       [&](int d) -> std::optional<double> {
                                           const auto band = adjustedBand(coarseBand, d, cTop, cBottom, 2);
                                           return band ? bandScore(nextCoarse, prevCoarse, *band, d) : std::nullopt;
                                       });
        std::vector<int> deltas;
        for (const ScrollCandidate& c : ScrollMatcher::localMinima(scores, -cMax, matchThreshold + 10, 8, 2))
            deltas.push_back(c.delta * rs);
        if (lastDelta != 0) deltas.push_back(lastDelta);
        for (int d : deltas) {
            const auto refined = lowestScore(std::max(d - (rs + 2), -maxOffset), std::min(d + (rs + 2), maxOffset),
                                             [&](int dd) { return searchScore(dd, 8); });
            if (refined) found.push_back(*refined);
        }
    } else {
        const auto scores = scanScores(workers, maxOffset, static_cast<long long>(searchBand) * next.width,
                                       [&](int d) { return searchScore(d, 4); });
        found = ScrollMatcher::localMinima(scores, -maxOffset, matchThreshold, 5, 3);
    }
    std::vector<ScrollCandidate> candidates = tidied(std::move(found));

    // Confirmation, for when arbitration gives no answer.
    std::vector<Combined> confirmed, plain;
    for (const ScrollCandidate& candidate : candidates) {
        const int d = candidate.delta;
        const double m = candidate.mad;
        if (m > matchThreshold) continue;
        const std::optional<ScrollBand> band = adjustedBand(nominal, d, regionTop, regionBottom, 8);
        if (!band) continue;
        const double t = bandTexture(*band);
        if (t < bandTextureGate) continue;
        if (mid) {
            const std::optional<ScrollBand> fittedMid = adjustedBand(*mid, d, regionTop, regionBottom, 8);
            if (fittedMid) {
                if (bandTexture(*fittedMid) < bandTextureGate) continue;
                const auto best = lowestScore(std::max(d - 2, -maxOffset), std::min(d + 2, maxOffset), [&](int dd) {
                    const auto b = adjustedBand(*mid, dd, regionTop, regionBottom, 8);
                    return b ? bandScore(next, prev, *b, dd) : std::nullopt;
                });
                if (best && std::abs(best->delta - d) < 3 && best->mad <= matchThreshold * 1.5)
                    confirmed.push_back({d, m + best->mad});
                continue;
            }
        }
        const auto rival = std::find_if(candidates.begin(), candidates.end(),
                                        [&](const ScrollCandidate& r) { return std::abs(r.delta - d) > 2; });
        const bool alone = rival == candidates.end()
                               ? m <= matchThreshold * 0.5 && t >= aloneTexture
                               : t >= aloneTexture && m <= matchThreshold * 0.5 && rival->mad - m >= 3.0;
        if (alone) plain.push_back({d, 2 * m});
    }

    // Decision.
    Arbitration verdict = arbitrate(candidates, next, prev, texture, regionTop, regionBottom);
    if (verdict.kind == Arbitration::Kind::decided) return verdict.delta;
    if (verdict.kind == Arbitration::Kind::resolved && verdict.decisive && verdict.delta) return verdict.delta;
    if (coarsePath) {
        for (const ScrollCandidate& c :
             denseCandidates(next, prev, nextCoarse, prevCoarse, texture, regionTop, regionBottom, maxOffset))
            if (std::none_of(candidates.begin(), candidates.end(), [&](const ScrollCandidate& k) { return k.delta == c.delta; }))
                candidates.push_back(c);
        verdict = arbitrate(candidates, next, prev, texture, regionTop, regionBottom);
        if (verdict.kind != Arbitration::Kind::undecided) return verdict.delta;
    } else if (verdict.kind == Arbitration::Kind::resolved) {
        return verdict.delta;
    }

    std::vector<Combined> list = confirmed.empty() ? plain : confirmed;
    if (!list.empty()) {
        // The lists stand in for an arbitration without an answer; a shift
        // the blocks refute stays out of them as well.
        const std::vector<bool> fixed = fixedArbitrationBlocks(next, prev, regionTop, regionBottom);
        std::erase_if(list, [&](const Combined& c) {
            const auto profile = ScrollOverlap::blockProfile(next, prev, c.delta, regionTop, regionBottom, texture,
                                                             rowTextureGate, arbitrationBlocks);
            return profile && !explainsHalfTheStructure(next, texture, c.delta, regionTop, regionBottom, *profile, fixed);
        });
    }
    insertionSort(list, [&](const Combined& a, const Combined& b) {
        if (std::fabs(a.combined - b.combined) > 0.5) return a.combined < b.combined;
        const int da = std::abs(a.delta - lastDelta), db = std::abs(b.delta - lastDelta);
        if (da != db) return da < db;
        return a.delta > b.delta;
    });
    if (list.empty()) {
        if (bandTexture({regionTop, std::min(searchBand, 64)}) < bandTextureGate) return std::nullopt;
        return nccFallback(prev, next, nominal, mid, regionTop, regionBottom, maxOffset);
    }
    const Combined& best = list.front();
    const auto rival = std::find_if(list.begin(), list.end(),
                                    [&](const Combined& c) { return std::abs(c.delta - best.delta) > 4; });
    if (rival == list.end() || rival->combined - best.combined >= 2.0) return best.delta;
    if (std::abs(best.delta - lastDelta) < 3) return best.delta;
    return std::nullopt;
}

ScrollStitcher::Arbitration ScrollStitcher::arbitrate(const std::vector<ScrollCandidate>& candidates,
                                                      const ScrollPatch& next, const ScrollPatch& prev,
                                                      const std::vector<float>& texture, int regionTop,
                                                      int regionBottom) const {
    std::vector<int> deltas;
    std::vector<std::vector<double>> profiles;
    for (const ScrollCandidate& c : candidates) {
        if (c.mad > matchThreshold || c.delta == 0) continue;
        auto profile = ScrollOverlap::blockProfile(next, prev, c.delta, regionTop, regionBottom, texture, rowTextureGate,
                                                   arbitrationBlocks);
        if (!profile) continue;
        deltas.push_back(c.delta);
        profiles.push_back(std::move(*profile));
    }
    const std::vector<bool> fixed = fixedArbitrationBlocks(next, prev, regionTop, regionBottom);
    const std::vector<double> scores = ScrollOverlap::jointScores(profiles, jointTau, fixed);
    std::vector<ScrollCandidate> ranked;
    for (std::size_t i = 0; i < scores.size(); ++i) ranked.push_back({deltas[i], scores[i]});
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const ScrollCandidate& a, const ScrollCandidate& b) { return a.mad < b.mad; });
    if (ranked.empty() || ranked.front().mad > matchThreshold * 0.5) return {};
    const ScrollCandidate best = ranked.front();
    const auto bestProfile = std::find(deltas.begin(), deltas.end(), best.delta) - deltas.begin();
    if (!explainsHalfTheStructure(next, texture, best.delta, regionTop, regionBottom, profiles[bestProfile], fixed))
        return {};

    const double margin = std::max(best.mad * 0.5, 1.0);
    const auto rival = std::find_if(ranked.begin(), ranked.end(),
                                    [&](const ScrollCandidate& c) { return std::abs(c.delta - best.delta) > 4; });
    if (rival == ranked.end() || rival->mad - best.mad >= margin)
        return {Arbitration::Kind::decided, best.delta, false};

    std::vector<int> close;
    for (const ScrollCandidate& c : ranked) {
        if (close.size() >= 6) break;
        if (c.mad - best.mad > margin) continue;
        if (std::all_of(close.begin(), close.end(), [&](int g) { return std::abs(c.delta - g) > 4; }))
            close.push_back(c.delta);
    }
    if (const std::optional<Selection> selection = fullResolutionSelect(close, regionTop, regionBottom))
        return {Arbitration::Kind::resolved, selection->delta, selection->decisive};
    if (std::abs(best.delta - lastDelta) < 3) return {Arbitration::Kind::resolved, best.delta, false};
    return {Arbitration::Kind::resolved, std::nullopt, false};
}

std::vector<ScrollCandidate> ScrollStitcher::denseCandidates(const ScrollPatch& next, const ScrollPatch& prev,
                                                             const ScrollPatch& nextCoarse,
                                                             const ScrollPatch& prevCoarse,
                                                             const std::vector<float>& texture, int regionTop,
                                                             int regionBottom, int maxOffset) const {
    const int rs = std::max(coarseRowScale, 1);
    const int cTop = std::max(regionTop / rs, 0);
    const int cBottom = std::min({regionBottom / rs, nextCoarse.height, prevCoarse.height});
    if (nextCoarse.width != prevCoarse.width || cBottom <= cTop) return {};
    std::vector<char> used(static_cast<std::size_t>(cBottom), 0);
    int usedCount = 0;
    for (int r = cTop; r < cBottom; ++r) {
        float coarseTexture = 0;
        for (int y = r * rs; y < std::min((r + 1) * rs, static_cast<int>(texture.size())); ++y)
            coarseTexture = std::max(coarseTexture, texture[y]);
        used[r] = coarseTexture >= rowTextureGate;
        usedCount += used[r];
    }
    const int cMax = maxOffset / rs;
    const int width = nextCoarse.width;
    const auto scores = scanScores(workers, cMax, static_cast<long long>(usedCount) * width, [&](int d) -> std::optional<double> {
        double sum = 0;
        int rows = 0;
        for (int r = std::max(cTop, cTop - d); r < std::min(cBottom, cBottom - d); ++r) {
            if (!used[r]) continue;
            sum += ScrollKernels::absDiffSum(nextCoarse.row(r), prevCoarse.row(r + d), width);
            ++rows;
        }
        if (rows < 6) return std::nullopt;
        return sum / (double(rows) * width);
    });

    // Refine every kept shift at full resolution, all (shift, offset) pairs at once.
    struct Probe {
        std::size_t candidate;
        int delta;
    };
    std::vector<Probe> probes;
    std::vector<ScrollCandidate> kept = ScrollMatcher::localMinima(scores, -cMax, matchThreshold + 10, 8, 2);
    kept.erase(std::remove_if(kept.begin(), kept.end(), [](const ScrollCandidate& c) { return c.delta == 0; }), kept.end());
    const int window = 2 * rs + 2;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const int center = kept[i].delta * rs;
        for (int dd = std::max(center - window, -maxOffset); dd <= std::min(center + window, maxOffset); ++dd)
            if (dd != 0) probes.push_back({i, dd});
    }
    std::vector<std::optional<double>> probeScores(probes.size());
    scanShifts(workers, static_cast<int>(probes.size()), static_cast<long long>(regionBottom - regionTop) * next.width,
               [&](int p) {
                   probeScores[p] = ScrollOverlap::trimmedScore(next, prev, probes[p].delta, regionTop, regionBottom,
                                                                texture, rowTextureGate, 12);
               });
    std::vector<std::optional<ScrollCandidate>> best(kept.size());
    for (std::size_t p = 0; p < probes.size(); ++p) {
        std::optional<ScrollCandidate>& b = best[probes[p].candidate];
        if (probeScores[p] && (!b || *probeScores[p] < b->mad)) b = ScrollCandidate{probes[p].delta, *probeScores[p]};
    }
    std::vector<ScrollCandidate> out;
    for (const auto& b : best)
        if (b) out.push_back(*b);
    return out;
}

std::optional<ScrollStitcher::Selection> ScrollStitcher::fullResolutionSelect(const std::vector<int>& deltas,
                                                                              int regionTop, int regionBottom) const {
    if (deltas.size() < 2 || !lastFrame || !pendingFrame || !fullGrays) return std::nullopt;
    const int inset = trailingInset(frameWidth);
    const std::shared_ptr<const ScrollFullGray> prevGray = fullGrays->gray(*lastFrame, inset);
    const std::shared_ptr<const ScrollFullGray> nextGray = fullGrays->gray(*pendingFrame, inset);
    if (!prevGray || !nextGray) return std::nullopt;
    constexpr int blocks = 24, tol = 12, rowStep = 2;

    std::vector<int> measured;
    std::vector<std::vector<double>> rates;
    for (int d : deltas) {
        const int y0 = std::max(regionTop - d, regionTop), y1 = std::min(regionBottom, regionBottom - d);
        if (y1 - y0 < 16) continue;
        measured.push_back(d);
        rates.push_back(nextGray->mismatchRates(*prevGray, d, y0, y1, blocks, tol, rowStep));
    }
    const std::vector<double> staticRates = nextGray->mismatchRates(*prevGray, 0, regionTop, regionBottom, blocks, tol, rowStep);
    const std::vector<double> edges = nextGray->edgeRates(regionTop, regionBottom, blocks, tol, rowStep);
    std::vector<bool> excluded(staticRates.size(), false);
    for (std::size_t b = 0; b < excluded.size() && b < edges.size(); ++b)
        excluded[b] = staticRates[b] <= 0.0005 && edges[b] >= 0.002;

    const std::vector<double> scores = ScrollOverlap::jointScores(rates, 0.03, excluded);
    std::vector<ScrollCandidate> ranked;
    for (std::size_t i = 0; i < scores.size(); ++i) ranked.push_back({measured[i], scores[i]});
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const ScrollCandidate& a, const ScrollCandidate& b) { return a.mad < b.mad; });
    if (ranked.empty()) return std::nullopt;
    if (ranked.size() == 1) return Selection{ranked.front().delta, false};

    const double r0 = ranked[0].mad, r1 = ranked[1].mad;
    if (r0 <= r1 * 0.5 && r1 - r0 >= 0.00005) return Selection{ranked[0].delta, r0 <= 0.00002};
    if (r0 > 0.0001) return std::nullopt;
    std::vector<int> close;
    for (const ScrollCandidate& c : ranked)
        if (c.mad <= 2 * r0 + 0.00005) close.push_back(c.delta);
    for (int d : close)
        if (std::abs(d - lastDelta) <= 2) return Selection{d, false};
    std::optional<int> smallest;
    for (int d : close)
        if (sameSign(d, lastDelta) && (!smallest || std::abs(d) < std::abs(*smallest))) smallest = d;
    if (smallest) return Selection{*smallest, false};
    return std::nullopt;
}

std::optional<int> ScrollStitcher::nccFallback(const ScrollPatch& prev, const ScrollPatch& next, ScrollBand band1,
                                               std::optional<ScrollBand> band2, int regionTop, int regionBottom,
                                               int maxOffset) const {
    const ScrollBand capped{band1.start, std::min(band1.height, 64)};
    const auto scores = scanScores(workers, maxOffset, static_cast<long long>(capped.height) * next.width,
                                   [&](int d) -> std::optional<double> {
                                       const auto band = adjustedBand(capped, d, regionTop, regionBottom, 8);
                                       return band ? ScrollMatcher::bandPearson(next, prev, *band, d) : std::nullopt;
                                   });
    std::optional<double> best;
    int present = 0;
    for (const auto& s : scores)
        if (s) {
            ++present;
            if (!best || *s > *best) best = s;
        }
    if (!best || *best < nccThreshold) return std::nullopt;

    const int wide = static_cast<int>(std::count_if(scores.begin(), scores.end(),
                                                    [&](const auto& s) { return s && *s >= *best - 0.05; }));
    if (present < 12 ? wide >= 4 : wide * 4 > present) return std::nullopt;

    std::vector<int> peak;
    for (int i = 0; i < static_cast<int>(scores.size()); ++i)
        if (scores[i] && *scores[i] >= *best - 0.02) peak.push_back(i - maxOffset);
    std::vector<int> preferred;
    std::copy_if(peak.begin(), peak.end(), std::back_inserter(preferred), [&](int d) { return sameSign(d, lastDelta); });
    if (preferred.empty()) preferred = peak;
    int shift = preferred.front();
    for (int d : preferred)
        if (std::abs(d - lastDelta) < std::abs(shift - lastDelta)) shift = d;

    if (!band2) return *best >= 0.9 ? std::optional<int>(shift) : std::nullopt;
    if (const std::optional<ScrollBand> fitted = adjustedBand(*band2, shift, regionTop, regionBottom, 8)) {
        const std::optional<double> second = ScrollMatcher::bandPearson(next, prev, *fitted, shift);
        if (second && *second >= nccThreshold - 0.05) return shift;
        return std::nullopt;
    }
    return *best >= 0.9 ? std::optional<int>(shift) : std::nullopt;
}

} // namespace tosvar
