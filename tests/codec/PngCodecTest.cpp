#include "PngDecoder.h"
#include "PngEncoder.h"

#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

#include <random>

using namespace tosvar;

namespace {

const std::filesystem::path dataDir = TOSVAR_TEST_DATA_DIR;

ImageBuffer randomImage(int width, int height, bool opaque, PixelOrder order = PixelOrder::rgba,
                        unsigned seed = 1) {
    std::mt19937 random(seed);
    MutableImage image(width, height, order);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto a = static_cast<std::uint8_t>(opaque ? 255 : random() % 256);
            auto channel = [&] { return static_cast<std::uint8_t>(a == 0 ? 0 : random() % (a + 1u)); };
            image.setPixel(x, y, {channel(), channel(), channel(), a});
        }
    }
    return std::move(image).freeze();
}

// A screen-like picture: flat panels, a few lines of "text", one gradient.
ImageBuffer screenLike(int width, int height) {
    MutableImage image(width, height);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image.row(y);
        for (int x = 0; x < width; ++x) {
            std::uint8_t v = x < width / 5 ? 235 : 250;
            if ((y / 18) % 3 == 1 && (x * 7 + y * 3) % 11 < 4) v = 40;
            if (y > height * 3 / 4) v = static_cast<std::uint8_t>(x * 255 / width);
            row[4 * x] = v;
            row[4 * x + 1] = v;
            row[4 * x + 2] = static_cast<std::uint8_t>(v / 2 + 100);
            row[4 * x + 3] = 255;
        }
    }
    return std::move(image).freeze();
}

ImageBuffer decodedOrFail(std::span<const std::uint8_t> bytes) {
    Expected<ImageBuffer> image = PngDecoder::decode(bytes);
    EXPECT_TRUE(image) << (image ? "" : image.error().message);
    return image ? *image : ImageBuffer();
}

} // namespace

TEST(PngCodec, OpaqueAndTranslucentImagesRoundTripExactly) {
    for (bool opaque : {true, false}) {
        const ImageBuffer image = randomImage(37, 23, opaque);
        Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(image);
        ASSERT_TRUE(png) << png.error().message;
        const ImageBuffer back = decodedOrFail(*png);
        EXPECT_TRUE(back.samePixels(image)) << (opaque ? "opaque" : "translucent");
        EXPECT_EQ(back.order(), PixelOrder::rgba);
    }
}

TEST(PngCodec, EveryByteOrderWritesTheSameFile) {
    const ImageBuffer rgba = randomImage(16, 9, false);
    const auto reference = PngEncoder::encode(rgba);
    ASSERT_TRUE(reference);
    for (PixelOrder order : {PixelOrder::bgra, PixelOrder::argb, PixelOrder::abgr}) {
        const auto other = PngEncoder::encode(rgba.converted(order));
        ASSERT_TRUE(other);
        EXPECT_EQ(*other, *reference);
    }
}

TEST(PngCodec, OpaqueImagesAreWrittenWithoutAlpha) {
    const auto png = PngEncoder::encode(randomImage(4, 4, true));
    ASSERT_TRUE(png);
    EXPECT_EQ((*png)[25], 2); // colour type in IHDR: RGB
    const auto translucent = PngEncoder::encode(randomImage(4, 4, false));
    EXPECT_EQ((*translucent)[25], 6); // RGBA
}

TEST(PngCodec, BandedWritingGivesTheSameImage) {
    const ImageBuffer image = screenLike(120, 301);
    std::vector<std::uint8_t> banded;
    PngEncoder encoder(
        [&](const std::uint8_t* bytes, std::size_t count) {
            banded.insert(banded.end(), bytes, bytes + count);
            return true;
        },
        image.width(), image.height(), true);
    for (int y = 0; y < image.height(); y += 64)
        ASSERT_FALSE(encoder.writeRows(image.cropped({0, y, image.width(), 64})));
    ASSERT_FALSE(encoder.finish());
    EXPECT_TRUE(decodedOrFail(banded).samePixels(image));
}

TEST(PngCodec, EncoderRefusesMisuse) {
    auto sink = [](const std::uint8_t*, std::size_t) { return true; };
    {
        PngEncoder encoder(sink, 10, 2, true);
        EXPECT_TRUE(encoder.writeRows(randomImage(9, 1, true)).has_value());
        EXPECT_TRUE(encoder.finish().has_value()); // a failed writer stays failed
    }
    {
        PngEncoder encoder(sink, 10, 2, true);
        EXPECT_TRUE(encoder.writeRows(randomImage(10, 3, true)).has_value());
    }
    {
        PngEncoder encoder(sink, 10, 2, true);
        ASSERT_FALSE(encoder.writeRows(randomImage(10, 1, true)));
        auto error = encoder.finish();
        ASSERT_TRUE(error.has_value());
        EXPECT_NE(error->message.find("1 of 2 rows"), std::string::npos);
    }
    {
        PngEncoder encoder([](const std::uint8_t*, std::size_t) { return false; }, 10, 2, true);
        auto error = encoder.writeRows(randomImage(10, 2, true));
        if (!error) error = encoder.finish();
        ASSERT_TRUE(error.has_value());
        EXPECT_NE(error->message.find("refused"), std::string::npos);
    }
    EXPECT_FALSE(PngEncoder::encode(ImageBuffer()));
}

