#pragma once

#include "Expected.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tosvar::Base64 {

// Standard alphabet with padding.
std::string encode(std::span<const std::uint8_t> bytes);

// Accepts the standard alphabet with or without padding; whitespace, a stray
// character or a dangling bit count is an error that names the offset.
Expected<std::vector<std::uint8_t>> decode(std::string_view text);

} // namespace tosvar::Base64
