#pragma once

#include <string>
#include <sys/types.h>

namespace tosvar {

// An Xvfb server of the test's own on a free display number, started at first
// use and stopped when the process exits. Tests labelled x11 use it; the
// DISPLAY variable is pointed at it by `useAsDisplay`.
class XvfbServer {
public:
    static XvfbServer& shared(); // 1280x800
    // A server of its own at another size, stopped with the object.
    XvfbServer(int width, int height);

    const std::string& display() const { return display_; } // ":N"
    void useAsDisplay() const;

    int width() const { return width_; }
    int height() const { return height_; }

    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

private:
    int width_;
    int height_;
    pid_t pid_ = -1;
    std::string display_;
};

} // namespace tosvar
