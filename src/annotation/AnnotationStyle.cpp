#include "AnnotationStyle.h"

namespace tosvar {

namespace {

// An absent value hashes apart from every present one; present values go
// through hashValues so that -0.0 and 0.0 agree, as equality does.
template <typename T>
std::size_t hashOptional(const std::optional<T>& value) {
    return value ? hashValues(*value) : 0x5bd1e995u;
}

std::size_t hashOptional(const std::optional<std::vector<Point>>& points) {
    if (!points) return 0x5bd1e995u;
    std::size_t seed = points->size();
    for (const Point& p : *points) hashCombine(seed, hashValues(p));
    return seed;
}

} // namespace

std::size_t hashValue(const AnnotationStyle& s) {
    return hashValues(s.strokeColor, hashOptional(s.fillColor), s.lineWidth, s.opacity, s.cornerRadius,
                      static_cast<int>(s.arrowHead), s.fontSize, s.mosaicBlockSize, s.blurRadius,
                      hashOptional(s.magnifierZoom), hashOptional(s.magnifierOffset), s.dashed, s.shadow, s.outline,
                      hashOptional(s.outlineWidth), hashOptional(s.shadowRadius), hashOptional(s.shadowOffset),
                      hashOptional(s.dashLength), s.curvature, s.textOutline, s.watermarkAngle, s.watermarkSpacing,
                      s.watermarkOffset, hashOptional(s.leaderTip), hashOptional(s.leaderWidth),
                      hashOptional(s.midPoints), hashOptional(s.rotation));
}

} // namespace tosvar
