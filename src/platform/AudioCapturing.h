#pragma once

#include "Expected.h"
#include "MediaSamples.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

struct AudioInputDevice {
    std::string id; // stable across runs; what settings store
    std::string name;
    friend bool operator==(const AudioInputDevice&, const AudioInputDevice&) = default;
};

enum class AudioSourceKind {
    microphone,  // an input device
    systemAudio, // what the computer plays
};

struct AudioCaptureRequest {
    AudioSourceKind source = AudioSourceKind::microphone;
    std::optional<std::string> deviceID; // microphones only; an unknown one means the default
    int sampleRate = 48000;
    int channels = 2;
};

// A running sound capture; chunks come on a thread of the capture's own.
class AudioCaptureStream {
public:
    virtual ~AudioCaptureStream() = default;
    // Returns once no chunk is being delivered any more.
    virtual void stop() = 0;
};

// Microphones and the system's sound. Any thread; calls may block briefly.
class AudioCapturing {
public:
    virtual ~AudioCapturing() = default;
    virtual std::vector<AudioInputDevice> microphones() = 0;
    virtual bool hasDefaultMicrophone() = 0;
    virtual Expected<std::unique_ptr<AudioCaptureStream>> start(const AudioCaptureRequest& request,
                                                                std::function<void(AudioChunk)> onChunk) = 0;
};

} // namespace tosvar
