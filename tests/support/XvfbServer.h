#pragma once

#include <string>
#include <sys/types.h>

namespace tosvar {

// An Xvfb server of the test's own on a free display number, started at first
// use and stopped when the process exits. Tests labelled x11 use it; the
// DISPLAY variable is pointed at it by `useAsDisplay`.
class XvfbServer {
public:
    static XvfbServer& shared();

    const std::string& display() const { return display_; } // ":N"
    void useAsDisplay() const;

    int width() const { return 1280; }
    int height() const { return 800; }

    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

private:
    XvfbServer();

    pid_t pid_ = -1;
    std::string display_;
};

} // namespace tosvar
