#include "ScrollStitcher.h"
#include "ScrollTestPatterns.h"
#include "ScrollTranspose.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

using Tag = ScrollResultKind::Tag;

constexpr int frameW = 120, frameH = 160;

// Unique rows that change smoothly down the page, as text and pictures do:
// noise rows 8 apart with straight blends between them.
ScrollPatch smoothPage(int width, int height, std::uint32_t seed) {
    const ScrollPatch knots = noisePage(width, height / 8 + 2, seed);
    ScrollPatch page{width, height, std::vector<float>(static_cast<std::size_t>(width) * height)};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float t = (y % 8) / 8.0f;
            page.pixels[y * width + x] = std::round(knots.at(x, y / 8) * (1 - t) + knots.at(x, y / 8 + 1) * t);
        }
    return page;
}

// A tall page of unique rows seen through a viewport, with optional fixed
// bars above and below it.
struct Viewport {
    ScrollPatch page = smoothPage(frameW, 3000, 11);
    int header = 0, footer = 0;
    ScrollPatch headerRows = noisePage(frameW, 64, 21), footerRows = noisePage(frameW, 64, 31);

    int content() const { return frameH - header - footer; }
    ScrollPatch frameGray(int top) const {
        ScrollPatch frame = viewport(headerRows, 0, header);
        const ScrollPatch middle = viewport(page, top, content()), bottom = viewport(footerRows, 0, footer);
        frame.pixels.insert(frame.pixels.end(), middle.pixels.begin(), middle.pixels.end());
        frame.pixels.insert(frame.pixels.end(), bottom.pixels.begin(), bottom.pixels.end());
        frame.height = frameH;
        return frame;
    }
    ImageBuffer frame(int top) const { return imageOf(frameGray(top)); }
    // The document a capture of page rows [first, end) should give.
    ImageBuffer document(int first, int end) const {
        ScrollPatch doc = viewport(headerRows, 0, header);
        const ScrollPatch middle = viewport(page, first, end - first), bottom = viewport(footerRows, 0, footer);
        doc.pixels.insert(doc.pixels.end(), middle.pixels.begin(), middle.pixels.end());
        doc.pixels.insert(doc.pixels.end(), bottom.pixels.begin(), bottom.pixels.end());
        doc.height = header + (end - first) + footer;
        return imageOf(doc);
    }
};

ScrollStitcher newStitcher(ScrollAxis axis = ScrollAxis::vertical) { return ScrollStitcher(384, 18.0, 3.0, 0, axis); }

std::vector<ScrollStitcher::Result> feed(ScrollStitcher& stitcher, const Viewport& view, const std::vector<int>& tops) {
    std::vector<ScrollStitcher::Result> results;
    for (int top : tops) results.push_back(stitcher.ingest(view.frame(top)));
    return results;
}

ImageBuffer finalImage(const ScrollStitcher& stitcher) {
    const std::optional<ImageBuffer> image = stitcher.finalize();
    return image.value_or(ImageBuffer{});
}

} // namespace

TEST(ScrollStitcher, FirstFrameThenStillFramesThenSizesItCannotUse) {
    ScrollStitcher stitcher = newStitcher();
    const Viewport view;
    const ScrollStitcher::Result first = stitcher.ingest(view.frame(0));
    EXPECT_EQ(first, (ScrollStitcher::Result{ScrollResultKind::of(Tag::first), frameH, std::nullopt}));
    EXPECT_EQ(stitcher.ingest(view.frame(0)), (ScrollStitcher::Result{ScrollResultKind::of(Tag::noChange), frameH, 0}));
    EXPECT_EQ(stitcher.ingest(imageOf(noisePage(frameW, frameH + 2, 5))).kind.tag, Tag::lowConfidence);
    EXPECT_EQ(stitcher.ingest(MutableImage(0, 0).freeze()).kind.tag, Tag::lowConfidence);
    EXPECT_FALSE(stitcher.pendingFrame);

    // A strip thinner than the limit differs: no search, no change.
    ScrollPatch blink = view.frameGray(0);
    for (int y = 70; y < 75; ++y)
        for (int x = 0; x < frameW; ++x) blink.pixels[y * frameW + x] = 255 - blink.at(x, y);
    EXPECT_EQ(stitcher.ingest(imageOf(blink)).kind.tag, Tag::noChange);
    EXPECT_FALSE(stitcher.seeded);

    // A page that never moved is its first frame.
    EXPECT_TRUE(finalImage(stitcher).samePixels(view.frame(0)));
}

TEST(ScrollStitcher, ForwardScrollingAddsExactlyTheNewRows) {
    ScrollStitcher stitcher = newStitcher();
    const Viewport view;
    const std::vector<int> tops = {0, 37, 90, 91, 150, 230, 300};
    const auto results = feed(stitcher, view, tops);
    for (std::size_t i = 1; i < tops.size(); ++i) {
        EXPECT_EQ(results[i].kind, ScrollResultKind::appended(tops[i] - tops[i - 1])) << i;
        EXPECT_EQ(results[i].delta, tops[i] - tops[i - 1]) << i;
    }
    EXPECT_EQ(stitcher.totalHeight, 300 + frameH);
    EXPECT_TRUE(finalImage(stitcher).samePixels(view.document(0, 300 + frameH)));
    EXPECT_EQ(stitcher.pieces(true).back().source, (ScrollRowSource{6, frameH - 70}));
}

