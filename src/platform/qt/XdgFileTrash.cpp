#include "XdgFileTrash.h"

#include <QFile>
#include <QString>

namespace tosvar {

std::optional<Error> XdgFileTrash::moveToTrash(const std::filesystem::path& file) {
    QFile target(QString::fromStdString(file.string()));
    if (!target.exists()) return Error{"cannot move " + file.string() + " to the trash: no such file"};
    if (!target.moveToTrash())
        return Error{"cannot move " + file.string() + " to the trash: " + target.errorString().toStdString()};
    return std::nullopt;
}

} // namespace tosvar
