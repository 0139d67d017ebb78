#include "ScrollMatcher.h"
#include "ScrollTestPatterns.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tosvar;
using namespace tosvar::ScrollTest;
using namespace tosvar::ScrollMatcher;

namespace {

using Scores = std::vector<std::optional<double>>;
constexpr std::nullopt_t gap = std::nullopt;

std::vector<int> deltasOf(const std::vector<ScrollCandidate>& candidates) {
    std::vector<int> deltas;
    for (const ScrollCandidate& c : candidates) deltas.push_back(c.delta);
    return deltas;
}

// A frame of `height` rows: a page seen from `top`, with `header` rows of a
// fixed bar painted over its top.
ScrollPatch pageView(const ScrollPatch& page, int top, int height, int header) {
    ScrollPatch view = viewport(page, top, height);
    for (int y = 0; y < header; ++y)
        for (int x = 0; x < view.width; ++x) view.pixels[std::size_t(y) * view.width + x] = float((x * 7 + y * 31) % 200);
    return view;
}

} // namespace

TEST(ScrollMatcher, BandScoresAreMissingWhereTheBandLeavesAPatch) {
    const ScrollPatch page = noisePage(16, 40, 1);
    const ScrollPatch prev = viewport(page, 10, 20), next = viewport(page, 13, 20);
    const Scores scores = bandScores(next, prev, {2, 6}, {-4, 14});
    ASSERT_EQ(scores.size(), 19u);
    EXPECT_FALSE(scores[0]);  // rows -2.. of prev
    EXPECT_FALSE(scores[1]);
    EXPECT_TRUE(scores[2]);   // delta -2 starts at prev row 0
    EXPECT_DOUBLE_EQ(*scores[7], 0.0); // delta 3, the true shift
    EXPECT_GT(*scores[6], 10.0);
    EXPECT_TRUE(scores[16]);  // delta 12 ends at prev row 20
    EXPECT_FALSE(scores[17]);
    EXPECT_FALSE(bandScore(next, prev, {18, 4}, 0)); // leaves next
    EXPECT_FALSE(bandScore(next, flatPatch(15, 20, 0), {0, 4}, 0));
}

TEST(ScrollMatcher, LocalMinimaOfferEveryPlateauRowAndKeepTiesInRowOrder) {
    // A plateau of three equal minima, a missing neighbour and a minimum above the gate.
    const Scores scores = {5, 2, 2, 2, 6, gap, 1, 9, 20, 19, 30};
    EXPECT_EQ(deltasOf(localMinima(scores, -3, 10, 10, 1)), (std::vector<int>{3, -2, -1, 0}));
    EXPECT_EQ(localMinima(scores, -3, 10, 10, 1)[0], (ScrollCandidate{3, 1}));
    // Separation 2 keeps the first plateau row and drops its neighbour.
    EXPECT_EQ(deltasOf(localMinima(scores, -3, 10, 10, 2)), (std::vector<int>{3, -2, 0}));
    EXPECT_EQ(deltasOf(localMinima(scores, -3, 10, 2, 2)), (std::vector<int>{3, -2}));
    EXPECT_EQ(deltasOf(localMinima(scores, -3, 19, 10, 1)), (std::vector<int>{3, -2, -1, 0, 6}));

    // All equal: every row qualifies, kept at the requested separation, lowest first.
    const Scores flat(10, 4.0);
    EXPECT_EQ(deltasOf(localMinima(flat, 0, 18, 8, 3)), (std::vector<int>{0, 3, 6, 9}));
    EXPECT_TRUE(localMinima({}, 0, 18, 8, 3).empty());
}

TEST(ScrollMatcher, RefineFindsTheLowestScoreAndTheSmallestShiftOnATie) {
    // A ramp: the score of a shift grows with its distance from the true 6.
    ScrollPatch page{12, 60, {}};
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 12; ++x) page.pixels.push_back(float(2 * y + x));
    const ScrollPatch prev = viewport(page, 20, 30), next = viewport(page, 26, 30);
    EXPECT_EQ(refine(next, prev, {4, 10}, 4, 3, {-20, 20}), 6);
    EXPECT_EQ(refine(next, prev, {4, 10}, 0, 3, {-20, 20}), 3) << "the true shift lies outside the window";
    EXPECT_EQ(refine(next, prev, {4, 10}, 4, 3, {-20, 5}), 5) << "clipped to the bounds";
    const ScrollPatch flat = flatPatch(12, 30, 50);
    EXPECT_EQ(refine(flat, flat, {4, 10}, 2, 3, {-20, 20}), -1);
    EXPECT_FALSE(refine(flat, flat, {4, 10}, 60, 3, {-100, 100}));
}

