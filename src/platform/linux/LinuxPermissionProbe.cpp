#include "LinuxPermissionProbe.h"

#include "AtspiStatus.h"

#include "Log.h"

#include <QGuiApplication>

#include <cstdlib>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tosvar {

namespace {

bool canOpen(const std::filesystem::path& device, int flags)
{
    const int fd = ::open(device.c_str(), flags | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    ::close(fd);
    return true;
}

bool anyDeviceOpens(const std::filesystem::path& folder, bool (*matches)(const std::string& name), int flags)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (matches(entry.path().filename().string()) && canOpen(entry.path(), flags))
            return true;
    }
    return false;
}

bool unixSocketAnswers(const std::string& path)
{
    sockaddr_un address{};
    if (path.empty() || path.size() >= sizeof(address.sun_path))
        return false;
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, path.size());
    const bool connected = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    ::close(fd);
    return connected;
}

// The sound server's socket: $PULSE_SERVER when it names a local socket, else
// the per-user one under $XDG_RUNTIME_DIR (PipeWire serves it too).
bool soundServerAnswers()
{
    if (const char* server = std::getenv("PULSE_SERVER")) {
        std::string value(server);
        if (value.starts_with("unix:"))
            return unixSocketAnswers(value.substr(5));
        if (value.starts_with("/"))
            return unixSocketAnswers(value);
    }
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && unixSocketAnswers(std::string(runtime) + "/pulse/native");
}

bool microphoneAvailable()
{
    // ALSA capture devices end in "c": /dev/snd/pcmC0D0c.
    return soundServerAnswers()
           || anyDeviceOpens("/dev/snd", [](const std::string& name) { return name.starts_with("pcmC") && name.ends_with("c"); },
                             O_RDONLY);
}

bool cameraAvailable()
{
    return anyDeviceOpens("/dev", [](const std::string& name) { return name.starts_with("video"); }, O_RDWR);
}

bool homeAccessible()
{
    const char* home = std::getenv("HOME");
    return home && ::access(home, R_OK | W_OK | X_OK) == 0;
}

} // namespace

bool LinuxPermissionProbe::isGranted(VemlaSystemPermission permission) const
{
    switch (permission) {
    case VemlaSystemPermission::accessibility: return AtspiStatus::isEnabled();
    case VemlaSystemPermission::screenRecording: return QGuiApplication::platformName() == QLatin1String("xcb");
    case VemlaSystemPermission::microphone: return microphoneAvailable();
    case VemlaSystemPermission::camera: return cameraAvailable();
    case VemlaSystemPermission::fullDiskAccess: return homeAccessible();
    }
    return false;
}

bool LinuxPermissionProbe::requestAccess(VemlaSystemPermission permission)
{
    if (permission == VemlaSystemPermission::accessibility)
        return AtspiStatus::enable();
    return isGranted(permission);
}

} // namespace tosvar
