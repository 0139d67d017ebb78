#pragma once

#include "AnnotationElement.h"
#include "AnnotationSnapshot.h"
#include "ImageBuffer.h"
#include "Rect.h"
#include "Size.h"

#include <optional>
#include <vector>

namespace tosvar {

// A captured image and the elements drawn over it, in paint order (first
// drawn first). The base image can be replaced but the scale (pixels per
// display point) is fixed for the document's life; the crop applies at output
// only and never moves the elements.
class AnnotationDocument {
public:
    AnnotationDocument(ImageBuffer base, double scale, std::optional<Rect> cropRect = std::nullopt,
                       std::vector<AnnotationElement> elements = {});

    const ImageBuffer& base() const { return base_; }
    void replaceBase(ImageBuffer base) { base_ = std::move(base); }
    double scale() const { return scale_; }

    Size pixelSize() const;
    Rect imageBounds() const;

    AnnotationSnapshot snapshot() const;
    // Takes the elements and crop of a snapshot; base and scale stay.
    void apply(AnnotationSnapshot snapshot);

    std::optional<Rect> cropRect;
    std::vector<AnnotationElement> elements;

private:
    ImageBuffer base_;
    double scale_;
};

} // namespace tosvar
