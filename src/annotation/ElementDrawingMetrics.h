#pragma once

namespace tosvar::ElementDrawing {

// The gap between two lines of text, as a share of the line height; measuring
// and drawing must agree on it.
inline constexpr double textLineGapRatio = 0.25;

} // namespace tosvar::ElementDrawing
