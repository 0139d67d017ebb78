#pragma once

#include <cstdint>

namespace tosvar {

// AppKit modifier flags: the modifier space of every key event we pass
// around. Command is the Ctrl key, Control the Super key, Option Alt.
namespace ModifierFlag {
inline constexpr std::uint32_t capsLock = 0x10000;
inline constexpr std::uint32_t shift = 0x20000;
inline constexpr std::uint32_t control = 0x40000;
inline constexpr std::uint32_t option = 0x80000;
inline constexpr std::uint32_t command = 0x100000;
// Shift, Control, Option and Command: what a shortcut is made of.
inline constexpr std::uint32_t deviceIndependent = 0x1E0000;
} // namespace ModifierFlag

// One key event in the portable key space: a macOS virtual key code, by
// physical position, and the modifiers held.
struct KeyEvent {
    enum class Type { keyDown, keyUp, flagsChanged };
    Type type = Type::keyDown;
    std::uint32_t keyCode = 0;
    std::uint32_t modifierFlags = 0;
    double timestamp = 0; // seconds on the source's clock
    bool isRepeat = false;
};

} // namespace tosvar
