#pragma once

#include "ScrollBand.h"
#include "ScrollPatch.h"

#include <optional>
#include <vector>

namespace tosvar {

class WorkerPool;

// A thumbnail of the whole captured document, built row by row: `rowScale`
// document rows average into one canvas row of `width` columns. Used to find
// a frame again when tracking is lost. Owned by one stitcher; not thread-safe.
class ScrollCanvas {
public:
    ScrollCanvas(int width, int rowScale);

    int width() const { return width_; }
    int rowScale() const { return rowScale_; }
    int height() const { return static_cast<int>(rows_.size()) / width_; }
    int docRows() const { return docRows_; }
    int pendingCount() const { return pendingCount_; }
    const std::vector<float>& rows() const { return rows_; }

    // Adds the patch rows of `rowRange` that lie inside it, each reduced to
    // the canvas width. A patch narrower than the canvas is ignored. Only
    // finished canvas rows are visible in `rows()`.
    void push(const ScrollPatch& patch, ScrollBand rowRange);

    // The document row where `band` of `patch` sits, when its best position
    // is within `madGate` and beats every position 3 or more canvas rows away
    // by at least `dominance`.
    std::optional<int> locate(ScrollBand band, const ScrollPatch& patch, double madGate, double dominance,
                              WorkerPool* pool = nullptr) const;

private:
    const float* row(int r) const { return rows_.data() + static_cast<std::size_t>(r) * static_cast<std::size_t>(width_); }

    int rowScale_;
    int width_;
    std::vector<float> rows_;
    std::vector<float> pending_;
    int pendingCount_ = 0;
    int docRows_ = 0;
};

} // namespace tosvar
