#pragma once

#include "Size.h"

namespace tosvar::AnnotationWindowSizing {

// The content size, in points, of a new stand-alone editor window for an image
// of `imagePixelSize` at `scale` pixels per point (pixels are taken as points
// below a scale of 1): the image's size, shrunk without distortion to fit
// 1100 by 720 and never enlarged, with the width then raised to at least 640
// so the toolbar fits.
Size initialContentSize(Size imagePixelSize, double scale);

} // namespace tosvar::AnnotationWindowSizing
