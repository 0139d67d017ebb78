// The QPainter canvas, through the backend the renderer uses: group layers,
// shadows, blend modes and stroke clips are emulated on top of QPainter, so
// each is checked on the pixels it leaves.
#include "TestImages.h"
#include "QtDrawingBackend.h"
#include "TestApplication.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

namespace tosvar {
namespace {

constexpr RGBAColor black{0, 0, 0, 1};
constexpr RGBAColor white{1, 1, 1, 1};
constexpr RGBAColor red{1, 0, 0, 1};
constexpr RGBAColor blue{0, 0, 1, 1};

std::unique_ptr<ImageCanvas> canvas(int width, int height) {
    testApplication<QGuiApplication>();
    std::unique_ptr<ImageCanvas> made = QtDrawingBackend::shared().makeCanvas(width, height);
    EXPECT_TRUE(made);
    return made;
}

CanvasPath box(double x, double y, double width, double height) {
    CanvasPath path;
    path.addRect({x, y, width, height});
    return path;
}

CanvasPath segment(Point from, Point to) {
    CanvasPath path;
    path.moveTo(from);
    path.lineTo(to);
    return path;
}

void expectPixel(const ImageBuffer& image, int x, int y, Rgba8 expected, int tolerance = 1) {
    const Rgba8 p = image.pixel(x, y);
    EXPECT_TRUE(std::abs(p.r - expected.r) <= tolerance && std::abs(p.g - expected.g) <= tolerance &&
                std::abs(p.b - expected.b) <= tolerance && std::abs(p.a - expected.a) <= tolerance)
        << "at (" << x << ", " << y << "): " << int(p.r) << " " << int(p.g) << " " << int(p.b) << " " << int(p.a) << ", expected "
        << int(expected.r) << " " << int(expected.g) << " " << int(expected.b) << " " << int(expected.a);
}


// The box of every pixel with some alpha; empty when nothing was drawn.
PixelRect inked(const ImageBuffer& image) {
    int minX = image.width(), minY = image.height(), maxX = -1, maxY = -1;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y).a > 0) {
                minX = std::min(minX, x);
                maxX = std::max(maxX, x);
                minY = std::min(minY, y);
                maxY = std::max(maxY, y);
            }
    if (maxX < 0) return {};
    return {minX, minY, maxX - minX + 1, maxY - minY + 1};
}

TEST(QtPainterCanvas, ALayerCompositesOverlappingFillsAsOnePicture) {
    for (bool grouped : {false, true}) {
        auto c = canvas(60, 40);
        c->setAlpha(0.5);
        if (grouped) c->beginLayer();
        c->fill(box(0, 0, 40, 40), red);
        c->fill(box(20, 0, 40, 40), blue);
        if (grouped) c->endLayer();
        const ImageBuffer image = c->finish();
        SCOPED_TRACE(grouped ? "in a layer" : "without a layer");
        expectPixel(image, 10, 20, {128, 0, 0, 128});
        expectPixel(image, 50, 20, {0, 0, 128, 128});
        if (grouped) {
            expectPixel(image, 30, 20, {0, 0, 128, 128}); // the blue on top hides the red inside the group
        } else {
            expectPixel(image, 30, 20, {64, 0, 128, 191}); // each fill at half alpha: the overlap is darker
        }
    }
}

