// A screen recording session on virtual time with a fake screen, sound and
// encoder: the countdown, start and its failure, pause on the media clock,
// and delivery of the MP4, of nothing when no frame came, and of the movie
// when the GIF cannot be made.
#include "IsolatedEnvironment.h"
#include "InMemoryDefaultsStore.h"
#include "LocalFileManager.h"
#include "RecordingFakes.h"
#include "ScreenRecorder.h"
#include "VirtualMainQueue.h"
#include "WorkerPool.h"

#include <gtest/gtest.h>

#include <thread>

namespace tosvar {
namespace {

using namespace fakes;
using State = RecordingController::State;
using std::chrono::milliseconds;

const Rect displayFrame{0, 0, 1280, 800};

// Keeps what the recorder shows.
struct Chrome final : RecordingChrome {
    std::vector<int> countdown;
    std::optional<Rect> shown;
    Actions actions;
    std::vector<Rect> followed;
    bool closed = false;
    void showCountdown(const Rect&, int remaining) override { countdown.push_back(remaining); }
    void showRecording(const Rect& region, Actions given) override {
        shown = region;
        actions = std::move(given);
        closed = false;
    }
    void follow(const Rect& region) override { followed.push_back(region); }
    void setElapsed(double) override {}
    void setPaused(bool) override {}
    std::vector<float> levels;
    void setAudioLevel(float level) override { levels.push_back(level); }
    void close() override { closed = true; }
    std::vector<double> progress;
    void showExportProgress(double fraction) override { progress.push_back(fraction); }
};

class ScreenRecorderTest : public ::testing::Test {
protected:
    void SetUp() override {
        screen.content.displays = {{displayFrame, 1}};
        recorder = std::make_shared<ScreenRecorder>(ScreenRecorderServices{
            .mainQueue = main,
            .runDetached = detached.runner(),
            .makeEngine =
                [this](const AppSettings& s) {
                    return CaptureEngine::make({main, detached.runner(), screen, sound, encoders.factory(), environment.root(), 4242},
                                               static_cast<int>(s.recordingFPS), s.recordingShowsCursor, s.recordingCaptureSystemAudio,
                                               s.recordingCaptureMic);
                },
            .processing = files,
            .defaults = defaults,
            .files = fileManager,
            .pool = WorkerPool::shared(),
            .settings = [this] { return settings; },
            .pickTarget = {},
            .toast = [this](const std::string& key, const std::vector<std::string>& arguments) {
                toasts.push_back(key + (arguments.empty() ? "" : " " + arguments.front()));
            },
            .beep = [this] { ++beeps; },
            .windowFrame = [this](std::uint32_t) { return window; },
            .chrome = &chrome,
            .now = [] { return std::chrono::system_clock::from_time_t(1772611507); },
        });
        recorder->onStateChange = [this] { states.push_back(recorder->state()); };
        recorder->onDeliverFile = [this](const std::filesystem::path& file) { delivered.push_back(file); };
    }
    void settle() {
        do main.runUntilIdle();
        while (detached.runNext());
        main.runUntilIdle();
    }
    void armWholeDisplay(RecordingFormat format = RecordingFormat::mp4) {
        recorder->arm({displayFrame, std::nullopt, 2, std::nullopt}, format, false);
    }
    void recordFrames(int count) {
        for (int i = 0; i < count; ++i) screen.stream->deliver(milliseconds(1000 + 33 * i));
        settle();
    }

