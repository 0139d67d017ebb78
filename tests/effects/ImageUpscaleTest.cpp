#include "ImageUpscale.h"

#include <gtest/gtest.h>

using namespace tosvar;

TEST(ImageUpscale, SamplesBetweenPixelCentresAndRepeatsTheEdges) {
    MutableImage pair(2, 1);
    pair.setPixel(0, 0, {0, 0, 0, 255});
    pair.setPixel(1, 0, {255, 255, 255, 255});
    const ImageBuffer doubled = ImageUpscale::bilinear(std::move(pair).freeze(), 4, 2);
    ASSERT_EQ(doubled.width(), 4);
    ASSERT_EQ(doubled.height(), 2);
    // Output centres fall at -0.25, 0.25, 0.75 and 1.25 source pixels.
    const std::uint8_t expected[] = {0, 64, 191, 255};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(doubled.pixel(x, y), (Rgba8{expected[x], expected[x], expected[x], 255})) << x << "," << y;
}

TEST(ImageUpscale, KeepsTheByteOrderAndLeavesSmallerSizesAlone) {
    MutableImage bgra(3, 3, PixelOrder::bgra);
    bgra.fill({10, 20, 30, 255});
    const ImageBuffer source = std::move(bgra).freeze();
    const ImageBuffer grown = ImageUpscale::bilinear(source, 5, 4);
    EXPECT_EQ(grown.order(), PixelOrder::bgra);
    EXPECT_EQ(grown.pixel(4, 3), (Rgba8{10, 20, 30, 255})) << "a flat image stays flat at any size";
    EXPECT_EQ(ImageUpscale::bilinear(source, 2, 8).width(), 3) << "not larger in both directions";
    EXPECT_TRUE(ImageUpscale::bilinear(ImageBuffer(), 4, 4).isEmpty());
}
