#include "ScrollFullGray.h"
#include "ScrollTestPatterns.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

ScrollFullGray grayOf(const std::vector<std::vector<int>>& rows) {
    ScrollFullGray gray{static_cast<int>(rows.front().size()), static_cast<int>(rows.size()), {}};
    for (const auto& row : rows)
        for (int v : row) gray.bytes.push_back(static_cast<std::uint8_t>(v));
    return gray;
}

} // namespace

TEST(ScrollFullGray, KeepsEverySourceColumnLeftOfTheInset) {
    const ScrollPatch pattern = noisePage(900, 3, 8);
    const auto gray = ScrollFullGray::fromImage(imageOf(pattern), 32);
    ASSERT_TRUE(gray);
    EXPECT_EQ(gray->width, 868);
    EXPECT_EQ(gray->height, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 868; ++x) ASSERT_EQ(gray->row(y)[x], pattern.at(x, y));
    EXPECT_FALSE(ScrollFullGray::fromImage(ImageBuffer(), 0));
}

TEST(ScrollFullGray, EdgeRatesCountNeighbourStepsPerBlockOverSampledRows) {
    // Two blocks of 3 columns; the last pair of block 0 reaches into block 1.
    const ScrollFullGray gray = grayOf({{0, 20, 20, 40, 40, 40, 40},
                                        {0, 0, 0, 0, 0, 0, 0},
                                        {0, 20, 40, 40, 40, 40, 40}});
    // Rows 0 and 2 (step 2): block 0 steps at 0-1 and 2-3 in row 0, at 0-1
    // and 1-2 in row 2.
    EXPECT_EQ(gray.edgeRates(0, 3, 2, 12, 2), (std::vector<double>{4.0 / 6, 0.0}));
    EXPECT_EQ(gray.edgeRates(0, 3, 2, 20, 2), (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(gray.edgeRates(1, 2, 2, 0, 1), (std::vector<double>{0.0, 0.0}));
}

TEST(ScrollFullGray, MismatchRatesCompareShiftedRows) {
    const ScrollFullGray prev = grayOf({{1, 1, 1, 1}, {50, 50, 50, 50}, {9, 9, 9, 9}, {0, 0, 90, 90}});
    const ScrollFullGray next = grayOf({{50, 50, 50, 60}, {9, 9, 30, 30}, {0, 0, 0, 0}, {7, 7, 7, 7}});
    // next row y against prev row y + 1; rows 0..2; blocks of 2 columns.
    // In block 1: 10 is within the tolerance; rows 1 and 2 miss twice each.
    EXPECT_EQ(next.mismatchRates(prev, 1, 0, 3, 2, 12, 1), (std::vector<double>{0.0, 4.0 / 6}));
    // Row 3 has no partner at delta 1: it counts as matching.
    EXPECT_EQ(next.mismatchRates(prev, 1, 0, 4, 2, 12, 1), (std::vector<double>{0.0, 4.0 / 8}));
    EXPECT_EQ(next.mismatchRates(prev, 1, 0, 3, 2, 12, 2), (std::vector<double>{0.0, 2.0 / 4}));
}

TEST(ScrollFullGrayCache, KeepsTheTwoNewestGraysByImageIdentity) {
    ScrollFullGrayCache cache;
    const ImageBuffer a = imageOf(noisePage(40, 5, 1)), b = imageOf(noisePage(40, 5, 2)), c = imageOf(noisePage(40, 5, 3));
    const auto grayA = cache.gray(a, 0);
    ASSERT_TRUE(grayA);
    EXPECT_EQ(cache.gray(ImageBuffer(a), 0), grayA) << "a copy keeps the identity";
    const auto grayB = cache.gray(b, 0);
    EXPECT_EQ(cache.gray(a, 0), grayA);
    cache.gray(c, 0); // evicts a, the oldest
    EXPECT_EQ(cache.gray(b, 0), grayB);
    const auto again = cache.gray(a, 0);
    EXPECT_NE(again, grayA);
    EXPECT_EQ(again->bytes, grayA->bytes);
    // Pixels alike but another image: its own entry.
    EXPECT_NE(cache.gray(imageOf(noisePage(40, 5, 1)), 0), again);
    EXPECT_FALSE(cache.gray(ImageBuffer(), 0)) << "a failed conversion";
}

TEST(ScrollFullGrayCache, ServesManyThreadsAtOnce) {
    ScrollFullGrayCache cache;
    const std::vector<ImageBuffer> images = {imageOf(noisePage(300, 20, 1)), imageOf(noisePage(300, 20, 2)),
                                             imageOf(noisePage(300, 20, 3))};
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                const ImageBuffer& image = images[(i + t) % 3];
                const auto gray = cache.gray(image, 12);
                if (!gray || gray->width != 288 || gray->row(3)[5] != image.pixel(5, 3).r) ++wrong;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}
