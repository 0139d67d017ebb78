#pragma once

#include "ImageBuffer.h"

#include <optional>

// Swapping rows and columns, so a sideways capture runs through the same
// row-wise matching.
namespace tosvar::ScrollTranspose {

// The image with pixel (x, y) at (y, x), in the same byte order. Nothing
// for an empty image.
std::optional<ImageBuffer> transposed(const ImageBuffer& image);

} // namespace tosvar::ScrollTranspose
