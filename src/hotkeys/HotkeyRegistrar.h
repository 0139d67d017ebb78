#pragma once

#include "GlobalHotKey.h"
#include "HotkeyAction.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tosvar {

// One row of the registration table: the action, its fixed id and the
// binding the user chose, if any.
struct HotkeyRequest {
    HotkeyAction action;
    std::uint32_t id;
    std::optional<GlobalHotkeyBinding> binding;
};

// Holds the application's global hotkeys and sends their presses on as
// actions. Each registration walks the rows in order, releasing an action's
// previous key before claiming its new one; the actions the system refused
// are the conflicts.
class HotkeyRegistrar {
public:
    HotkeyRegistrar(HotkeyGrabbing& grabber, std::function<void(HotkeyAction)> onPressed);
    ~HotkeyRegistrar();
    HotkeyRegistrar(const HotkeyRegistrar&) = delete;
    HotkeyRegistrar& operator=(const HotkeyRegistrar&) = delete;

    const std::set<HotkeyAction>& registerHotKeys(const std::vector<HotkeyRequest>& rows);
    const std::set<HotkeyAction>& hotkeyConflicts() const { return conflicts_; }
    bool isRegistered(HotkeyAction action) const { return hotKeys_.contains(action); }

    // "taken by another app: " and the sorted raw names, joined by ",".
    static std::string conflictLogText(const std::set<HotkeyAction>& conflicts);

private:
    void pressed(std::uint32_t id);

    HotkeyGrabbing& grabber_;
    std::function<void(HotkeyAction)> onPressed_;
    std::map<HotkeyAction, std::unique_ptr<GlobalHotKey>> hotKeys_;
    std::map<std::uint32_t, HotkeyAction> actionsById_;
    std::set<HotkeyAction> conflicts_;
};

} // namespace tosvar
