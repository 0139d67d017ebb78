#include "ElementBounds.h"
#include "FakeTextMeasuring.h"
#include "WatermarkLayout.h"

#include <gtest/gtest.h>

using namespace tosvar;

TEST(WatermarkLayout, BricksCoverTheCanvasFromTheShiftedCentre) {
    const samples::FakeTextMeasuring measure;
    const Size canvas{400, 300};
    const Size tile = ElementBounds::textSize(measure, "abcdefgh", 25);
    const double stepX = tile.width + 30, stepY = tile.height + 30; // gap 3 x 25 x 0.4
    const auto flat = WatermarkLayout::tileCenters(measure, "abcdefgh", 25, 0, 0.4, {0, 0}, canvas);
    const int nx = static_cast<int>(std::ceil(250 / stepX)) + 2, ny = static_cast<int>(std::ceil(250 / stepY)) + 1;
    ASSERT_EQ(flat.size(), static_cast<std::size_t>((2 * nx + 1) * (2 * ny + 1)));
    EXPECT_EQ(flat.front(), (Point{200 - nx * stepX + (ny % 2 ? stepX / 2 : 0), 150 - ny * stepY}));
    const std::size_t nextRow = static_cast<std::size_t>(2 * nx + 1);
    EXPECT_DOUBLE_EQ(flat[nextRow].x - flat.front().x, ((ny - 1) % 2 ? stepX / 2 : 0) - (ny % 2 ? stepX / 2 : 0))
        << "rows alternate by half a step";
    EXPECT_DOUBLE_EQ(flat[1].y, flat[0].y) << "angle 0 keeps rows level";
    EXPECT_TRUE(WatermarkLayout::tileCenters(measure, "x", 25, 0, 1, {0, 0}, {0, 10}).empty());
    // The reach is measured from the moved centre, so a moved brick still covers the canvas.
    EXPECT_GT(WatermarkLayout::tileCenters(measure, "abcdefgh", 25, 0, 0.4, {150, 0}, canvas).size(), flat.size());
    // A spacing below 0.1 counts as 0.1.
    EXPECT_EQ(WatermarkLayout::tileCenters(measure, "abcdefgh", 25, 30, 0, {0, 0}, canvas),
              WatermarkLayout::tileCenters(measure, "abcdefgh", 25, 30, 0.1, {0, 0}, canvas));
}
