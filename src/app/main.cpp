// The program's entry. With no argument it starts the application; with an
// action it hands the action to the running instance and exits.
// Actions whose feature this build lacks answer with a clear message.
#include "AppBusClient.h"
#include "AppBusService.h"
#include "AppPlatform.h"
#include "BuildTarget.h"
#include "CommandLineRequest.h"
#include "LaunchDiagnostics.h"
#include "LocalizationManager.h"
#include "Log.h"
#include "TosvarAppDelegate.h"

#include <QApplication>
#include <QDBusConnection>
#include <QLabel>
#include <QSystemTrayIcon>

#include <filesystem>
#include <iostream>

namespace {

using tosvar::ActionOutcome;
using tosvar::CommandLineRequest;

int forwardAction(int argc, char** argv, CommandLineRequest request) {
    QCoreApplication app(argc, argv);
    if (request.action == "annotate") {
        // The running instance has a working folder of its own.
        std::error_code error;
        const std::filesystem::path file = std::filesystem::absolute(request.path, error);
        if (error || !std::filesystem::is_regular_file(file)) {
            std::cerr << "tosvar: cannot open " << request.path << ": no such file\n";
            return 1;
        }
        request.path = file.string();
    }
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

int runApplication(int argc, char** argv) {
    tosvar::LaunchDiagnostics::begin();
    tosvar::LaunchDiagnostics::stage("QApplication");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromStdString(tosvar::BuildTarget::current().displayName()));
    QApplication::setQuitOnLastWindowClosed(false);

    tosvar::LaunchDiagnostics::stage("TosvarAppDelegate.init");
    tosvar::AppPlatform platform;
    tosvar::TosvarAppDelegate delegate(platform);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [&delegate] { delegate.applicationWillTerminate(); });

    tosvar::AppBusService service([&delegate](const CommandLineRequest& request) { return delegate.perform(request); });
    if (!service.start()) {
        if (QDBusConnection::sessionBus().isConnected()) {
            std::cout << "Tosvar is already running.\n";
            return 0;
        }
        tosvar::logLine("no session bus: command-line actions cannot reach this instance");
    }

    delegate.applicationDidFinishLaunching();

    // Without a tray (a bare X server) a small window says the program runs.
    QLabel placeholder(QString::fromStdString(tosvar::L("tosvar.placeholder")));
    placeholder.setObjectName(QStringLiteral("tosvarPlaceholder"));
    placeholder.setAlignment(Qt::AlignCenter);
    placeholder.setMargin(24);
    placeholder.setWindowTitle(QString::fromStdString(tosvar::BuildTarget::current().displayName()));
    if (!QSystemTrayIcon::isSystemTrayAvailable()) placeholder.show();

    tosvar::LaunchDiagnostics::stage("QApplication.exec");
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
