#include "AudioRecorder.h"
#include "AudioTrackFinalizer.h"
#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "LocalFileManager.h"
#include "RecordingAudioMixer.h"
#include "RecordingError.h"
#include "RecordingFakes.h"
#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

namespace tosvar {
namespace {

using namespace fakes;

// An engine whose captured length the test sets, recording what it was asked.
struct ScriptedEngine final : AudioRecordingEngine {
    std::vector<std::string> calls;
    double captured = 0;
    std::optional<Error> startError;
    std::optional<Error> stopError;
    std::filesystem::path url;
    std::optional<std::string> device;
    AudioWriter::Quality quality;
    bool systemAudio = false;

    std::optional<Error> start(const std::filesystem::path& u, AudioWriter::Quality q, bool microphone, bool sys,
                               const std::optional<std::string>& d) override {
        calls.push_back(microphone ? "start with microphone" : "start");
        url = u;
        quality = q;
        systemAudio = sys;
        device = d;
        return startError;
    }
    double capturedDuration() override { return captured; }
    void pause() override { calls.push_back("pause"); }
    void resume() override { calls.push_back("resume"); }
    Expected<std::filesystem::path> stop() override {
        calls.push_back("stop");
        if (stopError) return *stopError;
        Files::touch(url);
        return url;
    }
    void cancel() override { calls.push_back("cancel"); }
};

struct ScriptedAlerts final : AlertPresenting {
    int answer = 1;
    std::vector<AlertRequest> shown;
    AlertResponse run(const AlertRequest& request, void*) override {
        shown.push_back(request);
        return {answer, false};
    }
};

class AudioRecorderTest : public ::testing::Test {
protected:
    void SetUp() override {
        recorder = std::make_shared<AudioRecorder>(AudioRecorderServices{
            main, [](std::function<void()> work) { work(); },
            [this] {
                engine = std::make_shared<ScriptedEngine>();
                engine->startError = nextStartError;
                return engine;
            },
            files, defaults, fileManager, alerts, environment.root(),
            [] { return std::chrono::system_clock::from_time_t(1772611507); }});
        recorder->onStateChange = [this] { states.push_back(recorder->state()); };
        recorder->onTick = [this](double seconds) { ticks.push_back(seconds); };
        recorder->onFinished = [this](const std::filesystem::path& file) { finished.push_back(file); };
        recorder->onFailure = [this](const std::string& error) { failures.push_back(error); };
        settings.audioRecordingQuality = AudioRecordingQuality::high;
        settings.audioRecordingInputDeviceID = "usb-mic";
        settings.audioRecordingCapturesSystemAudio = true;
    }
    void finishWithTwoTracks() {
        // The scripted movie is in the temporary folder with two sound tracks.
        files.tracks[engine->url] = {0, 2};
    }

