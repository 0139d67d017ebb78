#include "TestImages.h"
#include "DropShadowDecorator.h"
#include "GaussianBlur.h"
#include "MosaicEngine.h"
#include "PngEncoder.h"
#include "StepBadgeLabel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

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

// Grey pixels {v, v, v, 255} from rows of values.
ImageBuffer grey(const std::vector<std::vector<int>>& rows) {
    MutableImage image(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < rows[y].size(); ++x) {
            const auto v = static_cast<std::uint8_t>(rows[y][x]);
            image.setPixel(static_cast<int>(x), static_cast<int>(y), {v, v, v, 255});
        }
    return std::move(image).freeze();
}


// Transparent, with opaque squares of `colour` at the given corners.
ImageBuffer squares(int width, int height, const std::vector<std::pair<int, int>>& corners, int side, Rgba8 colour) {
    MutableImage image(width, height);
    for (auto [x0, y0] : corners)
        for (int y = y0; y < y0 + side; ++y)
            for (int x = x0; x < x0 + side; ++x) image.setPixel(x, y, colour);
    return std::move(image).freeze();
}

std::vector<double> channelSums(const ImageBuffer& image) {
    std::vector<double> sums(4, 0.0);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const Rgba8 p = image.pixel(x, y);
            sums[0] += p.r;
            sums[1] += p.g;
            sums[2] += p.b;
            sums[3] += p.a;
        }
    return sums;
}

int largestDifference(const ImageBuffer& a, const ImageBuffer& b) {
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba8 p = a.pixel(x, y), q = b.pixel(x, y);
            largest = std::max({largest, std::abs(p.r - q.r), std::abs(p.g - q.g), std::abs(p.b - q.b), std::abs(p.a - q.a)});
        }
    return largest;
}

double meanDifference(const ImageBuffer& a, const ImageBuffer& b) {
    double total = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba8 p = a.pixel(x, y), q = b.pixel(x, y);
            total += std::abs(p.r - q.r) + std::abs(p.g - q.g) + std::abs(p.b - q.b) + std::abs(p.a - q.a);
        }
    return total / (4.0 * a.width() * a.height());
}

// The image blurred at full resolution, with nothing reduced.
ImageBuffer blurredDirectly(const ImageBuffer& image, double sigma) {
    std::vector<float> plane;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const Rgba8 p = image.pixel(x, y);
            plane.insert(plane.end(), {float(p.r), float(p.g), float(p.b), float(p.a)});
        }
    GaussianBlur::blur(plane, image.width(), image.height(), 4, sigma, GaussianBlur::Edges::extended);
    MutableImage out(image.width(), image.height());
    auto byte = [](float v) { return static_cast<std::uint8_t>(std::clamp(std::lround(v), 0L, 255L)); };
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const float* p = plane.data() + 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width()) + static_cast<std::size_t>(x));
            out.setPixel(x, y, {byte(p[0]), byte(p[1]), byte(p[2]), byte(p[3])});
        }
    return std::move(out).freeze();
}

