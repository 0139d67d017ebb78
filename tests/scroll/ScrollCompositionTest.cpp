#include "PngDecoder.h"
#include "ScrollStitcher.h"
#include "ScrollTestPatterns.h"
#include "ScrollTranspose.h"
#include "StitchRowSource.h"

#include <gtest/gtest.h>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

ImageBuffer noiseImage(int width, int height, std::uint32_t seed) { return imageOf(noisePage(width, height, seed)); }

// Rows [first, first + rows) of an image, as its own image.
ImageBuffer rowsOf(const ImageBuffer& image, int first, int rows) {
    return *ScrollStitcher::detached(image.cropped({0, first, image.width(), rows}));
}

// Every band of a source, stacked again.
ImageBuffer allBands(const StitchRowSource& source) {
    MutableImage out(source.width(), source.height(), PixelOrder::bgra);
    for (int start = 0; start < source.height(); start += source.rowsPerBand()) {
        const ImageBuffer band = source.renderBand(start);
        for (int y = 0; y < band.height(); ++y) std::copy(band.row(y), band.row(y) + 4 * band.width(), out.row(start + y));
    }
    return std::move(out).freeze();
}

// A seeded stitcher of three strips under a 10-row header: 50 head rows, 20
// and 30 appended, and a footer of 8 rows in its deepest frame.
ScrollStitcher threeStrips(const ImageBuffer& page) {
    ScrollStitcher stitcher(384, 18.0, 3.0, 0, ScrollAxis::vertical);
    stitcher.frameWidth = page.width();
    stitcher.frameHeight = 58;
    stitcher.seeded = true;
    stitcher.firstBottom = 8;
    stitcher.firstTop = 10;
    stitcher.strips = {rowsOf(page, 0, 58), rowsOf(page, 50, 20), rowsOf(page, 70, 30)};
    stitcher.stripDocStarts = {0, 50, 70};
    stitcher.stripSources = {{0, 0}, {1, 30}, {2, 20}};
    stitcher.capturedDocBottom = 100;
    stitcher.deepestFrame = rowsOf(page, 50, 58);
    stitcher.deepestViewDocTop = 50;
    stitcher.deepestFrameIndex = 2;
    return stitcher;
}

} // namespace

TEST(ScrollComposition, PiecesRunHeadStripsTailAndPrependedRowsGoUnderTheHeader) {
    const ImageBuffer page = noiseImage(40, 200, 3);
    ScrollStitcher stitcher = threeStrips(page);
    std::vector<int> heights;
    for (const ScrollPiece& piece : stitcher.pieces(true)) heights.push_back(piece.image.height());
    EXPECT_EQ(heights, (std::vector<int>{50, 20, 30, 8}));
    EXPECT_EQ(stitcher.pieces(true).back().source, (ScrollRowSource{2, 50}));
    // The deepest frame shows page rows 50..108; its footer ends the document.
    EXPECT_TRUE(stitcher.composited(std::nullopt, std::nullopt, true)->samePixels(rowsOf(page, 0, 108)));

    stitcher.prepended = {noiseImage(40, 6, 9)};
    stitcher.prependedSources = {{3, 10}};
    heights.clear();
    for (const ScrollPiece& piece : stitcher.pieces(false)) heights.push_back(piece.image.height());
    EXPECT_EQ(heights, (std::vector<int>{10, 6, 40, 20, 30}));
    EXPECT_EQ(stitcher.prependInsertRow(), 10);
}

TEST(ScrollComposition, ScaledCompositesKeepARowForEveryPiece) {
    const ImageBuffer page = noiseImage(40, 200, 3);
    const ScrollStitcher stitcher = threeStrips(page);
    const std::optional<ImageBuffer> half = stitcher.composited(20, std::nullopt, true);
    ASSERT_TRUE(half);
    EXPECT_EQ(half->width(), 20);
    EXPECT_EQ(half->height(), 25 + 10 + 15 + 4);
    const std::optional<ImageBuffer> squeezed = stitcher.composited(std::nullopt, 2, false);
    ASSERT_TRUE(squeezed);
    EXPECT_EQ(squeezed->height(), 3);
    EXPECT_EQ(squeezed->width(), 1);
    EXPECT_FALSE(ScrollStitcher(384, 18.0, 3.0, 0, ScrollAxis::vertical).composited(200, std::nullopt, false));
}

