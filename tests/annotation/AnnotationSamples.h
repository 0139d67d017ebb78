#pragma once

#include "AnnotationElement.h"
#include "AnnotationJson.h"

#include <ostream>

#include <vector>

namespace tosvar {

// Failure messages show elements as their JSON text.
inline void PrintTo(const AnnotationElement& element, std::ostream* out) {
    const Expected<std::string> text = AnnotationJson::encodeElement(element);
    *out << (text ? *text : "(unwritable: " + text.error().message + ")");
}

} // namespace tosvar

namespace tosvar::samples {

// A picture whose bytes are a short run of made-up data; nothing decodes them.
inline AnnotationImage picture(std::size_t byteCount = 48) {
    std::vector<std::uint8_t> bytes(byteCount);
    for (std::size_t i = 0; i < byteCount; ++i) bytes[i] = static_cast<std::uint8_t>(i * 37 + 11);
    return {*Uuid::parse("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0"), SharedBytes(std::move(bytes)), 640, 480.5};
}

inline TranslatedBlock fullBlock() {
    return {"• Guten Tag", "• Good day", "de", "en", true, true, "•", true};
}

// Every optional field present and every field away from its default.
inline AnnotationStyle fullStyle() {
    AnnotationStyle s;
    s.strokeColor = RGBAColor::Palette::blue.withAlpha(0.5);
    s.fillColor = RGBAColor::Palette::yellow;
    s.lineWidth = 7.5;
    s.opacity = 0.8;
    s.cornerRadius = 3;
    s.arrowHead = ArrowHeadStyle::none;
    s.fontSize = 31.25;
    s.mosaicBlockSize = 9;
    s.blurRadius = 20;
    s.magnifierZoom = 2.5;
    s.magnifierOffset = Size{-4, 6.5};
    s.dashed = true;
    s.shadow = true;
    s.outline = true;
    s.outlineWidth = 2;
    s.shadowRadius = 5.5;
    s.shadowOffset = Size{1, -2};
    s.dashLength = 12;
    s.curvature = -18.75;
    s.textOutline = false;
    s.watermarkAngle = 30;
    s.watermarkSpacing = 1.5;
    s.watermarkOffset = Size{10, 20};
    s.leaderTip = Point{100, 200.5};
    s.leaderWidth = 6;
    s.midPoints = std::vector<Point>{{1, 2}, {3.5, -4}};
    s.rotation = 12.5;
    return s;
}

// One element of each kind, in declaration order, with the geometry each is
// made with (and a brushed path for blur), all in `style`.
inline std::vector<AnnotationElement> oneOfEveryKind(const AnnotationStyle& style) {
    using C = AnnotationKind::Case;
    const Geometry segment = Geometry::segment({12, 40}, {310.5, -7.25});
    const Geometry rect = Geometry::rect(Rect(5, 6, 120, -80));
    const Geometry path = Geometry::path({{0, 0}, {1.5, 2}, {3, 5}, {-7, 1e6}});
    const Geometry point = Geometry::point({42, 17.125});
    const std::vector<std::pair<AnnotationKind, Geometry>> parts{
        {AnnotationKind(C::arrow), segment},
        {AnnotationKind(C::line), segment},
        {AnnotationKind(C::rectangle), rect},
        {AnnotationKind(C::ellipse), rect},
        {AnnotationKind(C::freehand), path},
        {AnnotationKind(C::highlighter), path},
        {AnnotationKind::text("hello\nwörld \"quoted\""), point},
        {AnnotationKind::stepBadge("12"), point},
        {AnnotationKind::watermark("CONFIDENTIAL"), rect},
        {AnnotationKind(C::mosaic), rect},
        {AnnotationKind(C::blur), path},
        {AnnotationKind(C::magnifier), rect},
        {AnnotationKind(C::spotlight), rect},
        {AnnotationKind::image(picture()), rect},
        {AnnotationKind::translatedText(fullBlock()), rect},
    };
    std::vector<AnnotationElement> elements;
    for (const auto& [kind, geometry] : parts) elements.push_back({Uuid::random(), kind, geometry, style});
    return elements;
}

} // namespace tosvar::samples
