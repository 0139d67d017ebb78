// GIF export without a movie: which frames are kept and for how long, the
// median-cut palette, the dithering quantiser, and files our writer makes as
// Qt's GIF reader decodes them, frame by frame.
#include "GIFColorQuantizer.h"
#include "GIFExporter.h"
#include "GifWriter.h"
#include "MedianCut.h"
#include "TestApplication.h"
#include "WorkerPool.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <gtest/gtest.h>

#include <random>

using namespace tosvar;

namespace {

ImageBuffer flat(int width, int height, std::uint32_t colour) {
    MutableImage image(width, height);
    image.fill({static_cast<std::uint8_t>(colour >> 16), static_cast<std::uint8_t>(colour >> 8), static_cast<std::uint8_t>(colour), 255});
    return std::move(image).freeze();
}

struct Decoded {
    std::vector<QImage> frames;
    std::vector<int> delaysMs;
    int loops = -2;
};

Decoded decode(const std::vector<std::uint8_t>& gif) {
    testApplication<QGuiApplication>();
    QByteArray bytes(reinterpret_cast<const char*>(gif.data()), static_cast<qsizetype>(gif.size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "gif");
    Decoded decoded;
    decoded.loops = reader.loopCount();
    for (QImage frame = reader.read(); !frame.isNull(); frame = reader.read()) {
        decoded.frames.push_back(frame.convertToFormat(QImage::Format_RGB32));
        decoded.delaysMs.push_back(reader.nextImageDelay());
    }
    return decoded;
}

} // namespace

TEST(GIFExporter, KeepsFramesAtTheRateWithoutFillingGapsAndClampsDelays) {
    std::vector<double> thirty;
    for (int i = 0; i < 30; ++i) thirty.push_back(i / 30.0);
    thirty.push_back(2.0); // the screen stood still for a second
    const std::vector<std::size_t> kept = GIFExporter::keptIndices(thirty, 10);
    EXPECT_EQ(kept, (std::vector<std::size_t>{0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30}));
    std::vector<double> keptTimes;
    for (std::size_t i : kept) keptTimes.push_back(thirty[i]);
    const std::vector<double> delays = GIFExporter::frameDelays(keptTimes, 0.1);
    EXPECT_NEAR(delays[0], 0.1, 1e-9);
    EXPECT_NEAR(delays[9], 2.0 - 0.9, 1e-9) << "the still second stays one long frame";
    EXPECT_NEAR(delays.back(), 0.1, 1e-9) << "the last frame shows for 1/fps";

    EXPECT_EQ(GIFExporter::frameDelays({0, 0.01, 20.01}, 0.1), (std::vector<double>{0.02, 10.0, 0.1}));
    EXPECT_EQ(GIFExporter::keptIndices({5.0}, 10), (std::vector<std::size_t>{0}));
    EXPECT_EQ(GIFExporter::paletteSamplePositions(12), (std::vector<std::size_t>{0, 2, 5, 8, 11}));
    EXPECT_EQ(GIFExporter::paletteSamplePositions(1), (std::vector<std::size_t>{0}));
}

TEST(MedianCut, FewColoursStayExactAndManySplitAtTheMedianOfTheWidestChannel) {
    EXPECT_EQ(MedianCut::palette({0x30, 0x10, 0x30, 0x20}, 256), (std::vector<std::uint32_t>{0x10, 0x20, 0x30}));
    EXPECT_TRUE(MedianCut::palette({}, 8).empty());
    // Two clusters of reds and a wide spread of blues: two colours take the
    // reds apart from the blues, by the widest channel.
    std::vector<std::uint32_t> samples;
    for (int i = 0; i < 10; ++i) samples.push_back(0xF00000u + static_cast<std::uint32_t>(i));
    for (int i = 0; i < 10; ++i) samples.push_back(0x0000F0u + static_cast<std::uint32_t>(i) * 0x10000u);
    const std::vector<std::uint32_t> two = MedianCut::palette(samples, 2);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[0] >> 16, 4u) << "the blues' mean red";
    EXPECT_EQ(two[1] >> 16, 0xF0u) << "the reds";
}

