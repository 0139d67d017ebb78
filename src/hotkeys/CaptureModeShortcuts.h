#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tosvar {

// The modes of the selection overlay.
enum class ScreenshotOverlayMode { annotate, captureText, record, scrollCapture, translate };

// Where a mode key leads: a mode of the overlay, audio recording, or presentation.
struct CaptureModeTarget {
    enum class Kind { overlay, audio, presentation };
    Kind kind = Kind::overlay;
    ScreenshotOverlayMode mode = ScreenshotOverlayMode::annotate; // for overlay targets

    static constexpr CaptureModeTarget overlay(ScreenshotOverlayMode mode) { return {Kind::overlay, mode}; }
    static constexpr CaptureModeTarget audio() { return {Kind::audio, ScreenshotOverlayMode::annotate}; }
    static constexpr CaptureModeTarget presentation() { return {Kind::presentation, ScreenshotOverlayMode::annotate}; }
    friend constexpr bool operator==(const CaptureModeTarget&, const CaptureModeTarget&) = default;
};

// A single key that switches mode inside a running overlay.
struct CaptureModeShortcut {
    CaptureModeTarget target;
    char key;
    std::uint32_t keyCode;
    std::string_view titleKey;
    std::string_view symbol;

    std::string keyLabel() const { return std::string(1, static_cast<char>(key - 'a' + 'A')); }
};

namespace CaptureModeShortcuts {
std::span<const CaptureModeShortcut> all();
std::optional<CaptureModeShortcut> shortcut(std::uint32_t keyCode);
std::optional<CaptureModeShortcut> shortcut(CaptureModeTarget target);
} // namespace CaptureModeShortcuts

} // namespace tosvar
