#include "ImageBuffer.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

ImageBuffer gradient(int width, int height, PixelOrder order = PixelOrder::rgba) {
    MutableImage image(width, height, order);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 7, 255});
    return std::move(image).freeze();
}

} // namespace

TEST(ImageBuffer, CopiesSharePixelsAndIdentity) {
    const ImageBuffer image = gradient(16, 8);
    const ImageBuffer copy = image;
    EXPECT_EQ(copy.data(), image.data());
    EXPECT_EQ(copy.identity(), image.identity());
    EXPECT_TRUE(copy.sharesPixelsWith(image));
    EXPECT_NE(gradient(16, 8).identity(), image.identity());
}

TEST(ImageBuffer, RowsAreAlignedForVectorLoops) {
    const ImageBuffer image = gradient(13, 3);
    EXPECT_EQ(image.stride() % 64, 0u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image.data()) % 64, 0u);
}

TEST(ImageBuffer, CropSharesMemoryWithNewIdentity) {
    const ImageBuffer image = gradient(20, 10);
    const ImageBuffer crop = image.cropped({5, 3, 4, 2});
    ASSERT_EQ(crop.width(), 4);
    ASSERT_EQ(crop.height(), 2);
    EXPECT_TRUE(crop.sharesPixelsWith(image));
    EXPECT_NE(crop.identity(), image.identity());
    EXPECT_EQ(crop.pixel(0, 0), (Rgba8{5, 3, 7, 255}));
    EXPECT_EQ(crop.pixel(3, 1), (Rgba8{8, 4, 7, 255}));
}

TEST(ImageBuffer, CropClipsToBoundsAndOutsideIsEmpty) {
    const ImageBuffer image = gradient(20, 10);
    const ImageBuffer clipped = image.cropped({15, -5, 10, 10});
    EXPECT_EQ(clipped.width(), 5);
    EXPECT_EQ(clipped.height(), 5);
    EXPECT_EQ(clipped.pixel(0, 0), (Rgba8{15, 0, 7, 255}));
    EXPECT_TRUE(image.cropped({30, 0, 5, 5}).isEmpty());
    EXPECT_EQ(image.cropped(image.bounds()).identity(), image.identity());
}

TEST(ImageBuffer, ConversionKeepsChannelValues) {
    const ImageBuffer rgba = gradient(9, 4);
    for (PixelOrder order : {PixelOrder::bgra, PixelOrder::argb, PixelOrder::abgr}) {
        const ImageBuffer other = rgba.converted(order);
        EXPECT_EQ(other.order(), order);
        EXPECT_TRUE(other.samePixels(rgba));
        EXPECT_EQ(other.pixel(3, 2), rgba.pixel(3, 2));
    }
    const ImageBuffer bgra = rgba.converted(PixelOrder::bgra);
    EXPECT_EQ(bgra.data()[0], 7); // blue comes first in memory
}

TEST(ImageBuffer, OpacityAndAdoption) {
    MutableImage image(4, 4);
    image.fill({10, 20, 30, 255});
    image.setPixel(3, 3, {0, 0, 0, 0});
    const ImageBuffer frozen = std::move(image).freeze();
    EXPECT_FALSE(frozen.isOpaque());
    EXPECT_TRUE(frozen.cropped({0, 0, 3, 3}).isOpaque());

    auto storage = std::make_shared<std::vector<std::uint8_t>>(8 * 2, 0xff);
    const ImageBuffer adopted = ImageBuffer::adopt(storage->data(), 2, 2, 8, PixelOrder::bgra, storage);
    EXPECT_EQ(adopted.width(), 2);
    EXPECT_TRUE(adopted.isOpaque());
    EXPECT_TRUE(ImageBuffer::adopt(storage->data(), 3, 2, 8, PixelOrder::bgra, storage).isEmpty());
}
