#include "SessionBus.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace tosvar {

SessionBus::SessionBus() {
    // --fork prints the address and the daemon's pid, one per line, then returns.
    std::FILE* out = ::popen("dbus-daemon --session --fork --print-address=1 --print-pid=1 2>/dev/null", "r");
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
}

} // namespace tosvar
