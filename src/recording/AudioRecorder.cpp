#include "AudioRecorder.h"

#include "AudioTrackFinalizer.h"
#include "CaptureSaveFolder.h"
#include "RecordingDestination.h"

#include <algorithm>
#include <system_error>

namespace tosvar {

AudioRecorder::~AudioRecorder() { ticker_.cancel(); }

void AudioRecorder::setState(State state) {
    state_ = state;
    if (onStateChange) onStateChange();
}

void AudioRecorder::toggle(const AppSettings& settings) {
    if (state_ == State::idle) {
        start(settings);
    } else {
        stop(Ending::keep);
    }
}

void AudioRecorder::start(const AppSettings& settings) {
    if (state_ != State::idle) return;
    maxSeconds_ = static_cast<double>(std::max<std::int64_t>(settings.audioRecordingMaxMinutes, 0) * 60);
    waveform_ = WaveformAccumulator(WaveformAccumulator::defaultCapacity);
    lastFinished_.reset();
    const std::filesystem::path url =
        s_.temporaryDirectory /
        RecordingDestination::audioFileName(s_.now(), "mov", RecordingTimeZone::current());

    std::shared_ptr<AudioRecordingEngine> engine = s_.makeEngine();
    std::weak_ptr<AudioRecorder> weak = weak_from_this();
    engine->onAudioLevel = [weak, &main = s_.mainQueue](float level) {
        main.async([weak, level] {
            auto self = weak.lock();
            if (!self || self->state_ == State::idle) return;
            self->waveform_.add(level);
            if (self->onAudioLevel) self->onAudioLevel(level);
        });
    };
    engine_ = engine;
    setState(State::recording);
    startTicking();

    const AudioWriter::Quality quality = AudioWriter::quality(settings.audioRecordingQuality);
    s_.runDetached([weak, engine, url, quality, systemAudio = settings.audioRecordingCapturesSystemAudio,
                    device = settings.audioRecordingInputDeviceID, &main = s_.mainQueue] {
        const std::optional<Error> error = engine->start(url, quality, true, systemAudio, device);
        if (!error) return;
        main.async([weak, engine, error] {
            if (auto self = weak.lock()) self->failStart(engine, *error);
        });
    });
}

void AudioRecorder::failStart(const std::shared_ptr<AudioRecordingEngine>& engine, const Error& error) {
    if (engine_ == engine) {
        ticker_.cancel();
        engine_.reset();
        setState(State::idle);
    }
    if (onFailure) onFailure(error.message);
}

void AudioRecorder::startTicking() {
    ticker_.cancel();
    std::weak_ptr<AudioRecorder> weak = weak_from_this();
    ticker_ = s_.mainQueue.every(1.0, [weak] {
        if (auto self = weak.lock()) self->tick();
    });
    if (onTick) onTick(engine_->capturedDuration());
}

void AudioRecorder::tick() {
    if (!engine_) return;
    const double captured = engine_->capturedDuration();
    if (onTick) onTick(captured);
    if (maxSeconds_ > 0 && captured >= maxSeconds_) stop(Ending::keep);
}

void AudioRecorder::togglePause() {
    if (!engine_) return;
    if (state_ == State::recording) {
        engine_->pause();
        ticker_.cancel();
        setState(State::paused);
    } else if (state_ == State::paused) {
        engine_->resume();
        setState(State::recording);
        startTicking();
    }
}

void AudioRecorder::stop(Ending ending) {
    if (state_ == State::idle || !engine_) return;
    ticker_.cancel();
    const double duration = engine_->capturedDuration();
    std::vector<float> snapshot = waveform_.snapshot();
    std::shared_ptr<AudioRecordingEngine> engine = std::move(engine_);
    engine_.reset();
    setState(State::idle);

    if (ending == Ending::discard) {
        s_.runDetached([engine] { engine->cancel(); });
        return;
    }
    finishKeeping(std::move(engine), std::move(snapshot), duration);
}

void AudioRecorder::finishKeeping(std::shared_ptr<AudioRecordingEngine> engine, std::vector<float> waveform,
                                  double duration) {
    Expected<CaptureSaveFolder::Access> access = CaptureSaveFolder::captures().beginAccess(s_.defaults, s_.files);
    if (!access) {
        s_.runDetached([engine] { engine->cancel(); });
        if (onFailure) onFailure(access.error().message);
        return;
    }
    const std::filesystem::path destination =
        access->url / RecordingDestination::audioFileName(s_.now(), "m4a", RecordingTimeZone::current());
    std::weak_ptr<AudioRecorder> weak = weak_from_this();
    s_.runDetached([weak, engine, destination, access = *access, waveform = std::move(waveform), duration,
                    &processing = s_.processing, &main = s_.mainQueue]() mutable {
        Expected<std::filesystem::path> movie = engine->stop();
        std::optional<Error> error;
        if (movie) {
            error = AudioTrackFinalizer::finalize(processing, *movie, destination);
            if (!error) {
                std::error_code ignored;
                std::filesystem::remove(*movie, ignored);
            }
        } else {
            error = movie.error();
        }
        main.async([weak, error, destination, access, waveform = std::move(waveform), duration]() mutable {
            if (access.stop) access.stop();
            auto self = weak.lock();
            if (!self) return;
            if (error) {
                if (self->onFailure) self->onFailure(error->message);
                return;
            }
            self->lastFinished_ = Finished{destination, std::move(waveform), duration};
            if (self->onFinished) self->onFinished(destination);
        });
    });
}

void AudioRecorder::confirmDiscard(std::function<void(bool discarded)> completion) {
    if (state_ == State::idle) {
        completion(false);
        return;
    }
    if (state_ == State::recording) togglePause();
    AlertRequest request;
    request.style = AlertStyle::informational;
    request.message = {"audio.discard.title", {}};
    request.informativeText = {"audio.discard.body", {}};
    request.buttons = {{"audio.discard.confirm", {}}, {"common.cancel", {}}};
    const bool discard = s_.alerts.run(request, nullptr).buttonIndex == 0;
    if (discard) stop(Ending::discard);
    completion(discard);
}

std::optional<std::vector<float>> AudioRecorder::waveform(const std::filesystem::path& file) const {
    if (!lastFinished_ || lastFinished_->url != file) return std::nullopt;
    return lastFinished_->waveform;
}

std::optional<double> AudioRecorder::duration(const std::filesystem::path& file) const {
    if (!lastFinished_ || lastFinished_->url != file) return std::nullopt;
    return lastFinished_->duration;
}

std::string AudioRecorder::menuTitleKey(State state) {
    return state == State::idle ? "menu.recordAudio" : "menu.recordAudioStop";
}

} // namespace tosvar
