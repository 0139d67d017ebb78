#pragma once

#include "SystemPermission.h"

namespace tosvar {

// Asks the system whether this program holds a permission, and asks for it.
class PermissionProbe {
public:
    virtual ~PermissionProbe() = default;
    virtual bool isGranted(VemlaSystemPermission permission) const = 0;
    // Does what the system allows to grant the permission without a settings
    // page (switching accessibility on, say). Returns whether it is granted now.
    virtual bool requestAccess(VemlaSystemPermission permission) = 0;
};

} // namespace tosvar
