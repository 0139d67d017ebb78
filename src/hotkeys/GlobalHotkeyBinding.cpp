#include "GlobalHotkeyBinding.h"

#include <array>
#include <cctype>
#include <string_view>

namespace tosvar {

namespace {

// Labels of the ANSI layout by virtual key code; empty where the table has none.
constexpr std::array<std::string_view, 54> ansiLabels = [] {
    std::array<std::string_view, 54> labels{};
    constexpr std::string_view letters0to9[] = {"A", "S", "D", "F", "H", "G", "Z", "X", "C", "V"};
    for (int i = 0; i < 10; ++i) labels[i] = letters0to9[i];
    constexpr std::string_view row11to17[] = {"B", "Q", "W", "E", "R", "Y", "T"};
    for (int i = 0; i < 7; ++i) labels[11 + i] = row11to17[i];
    constexpr std::string_view digits18to23[] = {"1", "2", "3", "4", "6", "5"};
    for (int i = 0; i < 6; ++i) labels[18 + i] = digits18to23[i];
    labels[25] = "9";
    labels[26] = "7";
    labels[28] = "8";
    labels[29] = "0";
    labels[31] = "O";
    labels[32] = "U";
    labels[34] = "I";
    labels[35] = "P";
    labels[37] = "L";
    labels[38] = "J";
    labels[40] = "K";
    labels[45] = "N";
    labels[46] = "M";
    labels[36] = "↩︎";
    labels[48] = "⇥";
    labels[49] = "Space";
    labels[53] = "Esc";
    return labels;
}();

std::string_view ansiLabel(std::uint32_t keyCode)
{
    if (keyCode == 76)
        return ansiLabels[36];
    return keyCode < ansiLabels.size() ? ansiLabels[keyCode] : std::string_view{};
}

} // namespace

std::optional<GlobalHotkeyBinding> GlobalHotkeyBinding::fromEvent(const KeyEvent& event)
{
    if (event.type != KeyEvent::Type::keyDown)
        return std::nullopt;
    const GlobalHotkeyBinding binding{event.keyCode, carbonModifiersFrom(event.modifierFlags)};
    if (!binding.isValid() || (event.keyCode >= 54 && event.keyCode <= 63))
        return std::nullopt;
    return binding;
}

std::string GlobalHotkeyBinding::displayName(std::uint32_t keyCode, std::uint32_t modifiers)
{
    std::string name;
    if (modifiers & CarbonModifier::command) name += "⌘";
    if (modifiers & CarbonModifier::control) name += "⌃";
    if (modifiers & CarbonModifier::option) name += "⌥";
    if (modifiers & CarbonModifier::shift) name += "⇧";
    return name + keyLabel(keyCode);
}

std::string GlobalHotkeyBinding::keyLabel(std::uint32_t keyCode)
{
    const std::string_view label = ansiLabel(keyCode);
    return label.empty() ? "Key" + std::to_string(keyCode) : std::string(label);
}

std::string GlobalHotkeyBinding::menuKeyEquivalent() const
{
    switch (keyCode) {
    case 36:
    case 76: return "\r";
    case 48: return "\t";
    case 49: return " ";
    case 53: return "\x1b";
    default: break;
    }
    std::string key(ansiLabel(keyCode));
    for (char& c : key)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return key;
}

std::uint32_t GlobalHotkeyBinding::menuKeyEquivalentModifierMask() const
{
    std::uint32_t flags = 0;
    if (carbonModifiers & CarbonModifier::command) flags |= ModifierFlag::command;
    if (carbonModifiers & CarbonModifier::shift) flags |= ModifierFlag::shift;
    if (carbonModifiers & CarbonModifier::option) flags |= ModifierFlag::option;
    if (carbonModifiers & CarbonModifier::control) flags |= ModifierFlag::control;
    return flags;
}

std::uint32_t GlobalHotkeyBinding::carbonModifiersFrom(std::uint32_t modifierFlags)
{
    std::uint32_t mask = 0;
    if (modifierFlags & ModifierFlag::command) mask |= CarbonModifier::command;
    if (modifierFlags & ModifierFlag::shift) mask |= CarbonModifier::shift;
    if (modifierFlags & ModifierFlag::option) mask |= CarbonModifier::option;
    if (modifierFlags & ModifierFlag::control) mask |= CarbonModifier::control;
    return mask;
}

std::string settingsDisplayName(const std::optional<GlobalHotkeyBinding>& binding, const std::string& notSetLabel)
{
    return binding ? binding->displayName() : notSetLabel;
}

} // namespace tosvar
