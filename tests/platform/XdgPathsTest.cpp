#include "XdgPaths.h"

#include "IsolatedEnvironment.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace tosvar;

TEST(XdgPaths, VariablesWinAndRelativeOnesAreIgnored) {
    IsolatedEnvironment environment;
    EXPECT_EQ(XdgPaths::appStateDir(), environment.root() / "state" / "tosvar");
    ::setenv("XDG_CACHE_HOME", "relative/cache", 1);
    EXPECT_EQ(XdgPaths::cacheHome(), environment.root() / "home" / ".cache");
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(XdgPaths::appDataDir(), environment.root() / "home" / ".local/share" / "tosvar");
}
