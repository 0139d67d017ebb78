#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tosvar {

struct PixelMemoryFree {
    void operator()(std::uint8_t* p) const noexcept;
};
using PixelMemory = std::unique_ptr<std::uint8_t[], PixelMemoryFree>;

enum class PixelMemoryFill { zeroed, uninitialized };

// Memory for pixels, aligned to 64 bytes. Blocks of several megabytes are
// aligned to 2 MiB and asked to be backed by huge pages: a full-screen image
// then costs a few dozen page faults instead of thousands, which is most of
// the time of a decode or a grab on a virtual machine.
PixelMemory allocatePixelMemory(std::size_t bytes, PixelMemoryFill fill);

} // namespace tosvar
