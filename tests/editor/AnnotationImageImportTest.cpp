#include "AnnotationImageImport.h"

#include "PngDecoder.h"
#include "PngEncoder.h"

#include <gtest/gtest.h>

using namespace tosvar;
namespace Import = AnnotationImageImport;

namespace {

std::vector<std::uint8_t> flatPng(int width, int height, Rgba8 color) {
    MutableImage image(width, height);
    image.fill(color);
    return PngEncoder::encode(std::move(image).freeze()).value();
}

} // namespace

TEST(AnnotationImageImport, PicturesAreStoredAtUpToTwiceTheCanvasWithin256To4096) {
    EXPECT_EQ(Import::maxPixel({1000, 600}), 2000);
    EXPECT_EQ(Import::maxPixel({600, 1000}), 2000);
    EXPECT_EQ(Import::maxPixel({100, 40}), 256);
    EXPECT_EQ(Import::maxPixel({3000, 1000}), 4096);
}

TEST(AnnotationImageImport, APictureWithinTheLimitKeepsItsBytes) {
    const std::vector<std::uint8_t> png = flatPng(300, 200, {10, 20, 30, 255});
    const Expected<AnnotationImage> first = Import::payload(png, 300);
    const Expected<AnnotationImage> second = Import::payload(png, 300);
    ASSERT_TRUE(first) << first.error().message;
    ASSERT_TRUE(second);
    EXPECT_TRUE(std::ranges::equal(first->data.span(), png));
    EXPECT_EQ(first->pixelWidth, 300);
    EXPECT_EQ(first->pixelHeight, 200);
    EXPECT_NE(first->id, second->id);
}

TEST(AnnotationImageImport, AVeryWidePictureIsStoredAtTheLimitOnItsLongestSide) {
    const Rgba8 teal{0, 128, 128, 255};
    const double limit = Import::maxPixel({1000, 700});
    const Expected<AnnotationImage> image = Import::payload(flatPng(20000, 10, teal), limit);
    ASSERT_TRUE(image) << image.error().message;
    EXPECT_EQ(image->pixelWidth, 2000);
    EXPECT_EQ(image->pixelHeight, 1);

    const Expected<ImageBuffer> stored = PngDecoder::decode(image->data.span());
    ASSERT_TRUE(stored) << stored.error().message;
    EXPECT_EQ(stored->width(), 2000);
    EXPECT_EQ(stored->height(), 1);
    EXPECT_EQ(stored->pixel(0, 0), teal);
    EXPECT_EQ(stored->pixel(1999, 0), teal);
}

TEST(AnnotationImageImport, BytesThatAreNoPictureGiveAnError) {
    const std::vector<std::uint8_t> garbage{'G', 'I', 'F', '8', '9', 0, 1, 2, 3, 4, 5};
    const Expected<AnnotationImage> image = Import::payload(garbage, 2000);
    ASSERT_FALSE(image);
    EXPECT_NE(image.error().message.find("not an image"), std::string::npos) << image.error().message;
    EXPECT_FALSE(Import::payload({}, 2000));
}

TEST(AnnotationImageImport, PlacementShrinksToHalfTheCanvasAndNeverEnlarges) {
    // Larger than the canvas: half the canvas in the tighter direction, centred.
    EXPECT_EQ(Import::placement({4000, 3000}, {1000, 800}, std::nullopt, 1), Rect(250, 212.5, 500, 375));
    // Small: its own size, in canvas units.
    EXPECT_EQ(Import::placement({100, 50}, {1000, 800}, std::nullopt, 1), Rect(450, 375, 100, 50));
    EXPECT_EQ(Import::placement({100, 50}, {1000, 800}, std::nullopt, 0.5), Rect(475, 387.5, 50, 25));
    // A sliver still gets a pixel.
    EXPECT_EQ(Import::placement({0.2, 1600}, {1000, 800}, std::nullopt, 1), Rect(499.5, 200, 1, 400));
    // Nothing to place.
    EXPECT_EQ(Import::placement({0, 50}, {1000, 800}, std::nullopt, 1), Rect(0, 0, 0, 0));
    EXPECT_EQ(Import::placement({100, 50}, {1000, -1}, std::nullopt, 1), Rect(0, 0, 0, 0));
    EXPECT_EQ(Import::placement({100, 50}, {1000, 800}, std::nullopt, 0), Rect(0, 0, 0, 0));
}

TEST(AnnotationImageImport, APictureDroppedNearAnEdgeStaysInside) {
    const Size picture{200, 100};
    const Size canvas{1000, 800};
    EXPECT_EQ(Import::placement(picture, canvas, Point{300, 300}, 1), Rect(200, 250, 200, 100));
    EXPECT_EQ(Import::placement(picture, canvas, Point{10, 5}, 1), Rect(0, 0, 200, 100));
    EXPECT_EQ(Import::placement(picture, canvas, Point{995, 790}, 1), Rect(800, 700, 200, 100));
    EXPECT_EQ(Import::placement(picture, canvas, Point{-500, 2000}, 1), Rect(0, 700, 200, 100));
}

TEST(AnnotationImageImport, TheElementShowsThePictureInTheRectangle) {
    const Expected<AnnotationImage> image = Import::payload(flatPng(40, 30, {1, 2, 3, 255}), 256);
    ASSERT_TRUE(image);
    const AnnotationElement a = Import::element(*image, Rect(5, 6, 40, 30));
    const AnnotationElement b = Import::element(*image, Rect(5, 6, 40, 30));
    EXPECT_NE(a.id, b.id);
    ASSERT_NE(a.kind.imagePayload(), nullptr);
    EXPECT_EQ(*a.kind.imagePayload(), *image);
    EXPECT_EQ(a.geometry, Geometry::rect(Rect(5, 6, 40, 30)));
    EXPECT_EQ(a.style, AnnotationStyle{});
}
