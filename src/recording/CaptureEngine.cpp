#include "CaptureEngine.h"

#include "Log.h"
#include "RecordingError.h"
#include "RecordingGeometry.h"
#include "Uuid.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace tosvar {

// What the sample queue owns while the capture runs.
struct CaptureEngine::Intake {
    std::unique_ptr<MovieWriter> writer;
    bool isPaused = false;
    AudioLevelThrottle levels;
    std::function<void(float)> onAudioLevel;

    void frame(const VideoFrame& frame) {
        if (isPaused || !writer) return;
        writer->append(frame);
    }
    void systemAudio(const AudioChunk& chunk) {
        if (isPaused || !writer) return;
        writer->appendSystemAudio(chunk);
        reportLevel(chunk);
    }
    void microphone(const AudioChunk& chunk) {
        if (isPaused || !writer) return;
        writer->appendMicrophone(chunk);
        reportLevel(chunk);
    }
    void reportLevel(const AudioChunk& chunk) {
        const std::optional<float> level = levels.add(AudioLevel::peakLevel(chunk.samples), chunk.time);
        if (level && onAudioLevel) onAudioLevel(*level);
    }
};

namespace {

std::string rectText(const Rect& r) {
    char text[96];
    std::snprintf(text, sizeof text, "(%.0f, %.0f, %.0f, %.0f)", r.minX(), r.minY(), r.width(), r.height());
    return text;
}

bool contains(const std::vector<std::uint32_t>& ids, std::uint32_t id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

} // namespace

std::shared_ptr<CaptureEngine> CaptureEngine::make(CaptureEngineServices services, int fps, bool showsCursor,
                                                   bool capturesSystemAudio, bool capturesMic) {
    return std::shared_ptr<CaptureEngine>(
        new CaptureEngine(std::move(services), fps, showsCursor, capturesSystemAudio, capturesMic));
}

CaptureEngine::CaptureEngine(CaptureEngineServices services, int fps, bool showsCursor, bool capturesSystemAudio,
                             bool capturesMic)
    : services_(std::move(services)), fps_(std::max(fps, 1)), showsCursor_(showsCursor),
      capturesSystemAudio_(capturesSystemAudio), capturesMic_(capturesMic),
      sampleQueue_(std::make_shared<SerialQueue>("app.vemla.recording.samples")),
      intake_(std::make_shared<Intake>()) {}

CaptureEngine::~CaptureEngine() = default;

std::optional<ContentFilter> CaptureEngine::filter(const FilterRecipe& recipe,
                                                   const std::vector<std::uint32_t>& including,
                                                   const ShareableContent& content, std::int64_t ownProcessID) {
    if (const auto* display = std::get_if<DisplayRecipe>(&recipe)) {
        if (!content.display(display->displayFrame)) return std::nullopt;
        ContentFilter filter;
        filter.displayFrame = display->displayFrame;
        filter.excludedProcesses.push_back(ownProcessID);
        for (const ShareableWindow& window : content.windows)
            if (contains(including, window.id)) filter.windows.push_back(window.id);
        return filter;
    }
    const auto& windows = std::get<WindowsRecipe>(recipe);
    if (!content.display(windows.displayFrame)) return std::nullopt;
    ContentFilter filter;
    filter.displayFrame = windows.displayFrame;
    filter.kind = ContentFilter::Kind::windows;
    for (const ShareableWindow& window : content.windows)
        if (contains(windows.windowIDs, window.id) || contains(including, window.id)) filter.windows.push_back(window.id);
    if (filter.windows.empty()) return std::nullopt;
    return filter;
}

void CaptureEngine::start(const RecordingTarget& target, std::function<void(std::optional<Error>)> completion) {
    intake_->onAudioLevel = onAudioLevel;
    isStarting_ = true;
    services_.runDetached([self = shared_from_this(), target, completion = std::move(completion)]() mutable {
        auto started = std::make_shared<Expected<Running>>(self->startCapture(target));
        self->services_.mainQueue.async([self, started, completion = std::move(completion)] {
            self->isStarting_ = false;
            if (*started) self->running_ = std::move(*started).value();
            completion(*started ? std::nullopt : std::optional<Error>(started->error()));
            if (self->afterStart_) std::exchange(self->afterStart_, nullptr)();
        });
    });
}

Expected<CaptureEngine::Running> CaptureEngine::startCapture(const RecordingTarget& target) {
    const bool micEnabled = capturesMic_ && services_.audio.hasDefaultMicrophone();

    Expected<ShareableContent> content = services_.screen.shareableContent();
    if (!content) return content.error();
    const ShareableDisplay* display = content->display(target.displayFrame);
    FilterRecipe recipe = DisplayRecipe{target.displayFrame};
    if (target.windowID) {
        if (!content->window(*target.windowID)) return RecordingError::windowNotFound();
        recipe = WindowsRecipe{target.displayFrame, {*target.windowID}};
    } else if (!display) {
        return RecordingError::displayNotFound();
    }

    const Size points = target.sourceRect ? target.sourceRect->size : target.displayFrame.size;
    const int width = RecordingGeometry::evenPixels(points.width, target.scale);
    const int height = RecordingGeometry::evenPixels(points.height, target.scale);
    const std::optional<ContentFilter> streamFilter = filter(recipe, {}, *content, services_.ownProcessID);
    if (!streamFilter) return RecordingError::displayNotFound();
    const StreamConfiguration configuration{.width = width,
                                            .height = height,
                                            .sourceRect = target.sourceRect,
                                            .fps = fps_,
                                            .showsCursor = showsCursor_,
                                            .queueDepth = 6};
    char line[160];
    std::snprintf(line, sizeof line, "recording capture: %dx%d @%dfps, scale %g, sourceRect %s", width, height, fps_,
                  target.scale, target.sourceRect ? rectText(*target.sourceRect).c_str() : "full display");
    logLine(line);

    const std::filesystem::path url = services_.temporaryDirectory / (Uuid::random().string() + ".mov");
    Expected<std::unique_ptr<MovieWriter>> writer = MovieWriter::open(
        services_.makeEncoder, url, width, height, fps_, capturesSystemAudio_, micEnabled);
    if (!writer) return writer.error();
    // Set before anything can deliver a sample; the queue takes it from here.
    intake_->writer = std::move(writer).value();
    const auto abandon = [this] {
        intake_->writer->cancel();
        intake_->writer.reset();
    };

    std::weak_ptr<CaptureEngine> weak = weak_from_this();
    ScreenStreamHandlers handlers{
        .onFrame = [queue = sampleQueue_, intake = intake_](VideoFrame frame) {
            queue->async([intake, frame = std::move(frame)] { intake->frame(frame); });
        },
        .onStopped = [weak, &main = services_.mainQueue](const Error& error) {
            main.async([weak, error] {
                if (auto self = weak.lock(); self && self->onRuntimeError) self->onRuntimeError(error);
            });
        }};
    Expected<std::unique_ptr<ScreenStream>> stream =
        services_.screen.startStream(*streamFilter, configuration, std::move(handlers));
    if (!stream) {
        abandon();
        return stream.error();
    }
    Running running{std::move(stream).value(), configuration, recipe, nullptr, nullptr};

    if (capturesSystemAudio_) {
        Expected<std::unique_ptr<AudioCaptureStream>> sound = services_.audio.start(
            {.source = AudioSourceKind::systemAudio, .deviceID = std::nullopt, .sampleRate = 48000, .channels = 2},
            [queue = sampleQueue_, intake = intake_](AudioChunk chunk) {
                queue->async([intake, chunk = std::move(chunk)] { intake->systemAudio(chunk); });
            });
        if (!sound) {
            running.stream->stop();
            abandon();
            return sound.error();
        }
        running.systemAudio = std::move(sound).value();
    }
    if (micEnabled) {
        // A microphone that does not come up leaves the recording without it.
        Expected<std::unique_ptr<AudioCaptureStream>> mic = services_.audio.start(
            {.source = AudioSourceKind::microphone, .deviceID = std::nullopt, .sampleRate = 48000, .channels = 2},
            [queue = sampleQueue_, intake = intake_](AudioChunk chunk) {
                queue->async([intake, chunk = std::move(chunk)] { intake->microphone(chunk); });
            });
        if (mic) {
            running.microphone = std::move(mic).value();
        } else {
            logLine("recording microphone unavailable: " + mic.error().message);
        }
    }
    return running;
}

void CaptureEngine::pause() {
    sampleQueue_->async([intake = intake_] { intake->isPaused = true; });
}

void CaptureEngine::resume() {
    sampleQueue_->async([intake = intake_] {
        intake->isPaused = false;
        if (intake->writer) intake->writer->markResumeBoundary();
    });
}

void CaptureEngine::updateSourceRect(const Rect& rect) {
    if (!running_) return;
    pendingSourceRect_ = rect;
    applyPendingSourceRect();
}

void CaptureEngine::applyPendingSourceRect() {
    if (isApplyingSourceRect_ || !pendingSourceRect_ || !running_) return;
    isApplyingSourceRect_ = true;
    running_->configuration.sourceRect = *pendingSourceRect_;
    pendingSourceRect_.reset();
    services_.runDetached(
        [self = shared_from_this(), stream = running_->stream, configuration = running_->configuration] {
            const std::optional<Error> error = stream->updateConfiguration(configuration);
            self->services_.mainQueue.async([self, error] {
                if (error) logLine("recording sourceRect update failed: " + error->message);
                self->isApplyingSourceRect_ = false;
                self->applyPendingSourceRect();
            });
        });
}

void CaptureEngine::includeOwnWindows(std::vector<std::uint32_t> ids,
                                      std::function<void(std::optional<Error>)> completion) {
    if (!running_ || ids.empty()) {
        completion(std::nullopt);
        return;
    }
    admitWindows(std::move(ids), false, std::move(completion));
}

void CaptureEngine::admitWindows(std::vector<std::uint32_t> ids, bool retried,
                                 std::function<void(std::optional<Error>)> completion) {
    services_.runDetached([self = shared_from_this(), ids = std::move(ids), retried,
                           completion = std::move(completion)]() mutable {
        auto content = std::make_shared<Expected<ShareableContent>>(self->services_.screen.shareableContent());
        self->services_.mainQueue.async([self, content, ids = std::move(ids), retried,
                                         completion = std::move(completion)]() mutable {
            if (!*content) {
                completion(content->error());
                return;
            }
            const auto matched = std::count_if(ids.begin(), ids.end(),
                                               [&](std::uint32_t id) { return (*content)->window(id) != nullptr; });
            if (static_cast<std::size_t>(matched) < ids.size() && !retried) {
                // A window just ordered in may not be listed yet.
                self->services_.mainQueue.after(0.12, [self, ids = std::move(ids),
                                                       completion = std::move(completion)]() mutable {
                    self->admitWindows(std::move(ids), true, std::move(completion));
                });
                return;
            }
            const std::optional<ContentFilter> admitted =
                self->running_ ? filter(self->running_->recipe, ids, **content, self->services_.ownProcessID)
                               : std::nullopt;
            if (!admitted) {
                completion(std::nullopt);
                return;
            }
            const std::string counts = std::to_string(matched) + "/" + std::to_string(ids.size());
            self->services_.runDetached([self, stream = self->running_->stream, admitted = *admitted, counts,
                                         completion = std::move(completion)]() mutable {
                const std::optional<Error> error = stream->updateContentFilter(admitted);
                self->services_.mainQueue.async([error, counts, completion = std::move(completion)] {
                    if (!error) logLine("recording filter now admits " + counts + " overlay windows");
                    completion(error);
                });
            });
        });
    });
}

void CaptureEngine::stop(std::function<void(Expected<Result>)> completion) {
    shutDown([self = shared_from_this(), completion = std::move(completion)](std::unique_ptr<MovieWriter> writer) {
        if (!writer) {
            self->services_.mainQueue.async([completion] { completion(RecordingError::noFramesCaptured()); });
            return;
        }
        const std::optional<Error> error = writer->finish();
        const Result result{writer->outputURL(), writer->capturedDuration(), writer->appendedFrames(),
                            writer->droppedFrames()};
        if (!error) {
            char line[128];
            std::snprintf(line, sizeof line, "recording finished: %d frames, %d dropped, %.2fs", result.appendedFrames,
                          result.droppedFrames, result.duration);
            logLine(line);
        }
        self->services_.mainQueue.async([completion, error, result] {
            if (error) {
                completion(*error);
            } else {
                completion(result);
            }
        });
    });
}

void CaptureEngine::cancel(std::function<void()> completion) {
    shutDown([self = shared_from_this(), completion = std::move(completion)](std::unique_ptr<MovieWriter> writer) {
        if (writer) writer->cancel();
        self->services_.mainQueue.async(completion);
    });
}

void CaptureEngine::shutDown(std::function<void(std::unique_ptr<MovieWriter>)> then) {
    if (isStarting_) {
        // What is being started is stopped as soon as it stands.
        afterStart_ = [self = shared_from_this(), then = std::move(then)]() mutable { self->shutDown(std::move(then)); };
        return;
    }
    std::optional<Running> running = std::move(running_);
    running_.reset();
    pendingSourceRect_.reset();
    auto stopping = std::make_shared<std::optional<Running>>(std::move(running));
    services_.runDetached([queue = sampleQueue_, intake = intake_, stopping, then = std::move(then)] {
        if (*stopping) {
            if ((*stopping)->stream) (*stopping)->stream->stop();
            if ((*stopping)->systemAudio) (*stopping)->systemAudio->stop();
            if ((*stopping)->microphone) (*stopping)->microphone->stop();
        }
        // Once this has run, no sample is in flight any more.
        std::unique_ptr<MovieWriter> writer;
        queue->sync([&] { writer = std::move(intake->writer); });
        then(std::move(writer));
    });
}

} // namespace tosvar
