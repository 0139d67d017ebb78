#pragma once

#include "AudioCapturing.h"

#include <string>

namespace tosvar {

// Microphones and the system's sound from the PulseAudio server (PipeWire
// answers the same protocol). A microphone is any source that is not the
// monitor of a sink; the system's sound is the monitor of the default sink.
// Sound arrives in fragments of about 20 ms, so stopping loses next to
// nothing. Any thread; every call opens a connection of its own.
class PulseAudioCapture final : public AudioCapturing {
public:
    explicit PulseAudioCapture(std::string applicationName = "Tosvar")
        : applicationName_(std::move(applicationName)) {}

    std::vector<AudioInputDevice> microphones() override;
    bool hasDefaultMicrophone() override;
    Expected<std::unique_ptr<AudioCaptureStream>> start(const AudioCaptureRequest& request,
                                                        std::function<void(AudioChunk)> onChunk) override;

private:
    std::string applicationName_;
};

} // namespace tosvar
