#include "CaptureCoordinator.h"

#include "CaptureFileKinds.h"
#include "Log.h"
#include "PngDecoder.h"
#include "PngEncoder.h"

#include <chrono>
#include <cstdio>

namespace tosvar {

namespace {

std::string formatted(const char* format, auto... values) {
    char line[256];
    std::snprintf(line, sizeof line, format, values...);
    return line;
}

} // namespace

void CaptureCoordinator::start() {
    const std::weak_ptr<CaptureCoordinator> weak = weak_from_this();
    auto with = [weak](auto body) {
        return [weak, body](auto&&... args) {
            if (auto self = weak.lock()) body(*self, std::forward<decltype(args)>(args)...);
        };
    };

    s_.region.onAnnotationResult = with([](CaptureCoordinator& c, const RegionAnnotationOutcome& outcome) {
        c.applyAnnotationResult(outcome);
    });
    s_.region.onScrollCaptureRequested =
        with([weak](CaptureCoordinator& c, const Rect& rect, std::optional<std::uint32_t> windowID) {
            c.s_.mainQueue.async([weak, rect, windowID] {
                if (auto self = weak.lock()) self->beginScrollSession(rect, windowID);
            });
        });
    s_.region.onRecordingRequested = with([weak](CaptureCoordinator& c, const Rect& rect, std::optional<std::uint32_t> windowID) {
        c.s_.mainQueue.async([weak, rect, windowID] {
            if (auto self = weak.lock()) self->recordPicked(rect, windowID);
        });
    });
    s_.region.onTranslationCardRequested =
        with([](CaptureCoordinator& c, const Bytes& png, const Rect& rect) { c.showTranslationCard(png, rect); });
    s_.region.onAudioRecordRequested = with([](CaptureCoordinator& c) { c.toggleAudioRecording(); });
    s_.region.onPresentationRequested = with([](CaptureCoordinator& c) { c.togglePresentation(); });
    s_.region.onTextCaptureRequested = with([weak](CaptureCoordinator& c, const std::optional<std::string>& text) {
        c.s_.mainQueue.async([weak, text] {
            if (auto self = weak.lock()) self->announce(text);
        });
    });

    s_.translation.hostActions.copyText = with([](CaptureCoordinator& c, const std::string& text) {
        OwnPasteboard::write(c.s_.pasteboard, c.s_.ledger, text);
    });
    s_.translation.hostActions.pin =
        with([](CaptureCoordinator& c, const PinnedContentPayload& payload, const std::optional<Rect>& frame) {
            c.showSticker(payload, frame, true);
        });

    s_.recording.onStateChange = with([](CaptureCoordinator& c) {
        if (c.onRecordingStateChange) c.onRecordingStateChange();
    });
    s_.recording.onTick = with([](CaptureCoordinator& c, double elapsed) {
        if (c.onRecordingTick) c.onRecordingTick(elapsed);
    });
    s_.recording.onPinCapture = with([](CaptureCoordinator& c, const std::filesystem::path& file, const Rect& frame) {
        c.pinRecordedCapture(file, frame);
    });
    s_.recording.onDeliverFile =
        with([](CaptureCoordinator& c, const std::filesystem::path& file) { c.s_.sink.deliver(file); });

    s_.audio.onStateChange = with([](CaptureCoordinator& c) {
        const auto state = c.s_.audio.state();
        c.s_.audioHUD.setPaused(state == AudioRecordingController::State::paused);
        if (state == AudioRecordingController::State::idle) c.s_.audioHUD.close();
        if (c.onRecordingStateChange) c.onRecordingStateChange();
    });
    s_.audio.onTick = with([](CaptureCoordinator& c, double elapsed) {
        c.s_.audioHUD.setElapsed(elapsed);
        if (c.onRecordingTick) c.onRecordingTick(elapsed);
    });
    s_.audio.onAudioLevel = with([](CaptureCoordinator& c, float level) { c.s_.audioHUD.report(level); });
    s_.audio.onFinished =
        with([](CaptureCoordinator& c, const std::filesystem::path& file) { c.s_.sink.deliver(file); });
    s_.audio.onFailure = with([](CaptureCoordinator& c, const std::string& error) {
        logLine("audio recording failed: " + error);
        c.s_.audioHUD.close();
    });

    s_.presentation.onSnapshot = with([](CaptureCoordinator& c, const Bytes& png) { c.s_.sink.deliver(png, true); });
    s_.sink.onDelivered =
        with([](CaptureCoordinator& c, const CaptureDelivery& delivery) { c.presentCaptureCard(delivery); });
}

// MARK: Region-type requests

void CaptureCoordinator::runRegionRequest(double extraDelay, std::function<void()> work) {
    if (auto shell = host.lock()) {
        shell->prepareForCapture(extraDelay, std::move(work));
    } else if (extraDelay > 0) {
        s_.mainQueue.after(extraDelay, std::move(work));
    } else {
        work();
    }
}

void CaptureCoordinator::togglePresentation() {
    if (s_.presentation.isActive()) {
        s_.presentation.stop();
    } else {
        s_.presentation.start(presentationAnnotatingMode);
    }
}

void CaptureCoordinator::captureRegion(double extraDelay) {
    runRegionRequest(extraDelay, [weak = weak_from_this()] {
        if (auto self = weak.lock())
            self->s_.region.capture([weak](const RegionAnnotationOutcome& outcome) {
                if (auto coordinator = weak.lock()) coordinator->applyAnnotationResult(outcome);
            });
    });
}

void CaptureCoordinator::captureText(double extraDelay) {
    runRegionRequest(extraDelay, [weak = weak_from_this()] {
        if (auto self = weak.lock())
            self->s_.region.captureText([weak](const std::optional<std::string>& text) {
                if (auto coordinator = weak.lock()) coordinator->announce(text);
            });
    });
}

void CaptureCoordinator::translateRegion(double extraDelay) {
    runRegionRequest(extraDelay, [weak = weak_from_this()] {
        auto self = weak.lock();
        if (!self) return;
        self->s_.translation.note("note  region translate requested");
        self->s_.translation.dismissTransientCards();
        if (!self->s_.translation.isAvailable()) {
            self->toast(self->s_.translation.unavailableReasonKey());
            return;
        }
        self->s_.region.translateRegion([weak](const Bytes& png, const Rect& rect) {
            if (auto coordinator = weak.lock()) coordinator->showTranslationCard(png, rect);
        });
    });
}

void CaptureCoordinator::captureFullScreen(double extraDelay) {
    runRegionRequest(extraDelay, [weak = weak_from_this()] {
        auto self = weak.lock();
        if (!self) return;
        if (!self->s_.screenCapturePermission.isGranted()) {
            self->s_.screenCapturePermission.request();
            self->s_.screenCapturePermission.presentGuidance();
            return;
        }
        self->s_.fullScreen.captureScreenUnderCursor([weak](const std::optional<FullScreenGrab>& grab) {
            auto coordinator = weak.lock();
            if (!coordinator) return;
            if (!grab) {
                coordinator->s_.workspace.beep();
                coordinator->applyAnnotationResult({AnnotationResult::cancelled(), std::nullopt, true, 2});
                return;
            }
            const auto screens = coordinator->s_.screens.screens();
            const double mainScale = screens.empty() ? grab->scale : screens.front().backingScale;
            coordinator->applyAnnotationResult(
                {AnnotationResult::finished(grab->png, AnnotationAction::copy), grab->screenFrame, true, mainScale});
        });
    });
}

void CaptureCoordinator::captureScrolling(double extraDelay) {
    runRegionRequest(extraDelay, [weak = weak_from_this()] {
        if (auto self = weak.lock())
            self->s_.region.pickScrollRegion([weak](const Rect& rect, std::optional<std::uint32_t> windowID) {
                if (auto coordinator = weak.lock()) coordinator->beginScrollSession(rect, windowID);
            });
    });
}

// MARK: Delay

std::optional<ScreenInfo> CaptureCoordinator::screenContainingMouse() const {
    const auto screens = s_.screens.screens();
    const Point mouse = s_.screens.mouseLocation();
    for (const ScreenInfo& screen : screens)
        if (screen.frame.contains(mouse)) return screen;
    if (!screens.empty()) return screens.front();
    return std::nullopt;
}

void CaptureCoordinator::captureRegionAfterDelay(std::optional<int> seconds) {
    const std::int64_t delay = seconds ? *seconds : s_.settingsProvider().screenshotDelaySeconds;
    if (delay < 1) {
        captureRegion(0);
        return;
    }
    const std::optional<ScreenInfo> screen = screenContainingMouse();
    delayCountdown_ = s_.makeCountdown(static_cast<int>(delay), screen ? screen->visibleFrame : Rect());
    delayCountdown_->run([weak = weak_from_this()] {
        auto self = weak.lock();
        if (!self) return;
        // The countdown is calling us: let it finish before it is released.
        self->s_.mainQueue.async([finished = std::move(self->delayCountdown_)] {});
        self->captureRegion(0);
    });
}

bool CaptureCoordinator::cancelDelayedCapture() {
    if (!delayCountdown_) return false;
    delayCountdown_->cancel();
    delayCountdown_.reset();
    return true;
}

void CaptureCoordinator::toggleDelayedCapture() {
    if (!cancelDelayedCapture()) captureRegionAfterDelay(std::nullopt);
}

// MARK: Output step

void CaptureCoordinator::applyAnnotationResult(const RegionAnnotationOutcome& outcome) {
    const AnnotationResult::Finished* finished = outcome.result.finishedValue();
    if (!finished) return;
    const bool shadowEnabled = s_.defaults.boolean("screenshotDropShadow").value_or(false);
    const bool shadowApplies = shadowEnabled && outcome.freshCapture && finished->action != AnnotationAction::pin;
    if (!shadowApplies) {
        deliverFinished(finished->png, finished->action, outcome.frame);
        return;
    }
    const double scale = outcome.frame ? backingScale(*outcome.frame) : outcome.scale;
    decorateThenDeliver(finished->png, scale, finished->action, outcome.frame, nullptr);
}

void CaptureCoordinator::decorateThenDeliver(const Bytes& png, double scale, AnnotationAction action,
                                             std::optional<Rect> frame, std::function<void()> afterDelivery) {
    std::weak_ptr<CaptureCoordinator> weak = weak_from_this();
    const DropShadowDecorating& decorator = s_.dropShadow;
    MainQueue& mainQueue = s_.mainQueue;
    s_.runDetached([weak, &decorator, &mainQueue, png, scale, action, frame, afterDelivery] {
        const auto started = std::chrono::steady_clock::now();
        std::optional<Bytes> decorated = decorator.decoratePNG(png, scale);
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
        mainQueue.async([weak, png, scale, action, frame, afterDelivery, decorated = std::move(decorated), ms] {
            auto self = weak.lock();
            if (!self) return;
            if (decorated) {
                logLine(formatted("dropShadow ok in=%zu out=%zu scale=%.1f %.0fms", png.size(), decorated->size(),
                                  scale, ms));
                self->rememberUndecorated(png, scale, *decorated);
            } else {
                logLine(formatted("dropShadow failed → undecorated in=%zu out=0 scale=%.1f %.0fms", png.size(), scale,
                                  ms));
            }
            self->deliverFinished(decorated ? *decorated : png, action, frame);
            if (afterDelivery) afterDelivery();
        });
    });
}

void CaptureCoordinator::deliverFinished(const Bytes& png, AnnotationAction action, const std::optional<Rect>& frame) {
    s_.sink.deliver(png, action == AnnotationAction::copy);
    switch (action) {
    case AnnotationAction::copy: break;
    case AnnotationAction::save: s_.fileSaver.save(png); break;
    case AnnotationAction::pin: pinAnnotatedImage(png, frame); break;
    }
}

void CaptureCoordinator::rememberUndecorated(const Bytes& png, double scale, const Bytes& decorated) {
    undecorated_.push_back({decorated, png, scale});
    while (undecorated_.size() > undecoratedMemory) undecorated_.pop_front();
}

std::optional<CaptureCoordinator::UndecoratedCapture> CaptureCoordinator::undecoratedCapture(
    const Bytes& decorated) const {
    for (auto it = undecorated_.rbegin(); it != undecorated_.rend(); ++it)
        if (it->decorated == decorated) return *it;
    return std::nullopt;
}

double CaptureCoordinator::backingScale(const Rect& rect) const {
    const auto screens = s_.screens.screens();
    for (const ScreenInfo& screen : screens)
        if (screen.frame.intersects(rect)) return screen.backingScale;
    return screens.empty() ? 2.0 : screens.front().backingScale;
}

void CaptureCoordinator::announce(const std::optional<std::string>& text) {
    if (!text) return;
    toast(text->empty() ? "screenshot.captureText.empty" : "screenshot.captureText.copied");
}

// MARK: Recording

bool CaptureCoordinator::isRecordingAnything() const {
    return isRecording() || s_.audio.state() != AudioRecordingController::State::idle;
}

void CaptureCoordinator::toggleRecording() {
    const auto state = s_.recording.state();
    if (!RecordingController::isActive(state) && s_.audio.state() != AudioRecordingController::State::idle) return;
    switch (state) {
    case RecordingController::State::idle: s_.recording.beginInteractive(); break;
    case RecordingController::State::countingDown: s_.recording.abortCountdown(); break;
    case RecordingController::State::recording:
    case RecordingController::State::paused: s_.recording.stopAndDeliver(); break;
    case RecordingController::State::starting:
    case RecordingController::State::stopping: break;
    }
}

void CaptureCoordinator::toggleRecordingPause() {
    if (RecordingController::isActive(s_.recording.state())) s_.recording.togglePause();
}

RecordingFormat CaptureCoordinator::preferredRecordingFormat() const {
    return s_.defaults.string("recording.format") == "gif" ? RecordingFormat::gif : RecordingFormat::mp4;
}

void CaptureCoordinator::recordPicked(const Rect& rect, std::optional<std::uint32_t> windowID) {
    if (s_.recording.state() != RecordingController::State::idle) return;
    const std::optional<RecordingTarget> target = RecordingTarget::picked(rect, windowID, s_.screens.screens());
    if (!target) return s_.workspace.beep();
    s_.recording.arm(*target, preferredRecordingFormat(), s_.defaults.boolean("recording.pinAfterGIF").value_or(false));
}

void CaptureCoordinator::recordFullScreen() {
    if (s_.recording.state() != RecordingController::State::idle) return;
    if (!s_.screenCapturePermission.isGranted()) {
        s_.screenCapturePermission.request();
        s_.screenCapturePermission.presentGuidance();
        return;
    }
    const std::optional<ScreenInfo> screen = screenContainingMouse();
    if (!screen) {
        s_.workspace.beep();
        return;
    }
    s_.recording.arm({screen->frame, std::nullopt, screen->backingScale, std::nullopt}, preferredRecordingFormat(),
                     s_.defaults.boolean("recording.pinAfterGIF").value_or(false));
}

void CaptureCoordinator::toggleAudioRecording() {
    const bool audioIdle = s_.audio.state() == AudioRecordingController::State::idle;
    if (audioIdle && RecordingController::isActive(s_.recording.state())) return;
    if (!audioIdle) {
        s_.audio.stop(AudioRecordingController::Ending::keep);
        s_.audioHUD.close();
        return;
    }
    s_.audio.start(s_.settingsProvider());
    const std::weak_ptr<CaptureCoordinator> weak = weak_from_this();
    s_.audioHUD.show(
        [weak] {
            if (auto self = weak.lock()) self->toggleAudioRecordingPause();
        },
        [weak] {
            if (auto self = weak.lock()) self->toggleAudioRecording();
        },
        [weak] {
            if (auto self = weak.lock()) self->discardAudioRecording();
        });
}

void CaptureCoordinator::toggleAudioRecordingPause() {
    if (s_.audio.state() == AudioRecordingController::State::idle) return;
    s_.audio.togglePause();
    s_.audioHUD.setPaused(s_.audio.state() == AudioRecordingController::State::paused);
}

void CaptureCoordinator::discardAudioRecording() {
    if (s_.audio.state() == AudioRecordingController::State::idle) return;
    s_.audioHUD.setPaused(true);
    s_.audio.confirmDiscard([weak = weak_from_this()](bool discarded) {
        auto self = weak.lock();
        if (!self) return;
        self->s_.audioHUD.setPaused(self->s_.audio.state() == AudioRecordingController::State::paused);
        if (discarded) self->s_.audioHUD.storeFrameAndClose();
    });
}

// MARK: Stickers

StickerID CaptureCoordinator::showSticker(const PinnedContentPayload& payload, const std::optional<Rect>& frame,
                                          bool mayBecomeKey) {
    const StickerID id = s_.pinned.createSticker(payload, frame, false);
    s_.pinned.show(id, mayBecomeKey);
    s_.pinned.publishSnapshot(id);
    s_.pinned.notifyListChanged();
    return id;
}

void CaptureCoordinator::pin(const std::vector<PinnedContentPayload>& payloads, bool notifyHost) {
    auto shell = host.lock();
    const bool anchorVisible = shell && shell->isPinAnchorWindowVisible();
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        const StickerID id = s_.pinned.createSticker(payloads[i], std::nullopt, false);
        s_.pinned.show(id, i + 1 == payloads.size() && !anchorVisible);
        if (i > 0) {
            const double offset = pinOffset * static_cast<double>(i);
            s_.pinned.moveBy(id, offset, -offset); // right and down, in y-up screen points
        }
        s_.pinned.publishSnapshot(id);
        s_.pinned.notifyListChanged();
    }
    if (notifyHost && shell) shell->captureDidPin(anchorVisible);
}

