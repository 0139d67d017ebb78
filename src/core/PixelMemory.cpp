#include "PixelMemory.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace tosvar {

namespace {

constexpr std::size_t cacheLine = 64;
constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t hugePageThreshold = std::size_t{4} << 20;

std::size_t roundUp(std::size_t value, std::size_t to) { return (value + to - 1) / to * to; }

} // namespace

void PixelMemoryFree::operator()(std::uint8_t* p) const noexcept { std::free(p); }

PixelMemory allocatePixelMemory(std::size_t bytes, PixelMemoryFill fill) {
    const bool large = bytes >= hugePageThreshold;
    const std::size_t alignment = large ? hugePage : cacheLine;
    const std::size_t size = roundUp(bytes == 0 ? 1 : bytes, alignment);
    void* memory = std::aligned_alloc(alignment, size);
    if (!memory) throw std::bad_alloc();
    if (large) ::madvise(memory, size, MADV_HUGEPAGE);
    if (fill == PixelMemoryFill::zeroed) std::memset(memory, 0, size);
    return PixelMemory(static_cast<std::uint8_t*>(memory));
}

} // namespace tosvar
