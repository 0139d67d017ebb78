#include "ScrollCanvas.h"
#include "ScrollTestPatterns.h"
#include "WorkerPool.h"

#include <gtest/gtest.h>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

// A page whose rows repeat every `period` rows (a period of 0 repeats nothing).
ScrollPatch pageWithPeriod(int width, int height, int period, std::uint32_t seed) {
    ScrollPatch page = noisePage(width, height, seed);
    if (period > 0)
        for (int y = period; y < height; ++y)
            std::copy(page.row(y - period), page.row(y - period) + width, page.pixels.begin() + std::ptrdiff_t(y) * width);
    return page;
}

} // namespace

TEST(ScrollCanvas, PushAveragesColumnsAndRowsAndHidesAPartialRow) {
    ScrollCanvas canvas(2, 2);
    const ScrollPatch patch = patchOf({{0, 2, 4, 6, 99}, {2, 4, 6, 8, 99}, {10, 10, 10, 10, 99}});
    canvas.push(patch, {0, 3});
    // Two columns from five: step 2, the fifth column unused; rows 0 and 1 averaged.
    EXPECT_EQ(canvas.rows(), (std::vector<float>{2, 6}));
    EXPECT_EQ(canvas.height(), 1);
    EXPECT_EQ(canvas.pendingCount(), 1);
    EXPECT_EQ(canvas.docRows(), 3);
    canvas.push(patch, {-5, 8}); // only rows inside the patch count
    EXPECT_EQ(canvas.height(), 3);
    EXPECT_EQ(canvas.pendingCount(), 0);
    EXPECT_EQ(canvas.docRows(), 6);
    // The pending row 2 of the first push completes with row 0 of the second.
    EXPECT_EQ((std::vector<float>(canvas.rows().begin() + 2, canvas.rows().end())),
              (std::vector<float>{5.5, 7.5, 6.5, 8.5}));
    canvas.push(patchOf({{1}}), {0, 1});
    EXPECT_EQ(canvas.docRows(), 6) << "a patch narrower than the canvas is ignored";
}

TEST(ScrollCanvas, LocateFindsABandOfADocument) {
    const ScrollPatch page = pageWithPeriod(64, 400, 0, 11);
    ScrollCanvas canvas(32, 4);
    canvas.push(page, {0, 400});
    const ScrollPatch frame = viewport(page, 120, 100);
    EXPECT_EQ(canvas.locate({20, 40}, frame, 18.0, 4.0), 140);
    EXPECT_EQ(canvas.locate({22, 40}, frame, 1.0, 4.0), 142) << "off the canvas grid, from the band's third row on";
    EXPECT_EQ(canvas.locate({23, 40}, frame, 1.0, 4.0), 143);
    EXPECT_FALSE(canvas.locate({0, 40}, flatPatch(16, 100, 9), 18.0, 4.0)) << "narrower than the canvas";
    ScrollCanvas small(32, 4);
    small.push(page, {0, 40});
    EXPECT_FALSE(small.locate({0, 40}, frame, 18.0, 4.0)) << "the canvas is no taller than the band";
}

TEST(ScrollCanvas, LocateDemandsDominanceOverFarPositionsOnly) {
    // Content that repeats every 40 rows (10 canvas rows): a perfect match
    // has an equal rival 10 canvas rows away.
    const ScrollPatch repeating = pageWithPeriod(64, 400, 40, 12);
    ScrollCanvas canvas(32, 4);
    canvas.push(repeating, {0, 400});
    EXPECT_FALSE(canvas.locate({0, 24}, viewport(repeating, 80, 60), 18.0, 4.0));

    // Smooth content: the best position's neighbours within 2 canvas rows
    // match almost as well, yet only far positions count as rivals.
    ScrollPatch smooth{64, 400, {}};
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 64; ++x) smooth.pixels.push_back(float(y / 2 + (x % 8) * 3));
    ScrollCanvas ramp(32, 4);
    ramp.push(smooth, {0, 400});
    EXPECT_EQ(ramp.locate({0, 24}, viewport(smooth, 200, 60), 18.0, 4.0), 200);
}

TEST(ScrollCanvas, LocateGivesTheSameAnswerOnAPool) {
    const ScrollPatch page = pageWithPeriod(192, 20000, 0, 13);
    ScrollCanvas canvas(192, 4);
    canvas.push(page, {0, 20000});
    WorkerPool pool(2, "canvas-test");
    const ScrollPatch frame = viewport(page, 13000, 400);
    const auto alone = canvas.locate({100, 200}, frame, 18.0, 4.0);
    EXPECT_EQ(alone, 13100);
    EXPECT_EQ(canvas.locate({100, 200}, frame, 18.0, 4.0, &pool), alone);
}
