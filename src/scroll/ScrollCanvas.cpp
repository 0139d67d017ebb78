#include "ScrollCanvas.h"

#include "ScrollKernels.h"
#include "ShiftScan.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tosvar {

ScrollCanvas::ScrollCanvas(int width, int rowScale)
    : rowScale_(std::max(rowScale, 1)), width_(std::max(width, 1)), pending_(static_cast<std::size_t>(width_), 0.0f) {}

void ScrollCanvas::push(const ScrollPatch& patch, ScrollBand rowRange) {
    if (patch.width < width_) return;
    const int step = std::max(patch.width / width_, 1);
    for (int y = std::max(rowRange.start, 0); y < std::min(rowRange.end(), patch.height); ++y) {
        const float* source = patch.row(y);
        for (int c = 0; c < width_; ++c) {
            const int x0 = c * step;
            const int x1 = std::min(x0 + step, patch.width);
            float sum = 0;
            for (int x = x0; x < x1; ++x) sum += source[x];
            pending_[c] += sum / static_cast<float>(x1 - x0);
        }
        ++pendingCount_;
        ++docRows_;
        if (pendingCount_ == rowScale_) {
            for (float& value : pending_) {
                rows_.push_back(value / static_cast<float>(pendingCount_));
                value = 0;
            }
            pendingCount_ = 0;
        }
    }
}

std::optional<int> ScrollCanvas::locate(ScrollBand band, const ScrollPatch& patch, double madGate, double dominance,
                                        WorkerPool* pool) const {
    const int covered = band.height / rowScale_;
    if (covered == 0 ? height() < 2 : height() <= covered) return std::nullopt;
    if (patch.width < width_) return std::nullopt;

    // Canvas rows average document rows from multiples of `rowScale`, and a
    // band that starts off that grid averages other rows and matches poorly.
    // The band is tried from each of its first `rowScale` rows; the phase
    // with the best match decides, against its own runner-up.
    struct Match {
        double best = std::numeric_limits<double>::infinity();
        double runnerUp = std::numeric_limits<double>::infinity();
        int position = -1; // document row of the band's top
    };
    std::optional<Match> chosen;
    for (int phase = 0; phase < rowScale_ && phase < band.height; ++phase) {
        ScrollCanvas scratch(width_, rowScale_);
        scratch.push(patch, {band.start + phase, band.height - phase});
        const int scratchRows = scratch.height();
        if (scratchRows == 0) continue;

        const int positions = height() - scratchRows + 1;
        std::vector<double> scores(static_cast<std::size_t>(std::max(positions, 0)));
        scanShifts(pool, positions, static_cast<long long>(scratchRows) * width_, [&](int p) {
            double sum = 0;
            for (int r = 0; r < scratchRows; ++r) sum += ScrollKernels::absDiffSum(row(p + r), scratch.row(r), width_);
            scores[p] = sum / (double(scratchRows) * width_);
        });

        Match match;
        int bestRow = -1;
        for (int p = 0; p < positions; ++p) {
            const double score = scores[p];
            if (score < match.best) {
                if (bestRow >= 0 && std::abs(p - bestRow) >= 3) match.runnerUp = match.best;
                match.best = score;
                bestRow = p;
            } else if (score < match.runnerUp && std::abs(p - bestRow) >= 3) {
                match.runnerUp = score;
            }
        }
        if (bestRow < 0) continue;
        match.position = bestRow * rowScale_ - phase;
        if (!chosen || match.best < chosen->best) chosen = match;
    }
    if (!chosen || chosen->best > madGate || chosen->runnerUp - chosen->best < dominance) return std::nullopt;
    return chosen->position;
}

} // namespace tosvar
