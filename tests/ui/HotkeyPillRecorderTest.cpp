#include "HotkeyPillRecorder.h"
#include "KeyPositions.h"
#include "QtKeyEvents.h"
#include "TestApplication.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

// An evdev keymap holding just what the translator needs to trust it, and the 2 key.
KeyTranslator evdevTranslator()
{
    XKeyboardMapping mapping;
    mapping.keysymsPerKeycode = 1;
    mapping.keysyms.assign(248, 0);
    for (std::uint32_t macKey : {53u, 36u, 48u, 122u, 51u, 56u, 19u}) {
        const KeyPosition position = *keyPositionForMacKey(macKey);
        mapping.keysyms[position.evdevCode] = position.usKeysym; // keycode evdev + 8, row keycode - 8
    }
    return KeyTranslator(mapping);
}

QKeyEvent press(int key, Qt::KeyboardModifiers modifiers, quint32 scanCode = 0)
{
    return QKeyEvent(QEvent::KeyPress, key, modifiers, scanCode, 0, 0);
}

} // namespace

TEST(QtKeyEvents, KeysGoByPositionAndModifiersByTheKeyMap)
{
    testApplication<QApplication>();
    const KeyTranslator translator = evdevTranslator();
    // Ctrl+Shift+2 reads as "@" to Qt; its X keycode still says which key it is.
    const auto shifted = keyEventFromQt(press('@', Qt::ControlModifier | Qt::ShiftModifier, 11), &translator);
    ASSERT_TRUE(shifted);
    EXPECT_EQ(shifted->keyCode, 19u);
    EXPECT_EQ(shifted->modifierFlags, ModifierFlag::command | ModifierFlag::shift);
    EXPECT_EQ(shifted->type, KeyEvent::Type::keyDown);

    // Without a keycode, Qt's key decides; Meta is Control, Alt is Option.
    const auto letter = keyEventFromQt(press(Qt::Key_L, Qt::MetaModifier | Qt::AltModifier), nullptr);
    ASSERT_TRUE(letter);
    EXPECT_EQ(letter->keyCode, 37u);
    EXPECT_EQ(letter->modifierFlags, ModifierFlag::control | ModifierFlag::option);

    const auto modifier = keyEventFromQt(press(Qt::Key_Control, Qt::ControlModifier), nullptr);
    ASSERT_TRUE(modifier);
    EXPECT_EQ(modifier->type, KeyEvent::Type::flagsChanged);
    EXPECT_FALSE(keyEventFromQt(press(Qt::Key_MediaPlay, Qt::NoModifier), nullptr));
}

TEST(HotkeyPillRecorder, ClickRecordsTheNextValidCombination)
{
    testApplication<QApplication>();
    HotkeyRecorderGroup group;
    std::optional<GlobalHotkeyBinding> stored = GlobalHotkeyBinding::defaultScreenshot();
    HotkeyPillRecorder pill(group, 1, stored, GlobalHotkeyBinding::defaultScreenshot(),
                            [&](std::optional<GlobalHotkeyBinding> binding) { stored = binding; },
                            [](const std::string& key) { return "<" + key + ">"; }, nullptr);
    auto* button = pill.findChild<QPushButton*>();
    ASSERT_TRUE(button);
    EXPECT_EQ(button->text().toStdString(), "⌘⇧2");

    button->click();
    EXPECT_TRUE(pill.recorder().isRecording());
    EXPECT_EQ(button->text().toStdString(), "<hotkey.recording.short>");

    QKeyEvent plain = press(Qt::Key_A, Qt::NoModifier);
    QCoreApplication::sendEvent(button, &plain);
    EXPECT_TRUE(pill.recorder().isRecording());
    EXPECT_EQ(pill.recorder().errorKey(), "hotkey.needModifier");

    QKeyEvent chord = press(Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
    QCoreApplication::sendEvent(button, &chord);
    EXPECT_FALSE(pill.recorder().isRecording());
    EXPECT_EQ(stored, (GlobalHotkeyBinding{17, 0x900}));
    EXPECT_EQ(button->text().toStdString(), "⌘⌥T");
}
