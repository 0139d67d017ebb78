#include "LaunchAtLoginController.h"

#include "FileContents.h"
#include "IsolatedEnvironment.h"
#include "Log.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tosvar;

TEST(LaunchAtLoginController, WritesAndRemovesTheAutostartEntry) {
    IsolatedEnvironment environment;
    const auto file = LaunchAtLoginController::standardAutostartFile();
    EXPECT_EQ(file, environment.root() / "config" / "autostart" / "tosvar.desktop");
    LaunchAtLoginController login(file, "/opt/tosvar/bin/tosvar");
    EXPECT_FALSE(login.isEnabled());
    login.apply(true);
    EXPECT_TRUE(login.isEnabled());
    EXPECT_NE(readFileText(file)->find("Exec=/opt/tosvar/bin/tosvar\n"), std::string::npos);
    login.apply(false);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(LaunchAtLoginController, HiddenEntryCountsAsDisabledAndIsReplaced) {
    IsolatedEnvironment environment;
    const auto file = LaunchAtLoginController::standardAutostartFile();
    std::filesystem::create_directories(file.parent_path());
    {
        std::ofstream(file) << "[Desktop Entry]\nHidden=true\n";
    }
    LaunchAtLoginController login(file, "/usr/bin/tosvar");
    EXPECT_FALSE(login.isEnabled());
    login.apply(true);
    EXPECT_TRUE(login.isEnabled());
}

TEST(LaunchAtLoginController, QuotesAwkwardPathsAndLogsFailures) {
    EXPECT_NE(LaunchAtLoginController::desktopEntry("/home/a b/tosvar").find("Exec=\"/home/a b/tosvar\"\n"),
              std::string::npos);
    EXPECT_NE(LaunchAtLoginController::desktopEntry("/x/$y").find("Exec=\"/x/\\\\$y\"\n"), std::string::npos);

    IsolatedEnvironment environment;
    std::vector<std::string> logged;
    setLogSink([&](std::string_view line) { logged.emplace_back(line); });
    const auto blocker = environment.root() / "blocker";
    { std::ofstream(blocker) << "a file where a folder should be"; }
    LaunchAtLoginController login(blocker / "autostart" / "tosvar.desktop", "/usr/bin/tosvar");
    login.apply(true);
    setLogSink(nullptr);
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_TRUE(logged[0].starts_with("launch at login update failed enabled=true ")) << logged[0];
}
