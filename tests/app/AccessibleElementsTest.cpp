// Element detection against a real program: the application's welcome
// window, read over the AT-SPI bus of a private session.
#include "AtspiAccessibleElements.h"
#include "ChildProcess.h"
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
#include <functional>
#include <thread>

using namespace tosvar;

namespace {

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
    ChildProcess accessibilityBus({"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"});
    ASSERT_GT(accessibilityBus.pid(), 0) << "at-spi2-core is missing (scripts/setup.sh installs it)";
    ASSERT_TRUE(waitFor([] {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(QStringLiteral("org.a11y.Bus")).value();
    }));

    ::unsetenv("QT_QPA_PLATFORM");
    ::setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    ChildProcess program({TOSVAR_EXECUTABLE}); // shows its welcome window: 520x560, centred on 1280x800
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
    EXPECT_EQ(elements.text(chain.front().element), "Get Started") << "a button says its name";
    EXPECT_TRUE(chain.front().frame.contains(nearTheBottomRight));
    EXPECT_LT(chain.front().frame.width(), 200);
    EXPECT_EQ(chain.back().frame.size, window.size) << "the window closes the chain";
    EXPECT_FALSE(elements.elementAt(nearTheBottomRight, program.pid() + 100000)) << "no such program";
}
