#include "DropShadowDecorator.h"
#include "GaussianBlur.h"
#include "MosaicEngine.h"
#include "PngEncoder.h"
#include "StepBadgeLabel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

using namespace tosvar;

namespace {

ImageBuffer solid(int width, int height, Rgba8 colour) {
    MutableImage image(width, height);
    image.fill(colour);
    return std::move(image).freeze();
}

// Columns of 0, 10, 20, ... in every channel but alpha.
ImageBuffer ramp(int width, int height) {
    MutableImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto v = static_cast<std::uint8_t>(10 * x);
            image.setPixel(x, y, {v, v, v, 255});
        }
    return std::move(image).freeze();
}

} // namespace

TEST(GaussianBlur, MatchesTheKernelsSpreadAndKeepsWhatItSpreads) {
    for (double sigma : {0.6, 2.0, 8.0, 24.0}) {
        const std::vector<int> boxes = GaussianBlur::boxSizes(sigma);
        double variance = 0;
        for (int w : boxes) variance += (w * w - 1) / 12.0;
        EXPECT_NEAR(std::sqrt(variance), sigma, 0.25 * sigma + 0.3) << sigma;
    }
    // An impulse far from the edges: the sum stays, the spread is sigma.
    const int size = 101;
    std::vector<float> plane(size * size, 0.0f);
    plane[50 * size + 50] = 1000.0f;
    GaussianBlur::blur(plane, size, size, 1, 5.0, GaussianBlur::Edges::transparent);
    EXPECT_NEAR(std::accumulate(plane.begin(), plane.end(), 0.0), 1000.0, 0.5);
    double spread = 0;
    for (int x = 0; x < size; ++x) spread += plane[50 * size + x] * (x - 50) * (x - 50);
    double rowSum = 0;
    for (int x = 0; x < size; ++x) rowSum += plane[50 * size + x];
    EXPECT_NEAR(std::sqrt(spread / rowSum), 5.0, 0.6);

    std::vector<float> flat(40 * 30 * 4, 7.0f);
    GaussianBlur::blur(flat, 40, 30, 4, 6.0, GaussianBlur::Edges::extended);
    for (float v : flat) ASSERT_NEAR(v, 7.0f, 1e-3) << "extended edges keep a flat plane flat";
}

TEST(MosaicEngine, BlocksAnchorOnTheCentreAndTheCacheStartsOver) {
    MosaicEngine engine(ramp(10, 4));
    // Block 4 on width 10: edges at -3, 1, 5, 9, so blocks [0,1) [1,5) [5,9) [9,10).
    const auto mosaic = engine.pixelated(4);
    ASSERT_TRUE(mosaic);
    EXPECT_EQ(mosaic->pixel(0, 0).r, 0);
    EXPECT_EQ(mosaic->pixel(1, 0).r, 25) << "(10+20+30+40)/4";
    EXPECT_EQ(mosaic->pixel(4, 3).r, 25);
    EXPECT_EQ(mosaic->pixel(5, 0).r, 65);
    EXPECT_EQ(mosaic->pixel(9, 0).r, 90);

    MosaicEngine small(ramp(10, 4));
    const auto tiny = small.pixelated(0.2);
    ASSERT_TRUE(tiny);
    EXPECT_TRUE(tiny->samePixels(small.base()));
    small.pixelated(1);
    EXPECT_EQ(small.cachedPixelations(), 1u) << "0.2 is block size 1";
    for (double block : {2, 3, 4, 5, 6}) small.pixelated(block);
    EXPECT_EQ(small.cachedPixelations(), 6u);
    small.pixelated(7);
    EXPECT_EQ(small.cachedPixelations(), 1u) << "the seventh size empties the cache";
}

TEST(MosaicEngine, BlurStaysDenseToTheEdges) {
    MosaicEngine engine(solid(64, 48, {30, 60, 90, 255}));
    const auto blurred = engine.blurred(12);
    ASSERT_TRUE(blurred);
    EXPECT_EQ(blurred->pixel(0, 0), (Rgba8{30, 60, 90, 255}));
    EXPECT_EQ(blurred->pixel(63, 47), (Rgba8{30, 60, 90, 255}));
    EXPECT_TRUE(engine.blurred(-3)->samePixels(engine.base())) << "a negative radius is 0";
}

