#include "MovieWriter.h"

#include "RecordingError.h"

#include <algorithm>

namespace tosvar {

std::int64_t MovieWriter::bitrate(int width, int height, int fps) {
    const double bits = static_cast<double>(width) * height * fps * 0.2;
    return static_cast<std::int64_t>(std::clamp(bits, 3'000'000.0, 60'000'000.0));
}

Expected<std::unique_ptr<MovieWriter>> MovieWriter::open(const MovieEncoderFactory& makeEncoder,
                                                         const std::filesystem::path& url, int width, int height,
                                                         int fps, bool hasSystemAudio, bool hasMicrophone) {
    MovieEncoderSettings settings;
    settings.url = url;
    settings.container = MovieContainer::quickTime;
    // Keyframes a second apart keep the fragments of the file short, so a
    // recording cut off by a crash still plays up to its last second or so.
    settings.video = VideoTrackSettings{
        .width = width, .height = height, .fps = fps, .bitrate = bitrate(width, height, fps), .keyframeInterval = fps};
    std::optional<std::size_t> systemAudioTrack, micTrack;
    const AudioTrackSettings aac{.sampleRate = 48000, .channels = 2, .bitrate = 128000};
    if (hasSystemAudio) {
        systemAudioTrack = settings.addAudioTrack(aac);
    }
    if (hasMicrophone) {
        micTrack = settings.addAudioTrack(aac);
    }
    Expected<std::unique_ptr<MovieEncoding>> encoder = makeEncoder(settings);
    if (!encoder) return RecordingError::writerFailed(encoder.error().message);
    if (systemAudioTrack && !(*encoder)->hasAudioTrack(*systemAudioTrack)) systemAudioTrack.reset();
    if (micTrack && !(*encoder)->hasAudioTrack(*micTrack)) micTrack.reset();
    return std::unique_ptr<MovieWriter>(
        new MovieWriter(std::move(encoder).value(), url, fps, systemAudioTrack, micTrack));
}

MovieWriter::MovieWriter(std::unique_ptr<MovieEncoding> encoder, std::filesystem::path url, int fps,
                         std::optional<std::size_t> systemAudioTrack, std::optional<std::size_t> micTrack)
    : encoder_(std::move(encoder)), outputURL_(std::move(url)), systemAudioTrack_(systemAudioTrack),
      micTrack_(micTrack), timeline_(fps) {}

void MovieWriter::append(const VideoFrame& frame) {
    const MediaTime adjusted = timeline_.adjusted(frame.time);
    if (!firstPTS_) firstPTS_ = adjusted;
    if (encoder_->isReadyForVideo() && encoder_->appendVideo(frame.image, adjusted - *firstPTS_)) {
        ++appendedFrames_;
        lastPTS_ = adjusted;
    } else {
        ++droppedFrames_;
    }
}

void MovieWriter::appendSystemAudio(const AudioChunk& chunk) { appendAudio(chunk, systemAudioTrack_); }

void MovieWriter::appendMicrophone(const AudioChunk& chunk) { appendAudio(chunk, micTrack_); }

void MovieWriter::appendAudio(const AudioChunk& chunk, std::optional<std::size_t> track) {
    if (!track || !firstPTS_) return;
    const MediaTime adjusted = chunk.time - timeline_.currentOffset();
    if (adjusted < *firstPTS_) return;
    if (encoder_->isReadyForAudio(*track)) encoder_->appendAudio(*track, chunk, adjusted - *firstPTS_);
}

std::optional<Error> MovieWriter::finish() {
    if (!firstPTS_) {
        encoder_->cancel();
        return RecordingError::noFramesCaptured();
    }
    if (std::optional<Error> error = encoder_->finish()) return RecordingError::writerFailed(error->message);
    return std::nullopt;
}

void MovieWriter::cancel() { encoder_->cancel(); }

double MovieWriter::capturedDuration() const {
    if (!firstPTS_ || !lastPTS_) return 0;
    return mediaSeconds(*lastPTS_ - *firstPTS_);
}

} // namespace tosvar
