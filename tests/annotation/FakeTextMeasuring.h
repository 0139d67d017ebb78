#pragma once

#include "AnnotationElement.h"
#include "TextMeasuring.h"

#include <string>
#include <utility>

namespace tosvar::samples {

// A face whose numbers can be worked out by hand: one em per line (ascent
// 0.75, descent 0.25, no leading) and half an em per character.
class FakeTextMeasuring final : public TextMeasuring {
public:
    FontLineMetrics metrics(double fontSize) const override { return {0.75 * fontSize, 0.25 * fontSize, 0}; }
    double lineWidth(std::string_view line, double fontSize) const override {
        std::size_t characters = 0;
        for (unsigned char c : line) characters += (c & 0xC0) != 0x80; // count UTF-8 lead bytes
        return 0.5 * fontSize * static_cast<double>(characters);
    }
};

inline AnnotationElement element(AnnotationKind kind, Geometry geometry, AnnotationStyle style = {}) {
    return {Uuid::random(), std::move(kind), std::move(geometry), std::move(style)};
}

inline AnnotationElement shape(AnnotationKind::Case kind, Rect rect, AnnotationStyle style = {}) {
    return element(AnnotationKind(kind), Geometry::rect(rect), std::move(style));
}

inline AnnotationElement text(std::string content, Point at, AnnotationStyle style = {}) {
    return element(AnnotationKind::text(std::move(content)), Geometry::point(at), std::move(style));
}

inline AnnotationElement badge(Point at, AnnotationStyle style = {}) {
    return element(AnnotationKind::stepBadge("1"), Geometry::point(at), std::move(style));
}

} // namespace tosvar::samples
