#pragma once

#include "AnnotationFileSaver.h"
#include "AudioRecordingController.h"
#include "CaptureCardController.h"
#include "CaptureDeletion.h"
#include "CaptureHost.h"
#include "CaptureOutputSink.h"
#include "DropShadowDecorating.h"
#include "FileCaptureSink.h"
#include "FullScreenCapture.h"
#include "ImageBuffer.h"
#include "MainQueue.h"
#include "MediaThumbnailer.h"
#include "OwnPasteboard.h"
#include "PinnedImageManager.h"
#include "PresentationController.h"
#include "RecordingController.h"
#include "RecordingCountdown.h"
#include "RegionScreenshotController.h"
#include "RegionTranslationController.h"
#include "ScreenCapturePermission.h"
#include "ScreenLayout.h"
#include "ScrollCaptureController.h"
#include "TextRecognition.h"
#include "Workspace.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

// Everything the coordinator talks to. The shell builds the real ones; tests hand in fakes.
struct CaptureCoordinatorServices {
    MainQueue& mainQueue;
    CaptureOutputSink& sink;
    DefaultsStore& defaults;
    std::function<AppSettings()> settingsProvider; // read afresh at every use
    std::function<std::string(std::string_view key)> localize;
    ToastPresenter toast;
    // Runs work off the main thread (the shared worker pool in the product).
    std::function<void(std::function<void()>)> runDetached;
    Pasteboard& pasteboard;
    OwnPasteboardLedger& ledger;
    ScreenLayout& screens;
    Workspace& workspace;
    CaptureDeletion& deletion;
    RegionScreenshotController& region;
    RecordingController& recording;
    AudioRecordingController& audio;
    AudioRecordingHUD& audioHUD;
    PresentationController& presentation;
    ScrollCaptureController& scroll;
    RegionTranslationController& translation;
    PinnedImageManager& pinned;
    CaptureCardController& cards;
    const DropShadowDecorating& dropShadow;
    RecordingCountdownFactory makeCountdown;
    TextRecognition& textRecognition;
    ScreenCapturePermission& screenCapturePermission;
    FullScreenCapture& fullScreen;
    AnnotationFileSaver& fileSaver;
    const MediaThumbnailer& thumbnailer;
};

// The one door for capture requests, and the one road from a finished
// capture to output (shadow, file, clipboard, sticker, card). It keeps no
// capture state beyond the running delay countdown and the last four images
// it decorated. Main thread only; build it with std::make_shared, since the
// callbacks it installs hold it weakly.
class CaptureCoordinator : public std::enable_shared_from_this<CaptureCoordinator> {
public:
    explicit CaptureCoordinator(CaptureCoordinatorServices services) : s_(std::move(services)) {}

    std::weak_ptr<CaptureHost> host;
    std::function<void()> onRecordingStateChange;
    std::function<void(double elapsed)> onRecordingTick;

    // Installs the collaborators' callbacks; once, at launch.
    void start();

    void captureRegion(double extraDelay = 0);
    void captureText(double extraDelay = 0);
    void translateRegion(double extraDelay = 0);
    void captureFullScreen(double extraDelay = 0);
    void captureScrolling(double extraDelay = 0);
    // After `seconds` (the settings' delay when none) of countdown; below 1 at once.
    void captureRegionAfterDelay(std::optional<int> seconds);
    // Whether a countdown was running.
    bool cancelDelayedCapture();
    // The delayed-screenshot hotkey: cancels a running countdown, else starts one.
    void toggleDelayedCapture();

    void toggleRecording();
    void toggleRecordingPause();
    void recordFullScreen();
    void toggleAudioRecording();
    void toggleAudioRecordingPause();
    void discardAudioRecording();
    // Starts presenting with drawing on, or stops.
    void togglePresentation();
    bool isPresenting() const { return s_.presentation.isActive(); }

    void annotateClipboardImage();
    void annotate(const ImageBuffer& image, double scale, bool translating, bool freshCapture);
    void pin(const std::vector<PinnedContentPayload>& payloads, bool notifyHost);

    bool isRecording() const { return RecordingController::isActive(s_.recording.state()); }
    RecordingController::State recordingState() const { return s_.recording.state(); }
    AudioRecordingController::State audioRecordingState() const { return s_.audio.state(); }
    bool isRecordingAnything() const;

    // The output step for a finished edit.
    void applyAnnotationResult(const RegionAnnotationOutcome& outcome);
    void presentCaptureCard(const CaptureDelivery& delivery);

    struct UndecoratedCapture {
        Bytes decorated;
        Bytes png;
        double scale;
    };
    static constexpr std::size_t undecoratedMemory = 4;
    // The image before its shadow, found by the decorated bytes.
    std::optional<UndecoratedCapture> undecoratedCapture(const Bytes& decorated) const;
    // Images with at most this many pixels are worth reading for the card.
    static constexpr std::uint64_t maxRecognizedPixels = 30'000'000;
    static bool isWorthRecognizing(const Bytes& png);
    static constexpr double pinOffset = 28;
    static constexpr int presentationAnnotatingMode = 2;
    static constexpr double toastSeconds = 1.6;

private:
    void runRegionRequest(double extraDelay, std::function<void()> work);
    void announce(const std::optional<std::string>& text);
    void showTranslationCard(const Bytes& png, const Rect& rect);
    void beginScrollSession(const Rect& rect, std::optional<std::uint32_t> windowID);
    void deliverScrollCapture(const ScrollCaptureResult& result);
    void decorateThenDeliver(const Bytes& png, double scale, AnnotationAction action, std::optional<Rect> frame,
                             std::function<void()> afterDelivery);
    void deliverFinished(const Bytes& png, AnnotationAction action, const std::optional<Rect>& frame);
    void rememberUndecorated(const Bytes& png, double scale, const Bytes& decorated);
    double backingScale(const Rect& rect) const;
    std::optional<ScreenInfo> screenContainingMouse() const;
    StickerID showSticker(const PinnedContentPayload& payload, const std::optional<Rect>& frame, bool mayBecomeKey);
    void pinAnnotatedImage(const Bytes& png, const std::optional<Rect>& frame);
    void pinRecordedCapture(const std::filesystem::path& file, const std::optional<Rect>& frame);
    // Arms a recording of a region or window a session picked.
    void recordPicked(const Rect& rect, std::optional<std::uint32_t> windowID);
    RecordingFormat preferredRecordingFormat() const;
    std::optional<CaptureCardItem> makeCardItem(const CaptureDelivery& delivery, std::function<void()> dismiss);
    void toast(std::string_view key) const { if (s_.toast) s_.toast(key, toastSeconds); }

    CaptureCoordinatorServices s_;
    std::shared_ptr<RecordingCountdown> delayCountdown_;
    std::deque<UndecoratedCapture> undecorated_;
};

} // namespace tosvar
