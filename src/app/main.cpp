// The application's entry point. Until the status-menu shell lands, the
// program loads its settings, reports where it keeps them, and shows a small
// window that says what this build can do.
#include "BuildTarget.h"
#include "JsonFileDefaultsStore.h"
#include "Log.h"
#include "SettingsStore.h"

#include <QApplication>
#include <QLabel>

#include <cstring>
#include <iostream>

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::cout << "Usage: tosvar\n\nStarts the capture application. This build shows a placeholder window:\n"
                         "the tray menu and capture actions are not built yet.\n";
            return 0;
        }
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromStdString(tosvar::BuildTarget::current().displayName()));

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
