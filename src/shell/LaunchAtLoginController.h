#pragma once

#include <filesystem>
#include <string>

namespace tosvar {

// Starting with the desktop session, through an XDG autostart entry.
class LaunchAtLoginController {
public:
    LaunchAtLoginController(std::filesystem::path autostartFile, std::filesystem::path executable)
        : file_(std::move(autostartFile)), executable_(std::move(executable)) {}

    // $XDG_CONFIG_HOME/autostart/tosvar.desktop
    static std::filesystem::path standardAutostartFile();

    // An entry exists and is not hidden.
    bool isEnabled() const;
    // Writes or removes the entry, only when it differs from `enabled`; a
    // failure is logged and changes nothing else.
    void apply(bool enabled);

    // The entry's text; `Exec` quoted by the desktop-entry rules.
    static std::string desktopEntry(const std::filesystem::path& executable);

private:
    std::filesystem::path file_;
    std::filesystem::path executable_;
};

} // namespace tosvar
