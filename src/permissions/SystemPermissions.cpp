#include "SystemPermissions.h"

#include "Log.h"

#include <string_view>

namespace tosvar {

SystemPermissions::SystemPermissions(BuildTarget target, Collaborators collaborators, std::string currentDesktop,
                                     std::set<VemlaSystemPermission> forcedDenials)
    : target_(target)
    , collaborators_(collaborators)
    , currentDesktop_(std::move(currentDesktop))
    , forcedDenials_(std::move(forcedDenials))
{
}

std::vector<VemlaSystemPermission> SystemPermissions::visible() const
{
    if (!target_.systemPermissionsListed())
        return {};
    std::vector<VemlaSystemPermission> permissions;
    for (VemlaSystemPermission permission : allSystemPermissions) {
        const bool directOnly = permission == VemlaSystemPermission::accessibility
                                || permission == VemlaSystemPermission::fullDiskAccess;
        if (!directOnly || target_.channel == BuildChannel::direct)
            permissions.push_back(permission);
    }
    return permissions;
}

std::vector<SystemPermissions::Row> SystemPermissions::snapshot() const
{
    std::vector<Row> rows;
    for (VemlaSystemPermission permission : visible())
        rows.push_back({permission, isGranted(permission)});
    return rows;
}

bool SystemPermissions::isGranted(VemlaSystemPermission permission) const
{
    return !forcedDenials_.contains(permission) && collaborators_.probe.isGranted(permission);
}

void SystemPermissions::requestAccessAndOpenSettings(VemlaSystemPermission permission)
{
    const bool granted = collaborators_.probe.requestAccess(permission) && !forcedDenials_.contains(permission);
    logLine("[Permissions] request " + std::string(permissionName(permission)) + (granted ? " granted" : " denied"));
    if (!granted)
        openSettings(permission);
}

void SystemPermissions::openSettings(VemlaSystemPermission permission)
{
    const std::optional<DesktopSettingsPage> page = settingsURL(permission);
    if (page && collaborators_.opener.start(page->program, page->arguments))
        return;
    explainSettings(permission);
}

std::optional<DesktopSettingsPage> SystemPermissions::settingsURL(VemlaSystemPermission permission) const
{
    return desktopSettingsPage(permission, currentDesktop_);
}

void SystemPermissions::explainSettings(VemlaSystemPermission permission)
{
    AlertRequest request;
    request.style = AlertStyle::informational;
    request.message = {permissionTitleKey(permission), {}};
    request.informativeText = {permissionSettingsHelpKey(permission), {}};
    request.buttons = {{"common.ok", {}}};
    collaborators_.alerts.run(request, nullptr);
}

std::set<VemlaSystemPermission> SystemPermissions::forcedDenials(const char* environmentValue)
{
    std::set<VemlaSystemPermission> denied;
    if (!environmentValue)
        return denied;
    std::string_view rest(environmentValue);
    while (!rest.empty()) {
        const size_t comma = rest.find(',');
        VemlaSystemPermission permission;
        if (permissionFromName(rest.substr(0, comma), permission))
            denied.insert(permission);
        if (comma == std::string_view::npos)
            break;
        rest.remove_prefix(comma + 1);
    }
    return denied;
}

} // namespace tosvar
