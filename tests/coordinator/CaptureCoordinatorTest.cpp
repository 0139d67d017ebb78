#include "CaptureCoordinator.h"

#include "CoordinatorFakes.h"
#include "Log.h"
#include "PngDecoder.h"
#include "PngEncoder.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace tosvar;

namespace {

Bytes pngOf(int width, int height, std::uint8_t shade) {
    MutableImage image(width, height);
    image.fill({shade, shade, shade, 255});
    return PngEncoder::encode(std::move(image).freeze()).value();
}

// Only the signature and header of a PNG: enough to know its size.
Bytes pngHeaderOf(int width, int height) {
    Bytes bytes;
    PngEncoder encoder(
        [&](const std::uint8_t* data, std::size_t count) {
            bytes.insert(bytes.end(), data, data + count);
            return true;
        },
        width, height, true);
    return bytes;
}

class CaptureCoordinatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        setLogSink([this](std::string_view line) {
            std::lock_guard lock(logMutex);
            logged.emplace_back(line);
        });
        coordinator->start();
    }
    void TearDown() override { setLogSink(nullptr); }

    // Lets the detached decoration finish and its hop back to the main queue run.
    void settleDecoration() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (queue.pendingCount() == 0 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        queue.runUntilIdle();
    }
    RegionAnnotationOutcome finished(const Bytes& png, AnnotationAction action, bool fresh = true) {
        return {AnnotationResult::finished(png, action), Rect(10, 10, 100, 100), fresh, 2};
    }

    VirtualMainQueue queue;
    InMemoryDefaultsStore defaults;
    FakePasteboard pasteboard;
    OwnPasteboardLedger ledger;
    fakes::Sink sink;
    fakes::Region region;
    fakes::Recording recording;
    fakes::Audio audio;
    fakes::HUD hud;
    fakes::Presentation presentation;
    fakes::Scroll scroll;
    fakes::Translation translation;
    fakes::Stickers stickers;
    fakes::Cards cards;
    fakes::Shadow shadow;
    fakes::Recognizer recognizer;
    FakeScreenCapturePermission permission;
    fakes::FullScreen fullScreen;
    fakes::Saver saver;
    fakes::Thumbnailer thumbnailer;
    fakes::Screens screens;
    fakes::Desk desk;
    fakes::NoAlerts alerts;
    fakes::NoTrash trash;
    CaptureDeletion deletion{defaults, alerts, trash};
    WorkerPool workers{1, "test.decorate"};
    AppSettings settings;
    std::vector<std::shared_ptr<fakes::Countdown::Record>> countdowns;
    std::vector<std::string> toasts;
    std::mutex logMutex;
    std::vector<std::string> logged;

    std::shared_ptr<CaptureCoordinator> coordinator = std::make_shared<CaptureCoordinator>(CaptureCoordinatorServices{
        queue, sink, defaults, [this] { return settings; }, [](std::string_view key) { return std::string(key); },
        [this](std::string_view key, double) { toasts.emplace_back(key); },
        [this](std::function<void()> work) { workers.detach(std::move(work)); }, pasteboard, ledger, screens, desk,
        deletion, region, recording, audio, hud, presentation, scroll, translation, stickers, cards, shadow,
        [this](int seconds, const Rect&) {
            countdowns.push_back(std::make_shared<fakes::Countdown::Record>(fakes::Countdown::Record{seconds, false}));
            return std::make_unique<fakes::Countdown>(queue, countdowns.back());
        },
        recognizer, permission, fullScreen, saver, thumbnailer});
};

} // namespace

TEST_F(CaptureCoordinatorTest, MenuRequestsWaitTheirExtraDelay) {
    coordinator->captureRegion(0.2);
    queue.advance(0.19);
    EXPECT_EQ(region.captures, 0);
    queue.advance(0.01);
    EXPECT_EQ(region.captures, 1);

    auto host = std::make_shared<CaptureHost>(queue); // the shell's default behaves the same
    coordinator->host = host;
    coordinator->captureRegion(0.2);
    queue.advance(0.1);
    EXPECT_EQ(region.captures, 1);
    queue.advance(0.1);
    EXPECT_EQ(region.captures, 2);
    coordinator->captureRegion(0); // a hotkey: at once
    EXPECT_EQ(region.captures, 3);
}

TEST_F(CaptureCoordinatorTest, DelayBelowOneSecondStartsAtOnceWithoutCountdown) {
    coordinator->captureRegionAfterDelay(0);
    EXPECT_EQ(region.captures, 1);
    EXPECT_TRUE(countdowns.empty());
    EXPECT_FALSE(coordinator->cancelDelayedCapture());
}

