#include "SettingsStore.h"

#include "InMemoryDefaultsStore.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

class SettingsStoreTest : public ::testing::Test {
protected:
    InMemoryDefaultsStore defaults;
    SettingsStore store{defaults};
};

} // namespace

TEST_F(SettingsStoreTest, RegistersExactlyTheFortyThreeDefaults) {
    const auto registered = SettingsStore::registeredDefaults();
    EXPECT_EQ(registered.size(), 43u);
    EXPECT_EQ(defaults.layers().registered.size(), 43u);
    EXPECT_TRUE(defaults.layers().stored.empty());
    EXPECT_EQ(registered.at("launchAtLogin"), DefaultsValue(true));
    EXPECT_EQ(registered.at("globalHotkeyKeyCode"), DefaultsValue(std::int64_t{9}));
    EXPECT_EQ(registered.at("screenshotHotkeyModifiers"), DefaultsValue(std::int64_t{0x300}));
    EXPECT_EQ(registered.at("recordingHotkeyModifiers"), DefaultsValue(std::int64_t{0x1200}));
    EXPECT_EQ(registered.at("annotationDrawModifier"), DefaultsValue(std::string("control")));
    EXPECT_EQ(registered.at("textExpansionPrefix"), DefaultsValue(std::string(";")));
    EXPECT_FALSE(registered.contains("translateRegionHotkeyKeyCode"));
    EXPECT_FALSE(registered.contains("captureCardEnabled"));
    EXPECT_FALSE(registered.contains("captureCardDismissSeconds"));
}

TEST_F(SettingsStoreTest, FreshInstallHasThreeCaptureHotkeysAndNoOther) {
    const AppSettings s = store.load();
    EXPECT_EQ(s.screenshotHotkey, GlobalHotkeyBinding::defaultScreenshot());
    EXPECT_EQ(s.recordingHotkey, GlobalHotkeyBinding::defaultRecording());
    EXPECT_EQ(s.translateRegionHotkey, GlobalHotkeyBinding::defaultTranslateRegion());
    EXPECT_EQ(s.screenshotHotkey, (GlobalHotkeyBinding{19, CarbonModifier::command | CarbonModifier::shift}));
    for (auto field : {&AppSettings::captureTextHotkey, &AppSettings::scrollCaptureHotkey,
                       &AppSettings::delayedScreenshotHotkey, &AppSettings::recordingPauseHotkey,
                       &AppSettings::audioRecordingHotkey, &AppSettings::audioRecordingPauseHotkey,
                       &AppSettings::presentationHotkey, &AppSettings::presentationAnnotateHotkey}) {
        EXPECT_FALSE((s.*field).has_value());
    }
}

TEST_F(SettingsStoreTest, FreshInstallLoadRules) {
    const AppSettings s = store.load();
    EXPECT_EQ(AppSettings{}.captureCardDismissSeconds, 10);
    EXPECT_EQ(s.captureCardDismissSeconds, 6);
    EXPECT_EQ(s.screenshotDelaySeconds, 5);
    EXPECT_TRUE(s.captureCardEnabled);
    EXPECT_EQ(s.captureLibraryLimit, 0);
    EXPECT_TRUE(s.launchAtLogin);
    EXPECT_EQ(s.recordingFPS, 30);
    EXPECT_EQ(s.barHeight, 340);
    EXPECT_EQ(s.textExpansionPrefix, ";");
    EXPECT_EQ(s.categories, FilterCategory::builtinDefaults());
}

struct StoredRule {
    const char* name;
    const char* key;
    DefaultsValue stored;
    std::function<void(const AppSettings&)> check;
};

