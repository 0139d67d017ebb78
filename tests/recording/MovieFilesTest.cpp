// The writers, the mixer, the remuxer and the sound finalizer over the real
// FFmpeg encoder, checked by reading the files back.
#include "AudioTrackFinalizer.h"
#include "AudioWriter.h"
#include "FfmpegMovieEncoder.h"
#include "FfmpegMovieFiles.h"
#include "IsolatedEnvironment.h"
#include "MovieWriter.h"
#include "RecordingAudioMixer.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include <cmath>
#include <numbers>
#include <thread>

namespace tosvar {
namespace {

using std::chrono::milliseconds;

MediaTime ms(long long value) { return milliseconds(value); }

struct TrackFacts {
    AVMediaType type;
    int width = 0, height = 0;
    int channels = 0, sampleRate = 0;
    std::int64_t bitrate = 0;
    int packets = 0;
    double firstTime = 0, lastTime = 0; // of packets, seconds
};

// Reads every packet of a file and says what each track holds.
std::vector<TrackFacts> probe(const std::filesystem::path& file) {
    AVFormatContext* input = nullptr;
    if (avformat_open_input(&input, file.c_str(), nullptr, nullptr) < 0) return {};
    avformat_find_stream_info(input, nullptr);
    std::vector<TrackFacts> tracks;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVCodecParameters* p = input->streams[i]->codecpar;
        tracks.push_back({p->codec_type, p->width, p->height, p->ch_layout.nb_channels, p->sample_rate, p->bit_rate});
    }
    AVPacket* packet = av_packet_alloc();
    while (av_read_frame(input, packet) >= 0) {
        TrackFacts& t = tracks[static_cast<std::size_t>(packet->stream_index)];
        const double time = static_cast<double>(packet->pts) * av_q2d(input->streams[packet->stream_index]->time_base);
        if (t.packets == 0) t.firstTime = time;
        t.lastTime = std::max(t.lastTime, time);
        ++t.packets;
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avformat_close_input(&input);
    return tracks;
}

int countOf(const std::vector<TrackFacts>& tracks, AVMediaType type) {
    return static_cast<int>(std::count_if(tracks.begin(), tracks.end(), [&](const TrackFacts& t) { return t.type == type; }));
}

const TrackFacts& first(const std::vector<TrackFacts>& tracks, AVMediaType type) {
    return *std::find_if(tracks.begin(), tracks.end(), [&](const TrackFacts& t) { return t.type == type; });
}

ImageBuffer frameNumbered(int n, int width, int height) {
    MutableImage image(width, height, PixelOrder::bgra);
    image.fill({static_cast<std::uint8_t>(n * 20 % 256), static_cast<std::uint8_t>(255 - n * 7 % 256), 90, 255});
    for (int y = 0; y < height / 4; ++y)
        for (int x = 0; x < (n % width); ++x) image.setPixel(x, y, {255, 255, 255, 255});
    return std::move(image).freeze();
}

AudioChunk tone(MediaTime at, double frequency, float amplitude, int frames = 960, int channels = 2) {
    AudioChunk chunk;
    chunk.channels = channels;
    chunk.time = at;
    const double start = mediaSeconds(at) * 48000;
    for (int i = 0; i < frames; ++i) {
        const float v =
            amplitude * static_cast<float>(std::sin(2 * std::numbers::pi * frequency * (start + i) / 48000));
        for (int c = 0; c < channels; ++c) chunk.samples.push_back(v);
    }
    return chunk;
}

// Offers the same sample until the encoder has room: a real capture drops
// it instead, which would make the counts below depend on the machine.
void appendPaced(const std::function<bool()>& append) {
    for (int attempt = 0; attempt < 2000 && !append(); ++attempt) std::this_thread::sleep_for(milliseconds(1));
}

class MovieFilesTest : public ::testing::Test {
protected:
    // Writes `seconds` of 10 fps video with sound on the tracks asked for.
    std::filesystem::path recordMovie(const std::string& name, bool systemAudio, bool microphone, double seconds,
                                      MediaTime pauseAt = MediaTime::max(), MediaTime pauseLength = ms(0)) {
        const std::filesystem::path url = environment.root() / name;
        auto writer =
            std::move(MovieWriter::open(openFfmpegMovieEncoder, url, 160, 120, 10, systemAudio, microphone)).value();
        MediaTime shift{0};
        for (MediaTime t{0}; t < MediaTime(static_cast<long long>(seconds * 1e6)); t += ms(20)) {
            if (t == pauseAt) {
                shift = pauseLength;
                writer->markResumeBoundary();
            }
            if (t.count() % 100'000 == 0) {
                const int n = static_cast<int>(t.count() / 100'000);
                appendPaced([&] {
                    const int before = writer->appendedFrames();
                    writer->append({frameNumbered(n, 320, 240), t + shift});
                    return writer->appendedFrames() > before;
                });
            }
            if (systemAudio) writer->appendSystemAudio(tone(t + shift, 440, 0.5f));
            if (microphone) writer->appendMicrophone(tone(t + shift, 660, 0.25f));
        }
        EXPECT_EQ(writer->appendedFrames(), static_cast<int>(std::lround(seconds * 10)));
        EXPECT_EQ(writer->finish(), std::nullopt);
        return url;
    }

    IsolatedEnvironment environment;
    FfmpegMovieFiles files;
};

TEST_F(MovieFilesTest, AMovieHoldsScaledH264AndAACAtTheirTimes) {
    const std::filesystem::path movie = recordMovie("one.mov", true, false, 2.0);
    const auto tracks = probe(movie);
    ASSERT_EQ(tracks.size(), 2u);
    const TrackFacts& video = first(tracks, AVMEDIA_TYPE_VIDEO);
    EXPECT_EQ(video.width, 160);
    EXPECT_EQ(video.height, 120);
    EXPECT_EQ(video.packets, 20);
    EXPECT_NEAR(video.lastTime - video.firstTime, 1.9, 0.01);
    const TrackFacts& sound = first(tracks, AVMEDIA_TYPE_AUDIO);
    EXPECT_EQ(sound.channels, 2);
    EXPECT_EQ(sound.sampleRate, 48000);
    EXPECT_NEAR(sound.packets * 1024 / 48000.0, 2.0, 0.05);
    EXPECT_EQ(files.trackCounts(movie).value(), (MovieTrackCounts{1, 1}));
}

TEST_F(MovieFilesTest, APauseIsCutFromTheMovie) {
    const std::filesystem::path movie = recordMovie("paused.mov", true, false, 2.0, ms(1000), milliseconds(8000));
    const auto tracks = probe(movie);
    const TrackFacts& video = first(tracks, AVMEDIA_TYPE_VIDEO);
    EXPECT_EQ(video.packets, 20);
    EXPECT_NEAR(video.lastTime - video.firstTime, 1.9, 0.01);
    EXPECT_NEAR(first(tracks, AVMEDIA_TYPE_AUDIO).lastTime, 2.0, 0.05);
}

TEST_F(MovieFilesTest, TwoSoundTracksAreMixedIntoOneAndTheMovieRemuxedToMP4) {
    const std::filesystem::path movie = recordMovie("both.mov", true, true, 1.0);
    EXPECT_EQ(files.trackCounts(movie).value(), (MovieTrackCounts{1, 2}));

    const Expected<std::filesystem::path> mixed = RecordingAudioMixer::mixIfNeeded(files, movie);
    ASSERT_TRUE(mixed) << mixed.error().message;
    EXPECT_FALSE(std::filesystem::exists(movie));
    const auto tracks = probe(*mixed);
    EXPECT_EQ(countOf(tracks, AVMEDIA_TYPE_AUDIO), 1);
    EXPECT_EQ(first(tracks, AVMEDIA_TYPE_VIDEO).packets, 10);
    EXPECT_NEAR(first(tracks, AVMEDIA_TYPE_AUDIO).packets * 1024 / 48000.0, 1.0, 0.06);

    const std::filesystem::path mp4 = environment.root() / "out.mp4";
    ASSERT_EQ(MovieRemuxer::remuxToMP4(files, *mixed, mp4), std::nullopt);
    const auto remuxed = probe(mp4);


    EXPECT_EQ(first(remuxed, AVMEDIA_TYPE_VIDEO).packets, 10);
    EXPECT_EQ(first(remuxed, AVMEDIA_TYPE_VIDEO).width, 160);
    EXPECT_EQ(countOf(remuxed, AVMEDIA_TYPE_AUDIO), 1);
}

TEST_F(MovieFilesTest, ASoundRecordingBecomesAnM4AFile) {
    const std::filesystem::path temporary = environment.root() / "sound.mov";
    auto writer = std::move(AudioWriter::open(openFfmpegMovieEncoder, temporary, {1, 64000}, true, false)).value();
    for (MediaTime t = ms(5000); t < ms(6000); t += ms(20))
        appendPaced([&] {
            const int before = writer->appendedPackets();
            writer->appendMicrophone(tone(t, 440, 0.5f, 960, 1));
            return writer->appendedPackets() > before;
        });
    EXPECT_DOUBLE_EQ(writer->capturedDuration(), 1.0);
    ASSERT_EQ(writer->finish(), std::nullopt);

    const std::filesystem::path m4a = environment.root() / "sound.m4a";
    ASSERT_EQ(AudioTrackFinalizer::finalize(files, temporary, m4a), std::nullopt);
    const auto tracks = probe(m4a);
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks[0].channels, 1); // one source keeps the quality's format
    EXPECT_NEAR(tracks[0].packets * 1024 / 48000.0, 1.0, 0.05);
}

TEST_F(MovieFilesTest, MicrophoneAndSystemAudioBecomeOneStereoTrack) {
    const std::filesystem::path temporary = environment.root() / "two.mov";
    auto writer = std::move(AudioWriter::open(openFfmpegMovieEncoder, temporary, {1, 64000}, true, true)).value();
    for (MediaTime t = ms(0); t < ms(1000); t += ms(20)) {
        appendPaced([&] {
            const int before = writer->appendedPackets();
            writer->appendMicrophone(tone(t, 440, 0.5f, 960, 1));
            return writer->appendedPackets() > before;
        });
        writer->appendSystemAudio(tone(t + ms(5), 880, 0.25f, 960, 1));
    }
    ASSERT_EQ(writer->finish(), std::nullopt);
    const std::filesystem::path m4a = environment.root() / "two.m4a";
    ASSERT_EQ(AudioTrackFinalizer::finalize(files, temporary, m4a), std::nullopt);
    const auto tracks = probe(m4a);
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks[0].channels, 2);
    EXPECT_NEAR(static_cast<double>(tracks[0].bitrate), 192000, 40000);
}

TEST_F(MovieFilesTest, TheWaveformOfAFileFollowsItsLoudness) {
    const std::filesystem::path temporary = environment.root() / "ramp.mov";
    auto writer = std::move(AudioWriter::open(openFfmpegMovieEncoder, temporary, {1, 128000}, true, false)).value();
    for (MediaTime t = ms(0); t < ms(2000); t += ms(20))
        appendPaced([&] {
            const int before = writer->appendedPackets();
            writer->appendMicrophone(tone(t, 300, t < ms(1000) ? 0.1f : 0.8f, 960, 1));
            return writer->appendedPackets() > before;
        });
    ASSERT_EQ(writer->finish(), std::nullopt);
    const std::optional<std::vector<float>> bars = AudioWaveformLoader::waveform(files, temporary);
    ASSERT_TRUE(bars);
    ASSERT_GE(bars->size(), 10u);
    EXPECT_LE(bars->size(), 240u);
    EXPECT_NEAR((*bars)[bars->size() / 4], 0.1, 0.05);
    EXPECT_NEAR((*bars)[bars->size() * 3 / 4], 0.8, 0.1);
    EXPECT_EQ(AudioWaveformLoader::waveform(files, environment.root() / "missing.m4a"), std::nullopt);

    // Reading stops at the limit: how a long file gets the waveform of its beginning.
    std::size_t samples = 0;
    ASSERT_EQ(files.readAudio(temporary, 8000, 1, 1.0, [&](std::span<const float> chunk) { samples += chunk.size(); }),
              std::nullopt);
    EXPECT_EQ(samples, 8000u);
}

TEST_F(MovieFilesTest, ACancelledMovieLeavesNoFile) {
    const std::filesystem::path url = environment.root() / "gone.mov";
    auto writer = std::move(MovieWriter::open(openFfmpegMovieEncoder, url, 64, 64, 10, false, false)).value();
    writer->append({frameNumbered(1, 64, 64), ms(0)});
    EXPECT_TRUE(std::filesystem::exists(url));
    writer->cancel();
    EXPECT_FALSE(std::filesystem::exists(url));
    EXPECT_FALSE(openFfmpegMovieEncoder({"/nonexistent/folder/x.mov", MovieContainer::quickTime,
                                         VideoTrackSettings{64, 64, 10, 3000000, 10}, {}}));
    EXPECT_FALSE(openFfmpegMovieEncoder({environment.root() / "odd.mov", MovieContainer::quickTime,
                                         VideoTrackSettings{63, 64, 10, 3000000, 10}, {}}));
}

} // namespace
} // namespace tosvar
