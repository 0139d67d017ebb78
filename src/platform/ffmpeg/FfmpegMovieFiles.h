#pragma once

#include "MovieFileProcessing.h"

namespace tosvar {

// Finished movie files through FFmpeg. Any thread; each call works alone.
class FfmpegMovieFiles final : public MovieFileProcessing {
public:
    Expected<MovieTrackCounts> trackCounts(const std::filesystem::path& movie) override;
    std::optional<Error> remux(const std::filesystem::path& from, const std::filesystem::path& to,
                               MovieContainer container, bool fastStart) override;
    std::optional<Error> mixAudioTracks(const std::filesystem::path& from, const std::filesystem::path& to,
                                        MovieContainer container, const AudioTrackSettings& audio) override;
    std::optional<Error> readAudio(const std::filesystem::path& movie, int sampleRate, int channels,
                                   double maxSeconds,
                                   const std::function<void(std::span<const float>)>& chunk) override;
};

} // namespace tosvar