TEST_F(SettingsStoreTest, LoadRulesForStoredValues) {
    const StoredRule rules[] = {
        {"camera size 40 is raised to 72", "recordingCameraSize", std::int64_t{40},
         [](const AppSettings& s) { EXPECT_EQ(s.recordingCameraSize, 72); }},
        {"camera size -1 gives automatic", "recordingCameraSize", std::int64_t{-1},
         [](const AppSettings& s) { EXPECT_EQ(s.recordingCameraSize, 0); }},
        {"camera size 300 stays", "recordingCameraSize", std::int64_t{300},
         [](const AppSettings& s) { EXPECT_EQ(s.recordingCameraSize, 300); }},
        {"bar height 100 clamps up", "barHeight", std::int64_t{100},
         [](const AppSettings& s) { EXPECT_EQ(s.barHeight, 240); }},
        {"bar height 900 clamps down", "barHeight", std::int64_t{900},
         [](const AppSettings& s) { EXPECT_EQ(s.barHeight, 560); }},
        {"bar height 0 gives the default", "barHeight", std::int64_t{0},
         [](const AppSettings& s) { EXPECT_EQ(s.barHeight, 340); }},
        {"card dismiss stored", "captureCardDismissSeconds", std::int64_t{12},
         [](const AppSettings& s) { EXPECT_EQ(s.captureCardDismissSeconds, 12); }},
        {"card disabled", "captureCardEnabled", false, [](const AppSettings& s) { EXPECT_FALSE(s.captureCardEnabled); }},
        {"empty expansion prefix", "textExpansionPrefix", std::string(""),
         [](const AppSettings& s) { EXPECT_EQ(s.textExpansionPrefix, ";"); }},
        {"unknown corner text", "captureCardCorner", std::string("middle"),
         [](const AppSettings& s) { EXPECT_EQ(s.captureCardCorner, CaptureCardCorner::bottomRight); }},
        {"known corner text", "captureCardCorner", std::string("topLeft"),
         [](const AppSettings& s) { EXPECT_EQ(s.captureCardCorner, CaptureCardCorner::topLeft); }},
        {"unknown draw modifier", "annotationDrawModifier", std::string("hyper"),
         [](const AppSettings& s) { EXPECT_EQ(s.annotationDrawModifier, DoubleTapModifier::control); }},
        {"traditional Chinese", "appLanguage", std::string("zh-Hant"),
         [](const AppSettings& s) { EXPECT_EQ(s.appLanguage, AppLanguage::zhHant); }},
        {"number where text belongs", "appearanceMode", std::int64_t{3},
         [](const AppSettings& s) { EXPECT_EQ(s.appearanceMode, AppearanceMode::system); }},
        {"blocked apps that do not decode", "blockedApps", std::string("[{\"bundleID\": 4}]"),
         [](const AppSettings& s) { EXPECT_TRUE(s.blockedApps.empty()); }},
        {"categories that do not decode", "filterCategories", std::string("not json"),
         [](const AppSettings& s) { EXPECT_EQ(s.categories, FilterCategory::builtinDefaults()); }},
        {"window origin present", "windowOriginX", 12.5,
         [](const AppSettings& s) { EXPECT_EQ(s.windowOriginX, 12.5); }},
        {"device identifier", "recordingCameraDeviceID", std::string("/dev/video0"),
         [](const AppSettings& s) { EXPECT_EQ(s.recordingCameraDeviceID, "/dev/video0"); }},
    };
    for (const StoredRule& rule : rules) {
        SCOPED_TRACE(rule.name);
        InMemoryDefaultsStore fresh;
        SettingsStore freshStore(fresh);
        fresh.set(rule.key, rule.stored);
        rule.check(freshStore.load());
    }
}

TEST_F(SettingsStoreTest, UnknownEnumTextStaysStoredUntilTheNextSave) {
    defaults.set("appearanceMode", std::string("sepia"));
    AppSettings s = store.load();
    EXPECT_EQ(s.appearanceMode, AppearanceMode::system);
    EXPECT_EQ(defaults.string("appearanceMode"), "sepia");
    store.save(s);
    EXPECT_EQ(defaults.string("appearanceMode"), "system");
}

