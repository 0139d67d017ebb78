#include "LaunchDiagnostics.h"

#include "AtomicFile.h"
#include "BuildTarget.h"
#include "FileContents.h"
#include "LocalTime.h"
#include "Log.h"
#include "XdgPaths.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <exception>
#include <typeinfo>
#include <cxxabi.h>
#include <execinfo.h>
#include <fcntl.h>
#include <mutex>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <thread>
#include <unistd.h>

namespace tosvar::LaunchDiagnostics {

namespace {

using Clock = std::chrono::steady_clock;

struct State {
    std::mutex lock;
    bool begun = false;
    int fd = -1;
    std::uintmax_t written = 0;
    bool budgetReported = false;
    std::filesystem::path folder;
    Clock::time_point began;
    Clock::time_point stageStarted;
    std::string stage = "begin";
    std::optional<SessionState> previous;
    int failedLaunches = 0;
    std::string startedAt;
};

State& state() {
    static State s;
    return s;
}

// Read by the signal handlers: fixed buffers only.
char breadcrumb[512] = "begin";
std::atomic<int> crashDepth{0}; // lock-free, so safe in a handler
void* frames[128];

std::string wallTime(const char* pattern, bool milliseconds) {
    const auto now = std::chrono::system_clock::now();
    return milliseconds ? formatLocalTimeWithMilliseconds(now, pattern) : formatLocalTime(now, pattern);
}

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void writeSafely(int fd, const char* text) {
    if (fd < 0) return;
    std::size_t length = std::strlen(text);
    while (length > 0) {
        const ssize_t n = ::write(fd, text, length);
        if (n <= 0) return;
        text += n;
        length -= static_cast<std::size_t>(n);
    }
}

// One line to standard error and, within the session's budget, to the file.
void writeLine(const std::string& text) {
    State& s = state();
    std::lock_guard guard(s.lock);
    writeSafely(STDERR_FILENO, text.c_str());
    if (s.fd < 0) return;
    if (s.written + text.size() > sessionBudget) {
        if (!s.budgetReported) {
            writeSafely(s.fd, "\n*** log budget exhausted for this session ***\n");
            s.budgetReported = true;
        }
        return;
    }
    writeSafely(s.fd, text.c_str());
    s.written += text.size();
}

void line(std::string_view text) {
    char prefix[48];
    std::snprintf(prefix, sizeof prefix, " [+%7.1fms] ", millisecondsSince(state().began));
    writeLine(wallTime("%Y-%m-%d %H:%M:%S", true) + prefix + std::string(text) + "\n");
}

void writeState(const std::string& phase, std::optional<int> failedLaunches = std::nullopt) {
    State& s = state();
    if (s.folder.empty()) return;
    nlohmann::ordered_json json{{"phase", phase},
                                {"stage", s.stage},
                                {"version", TOSVAR_VERSION},
                                {"build", TOSVAR_VERSION},
                                {"startedAt", s.startedAt},
                                {"updatedAt", wallTime("%Y-%m-%dT%H:%M:%S%z", false)},
                                {"failedLaunches", failedLaunches.value_or(s.failedLaunches)}};
    (void)AtomicFile::write(s.folder / "launch-state.json", json.dump(2));
}

std::optional<SessionState> readState(const std::filesystem::path& file) {
    const Expected<std::string> text = readFileText(file);
    if (!text) return std::nullopt;
    const nlohmann::json json = nlohmann::json::parse(*text, nullptr, false);
    if (!json.is_object() || !json.contains("phase") || !json["phase"].is_string()) return std::nullopt;
    SessionState session;
    session.phase = json["phase"].get<std::string>();
    session.stage = json.value("stage", "");
    session.version = json.value("version", "");
    session.startedAt = json.value("startedAt", "");
    session.updatedAt = json.value("updatedAt", "");
    session.failedLaunches = json.value("failedLaunches", 0);
    return session;
}

void openLog() {
    State& s = state();
    std::error_code ec;
    std::filesystem::create_directories(s.folder, ec);
    const auto log = s.folder / "launch.log";
    if (std::filesystem::exists(log, ec) && std::filesystem::file_size(log, ec) > rotationSize) {
        std::filesystem::remove(s.folder / "launch.log.1", ec);
        std::filesystem::rename(log, s.folder / "launch.log.1", ec);
    }
    s.fd = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

// Decimal text of a small number, without the C library's formatting.
void signalNumberText(int signal, char (&out)[16]) {
    char reversed[16];
    int length = 0;
    unsigned value = signal < 0 ? 0u : static_cast<unsigned>(signal);
    do {
        reversed[length++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value > 0 && length < 15);
    for (int i = 0; i < length; ++i) out[i] = reversed[length - 1 - i];
    out[length] = '\0';
}

void handleFatalSignal(int signal) {
    if (crashDepth.fetch_add(1) > 0) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    const int fd = state().fd;
    char number[16];
    signalNumberText(signal, number);
    for (int target : {fd, static_cast<int>(STDERR_FILENO)}) {
        writeSafely(target, "\n=== VEMLA CRASH ===\nsignal : ");
        writeSafely(target, number);
        writeSafely(target, "\nstage  : ");
        writeSafely(target, breadcrumb);
        writeSafely(target, "\nbacktrace:\n");
    }
    const int count = ::backtrace(frames, 128);
    if (fd >= 0) ::backtrace_symbols_fd(frames, count, fd);
    ::backtrace_symbols_fd(frames, count, STDERR_FILENO);
    writeSafely(fd, "=== END CRASH ===\n");
    writeSafely(STDERR_FILENO, "=== END CRASH ===\n");
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void handleTerminationSignal(int signal) {
    const int fd = state().fd;
    char number[16];
    signalNumberText(signal, number);
    for (int target : {fd, static_cast<int>(STDERR_FILENO)}) {
        writeSafely(target, "\n--- VEMLA killed by signal ");
        writeSafely(target, number);
        writeSafely(target, " (external quit, not a crash) at stage: ");
        writeSafely(target, breadcrumb);
        writeSafely(target, "\n");
    }
    if (fd >= 0) ::fsync(fd);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// What the runtime knows of the exception that ended the program: its type,
// its message, and the stack of the thread that let it escape.
[[noreturn]] void logUncaughtException() {
    std::string name = "unknown";
    if (const std::type_info* type = abi::__cxa_current_exception_type()) {
        int status = 0;
        char* demangled = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
        name = status == 0 && demangled ? demangled : type->name();
        std::free(demangled);
    }
    std::string reason = "n/a";
    if (auto current = std::current_exception()) {
        try {
            std::rethrow_exception(current);
        } catch (const std::exception& e) {
            reason = e.what();
        } catch (...) {
        }
    }
    line("=== UNCAUGHT EXCEPTION ===");
    line("name   : " + name);
    line("reason : " + reason);
    line("info   : none");
    void* stack[128];
    const int count = ::backtrace(stack, 128);
    char** symbols = ::backtrace_symbols(stack, count);
    for (int i = 0; i < count; ++i) line(symbols ? symbols[i] : "?");
    std::free(symbols);
    line("=== END EXCEPTION ===");
    std::abort();
}

void installCrashHandlers() {
    static std::vector<char> alternateStack(0x80000);
    stack_t stack{};
    stack.ss_sp = alternateStack.data();
    stack.ss_size = alternateStack.size();
    ::sigaltstack(&stack, nullptr);
    auto install = [](int signal, void (*handler)(int)) {
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    };
    for (int signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) install(signal, handleFatalSignal);
    for (int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) install(signal, handleTerminationSignal);
    std::set_terminate(logUncaughtException);
    std::atexit([] { line("process exiting (atexit) — last stage: " + state().stage); });
}

void writeHeader() {
    State& s = state();
    utsname system{};
    ::uname(&system);
    const auto readValue = [](const char* variable) {
        const char* value = std::getenv(variable);
        return std::string(value && *value ? value : "n/a");
    };
    line("Vemla launch — " + wallTime("%Y-%m-%d %H:%M:%S %z", false));
    line(std::string("app        : ") + BuildTarget::applicationIdentifier() + " " + TOSVAR_VERSION + " (" +
         BuildTarget::current().name() + ")");
    char executable[4096] = {};
    const ssize_t length = ::readlink("/proc/self/exe", executable, sizeof executable - 1);
    line("executable : " + std::string(length > 0 ? executable : "n/a"));
    line("locale     : LANG=" + readValue("LANG") + " LANGUAGE=" + readValue("LANGUAGE"));
    line(std::string("system     : ") + system.sysname + " " + system.release + " " + system.machine);
    line("session    : desktop=" + readValue("XDG_CURRENT_DESKTOP") + " type=" + readValue("XDG_SESSION_TYPE") +
         " display=" + readValue("DISPLAY") + " wayland=" + readValue("WAYLAND_DISPLAY"));
    line("euid=" + std::to_string(::geteuid()));
    std::string variables;
    for (char** entry = environ; entry && *entry; ++entry)
        if (std::strncmp(*entry, "VEMLA_", 6) == 0) variables += std::string(variables.empty() ? "" : " ") + *entry;
    line(variables.empty() ? "no VEMLA_* variables" : "variables  : " + variables);
    if (s.previous && s.previous->version != TOSVAR_VERSION) {
        line("UPGRADE " + s.previous->version + " -> " + TOSVAR_VERSION);
    } else {
        line("upgrade    : none (same version as last run)");
    }
    if (!s.previous) {
        line("lastSession: none (first run with diagnostics, or logs were cleared)");
    } else {
        line("lastSession: phase=" + s.previous->phase + " stage=" + s.previous->stage +
             " updatedAt=" + s.previous->updatedAt);
        if (s.previous->phase == "launching")
            line("CRITICAL   : the previous LAUNCH never completed — it died during stage '" + s.previous->stage + "'");
        if (s.previous->phase == "running")
            line("NOTE       : the previous session never ran its clean exit (crash, force quit, or kill) — see the "
                 "previous session's tail above");
    }
    if (s.failedLaunches > 0) line(std::to_string(s.failedLaunches) + " consecutive launches never finished");
}

} // namespace

void begin(const std::optional<std::filesystem::path>& folderOverride) {
    State& s = state();
    if (s.begun) return;
    s.begun = true;
    s.began = s.stageStarted = Clock::now();
    s.startedAt = wallTime("%Y-%m-%dT%H:%M:%S%z", false);
    s.folder = folderOverride.value_or(XdgPaths::appStateDir());
    openLog();
    installCrashHandlers();
    s.previous = readState(s.folder / "launch-state.json");
    s.failedLaunches = s.previous && s.previous->phase == "launching" ? s.previous->failedLaunches + 1 : 0;
    writeHeader();
    writeState("launching");
    setLogSink([](std::string_view text) { log("Vemla", text); });
}

void setBreadcrumb(std::string_view text) {
    const std::size_t length = std::min(text.size(), sizeof breadcrumb - 1);
    std::memcpy(breadcrumb, text.data(), length);
    breadcrumb[length] = '\0';
}

void stage(const std::string& name) {
    State& s = state();
    const std::string previous = s.stage;
    const double took = millisecondsSince(s.stageStarted);
    s.stage = name;
    s.stageStarted = Clock::now();
    setBreadcrumb(name);
    char timing[32];
    std::snprintf(timing, sizeof timing, "%.1fms", took);
    line("stage: " + name + "  (previous " + previous + " took " + timing + ")");
    writeState("launching");
}

void step(const std::string& name, const std::function<void()>& body) {
    stage(name);
    const auto started = Clock::now();
    char timing[32];
    try {
        body();
        std::snprintf(timing, sizeof timing, "%.1fms", millisecondsSince(started));
        line("  ok  " + name + " (" + timing + ")");
    } catch (const std::exception& e) {
        std::snprintf(timing, sizeof timing, "%.1fms", millisecondsSince(started));
        line("  FAIL " + name + " (" + timing + "): " + e.what());
        throw;
    }
}

void measure(const std::string& name, const std::function<void()>& body) {
    const auto started = Clock::now();
    body();
    const double took = millisecondsSince(started);
    if (took <= 20) return;
    char timing[32];
    std::snprintf(timing, sizeof timing, "%.1fms", took);
    line("  slow " + name + " (" + timing + ")");
}

void log(std::string_view tag, std::string_view message) { line("[" + std::string(tag) + "] " + std::string(message)); }

void launchDidFinish(std::function<std::vector<std::pair<std::string, std::string>>()> inventory) {
    State& s = state();
    setBreadcrumb("running");
    s.stage = "running";
    char timing[32];
    std::snprintf(timing, sizeof timing, "%.1fms", millisecondsSince(s.began));
    line(std::string("launch complete in ") + timing);
    s.failedLaunches = 0;
    writeState("running", 0);
    std::thread([inventory = std::move(inventory), folder = s.folder] {
        std::vector<std::pair<std::string, std::string>> values = inventory ? inventory() : decltype(values){};
        struct statvfs disk {};
        const bool diskKnown = ::statvfs(folder.c_str(), &disk) == 0;
        values.emplace_back("buildTarget", BuildTarget::current().name());
        values.emplace_back("sandboxed", "false");
        values.emplace_back("supportDir", folder.string());
        values.emplace_back("freeDisk", diskKnown ? std::to_string(std::uint64_t(disk.f_bavail) * disk.f_frsize / (1024 * 1024)) + " MiB" : "n/a");
        for (const auto& [name, value] : values) line("[env] " + name + " = " + (value.empty() ? "missing" : value));
    }).detach();
}

void willTerminate() {
    State& s = state();
    line("applicationWillTerminate — clean exit");
    s.stage = "terminated";
    writeState("exited");
}

std::filesystem::path folder() { return state().folder; }
std::optional<SessionState> previousSession() { return state().previous; }
int consecutiveFailedLaunches() { return state().failedLaunches; }

} // namespace tosvar::LaunchDiagnostics