// A runner that cuts the range into `parts` slices (one per item when there
// are fewer items) and runs them last first, as a pool may finish them.
ParallelRunner inParts(int parts) {
    return [parts](int count, const std::function<void(int, int)>& body) {
        if (count <= 0) return;
        const int step = std::max(1, (count + parts - 1) / parts);
        std::vector<std::pair<int, int>> slices;
        for (int begin = 0; begin < count; begin += step) slices.emplace_back(begin, std::min(count, begin + step));
        for (auto slice = slices.rbegin(); slice != slices.rend(); ++slice) body(slice->first, slice->second);
    };
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

// 7 by 5 with blocks of 3: the grid's lines pass through the middle (3.5,
// 2.5), so x = 0.5, 3.5, 6.5 and y = 2.5. A line through the middle of a
// pixel puts the pixel in the block before it: columns [0,1) [1,4) [4,7),
// rows [0,3) [3,5). Means round half up.
TEST(PixelKernels, PixelationFillsEachBlockOfTheCentredGridWithItsMean) {
    const ImageBuffer image = grey({
        {0, 10, 20, 30, 40, 50, 60},
        {5, 15, 25, 35, 45, 55, 65},
        {100, 110, 120, 130, 140, 150, 160},
        {200, 201, 202, 203, 204, 205, 206},
        {7, 9, 11, 13, 15, 17, 19},
    });
    struct Case {
        double block;
        std::vector<std::vector<int>> expected;
    };
    for (const Case& c : {
             Case{3,
                  {
                      {35, 55, 55, 55, 85, 85, 85}, // 105/3, 495/9, 765/9
                      {35, 55, 55, 55, 85, 85, 85},
                      {35, 55, 55, 55, 85, 85, 85},
                      {104, 107, 107, 107, 111, 111, 111}, // 207/2 = 103.5, 639/6 = 106.5, 666/6
                      {104, 107, 107, 107, 111, 111, 111},
                  }},
             // A block larger than the image: four quarters meeting at the middle.
             Case{100,
                  {
                      {50, 50, 50, 50, 85, 85, 85}, // 600/12, 765/9
                      {50, 50, 50, 50, 85, 85, 85},
                      {50, 50, 50, 50, 85, 85, 85},
                      {106, 106, 106, 106, 111, 111, 111}, // 846/8 = 105.75, 666/6
                      {106, 106, 106, 106, 111, 111, 111},
                  }},
             Case{1,
                  {
                      {0, 10, 20, 30, 40, 50, 60},
                      {5, 15, 25, 35, 45, 55, 65},
                      {100, 110, 120, 130, 140, 150, 160},
                      {200, 201, 202, 203, 204, 205, 206},
                      {7, 9, 11, 13, 15, 17, 19},
                  }},
         }) {
        EXPECT_TRUE(PixelKernels::pixelate(image, c.block).samePixels(grey(c.expected))) << "block " << c.block;
    }
    for (double below : {0.0, 0.3, -2.0})
        EXPECT_TRUE(PixelKernels::pixelate(image, below).samePixels(image)) << "block " << below << " acts as 1";
}

TEST(PixelKernels, EveryByteOrderIsTreatedAlike) {
    const ImageBuffer image = noiseImage(23, 17, 7);
    const ImageBuffer pixelated = PixelKernels::pixelate(image, 4);
    const ImageBuffer blurred = PixelKernels::blur(image, 2);
    const ImageBuffer reduced = PixelKernels::blur(image, 9);
    for (PixelOrder order : {PixelOrder::bgra, PixelOrder::argb, PixelOrder::abgr}) {
        const ImageBuffer reordered = image.converted(order);
        const ImageBuffer p = PixelKernels::pixelate(reordered, 4);
        EXPECT_EQ(p.order(), order);
        EXPECT_TRUE(p.samePixels(pixelated)) << static_cast<int>(order);
        EXPECT_TRUE(PixelKernels::blur(reordered, 2).samePixels(blurred)) << static_cast<int>(order);
        EXPECT_TRUE(PixelKernels::blur(reordered, 9).samePixels(reduced)) << static_cast<int>(order);
    }
}

TEST(PixelKernels, BlurKeepsFlatImagesFlatAndWhatItSpreads) {
    // 101 by 77 leaves partial blocks at the right and bottom at every reduction.
    const Rgba8 colour{37, 90, 200, 255};
    const ImageBuffer flat = solid(101, 77, colour);
    for (double sigma : {0.5, 3.0, 12.0, 60.0})
        EXPECT_TRUE(PixelKernels::blur(flat, sigma).samePixels(flat)) << "sigma " << sigma;

    // A bright square far from the edges: nothing reaches them, so nothing is
    // lost or gained there. Only the faint tails, rounded to whole levels, may
    // lose a little.
    const ImageBuffer square = squares(256, 256, {{108, 108}}, 40, {250, 160, 120, 255});
    const std::vector<double> before = channelSums(square);
    for (double sigma : {3.0, 12.0, 24.0}) {
        const std::vector<double> after = channelSums(PixelKernels::blur(square, sigma));
        for (std::size_t c = 0; c < 4; ++c) EXPECT_NEAR(after[c], before[c], 0.01 * before[c]) << "sigma " << sigma << " channel " << c;
    }
}

// Large deviations are blurred on a reduced copy; the result must still look
// like the blur itself. Within two deviations of the border the two differ
// more, since each blurs edge-extended input at its own resolution.
TEST(PixelKernels, ReducedBlurStaysCloseToADirectBlur) {
    const int size = 250; // partial blocks at the right and bottom
    MutableImage scene(size, size);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const bool chequer = ((x / 32) + (y / 32)) % 2 == 0;
            const bool disc = (x - 180) * (x - 180) + (y - 70) * (y - 70) < 40 * 40;
            const auto a = static_cast<std::uint8_t>(disc ? 255 : 128 + y / 2);
            const auto r = static_cast<std::uint8_t>(chequer ? a : x * a / 255);
            scene.setPixel(x, y, {r, static_cast<std::uint8_t>(disc ? 20 : a / 2), static_cast<std::uint8_t>(chequer ? 0 : a), a});
        }
    const ImageBuffer image = std::move(scene).freeze();
    for (double sigma : {12.0, 40.0}) {
        ASSERT_GT(PixelKernels::reductionFactor(sigma), 1) << sigma;
        const ImageBuffer reduced = PixelKernels::blur(image, sigma), direct = blurredDirectly(image, sigma);
        const int border = static_cast<int>(2 * sigma);
        const PixelRect inside{border, border, size - 2 * border, size - 2 * border};
        // Next to the full-contrast edges of the chequer and the disc, σ 12 is
        // blurred 8 times smaller and lands up to about 6.5 levels away.
        EXPECT_LE(largestDifference(reduced.cropped(inside), direct.cropped(inside)), 7) << "sigma " << sigma;
        EXPECT_LE(meanDifference(reduced, direct), 1.0) << "sigma " << sigma;
    }
}

