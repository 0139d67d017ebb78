// The watches that listen on the buses: the sibling product, and the machine waking.
#include "SiblingWatch.h"
#include "SystemWakeWatch.h"

#include "SessionBus.h"
#include "TestApplication.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

template <typename Condition>
bool waitFor(Condition condition, int milliseconds = 5000) {
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < milliseconds) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

} // namespace

TEST(SiblingWatch, NoticesTheSiblingComingAndGoing) {
    SessionBus bus;
    testApplication<QApplication>();
    std::vector<bool> changes;
    SiblingWatch watch([&](bool running) { changes.push_back(running); });
    EXPECT_FALSE(watch.isRunning());

    // The sibling is another program: another connection to the bus.
    QDBusConnection sibling = QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("sibling"));
    ASSERT_TRUE(sibling.isConnected());
    ASSERT_TRUE(sibling.registerService(QStringLiteral("app.vemla.tosvar.helper"))); // our own family: not the sibling
    ASSERT_TRUE(sibling.registerService(QStringLiteral("app.vemla")));
    ASSERT_TRUE(waitFor([&] { return !changes.empty(); }));
    EXPECT_TRUE(watch.isRunning());

    sibling.unregisterService(QStringLiteral("app.vemla"));
    ASSERT_TRUE(waitFor([&] { return changes.size() == 2; }));
    EXPECT_EQ(changes, (std::vector<bool>{true, false}));
    QDBusConnection::disconnectFromBus(QStringLiteral("sibling"));
}

TEST(SystemWakeWatch, OnlyTheWakingHalfOfLogindsSleepSignalCounts) {
    // logind stands on a private bus that plays the system bus.
    SessionBus bus;
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
    testApplication<QApplication>();
    int wakes = 0;
    SystemWakeWatch watch([&] { ++wakes; });

    QDBusConnection logind = QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("logind"));
    ASSERT_TRUE(logind.registerService(QStringLiteral("org.freedesktop.login1")));
    auto announce = [&](bool goingToSleep) {
        QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                                         QStringLiteral("org.freedesktop.login1.Manager"),
                                                         QStringLiteral("PrepareForSleep"));
        signal << goingToSleep;
        logind.send(signal);
    };
    // The watch's match rule reaches the bus on its own time: wake until heard.
    for (int round = 0; round < 10 && wakes == 0; ++round) {
        announce(false);
        waitFor([&] { return wakes > 0; }, 500);
    }
    ASSERT_GT(wakes, 0);
    auto settle = [] {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 200) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    };
    settle();
    const int before = wakes;
    announce(true);
    settle();
    EXPECT_EQ(wakes, before) << "going to sleep is not waking";
    announce(false);
    EXPECT_TRUE(waitFor([&] { return wakes == before + 1; }));
    QDBusConnection::disconnectFromBus(QStringLiteral("logind"));
}
