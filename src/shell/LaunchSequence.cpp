#include "LaunchSequence.h"

namespace tosvar {

void runLaunchSequence(LaunchSteps& steps)
{
    constexpr double warmUpDelaySeconds = 1.0;
    steps.stage("tosvar: applicationDidFinishLaunching");
    const AppSettings settings = steps.loadSettings();
    steps.applySettings(settings);
    steps.buildCoordinator();
    steps.startCoordinator();
    steps.readSiblingState();
    steps.watchRecordedCaptures();
    steps.setupStatusItem();
    steps.registerHotKeys(settings);
    steps.observeSibling();
    steps.loadRecents();
    steps.applyLaunchAtLogin(settings.launchAtLogin);
    steps.scheduleCaptureWarmUp(warmUpDelaySeconds);
    if (!steps.onboardingCompleted())
        steps.showOnboarding();
    steps.stage("tosvar: launch complete");
    steps.launchDidFinish();
}

} // namespace tosvar
