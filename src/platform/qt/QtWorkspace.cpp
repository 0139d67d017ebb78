#include "QtWorkspace.h"

#include "Log.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QUrl>

namespace tosvar {

namespace {

QUrl urlOf(const std::filesystem::path& file) { return QUrl::fromLocalFile(QString::fromStdString(file.string())); }

} // namespace

void QtWorkspace::open(const std::filesystem::path& file) {
    if (!QDesktopServices::openUrl(urlOf(file))) logLine("could not open " + file.string());
}

void QtWorkspace::reveal(const std::filesystem::path& file) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{urlOf(file).toString()} << QString();
    // Asked without waiting: a file manager that is slow to start must not stall the menu.
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, 5000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [watcher, file] {
        watcher->deleteLater();
        if (!watcher->isError()) return;
        // No file manager answers on the bus: show the folder at least.
        if (!QDesktopServices::openUrl(urlOf(file.parent_path())))
            logLine("could not reveal " + file.string() + ": " + watcher->error().message().toStdString());
    });
}

void QtWorkspace::beep() { QApplication::beep(); }

} // namespace tosvar
