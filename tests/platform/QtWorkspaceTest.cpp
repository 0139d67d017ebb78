#include "QtWorkspace.h"

#include "SessionBus.h"
#include "TestApplication.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

// A file manager on the test's bus that remembers what it was asked to show.
class FakeFileManager final : public QDBusVirtualObject {
public:
    QStringList shown;
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QStringLiteral("ShowItems")) return false;
        shown = message.arguments().value(0).toStringList();
        connection.send(message.createReply());
        return true;
    }
};

} // namespace

TEST(QtWorkspace, RevealAsksTheFileManagerForTheFile) {
    SessionBus bus;
    testApplication<QApplication>();
    QDBusConnection fileManagerConnection =
        QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("file-manager"));
    FakeFileManager fileManager;
    ASSERT_TRUE(fileManagerConnection.registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), &fileManager));
    ASSERT_TRUE(fileManagerConnection.registerService(QStringLiteral("org.freedesktop.FileManager1")));

    QtWorkspace workspace;
    workspace.reveal("/home/ada/Pictures/Tosvar/a b.png");
    QElapsedTimer clock;
    clock.start();
    while (fileManager.shown.isEmpty() && clock.elapsed() < 5000) QApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(fileManager.shown, QStringList{QStringLiteral("file:///home/ada/Pictures/Tosvar/a b.png")});
    QDBusConnection::disconnectFromBus(QStringLiteral("file-manager"));
}