TEST(PngCodec, DecodesFilesWrittenWithEveryRowFilter) {
    // The toolkit's writer picks among all five row filters per row, so its
    // files exercise the unfiltering our own writer never asks for.
    for (bool alpha : {false, true}) {
        QImage source(97, 61, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
        std::mt19937 random(5);
        for (int y = 0; y < source.height(); ++y)
            for (int x = 0; x < source.width(); ++x)
                source.setPixelColor(x, y, QColor((x * 5 + y) % 256, (y * 3) % 256, static_cast<int>(random() % 64) + x,
                                                  alpha ? static_cast<int>(random() % 256) : 255));
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        ASSERT_TRUE(source.save(&buffer, "PNG"));
        const ImageBuffer decoded = decodedOrFail(
            std::span(reinterpret_cast<const std::uint8_t*>(bytes.constData()), static_cast<std::size_t>(bytes.size())));
        const QImage expected = source.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
        ASSERT_EQ(decoded.width(), expected.width());
        // The toolkit rounds premultiplication its own way: allow it one level.
        int worst = 0;
        for (int y = 0; y < expected.height(); ++y)
            for (int i = 0; i < expected.width() * 4; ++i)
                worst = std::max(worst, std::abs(decoded.row(y)[i] - expected.constScanLine(y)[i]));
        EXPECT_LE(worst, alpha ? 1 : 0) << (alpha ? "RGBA" : "RGB");
    }
}

TEST(PngCodec, DecodesEveryColourTypeToPremultipliedRgba) {
    auto gray = PngDecoder::decodeFile(dataDir / "gray-8bit-4x2.png");
    ASSERT_TRUE(gray) << gray.error().message;
    EXPECT_EQ(gray->pixel(1, 0), (Rgba8{85, 85, 85, 255}));
    EXPECT_EQ(gray->pixel(0, 1), (Rgba8{255, 255, 255, 255}));

    auto palette = PngDecoder::decodeFile(dataDir / "palette-trns-3x1.png");
    ASSERT_TRUE(palette) << palette.error().message;
    EXPECT_EQ(palette->pixel(0, 0), (Rgba8{255, 0, 0, 255}));
    EXPECT_EQ(palette->pixel(1, 0), (Rgba8{0, 128, 0, 128}));
    EXPECT_EQ(palette->pixel(2, 0), (Rgba8{0, 0, 0, 0}));

    auto deep = PngDecoder::decodeFile(dataDir / "rgba-16bit-2x1.png");
    ASSERT_TRUE(deep) << deep.error().message;
    EXPECT_EQ(deep->pixel(0, 0), (Rgba8{255, 0, 0, 255}));
    EXPECT_EQ(deep->pixel(1, 0), (Rgba8{0, 0, 128, 128}));
}

TEST(PngCodec, CorruptInputGivesClearErrors) {
    const auto png = PngEncoder::encode(screenLike(64, 64));
    ASSERT_TRUE(png);
    const std::vector<std::uint8_t>& bytes = *png;

    EXPECT_EQ(PngDecoder::decode({}).error().message, "PNG decode: not a PNG file");
    const std::vector<std::uint8_t> text{'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd'};
    EXPECT_FALSE(PngDecoder::decode(text));

    // Cut anywhere after the signature: always an error, never a partial image.
    for (std::size_t length = 8; length < bytes.size(); length += 7) {
        auto cut = PngDecoder::decode(std::span(bytes.data(), length));
        EXPECT_FALSE(cut) << "cut at " << length;
    }
    auto truncated = PngDecoder::decode(std::span(bytes.data(), bytes.size() / 2));
    ASSERT_FALSE(truncated);
    EXPECT_NE(truncated.error().message.find("truncated"), std::string::npos) << truncated.error().message;

    // A flipped byte inside the compressed data fails its checksum.
    std::vector<std::uint8_t> flipped = bytes;
    flipped[bytes.size() / 2] ^= 0x5a;
    EXPECT_FALSE(PngDecoder::decode(flipped));

    auto huge = PngDecoder::decodeFile(dataDir / "huge-header.png");
    ASSERT_FALSE(huge);
    EXPECT_NE(huge.error().message.find("200000x200000"), std::string::npos) << huge.error().message;

    auto missing = PngDecoder::decodeFile(dataDir / "no-such-file.png");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.error().message.find("no-such-file.png"), std::string::npos);
}

TEST(PngCodec, RandomCorruptionNeverCrashes) {
    const auto png = PngEncoder::encode(randomImage(40, 30, false));
    ASSERT_TRUE(png);
    std::mt19937 random(99);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<std::uint8_t> bytes = *png;
        for (int k = 0; k < 3; ++k) bytes[8 + random() % (bytes.size() - 8)] = static_cast<std::uint8_t>(random());
        auto result = PngDecoder::decode(bytes);
        if (result) {
            EXPECT_EQ(result->width(), 40);
        }
    }
}

TEST(PngCodec, ReadsHeaderWithoutPixels) {
    const auto png = PngEncoder::encode(randomImage(17, 5, true));
    ASSERT_TRUE(png);
    auto header = PngDecoder::readHeader(*png);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->width, 17);
    EXPECT_EQ(header->height, 5);
}
