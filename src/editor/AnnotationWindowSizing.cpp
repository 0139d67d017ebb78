#include "AnnotationWindowSizing.h"

#include <algorithm>

namespace tosvar::AnnotationWindowSizing {

Size initialContentSize(Size imagePixelSize, double scale) {
    const double perPoint = scale >= 1 ? scale : 1;
    const double width = std::max(imagePixelSize.width / perPoint, 0.0);
    const double height = std::max(imagePixelSize.height / perPoint, 0.0);
    // A zero side divides to infinity and leaves the other side in charge.
    const double fit = std::min({1.0, 1100 / width, 720 / height});
    return {std::max(width * fit, 640.0), height * fit};
}

} // namespace tosvar::AnnotationWindowSizing
