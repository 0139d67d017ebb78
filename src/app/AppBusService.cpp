#include "AppBusService.h"

#include "AppBus.h"
#include "BuildTarget.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace tosvar {

bool AppBusService::start() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    if (!bus.registerVirtualObject(QString::fromLatin1(AppBus::objectPath), this)) return false;
    const auto reply = bus.interface()->registerService(QString::fromLatin1(BuildTarget::applicationIdentifier()),
                                                        QDBusConnectionInterface::DontQueueService,
                                                        QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceRegistered) {
        bus.unregisterObject(QString::fromLatin1(AppBus::objectPath));
        return false;
    }
    return true;
}

QString AppBusService::introspect(const QString&) const {
    QString xml = QStringLiteral("<interface name=\"%1\">\n").arg(QString::fromLatin1(AppBus::interfaceName));
    for (const AppBus::Method& method : AppBus::methods()) {
        xml += QStringLiteral("  <method name=\"%1\">").arg(QString::fromLatin1(method.member));
        if (method.argument == AppBus::Argument::seconds) xml += QStringLiteral("<arg name=\"seconds\" type=\"i\" direction=\"in\"/>");
        if (method.argument == AppBus::Argument::path) xml += QStringLiteral("<arg name=\"path\" type=\"s\" direction=\"in\"/>");
        xml += QStringLiteral("</method>\n");
    }
    return xml + QStringLiteral("</interface>\n");
}

bool AppBusService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.type() != QDBusMessage::MethodCallMessage ||
        message.interface() != QString::fromLatin1(AppBus::interfaceName))
        return false;
    const std::optional<AppBus::Method> method = AppBus::forMember(message.member().toStdString());
    if (!method) return false;

    CommandLineRequest request;
    request.kind = CommandLineRequest::Kind::action;
    request.action = method->action;
    if (method->argument == AppBus::Argument::path) {
        const QList<QVariant> arguments = message.arguments();
        if (arguments.size() != 1 || arguments[0].typeId() != QMetaType::QString) {
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("expected one string: path")));
            return true;
        }
        request.path = arguments[0].toString().toStdString();
    }
    if (method->argument == AppBus::Argument::seconds) {
        const QList<QVariant> arguments = message.arguments();
        if (arguments.size() != 1 || !arguments[0].canConvert<int>()) {
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("expected one int32: seconds")));
            return true;
        }
        const int seconds = arguments[0].toInt();
        if (seconds >= 0) request.seconds = seconds;
    }
    const ActionOutcome outcome = handler_(request);
    switch (outcome.kind) {
    case ActionOutcome::Kind::done: connection.send(message.createReply()); break;
    case ActionOutcome::Kind::notBuilt:
        connection.send(message.createErrorReply(QString::fromLatin1(AppBus::notBuiltError),
                                                 QString::fromStdString(outcome.message)));
        break;
    case ActionOutcome::Kind::failed:
        connection.send(message.createErrorReply(QString::fromLatin1(AppBus::failedError),
                                                 QString::fromStdString(outcome.message)));
        break;
    }
    return true;
}

} // namespace tosvar
