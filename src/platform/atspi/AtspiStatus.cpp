#include "AtspiStatus.h"

#include "Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace tosvar::AtspiStatus {

namespace {

QDBusMessage busCall(const QString& interface, const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"), interface, method);
}

QDBusMessage statusCall(const QString& method) {
    return busCall(QStringLiteral("org.freedesktop.DBus.Properties"), method);
}

} // namespace

bool isEnabled() {
    QDBusMessage call = statusCall(QStringLiteral("Get"));
    call << QStringLiteral("org.a11y.Status") << QStringLiteral("IsEnabled");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, timeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return false;
    return reply.arguments().first().value<QDBusVariant>().variant().toBool();
}

bool enable() {
    QDBusMessage call = statusCall(QStringLiteral("Set"));
    call << QStringLiteral("org.a11y.Status") << QStringLiteral("IsEnabled") << QVariant::fromValue(QDBusVariant(true));
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, timeoutMilliseconds);
    if (reply.type() == QDBusMessage::ErrorMessage)
        logLine("[Permissions] enabling AT-SPI failed: " + reply.errorMessage().toStdString());
    return isEnabled();
}

QString busAddress() {
    const QDBusMessage reply = QDBusConnection::sessionBus().call(
        busCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")), QDBus::Block, timeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
    return reply.arguments().first().toString();
}

} // namespace tosvar::AtspiStatus