    IsolatedEnvironment environment;
    VirtualMainQueue main;
    DetachedTasks detached;
    Screen screen;
    Sound sound;
    Encoders encoders;
    Files files;
    InMemoryDefaultsStore defaults;
    LocalFileManager fileManager;
    AppSettings settings;
    std::shared_ptr<ScreenRecorder> recorder;
    std::vector<State> states;
    std::vector<std::filesystem::path> delivered;
    std::vector<std::string> toasts;
    int beeps = 0;
    std::optional<Rect> window; // where the recorded window stands, global points
    Chrome chrome;
};

TEST_F(ScreenRecorderTest, CountsDownASecondAtATimeThenRecordsAndTicks) {
    settings.recordingCountdown = 3;
    armWholeDisplay();
    EXPECT_EQ(recorder->state(), State::countingDown);
    EXPECT_EQ(chrome.countdown, std::vector<int>{3});
    main.advance(2.5);
    EXPECT_EQ(chrome.countdown, (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(screen.stream, nullptr) << "nothing is captured during the countdown";
    main.advance(0.5);
    settle();
    EXPECT_EQ(chrome.countdown, (std::vector<int>{3, 2, 1, 0}));
    EXPECT_EQ(states, (std::vector<State>{State::countingDown, State::starting, State::recording}));
    ASSERT_NE(screen.stream, nullptr);
    EXPECT_EQ(screen.stream->configuration.width, 2560) << "the display at its native scale";

    std::vector<double> ticks;
    recorder->onTick = [&](double elapsed) { ticks.push_back(elapsed); };
    main.advance(1.0);
    EXPECT_EQ(ticks, (std::vector<double>{0.5, 1.0}));
}

TEST_F(ScreenRecorderTest, NoCountdownStartsAtOnceAndAnAbortedCountdownCapturesNothing) {
    settings.recordingCountdown = 0;
    armWholeDisplay();
    EXPECT_EQ(recorder->state(), State::starting);
    EXPECT_TRUE(chrome.countdown.empty());
    settle();
    EXPECT_EQ(recorder->state(), State::recording);
    recorder->cancelRecording();
    settle();
    EXPECT_EQ(recorder->state(), State::idle);
    EXPECT_TRUE(delivered.empty()) << "a cancelled recording keeps nothing";

    settings.recordingCountdown = 5;
    states.clear();
    armWholeDisplay();
    main.advance(2);
    recorder->abortCountdown();
    main.advance(10);
    settle();
    EXPECT_EQ(states, (std::vector<State>{State::countingDown, State::idle}));
    EXPECT_EQ(encoders.movies.size(), 1u) << "no second engine";
}

TEST_F(ScreenRecorderTest, ScaleOneRecordsPointsAndAFailedStartSaysSo) {
    settings.recordingCountdown = 0;
    settings.recordingScale = 1;
    armWholeDisplay();
    settle();
    ASSERT_NE(screen.stream, nullptr);
    EXPECT_EQ(screen.stream->configuration.width, 1280);
    recorder->cancelRecording();
    settle();

    screen.startError = Error{"no screen"};
    armWholeDisplay();
    settle();
    EXPECT_EQ(recorder->state(), State::idle);
    EXPECT_EQ(toasts, std::vector<std::string>{"record.toast.startFailed"});
}

TEST_F(ScreenRecorderTest, APausedStretchLeavesTheElapsedTimeStandingStill) {
    settings.recordingCountdown = 0;
    armWholeDisplay();
    settle();
    main.advance(4);
    recorder->togglePause();
    EXPECT_EQ(recorder->state(), State::paused);
    main.advance(10);
    EXPECT_DOUBLE_EQ(recorder->currentElapsed(), 4);
    recorder->togglePause();
    main.advance(2);
    EXPECT_DOUBLE_EQ(recorder->currentElapsed(), 6);
    EXPECT_EQ(recorder->state(), State::recording);
}

TEST_F(ScreenRecorderTest, StopDeliversAnMP4InTheSaveFolderAndAnnouncesItsLength) {
    settings.recordingCountdown = 0;
    armWholeDisplay();
    settle();
    recordFrames(30);
    recorder->stopAndDeliver();
    EXPECT_EQ(recorder->state(), State::stopping);
    settle();
    EXPECT_EQ(recorder->state(), State::idle);
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered[0].filename(), "Tosvar Recording 2026-03-04 at 08.05.07.mp4");
    EXPECT_TRUE(std::filesystem::exists(delivered[0]));
    ASSERT_EQ(toasts.size(), 1u);
    EXPECT_TRUE(toasts[0].starts_with("record.toast.saved 0:")) << toasts[0];
    EXPECT_EQ(beeps, 0);
}

TEST_F(ScreenRecorderTest, AStopBeforeAnyFrameKeepsNothingAndAFailedGIFKeepsTheMovie) {
    settings.recordingCountdown = 0;
    armWholeDisplay();
    settle();
    recorder->stopAndDeliver();
    settle();
    EXPECT_TRUE(delivered.empty());
    EXPECT_EQ(toasts, std::vector<std::string>{"record.toast.failed"});
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(recorder->state(), State::idle);

    toasts.clear();
    armWholeDisplay(RecordingFormat::gif);
    settle();
    recordFrames(10);
    Files::touch(encoders.last().settings.url); // the temporary movie, which the fake files cannot read
    recorder->stopAndDeliver();
    settle();
    EXPECT_EQ(toasts, std::vector<std::string>{"record.toast.gifFailed"});
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered[0].extension(), ".mov") << "the recording is kept as a movie";
    EXPECT_TRUE(std::filesystem::exists(delivered[0]));
    EXPECT_EQ(recorder->state(), State::idle);
}

TEST_F(ScreenRecorderTest, AFailedRemuxDeliversTheMovieAsItWasWritten) {
    settings.recordingCountdown = 0;
    armWholeDisplay();
    settle();
    recordFrames(5);
    Files::touch(encoders.last().settings.url);
    files.failure = Error{"no muxer"};
    recorder->stopAndDeliver();
    settle();
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered[0].extension(), ".mov");
    EXPECT_TRUE(std::filesystem::exists(delivered[0]));
    EXPECT_TRUE(toasts.back().starts_with("record.toast.saved")) << "a movie was saved after all";
}

TEST_F(ScreenRecorderTest, ARecordedRegionMovesByTheGripOnItsDisplayAndTheChromeFollows) {
    settings.recordingCountdown = 0;
    recorder->arm({displayFrame, Rect(100, 100, 400, 300), 1, std::nullopt}, RecordingFormat::mp4, false);
    settle();
    ASSERT_TRUE(chrome.shown);
    EXPECT_EQ(*chrome.shown, Rect(100, 400, 400, 300)) << "in screen points, y up";
    ASSERT_TRUE(chrome.actions.move) << "a region has a grip";
    chrome.actions.moveBegan();
    chrome.actions.move({50, -300});
    settle();
    EXPECT_EQ(screen.stream->configurationUpdates.back().sourceRect, Rect(150, 0, 400, 300)) << "kept on the display";
    EXPECT_EQ(chrome.followed.back(), Rect(150, 500, 400, 300));
    chrome.actions.move({60, 10});
    settle();
    EXPECT_EQ(screen.stream->configurationUpdates.back().sourceRect, Rect(160, 110, 400, 300)) << "from where the drag began";
    recorder->stopAndDeliver();
    settle();
    EXPECT_TRUE(chrome.closed);

    recorder->arm({displayFrame, std::nullopt, 1, std::nullopt}, RecordingFormat::mp4, false);
    settle();
    EXPECT_FALSE(chrome.actions.move) << "a whole display has nothing to move";
}

TEST_F(ScreenRecorderTest, AGIFIsMadeOfTheMovieWithItsProgressShown) {
    settings.recordingCountdown = 0;
    MutableImage picture(8, 6);
    picture.fill({200, 40, 40, 255});
    files.frames = {std::move(picture).freeze()};
    for (int i = 0; i < 30; ++i) files.frameTimes.push_back(i / 30.0);
    armWholeDisplay(RecordingFormat::gif);
    settle();
    recordFrames(30);
    Files::touch(encoders.last().settings.url);
    recorder->stopAndDeliver();
    settle();
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered[0].extension(), ".gif");
    EXPECT_TRUE(std::filesystem::exists(delivered[0]));
    EXPECT_FALSE(std::filesystem::exists(encoders.last().settings.url)) << "the temporary movie goes";
    ASSERT_GE(chrome.progress.size(), 3u);
    EXPECT_EQ(chrome.progress.front(), 0);
    EXPECT_EQ(chrome.progress.back(), 1) << "the progress goes away at the end";
    EXPECT_TRUE(std::is_sorted(chrome.progress.begin(), chrome.progress.end()));
}

