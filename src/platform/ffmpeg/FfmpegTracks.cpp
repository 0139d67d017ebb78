#include "FfmpegTracks.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstring>
#include <mutex>

namespace tosvar::ffmpeg {

std::string errorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

Error failure(const std::string& what, int code) { return Error{what + ": " + errorText(code)}; }

namespace {

// FFmpeg's own chatter (encoder statistics) stays out of our output; its
// failures reach us as codes and become our errors.
void keepLibraryQuiet() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_ERROR); });
}

} // namespace

Expected<InputFile> openInput(const std::filesystem::path& file) {
    keepLibraryQuiet();
    AVFormatContext* raw = nullptr;
    if (int code = avformat_open_input(&raw, file.c_str(), nullptr, nullptr); code < 0)
        return failure("cannot open " + file.string(), code);
    InputFile input(raw);
    if (int code = avformat_find_stream_info(input.get(), nullptr); code < 0)
        return failure("cannot read " + file.string(), code);
    return input;
}

Expected<OutputFile> openOutput(const std::filesystem::path& file, MovieContainer container) {
    keepLibraryQuiet();
    const char* muxer = container == MovieContainer::quickTime ? "mov"
                        : container == MovieContainer::mpeg4   ? "mp4"
                                                               : "ipod";
    AVFormatContext* raw = nullptr;
    if (int code = avformat_alloc_output_context2(&raw, nullptr, muxer, file.c_str()); code < 0 || !raw)
        return failure("cannot make a " + std::string(muxer) + " file", code);
    OutputFile output(raw);
    if (int code = avio_open(&output->pb, file.c_str(), AVIO_FLAG_WRITE); code < 0)
        return failure("cannot write " + file.string(), code);
    return output;
}

std::optional<Error> writeHeader(AVFormatContext* output, MovieContainer container, bool hasVideo, bool fastStart) {
    AVDictionary* options = nullptr;
    if (container == MovieContainer::quickTime) {
        // Video fragments begin at keyframes; sound alone is cut every second.
        av_dict_set(&options, "movflags", hasVideo ? "+frag_keyframe+empty_moov+default_base_moof"
                                                   : "+empty_moov+default_base_moof",
                    0);
        if (!hasVideo) av_dict_set(&options, "frag_duration", "1000000", 0);
        // Each fragment reaches the disk as it is written.
        output->flush_packets = 1;
    } else if (fastStart) {
        av_dict_set(&options, "movflags", "+faststart", 0);
    }
    const int code = avformat_write_header(output, &options);
    av_dict_free(&options);
    if (code < 0) return failure("cannot start the movie", code);
    return std::nullopt;
}

