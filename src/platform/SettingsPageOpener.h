#pragma once

#include <string>
#include <vector>

namespace tosvar {

// Starts a settings program of the desktop, detached from us.
class SettingsPageOpener {
public:
    virtual ~SettingsPageOpener() = default;
    // False when the program is not installed or does not start.
    virtual bool start(const std::string& program, const std::vector<std::string>& arguments) = 0;
};

} // namespace tosvar
