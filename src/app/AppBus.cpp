#include "AppBus.h"

#include <algorithm>

namespace tosvar::AppBus {

const std::vector<Method>& methods() {
    static const std::vector<Method> table{
        {"screenshot", "Screenshot", false},
        {"screenshot-full", "ScreenshotFull", false},
        {"screenshot-delayed", "ScreenshotDelayed", true},
        {"scroll", "ScrollCapture", false},
        {"text", "CaptureText", false},
        {"translate", "TranslateRegion", false},
        {"record", "ToggleRecording", false},
        {"record-full", "RecordFullScreen", false},
        {"record-audio", "ToggleAudioRecording", false},
        {"present", "TogglePresentation", false},
        {"pin-clipboard", "PinClipboard", false},
        {"library", "OpenLibrary", false},
        {"settings", "OpenSettings", false},
        {"quit", "Quit", false},
    };
    return table;
}

std::optional<Method> forAction(std::string_view action) {
    const auto& table = methods();
    auto it = std::find_if(table.begin(), table.end(), [&](const Method& m) { return action == m.action; });
    if (it == table.end()) return std::nullopt;
    return *it;
}

std::optional<Method> forMember(std::string_view member) {
    const auto& table = methods();
    auto it = std::find_if(table.begin(), table.end(), [&](const Method& m) { return member == m.member; });
    if (it == table.end()) return std::nullopt;
    return *it;
}

} // namespace tosvar::AppBus
