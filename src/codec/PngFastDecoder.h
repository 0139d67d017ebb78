#pragma once

#include "Expected.h"
#include "ImageBuffer.h"

#include <cstdint>
#include <optional>
#include <span>

namespace tosvar::PngFastDecoder {

// Decodes the PNGs screen tools write (8-bit RGB or RGBA, not interlaced, no
// colour key) without libpng: the chunks are walked here, the whole image is
// inflated in one call, and rows are unfiltered straight into our layout.
// Answers none for any other kind of PNG, which the general decoder handles.
// Chunk checksums are verified like the general decoder does.
std::optional<Expected<ImageBuffer>> decode(std::span<const std::uint8_t> bytes);

} // namespace tosvar::PngFastDecoder
