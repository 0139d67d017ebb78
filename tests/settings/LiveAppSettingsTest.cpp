#include "LiveAppSettings.h"

#include <gtest/gtest.h>

#include <string>

using namespace tosvar;

TEST(LiveAppSettings, UpdateWithAnEqualRecordCallsNoObserver) {
    auto live = LiveAppSettings::forTesting(AppSettings{});
    int calls = 0;
    ObservationToken token = live->observe([&](const AppSettings&) { ++calls; });
    live->update(AppSettings{});
    EXPECT_EQ(calls, 0);
    AppSettings changed;
    changed.recordingFPS = 24;
    live->update(changed);
    live->update(changed);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(live->settings().recordingFPS, 24);
}

TEST(LiveAppSettings, ObserversRunInRegistrationOrderWithTheNewValue) {
    auto live = LiveAppSettings::forTesting(AppSettings{});
    std::string log;
    ObservationToken first = live->observe([&](const AppSettings& s) { log += "a" + std::to_string(s.recordingFPS); });
    ObservationToken second = live->observe([&](const AppSettings& s) { log += "b" + std::to_string(s.recordingFPS); });
    AppSettings changed;
    changed.recordingFPS = 60;
    live->update(changed);
    EXPECT_EQ(log, "a60b60");
}

TEST(LiveAppSettings, TokensStopObservingWhenCancelledOrDestroyed) {
    auto live = LiveAppSettings::forTesting(AppSettings{});
    int calls = 0;
    ObservationToken kept = live->observe([&](const AppSettings&) { ++calls; });
    {
        ObservationToken dropped = live->observe([&](const AppSettings&) { calls += 100; });
    }
    AppSettings changed;
    changed.paused = true;
    live->update(changed);
    EXPECT_EQ(calls, 1);
    kept.cancel();
    changed.paused = false;
    live->update(changed);
    EXPECT_EQ(calls, 1);
}

TEST(LiveAppSettings, AnObserverMayCancelAnotherDuringUpdate) {
    auto live = LiveAppSettings::forTesting(AppSettings{});
    int laterCalls = 0;
    ObservationToken later;
    ObservationToken first = live->observe([&](const AppSettings&) { later.cancel(); });
    later = live->observe([&](const AppSettings&) { ++laterCalls; });
    AppSettings changed;
    changed.ocrEnabled = false;
    live->update(changed);
    EXPECT_EQ(laterCalls, 0);
}

TEST(LiveAppSettings, TokenMayOutliveTheSettings) {
    ObservationToken token;
    {
        auto live = LiveAppSettings::forTesting(AppSettings{});
        token = live->observe([](const AppSettings&) {});
    }
    token.cancel(); // nothing left to cancel, nothing breaks
}
