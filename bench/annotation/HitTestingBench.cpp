// Time of one pointer move over a document: `HitTesting::topmost` at the
// editor's tolerance (6) for a point that misses everything, so every element
// is tested, over documents of mixed kinds where a quarter of the elements are
// texts or badges with bent leaders, measured in the real face. Also one text
// on its own, where measuring dominates.
#include "QtBenchmarkMain.h"
#include "HitTesting.h"
#include "QtTextMeasurer.h"

#include <benchmark/benchmark.h>

#include <QGuiApplication>

#include <random>

using namespace tosvar;

namespace {

const QtTextMeasurer& measurer() {
    static const QtTextMeasurer measurer = *QtTextMeasurer::load();
    return measurer;
}

std::vector<AnnotationElement> document(std::size_t count) {
    using C = AnnotationKind::Case;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> coordinate(0, 2000);
    const auto point = [&] { return Point{coordinate(random), coordinate(random)}; };
    std::vector<AnnotationElement> elements;
    for (std::size_t i = 0; i < count; ++i) {
        AnnotationStyle style;
        style.rotation = 15;
        switch (i % 8) {
        case 0: elements.push_back({Uuid::random(), AnnotationKind(C::arrow), Geometry::segment(point(), point()), style}); break;
        case 1: elements.push_back({Uuid::random(), AnnotationKind(C::rectangle), Geometry::rect(Rect(point(), Size{300, 200})), style}); break;
        case 2: elements.push_back({Uuid::random(), AnnotationKind(C::ellipse), Geometry::rect(Rect(point(), Size{300, 200})), style}); break;
        case 3: {
            std::vector<Point> stroke;
            for (int k = 0; k < 40; ++k) stroke.push_back(point());
            elements.push_back({Uuid::random(), AnnotationKind(C::freehand), Geometry::path(std::move(stroke)), style});
            break;
        }
        case 4:
        case 5: {
            style.leaderTip = point();
            style.curvature = 40;
            const AnnotationKind kind = i % 8 == 4 ? AnnotationKind::text("Look here\nand here") : AnnotationKind::stepBadge("3");
            elements.push_back({Uuid::random(), kind, Geometry::point(point()), style});
            break;
        }
        case 6: elements.push_back({Uuid::random(), AnnotationKind(C::mosaic), Geometry::rect(Rect(point(), Size{300, 200})), style}); break;
        default: elements.push_back({Uuid::random(), AnnotationKind::watermark("DRAFT"), Geometry::rect(Rect(0, 0, 2000, 2000)), style}); break;
        }
    }
    return elements;
}

void topmostMiss(benchmark::State& state) {
    const std::vector<AnnotationElement> elements = document(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(HitTesting::topmost(measurer(), elements, {-500, -500}, 6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void oneText(benchmark::State& state) {
    AnnotationStyle style;
    style.leaderTip = Point{600, 400};
    style.rotation = 30;
    const AnnotationElement text{Uuid::random(), AnnotationKind::text("A short note\nover two lines"),
                                 Geometry::point({100, 100}), style};
    for (auto _ : state) benchmark::DoNotOptimize(HitTesting::hitTest(measurer(), text, {900, 900}, 6));
}

} // namespace

BENCHMARK(topmostMiss)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);
BENCHMARK(oneText)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) { return tosvar::runQtBenchmarks<QGuiApplication>(argc, argv); }
