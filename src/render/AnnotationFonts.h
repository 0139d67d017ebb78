#pragma once

#include "DrawingCanvas.h"
#include "TextMeasuring.h"

namespace tosvar {

// The two faces annotations are measured in: regular for text, watermarks and
// translated blocks, bold for step badge labels.
struct AnnotationFonts {
    const TextMeasuring& regular;
    const TextMeasuring& bold;

    static AnnotationFonts of(const DrawingBackend& backend) {
        return {backend.measuring(FontFace::regular), backend.measuring(FontFace::bold)};
    }
};

} // namespace tosvar
