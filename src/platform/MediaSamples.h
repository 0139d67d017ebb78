#pragma once

#include "ImageBuffer.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace tosvar {

// A moment on the media clock: microseconds of the monotonic clock, the one
// clock frames and sound are stamped with, so the two line up in a movie.
using MediaTime = std::chrono::microseconds;

inline MediaTime mediaClockNow() {
    return std::chrono::duration_cast<MediaTime>(std::chrono::steady_clock::now().time_since_epoch());
}

inline double mediaSeconds(MediaTime t) { return std::chrono::duration<double>(t).count(); }

// One screen frame as a capture source delivers it (X11 gives BGRA).
struct VideoFrame {
    ImageBuffer image;
    MediaTime time{0};
};

// Interleaved 32-bit float sound: `samples` holds frames × channels values;
// `time` is when its first frame was heard.
struct AudioChunk {
    std::vector<float> samples;
    int channels = 2;
    int sampleRate = 48000;
    MediaTime time{0};

    std::int64_t frameCount() const { return channels > 0 ? static_cast<std::int64_t>(samples.size()) / channels : 0; }
    MediaTime duration() const {
        return sampleRate > 0 ? MediaTime(frameCount() * 1'000'000 / sampleRate) : MediaTime(0);
    }
};

} // namespace tosvar
