#pragma once

#include "AnnotationElement.h"
#include "Pasteboard.h"
#include "Point.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tosvar {

// Elements copied in one editor and pasted in any other, kept in the process
// and never written to the system clipboard. The clipboard's change count at
// the copy tells whether the user copied something else since, which then
// takes precedence. The application owns one and every editor shares it.
// Main thread only.
class AnnotationElementClipboard {
public:
    enum class Choice { elements, systemImage, nothing };

    // Keeps a copy of `elements` and the clipboard's change count; an empty
    // list leaves the earlier copy in place.
    void copy(const std::vector<AnnotationElement>& elements, const Pasteboard& pasteboard);

    // What a paste should insert. Our elements while the clipboard has not
    // changed since the copy; after a change, the clipboard's image when one
    // can be imported, else still our elements; nothing when there are none.
    Choice choice(const Pasteboard& pasteboard, bool canImportImage) const;

    // The kept elements with fresh ids, moved by `offset`; the moved list
    // replaces the kept one, so each paste lands one offset further on.
    std::vector<AnnotationElement> take(Point offset);

    bool isEmpty() const { return elements_.empty(); }

    // `element` moved by `by`: its geometry, leader tip and bend points.
    static AnnotationElement translated(const AnnotationElement& element, Point by);

private:
    std::vector<AnnotationElement> elements_;
    std::optional<std::int64_t> changeCountAtCopy_;
};

} // namespace tosvar
