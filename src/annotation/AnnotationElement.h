#pragma once

#include "AnnotationKind.h"
#include "AnnotationStyle.h"
#include "Geometry.h"
#include "Uuid.h"

namespace tosvar {

// One drawn thing on the canvas. `id` is its identity for selection, the
// clipboard and undo; everything else is a plain value.
struct AnnotationElement {
    Uuid id;
    AnnotationKind kind;
    Geometry geometry;
    AnnotationStyle style;

    // The dash length used when the style names none.
    double defaultDashLength() const;
    // How much longer than a dash each gap is drawn.
    double dashGapScale() const;

    friend bool operator==(const AnnotationElement&, const AnnotationElement&) = default;
};

} // namespace tosvar

template <>
struct std::hash<tosvar::AnnotationElement> {
    std::size_t operator()(const tosvar::AnnotationElement& e) const noexcept {
        return tosvar::hashValues(e.id, e.kind, e.geometry, e.style);
    }
};
