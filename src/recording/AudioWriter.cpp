#include "AudioWriter.h"

#include "RawEnum.h"
#include "RecordingError.h"

namespace tosvar {

AudioWriter::Quality AudioWriter::quality(AudioRecordingQuality quality) {
    switch (quality) {
    case AudioRecordingQuality::voice: return {1, 64000};
    case AudioRecordingQuality::standard: return {1, 128000};
    case AudioRecordingQuality::high: return {2, 256000};
    }
    return {1, 128000};
}

std::string AudioWriter::localizedKey(AudioRecordingQuality quality) {
    return "audio.quality." + std::string(rawValue(quality));
}

Expected<std::unique_ptr<AudioWriter>> AudioWriter::open(const MovieEncoderFactory& makeEncoder,
                                                         const std::filesystem::path& url, Quality quality,
                                                         bool hasMicrophone, bool hasSystemAudio) {
    if (!hasMicrophone && !hasSystemAudio) return RecordingError::writerSetupFailed();
    MovieEncoderSettings settings;
    settings.url = url;
    settings.container = MovieContainer::quickTime;
    const AudioTrackSettings aac{.sampleRate = sampleRate, .channels = quality.channels, .bitrate = quality.bitrate};
    std::optional<std::size_t> micTrack, systemAudioTrack;
    if (hasMicrophone) {
        micTrack = settings.addAudioTrack(aac);
    }
    if (hasSystemAudio) {
        systemAudioTrack = settings.addAudioTrack(aac);
    }
    Expected<std::unique_ptr<MovieEncoding>> encoder = makeEncoder(settings);
    if (!encoder) return RecordingError::writerFailed(encoder.error().message);
    if (micTrack && !(*encoder)->hasAudioTrack(*micTrack)) micTrack.reset();
    if (systemAudioTrack && !(*encoder)->hasAudioTrack(*systemAudioTrack)) systemAudioTrack.reset();
    if (!micTrack && !systemAudioTrack) {
        (*encoder)->cancel();
        return RecordingError::writerSetupFailed();
    }
    // The microphone leads whenever it has a track.
    const Clock clock = micTrack ? Clock::microphone : Clock::systemAudio;
    return std::unique_ptr<AudioWriter>(
        new AudioWriter(std::move(encoder).value(), url, clock, micTrack, systemAudioTrack));
}

AudioWriter::AudioWriter(std::unique_ptr<MovieEncoding> encoder, std::filesystem::path url, Clock clock,
                         std::optional<std::size_t> micTrack, std::optional<std::size_t> systemAudioTrack)
    : encoder_(std::move(encoder)), outputURL_(std::move(url)), clock_(clock), micTrack_(micTrack),
      systemAudioTrack_(systemAudioTrack) {}

void AudioWriter::appendMicrophone(const AudioChunk& chunk) { append(chunk, micTrack_, Clock::microphone); }

void AudioWriter::appendSystemAudio(const AudioChunk& chunk) { append(chunk, systemAudioTrack_, Clock::systemAudio); }

void AudioWriter::append(const AudioChunk& chunk, std::optional<std::size_t> track, Clock source) {
    if (!track) return;
    if (!sessionStart_) {
        if (source != clock_) return;
        sessionStart_ = chunk.time;
        clockEnd_ = chunk.time;
    }
    if (source == clock_) {
        if (resumePending_ && chunk.time > clockEnd_) pausedOffset_ += chunk.time - clockEnd_;
        resumePending_ = false;
        clockEnd_ = chunk.time + chunk.duration();
    }
    const MediaTime time = chunk.time - pausedOffset_ - *sessionStart_;
    if (time >= MediaTime(0) && encoder_->isReadyForAudio(*track) && encoder_->appendAudio(*track, chunk, time)) {
        if (source == clock_) {
            ++appendedPackets_;
            appendedFrames_ += chunk.frameCount();
        }
    } else {
        ++droppedPackets_;
    }
}

std::optional<Error> AudioWriter::finish() {
    if (!sessionStart_) {
        encoder_->cancel();
        return RecordingError::noAudioCaptured();
    }
    if (std::optional<Error> error = encoder_->finish()) return RecordingError::writerFailed(error->message);
    return std::nullopt;
}

void AudioWriter::cancel() { encoder_->cancel(); }

} // namespace tosvar
