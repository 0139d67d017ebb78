#include "ScrollStitcher.h"
#include "ScrollTestPatterns.h"
#include "WorkerPool.h"

#include <gtest/gtest.h>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

using Kind = ScrollStitcher::Arbitration::Kind;

ScrollStitcher newStitcher() { return ScrollStitcher(384, 18.0, 3.0, 0, ScrollAxis::vertical); }

// Two frames of one page and what the search needs of them.
struct FramePair {
    ScrollPatch prev, next;

    FramePair(const ScrollPatch& page, int prevTop, int nextTop, int height)
        : prev(viewport(page, prevTop, height)), next(viewport(page, nextTop, height)) {}

    std::optional<int> search(const ScrollStitcher& stitcher, int regionTop, int regionBottom) const {
        const int regionH = regionBottom - regionTop;
        return stitcher.findDelta(prev, prev.coarsened(4, 2), next, next.coarsened(4, 2), regionTop, regionBottom,
                                  regionH - regionH / 4);
    }
    // Hands the frames to the stitcher as images, for the full-resolution check.
    void showTo(ScrollStitcher& stitcher) const {
        stitcher.frameWidth = prev.width;
        stitcher.frameHeight = prev.height;
        stitcher.lastFrame = imageOf(prev);
        stitcher.pendingFrame = imageOf(next);
    }
};

// Rows of noise that repeat every `period` rows: a table of one repeated line.
ScrollPatch repeatedLines(int width, int height, int period) {
    const ScrollPatch line = noisePage(width, period, 77);
    ScrollPatch page{width, height, {}};
    for (int y = 0; y < height; ++y) page.pixels.insert(page.pixels.end(), line.row(y % period), line.row(y % period) + width);
    return page;
}

} // namespace

TEST(ScrollDeltaSearch, MaskDynamicZeroesMovingRowsOnlyWhenTheLengthsAgree) {
    ScrollStitcher stitcher = newStitcher();
    const std::vector<float> texture = {1, 2, 3, 4};
    EXPECT_EQ(stitcher.maskDynamic(texture), texture);
    stitcher.dynRows = {0, 0.31f, 0.3f, 1};
    EXPECT_EQ(stitcher.maskDynamic(texture), (std::vector<float>{1, 0, 3, 0}));
    stitcher.dynRows = {1, 1, 1};
    EXPECT_EQ(stitcher.maskDynamic(texture), texture);
}

TEST(ScrollDeltaSearch, SelectMidBandPrefersTexturedRowsClearOfMovingOnes) {
    ScrollStitcher stitcher = newStitcher();
    std::vector<float> texture(120, 1.0f);
    // Region 0..120, band 10: windows start at max(40, 14) = 40, 44, ... up to 110.
    EXPECT_EQ(stitcher.selectMidBand(texture, 0, 120, 10), (ScrollBand{40, 10})) << "a tie goes to the earliest";
    for (int y = 60; y < 70; ++y) texture[y] = 3.0f;
    EXPECT_EQ(stitcher.selectMidBand(texture, 0, 120, 10), (ScrollBand{60, 10}));
    stitcher.dynRows.assign(120, 0.0f);
    stitcher.dynRows[65] = 1.0f; // a moving row costs 60: the band steps around it, the earlier of two equals
    EXPECT_EQ(stitcher.selectMidBand(texture, 0, 120, 10), (ScrollBand{52, 10}));
    EXPECT_FALSE(stitcher.selectMidBand(std::vector<float>(120, 0.49f), 0, 120, 10)) << "mean below 0.5";
    EXPECT_FALSE(stitcher.selectMidBand(texture, 0, 40, 20)) << "no room below the first third";
}

