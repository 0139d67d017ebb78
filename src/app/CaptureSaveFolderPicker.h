#pragma once

#include "CaptureSaveFolder.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace tosvar {

// The capture folder with a button to pick another and one to go back to the
// default. A choice the folder rules refuse leaves the old one standing.
class CaptureSaveFolderPicker final : public QWidget {
public:
    CaptureSaveFolderPicker(DefaultsStore& defaults, FileManager& files, QWidget* parent = nullptr);

    // Sets the folder as if picked in the dialog.
    void choose(const std::filesystem::path& folder);
    void resetToDefault();

private:
    void refresh();

    DefaultsStore& defaults_;
    FileManager& files_;
    QLabel* path_;
    QPushButton* reset_;
};

} // namespace tosvar