TEST_F(ScreenRecorderTest, TheBarsMeterRisesAtOnceAndFallsGentlyWhileSoundIsRecorded) {
    settings.recordingCountdown = 0;
    settings.recordingCaptureMic = true;
    armWholeDisplay();
    settle();
    ASSERT_EQ(recorder->state(), State::recording);
    EXPECT_TRUE(chrome.actions.showsAudioMeter);
    ASSERT_TRUE(sound.microphone);
    screen.stream->deliver(milliseconds(1000)); // the movie begins with its first picture
    sound.microphone(chunkAt(milliseconds(1010), 0.5f));
    sound.microphone(chunkAt(milliseconds(1100), 0.0f)); // levels come at most every 50 ms
    // The sound is taken on the engine's own sample queue, which hands the levels over.
    for (int i = 0; i < 200 && chrome.levels.size() < 2; ++i) {
        std::this_thread::sleep_for(milliseconds(5));
        settle();
    }
    ASSERT_GE(chrome.levels.size(), 2u);
    EXPECT_GT(chrome.levels[0], 0);
    EXPECT_NEAR(chrome.levels[1], chrome.levels[0] * 0.72f, 1e-4) << "silence lets it fall, not drop";
    recorder->cancelRecording();
    settle();

    settings.recordingCaptureMic = false;
    armWholeDisplay(RecordingFormat::mp4);
    settle();
    EXPECT_FALSE(chrome.actions.showsAudioMeter) << "no sound, no meter";
}

