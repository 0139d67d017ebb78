#include "LaunchAtLoginController.h"

#include "AtomicFile.h"
#include "FileContents.h"
#include "Log.h"
#include "XdgPaths.h"

namespace tosvar {

std::filesystem::path LaunchAtLoginController::standardAutostartFile() {
    return XdgPaths::configHome() / "autostart" / "tosvar.desktop";
}

bool LaunchAtLoginController::isEnabled() const {
    const Expected<std::string> text = readFileText(file_);
    return text && text->find("\nHidden=true") == std::string::npos;
}

std::string LaunchAtLoginController::desktopEntry(const std::filesystem::path& executable) {
    std::string exec = executable.string();
    if (exec.find_first_of(" \t\"`$\\'") != std::string::npos) {
        std::string quoted = "\"";
        for (char c : exec) {
            if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += "\\\\";
            quoted += c;
        }
        exec = quoted + "\"";
    }
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Tosvar\n"
           "Comment=Screen capture from the tray\n"
           "Exec=" + exec + "\n"
           "Icon=tosvar\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

void LaunchAtLoginController::apply(bool enabled) {
    if (isEnabled() == enabled) return;
    std::string failure;
    if (enabled) {
        if (auto error = AtomicFile::write(file_, desktopEntry(executable_))) failure = error->message;
    } else {
        std::error_code ec;
        std::filesystem::remove(file_, ec);
        if (ec) failure = "cannot remove " + file_.string() + ": " + ec.message();
    }
    if (!failure.empty())
        logLine(std::string("launch at login update failed enabled=") + (enabled ? "true" : "false") + " " + failure);
}

} // namespace tosvar