TEST(ScrollDeltaSearch, FindDeltaFollowsShiftsBothWaysOnBothPaths) {
    const ScrollPatch page = noisePage(96, 900, 1);
    const ScrollStitcher stitcher = newStitcher();
    // Coarse path: a region of 300 rows.
    for (int shift : {1, 3, 37, -50, 150, 224, -224})
        EXPECT_EQ(FramePair(page, 300, 300 + shift, 300).search(stitcher, 0, 300), shift) << shift;
    // Full path: a region under 96 rows.
    for (int shift : {2, -9, 40})
        EXPECT_EQ(FramePair(page, 300, 300 + shift, 300).search(stitcher, 100, 190), shift) << shift;
    // A still frame is never arbitrated; it comes back through confirmation.
    EXPECT_EQ(FramePair(page, 300, 300, 300).search(stitcher, 0, 300), 0);
}

TEST(ScrollDeltaSearch, FindDeltaAnswersNoneRatherThanGuess) {
    const ScrollStitcher stitcher = newStitcher();
    const FramePair unrelated(noisePage(96, 900, 2), 0, 0, 300);
    FramePair different = unrelated;
    different.next = noisePage(96, 300, 3);
    EXPECT_FALSE(different.search(stitcher, 0, 300));
    const FramePair flat(flatPatch(96, 900, 200), 0, 60, 300);
    EXPECT_FALSE(flat.search(stitcher, 0, 300));
    EXPECT_FALSE(flat.search(stitcher, 100, 170));
}

TEST(ScrollDeltaSearch, FindDeltaGivesTheSameAnswerOnAPool) {
    const ScrollPatch page = noisePage(384, 3000, 4);
    ScrollStitcher alone = newStitcher();
    ScrollStitcher pooled = newStitcher();
    WorkerPool pool(2, "delta-test");
    pooled.workers = &pool;
    for (int shift : {0, 5, 333, -700}) {
        const FramePair pair(page, 1000, 1000 + shift, 1000);
        const auto answer = pair.search(alone, 0, 1000);
        EXPECT_EQ(answer, shift);
        EXPECT_EQ(pair.search(pooled, 0, 1000), answer) << shift;
    }
}

TEST(ScrollDeltaSearch, DenseCandidatesLookPastAFlatSearchBand) {
    // The top of the new frame is blank, so the fixed search band proves nothing.
    ScrollPatch page = noisePage(96, 600, 5);
    for (int y = 150; y < 260; ++y)
        for (int x = 0; x < 96; ++x) page.pixels[std::size_t(y) * 96 + x] = 240;
    const FramePair pair(page, 100, 160, 300);
    const ScrollStitcher stitcher = newStitcher();
    const auto candidates = stitcher.denseCandidates(pair.next, pair.prev, pair.next.coarsened(4, 2),
                                                     pair.prev.coarsened(4, 2), pair.next.rowTexture(), 0, 300, 225);
    EXPECT_TRUE(std::any_of(candidates.begin(), candidates.end(),
                            [](const ScrollCandidate& c) { return c.delta == 60 && c.mad == 0; }));
    EXPECT_TRUE(std::none_of(candidates.begin(), candidates.end(), [](const ScrollCandidate& c) { return c.delta == 0; }));
    EXPECT_EQ(pair.search(stitcher, 0, 300), 60);
}

TEST(ScrollDeltaSearch, ArbitrateDecidesAClearWinnerAndIgnoresShiftZero) {
    const ScrollStitcher stitcher = newStitcher();
    const FramePair pair(noisePage(96, 600, 6), 100, 130, 300);
    const std::vector<float> texture = pair.next.rowTexture();
    const auto verdict = stitcher.arbitrate({{30, 0.0}, {90, 4.0}}, pair.next, pair.prev, texture, 0, 300);
    EXPECT_EQ(verdict, (ScrollStitcher::Arbitration{Kind::decided, 30, false}));
    EXPECT_EQ(stitcher.arbitrate({}, pair.next, pair.prev, texture, 0, 300).kind, Kind::undecided);
    EXPECT_EQ(stitcher.arbitrate({{0, 0.0}}, pair.next, pair.prev, texture, 0, 300).kind, Kind::undecided);
    EXPECT_EQ(stitcher.arbitrate({{30, 18.5}}, pair.next, pair.prev, texture, 0, 300).kind, Kind::undecided)
        << "above the match threshold";
    EXPECT_EQ(stitcher.arbitrate({{31, 9.0}}, pair.next, pair.prev, texture, 0, 300).kind, Kind::undecided)
        << "a wrong shift explains no block";
}