TEST(DropShadowDecorator, GrowsByTheInsetsAndKeepsTheImageExact) {
    const auto style = DropShadowDecorator::Style::screenshot();
    EXPECT_EQ(style.insets(), (DropShadowDecorator::Insets{18, 24, 30, 24}));
    EXPECT_EQ(DropShadowDecorator::Style{}.insets(), (DropShadowDecorator::Insets{}));

    const ImageBuffer image = ramp(20, 30);
    const auto twice = DropShadowDecorator::decorate(image, 2, style);
    ASSERT_TRUE(twice);
    EXPECT_EQ(twice->width(), 20 + 96);
    EXPECT_EQ(twice->height(), 30 + 96);
    EXPECT_TRUE(twice->cropped({48, 36, 20, 30}).samePixels(image)) << "the image itself is untouched";
    EXPECT_EQ(twice->pixel(0, 0).a, 0) << "far corners stay clear";
    EXPECT_GT(twice->pixel(58, 36 + 30 + 6).a, twice->pixel(58, 36 - 7).a) << "the shadow falls below";

    const auto half = DropShadowDecorator::decorate(image, 0.5, style);
    ASSERT_TRUE(half);
    EXPECT_EQ(half->width(), 20 + 48) << "a scale below 1 counts as 1";
    EXPECT_FALSE(DropShadowDecorator::decorate(ImageBuffer(), 1, style));

    const auto png = PngEncoder::encode(image);
    ASSERT_TRUE(png);
    EXPECT_TRUE(DropShadowDecorator::decoratePNG(*png, 1, style));
    EXPECT_FALSE(DropShadowDecorator::decoratePNG({1, 2, 3}, 1, style));
}

TEST(DropShadowDecorator, TellsADecoratedImageFromAPlainOne) {
    const auto style = DropShadowDecorator::Style::screenshot();
    const auto decorated = DropShadowDecorator::decorate(solid(200, 150, {200, 200, 200, 255}), 1, style);
    ASSERT_TRUE(decorated);
    EXPECT_TRUE(DropShadowDecorator::looksDecorated(*decorated));
    EXPECT_FALSE(DropShadowDecorator::looksDecorated(solid(200, 150, {200, 200, 200, 255})));
    EXPECT_FALSE(DropShadowDecorator::looksDecorated(*decorated, false)) << "no alpha channel";
    EXPECT_FALSE(DropShadowDecorator::looksDecorated(decorated->cropped({0, 0, 23, 150}))) << "under 24 wide";
    EXPECT_FALSE(DropShadowDecorator::looksDecorated(solid(200, 150, {0, 0, 0, 0}))) << "no ramp at all";
}

TEST(StepBadgeLabel, CountsNumbersAndLetters) {
    EXPECT_EQ(StepBadgeLabel::next(""), "1");
    EXPECT_EQ(StepBadgeLabel::next("9"), "10");
    EXPECT_EQ(StepBadgeLabel::next("041"), "42");
    EXPECT_EQ(StepBadgeLabel::next("a"), "b");
    EXPECT_EQ(StepBadgeLabel::next("z"), "aa");
    EXPECT_EQ(StepBadgeLabel::next("Z"), "AA");
    EXPECT_EQ(StepBadgeLabel::next("Az"), "Ba");
    EXPECT_EQ(StepBadgeLabel::next("ZZ"), "AAA");
    EXPECT_EQ(StepBadgeLabel::next("a1"), "a1");
    EXPECT_EQ(StepBadgeLabel::next("99999999999999999999999"), "99999999999999999999999") << "too big to count";
}

TEST(StepBadgeLabel, ShrinksALabelUntilItFitsItsDisc) {
    // Half an em per character, one em per line.
    struct HandFace final : TextMeasuring {
        FontLineMetrics metrics(double size) const override { return {0.75 * size, 0.25 * size, 0}; }
        double lineWidth(std::string_view line, double size) const override { return 0.5 * size * static_cast<double>(line.size()); }
    } face;
    EXPECT_DOUBLE_EQ(StepBadgeLabel::fittedFontSize(face, "1", 10), 10) << "fits as it is";
    EXPECT_DOUBLE_EQ(StepBadgeLabel::fittedFontSize(face, "12345", 10), 6) << "25 wide into 15";
    EXPECT_DOUBLE_EQ(StepBadgeLabel::fittedFontSize(face, "1\n2", 10), 7.5) << "20 tall into 15";
    EXPECT_DOUBLE_EQ(StepBadgeLabel::fittedFontSize(face, "", 10), 10);
    EXPECT_DOUBLE_EQ(StepBadgeLabel::fittedFontSize(face, "12", 0), 0);
}