TEST_F(CaptureCoordinatorTest, DelayedCaptureRunsAfterItsCountdown) {
    settings.screenshotDelaySeconds = 3;
    coordinator->captureRegionAfterDelay(std::nullopt);
    ASSERT_EQ(countdowns.size(), 1u);
    EXPECT_EQ(countdowns[0]->seconds, 3);
    queue.advance(2.9);
    EXPECT_EQ(region.captures, 0);
    queue.advance(0.2);
    EXPECT_EQ(region.captures, 1);
    EXPECT_FALSE(coordinator->cancelDelayedCapture()); // the finished countdown is gone
}

TEST_F(CaptureCoordinatorTest, DelayedHotkeyDuringTheCountdownCancelsIt) {
    coordinator->toggleDelayedCapture();
    ASSERT_EQ(countdowns.size(), 1u);
    queue.advance(1);
    coordinator->toggleDelayedCapture();
    EXPECT_TRUE(countdowns[0]->cancelled);
    EXPECT_EQ(countdowns.size(), 1u); // no new countdown
    queue.advance(60);
    EXPECT_EQ(region.captures, 0);
}

TEST_F(CaptureCoordinatorTest, ScreenAndSoundRecordingExcludeEachOther) {
    audio.current = AudioRecordingController::State::recording;
    coordinator->toggleRecording();
    EXPECT_TRUE(recording.calls.empty());

    audio.current = AudioRecordingController::State::idle;
    recording.current = RecordingController::State::recording;
    coordinator->toggleAudioRecording();
    EXPECT_TRUE(audio.calls.empty());
    EXPECT_TRUE(hud.calls.empty());

    coordinator->toggleRecording();
    EXPECT_EQ(recording.calls, (std::vector<std::string>{"stopAndDeliver"}));
    EXPECT_TRUE(coordinator->isRecordingAnything());
}

TEST_F(CaptureCoordinatorTest, RecordingToggleFollowsTheState) {
    const std::pair<RecordingController::State, const char*> rows[] = {
        {RecordingController::State::idle, "beginInteractive"},
        {RecordingController::State::countingDown, "abortCountdown"},
        {RecordingController::State::starting, nullptr},
        {RecordingController::State::paused, "stopAndDeliver"},
        {RecordingController::State::stopping, nullptr},
    };
    for (const auto& [state, expected] : rows) {
        recording.calls.clear();
        recording.current = state;
        coordinator->toggleRecording();
        EXPECT_EQ(recording.calls, expected ? std::vector<std::string>{expected} : std::vector<std::string>{});
    }
}

TEST_F(CaptureCoordinatorTest, APickedRegionIsRecordedOnTheDisplayHoldingItsMiddleInTheDisplaysOwnPoints) {
    region.onRecordingRequested(Rect(1500.4, 100, 400, 300), 77u); // on the second display, y up
    queue.runUntilIdle();
    ASSERT_EQ(recording.armed.size(), 1u);
    const RecordingTarget& target = recording.armed[0];
    EXPECT_EQ(target.displayFrame, Rect(1440, 0, 1920, 1080));
    EXPECT_EQ(target.sourceRect, Rect(60, 680, 401, 300)) << "from the display's top-left, edges made whole";
    EXPECT_DOUBLE_EQ(target.scale, 1);
    EXPECT_EQ(target.windowID, 77u);

    region.onRecordingRequested(Rect(1380, 100, 100, 100), std::nullopt); // across both, its middle on the first
    queue.runUntilIdle();
    ASSERT_EQ(recording.armed.size(), 2u);
    EXPECT_EQ(recording.armed[1].displayFrame, Rect(0, 0, 1440, 900));

    region.onRecordingRequested(Rect(-900, -900, 100, 100), std::nullopt);
    queue.runUntilIdle();
    EXPECT_EQ(recording.armed.size(), 2u) << "off every display nothing is armed";
}

TEST_F(CaptureCoordinatorTest, AudioToggleStartsWithTheHudAndStopsKeeping) {
    coordinator->toggleAudioRecording();
    EXPECT_EQ(audio.calls, (std::vector<std::string>{"start"}));
    EXPECT_EQ(hud.calls, (std::vector<std::string>{"show"}));
    audio.current = AudioRecordingController::State::recording;
    coordinator->toggleAudioRecording();
    EXPECT_EQ(audio.calls.back(), "stop");
    EXPECT_EQ(hud.calls.back(), "close");
}