TEST(ScrollMatcher, AdjustedBandFitsTheShiftIntoTheRegion) {
    EXPECT_EQ(adjustedBand({10, 20}, 0, 10, 100, 8), (ScrollBand{10, 20}));
    EXPECT_EQ(adjustedBand({10, 20}, -15, 10, 100, 8), (ScrollBand{25, 20}));
    EXPECT_FALSE(adjustedBand({10, 20}, 85, 10, 100, 8));
    EXPECT_EQ(adjustedBand({10, 20}, 82, 10, 100, 8), (ScrollBand{10, 8}));
    EXPECT_FALSE(adjustedBand({10, 20}, 83, 10, 100, 8)) << "7 rows remain, below minRows";
    EXPECT_EQ(adjustedBand({10, 20}, 83, 10, 100, 7), (ScrollBand{10, 7}));
    EXPECT_FALSE(adjustedBand({10, 20}, -95, 10, 100, 1));
}

TEST(ScrollMatcher, BandPearsonIsMissingWithoutVariance) {
    const ScrollPatch page = noisePage(10, 40, 3);
    const ScrollPatch prev = viewport(page, 0, 20), next = viewport(page, 5, 20);
    EXPECT_NEAR(*bandPearson(next, prev, {0, 10}, 5), 1.0, 1e-12);
    EXPECT_LT(*bandPearson(next, prev, {0, 10}, 0), 0.5);
    ScrollPatch inverted = prev;
    for (float& v : inverted.pixels) v = 255 - v;
    EXPECT_NEAR(*bandPearson(next, inverted, {0, 10}, 5), -1.0, 1e-12);
    const ScrollPatch flat = flatPatch(10, 20, 80);
    EXPECT_FALSE(bandPearson(flat, prev, {0, 10}, 0)) << "next has no variance";
    EXPECT_FALSE(bandPearson(next, flat, {0, 10}, 0)) << "prev has no variance";
    EXPECT_FALSE(bandPearson(next, prev, {15, 10}, 0));
}

TEST(ScrollMatcher, IdenticalRunsCountUnchangedRowsFromBothEnds) {
    const ScrollPatch page = noisePage(8, 60, 4);
    ScrollPatch prev = viewport(page, 0, 20), next = prev;
    EXPECT_EQ(identicalRuns(prev, next, 3.0), (ScrollRuns{20, 0}));
    for (int x = 0; x < 8; ++x) next.pixels[std::size_t(12) * 8 + x] += 40;
    EXPECT_EQ(identicalRuns(prev, next, 3.0), (ScrollRuns{12, 7}));
    next.pixels[std::size_t(5) * 8] += 20; // a mean of 2.5 over the row: still unchanged
    EXPECT_EQ(identicalRuns(prev, next, 3.0), (ScrollRuns{12, 7}));
}

TEST(ScrollMatcher, StickyRunsReachOnlyAsFarAsARowThatProvesThem) {
    const ScrollPatch page = noisePage(16, 200, 5);
    // A real header of 6 rows stays while the page moves by 20.
    EXPECT_EQ(stickyRuns(pageView(page, 40, 60, 6), pageView(page, 60, 60, 6), 20, 3.0), (ScrollRuns{6, 0}));

    // Flat white rows at the top of both frames, over a page that moved:
    // they match their shifted partners too, so they prove nothing.
    ScrollPatch white = page;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 16; ++x) white.pixels[std::size_t(y) * 16 + x] = 255;
    EXPECT_EQ(stickyRuns(viewport(white, 0, 60), viewport(white, 4, 60), 4, 3.0), (ScrollRuns{0, 0}))
        << "a header that scrolled away";

    // A header of 4 rows followed by flat rows: the run ends at the header.
    ScrollPatch prev = pageView(white, 0, 60, 4), next = pageView(white, 3, 60, 4);
    EXPECT_EQ(stickyRuns(prev, next, 3, 3.0).top, 4);
    // A footer: the same walk from the bottom.
    ScrollPatch footerPrev = viewport(page, 10, 40), footerNext = viewport(page, 25, 40);
    for (int y = 35; y < 40; ++y)
        for (int x = 0; x < 16; ++x)
            footerPrev.pixels[std::size_t(y) * 16 + x] = footerNext.pixels[std::size_t(y) * 16 + x] = float(x * 9);
    EXPECT_EQ(stickyRuns(footerPrev, footerNext, 15, 3.0), (ScrollRuns{0, 5}));
}

TEST(ScrollMatcher, HorizontalShiftVotes) {
    const ScrollPatch page = noisePage(200, 120, 6);
    auto columns = [&](int left) {
        ScrollPatch view{120, 120, {}};
        for (int y = 0; y < 120; ++y)
            view.pixels.insert(view.pixels.end(), page.row(y) + left, page.row(y) + left + 120);
        return view;
    };
    EXPECT_TRUE(showsHorizontalShift(columns(10), columns(24), 8, 12));
    EXPECT_TRUE(showsHorizontalShift(columns(30), columns(21), 8, 12));
    EXPECT_FALSE(showsHorizontalShift(columns(10), columns(10), 8, 12)) << "nothing changed";
    const ScrollPatch tall = noisePage(120, 300, 7);
    EXPECT_FALSE(showsHorizontalShift(viewport(tall, 0, 120), viewport(tall, 30, 120), 8, 12)) << "a vertical scroll";
    EXPECT_FALSE(showsHorizontalShift(noisePage(31, 120, 1), noisePage(31, 120, 2), 8, 12)) << "too narrow";
}
