// The program as a user's key binding runs it: `tosvar ACTION` reaches the
// running instance over a private session bus, starting one when needed.
#include "IsolatedEnvironment.h"
#include "SessionBus.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <thread>

using namespace tosvar;

namespace {

struct ProgramRun {
    int exitCode = -1;
    std::string output; // standard output and error together
};

ProgramRun runTosvar(const std::string& arguments) {
    const std::string command = std::string(TOSVAR_EXECUTABLE) + " " + arguments + " 2>&1";
    std::FILE* pipe = ::popen(command.c_str(), "r");
    ProgramRun run;
    char buffer[512];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe)) run.output += buffer;
    const int status = pipe ? ::pclose(pipe) : -1;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

class TosvarCommandLineTest : public ::testing::Test {
protected:
    void SetUp() override { ::setenv("QT_QPA_PLATFORM", "offscreen", 1); }
    void TearDown() override { runTosvar("quit"); }

    IsolatedEnvironment environment;
    SessionBus bus;
};

} // namespace

TEST_F(TosvarCommandLineTest, HelpAndBadArgumentsNeedNoInstance) {
    const ProgramRun help = runTosvar("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("screenshot-delayed [SECS]"), std::string::npos);
    const ProgramRun bad = runTosvar("screenshot-delayed soon");
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_NE(bad.output.find("whole seconds"), std::string::npos) << bad.output;
    const ProgramRun quit = runTosvar("quit");
    EXPECT_EQ(quit.exitCode, 0);
    EXPECT_NE(quit.output.find("not running"), std::string::npos) << quit.output;
}

TEST_F(TosvarCommandLineTest, AnActionStartsTheInstanceAndUnbuiltFeaturesSaySo) {
    const ProgramRun first = runTosvar("present");
    EXPECT_EQ(first.exitCode, 1);
    EXPECT_NE(first.output.find("the \"present\" action is not built into this version yet"), std::string::npos)
        << first.output;

    const ProgramRun second = runTosvar("");
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_NE(second.output.find("already running"), std::string::npos) << second.output;

    EXPECT_EQ(runTosvar("quit").exitCode, 0);
    // The instance leaves the bus; a second quit finds nobody.
    ProgramRun after;
    for (int i = 0; i < 50; ++i) {
        after = runTosvar("quit");
        if (after.output.find("not running") != std::string::npos) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_NE(after.output.find("not running"), std::string::npos) << after.output;
}
