#pragma once

// A 5120x2880 screenshot with 50 mixed elements over it, five mosaic and
// five blur regions among them: the document the drawing benchmarks share.
#include "AnnotationDocument.h"

#include <random>
#include <string>

namespace tosvar::benchmarks {

using C = AnnotationKind::Case;

inline ImageBuffer screenLike(int width, int height) {
    MutableImage image(width, height, PixelOrder::bgra);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image.row(y);
        for (int x = 0; x < width; ++x) {
            const auto v = static_cast<std::uint8_t>(((x / 7) % 3 == 0 && (y / 11) % 2 == 0) ? 30 : 235 - (x + y) % 20);
            row[4 * x] = v;
            row[4 * x + 1] = v;
            row[4 * x + 2] = static_cast<std::uint8_t>(v - v / 8);
            row[4 * x + 3] = 255;
        }
    }
    return std::move(image).freeze();
}

inline AnnotationElement element(AnnotationKind kind, Geometry geometry, AnnotationStyle style = {}) {
    return {Uuid::random(), std::move(kind), std::move(geometry), std::move(style)};
}

// Eight rounds of an arrow, a rectangle, a text, a badge and a freehand
// stroke, five dashed lines, five mosaics and five blurs, spread over the
// screen.
inline std::vector<AnnotationElement> mixedElements(double width, double height) {
    std::mt19937 random(5);
    auto at = [&](double margin) {
        return Point{std::uniform_real_distribution<double>(margin, width - margin)(random),
                     std::uniform_real_distribution<double>(margin, height - margin)(random)};
    };
    std::vector<AnnotationElement> elements;
    for (int i = 0; i < 8; ++i) {
        const Point a = at(400);
        AnnotationStyle style;
        style.lineWidth = 8;
        style.outline = i % 2 == 0;
        elements.push_back(element(AnnotationKind(C::arrow), Geometry::segment(a, a + Point{300, -150}), style));
        elements.push_back(element(AnnotationKind(C::rectangle), Geometry::rect({at(500).x, at(500).y, 420, 260}), style));
        AnnotationStyle text;
        text.fontSize = 48;
        text.shadow = i % 4 == 0;
        elements.push_back(element(AnnotationKind::text("Check this value"), Geometry::point(at(600)), text));
        elements.push_back(element(AnnotationKind::stepBadge(std::to_string(i + 1)), Geometry::point(at(100)), text));
        const Point f = at(400);
        elements.push_back(element(AnnotationKind(C::freehand), Geometry::path({f, f + Point{80, 60}, f + Point{160, -20}, f + Point{260, 90}}), style));
    }
    AnnotationStyle dashed;
    dashed.dashed = true;
    dashed.lineWidth = 6;
    for (int i = 0; i < 5; ++i) elements.push_back(element(AnnotationKind(C::line), Geometry::segment(at(300), at(300)), dashed));
    for (int i = 0; i < 5; ++i) elements.push_back(element(AnnotationKind(C::mosaic), Geometry::rect({at(600).x, at(600).y, 500, 300})));
    for (int i = 0; i < 5; ++i) elements.push_back(element(AnnotationKind(C::blur), Geometry::rect({at(600).x, at(600).y, 500, 300})));
    return elements;
}

inline AnnotationDocument mixedDocument() {
    std::vector<AnnotationElement> elements = mixedElements(5120, 2880);
    elements.erase(elements.begin(), elements.begin() + static_cast<std::ptrdiff_t>(elements.size() - 50));
    return AnnotationDocument(screenLike(5120, 2880), 2, std::nullopt, elements);
}

} // namespace tosvar::benchmarks
