#include "FfmpegMovieFiles.h"

#include "FfmpegTracks.h"

#include <algorithm>
#include <deque>
#include <map>

namespace tosvar {

namespace {

using namespace ffmpeg;

bool isAudio(const AVStream* s) { return s->codecpar->codec_type == AVMEDIA_TYPE_AUDIO; }
bool isVideo(const AVStream* s) { return s->codecpar->codec_type == AVMEDIA_TYPE_VIDEO; }

// Adds a stream that takes `source`'s packets as they are.
Expected<AVStream*> addCopy(AVFormatContext* output, const AVStream* source) {
    AVStream* stream = avformat_new_stream(output, nullptr);
    if (!stream) return Error{"cannot add a track"};
    if (int code = avcodec_parameters_copy(stream->codecpar, source->codecpar); code < 0)
        return failure("cannot copy a track", code);
    stream->codecpar->codec_tag = 0;
    stream->time_base = source->time_base;
    return stream;
}

// Copies one track's packets, each held back until the next one arrives, so
// a packet without a duration (a fragmented file does not keep them) gets
// the distance to its successor, and the last one the distance before it.
// Without a duration the last frame would fall outside the copied track.
class TrackCopy {
public:
    TrackCopy(const AVStream* from, AVStream* to) : from_(from), to_(to), held_(av_packet_alloc()) {}

    std::optional<Error> write(AVFormatContext* output, AVPacket* packet) {
        std::optional<Error> error;
        if (holding_) {
            lastStep_ = packet->dts - held_->dts;
            error = release(output, lastStep_);
        }
        av_packet_ref(held_.get(), packet);
        holding_ = true;
        return error;
    }
    std::optional<Error> finish(AVFormatContext* output) { return holding_ ? release(output, lastStep_) : std::nullopt; }

private:
    std::optional<Error> release(AVFormatContext* output, std::int64_t step) {
        holding_ = false;
        if (held_->duration <= 0 && step > 0) held_->duration = step;
        av_packet_rescale_ts(held_.get(), from_->time_base, to_->time_base);
        held_->stream_index = to_->index;
        held_->pos = -1;
        const int code = av_interleaved_write_frame(output, held_.get()); // takes the reference
        if (code < 0) return failure("writing failed", code);
        return std::nullopt;
    }

    const AVStream* from_;
    AVStream* to_;
    Packet held_;
    bool holding_ = false;
    std::int64_t lastStep_ = 0;
};

// A decoder of one sound track that hands out its sound converted to one
// format, placed on the track's own timeline.
struct SoundReader {
    int streamIndex;
    CodecContext decoder;
    SoundConverter converter;
    std::deque<float> pending; // interleaved, converted, not yet taken
    std::int64_t placed = 0;   // sample frames put into `pending` so far, silence included

    SoundReader(int index, int rate, int channels) : streamIndex(index), converter(rate, channels) {}

    static Expected<std::unique_ptr<SoundReader>> open(const AVStream* stream, int rate, int channels) {
        const AVCodec* codec = avcodec_find_decoder(stream->codecpar->codec_id);
        if (!codec) return Error{"no decoder for a sound track"};
        auto reader = std::make_unique<SoundReader>(stream->index, rate, channels);
        reader->decoder.reset(avcodec_alloc_context3(codec));
        if (int code = avcodec_parameters_to_context(reader->decoder.get(), stream->codecpar); code < 0)
            return failure("cannot read a sound track", code);
        reader->decoder->pkt_timebase = stream->time_base;
        if (int code = avcodec_open2(reader->decoder.get(), codec, nullptr); code < 0)
            return failure("cannot open a sound decoder", code);
        return reader;
    }

