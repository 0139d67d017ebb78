#include "AudioTrackFinalizer.h"

#include "AudioLevel.h"
#include "RecordingError.h"
#include "SecurityScopedFileAccess.h"
#include "WaveformAccumulator.h"

#include <system_error>

namespace tosvar {

std::optional<Error> AudioTrackFinalizer::finalize(MovieFileProcessing& processing,
                                                   const std::filesystem::path& source,
                                                   const std::filesystem::path& destination) {
    const SecurityScopedFileAccess::Handle access = SecurityScopedFileAccess::begin({destination.parent_path()});
    Expected<MovieTrackCounts> tracks = processing.trackCounts(source);
    std::optional<Error> error;
    if (!tracks) {
        error = RecordingError::writerFailed(tracks.error().message);
    } else if (tracks->audio == 0) {
        error = RecordingError::noAudioCaptured();
    } else if (tracks->audio == 1) {
        error = processing.remux(source, destination, MovieContainer::appleM4A, true);
    } else {
        error = processing.mixAudioTracks(source, destination, MovieContainer::appleM4A,
                                          {.sampleRate = 48000, .channels = 2, .bitrate = 192000});
    }
    access.stop();
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(destination, ignored);
        if (tracks && tracks->audio == 0) return error;
        return RecordingError::writerFailed(error->message);
    }
    SecurityScopedFileAccess::mint(destination);
    return std::nullopt;
}

std::optional<std::vector<float>> AudioWaveformLoader::waveform(MovieFileProcessing& processing,
                                                                const std::filesystem::path& file) {
    const SecurityScopedFileAccess::Handle access = SecurityScopedFileAccess::begin({file});
    WaveformAccumulator accumulator(barCount);
    const std::optional<Error> error =
        processing.readAudio(file, 8000, 1, maximumDuration,
                             [&](std::span<const float> samples) { accumulator.add(AudioLevel::peakLevel(samples)); });
    access.stop();
    if (error) return std::nullopt;
    return accumulator.snapshot();
}

} // namespace tosvar
