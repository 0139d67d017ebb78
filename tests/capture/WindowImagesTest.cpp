// Window images: trimming their shadow, composing several, and the
// composition of a multi-window selection.
#include "CaptureComposition.h"
#include "WindowComposite.h"
#include "WindowImageTrimmer.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

// A window image: a transparent margin of `margin` pixels around opaque content.
ImageBuffer windowImage(int width, int height, int margin, std::uint8_t marginAlpha = 0,
                        PixelOrder order = PixelOrder::bgra) {
    MutableImage image(width, height, order);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool inside = x >= margin && y >= margin && x < width - margin && y < height - margin;
            image.setPixel(x, y, inside ? Rgba8{200, 100, 50, 255} : Rgba8{0, 0, 0, marginAlpha});
        }
    return std::move(image).freeze();
}

ImageBuffer solid(int width, int height, Rgba8 colour) {
    MutableImage image(width, height);
    image.fill(colour);
    return std::move(image).freeze();
}

} // namespace

TEST(WindowImageTrimmer, CutsTheShadowAndSharesThePixels) {
    const ImageBuffer image = windowImage(300, 200, 20, 10);
    const auto trimmed = WindowImageTrimmer::trimmedToOpaqueContent(image);
    ASSERT_TRUE(trimmed);
    EXPECT_EQ(trimmed->box, (PixelRect{20, 20, 260, 160}));
    EXPECT_EQ(trimmed->image.width(), 260);
    EXPECT_TRUE(trimmed->image.sharesPixelsWith(image));
}

TEST(WindowImageTrimmer, LeavesWhatItCannotOrNeedNotTrim) {
    EXPECT_FALSE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(100, 80, 0))) << "opaque corners";
    EXPECT_FALSE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(600, 500, 200))) << "edge deeper than 160";
    EXPECT_FALSE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(40, 40, 20))) << "no content at all";
    EXPECT_FALSE(WindowImageTrimmer::trimmedToOpaqueContent(ImageBuffer())) << "0x0";
    EXPECT_TRUE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(600, 500, 159))) << "the deepest edge found";
    EXPECT_FALSE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(600, 500, 160)));
}

TEST(WindowImageTrimmer, AlphaTwentySixIsMarginTwentySevenIsContent) {
    EXPECT_TRUE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(100, 100, 10, 26)));
    EXPECT_FALSE(WindowImageTrimmer::trimmedToOpaqueContent(windowImage(100, 100, 10, 27)));
    const auto trims = WindowImageTrimmer::trims({{1, windowImage(100, 100, 10)}, {2, windowImage(100, 100, 0)}});
    ASSERT_EQ(trims.size(), 1u);
    EXPECT_TRUE(trims.contains(1));
}

TEST(WindowComposite, DrawsLayersPixelExactInOrderWithYUp) {
    // A 10x10 point rectangle at scale 2: a red back layer over all of it,
    // a half-transparent blue one in its lower left quarter.
    const Rect rect(100, 100, 10, 10);
    const auto image = WindowComposite::render(
        {{solid(20, 20, {255, 0, 0, 255}), Rect(100, 100, 10, 10)}, {solid(10, 10, {0, 0, 128, 128}), Rect(100, 100, 5, 5)}},
        rect, 2);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), 20);
    EXPECT_EQ(image->pixel(0, 0), (Rgba8{255, 0, 0, 255})) << "the top left is not covered";
    EXPECT_EQ(image->pixel(0, 19), (Rgba8{127, 0, 128, 255})) << "the bottom left is blended";
    EXPECT_EQ(image->pixel(10, 19), (Rgba8{255, 0, 0, 255}));

    EXPECT_FALSE(WindowComposite::render({}, rect, 2));
    EXPECT_FALSE(WindowComposite::render({{solid(1, 1, {}), rect}}, Rect(0, 0, 0.2, 5), 1));
    const auto belowOne = WindowComposite::render({{solid(10, 10, {1, 2, 3, 255}), rect}}, rect, 0.5);
    ASSERT_TRUE(belowOne);
    EXPECT_EQ(belowOne->width(), 10) << "a scale below 1 counts as 1";
    EXPECT_TRUE(WindowComposite::unionOf({}).isNull());
    EXPECT_EQ(WindowComposite::unionOf({Rect(0, 0, 1, 1), Rect(5, 5, 1, 1)}), Rect(0, 0, 6, 6));
}

TEST(CaptureComposition, KeepsBackToFrontAndGuardsItsLayers) {
    CaptureComposition composition;
    ASSERT_TRUE(composition.insert({7, solid(1, 1, {}), Rect(0, 0, 10, 10), 1}));
    EXPECT_FALSE(composition.remove(7)) << "a lone layer stays";
    ASSERT_TRUE(composition.insert(CaptureComposition::Layer::backdrop(solid(1, 1, {}), Rect(0, 0, 50, 50))));
    ASSERT_TRUE(composition.insert({3, solid(1, 1, {}), Rect(20, 20, 10, 10), 0}));
    EXPECT_FALSE(composition.insert({3, solid(1, 1, {}), Rect(0, 0, 1, 1), 5})) << "already in";

    std::vector<std::optional<std::uint32_t>> order;
    for (const auto& layer : composition.layers()) order.push_back(layer.id);
    EXPECT_EQ(order, (std::vector<std::optional<std::uint32_t>>{std::nullopt, 7, 3}));
    EXPECT_TRUE(composition.hasRemovableWindows());
    EXPECT_EQ(composition.windowLayers().size(), 2u);
    EXPECT_EQ(composition.unionRect(), Rect(0, 0, 50, 50));
    EXPECT_FALSE(composition.contains(std::nullopt));

    EXPECT_TRUE(composition.remove(3));
    EXPECT_TRUE(composition.remove(7)) << "the last window beside a backdrop may go";
    EXPECT_FALSE(composition.hasRemovableWindows());
    EXPECT_EQ(composition.renderLayers().size(), 1u);
}