void CaptureCoordinator::pinAnnotatedImage(const Bytes& png, const std::optional<Rect>& frame) {
    showSticker({png, s_.localize("menu.screenshot"), std::nullopt}, frame, true);
}

void CaptureCoordinator::pinRecordedCapture(const std::filesystem::path& file, const std::optional<Rect>& frame) {
    logLine("gifPin pinRecordedCapture: " + file.string());
    std::optional<Bytes> firstFrame = s_.thumbnailer.firstFramePNG(file);
    if (!firstFrame) {
        logLine("gifPin pinRecordedCapture: gif decode FAILED");
        return;
    }
    showSticker({std::move(*firstFrame), file.filename().string(), file}, frame, true);
}

void CaptureCoordinator::annotate(const ImageBuffer& image, double scale, bool translating, bool freshCapture) {
    Expected<Bytes> png = PngEncoder::encode(image);
    if (!png) {
        s_.workspace.beep();
        return;
    }
    const StickerID id = s_.pinned.createSticker({*png, s_.localize("menu.screenshot"), std::nullopt}, std::nullopt, true);
    s_.pinned.show(id, true);
    s_.pinned.beginEditing(id, scale, [weak = weak_from_this(), freshCapture, scale](const AnnotationResult& result,
                                                                                       const Rect& frame) {
        if (auto self = weak.lock()) self->applyAnnotationResult({result, frame, freshCapture, scale});
    });
    if (translating && s_.pinned.isEditorReady(id)) s_.pinned.toggleTranslateMode(id);
}

