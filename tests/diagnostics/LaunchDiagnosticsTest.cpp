// Each case runs the diagnostics in a forked child, as a fresh process would,
// and reads what it left on disk.
#include "LaunchDiagnostics.h"

#include "FileContents.h"
#include "IsolatedEnvironment.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>
#include <thread>
#include <fcntl.h>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

using namespace tosvar;

namespace {

// Runs `body` in a child with standard error silenced; returns its wait status.
int inChild(const std::function<void()>& body) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDERR_FILENO);
        body();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status;
}

std::size_t count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

class LaunchDiagnosticsTest : public ::testing::Test {
protected:
    std::string logText() const { return readFileText(folder / "launch.log").value_or(""); }
    std::string stateText() const { return readFileText(folder / "launch-state.json").value_or(""); }
    void writeOldLog(std::uintmax_t size) const {
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "launch.log") << std::string(size, 'x');
    }

    IsolatedEnvironment environment;
    std::filesystem::path folder = environment.root() / "state" / "tosvar";
};

} // namespace

TEST_F(LaunchDiagnosticsTest, RotatesAboveOneMebibyteOnlyAtStart) {
    writeOldLog(LaunchDiagnostics::rotationSize);
    inChild([] { LaunchDiagnostics::begin(); });
    EXPECT_FALSE(std::filesystem::exists(folder / "launch.log.1"));
    EXPECT_GT(std::filesystem::file_size(folder / "launch.log"), LaunchDiagnostics::rotationSize);

    inChild([] { LaunchDiagnostics::begin(); }); // now above 1 MiB: rotates
    EXPECT_GT(std::filesystem::file_size(folder / "launch.log.1"), LaunchDiagnostics::rotationSize);
    EXPECT_LT(std::filesystem::file_size(folder / "launch.log"), 64u * 1024);
}

TEST_F(LaunchDiagnosticsTest, UnfinishedLaunchesAreCountedAndReported) {
    inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::stage("tosvar: loading settings");
        ::_exit(1); // dies mid-launch
    });
    EXPECT_NE(stateText().find("\"phase\": \"launching\""), std::string::npos) << stateText();
    inChild([] { LaunchDiagnostics::begin(); });
    inChild([] { LaunchDiagnostics::begin(); });
    const std::string log = logText();
    EXPECT_NE(log.find("CRITICAL   : the previous LAUNCH never completed — it died during stage 'tosvar: loading settings'"),
              std::string::npos);
    EXPECT_NE(log.find("2 consecutive launches never finished"), std::string::npos);
    EXPECT_NE(stateText().find("\"failedLaunches\": 2"), std::string::npos) << stateText();

    inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::launchDidFinish();
        LaunchDiagnostics::willTerminate();
    });
    EXPECT_NE(stateText().find("\"phase\": \"exited\""), std::string::npos);
    const std::size_t before = logText().size();
    inChild([] { LaunchDiagnostics::begin(); });
    const std::string fresh = logText().substr(before);
    EXPECT_EQ(fresh.find("CRITICAL"), std::string::npos);
    EXPECT_EQ(fresh.find("NOTE"), std::string::npos);
    EXPECT_NE(fresh.find("lastSession: phase=exited"), std::string::npos) << fresh;
}

TEST_F(LaunchDiagnosticsTest, ASegfaultLeavesACrashBlockWithTheStage) {
    const int status = inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::stage("opening the menu");
        std::raise(SIGSEGV);
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGSEGV); // re-raised, so the system still sees the crash
    const std::string log = logText();
    EXPECT_NE(log.find("=== VEMLA CRASH ===\nsignal : 11\nstage  : opening the menu\nbacktrace:\n"), std::string::npos)
        << log;
    EXPECT_NE(log.find("=== END CRASH ==="), std::string::npos);
}

