#include "QProcessSettingsPageOpener.h"

#include "Log.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace tosvar {

bool QProcessSettingsPageOpener::start(const std::string& program, const std::vector<std::string>& arguments)
{
    const QString executable = QStandardPaths::findExecutable(QString::fromStdString(program));
    if (executable.isEmpty()) {
        logLine("[Permissions] settings program not installed: " + program);
        return false;
    }
    QStringList list;
    for (const std::string& argument : arguments)
        list << QString::fromStdString(argument);
    if (!QProcess::startDetached(executable, list)) {
        logLine("[Permissions] settings program did not start: " + program);
        return false;
    }
    return true;
}

} // namespace tosvar
