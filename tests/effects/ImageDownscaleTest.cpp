#include "ImageDownscale.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

ImageBuffer grayRow(std::initializer_list<std::uint8_t> levels, PixelOrder order = PixelOrder::rgba) {
    MutableImage image(static_cast<int>(levels.size()), 1, order);
    int x = 0;
    for (std::uint8_t level : levels) image.setPixel(x++, 0, {level, level, level, 255});
    return std::move(image).freeze();
}

} // namespace

TEST(ImageDownscale, EachPixelIsTheMeanOfTheAreaItCovers) {
    // Whole blocks: 4 x 4 to 2 x 2.
    MutableImage blocks(4, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            const auto v = static_cast<std::uint8_t>(10 * (x + 4 * y));
            blocks.setPixel(x, y, {v, static_cast<std::uint8_t>(255 - v), 7, 255});
        }
    const ImageBuffer halved = ImageDownscale::areaAverage(std::move(blocks).freeze(), 2, 2);
    ASSERT_EQ(halved.width(), 2);
    ASSERT_EQ(halved.height(), 2);
    EXPECT_EQ(halved.pixel(0, 0), (Rgba8{25, 230, 7, 255}));  // 0, 10, 40, 50
    EXPECT_EQ(halved.pixel(1, 0), (Rgba8{45, 210, 7, 255}));  // 20, 30, 60, 70
    EXPECT_EQ(halved.pixel(0, 1), (Rgba8{105, 150, 7, 255}));
    EXPECT_EQ(halved.pixel(1, 1), (Rgba8{125, 130, 7, 255}));

    // Fractional coverage: of 3 pixels into 2, the middle one is shared.
    const ImageBuffer shared = ImageDownscale::areaAverage(grayRow({0, 150, 255}), 2, 1);
    EXPECT_EQ(shared.pixel(0, 0), (Rgba8{50, 50, 50, 255}));   // (0 + 75) / 1.5
    EXPECT_EQ(shared.pixel(1, 0), (Rgba8{220, 220, 220, 255})); // (75 + 255) / 1.5
}

TEST(ImageDownscale, FlatImagesStayFlatInAnyOrderAndAtAnyFactor) {
    const Rgba8 translucent{60, 90, 120, 128}; // premultiplied
    for (PixelOrder order : {PixelOrder::rgba, PixelOrder::bgra, PixelOrder::argb}) {
        MutableImage image(97, 61, order);
        image.fill(translucent);
        const ImageBuffer source = std::move(image).freeze();
        for (auto [w, h] : {std::pair{13, 7}, std::pair{96, 60}, std::pair{1, 1}, std::pair{97, 61}}) {
            SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h));
            const ImageBuffer reduced = ImageDownscale::areaAverage(source, w, h);
            ASSERT_EQ(reduced.width(), w);
            ASSERT_EQ(reduced.height(), h);
            EXPECT_EQ(reduced.order(), order);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) ASSERT_EQ(reduced.pixel(x, y), translucent) << x << "," << y;
        }
    }
}

TEST(ImageDownscale, ALineOnePixelWideFadesButIsNotLost) {
    // Any pixel pick would either keep the line at full strength or skip it.
    MutableImage image(10, 10);
    image.fill({255, 255, 255, 255});
    for (int y = 0; y < 10; ++y) image.setPixel(3, y, {0, 0, 0, 255});
    const ImageBuffer reduced = ImageDownscale::areaAverage(std::move(image).freeze(), 4, 4);
    // Column 1 covers source columns 2.5 to 5, two fifths of it the line.
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(reduced.pixel(0, y), (Rgba8{255, 255, 255, 255}));
        EXPECT_EQ(reduced.pixel(1, y), (Rgba8{153, 153, 153, 255}));
    }
}

TEST(ImageDownscale, SizesAreLimitedToTheSource) {
    const ImageBuffer row = grayRow({10, 20, 30});
    const ImageBuffer same = ImageDownscale::areaAverage(row, 8, 0);
    ASSERT_EQ(same.width(), 3);
    ASSERT_EQ(same.height(), 1);
    EXPECT_TRUE(same.samePixels(row));
    EXPECT_TRUE(ImageDownscale::areaAverage(ImageBuffer(), 4, 4).isEmpty());
}
