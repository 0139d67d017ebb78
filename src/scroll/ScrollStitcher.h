#pragma once

#include "ImageBuffer.h"
#include "ScrollBand.h"
#include "ScrollFullGray.h"
#include "ScrollPatch.h"

#include <memory>
#include <optional>
#include <vector>

namespace tosvar {

class WorkerPool;

// Turns the frames of one scrolling region into a document. A plain value:
// a copy is a full snapshot, sharing only the gray cache. This holds the
// configuration and the state the movement search reads, and the search
// itself: by how many rows the content moved between two frames.
struct ScrollStitcher {
    ScrollStitcher(int sampleColumns, double matchThreshold, double staticThreshold, int minOverlap, ScrollAxis axis);

    // Configuration.
    int sampleColumns;      // columns of a patch
    double matchThreshold;  // largest mean absolute difference of a match, in gray levels
    double staticThreshold; // largest difference of a row or column that counts as unchanged
    int minOverlap;         // smallest overlap of two frames in rows; 0 or less: automatic
    int coarseRowScale = 4;
    int coarseColScale = 2;
    double nccThreshold = 0.8;
    int relocEvery = 3;
    ScrollAxis axis;
    // Threads for the long shift scans; none runs everything on the calling
    // thread. The answer never depends on it.
    WorkerPool* workers = nullptr;

    // Frames.
    int frameWidth = 0;
    int frameHeight = 0;
    std::optional<ImageBuffer> lastFrame;
    std::optional<ImageBuffer> pendingFrame; // the frame being ingested
    int lastDelta = 0;                       // last non-zero movement
    // Per frame row, between 0 and 1: how much the row behaves like animated content.
    std::vector<float> dynRows;
    std::shared_ptr<ScrollFullGrayCache> fullGrays = std::make_shared<ScrollFullGrayCache>();

    // Ages the moving-row marks and marks again every row of `next` whose
    // changed pixels miss their partner in `prev` (row y + delta) by more
    // than `staticThreshold * 3 + 6` on average. Rows without a partner only age.
    void updateDynamics(const ScrollPatch& prev, const ScrollPatch& next, int delta);

    // Columns at the right edge kept out of matching (an overlay scroll bar
    // lives there): 32 from 800 pixels wide, 12 from 240, else none.
    static int trailingInset(int width);

    // The movement search. `prev` and `next` are the patches of the last and
    // the new frame, the coarse ones their `coarsened(coarseRowScale,
    // coarseColScale)` forms. Rows outside [regionTop, regionBottom) hold
    // fixed bars and are ignored; `maxOffset` bounds the shift both ways.
    // Nothing when no shift is proven.
    std::optional<int> findDelta(const ScrollPatch& prev, const ScrollPatch& prevCoarse, const ScrollPatch& next,
                                 const ScrollPatch& nextCoarse, int regionTop, int regionBottom, int maxOffset) const;

    // Its steps.

    // Texture with the rows of moving content set to 0.
    std::vector<float> maskDynamic(std::vector<float> texture) const;
    // A well-textured band in the middle of the region, clear of moving rows.
    std::optional<ScrollBand> selectMidBand(const std::vector<float>& texture, int regionTop, int regionBottom,
                                            int bandH) const;

    struct Arbitration {
        enum class Kind {
            decided,   // one hypothesis won outright
            resolved,  // a close race went through the full-resolution check
            undecided, // nothing usable
        };
        Kind kind = Kind::undecided;
        std::optional<int> delta;
        bool decisive = false;
        friend bool operator==(const Arbitration&, const Arbitration&) = default;
    };
    // Judges the candidates on all column blocks at once.
    Arbitration arbitrate(const std::vector<ScrollCandidate>& candidates, const ScrollPatch& next,
                          const ScrollPatch& prev, const std::vector<float>& texture, int regionTop,
                          int regionBottom) const;

    // A wider look on the coarse patches over textured rows only.
    std::vector<ScrollCandidate> denseCandidates(const ScrollPatch& next, const ScrollPatch& prev,
                                                 const ScrollPatch& nextCoarse, const ScrollPatch& prevCoarse,
                                                 const std::vector<float>& texture, int regionTop, int regionBottom,
                                                 int maxOffset) const;

    struct Selection {
        int delta = 0;
        bool decisive = false;
        friend bool operator==(const Selection&, const Selection&) = default;
    };
    // Settles a near tie on full-width gray of `lastFrame` and `pendingFrame`.
    std::optional<Selection> fullResolutionSelect(const std::vector<int>& deltas, int regionTop, int regionBottom) const;

    // Correlation search for pages whose differences are too faint for
    // absolute scores.
    std::optional<int> nccFallback(const ScrollPatch& prev, const ScrollPatch& next, ScrollBand band1,
                                   std::optional<ScrollBand> band2, int regionTop, int regionBottom,
                                   int maxOffset) const;
};

} // namespace tosvar
