// The pixel effects at screenshot sizes: the drop shadow around a capture,
// and the blur and pixelation a region effect reveals.
#include "DropShadowDecorator.h"
#include "MosaicEngine.h"
#include "ParallelFor.h"

#include <benchmark/benchmark.h>

using namespace tosvar;

namespace {

ImageBuffer screenLike(int width, int height) {
    MutableImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto v = static_cast<std::uint8_t>((x * 7 + y * 13) ^ (x >> 3));
            image.setPixel(x, y, {v, static_cast<std::uint8_t>(255 - v), 128, 255});
        }
    return std::move(image).freeze();
}

void BM_DropShadow(benchmark::State& state) {
    const ImageBuffer image = screenLike(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const double scale = static_cast<double>(state.range(2));
    for (auto _ : state) benchmark::DoNotOptimize(DropShadowDecorator::decorate(image, scale, DropShadowDecorator::Style::screenshot()));
}
BENCHMARK(BM_DropShadow)->Args({1280, 800, 1})->Args({2560, 1600, 2})->Unit(benchmark::kMillisecond);

// Region effects at a 5K screenshot's size, on one thread (range 1 = 0) or
// spread over the shared pool as the renderer does (range 1 = 1).
ParallelRunner runner(bool pooled) {
    if (!pooled) return runSerially;
    return [](int count, const std::function<void(int, int)>& body) {
        parallelFor(WorkerPool::shared(), count, static_cast<int>(WorkerPool::shared().threadCount()) * 4, body);
    };
}

void BM_Blur(benchmark::State& state) {
    static const ImageBuffer image = screenLike(5120, 2880);
    const ParallelRunner run = runner(state.range(1) != 0);
    for (auto _ : state) {
        MosaicEngine engine(image, run); // no cache between runs
        benchmark::DoNotOptimize(engine.blurred(static_cast<double>(state.range(0))));
    }
}
BENCHMARK(BM_Blur)->ArgNames({"sigma", "pooled"})->Args({12, 1})->Args({60, 1})->Args({12, 0})->Args({60, 0})->Unit(benchmark::kMillisecond);

void BM_Pixelate(benchmark::State& state) {
    static const ImageBuffer image = screenLike(5120, 2880);
    const ParallelRunner run = runner(state.range(1) != 0);
    for (auto _ : state) {
        MosaicEngine engine(image, run);
        benchmark::DoNotOptimize(engine.pixelated(static_cast<double>(state.range(0))));
    }
}
BENCHMARK(BM_Pixelate)->ArgNames({"block", "pooled"})->Args({16, 1})->Args({16, 0})->Args({4, 1})->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