TEST(QtPainterCanvas, AShadowFallsAtItsOffsetAndSpreadsWithItsBlur) {
    // A blue 10 by 10 square centred on (75, 55) with a red shadow that never
    // touches it, so the red channel is the shadow's alpha alone.
    struct Case {
        Size offset;
        double blur;
    };
    for (const Case& s : {Case{{40, 30}, 8}, Case{{-40, 20}, 4}, Case{{0, 45}, 0}, Case{{45, -40}, 8}}) {
        auto c = canvas(180, 160);
        c->setShadow(CanvasShadow{s.offset, s.blur, red});
        c->fill(box(70, 50, 10, 10), blue);
        const ImageBuffer image = c->finish();
        SCOPED_TRACE(testing::Message() << "offset (" << s.offset.width << ", " << s.offset.height << "), blur " << s.blur);

        double mass = 0, sumX = 0, sumY = 0, sumXX = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const double a = image.pixel(x, y).r;
                mass += a;
                sumX += a * (x + 0.5);
                sumY += a * (y + 0.5);
                sumXX += a * (x + 0.5) * (x + 0.5);
            }
        ASSERT_GT(mass, 0);
        EXPECT_NEAR(sumX / mass, 75 + s.offset.width, 0.1);
        EXPECT_NEAR(sumY / mass, 55 + s.offset.height, 0.1) << "y grows downward";
        // The square's own spread (10²/12) plus a Gaussian of half the blur.
        const double spread = std::sqrt(sumXX / mass - (sumX / mass) * (sumX / mass));
        EXPECT_NEAR(spread, std::sqrt(100.0 / 12 + s.blur * s.blur / 4), 0.3);
        expectPixel(image, 75, 55, {0, 0, 255, 255}, 0); // the square itself, over its shadow
    }
}

// What lies beyond the canvas casts its shadow too: a bar from x = -50 to 20
// with a shadow 20 to the right covers x = -30 to 40, dense next to the bar
// even when soft. Alone, or gathered in a layer that carries the shadow.
TEST(QtPainterCanvas, ShapesPastTheCanvasEdgeCastTheirWholeShadow) {
    for (bool grouped : {false, true}) {
        for (double blur : {0.0, 8.0}) {
            auto c = canvas(100, 60);
            c->setShadow(CanvasShadow{{20, 0}, blur, red});
            if (grouped) c->beginLayer();
            c->fill(box(-50, 20, 70, 20), blue);
            if (grouped) c->endLayer();
            const ImageBuffer image = c->finish();
            SCOPED_TRACE(testing::Message() << "blur " << blur << (grouped ? ", in a layer" : ""));
            expectPixel(image, 10, 30, {0, 0, 255, 255}, 0);
            expectPixel(image, 22, 30, {255, 0, 0, 255}, 2);
            EXPECT_EQ(image.pixel(60, 30).a, 0);
        }
    }
}

// The clip limits where a shadow shows, not what casts it: a spotlight's hole
// filled under a clip to everything but the hole leaves only the shadow
// around the hole.
TEST(QtPainterCanvas, AShadowIsCastByWhatTheClipHides) {
    auto c = canvas(100, 100);
    CanvasPath outside = box(0, 0, 100, 100);
    const CanvasPath hole = box(30, 30, 40, 40);
    outside.append(hole);
    c->save();
    c->clip(outside, FillRule::evenOdd);
    c->setShadow(CanvasShadow{{0, 4}, 10, black.withAlpha(0.5)});
    c->fill(hole, black);
    c->restore();
    const ImageBuffer image = c->finish();
    EXPECT_EQ(image.pixel(50, 50).a, 0) << "the hole stays clear";
    EXPECT_EQ(image.pixel(31, 35).a, 0);
    EXPECT_GT(image.pixel(50, 72).a, 30) << "the shadow shows below the hole";
    EXPECT_GT(image.pixel(28, 50).a, 10) << "and beside it";
    EXPECT_GT(image.pixel(50, 72).a, image.pixel(50, 27).a) << "offset downward";
    EXPECT_EQ(image.pixel(5, 5).a, 0);
}

// A veil with a hole, as spotlights draw it: the clear blend erases the
// layer's own pixels, never what lies beneath the layer.
TEST(QtPainterCanvas, AClearBlendInsideALayerCutsAHoleInTheLayerOnly) {
    auto c = canvas(50, 50);
    c->fill(box(0, 0, 50, 50), white);
    c->save();
    c->beginLayer();
    c->fill(box(0, 0, 50, 50), black.withAlpha(0.5));
    c->setBlendMode(BlendMode::clear);
    c->fill(box(10, 10, 20, 20), red);
    c->endLayer();
    c->restore();
    c->fill(box(45, 45, 5, 5), blue); // normal blending again
    const ImageBuffer image = c->finish();
    expectPixel(image, 20, 20, {255, 255, 255, 255}, 0);
    expectPixel(image, 10, 10, {255, 255, 255, 255}, 0);
    expectPixel(image, 40, 40, {128, 128, 128, 255});
    expectPixel(image, 5, 35, {128, 128, 128, 255});
    expectPixel(image, 47, 47, {0, 0, 255, 255}, 0);
}

