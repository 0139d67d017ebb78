#pragma once

#include "KeyEvent.h"

#include <cstdint>
#include <optional>
#include <string>

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

    // The binding a key-down makes: it needs Command, Option or Control, and
    // the key may not be a modifier key itself (codes 54…63).
    static std::optional<GlobalHotkeyBinding> fromEvent(const KeyEvent& event);

    // "⌘⌃⌥⇧" in that order, then the key's label: "⌘⇧2".
    std::string displayName() const { return displayName(keyCode, carbonModifiers); }
    static std::string displayName(std::uint32_t keyCode, std::uint32_t carbonModifiers);
    // The label of a key of the ANSI layout; "Key" and the code for others.
    static std::string keyLabel(std::uint32_t keyCode);

    // The menu's key equivalent: the label in lower case, control characters
    // for Return, Tab, Space and Esc, empty for keys without one.
    std::string menuKeyEquivalent() const;
    std::uint32_t menuKeyEquivalentModifierMask() const;
    static std::uint32_t carbonModifiersFrom(std::uint32_t modifierFlags);

    friend constexpr bool operator==(const GlobalHotkeyBinding&, const GlobalHotkeyBinding&) = default;
};

// The recorder's text for a binding: its display name, or `notSetLabel`
// ("hotkey.notSet" in the user's language) when there is none.
std::string settingsDisplayName(const std::optional<GlobalHotkeyBinding>& binding, const std::string& notSetLabel);

} // namespace tosvar
