#include "KeyTranslator.h"

#include "GlobalHotkeyBinding.h"
#include "KeyPositions.h"

#include <algorithm>

namespace tosvar {

namespace {

constexpr std::uint8_t evdevOffset = 8;

constexpr std::uint32_t keysymAltL = 0xffe9, keysymAltR = 0xffea, keysymMetaL = 0xffe7, keysymMetaR = 0xffe8;
constexpr std::uint32_t keysymSuperL = 0xffeb, keysymSuperR = 0xffec, keysymNumLock = 0xff7f;
constexpr std::uint16_t mod1 = 1 << 3, mod2 = 1 << 4, mod4 = 1 << 6;

std::uint32_t folded(std::uint32_t keysym)
{
    return keysym >= 'A' && keysym <= 'Z' ? keysym + ('a' - 'A') : keysym;
}

} // namespace

std::vector<std::uint32_t> XKeyboardMapping::keysymsOf(std::uint8_t keycode) const
{
    if (keycode < minKeycode || keycode > maxKeycode || keysymsPerKeycode <= 0)
        return {};
    const size_t start = static_cast<size_t>(keycode - minKeycode) * static_cast<size_t>(keysymsPerKeycode);
    if (start + static_cast<size_t>(keysymsPerKeycode) > keysyms.size())
        return {};
    std::vector<std::uint32_t> row(keysyms.begin() + static_cast<std::ptrdiff_t>(start),
                                   keysyms.begin() + static_cast<std::ptrdiff_t>(start + static_cast<size_t>(keysymsPerKeycode)));
    std::erase(row, 0u);
    return row;
}

KeyTranslator::KeyTranslator(XKeyboardMapping mapping) : mapping_(std::move(mapping))
{
    // Keys whose symbol no layout changes tell whether keycodes are evdev's.
    evdevKeycodes_ = true;
    for (std::uint32_t macKey : {53u, 36u, 48u, 122u, 51u, 56u}) {
        const KeyPosition position = *keyPositionForMacKey(macKey);
        const auto symbols = mapping_.keysymsOf(static_cast<std::uint8_t>(position.evdevCode + evdevOffset));
        if (std::find(symbols.begin(), symbols.end(), position.usKeysym) == symbols.end())
            evdevKeycodes_ = false;
    }
    alt_ = maskOfModifierWith({keysymAltL, keysymAltR, keysymMetaL, keysymMetaR}, mod1);
    super_ = maskOfModifierWith({keysymSuperL, keysymSuperR}, mod4);
    numLock_ = maskOfModifierWith({keysymNumLock}, mod2);
}

std::uint16_t KeyTranslator::maskOfModifierWith(std::initializer_list<std::uint32_t> wanted, std::uint16_t fallback) const
{
    const int perModifier = mapping_.keycodesPerModifier;
    // Mod1…Mod5 only: Shift, Lock and Control keep their own meaning.
    for (int modifier = 3; modifier < 8; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const size_t at = static_cast<size_t>(modifier * perModifier + i);
            if (at >= mapping_.modifierKeycodes.size() || mapping_.modifierKeycodes[at] == 0)
                continue;
            for (std::uint32_t symbol : mapping_.keysymsOf(mapping_.modifierKeycodes[at]))
                if (std::find(wanted.begin(), wanted.end(), symbol) != wanted.end())
                    return static_cast<std::uint16_t>(1u << modifier);
        }
    }
    return fallback;
}

std::optional<std::uint8_t> KeyTranslator::keycodeForKeysym(std::uint32_t keysym) const
{
    for (int keycode = mapping_.minKeycode; keycode <= mapping_.maxKeycode; ++keycode)
        for (std::uint32_t symbol : mapping_.keysymsOf(static_cast<std::uint8_t>(keycode)))
            if (folded(symbol) == keysym)
                return static_cast<std::uint8_t>(keycode);
    return std::nullopt;
}

std::optional<std::uint8_t> KeyTranslator::xKeycode(std::uint32_t macKeyCode) const
{
    const std::optional<KeyPosition> position = keyPositionForMacKey(macKeyCode);
    if (!position)
        return std::nullopt;
    const int keycode = position->evdevCode + evdevOffset;
    if (evdevKeycodes_ && keycode <= mapping_.maxKeycode && !mapping_.keysymsOf(static_cast<std::uint8_t>(keycode)).empty())
        return static_cast<std::uint8_t>(keycode);
    return keycodeForKeysym(position->usKeysym);
}

std::optional<std::uint32_t> KeyTranslator::macKeyCode(std::uint8_t xKeycode) const
{
    if (evdevKeycodes_ && xKeycode >= evdevOffset)
        if (const auto position = keyPositionForEvdev(xKeycode - evdevOffset))
            return position->macKeyCode;
    for (std::uint32_t symbol : mapping_.keysymsOf(xKeycode))
        if (const auto position = keyPositionForKeysym(symbol))
            return position->macKeyCode;
    return std::nullopt;
}

std::uint16_t KeyTranslator::xModifiers(std::uint32_t carbonModifiers) const
{
    std::uint16_t mask = 0;
    if (carbonModifiers & CarbonModifier::shift) mask |= XModifier::shift;
    if (carbonModifiers & CarbonModifier::command) mask |= XModifier::control;
    if (carbonModifiers & CarbonModifier::option) mask |= alt_;
    if (carbonModifiers & CarbonModifier::control) mask |= super_;
    return mask;
}

std::uint32_t KeyTranslator::modifierFlags(std::uint16_t xState) const
{
    std::uint32_t flags = 0;
    if (xState & XModifier::shift) flags |= ModifierFlag::shift;
    if (xState & XModifier::lock) flags |= ModifierFlag::capsLock;
    if (xState & XModifier::control) flags |= ModifierFlag::command;
    if (xState & alt_) flags |= ModifierFlag::option;
    if (xState & super_) flags |= ModifierFlag::control;
    return flags;
}

std::array<std::uint16_t, 4> KeyTranslator::lockVariants() const
{
    return {0, XModifier::lock, numLock_, static_cast<std::uint16_t>(XModifier::lock | numLock_)};
}

bool KeyTranslator::isModifierKey(std::uint8_t xKeycode) const
{
    const std::optional<std::uint32_t> key = macKeyCode(xKeycode);
    return key && *key >= 54 && *key <= 63;
}

} // namespace tosvar
