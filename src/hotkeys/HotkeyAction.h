#pragma once

#include "RawEnum.h"

#include <array>
#include <string_view>
#include <utility>

namespace tosvar {

// What a global hotkey asks for. The raw values are the case names.
enum class HotkeyAction {
    screenshot,
    captureText,
    recording,
    scrollCapture,
    delayedScreenshot,
    audioRecording,
    audioRecordingPause,
    recordingPause,
    presentation,
    presentationAnnotate,
    translateRegion,
};

template <>
struct RawEnum<HotkeyAction> {
    static constexpr std::array table{
        std::pair{HotkeyAction::screenshot, std::string_view("screenshot")},
        std::pair{HotkeyAction::captureText, std::string_view("captureText")},
        std::pair{HotkeyAction::recording, std::string_view("recording")},
        std::pair{HotkeyAction::scrollCapture, std::string_view("scrollCapture")},
        std::pair{HotkeyAction::delayedScreenshot, std::string_view("delayedScreenshot")},
        std::pair{HotkeyAction::audioRecording, std::string_view("audioRecording")},
        std::pair{HotkeyAction::audioRecordingPause, std::string_view("audioRecordingPause")},
        std::pair{HotkeyAction::recordingPause, std::string_view("recordingPause")},
        std::pair{HotkeyAction::presentation, std::string_view("presentation")},
        std::pair{HotkeyAction::presentationAnnotate, std::string_view("presentationAnnotate")},
        std::pair{HotkeyAction::translateRegion, std::string_view("translateRegion")},
    };
};

} // namespace tosvar
