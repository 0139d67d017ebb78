#pragma once

#include "PermissionProbe.h"

namespace tosvar {

// What the permissions mean on a Linux desktop. Under X11 reading the screen
// needs no grant; under Wayland it goes through the portal, which we do not
// drive yet, so it reads as missing. Accessibility is the AT-SPI bus's
// "IsEnabled" switch. Microphone and camera are held when a device can be
// opened; file access when the home folder can be read and written.
class LinuxPermissionProbe final : public PermissionProbe {
public:
    bool isGranted(VemlaSystemPermission permission) const override;
    bool requestAccess(VemlaSystemPermission permission) override;
};

} // namespace tosvar
