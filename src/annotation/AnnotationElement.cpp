#include "AnnotationElement.h"

#include <algorithm>

namespace tosvar {

namespace {

bool isStrokedLine(const AnnotationKind& kind) {
    using C = AnnotationKind::Case;
    return kind.is(C::arrow) || kind.is(C::line) || kind.is(C::freehand);
}

} // namespace

double AnnotationElement::defaultDashLength() const {
    using C = AnnotationKind::Case;
    if (isStrokedLine(kind)) return 40;
    if (kind.is(C::text) || kind.is(C::stepBadge)) return 36;
    return std::max(2.5 * style.lineWidth, 4.0);
}

double AnnotationElement::dashGapScale() const { return isStrokedLine(kind) ? 1.6 : 1.0; }

} // namespace tosvar
