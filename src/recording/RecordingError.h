#pragma once

#include "Expected.h"

#include <optional>
#include <string>

// The ways capturing and writing a recording fail, each with the text the
// user and the log see.
namespace tosvar::RecordingError {

inline Error writerFailed(const std::optional<std::string>& cause = std::nullopt) {
    return Error{cause && !cause->empty() ? *cause : "Video writing failed"};
}
inline Error displayNotFound() { return Error{"Display not found"}; }
inline Error windowNotFound() { return Error{"Window not found"}; }
inline Error writerSetupFailed() { return Error{"Could not configure the video writer"}; }
inline Error noFramesCaptured() { return Error{"No frames were captured"}; }
inline Error noAudioCaptured() { return Error{"No audio was captured"}; }

} // namespace tosvar::RecordingError
