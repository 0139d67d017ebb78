#include "HotkeyRegistrationTable.h"

namespace tosvar {

std::vector<HotkeyRequest> hotkeyRequests(const AppSettings& s)
{
    return {
        {HotkeyAction::screenshot, 1, s.screenshotHotkey},
        {HotkeyAction::captureText, 2, s.captureTextHotkey},
        {HotkeyAction::translateRegion, 11, s.translateRegionHotkey},
        {HotkeyAction::recording, 3, s.recordingHotkey},
        {HotkeyAction::scrollCapture, 4, s.scrollCaptureHotkey},
        {HotkeyAction::delayedScreenshot, 5, s.delayedScreenshotHotkey},
        {HotkeyAction::audioRecording, 6, s.audioRecordingHotkey},
        {HotkeyAction::audioRecordingPause, 7, s.audioRecordingPauseHotkey},
        {HotkeyAction::recordingPause, 8, s.recordingPauseHotkey},
        {HotkeyAction::presentation, 9, s.presentationHotkey},
        {HotkeyAction::presentationAnnotate, 10, s.presentationAnnotateHotkey},
    };
}

} // namespace tosvar
