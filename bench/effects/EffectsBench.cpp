// The pixel effects at screenshot sizes: the drop shadow around a capture,
// and the blur and pixelation a region effect reveals.
#include "DropShadowDecorator.h"
#include "MosaicEngine.h"

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

void BM_Blur(benchmark::State& state) {
    const ImageBuffer image = screenLike(1920, 1080);
    for (auto _ : state) {
        MosaicEngine engine(image); // no cache between runs
        benchmark::DoNotOptimize(engine.blurred(static_cast<double>(state.range(0))));
    }
}
BENCHMARK(BM_Blur)->Arg(4)->Arg(20)->Unit(benchmark::kMillisecond);

void BM_Pixelate(benchmark::State& state) {
    const ImageBuffer image = screenLike(1920, 1080);
    for (auto _ : state) {
        MosaicEngine engine(image);
        benchmark::DoNotOptimize(engine.pixelated(12));
    }
}
BENCHMARK(BM_Pixelate)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