std::optional<Error> drainEncoder(AVFormatContext* output, AVCodecContext* codec, AVStream* stream,
                                  std::int64_t fallbackDuration) {
    Packet packet(av_packet_alloc());
    for (;;) {
        const int code = avcodec_receive_packet(codec, packet.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return std::nullopt;
        if (code < 0) return failure("encoding failed", code);
        if (packet->duration <= 0) packet->duration = fallbackDuration;
        av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
        packet->stream_index = stream->index;
        if (int written = av_interleaved_write_frame(output, packet.get()); written < 0)
            return failure("writing the movie failed", written);
    }
}

namespace {

CodecContext makeEncoder(AVFormatContext* output, AVCodecID id, const char* preferredName) {
    const AVCodec* codec = preferredName ? avcodec_find_encoder_by_name(preferredName) : nullptr;
    if (!codec) codec = avcodec_find_encoder(id);
    if (!codec) return nullptr;
    CodecContext context(avcodec_alloc_context3(codec));
    if (context && (output->oformat->flags & AVFMT_GLOBALHEADER)) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return context;
}

AVPixelFormat pixelFormat(PixelOrder order) {
    switch (order) {
    case PixelOrder::rgba: return AV_PIX_FMT_RGBA;
    case PixelOrder::bgra: return AV_PIX_FMT_BGRA;
    case PixelOrder::argb: return AV_PIX_FMT_ARGB;
    case PixelOrder::abgr: return AV_PIX_FMT_ABGR;
    }
    return AV_PIX_FMT_BGRA;
}

} // namespace

Expected<std::unique_ptr<H264Track>> H264Track::add(AVFormatContext* output, const VideoTrackSettings& settings) {
    if (settings.width < 2 || settings.height < 2 || settings.width % 2 || settings.height % 2 || settings.fps < 1)
        return Error{"video needs an even size of at least 2 x 2 and a frame rate"};
    std::unique_ptr<H264Track> track(new H264Track());
    track->output_ = output;
    track->codec_ = makeEncoder(output, AV_CODEC_ID_H264, "libx264");
    if (!track->codec_) return Error{"no H.264 encoder"};
    AVCodecContext* c = track->codec_.get();
    c->width = settings.width;
    c->height = settings.height;
    c->pix_fmt = AV_PIX_FMT_YUV420P;
    c->time_base = {1, 90000}; // frames come when the screen changes, not on a fixed beat
    c->framerate = {settings.fps, 1};
    c->bit_rate = settings.bitrate;
    c->gop_size = std::max(settings.keyframeInterval, 1);
    c->max_b_frames = 0;
    c->profile = FF_PROFILE_H264_HIGH;
    // On two cores veryfast keeps up with 1080p at half rate; beyond that, ultrafast.
    const double pixelRate = static_cast<double>(settings.width) * settings.height * settings.fps;
    av_opt_set(c->priv_data, "preset", pixelRate <= 1920.0 * 1080 * 15 ? "veryfast" : "ultrafast", 0);
    // Keyframes we ask for start a fragment a player can begin at; without
    // look-ahead each frame is written as it comes, which matters when frames
    // come only as the screen changes: ten frames held back can be seconds.
    av_opt_set(c->priv_data, "forced-idr", "1", 0);
    av_opt_set(c->priv_data, "tune", "zerolatency", 0);
    if (int code = avcodec_open2(c, c->codec, nullptr); code < 0) return failure("cannot open the H.264 encoder", code);
    track->stream_ = avformat_new_stream(output, nullptr);
    if (!track->stream_) return Error{"cannot add a video track"};
    track->stream_->time_base = c->time_base;
    track->stream_->avg_frame_rate = c->framerate;
    if (int code = avcodec_parameters_from_context(track->stream_->codecpar, c); code < 0)
        return failure("cannot describe the video track", code);
    track->picture_.reset(av_frame_alloc());
    track->picture_->format = c->pix_fmt;
    track->picture_->width = c->width;
    track->picture_->height = c->height;
    if (int code = av_frame_get_buffer(track->picture_.get(), 0); code < 0)
        return failure("cannot hold a video frame", code);
    return track;
}

H264Track::~H264Track() { sws_freeContext(scaler_); }

std::optional<Error> H264Track::write(const ImageBuffer& image, MediaTime time) {
    if (image.isEmpty()) return std::nullopt;
    const AVPixelFormat format = pixelFormat(image.order());
    if (!scaler_ || scalerWidth_ != image.width() || scalerHeight_ != image.height() || scalerFormat_ != format) {
        sws_freeContext(scaler_);
        scaler_ = sws_getContext(image.width(), image.height(), format, codec_->width, codec_->height,
                                 AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr);
        if (!scaler_) return Error{"cannot convert video frames"};
        scalerWidth_ = image.width();
        scalerHeight_ = image.height();
        scalerFormat_ = format;
    }
    if (int code = av_frame_make_writable(picture_.get()); code < 0) return failure("cannot reuse a video frame", code);
    const std::uint8_t* planes[1] = {image.data()};
    const int strides[1] = {static_cast<int>(image.stride())};
    sws_scale(scaler_, planes, strides, 0, image.height(), picture_->data, picture_->linesize);
    // Times that do not move forward would break the file; nudge them on.
    std::int64_t pts = av_rescale_q(time.count(), {1, 1'000'000}, codec_->time_base);
    if (pts <= lastPTS_) pts = lastPTS_ + 1;
    lastPTS_ = pts;
    picture_->pts = pts;
    // Frames come only when the screen changes, so a count of frames is no
    // clock: a keyframe at least every second of the movie's own time keeps
    // each fragment of the file, and what a crash can lose, to about a second.
    const bool keyframe = lastKeyframePTS_ < 0 || pts - lastKeyframePTS_ >= codec_->time_base.den / std::max(codec_->time_base.num, 1);
    picture_->pict_type = keyframe ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    if (keyframe) lastKeyframePTS_ = pts;
    if (int code = avcodec_send_frame(codec_.get(), picture_.get()); code < 0)
        return failure("cannot encode a video frame", code);
    return drainEncoder(output_, codec_.get(), stream_, frameDuration());
}

std::optional<Error> H264Track::finish() {
    if (int code = avcodec_send_frame(codec_.get(), nullptr); code < 0 && code != AVERROR_EOF)
        return failure("cannot finish the video", code);
    return drainEncoder(output_, codec_.get(), stream_, frameDuration());
}

std::int64_t H264Track::frameDuration() const {
    return av_rescale_q(1, av_inv_q(codec_->framerate), codec_->time_base);
}

Expected<std::unique_ptr<AacTrack>> AacTrack::add(AVFormatContext* output, const AudioTrackSettings& settings) {
    if (settings.channels < 1 || settings.sampleRate < 1) return Error{"sound needs channels and a sample rate"};
    std::unique_ptr<AacTrack> track(new AacTrack());
    track->settings_ = settings;
    track->output_ = output;
    track->codec_ = makeEncoder(output, AV_CODEC_ID_AAC, nullptr);
    if (!track->codec_) return Error{"no AAC encoder"};
    AVCodecContext* c = track->codec_.get();
    c->sample_fmt = AV_SAMPLE_FMT_FLTP;
    c->sample_rate = settings.sampleRate;
    av_channel_layout_default(&c->ch_layout, settings.channels);
    c->bit_rate = settings.bitrate;
    c->time_base = {1, settings.sampleRate};
    if (int code = avcodec_open2(c, c->codec, nullptr); code < 0) return failure("cannot open the AAC encoder", code);
    track->stream_ = avformat_new_stream(output, nullptr);
    if (!track->stream_) return Error{"cannot add a sound track"};
    track->stream_->time_base = c->time_base;
    if (int code = avcodec_parameters_from_context(track->stream_->codecpar, c); code < 0)
        return failure("cannot describe the sound track", code);
    track->fifo_ = av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, settings.channels, c->frame_size > 0 ? c->frame_size : 1024);
    if (!track->fifo_) return Error{"cannot hold sound"};
    track->planes_.resize(static_cast<std::size_t>(settings.channels));
    // The encoder's priming samples would give the first packet a time below
    // zero, and the muxer would then shift every later packet of every track;
    // starting after them keeps the tracks' times as they were given.
    track->nextPTS_ = c->initial_padding;
    return track;
}

