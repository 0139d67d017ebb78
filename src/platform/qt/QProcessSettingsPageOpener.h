#pragma once

#include "SettingsPageOpener.h"

namespace tosvar {

// Starts the settings program found on PATH, detached.
class QProcessSettingsPageOpener final : public SettingsPageOpener {
public:
    bool start(const std::string& program, const std::vector<std::string>& arguments) override;
};

} // namespace tosvar
