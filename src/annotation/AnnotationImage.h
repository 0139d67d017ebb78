#pragma once

#include "HashCombine.h"
#include "SharedBytes.h"
#include "Uuid.h"

namespace tosvar {

// A picture placed on the canvas: its encoded bytes (PNG, or whatever was
// imported) and its size in pixels. The bytes can be large, so equality and
// hashing look only at the id and the size, and copies share the bytes.
struct AnnotationImage {
    Uuid id;
    SharedBytes data;
    double pixelWidth = 0;
    double pixelHeight = 0;

    friend bool operator==(const AnnotationImage& a, const AnnotationImage& b) {
        return a.id == b.id && a.pixelWidth == b.pixelWidth && a.pixelHeight == b.pixelHeight;
    }
};

} // namespace tosvar

template <>
struct std::hash<tosvar::AnnotationImage> {
    std::size_t operator()(const tosvar::AnnotationImage& image) const noexcept {
        return tosvar::hashValues(image.id, image.pixelWidth, image.pixelHeight);
    }
};
