#pragma once

#include <csignal>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace tosvar {

// A program the test starts in a process group of its own (found on PATH
// when the name has no slash), stopped with everything it started when the
// object goes away.
class ChildProcess {
public:
    explicit ChildProcess(std::vector<std::string> arguments) {
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attributes, 0);
        if (::posix_spawnp(&pid_, argv[0], nullptr, &attributes, argv.data(), environ) != 0) pid_ = -1;
        posix_spawnattr_destroy(&attributes);
    }
    ~ChildProcess() {
        if (pid_ <= 0) return;
        ::kill(-pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    bool started() const { return pid_ > 0; }

private:
    pid_t pid_ = -1;
};

} // namespace tosvar
