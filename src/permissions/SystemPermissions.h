#pragma once

#include "AlertPresenting.h"
#include "BuildTarget.h"
#include "DesktopSettingsPage.h"
#include "PermissionProbe.h"
#include "SettingsPageOpener.h"
#include "SystemPermission.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tosvar {

// Which permissions this build lists, whether each is held, and the way to
// the desktop's page that grants it.
class SystemPermissions {
public:
    struct Row {
        VemlaSystemPermission permission;
        bool isGranted;
        friend bool operator==(const Row&, const Row&) = default;
    };

    struct Collaborators {
        PermissionProbe& probe;
        SettingsPageOpener& opener;
        AlertPresenting& alerts;
    };

    // `currentDesktop` is XDG_CURRENT_DESKTOP; `forcedDenials` read as denied
    // whatever the system says (see `forcedDenials`).
    SystemPermissions(BuildTarget target, Collaborators collaborators, std::string currentDesktop,
                      std::set<VemlaSystemPermission> forcedDenials = {});

    // Screen recording, microphone and camera always; accessibility and file
    // access on the direct channel; nothing for the sticker product.
    std::vector<VemlaSystemPermission> visible() const;
    std::vector<Row> snapshot() const;
    bool isGranted(VemlaSystemPermission permission) const;
    bool hasFullDiskAccess() const { return isGranted(VemlaSystemPermission::fullDiskAccess); }

    // Asks the system first; then opens the settings page when the permission
    // is still missing.
    void requestAccessAndOpenSettings(VemlaSystemPermission permission);
    // Opens the desktop's page for the permission, or explains in a dialog
    // where the desktop has none or it does not start.
    void openSettings(VemlaSystemPermission permission);
    std::optional<DesktopSettingsPage> settingsURL(VemlaSystemPermission permission) const;

    // Parses the value of TOSVAR_DENY_PERMISSIONS ("microphone,camera"), which
    // tests set to walk the denied paths. Unknown names are ignored.
    static std::set<VemlaSystemPermission> forcedDenials(const char* environmentValue);

private:
    void explainSettings(VemlaSystemPermission permission);

    BuildTarget target_;
    Collaborators collaborators_;
    std::string currentDesktop_;
    std::set<VemlaSystemPermission> forcedDenials_;
};

} // namespace tosvar
