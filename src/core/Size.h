#pragma once

#include "HashCombine.h"

namespace tosvar {

// A width and a height; either may be negative, as in a rectangle that was
// dragged up or left before it is standardized.
struct Size {
    double width = 0;
    double height = 0;

    friend constexpr bool operator==(const Size&, const Size&) = default;
};

} // namespace tosvar

template <>
struct std::hash<tosvar::Size> {
    std::size_t operator()(const tosvar::Size& s) const noexcept { return tosvar::hashValues(s.width, s.height); }
};
