// Each element kind and each style switch, drawn alone (or with the one
// element it interacts with) over a made-up screen and compared with a
// reference image in data/golden. After a deliberate change of the drawing,
// make the references again and look at every one of them:
//   TOSVAR_UPDATE_GOLDENS=1 build/bin/render_tests --gtest_filter='Golden*'
#include "AnnotationRenderer.h"
#include "GoldenImages.h"
#include "PngEncoder.h"
#include "QtDrawingBackend.h"
#include "RenderSamples.h"
#include "TestApplication.h"

#include <QGuiApplication>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tosvar {
namespace {

using C = AnnotationKind::Case;
using samples::drawn;

struct GoldenCase {
    std::string name;
    std::vector<AnnotationElement> elements;
    ImageTolerance tolerance = {2, 0};
    std::optional<Rect> crop = std::nullopt;
    bool hideFirstContent = false;
    bool hideWatermarkCenterTile = false;
};

void PrintTo(const GoldenCase& c, std::ostream* out) { *out << c.name; }

Geometry segment(double x0, double y0, double x1, double y1) { return Geometry::segment({x0, y0}, {x1, y1}); }
Geometry rect(double x, double y, double w, double h) { return Geometry::rect({x, y, w, h}); }
Geometry point(double x, double y) { return Geometry::point({x, y}); }

AnnotationImage smallPicture() {
    MutableImage image(24, 16);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 24; ++x) image.setPixel(x, y, {static_cast<std::uint8_t>(x * 10), static_cast<std::uint8_t>(y * 15), 120, 255});
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(std::move(image).freeze());
    return {*Uuid::parse("8B0C3C55-7D8E-4C47-9E57-2F4D6C1B0A11"), SharedBytes(std::move(*png)), 24, 16};
}

TranslatedBlock block(std::string source, std::string target) {
    TranslatedBlock b;
    b.source = std::move(source);
    b.target = std::move(target);
    b.targetLanguage = "en";
    return b;
}

// Text is drawn as outlines by Qt's rasteriser; allow antialiasing of glyph
// edges to move a little between builds of it.
constexpr ImageTolerance textTolerance{24, 40};

