// The program's entry. With no argument it starts the application; with an
// action it hands the action to the running instance and exits.
//
// The tray menu and the capture sessions are not part of this build yet: the
// application shows a window saying so, serves its actions on the session bus,
// and answers every action it cannot carry out with a clear error.
#include "AppBusClient.h"
#include "AppBusService.h"
#include "BuildTarget.h"
#include "CommandLineRequest.h"
#include "JsonFileDefaultsStore.h"
#include "Log.h"
#include "SettingsStore.h"

#include <QApplication>
#include <QDBusConnection>
#include <QLabel>

#include <iostream>

namespace {

using tosvar::ActionOutcome;
using tosvar::CommandLineRequest;

int forwardAction(int argc, char** argv, const CommandLineRequest& request) {
    QCoreApplication app(argc, argv);
    if (!tosvar::AppBusClient::isRunning()) {
        if (request.action == "quit") {
            std::cout << "Tosvar is not running.\n";
            return 0;
        }
        if (auto error = tosvar::AppBusClient::launchAndWait(QCoreApplication::applicationFilePath().toStdString(), 10)) {
            std::cerr << "tosvar: " << error->message << "\n";
            return 1;
        }
    }
    if (auto error = tosvar::AppBusClient::forward(request)) {
        std::cerr << "tosvar: " << error->message << "\n";
        return 1;
    }
    return 0;
}

ActionOutcome perform(const CommandLineRequest& request) {
    if (request.action == "quit") {
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        return {};
    }
    return {ActionOutcome::Kind::notBuilt, "the \"" + request.action + "\" action is not built into this version yet"};
}

int runApplication(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromStdString(tosvar::BuildTarget::current().displayName()));
    QApplication::setQuitOnLastWindowClosed(false);

    tosvar::AppBusService service(perform);
    if (!service.start()) {
        if (QDBusConnection::sessionBus().isConnected()) {
            std::cout << "Tosvar is already running.\n";
            return 0;
        }
        tosvar::logLine("no session bus: command-line actions cannot reach this instance");
    }

    const tosvar::AppSettings settings = tosvar::SettingsStore().load();
    tosvar::logLine("settings loaded from " + tosvar::JsonFileDefaultsStore::standardPath().string() +
                    "; screenshot hotkey " + (settings.screenshotHotkey ? "set" : "cleared"));

    QLabel placeholder(QStringLiteral("Tosvar\n\nThe tray menu and capture actions are not built yet.\n"
                                      "This window stands in for them."));
    placeholder.setObjectName(QStringLiteral("tosvarPlaceholder"));
    placeholder.setAlignment(Qt::AlignCenter);
    placeholder.setMargin(24);
    placeholder.setWindowTitle(QStringLiteral("Tosvar"));
    placeholder.resize(420, 180);
    placeholder.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const CommandLineRequest request = CommandLineRequest::parse(arguments);
    switch (request.kind) {
    case CommandLineRequest::Kind::help: std::cout << CommandLineRequest::helpText(); return 0;
    case CommandLineRequest::Kind::invalid: std::cerr << "tosvar: " << request.error << "\n"; return 2;
    case CommandLineRequest::Kind::action: return forwardAction(argc, argv, request);
    case CommandLineRequest::Kind::start: break;
    }
    return runApplication(argc, argv);
}
