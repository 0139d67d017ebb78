#pragma once

#include "AppSettings.h"

#include <string_view>

namespace tosvar {

// The steps of the application's launch, as the shell carries them out.
class LaunchSteps {
public:
    virtual ~LaunchSteps() = default;
    virtual void stage(std::string_view name) = 0;
    virtual AppSettings loadSettings() = 0;
    // Publishes the settings to their observers and applies the language.
    virtual void applySettings(const AppSettings& settings) = 0;
    // Builds the coordinator and hooks its recording callbacks to the menu and the tray.
    virtual void buildCoordinator() = 0;
    virtual void startCoordinator() = 0;
    virtual void readSiblingState() = 0;
    virtual void watchRecordedCaptures() = 0;
    virtual void setupStatusItem() = 0;
    virtual void registerHotKeys(const AppSettings& settings) = 0;
    virtual void observeSibling() = 0;
    virtual void loadRecents() = 0;
    virtual void applyLaunchAtLogin(bool enabled) = 0;
    virtual void scheduleCaptureWarmUp(double seconds) = 0;
    virtual bool onboardingCompleted() = 0;
    virtual void showOnboarding() = 0;
    virtual void launchDidFinish() = 0;
};

// Runs the launch, strictly in order, on the main thread. Tray and hotkeys
// come before the recents are read, so a capture works as soon as they exist.
void runLaunchSequence(LaunchSteps& steps);

} // namespace tosvar
