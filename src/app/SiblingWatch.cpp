#include "SiblingWatch.h"

#include "BuildTarget.h"
#include "SiblingApp.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>

namespace tosvar {

SiblingWatch::SiblingWatch(std::function<void(bool)> onChange) : onChange_(std::move(onChange)) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    running_ = scan();
    const QString family = QString::fromLatin1(SiblingApp::bundleIdentifier);
    auto* watcher = new QDBusServiceWatcher(this);
    watcher->setConnection(bus);
    watcher->setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcher->setWatchedServices({family, family + QStringLiteral(".*")});
    QObject::connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this](const QString& name) {
        if (!SiblingApp::matches(name.toStdString(), SiblingApp::bundleIdentifier)) return;
        const bool now = scan();
        if (now == running_) return;
        running_ = now;
        if (onChange_) onChange_(now);
    });
}

bool SiblingWatch::scan() {
    if (!QDBusConnection::sessionBus().isConnected()) return false;
    const QStringList names = QDBusConnection::sessionBus().interface()->registeredServiceNames().value();
    std::vector<std::string> identifiers;
    identifiers.reserve(static_cast<std::size_t>(names.size()));
    for (const QString& name : names) identifiers.push_back(name.toStdString());
    return SiblingApp::isRunning(identifiers, BuildTarget::applicationIdentifier());
}

} // namespace tosvar
