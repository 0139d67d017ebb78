#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The launch log: from the first line of main on, which stage the process
// reached, how long each took, and what killed it if something did. Lines go
// to "launch.log" (rotated to "launch.log.1" above 1 MiB at start, at most
// 8 MiB per session) and always to standard error; "launch-state.json" keeps
// the phase so the next start can tell a launch that never finished.
// Safe from any thread; the crash handlers use only async-signal-safe calls.
namespace tosvar::LaunchDiagnostics {

struct SessionState {
    std::string phase; // "launching", "running", "exited"
    std::string stage;
    std::string version;
    std::string startedAt;
    std::string updatedAt;
    int failedLaunches = 0;
};

inline constexpr std::uintmax_t rotationSize = 0x100000; // 1 MiB
inline constexpr std::uintmax_t sessionBudget = 0x800000; // 8 MiB

// First call of the process (later calls do nothing). `folder` defaults to
// $XDG_STATE_HOME/tosvar.
void begin(const std::optional<std::filesystem::path>& folder = std::nullopt);
void stage(const std::string& name);
// Runs `body` as a stage of its own; an exception it throws is logged as a failure and rethrown.
void step(const std::string& name, const std::function<void()>& body);
// Runs `body`; logs it only when it took more than 20 ms.
void measure(const std::string& name, const std::function<void()>& body);
void log(std::string_view tag, std::string_view message);
// Ends the launch; then, off the main thread, logs the environment under
// "[env] ": the values `inventory` gives (the shell knows screens, language,
// permissions), and what this module knows itself.
void launchDidFinish(std::function<std::vector<std::pair<std::string, std::string>>()> inventory = nullptr);
void willTerminate();
void setBreadcrumb(std::string_view text);

std::filesystem::path folder();
// The state the previous run left, read by `begin`.
std::optional<SessionState> previousSession();
int consecutiveFailedLaunches();

} // namespace tosvar::LaunchDiagnostics
