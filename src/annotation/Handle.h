#pragma once

#include "Point.h"
#include "Rect.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tosvar {

// The eight grips of a box, clockwise from the top-left; the even ones are corners.
enum class RectHandle : std::uint8_t { topLeft, top, topRight, right, bottomRight, bottom, bottomLeft, left };

inline constexpr std::array allRectHandles{RectHandle::topLeft,    RectHandle::top,        RectHandle::topRight,
                                           RectHandle::right,      RectHandle::bottomRight, RectHandle::bottom,
                                           RectHandle::bottomLeft, RectHandle::left};

constexpr bool isCorner(RectHandle h) { return static_cast<int>(h) % 2 == 0; }

// Which side of the box a grip sits on along each axis: -1 left or top,
// +1 right or bottom, 0 for an axis the grip does not own.
struct HandleSides {
    int x = 0;
    int y = 0;
    friend constexpr bool operator==(HandleSides, HandleSides) = default;
};
HandleSides sidesOf(RectHandle h);
// The grip with those sides; absent for (0, 0) or a value outside -1..1.
std::optional<RectHandle> composedHandle(HandleSides sides);
// The grip across the box: top-left for bottom-right, bottom for top.
RectHandle oppositeOf(RectHandle h);
// Where the grip stands on `rect`: a corner or the middle of a side.
Point handlePoint(const Rect& rect, RectHandle h);

// One grip that direct manipulation can drag, with the box grip or the index
// of the mid point (or path point) it stands for.
class Handle {
public:
    enum class Kind : std::uint8_t {
        rect,          // a box corner or side
        midPoint,      // a mid point of a curve, or a path point
        segmentStart,  // the start of a segment
        segmentEnd,    // the end of a segment, or a leader's tip
        cornerRadius,  // the corner-radius knob
        curveMid,      // the apex of a bent segment or leader
        watermarkDial, // the angle and spacing dial of a watermark
        leaderSpawn,   // pulls a new leader out of a text or badge
        lensPan,       // the pan knob of a magnifier
        lensZoom,      // the zoom dot of a magnifier
    };

    static constexpr Handle rect(RectHandle h) { return Handle(Kind::rect, h, 0); }
    static constexpr Handle midPoint(std::size_t index) { return Handle(Kind::midPoint, RectHandle::topLeft, index); }
    // A handle without payload: any kind but `rect` and `midPoint`.
    static constexpr Handle plain(Kind kind) { return Handle(kind, RectHandle::topLeft, 0); }

    constexpr Kind kind() const { return kind_; }
    constexpr bool is(Kind kind) const { return kind_ == kind; }
    constexpr std::optional<RectHandle> rectHandle() const {
        return kind_ == Kind::rect ? std::optional(rect_) : std::nullopt;
    }
    constexpr std::optional<std::size_t> midPointIndex() const {
        return kind_ == Kind::midPoint ? std::optional(index_) : std::nullopt;
    }

    friend constexpr bool operator==(const Handle&, const Handle&) = default;

private:
    constexpr Handle(Kind kind, RectHandle rect, std::size_t index) : kind_(kind), rect_(rect), index_(index) {}

    Kind kind_;
    RectHandle rect_;
    std::size_t index_;
};

} // namespace tosvar