TEST_F(ScreenRecorderTest, AStreamThatDiesDeliversWhatItCaptured) {
    settings.recordingCountdown = 0;
    armWholeDisplay();
    settle();
    recordFrames(5);
    screen.stream->handlers.onStopped(Error{"the display went away"});
    settle();
    EXPECT_EQ(recorder->state(), State::idle);
    EXPECT_EQ(delivered.size(), 1u);
}

TEST_F(ScreenRecorderTest, ARecordedWindowIsFollowedOnItsDisplayAndItsClosingEndsTheRecording) {
    settings.recordingCountdown = 0;
    screen.content.windows = {{7, 100, {100, 100, 400, 300}}};
    window = Rect(100, 100, 400, 300);
    recorder->arm({displayFrame, Rect(100, 100, 400, 300), 1, 7u}, RecordingFormat::mp4, false);
    settle();
    ASSERT_EQ(recorder->state(), State::recording);

    window = Rect(150, 80, 400, 300);
    main.advance(0.25);
    settle();
    ASSERT_FALSE(screen.stream->configurationUpdates.empty());
    EXPECT_EQ(screen.stream->configurationUpdates.back().sourceRect, Rect(150, 80, 400, 300));

    window = Rect(1100, -50, 400, 300); // dragged partly off the display: the rectangle stays on it
    main.advance(0.25);
    settle();
    EXPECT_EQ(screen.stream->configurationUpdates.back().sourceRect, Rect(880, 0, 400, 300));

    recordFrames(3);
    window.reset();
    main.advance(0.25);
    EXPECT_EQ(recorder->state(), State::recording) << "one miss is forgiven";
    main.advance(0.25);
    EXPECT_EQ(recorder->state(), State::stopping) << "gone twice: the recording ends with what it has";
    settle();
    EXPECT_EQ(delivered.size(), 1u);
}

} // namespace
} // namespace tosvar
