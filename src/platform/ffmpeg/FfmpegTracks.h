#pragma once

// The pieces of FFmpeg the movie encoder and the movie file work share:
// owning handles, output files, an H.264 track, an AAC track and a sound
// format converter. Only the FFmpeg-backed implementations include this.

#include "Expected.h"
#include "MediaSamples.h"
#include "MovieEncoding.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tosvar::ffmpeg {

std::string errorText(int code);
// "what: FFmpeg's text for code".
Error failure(const std::string& what, int code);

struct CodecContextFree {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameFree {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketFree {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct InputClose {
    void operator()(AVFormatContext* f) const { avformat_close_input(&f); }
};
struct OutputClose {
    void operator()(AVFormatContext* f) const {
        if (!(f->oformat->flags & AVFMT_NOFILE)) avio_closep(&f->pb);
        avformat_free_context(f);
    }
};
using CodecContext = std::unique_ptr<AVCodecContext, CodecContextFree>;
using Frame = std::unique_ptr<AVFrame, FrameFree>;
using Packet = std::unique_ptr<AVPacket, PacketFree>;
using InputFile = std::unique_ptr<AVFormatContext, InputClose>;
using OutputFile = std::unique_ptr<AVFormatContext, OutputClose>;

Expected<InputFile> openInput(const std::filesystem::path& file);
// An output of the container's kind, with its file open; streams come next.
Expected<OutputFile> openOutput(const std::filesystem::path& file, MovieContainer container);
// Writes the header: fragmented for QuickTime files (so a file cut short
// still plays), index first for the others when `fastStart`.
std::optional<Error> writeHeader(AVFormatContext* output, MovieContainer container, bool hasVideo, bool fastStart);

// Takes every packet the encoder has ready and writes it to the file. A
// packet without a duration gets `fallbackDuration` (codec time base), so
// the last frame of a movie keeps its place when the movie is copied.
std::optional<Error> drainEncoder(AVFormatContext* output, AVCodecContext* codec, AVStream* stream,
                                  std::int64_t fallbackDuration = 0);

// H.264 from frames of any size and byte order, scaled to the track's size.
class H264Track {
public:
    static Expected<std::unique_ptr<H264Track>> add(AVFormatContext* output, const VideoTrackSettings& settings);
    ~H264Track();
    std::optional<Error> write(const ImageBuffer& image, MediaTime time);
    std::optional<Error> finish();

private:
    H264Track() = default;
    std::int64_t frameDuration() const; // one nominal frame interval

    AVFormatContext* output_ = nullptr;
    AVStream* stream_ = nullptr;
    CodecContext codec_;
    Frame picture_;
    SwsContext* scaler_ = nullptr;
    int scalerWidth_ = 0, scalerHeight_ = 0, scalerFormat_ = -1;
    std::int64_t lastPTS_ = -1;
    std::int64_t lastKeyframePTS_ = -1;
};

// AAC from interleaved floats already in the track's rate and channels.
class AacTrack {
public:
    static Expected<std::unique_ptr<AacTrack>> add(AVFormatContext* output, const AudioTrackSettings& settings);
    ~AacTrack();

    const AudioTrackSettings& settings() const { return settings_; }
    // Sample frames given to the track so far: where the next one goes.
    std::int64_t position() const { return position_; }
    std::optional<Error> write(const float* interleaved, std::int64_t frames);
    std::optional<Error> writeSilence(std::int64_t frames);
    std::optional<Error> finish();

private:
    AacTrack() = default;
    std::optional<Error> encodeWhole(bool includePartial);

    AudioTrackSettings settings_;
    AVFormatContext* output_ = nullptr;
    AVStream* stream_ = nullptr;
    CodecContext codec_;
    AVAudioFifo* fifo_ = nullptr;
    std::int64_t position_ = 0;
    std::int64_t nextPTS_ = 0;
    std::vector<std::vector<float>> planes_;
};

// Interleaved floats of one rate and channel count into another.
class SoundConverter {
public:
    SoundConverter(int outputRate, int outputChannels) : outputRate_(outputRate), outputChannels_(outputChannels) {}
    ~SoundConverter();
    SoundConverter(const SoundConverter&) = delete;
    SoundConverter& operator=(const SoundConverter&) = delete;

    Expected<std::vector<float>> convert(const float* interleaved, int frames, int channels, int rate);
    // A decoded frame in any sample format.
    Expected<std::vector<float>> convert(const AVFrame& frame);

private:
    Expected<std::vector<float>> run(const std::uint8_t* const* input, int frames, const AVChannelLayout& layout,
                                     int format, int rate);

    int outputRate_;
    int outputChannels_;
    SwrContext* swr_ = nullptr;
    AVChannelLayout inputLayout_{};
    int inputFormat_ = -1;
    int inputRate_ = 0;
};

} // namespace tosvar::ffmpeg