TEST(ScrollComposition, DocumentWindowsLeaveTheFirstFooterOut) {
    const ImageBuffer page = noiseImage(40, 200, 3);
    ScrollStitcher stitcher = threeStrips(page);
    // The first strip's footer rows 50..58 differ from the document there.
    stitcher.strips[0] = StitchRowSource({rowsOf(page, 0, 50), noiseImage(40, 8, 99)}, 40, 58, false).renderBand(0);
    const std::optional<ImageBuffer> window = stitcher.docWindowImage({40, 40});
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->samePixels(rowsOf(page, 40, 40)));
    EXPECT_FALSE(stitcher.docWindowImage({40, 0}));
}

TEST(ScrollComposition, BandsStackIntoTheCompositeEitherWayRound) {
    const std::vector<ImageBuffer> pieces = {noiseImage(30, 17, 1), noiseImage(30, 40, 2), noiseImage(30, 5, 3)};
    const ImageBuffer whole = StitchRowSource(pieces, 30, 1000, false).renderBand(0);
    EXPECT_EQ(whole.height(), 62);
    const StitchRowSource rows(pieces, 30, 7, false);
    EXPECT_TRUE(allBands(rows).samePixels(whole));
    const StitchRowSource columns(pieces, 30, 4, true);
    EXPECT_EQ(columns.width(), 62);
    EXPECT_EQ(columns.height(), 30);
    EXPECT_TRUE(allBands(columns).samePixels(*ScrollTranspose::transposed(whole)));
    EXPECT_TRUE(rows.renderBand(62).isEmpty());
}

TEST(ScrollComposition, TransposedBandsStayUnder16MiB) {
    const ImageBuffer column = MutableImage(1, 1'000'000).freeze();
    EXPECT_EQ(StitchRowSource({column}, 1, 256, true).rowsPerBand(), 4);
    EXPECT_EQ(StitchRowSource({column, column, column, column, column}, 1, 256, true).rowsPerBand(), 1);
    EXPECT_EQ(StitchRowSource({column}, 1, 256, false).rowsPerBand(), 256);
    EXPECT_EQ(StitchRowSource({column}, 1, 0, false).rowsPerBand(), 1);
}

TEST(ScrollComposition, ThePngHoldsTheFinalImage) {
    const ImageBuffer page = noiseImage(40, 200, 3);
    ScrollStitcher stitcher = threeStrips(page);
    for (ScrollAxis axis : {ScrollAxis::vertical, ScrollAxis::horizontal}) {
        stitcher.axis = axis;
        std::vector<std::uint8_t> png;
        const std::optional<Error> failed = stitcher.encodePNG(16, [&](const std::uint8_t* bytes, std::size_t count) {
            png.insert(png.end(), bytes, bytes + count);
            return true;
        });
        ASSERT_FALSE(failed) << failed->message;
        const Expected<ImageBuffer> decoded = PngDecoder::decode(png);
        ASSERT_TRUE(decoded);
        EXPECT_TRUE(decoded->samePixels(*stitcher.finalize()));
        EXPECT_EQ(decoded->width(), axis == ScrollAxis::vertical ? 40 : 108);
    }
    const auto refuse = [](const std::uint8_t*, std::size_t) { return false; };
    EXPECT_TRUE(stitcher.encodePNG(16, refuse));
    EXPECT_TRUE(ScrollStitcher(384, 18.0, 3.0, 0, ScrollAxis::vertical).encodePNG(16, refuse));
}

TEST(ScrollComposition, DetachedCopiesShareNoMemory) {
    const ImageBuffer frame = noiseImage(20, 30, 4);
    const ImageBuffer crop = frame.cropped({0, 10, 20, 5});
    const std::optional<ImageBuffer> copy = ScrollStitcher::detached(crop);
    ASSERT_TRUE(copy);
    EXPECT_TRUE(crop.sharesPixelsWith(frame));
    EXPECT_FALSE(copy->sharesPixelsWith(frame));
    EXPECT_TRUE(copy->samePixels(crop));
    EXPECT_FALSE(ScrollStitcher::detached(ImageBuffer{}));
}
