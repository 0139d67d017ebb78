#include "SiblingApp.h"

#include <gtest/gtest.h>

using namespace tosvar;

TEST(SiblingApp, MatchesTheFamilyButNotItsOtherProducts) {
    const std::pair<const char*, bool> rows[] = {
        {"app.vemla", true},           {"app.vemla.helper", true},  {"app.vemlaX", false},
        {"app.vemla.tosvar", false},   {"app.vemla.tosvar.beta", false}, {"app.vemla.sedlo", false},
        {"org.other", false},
    };
    for (const auto& [id, expected] : rows) EXPECT_EQ(SiblingApp::matches(id, "app.vemla"), expected) << id;
    EXPECT_TRUE(SiblingApp::matches("app.vemla.tosvar.x", "app.vemla.tosvar"));
}

TEST(SiblingApp, RunningSkipsOurselvesAndEmptyNames) {
    EXPECT_FALSE(SiblingApp::isRunning({"", "app.vemla.tosvar", "org.freedesktop.DBus"}, "app.vemla.tosvar"));
    EXPECT_TRUE(SiblingApp::isRunning({"app.vemla.tosvar", "app.vemla"}, "app.vemla.tosvar"));
}

TEST(SiblingApp, ThisProductNeverYields) {
    AppSettings settings;
    settings.captureHandledBySiblingApp = true;
    EXPECT_FALSE(SiblingApp::shouldYieldCapture(settings, BuildTarget::current()));
    EXPECT_TRUE(SiblingApp::shouldYieldCapture(settings, {BuildProduct::vemla, BuildChannel::direct}));
}
