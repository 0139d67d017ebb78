#include "ScrollOverlap.h"
#include "ScrollTestPatterns.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tosvar;
using namespace tosvar::ScrollTest;
using namespace tosvar::ScrollOverlap;

namespace {

// Adds `amount` to columns [x0, x1) of rows [y0, y1).
void brighten(ScrollPatch& patch, int x0, int x1, int y0, int y1, float amount) {
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) patch.pixels[std::size_t(y) * patch.width + x] += amount;
}

const std::vector<float> textured(int rows) { return std::vector<float>(static_cast<std::size_t>(rows), 1.0f); }

} // namespace

TEST(ScrollOverlap, BlockProfileScoresEachBlockOverTexturedRowsInReach) {
    const ScrollPatch page = noisePage(25, 80, 1);
    const ScrollPatch prev = viewport(page, 0, 40);
    ScrollPatch next = viewport(page, 5, 40);
    brighten(next, 4, 6, 0, 40, 30); // block 2 (columns 4 and 5) is off by 30 everywhere
    const auto profile = blockProfile(next, prev, 5, 0, 40, textured(40), 0.35f, 12);
    ASSERT_TRUE(profile);
    ASSERT_EQ(profile->size(), 12u); // blocks 2 wide; column 24 is left over
    for (int b = 0; b < 12; ++b) EXPECT_DOUBLE_EQ((*profile)[b], b == 2 ? 30.0 : 0.0) << b;

    EXPECT_FALSE(blockProfile(next, prev, 25, 0, 40, textured(40), 0.35f, 12)) << "15 rows in reach";
    EXPECT_TRUE(blockProfile(next, prev, 24, 0, 40, textured(40), 0.35f, 12));
    std::vector<float> sparse(40, 0.0f);
    for (int y = 10; y < 15; ++y) sparse[y] = 0.35f;
    EXPECT_FALSE(blockProfile(next, prev, 5, 0, 40, sparse, 0.35f, 12)) << "5 textured rows";
    sparse[30] = 0.35f;
    EXPECT_TRUE(blockProfile(next, prev, 5, 0, 40, sparse, 0.35f, 12)) << "the gate compares in float";
    sparse[30] = 0.3499f;
    EXPECT_FALSE(blockProfile(next, prev, 5, 0, 40, sparse, 0.35f, 12));
}

TEST(ScrollOverlap, TrimmedScoreAveragesTheBestThreeQuarters) {
    const ScrollPatch page = noisePage(24, 80, 2);
    const ScrollPatch prev = viewport(page, 0, 40);
    ScrollPatch next = viewport(page, 5, 40);
    brighten(next, 0, 6, 0, 40, 40); // blocks 0-2 off by 40: trimmed away
    EXPECT_DOUBLE_EQ(*trimmedScore(next, prev, 5, 0, 40, textured(40), 0.35f, 12), 0.0);
    brighten(next, 6, 8, 0, 40, 18); // a fourth block: 18 over the 9 kept blocks
    EXPECT_DOUBLE_EQ(*trimmedScore(next, prev, 5, 0, 40, textured(40), 0.35f, 12), 2.0);
    // Three blocks: k = max(9, 4) / 4 = 2.
    EXPECT_DOUBLE_EQ(*trimmedScore(next, prev, 5, 0, 40, textured(40), 0.35f, 3), 0.0);
}

TEST(ScrollOverlap, FixedBlocksStayPutAndHoldStructure) {
    const ScrollPatch page = noisePage(24, 120, 3);
    ScrollPatch prev = viewport(page, 0, 60), next = viewport(page, 9, 60);
    // Blocks 0 and 1 (columns 0-3) are a fixed sidebar: textured in block 0, flat in block 1.
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 4; ++x) {
            const float v = x < 2 ? float((y * 37 + x * 11) % 200) : 120.0f;
            prev.pixels[std::size_t(y) * 24 + x] = next.pixels[std::size_t(y) * 24 + x] = v;
        }
    std::vector<bool> fixed = fixedBlocks(next, prev, 0, 60, 12, 2.0, 1.0);
    ASSERT_EQ(fixed.size(), 12u);
    EXPECT_TRUE(fixed[0]);
    EXPECT_FALSE(fixed[1]) << "unchanged but flat";
    for (int b = 2; b < 12; ++b) EXPECT_FALSE(fixed[b]) << b;
    // Under 200 rows one changed row is allowed, two are not.
    brighten(next, 0, 2, 30, 31, 50);
    EXPECT_TRUE(fixedBlocks(next, prev, 0, 60, 12, 2.0, 1.0)[0]);
    brighten(next, 0, 2, 40, 41, 50);
    EXPECT_FALSE(fixedBlocks(next, prev, 0, 60, 12, 2.0, 1.0)[0]);
    EXPECT_TRUE(fixedBlocks(next, prev, 10, 10, 12, 2.0, 1.0).empty());
    EXPECT_TRUE(fixedBlocks(next, flatPatch(23, 60, 0), 0, 60, 12, 2.0, 1.0).empty());
}

