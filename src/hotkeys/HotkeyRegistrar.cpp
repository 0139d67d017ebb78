#include "HotkeyRegistrar.h"

#include <algorithm>

namespace tosvar {

HotkeyRegistrar::HotkeyRegistrar(HotkeyGrabbing& grabber, std::function<void(HotkeyAction)> onPressed)
    : grabber_(grabber), onPressed_(std::move(onPressed))
{
    grabber_.setPressedHandler([this](std::uint32_t id) { pressed(id); });
}

HotkeyRegistrar::~HotkeyRegistrar()
{
    hotKeys_.clear();
    grabber_.setPressedHandler({});
}

const std::set<HotkeyAction>& HotkeyRegistrar::registerHotKeys(const std::vector<HotkeyRequest>& rows)
{
    std::set<HotkeyAction> conflicts;
    for (const HotkeyRequest& row : rows) {
        hotKeys_.erase(row.action);
        actionsById_.erase(row.id);
        if (!row.binding || !row.binding->isValid())
            continue;
        if (auto hotKey = GlobalHotKey::make(grabber_, *row.binding, row.id)) {
            hotKeys_[row.action] = std::move(hotKey);
            actionsById_[row.id] = row.action;
        } else {
            conflicts.insert(row.action);
        }
    }
    conflicts_ = std::move(conflicts);
    return conflicts_;
}

void HotkeyRegistrar::pressed(std::uint32_t id)
{
    const auto found = actionsById_.find(id);
    if (found != actionsById_.end() && onPressed_)
        onPressed_(found->second);
}

std::string HotkeyRegistrar::conflictLogText(const std::set<HotkeyAction>& conflicts)
{
    std::vector<std::string> names;
    for (HotkeyAction action : conflicts)
        names.emplace_back(rawValue(action));
    std::sort(names.begin(), names.end());
    std::string text = "taken by another app: ";
    for (size_t i = 0; i < names.size(); ++i)
        text += (i ? "," : "") + names[i];
    return text;
}

} // namespace tosvar
