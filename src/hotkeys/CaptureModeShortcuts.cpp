#include "CaptureModeShortcuts.h"

#include <array>

namespace tosvar::CaptureModeShortcuts {

namespace {
using Mode = ScreenshotOverlayMode;
constexpr std::array<CaptureModeShortcut, 7> table{{
    {CaptureModeTarget::overlay(Mode::annotate), 's', 1, "capture.mode.shot", "camera.viewfinder"},
    {CaptureModeTarget::overlay(Mode::record), 'r', 15, "capture.mode.record", "record.circle"},
    {CaptureModeTarget::overlay(Mode::scrollCapture), 'l', 37, "capture.mode.scroll", "scroll"},
    {CaptureModeTarget::overlay(Mode::translate), 't', 17, "capture.mode.translate", "translate"},
    {CaptureModeTarget::overlay(Mode::captureText), 'e', 14, "capture.mode.text", "text.viewfinder"},
    {CaptureModeTarget::audio(), 'a', 0, "capture.mode.audio", "mic"},
    {CaptureModeTarget::presentation(), 'p', 35, "capture.mode.present", "person.and.background.dotted"},
}};
} // namespace

std::span<const CaptureModeShortcut> all() { return table; }

std::optional<CaptureModeShortcut> shortcut(std::uint32_t keyCode)
{
    for (const CaptureModeShortcut& entry : table)
        if (entry.keyCode == keyCode)
            return entry;
    return std::nullopt;
}

std::optional<CaptureModeShortcut> shortcut(CaptureModeTarget target)
{
    for (const CaptureModeShortcut& entry : table)
        if (entry.target == target)
            return entry;
    return std::nullopt;
}

} // namespace tosvar::CaptureModeShortcuts
