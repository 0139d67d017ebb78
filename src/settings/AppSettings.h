#pragma once

#include "GlobalHotkeyBinding.h"
#include "SettingsEnums.h"
#include "SiblingRecords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

// Every user setting in one flat value. Keys in the store equal the field
// names, apart from the hotkeys (see SettingsKeys). Nothing keeps a copy
// longer than one operation: read it afresh from SettingsStore::load(), or
// observe LiveAppSettings.
struct AppSettings {
    bool launchAtLogin = true;
    AppearanceMode appearanceMode = AppearanceMode::system;
    AccentColor accentColor = AccentColor::graphite;
    AppLanguage appLanguage = AppLanguage::system;
    std::int64_t screenshotDelaySeconds = 5;
    bool captureCardEnabled = true;
    CaptureCardCorner captureCardCorner = CaptureCardCorner::bottomRight;
    // The static value says 10; a store without the key loads 6.
    std::int64_t captureCardDismissSeconds = 10;
    std::int64_t captureLibraryLimit = 0; // 0: no limit
    bool captureHandledBySiblingApp = false;
    bool screenshotElementSnap = true;
    bool scrollCaptureAutoScroll = false;
    std::int64_t recordingFPS = 30;
    std::int64_t recordingGIFFPS = 10;
    std::int64_t recordingScale = 2;
    bool recordingShowsCursor = true;
    std::int64_t recordingCountdown = 3;
    bool recordingCaptureSystemAudio = false;
    bool recordingCaptureMic = false;
    bool recordingCameraEnabled = false;
    std::optional<std::string> recordingCameraDeviceID;
    std::int64_t recordingCameraSize = 0; // 0: automatic, else at least 72
    RecordingCameraShape recordingCameraShape = RecordingCameraShape::circle;
    bool recordingCameraMirrored = false;
    RecordingCameraBackground recordingCameraBackground = RecordingCameraBackground::none;
    RecordingCameraQuality recordingCameraQuality = RecordingCameraQuality::hd720;
    std::optional<std::string> audioRecordingInputDeviceID;
    std::int64_t audioRecordingMaxMinutes = 0; // 0: no limit
    AudioRecordingQuality audioRecordingQuality = AudioRecordingQuality::standard;
    bool audioRecordingCapturesSystemAudio = false;
    DoubleTapModifier annotationDrawModifier = DoubleTapModifier::control;
    DoubleTapModifier presentationDrawModifier = DoubleTapModifier::control;
    bool autoTranslateClipboard = false;
    bool autoTranslateAllowsCloud = false;

    std::optional<GlobalHotkeyBinding> screenshotHotkey = GlobalHotkeyBinding::defaultScreenshot();
    std::optional<GlobalHotkeyBinding> recordingHotkey = GlobalHotkeyBinding::defaultRecording();
    std::optional<GlobalHotkeyBinding> translateRegionHotkey = GlobalHotkeyBinding::defaultTranslateRegion();
    std::optional<GlobalHotkeyBinding> captureTextHotkey;
    std::optional<GlobalHotkeyBinding> scrollCaptureHotkey;
    std::optional<GlobalHotkeyBinding> delayedScreenshotHotkey;
    std::optional<GlobalHotkeyBinding> recordingPauseHotkey;
    std::optional<GlobalHotkeyBinding> audioRecordingHotkey;
    std::optional<GlobalHotkeyBinding> audioRecordingPauseHotkey;
    std::optional<GlobalHotkeyBinding> presentationHotkey;
    std::optional<GlobalHotkeyBinding> presentationAnnotateHotkey;

    // Carried for the sibling products.
    bool showPanelAtStartup = true;
    bool playSoundOnCopy = false;
    PanelDisplayMode panelDisplayMode = PanelDisplayMode::window;
    double barHeight = 340;
    OpenWindowPosition openWindowPosition = OpenWindowPosition::activeScreenCenter;
    std::optional<double> windowOriginX;
    std::optional<double> windowOriginY;
    bool returnToTopAfterPaste = true;
    std::int64_t historyLimit = 0;
    std::int64_t retentionDays = 0;
    bool ocrEnabled = true;
    bool paused = false;
    std::optional<double> pausedUntil;
    double windowWidth = 960;
    double windowHeight = 640;
    double listWidth = 340;
    std::optional<GlobalHotkeyBinding> openPanelHotkey = GlobalHotkeyBinding::defaultOpenPanel();
    std::optional<GlobalHotkeyBinding> pinFirstItemHotkey = GlobalHotkeyBinding::defaultPinFirstItem();
    DoubleTapModifier doubleTapModifier = DoubleTapModifier::off;
    DoubleTapModifier pinFirstItemDoubleTapModifier = DoubleTapModifier::off;
    bool textSnippetExpansionEnabled = true;
    std::string textExpansionPrefix = ";";
    bool textExpansionCaseSensitive = false;
    std::int64_t textExpansionDirectTextLimit = 512;
    std::vector<BlockedAppEntry> blockedApps;
    CaptureMode captureMode = CaptureMode::blacklist;
    std::vector<FilterCategory> categories = FilterCategory::builtinDefaults();
    bool previewVisible = true;
    bool resetSearchOnPanelHide = true;
    bool syncEnabled = false;
    std::int64_t syncImageAssetLimitMB = 20;
    std::int64_t syncAssetPrefetchMB = 10;
    std::int64_t syncFileContentMB = 0;

    friend bool operator==(const AppSettings&, const AppSettings&) = default;
};

} // namespace tosvar
