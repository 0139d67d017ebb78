#pragma once

#include "AudioCapturing.h"
#include "MovieEncoding.h"
#include "MovieFileProcessing.h"
#include "ScreenStreaming.h"

#include <deque>
#include <fstream>
#include <map>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tosvar::fakes {

using namespace std::chrono_literals;

// What a fake encoder was given; shared with the test, which keeps it after
// the writer that owns the encoder is gone.
struct EncodedMovie {
    std::mutex mutex;
    MovieEncoderSettings settings;
    std::vector<bool> refusedTracks;             // audio tracks the encoder "could not set up"
    bool videoReady = true;
    bool audioReady = true;
    std::vector<MediaTime> videoTimes;
    std::vector<std::pair<std::size_t, MediaTime>> audioTimes;
    std::vector<std::int64_t> audioFrames;
    std::optional<Error> finishError;
    bool finished = false;
    bool cancelled = false;

    std::vector<MediaTime> audioTimesOf(std::size_t track) {
        const std::lock_guard lock(mutex);
        std::vector<MediaTime> times;
        for (const auto& [t, time] : audioTimes)
            if (t == track) times.push_back(time);
        return times;
    }
};

class Encoder final : public MovieEncoding {
public:
    explicit Encoder(std::shared_ptr<EncodedMovie> movie) : movie_(std::move(movie)) {}
    bool hasAudioTrack(std::size_t track) const override {
        return track < movie_->settings.audioTracks.size() &&
               (track >= movie_->refusedTracks.size() || !movie_->refusedTracks[track]);
    }
    bool isReadyForVideo() const override { return movie_->videoReady; }
    bool appendVideo(const ImageBuffer&, MediaTime time) override {
        const std::lock_guard lock(movie_->mutex);
        movie_->videoTimes.push_back(time);
        return true;
    }
    bool isReadyForAudio(std::size_t) const override { return movie_->audioReady; }
    bool appendAudio(std::size_t track, const AudioChunk& chunk, MediaTime time) override {
        const std::lock_guard lock(movie_->mutex);
        movie_->audioTimes.emplace_back(track, time);
        movie_->audioFrames.push_back(chunk.frameCount());
        return true;
    }
    std::optional<Error> finish() override {
        movie_->finished = true;
        return movie_->finishError;
    }
    void cancel() override { movie_->cancelled = true; }

private:
    std::shared_ptr<EncodedMovie> movie_;
};

// Makes fake encoders and keeps what each was given, in order.
struct Encoders {
    std::vector<std::shared_ptr<EncodedMovie>> movies;
    std::vector<bool> refusedTracks;
    std::optional<Error> openError;

    MovieEncoderFactory factory() {
        return [this](const MovieEncoderSettings& settings) -> Expected<std::unique_ptr<MovieEncoding>> {
            if (openError) return *openError;
            auto movie = std::make_shared<EncodedMovie>();
            movie->settings = settings;
            movie->refusedTracks = refusedTracks;
            movies.push_back(movie);
            return std::unique_ptr<MovieEncoding>(new Encoder(movie));
        };
    }
    EncodedMovie& last() { return *movies.back(); }
};

inline VideoFrame frameAt(MediaTime time) {
    MutableImage image(4, 4, PixelOrder::bgra);
    return {std::move(image).freeze(), time};
}

inline AudioChunk chunkAt(MediaTime time, float level = 0.25f, int frames = 960, int channels = 2) {
    AudioChunk chunk;
    chunk.samples.assign(static_cast<std::size_t>(frames * channels), level);
    chunk.channels = channels;
    chunk.time = time;
    return chunk;
}

struct Stream final : ScreenStream {
    std::mutex mutex;
    ContentFilter filter;
    StreamConfiguration configuration;
    ScreenStreamHandlers handlers;
    std::vector<StreamConfiguration> configurationUpdates;
    std::vector<ContentFilter> filterUpdates;
    std::shared_ptr<bool> stopped = std::make_shared<bool>(false); // outlives the stream

    std::optional<Error> updateConfiguration(const StreamConfiguration& c) override {
        const std::lock_guard lock(mutex);
        configurationUpdates.push_back(c);
        return std::nullopt;
    }
    std::optional<Error> updateContentFilter(const ContentFilter& f) override {
        const std::lock_guard lock(mutex);
        filterUpdates.push_back(f);
        return std::nullopt;
    }
    void stop() override { *stopped = true; }
    void deliver(MediaTime time) { handlers.onFrame(frameAt(time)); }
};

struct Screen final : ScreenStreaming {
    ShareableContent content;
    std::vector<ShareableContent> laterContents; // answers after the first, in turn
    int contentRequests = 0;
    std::optional<Error> startError;
    Stream* stream = nullptr; // the last one started, owned by the engine while it runs
    std::shared_ptr<bool> streamStopped; // the last one's; read it after a stop

