// How long a full-screen shot takes on a 2560x1600 display: the root grab
// through shared memory alone, and with the PNG encoding that follows it.
#include "PngEncoder.h"
#include "X11DisplayCapturer.h"
#include "XvfbServer.h"

#include <benchmark/benchmark.h>

#include <memory>

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

} // namespace

BENCHMARK_MAIN();
