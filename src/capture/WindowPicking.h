#pragma once

#include "WindowListing.h"

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace tosvar {

// A window the overlay can offer: `rect` is its visible part, `fullRect` the
// whole window, both in view coordinates.
struct PickableWindow {
    std::uint32_t id = 0;
    std::int64_t pid = 0;
    Rect rect;
    Rect fullRect;
    friend bool operator==(const PickableWindow&, const PickableWindow&) = default;
};

struct WindowPick {
    std::optional<std::uint32_t> id;
    Rect rect;
    Rect fullRect;
    int z = 0; // 0 is the frontmost
    friend bool operator==(const WindowPick&, const WindowPick&) = default;
};

namespace DisplaySpanningOverlays {
inline constexpr double spanShare = 0.9;
// Whether `rect` covers at least 0.9 of the width and of the height of any of
// `displays` (all in the same coordinates).
bool spans(const Rect& rect, const std::vector<Rect>& displays);
} // namespace DisplaySpanningOverlays

namespace WindowPicking {

inline constexpr double minAlpha = 0.05;
inline constexpr double minSide = 12;

struct ListingContext {
    Rect overlayFrame;              // the overlay in global bottom-left points
    double mainDisplayHeight = 0;   // flips the list's top-left coordinates
    std::vector<Rect> displays;     // display bounds, global top-left
    std::int64_t ownPID = 0;
    std::set<std::uint32_t> pickableOwnWindows; // our windows that may be picked
};

// The windows of `list` (front to back) the overlay offers, in the same order.
std::vector<PickableWindow> onScreenWindowRects(const std::vector<WindowInfo>& list, const ListingContext& context);

// The pick of a window by id: its rectangles and its place in the list; with
// no id, or one the list does not know, `rect` stands alone.
WindowPick pick(std::optional<std::uint32_t> id, const std::vector<PickableWindow>& windows, const Rect& rect);

// The first window (front to back) holding `point`.
std::optional<PickableWindow> windowAt(const Point& point, const std::vector<PickableWindow>& windows);

} // namespace WindowPicking

} // namespace tosvar
