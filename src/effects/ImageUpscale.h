#pragma once

#include "ImageBuffer.h"

namespace tosvar::ImageUpscale {

// `image` enlarged to `width` by `height` by bilinear interpolation between
// pixel centres (edges repeat), every channel alike, in the image's own byte
// order. Small screen text read this way comes out smooth rather than
// blocky, which is what text recognisers are trained on. A size not larger
// than the image's in both directions gives the image itself.
ImageBuffer bilinear(const ImageBuffer& image, int width, int height);

} // namespace tosvar::ImageUpscale
