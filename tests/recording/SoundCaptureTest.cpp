// Sound from a private PulseAudio server: tones played into its null sinks
// are recorded from the default sink's monitor (the system's sound) and from
// a source that remaps the other sink's monitor (the microphone).
#include "AudioCaptureEngine.h"
#include "AudioTrackFinalizer.h"
#include "FfmpegMovieEncoder.h"
#include "FfmpegMovieFiles.h"
#include "IsolatedEnvironment.h"
#include "PulseAudioCapture.h"
#include "PulseAudioServer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <mutex>
#include <numbers>
#include <thread>

namespace tosvar {
namespace {

std::vector<float> stereoTone(double seconds, double frequency, float amplitude) {
    std::vector<float> samples;
    const int frames = static_cast<int>(seconds * 48000);
    for (int i = 0; i < frames; ++i) {
        const float v = amplitude * static_cast<float>(std::sin(2 * std::numbers::pi * frequency * i / 48000));
        samples.push_back(v);
        samples.push_back(v);
    }
    return samples;
}

class SoundCaptureTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (PulseAudioServer::isInstalled()) {
            server = new PulseAudioServer();
            server->useAsServer();
        }
    }
    static void TearDownTestSuite() {
        delete server;
        server = nullptr;
    }
    void SetUp() override {
        if (!server) GTEST_SKIP() << "pulseaudio is not installed";
    }

    static PulseAudioServer* server;
    PulseAudioCapture capture{"Tosvar tests"};
};

PulseAudioServer* SoundCaptureTest::server = nullptr;

TEST_F(SoundCaptureTest, MicrophonesAreTheSourcesThatAreNoMonitors) {
    const std::vector<AudioInputDevice> microphones = capture.microphones();
    ASSERT_EQ(microphones.size(), 1u);
    EXPECT_EQ(microphones[0].id, "mic");
    EXPECT_TRUE(capture.hasDefaultMicrophone());
    EXPECT_EQ(AudioCaptureEngine::availableMicrophones(capture), microphones);
}

TEST_F(SoundCaptureTest, SystemSoundArrivesInTwentyMillisecondChunksOnTheMediaClock) {
    std::mutex mutex;
    std::vector<AudioChunk> chunks;
    Expected<std::unique_ptr<AudioCaptureStream>> stream =
        capture.start({AudioSourceKind::systemAudio, std::nullopt, 48000, 2}, [&](AudioChunk chunk) {
            const std::lock_guard lock(mutex);
            chunks.push_back(std::move(chunk));
        });
    ASSERT_TRUE(stream) << stream.error().message;
    const MediaTime started = mediaClockNow();
    // The null sink answers the monitor's short fragments only from its second
    // stream on; before that it holds sound back by its two-second latency.
    ASSERT_TRUE(server->play(stereoTone(0.05, 440, 0)));
    ASSERT_TRUE(server->play(stereoTone(0.6, 440, 0.5f)));
    (*stream)->stop();
    const MediaTime stopped = mediaClockNow();
    const std::lock_guard lock(mutex);
    ASSERT_GT(chunks.size(), 10u);
    float loudest = 0;
    double seconds = 0;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        EXPECT_EQ(chunks[i].channels, 2);
        EXPECT_EQ(chunks[i].sampleRate, 48000);
        EXPECT_LE(chunks[i].duration(), std::chrono::milliseconds(60));
        if (i > 0) {
            EXPECT_GE(chunks[i].time, chunks[i - 1].time + chunks[i - 1].duration() - std::chrono::milliseconds(1));
        }
        loudest = std::max(loudest, AudioLevel::peakLevel(chunks[i].samples));
        seconds += mediaSeconds(chunks[i].duration());
    }
    EXPECT_NEAR(loudest, 0.5f, 0.02f);
    EXPECT_GE(seconds, 0.55);
    // Stamps follow the sound card's clock within the tenth of a second it may drift.
    EXPECT_GE(chunks.front().time, started - std::chrono::milliseconds(100));
    EXPECT_LE(chunks.back().time, stopped + std::chrono::milliseconds(100));
}

TEST_F(SoundCaptureTest, AnUnknownMicrophoneFallsBackToTheDefault) {
    std::atomic<int> frames = 0;
    Expected<std::unique_ptr<AudioCaptureStream>> stream =
        capture.start({AudioSourceKind::microphone, "no-such-device", 48000, 1},
                      [&](AudioChunk c) { frames += static_cast<int>(c.frameCount()); });
    ASSERT_TRUE(stream) << stream.error().message;
    ASSERT_TRUE(server->play(stereoTone(0.05, 440, 0), "room"));
    ASSERT_TRUE(server->play(stereoTone(0.2, 440, 0.3f), "room"));
    (*stream)->stop();
    EXPECT_GE(frames.load(), 9600);
}

TEST_F(SoundCaptureTest, ASoundRecordingOfMicrophoneAndSystemBecomesAStereoM4A) {
    IsolatedEnvironment environment;
    AudioCaptureEngine engine(capture, openFfmpegMovieEncoder);
    std::atomic<int> levels = 0;
    engine.onAudioLevel = [&](float) { ++levels; };
    const std::filesystem::path temporary = environment.root() / "sound.mov";
    const MediaTime started = mediaClockNow();
    ASSERT_EQ(engine.start(temporary, {1, 64000}, true, true, std::nullopt), std::nullopt);
    // Each source hears its own tone, and only while it plays. The speakers'
    // tone starts once the microphone hears the room's, which lasts longer,
    // so the two are heard together. (A null sink may hold the first sound
    // after a recording starts back by two seconds, hence the long tone.)
    std::thread room([] {
        server->play(stereoTone(0.05, 500, 0), "room");
        server->play(stereoTone(5.0, 500, 0.3f), "room");
    });
    for (int i = 0; i < 500 && engine.capturedDuration() < 0.3; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(server->play(stereoTone(0.05, 330, 0)));
    ASSERT_TRUE(server->play(stereoTone(1.0, 330, 0.3f)));
    const double captured = engine.capturedDuration();
    const Expected<std::filesystem::path> movie = engine.stop();
    room.join();
    ASSERT_TRUE(movie) << movie.error().message;
    EXPECT_GE(captured, 0.8);
    EXPECT_GT(levels.load(), 5);
    EXPECT_LE(levels.load(), static_cast<int>(mediaSeconds(mediaClockNow() - started) * 20) + 1);

    FfmpegMovieFiles files;
    EXPECT_EQ(files.trackCounts(*movie).value(), (MovieTrackCounts{0, 2}));
    const std::filesystem::path m4a = environment.root() / "sound.m4a";
    ASSERT_EQ(AudioTrackFinalizer::finalize(files, *movie, m4a), std::nullopt);
    const std::optional<std::vector<float>> waveform = AudioWaveformLoader::waveform(files, m4a);
    ASSERT_TRUE(waveform);
    // Both tones are in the one track: where they overlap, their peaks add up.
    EXPECT_NEAR(*std::max_element(waveform->begin(), waveform->end()), 0.6f, 0.06f);
    std::size_t samples = 0;
    ASSERT_EQ(files.readAudio(m4a, 8000, 1, 600, [&](std::span<const float> chunk) { samples += chunk.size(); }),
              std::nullopt);
    EXPECT_NEAR(static_cast<double>(samples) / 8000, captured, 0.15);
}

} // namespace
} // namespace tosvar
