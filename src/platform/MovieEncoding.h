#pragma once

#include "Expected.h"
#include "MediaSamples.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tosvar {

enum class MovieContainer {
    quickTime, // ".mov", written in fragments so a file cut short still plays
    mpeg4,     // ".mp4"
    appleM4A,  // ".m4a", sound only
};

// H.264 video; frames of any size are scaled to this one.
struct VideoTrackSettings {
    int width = 0;
    int height = 0;
    int fps = 30;
    std::int64_t bitrate = 0;
    int keyframeInterval = 30; // frames
    friend bool operator==(const VideoTrackSettings&, const VideoTrackSettings&) = default;
};

// AAC sound; chunks of any channel count are mixed to this one.
struct AudioTrackSettings {
    int sampleRate = 48000;
    int channels = 2;
    std::int64_t bitrate = 128000;
    friend bool operator==(const AudioTrackSettings&, const AudioTrackSettings&) = default;
};

struct MovieEncoderSettings {
    std::filesystem::path url;
    MovieContainer container = MovieContainer::quickTime;
    std::optional<VideoTrackSettings> video;
    std::vector<AudioTrackSettings> audioTracks;

    // Appends a sound track; its index.
    std::size_t addAudioTrack(const AudioTrackSettings& track) {
        audioTracks.push_back(track);
        return audioTracks.size() - 1;
    }
};

// One movie being written as it is captured. Times count from the start of
// the movie. Appends never wait: an append the encoder has no room for is
// refused and the caller counts it. Appends and readiness come from one
// thread at a time; `finish` and `cancel` after the last append.
class MovieEncoding {
public:
    virtual ~MovieEncoding() = default;

    // A track the encoder could not set up is absent, and the others go on.
    virtual bool hasAudioTrack(std::size_t track) const = 0;
    virtual bool isReadyForVideo() const = 0;
    virtual bool appendVideo(const ImageBuffer& image, MediaTime time) = 0;
    virtual bool isReadyForAudio(std::size_t track) const = 0;
    virtual bool appendAudio(std::size_t track, const AudioChunk& chunk, MediaTime time) = 0;
    // Encodes what is queued and completes the file; blocks until it is done.
    virtual std::optional<Error> finish() = 0;
    // Stops writing and removes the file.
    virtual void cancel() = 0;
};

// Opens a movie file for writing; an error when no video or sound can be written.
using MovieEncoderFactory = std::function<Expected<std::unique_ptr<MovieEncoding>>(const MovieEncoderSettings&)>;

} // namespace tosvar
