#pragma once

#include "Expected.h"

#include <filesystem>
#include <optional>

namespace tosvar {

// Moves files to the desktop's trash, where the user can restore them.
class FileTrash {
public:
    virtual ~FileTrash() = default;
    virtual std::optional<Error> moveToTrash(const std::filesystem::path& file) = 0;
};

} // namespace tosvar
