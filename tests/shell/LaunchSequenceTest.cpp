#include "HotkeyRegistrationTable.h"
#include "LaunchSequence.h"
#include "RecordingStatusItemStyle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tosvar;

namespace {

class RecordingSteps final : public LaunchSteps {
public:
    std::vector<std::string> calls;
    bool completed = false;
    AppSettings settings;

    void stage(std::string_view name) override { calls.push_back("stage " + std::string(name)); }
    AppSettings loadSettings() override
    {
        calls.emplace_back("loadSettings");
        return settings;
    }
    void applySettings(const AppSettings&) override { calls.emplace_back("applySettings"); }
    void buildCoordinator() override { calls.emplace_back("buildCoordinator"); }
    void startCoordinator() override { calls.emplace_back("startCoordinator"); }
    void readSiblingState() override { calls.emplace_back("readSiblingState"); }
    void watchRecordedCaptures() override { calls.emplace_back("watchRecordedCaptures"); }
    void setupStatusItem() override { calls.emplace_back("setupStatusItem"); }
    void registerHotKeys(const AppSettings& s) override
    {
        calls.push_back(std::string("registerHotKeys ") + (s.screenshotHotkey ? s.screenshotHotkey->displayName() : "-"));
    }
    void observeSibling() override { calls.emplace_back("observeSibling"); }
    void loadRecents() override { calls.emplace_back("loadRecents"); }
    void applyLaunchAtLogin(bool enabled) override { calls.push_back("applyLaunchAtLogin " + std::to_string(enabled)); }
    void scheduleCaptureWarmUp(double seconds) override
    {
        calls.push_back("scheduleCaptureWarmUp " + std::to_string(static_cast<int>(seconds * 1000)) + "ms");
    }
    bool onboardingCompleted() override { return completed; }
    void showOnboarding() override { calls.emplace_back("showOnboarding"); }
    void launchDidFinish() override { calls.emplace_back("launchDidFinish"); }
};

} // namespace

TEST(LaunchSequence, RunsEveryStepInOrderWithTheLoadedSettings)
{
    RecordingSteps steps;
    steps.settings.screenshotHotkey = GlobalHotkeyBinding{20, 0x300};
    steps.settings.launchAtLogin = false;
    runLaunchSequence(steps);
    EXPECT_EQ(steps.calls, (std::vector<std::string>{
                               "stage tosvar: applicationDidFinishLaunching",
                               "loadSettings",
                               "applySettings",
                               "buildCoordinator",
                               "startCoordinator",
                               "readSiblingState",
                               "watchRecordedCaptures",
                               "setupStatusItem",
                               "registerHotKeys ⌘⇧3",
                               "observeSibling",
                               "loadRecents",
                               "applyLaunchAtLogin 0",
                               "scheduleCaptureWarmUp 1000ms",
                               "showOnboarding",
                               "stage tosvar: launch complete",
                               "launchDidFinish",
                           }));

    RecordingSteps onboarded;
    onboarded.completed = true;
    runLaunchSequence(onboarded);
    EXPECT_EQ(std::count(onboarded.calls.begin(), onboarded.calls.end(), "showOnboarding"), 0);
}

TEST(HotkeyRegistrationTable, ElevenRowsInTableOrderWithFixedIds)
{
    AppSettings settings;
    settings.presentationAnnotateHotkey = GlobalHotkeyBinding{0, 0x1100};
    const auto rows = hotkeyRequests(settings);
    std::vector<std::pair<std::string, std::uint32_t>> order;
    for (const HotkeyRequest& row : rows)
        order.emplace_back(rawValue(row.action), row.id);
    EXPECT_EQ(order, (std::vector<std::pair<std::string, std::uint32_t>>{
                         {"screenshot", 1}, {"captureText", 2}, {"translateRegion", 11}, {"recording", 3},
                         {"scrollCapture", 4}, {"delayedScreenshot", 5}, {"audioRecording", 6},
                         {"audioRecordingPause", 7}, {"recordingPause", 8}, {"presentation", 9},
                         {"presentationAnnotate", 10}}));
    EXPECT_EQ(rows[0].binding, GlobalHotkeyBinding::defaultScreenshot());
    EXPECT_EQ(rows[2].binding, GlobalHotkeyBinding::defaultTranslateRegion());
    EXPECT_EQ(rows[3].binding, GlobalHotkeyBinding::defaultRecording());
    EXPECT_EQ(rows[1].binding, std::nullopt);
    EXPECT_EQ(rows[10].binding, (GlobalHotkeyBinding{0, 0x1100}));
}

TEST(RecordingStatusItemStyle, TitlesAreTheElapsedTimeLedByABlank)
{
    EXPECT_EQ(RecordingStatusItemStyle::title(0), " 0:00");
    EXPECT_EQ(RecordingStatusItemStyle::title(7.9), " 0:07");
    EXPECT_EQ(RecordingStatusItemStyle::title(754), " 12:34");
    EXPECT_EQ(RecordingStatusItemStyle::title(3723), " 1:02:03");
    EXPECT_EQ(RecordingStatusItemStyle::title(-5), " 0:00");
    EXPECT_EQ(RecordingStatusItemStyle::title(std::numeric_limits<double>::quiet_NaN()), " 0:00");
}
