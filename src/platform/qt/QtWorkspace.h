#pragma once

#include "Workspace.h"

namespace tosvar {

// Files through the desktop: opened with their application, revealed in the
// file manager over its D-Bus interface (org.freedesktop.FileManager1), or,
// without one, by opening the folder that holds them. Main thread; `reveal`
// returns at once and finishes on the event loop.
class QtWorkspace final : public Workspace {
public:
    void open(const std::filesystem::path& file) override;
    void reveal(const std::filesystem::path& file) override;
    void beep() override;
};

} // namespace tosvar
