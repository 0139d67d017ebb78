#pragma once

#include "Expected.h"
#include "ImageBuffer.h"
#include "MovieEncoding.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace tosvar {

struct MovieTrackCounts {
    int video = 0;
    int audio = 0;
    friend bool operator==(const MovieTrackCounts&, const MovieTrackCounts&) = default;
};

// Work on finished movie files, at whatever speed the machine allows.
class MovieFileProcessing {
public:
    virtual ~MovieFileProcessing() = default;

    virtual Expected<MovieTrackCounts> trackCounts(const std::filesystem::path& movie) = 0;
    // Copies every track into another container; nothing is encoded again.
    // `fastStart` puts the index first, so players can start before the end arrives.
    virtual std::optional<Error> remux(const std::filesystem::path& from, const std::filesystem::path& to,
                                       MovieContainer container, bool fastStart) = 0;
    // Copies the first video track, if any, and sums every audio track into one,
    // encoded as `audio` asks.
    virtual std::optional<Error> mixAudioTracks(const std::filesystem::path& from, const std::filesystem::path& to,
                                                MovieContainer container, const AudioTrackSettings& audio) = 0;
    // Decodes the first audio track as interleaved floats at the rate and
    // channel count asked, up to `maxSeconds`, chunk by chunk.
    virtual std::optional<Error> readAudio(const std::filesystem::path& movie, int sampleRate, int channels,
                                           double maxSeconds,
                                           const std::function<void(std::span<const float>)>& chunk) = 0;
    // The presentation times of the first video track's frames, in seconds,
    // ascending; an error when there is none or the file cannot be read.
    virtual Expected<std::vector<double>> videoFrameTimes(const std::filesystem::path& movie) = 0;
    // Decodes the first video track and hands over the frames whose places
    // in presentation order are in `wanted` (ascending), no wider than
    // `maxWidth` pixels (never enlarged), in order.
    virtual std::optional<Error> readVideoFrames(const std::filesystem::path& movie, const std::vector<std::size_t>& wanted,
                                                 int maxWidth, const std::function<void(std::size_t, ImageBuffer)>& frame) = 0;
};

} // namespace tosvar