TEST_F(CaptureCoordinatorTest, WithoutShadowCopyGoesToClipboardAndSaveAndPinDoNot) {
    const Bytes png = pngOf(8, 8, 100);
    region.onAnnotationResult(finished(png, AnnotationAction::copy));
    region.onAnnotationResult(finished(png, AnnotationAction::save));
    region.onAnnotationResult(finished(png, AnnotationAction::pin));
    region.onAnnotationResult({AnnotationResult::cancelled(), std::nullopt, true, 2});
    ASSERT_EQ(sink.images.size(), 3u);
    EXPECT_TRUE(sink.images[0].second);
    EXPECT_FALSE(sink.images[1].second);
    EXPECT_FALSE(sink.images[2].second);
    EXPECT_EQ(saver.saves, 1);
    ASSERT_EQ(stickers.order.size(), 1u);
    EXPECT_EQ(stickers.stickers[1].frame, Rect(10, 10, 100, 100));
}

TEST_F(CaptureCoordinatorTest, DecorationRunsOffTheMainThreadAndFailureDeliversUndecorated) {
    defaults.set("screenshotDropShadow", true);
    const Bytes png = pngOf(8, 8, 50);
    region.onAnnotationResult(finished(png, AnnotationAction::copy));
    EXPECT_TRUE(sink.images.empty()); // nothing on the main thread yet
    settleDecoration();
    ASSERT_EQ(sink.images.size(), 1u);
    EXPECT_EQ(PngDecoder::decode(sink.images[0].first)->width(), 10);
    ASSERT_EQ(shadow.threads.size(), 1u);
    EXPECT_NE(shadow.threads[0], std::this_thread::get_id());

    shadow.fail = true;
    region.onAnnotationResult(finished(png, AnnotationAction::copy));
    settleDecoration();
    ASSERT_EQ(sink.images.size(), 2u);
    EXPECT_EQ(sink.images[1].first, png);
    std::lock_guard lock(logMutex);
    ASSERT_FALSE(logged.empty());
    EXPECT_TRUE(logged.back().starts_with("dropShadow failed → undecorated")) << logged.back();
}

TEST_F(CaptureCoordinatorTest, ShadowSkipsPinsAndCapturesThatAreNotFresh) {
    defaults.set("screenshotDropShadow", true);
    const Bytes png = pngOf(8, 8, 50);
    region.onAnnotationResult(finished(png, AnnotationAction::pin));
    region.onAnnotationResult(finished(png, AnnotationAction::copy, false));
    EXPECT_EQ(sink.images.size(), 2u); // both delivered at once, undecorated
    EXPECT_TRUE(shadow.threads.empty());
}

TEST_F(CaptureCoordinatorTest, FifthDecoratedCaptureForgetsTheOldestAndItsCardEditsDecoratedBytes) {
    defaults.set("screenshotDropShadow", true);
    std::vector<Bytes> originals;
    for (int i = 0; i < 5; ++i) {
        originals.push_back(pngOf(8, 8, static_cast<std::uint8_t>(10 * i)));
        region.onAnnotationResult(finished(originals.back(), AnnotationAction::copy));
        settleDecoration();
    }
    ASSERT_EQ(sink.images.size(), 5u);
    EXPECT_FALSE(coordinator->undecoratedCapture(sink.images[0].first).has_value());
    const auto newest = coordinator->undecoratedCapture(sink.images[4].first);
    ASSERT_TRUE(newest.has_value());
    EXPECT_EQ(newest->png, originals[4]);

    // Editing from a card: the newest re-edits its undecorated image at its
    // capture scale; the forgotten oldest can only edit its decorated bytes.
    auto editedWidth = [&] { return PngDecoder::decode(stickers.stickers.at(stickers.order.back()).payload.png)->width(); };
    cards.shown.at(5).onEdit();
    EXPECT_EQ(editedWidth(), 8);
    EXPECT_EQ(stickers.editingScale, 2);
    cards.shown.at(1).onEdit();
    EXPECT_EQ(editedWidth(), 10);
    EXPECT_EQ(stickers.editingScale, 1.0);
}

TEST_F(CaptureCoordinatorTest, PinnedStickersStepDownAndOnlyTheLastTakesKey) {
    coordinator->pin({{Bytes{1}, "a", {}}, {Bytes{2}, "b", {}}, {Bytes{3}, "c", {}}}, false);
    ASSERT_EQ(stickers.order.size(), 3u);
    EXPECT_EQ(stickers.stickers[1].dx, 0);
    EXPECT_EQ(stickers.stickers[2].dx, 28);
    EXPECT_EQ(stickers.stickers[2].dy, -28);
    EXPECT_EQ(stickers.stickers[3].dx, 56);
    EXPECT_FALSE(stickers.stickers[1].key);
    EXPECT_FALSE(stickers.stickers[2].key);
    EXPECT_TRUE(stickers.stickers[3].key);
}