TEST_F(LaunchDiagnosticsTest, AnUncaughtExceptionIsLoggedWithItsTypeReasonAndStack) {
    const int status = inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::stage("loading recents");
        // Escaping a thread's function: nothing above it can catch it.
        std::thread([] { throw std::out_of_range("recent 12 of 10"); }).join();
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGABRT);
    const std::string log = logText();
    const std::size_t block = log.find("=== UNCAUGHT EXCEPTION ===");
    ASSERT_NE(block, std::string::npos) << log;
    const std::string rest = log.substr(block);
    EXPECT_NE(rest.find("name   : std::out_of_range\n"), std::string::npos) << rest;
    EXPECT_NE(rest.find("reason : recent 12 of 10\n"), std::string::npos);
    EXPECT_NE(rest.find("info   : none\n"), std::string::npos);
    // The stack names the handler's own frame before the end line, and the
    // abort that follows still leaves the crash block with the stage.
    const std::size_t end = rest.find("=== END EXCEPTION ===");
    ASSERT_NE(end, std::string::npos);
    EXPECT_GT(count(rest.substr(0, end), "\n"), 6u);
    EXPECT_NE(rest.find("stage  : loading recents", end), std::string::npos);
}

TEST_F(LaunchDiagnosticsTest, AKillLeavesTheTerminationNote) {
    const int status = inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::stage("idle");
        ::kill(::getpid(), SIGTERM);
        ::pause();
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_NE(logText().find("--- VEMLA killed by signal 15 (external quit, not a crash) at stage: idle"),
              std::string::npos);
}

TEST_F(LaunchDiagnosticsTest, TheFileStopsAtTheSessionBudget) {
    inChild([] {
        LaunchDiagnostics::begin();
        const std::string chunk(1000, 'y');
        for (int i = 0; i < 9000; ++i) LaunchDiagnostics::log("test", chunk);
    });
    const std::string log = logText();
    EXPECT_LE(log.size(), LaunchDiagnostics::sessionBudget + 100);
    EXPECT_GT(log.size(), LaunchDiagnostics::sessionBudget - 2000);
    EXPECT_EQ(count(log, "*** log budget exhausted for this session ***"), 1u);
}

TEST_F(LaunchDiagnosticsTest, TheEnvironmentInventoryFollowsTheLaunch) {
    inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::launchDidFinish([] {
            return std::vector<std::pair<std::string, std::string>>{{"screens", "1 (1280x800@1)"}, {"accessibilityTrusted", ""}};
        });
        ::usleep(200000); // the inventory is written off the main thread
    });
    const std::string log = logText();
    EXPECT_NE(log.find("[env] screens = 1 (1280x800@1)"), std::string::npos) << log;
    EXPECT_NE(log.find("[env] accessibilityTrusted = missing"), std::string::npos);
    EXPECT_NE(log.find("[env] buildTarget = tosvar-direct"), std::string::npos);
    EXPECT_NE(log.find("[env] freeDisk = "), std::string::npos);
    EXPECT_LT(log.find("launch complete in"), log.find("[env] "));
}

TEST_F(LaunchDiagnosticsTest, LinesCarryTimeAndElapsedMilliseconds) {
    inChild([] {
        LaunchDiagnostics::begin();
        LaunchDiagnostics::log("Vemla", "hello");
        LaunchDiagnostics::measure("quick", [] {});
        LaunchDiagnostics::step("settings", [] {});
    });
    const std::string log = logText();
    const std::size_t at = log.find("[Vemla] hello");
    ASSERT_NE(at, std::string::npos);
    const std::string lineStart = log.substr(log.rfind('\n', at) + 1, at - log.rfind('\n', at) - 1);
    // "2026-11-23 05:20:01.123 [+    0.4ms] "
    EXPECT_EQ(lineStart.size(), 37u) << lineStart;
    EXPECT_EQ(lineStart.substr(23, 3), " [+");
    EXPECT_EQ(log.find("slow quick"), std::string::npos);
    EXPECT_NE(log.find("  ok  settings ("), std::string::npos);
}