TEST(ScrollStitcher, StickyBarsAreKeptOnceAndTheFirstSmallStepStillVotes) {
    ScrollStitcher stitcher = newStitcher();
    Viewport view;
    view.header = 20;
    view.footer = 16;
    feed(stitcher, view, {0, 5});
    EXPECT_TRUE(stitcher.seeded);
    EXPECT_EQ(stitcher.topVotes.size(), 1u);
    feed(stitcher, view, {40, 80, 131, 180, 222});
    EXPECT_EQ(stitcher.staticTop, 20);
    EXPECT_EQ(stitcher.staticBottom, 16);
    EXPECT_TRUE(finalImage(stitcher).samePixels(view.document(0, 222 + view.content())));
}

TEST(ScrollStitcher, ScrollingBackInsideCapturedRowsAddsNothing) {
    ScrollStitcher stitcher = newStitcher();
    const Viewport view;
    feed(stitcher, view, {0, 60, 120, 180});
    const int height = stitcher.totalHeight;
    for (const auto& r : feed(stitcher, view, {130, 70, 110, 160})) {
        EXPECT_EQ(r.kind.tag, Tag::noChange);
        EXPECT_EQ(r.totalHeight, height);
    }
    EXPECT_EQ(stitcher.ingest(view.frame(240)).kind, ScrollResultKind::appended(60));
    EXPECT_TRUE(finalImage(stitcher).samePixels(view.document(0, 240 + frameH)));
}

TEST(ScrollStitcher, ScrollingAboveTheStartPrependsUnderTheHeader) {
    ScrollStitcher stitcher = newStitcher();
    Viewport view;
    view.header = 20;
    const auto results = feed(stitcher, view, {400, 350, 290, 240});
    EXPECT_EQ(results[2].kind, ScrollResultKind::prepended(60));
    EXPECT_EQ(stitcher.contentDocTop - stitcher.firstTop, -160);
    EXPECT_EQ(stitcher.prependInsertRow(), 20);
    EXPECT_TRUE(finalImage(stitcher).samePixels(view.document(240, 400 + view.content())));
}

TEST(ScrollStitcher, AJumpBackIsFoundAgainOnTheThirdLostFrame) {
    ScrollStitcher stitcher = newStitcher();
    const Viewport view;
    feed(stitcher, view, {0, 100, 200, 300, 400, 500, 600});
    const int height = stitcher.totalHeight;
    const auto lost = feed(stitcher, view, {150, 150, 150});
    EXPECT_EQ(lost[0].kind.tag, Tag::lowConfidence);
    EXPECT_EQ(lost[1].kind.tag, Tag::lowConfidence);
    EXPECT_EQ(lost[2], (ScrollStitcher::Result{ScrollResultKind::of(Tag::noChange), height, -450}));
    EXPECT_EQ(stitcher.viewDocTop, 150);
    EXPECT_EQ(stitcher.ingest(view.frame(200)).delta, 50);
    EXPECT_EQ(stitcher.totalHeight, height);
}

TEST(ScrollStitcher, AJumpPastTheCapturedRowsAppendsOnlyWhatTheFrameShows) {
    ScrollStitcher stitcher = newStitcher();
    const Viewport view;
    feed(stitcher, view, {0, 50});
    stitcher.viewDocTop += 1000;
    EXPECT_EQ(stitcher.appendNewRows(view.frame(1050), *stitcher.lastPatch), ScrollResultKind::appended(frameH));
    EXPECT_EQ(stitcher.stripDocStarts.back(), 50 + frameH);
    EXPECT_EQ(stitcher.totalHeight, 50 + 2 * frameH);
}

TEST(ScrollStitcher, ASidewaysCaptureStitchesColumns) {
    ScrollStitcher stitcher = newStitcher(ScrollAxis::horizontal);
    const Viewport view; // its frames turned on their side
    auto sideways = [&](int left) { return *ScrollTranspose::transposed(view.frame(left)); };
    for (int left : {0, 45, 100, 170}) stitcher.ingest(sideways(left));
    EXPECT_EQ(stitcher.totalHeight, 170 + frameH);
    const ImageBuffer image = finalImage(stitcher);
    EXPECT_TRUE(image.samePixels(*ScrollTranspose::transposed(view.document(0, 170 + frameH))));
    EXPECT_EQ(image.height(), frameW);
}

TEST(ScrollStitcher, CopiesAreSnapshotsThatSharePixels) {
    ScrollStitcher stitcher = newStitcher();
    const Viewport view;
    feed(stitcher, view, {0, 60});
    ScrollStitcher copy = stitcher;
    copy.ingest(view.frame(130));
    EXPECT_EQ(stitcher.totalHeight, 60 + frameH);
    EXPECT_EQ(copy.totalHeight, 130 + frameH);
    EXPECT_TRUE(copy.strips[1].sharesPixelsWith(stitcher.strips[1]));
    EXPECT_EQ(copy.lastPatch.use_count(), 1);
    // A strip never pins the frame it was cut from.
    EXPECT_FALSE(copy.strips.back().sharesPixelsWith(*copy.lastFrame));
}
