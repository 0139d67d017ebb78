#pragma once

#include "Expected.h"
#include "PairSearch.h"
#include "ScrollCorpus.h"

#include <filesystem>
#include <vector>

namespace tosvar::ScrollCorpus {

// The search over one pair of consecutive frames against the truth.
struct PairResult {
    int frame = 0; // the later frame of the pair
    PairView view = PairView::unique;
    int trueDelta = 0;
    PairSearch::Measurement found;
    Outcome outcome = Outcome::none;
    double milliseconds = 0; // preparing the pair (patches, region) and searching it
};

struct FolderResult {
    Truth truth;
    std::vector<PairResult> pairs;
};

// Reads a corpus folder (truth.json and its frames) and runs the search over
// each consecutive pair, in order, as one session would.
Expected<FolderResult> evaluateFolder(const std::filesystem::path& folder, WorkerPool* workers = nullptr);

} // namespace tosvar::ScrollCorpus
