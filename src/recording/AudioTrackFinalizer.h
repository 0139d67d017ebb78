#pragma once

#include "Expected.h"
#include "MovieFileProcessing.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace tosvar {

// Turns the temporary movie of a sound recording into an ".m4a" file: one
// track is copied as it is; two (microphone and system audio) are summed into
// one stereo track at 192 kbit/s.
namespace AudioTrackFinalizer {

std::optional<Error> finalize(MovieFileProcessing& processing, const std::filesystem::path& source,
                              const std::filesystem::path& destination);

} // namespace AudioTrackFinalizer

// The waveform of a sound file, of the same kind the recording shows while
// it runs: at most 240 bars over the first ten minutes.
namespace AudioWaveformLoader {

inline constexpr int barCount = 240;
inline constexpr double maximumDuration = 600;

// None when the file has no sound or cannot be read.
std::optional<std::vector<float>> waveform(MovieFileProcessing& processing, const std::filesystem::path& file);

} // namespace AudioWaveformLoader

} // namespace tosvar
