#pragma once

#include "Expected.h"
#include "ScrollCorpus.h"
#include "ScrollStitcher.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace tosvar {
class WorkerPool;
}

namespace tosvar::ScrollCorpus {

// A whole corpus sequence replayed through a stitcher, and its document
// checked against the page the sequence was drawn from.
struct SequenceResult {
    Truth truth;
    std::vector<ScrollStitcher::Result> results; // per frame
    std::vector<double> ingestMilliseconds;      // per frame
    std::optional<ScrollAxis> axis;              // the axis the replay settled on

    int outputHeight = 0;   // rows of the document with its tail, along the axis
    int expectedHeight = 0; // fixed bars once plus every page row shown
    int seams = 0;          // joins between pieces that both show page rows
    int badSeams = 0;       // joins that skip or repeat page rows
    int duplicatedRows = 0; // page rows in the document more than once, counted beyond the first
    int missingRows = 0;    // page rows shown by some frame but not in the document
    bool leadOnce = true;   // the header (sideways: the sidebar) is there exactly once
    bool trailOnce = true;  // the footer is there exactly once
    long long comparedPixels = 0;
    long long mismatchedPixels = 0; // off the true page by more than 16 in a channel
    int misplacedFrames = 0;        // results with a movement that put the frame in the wrong place
    int lostEpisodes = 0;           // runs of lost frames after seeding
    int recoveredRight = 0;         // of those, ended by a correct placement
};

// Replays the frames of a corpus folder (`detectAxis`: through both
// stitchers until the axis is decided) and measures the document. The page
// is drawn again from the seed in truth.json.
Expected<SequenceResult> evaluateSequence(const std::filesystem::path& folder, bool detectAxis,
                                          WorkerPool* workers = nullptr);

} // namespace tosvar::ScrollCorpus
