#include "QtAnnotationFileSaver.h"

#include "AtomicFile.h"
#include "LocalTime.h"
#include "Log.h"

#include <QDir>
#include <QFileDialog>
#include <QStandardPaths>

namespace tosvar {

std::string QtAnnotationFileSaver::suggestedName(std::chrono::system_clock::time_point at) {
    return "Vemla_" + formatLocalTime(at, "%Y%m%d_%H%M%S") + ".png";
}

void QtAnnotationFileSaver::save(const Bytes& png) {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (folder.isEmpty()) folder = QDir::homePath();
    QFileDialog dialog(nullptr, QString(), QDir(folder).filePath(QString::fromStdString(suggestedName(std::chrono::system_clock::now()))),
                       QStringLiteral("PNG (*.png)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("png"));
    dialog.setWindowFlag(Qt::WindowStaysOnTopHint);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    const std::filesystem::path target = dialog.selectedFiles().front().toStdString();
    if (std::optional<Error> error = AtomicFile::write(target, png)) logLine("[Editor] save as " + target.string() + " failed: " + error->message);
}

} // namespace tosvar
