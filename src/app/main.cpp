// The program's entry. With no argument it starts the application; with an
// action it hands the action to the running instance and exits.
//
// The capture sessions are not part of this build yet: the application puts
// its menu in the tray (and, where no tray exists, a window saying it runs),
// serves its actions on the session bus, and answers every action it cannot
// carry out with a clear message.
#include "AppBusClient.h"
#include "AppBusService.h"
#include "BuildTarget.h"
#include "CommandLineRequest.h"
#include "CaptureOutputPolicy.h"
#include "JsonFileDefaultsStore.h"
#include "LaunchDiagnostics.h"
#include "LocalFileManager.h"
#include "LocalizationManager.h"
#include "Log.h"
#include "QtScreenLayout.h"
#include "QtWorkspace.h"
#include "RecentCaptures.h"
#include "ScreenshotToast.h"
#include "SettingsStore.h"
#include "SiblingApp.h"
#include "SiblingWatch.h"
#include "StatusMenuView.h"

#include <QApplication>
#include <QDBusConnection>
#include <QLabel>
#include <QSystemTrayIcon>

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

// The tray menu, rebuilt from state each time it opens.
class StatusMenu {
public:
    StatusMenu() : recents_(files_, tosvar::SettingsStore::standardDefaults()) {
        QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] { rebuild(); });
        rebuild();
    }
    QMenu* menu() { return &menu_; }

private:
    void rebuild() {
        tosvar::StatusMenuState state;
        state.settings = tosvar::SettingsStore().load();
        recents_.loadFromDisk(tosvar::BuildTarget::current());
        for (const auto& entry : recents_.entries()) state.recentCaptures.push_back(entry.url);
        state.siblingIsRunning = sibling_.isRunning();
        state.siblingDisplayName = tosvar::SiblingApp::displayName;
        const tosvar::StatusMenuPresentation presentation{
            [](const std::string& key, const std::vector<std::string>& arguments) {
                std::vector<tosvar::FormatArgument> values(arguments.begin(), arguments.end());
                return tosvar::LocalizationManager::shared().string(key, values);
            },
            nullptr};
        tosvar::StatusMenuView::fill(menu_, tosvar::StatusMenuModel::build(state), presentation,
                                     [this](tosvar::StatusMenuAction action, const std::filesystem::path& file) {
                                         perform(action, file);
                                     });
    }

    void perform(tosvar::StatusMenuAction action, const std::filesystem::path& file) {
        using tosvar::StatusMenuAction;
        switch (action) {
        case StatusMenuAction::quit: QApplication::quit(); return;
        case StatusMenuAction::openRecent: workspace_.open(file); return;
        case StatusMenuAction::revealCaptureFolder:
            if (auto folder = tosvar::CaptureOutputPolicy::picturesFolder(tosvar::BuildTarget::current(), files_))
                workspace_.reveal(*folder);
            return;
        default:
            tosvar::ScreenshotToast::show(QString::fromStdString(tosvar::L("tosvar.toast.notBuilt")),
                                          tosvar::ScreenshotToast::captureSeconds);
        }
    }

    tosvar::LocalFileManager files_;
    tosvar::RecentCaptures recents_;
    tosvar::SiblingWatch sibling_{nullptr};
    tosvar::QtWorkspace workspace_;
    QMenu menu_;
};

int runApplication(int argc, char** argv) {
    tosvar::LaunchDiagnostics::begin();
    tosvar::LaunchDiagnostics::stage("QApplication");
    QApplication app(argc, argv);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [] { tosvar::LaunchDiagnostics::willTerminate(); });
    tosvar::LaunchDiagnostics::stage("tosvar: applicationDidFinishLaunching");
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
    tosvar::LocalizationManager::shared().apply(settings.appLanguage);
    tosvar::logLine("settings loaded from " + tosvar::JsonFileDefaultsStore::standardPath().string() + "; " +
                    tosvar::LocalizationManager::shared().diagnosticDescription());

    StatusMenu statusMenu;
    QSystemTrayIcon tray(tosvar::StatusMenuView::statusItemIcon(false, false));
    tray.setToolTip(QString::fromStdString(tosvar::BuildTarget::current().displayName()));
    tray.setContextMenu(statusMenu.menu());
    tray.show();

    // Without a tray (a bare X server) a small window says the program runs.
    QLabel placeholder(QString::fromStdString(tosvar::L("tosvar.placeholder")));
    placeholder.setObjectName(QStringLiteral("tosvarPlaceholder"));
    placeholder.setAlignment(Qt::AlignCenter);
    placeholder.setMargin(24);
    placeholder.setWindowTitle(QString::fromStdString(tosvar::BuildTarget::current().displayName()));
    if (!QSystemTrayIcon::isSystemTrayAvailable()) placeholder.show();

    // Gathered here on the main thread; written out by the diagnostics' own thread.
    std::vector<std::pair<std::string, std::string>> inventory{
        {"screenRecordingGranted", "true (X11 needs no grant)"},
        {"accessibilityTrusted", "n/a"},
        {"localizationTable", tosvar::LocalizationManager::shared().diagnosticDescription()},
    };
    std::string screens;
    for (const tosvar::ScreenInfo& screen : tosvar::QtScreenLayout().screens())
        screens += (screens.empty() ? "" : ", ") + std::to_string(int(screen.frame.width())) + "x" +
                   std::to_string(int(screen.frame.height())) + "@" + std::to_string(screen.backingScale).substr(0, 4);
    inventory.emplace_back("screens", screens);

    tosvar::LaunchDiagnostics::stage("tosvar: launch complete");
    tosvar::LaunchDiagnostics::launchDidFinish([inventory] { return inventory; });
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
