#pragma once

#include <cstdint>

namespace tosvar {

// PNG stores every number big-endian.
inline std::uint32_t bigEndian32(const std::uint8_t* p) {
    return std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 | std::uint32_t(p[2]) << 8 | p[3];
}

} // namespace tosvar
