#include "AppBusClient.h"

#include "AppBus.h"
#include "BuildTarget.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

namespace tosvar::AppBusClient {

namespace {

QString serviceName() { return QString::fromLatin1(BuildTarget::applicationIdentifier()); }

} // namespace

bool isRunning() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface()->isServiceRegistered(serviceName()).value();
}

std::optional<Error> launchAndWait(const std::string& executable, double timeoutSeconds) {
    if (!QDBusConnection::sessionBus().isConnected())
        return Error{"no session bus: run tosvar inside a desktop session"};
    // The instance outlives this command: it must not hold the caller's
    // terminal or pipes open, or a script waiting for our output never ends.
    QProcess instance;
    instance.setProgram(QString::fromStdString(executable));
    instance.setStandardInputFile(QProcess::nullDevice());
    instance.setStandardOutputFile(QProcess::nullDevice());
    instance.setStandardErrorFile(QProcess::nullDevice());
    if (!instance.startDetached()) return Error{"cannot start " + executable};
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < static_cast<qint64>(timeoutSeconds * 1000)) {
        if (isRunning()) return std::nullopt;
        QThread::msleep(50);
    }
    return Error{"started " + executable + ", but it did not answer on the session bus"};
}

std::optional<Error> forward(const CommandLineRequest& request) {
    const std::optional<AppBus::Method> method = AppBus::forAction(request.action);
    if (!method) return Error{"unknown action \"" + request.action + "\""};
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return Error{"no session bus: run tosvar inside a desktop session"};
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName(), QString::fromLatin1(AppBus::objectPath),
                                                       QString::fromLatin1(AppBus::interfaceName),
                                                       QString::fromLatin1(method->member));
    if (method->argument == AppBus::Argument::seconds) call << (request.seconds ? *request.seconds : -1);
    if (method->argument == AppBus::Argument::path) call << QString::fromStdString(request.path);
    const QDBusMessage reply = bus.call(call, QDBus::Block, 10000);
    if (reply.type() == QDBusMessage::ErrorMessage) return Error{reply.errorMessage().toStdString()};
    return std::nullopt;
}

} // namespace tosvar::AppBusClient
