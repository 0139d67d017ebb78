#pragma once

#include <filesystem>

namespace tosvar {

// The desktop's file handling: open a file in its application, show it
// selected in the file manager, and the system's alert sound.
class Workspace {
public:
    virtual ~Workspace() = default;
    virtual void open(const std::filesystem::path& file) = 0;
    virtual void reveal(const std::filesystem::path& file) = 0;
    virtual void beep() = 0;
};

} // namespace tosvar
