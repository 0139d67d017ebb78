#include "AudioLevel.h"
#include "AudioRecordingHUDModel.h"
#include "PauseTimeline.h"
#include "RecordingDestination.h"
#include "RecordingError.h"
#include "RecordingGeometry.h"
#include "WaveformAccumulator.h"

#include <gtest/gtest.h>

#include <vector>

namespace tosvar {
namespace {

using std::chrono::milliseconds;

MediaTime ms(long long value) { return milliseconds(value); }

TEST(PauseTimeline, PauseLongerThanAFrameLeavesOneFrameIntervalInTheMovie) {
    PauseTimeline timeline(30);
    EXPECT_EQ(timeline.adjusted(ms(1000)), ms(1000));
    EXPECT_EQ(timeline.adjusted(ms(1033)), ms(1033));
    timeline.markResumeBoundary();
    // Ten seconds of pause: the next frame lands one nominal interval (33.333 ms) later.
    const MediaTime resumed = timeline.adjusted(ms(11033));
    EXPECT_EQ(resumed - ms(1033), MediaTime(33333));
    EXPECT_EQ(timeline.currentOffset(), ms(10000) - MediaTime(33333));
    // Later frames keep the same cut.
    EXPECT_EQ(timeline.adjusted(ms(11066)), ms(11066) - timeline.currentOffset());
}

TEST(PauseTimeline, ResumeWithinTheNominalGapChangesNothing) {
    PauseTimeline timeline(10);
    timeline.adjusted(ms(500));
    timeline.markResumeBoundary();
    EXPECT_EQ(timeline.adjusted(ms(590)), ms(590));
    EXPECT_EQ(timeline.currentOffset(), ms(0));
}

TEST(PauseTimeline, GapsWithoutAResumeAreKept) {
    PauseTimeline timeline(30);
    timeline.adjusted(ms(0));
    EXPECT_EQ(timeline.adjusted(ms(5000)), ms(5000)); // a still screen sends no frames
    timeline.markResumeBoundary();
    timeline.markResumeBoundary();
    timeline.adjusted(ms(9000));
    EXPECT_EQ(timeline.adjusted(ms(12000)), ms(12000) - timeline.currentOffset());
    EXPECT_EQ(timeline.currentOffset(), ms(4000) - MediaTime(33333)); // one cut for two marks
}

TEST(PauseTimeline, ResumeBeforeAnyFrameCutsNothing) {
    PauseTimeline timeline(0); // a frame rate below one counts as one
    timeline.markResumeBoundary();
    EXPECT_EQ(timeline.adjusted(ms(7000)), ms(7000));
    timeline.markResumeBoundary();
    EXPECT_EQ(timeline.adjusted(ms(9000)), ms(8000));
}

TEST(RecordingGeometry, EvenPixelsRoundsAndClearsTheLowestBit) {
    EXPECT_EQ(RecordingGeometry::evenPixels(100, 2), 200);
    EXPECT_EQ(RecordingGeometry::evenPixels(100.4, 1), 100);
    EXPECT_EQ(RecordingGeometry::evenPixels(100.6, 1), 100); // 101 made even
    EXPECT_EQ(RecordingGeometry::evenPixels(333, 1.5), 500);
    EXPECT_EQ(RecordingGeometry::evenPixels(0.2, 1), 2);
    EXPECT_EQ(RecordingGeometry::evenPixels(-5, 1), 2);
}

TEST(AudioLevel, PeakReadsEveryFourthValueAndClampsToOne) {
    std::vector<float> samples(16, 0.1f);
    samples[1] = 0.9f; // not read
    samples[8] = -0.6f;
    EXPECT_FLOAT_EQ(AudioLevel::peakLevel(samples), 0.6f);
    samples[12] = 3.0f;
    EXPECT_FLOAT_EQ(AudioLevel::peakLevel(samples), 1.0f);
    EXPECT_FLOAT_EQ(AudioLevel::peakLevel({}), 0.0f);
}

TEST(AudioLevelThrottle, ReportsTheLoudestLevelAtMostEveryFiftyMilliseconds) {
    AudioLevelThrottle throttle;
    EXPECT_EQ(throttle.add(0.2f, ms(1000)), 0.2f); // the first report passes at once
    EXPECT_EQ(throttle.add(0.7f, ms(1020)), std::nullopt);
    EXPECT_EQ(throttle.add(0.3f, ms(1040)), std::nullopt);
    EXPECT_EQ(throttle.add(0.1f, ms(1050)), 0.7f);
    EXPECT_EQ(throttle.add(0.4f, ms(1120)), 0.4f); // the peak was reset by the report
}

TEST(WaveformAccumulator, FoldsInHalfWhenFullAndDoublesTheReportsPerBucket) {
    WaveformAccumulator waveform;
    for (int i = 0; i < 300; ++i) waveform.add(static_cast<float>(i % 10) / 10);
    // 240 reports fill it; the fold leaves 120 of two reports; 60 more add 30.
    EXPECT_EQ(waveform.buckets().size(), 150u);
    EXPECT_EQ(waveform.reportsPerBucket(), 2);
    EXPECT_FLOAT_EQ(waveform.buckets()[0], 0.1f); // max of 0.0 and 0.1
    EXPECT_FLOAT_EQ(waveform.buckets()[149], 0.9f);
}

TEST(WaveformAccumulator, SnapshotAddsTheUnfinishedBucketAndLevelsAreClamped) {
    WaveformAccumulator waveform(4);
    waveform.add(2.0f);
    waveform.add(-1.0f);
    waveform.add(0.5f);
    waveform.add(0.25f); // four buckets: folded to [1, 0.5]
    EXPECT_EQ(waveform.buckets(), (std::vector<float>{1.0f, 0.5f}));
    waveform.add(0.75f);
    EXPECT_EQ(waveform.snapshot(), (std::vector<float>{1.0f, 0.5f, 0.75f}));
    EXPECT_EQ(WaveformAccumulator(1).capacity(), 2);
}

TEST(WaveformAccumulator, OddBucketCountKeepsTheLastBucketAlone) {
    WaveformAccumulator waveform(3);
    for (float level : {0.1f, 0.2f, 0.3f}) waveform.add(level);
    EXPECT_EQ(waveform.buckets(), (std::vector<float>{0.2f, 0.3f}));
}

TEST(RecordingDestination, NamesRecordingsAndSoundFilesInTheGivenZone) {
    // 2026-03-04 08:05:07 UTC
    const auto at = RecordingDestination::Clock::from_time_t(1772611507);
    EXPECT_EQ(RecordingDestination::fileName(at, "mp4", RecordingTimeZone::fixed(std::chrono::hours(1))),
              "Tosvar Recording 2026-03-04 at 09.05.07.mp4");
    EXPECT_EQ(RecordingDestination::audioFileName(at, "m4a", RecordingTimeZone::fixed(std::chrono::hours(-9))),
              "Tosvar Audio 2026-03-03 at 23.05.07.m4a");
}

TEST(RecordingDestination, DurationStringCountsWholeSeconds) {
    EXPECT_EQ(RecordingDestination::durationString(0), "0:00");
    EXPECT_EQ(RecordingDestination::durationString(59.9), "0:59");
    EXPECT_EQ(RecordingDestination::durationString(61), "1:01");
    EXPECT_EQ(RecordingDestination::durationString(3725), "62:05");
    EXPECT_EQ(RecordingDestination::durationString(-3), "0:00");
}

TEST(AudioRecordingHUDModel, TheMeterRisesAtOnceFallsSmoothlyAndHoldsWhilePaused) {
    float shown = 0;
    shown = AudioRecordingHUDModel::meterLevel(shown, 0.8f, false);
    EXPECT_FLOAT_EQ(shown, 0.8f);
    shown = AudioRecordingHUDModel::meterLevel(shown, 0.1f, false);
    EXPECT_FLOAT_EQ(shown, 0.8f * 0.72f);
    EXPECT_FLOAT_EQ(AudioRecordingHUDModel::meterLevel(shown, 1.0f, true), shown);
}

TEST(AudioRecordingHUDModel, TimeTextGainsHoursFromOneHour) {
    EXPECT_EQ(AudioRecordingHUDModel::timeText(0), "0:00");
    EXPECT_EQ(AudioRecordingHUDModel::timeText(3599.9), "59:59");
    EXPECT_EQ(AudioRecordingHUDModel::timeText(3600), "1:00:00");
    EXPECT_EQ(AudioRecordingHUDModel::timeText(3725), "1:02:05");
}

TEST(RecordingError, WriterFailureFallsBackToAGeneralText) {
    EXPECT_EQ(RecordingError::writerFailed().message, "Video writing failed");
    EXPECT_EQ(RecordingError::writerFailed("").message, "Video writing failed");
    EXPECT_EQ(RecordingError::writerFailed("disk full").message, "disk full");
    EXPECT_EQ(RecordingError::noFramesCaptured().message, "No frames were captured");
}

} // namespace
} // namespace tosvar
