#include "RecordingAudioMixer.h"

#include "RecordingError.h"
#include "Uuid.h"

#include <system_error>

namespace tosvar {

Expected<std::filesystem::path> RecordingAudioMixer::mixIfNeeded(MovieFileProcessing& processing,
                                                                 const std::filesystem::path& movie) {
    Expected<MovieTrackCounts> tracks = processing.trackCounts(movie);
    if (!tracks) return RecordingError::writerFailed(tracks.error().message);
    if (tracks->audio < 2 || tracks->video < 1) return movie;
    const std::filesystem::path mixed = movie.parent_path() / (Uuid::random().string() + ".mov");
    if (std::optional<Error> error = processing.mixAudioTracks(
            movie, mixed, MovieContainer::quickTime, {.sampleRate = 48000, .channels = 2, .bitrate = 128000})) {
        std::error_code ignored;
        std::filesystem::remove(mixed, ignored);
        return RecordingError::writerFailed(error->message);
    }
    std::error_code ignored;
    std::filesystem::remove(movie, ignored);
    return mixed;
}

std::optional<Error> MovieRemuxer::remuxToMP4(MovieFileProcessing& processing, const std::filesystem::path& from,
                                              const std::filesystem::path& to) {
    std::error_code ignored;
    std::filesystem::remove(to, ignored);
    if (std::optional<Error> error = processing.remux(from, to, MovieContainer::mpeg4, true)) {
        std::filesystem::remove(to, ignored);
        return RecordingError::writerFailed(error->message);
    }
    return std::nullopt;
}

} // namespace tosvar
