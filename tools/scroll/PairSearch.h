#pragma once

#include "ImageBuffer.h"
#include "ScrollBand.h"
#include "ScrollCorpus.h"
#include "ScrollStitcher.h"

#include <optional>
#include <variant>

namespace tosvar::ScrollCorpus {

// The movement between consecutive frames, measured the way a stitcher's
// ingest does it but from each pair alone: the unchanged rows at the top
// and bottom bound the region; only the last movement and the marks of
// moving rows are carried from pair to pair. No sticky-bar votes and no
// placement in a document, so it measures the search itself.
class PairSearch {
public:
    explicit PairSearch(WorkerPool* workers = nullptr);

    struct Measurement {
        std::optional<int> delta; // nothing when no movement is proven
        // The frames match where they stand (or differ only in a thin strip),
        // so no search ran and the delta is 0.
        bool unchanged = false;
    };

    // A pair made ready for the search: frames in rows (sideways ones
    // transposed), their patches and the region between the unchanged runs.
    struct Prepared {
        ImageBuffer prev, next;
        ScrollPatch prevPatch, nextPatch, prevCoarse, nextCoarse;
        int regionTop = 0, regionBottom = 0, maxOffset = 0;
    };
    // A measurement when the pair needs no search (or cannot have one).
    std::variant<Measurement, Prepared> prepare(const ImageBuffer& prev, const ImageBuffer& next, ScrollAxis axis) const;
    // Runs the search and carries its answer to the next pair.
    Measurement search(const Prepared& pair);

    Measurement measure(const ImageBuffer& prev, const ImageBuffer& next, ScrollAxis axis);

    // The search's state as the next pair will find it, with `pair`'s frames
    // shown for the full-resolution check.
    ScrollStitcher stitcherFor(const Prepared& pair) const;

private:
    ScrollStitcher stitcher_;
};

enum class Outcome { exact, alike, wrong, none };
// Exact for the true delta; none when no delta was proven, or when the
// frames read as unchanged although the page moved (nothing showed the
// movement); alike for a delta of `alike`, which the frames cannot tell from
// the true one; wrong for any other delta.
Outcome judge(const PairSearch::Measurement& measurement, int trueDelta, const std::vector<ShiftRange>& alike);

} // namespace tosvar::ScrollCorpus
