#pragma once

#include "ImageBuffer.h"

namespace tosvar::ImageDownscale {

// `image` reduced to `width` by `height` by area averaging: each new pixel is
// the mean of the source area it covers, partly covered source pixels counting
// by the share they cover, so no source pixel is skipped and thin lines fade
// instead of vanishing. Works on premultiplied pixels of any byte order, every
// channel alike, and keeps the order. The size is limited to 1 up to the
// source's own in each direction; an empty image stays empty.
ImageBuffer areaAverage(const ImageBuffer& image, int width, int height);

} // namespace tosvar::ImageDownscale
