#include "AppBus.h"

#include <algorithm>

namespace tosvar::AppBus {

const std::vector<Method>& methods() {
    static const std::vector<Method> table{
        {"screenshot", "Screenshot", Argument::none},
        {"screenshot-full", "ScreenshotFull", Argument::none},
        {"screenshot-delayed", "ScreenshotDelayed", Argument::seconds},
        {"scroll", "ScrollCapture", Argument::none},
        {"text", "CaptureText", Argument::none},
        {"translate", "TranslateRegion", Argument::none},
        {"record", "ToggleRecording", Argument::none},
        {"record-full", "RecordFullScreen", Argument::none},
        {"record-audio", "ToggleAudioRecording", Argument::none},
        {"present", "TogglePresentation", Argument::none},
        {"pin-clipboard", "PinClipboard", Argument::none},
        {"annotate", "Annotate", Argument::path},
        {"library", "OpenLibrary", Argument::none},
        {"settings", "OpenSettings", Argument::none},
        {"quit", "Quit", Argument::none},
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
