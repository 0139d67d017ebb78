#pragma once

#include "Expected.h"
#include "MovieEncoding.h"
#include "SettingsEnums.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tosvar {

// Writes the temporary movie of a sound recording: an AAC track per source.
// One source is the clock: its first chunk starts the file, the other's sound
// before that is dropped, and the recording's length is what the clock source
// captured (so it stands still while paused).
// Threads: the appends and `capturedDuration` on the sample queue; `finish`
// or `cancel` once that queue has drained. A pause leaves no gap in the file.
class AudioWriter {
public:
    struct Quality {
        int channels = 1;
        std::int64_t bitrate = 128000;
        friend bool operator==(const Quality&, const Quality&) = default;
    };
    enum class Clock { microphone, systemAudio };

    static constexpr int sampleRate = 48000;

    static Quality quality(AudioRecordingQuality quality);
    static std::string localizedKey(AudioRecordingQuality quality); // "audio.quality.voice"

    static Expected<std::unique_ptr<AudioWriter>> open(const MovieEncoderFactory& makeEncoder,
                                                       const std::filesystem::path& url, Quality quality,
                                                       bool hasMicrophone, bool hasSystemAudio);

    void appendMicrophone(const AudioChunk& chunk);
    void appendSystemAudio(const AudioChunk& chunk);
    // The next chunk of the clock source follows on from the last one before
    // the pause, so the file holds no silence for it.
    void markResumeBoundary() { resumePending_ = true; }

    // Completes the file; without any sound, removes it and fails with "No audio was captured".
    std::optional<Error> finish();
    void cancel();

    // Seconds of sound the clock source delivered.
    double capturedDuration() const { return static_cast<double>(appendedFrames_) / sampleRate; }
    Clock clock() const { return clock_; }
    int appendedPackets() const { return appendedPackets_; }
    int droppedPackets() const { return droppedPackets_; }
    const std::filesystem::path& outputURL() const { return outputURL_; }

private:
    AudioWriter(std::unique_ptr<MovieEncoding> encoder, std::filesystem::path url, Clock clock,
                std::optional<std::size_t> micTrack, std::optional<std::size_t> systemAudioTrack);
    void append(const AudioChunk& chunk, std::optional<std::size_t> track, Clock source);

    std::unique_ptr<MovieEncoding> encoder_;
    std::filesystem::path outputURL_;
    Clock clock_;
    std::optional<std::size_t> micTrack_;
    std::optional<std::size_t> systemAudioTrack_;
    std::optional<MediaTime> sessionStart_;
    MediaTime pausedOffset_{0};   // paused time cut so far
    MediaTime clockEnd_{0};       // where the clock source's last chunk ended
    bool resumePending_ = false;
    int appendedPackets_ = 0; // chunks of the clock source
    std::int64_t appendedFrames_ = 0;
    int droppedPackets_ = 0; // chunks of either source
};

} // namespace tosvar
