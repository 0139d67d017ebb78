// Time to thin a freehand stroke as its length grows, at the editor's
// tolerance (3) and the live canvas's (0.75). A scribble of loops with a
// tremor, sampled every pixel or so, stands for a long hand-drawn stroke; the
// fitted complexity shows whether the time stays close to linear.
#include "PathSimplify.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

using namespace tosvar;

namespace {

std::vector<Point> scribble(std::size_t count) {
    std::mt19937 random(11);
    std::normal_distribution<double> tremor(0, 0.35);
    std::vector<Point> points;
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) * 0.01;
        // Loops that drift to the right, like joined-up handwriting.
        points.push_back({t * 8 + 40 * std::cos(t * 1.7) + tremor(random),
                          60 * std::sin(t * 2.3) + 15 * std::sin(t * 0.37) + tremor(random)});
    }
    return points;
}

void simplifyScribble(benchmark::State& state, double tolerance) {
    const std::vector<Point> stroke = scribble(static_cast<std::size_t>(state.range(0)));
    std::size_t kept = 0;
    for (auto _ : state) {
        const std::vector<Point> thinned = PathSimplify::simplify(stroke, tolerance);
        kept = thinned.size();
        benchmark::DoNotOptimize(thinned.data());
    }
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["kept"] = static_cast<double>(kept);
}

} // namespace

BENCHMARK_CAPTURE(simplifyScribble, editor, 3.0)
    ->RangeMultiplier(10)
    ->Range(1'000, 1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK_CAPTURE(simplifyScribble, live, 0.75)
    ->RangeMultiplier(10)
    ->Range(1'000, 1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

BENCHMARK_MAIN();
