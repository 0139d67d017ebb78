#include "XvfbServer.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tosvar {

namespace {

// Reads the display number Xvfb writes to -displayfd once it accepts clients.
std::string readDisplayNumber(int fd) {
    std::string number;
    for (;;) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 15000) <= 0) break;
        char c;
        const ssize_t n = ::read(fd, &c, 1);
        if (n <= 0 || c == '\n') break;
        number.push_back(c);
    }
    return number;
}

} // namespace

XvfbServer& XvfbServer::shared() {
    static XvfbServer server(1280, 800);
    return server;
}

XvfbServer::XvfbServer(int width, int height) : width_(width), height_(height) {
    int pipeFds[2];
    if (::pipe(pipeFds) != 0) throw std::runtime_error("Xvfb: cannot create a pipe");
    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("Xvfb: cannot fork");
    if (pid_ == 0) {
        ::close(pipeFds[0]);
        const std::string fd = std::to_string(pipeFds[1]);
        const std::string geometry = std::to_string(width) + "x" + std::to_string(height) + "x24";
        ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", geometry.c_str(), "-nolisten", "tcp",
                 "-noreset", "+extension", "XInputExtension", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(pipeFds[1]);
    const std::string number = readDisplayNumber(pipeFds[0]);
    ::close(pipeFds[0]);
    if (number.empty()) {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
        throw std::runtime_error("Xvfb did not start (is the xvfb package installed?)");
    }
    display_ = ":" + number;
}

XvfbServer::~XvfbServer() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
}

void XvfbServer::useAsDisplay() const { ::setenv("DISPLAY", display_.c_str(), 1); }

} // namespace tosvar
