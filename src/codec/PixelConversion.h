#pragma once

#include "ImageBuffer.h"

#include <cstdint>

// Row kernels between our premultiplied layouts and the straight-alpha rows
// codecs speak. Written as plain loops over bytes so the compiler vectorises them.
namespace tosvar::PixelConversion {

// Premultiplied pixels in `order` to packed RGB (alpha dropped; for opaque rows).
void toRgb(const std::uint8_t* src, PixelOrder order, int width, std::uint8_t* dst);
// Premultiplied pixels in `order` to straight RGBA.
void toStraightRgba(const std::uint8_t* src, PixelOrder order, int width, std::uint8_t* dst);
// Packed RGB to opaque RGBA.
void rgbToOpaqueRgba(const std::uint8_t* src, int width, std::uint8_t* dst);
// Straight RGBA to premultiplied RGBA, in place.
void premultiplyRgba(std::uint8_t* pixels, int width);

} // namespace tosvar::PixelConversion
