#include "PulseAudioServer.h"

#include <pulse/simple.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tosvar {

namespace {

// Runs a program to its end; whether it succeeded.
bool run(const std::vector<std::string>& arguments) {
    const pid_t child = ::fork();
    if (child < 0) return false;
    if (child == 0) {
        std::vector<char*> argv;
        for (const std::string& a : arguments) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

bool PulseAudioServer::isInstalled() {
    const char* path = std::getenv("PATH");
    std::string folders = path ? path : "/usr/bin:/bin";
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        if (::access((folders.substr(start, end - start) + "/pulseaudio").c_str(), X_OK) == 0) return true;
        start = end + 1;
    }
    return false;
}

PulseAudioServer::PulseAudioServer() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tosvar-pulse-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("PulseAudio: cannot create a folder");
    folder_ = pattern;
    const std::filesystem::path socket = folder_ / "native";
    address_ = "unix:" + socket.string();
    const std::string protocol = "module-native-protocol-unix auth-anonymous=1 socket=" + socket.string();
    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("PulseAudio: cannot fork");
    if (pid_ == 0) {
        ::setenv("HOME", folder_.c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", folder_.c_str(), 1);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
        const int log = ::open((folder_ / "server.log").c_str(), O_WRONLY | O_CREAT, 0600);
        if (log >= 0) {
            ::dup2(log, STDOUT_FILENO);
            ::dup2(log, STDERR_FILENO);
        }
        ::execlp("pulseaudio", "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                 "--disable-shm=yes", "--log-target=stderr", "-L", protocol.c_str(), "-L",
                 "module-null-sink sink_name=speakers rate=48000", "-L", "module-null-sink sink_name=room rate=48000",
                 "-L", "module-remap-source source_name=mic master=room.monitor", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    // Ready once a client gets through.
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32LE, 48000, 2};
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (::waitpid(pid_, nullptr, WNOHANG) == pid_) {
            pid_ = -1;
            break;
        }
        pa_simple* probe =
            pa_simple_new(address_.c_str(), "test", PA_STREAM_PLAYBACK, nullptr, "probe", &spec, nullptr, nullptr, nullptr);
        if (probe) {
            pa_simple_free(probe);
            if (run({"pactl", "--server", address_, "set-default-sink", "speakers"}) &&
                run({"pactl", "--server", address_, "set-default-source", "mic"}))
                return;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    shutDown();
    throw std::runtime_error("PulseAudio did not start");
}

PulseAudioServer::~PulseAudioServer() { shutDown(); }

void PulseAudioServer::shutDown() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
    folder_.clear();
}

void PulseAudioServer::useAsServer() const { ::setenv("PULSE_SERVER", address_.c_str(), 1); }

bool PulseAudioServer::play(const std::vector<float>& samples, const std::string& sink) const {
    // pacat with a short buffer plays at once; through the simple API the
    // null sink held the sound back by its whole two-second latency.
    int pipeFds[2];
    if (::pipe(pipeFds) != 0) return false;
    const pid_t player = ::fork();
    if (player < 0) return false;
    if (player == 0) {
        ::dup2(pipeFds[0], STDIN_FILENO);
        ::close(pipeFds[0]);
        ::close(pipeFds[1]);
        const std::string device = "--device=" + sink;
        ::execlp("pacat", "pacat", "--playback", "--server", address_.c_str(), device.c_str(),
                 "--format=float32le", "--rate=48000", "--channels=2", "--latency-msec=20",
                 static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(pipeFds[0]);
    const auto* bytes = reinterpret_cast<const char*>(samples.data());
    std::size_t left = samples.size() * sizeof(float);
    while (left > 0) {
        const ssize_t written = ::write(pipeFds[1], bytes, left);
        if (written <= 0) break;
        bytes += written;
        left -= static_cast<std::size_t>(written);
    }
    ::close(pipeFds[1]);
    int status = 0;
    ::waitpid(player, &status, 0);
    return left == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace tosvar