    IsolatedEnvironment environment;
    VirtualMainQueue main;
    Files files;
    InMemoryDefaultsStore defaults;
    LocalFileManager fileManager;
    ScriptedAlerts alerts;
    AppSettings settings;
    std::shared_ptr<AudioRecorder> recorder;
    std::shared_ptr<ScriptedEngine> engine;
    std::optional<Error> nextStartError;
    std::vector<AudioRecordingController::State> states;
    std::vector<double> ticks;
    std::vector<std::filesystem::path> finished;
    std::vector<std::string> failures;
};

using State = AudioRecordingController::State;

TEST_F(AudioRecorderTest, StartsTheEngineWithTheSettingsAndTicksEverySecond) {
    recorder->start(settings);
    EXPECT_EQ(recorder->state(), State::recording);
    EXPECT_EQ(engine->calls, std::vector<std::string>{"start with microphone"});
    EXPECT_EQ(engine->quality, (AudioWriter::Quality{2, 256000}));
    EXPECT_TRUE(engine->systemAudio);
    EXPECT_EQ(engine->device, "usb-mic");
    EXPECT_EQ(engine->url.parent_path(), environment.root());
    EXPECT_EQ(engine->url.extension(), ".mov");
    EXPECT_EQ(ticks, std::vector<double>{0});
    engine->captured = 1.2;
    main.advance(1.0);
    EXPECT_EQ(ticks, (std::vector<double>{0, 1.2}));
    EXPECT_EQ(AudioRecorder::menuTitleKey(recorder->state()), "menu.recordAudioStop");
    EXPECT_EQ(AudioRecorder::menuTitleKey(State::idle), "menu.recordAudio");
}

TEST_F(AudioRecorderTest, StartWhileRunningAndStopWhileIdleDoNothing) {
    recorder->stop(AudioRecordingController::Ending::keep);
    EXPECT_TRUE(states.empty());
    recorder->start(settings);
    auto first = engine;
    recorder->start(settings);
    EXPECT_EQ(engine, first);
    EXPECT_EQ(states, std::vector<State>{State::recording});
}

TEST_F(AudioRecorderTest, KeepingFinalizesIntoTheSaveFolderWithTheWaveform) {
    recorder->start(settings);
    for (float level : {0.2f, 0.9f, 0.4f}) engine->onAudioLevel(level);
    main.runUntilIdle();
    engine->captured = 3.5;
    finishWithTwoTracks();
    const std::filesystem::path temporary = engine->url;
    recorder->toggle(settings);
    main.runUntilIdle();
    EXPECT_EQ(recorder->state(), State::idle);
    ASSERT_EQ(finished.size(), 1u) << (failures.empty() ? "" : failures[0]);
    EXPECT_EQ(finished[0].filename(), "Tosvar Audio " + finished[0].stem().string().substr(13) + ".m4a");
    EXPECT_EQ(finished[0].parent_path().filename(), "Tosvar");
    EXPECT_TRUE(std::filesystem::exists(finished[0]));
    EXPECT_FALSE(std::filesystem::exists(temporary));
    EXPECT_EQ(files.calls.back(), "mix " + temporary.filename().string() + " as m4a 2ch 192000");
    EXPECT_EQ(recorder->waveform(finished[0]), (std::vector<float>{0.2f, 0.9f, 0.4f}));
    EXPECT_EQ(recorder->duration(finished[0]), 3.5);
    EXPECT_EQ(recorder->waveform("/elsewhere.m4a"), std::nullopt);
}

TEST_F(AudioRecorderTest, TheTimeLimitStopsAtTheFirstTickWithEnoughSound) {
    settings.audioRecordingMaxMinutes = 1;
    recorder->start(settings);
    finishWithTwoTracks();
    engine->captured = 50;
    main.advance(1.0);
    recorder->togglePause(); // paused time does not count
    main.advance(30.0);
    EXPECT_EQ(recorder->state(), State::paused);
    recorder->togglePause();
    engine->captured = 59.9;
    main.advance(1.0);
    EXPECT_EQ(recorder->state(), State::recording);
    engine->captured = 60;
    main.advance(1.0);
    EXPECT_EQ(recorder->state(), State::idle);
    EXPECT_EQ(finished.size(), 1u);
    EXPECT_EQ(engine->calls, (std::vector<std::string>{"start with microphone", "pause", "resume", "stop"}));
}

TEST_F(AudioRecorderTest, PauseStopsTheTicksAndResumeStartsThemAgain) {
    recorder->start(settings);
    recorder->togglePause();
    main.advance(5);
    EXPECT_EQ(ticks.size(), 1u);
    recorder->togglePause();
    EXPECT_EQ(ticks.size(), 2u); // one at once
    main.advance(1);
    EXPECT_EQ(ticks.size(), 3u);
    EXPECT_EQ(states, (std::vector<State>{State::recording, State::paused, State::recording}));
}

TEST_F(AudioRecorderTest, AFailedStartGoesBackToIdleAndSaysWhy) {
    nextStartError = RecordingError::noAudioCaptured();
    recorder->start(settings);
    main.runUntilIdle();
    EXPECT_EQ(states, (std::vector<State>{State::recording, State::idle}));
    EXPECT_EQ(failures, std::vector<std::string>{"No audio was captured"});
    const std::size_t tickCount = ticks.size();
    main.advance(2);
    EXPECT_EQ(ticks.size(), tickCount);
}

TEST_F(AudioRecorderTest, AFailedStopOrFinalizeIsReported) {
    recorder->start(settings);
    engine->stopError = RecordingError::noAudioCaptured();
    recorder->stop(AudioRecordingController::Ending::keep);
    main.runUntilIdle();
    EXPECT_EQ(failures, std::vector<std::string>{"No audio was captured"});

    recorder->start(settings);
    files.tracks[engine->url] = {0, 0};
    recorder->stop(AudioRecordingController::Ending::keep);
    main.runUntilIdle();
    EXPECT_EQ(failures.back(), "No audio was captured");
    EXPECT_TRUE(finished.empty());
}

TEST_F(AudioRecorderTest, TheDiscardQuestionPausesFirstAndCancelLeavesItPaused) {
    recorder->start(settings);
    std::optional<bool> answer;
    recorder->confirmDiscard([&](bool discarded) { answer = discarded; });
    EXPECT_EQ(answer, false);
    EXPECT_EQ(recorder->state(), State::paused);
    ASSERT_EQ(alerts.shown.size(), 1u);
    EXPECT_EQ(alerts.shown[0].style, AlertStyle::informational);
    EXPECT_EQ(alerts.shown[0].message.key, "audio.discard.title");
    EXPECT_EQ(alerts.shown[0].informativeText.key, "audio.discard.body");
    ASSERT_EQ(alerts.shown[0].buttons.size(), 2u);
    EXPECT_EQ(alerts.shown[0].buttons[0].key, "audio.discard.confirm");
    EXPECT_EQ(alerts.shown[0].buttons[1].key, "common.cancel");

    alerts.answer = 0;
    recorder->confirmDiscard([&](bool discarded) { answer = discarded; });
    EXPECT_EQ(answer, true);
    EXPECT_EQ(recorder->state(), State::idle);
    EXPECT_EQ(engine->calls.back(), "cancel");
    main.runUntilIdle();
    EXPECT_TRUE(finished.empty());
    EXPECT_TRUE(failures.empty());

    recorder->confirmDiscard([&](bool discarded) { answer = discarded; });
    EXPECT_EQ(answer, false);
    EXPECT_EQ(alerts.shown.size(), 2u); // nothing asked while idle
}

TEST(AudioTrackFinalizer, FailuresLeaveNoFileBehind) {
    IsolatedEnvironment environment;
    Files files;
    const std::filesystem::path silent = environment.root() / "silent.mov", out = environment.root() / "out.m4a";
    files.tracks[silent] = {1, 0};
    EXPECT_EQ(AudioTrackFinalizer::finalize(files, silent, out), RecordingError::noAudioCaptured());
    EXPECT_EQ(AudioTrackFinalizer::finalize(files, environment.root() / "unknown.mov", out),
              RecordingError::writerFailed("unreadable"));
    files.tracks[silent] = {0, 1};
    files.failure = Error{"disk full"};
    Files::touch(out);
    EXPECT_EQ(AudioTrackFinalizer::finalize(files, silent, out), RecordingError::writerFailed("disk full"));
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST(RecordingAudioMixer, LeavesMoviesWithoutVideoOrASecondSoundTrackAlone) {
    Files files;
    files.tracks["/single.mov"] = {1, 1};
    files.tracks["/silent.mov"] = {0, 2};
    EXPECT_EQ(RecordingAudioMixer::mixIfNeeded(files, "/single.mov").value(), "/single.mov");
    EXPECT_EQ(RecordingAudioMixer::mixIfNeeded(files, "/silent.mov").value(), "/silent.mov");
    EXPECT_TRUE(files.calls.empty());
}

} // namespace
} // namespace tosvar
