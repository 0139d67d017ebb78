// From a capture request to the first frame of the overlay that shows the
// frozen screen, on a 3840x2160 X server: the grab, the overlay window and its
// first paint, as the hotkey starts them. The median and 95th percentile of 30.
#include "DisplayGrabber.h"
#include "QtBenchmarkMain.h"
#include "QtRegionOverlayFactory.h"
#include "RegionScreenshotSession.h"
#include "X11DisplayCapturer.h"
#include "X11WindowList.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>

using namespace tosvar;

namespace {

XvfbServer& server() {
    static XvfbServer shared(3840, 2160);
    return shared;
}

struct FixedLayout final : ScreenLayout {
    std::vector<ScreenInfo> screens() const override { return {{{0, 0, 3840, 2160}, {0, 0, 3840, 2160}, 1}}; }
    Point mouseLocation() const override { return {1000, 1000}; }
};

struct Granted final : ScreenCapturePermission {
    bool isGranted() const override { return true; }
    void request() override {}
    void presentGuidance() override {}
};

// Runs nothing: the synchronous path needs no queue.
struct IdleQueue final : MainQueue {
    double now() const override { return 0; }
    TimerHandle after(double, std::function<void()>) override { return {}; }
    TimerHandle every(double, std::function<void()>) override { return {}; }
    void async(std::function<void()> work) override { work(); }
};

// The overlays the product makes, each telling when its first frozen frame is painted.
struct TimedOverlays final : RegionOverlayFactory {
    QtRegionOverlayFactory real;
    bool painted = false;
    explicit TimedOverlays(WindowListing& windows) : real({.windows = windows, .mainGlobalFrame = [] { return Rect(0, 0, 3840, 2160); }}) {}
    std::unique_ptr<RegionOverlay> make(const ScreenInfo& screen, const std::optional<CapturedDisplay>& frozen, ScreenshotOverlayMode mode,
                                        RegionOverlayCallbacks callbacks) override {
        std::unique_ptr<RegionOverlay> overlay = real.make(screen, frozen, mode, std::move(callbacks));
        static_cast<QtRegionOverlay*>(overlay.get())->onFirstFrozenFrame = [this] { painted = true; };
        return overlay;
    }
};

void BM_RequestToFrozenOverlay3840x2160(benchmark::State& state) {
    auto displays = std::make_shared<X11DisplayCapturer>(Rect(0, 0, 3840, 2160), server().display());
    X11WindowList windows(1, server().display());
    FixedLayout layout;
    Granted permission;
    IdleQueue queue;
    TimedOverlays overlays(windows);
    auto session = RegionScreenshotSession::make({displays, layout, windows, overlays, permission, queue, [](std::function<void()>) {},
                                                  [] {}, [](std::string_view, double) {}, 0, true});
    (void)DisplayGrabber::grab(*displays, DisplayGrabber::targets(layout)); // the application's warm-up
    std::vector<double> times;
    for (auto _ : state) {
        overlays.painted = false;
        QElapsedTimer clock;
        clock.start();
        session->capture([](const RegionAnnotationOutcome&) {});
        while (!overlays.painted && clock.elapsed() < 5000) QApplication::processEvents(QEventLoop::AllEvents, 1);
        times.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
        state.PauseTiming();
        session->cancel();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    std::sort(times.begin(), times.end());
    state.counters["p50_ms"] = times[times.size() / 2];
    state.counters["p95_ms"] = times[std::min(times.size() - 1, times.size() * 95 / 100)];
}
BENCHMARK(BM_RequestToFrozenOverlay3840x2160)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(30);

} // namespace

int main(int argc, char** argv) {
    server().useAsDisplay();
    return runQtBenchmarks<QApplication>(argc, argv, "xcb");
}
