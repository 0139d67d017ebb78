#include "SystemPermission.h"

namespace tosvar {

std::string_view permissionName(VemlaSystemPermission permission)
{
    switch (permission) {
    case VemlaSystemPermission::accessibility: return "accessibility";
    case VemlaSystemPermission::screenRecording: return "screenRecording";
    case VemlaSystemPermission::microphone: return "microphone";
    case VemlaSystemPermission::camera: return "camera";
    case VemlaSystemPermission::fullDiskAccess: return "fullDiskAccess";
    }
    return "accessibility";
}

bool permissionFromName(std::string_view name, VemlaSystemPermission& permission)
{
    for (VemlaSystemPermission candidate : allSystemPermissions) {
        if (permissionName(candidate) == name) {
            permission = candidate;
            return true;
        }
    }
    return false;
}

namespace {
std::string permissionKey(VemlaSystemPermission permission, std::string_view suffix)
{
    std::string key = "perm.";
    key += permissionName(permission);
    key += '.';
    key += suffix;
    return key;
}
} // namespace

std::string permissionTitleKey(VemlaSystemPermission permission) { return permissionKey(permission, "title"); }
std::string permissionUsageDescriptionKey(VemlaSystemPermission permission) { return permissionKey(permission, "usage"); }
std::string permissionSettingsPaneNameKey(VemlaSystemPermission permission) { return permissionKey(permission, "pane"); }
std::string permissionSettingsHelpKey(VemlaSystemPermission permission) { return permissionKey(permission, "help"); }

std::string_view permissionIconName(VemlaSystemPermission permission)
{
    switch (permission) {
    case VemlaSystemPermission::accessibility: return "preferences-desktop-accessibility";
    case VemlaSystemPermission::screenRecording: return "video-display";
    case VemlaSystemPermission::microphone: return "audio-input-microphone";
    case VemlaSystemPermission::camera: return "camera-web";
    case VemlaSystemPermission::fullDiskAccess: return "drive-harddisk";
    }
    return "dialog-question";
}

std::vector<std::string> permissionFeatureList(VemlaSystemPermission permission)
{
    switch (permission) {
    case VemlaSystemPermission::accessibility:
        return {"perm.accessibility.features.elements", "perm.accessibility.features.scrolling"};
    case VemlaSystemPermission::screenRecording:
        return {"perm.screenRecording.features.screenshots", "perm.screenRecording.features.recordings"};
    case VemlaSystemPermission::microphone: return {"perm.microphone.features.voice"};
    case VemlaSystemPermission::camera: return {"perm.camera.features.bubble"};
    case VemlaSystemPermission::fullDiskAccess: return {"perm.fullDiskAccess.features.folders"};
    }
    return {};
}

} // namespace tosvar
