#pragma once

#include <string>
#include <sys/types.h>

namespace tosvar {

// A private D-Bus session bus for one test, pointed at by
// DBUS_SESSION_BUS_ADDRESS while the object lives.
class SessionBus {
public:
    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    const std::string& address() const { return address_; }

private:
    pid_t pid_ = -1;
    std::string configuration_;
    std::string address_;
    std::string previous_;
    bool hadPrevious_ = false;
};

} // namespace tosvar
