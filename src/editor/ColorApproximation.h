#pragma once

#include "RGBAColor.h"

#include <cmath>

namespace tosvar {

// Whether two colours look the same to the user: red, green and blue each
// differ by less than 0.02. Alpha is ignored, so a colour and its translucent
// form count as one.
inline bool isApproximately(const RGBAColor& a, const RGBAColor& b) {
    constexpr double tolerance = 0.02;
    return std::abs(a.red - b.red) < tolerance && std::abs(a.green - b.green) < tolerance &&
           std::abs(a.blue - b.blue) < tolerance;
}

} // namespace tosvar
