#pragma once

#include "ImageBuffer.h"
#include "PixelRect.h"

#include <cstdint>
#include <map>
#include <optional>

namespace tosvar {

// A window image without its shadow: the kept pixels, and where they stand in
// the source image (pixels, origin at the top left).
struct TrimmedWindowImage {
    ImageBuffer image;
    PixelRect box;
};

// Window images come with margins of near-transparent shadow; these go.
namespace WindowImageTrimmer {

// How deep each edge is searched, and the alpha above which a pixel is content.
inline constexpr int maxDepth = 160;
inline constexpr std::uint8_t marginAlpha = 26;

// None when there is nothing to trim (opaque edges), or when an edge lies
// deeper than `maxDepth`: such an image is left as it is. Reads at most
// `maxDepth` rows and columns from each edge, never the whole image; the
// result shares the source's pixels.
std::optional<TrimmedWindowImage> trimmedToOpaqueContent(const ImageBuffer& image);

// The images among `images` that trim, by window id.
std::map<std::uint32_t, TrimmedWindowImage> trims(const std::map<std::uint32_t, ImageBuffer>& images);

} // namespace WindowImageTrimmer

} // namespace tosvar
