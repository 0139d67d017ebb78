#include "DesktopSettingsPage.h"

#include <algorithm>
#include <cctype>

namespace tosvar {

namespace {

enum class Desktop { gnome, kde, xfce, other };

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

// The first desktop of the list that we know wins, as in menu-spec's OnlyShowIn.
Desktop knownDesktop(std::string_view currentDesktop)
{
    while (!currentDesktop.empty()) {
        const size_t colon = currentDesktop.find(':');
        const std::string name = lowered(currentDesktop.substr(0, colon));
        if (name == "gnome" || name == "gnome-classic" || name == "gnome-flashback" || name == "unity" || name == "budgie")
            return Desktop::gnome;
        if (name == "kde")
            return Desktop::kde;
        if (name == "xfce")
            return Desktop::xfce;
        if (colon == std::string_view::npos)
            break;
        currentDesktop.remove_prefix(colon + 1);
    }
    return Desktop::other;
}

std::optional<DesktopSettingsPage> gnomePage(VemlaSystemPermission permission)
{
    switch (permission) {
    case VemlaSystemPermission::accessibility: return DesktopSettingsPage{"gnome-control-center", {"universal-access"}};
    case VemlaSystemPermission::screenRecording: return DesktopSettingsPage{"gnome-control-center", {"sharing"}};
    case VemlaSystemPermission::microphone: return DesktopSettingsPage{"gnome-control-center", {"microphone"}};
    case VemlaSystemPermission::camera: return DesktopSettingsPage{"gnome-control-center", {"camera"}};
    case VemlaSystemPermission::fullDiskAccess: return std::nullopt;
    }
    return std::nullopt;
}

std::optional<DesktopSettingsPage> kdePage(VemlaSystemPermission permission)
{
    switch (permission) {
    case VemlaSystemPermission::accessibility: return DesktopSettingsPage{"systemsettings", {"kcm_access"}};
    case VemlaSystemPermission::microphone: return DesktopSettingsPage{"systemsettings", {"kcm_pulseaudio"}};
    case VemlaSystemPermission::screenRecording:
    case VemlaSystemPermission::camera:
    case VemlaSystemPermission::fullDiskAccess: return std::nullopt;
    }
    return std::nullopt;
}

std::optional<DesktopSettingsPage> xfcePage(VemlaSystemPermission permission)
{
    if (permission == VemlaSystemPermission::accessibility)
        return DesktopSettingsPage{"xfce4-accessibility-settings", {}};
    if (permission == VemlaSystemPermission::microphone)
        return DesktopSettingsPage{"pavucontrol", {"--tab=4"}};
    return std::nullopt;
}

} // namespace

std::optional<DesktopSettingsPage> desktopSettingsPage(VemlaSystemPermission permission, std::string_view currentDesktop)
{
    switch (knownDesktop(currentDesktop)) {
    case Desktop::gnome: return gnomePage(permission);
    case Desktop::kde: return kdePage(permission);
    case Desktop::xfce: return xfcePage(permission);
    case Desktop::other: return std::nullopt;
    }
    return std::nullopt;
}

} // namespace tosvar
