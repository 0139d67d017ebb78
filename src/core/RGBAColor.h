#pragma once

#include "HashCombine.h"

namespace tosvar {

// A colour in sRGB, every channel from 0 to 1, alpha not premultiplied.
struct RGBAColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    struct Palette;

    constexpr RGBAColor withAlpha(double a) const { return {red, green, blue, a}; }

    friend constexpr bool operator==(const RGBAColor&, const RGBAColor&) = default;
};

// The colours the editor offers by name.
struct RGBAColor::Palette {
    static constexpr RGBAColor red{1.0, 0.23, 0.19, 1.0};
    static constexpr RGBAColor yellow{1.0, 0.8, 0.0, 1.0};
    static constexpr RGBAColor green{0.2, 0.78, 0.35, 1.0};
    static constexpr RGBAColor blue{0.0, 0.48, 1.0, 1.0};
    static constexpr RGBAColor white{1.0, 1.0, 1.0, 1.0};
    static constexpr RGBAColor black{0.0, 0.0, 0.0, 1.0};
};

} // namespace tosvar

template <>
struct std::hash<tosvar::RGBAColor> {
    std::size_t operator()(const tosvar::RGBAColor& c) const noexcept {
        return tosvar::hashValues(c.red, c.green, c.blue, c.alpha);
    }
};
