#include "FfmpegMovieEncoder.h"

#include "FfmpegTracks.h"
#include "Log.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

namespace tosvar {

namespace {

// Room for a few frames (the screen source keeps six in flight) and for a
// couple of seconds of sound per track.
constexpr int videoQueueLimit = 4;
constexpr int audioQueueLimit = 100;

// One sound track with the rules that keep it in step with the video: chunks
// are placed by their time, a gap is filled with silence and an overlap cut,
// unless it is within a tenth of a second, which is taken as jitter.
struct SoundTrack {
    std::unique_ptr<ffmpeg::AacTrack> encoder;
    ffmpeg::SoundConverter converter;

    explicit SoundTrack(std::unique_ptr<ffmpeg::AacTrack> track)
        : encoder(std::move(track)), converter(encoder->settings().sampleRate, encoder->settings().channels) {}

    std::optional<Error> write(const AudioChunk& chunk, MediaTime time) {
        Expected<std::vector<float>> samples =
            converter.convert(chunk.samples.data(), static_cast<int>(chunk.frameCount()), chunk.channels,
                              chunk.sampleRate);
        if (!samples) return samples.error();
        const int rate = encoder->settings().sampleRate, channels = encoder->settings().channels;
        const std::int64_t start = time.count() * rate / 1'000'000;
        const std::int64_t offset = start - encoder->position();
        const std::int64_t tolerance = rate / 10;
        std::int64_t skip = 0;
        if (offset > tolerance || (encoder->position() == 0 && offset > 0)) {
            if (std::optional<Error> error = encoder->writeSilence(offset)) return error;
        } else if (offset < -tolerance) {
            skip = -offset;
        }
        const std::int64_t frames = static_cast<std::int64_t>(samples->size()) / channels;
        if (skip >= frames) return std::nullopt;
        return encoder->write(samples->data() + skip * channels, frames - skip);
    }
};

// Threads: the appends and readiness checks come from the capture's sample
// queue and only queue work (`jobs_` under `mutex_`, counted in the atomics);
// the encoding thread alone touches the tracks and the file until `finish`
// or `cancel` has joined it, after which the caller's thread does.
class FfmpegMovieEncoder final : public MovieEncoding {
public:
    FfmpegMovieEncoder(ffmpeg::OutputFile output, std::filesystem::path url,
                       std::unique_ptr<ffmpeg::H264Track> video, std::vector<std::unique_ptr<SoundTrack>> sound)
        : output_(std::move(output)), url_(std::move(url)), video_(std::move(video)), sound_(std::move(sound)),
          queuedAudio_(sound_.size()) {
        for (auto& count : queuedAudio_) count = 0;
        thread_ = std::thread([this] { run(); });
    }
    ~FfmpegMovieEncoder() override {
        if (thread_.joinable()) cancel();
    }

    bool hasAudioTrack(std::size_t track) const override { return track < sound_.size() && sound_[track]; }
    bool isReadyForVideo() const override { return video_ && !failed_ && queuedVideo_ < videoQueueLimit; }
    bool isReadyForAudio(std::size_t track) const override {
        return hasAudioTrack(track) && !failed_ && queuedAudio_[track] < audioQueueLimit;
    }

    bool appendVideo(const ImageBuffer& image, MediaTime time) override {
        if (!isReadyForVideo()) return false;
        ++queuedVideo_;
        enqueue({std::nullopt, image, {}, time});
        return true;
    }

    bool appendAudio(std::size_t track, const AudioChunk& chunk, MediaTime time) override {
        if (!isReadyForAudio(track)) return false;
        ++queuedAudio_[track];
        enqueue({track, {}, chunk, time});
        return true;
    }

    std::optional<Error> finish() override {
        stopThread(false);
        if (!failure_) {
            if (video_) record(video_->finish());
            for (auto& track : sound_)
                if (track) record(track->encoder->finish());
        }
        if (!failure_)
            if (int code = av_write_trailer(output_.get()); code < 0)
                record(ffmpeg::failure("cannot complete the movie", code));
        output_.reset();
        return failure_;
    }

    void cancel() override {
        stopThread(true);
        output_.reset();
        std::error_code ignored;
        std::filesystem::remove(url_, ignored);
    }

private:
    struct Job {
        std::optional<std::size_t> track; // none: a video frame
        ImageBuffer image;
        AudioChunk chunk;
        MediaTime time;
    };

    void enqueue(Job job) {
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(std::move(job));
        }
        wake_.notify_one();
    }

    void stopThread(bool discard) {
        if (!thread_.joinable()) return;
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
            if (discard) jobs_.clear();
        }
        wake_.notify_one();
        thread_.join();
    }

    void record(std::optional<Error> error) {
        if (!error || failure_) return;
        failure_ = std::move(error);
        failed_ = true;
        logLine("movie encoding failed: " + failure_->message);
    }

    void run() {
        for (;;) {
            Job job;
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
                if (jobs_.empty()) return;
                job = std::move(jobs_.front());
                jobs_.pop_front();
            }
            if (!failure_) {
                if (job.track) {
                    record(sound_[*job.track]->write(job.chunk, job.time));
                } else {
                    record(video_->write(job.image, job.time));
                }
            }
            if (job.track) {
                --queuedAudio_[*job.track];
            } else {
                --queuedVideo_;
            }
        }
    }

    ffmpeg::OutputFile output_;
    std::filesystem::path url_;
    std::unique_ptr<ffmpeg::H264Track> video_;
    std::vector<std::unique_ptr<SoundTrack>> sound_; // null where a track could not be set up
    std::optional<Error> failure_;                  // the encoding thread's until it is joined
    std::atomic<bool> failed_ = false;
    std::atomic<int> queuedVideo_ = 0;
    std::vector<std::atomic<int>> queuedAudio_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    bool stopping_ = false;
    std::thread thread_;
};

} // namespace

Expected<std::unique_ptr<MovieEncoding>> openFfmpegMovieEncoder(const MovieEncoderSettings& settings) {
    Expected<ffmpeg::OutputFile> output = ffmpeg::openOutput(settings.url, settings.container);
    if (!output) return output.error();
    const auto abandon = [&](Error error) -> Expected<std::unique_ptr<MovieEncoding>> {
        output->reset();
        std::error_code ignored;
        std::filesystem::remove(settings.url, ignored);
        return error;
    };
    std::unique_ptr<ffmpeg::H264Track> video;
    if (settings.video) {
        Expected<std::unique_ptr<ffmpeg::H264Track>> track = ffmpeg::H264Track::add(output->get(), *settings.video);
        if (!track) return abandon(track.error());
        video = std::move(track).value();
    }
    std::vector<std::unique_ptr<SoundTrack>> sound;
    for (const AudioTrackSettings& audio : settings.audioTracks) {
        Expected<std::unique_ptr<ffmpeg::AacTrack>> track = ffmpeg::AacTrack::add(output->get(), audio);
        if (track) {
            sound.push_back(std::make_unique<SoundTrack>(std::move(track).value()));
        } else {
            logLine("movie sound track left out: " + track.error().message);
            sound.push_back(nullptr);
        }
    }
    if (!video && std::none_of(sound.begin(), sound.end(), [](const auto& t) { return t != nullptr; }))
        return abandon(Error{"a movie needs video or sound"});
    if (std::optional<Error> error =
            ffmpeg::writeHeader(output->get(), settings.container, video != nullptr, settings.container != MovieContainer::quickTime))
        return abandon(*error);
    return std::unique_ptr<MovieEncoding>(
        new FfmpegMovieEncoder(std::move(output).value(), settings.url, std::move(video), std::move(sound)));
}

} // namespace tosvar