    // Sends a packet (none: the end) and converts what comes out.
    std::optional<Error> feed(const AVPacket* packet, const AVStream* stream, int rate, int channels) {
        if (int code = avcodec_send_packet(decoder.get(), packet); code < 0 && code != AVERROR_EOF)
            return failure("cannot decode sound", code);
        Frame frame(av_frame_alloc());
        for (;;) {
            const int code = avcodec_receive_frame(decoder.get(), frame.get());
            if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return std::nullopt;
            if (code < 0) return failure("cannot decode sound", code);
            if (placed == 0 && frame->pts != AV_NOPTS_VALUE && frame->pts > 0) {
                // A track that starts late starts with silence.
                const std::int64_t lead = av_rescale_q(frame->pts, stream->time_base, {1, rate});
                pending.insert(pending.end(), static_cast<std::size_t>(lead * channels), 0.0f);
                placed += lead;
            }
            Expected<std::vector<float>> samples = converter.convert(*frame);
            if (!samples) return samples.error();
            pending.insert(pending.end(), samples->begin(), samples->end());
            placed += static_cast<std::int64_t>(samples->size()) / channels;
            av_frame_unref(frame.get());
        }
    }
};

} // namespace

Expected<MovieTrackCounts> FfmpegMovieFiles::trackCounts(const std::filesystem::path& movie) {
    Expected<InputFile> input = openInput(movie);
    if (!input) return input.error();
    MovieTrackCounts counts;
    for (unsigned i = 0; i < (*input)->nb_streams; ++i) {
        if (isVideo((*input)->streams[i])) ++counts.video;
        if (isAudio((*input)->streams[i])) ++counts.audio;
    }
    return counts;
}

std::optional<Error> FfmpegMovieFiles::remux(const std::filesystem::path& from, const std::filesystem::path& to,
                                             MovieContainer container, bool fastStart) {
    Expected<InputFile> input = openInput(from);
    if (!input) return input.error();
    Expected<OutputFile> output = openOutput(to, container);
    if (!output) return output.error();
    std::map<int, TrackCopy> copies;
    bool hasVideo = false;
    for (unsigned i = 0; i < (*input)->nb_streams; ++i) {
        const AVStream* source = (*input)->streams[i];
        const bool wanted = isAudio(source) || (isVideo(source) && container != MovieContainer::appleM4A);
        if (!wanted) continue;
        Expected<AVStream*> copy = addCopy(output->get(), source);
        if (!copy) return copy.error();
        copies.emplace(source->index, TrackCopy(source, *copy));
        hasVideo = hasVideo || isVideo(source);
    }
    if (copies.empty()) return Error{"nothing to copy from " + from.string()};
    if (std::optional<Error> error = writeHeader(output->get(), container, hasVideo, fastStart)) return error;
    Packet packet(av_packet_alloc());
    while (av_read_frame(input->get(), packet.get()) >= 0) {
        const auto copy = copies.find(packet->stream_index);
        std::optional<Error> error;
        if (copy != copies.end()) error = copy->second.write(output->get(), packet.get());
        av_packet_unref(packet.get());
        if (error) return error;
    }
    for (auto& [index, copy] : copies)
        if (std::optional<Error> error = copy.finish(output->get())) return error;
    if (int code = av_write_trailer(output->get()); code < 0) return failure("cannot complete " + to.string(), code);
    return std::nullopt;
}

std::optional<Error> FfmpegMovieFiles::mixAudioTracks(const std::filesystem::path& from,
                                                      const std::filesystem::path& to, MovieContainer container,
                                                      const AudioTrackSettings& audio) {
    Expected<InputFile> input = openInput(from);
    if (!input) return input.error();
    Expected<OutputFile> output = openOutput(to, container);
    if (!output) return output.error();

    const AVStream* videoSource = nullptr;
    std::optional<TrackCopy> videoCopy;
    std::vector<std::unique_ptr<SoundReader>> readers;
    for (unsigned i = 0; i < (*input)->nb_streams; ++i) {
        const AVStream* source = (*input)->streams[i];
        if (isVideo(source) && !videoSource && container != MovieContainer::appleM4A) {
            Expected<AVStream*> copy = addCopy(output->get(), source);
            if (!copy) return copy.error();
            videoSource = source;
            videoCopy.emplace(source, *copy);
        } else if (isAudio(source)) {
            Expected<std::unique_ptr<SoundReader>> reader = SoundReader::open(source, audio.sampleRate, audio.channels);
            if (!reader) return reader.error();
            readers.push_back(std::move(reader).value());
        }
    }
    if (readers.empty()) return Error{"no sound in " + from.string()};
    Expected<std::unique_ptr<AacTrack>> mixed = AacTrack::add(output->get(), audio);
    if (!mixed) return mixed.error();
    if (std::optional<Error> error = writeHeader(output->get(), container, videoCopy.has_value(), true)) return error;

    const std::size_t channels = static_cast<std::size_t>(audio.channels);
    // Sums the sound every track has ready; at the end, whatever any track
    // still holds, the others counting as silence.
    const auto mixReady = [&](bool draining) -> std::optional<Error> {
        std::size_t ready = draining ? 0 : SIZE_MAX;
        for (const auto& r : readers)
            ready = draining ? std::max(ready, r->pending.size()) : std::min(ready, r->pending.size());
        ready -= ready % channels;
        if (ready == 0) return std::nullopt;
        std::vector<float> sum(ready, 0.0f);
        for (const auto& r : readers) {
            const std::size_t take = std::min(ready, r->pending.size());
            for (std::size_t i = 0; i < take; ++i) sum[i] += r->pending[i];
            r->pending.erase(r->pending.begin(), r->pending.begin() + static_cast<std::ptrdiff_t>(take));
        }
        for (float& v : sum) v = std::clamp(v, -1.0f, 1.0f);
        return (*mixed)->write(sum.data(), static_cast<std::int64_t>(ready / channels));
    };

    Packet packet(av_packet_alloc());
    while (av_read_frame(input->get(), packet.get()) >= 0) {
        const AVStream* source = (*input)->streams[packet->stream_index];
        std::optional<Error> error;
        if (source == videoSource) {
            error = videoCopy->write(output->get(), packet.get());
        } else {
            for (auto& r : readers)
                if (r->streamIndex == packet->stream_index) error = r->feed(packet.get(), source, audio.sampleRate, audio.channels);
            if (!error) error = mixReady(false);
        }
        av_packet_unref(packet.get());
        if (error) return error;
    }
    for (auto& r : readers)
        if (std::optional<Error> error = r->feed(nullptr, (*input)->streams[r->streamIndex], audio.sampleRate, audio.channels))
            return error;
    if (std::optional<Error> error = mixReady(true)) return error;
    if (videoCopy)
        if (std::optional<Error> error = videoCopy->finish(output->get())) return error;
    if (std::optional<Error> error = (*mixed)->finish()) return error;
    if (int code = av_write_trailer(output->get()); code < 0) return failure("cannot complete " + to.string(), code);
    return std::nullopt;
}

std::optional<Error> FfmpegMovieFiles::readAudio(const std::filesystem::path& movie, int sampleRate, int channels,
                                                 double maxSeconds,
                                                 const std::function<void(std::span<const float>)>& chunk) {
    Expected<InputFile> input = openInput(movie);
    if (!input) return input.error();
    const int index = av_find_best_stream(input->get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) return Error{"no sound in " + movie.string()};
    const AVStream* stream = (*input)->streams[index];
    Expected<std::unique_ptr<SoundReader>> reader = SoundReader::open(stream, sampleRate, channels);
    if (!reader) return reader.error();
    const std::size_t limit = static_cast<std::size_t>(maxSeconds * sampleRate) * static_cast<std::size_t>(channels);
    std::size_t delivered = 0;
    std::vector<float> buffer;
    const auto handOut = [&] {
        SoundReader& r = **reader;
        const std::size_t take = std::min(r.pending.size(), limit - delivered);
        buffer.assign(r.pending.begin(), r.pending.begin() + static_cast<std::ptrdiff_t>(take));
        r.pending.clear();
        delivered += take;
        if (!buffer.empty()) chunk(buffer);
    };
    Packet packet(av_packet_alloc());
    while (delivered < limit && av_read_frame(input->get(), packet.get()) >= 0) {
        std::optional<Error> error;
        if (packet->stream_index == index) error = (*reader)->feed(packet.get(), stream, sampleRate, channels);
        av_packet_unref(packet.get());
        if (error) return error;
        handOut();
    }
    if (delivered < limit) {
        if (std::optional<Error> error = (*reader)->feed(nullptr, stream, sampleRate, channels)) return error;
        handOut();
    }
    return std::nullopt;
}

Expected<std::vector<double>> FfmpegMovieFiles::videoFrameTimes(const std::filesystem::path& movie) {
    Expected<InputFile> input = openInput(movie);
    if (!input) return input.error();
    const int index = av_find_best_stream(input->get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) return Error{"no picture in " + movie.string()};
    const AVRational base = (*input)->streams[index]->time_base;
    std::vector<double> times;
    Packet packet(av_packet_alloc());
    while (av_read_frame(input->get(), packet.get()) >= 0) {
        if (packet->stream_index == index && packet->pts != AV_NOPTS_VALUE) times.push_back(static_cast<double>(packet->pts) * av_q2d(base));
        av_packet_unref(packet.get());
    }
    std::sort(times.begin(), times.end());
    return times;
}

std::optional<Error> FfmpegMovieFiles::readVideoFrames(const std::filesystem::path& movie, const std::vector<std::size_t>& wanted,
                                                       int maxWidth, const std::function<void(std::size_t, ImageBuffer)>& deliver) {
    Expected<InputFile> input = openInput(movie);
    if (!input) return input.error();
    const int index = av_find_best_stream(input->get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) return Error{"no picture in " + movie.string()};
    const AVStream* stream = (*input)->streams[index];
    const AVCodec* codec = avcodec_find_decoder(stream->codecpar->codec_id);
    if (!codec) return Error{"no decoder for the picture of " + movie.string()};
    CodecContext decoder(avcodec_alloc_context3(codec));
    if (int code = avcodec_parameters_to_context(decoder.get(), stream->codecpar); code < 0) return failure("cannot read a picture track", code);
    decoder->pkt_timebase = stream->time_base;
    if (int code = avcodec_open2(decoder.get(), codec, nullptr); code < 0) return failure("cannot open a picture decoder", code);

    std::size_t place = 0, next = 0;
    struct ScalerFree {
        void operator()(SwsContext* s) const { sws_freeContext(s); }
    };
    std::unique_ptr<SwsContext, ScalerFree> scaler;
    Frame frame(av_frame_alloc());
    const auto drain = [&]() -> std::optional<Error> {
        for (;;) {
            const int code = avcodec_receive_frame(decoder.get(), frame.get());
            if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return std::nullopt;
            if (code < 0) return failure("cannot decode a picture", code);
            const std::size_t here = place++;
            if (next >= wanted.size() || wanted[next] != here) continue;
            ++next;
            const double factor = std::min(1.0, static_cast<double>(maxWidth) / frame->width);
            const int width = std::max(1, static_cast<int>(frame->width * factor));
            const int height = std::max(1, static_cast<int>(frame->height * factor));
            scaler.reset(sws_getCachedContext(scaler.release(), frame->width, frame->height, static_cast<AVPixelFormat>(frame->format), width,
                                              height, AV_PIX_FMT_RGBA, SWS_AREA, nullptr, nullptr, nullptr));
            if (!scaler) return Error{"cannot scale the pictures of " + movie.string()};
            MutableImage image(width, height, PixelOrder::rgba, PixelMemoryFill::uninitialized);
            std::uint8_t* planes[1] = {image.row(0)};
            const int strides[1] = {static_cast<int>(image.stride())};
            sws_scale(scaler.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
            deliver(here, std::move(image).freeze());
        }
    };
    Packet packet(av_packet_alloc());
    while (next < wanted.size() && av_read_frame(input->get(), packet.get()) >= 0) {
        std::optional<Error> error;
        if (packet->stream_index == index) {
            if (int code = avcodec_send_packet(decoder.get(), packet.get()); code < 0) error = failure("cannot decode a picture", code);
            else error = drain();
        }
        av_packet_unref(packet.get());
        if (error) return error;
    }
    if (next < wanted.size()) {
        avcodec_send_packet(decoder.get(), nullptr);
        if (std::optional<Error> error = drain()) return error;
    }
    return std::nullopt;
}

} // namespace tosvar