TEST(ScrollOverlap, TexturedBlocksFindStructureInTheTexturedRowsOfTheRange) {
    // Blocks of 2 columns; columns 4-11 (blocks 2-5) hold noise in rows 0-29,
    // column 20 (block 10) a vertical ramp in rows 30-59.
    ScrollPatch next = flatPatch(24, 60, 100);
    const ScrollPatch noise = noisePage(24, 30, 5);
    for (int y = 0; y < 30; ++y)
        for (int x = 4; x < 12; ++x) next.pixels[std::size_t(y) * 24 + x] = noise.at(x, y);
    for (int y = 30; y < 60; ++y) next.pixels[std::size_t(y) * 24 + 20] = float(y * 8);
    auto structured = [&](int y0, int y1, const std::vector<float>& texture) {
        std::vector<int> blocks;
        const std::vector<bool> found = texturedBlocks(next, y0, y1, texture, 0.35f, 12, 1.0);
        for (int b = 0; b < static_cast<int>(found.size()); ++b)
            if (found[b]) blocks.push_back(b);
        return blocks;
    };
    EXPECT_EQ(structured(0, 60, textured(60)), (std::vector<int>{2, 3, 4, 5, 10}));
    EXPECT_EQ(structured(0, 30, textured(60)), (std::vector<int>{2, 3, 4, 5}));
    EXPECT_EQ(structured(30, 60, textured(60)), (std::vector<int>{10}));
    std::vector<float> topFlat = textured(60);
    std::fill(topFlat.begin(), topFlat.begin() + 30, 0.0f);
    EXPECT_EQ(structured(0, 60, topFlat), (std::vector<int>{10})) << "rows without texture do not count";
    EXPECT_EQ(structured(0, 60, std::vector<float>(60, 0.0f)), std::vector<int>{});
}

TEST(ScrollOverlap, JointScoresAverageOnlyTheBlocksSomeHypothesisExplains) {
    const std::vector<std::vector<double>> profiles = {{1, 2, 50, 3}, {4, 40, 60, 5}};
    // Block 2 no hypothesis explains within 6; block 3 is excluded.
    EXPECT_EQ(jointScores(profiles, 6.0, {false, false, false, true}), (std::vector<double>{1.5, 22.0}));
    EXPECT_EQ(jointScores(profiles, 6.0, {}), (std::vector<double>{2.0, 49.0 / 3}));
    const double most = std::numeric_limits<double>::max();
    EXPECT_EQ(jointScores(profiles, 6.0, {true, true, true, true}), (std::vector<double>{most, most}));
    EXPECT_EQ(jointScores(profiles, 0.5, {}), (std::vector<double>{most, most}));
    EXPECT_TRUE(jointScores({}, 6.0, {}).empty());
}

TEST(ScrollOverlap, BlockPearsonScanFindsTheBandInAWindow) {
    const ScrollPatch page = noisePage(36, 100, 4);
    const ScrollPatch next = viewport(page, 40, 40);
    const ScrollPatch window = viewport(page, 30, 30);
    const auto scores = blockPearsonScan(next, window, {5, 12}, 12);
    ASSERT_TRUE(scores);
    ASSERT_EQ(scores->size(), 19u);
    // Band rows 45..57 of the page sit at window offset 15.
    int best = 0;
    for (int i = 0; i < 19; ++i)
        if ((*scores)[i] && *(*scores)[i] > *(*scores)[best]) best = i;
    EXPECT_EQ(best, 15);
    EXPECT_NEAR(*(*scores)[15], 1.0, 1e-9);

    // Only two textured blocks in the band: nothing.
    ScrollPatch sparse = flatPatch(36, 40, 100);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 6; ++x) sparse.pixels[std::size_t(y) * 36 + x] = page.at(x, y);
    EXPECT_FALSE(blockPearsonScan(sparse, window, {5, 12}, 12));
    // A window row range without variance leaves that offset without a score.
    ScrollPatch blanked = window;
    for (int y = 0; y < 14; ++y)
        for (int x = 0; x < 36; ++x) blanked.pixels[std::size_t(y) * 36 + x] = 7;
    const auto partial = blockPearsonScan(next, blanked, {5, 12}, 12);
    ASSERT_TRUE(partial);
    EXPECT_FALSE((*partial)[0]);
    EXPECT_TRUE((*partial)[15]);
    EXPECT_FALSE(blockPearsonScan(next, viewport(page, 0, 11), {5, 12}, 12)) << "window shorter than the band";
}

TEST(ScrollOverlap, TexturedColumnPearsonUsesOnlyColumnsWithVariance) {
    const ScrollPatch page = noisePage(20, 80, 5);
    ScrollPatch prev = viewport(page, 0, 40), next = viewport(page, 6, 40);
    // Flat columns in next; prev differs wildly there, which must not matter.
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 15; ++x) {
            next.pixels[std::size_t(y) * 20 + x] = 90;
            if (y + 6 < 40) prev.pixels[std::size_t(y + 6) * 20 + x] = float((x * y * 13) % 256);
        }
    EXPECT_NEAR(*texturedColumnPearson(next, prev, {2, 20}, 6), 1.0, 1e-9);
    EXPECT_FALSE(texturedColumnPearson(flatPatch(20, 40, 9), prev, {2, 20}, 6)) << "no textured column";
    EXPECT_FALSE(texturedColumnPearson(next, flatPatch(20, 40, 9), {2, 20}, 6)) << "no variance in prev";
    EXPECT_FALSE(texturedColumnPearson(next, prev, {2, 1}, 6)) << "one row";
    EXPECT_FALSE(texturedColumnPearson(next, prev, {2, 20}, 30)) << "leaves prev";
}
