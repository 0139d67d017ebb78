#pragma once

#include "AppSettings.h"
#include "HotkeyRegistrar.h"

#include <vector>

namespace tosvar {

// The eleven global hotkeys of the settings, in registration order, each with
// its fixed id.
std::vector<HotkeyRequest> hotkeyRequests(const AppSettings& settings);

} // namespace tosvar
