// Element detection against a real program: the application's welcome
// window, read over the AT-SPI bus of a private session.
#include "AtspiAccessibleElements.h"
#include "ElementChain.h"
#include "IsolatedEnvironment.h"
#include "SessionBus.h"
#include "TestApplication.h"
#include "XvfbServer.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char** environ;

using namespace tosvar;

namespace {

// A child process in a group of its own, stopped with everything it started.
class Child {
public:
    explicit Child(std::vector<std::string> arguments) {
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attributes, 0);
        if (::posix_spawn(&pid_, argv[0], nullptr, &attributes, argv.data(), environ) != 0) pid_ = -1;
        posix_spawnattr_destroy(&attributes);
    }
    ~Child() {
        if (pid_ <= 0) return;
        ::kill(-pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
};

bool waitFor(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

} // namespace

TEST(AccessibleElements, TheChainUnderAButtonOfAnotherProgram) {
    XvfbServer::shared().useAsDisplay();
    IsolatedEnvironment environment;
    SessionBus bus;
    testApplication<QCoreApplication>();
    ::setenv("XDG_RUNTIME_DIR", environment.root().c_str(), 1);
    Child accessibilityBus({"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"});
    ASSERT_GT(accessibilityBus.pid(), 0) << "at-spi2-core is missing (scripts/setup.sh installs it)";
    ASSERT_TRUE(waitFor([] {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(QStringLiteral("org.a11y.Bus")).value();
    }));

    ::unsetenv("QT_QPA_PLATFORM");
    ::setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    Child program({TOSVAR_EXECUTABLE}); // shows its welcome window: 520x560, centred on 1280x800
    ASSERT_GT(program.pid(), 0);

    AtspiAccessibleElements elements;
    ASSERT_TRUE(elements.isAvailable());
    const Rect window(380, 120, 520, 560);
    const Point nearTheBottomRight{window.maxX() - 60, window.maxY() - 30}; // the "Get Started" button
    std::vector<DetectedElement> chain;
    ASSERT_TRUE(waitFor([&] {
        chain = ElementDetection::elementChain(elements, nearTheBottomRight, program.pid());
        return chain.size() >= 2;
    })) << "no chain under the button";

    EXPECT_EQ(elements.role(chain.front().element), "push button");
    EXPECT_TRUE(chain.front().frame.contains(nearTheBottomRight));
    EXPECT_LT(chain.front().frame.width(), 200);
    EXPECT_EQ(chain.back().frame.size, window.size) << "the window closes the chain";
    EXPECT_FALSE(elements.elementAt(nearTheBottomRight, program.pid() + 100000)) << "no such program";
}