TEST(QtPainterCanvas, MultiplyDarkensWhatIsBeneath) {
    auto c = canvas(40, 20);
    c->fill(box(0, 0, 40, 20), {0.8, 0.6, 0.4, 1});
    c->setBlendMode(BlendMode::multiply);
    c->fill(box(0, 0, 20, 20), {0.5, 0.5, 0.5, 1});
    c->fill(box(20, 0, 20, 20), white); // white leaves it as it is
    const ImageBuffer image = c->finish();
    expectPixel(image, 10, 10, {102, 77, 51, 255});
    expectPixel(image, 30, 10, {204, 153, 102, 255});
}

TEST(QtPainterCanvas, ClipToStrokeLimitsDrawingToTheStrokesBand) {
    // A 10 wide stroke along y = 50 from x = 20 to 80: the band is y 45..55.
    struct Case {
        LineCap cap;
        bool reachesX17;
    };
    for (const Case& k : {Case{LineCap::butt, false}, Case{LineCap::round, true}}) {
        auto c = canvas(100, 100);
        c->save();
        c->clipToStroke(segment({20, 50}, {80, 50}), {10, k.cap, LineJoin::round, {}, 0});
        c->fill(box(0, 0, 100, 100), red);
        c->restore();
        c->fill(box(0, 0, 5, 5), blue); // the clip ends with the state that set it
        const ImageBuffer image = c->finish();
        SCOPED_TRACE(k.cap == LineCap::butt ? "butt caps" : "round caps");
        EXPECT_EQ(image.pixel(50, 50).a, 255);
        EXPECT_EQ(image.pixel(50, 45).a, 255);
        EXPECT_EQ(image.pixel(50, 54).a, 255);
        EXPECT_EQ(image.pixel(50, 44).a, 0);
        EXPECT_EQ(image.pixel(50, 55).a, 0);
        EXPECT_EQ(image.pixel(50, 30).a, 0);
        EXPECT_EQ(image.pixel(22, 50).a, 255);
        EXPECT_EQ(image.pixel(17, 50).a, k.reachesX17 ? 255 : 0);
        EXPECT_EQ(image.pixel(12, 50).a, 0);
        EXPECT_EQ(image.pixel(90, 50).a, 0);
        expectPixel(image, 2, 2, {0, 0, 255, 255}, 0);
    }
}

TEST(QtPainterCanvas, RestoreBringsBackTheTransformAndAlpha) {
    auto c = canvas(100, 60);
    c->save();
    c->concatenate(AffineTransform::translation(50, 0));
    c->setAlpha(0.5);
    c->save();
    c->concatenate(AffineTransform::scale(3, 3));
    c->setAlpha(0.2);
    c->restore();
    c->fill(box(0, 0, 10, 10), black); // at (50, 0), half alpha
    c->concatenate(AffineTransform::scale(2, 2)); // applied before the translation
    c->fill(box(0, 10, 5, 5), black);
    c->restore();
    c->restore(); // one more than was saved changes nothing
    c->fill(box(0, 40, 10, 10), black);
    const ImageBuffer image = c->finish();
    EXPECT_NEAR(image.pixel(55, 5).a, 128, 1);
    EXPECT_EQ(image.pixel(5, 5).a, 0);
    EXPECT_NEAR(image.pixel(55, 25).a, 128, 1) << "(0, 10, 5, 5) scaled, then moved: (50, 20, 10, 10)";
    EXPECT_EQ(image.pixel(45, 25).a, 0);
    EXPECT_EQ(image.pixel(5, 45).a, 255) << "opaque and untranslated again";
    EXPECT_EQ(image.pixel(55, 45).a, 0);
}

