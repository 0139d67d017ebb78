#pragma once

#include "SystemPermission.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tosvar {

// A program that opens one page of the desktop's settings.
struct DesktopSettingsPage {
    std::string program;
    std::vector<std::string> arguments;
    friend bool operator==(const DesktopSettingsPage&, const DesktopSettingsPage&) = default;
};

// The settings page that governs `permission` on the desktop named by
// XDG_CURRENT_DESKTOP (a colon-separated list, "ubuntu:GNOME"), or none when
// that desktop has no such page: the caller then explains in a dialog.
std::optional<DesktopSettingsPage> desktopSettingsPage(VemlaSystemPermission permission, std::string_view currentDesktop);

} // namespace tosvar
