#include "ScrollGray.h"
#include "ScrollPatch.h"
#include "ScrollTestPatterns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

ImageBuffer colourfulImage(int width, int height, PixelOrder order, std::uint32_t seed) {
    std::mt19937 random(seed);
    MutableImage image(width, height, order);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                                  static_cast<std::uint8_t>(random()), 255});
    return std::move(image).freeze();
}

} // namespace

TEST(ScrollGray, FastPathReadsEveryByteOrderAlikeAndAgreesWithTheSlowPath) {
    const ImageBuffer rgba = colourfulImage(1000, 9, PixelOrder::rgba, 5);
    for (int maxColumns : {384, 5000}) {
        const auto reference = ScrollGray::convertFast(rgba, maxColumns, 32);
        ASSERT_TRUE(reference);
        EXPECT_EQ(reference->width, std::min(maxColumns, 968));
        EXPECT_EQ(reference->height, 9);
        for (PixelOrder order : {PixelOrder::bgra, PixelOrder::argb, PixelOrder::abgr}) {
            const auto fast = ScrollGray::convertFast(rgba.converted(order), maxColumns, 32);
            ASSERT_TRUE(fast);
            EXPECT_EQ(fast->bytes, reference->bytes);
        }
        // The slow path averages exact grays, the fast one truncated grays:
        // they may differ by one level, never more.
        const auto slow = ScrollGray::convertSlow(rgba.converted(PixelOrder::argb), maxColumns, 32);
        ASSERT_TRUE(slow);
        ASSERT_EQ(slow->bytes.size(), reference->bytes.size());
        for (std::size_t i = 0; i < slow->bytes.size(); ++i)
            ASSERT_LE(std::abs(slow->bytes[i] - reference->bytes[i]), 1) << i;
    }
}

TEST(ScrollGray, TrailingInsetAppliesOnlyToImagesWiderThanFourTimesIt) {
    EXPECT_EQ(ScrollGray::sourceWidth(1600, 32), 1568);
    EXPECT_EQ(ScrollGray::sourceWidth(128, 32), 128);
    EXPECT_EQ(ScrollGray::sourceWidth(129, 32), 97);
    EXPECT_EQ(ScrollGray::sourceWidth(300, 0), 300);
    // The inset columns never reach the patch: a bright bar there changes nothing.
    MutableImage image(200, 4);
    image.fill({10, 10, 10, 255});
    for (int y = 0; y < 4; ++y)
        for (int x = 188; x < 200; ++x) image.setPixel(x, y, {255, 255, 255, 255});
    const auto patch = ScrollPatch::fromImage(std::move(image).freeze(), 384, 12);
    ASSERT_TRUE(patch);
    EXPECT_EQ(patch->width, 188);
    for (float v : patch->pixels) ASSERT_EQ(v, 10.0f);
    EXPECT_FALSE(ScrollPatch::fromImage(ImageBuffer(), 384, 0));
    EXPECT_FALSE(ScrollPatch::fromImage(colourfulImage(8, 8, PixelOrder::rgba, 1), 0, 0));
}

TEST(ScrollPatch, CoarsenedAveragesBlocksAndTheLastRowBlockTakesTheRest) {
    const ScrollPatch patch = patchOf({{0, 2, 4, 6, 100}, {2, 4, 6, 8, 100}, {10, 10, 10, 10, 100}, {1, 1, 1, 1, 1}, {3, 3, 3, 3, 3}});
    EXPECT_EQ(patch.coarsened(1, 1), patch);
    const ScrollPatch coarse = patch.coarsened(2, 2);
    ASSERT_EQ(coarse.width, 2);  // the fifth column lies beyond 2 * 2 and is ignored
    ASSERT_EQ(coarse.height, 2); // rows 2..4 form the last block
    EXPECT_FLOAT_EQ(coarse.at(0, 0), 2.0f);
    EXPECT_FLOAT_EQ(coarse.at(1, 0), 6.0f);
    EXPECT_FLOAT_EQ(coarse.at(0, 1), (10 + 10 + 1 + 1 + 3 + 3) / 6.0f);
    const ScrollPatch tiny = patchOf({{4, 8}}).coarsened(4, 4);
    EXPECT_EQ(tiny.width, 1);
    EXPECT_EQ(tiny.height, 1);
    EXPECT_FLOAT_EQ(tiny.at(0, 0), 6.0f);
}

TEST(ScrollPatch, RowTextureIsTheMeanStepToTheNextRow) {
    const ScrollPatch patch = patchOf({{0, 0}, {4, 2}, {4, 2}});
    EXPECT_EQ(patch.rowTexture(), (std::vector<float>{3, 0, 0}));
    EXPECT_EQ(patchOf({{9, 1, 5}}).rowTexture(), (std::vector<float>{0}));
    EXPECT_TRUE(ScrollPatch{}.rowTexture().empty());
}

TEST(ScrollPatch, RowAndColumnMeasures) {
    const ScrollPatch a = patchOf({{0, 10, 20, 30}, {5, 5, 5, 5}, {1, 2, 3, 4}});
    const ScrollPatch b = patchOf({{0, 0, 0, 0}, {5, 9, 5, 5}, {0, 10, 20, 30}});
    EXPECT_DOUBLE_EQ(a.rowMAD(0, b, 2), 0.0);
    EXPECT_DOUBLE_EQ(a.rowMAD(0, b, 0), 15.0);
    EXPECT_TRUE(std::isinf(a.rowMAD(0, b, 3)));
    // Row 1 changed in place only at column 1 (|5 - 9| > 3); there it misses
    // row 0 of `b` by 5, summed over the full width of 4.
    EXPECT_DOUBLE_EQ(a.changedRowMAD(1, b, 0, 3.0), 5.0 / 4);
    EXPECT_DOUBLE_EQ(a.changedRowMAD(1, b, 0, 4.0), 0.0);
    EXPECT_DOUBLE_EQ(a.columnMAD(1, b, 1, {0, 3}), (10 + 4 + 8) / 3.0);
    EXPECT_DOUBLE_EQ(a.columnMAD(1, b, 1, {1, 0}), 0.0);
    EXPECT_DOUBLE_EQ(a.columnTexture(3, {0, 3}), (25 + 1) / 2.0);
    EXPECT_DOUBLE_EQ(a.columnTexture(3, {2, 1}), 0.0);
}
