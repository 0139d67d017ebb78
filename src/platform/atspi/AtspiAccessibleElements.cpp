#include "AtspiAccessibleElements.h"

#include "AtspiStatus.h"
#include "Log.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QUuid>

#include <functional>

namespace tosvar {

namespace {

const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
const QString componentInterface = QStringLiteral("org.a11y.atspi.Component");
const QString nullPath = QStringLiteral("/org/a11y/atspi/null");
constexpr std::uint32_t screenCoordinates = 0;

// An object on the accessibility bus: the connection that serves it and its path.
struct AtspiElement final : AccessibleElements::Element {
    QString service;
    QString path;
    AtspiElement(QString s, QString p) : service(std::move(s)), path(std::move(p)) {}
};

const AtspiElement& atspi(const AccessibleElements::Handle& handle) { return static_cast<const AtspiElement&>(*handle); }

// Reads an AT-SPI object reference, the (so) pair; none for the null object.
AccessibleElements::Handle reference(const QDBusArgument& argument) {
    QString service;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> service >> path;
    argument.endStructure();
    if (service.isEmpty() || path.path().isEmpty() || path.path() == nullPath) return nullptr;
    return std::make_shared<AtspiElement>(service, path.path());
}

} // namespace

AtspiAccessibleElements::AtspiAccessibleElements()
    : connectionName_(QStringLiteral("tosvar-a11y-") + QUuid::createUuid().toString(QUuid::WithoutBraces)),
      bus_(QDBusConnection::connectToBus(AtspiStatus::busAddress(), connectionName_)) {}

AtspiAccessibleElements::~AtspiAccessibleElements() { QDBusConnection::disconnectFromBus(connectionName_); }

AccessibleElements::Handle AtspiAccessibleElements::application(std::int64_t pid) {
    const QDBusMessage children = bus_.call(
        QDBusMessage::createMethodCall(QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/accessible/root"),
                                       accessibleInterface, QStringLiteral("GetChildren")),
        QDBus::Block, messageTimeoutMilliseconds);
    if (children.type() != QDBusMessage::ReplyMessage || children.arguments().isEmpty()) return nullptr;
    const QDBusArgument list = children.arguments().first().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        Handle app = reference(list);
        if (!app) continue;
        QDBusMessage owner = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                                                            QStringLiteral("org.freedesktop.DBus"),
                                                            QStringLiteral("GetConnectionUnixProcessID"));
        owner << atspi(app).service;
        const QDBusMessage reply = bus_.call(owner, QDBus::Block, messageTimeoutMilliseconds);
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
            reply.arguments().first().toLongLong() == pid) {
            list.endArray();
            return app;
        }
    }
    list.endArray();
    return nullptr;
}

AccessibleElements::Handle AtspiAccessibleElements::elementAt(const Point& point, std::int64_t pid) {
    if (!isAvailable()) return nullptr;
    Handle element = application(pid);
    // Each level answers the child at the point; the deepest answers none.
    for (int depth = 0; element && depth < 64; ++depth) {
        QDBusMessage call = QDBusMessage::createMethodCall(atspi(element).service, atspi(element).path, componentInterface,
                                                           QStringLiteral("GetAccessibleAtPoint"));
        call << static_cast<int>(point.x) << static_cast<int>(point.y) << screenCoordinates;
        const QDBusMessage reply = bus_.call(call, QDBus::Block, messageTimeoutMilliseconds);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return depth == 0 ? nullptr : element;
        Handle child = reference(reply.arguments().first().value<QDBusArgument>());
        if (!child || (atspi(child).service == atspi(element).service && atspi(child).path == atspi(element).path))
            return depth == 0 ? nullptr : element;
        element = child;
    }
    return element;
}

AccessibleElements::Handle AtspiAccessibleElements::parent(const Handle& element) {
    QDBusMessage call = QDBusMessage::createMethodCall(atspi(element).service, atspi(element).path,
                                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << accessibleInterface << QStringLiteral("Parent");
    const QDBusMessage reply = bus_.call(call, QDBus::Block, messageTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return nullptr;
    return reference(reply.arguments().first().value<QDBusVariant>().variant().value<QDBusArgument>());
}

std::optional<Rect> AtspiAccessibleElements::frame(const Handle& element) {
    QDBusMessage call = QDBusMessage::createMethodCall(atspi(element).service, atspi(element).path, componentInterface,
                                                       QStringLiteral("GetExtents"));
    call << screenCoordinates;
    const QDBusMessage reply = bus_.call(call, QDBus::Block, messageTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return std::nullopt;
    const QDBusArgument extents = reply.arguments().first().value<QDBusArgument>();
    int x = 0, y = 0, width = 0, height = 0;
    extents.beginStructure();
    extents >> x >> y >> width >> height;
    extents.endStructure();
    return Rect(x, y, width, height);
}

std::optional<std::string> AtspiAccessibleElements::role(const Handle& element) {
    const QDBusMessage reply = bus_.call(QDBusMessage::createMethodCall(atspi(element).service, atspi(element).path,
                                                                        accessibleInterface, QStringLiteral("GetRoleName")),
                                         QDBus::Block, messageTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return std::nullopt;
    const std::string name = reply.arguments().first().toString().toStdString();
    return name == "document web" ? std::string("AXWebArea") : name;
}

std::optional<std::string> AtspiAccessibleElements::text(const Handle& element) {
    const AtspiElement& e = atspi(element);
    auto firstArgument = [this](const QDBusMessage& call) -> QVariant {
        const QDBusMessage reply = bus_.call(call, QDBus::Block, messageTimeoutMilliseconds);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
        const QVariant value = reply.arguments().first();
        return value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    };
    auto property = [&](const QString& name) {
        QDBusMessage call = QDBusMessage::createMethodCall(e.service, e.path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        call << accessibleInterface << name;
        return firstArgument(call).toString();
    };
    auto content = [&] {
        QDBusMessage call = QDBusMessage::createMethodCall(e.service, e.path, QStringLiteral("org.a11y.atspi.Text"), QStringLiteral("GetText"));
        call << 0 << -1;
        return firstArgument(call).toString();
    };
    for (const std::function<QString()>& read : std::initializer_list<std::function<QString()>>{
             content, [&] { return property(QStringLiteral("Name")); }, [&] { return property(QStringLiteral("Description")); }}) {
        const QString found = read().trimmed();
        if (!found.isEmpty()) return found.toStdString();
    }
    return std::nullopt;
}

void AtspiAccessibleElements::enableAccessibility(std::int64_t pid) {
    // Toolkits build their trees once assistive technologies are switched
    // on; reading the program's windows then makes it build them now.
    AtspiStatus::enable();
    if (Handle app = application(pid)) {
        bus_.call(QDBusMessage::createMethodCall(atspi(app).service, atspi(app).path, accessibleInterface,
                                                 QStringLiteral("GetChildren")),
                  QDBus::Block, enableTimeoutMilliseconds);
    }
}

} // namespace tosvar
