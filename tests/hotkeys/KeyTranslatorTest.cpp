#include "KeyPositions.h"
#include "KeyTranslator.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

constexpr std::uint32_t keysymShiftL = 0xffe1, keysymCapsLock = 0xffe5, keysymCtrlL = 0xffe3, keysymAltL = 0xffe9;
constexpr std::uint32_t keysymNumLock = 0xff7f, keysymSuperL = 0xffeb;

// A US keyboard as an X server describes it, with keycodes at evdev + `offset`
// (8 for every evdev-based server; anything else for an older keymap).
XKeyboardMapping usMapping(int offset, int numLockModifier = 4, int superModifier = 6)
{
    XKeyboardMapping mapping;
    mapping.minKeycode = 8;
    mapping.maxKeycode = 255;
    mapping.keysymsPerKeycode = 2;
    mapping.keysyms.assign(248 * 2, 0);
    for (const KeyPosition& position : keyPositions()) {
        const int keycode = position.evdevCode + offset;
        if (keycode < 8 || keycode > 255)
            continue;
        const std::uint32_t upper = position.usKeysym >= 'a' && position.usKeysym <= 'z' ? position.usKeysym - 32 : 0;
        mapping.keysyms[static_cast<size_t>(keycode - 8) * 2] = position.usKeysym;
        mapping.keysyms[static_cast<size_t>(keycode - 8) * 2 + 1] = upper;
    }
    const auto keycodeOf = [&](std::uint32_t keysym) {
        return static_cast<std::uint8_t>(keyPositionForKeysym(keysym)->evdevCode + offset);
    };
    mapping.keycodesPerModifier = 1;
    mapping.modifierKeycodes.assign(8, 0);
    mapping.modifierKeycodes[0] = keycodeOf(keysymShiftL);
    mapping.modifierKeycodes[1] = keycodeOf(keysymCapsLock);
    mapping.modifierKeycodes[2] = keycodeOf(keysymCtrlL);
    mapping.modifierKeycodes[3] = keycodeOf(keysymAltL);
    mapping.modifierKeycodes[static_cast<size_t>(numLockModifier)] = keycodeOf(keysymNumLock);
    mapping.modifierKeycodes[static_cast<size_t>(superModifier)] = keycodeOf(keysymSuperL);
    return mapping;
}

} // namespace

TEST(KeyTranslator, EveryKeyOfAUsLayoutRoundTripsByPosition)
{
    const KeyTranslator translator(usMapping(8));
    for (const KeyPosition& position : keyPositions()) {
        const auto keycode = translator.xKeycode(position.macKeyCode);
        ASSERT_TRUE(keycode) << position.macKeyCode;
        EXPECT_EQ(*keycode, position.evdevCode + 8) << position.macKeyCode;
        EXPECT_EQ(translator.macKeyCode(*keycode), position.macKeyCode);
    }
    // The default screenshot key: Command+Shift+2 is Ctrl+Shift and keycode 11.
    EXPECT_EQ(translator.xKeycode(19), 11);
    EXPECT_FALSE(translator.xKeycode(52)); // no key has this code
}

TEST(KeyTranslator, KeysFallBackToTheirSymbolWhenKeycodesAreNotEvdevs)
{
    const KeyTranslator translator(usMapping(11));
    for (const KeyPosition& position : keyPositions()) {
        if (position.evdevCode + 11 > 255)
            continue;
        const auto keycode = translator.xKeycode(position.macKeyCode);
        ASSERT_TRUE(keycode) << position.macKeyCode;
        EXPECT_EQ(*keycode, position.evdevCode + 11);
        EXPECT_EQ(translator.macKeyCode(*keycode), position.macKeyCode);
    }
}

TEST(KeyTranslator, ModifiersFollowTheServersModifierMap)
{
    const KeyTranslator standard(usMapping(8));
    EXPECT_EQ(standard.xModifiers(0x300), XModifier::control | XModifier::shift);
    EXPECT_EQ(standard.xModifiers(0x800), 1 << 3);  // Option is Alt on Mod1
    EXPECT_EQ(standard.xModifiers(0x1000), 1 << 6); // Control is Super on Mod4
    EXPECT_EQ(standard.lockVariants(), (std::array<std::uint16_t, 4>{0, 2, 1 << 4, 2 | 1 << 4}));
    EXPECT_EQ(standard.modifierFlags(XModifier::control | XModifier::shift | (1 << 4)), 0x120000u);
    EXPECT_TRUE(standard.isModifierKey(37)); // left Ctrl
    EXPECT_FALSE(standard.isModifierKey(11));

    // Num Lock on Mod3 and Super on Mod5 move with the map.
    const KeyTranslator moved(usMapping(8, 5, 7));
    EXPECT_EQ(moved.numLockMask(), 1 << 5);
    EXPECT_EQ(moved.xModifiers(0x1000), 1 << 7);
    EXPECT_EQ(moved.modifierFlags(1 << 7), 0x40000u);
}

TEST(KeyTranslator, AnEmptyMappingTranslatesNothingAndDoesNotCrash)
{
    const KeyTranslator translator(XKeyboardMapping{});
    EXPECT_FALSE(translator.xKeycode(0));
    EXPECT_FALSE(translator.macKeyCode(38));
    EXPECT_EQ(translator.lockVariants()[2], 1 << 4); // Num Lock's usual place
}