AacTrack::~AacTrack() {
    if (fifo_) av_audio_fifo_free(fifo_);
}

std::optional<Error> AacTrack::write(const float* interleaved, std::int64_t frames) {
    if (frames <= 0) return std::nullopt;
    const int channels = settings_.channels;
    std::vector<void*> pointers;
    for (int ch = 0; ch < channels; ++ch) {
        std::vector<float>& plane = planes_[static_cast<std::size_t>(ch)];
        plane.resize(static_cast<std::size_t>(frames));
        for (std::int64_t i = 0; i < frames; ++i) plane[static_cast<std::size_t>(i)] = interleaved[i * channels + ch];
        pointers.push_back(plane.data());
    }
    if (av_audio_fifo_write(fifo_, pointers.data(), static_cast<int>(frames)) < frames) return Error{"cannot hold sound"};
    position_ += frames;
    return encodeWhole(false);
}

std::optional<Error> AacTrack::writeSilence(std::int64_t frames) {
    const std::vector<float> silence(static_cast<std::size_t>(std::min<std::int64_t>(frames, 48000)) *
                                         static_cast<std::size_t>(settings_.channels),
                                     0.0f);
    while (frames > 0) {
        const std::int64_t part = std::min<std::int64_t>(frames, 48000);
        if (std::optional<Error> error = write(silence.data(), part)) return error;
        frames -= part;
    }
    return std::nullopt;
}

