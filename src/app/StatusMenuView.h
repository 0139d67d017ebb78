#pragma once

#include "StatusMenuModel.h"

#include <QIcon>
#include <QKeySequence>
#include <QMenu>

#include <functional>
#include <string>

namespace tosvar {

// How the menu's words and shortcuts are made: the localised text of a key
// with arguments, and the shortcut of a hotkey binding.
struct StatusMenuPresentation {
    std::function<std::string(const std::string& key, const std::vector<std::string>& arguments)> localize;
    std::function<QKeySequence(const GlobalHotkeyBinding& binding)> shortcut;
};

// Turns the menu model into a QMenu. Chosen rows call `onAction` with their
// action and, for recent captures, the file.
namespace StatusMenuView {

using ActionHandler = std::function<void(StatusMenuAction action, const std::filesystem::path& file)>;

void fill(QMenu& menu, const std::vector<StatusMenuRow>& rows, const StatusMenuPresentation& presentation,
          const ActionHandler& onAction);

// The shortcut of a fixed key equivalent (Command is Ctrl, Control is Meta).
QKeySequence shortcut(const MenuKeyEquivalent& key);
// The shortcut of a hotkey binding, as menus and windows show it ("Ctrl+Shift+2").
QKeySequence shortcut(const GlobalHotkeyBinding& binding);

// The tray icon: a viewfinder, with a red dot while recording and a pause
// mark while paused, drawn at the sizes trays ask for.
QIcon statusItemIcon(bool live, bool paused);

} // namespace StatusMenuView

} // namespace tosvar
