#pragma once

#include <cstdint>

namespace tosvar {

// Carbon modifier masks, the form stored hotkeys keep.
namespace CarbonModifier {
inline constexpr std::uint32_t command = 0x100;
inline constexpr std::uint32_t shift = 0x200;
inline constexpr std::uint32_t option = 0x800;
inline constexpr std::uint32_t control = 0x1000;
// A binding needs one of these; Shift alone makes no binding.
inline constexpr std::uint32_t required = command | option | control;
} // namespace CarbonModifier

// A key code (macOS virtual key code, by physical position) and a Carbon
// modifier mask.
struct GlobalHotkeyBinding {
    std::uint32_t keyCode = 0;
    std::uint32_t carbonModifiers = 0;

    bool isValid() const { return (carbonModifiers & CarbonModifier::required) != 0; }

    static constexpr GlobalHotkeyBinding defaultScreenshot() { return {19, 0x300}; }
    static constexpr GlobalHotkeyBinding defaultRecording() { return {19, 0x1200}; }
    static constexpr GlobalHotkeyBinding defaultTranslateRegion() { return {19, 0xA00}; }
    static constexpr GlobalHotkeyBinding defaultOpenPanel() { return {9, 0x300}; }
    static constexpr GlobalHotkeyBinding defaultPinFirstItem() { return {35, 0x300}; }

    friend constexpr bool operator==(const GlobalHotkeyBinding&, const GlobalHotkeyBinding&) = default;
};

} // namespace tosvar
