#pragma once

#include "Expected.h"
#include "MovieEncoding.h"
#include "PauseTimeline.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace tosvar {

// Writes the temporary movie of a screen recording: one H.264 track and up to
// two AAC tracks (system audio, microphone), on a timeline without the paused
// stretches. The first frame starts the movie; sound before it is dropped.
// Threads: the appends and `markResumeBoundary` run on the recording's sample
// queue; `finish` or `cancel` once that queue has drained.
class MovieWriter {
public:
    static Expected<std::unique_ptr<MovieWriter>> open(const MovieEncoderFactory& makeEncoder,
                                                       const std::filesystem::path& url, int width, int height, int fps,
                                                       bool hasSystemAudio, bool hasMicrophone);
    // width × height × fps × 0.2 bits a second, within 3 to 60 million.
    static std::int64_t bitrate(int width, int height, int fps);

    void append(const VideoFrame& frame);
    void appendSystemAudio(const AudioChunk& chunk);
    void appendMicrophone(const AudioChunk& chunk);
    void markResumeBoundary() { timeline_.markResumeBoundary(); }

    // Completes the file; without a single frame, removes it and fails with
    // "No frames were captured".
    std::optional<Error> finish();
    void cancel();

    // From the first frame to the last one, in seconds.
    double capturedDuration() const;
    int appendedFrames() const { return appendedFrames_; }
    int droppedFrames() const { return droppedFrames_; }
    const std::filesystem::path& outputURL() const { return outputURL_; }

private:
    MovieWriter(std::unique_ptr<MovieEncoding> encoder, std::filesystem::path url, int fps,
                std::optional<std::size_t> systemAudioTrack, std::optional<std::size_t> micTrack);
    void appendAudio(const AudioChunk& chunk, std::optional<std::size_t> track);

    std::unique_ptr<MovieEncoding> encoder_;
    std::filesystem::path outputURL_;
    std::optional<std::size_t> systemAudioTrack_; // absent when not asked for or refused
    std::optional<std::size_t> micTrack_;
    PauseTimeline timeline_;
    std::optional<MediaTime> firstPTS_; // set by the first frame: the session has started
    std::optional<MediaTime> lastPTS_;
    int appendedFrames_ = 0;
    int droppedFrames_ = 0;
};

} // namespace tosvar
