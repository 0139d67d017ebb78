#pragma once

#include "ImageBuffer.h"

#include <cstdint>
#include <optional>
#include <vector>

// Turning a frame into 8-bit gray for matching.
namespace tosvar::ScrollGray {

// An 8-bit gray image, row by row with no padding.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;
};

// The trailing inset applies only to an image wider than four times it, so a
// narrow image keeps all its columns. Returns the columns that reach the matcher.
int sourceWidth(int imageWidth, int trailingInset);

// The leftmost `sourceWidth` columns in gray, reduced to at most `maxColumns`
// columns by area averaging. Nothing when the result would be empty. Takes
// the fast path when it can, else the slow one.
std::optional<Plane> convert(const ImageBuffer& image, int maxColumns, int trailingInset);

// The weighted-sum kernel and the 32-bit integer resampler. Declines a
// reduction whose scaled integrals would not fit 32 bits (source columns
// times target columns above about 16.8 million, a frame some 44,000 pixels
// wide at 384 columns).
std::optional<Plane> convertFast(const ImageBuffer& image, int maxColumns, int trailingInset);
// Any layout, one pixel at a time: the exact gray of each pixel averaged over
// the covered span in floating point.
std::optional<Plane> convertSlow(const ImageBuffer& image, int maxColumns, int trailingInset);

} // namespace tosvar::ScrollGray
