#include "AudioCaptureEngine.h"

#include "Log.h"
#include "RecordingError.h"

namespace tosvar {

// What the sample queue owns while the capture runs.
struct AudioCaptureEngine::Intake {
    std::unique_ptr<AudioWriter> writer;
    bool isPaused = false;
    AudioLevelThrottle levels;
    std::function<void(float)> onAudioLevel;

    void take(const AudioChunk& chunk, AudioSourceKind source) {
        if (isPaused || !writer) return;
        if (source == AudioSourceKind::microphone) {
            writer->appendMicrophone(chunk);
        } else {
            writer->appendSystemAudio(chunk);
        }
        const std::optional<float> level = levels.add(AudioLevel::peakLevel(chunk.samples), chunk.time);
        if (level && onAudioLevel) onAudioLevel(*level);
    }
};

AudioCaptureEngine::AudioCaptureEngine(AudioCapturing& audio, MovieEncoderFactory makeEncoder)
    : audio_(audio), makeEncoder_(std::move(makeEncoder)),
      sampleQueue_(std::make_shared<SerialQueue>("app.vemla.audio.samples")), intake_(std::make_shared<Intake>()) {}

AudioCaptureEngine::~AudioCaptureEngine() {
    const std::lock_guard lock(operations_);
    if (std::unique_ptr<AudioWriter> writer = teardown()) writer->cancel();
}

std::optional<Error> AudioCaptureEngine::start(const std::filesystem::path& url, AudioWriter::Quality quality,
                                               bool microphone, bool systemAudio,
                                               const std::optional<std::string>& inputDeviceID) {
    const std::lock_guard lock(operations_);
    const bool micEnabled = microphone && prepareMicrophone(audio_);
    Expected<std::unique_ptr<AudioWriter>> writer =
        AudioWriter::open(makeEncoder_, url, quality, micEnabled, systemAudio);
    if (!writer) return writer.error();
    intake_->writer = std::move(writer).value();
    intake_->onAudioLevel = onAudioLevel;

    const auto deliver = [queue = sampleQueue_, intake = intake_](AudioSourceKind source) {
        return [queue, intake, source](AudioChunk chunk) {
            queue->async([intake, source, chunk = std::move(chunk)] { intake->take(chunk, source); });
        };
    };
    if (micEnabled) {
        Expected<std::unique_ptr<AudioCaptureStream>> mic =
            audio_.start({.source = AudioSourceKind::microphone,
                          .deviceID = inputDeviceID,
                          .sampleRate = AudioWriter::sampleRate,
                          .channels = quality.channels},
                         deliver(AudioSourceKind::microphone));
        if (mic) {
            microphone_ = std::move(mic).value();
        } else {
            logLine("audio recording microphone unavailable: " + mic.error().message);
        }
    }
    if (systemAudio) {
        Expected<std::unique_ptr<AudioCaptureStream>> sound =
            audio_.start({.source = AudioSourceKind::systemAudio,
                          .deviceID = std::nullopt,
                          .sampleRate = AudioWriter::sampleRate,
                          .channels = quality.channels},
                         deliver(AudioSourceKind::systemAudio));
        if (!sound) {
            if (std::unique_ptr<AudioWriter> abandoned = teardown()) abandoned->cancel();
            return sound.error();
        }
        systemAudio_ = std::move(sound).value();
    }
    if (!microphone_ && !systemAudio_) {
        if (std::unique_ptr<AudioWriter> abandoned = teardown()) abandoned->cancel();
        return RecordingError::noAudioCaptured();
    }
    return std::nullopt;
}

double AudioCaptureEngine::capturedDuration() {
    double seconds = 0;
    sampleQueue_->sync([&] { seconds = intake_->writer ? intake_->writer->capturedDuration() : 0; });
    return seconds;
}

void AudioCaptureEngine::pause() {
    sampleQueue_->async([intake = intake_] { intake->isPaused = true; });
}

void AudioCaptureEngine::resume() {
    sampleQueue_->async([intake = intake_] {
        intake->isPaused = false;
        if (intake->writer) intake->writer->markResumeBoundary();
    });
}

Expected<std::filesystem::path> AudioCaptureEngine::stop() {
    const std::lock_guard lock(operations_);
    std::unique_ptr<AudioWriter> writer = teardown();
    if (!writer) return RecordingError::noAudioCaptured();
    if (std::optional<Error> error = writer->finish()) return *error;
    return writer->outputURL();
}

void AudioCaptureEngine::cancel() {
    const std::lock_guard lock(operations_);
    if (std::unique_ptr<AudioWriter> writer = teardown()) writer->cancel();
}

std::unique_ptr<AudioWriter> AudioCaptureEngine::teardown() {
    if (systemAudio_) systemAudio_->stop();
    systemAudio_.reset();
    if (microphone_) microphone_->stop();
    microphone_.reset();
    std::unique_ptr<AudioWriter> writer;
    sampleQueue_->sync([&] { writer = std::move(intake_->writer); });
    return writer;
}

} // namespace tosvar
