#pragma once

#include "Point.h"
#include "RGBAColor.h"
#include "RawEnum.h"
#include "Size.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tosvar {

enum class ArrowHeadStyle : std::uint8_t { standard, none };

template <>
struct RawEnum<ArrowHeadStyle> {
    static constexpr std::array table{std::pair{ArrowHeadStyle::standard, std::string_view("standard")},
                                      std::pair{ArrowHeadStyle::none, std::string_view("none")}};
};

// Everything about how an element looks. Every element carries a whole style
// and each kind reads only the fields it needs. A value-initialised style is
// the default style; lengths are in image pixels, angles in degrees.
struct AnnotationStyle {
    RGBAColor strokeColor = RGBAColor::Palette::red;
    std::optional<RGBAColor> fillColor;
    double lineWidth = 4;
    double opacity = 1.0;
    double cornerRadius = 16;
    ArrowHeadStyle arrowHead = ArrowHeadStyle::standard;
    double fontSize = 24;
    double mosaicBlockSize = 16;
    double blurRadius = 12;
    std::optional<double> magnifierZoom;  // absent reads as 4
    std::optional<Size> magnifierOffset;  // absent reads as 0,0
    bool dashed = false;
    bool shadow = false;
    bool outline = false;
    std::optional<double> outlineWidth;
    std::optional<double> shadowRadius;
    std::optional<Size> shadowOffset;
    std::optional<double> dashLength;     // absent reads as the element's default dash length
    double curvature = 0;                 // signed bow from the chord's midpoint
    bool textOutline = true;
    double watermarkAngle = -45;
    double watermarkSpacing = 1.0;
    Size watermarkOffset;
    std::optional<Point> leaderTip;
    std::optional<double> leaderWidth;
    std::optional<std::vector<Point>> midPoints; // empty means the same as absent
    std::optional<double> rotation;

    friend bool operator==(const AnnotationStyle&, const AnnotationStyle&) = default;
};

std::size_t hashValue(const AnnotationStyle& style);

} // namespace tosvar

template <>
struct std::hash<tosvar::AnnotationStyle> {
    std::size_t operator()(const tosvar::AnnotationStyle& s) const noexcept { return tosvar::hashValue(s); }
};
