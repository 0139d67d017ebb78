#pragma once

#include "GIFColorQuantizer.h"
#include "GifWriter.h"
#include "ImageBuffer.h"
#include "MovieFileProcessing.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <functional>
#include <vector>

namespace tosvar {

class WorkerPool;

// Turning the frames of a recording into a looping GIF: which frames to keep
// for a frame rate, how long each shows, one palette for them all, and the
// frames themselves, each holding only what changed since the one before.
namespace GIFExporter {

// The frames kept at `fps`: the first always, then each at least
// 1/fps - 0.001 seconds after the last kept one; gaps are never filled.
std::vector<std::size_t> keptIndices(const std::vector<double>& times, int fps);
// How long each kept frame shows: the time to the next one, `fallback` for
// the last, each within 0.02 and 10 seconds.
std::vector<double> frameDelays(const std::vector<double>& keptTimes, double fallback);
// Which kept frames the palette is sampled from: at most five, spread evenly.
std::vector<std::size_t> paletteSamplePositions(std::size_t count);
// The quantiser for frames sampled from the recording: a median-cut palette
// of 255 colours, leaving one index free for "unchanged".
GIFColorQuantizer quantizer(const std::vector<ImageBuffer>& sampleFrames);

// Encodes frames of one size as they come. Frames are dithered several at a
// time on the worker pool and written in order; a frame's pixels that equal
// the frame before it are written transparent, only the rectangle that
// changed is stored, and a frame that changed nothing lengthens the one
// before instead.
class AnimationEncoder {
public:
    AnimationEncoder(const GIFColorQuantizer& quantizer, int width, int height, WorkerPool& pool);
    void add(ImageBuffer frame, double delaySeconds);
    std::vector<std::uint8_t> finish();

private:
    struct Pending {
        PixelRect area;
        std::vector<std::uint8_t> indices;
        bool transparent = false;
        double delay = 0;
    };
    void flushBatch();
    void writePending();

    const GIFColorQuantizer& quantizer_;
    int width_, height_;
    WorkerPool& pool_;
    GifWriter writer_;
    std::uint8_t transparentIndex_;
    std::vector<std::pair<ImageBuffer, double>> batch_;
    ImageBuffer previous_;
    std::vector<std::uint8_t> displayed_; // the index each pixel shows after the frames written
    std::optional<Pending> pending_;
};

struct Settings {
    int fps = 10;
    int maxWidthPixels = 1280;
};
inline constexpr const char* unreadableMovie = "Could not read the recorded movie";
inline constexpr const char* encodeFailed = "GIF encoding failed";

// Writes the movie as a looping GIF at `destination`: the frames kept at the
// rate, each showing until the next, no wider than asked, one palette from
// five of them. `progress` hears the share of frames written. The error
// says `unreadableMovie` or `encodeFailed`, with the reason behind it.
std::optional<Error> exportMovie(MovieFileProcessing& movies, const std::filesystem::path& movie, const std::filesystem::path& destination,
                                 const Settings& settings, WorkerPool& pool, const std::function<void(double)>& progress = {});

} // namespace GIFExporter

} // namespace tosvar
