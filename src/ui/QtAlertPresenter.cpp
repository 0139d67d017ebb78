#include "QtAlertPresenter.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

namespace tosvar {

AlertResponse QtAlertPresenter::run(const AlertRequest& request, void* parentWindow) {
    auto text = [this](const LocalizedText& t) { return QString::fromStdString(localize_(t)); };
    auto* parent = static_cast<QWidget*>(parentWindow);
    if (!parent || !parent->isVisible()) {
        parent = nullptr;
        QApplication::setActiveWindow(nullptr);
    }

    QMessageBox box(parent);
    box.setIcon(request.style == AlertStyle::informational ? QMessageBox::Information
                : request.style == AlertStyle::warning     ? QMessageBox::Warning
                                                           : QMessageBox::Critical);
    box.setText(text(request.message));
    box.setInformativeText(text(request.informativeText));
    if (parent) box.setWindowModality(Qt::WindowModal);
    std::vector<QPushButton*> buttons;
    for (std::size_t i = 0; i < request.buttons.size(); ++i) {
        const auto role = i == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole;
        buttons.push_back(box.addButton(text(request.buttons[i]), role));
    }
    if (!buttons.empty()) box.setDefaultButton(buttons.front());
    QCheckBox* suppression = nullptr;
    if (request.suppressionCheckbox) {
        suppression = new QCheckBox(text(*request.suppressionCheckbox));
        box.setCheckBox(suppression); // the box owns it
    }
    box.exec();

    AlertResponse response;
    for (std::size_t i = 0; i < buttons.size(); ++i)
        if (box.clickedButton() == buttons[i]) response.buttonIndex = static_cast<int>(i);
    response.suppressionChecked = suppression && suppression->isChecked();
    return response;
}

} // namespace tosvar
