// The ingest of ScrollStitcher: the region between the unchanged runs, the
// movement, the sticky bars and moving rows it teaches, and the rows it adds.
#include "ScrollStitcher.h"

#include "ScrollMatcher.h"
#include "ScrollTranspose.h"

#include <algorithm>
#include <cstdlib>

namespace tosvar {

namespace {

constexpr float flatTexture = 0.35f;
constexpr std::size_t maxVotes = 7;

// The element at index count / 2 of the sorted values; -1 for none.
int median(std::vector<int> values) {
    if (values.empty()) return -1;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void vote(std::vector<int>& votes, int value) {
    votes.push_back(value);
    if (votes.size() > maxVotes) votes.erase(votes.begin());
}

} // namespace

ScrollStitcher::ScrollStitcher(int sampleColumns_, double matchThreshold_, double staticThreshold_, int minOverlap_,
                               ScrollAxis axis_)
    : sampleColumns(sampleColumns_),
      matchThreshold(matchThreshold_),
      staticThreshold(staticThreshold_),
      minOverlap(minOverlap_),
      axis(axis_) {}

int ScrollStitcher::trailingInset(int width) {
    if (width >= 800) return 32;
    if (width >= 240) return 12;
    return 0;
}

ScrollStitcher::Result ScrollStitcher::ingest(const ImageBuffer& frame) {
    if (axis == ScrollAxis::vertical) return ingestOriented(frame);
    const std::optional<ImageBuffer> turned = ScrollTranspose::transposed(frame);
    if (!turned) {
        ++framesIngested;
        return {ScrollResultKind::of(ScrollResultKind::Tag::lowConfidence), totalHeight, std::nullopt};
    }
    return ingestOriented(*turned);
}

ScrollStitcher::Result ScrollStitcher::ingestOriented(const ImageBuffer& frame) {
    using Tag = ScrollResultKind::Tag;
    const int index = framesIngested++;
    auto outcome = [&](ScrollResultKind kind, std::optional<int> delta) {
        pendingFrame.reset();
        return Result{kind, totalHeight, delta};
    };
    const auto lowConfidence = [&] { return outcome(ScrollResultKind::of(Tag::lowConfidence), std::nullopt); };

    std::optional<ScrollPatch> made = ScrollPatch::fromImage(frame, sampleColumns, trailingInset(frame.width()));
    if (!made) return lowConfidence();
    const auto patch = std::make_shared<const ScrollPatch>(std::move(*made));
    const int H = patch->height;
    auto keep = [&](std::shared_ptr<const ScrollPatch> coarse) {
        lastFrame = frame;
        lastFrameIndex = index;
        lastPatch = patch;
        lastCoarse = std::move(coarse);
    };

    if (strips.empty()) {
        frameWidth = frame.width();
        frameHeight = frame.height();
        strips = {frame};
        stripDocStarts = {0};
        stripSources = {{index, 0}};
        totalHeight = H;
        dynRows.assign(static_cast<std::size_t>(H), 0.0f);
        keep(nullptr);
        return outcome(ScrollResultKind::of(Tag::first), std::nullopt);
    }
    if (frame.width() != frameWidth || frame.height() != frameHeight || !lastPatch) return lowConfidence();

    pendingFrame = frame;
    const ScrollPatch& prev = *lastPatch;
    const ScrollRuns same = ScrollMatcher::identicalRuns(prev, *patch, staticThreshold);
    const auto unchanged = [&] {
        keep(nullptr);
        return outcome(ScrollResultKind::of(Tag::noChange), 0);
    };
    if (same.top + same.bottom >= H) return unchanged();
    pairIdenticalBottom = same.bottom;

    // Flat rows at the inner edge of an unchanged run may still be content.
    const std::vector<float> texture = prev.rowTexture();
    int topT = same.top, bottomT = same.bottom;
    while (topT > 0 && texture[topT - 1] < flatTexture) --topT;
    while (bottomT > 0 && texture[H - bottomT] < flatTexture) --bottomT;
    const int st = std::max(staticTop, 0), sb = std::max(staticBottom, 0);
    const int regionTop = std::max(topT, st);
    const int regionBottom = std::min(H - sb, H - bottomT);
    const int regionH = regionBottom - regionTop;

    // Only a thin strip of the frame differs.
    const int movable = std::min(H - sb, H - same.bottom) - std::max(st, same.top);
    const int limit = H < 128 ? 16 : H / 8;
    if (movable < limit && H - 2 * limit <= same.top + same.bottom) return unchanged();

    const int overlap = minOverlap > 0 ? minOverlap : regionH < 16 ? 4 : regionH / 4;
    if (regionH <= std::max(overlap, 8)) return lowConfidence();

    auto nextCoarse = std::make_shared<const ScrollPatch>(patch->coarsened(coarseRowScale, coarseColScale));
    const ScrollPatch prevCoarse = lastCoarse ? *lastCoarse : prev.coarsened(coarseRowScale, coarseColScale);
    std::optional<int> delta =
        findDelta(prev, prevCoarse, *patch, *nextCoarse, regionTop, regionBottom, regionH - overlap);

    int placed = delta.value_or(0);
    if (delta && *delta != 0 && seeded) {
        const Placement check = verifyPlacement(*patch, viewDocTop + *delta, regionTop, regionBottom);
        if (check.kind == Placement::Kind::conflict) delta.reset();
        else if (check.kind == Placement::Kind::corrected) placed = check.docTop - viewDocTop;
    }

    if (!delta) {
        ++lostStreak;
        if (!seeded || lostStreak % std::max(relocEvery, 1) != 0) return lowConfidence();
        const std::optional<int> docTop = relocalize(*patch, regionTop, regionBottom);
        if (!docTop) return lowConfidence();
        lostStreak = 0;
        const int jump = *docTop - viewDocTop;
        viewDocTop = *docTop;
        keep(std::move(nextCoarse));
        return outcome(appendNewRows(frame, *patch), jump);
    }

    lostStreak = 0;
    updateSticky(prev, *patch, *delta, !seeded && *delta != 0);
    updateDynamics(prev, *patch, *delta);
    if (!seeded && *delta != 0) seed(prev);
    keep(std::move(nextCoarse));
    if (!seeded) return outcome(ScrollResultKind::of(Tag::noChange), 0);

    viewDocTop += placed;
    if (placed != 0) lastDelta = placed;
    if (const std::optional<ScrollResultKind> added = prependNewRows(frame)) return outcome(*added, placed);
    return outcome(appendNewRows(frame, *patch), placed);
}

void ScrollStitcher::updateSticky(const ScrollPatch& prev, const ScrollPatch& next, int delta, bool force) {
    const int moved = std::abs(delta);
    if (moved < 8 && !(force && delta != 0)) return;
    const ScrollRuns runs = ScrollMatcher::stickyRuns(prev, next, delta, staticThreshold);
    vote(topVotes, std::min(runs.top, moved));
    vote(bottomVotes, std::min(runs.bottom, moved));
    staticTop = median(topVotes);
    staticBottom = *std::max_element(bottomVotes.begin(), bottomVotes.end());
    footerMedian = median(bottomVotes);
    ++confidentScrolls;
    if (moved >= 8 && confidentScrolls % 12 == 1) detectSidebar(prev, next);
}

void ScrollStitcher::updateDynamics(const ScrollPatch& prev, const ScrollPatch& next, int delta) {
    if (dynRows.size() != static_cast<std::size_t>(next.height)) dynRows.assign(static_cast<std::size_t>(next.height), 0.0f);
    const double moving = staticThreshold * 3 + 6;
    for (int y = 0; y < next.height; ++y) {
        const float decayed = dynRows[y] * 0.6f;
        const bool partnered = prev.containsRow(y + delta) && prev.containsRow(y);
        dynRows[y] = partnered && next.changedRowMAD(y, prev, y + delta, staticThreshold) > moving ? 1.0f : decayed;
    }
}

void ScrollStitcher::seed(const ScrollPatch& prev) {
    const int H = frameHeight;
    seeded = true;
    firstBottom = std::max(std::max(staticBottom, std::min(H / 3, pairIdenticalBottom)), 0);
    capturedDocBottom = H - firstBottom;
    viewDocTop = 0;
    contentDocTop = firstTop = std::min(std::max(staticTop, 0), capturedDocBottom);
    deepestFrame = strips.front();
    deepestViewDocTop = 0;
    deepestFrameIndex = stripSources.front().frame;
    canvas = std::make_shared<ScrollCanvas>(std::min(std::max(prev.width, 1), 192), 4);
    canvas->push(prev, {0, capturedDocBottom});
}

void ScrollStitcher::detectSidebar(const ScrollPatch& prev, const ScrollPatch& next) {
    const ScrollBand rows{std::max(staticTop, 0), next.height - std::max(staticBottom, 0) - std::max(staticTop, 0)};
    const int width = next.width;
    if (rows.height < 33 || prev.width != width || width < 17) return;
    auto fixedColumn = [&](int x) { return next.columnMAD(x, prev, x, rows) <= staticThreshold; };
    int left = 0;
    while (left < width && fixedColumn(left)) ++left;
    int right = 0;
    while (right < width - left && fixedColumn(width - 1 - right)) ++right;
    const int minRun = width < 96 ? 12 : width / 8;
    auto counts = [&](int first, int run) {
        if (run < minRun) return false;
        int textured = 0;
        for (int x = first; x < first + run; ++x) textured += next.columnTexture(x, rows) > 1.0;
        return textured >= (run < 16 ? 4 : run / 4);
    };
    if (counts(0, left) || counts(width - right, right)) sidebarDetected = true;
}

int ScrollStitcher::bottomCut() const {
    return std::max({staticBottom, std::min(frameHeight / 3, pairIdenticalBottom), 0});
}

std::optional<ScrollResultKind> ScrollStitcher::prependNewRows(const ImageBuffer& frame) {
    const int top = std::max(staticTop, 0);
    const int rows = contentDocTop - viewDocTop - top;
    if (rows <= 0 || top + rows > frameHeight - bottomCut()) return std::nullopt;
    const std::optional<ImageBuffer> strip = detached(frame.cropped({0, top, frame.width(), rows}));
    if (!strip) return std::nullopt;
    prepended.insert(prepended.begin(), *strip);
    prependedSources.insert(prependedSources.begin(), {framesIngested - 1, top});
    contentDocTop -= rows;
    totalHeight += rows;
    return ScrollResultKind::prepended(rows);
}

ScrollResultKind ScrollStitcher::appendNewRows(const ImageBuffer& frame, const ScrollPatch& patch) {
    if (viewDocTop >= deepestViewDocTop) {
        deepestFrame = frame;
        deepestViewDocTop = viewDocTop;
        deepestFrameIndex = framesIngested - 1;
    }
    const int visibleBottom = frameHeight - bottomCut();
    // A jump larger than the frame adds only what the frame shows.
    const int rows = std::min(viewDocTop + visibleBottom - capturedDocBottom, visibleBottom - std::max(staticTop, 0));
    const auto nothing = ScrollResultKind::of(ScrollResultKind::Tag::noChange);
    if (rows <= 0) return nothing;
    const std::optional<ImageBuffer> strip = detached(frame.cropped({0, visibleBottom - rows, frame.width(), rows}));
    if (!strip) return nothing;
    strips.push_back(*strip);
    stripDocStarts.push_back(capturedDocBottom);
    stripSources.push_back({framesIngested - 1, visibleBottom - rows});
    lastAppendedStrip = *strip;
    capturedDocBottom += rows;
    totalHeight += rows;
    if (canvas) canvas->push(patch, {visibleBottom - rows, rows});
    return ScrollResultKind::appended(rows);
}

} // namespace tosvar
