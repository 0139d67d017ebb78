#include "CaptureEngine.h"
#include "Log.h"
#include "RecordingError.h"
#include "RecordingFakes.h"
#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

namespace tosvar {
namespace {

using namespace fakes;
using std::chrono::milliseconds;

MediaTime ms(long long value) { return milliseconds(value); }

constexpr std::int64_t ownPID = 4242;
const Rect displayFrame{0, 0, 1280, 800};

class CaptureEngineTest : public ::testing::Test {
protected:
    void SetUp() override {
        screen.content.displays = {{displayFrame, 2}};
        screen.content.windows = {{7, 100, {10, 10, 300, 200}}, {8, ownPID, {0, 0, 50, 50}}};
        setLogSink([this](std::string_view line) {
            const std::lock_guard lock(logMutex);
            logs.emplace_back(line);
        });
    }
    void TearDown() override { setLogSink(nullptr); }

    std::shared_ptr<CaptureEngine> makeEngine(bool systemAudio = false, bool mic = false, int fps = 30) {
        return CaptureEngine::make(
            {main, detached.runner(), screen, sound, encoders.factory(), "/tmp/recording-test", ownPID}, fps, true,
            systemAudio, mic);
    }
    // Runs detached work and main-thread hops until both are quiet.
    void settle() {
        do main.runUntilIdle();
        while (detached.runNext());
        main.runUntilIdle();
    }
    std::optional<Error> start(CaptureEngine& engine, const RecordingTarget& target) {
        std::optional<std::optional<Error>> outcome;
        engine.start(target, [&](std::optional<Error> e) { outcome = e; });
        settle();
        EXPECT_TRUE(outcome.has_value());
        return outcome.value_or(Error{"no answer"});
    }
    Expected<CaptureEngine::Result> stop(CaptureEngine& engine) {
        std::optional<Expected<CaptureEngine::Result>> outcome;
        engine.stop([&](Expected<CaptureEngine::Result> r) { outcome = std::move(r); });
        settle();
        if (!outcome) return Error{"no answer"};
        return *outcome;
    }
    bool logged(const std::string& line) {
        const std::lock_guard lock(logMutex);
        return std::find(logs.begin(), logs.end(), line) != logs.end();
    }

    VirtualMainQueue main;
    DetachedTasks detached;
    Screen screen;
    Sound sound;
    Encoders encoders;
    std::mutex logMutex;
    std::vector<std::string> logs;
};

TEST_F(CaptureEngineTest, StartsAStreamOfTheRegionAtEvenPixelsWithoutOurOwnWindows) {
    auto engine = makeEngine();
    const RecordingTarget target{displayFrame, Rect{100, 50, 320.4, 181}, 1.5, std::nullopt};
    EXPECT_EQ(start(*engine, target), std::nullopt);
    ASSERT_NE(screen.stream, nullptr);
    EXPECT_EQ(screen.stream->configuration,
              (StreamConfiguration{480, 272, Rect{100, 50, 320.4, 181}, 30, true, 6}));
    EXPECT_EQ(screen.stream->filter.kind, ContentFilter::Kind::display);
    EXPECT_EQ(screen.stream->filter.excludedProcesses, std::vector<std::int64_t>{ownPID});
    EXPECT_TRUE(screen.stream->filter.windows.empty());
    EXPECT_EQ(encoders.last().settings.video->width, 480);
    EXPECT_EQ(encoders.last().settings.url.parent_path(), "/tmp/recording-test");
    EXPECT_EQ(encoders.last().settings.url.extension(), ".mov");
    EXPECT_TRUE(logged("recording capture: 480x272 @30fps, scale 1.5, sourceRect (100, 50, 320, 181)"));
    EXPECT_TRUE(engine->hasStream());
}

TEST_F(CaptureEngineTest, AWholeDisplayUsesTheDisplaySize) {
    auto engine = makeEngine();
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 2, std::nullopt}), std::nullopt);
    EXPECT_EQ(screen.stream->configuration.width, 2560);
    EXPECT_EQ(screen.stream->configuration.height, 1600);
    EXPECT_TRUE(logged("recording capture: 2560x1600 @30fps, scale 2, sourceRect full display"));
}

TEST_F(CaptureEngineTest, MissingTargetsFailToStartAndLeaveNothingOpen) {
    // A window that has gone between picking and starting.
    EXPECT_EQ(start(*makeEngine(), {displayFrame, Rect{0, 0, 100, 100}, 1, 99u}), RecordingError::windowNotFound());
    EXPECT_TRUE(encoders.movies.empty());
    EXPECT_EQ(start(*makeEngine(), {Rect{2000, 0, 800, 600}, std::nullopt, 1, std::nullopt}),
              RecordingError::displayNotFound());

    screen.startError = Error{"no screen"};
    auto engine = makeEngine(true);
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), Error{"no screen"});
    EXPECT_TRUE(encoders.last().cancelled);
    EXPECT_TRUE(sound.requests.empty());
    EXPECT_FALSE(engine->hasStream());
    EXPECT_EQ(stop(*engine).error(), RecordingError::noFramesCaptured());
}

