#pragma once

#include "Expected.h"
#include "ImageBuffer.h"
#include "ScrollAxisDetector.h"
#include "ScrollBand.h"
#include "ScrollCanvas.h"
#include "ScrollFullGray.h"
#include "ScrollPatch.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tosvar {

class WorkerPool;

// Where the rows of a piece of the document came from: the ingest index of
// the frame (0 for the first) and its first frame row. Kept for every strip
// so tools can check each seam against a known page.
struct ScrollRowSource {
    int frame = 0;
    int row = 0;
    friend bool operator==(const ScrollRowSource&, const ScrollRowSource&) = default;
};

// An image of document rows with where they came from.
struct ScrollPiece {
    ImageBuffer image;
    ScrollRowSource source;
};

// Turns the frames of one scrolling region into a document: a list of strips
// in document coordinates (row 0 is the top of the first frame). Each frame
// goes through `ingest`, which measures the movement, keeps track of what does
// not scroll (sticky bars, moving rows) and adds only the rows that are new,
// at the bottom or, above the start, at the top.
//
// A plain value: a copy is a snapshot that shares pixels, patches and, like
// the gray cache, the document thumbnail. The thumbnail only grows, so a
// session may ingest on a copy and keep it, but never ingest on both.
// `ingest` runs on one thread at a time; only the gray cache has a lock.
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

    // Frames and strips. With the horizontal axis every frame is stored
    // transposed, so rows are screen columns.
    int frameWidth = 0;
    int frameHeight = 0;
    std::vector<ImageBuffer> strips; // the first frame whole, then appended rows only
    std::vector<int> stripDocStarts; // document row of each strip's top
    std::vector<ScrollRowSource> stripSources;
    int totalHeight = 0;
    std::optional<ImageBuffer> lastFrame;
    int lastFrameIndex = 0; // its ingest index
    std::shared_ptr<const ScrollPatch> lastPatch, lastCoarse;
    std::optional<ImageBuffer> lastAppendedStrip;
    int framesIngested = 0;

    // Sticky bars and their votes.
    int staticTop = -1, staticBottom = -1; // rows of fixed header and footer; -1 while unknown
    int footerMedian = -1;
    std::vector<int> topVotes, bottomVotes; // the last 7 each
    int firstBottom = -1;                   // footer rows cut from the first frame, fixed at seeding
    int pairIdenticalBottom = 0;            // bottom run of the latest pair

    // Document coordinates.
    bool seeded = false;        // set at the first real movement
    int viewDocTop = 0;         // document row in the frame's top row; negative above the start
    int capturedDocBottom = 0;  // end of the rows captured at the bottom
    int contentDocTop = 0;      // start of the rows captured at the top
    int firstTop = 0;           // header rows of the first frame, fixed at seeding
    std::vector<ImageBuffer> prepended; // rows added above the start, topmost first
    std::vector<ScrollRowSource> prependedSources;
    std::optional<ImageBuffer> deepestFrame; // the frame that reached furthest down
    int deepestViewDocTop = 0;
    int deepestFrameIndex = 0;
    int lastDelta = 0;                       // last non-zero movement

    // Moving areas and recovery.
    // Per frame row, between 0 and 1: how much the row behaves like animated content.
    std::vector<float> dynRows;
    std::optional<ImageBuffer> pendingFrame; // the frame being ingested
    std::shared_ptr<ScrollFullGrayCache> fullGrays = std::make_shared<ScrollFullGrayCache>();
    std::shared_ptr<ScrollCanvas> canvas;
    int lostStreak = 0; // frames in a row without an accepted movement
    int confidentScrolls = 0;
    bool sidebarDetected = false;

    struct Result {
        ScrollResultKind kind;
        int totalHeight = 0;
        std::optional<int> delta; // the placed movement
        friend bool operator==(const Result&, const Result&) = default;
    };

    // Takes the next frame of the region.
    Result ingest(const ImageBuffer& frame);

    bool isEmpty() const { return strips.empty(); }
    int frameCount() const { return static_cast<int>(strips.size()); }

    // The trailing inset of a width: columns at the right edge kept out of
    // matching (an overlay scroll bar lives there): 32 from 800 pixels wide,
    // 12 from 240, else none.
    static int trailingInset(int width);

    // Ingest steps.

    Result ingestOriented(const ImageBuffer& frame);
    // Records sticky-bar votes from a measured movement.
    void updateSticky(const ScrollPatch& prev, const ScrollPatch& next, int delta, bool force);
    // Ages the moving-row marks and marks again every row of `next` whose
    // changed pixels miss their partner in `prev` (row y + delta) by more
    // than `staticThreshold * 3 + 6` on average. Rows without a partner only age.
    void updateDynamics(const ScrollPatch& prev, const ScrollPatch& next, int delta);
    // Fixes the first frame's cut lines at the first real movement.
    void seed(const ScrollPatch& prev);
    // Sets `sidebarDetected` when a run of fixed, textured columns borders
    // the moving part.
    void detectSidebar(const ScrollPatch& prev, const ScrollPatch& next);

    // Checks a measured placement against the captured document.
    struct Placement {
        enum class Kind { corrected, noEvidence, conflict };
        Kind kind = Kind::noEvidence;
        int docTop = 0; // for `corrected`
        friend bool operator==(const Placement&, const Placement&) = default;
    };
    Placement verifyPlacement(const ScrollPatch& patch, int candidateDocTop, int regionTop, int regionBottom) const;
    // Where `band` of `patch` sits best in `window`: offset and correlation.
    struct Fit {
        int offset = 0;
        double ncc = 0;
        friend bool operator==(const Fit&, const Fit&) = default;
    };
    static std::optional<Fit> bestPlacement(const ScrollPatch& patch, const ScrollPatch& window, ScrollBand band);
    // The document row of the frame's top after tracking was lost, confirmed
    // by a second band.
    std::optional<int> relocalize(const ScrollPatch& patch, int regionTop, int regionBottom) const;
    // The most textured band of `height` rows within [from, to), when its mean
    // texture reaches 0.35.
    static std::optional<ScrollBand> relocWitnessBand(const std::vector<float>& texture, int height, int from, int to);

    // Adds the rows above `contentDocTop` that the frame shows.
    std::optional<ScrollResultKind> prependNewRows(const ImageBuffer& frame);
    // Adds the rows below `capturedDocBottom` that the frame shows.
    ScrollResultKind appendNewRows(const ImageBuffer& frame, const ScrollPatch& patch);
    // Footer rows that are not content: the fixed footer, or the bottom run
    // of the latest pair up to a third of the frame.
    int bottomCut() const;

    // Composition.

    // The document top to bottom: the first frame without its footer (with
    // prepended rows under its header), the later strips, and with
    // `includeTail` the footer rows of the frame that reached furthest.
    std::vector<ScrollPiece> pieces(bool includeTail) const;
    // The document in one image, scaled down to fit the limits; every piece
    // keeps at least one row.
    std::optional<ImageBuffer> composited(std::optional<int> maxWidth, std::optional<int> maxHeight,
                                          bool includeTail) const;
    // The whole document with its tail, in screen orientation.
    std::optional<ImageBuffer> finalize() const;
    // The whole document as PNG bytes given to `sink`, rendered `rowsPerBand`
    // rows at a time so the image never exists in one buffer.
    std::optional<Error> encodePNG(int rowsPerBand, const std::function<bool(const std::uint8_t*, std::size_t)>& sink) const;
    // Document rows [first, end) of the captured strips (prepended rows aside).
    std::optional<ImageBuffer> docWindowImage(ScrollBand docRange) const;
    // A private copy of the pixels, so a strip never pins a whole frame.
    static std::optional<ImageBuffer> detached(const ImageBuffer& image);
    // The row of the first strip under which prepended rows go in a preview.
    int prependInsertRow() const;
    const ImageBuffer* firstStrip() const { return strips.empty() ? nullptr : &strips.front(); }
    const ImageBuffer* lastPrependedStrip() const { return prepended.empty() ? nullptr : &prepended.front(); }

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
