#include "AnnotationDocument.h"

namespace tosvar {

AnnotationDocument::AnnotationDocument(ImageBuffer base, double scale, std::optional<Rect> crop,
                                       std::vector<AnnotationElement> list)
    : cropRect(crop), elements(std::move(list)), base_(std::move(base)), scale_(scale) {}

Size AnnotationDocument::pixelSize() const {
    return {static_cast<double>(base_.width()), static_cast<double>(base_.height())};
}

Rect AnnotationDocument::imageBounds() const { return Rect(Point{0, 0}, pixelSize()); }

AnnotationSnapshot AnnotationDocument::snapshot() const { return {elements, cropRect}; }

void AnnotationDocument::apply(AnnotationSnapshot snapshot) {
    elements = std::move(snapshot.elements);
    cropRect = snapshot.cropRect;
}

} // namespace tosvar