TEST(ScrollDeltaSearch, ArbitrateWantsTheWinnerToExplainHalfOfTheStructure) {
    const ScrollStitcher stitcher = newStitcher();
    auto verdict = [&](const FramePair& pair, int delta) {
        return stitcher.arbitrate({{delta, 0.0}}, pair.next, pair.prev, pair.next.rowTexture(), 0, 300);
    };

    // Text in the middle columns, blank margins on both sides: a lone wrong
    // shift explains the margins and nothing else.
    ScrollPatch page = noisePage(96, 600, 8);
    for (int y = 0; y < 600; ++y)
        for (int x = 0; x < 96; ++x)
            if (x < 32 || x >= 64) page.pixels[std::size_t(y) * 96 + x] = 250;
    const FramePair margins(page, 100, 130, 300);
    EXPECT_EQ(verdict(margins, 31).kind, Kind::undecided);
    EXPECT_EQ(verdict(margins, 30), (ScrollStitcher::Arbitration{Kind::decided, 30, false}));

    // A video over the left columns changes in place: the true shift still
    // wins while it explains half of the blocks.
    auto withVideo = [](int columns) {
        FramePair pair(noisePage(96, 600, 9), 100, 130, 300);
        const ScrollPatch video = noisePage(96, 300, 10);
        for (int y = 0; y < 300; ++y)
            for (int x = 0; x < columns; ++x) pair.next.pixels[std::size_t(y) * 96 + x] = video.at(x, y);
        return pair;
    };
    EXPECT_EQ(verdict(withVideo(48), 30), (ScrollStitcher::Arbitration{Kind::decided, 30, false})) << "6 of 12 blocks";
    EXPECT_EQ(verdict(withVideo(56), 30).kind, Kind::undecided) << "5 of 12 blocks";
}

TEST(ScrollDeltaSearch, EqualRivalsOfARepeatedLineFollowTheLastMovementNeverDecisively) {
    // Lines repeat every 20 rows and the page moved by 45: 5, 25, 45 and 65 all fit.
    const FramePair pair(repeatedLines(120, 600, 20), 100, 145, 200);
    const std::vector<ScrollCandidate> rivals = {{5, 0}, {25, 0}, {45, 0}, {65, 0}};
    ScrollStitcher stitcher = newStitcher();
    pair.showTo(stitcher);
    const std::vector<float> texture = pair.next.rowTexture();
    auto arbitrate = [&] { return stitcher.arbitrate(rivals, pair.next, pair.prev, texture, 0, 200); };

    stitcher.lastDelta = 44;
    EXPECT_EQ(arbitrate(), (ScrollStitcher::Arbitration{Kind::resolved, 45, false})) << "within 2 of the last movement";
    stitcher.lastDelta = 90;
    EXPECT_EQ(arbitrate(), (ScrollStitcher::Arbitration{Kind::resolved, 5, false})) << "the smallest forward shift";
    stitcher.lastDelta = -30;
    EXPECT_EQ(arbitrate(), (ScrollStitcher::Arbitration{Kind::resolved, std::nullopt, false})) << "none goes backwards";
    stitcher.lastDelta = 6;
    EXPECT_EQ(arbitrate(), (ScrollStitcher::Arbitration{Kind::resolved, 5, false}));

    stitcher.lastFrame.reset(); // no full-resolution check: the best stands only near the last movement
    stitcher.lastDelta = 7;
    EXPECT_EQ(arbitrate(), (ScrollStitcher::Arbitration{Kind::resolved, 5, false}));
    stitcher.lastDelta = 44;
    EXPECT_EQ(arbitrate(), (ScrollStitcher::Arbitration{Kind::resolved, std::nullopt, false}));
}

