#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace tosvar {

// What the X server says about its keyboard, read once and again when it
// announces a new mapping: keysyms per keycode and the eight modifier rows.
struct XKeyboardMapping {
    std::uint8_t minKeycode = 8;
    std::uint8_t maxKeycode = 255;
    int keysymsPerKeycode = 0;
    std::vector<std::uint32_t> keysyms; // row-major from minKeycode
    int keycodesPerModifier = 0;
    std::vector<std::uint8_t> modifierKeycodes; // 8 rows: Shift, Lock, Control, Mod1…Mod5

    std::vector<std::uint32_t> keysymsOf(std::uint8_t keycode) const;
};

// X modifier bits.
namespace XModifier {
inline constexpr std::uint16_t shift = 1 << 0;
inline constexpr std::uint16_t lock = 1 << 1;
inline constexpr std::uint16_t control = 1 << 2;
} // namespace XModifier

// Turns keys and modifiers between our key space (macOS virtual key codes,
// Carbon masks, AppKit flags) and an X server's. Keys go by physical
// position through their evdev code; a key without a position, or a server
// whose keycodes are not evdev's, goes by the keysym a US layout gives it.
class KeyTranslator {
public:
    explicit KeyTranslator(XKeyboardMapping mapping);

    std::optional<std::uint8_t> xKeycode(std::uint32_t macKeyCode) const;
    std::optional<std::uint32_t> macKeyCode(std::uint8_t xKeycode) const;

    // Command is Control, Control is Super, Option is Alt, Shift is Shift.
    std::uint16_t xModifiers(std::uint32_t carbonModifiers) const;
    std::uint32_t modifierFlags(std::uint16_t xState) const;
    // The four lock states a grab repeats over, so Caps Lock and Num Lock do not matter.
    std::array<std::uint16_t, 4> lockVariants() const;
    // Whether a keycode is one of the modifier keys the shortcuts use.
    bool isModifierKey(std::uint8_t xKeycode) const;

    std::uint16_t altMask() const { return alt_; }
    std::uint16_t superMask() const { return super_; }
    std::uint16_t numLockMask() const { return numLock_; }

private:
    std::optional<std::uint8_t> keycodeForKeysym(std::uint32_t keysym) const;
    std::uint16_t maskOfModifierWith(std::initializer_list<std::uint32_t> keysyms, std::uint16_t fallback) const;

    XKeyboardMapping mapping_;
    bool evdevKeycodes_ = false;
    std::uint16_t alt_ = 0;
    std::uint16_t super_ = 0;
    std::uint16_t numLock_ = 0;
};

} // namespace tosvar
