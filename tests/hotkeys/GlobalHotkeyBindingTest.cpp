#include "CaptureModeShortcuts.h"
#include "GlobalHotkeyBinding.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {
KeyEvent keyDown(std::uint32_t keyCode, std::uint32_t flags)
{
    return {KeyEvent::Type::keyDown, keyCode, flags, 0, false};
}
} // namespace

TEST(GlobalHotkeyBinding, DisplayNamesPutModifiersInFixedOrderBeforeTheKey)
{
    EXPECT_EQ(GlobalHotkeyBinding::defaultScreenshot().displayName(), "⌘⇧2");
    EXPECT_EQ(GlobalHotkeyBinding::defaultRecording().displayName(), "⌃⇧2");
    EXPECT_EQ(GlobalHotkeyBinding::defaultTranslateRegion().displayName(), "⌥⇧2");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(0, 0x1B00), "⌘⌃⌥⇧A");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(36, 0x100), "⌘↩︎");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(76, 0x100), "⌘↩︎");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(48, 0x800), "⌥⇥");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(49, 0x1000), "⌃Space");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(53, 0x100), "⌘Esc");
    EXPECT_EQ(GlobalHotkeyBinding::displayName(122, 0x100), "⌘Key122"); // F1 is not in the table
    EXPECT_EQ(settingsDisplayName(std::nullopt, "Not set"), "Not set");
}

TEST(GlobalHotkeyBinding, KeyLabelsFollowTheAnsiTable)
{
    const std::string expected[] = {"A", "S", "D", "F", "H", "G", "Z", "X", "C", "V", "Key10", "B", "Q", "W", "E",
                                    "R", "Y", "T", "1", "2", "3", "4", "6", "5", "Key24", "9", "7", "Key27", "8", "0",
                                    "Key30", "O", "U", "Key33", "I", "P", "↩︎", "L", "J", "Key39", "K", "Key41", "Key42",
                                    "Key43", "Key44", "N", "M", "Key47", "⇥", "Space", "Key50", "Key51", "Key52", "Esc"};
    for (std::uint32_t code = 0; code < std::size(expected); ++code)
        EXPECT_EQ(GlobalHotkeyBinding::keyLabel(code), expected[code]) << code;
}

TEST(GlobalHotkeyBinding, MenuKeyEquivalentsAndMasks)
{
    EXPECT_EQ((GlobalHotkeyBinding{19, 0x300}.menuKeyEquivalent()), "2");
    EXPECT_EQ((GlobalHotkeyBinding{35, 0x300}.menuKeyEquivalent()), "p");
    EXPECT_EQ((GlobalHotkeyBinding{36, 0x100}.menuKeyEquivalent()), "\r");
    EXPECT_EQ((GlobalHotkeyBinding{76, 0x100}.menuKeyEquivalent()), "\r");
    EXPECT_EQ((GlobalHotkeyBinding{48, 0x100}.menuKeyEquivalent()), "\t");
    EXPECT_EQ((GlobalHotkeyBinding{49, 0x100}.menuKeyEquivalent()), " ");
    EXPECT_EQ((GlobalHotkeyBinding{53, 0x100}.menuKeyEquivalent()), "\x1b");
    EXPECT_EQ((GlobalHotkeyBinding{122, 0x100}.menuKeyEquivalent()), "");

    EXPECT_EQ((GlobalHotkeyBinding{0, 0x100}.menuKeyEquivalentModifierMask()), 0x100000u);
    EXPECT_EQ((GlobalHotkeyBinding{0, 0x200}.menuKeyEquivalentModifierMask()), 0x20000u);
    EXPECT_EQ((GlobalHotkeyBinding{0, 0x800}.menuKeyEquivalentModifierMask()), 0x80000u);
    EXPECT_EQ((GlobalHotkeyBinding{0, 0x1000}.menuKeyEquivalentModifierMask()), 0x40000u);
    for (std::uint32_t mask = 0; mask <= 0x1F00; mask += 0x100) {
        const std::uint32_t carbon = mask & 0x1B00;
        EXPECT_EQ(GlobalHotkeyBinding::carbonModifiersFrom(GlobalHotkeyBinding{0, carbon}.menuKeyEquivalentModifierMask()),
                  carbon);
    }
    // Caps Lock and other flags do not leak into the mask.
    EXPECT_EQ(GlobalHotkeyBinding::carbonModifiersFrom(0x1F0000 | ModifierFlag::capsLock), 0x1B00u);
}

TEST(GlobalHotkeyBinding, OnlyKeyDownsWithCommandOptionOrControlMakeBindings)
{
    EXPECT_EQ(GlobalHotkeyBinding::fromEvent(keyDown(19, ModifierFlag::command | ModifierFlag::shift)),
              (GlobalHotkeyBinding{19, 0x300}));
    EXPECT_FALSE(GlobalHotkeyBinding::fromEvent(keyDown(0, 0)));                   // a plain letter
    EXPECT_FALSE(GlobalHotkeyBinding::fromEvent(keyDown(0, ModifierFlag::shift))); // Shift alone does not count
    for (std::uint32_t modifierKey = 54; modifierKey <= 63; ++modifierKey)
        EXPECT_FALSE(GlobalHotkeyBinding::fromEvent(keyDown(modifierKey, ModifierFlag::command)));
    KeyEvent up = keyDown(19, ModifierFlag::command);
    up.type = KeyEvent::Type::keyUp;
    EXPECT_FALSE(GlobalHotkeyBinding::fromEvent(up));
    EXPECT_FALSE((GlobalHotkeyBinding{19, 0x200}.isValid()));
    EXPECT_TRUE((GlobalHotkeyBinding{19, 0x1000}.isValid()));
}

TEST(CaptureModeShortcuts, LookUpByKeyCodeAndTarget)
{
    ASSERT_EQ(CaptureModeShortcuts::all().size(), 7u);
    const auto scroll = CaptureModeShortcuts::shortcut(37);
    ASSERT_TRUE(scroll);
    EXPECT_EQ(scroll->target, CaptureModeTarget::overlay(ScreenshotOverlayMode::scrollCapture));
    EXPECT_EQ(scroll->keyLabel(), "L");
    EXPECT_EQ(CaptureModeShortcuts::shortcut(CaptureModeTarget::presentation())->titleKey, "capture.mode.present");
    EXPECT_EQ(CaptureModeShortcuts::shortcut(CaptureModeTarget::audio())->keyCode, 0u);
    EXPECT_FALSE(CaptureModeShortcuts::shortcut(2));
    // Every key label matches the ANSI label of its key code.
    for (const CaptureModeShortcut& entry : CaptureModeShortcuts::all())
        EXPECT_EQ(entry.keyLabel(), GlobalHotkeyBinding::keyLabel(entry.keyCode));
}
