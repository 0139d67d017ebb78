#pragma once

#include "AudioCapturing.h"
#include "AudioLevel.h"
#include "AudioWriter.h"
#include "Expected.h"
#include "SerialQueue.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace tosvar {

// What the sound recording session needs of a capture, so that it can be
// tested without one. `start`, `stop` and `cancel` block: call them off the
// main thread. `onAudioLevel` is called on a thread of the engine's.
class AudioRecordingEngine {
public:
    virtual ~AudioRecordingEngine() = default;

    std::function<void(float level)> onAudioLevel; // set before `start`

    virtual std::optional<Error> start(const std::filesystem::path& url, AudioWriter::Quality quality,
                                       bool microphone, bool systemAudio,
                                       const std::optional<std::string>& inputDeviceID) = 0;
    virtual double capturedDuration() = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    // The finished temporary movie.
    virtual Expected<std::filesystem::path> stop() = 0;
    // Stops and removes the temporary movie.
    virtual void cancel() = 0;
};

// Captures the microphone and, when asked, the system's sound into an
// `AudioWriter`. A microphone that is missing or does not come up leaves the
// system's sound alone; with neither there is no recording.
// Threads: the chunks, the paused flag and the writer live on the sample
// queue. `start`, `stop` and `cancel` may come from different threads; they
// run one at a time, so a stop right after a start waits for it.
class AudioCaptureEngine final : public AudioRecordingEngine {
public:
    AudioCaptureEngine(AudioCapturing& audio, MovieEncoderFactory makeEncoder);
    ~AudioCaptureEngine() override;

    std::optional<Error> start(const std::filesystem::path& url, AudioWriter::Quality quality, bool microphone,
                               bool systemAudio, const std::optional<std::string>& inputDeviceID) override;
    double capturedDuration() override;
    void pause() override;
    void resume() override;
    Expected<std::filesystem::path> stop() override;
    void cancel() override;

    // Whether there is a microphone to record from.
    static bool prepareMicrophone(AudioCapturing& audio) { return audio.hasDefaultMicrophone(); }
    // The choices of the input picker in settings.
    static std::vector<AudioInputDevice> availableMicrophones(AudioCapturing& audio) { return audio.microphones(); }

private:
    struct Intake;
    // Stops both captures and waits until no chunk is in flight; the writer is then the caller's.
    std::unique_ptr<AudioWriter> teardown();

    std::mutex operations_;
    AudioCapturing& audio_;
    MovieEncoderFactory makeEncoder_;
    std::shared_ptr<SerialQueue> sampleQueue_;
    std::shared_ptr<Intake> intake_;
    std::unique_ptr<AudioCaptureStream> microphone_;
    std::unique_ptr<AudioCaptureStream> systemAudio_;
};

} // namespace tosvar
