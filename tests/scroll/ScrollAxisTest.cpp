#include "ScrollAxisDetector.h"
#include "ScrollTranspose.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

using Tag = ScrollResultKind::Tag;
const ScrollResultKind added = ScrollResultKind::appended(40);
const ScrollResultKind prepended = ScrollResultKind::prepended(12);
const ScrollResultKind nothing = ScrollResultKind::of(Tag::noChange);
const ScrollResultKind unsure = ScrollResultKind::of(Tag::lowConfidence);

} // namespace

TEST(ScrollTranspose, SwapsRowsAndColumnsInTheSameByteOrder) {
    MutableImage image(37, 70, PixelOrder::bgra);
    for (int y = 0; y < 70; ++y)
        for (int x = 0; x < 37; ++x)
            image.setPixel(x, y, {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(x ^ y), 255});
    const ImageBuffer source = std::move(image).freeze();
    const auto swapped = ScrollTranspose::transposed(source);
    ASSERT_TRUE(swapped);
    EXPECT_EQ(swapped->width(), 70);
    EXPECT_EQ(swapped->height(), 37);
    EXPECT_EQ(swapped->order(), PixelOrder::bgra);
    for (int y = 0; y < 37; ++y)
        for (int x = 0; x < 70; ++x) ASSERT_EQ(swapped->pixel(x, y), source.pixel(y, x)) << x << "," << y;
    EXPECT_TRUE(ScrollTranspose::transposed(*swapped)->samePixels(source));
    EXPECT_FALSE(ScrollTranspose::transposed(ImageBuffer()));
}

TEST(ScrollAxisDetector, OneVerticalSuccessDecidesAtOnce) {
    ScrollAxisDetector detector;
    EXPECT_FALSE(detector.observe(nothing, added));
    EXPECT_EQ(detector.observe(prepended, added), ScrollAxis::vertical);
    EXPECT_EQ(detector.observe(nothing, added), ScrollAxis::vertical) << "a decision stands";
    EXPECT_EQ(detector.observe(nothing, added), ScrollAxis::vertical);
}

TEST(ScrollAxisDetector, HorizontalNeedsTwoSuccessesInARow) {
    ScrollAxisDetector interrupted;
    EXPECT_FALSE(interrupted.observe(unsure, added));
    EXPECT_FALSE(interrupted.observe(unsure, nothing));
    EXPECT_FALSE(interrupted.observe(unsure, added)) << "the streak was reset";
    EXPECT_EQ(interrupted.horizontalStreak, 1);
    EXPECT_EQ(interrupted.observe(nothing, prepended), ScrollAxis::horizontal);
    EXPECT_EQ(interrupted.observe(added, nothing), ScrollAxis::horizontal);
}
