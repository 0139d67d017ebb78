#pragma once

#include "Rect.h"

#include <optional>
#include <string>
#include <string_view>

// The last committed region, kept as text in screen points under
// "screenshot.lastRegionGlobal", in the form "{{x, y}, {w, h}}".
namespace tosvar::LastRegion {

inline constexpr const char* defaultsKey = "screenshot.lastRegionGlobal";
inline constexpr double minimumSide = 8;

std::string text(const Rect& screenRect);
std::optional<Rect> parse(std::string_view text);
// The stored region in the view of the display at `screenFrame` (points, y
// down from its top): none when it is smaller than 8 points or misses the
// display; otherwise at most the display's size and moved inside it.
std::optional<Rect> inView(std::string_view text, const Rect& screenFrame);

} // namespace tosvar::LastRegion