TEST_F(CaptureEngineTest, SystemAudioThatCannotStartStopsTheScreenToo) {
    sound.systemAudioError = Error{"no sound server"};
    auto engine = makeEngine(true);
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), Error{"no sound server"});
    ASSERT_TRUE(screen.streamStopped);
    EXPECT_TRUE(*screen.streamStopped);
    EXPECT_TRUE(encoders.last().cancelled);
}

TEST_F(CaptureEngineTest, AWindowTargetShowsOnlyThatWindow) {
    auto engine = makeEngine();
    EXPECT_EQ(start(*engine, {displayFrame, Rect{10, 10, 300, 200}, 1, 7u}), std::nullopt);
    EXPECT_EQ(screen.stream->filter.kind, ContentFilter::Kind::windows);
    EXPECT_EQ(screen.stream->filter.windows, std::vector<std::uint32_t>{7});
}

TEST_F(CaptureEngineTest, FilterRecipes) {
    const ShareableContent& content = screen.content;
    const auto display = CaptureEngine::filter(CaptureEngine::DisplayRecipe{displayFrame}, {8, 55}, content, ownPID);
    ASSERT_TRUE(display);
    EXPECT_EQ(display->windows, std::vector<std::uint32_t>{8}); // 55 is not on screen
    EXPECT_EQ(display->excludedProcesses, std::vector<std::int64_t>{ownPID});

    const auto windows = CaptureEngine::filter(CaptureEngine::WindowsRecipe{displayFrame, {7}}, {8}, content, ownPID);
    ASSERT_TRUE(windows);
    EXPECT_EQ(windows->windows, (std::vector<std::uint32_t>{7, 8}));
    EXPECT_TRUE(windows->excludedProcesses.empty());

    EXPECT_FALSE(CaptureEngine::filter(CaptureEngine::WindowsRecipe{displayFrame, {70}}, {}, content, ownPID));
    EXPECT_FALSE(CaptureEngine::filter(CaptureEngine::DisplayRecipe{Rect{1, 2, 3, 4}}, {}, content, ownPID));
}

TEST_F(CaptureEngineTest, FramesAndSoundReachTheMovieExceptWhilePaused) {
    auto engine = makeEngine(true, true, 10);
    std::vector<float> levels;
    engine->onAudioLevel = [&](float level) { levels.push_back(level); };
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    ASSERT_TRUE(sound.microphone && sound.systemAudio);
    EXPECT_EQ(encoders.last().settings.audioTracks.size(), 2u);

    screen.stream->deliver(ms(1000));
    sound.systemAudio(chunkAt(ms(1010), 0.5f));
    sound.microphone(chunkAt(ms(1020), 0.75f)); // within 50 ms of the last level: held back
    screen.stream->deliver(ms(1100));
    engine->pause();
    screen.stream->deliver(ms(1200));
    sound.microphone(chunkAt(ms(1210)));
    engine->resume();
    screen.stream->deliver(ms(6100));
    sound.microphone(chunkAt(ms(6120), 0.1f));

    Expected<CaptureEngine::Result> result = stop(*engine);
    ASSERT_TRUE(result) << result.error().message;
    EncodedMovie& movie = encoders.last();
    EXPECT_EQ(movie.videoTimes, (std::vector<MediaTime>{ms(0), ms(100), ms(200)}));
    EXPECT_EQ(movie.audioTimesOf(0), std::vector<MediaTime>{ms(10)});
    EXPECT_EQ(movie.audioTimesOf(1), (std::vector<MediaTime>{ms(20), ms(220)}));
    EXPECT_EQ(levels, (std::vector<float>{0.5f, 0.75f}));
    EXPECT_TRUE(movie.finished);
    EXPECT_TRUE(*screen.streamStopped);
    EXPECT_TRUE(sound.allStopped());
    EXPECT_EQ(result->url, movie.settings.url);
    EXPECT_EQ(result->appendedFrames, 3);
    EXPECT_EQ(result->droppedFrames, 0);
    EXPECT_DOUBLE_EQ(result->duration, 0.2);
    EXPECT_TRUE(logged("recording finished: 3 frames, 0 dropped, 0.20s"));
    EXPECT_FALSE(engine->hasStream());
}

