#pragma once

#include "Expected.h"
#include "MovieEncoding.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>

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
};

} // namespace tosvar
