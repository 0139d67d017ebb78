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
    Expected<std::vector<double>> videoFrameTimes(const std::filesystem::path& movie) override;
    std::optional<Error> readVideoFrames(const std::filesystem::path& movie, const std::vector<std::size_t>& wanted, int maxWidth,
                                         const std::function<void(std::size_t, ImageBuffer)>& frame) override;
    std::optional<Error> readAudio(const std::filesystem::path& movie, int sampleRate, int channels,
                                   double maxSeconds,
                                   const std::function<void(std::span<const float>)>& chunk) override;
};

} // namespace tosvar
