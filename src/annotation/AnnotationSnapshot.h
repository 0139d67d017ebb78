#pragma once

#include "AnnotationElement.h"
#include "Rect.h"

#include <optional>
#include <vector>

namespace tosvar {

// The editable state of a document at one moment: its elements and its crop.
// Large payloads (picture bytes) are shared with the document, not copied.
struct AnnotationSnapshot {
    std::vector<AnnotationElement> elements;
    std::optional<Rect> cropRect;

    friend bool operator==(const AnnotationSnapshot&, const AnnotationSnapshot&) = default;
};

} // namespace tosvar

template <>
struct std::hash<tosvar::AnnotationSnapshot> {
    std::size_t operator()(const tosvar::AnnotationSnapshot& s) const noexcept {
        std::size_t seed = s.cropRect ? std::hash<tosvar::Rect>{}(*s.cropRect) : 0x5bd1e995u;
        for (const tosvar::AnnotationElement& e : s.elements) tosvar::hashCombine(seed, std::hash<tosvar::AnnotationElement>{}(e));
        return seed;
    }
};
