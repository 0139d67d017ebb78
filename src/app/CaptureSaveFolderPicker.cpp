#include "CaptureSaveFolderPicker.h"

#include "AppPlatform.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tosvar {

CaptureSaveFolderPicker::CaptureSaveFolderPicker(DefaultsStore& defaults, FileManager& files, QWidget* parent)
    : QWidget(parent), defaults_(defaults), files_(files), path_(new QLabel(this)),
      reset_(new QPushButton(QString::fromStdString(localize("folder.reset")), this)) {
    auto* choose = new QPushButton(QString::fromStdString(localize("folder.choose")), this);
    path_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    path_->setTextFormat(Qt::PlainText);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(path_, 1);
    row->addWidget(choose);
    row->addWidget(reset_);
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString folder = QFileDialog::getExistingDirectory(
            this, QString(), QString::fromStdString(CaptureSaveFolder::captures().configuredURL(defaults_, files_).string()));
        if (!folder.isEmpty()) this->choose(folder.toStdString());
    });
    connect(reset_, &QPushButton::clicked, this, [this] { resetToDefault(); });
    refresh();
}

void CaptureSaveFolderPicker::choose(const std::filesystem::path& folder) {
    CaptureSaveFolder::captures().setFolder(folder, defaults_, files_);
    refresh();
}

void CaptureSaveFolderPicker::resetToDefault() {
    CaptureSaveFolder::captures().reset(defaults_);
    refresh();
}

void CaptureSaveFolderPicker::refresh() {
    const CaptureSaveFolder& folder = CaptureSaveFolder::captures();
    path_->setText(QString::fromStdString(folder.configuredURL(defaults_, files_).string()));
    reset_->setVisible(folder.hasCustomFolder(defaults_, files_));
}

} // namespace tosvar
