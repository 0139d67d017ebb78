#pragma once

#include <algorithm>

namespace tosvar {

// A run of rows (or, for column measures, of any index).
struct ScrollBand {
    int start = 0;
    int height = 0;

    int end() const { return start + height; }
    friend bool operator==(const ScrollBand&, const ScrollBand&) = default;
};

// A closed range of shifts, `first` to `last` inclusive.
struct ScrollShiftRange {
    int first = 0;
    int last = 0;
    friend bool operator==(const ScrollShiftRange&, const ScrollShiftRange&) = default;
};

// One shift hypothesis: row `y` of the newer frame shows row `y + delta` of
// the older one. `mad` is its mean absolute difference in gray levels.
struct ScrollCandidate {
    int delta = 0;
    double mad = 0;
    friend bool operator==(const ScrollCandidate&, const ScrollCandidate&) = default;
};

// Rows counted from the top and from the bottom of a frame.
struct ScrollRuns {
    int top = 0;
    int bottom = 0;
    friend bool operator==(const ScrollRuns&, const ScrollRuns&) = default;
};

// A row `width` wide cut into column blocks: `max(width / blocks, 1)`
// columns each, `width / blockWidth` of them; columns past the last block
// are not used.
struct ScrollBlockSplit {
    int width = 1;
    int count = 0;

    static ScrollBlockSplit of(int rowWidth, int blocks) {
        const int blockWidth = std::max(rowWidth / std::max(blocks, 1), 1);
        return {blockWidth, rowWidth / blockWidth};
    }
};

enum class ScrollAxis : int { vertical = 0, horizontal = 1 };

} // namespace tosvar