TEST(GIFColorQuantizer, PicksTheExactlyNearestEntryAndDiffusesTheError) {
    const GIFColorQuantizer quantizer({0x000000, 0xFFFFFF, 0xFF0000});
    EXPECT_EQ(quantizer.nearest(255, 0, 0), 2) << "pure red";
    EXPECT_EQ(quantizer.nearest(0, 0, 0), 0);
    // Exactly nearest, not the nearest to the centre of the colour's 5-bit cell.
    const GIFColorQuantizer close({0x000000, 0x070707});
    EXPECT_EQ(close.nearest(3, 3, 3), 0);
    EXPECT_EQ(close.nearest(4, 4, 4), 1);
    EXPECT_EQ(GIFColorQuantizer({0x101010, 0x101010}).nearest(16, 16, 16), 0) << "the lower index wins a tie";
    EXPECT_EQ(quantizer.indices(flat(4, 3, 0xFF0000)), std::vector<std::uint8_t>(12, 2)) << "a palette colour dithers to itself";
    // Mid grey between black and white comes out as a mix of both.
    const std::vector<std::uint8_t> grey = quantizer.indices(flat(20, 20, 0x808080));
    const auto whites = std::count(grey.begin(), grey.end(), 1);
    EXPECT_NEAR(static_cast<double>(whites) / 400, 0.5, 0.05);
    EXPECT_TRUE(GIFColorQuantizer({}).indices(flat(2, 2, 0)).empty());
}

TEST(GifWriter, FramesDecodeAsDrawnWithChangedRectanglesTransparencyAndMergedStillFrames) {
    const std::vector<std::uint32_t> colours{0x102030, 0xE0E0E0, 0x3060F0};
    const GIFColorQuantizer quantizer(colours);
    GIFExporter::AnimationEncoder encoder(quantizer, 32, 16, WorkerPool::shared());
    encoder.add(flat(32, 16, 0xE0E0E0), 0.1);
    MutableImage second(32, 16);
    second.fill({0xE0, 0xE0, 0xE0, 255});
    for (int y = 4; y < 8; ++y)
        for (int x = 10; x < 14; ++x) second.setPixel(x, y, {0x30, 0x60, 0xF0, 255});
    const ImageBuffer changed = std::move(second).freeze();
    encoder.add(changed, 0.2);
    encoder.add(changed, 0.3); // nothing changed: the frame before shows longer
    encoder.add(flat(32, 16, 0x102030), 0.1);
    const std::vector<std::uint8_t> gif = encoder.finish();

    const Decoded decoded = decode(gif);
    EXPECT_EQ(decoded.loops, -1) << "loops for ever";
    ASSERT_EQ(decoded.frames.size(), 3u);
    EXPECT_EQ(decoded.delaysMs, (std::vector<int>{100, 500, 100}));
    EXPECT_EQ(decoded.frames[0].pixel(0, 0), qRgb(0xE0, 0xE0, 0xE0));
    EXPECT_EQ(decoded.frames[1].pixel(11, 5), qRgb(0x30, 0x60, 0xF0));
    EXPECT_EQ(decoded.frames[1].pixel(20, 12), qRgb(0xE0, 0xE0, 0xE0)) << "outside the changed rectangle the first frame shows";
    EXPECT_EQ(decoded.frames[2].pixel(11, 5), qRgb(0x10, 0x20, 0x30));
}

TEST(GifWriter, LongRunsOfNoisePassThroughTheDictionaryResetsIntact) {
    std::vector<std::uint32_t> palette;
    for (std::uint32_t i = 0; i < 256; ++i) palette.push_back(i * 0x010101u);
    GifWriter writer(300, 200, palette);
    std::vector<std::uint8_t> indices(300 * 200);
    std::mt19937 random(7);
    // Noise fills the dictionary fast; runs exercise long codes.
    for (std::size_t i = 0; i < indices.size(); ++i) indices[i] = i % 3000 < 1500 ? static_cast<std::uint8_t>(random() & 0xFF) : 9;
    writer.add({{0, 0, 300, 200}, indices.data(), std::nullopt, 0.5});
    const Decoded decoded = decode(writer.finish());
    ASSERT_EQ(decoded.frames.size(), 1u);
    int wrong = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x) {
            const int v = indices[static_cast<std::size_t>(y) * 300 + x];
            wrong += decoded.frames[0].pixel(x, y) != qRgb(v, v, v);
        }
    EXPECT_EQ(wrong, 0);
}
