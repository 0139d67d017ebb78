#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace tosvar {

// One physical key: its macOS virtual key code, its Linux evdev code, and the
// keysym a US layout gives it unshifted.
struct KeyPosition {
    std::uint32_t macKeyCode;
    std::uint16_t evdevCode;
    std::uint32_t usKeysym;
};

// Every key both systems know by position. Command is the Ctrl key, Control
// the Super key and Option Alt, so the modifier keys map accordingly.
std::span<const KeyPosition> keyPositions();
std::optional<KeyPosition> keyPositionForMacKey(std::uint32_t macKeyCode);
std::optional<KeyPosition> keyPositionForEvdev(std::uint32_t evdevCode);
std::optional<KeyPosition> keyPositionForKeysym(std::uint32_t keysym);

} // namespace tosvar
