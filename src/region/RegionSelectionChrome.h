#pragma once

#include "Handle.h"
#include "Rect.h"

#include <optional>
#include <vector>

// Where the grips of a committed region stand and which one a point hits. A
// region shows an L at each corner and a tick on each side; the hit areas are
// short segments along them, wider inside the region than outside so the
// grips stay easy to catch over a busy image. Points are the overlay's own
// (y down); handle 0 is the (minX, minY) corner, then clockwise.
namespace tosvar::RegionSelectionChrome {

struct Segment {
    Point from, to;
};

struct HandleEntry {
    RectHandle handle;
    std::vector<Segment> segments;
};

// The drawn legs of a corner and the ticks of a side.
inline constexpr double cornerLeg = 20;
inline constexpr double edgeTick = 26;
// What the region's hit test uses.
inline constexpr double hitTolerance = 4;
inline constexpr double hitLeg = 10;
inline constexpr double hitInnerTolerance = 20;
// The smallest side a region may have.
inline constexpr double minimumSide = 4;
inline constexpr double initialCornerRadius = 8;

// The segments of each handle for legs of `leg` points: the corners first
// (0, 2, 6, 4), then the sides between the legs (1, 5, 7, 3).
std::vector<HandleEntry> handleEntries(const Rect& rect, double leg);
// The segments drawn for each handle: corner Ls and side ticks.
std::vector<HandleEntry> drawnHandles(const Rect& rect);
double distanceToSegment(Point p, const Segment& segment);
// The first handle whose segments lie within `innerTolerance` of a point
// inside the rectangle, or `tolerance` of one outside.
std::optional<RectHandle> handleHit(const Rect& rect, Point p, double tolerance = hitTolerance, double leg = hitLeg,
                                    double innerTolerance = hitInnerTolerance);

// The corner-radius grip: inset from the (minX, minY) corner by the radius,
// at least 14, at most half the shorter side.
Point radiusGrip(const Rect& rect, double radius);
bool radiusGripHit(const Rect& rect, double radius, Point p);
// The radius a grip drag gives: the base plus how far the pointer went
// inwards on the shorter of both axes, within 0 and half the shorter side.
double draggedRadius(const Rect& rect, double baseRadius, Point grip, Point pointer);

// Where the badge that takes a window out of a multi-window region stands:
// 12 points in from the window's top-left corner, kept on the display.
inline constexpr double removeBadgeRadius = 11;
Point removeBadgeCenter(const Rect& window, const Rect& bounds);

// `rect` with `handle` dragged to `p`: Shift keeps the aspect, Alt grows
// about the centre. The point stays inside `bounds`, and each side keeps at
// least `minSize`.
Rect resized(const Rect& rect, RectHandle handle, Point p, bool keepAspect, bool fromCenter, double minSize, const Rect& bounds);

// The pointer shape over a handle: the diagonal a corner resizes along, or the side's axis.
enum class ResizeCursor { horizontal, vertical, diagonalDown, diagonalUp };
ResizeCursor cursorHandle(RectHandle handle);

} // namespace tosvar::RegionSelectionChrome
