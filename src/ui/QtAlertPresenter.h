#pragma once

#include "AlertPresenting.h"

#include <functional>
#include <string>

namespace tosvar {

// Runs an alert as a Qt message box, with the "don't ask again" box when the
// request has one. Texts are turned into words by `localize`.
class QtAlertPresenter final : public AlertPresenting {
public:
    using Localize = std::function<std::string(const LocalizedText&)>;
    explicit QtAlertPresenter(Localize localize) : localize_(std::move(localize)) {}

    // `parentWindow` is a QWidget* or null; with a parent the box is window-modal on it.
    AlertResponse run(const AlertRequest& request, void* parentWindow) override;

private:
    Localize localize_;
};

} // namespace tosvar
