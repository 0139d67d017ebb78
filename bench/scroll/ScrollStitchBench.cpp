// The stitcher's costs, printed as figures:
// - ingest time per frame (median and 95th percentile) on one thread, for
//   corpus sequences at 1600x1000 and 3200x2000, the drawing of the frames
//   not counted;
// - the time and the peak memory of encoding a stitched document of
//   1600x20,000 and 3200x80,000 pixels to PNG band by band. Each size runs
//   in a fresh process of its own (this program started again), so the peak
//   belongs to it alone; the strips themselves count, as they do in a session.
#include "ScrollCorpus.h"
#include "ScrollStitcher.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace tosvar;
using namespace tosvar::ScrollCorpus;

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double percentile(std::vector<double> values, double p) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, static_cast<std::size_t>(p * (values.size() - 1) + 0.5))];
}

// Ingest times of the frames after the first.
std::vector<double> ingestTimes(const std::string& className, FrameSize size, int frames) {
    Expected<Sequence> sequence = Sequence::generate({className, size, frames, 1});
    if (!sequence) return {};
    ScrollStitcher stitcher(384, 18.0, 3.0, 0, sequence->axis());
    std::vector<double> times;
    for (int i = 0; i < sequence->frameCount(); ++i) {
        const ImageBuffer frame = sequence->frame(i);
        const auto start = Clock::now();
        stitcher.ingest(frame);
        if (i > 0) times.push_back(millisecondsSince(start));
    }
    return times;
}

void reportIngest(FrameSize size, int frames) {
    std::vector<double> all;
    for (const char* className : {"text", "table", "sticky", "dynamic", "blank", "horizontal"}) {
        const std::vector<double> times = ingestTimes(className, size, frames);
        std::printf("ingest %-10s %4dx%-4d  median %7.2f ms   p95 %7.2f ms   (%zu frames)\n", className, size.width,
                    size.height, percentile(times, 0.5), percentile(times, 0.95), times.size());
        all.insert(all.end(), times.begin(), times.end());
    }
    std::printf("ingest %-10s %4dx%-4d  median %7.2f ms   p95 %7.2f ms   (%zu frames)\n", "all", size.width, size.height,
                percentile(all, 0.5), percentile(all, 0.95), all.size());
}

// A document of `rows` rows made of distinct copies of corpus frames, as a
// long session leaves it, encoded to a sink that only counts.
void encodeDocument(FrameSize frame, int rows) {
    Expected<Sequence> sequence = Sequence::generate({"text", frame, 2, 1});
    if (!sequence) return;
    ScrollStitcher stitcher(384, 18.0, 3.0, 0, ScrollAxis::vertical);
    stitcher.frameWidth = frame.width;
    stitcher.frameHeight = frame.height;
    for (int top = 0; top < rows; top += frame.height) {
        const ImageBuffer source = sequence->frame((top / frame.height) % 2);
        const int height = std::min(frame.height, rows - top);
        stitcher.strips.push_back(*ScrollStitcher::detached(source.cropped({0, 0, frame.width, height})));
        stitcher.stripDocStarts.push_back(top);
        stitcher.stripSources.push_back({static_cast<int>(stitcher.strips.size()) - 1, 0});
    }
    stitcher.totalHeight = rows;
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    std::size_t bytes = 0;
    const auto start = Clock::now();
    const std::optional<Error> failed = stitcher.encodePNG(256, [&](const std::uint8_t*, std::size_t count) {
        bytes += count;
        return true;
    });
    const double ms = millisecondsSince(start);
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    const double pixelMiB = 4.0 * frame.width * rows / (1 << 20);
    std::printf("encode %dx%d  %8.0f ms   PNG %6.1f MiB   pixels %7.1f MiB   peak memory %7.1f MiB (%.2fx the pixels; "
                "%.1f MiB before encoding)%s\n",
                frame.width, rows, ms, bytes / double(1 << 20), pixelMiB, after.ru_maxrss / 1024.0,
                after.ru_maxrss / 1024.0 / pixelMiB, before.ru_maxrss / 1024.0,
                failed ? (" FAILED: " + failed->message).c_str() : "");
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::string(argv[1]) == "encode") {
        encodeDocument({std::atoi(argv[2]), std::atoi(argv[3])}, std::atoi(argv[4]));
        return 0;
    }
    reportIngest({1600, 1000}, 40);
    reportIngest({3200, 2000}, 24);
    std::fflush(stdout);
    for (const char* size : {"1600 1000 20000", "3200 2000 80000"}) {
        const std::string command = std::filesystem::read_symlink("/proc/self/exe").string() + " encode " + size;
        if (std::system(command.c_str()) != 0) std::printf("encode %s failed\n", size);
    }
    return 0;
}
