#include "CorpusEvaluation.h"

#include "PngDecoder.h"

#include <chrono>

namespace tosvar::ScrollCorpus {

Expected<FolderResult> evaluateFolder(const std::filesystem::path& folder, WorkerPool* workers) {
    Expected<Truth> truth = readTruth(folder);
    if (!truth) return truth.error();
    FolderResult result{std::move(*truth), {}};
    const Truth& t = result.truth;
    PairSearch search(workers);
    std::optional<ImageBuffer> prev;
    for (std::size_t i = 0; i < t.files.size(); ++i) {
        Expected<ImageBuffer> frame = PngDecoder::decodeFile(folder / t.files[i]);
        if (!frame) return frame.error();
        if (prev) {
            const auto start = std::chrono::steady_clock::now();
            const PairSearch::Measurement found = search.measure(*prev, *frame, t.axis);
            const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
            const int trueDelta = t.offsets[i] - t.offsets[i - 1];
            result.pairs.push_back({static_cast<int>(i), t.views[i], trueDelta, found, judge(found, trueDelta, t.alike[i]), ms});
        }
        prev = std::move(*frame);
    }
    return result;
}

} // namespace tosvar::ScrollCorpus
