// Placing a frame in the captured document: checking a measured movement
// against the rows already captured, and finding a frame again after
// tracking was lost.
#include "ScrollStitcher.h"

#include "ScrollMatcher.h"
#include "ScrollOverlap.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tosvar {

namespace {

// The window of `height` rows within [from, to) with the highest texture
// sum, stepping by `step`; the first wins a tie.
std::optional<ScrollBand> mostTextured(const std::vector<float>& texture, int height, int from, int to, int step,
                                       const std::function<bool(int)>& allowed) {
    std::optional<ScrollBand> best;
    double bestSum = 0;
    from = std::max(from, 0);
    to = std::min(to, static_cast<int>(texture.size()));
    for (int start = from; start + height <= to; start += step) {
        if (!allowed(start)) continue;
        double sum = 0;
        for (int y = start; y < start + height; ++y) sum += texture[y];
        if (!best || sum > bestSum) {
            best = ScrollBand{start, height};
            bestSum = sum;
        }
    }
    if (!best || bestSum / height < 0.35) return std::nullopt;
    return best;
}

} // namespace

std::optional<ScrollStitcher::Fit> ScrollStitcher::bestPlacement(const ScrollPatch& patch, const ScrollPatch& window,
                                                                 ScrollBand band) {
    if (window.height < band.height || band.height <= 0) return std::nullopt;
    std::vector<std::optional<double>> scores;
    if (auto scan = ScrollOverlap::blockPearsonScan(patch, window, band, 12)) scores = std::move(*scan);
    if (std::none_of(scores.begin(), scores.end(), [](const auto& s) { return s.has_value(); })) {
        scores.clear();
        for (int offset = 0; offset + band.height <= window.height; ++offset)
            scores.push_back(ScrollOverlap::texturedColumnPearson(patch, window, band, offset - band.start));
    }
    std::optional<Fit> best;
    for (int offset = 0; offset < static_cast<int>(scores.size()); ++offset)
        if (scores[offset] && (!best || *scores[offset] > best->ncc)) best = Fit{offset, *scores[offset]};
    return best;
}

ScrollStitcher::Placement ScrollStitcher::verifyPlacement(const ScrollPatch& patch, int candidateDocTop, int regionTop,
                                                          int regionBottom) const {
    const Placement noEvidence{};
    const int regionH = regionBottom - regionTop;
    const int bandH = regionH < 72 ? 12 : std::min(regionH / 6, 48);
    const std::vector<float> texture = maskDynamic(patch.rowTexture());
    // The band must lie in captured rows at the candidate place.
    const std::optional<ScrollBand> band =
        mostTextured(texture, bandH, regionTop, regionBottom, 8, [&](int start) {
            return candidateDocTop + start >= firstTop && candidateDocTop + start + bandH <= capturedDocBottom;
        });
    if (!band) return noEvidence;

    const int anchor = candidateDocTop + band->start;
    const int windowTop = std::max(anchor - 26, firstTop);
    const int windowEnd = std::min(anchor + bandH + 26, capturedDocBottom);
    if (windowEnd - windowTop < bandH) return noEvidence;
    const std::optional<ImageBuffer> image = docWindowImage({windowTop, windowEnd - windowTop});
    if (!image) return noEvidence;
    const std::optional<ScrollPatch> window = ScrollPatch::fromImage(*image, sampleColumns, trailingInset(frameWidth));
    if (!window || window->width != patch.width) return noEvidence;
    const std::optional<Fit> fit = bestPlacement(patch, *window, *band);
    if (!fit) return noEvidence;

    const int drift = windowTop + fit->offset - anchor;
    if (fit->ncc >= 0.8 && std::abs(drift) <= 20) return {Placement::Kind::corrected, candidateDocTop + drift};
    if (fit->ncc < 0.6) return {Placement::Kind::conflict, 0};
    return noEvidence;
}

std::optional<ScrollBand> ScrollStitcher::relocWitnessBand(const std::vector<float>& texture, int height, int from,
                                                          int to) {
    return mostTextured(texture, height, from, to, 1, [](int) { return true; });
}

std::optional<int> ScrollStitcher::relocalize(const ScrollPatch& patch, int regionTop, int regionBottom) const {
    if (!canvas || canvas->height() <= 8) return std::nullopt;
    const int regionH = regionBottom - regionTop;
    const int bandH = regionH < 48 ? 16 : std::min(regionH / 3, 240);
    if (bandH + 8 > regionH) return std::nullopt;
    const std::vector<float> texture = patch.rowTexture();
    const ScrollBand band = selectMidBand(texture, regionTop, regionBottom, bandH)
                                .value_or(ScrollBand{regionTop + (regionH - bandH) / 2, bandH});
    double bandTexture = 0;
    for (int y = band.start; y < band.end(); ++y) bandTexture += texture[y];
    if (bandTexture / bandH < 0.55) return std::nullopt;

    const std::optional<int> position = canvas->locate(band, patch, matchThreshold, 4.0, workers);
    if (!position) return std::nullopt;

    // The best offset of `probe` in document rows [from, to): the document
    // row of the frame's top, when it matches within the threshold.
    auto slide = [&](ScrollBand probe, int from, int to) -> std::optional<int> {
        from = std::max(from, firstTop);
        to = std::min(to, capturedDocBottom);
        if (to - from < probe.height) return std::nullopt;
        const std::optional<ImageBuffer> image = docWindowImage({from, to - from});
        if (!image) return std::nullopt;
        const std::optional<ScrollPatch> window = ScrollPatch::fromImage(*image, sampleColumns, trailingInset(frameWidth));
        if (!window || window->width != patch.width) return std::nullopt;
        std::optional<ScrollCandidate> best;
        for (int offset = 0; offset + probe.height <= window->height; ++offset) {
            const std::optional<double> score = ScrollMatcher::bandScore(patch, *window, probe, offset - probe.start);
            if (score && (!best || *score < best->mad)) best = ScrollCandidate{offset, *score};
        }
        if (!best || best->mad > matchThreshold) return std::nullopt;
        return from + best->delta - probe.start;
    };
    const int rowScale = canvas->rowScale();
    const std::optional<int> docTop = slide(band, *position - 3 * rowScale, *position + bandH + 3 * rowScale);
    if (!docTop) return std::nullopt;

    // A second band, above the first or else below it, must agree.
    const int witnessH = bandH < 24 ? 12 : std::min(bandH / 2, 96);
    std::optional<ScrollBand> witness =
        relocWitnessBand(texture, witnessH, regionTop, std::max(band.start - 8, regionTop));
    if (!witness) witness = relocWitnessBand(texture, witnessH, std::min(band.end() + 8, regionBottom), regionBottom);
    if (!witness) return std::nullopt;
    const int predicted = *docTop + witness->start;
    if (predicted < firstTop || predicted + witness->height > capturedDocBottom) return std::nullopt;
    const std::optional<int> confirmed = slide(*witness, predicted - 6, predicted + witness->height + 6);
    if (!confirmed || std::abs(*confirmed - *docTop) > 2) return std::nullopt;
    return docTop;
}

} // namespace tosvar