TEST(PixelKernels, ReductionFactorsLeaveAFewReducedPixelsOfDeviation) {
    struct Case {
        double sigma;
        int factor;
    };
    for (const Case& c : {Case{0, 1}, Case{2.9, 1}, Case{3, 2}, Case{5.9, 2}, Case{6, 4}, Case{12, 8}, Case{24, 16}, Case{500, 16}})
        EXPECT_EQ(PixelKernels::reductionFactor(c.sigma), c.factor) << c.sigma;
}

// Opaque squares in the top-left and bottom-right corners of a transparent
// image: with the edges extended, each corner is the inside of a large
// opaque area and stays dense; the other two stay clear.
TEST(PixelKernels, BlurredCornersStayDense) {
    const ImageBuffer image = squares(200, 150, {{0, 0}, {136, 86}}, 64, {255, 255, 255, 255});
    for (double sigma : {6.0, 24.0}) {
        const ImageBuffer blurred = PixelKernels::blur(image, sigma);
        EXPECT_GE(blurred.pixel(0, 0).a, 250) << "sigma " << sigma;
        EXPECT_GE(blurred.pixel(199, 149).a, 250) << "sigma " << sigma;
        EXPECT_GE(blurred.pixel(10, 5).a, 245) << "sigma " << sigma;
        EXPECT_LE(blurred.pixel(199, 0).a, 5) << "sigma " << sigma;
        EXPECT_LE(blurred.pixel(0, 149).a, 5) << "sigma " << sigma;
    }
}

// Every kernel writes each part of its output from its input alone, so how
// the work is cut and in which order the parts run cannot change a pixel.
TEST(PixelKernels, ResultsDoNotDependOnHowTheWorkIsSplit) {
    const ImageBuffer image = noiseImage(203, 97, 11);
    for (int parts : {2, 7, 1000}) {
        const ParallelRunner split = inParts(parts);
        for (double block : {3.0, 10.5})
            EXPECT_TRUE(PixelKernels::pixelate(image, block, split).samePixels(PixelKernels::pixelate(image, block)))
                << parts << " parts, block " << block;
        for (double sigma : {2.0, 12.0, 40.0})
            EXPECT_TRUE(PixelKernels::blur(image, sigma, split).samePixels(PixelKernels::blur(image, sigma)))
                << parts << " parts, sigma " << sigma;

        std::vector<float> plane(static_cast<std::size_t>(image.byteCount()));
        std::iota(plane.begin(), plane.end(), 0.0f);
        for (int channels : {1, 4}) {
            const int width = channels == 1 ? 4 * image.width() : image.width();
            std::vector<float> serial(plane.begin(), plane.begin() + static_cast<std::ptrdiff_t>(width) * image.height() * channels);
            std::vector<float> parallel = serial;
            GaussianBlur::blur(serial, width, image.height(), channels, 5, GaussianBlur::Edges::transparent);
            GaussianBlur::blur(parallel, width, image.height(), channels, 5, GaussianBlur::Edges::transparent, split);
            EXPECT_EQ(serial, parallel) << parts << " parts, " << channels << " channels";
        }

        MosaicEngine engine(image, split);
        EXPECT_TRUE(engine.blurred(12)->samePixels(PixelKernels::blur(image, 12))) << parts << " parts";
    }
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
