#pragma once

#include "Expected.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tosvar {

// Whole-file reads with errors that name the file and the reason, never an
// exception: a folder in the file's place, a permission, a vanished disk.
Expected<std::vector<std::uint8_t>> readFileBytes(const std::filesystem::path& path);
Expected<std::string> readFileText(const std::filesystem::path& path);

} // namespace tosvar
