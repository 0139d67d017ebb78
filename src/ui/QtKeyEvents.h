#pragma once

#include "KeyEvent.h"
#include "KeyTranslator.h"

#include <optional>

class QKeyEvent;

namespace tosvar {

// A Qt key event in our key space. The key goes by its X keycode through the
// same translator as the global hotkeys, so it is the key's position that
// counts; without one (another platform) by Qt's key. Ctrl is Command, Meta
// (Super) is Control, Alt is Option. Modifier keys become flags-changed events.
std::optional<KeyEvent> keyEventFromQt(const QKeyEvent& event, const KeyTranslator* translator);

} // namespace tosvar
