#pragma once

#include "AlertPresenting.h"
#include "AudioCaptureEngine.h"
#include "AudioRecordingController.h"
#include "DefaultsStore.h"
#include "FileManager.h"
#include "MainQueue.h"
#include "MovieFileProcessing.h"
#include "WaveformAccumulator.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

struct AudioRecorderServices {
    MainQueue& mainQueue;
    // Runs blocking work off the main thread (the shared worker pool in the product).
    std::function<void(std::function<void()>)> runDetached;
    std::function<std::shared_ptr<AudioRecordingEngine>()> makeEngine;
    MovieFileProcessing& processing;
    DefaultsStore& defaults;
    FileManager& files;
    AlertPresenting& alerts;
    std::filesystem::path temporaryDirectory;
    std::function<std::chrono::system_clock::time_point()> now = [] { return std::chrono::system_clock::now(); };
};

// A sound-only recording from start to the ".m4a" file in the save folder:
// the engine, the time limit, pause, and a waveform of the whole recording
// kept as it runs. Main thread only; build it with std::make_shared, since
// work in flight holds it weakly.
class AudioRecorder final : public AudioRecordingController, public std::enable_shared_from_this<AudioRecorder> {
public:
    explicit AudioRecorder(AudioRecorderServices services) : s_(std::move(services)) {}
    ~AudioRecorder() override;

    State state() const override { return state_; }
    // Starts when idle, else stops and keeps the file.
    void toggle(const AppSettings& settings);
    void start(const AppSettings& settings) override;
    void togglePause() override;
    void stop(Ending ending) override;
    // Pauses a running recording and asks; the completion says whether the
    // recording was thrown away. Answers false at once when idle.
    void confirmDiscard(std::function<void(bool discarded)> completion) override;

    // The last finished recording's waveform and length, when `file` is it.
    std::optional<std::vector<float>> waveform(const std::filesystem::path& file) const;
    std::optional<double> duration(const std::filesystem::path& file) const;

    static std::string menuTitleKey(State state); // "menu.recordAudio", "menu.recordAudioStop"

private:
    struct Finished {
        std::filesystem::path url;
        std::vector<float> waveform;
        double duration = 0;
    };

    void setState(State state);
    void startTicking();
    void tick();
    void failStart(const std::shared_ptr<AudioRecordingEngine>& engine, const Error& error);
    void finishKeeping(std::shared_ptr<AudioRecordingEngine> engine, std::vector<float> waveform, double duration);

    AudioRecorderServices s_;
    State state_ = State::idle;
    std::shared_ptr<AudioRecordingEngine> engine_;
    TimerHandle ticker_;
    WaveformAccumulator waveform_;
    std::optional<Finished> lastFinished_;
    double maxSeconds_ = 0; // 0: no limit
};

} // namespace tosvar
