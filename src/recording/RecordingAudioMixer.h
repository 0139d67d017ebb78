#pragma once

#include "Expected.h"
#include "MovieFileProcessing.h"

#include <filesystem>

namespace tosvar {

// After a recording with both system audio and microphone: one movie with a
// single sound track that holds both, since players play only the first.
namespace RecordingAudioMixer {

// The movie as it is when it has fewer than two sound tracks or no video;
// else a new temporary movie beside it, the old one removed.
Expected<std::filesystem::path> mixIfNeeded(MovieFileProcessing& processing, const std::filesystem::path& movie);

} // namespace RecordingAudioMixer

// Rewrites a recording as MP4 without encoding anything again.
namespace MovieRemuxer {

std::optional<Error> remuxToMP4(MovieFileProcessing& processing, const std::filesystem::path& from,
                                const std::filesystem::path& to);

} // namespace MovieRemuxer

} // namespace tosvar