std::optional<Error> AacTrack::encodeWhole(bool includePartial) {
    const int frameSize = codec_->frame_size > 0 ? codec_->frame_size : 1024;
    const bool smallLastFrame = codec_->codec->capabilities & AV_CODEC_CAP_SMALL_LAST_FRAME;
    while (av_audio_fifo_size(fifo_) >= frameSize || (includePartial && av_audio_fifo_size(fifo_) > 0)) {
        const int available = std::min(av_audio_fifo_size(fifo_), frameSize);
        Frame frame(av_frame_alloc());
        frame->nb_samples = available < frameSize && !smallLastFrame ? frameSize : available;
        frame->format = AV_SAMPLE_FMT_FLTP;
        frame->sample_rate = settings_.sampleRate;
        av_channel_layout_copy(&frame->ch_layout, &codec_->ch_layout);
        if (int code = av_frame_get_buffer(frame.get(), 0); code < 0) return failure("cannot hold sound", code);
        av_samples_set_silence(frame->data, 0, frame->nb_samples, settings_.channels, AV_SAMPLE_FMT_FLTP);
        av_audio_fifo_read(fifo_, reinterpret_cast<void**>(frame->data), available);
        frame->pts = nextPTS_;
        nextPTS_ += frame->nb_samples;
        if (int code = avcodec_send_frame(codec_.get(), frame.get()); code < 0)
            return failure("cannot encode sound", code);
        if (std::optional<Error> error = drainEncoder(output_, codec_.get(), stream_)) return error;
    }
    return std::nullopt;
}

std::optional<Error> AacTrack::finish() {
    if (std::optional<Error> error = encodeWhole(true)) return error;
    if (int code = avcodec_send_frame(codec_.get(), nullptr); code < 0 && code != AVERROR_EOF)
        return failure("cannot finish the sound", code);
    return drainEncoder(output_, codec_.get(), stream_);
}

SoundConverter::~SoundConverter() {
    swr_free(&swr_);
    av_channel_layout_uninit(&inputLayout_);
}

Expected<std::vector<float>> SoundConverter::convert(const float* interleaved, int frames, int channels, int rate) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    const std::uint8_t* planes[1] = {reinterpret_cast<const std::uint8_t*>(interleaved)};
    Expected<std::vector<float>> converted = run(planes, frames, layout, AV_SAMPLE_FMT_FLT, rate);
    av_channel_layout_uninit(&layout);
    return converted;
}

Expected<std::vector<float>> SoundConverter::convert(const AVFrame& frame) {
    return run(frame.extended_data, frame.nb_samples, frame.ch_layout,
               frame.format, frame.sample_rate);
}

Expected<std::vector<float>> SoundConverter::run(const std::uint8_t* const* input, int frames,
                                                 const AVChannelLayout& layout, int format, int rate) {
    if (frames <= 0) return std::vector<float>();
    if (!swr_ || av_channel_layout_compare(&layout, &inputLayout_) != 0 || format != inputFormat_ ||
        rate != inputRate_) {
        swr_free(&swr_);
        av_channel_layout_uninit(&inputLayout_);
        av_channel_layout_copy(&inputLayout_, &layout);
        inputFormat_ = format;
        inputRate_ = rate;
        AVChannelLayout outputLayout{};
        av_channel_layout_default(&outputLayout, outputChannels_);
        int code = swr_alloc_set_opts2(&swr_, &outputLayout, AV_SAMPLE_FMT_FLT, outputRate_, &inputLayout_,
                                       static_cast<AVSampleFormat>(format), rate, 0, nullptr);
        av_channel_layout_uninit(&outputLayout);
        if (code >= 0) code = swr_init(swr_);
        if (code < 0) {
            swr_free(&swr_);
            return failure("cannot convert sound", code);
        }
    }
    const int capacity = swr_get_out_samples(swr_, frames);
    std::vector<float> output(static_cast<std::size_t>(std::max(capacity, 0)) * static_cast<std::size_t>(outputChannels_));
    std::uint8_t* planes[1] = {reinterpret_cast<std::uint8_t*>(output.data())};
    const int produced = swr_convert(swr_, planes, capacity, const_cast<const std::uint8_t**>(input), frames);
    if (produced < 0) return failure("cannot convert sound", produced);
    output.resize(static_cast<std::size_t>(produced) * static_cast<std::size_t>(outputChannels_));
    return output;
}

} // namespace tosvar::ffmpeg