TEST_F(SettingsStoreTest, ShiftOnlyModifiersFallBackPerBinding) {
    defaults.set("screenshotHotkeyKeyCode", std::int64_t{20});
    defaults.set("screenshotHotkeyModifiers", std::int64_t{CarbonModifier::shift});
    defaults.set("captureTextHotkeyKeyCode", std::int64_t{20});
    defaults.set("captureTextHotkeyModifiers", std::int64_t{CarbonModifier::shift});
    const AppSettings s = store.load();
    EXPECT_EQ(s.screenshotHotkey, GlobalHotkeyBinding::defaultScreenshot());
    EXPECT_FALSE(s.captureTextHotkey.has_value());
}

TEST_F(SettingsStoreTest, StoredBindingsLoadAsTheyStand) {
    defaults.set("scrollCaptureHotkeyKeyCode", std::int64_t{37});
    defaults.set("scrollCaptureHotkeyModifiers", std::int64_t{CarbonModifier::control | CarbonModifier::shift});
    defaults.set("translateRegionHotkeyKeyCode", std::int64_t{17});
    defaults.set("translateRegionHotkeyModifiers", std::int64_t{CarbonModifier::option});
    const AppSettings s = store.load();
    EXPECT_EQ(s.scrollCaptureHotkey, (GlobalHotkeyBinding{37, 0x1200}));
    EXPECT_EQ(s.translateRegionHotkey, (GlobalHotkeyBinding{17, 0x800}));
    EXPECT_EQ(store.loadOptInHotkey("scrollCaptureHotkeyEnabled", "scrollCaptureHotkeyKeyCode",
                                    "scrollCaptureHotkeyModifiers"),
              (GlobalHotkeyBinding{37, 0x1200}));
}

TEST_F(SettingsStoreTest, ClearedHotkeyStaysClearedAcrossAReload) {
    AppSettings s = store.load();
    s.screenshotHotkey.reset();
    s.translateRegionHotkey.reset();
    store.save(s);
    EXPECT_EQ(defaults.boolean("screenshotHotkeyEnabled"), false);
    EXPECT_TRUE(defaults.contains("screenshotHotkeyKeyCode")); // key code left as it was

    SettingsStore reopened(defaults);
    const AppSettings again = reopened.load();
    EXPECT_FALSE(again.screenshotHotkey.has_value());
    EXPECT_FALSE(again.translateRegionHotkey.has_value());
    EXPECT_EQ(again.recordingHotkey, GlobalHotkeyBinding::defaultRecording());
}

TEST_F(SettingsStoreTest, OutOfRange32BitValuesCountAsAbsent) {
    defaults.set("screenshotHotkeyKeyCode", std::int64_t{1} << 32);
    defaults.set("screenshotHotkeyModifiers", std::int64_t{0x300});
    defaults.set("captureTextHotkeyKeyCode", std::int64_t{14});
    defaults.set("captureTextHotkeyModifiers", std::int64_t{-0x100});
    defaults.set("scrollCaptureHotkeyKeyCode", std::int64_t{-1});
    defaults.set("scrollCaptureHotkeyModifiers", std::int64_t{0x100});
    const AppSettings s = store.load();
    EXPECT_EQ(s.screenshotHotkey, GlobalHotkeyBinding::defaultScreenshot());
    EXPECT_FALSE(s.captureTextHotkey.has_value());
    EXPECT_FALSE(s.scrollCaptureHotkey.has_value());
}