void CaptureCoordinator::annotateClipboardImage() {
    std::optional<Bytes> png = s_.pasteboard.readImagePNG();
    Expected<ImageBuffer> image = png ? PngDecoder::decode(*png) : Expected<ImageBuffer>(Error{"no image"});
    if (!image) {
        s_.workspace.beep();
        return;
    }
    annotate(*image, 1.0, false, false);
}

// MARK: Translation and scrolling

void CaptureCoordinator::showTranslationCard(const Bytes& png, const Rect& rect) {
    s_.translation.dismissTransientCards();
    s_.translation.presentCard(png, rect);
}

void CaptureCoordinator::beginScrollSession(const Rect& rect, std::optional<std::uint32_t> windowID) {
    s_.scroll.start(rect, windowID, [weak = weak_from_this()](const ScrollCaptureResult& result) {
        if (auto self = weak.lock()) self->deliverScrollCapture(result);
    });
}

void CaptureCoordinator::deliverScrollCapture(const ScrollCaptureResult& result) {
    if (result.canceled) return;
    if (!result.png) {
        toast("scroll.toast.empty");
        return;
    }
    if (s_.defaults.boolean("screenshotDropShadow").value_or(false)) {
        decorateThenDeliver(*result.png, result.scale, AnnotationAction::copy, std::nullopt,
                            [weak = weak_from_this()] {
                                if (auto self = weak.lock()) self->toast("scroll.toast.saved");
                            });
        return;
    }
    s_.sink.deliver(*result.png, true);
    toast("scroll.toast.saved");
}