std::vector<GoldenCase> goldenCases() {
    const RGBAColor blueFill = RGBAColor::Palette::blue.withAlpha(0.45);
    return {
        {"arrow", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 30))}},
        {"arrow-outline", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 30), [](auto& s) { s.outline = true; })}},
        {"arrow-dashed", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 30), [](auto& s) { s.dashed = true; })}},
        {"arrow-dashed-outline", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 30), [](auto& s) {
             s.dashed = true;
             s.outline = true;
         })}},
        {"arrow-curved", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 60), [](auto& s) { s.curvature = 30; })}},
        {"arrow-mid-points", {drawn(AnnotationKind(C::arrow), segment(15, 100, 145, 100), [](auto& s) {
             s.midPoints = std::vector<Point>{{50, 30}, {100, 90}};
         })}},
        {"arrow-short", {drawn(AnnotationKind(C::arrow), segment(70, 60, 80, 60))}},
        {"arrow-shadow-translucent", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 30), [](auto& s) {
             s.shadow = true;
             s.outline = true;
             s.opacity = 0.6;
         })}},
        {"line", {drawn(AnnotationKind(C::line), segment(20, 100, 140, 20))}},
        {"line-outline-dashed", {drawn(AnnotationKind(C::line), segment(20, 100, 140, 20), [](auto& s) {
             s.outline = true;
             s.dashed = true;
             s.lineWidth = 6;
         })}},
        {"line-curved", {drawn(AnnotationKind(C::line), segment(20, 60, 140, 60), [](auto& s) { s.curvature = -35; })}},
        {"rectangle", {drawn(AnnotationKind(C::rectangle), rect(30, 25, 100, 70))}},
        {"rectangle-square-corners-dashed", {drawn(AnnotationKind(C::rectangle), rect(30, 25, 100, 70), [](auto& s) {
             s.cornerRadius = 0;
             s.dashed = true;
         })}},
        {"rectangle-filled-translucent", {drawn(AnnotationKind(C::rectangle), rect(30, 25, 100, 70), [&](auto& s) {
             s.fillColor = blueFill;
             s.opacity = 0.5;
         })}},
        {"rectangle-shadow", {drawn(AnnotationKind(C::rectangle), rect(30, 25, 100, 70), [](auto& s) { s.shadow = true; })}},
        {"rectangle-rotated", {drawn(AnnotationKind(C::rectangle), rect(40, 35, 80, 50), [](auto& s) { s.rotation = 30; })}},
        {"ellipse", {drawn(AnnotationKind(C::ellipse), rect(25, 20, 110, 80))}},
        {"ellipse-filled-shadow", {drawn(AnnotationKind(C::ellipse), rect(25, 20, 110, 80), [&](auto& s) {
             s.fillColor = blueFill;
             s.shadow = true;
         })}},
        {"freehand", {drawn(AnnotationKind(C::freehand), Geometry::path({{20, 90}, {50, 30}, {80, 80}, {110, 25}, {140, 70}}))}},
        {"freehand-dashed", {drawn(AnnotationKind(C::freehand), Geometry::path({{20, 90}, {50, 30}, {80, 80}, {110, 25}, {140, 70}}),
                                   [](auto& s) { s.dashed = true; })}},
        {"highlighter", {drawn(AnnotationKind(C::highlighter), Geometry::path({{10, 52}, {150, 52}}), [](auto& s) {
             s.strokeColor = RGBAColor::Palette::yellow;
             s.lineWidth = 6;
         })}},
        {"text", {drawn(AnnotationKind::text("Tosvar"), point(20, 40))}, textTolerance},
        {"text-plain-two-lines", {drawn(AnnotationKind::text("Two\nlines"), point(30, 20), [](auto& s) {
             s.textOutline = false;
             s.strokeColor = RGBAColor::Palette::black;
         })},
         textTolerance},
        {"text-rotated-leader", {drawn(AnnotationKind::text("Note"), point(20, 20), [](auto& s) {
             s.rotation = 20;
             s.leaderTip = Point{140, 100};
         })},
         textTolerance},
        {"text-dashed-curved-leader", {drawn(AnnotationKind::text("Here"), point(15, 15), [](auto& s) {
             s.dashed = true;
             s.leaderTip = Point{140, 105};
             s.curvature = 25;
         })},
         textTolerance},
        {"text-shadow-translucent", {drawn(AnnotationKind::text("Shade"), point(25, 40), [](auto& s) {
             s.shadow = true;
             s.opacity = 0.7;
             s.fontSize = 30;
         })},
         textTolerance},
        {"badge", {drawn(AnnotationKind::stepBadge("1"), point(50, 50)), drawn(AnnotationKind::stepBadge("12"), point(110, 70))},
         textTolerance},
        {"badge-leader-light", {drawn(AnnotationKind::stepBadge("AA"), point(45, 45), [](auto& s) {
             s.strokeColor = RGBAColor::Palette::yellow;
             s.leaderTip = Point{140, 100};
         })},
         textTolerance},
        {"badge-number-hidden", {drawn(AnnotationKind::stepBadge("7"), point(80, 60))}, textTolerance, std::nullopt, true},
        {"watermark", {drawn(AnnotationKind::watermark("Draft"), rect(0, 0, 160, 120), [](auto& s) {
             s.fontSize = 16;
             s.strokeColor = RGBAColor::Palette::black.withAlpha(0.35);
         })},
         textTolerance},
        {"watermark-centre-hidden", {drawn(AnnotationKind::watermark("Draft"), rect(0, 0, 160, 120), [](auto& s) {
             s.fontSize = 16;
             s.watermarkAngle = 0;
             s.textOutline = false;
         })},
         textTolerance, std::nullopt, false, true},
        {"mosaic", {drawn(AnnotationKind(C::mosaic), rect(20, 30, 120, 60))}},
        {"mosaic-brushed", {drawn(AnnotationKind(C::mosaic), Geometry::path({{20, 50}, {80, 45}, {140, 85}}), [](auto& s) {
             s.mosaicBlockSize = 8;
         })}},
        {"blur-shadow", {drawn(AnnotationKind(C::blur), rect(20, 30, 120, 60), [](auto& s) {
             s.shadow = true;
             s.blurRadius = 4;
         })}},
        {"blur-borderless-rotated", {drawn(AnnotationKind(C::blur), rect(30, 30, 100, 60), [](auto& s) {
             s.textOutline = false;
             s.rotation = 15;
         })}},
        {"blur-over-arrow", {drawn(AnnotationKind(C::arrow), segment(20, 90, 140, 30)), drawn(AnnotationKind(C::blur), rect(40, 40, 80, 40))}},
        {"magnifier", {drawn(AnnotationKind(C::magnifier), rect(50, 30, 60, 60), [](auto& s) { s.magnifierZoom = 3; })}},
        {"magnifier-offset-shadow", {drawn(AnnotationKind(C::magnifier), rect(30, 20, 70, 70), [](auto& s) {
             s.magnifierOffset = Size{40, 20};
             s.shadow = true;
         })}},
        {"spotlights-around-arrow", {drawn(AnnotationKind(C::spotlight), rect(15, 15, 50, 40)), drawn(AnnotationKind(C::arrow), segment(20, 110, 140, 70)),
                                     drawn(AnnotationKind(C::spotlight), rect(95, 55, 50, 50), [](auto& s) {
                                         s.shadow = true;
                                         s.rotation = 10;
                                     })}},
        {"spotlight-tinted-borderless", {drawn(AnnotationKind(C::spotlight), rect(40, 30, 80, 60), [](auto& s) {
             s.fillColor = RGBAColor{0.1, 0.1, 0.4, 0.6};
             s.textOutline = false;
         })}},
        {"image", {drawn(AnnotationKind::image(smallPicture()), rect(30, 30, 72, 48))}},
        {"image-rotated-translucent", {drawn(AnnotationKind::image(smallPicture()), rect(40, 30, 72, 48), [](auto& s) {
             s.rotation = -25;
             s.opacity = 0.6;
         })}},
        {"translated-block", {drawn(AnnotationKind::translatedText(block("Guten Tag, wie geht es?", "Good day, how are you today?")),
                                    rect(20, 30, 120, 50), [](auto& s) {
                                        s.fontSize = 13;
                                        s.fillColor = RGBAColor::Palette::white;
                                        s.strokeColor = RGBAColor::Palette::black;
                                    })},
         textTolerance},
        {"crop", {drawn(AnnotationKind(C::rectangle), rect(30, 25, 100, 70))}, {2, 0}, Rect{20.4, 10.6, 80, 60}},
    };
}