    Expected<ShareableContent> shareableContent() override {
        ++contentRequests;
        if (contentRequests > 1 && !laterContents.empty()) {
            ShareableContent next = laterContents.front();
            if (laterContents.size() > 1) laterContents.erase(laterContents.begin());
            return next;
        }
        return content;
    }
    Expected<std::unique_ptr<ScreenStream>> startStream(const ContentFilter& f, const StreamConfiguration& c,
                                                        ScreenStreamHandlers handlers) override {
        if (startError) return *startError;
        auto made = std::make_unique<Stream>();
        made->filter = f;
        made->configuration = c;
        made->handlers = std::move(handlers);
        stream = made.get();
        streamStopped = made->stopped;
        return std::unique_ptr<ScreenStream>(std::move(made));
    }
};

struct SoundStream final : AudioCaptureStream {
    std::function<void(AudioChunk)> onChunk;
    std::shared_ptr<bool> stopped = std::make_shared<bool>(false);
    void stop() override { *stopped = true; }
};

struct Sound final : AudioCapturing {
    bool hasMicrophone = true;
    std::optional<Error> microphoneError;
    std::optional<Error> systemAudioError;
    std::vector<AudioCaptureRequest> requests;
    std::function<void(AudioChunk)> microphone;
    std::function<void(AudioChunk)> systemAudio;
    std::vector<std::shared_ptr<bool>> stopFlags;

    std::vector<AudioInputDevice> microphones() override { return {{"mic-1", "Built-in"}}; }
    bool hasDefaultMicrophone() override { return hasMicrophone; }
    Expected<std::unique_ptr<AudioCaptureStream>> start(const AudioCaptureRequest& request,
                                                        std::function<void(AudioChunk)> onChunk) override {
        const bool mic = request.source == AudioSourceKind::microphone;
        if (mic && microphoneError) return *microphoneError;
        if (!mic && systemAudioError) return *systemAudioError;
        requests.push_back(request);
        (mic ? microphone : systemAudio) = onChunk;
        auto stream = std::make_unique<SoundStream>();
        stopFlags.push_back(stream->stopped);
        return std::unique_ptr<AudioCaptureStream>(std::move(stream));
    }
    bool allStopped() const {
        for (const auto& flag : stopFlags)
            if (!*flag) return false;
        return true;
    }
};

// Movie file work as a script: track counts per file, and a record of calls.
struct Files final : MovieFileProcessing {
    std::map<std::filesystem::path, MovieTrackCounts> tracks;
    std::vector<std::string> calls;
    std::optional<Error> failure;

    Expected<MovieTrackCounts> trackCounts(const std::filesystem::path& movie) override {
        auto found = tracks.find(movie);
        if (found == tracks.end()) return Error{"unreadable"};
        return found->second;
    }
    std::optional<Error> remux(const std::filesystem::path& from, const std::filesystem::path& to,
                               MovieContainer container, bool fastStart) override {
        calls.push_back("remux " + from.filename().string() + " -> " + to.filename().string() + " as " +
                        containerName(container) + (fastStart ? " fast start" : ""));
        if (!failure) touch(to);
        return failure;
    }
    std::optional<Error> mixAudioTracks(const std::filesystem::path& from, const std::filesystem::path& to,
                                        MovieContainer container, const AudioTrackSettings& audio) override {
        calls.push_back("mix " + from.filename().string() + " as " + containerName(container) + " " +
                        std::to_string(audio.channels) + "ch " + std::to_string(audio.bitrate));
        if (!failure) touch(to);
        return failure;
    }
    std::optional<Error> readAudio(const std::filesystem::path&, int, int, double,
                                   const std::function<void(std::span<const float>)>&) override {
        return Error{"not scripted"};
    }
    // The pictures of every movie, when a test scripts them.
    std::vector<double> frameTimes;
    std::vector<ImageBuffer> frames;
    Expected<std::vector<double>> videoFrameTimes(const std::filesystem::path&) override {
        if (frameTimes.empty()) return Error{"not scripted"};
        return frameTimes;
    }
    std::optional<Error> readVideoFrames(const std::filesystem::path&, const std::vector<std::size_t>& wanted, int,
                                         const std::function<void(std::size_t, ImageBuffer)>& deliver) override {
        if (frames.empty()) return Error{"not scripted"};
        for (std::size_t i : wanted) deliver(i, frames[i % frames.size()]);
        return std::nullopt;
    }

    static std::string containerName(MovieContainer c) {
        switch (c) {
        case MovieContainer::quickTime: return "mov";
        case MovieContainer::mpeg4: return "mp4";
        case MovieContainer::appleM4A: return "m4a";
        }
        return "?";
    }
    static void touch(const std::filesystem::path& file) { std::ofstream(file) << "movie"; }
};

// Detached work held until the test runs it, so it can interleave steps.
struct DetachedTasks {
    std::deque<std::function<void()>> pending;
    std::function<void(std::function<void()>)> runner() {
        return [this](std::function<void()> work) { pending.push_back(std::move(work)); };
    }
    bool runNext() {
        if (pending.empty()) return false;
        auto work = std::move(pending.front());
        pending.pop_front();
        work();
        return true;
    }
};

} // namespace tosvar::fakes
