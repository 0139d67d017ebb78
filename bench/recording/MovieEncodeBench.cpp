// How many screen frames a second the movie encoder turns into H.264 on
// this machine, at the sizes recordings use, and how long a grab of the
// screen stream takes. A recording keeps up when the figure is above its
// frame rate; below it, frames are dropped and counted.
#include "FfmpegMovieEncoder.h"
#include "MovieWriter.h"
#include "X11ScreenStreaming.h"
#include "XvfbServer.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <sys/resource.h>
#include <filesystem>
#include <thread>

using namespace tosvar;

namespace {

// Screen-like frames: mostly flat, with a moving block, as a desktop changes.
std::vector<ImageBuffer> frames(int width, int height, int count) {
    std::vector<ImageBuffer> made;
    for (int n = 0; n < count; ++n) {
        MutableImage image(width, height, PixelOrder::bgra);
        image.fill({240, 240, 236, 255});
        for (int y = height / 4; y < height / 2; ++y)
            for (int x = n * 16 % (width / 2); x < n * 16 % (width / 2) + width / 4; ++x)
                image.setPixel(x, y, {40, 90, static_cast<std::uint8_t>(n * 9), 255});
        made.push_back(std::move(image).freeze());
    }
    return made;
}

void BM_EncodeFrames(benchmark::State& state) {
    const int width = static_cast<int>(state.range(0)), height = static_cast<int>(state.range(1));
    const int fps = static_cast<int>(state.range(2));
    const std::vector<ImageBuffer> images = frames(width, height, 30);
    const std::filesystem::path url = std::filesystem::temp_directory_path() / "tosvar-encode-bench.mov";
    std::int64_t encoded = 0;
    for (auto _ : state) {
        MovieEncoderSettings settings;
        settings.url = url;
        settings.video = VideoTrackSettings{width, height, fps, MovieWriter::bitrate(width, height, fps), fps};
        auto encoder = std::move(openFfmpegMovieEncoder(settings)).value();
        for (int n = 0; n < 90; ++n) {
            while (!encoder->isReadyForVideo()) std::this_thread::sleep_for(std::chrono::microseconds(200));
            encoder->appendVideo(images[static_cast<std::size_t>(n) % images.size()], std::chrono::microseconds(n * 1'000'000 / fps));
        }
        encoder->finish();
        encoded += 90;
    }
    std::filesystem::remove(url);
    state.SetItemsProcessed(encoded);
    state.SetLabel("frames/s through sws_scale and libx264, with the container");
}
BENCHMARK(BM_EncodeFrames)
    ->Args({1920, 1080, 30})
    ->Args({1920, 1080, 15})
    ->Args({1280, 720, 30})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(2);

// The processor time a second of 60-frame-a-second 1920x1080 recording costs
// in the writer (conversion, libx264, container), over three recorded
// seconds of a changing screen; every thread of the process counts.
void BM_RecordCPUPerSecond60fps1080p(benchmark::State& state) {
    const std::vector<ImageBuffer> images = frames(1920, 1080, 30);
    const std::filesystem::path url = std::filesystem::temp_directory_path() / "tosvar-record-bench.mov";
    const auto cpuSeconds = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    };
    constexpr int fps = 60, seconds = 3;
    double cpu = 0;
    for (auto _ : state) {
        const double before = cpuSeconds();
        MovieEncoderSettings settings;
        settings.url = url;
        settings.video = VideoTrackSettings{1920, 1080, fps, MovieWriter::bitrate(1920, 1080, fps), fps};
        auto encoder = std::move(openFfmpegMovieEncoder(settings)).value();
        for (int n = 0; n < fps * seconds; ++n) {
            while (!encoder->isReadyForVideo()) std::this_thread::sleep_for(std::chrono::microseconds(200));
            encoder->appendVideo(images[static_cast<std::size_t>(n) % images.size()], std::chrono::microseconds(n * 1'000'000 / fps));
        }
        encoder->finish();
        cpu += cpuSeconds() - before;
    }
    std::filesystem::remove(url);
    state.counters["cpu_ms_per_recorded_s"] = 1000 * cpu / (static_cast<double>(state.iterations()) * seconds);
}
BENCHMARK(BM_RecordCPUPerSecond60fps1080p)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

// The screen stream's grab and copy of a full HD display, per frame.
void BM_StreamFrame1920x1080(benchmark::State& state) {
    static XvfbServer server(1920, 1080);
    X11ScreenStreaming screen(Rect{0, 0, 1920, 1080}, 1, nullptr, server.display());
    std::atomic<int> delivered = 0;
    ContentFilter filter;
    filter.displayFrame = Rect{0, 0, 1920, 1080};
    StreamConfiguration configuration{1920, 1080, std::nullopt, 1000, true, 6};
    ScreenStreamHandlers handlers{[&](VideoFrame) { ++delivered; }, nullptr};
    auto stream = std::move(screen.startStream(filter, configuration, std::move(handlers))).value();
    int asked = 0;
    for (auto _ : state) {
        // A changed source rectangle makes the stream grab again at once.
        configuration.sourceRect = Rect{static_cast<double>(++asked % 2), 0, 1918, 1080};
        const int before = delivered;
        stream->updateConfiguration(configuration);
        while (delivered == before) std::this_thread::yield();
    }
    stream->stop();
    state.SetLabel("MIT-SHM grab, copy and pointer");
}
BENCHMARK(BM_StreamFrame1920x1080)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
