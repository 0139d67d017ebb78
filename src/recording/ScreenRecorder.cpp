#include "ScreenRecorder.h"

#include "CaptureSaveFolder.h"
#include "GIFExporter.h"
#include "Log.h"
#include "RecordingAudioMixer.h"
#include "RecordingDestination.h"
#include "RecordingGeometry.h"

#include <algorithm>

namespace tosvar {

ScreenRecorder::~ScreenRecorder() {
    countdown_.cancel();
    ticker_.cancel();
    follower_.cancel();
}

void ScreenRecorder::setState(State state) {
    state_ = state;
    if (onStateChange) onStateChange();
}

void ScreenRecorder::beginInteractive() {
    if (state_ == State::idle && s_.pickTarget) s_.pickTarget();
}

void ScreenRecorder::arm(const RecordingTarget& target, RecordingFormat format, bool pinAfterGIF) {
    if (state_ != State::idle) return;
    logLine(std::string("gifPin arm: format=") + (format == RecordingFormat::gif ? "gif" : "mp4") + " pin=" + (pinAfterGIF ? "true" : "false"));
    format_ = format;
    pinAfterGIF_ = pinAfterGIF;
    settings_ = s_.settings();
    target_ = target;
    if (settings_.recordingScale == 1) target_->scale = 1;
    if (settings_.recordingCountdown < 1) return startEngine();
    setState(State::countingDown);
    countDown(static_cast<int>(std::max<std::int64_t>(settings_.recordingCountdown, 1)));
}

std::optional<Rect> ScreenRecorder::screenRect() const {
    if (!target_) return std::nullopt;
    const Rect& frame = target_->displayFrame;
    const Rect source = target_->sourceRect.value_or(Rect(0, 0, frame.width(), frame.height()));
    return Rect(frame.minX() + source.minX(), frame.maxY() - source.maxY(), source.width(), source.height());
}

void ScreenRecorder::countDown(int remaining) {
    if (s_.chrome) s_.chrome->showCountdown(*screenRect(), remaining);
    if (remaining == 0) return startEngine();
    std::weak_ptr<ScreenRecorder> weak = weak_from_this();
    countdown_ = s_.mainQueue.after(1.0, [weak, remaining] {
        if (auto self = weak.lock(); self && self->state_ == State::countingDown) self->countDown(remaining - 1);
    });
}

void ScreenRecorder::abortCountdown() {
    if (state_ != State::countingDown) return;
    countdown_.cancel();
    if (s_.chrome) s_.chrome->close();
    target_.reset();
    setState(State::idle);
}

void ScreenRecorder::startEngine() {
    setState(State::starting);
    engine_ = s_.makeEngine(settings_);
    std::weak_ptr<ScreenRecorder> weak = weak_from_this();
    // Levels come on the sample queue; the bar's meter rises at once and falls gently.
    engine_->onAudioLevel = [weak, &main = s_.mainQueue](float level) {
        main.async([weak, level] {
            auto self = weak.lock();
            if (!self || !self->s_.chrome || self->state_ != State::recording) return;
            self->audioLevel_ = std::max(self->audioLevel_ * 0.72f, level);
            self->s_.chrome->setAudioLevel(self->audioLevel_);
        });
    };
    engine_->onRuntimeError = [weak](const Error& error) {
        logLine("recording stream died: " + error.message);
        if (auto self = weak.lock()) self->stopAndDeliver();
    };
    engine_->start(*target_, [weak, engine = engine_](std::optional<Error> error) {
        auto self = weak.lock();
        if (!self || self->engine_ != engine) return;
        if (error) {
            logLine("recording start failed: " + error->message);
            if (self->s_.chrome) self->s_.chrome->close();
            self->engine_.reset();
            self->target_.reset();
            self->setState(State::idle);
            if (self->s_.toast) self->s_.toast("record.toast.startFailed", {});
            return;
        }
        self->startedAt_ = self->s_.mainQueue.now();
        self->audioLevel_ = 0;
        self->pausedAccumulated_ = 0;
        self->pauseBegan_.reset();
        self->setState(State::recording);
        if (self->s_.chrome) {
            RecordingChrome::Actions actions{.stop = [weak] { if (auto r = weak.lock()) r->stopAndDeliver(); },
                                             .togglePause = [weak] { if (auto r = weak.lock()) r->togglePause(); },
                                             .cancel = [weak] { if (auto r = weak.lock()) r->cancelRecording(); }};
            actions.showsAudioMeter = self->format_ == RecordingFormat::mp4 &&
                                      (self->settings_.recordingCaptureSystemAudio || self->settings_.recordingCaptureMic);
            if (self->target_->sourceRect && !self->target_->windowID) {
                actions.moveBegan = [weak] { if (auto r = weak.lock()) r->beginRegionMove(); };
                actions.move = [weak](Point offset) { if (auto r = weak.lock()) r->moveRegion(offset); };
            }
            self->s_.chrome->showRecording(*self->screenRect(), std::move(actions));
        }
        self->startFollowingWindow();
        self->ticker_ = self->s_.mainQueue.every(0.5, [weak] {
            auto recorder = weak.lock();
            if (!recorder) return;
            const double elapsed = recorder->currentElapsed();
            if (recorder->s_.chrome) recorder->s_.chrome->setElapsed(elapsed);
            if (recorder->onTick) recorder->onTick(elapsed);
        });
    });
}

double ScreenRecorder::currentElapsed() const {
    if (!startedAt_) return 0;
    const double now = s_.mainQueue.now();
    return std::max(0.0, now - *startedAt_ - pausedAccumulated_ - (pauseBegan_ ? now - *pauseBegan_ : 0));
}

void ScreenRecorder::togglePause() {
    if (!engine_) return;
    if (state_ == State::paused) {
        engine_->resume();
        pausedAccumulated_ += s_.mainQueue.now() - *pauseBegan_;
        pauseBegan_.reset();
        setState(State::recording);
    } else if (state_ == State::recording) {
        engine_->pause();
        pauseBegan_ = s_.mainQueue.now();
        setState(State::paused);
    } else {
        return;
    }
    if (s_.chrome) s_.chrome->setPaused(state_ == State::paused);
}

void ScreenRecorder::stopAndDeliver() {
    if (!engine_ || (state_ != State::recording && state_ != State::paused)) return;
    finish(std::move(engine_), true);
}

void ScreenRecorder::cancelRecording() {
    if (!engine_ || (state_ != State::recording && state_ != State::paused)) return;
    finish(std::move(engine_), false);
}

void ScreenRecorder::beginRegionMove() {
    if (engine_ && target_ && target_->sourceRect && !target_->windowID) moveStart_ = target_->sourceRect;
}

void ScreenRecorder::moveRegion(Point offset) {
    if (!engine_ || !moveStart_ || !target_ || (state_ != State::recording && state_ != State::paused)) return;
    const Rect& frame = target_->displayFrame;
    const Rect moved = RecordingGeometry::movedRegion(*moveStart_, offset, Rect(0, 0, frame.width(), frame.height()));
    if (target_->sourceRect == moved) return;
    target_->sourceRect = moved;
    engine_->updateSourceRect(moved);
    if (s_.chrome) s_.chrome->follow(*screenRect());
}

void ScreenRecorder::startFollowingWindow() {
    if (!target_ || !target_->windowID || !s_.windowFrame) return;
    const std::optional<Rect> start = s_.windowFrame(*target_->windowID);
    if (!start) return;
    const Rect& frame = target_->displayFrame;
    followStart_ = FollowStart{*start, target_->sourceRect.value_or(Rect(0, 0, frame.width(), frame.height()))};
    followMisses_ = 0;
    std::weak_ptr<ScreenRecorder> weak = weak_from_this();
    follower_ = s_.mainQueue.every(0.25, [weak] {
        if (auto self = weak.lock()) self->followWindow();
    });
}

void ScreenRecorder::followWindow() {
    if (!engine_ || !followStart_ || !target_) return;
    const std::optional<Rect> now = s_.windowFrame(*target_->windowID);
    if (!now) {
        if (++followMisses_ < 2) return;
        logLine("recorded window closed; finishing with what was captured");
        return stopAndDeliver();
    }
    followMisses_ = 0;
    const Rect& frame = target_->displayFrame;
    const Rect moved = RecordingGeometry::movedRegion(
        followStart_->source, {now->minX() - followStart_->window.minX(), now->minY() - followStart_->window.minY()},
        Rect(0, 0, frame.width(), frame.height()));
    if (target_->sourceRect == moved) return;
    target_->sourceRect = moved;
    engine_->updateSourceRect(moved);
    if (s_.chrome) s_.chrome->follow(*screenRect());
}

void ScreenRecorder::finish(std::shared_ptr<CaptureEngine> engine, bool keep) {
    engine_.reset();
    ticker_.cancel();
    follower_.cancel();
    followStart_.reset();
    moveStart_.reset();
    if (s_.chrome) s_.chrome->close();
    setState(State::stopping);
    std::weak_ptr<ScreenRecorder> weak = weak_from_this();
    if (!keep) {
        engine->cancel([weak] {
            if (auto self = weak.lock()) self->setState(State::idle);
        });
        return;
    }
    engine->stop([weak](Expected<CaptureEngine::Result> result) {
        auto self = weak.lock();
        if (!self) return;
        if (!result) return self->failed("recording finish failed: " + result.error().message, "record.toast.failed");
        self->deliver(*result);
    });
}

void ScreenRecorder::failed(const std::string& logged, const std::string& toastKey) {
    logLine(logged);
    if (s_.beep) s_.beep();
    if (s_.toast) s_.toast(toastKey, {});
    target_.reset();
    setState(State::idle);
}

void ScreenRecorder::deliver(const CaptureEngine::Result& movie) {
    Expected<CaptureSaveFolder::Access> access = CaptureSaveFolder::captures().beginAccess(s_.defaults, s_.files);
    if (!access) return failed("recording delivery failed: " + access.error().message, "record.toast.failed");
    const bool gif = format_ == RecordingFormat::gif;
    const auto named = [&](const char* extension) {
        return access->url / RecordingDestination::fileName(s_.now(), extension, RecordingTimeZone::current());
    };
    const std::filesystem::path destination = named(gif ? "gif" : "mp4");
    const std::filesystem::path fallback = named("mov");
    // The GIF is no wider than the region in points.
    const GIFExporter::Settings gifSettings{static_cast<int>(settings_.recordingGIFFPS),
                                            target_ ? static_cast<int>(target_->sourceRect.value_or(target_->displayFrame).width()) : 10000};
    std::weak_ptr<ScreenRecorder> weak = weak_from_this();
    if (gif && s_.chrome) s_.chrome->showExportProgress(0);
    s_.runDetached([weak, movie, gif, destination, fallback, gifSettings, access = *access, &processing = s_.processing, &pool = s_.pool,
                    &main = s_.mainQueue] {
        std::optional<Error> error;
        std::optional<std::filesystem::path> delivered;
        bool keptAsMovie = false;
        std::error_code ignored;
        if (gif) {
            // The progress reaches the chrome on the main thread, at most once a percent.
            auto lastPercent = std::make_shared<int>(-1);
            error = GIFExporter::exportMovie(processing, movie.url, destination, gifSettings, pool, [&main, weak, lastPercent](double share) {
                const int percent = static_cast<int>(share * 100);
                if (percent == *lastPercent) return;
                *lastPercent = percent;
                main.async([weak, share] {
                    if (auto self = weak.lock(); self && self->s_.chrome) self->s_.chrome->showExportProgress(share);
                });
            });
            if (!error) {
                delivered = destination;
                std::filesystem::remove(movie.url, ignored);
            } else if (std::filesystem::rename(movie.url, fallback, ignored); !ignored) {
                keptAsMovie = true;
            }
        } else {
            Expected<std::filesystem::path> mixed = RecordingAudioMixer::mixIfNeeded(processing, movie.url);
            const std::filesystem::path source = mixed ? *mixed : movie.url;
            if (std::optional<Error> remux = MovieRemuxer::remuxToMP4(processing, source, destination)) {
                logLine("MP4 remux failed, delivering .mov: " + remux->message);
                std::filesystem::rename(source, fallback, ignored);
                if (!ignored) delivered = fallback;
                else error = Error{ignored.message()};
            } else {
                delivered = destination;
                std::filesystem::remove(source, ignored);
            }
            if (mixed && *mixed != movie.url) std::filesystem::remove(movie.url, ignored);
        }
        main.async([weak, error, delivered, keptAsMovie, fallback, access, gif, duration = movie.duration] {
            if (access.stop) access.stop();
            auto self = weak.lock();
            if (!self) return;
            if (gif && self->s_.chrome) self->s_.chrome->showExportProgress(1);
            if (!delivered) {
                if (keptAsMovie) {
                    logLine("GIF export failed: " + (error ? error->message : std::string("unknown")));
                    if (self->onDeliverFile) self->onDeliverFile(fallback);
                    return self->failed("recording kept as a movie: " + fallback.string(), "record.toast.gifFailed");
                }
                return self->failed("recording delivery failed: " + (error ? error->message : std::string("unknown")), "record.toast.failed");
            }
            if (self->pinAfterGIF_ && self->target_ && self->onPinCapture && delivered->extension() == ".gif")
                self->onPinCapture(*delivered, self->target_->sourceRect.value_or(self->target_->displayFrame));
            if (self->onDeliverFile) self->onDeliverFile(*delivered);
            if (self->s_.toast) self->s_.toast("record.toast.saved", {RecordingDestination::durationString(duration)});
            self->target_.reset();
            self->setState(State::idle);
        });
    });
}

} // namespace tosvar