TEST_F(CaptureCoordinatorTest, CardsOfHugeImagesOfferNoTextActions) {
    sink.deliver(pngHeaderOf(6000, 6000), true);
    ASSERT_EQ(cards.shown.size(), 1u);
    EXPECT_EQ(recognizer.requests, 0);
    EXPECT_FALSE(cards.shown[1].onCopyText);

    sink.deliver(pngOf(20, 10, 200), true);
    EXPECT_EQ(recognizer.requests, 1);
    ASSERT_TRUE(cards.shown[2].onCopyText);
    cards.shown[2].onCopyText();
    EXPECT_EQ(std::string(pasteboard.contents.find("text/plain")->begin(), pasteboard.contents.find("text/plain")->end()),
              "Hello");
    EXPECT_EQ(toasts.back(), "card.toast.textCopied");
    EXPECT_TRUE(cards.shown[2].onTranslate);
}

TEST_F(CaptureCoordinatorTest, NoCardWhenDisabledOrUndecodable) {
    settings.captureCardEnabled = false;
    sink.deliver(pngOf(4, 4, 1), true);
    settings.captureCardEnabled = true;
    sink.deliver(Bytes{1, 2, 3}, true);
    EXPECT_TRUE(cards.shown.empty());
}

TEST_F(CaptureCoordinatorTest, ScreenshotSessionEndingAsScrollCaptureUsesOnlyTheFinalCallback) {
    coordinator->captureRegion(0);
    ASSERT_TRUE(region.pendingCapture);
    // Inside the overlay the user switched to scrolling capture: the session
    // ends through the session-level callback, never through its own closure.
    region.onScrollCaptureRequested(Rect(0, 0, 300, 600), std::nullopt);
    EXPECT_TRUE(scroll.started.empty()); // hops through the main queue
    queue.runUntilIdle();
    ASSERT_EQ(scroll.started.size(), 1u);
    EXPECT_TRUE(sink.images.empty());

    scroll.completion({pngOf(30, 90, 7), 2, false});
    ASSERT_EQ(sink.images.size(), 1u);
    EXPECT_TRUE(sink.images[0].second);
    EXPECT_EQ(toasts.back(), "scroll.toast.saved");
    scroll.completion({std::nullopt, 2, false});
    EXPECT_EQ(toasts.back(), "scroll.toast.empty");
}

TEST_F(CaptureCoordinatorTest, TextCaptureAnnouncesWhatWasFound) {
    coordinator->captureText(0);
    region.pendingText(std::string("abc"));
    region.pendingText(std::string());
    region.pendingText(std::nullopt);
    EXPECT_EQ(toasts, (std::vector<std::string>{"screenshot.captureText.copied", "screenshot.captureText.empty"}));
}

TEST_F(CaptureCoordinatorTest, UnavailableTranslationShowsItsReason) {
    translation.available = false;
    coordinator->translateRegion(0);
    EXPECT_EQ(translation.notes, (std::vector<std::string>{"note  region translate requested"}));
    EXPECT_EQ(toasts, (std::vector<std::string>{"translation.unavailable"}));
    EXPECT_FALSE(region.pendingTranslate);
}

TEST_F(CaptureCoordinatorTest, FullScreenNeedsPermissionAndBeepsOnFailure) {
    permission.granted = false;
    coordinator->captureFullScreen(0);
    EXPECT_EQ(permission.guidance, 1);
    permission.granted = true;
    coordinator->captureFullScreen(0);
    EXPECT_EQ(desk.beeps, 1);
    fullScreen.grab = FullScreenGrab{pngOf(16, 9, 3), Rect(0, 0, 1440, 900), 2};
    coordinator->captureFullScreen(0);
    ASSERT_EQ(sink.images.size(), 1u);
    EXPECT_TRUE(sink.images[0].second);
}

TEST_F(CaptureCoordinatorTest, CallbacksHoldTheCoordinatorWeakly) {
    std::weak_ptr<CaptureCoordinator> weak = coordinator;
    coordinator.reset();
    EXPECT_TRUE(weak.expired());
    region.onAnnotationResult(finished(pngOf(4, 4, 1), AnnotationAction::copy)); // nothing happens, nothing breaks
    EXPECT_TRUE(sink.images.empty());
}