TEST(QtPainterCanvas, NearestSamplingCopiesPixelsExactly) {
    const ImageBuffer picture = noiseImage(16, 12, 3);
    for (PixelOrder order : {PixelOrder::rgba, PixelOrder::bgra, PixelOrder::argb, PixelOrder::abgr}) {
        SCOPED_TRACE(testing::Message() << "order " << static_cast<int>(order));
        const ImageBuffer source = picture.converted(order);
        auto c = canvas(70, 50);
        c->drawImage(source, {3, 5, 16, 12}, ImageSampling::nearest);
        c->drawImage(source, {20, 5, 48, 36}, ImageSampling::nearest); // three times larger
        const ImageBuffer image = c->finish();
        EXPECT_TRUE(image.cropped({3, 5, 16, 12}).samePixels(picture));
        EXPECT_EQ(image.pixel(2, 5), (Rgba8{}));
        EXPECT_EQ(image.pixel(19, 16), (Rgba8{}));
        int wrong = 0;
        for (int y = 0; y < 36; ++y)
            for (int x = 0; x < 48; ++x) wrong += image.pixel(20 + x, 5 + y) != picture.pixel(x / 3, y / 3);
        EXPECT_EQ(wrong, 0) << "every pixel of a 3 by 3 block is its source pixel";
    }
}

TEST(QtPainterCanvas, TextLinesStayWithinTheirMeasuredBox) {
    testApplication<QGuiApplication>();
    struct Case {
        FontFace face;
        std::optional<double> strokeWidth;
    };
    const Point baseline{20, 60};
    for (const Case& t : {Case{FontFace::regular, std::nullopt}, Case{FontFace::bold, std::nullopt}, Case{FontFace::regular, 4.0}}) {
        SCOPED_TRACE(testing::Message() << (t.face == FontFace::bold ? "bold" : "regular") << (t.strokeWidth ? ", stroked" : ""));
        const TextMeasuring& measure = QtDrawingBackend::shared().measuring(t.face);
        const double width = measure.lineWidth("Hxg", 40);
        const FontLineMetrics metrics = measure.metrics(40);
        ASSERT_GT(width, 40);
        auto c = canvas(200, 100);
        c->drawTextLine("Hxg", t.face, 40, baseline, black, t.strokeWidth);
        const PixelRect ink = inked(c->finish());
        ASSERT_GT(ink.width, 0);
        const double reach = 1 + (t.strokeWidth ? *t.strokeWidth / 2 : 0);
        EXPECT_GE(ink.x, baseline.x - reach);
        EXPECT_LE(ink.x + ink.width, baseline.x + width + reach);
        EXPECT_GE(ink.y, baseline.y - metrics.ascent - reach);
        EXPECT_LE(ink.y + ink.height, baseline.y + metrics.descent + reach);
        // "H" stands most of an em above the baseline; "g" hangs below it.
        EXPECT_LT(ink.y, baseline.y - 0.6 * 40);
        EXPECT_GT(ink.y + ink.height, baseline.y + 0.1 * 40);
        EXPECT_GT(ink.x + ink.width, baseline.x + width - 0.2 * 40) << "the last glyph ends near the advance";
    }
}

TEST(QtPainterCanvas, FinishHandsBackBgraPixelsAndCanvasesStartFromTheirBackground) {
    auto c = canvas(7, 3);
    c->fill(box(0, 0, 7, 3), {1, 0, 0, 0.5});
    const ImageBuffer image = c->finish();
    EXPECT_EQ(image.width(), 7);
    EXPECT_EQ(image.height(), 3);
    EXPECT_EQ(image.order(), PixelOrder::bgra);
    const std::uint8_t* p = image.row(2) + 4 * 6;
    EXPECT_EQ(p[0], 0);
    EXPECT_NEAR(p[2], 128, 1) << "premultiplied red";
    EXPECT_NEAR(p[3], 128, 1);

    const ImageBuffer background = noiseImage(9, 5, 8);
    auto copy = QtDrawingBackend::shared().makeCanvas(background);
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->size(), (Size{9, 5}));
    EXPECT_TRUE(copy->finish().samePixels(background));
    EXPECT_FALSE(QtDrawingBackend::shared().makeCanvas(0, 5));
    EXPECT_FALSE(QtDrawingBackend::shared().makeCanvas(ImageBuffer()));
}

} // namespace
} // namespace tosvar
