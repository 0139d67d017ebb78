#include "RegionScreenshotSession.h"

#include "DisplayGrabber.h"
#include "Log.h"

#include <chrono>
#include <cstdio>

namespace tosvar {

namespace {

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

std::string formatted(const char* pattern, double value) {
    char line[160];
    std::snprintf(line, sizeof line, pattern, value);
    return line;
}

} // namespace

std::shared_ptr<RegionScreenshotSession> RegionScreenshotSession::make(Services services) {
    return std::shared_ptr<RegionScreenshotSession>(new RegionScreenshotSession(std::move(services)));
}

void RegionScreenshotSession::capture(std::function<void(const RegionAnnotationOutcome&)> onResult) {
    RegionOverlayCallbacks callbacks;
    callbacks.onFinish = std::move(onResult);
    begin(ScreenshotOverlayMode::annotate, std::move(callbacks));
}

void RegionScreenshotSession::captureText(std::function<void(const std::optional<std::string>& text)> onText) {
    RegionOverlayCallbacks callbacks;
    callbacks.onTextCaptured = std::move(onText);
    begin(ScreenshotOverlayMode::captureText, std::move(callbacks));
}

void RegionScreenshotSession::translateRegion(std::function<void(const Bytes& png, const Rect& rect)> onImage) {
    RegionOverlayCallbacks callbacks;
    callbacks.onRegionTranslate = std::move(onImage);
    begin(ScreenshotOverlayMode::translate, std::move(callbacks));
}

void RegionScreenshotSession::pickScrollRegion(std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onPicked) {
    RegionOverlayCallbacks callbacks;
    callbacks.onScrollRegion = std::move(onPicked);
    begin(ScreenshotOverlayMode::scrollCapture, std::move(callbacks));
}

void RegionScreenshotSession::pickRecordingRegion(std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onPicked) {
    RegionOverlayCallbacks callbacks;
    callbacks.onRecordRegion = std::move(onPicked);
    begin(ScreenshotOverlayMode::record, std::move(callbacks));
}

bool RegionScreenshotSession::hasOpenMenu(const std::vector<WindowInfo>& list) const {
    for (const WindowInfo& window : list)
        if (window.ownerPID != s_.ownPID && window.layer >= WindowLevel::menu && window.layer < WindowLevel::screenSaver) return true;
    return false;
}

void RegionScreenshotSession::begin(ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks) {
    if (isActive()) return; // a request during a session does nothing
    if (!s_.permission.isGranted()) {
        s_.permission.request();
        s_.permission.presentGuidance();
        if (callbacks.onFinish) callbacks.onFinish({AnnotationResult::cancelled(), std::nullopt, true, 1});
        if (callbacks.onTextCaptured) callbacks.onTextCaptured(std::nullopt);
        return;
    }
    const auto started = std::chrono::steady_clock::now();
    const std::vector<WindowInfo> list = s_.windows.onScreenWindows();
    if (const double ms = millisecondsSince(started); ms > 50) logLine(formatted("window list fetch took %.0fms", ms));
    screens_ = s_.layout.screens();
    if (screens_.empty()) {
        s_.beep();
        return;
    }

    const bool menuOpen = hasOpenMenu(list);
    if (menuOpen || s_.grabsSeeOverlays) {
        // An open menu closes once it loses the keyboard, and a grab that sees
        // our own windows would freeze the veil: freeze before anything shows.
        logLine(menuOpen ? "menu open → synchronous freeze path" : "grabs see the overlays → synchronous freeze path");
        if (s_.grabsSeeOverlays && s_.hideChrome) s_.hideChrome();
        const std::vector<std::optional<CapturedDisplay>> frozen = DisplayGrabber::grab(*s_.displays, DisplayGrabber::targets(screens_));
        const bool any = std::any_of(frozen.begin(), frozen.end(), [](const auto& f) { return f.has_value(); });
        if (!any) {
            s_.beep();
            if (callbacks.onFinish) callbacks.onFinish({AnnotationResult::cancelled(), std::nullopt, true, 1});
            return;
        }
        presentOverlays(mode, std::move(callbacks), frozen, true);
        logLine(formatted("overlays presented +%.0fms", millisecondsSince(started)));
        return;
    }

    const Point mouse = s_.layout.mouseLocation();
    std::size_t active = 0;
    for (std::size_t i = 0; i < screens_.size(); ++i)
        if (screens_[i].frame.contains(mouse)) active = i;
    const auto freeze = EarlyDisplayFreeze::begin(s_.displays, screens_[active], s_.runDetached);
    const std::optional<CapturedDisplay> early = freeze->wait(EarlyDisplayFreeze::Clock::now() + earlyFreezeDeadline);
    logLine(std::string("early freeze ") + (early ? "hit" : "pending") + formatted(" in %.0fms", millisecondsSince(started)));
    std::vector<std::optional<CapturedDisplay>> frozen(screens_.size());
    frozen[active] = early;
    presentOverlays(mode, std::move(callbacks), frozen, false);
    logLine(formatted("overlays presented +%.0fms", millisecondsSince(started)));

    const int generation = generation_;
    const std::weak_ptr<RegionScreenshotSession> weak = weak_from_this();
    if (!early) {
        freeze->onCompletion(s_.queue, s_.runDetached, [weak, generation, active](const std::optional<CapturedDisplay>& captured) {
            auto self = weak.lock();
            if (!self || self->generation_ != generation || self->finished_ || !captured) return;
            if (active < self->overlays_.size() && self->overlays_[active] && !self->overlays_[active]->isFrozen())
                self->overlays_[active]->attachFrozen(*captured);
        });
    }

    // The freeze of every display, off the main thread.
    const std::vector<DisplayGrabber::Target> targets = DisplayGrabber::targets(screens_);
    std::shared_ptr<DisplayCapturing> displays = s_.displays;
    MainQueue& queue = s_.queue;
    s_.runDetached([weak, generation, targets, displays, &queue, started] {
        auto captures = std::make_shared<std::vector<std::optional<CapturedDisplay>>>(DisplayGrabber::grab(*displays, targets));
        queue.async([weak, generation, captures, started] {
            auto self = weak.lock();
            if (!self || self->generation_ != generation || self->finished_) return;
            std::size_t landed = 0;
            for (const auto& c : *captures) landed += c.has_value();
            logLine(formatted("freeze landed in %.0fms", millisecondsSince(started)) + " displays=" + std::to_string(landed) + "/" +
                    std::to_string(captures->size()));
            bool anyFrozen = landed > 0;
            for (const auto& overlay : self->overlays_) anyFrozen = anyFrozen || (overlay && overlay->isFrozen());
            if (!anyFrozen) {
                self->s_.beep();
                self->cancel();
                self->s_.toast("screenshot.freeze.failed", 1.6);
                return;
            }
            self->attachCaptures(*captures);
            self->grantKeyFocus();
        });
    });

    s_.queue.after(keyFocusFallbackSeconds, [weak, generation] {
        auto self = weak.lock();
        if (!self || self->generation_ != generation || self->finished_ || !self->isActive()) return;
        for (const auto& overlay : self->overlays_)
            if (overlay && overlay->isKey()) return;
        logLine("freeze still pending after 2s — granting key focus early");
        self->grantKeyFocus();
    });
}

void RegionScreenshotSession::presentOverlays(ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks,
                                              const std::vector<std::optional<CapturedDisplay>>& frozen, bool menuPath) {
    if (isActive()) return;
    ++generation_;
    finished_ = false;
    const std::weak_ptr<RegionScreenshotSession> weak = weak_from_this();
    // Each way out ends the session first, and only the first one counts.
    auto once = [weak]<typename... Arguments>(std::function<void(Arguments...)> callback) {
        return std::function<void(Arguments...)>([weak, callback](Arguments... arguments) {
            auto self = weak.lock();
            if (!self || self->finished_) return;
            self->finished_ = true;
            // The overlay running this closure goes when the session is
            // dismissed, so what it needs is copied first.
            const std::function<void(Arguments...)> deliver = callback;
            self->dismiss();
            if (deliver) deliver(arguments...);
        });
    };
    // A mode this session did not begin in ends through the session-level callback.
    if (!callbacks.onFinish) callbacks.onFinish = onAnnotationResult;
    if (!callbacks.onTextCaptured) callbacks.onTextCaptured = onTextCaptureRequested;
    if (!callbacks.onScrollRegion) callbacks.onScrollRegion = onScrollCaptureRequested;
    if (!callbacks.onRecordRegion) callbacks.onRecordRegion = onRecordingRequested;
    if (!callbacks.onRegionTranslate) callbacks.onRegionTranslate = onTranslationCardRequested;
    if (!callbacks.onSwitchToAudio) callbacks.onSwitchToAudio = onAudioRecordRequested;
    if (!callbacks.onSwitchToPresentation) callbacks.onSwitchToPresentation = onPresentationRequested;
    RegionOverlayCallbacks wrapped;
    wrapped.onFinish = once(callbacks.onFinish);
    wrapped.onTextCaptured = once(callbacks.onTextCaptured);
    wrapped.onScrollRegion = once(callbacks.onScrollRegion);
    wrapped.onRecordRegion = once(callbacks.onRecordRegion);
    wrapped.onRegionTranslate = once(callbacks.onRegionTranslate);
    wrapped.onSwitchToAudio = once(callbacks.onSwitchToAudio);
    wrapped.onSwitchToPresentation = once(callbacks.onSwitchToPresentation);
    finishAsCancelled_ = [finish = wrapped.onFinish, text = wrapped.onTextCaptured, mode] {
        if (mode == ScreenshotOverlayMode::captureText) text(std::nullopt);
        else finish({AnnotationResult::cancelled(), std::nullopt, true, 1});
    };

    const Point mouse = s_.layout.mouseLocation();
    std::optional<std::size_t> underMouse;
    for (std::size_t i = 0; i < screens_.size(); ++i) {
        RegionOverlayCallbacks forThis = wrapped;
        forThis.onBeganAnnotation = [weak, i] {
            if (auto self = weak.lock()) self->keepOnly(i);
        };
        overlays_.push_back(s_.overlays.make(screens_[i], frozen[i], mode, std::move(forThis)));
        if (screens_[i].frame.contains(mouse)) underMouse = i;
    }
    for (const auto& overlay : overlays_) overlay->show();
    if (underMouse) overlays_[*underMouse]->seedInitialHover();
    // On the normal path the keyboard waits for the freeze, since taking it
    // can stall behind the window server.
    if (menuPath) overlays_[underMouse.value_or(0)]->makeKey();
}

void RegionScreenshotSession::attachCaptures(const std::vector<std::optional<CapturedDisplay>>& captures) {
    for (std::size_t i = 0; i < overlays_.size() && i < captures.size(); ++i) {
        std::unique_ptr<RegionOverlay>& overlay = overlays_[i];
        if (!overlay || overlay->isFrozen()) continue;
        if (captures[i]) {
            overlay->attachFrozen(*captures[i]);
            continue;
        }
        logLine("display " + std::to_string(i + 1) + " failed to freeze — dropping its overlay");
        retire(std::move(overlay));
    }
}

void RegionScreenshotSession::grantKeyFocus() {
    if (finished_) return;
    const Point mouse = s_.layout.mouseLocation();
    RegionOverlay* chosen = nullptr;
    for (std::size_t i = 0; i < overlays_.size(); ++i) {
        if (!overlays_[i]) continue;
        if (!chosen) chosen = overlays_[i].get();
        if (screens_[i].frame.contains(mouse)) {
            chosen = overlays_[i].get();
            break;
        }
    }
    if (chosen) chosen->makeKey();
}

void RegionScreenshotSession::cancel() {
    if (finished_ || !finishAsCancelled_) return;
    std::function<void()> finish = finishAsCancelled_;
    finish();
}

void RegionScreenshotSession::retire(std::unique_ptr<RegionOverlay> overlay) {
    if (!overlay) return;
    overlay->orderOut();
    // An overlay may be in the middle of its own event when it ends the
    // session: it goes once that event is over.
    std::shared_ptr<RegionOverlay> doomed(std::move(overlay));
    s_.queue.async([doomed] {});
}

void RegionScreenshotSession::dismiss() {
    finishAsCancelled_ = nullptr;
    std::vector<std::unique_ptr<RegionOverlay>> overlays = std::move(overlays_);
    overlays_.clear();
    for (auto& overlay : overlays) retire(std::move(overlay));
}

void RegionScreenshotSession::keepOnly(std::size_t index) {
    for (std::size_t i = 0; i < overlays_.size(); ++i)
        if (i != index) retire(std::move(overlays_[i]));
}

} // namespace tosvar