class GoldenRendering : public ::testing::TestWithParam<GoldenCase> {
protected:
    static void SetUpTestSuite() { testApplication<QGuiApplication>(); }
};

TEST_P(GoldenRendering, MatchesItsReference) {
    const GoldenCase& c = GetParam();
    AnnotationDocument document(samples::screenPattern(160, 120), 1, c.crop, c.elements);
    const AnnotationRenderer renderer(QtDrawingBackend::shared(), samples::onSharedPool);
    std::optional<ImageBuffer> image;
    if (c.hideFirstContent || c.hideWatermarkCenterTile) {
        std::unique_ptr<ImageCanvas> canvas = QtDrawingBackend::shared().makeCanvas(document.base());
        MosaicEngine mosaic(document.base());
        AnnotationDrawOptions options;
        options.hideWatermarkCenterTile = c.hideWatermarkCenterTile;
        if (c.hideFirstContent) options.hideContentFor = c.elements.front().id;
        EXPECT_TRUE(renderer.drawElements(document, *canvas, &mosaic, options).empty());
        image = canvas->finish();
    } else {
        std::vector<SkippedElement> skipped;
        image = renderer.render(document, &skipped);
        EXPECT_TRUE(skipped.empty()) << skipped.front().reason;
    }
    ASSERT_TRUE(image);
    EXPECT_TRUE(matchesGolden(*image, std::filesystem::path(TOSVAR_TEST_DATA_DIR) / "golden" / (c.name + ".png"), c.tolerance));
}

INSTANTIATE_TEST_SUITE_P(EveryKindAndSwitch, GoldenRendering, ::testing::ValuesIn(goldenCases()),
                         [](const ::testing::TestParamInfo<GoldenCase>& param) {
                             std::string name = param.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
} // namespace tosvar
