// How long a full-screen shot takes on a 2560x1600 display: the root grab
// through shared memory alone, and with the PNG encoding that follows it.
#include "DisplayGrabber.h"
#include "ParallelFor.h"
#include "PngEncoder.h"
#include "X11DisplayCapturer.h"
#include "XvfbServer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

using namespace tosvar;

namespace {

struct Display {
    XvfbServer server{2560, 1600};
    Rect frame{0, 0, 2560, 1600};
    std::unique_ptr<X11DisplayCapturer> capturer;
    Display() {
        server.useAsDisplay();
        capturer = std::make_unique<X11DisplayCapturer>(frame);
    }
    ScreenInfo screen() const { return {frame, frame, 1}; }
};

Display& display() {
    static Display shared;
    return shared;
}

void BM_RootGrab2560x1600(benchmark::State& state) {
    Display& d = display();
    for (auto _ : state) benchmark::DoNotOptimize(d.capturer->capture(d.screen()));
    state.SetLabel("MIT-SHM grab of the whole display");
}
BENCHMARK(BM_RootGrab2560x1600)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FirstGrab2560x1600(benchmark::State& state) {
    Display& d = display();
    for (auto _ : state) {
        X11DisplayCapturer fresh(d.frame); // a new connection and segment each time
        benchmark::DoNotOptimize(fresh.capture(d.screen()));
    }
    state.SetLabel("first grab of a new connection (no warm-up)");
}
BENCHMARK(BM_FirstGrab2560x1600)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);

void BM_GrabAndEncode2560x1600(benchmark::State& state) {
    Display& d = display();
    for (auto _ : state) {
        std::optional<CapturedDisplay> captured = d.capturer->capture(d.screen());
        benchmark::DoNotOptimize(PngEncoder::encode(captured->image));
    }
    state.SetLabel("grab and PNG encoding, as the full-screen shot does");
}
BENCHMARK(BM_GrabAndEncode2560x1600)->Unit(benchmark::kMillisecond)->UseRealTime();

// Freezing every display of a 3840x2160 desktop (two 1920x2160 monitors side
// by side), as a region session does: the median and 95th percentile of 50.
void BM_FreezeAllDisplays3840x2160(benchmark::State& state) {
    static XvfbServer server(3840, 2160);
    const Rect main(0, 0, 1920, 2160);
    X11DisplayCapturer capturer(main, server.display());
    const std::vector<ScreenInfo> monitors{{main, main, 1}, {{1920, 0, 1920, 2160}, {1920, 0, 1920, 2160}, 1}};
    const std::vector<DisplayGrabber::Target> targets = DisplayGrabber::targets(monitors);
    const ParallelRunner pool = [](int count, const std::function<void(int, int)>& body) {
        parallelFor(WorkerPool::shared(), count, count, body);
    };
    // The application warms its grab a second after launch and every four
    // minutes, so a session meets a connection whose segment already exists.
    benchmark::DoNotOptimize(DisplayGrabber::grab(capturer, targets, pool));
    std::vector<double> times;
    for (auto _ : state) {
        const auto started = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(DisplayGrabber::grab(capturer, targets, pool));
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count());
    }
    std::sort(times.begin(), times.end());
    state.counters["p50_ms"] = times[times.size() / 2];
    state.counters["p95_ms"] = times[std::min(times.size() - 1, times.size() * 95 / 100)];
    state.SetLabel("two monitors, MIT-SHM");
}
BENCHMARK(BM_FreezeAllDisplays3840x2160)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50);

} // namespace

BENCHMARK_MAIN();
