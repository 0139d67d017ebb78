#include "QtKeyEvents.h"

#include "KeyPositions.h"

#include <QKeyEvent>

namespace tosvar {

namespace {

std::uint32_t modifierFlags(Qt::KeyboardModifiers modifiers)
{
    std::uint32_t flags = 0;
    if (modifiers & Qt::ShiftModifier) flags |= ModifierFlag::shift;
    if (modifiers & Qt::ControlModifier) flags |= ModifierFlag::command;
    if (modifiers & Qt::MetaModifier) flags |= ModifierFlag::control;
    if (modifiers & Qt::AltModifier) flags |= ModifierFlag::option;
    return flags;
}

// The keysym an unshifted US layout gives a Qt key, for keys Qt names by symbol.
std::optional<std::uint32_t> keysymOf(int key)
{
    if (key >= 0x20 && key <= 0x7e)
        return static_cast<std::uint32_t>(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12)
        return 0xffbe + static_cast<std::uint32_t>(key - Qt::Key_F1);
    switch (key) {
    case Qt::Key_Escape: return 0xff1b;
    case Qt::Key_Return: return 0xff0d;
    case Qt::Key_Enter: return 0xff8d;
    case Qt::Key_Tab: return 0xff09;
    case Qt::Key_Backspace: return 0xff08;
    case Qt::Key_Delete: return 0xffff;
    case Qt::Key_Insert: return 0xff63;
    case Qt::Key_Home: return 0xff50;
    case Qt::Key_End: return 0xff57;
    case Qt::Key_PageUp: return 0xff55;
    case Qt::Key_PageDown: return 0xff56;
    case Qt::Key_Left: return 0xff51;
    case Qt::Key_Up: return 0xff52;
    case Qt::Key_Right: return 0xff53;
    case Qt::Key_Down: return 0xff54;
    case Qt::Key_Control: return 0xffe3;
    case Qt::Key_Shift: return 0xffe1;
    case Qt::Key_Alt: return 0xffe9;
    case Qt::Key_Meta: return 0xffeb;
    default: return std::nullopt;
    }
}

bool isModifierKey(int key)
{
    return key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Alt || key == Qt::Key_Meta;
}

} // namespace

std::optional<KeyEvent> keyEventFromQt(const QKeyEvent& event, const KeyTranslator* translator)
{
    std::optional<std::uint32_t> keyCode;
    if (translator && event.nativeScanCode() > 0 && event.nativeScanCode() < 256)
        keyCode = translator->macKeyCode(static_cast<std::uint8_t>(event.nativeScanCode()));
    if (!keyCode) {
        if (const auto keysym = keysymOf(event.key()))
            if (const auto position = keyPositionForKeysym(*keysym))
                keyCode = position->macKeyCode;
    }
    if (!keyCode)
        return std::nullopt;
    KeyEvent key;
    key.keyCode = *keyCode;
    key.modifierFlags = modifierFlags(event.modifiers());
    key.timestamp = event.timestamp() / 1000.0;
    key.isRepeat = event.isAutoRepeat();
    if (isModifierKey(event.key()))
        key.type = KeyEvent::Type::flagsChanged;
    else
        key.type = event.type() == QEvent::KeyRelease ? KeyEvent::Type::keyUp : KeyEvent::Type::keyDown;
    return key;
}

} // namespace tosvar