TEST_F(SettingsStoreTest, EveryFieldRoundTripsIncludingSiblingOnes) {
    AppSettings s;
    s.launchAtLogin = false;
    s.appearanceMode = AppearanceMode::dark;
    s.accentColor = AccentColor::indigo;
    s.appLanguage = AppLanguage::ja;
    s.screenshotDelaySeconds = 10;
    s.captureCardEnabled = false;
    s.captureCardCorner = CaptureCardCorner::topRight;
    s.captureCardDismissSeconds = 15;
    s.captureLibraryLimit = 200;
    s.captureHandledBySiblingApp = true;
    s.screenshotElementSnap = false;
    s.scrollCaptureAutoScroll = true;
    s.recordingFPS = 60;
    s.recordingGIFFPS = 15;
    s.recordingScale = 1;
    s.recordingShowsCursor = false;
    s.recordingCountdown = 0;
    s.recordingCaptureSystemAudio = true;
    s.recordingCaptureMic = true;
    s.recordingCameraEnabled = true;
    s.recordingCameraDeviceID = "/dev/video2";
    s.recordingCameraSize = 180;
    s.recordingCameraShape = RecordingCameraShape::wide;
    s.recordingCameraMirrored = true;
    s.recordingCameraBackground = RecordingCameraBackground::blur;
    s.recordingCameraQuality = RecordingCameraQuality::hd1080;
    s.audioRecordingInputDeviceID = "alsa_input.usb";
    s.audioRecordingMaxMinutes = 30;
    s.audioRecordingQuality = AudioRecordingQuality::high;
    s.audioRecordingCapturesSystemAudio = true;
    s.annotationDrawModifier = DoubleTapModifier::option;
    s.presentationDrawModifier = DoubleTapModifier::off;
    s.autoTranslateClipboard = true;
    s.autoTranslateAllowsCloud = true;
    s.screenshotHotkey = GlobalHotkeyBinding{0, 0x100};
    s.recordingHotkey.reset();
    s.captureTextHotkey = GlobalHotkeyBinding{14, 0x1100};
    s.presentationAnnotateHotkey = GlobalHotkeyBinding{35, 0x900};
    s.showPanelAtStartup = false;
    s.playSoundOnCopy = true;
    s.panelDisplayMode = PanelDisplayMode::topBar;
    s.barHeight = 400;
    s.openWindowPosition = OpenWindowPosition::nearMouse;
    s.windowOriginX = 10.5;
    s.windowOriginY = -20;
    s.returnToTopAfterPaste = false;
    s.historyLimit = 500;
    s.retentionDays = 30;
    s.ocrEnabled = false;
    s.paused = true;
    s.pausedUntil = 1.7e9;
    s.windowWidth = 1000;
    s.windowHeight = 700;
    s.listWidth = 300;
    s.openPanelHotkey = GlobalHotkeyBinding{9, 0x1000};
    s.pinFirstItemHotkey.reset();
    s.doubleTapModifier = DoubleTapModifier::command;
    s.pinFirstItemDoubleTapModifier = DoubleTapModifier::option;
    s.textSnippetExpansionEnabled = false;
    s.textExpansionPrefix = "::";
    s.textExpansionCaseSensitive = true;
    s.textExpansionDirectTextLimit = 1024;
    s.blockedApps = {{"org.keepassxc", "KeePassXC"}, {"com.bank", "Bank"}};
    s.captureMode = CaptureMode::whitelist;
    s.categories = {{"work", "Work", {"text"}}};
    s.previewVisible = false;
    s.resetSearchOnPanelHide = false;
    s.syncEnabled = true;
    s.syncImageAssetLimitMB = 50;
    s.syncAssetPrefetchMB = 5;
    s.syncFileContentMB = 100;

    store.save(s);
    EXPECT_EQ(SettingsStore(defaults).load(), s);
}

TEST_F(SettingsStoreTest, SavingAnAbsentOptionalRemovesItsKey) {
    AppSettings s = store.load();
    s.windowOriginX = 4;
    store.save(s);
    ASSERT_TRUE(defaults.contains("windowOriginX"));
    s.windowOriginX.reset();
    store.save(s);
    EXPECT_FALSE(defaults.contains("windowOriginX"));
    EXPECT_FALSE(store.load().windowOriginX.has_value());
}
