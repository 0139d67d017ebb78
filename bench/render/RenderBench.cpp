// Flattening a 5K screenshot with 50 mixed elements (5 mosaic and 5 blur
// regions among them), before PNG encoding, with the pixel effects spread
// over the shared pool as the product does; and the same with its encoding.
#include "QtBenchmarkMain.h"
#include "AnnotationRenderer.h"
#include "MixedDocument.h"
#include "ParallelFor.h"
#include "PngEncoder.h"
#include "QtDrawingBackend.h"

#include <QGuiApplication>
#include <benchmark/benchmark.h>

#include <random>

using namespace tosvar;

namespace {

void BM_Flatten(benchmark::State& state) {
    const AnnotationDocument document = benchmarks::mixedDocument();
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

int main(int argc, char** argv) { return tosvar::runQtBenchmarks<QGuiApplication>(argc, argv); }
