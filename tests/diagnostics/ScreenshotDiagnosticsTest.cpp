#include "ScreenshotDiagnostics.h"

#include "FileContents.h"
#include "IsolatedEnvironment.h"

#include <gtest/gtest.h>

using namespace tosvar;

TEST(ScreenshotDiagnostics, AppendsTimedLinesToItsOwnFile) {
    IsolatedEnvironment environment;
    EXPECT_EQ(ScreenshotDiagnostics::file(), environment.root() / "state" / "tosvar" / "screenshot-diagnostics.log");
    ScreenshotDiagnostics::log("freeze: display 1 in 12ms");
    ScreenshotDiagnostics::log("window pick: 0x2a00004");
    const std::string text = readFileText(ScreenshotDiagnostics::file()).value();
    const auto first = text.find(" [Vemla] freeze: display 1 in 12ms\n");
    ASSERT_NE(first, std::string::npos) << text;
    EXPECT_EQ(first, 23u); // after "yyyy-MM-dd HH:mm:ss.SSS"
    EXPECT_NE(text.find("[Vemla] window pick: 0x2a00004\n", first), std::string::npos);
}
