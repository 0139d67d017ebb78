#include "ScreenCoordinates.h"

#include <gtest/gtest.h>

using namespace tosvar;

// Three monitors laid over one root window: the main one in the middle, a
// smaller one to its left standing lower, a portrait one to its right.
TEST(ScreenCoordinates, MultiMonitorLayoutFlipsThroughTheMainDisplay) {
    const Rect main(1920, 0, 2560, 1440);
    const Rect left(0, 360, 1920, 1080);
    const Rect right(4480, -200, 1080, 1920);
    EXPECT_EQ(ScreenCoordinates::fromGlobal(main, main), Rect(0, 0, 2560, 1440));
    EXPECT_EQ(ScreenCoordinates::fromGlobal(left, main), Rect(-1920, 0, 1920, 1080));
    EXPECT_EQ(ScreenCoordinates::fromGlobal(right, main), Rect(2560, -280, 1080, 1920));
    for (const Rect& r : {main, left, right})
        EXPECT_EQ(ScreenCoordinates::toGlobal(ScreenCoordinates::fromGlobal(r, main), main), r);
    // The top-left pixel of the main display lies at its top in y-up points.
    EXPECT_EQ(ScreenCoordinates::pointFromGlobal({1920, 0}, main), (Point{0, 1440}));
}
