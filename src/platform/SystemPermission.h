#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tosvar {

// The permissions the interface lists, in the order it lists them.
enum class VemlaSystemPermission { accessibility, screenRecording, microphone, camera, fullDiskAccess };

inline constexpr std::array<VemlaSystemPermission, 5> allSystemPermissions{
    VemlaSystemPermission::accessibility, VemlaSystemPermission::screenRecording, VemlaSystemPermission::microphone,
    VemlaSystemPermission::camera, VemlaSystemPermission::fullDiskAccess};

// "accessibility", "screenRecording", ...: the name inside every key of the permission.
std::string_view permissionName(VemlaSystemPermission permission);
// Reads a name back; unknown names give false.
bool permissionFromName(std::string_view name, VemlaSystemPermission& permission);

// Localisation keys and the icon of one permission.
std::string permissionTitleKey(VemlaSystemPermission permission);            // "perm.<name>.title"
std::string permissionUsageDescriptionKey(VemlaSystemPermission permission); // "perm.<name>.usage"
std::string permissionSettingsPaneNameKey(VemlaSystemPermission permission); // "perm.<name>.pane"
// What to tell the user when no settings page of the desktop can be opened.
std::string permissionSettingsHelpKey(VemlaSystemPermission permission); // "perm.<name>.help"
std::string_view permissionIconName(VemlaSystemPermission permission);      // a freedesktop icon name
std::vector<std::string> permissionFeatureList(VemlaSystemPermission permission);

} // namespace tosvar
