// Flattening a 5K screenshot with 50 mixed elements (5 mosaic and 5 blur
// regions among them), before PNG encoding, with the pixel effects spread
// over the shared pool as the product does; and the same with its encoding.
#include "AnnotationRenderer.h"
#include "ParallelFor.h"
#include "PngEncoder.h"
#include "QtDrawingBackend.h"

#include <QGuiApplication>
#include <benchmark/benchmark.h>

#include <random>

using namespace tosvar;

namespace {

using C = AnnotationKind::Case;

ImageBuffer screenLike(int width, int height) {
    MutableImage image(width, height, PixelOrder::bgra);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image.row(y);
        for (int x = 0; x < width; ++x) {
            const auto v = static_cast<std::uint8_t>(((x / 7) % 3 == 0 && (y / 11) % 2 == 0) ? 30 : 235 - (x + y) % 20);
            row[4 * x] = v;
            row[4 * x + 1] = v;
            row[4 * x + 2] = static_cast<std::uint8_t>(v - v / 8);
            row[4 * x + 3] = 255;
        }
    }
    return std::move(image).freeze();
}

AnnotationElement element(AnnotationKind kind, Geometry geometry, AnnotationStyle style = {}) {
    return {Uuid::random(), std::move(kind), std::move(geometry), std::move(style)};
}

// Ten of each: arrows, rectangles, texts with badges, freehand strokes and
// highlights, lines, then five mosaics and five blurs, spread over the screen.
std::vector<AnnotationElement> mixedElements(double width, double height) {
    std::mt19937 random(5);
    auto at = [&](double margin) {
        return Point{std::uniform_real_distribution<double>(margin, width - margin)(random),
                     std::uniform_real_distribution<double>(margin, height - margin)(random)};
    };
    std::vector<AnnotationElement> elements;
    for (int i = 0; i < 8; ++i) {
        const Point a = at(400);
        AnnotationStyle style;
        style.lineWidth = 8;
        style.outline = i % 2 == 0;
        elements.push_back(element(AnnotationKind(C::arrow), Geometry::segment(a, a + Point{300, -150}), style));
        elements.push_back(element(AnnotationKind(C::rectangle), Geometry::rect({at(500).x, at(500).y, 420, 260}), style));
        AnnotationStyle text;
        text.fontSize = 48;
        text.shadow = i % 4 == 0;
        elements.push_back(element(AnnotationKind::text("Check this value"), Geometry::point(at(600)), text));
        elements.push_back(element(AnnotationKind::stepBadge(std::to_string(i + 1)), Geometry::point(at(100)), text));
        const Point f = at(400);
        elements.push_back(element(AnnotationKind(C::freehand), Geometry::path({f, f + Point{80, 60}, f + Point{160, -20}, f + Point{260, 90}}), style));
    }
    AnnotationStyle dashed;
    dashed.dashed = true;
    dashed.lineWidth = 6;
    for (int i = 0; i < 5; ++i) elements.push_back(element(AnnotationKind(C::line), Geometry::segment(at(300), at(300)), dashed));
    for (int i = 0; i < 5; ++i) elements.push_back(element(AnnotationKind(C::mosaic), Geometry::rect({at(600).x, at(600).y, 500, 300})));
    for (int i = 0; i < 5; ++i) elements.push_back(element(AnnotationKind(C::blur), Geometry::rect({at(600).x, at(600).y, 500, 300})));
    return elements; // 8 * 5 + 5 + 10 = 55... trimmed below
}

void BM_Flatten(benchmark::State& state) {
    const ImageBuffer base = screenLike(5120, 2880);
    std::vector<AnnotationElement> elements = mixedElements(5120, 2880);
    elements.erase(elements.begin(), elements.begin() + static_cast<std::ptrdiff_t>(elements.size() - 50));
    const AnnotationDocument document(base, 2, std::nullopt, elements);
    const AnnotationRenderer renderer(QtDrawingBackend::shared(), [](int count, const std::function<void(int, int)>& body) {
        parallelFor(WorkerPool::shared(), count, static_cast<int>(WorkerPool::shared().threadCount()) * 4, body);
    });
    const bool encode = state.range(0) != 0;
    for (auto _ : state) {
        if (encode) {
            benchmark::DoNotOptimize(renderer.renderPNG(document));
        } else {
            benchmark::DoNotOptimize(renderer.render(document));
        }
    }
    state.counters["elements"] = static_cast<double>(document.elements.size());
}
BENCHMARK(BM_Flatten)->ArgName("encoded")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