// MARK: Capture card

bool CaptureCoordinator::isWorthRecognizing(const Bytes& png) {
    const auto header = PngDecoder::readHeader(png);
    if (!header) return false;
    const std::uint64_t pixels = std::uint64_t(header->width) * std::uint64_t(header->height);
    return pixels >= 1 && pixels <= maxRecognizedPixels;
}

void CaptureCoordinator::presentCaptureCard(const CaptureDelivery& delivery) {
    const AppSettings settings = s_.settingsProvider();
    if (!settings.captureCardEnabled) return;
    auto handle = std::make_shared<std::optional<CaptureCardHandle>>();
    CaptureCardController& cards = s_.cards;
    std::optional<CaptureCardItem> item = makeCardItem(delivery, [handle, &cards] {
        if (*handle) cards.dismiss(**handle, true);
    });
    if (!item) return;

    std::optional<ScreenInfo> screen;
    if (delivery.sourceRect) {
        for (const ScreenInfo& candidate : s_.screens.screens())
            if (candidate.frame.intersects(*delivery.sourceRect)) {
                screen = candidate;
                break;
            }
    }
    *handle = cards.show(*item, settings, screen);

    const Bytes* png = delivery.imageData();
    if (!png || !isWorthRecognizing(*png)) return;
    s_.textRecognition.recognizeTextForCard(
        *png, [weak = weak_from_this(), handle, card = *item, png = *png, source = delivery.sourceRect](
                  const std::optional<std::string>& text) mutable {
            auto self = weak.lock();
            if (!self || !text || text->empty() || !*handle) return;
            card.onCopyText = [weak, text = *text] {
                if (auto coordinator = weak.lock()) {
                    OwnPasteboard::write(coordinator->s_.pasteboard, coordinator->s_.ledger, text);
                    coordinator->toast("card.toast.textCopied");
                }
            };
            if (self->s_.translation.isAvailable()) {
                card.onTranslate = [weak, png, source] {
                    if (auto coordinator = weak.lock()) coordinator->showTranslationCard(png, source.value_or(Rect()));
                };
            }
            self->s_.cards.update(**handle, card);
        });
}