TEST(ScrollDeltaSearch, FullResolutionSelectIsDecisiveOnlyForACleanWinner) {
    const FramePair pair(noisePage(300, 600, 7), 100, 140, 200);
    ScrollStitcher stitcher = newStitcher();
    EXPECT_FALSE(stitcher.fullResolutionSelect({40, 10}, 0, 200)) << "no frames";
    pair.showTo(stitcher);
    EXPECT_FALSE(stitcher.fullResolutionSelect({40}, 0, 200)) << "one delta";
    EXPECT_EQ(stitcher.fullResolutionSelect({10, 40}, 0, 200), (ScrollStitcher::Selection{40, true}));
    EXPECT_EQ(stitcher.fullResolutionSelect({40, 190}, 0, 200), (ScrollStitcher::Selection{40, false}))
        << "190 leaves fewer than 16 rows and drops out";
}

TEST(ScrollDeltaSearch, NccFallbackFindsFaintContentButNotAWidePeak) {
    // Faint noise: a few gray levels, too little for absolute scores.
    ScrollPatch faint = noisePage(96, 600, 8);
    for (float& v : faint.pixels) v = 120 + float(int(v) % 4);
    const FramePair pair(faint, 100, 133, 300);
    ScrollStitcher stitcher = newStitcher();
    EXPECT_EQ(stitcher.nccFallback(pair.prev, pair.next, {0, 75}, std::nullopt, 0, 300, 225), 33);
    EXPECT_EQ(stitcher.nccFallback(pair.prev, pair.next, {0, 75}, ScrollBand{150, 75}, 0, 300, 225), 33);

    // A smooth ramp correlates at every shift: no answer.
    ScrollPatch ramp{96, 600, {}};
    for (int y = 0; y < 600; ++y)
        for (int x = 0; x < 96; ++x) ramp.pixels.push_back(float(y / 3 + x % 5));
    const FramePair smooth(ramp, 100, 133, 300);
    EXPECT_FALSE(stitcher.nccFallback(smooth.prev, smooth.next, {0, 75}, std::nullopt, 0, 300, 225));
    const FramePair flat(flatPatch(96, 600, 50), 100, 133, 300);
    EXPECT_FALSE(stitcher.nccFallback(flat.prev, flat.next, {0, 75}, std::nullopt, 0, 300, 225));
}

TEST(ScrollDeltaSearch, UpdateDynamicsMarksRowsThatMissTheirPartnerAndLetsThemFade) {
    const ScrollPatch page = noisePage(10, 60, 10);
    ScrollPatch prev = viewport(page, 10, 20), next = viewport(page, 12, 20);
    for (int y = 5; y < 8; ++y)
        for (int x = 0; x < 10; ++x) next.pixels[std::size_t(y) * 10 + x] = float((x * 50 + y * 90) % 256);
    ScrollStitcher stitcher = newStitcher();
    stitcher.updateDynamics(prev, next, 2);
    ASSERT_EQ(stitcher.dynRows.size(), 20u);
    for (int y = 0; y < 20; ++y) EXPECT_EQ(stitcher.dynRows[y], y >= 5 && y < 8 ? 1.0f : 0.0f) << y;
    EXPECT_EQ(stitcher.maskDynamic(std::vector<float>(20, 1.0f))[6], 0.0f);
    // The rows settle: they fade and leave the mask after three frames.
    const ScrollPatch settled = viewport(page, 12, 20);
    for (int frame = 1; frame <= 3; ++frame) {
        stitcher.updateDynamics(settled, settled, 0);
        EXPECT_EQ(stitcher.maskDynamic(std::vector<float>(20, 1.0f))[6], frame < 3 ? 0.0f : 1.0f) << frame;
    }
    // A row without a partner only fades.
    stitcher.dynRows.assign(20, 1.0f);
    stitcher.updateDynamics(prev, next, 2);
    EXPECT_FLOAT_EQ(stitcher.dynRows[19], 0.6f);
    EXPECT_FLOAT_EQ(stitcher.dynRows[10], 0.6f) << "changed in place but matches its partner";
}
