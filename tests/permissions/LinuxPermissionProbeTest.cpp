#include "LinuxPermissionProbe.h"

#include "IsolatedEnvironment.h"
#include "SessionBus.h"
#include "TestApplication.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tosvar;

namespace {

// The accessibility bus launcher's status object, served from its own thread
// and connection as the real one is served from its own process.
class FakeAccessibilityStatus final : public QDBusVirtualObject {
public:
    explicit FakeAccessibilityStatus(std::atomic<bool>& enabledFlag) : enabled(enabledFlag) {}
    std::atomic<bool>& enabled;

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QVariantList arguments = message.arguments();
        if (message.member() == QLatin1String("Get") && arguments.value(1).toString() == QLatin1String("IsEnabled")) {
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(enabled.load()))));
            return true;
        }
        if (message.member() == QLatin1String("Set") && arguments.value(1).toString() == QLatin1String("IsEnabled")) {
            enabled = arguments.value(2).value<QDBusVariant>().variant().toBool();
            connection.send(message.createReply());
            return true;
        }
        return false;
    }
};

class AccessibilityBusThread final : public QThread {
public:
    explicit AccessibilityBusThread(std::string address) : address_(std::move(address)) {}
    std::atomic<bool> enabled{false};
    std::atomic<bool> ready{false};

protected:
    void run() override
    {
        {
            // Made here so that calls are delivered to this thread.
            FakeAccessibilityStatus status(enabled);
            QDBusConnection connection =
                QDBusConnection::connectToBus(QString::fromStdString(address_), QStringLiteral("a11y-launcher"));
            connection.registerService(QStringLiteral("org.a11y.Bus"));
            connection.registerVirtualObject(QStringLiteral("/org/a11y/bus"), &status);
            ready = true;
            exec();
            connection.unregisterObject(QStringLiteral("/org/a11y/bus"));
        }
        QDBusConnection::disconnectFromBus(QStringLiteral("a11y-launcher"));
    }

private:
    std::string address_;
};

// A listening Unix socket standing in for the sound server.
class ListeningSocket {
public:
    explicit ListeningSocket(const std::string& path)
    {
        fd_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        ::bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        ::listen(fd_, 4);
    }
    ~ListeningSocket() { ::close(fd_); }

private:
    int fd_ = -1;
};

} // namespace

TEST(LinuxPermissionProbe, AccessibilityIsTheBusSwitchAndRequestingTurnsItOn)
{
    SessionBus bus;
    testApplication<QGuiApplication>();
    LinuxPermissionProbe probe;
    // No launcher on the bus: accessibility reads as missing, quickly.
    EXPECT_FALSE(probe.isGranted(VemlaSystemPermission::accessibility));

    AccessibilityBusThread launcher(bus.address());
    launcher.start();
    while (!launcher.ready)
        QThread::msleep(5);
    EXPECT_FALSE(probe.isGranted(VemlaSystemPermission::accessibility));
    EXPECT_TRUE(probe.requestAccess(VemlaSystemPermission::accessibility));
    EXPECT_TRUE(launcher.enabled);
    EXPECT_TRUE(probe.isGranted(VemlaSystemPermission::accessibility));
    launcher.quit();
    launcher.wait();
}

TEST(LinuxPermissionProbe, MicrophoneNeedsASoundServerOrCaptureDevice)
{
    if (::access("/dev/snd", F_OK) == 0)
        GTEST_SKIP() << "this machine has sound devices";
    IsolatedEnvironment environment;
    testApplication<QGuiApplication>();
    LinuxPermissionProbe probe;
    const std::string socketPath = (environment.root() / "pulse-native").string();
    ::setenv("PULSE_SERVER", ("unix:" + socketPath).c_str(), 1);
    EXPECT_FALSE(probe.isGranted(VemlaSystemPermission::microphone));
    {
        ListeningSocket server(socketPath);
        EXPECT_TRUE(probe.isGranted(VemlaSystemPermission::microphone));
    }
    ::unsetenv("PULSE_SERVER");
}

TEST(LinuxPermissionProbe, ScreenReadingNeedsAnX11Session)
{
    testApplication<QGuiApplication>(); // tests run on the offscreen platform
    EXPECT_FALSE(LinuxPermissionProbe().isGranted(VemlaSystemPermission::screenRecording));
}
