#pragma once

#include "AnnotationDocument.h"
#include "DrawingCanvas.h"
#include "MosaicEngine.h"
#include "ParallelRunner.h"
#include "Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

// An element that could not be drawn, and why.
struct SkippedElement {
    std::size_t index = 0; // in the document's list
    Uuid id;
    std::string reason;
};

struct AnnotationDrawOptions {
    bool hideWatermarkCenterTile = false;
    // The element whose own text an inline editor is showing instead.
    std::optional<Uuid> hideContentFor;
};

// The one way a document becomes pixels: the flattened output, the editor's
// canvas and every overlay draw through it, so what is seen while editing is
// what is saved. Any thread may render; the pixel effects spread over `run`.
class AnnotationRenderer {
public:
    explicit AnnotationRenderer(const DrawingBackend& backend, ParallelRunner run = runSerially)
        : backend_(backend), run_(std::move(run)) {}

    // The base with every element drawn over it, cropped to the document's
    // crop (rounded out to whole pixels and kept inside the image; a crop
    // without area is ignored). None for an image without area or when no
    // canvas can be made. Elements that cannot be drawn are left out and
    // listed in `skipped`.
    std::optional<ImageBuffer> render(const AnnotationDocument& document, std::vector<SkippedElement>* skipped = nullptr) const;
    std::optional<std::vector<std::uint8_t>> renderPNG(const AnnotationDocument& document) const;
    // The image with its corners cut round (radius at most half the smaller
    // side), as PNG; a radius of 0.5 or less leaves it as it is.
    std::optional<std::vector<std::uint8_t>> roundedPNG(const ImageBuffer& image, double cornerRadius) const;

    // The base at canvas size, then the elements.
    std::vector<SkippedElement> draw(const AnnotationDocument& document, DrawingCanvas& canvas, MosaicEngine* mosaic,
                                     const AnnotationDrawOptions& options = {}) const;
    // The elements only, in order; all spotlights share one veil at the place
    // of the first.
    std::vector<SkippedElement> drawElements(const AnnotationDocument& document, DrawingCanvas& canvas, MosaicEngine* mosaic,
                                             const AnnotationDrawOptions& options = {}) const;

    const DrawingBackend& backend() const { return backend_; }

private:
    const DrawingBackend& backend_;
    ParallelRunner run_;
};

} // namespace tosvar
