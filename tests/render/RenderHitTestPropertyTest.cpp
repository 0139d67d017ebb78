// What is drawn and what is hit must agree: for random elements, every pixel
// an element changes lies within its visual box (turned with it), and the hit
// test finds the element at the pixels it changed. Both are judged with the
// reach a stroke, an arrow head, a leader or a text outline adds around the
// geometry.
#include "AnnotationJson.h"
#include "AnnotationRenderer.h"
#include "ElementBounds.h"
#include "ElementRotation.h"
#include "HitTesting.h"
#include "PngEncoder.h"
#include "QtDrawingBackend.h"
#include "RenderSamples.h"
#include "TestApplication.h"

#include <QGuiApplication>
#include <gtest/gtest.h>

#include <random>

namespace tosvar {
namespace {

using C = AnnotationKind::Case;

constexpr int width = 240, height = 180;

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    double number(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
    bool chance(double p) { return number(0, 1) < p; }
    Point point() { return {number(20, width - 20), number(20, height - 20)}; }
    template <typename T>
    const T& pick(const std::vector<T>& items) {
        return items[std::uniform_int_distribution<std::size_t>(0, items.size() - 1)(engine_)];
    }

private:
    std::mt19937 engine_;
};

AnnotationImage picture() {
    MutableImage image(8, 8);
    image.fill({200, 40, 40, 255});
    return {Uuid::random(), SharedBytes(*PngEncoder::encode(std::move(image).freeze())), 8, 8};
}

AnnotationElement randomElement(Random& random) {
    const C kind = random.pick(std::vector<C>{C::arrow, C::line, C::rectangle, C::ellipse, C::freehand, C::highlighter, C::text,
                                              C::stepBadge, C::mosaic, C::blur, C::magnifier, C::image, C::translatedText});
    AnnotationStyle style;
    style.lineWidth = random.number(1, 12);
    style.dashed = random.chance(0.3);
    style.outline = random.chance(0.4);
    style.textOutline = random.chance(0.7);
    style.fontSize = random.number(10, 30);
    style.strokeColor = random.pick(std::vector<RGBAColor>{RGBAColor::Palette::red, RGBAColor::Palette::black, RGBAColor::Palette::blue,
                                                           RGBAColor::Palette::green});
    style.mosaicBlockSize = random.number(4, 20);
    style.blurRadius = random.number(2, 10);
    if (random.chance(0.3)) style.fillColor = RGBAColor::Palette::yellow.withAlpha(0.8);
    if (ElementRotation::supportsRotation(kind) && random.chance(0.5)) style.rotation = random.number(-170, 170);

    const Point a = random.point(), b = random.point();
    const Rect box = Rect::fromEdges(std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x) + 12, std::max(a.y, b.y) + 12);
    switch (kind) {
    case C::arrow:
    case C::line:
        if (random.chance(0.3)) style.curvature = random.number(-40, 40);
        else if (random.chance(0.3)) style.midPoints = std::vector<Point>{random.point()};
        return samples::drawn(AnnotationKind(kind), Geometry::segment(a, b), [&](auto& s) { s = style; });
    case C::freehand:
    case C::highlighter:
        return samples::drawn(AnnotationKind(kind), Geometry::path({a, random.point(), random.point(), b}), [&](auto& s) { s = style; });
    case C::text:
    case C::stepBadge: {
        if (random.chance(0.5)) style.leaderTip = random.point();
        if (style.leaderTip && random.chance(0.3)) style.curvature = random.number(-30, 30);
        AnnotationKind payload = kind == C::text ? AnnotationKind::text(random.chance(0.5) ? "Tosvar" : "two\nlines") : AnnotationKind::stepBadge("3");
        return samples::drawn(std::move(payload), Geometry::point(a), [&](auto& s) { s = style; });
    }
    case C::mosaic:
    case C::blur:
        if (random.chance(0.3)) return samples::drawn(AnnotationKind(kind), Geometry::path({a, b}), [&](auto& s) { s = style; });
        return samples::drawn(AnnotationKind(kind), Geometry::rect(box), [&](auto& s) { s = style; });
    case C::image: return samples::drawn(AnnotationKind::image(picture()), Geometry::rect(box), [&](auto& s) { s = style; });
    case C::translatedText: {
        TranslatedBlock block;
        block.source = "Quelle";
        block.target = "A translated line of text";
        block.targetLanguage = "en";
        return samples::drawn(AnnotationKind::translatedText(block), Geometry::rect(box), [&](auto& s) { s = style; });
    }
    default: return samples::drawn(AnnotationKind(kind), Geometry::rect(box), [&](auto& s) { s = style; });
    }
}

// How far past its geometry an element may paint: half its stroke and an
// arrow head's spread, contrast outlines, a leader's head, a text's outline,
// a brushed region's width, a translated block's backdrop.
double reach(const AnnotationElement& e) {
    const AnnotationStyle& s = e.style;
    double r = 2 + std::max(2.1 * std::max(s.lineWidth, 1.0), 6.0) + 2 * std::max(s.lineWidth / 4, 2.0);
    if (e.kind.is(C::highlighter)) r = 2 + 1.5 * std::max(s.lineWidth, 1.0) * 2;
    if (s.leaderTip) r += 16;
    if (e.kind.is(C::text)) r += 4;
    if (e.geometry.asPath() && (e.kind.is(C::mosaic) || e.kind.is(C::blur))) r += std::max({s.lineWidth, s.mosaicBlockSize, 24.0}) / 2;
    if (e.kind.is(C::translatedText)) r += 0.08 * s.fontSize + 1;
    return r;
}

bool changed(Rgba8 a, Rgba8 b) {
    return std::abs(a.r - b.r) > 24 || std::abs(a.g - b.g) > 24 || std::abs(a.b - b.b) > 24 || std::abs(a.a - b.a) > 24;
}

TEST(RenderingAndHitTesting, AgreeOnWhereRandomElementsAre) {
    testApplication<QGuiApplication>();
    const QtDrawingBackend& backend = QtDrawingBackend::shared();
    const TextMeasuring& measure = backend.measuring(FontFace::regular);
    const AnnotationRenderer renderer(backend);
    const ImageBuffer base = samples::screenPattern(width, height);
    const ImageBuffer plain = *renderer.render(AnnotationDocument(base, 1));
    Random random(20261125);
    int elementsThatPainted = 0;
    for (int round = 0; round < 300; ++round) {
        const AnnotationElement element = randomElement(random);
        const std::optional<ImageBuffer> drawn = renderer.render(AnnotationDocument(base, 1, std::nullopt, {element}));
        ASSERT_TRUE(drawn);
        const double margin = reach(element);
        const std::string described = AnnotationJson::encodeElement(element).value_or("?");
        // A leader does not turn with its body: the body's box turns, the leader's does not.
        AnnotationElement body = element;
        body.style.leaderTip.reset();
        Rect allowed = ElementRotation::worldBounds(measure, ElementBounds::visualBox(measure, body), body);
        if (element.style.leaderTip) allowed = allowed.unionWith(ElementBounds::visualBox(measure, element));
        allowed = allowed.insetBy(-margin, -margin);
        std::vector<Point> painted;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (changed(drawn->pixel(x, y), plain.pixel(x, y))) painted.push_back({x + 0.5, y + 0.5});
        if (!painted.empty()) ++elementsThatPainted;
        for (const Point& p : painted) {
            ASSERT_TRUE(allowed.contains(p)) << "round " << round << ": pixel (" << p.x << ", " << p.y << ") painted outside "
                                             << allowed.minX() << "," << allowed.minY() << " " << allowed.width() << "x" << allowed.height() << " by "
                                             << described;
        }
        for (std::size_t i = 0; i < painted.size(); i += std::max<std::size_t>(painted.size() / 40, 1)) {
            ASSERT_TRUE(HitTesting::hitTest(measure, element, painted[i], margin))
                << "round " << round << ": painted pixel (" << painted[i].x << ", " << painted[i].y << ") is not hit on " << described;
        }
    }
    EXPECT_GT(elementsThatPainted, 250);
}

} // namespace
} // namespace tosvar