TEST_F(CaptureEngineTest, AMissingMicrophoneLeavesTheRecordingWithoutIt) {
    sound.hasMicrophone = false;
    auto engine = makeEngine(false, true);
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    EXPECT_TRUE(encoders.last().settings.audioTracks.empty());
    EXPECT_TRUE(sound.requests.empty());

    sound.hasMicrophone = true;
    sound.microphoneError = Error{"busy"};
    auto second = makeEngine(false, true);
    EXPECT_EQ(start(*second, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    EXPECT_TRUE(logged("recording microphone unavailable: busy"));
}

TEST_F(CaptureEngineTest, StoppingBeforeAnyFrameGivesNoFramesCaptured) {
    auto engine = makeEngine();
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    EXPECT_EQ(stop(*engine).error(), RecordingError::noFramesCaptured());
    EXPECT_TRUE(encoders.last().cancelled);
}

TEST_F(CaptureEngineTest, CancelStopsEverythingAndRemovesTheMovie) {
    auto engine = makeEngine(true);
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    screen.stream->deliver(ms(0));
    bool cancelled = false;
    engine->cancel([&] { cancelled = true; });
    settle();
    EXPECT_TRUE(cancelled);
    EXPECT_TRUE(*screen.streamStopped);
    EXPECT_TRUE(sound.allStopped());
    EXPECT_TRUE(encoders.last().cancelled);
    EXPECT_FALSE(encoders.last().finished);
}

TEST_F(CaptureEngineTest, ACancelWhileStartingWaitsForTheStartAndUndoesIt) {
    auto engine = makeEngine(true);
    std::vector<std::string> events;
    engine->start({displayFrame, std::nullopt, 1, std::nullopt}, [&](std::optional<Error>) { events.push_back("started"); });
    engine->cancel([&] { events.push_back("cancelled"); });
    settle();
    EXPECT_EQ(events, (std::vector<std::string>{"started", "cancelled"}));
    EXPECT_TRUE(*screen.streamStopped);
    EXPECT_TRUE(sound.allStopped());
    EXPECT_TRUE(encoders.last().cancelled);
}

TEST_F(CaptureEngineTest, OnlyTheNewestRectangleFollowsAnUpdateInFlight) {
    auto engine = makeEngine();
    EXPECT_EQ(start(*engine, {displayFrame, Rect{0, 0, 200, 100}, 1, std::nullopt}), std::nullopt);
    engine->updateSourceRect({10, 0, 200, 100}); // goes out at once
    engine->updateSourceRect({20, 0, 200, 100}); // both wait for it
    engine->updateSourceRect({30, 0, 200, 100});
    ASSERT_EQ(detached.pending.size(), 1u);
    settle();
    std::vector<double> xs;
    for (const StreamConfiguration& c : screen.stream->configurationUpdates) xs.push_back(c.sourceRect->minX());
    EXPECT_EQ(xs, (std::vector<double>{10, 30}));
    EXPECT_EQ(screen.stream->configurationUpdates.back().width, 200);
}

TEST_F(CaptureEngineTest, RectangleUpdatesNeedARunningStream) {
    auto engine = makeEngine();
    engine->updateSourceRect({10, 0, 200, 100});
    EXPECT_TRUE(detached.pending.empty());
}

TEST_F(CaptureEngineTest, AdmittingWindowsRetriesOnceForWindowsNotListedYet) {
    auto engine = makeEngine();
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    const int requestsAtStart = screen.contentRequests;
    std::optional<std::optional<Error>> outcome;
    engine->includeOwnWindows({8, 31}, [&](std::optional<Error> e) { outcome = e; }); // 31 never appears
    settle();
    EXPECT_FALSE(outcome);
    EXPECT_EQ(screen.contentRequests, requestsAtStart + 1);
    main.advance(0.11);
    settle();
    EXPECT_FALSE(outcome);
    main.advance(0.01);
    settle();
    ASSERT_TRUE(outcome);
    EXPECT_EQ(*outcome, std::nullopt);
    EXPECT_EQ(screen.contentRequests, requestsAtStart + 2);
    ASSERT_EQ(screen.stream->filterUpdates.size(), 1u);
    EXPECT_EQ(screen.stream->filterUpdates[0].windows, std::vector<std::uint32_t>{8});
    EXPECT_TRUE(logged("recording filter now admits 1/2 overlay windows"));
}

TEST_F(CaptureEngineTest, AdmittingWindowsListedAtOnceNeedsNoRetry) {
    auto engine = makeEngine();
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    bool done = false;
    engine->includeOwnWindows({8}, [&](std::optional<Error>) { done = true; });
    settle();
    EXPECT_TRUE(done);
    EXPECT_TRUE(logged("recording filter now admits 1/1 overlay windows"));

    done = false;
    engine->includeOwnWindows({}, [&](std::optional<Error>) { done = true; }); // nothing to admit
    EXPECT_TRUE(done);
    EXPECT_EQ(screen.stream->filterUpdates.size(), 1u);
}

TEST_F(CaptureEngineTest, AStreamThatDiesIsReportedOnTheMainThread) {
    auto engine = makeEngine();
    std::optional<Error> died;
    engine->onRuntimeError = [&](const Error& e) { died = e; };
    EXPECT_EQ(start(*engine, {displayFrame, std::nullopt, 1, std::nullopt}), std::nullopt);
    screen.stream->handlers.onStopped(Error{"display gone"});
    EXPECT_FALSE(died);
    main.runUntilIdle();
    EXPECT_EQ(died, Error{"display gone"});
}

} // namespace
} // namespace tosvar
