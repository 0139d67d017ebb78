#include "SessionBus.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace tosvar {

namespace {

// A session bus that starts no services of its own: without this the bus
// would launch whatever the machine has installed (the accessibility bus
// launcher, file managers, ...) into the test.
constexpr const char* busConfiguration = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

std::string writeConfiguration() {
    char path[] = "/tmp/tosvar-test-bus-XXXXXX";
    const int fd = ::mkstemp(path);
    if (fd < 0) throw std::runtime_error("cannot write the test bus configuration");
    const std::string text(busConfiguration);
    const bool written = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::close(fd);
    if (!written) throw std::runtime_error("cannot write the test bus configuration");
    return path;
}

} // namespace

SessionBus::SessionBus() {
    configuration_ = writeConfiguration();
    // --fork prints the address and the daemon's pid, one per line, then returns.
    const std::string command =
        "dbus-daemon --config-file=" + configuration_ + " --fork --print-address=1 --print-pid=1 2>/dev/null";
    std::FILE* out = ::popen(command.c_str(), "r");
    if (!out) throw std::runtime_error("cannot start dbus-daemon");
    char line[512];
    if (std::fgets(line, sizeof line, out)) address_ = line;
    if (std::fgets(line, sizeof line, out)) pid_ = static_cast<pid_t>(std::atoi(line));
    ::pclose(out);
    while (!address_.empty() && (address_.back() == '\n' || address_.back() == '\r')) address_.pop_back();
    if (address_.empty() || pid_ <= 0) throw std::runtime_error("dbus-daemon did not start (is the dbus package installed?)");
    if (const char* old = std::getenv("DBUS_SESSION_BUS_ADDRESS")) {
        previous_ = old;
        hadPrevious_ = true;
    }
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
}

SessionBus::~SessionBus() {
    if (hadPrevious_) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", previous_.c_str(), 1);
    } else {
        ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    if (pid_ > 0) ::kill(pid_, SIGTERM);
    ::unlink(configuration_.c_str());
}

} // namespace tosvar
