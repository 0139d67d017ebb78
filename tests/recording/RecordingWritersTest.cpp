#include "AudioWriter.h"
#include "MovieWriter.h"
#include "RecordingError.h"
#include "RecordingFakes.h"

#include <gtest/gtest.h>

namespace tosvar {
namespace {

using namespace fakes;
using std::chrono::milliseconds;

MediaTime ms(long long value) { return milliseconds(value); }

TEST(MovieWriter, BitrateFollowsTheFrameAreaWithinItsBounds) {
    EXPECT_EQ(MovieWriter::bitrate(640, 360, 10), 3'000'000);
    EXPECT_EQ(MovieWriter::bitrate(3840, 2160, 60), 60'000'000);
    EXPECT_EQ(MovieWriter::bitrate(1920, 1080, 30), 12'441'600);
}

TEST(MovieWriter, AsksForH264WithKeyframesASecondApartAndOneAACTrackPerSource) {
    Encoders encoders;
    auto writer = MovieWriter::open(encoders.factory(), "/tmp/x.mov", 1280, 720, 30, true, true);
    ASSERT_TRUE(writer);
    const MovieEncoderSettings& settings = encoders.last().settings;
    EXPECT_EQ(settings.container, MovieContainer::quickTime);
    EXPECT_EQ(settings.video, (VideoTrackSettings{1280, 720, 30, MovieWriter::bitrate(1280, 720, 30), 30}));
    EXPECT_EQ(settings.audioTracks, (std::vector<AudioTrackSettings>(2, {48000, 2, 128000})));
}

TEST(MovieWriter, PauseCutsTheGapFromVideoAndSound) {
    Encoders encoders;
    auto writer = std::move(MovieWriter::open(encoders.factory(), "/tmp/x.mov", 64, 64, 10, true, false)).value();
    writer->appendSystemAudio(chunkAt(ms(900))); // before the first frame: dropped
    writer->append(frameAt(ms(1000)));
    writer->appendSystemAudio(chunkAt(ms(1050)));
    writer->append(frameAt(ms(1100)));
    writer->markResumeBoundary(); // ten seconds paused
    writer->append(frameAt(ms(11100)));
    writer->appendSystemAudio(chunkAt(ms(11120)));
    EncodedMovie& movie = encoders.last();
    EXPECT_EQ(movie.videoTimes, (std::vector<MediaTime>{ms(0), ms(100), ms(200)}));
    EXPECT_EQ(movie.audioTimesOf(0), (std::vector<MediaTime>{ms(50), ms(220)}));
    EXPECT_DOUBLE_EQ(writer->capturedDuration(), 0.2);
    EXPECT_EQ(writer->appendedFrames(), 3);
}

TEST(MovieWriter, SoundFromBeforeTheMovieStartIsDroppedAfterACut) {
    Encoders encoders;
    auto writer = std::move(MovieWriter::open(encoders.factory(), "/tmp/x.mov", 64, 64, 10, false, true)).value();
    writer->append(frameAt(ms(5000)));
    writer->append(frameAt(ms(5100)));
    writer->markResumeBoundary();
    writer->append(frameAt(ms(8100))); // cut: 2.9 s
    writer->appendMicrophone(chunkAt(ms(7000))); // 4.1 s on the cut timeline: before the start
    writer->appendMicrophone(chunkAt(ms(8150)));
    EXPECT_EQ(encoders.last().audioTimesOf(0), (std::vector<MediaTime>{ms(250)}));
}

TEST(MovieWriter, FramesTheEncoderHasNoRoomForAreCountedAsDropped) {
    Encoders encoders;
    auto writer = std::move(MovieWriter::open(encoders.factory(), "/tmp/x.mov", 64, 64, 30, true, false)).value();
    writer->append(frameAt(ms(0)));
    encoders.last().videoReady = false;
    encoders.last().audioReady = false;
    writer->append(frameAt(ms(33)));
    writer->appendSystemAudio(chunkAt(ms(40))); // lost without count
    encoders.last().videoReady = true;
    writer->append(frameAt(ms(66)));
    EXPECT_EQ(writer->appendedFrames(), 2);
    EXPECT_EQ(writer->droppedFrames(), 1);
    EXPECT_TRUE(encoders.last().audioTimes.empty());
    EXPECT_DOUBLE_EQ(writer->capturedDuration(), 0.066);
}

TEST(MovieWriter, ARefusedSoundTrackIsLeftOutAndTheOtherStays) {
    Encoders encoders;
    encoders.refusedTracks = {true, false};
    auto writer = std::move(MovieWriter::open(encoders.factory(), "/tmp/x.mov", 64, 64, 30, true, true)).value();
    writer->append(frameAt(ms(0)));
    writer->appendSystemAudio(chunkAt(ms(10)));
    writer->appendMicrophone(chunkAt(ms(20)));
    EXPECT_TRUE(encoders.last().audioTimesOf(0).empty());
    EXPECT_EQ(encoders.last().audioTimesOf(1), (std::vector<MediaTime>{ms(20)}));
}

TEST(MovieWriter, FinishWithoutFramesRemovesTheFile) {
    Encoders encoders;
    auto writer = std::move(MovieWriter::open(encoders.factory(), "/tmp/x.mov", 64, 64, 30, false, false)).value();
    EXPECT_EQ(writer->finish(), RecordingError::noFramesCaptured());
    EXPECT_TRUE(encoders.last().cancelled);
    EXPECT_FALSE(encoders.last().finished);
    EXPECT_EQ(writer->capturedDuration(), 0);
}

TEST(MovieWriter, EncoderFailuresBecomeWriterFailures) {
    Encoders encoders;
    encoders.openError = Error{"cannot open /x"};
    EXPECT_EQ(MovieWriter::open(encoders.factory(), "/x.mov", 64, 64, 30, false, false).error().message,
              "cannot open /x");
    encoders.openError.reset();
    auto writer = std::move(MovieWriter::open(encoders.factory(), "/tmp/x.mov", 64, 64, 30, false, false)).value();
    writer->append(frameAt(ms(0)));
    encoders.last().finishError = Error{""};
    EXPECT_EQ(writer->finish(), RecordingError::writerFailed());
}

TEST(AudioWriter, QualityTable) {
    EXPECT_EQ(AudioWriter::quality(AudioRecordingQuality::voice), (AudioWriter::Quality{1, 64000}));
    EXPECT_EQ(AudioWriter::quality(AudioRecordingQuality::standard), (AudioWriter::Quality{1, 128000}));
    EXPECT_EQ(AudioWriter::quality(AudioRecordingQuality::high), (AudioWriter::Quality{2, 256000}));
    EXPECT_EQ(AudioWriter::localizedKey(AudioRecordingQuality::high), "audio.quality.high");
}

TEST(AudioWriter, TheMicrophoneIsTheClockAndOnlyItsPacketsCount) {
    Encoders encoders;
    auto writer =
        std::move(AudioWriter::open(encoders.factory(), "/tmp/a.mov", {1, 64000}, true, true)).value();
    EXPECT_EQ(writer->clock(), AudioWriter::Clock::microphone);
    EXPECT_EQ(encoders.last().settings.audioTracks, (std::vector<AudioTrackSettings>(2, {48000, 1, 64000})));
    EXPECT_FALSE(encoders.last().settings.video);
    writer->appendSystemAudio(chunkAt(ms(990), 0.1f, 960, 1)); // before the clock started
    writer->appendMicrophone(chunkAt(ms(1000), 0.1f, 960, 1));
    writer->appendSystemAudio(chunkAt(ms(1010), 0.1f, 960, 1));
    writer->appendMicrophone(chunkAt(ms(1020), 0.1f, 960, 1));
    EXPECT_EQ(encoders.last().audioTimesOf(0), (std::vector<MediaTime>{ms(0), ms(20)}));
    EXPECT_EQ(encoders.last().audioTimesOf(1), (std::vector<MediaTime>{ms(10)}));
    EXPECT_EQ(writer->appendedPackets(), 2);
    EXPECT_DOUBLE_EQ(writer->capturedDuration(), 0.04);

    encoders.last().audioReady = false;
    writer->appendSystemAudio(chunkAt(ms(1030)));
    writer->appendMicrophone(chunkAt(ms(1040)));
    EXPECT_EQ(writer->droppedPackets(), 2);
    EXPECT_EQ(writer->appendedPackets(), 2);
}

TEST(AudioWriter, SystemAudioLeadsWithoutAMicrophone) {
    Encoders encoders;
    auto writer =
        std::move(AudioWriter::open(encoders.factory(), "/tmp/a.mov", {2, 256000}, false, true)).value();
    EXPECT_EQ(writer->clock(), AudioWriter::Clock::systemAudio);
    writer->appendMicrophone(chunkAt(ms(0))); // no microphone track
    writer->appendSystemAudio(chunkAt(ms(100)));
    EXPECT_EQ(encoders.last().audioTimesOf(0), (std::vector<MediaTime>{ms(0)}));
    EXPECT_DOUBLE_EQ(writer->capturedDuration(), 0.02);
}

TEST(AudioWriter, APauseLeavesNoGapInTheFile) {
    Encoders encoders;
    auto writer = std::move(AudioWriter::open(encoders.factory(), "/tmp/a.mov", {1, 64000}, true, false)).value();
    writer->appendMicrophone(chunkAt(ms(1000), 0.1f, 960, 1)); // 20 ms each
    writer->appendMicrophone(chunkAt(ms(1020), 0.1f, 960, 1));
    writer->markResumeBoundary();
    writer->appendMicrophone(chunkAt(ms(6000), 0.1f, 960, 1));
    writer->appendMicrophone(chunkAt(ms(6020), 0.1f, 960, 1));
    EXPECT_EQ(encoders.last().audioTimesOf(0), (std::vector<MediaTime>{ms(0), ms(20), ms(40), ms(60)}));
    EXPECT_DOUBLE_EQ(writer->capturedDuration(), 0.08);
}

TEST(AudioWriter, NeedsASourceAndSomeSound) {
    Encoders encoders;
    EXPECT_EQ(AudioWriter::open(encoders.factory(), "/tmp/a.mov", {1, 64000}, false, false).error(),
              RecordingError::writerSetupFailed());
    encoders.refusedTracks = {true};
    EXPECT_EQ(AudioWriter::open(encoders.factory(), "/tmp/a.mov", {1, 64000}, true, false).error(),
              RecordingError::writerSetupFailed());
    EXPECT_TRUE(encoders.last().cancelled);
    encoders.refusedTracks = {true, false}; // the microphone's track refused: system audio leads
    auto writer = std::move(AudioWriter::open(encoders.factory(), "/tmp/a.mov", {1, 64000}, true, true)).value();
    EXPECT_EQ(writer->clock(), AudioWriter::Clock::systemAudio);
    EXPECT_EQ(writer->finish(), RecordingError::noAudioCaptured());
    EXPECT_TRUE(encoders.last().cancelled);
}

} // namespace
} // namespace tosvar