std::optional<CaptureCardItem> CaptureCoordinator::makeCardItem(const CaptureDelivery& delivery,
                                                                std::function<void()> dismiss) {
    CaptureCardItem item;
    item.content = delivery.content;
    item.fileURL = delivery.fileURL;
    const std::weak_ptr<CaptureCoordinator> weak = weak_from_this();

    if (const Bytes* png = delivery.imageData()) {
        if (!PngDecoder::readHeader(*png)) return std::nullopt;
        item.kind = CaptureCardKind::image;
        item.title = delivery.fileURL ? delivery.fileURL->filename().string() : s_.localize("menu.screenshot");
        item.onCopy = [weak, png = *png] {
            if (auto self = weak.lock()) {
                OwnPasteboard::writePNG(self->s_.pasteboard, self->s_.ledger, png);
                self->toast("card.toast.copied");
            }
        };
        item.onEdit = [weak, png = *png, dismiss] {
            auto self = weak.lock();
            if (!self) return;
            dismiss();
            const auto original = self->undecoratedCapture(png);
            Expected<ImageBuffer> image = PngDecoder::decode(original ? original->png : png);
            if (!image) {
                self->s_.workspace.beep();
                return;
            }
            self->annotate(*image, original ? original->scale : 1.0, false, original.has_value());
        };
        item.onPin = [weak, png = *png, dismiss] {
            auto self = weak.lock();
            if (!self) return;
            dismiss();
            const auto original = self->undecoratedCapture(png);
            self->showSticker({original ? original->png : png, self->s_.localize("menu.screenshot"), std::nullopt},
                              std::nullopt, true);
        };
    } else {
        const auto& file = std::get<std::filesystem::path>(delivery.content);
        item.kind = CaptureFileKinds::isVideo(file) ? CaptureCardKind::video
                    : CaptureFileKinds::isAudio(file) ? CaptureCardKind::audio
                                        : CaptureCardKind::image;
        item.title = file.filename().string();
        if (item.title.empty()) item.title = s_.localize("menu.record");
        item.onCopy = [weak, file] {
            if (auto self = weak.lock()) {
                OwnPasteboard::write(self->s_.pasteboard, self->s_.ledger, std::vector<std::filesystem::path>{file});
                self->toast("card.toast.copied");
            }
        };
        item.onPin = [weak, file, dismiss] {
            auto self = weak.lock();
            if (!self) return;
            dismiss();
            self->pinRecordedCapture(file, std::nullopt);
        };
    }

    if (const auto file = delivery.fileURL) {
        item.onReveal = [weak, file = *file] {
            if (auto self = weak.lock()) self->s_.workspace.reveal(file);
        };
        item.onOpen = [weak, file = *file] {
            if (auto self = weak.lock()) self->s_.workspace.open(file);
        };
        item.onDelete = [weak, file = *file, dismiss] {
            auto self = weak.lock();
            if (!self) return;
            self->s_.deletion.trash({file}, nullptr, [weak, dismiss](const std::optional<Error>& error) {
                auto coordinator = weak.lock();
                if (!coordinator || error) return;
                coordinator->toast("card.toast.deleted");
                dismiss();
            });
        };
    }
    return item;
}

} // namespace tosvar
