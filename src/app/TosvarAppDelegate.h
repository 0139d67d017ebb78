#pragma once

#include "AnnotationEditorWindow.h"
#include "AnnotationElementClipboard.h"
#include "AnnotationRenderer.h"
#include "AppBusService.h"
#include "AppPlatform.h"
#include "CaptureCoordinator.h"
#include "CaptureHost.h"
#include "CaptureWarmer.h"
#include "FileCaptureSink.h"
#include "HotkeyRegistrar.h"
#include "LaunchAtLoginController.h"
#include "LaunchSequence.h"
#include "RecentCaptures.h"
#include "SettingsStore.h"
#include "SiblingWatch.h"
#include "StatusMenuModel.h"
#include "SystemWakeWatch.h"
#include "TosvarOnboarding.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include <memory>
#include <set>

namespace tosvar {

// The application: it owns the long-lived objects, wires them together once
// at launch, keeps the tray icon and its menu in step with the state, and
// turns menu choices, hotkeys and command-line actions into capture requests.
// Main thread only.
class TosvarAppDelegate final : public CaptureHost, private LaunchSteps {
public:
    explicit TosvarAppDelegate(AppPlatform& platform);
    ~TosvarAppDelegate() override;
    TosvarAppDelegate(const TosvarAppDelegate&) = delete;
    TosvarAppDelegate& operator=(const TosvarAppDelegate&) = delete;

    void applicationDidFinishLaunching() { runLaunchSequence(*this); }
    void applicationWillTerminate();

    // One action from the command line ("screenshot-full", "quit", ...).
    ActionOutcome perform(const CommandLineRequest& request);

    // The menu's actions.
    void captureScreenshotFromMenu();
    void captureFullScreenFromMenu();
    void delayedScreenshotFromMenu();
    void scrollCaptureFromMenu();
    void captureTextFromMenu();
    void translateRegionFromMenu();
    void toggleRecordingFromMenu();
    void recordFullScreenFromMenu();
    void toggleAudioRecordingFromMenu();
    void togglePresentationFromMenu();
    void pinFromClipboard();
    // Opens the annotation editor on an image file; the error when it cannot be read.
    std::optional<std::string> annotateFile(const std::filesystem::path& file);
    void toggleAllStickersFromMenu();
    void openLibrary();
    void openRecent(const std::filesystem::path& file);
    void revealCaptureFolder();
    void showOnboarding();
    void openSettings();
    void quit();
    void statusItemClicked();

    void rebuildStatusMenu();
    const std::set<HotkeyAction>& hotkeyConflicts() const { return hotkeyConflicts_; }

    // Menu captures wait this long so the menu is gone before the screen freezes.
    static constexpr double menuCaptureDelay = 0.2;

private:
    // The launch, step by step.
    void stage(std::string_view name) override;
    AppSettings loadSettings() override { return settingsStore_.load(); }
    void applySettings(const AppSettings& settings) override;
    void buildCoordinator() override;
    void startCoordinator() override;
    void readSiblingState() override;
    void watchRecordedCaptures() override;
    void setupStatusItem() override;
    void registerHotKeys(const AppSettings& settings) override;
    void observeSibling() override;
    void loadRecents() override;
    void applyLaunchAtLogin(bool enabled) override;
    void scheduleCaptureWarmUp(double seconds) override;
    bool onboardingCompleted() override;
    void offerInterruptedRecordings();
    void launchDidFinish() override;

    void perform(StatusMenuAction action, const std::filesystem::path& file);
    void hotkeyPressed(HotkeyAction action);
    void updateStatusItemRecordingAppearance();
    void showToast(std::string_view key, double seconds);
    void notBuilt(const std::string& feature);
    FileCaptureSink& sink();

    AppPlatform& platform_;
    std::set<AnnotationEditorWindow*> editors_;
    SettingsStore settingsStore_;
    RecentCaptures recents_;
    std::unique_ptr<FileCaptureSink> sink_;
    std::shared_ptr<CaptureCoordinator> coordinator_;
    std::unique_ptr<QSystemTrayIcon> statusItem_;
    QMenu statusMenu_;
    TosvarOnboarding onboarding_;
    std::unique_ptr<HotkeyRegistrar> hotkeys_;
    std::set<HotkeyAction> hotkeyConflicts_;
    bool siblingIsRunning_ = false;
    std::unique_ptr<SiblingWatch> siblingWatch_;
    LaunchAtLoginController launchAtLogin_;
    std::unique_ptr<CaptureWarmer> warmer_;
    std::unique_ptr<SystemWakeWatch> wakeWatch_;
    TimerHandle warmUpTimer_;
    // Set when a request reached a feature this build lacks, so the command
    // line can say so.
    bool notBuiltReached_ = false;
};

} // namespace tosvar
