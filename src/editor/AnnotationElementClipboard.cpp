#include "AnnotationElementClipboard.h"

namespace tosvar {

void AnnotationElementClipboard::copy(const std::vector<AnnotationElement>& elements, const Pasteboard& pasteboard) {
    if (elements.empty()) return;
    elements_ = elements;
    changeCountAtCopy_ = pasteboard.changeCount();
}

AnnotationElementClipboard::Choice AnnotationElementClipboard::choice(const Pasteboard& pasteboard,
                                                                      bool canImportImage) const {
    if (!elements_.empty() && changeCountAtCopy_ == pasteboard.changeCount()) return Choice::elements;
    if (canImportImage) return Choice::systemImage;
    return elements_.empty() ? Choice::nothing : Choice::elements;
}

std::vector<AnnotationElement> AnnotationElementClipboard::take(Point offset) {
    std::vector<AnnotationElement> moved;
    moved.reserve(elements_.size());
    for (const AnnotationElement& element : elements_) {
        AnnotationElement copy = translated(element, offset);
        copy.id = Uuid::random();
        moved.push_back(std::move(copy));
    }
    elements_ = moved;
    return moved;
}

AnnotationElement AnnotationElementClipboard::translated(const AnnotationElement& element, Point by) {
    AnnotationElement moved = element;
    moved.geometry = element.geometry.translated(by);
    if (moved.style.leaderTip) *moved.style.leaderTip = *moved.style.leaderTip + by;
    // Bend points sit in image coordinates like the geometry; left behind,
    // they would pull a pasted curve back towards the original.
    if (moved.style.midPoints)
        for (Point& point : *moved.style.midPoints) point = point + by;
    return moved;
}

} // namespace tosvar
