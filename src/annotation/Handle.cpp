#include "Handle.h"

namespace tosvar {

namespace {

constexpr std::array<HandleSides, 8> handleSides{
    HandleSides{-1, -1}, HandleSides{0, -1}, HandleSides{1, -1}, HandleSides{1, 0},
    HandleSides{1, 1},   HandleSides{0, 1},  HandleSides{-1, 1}, HandleSides{-1, 0},
};

} // namespace

HandleSides sidesOf(RectHandle h) { return handleSides[static_cast<std::size_t>(h)]; }

std::optional<RectHandle> composedHandle(HandleSides sides) {
    for (RectHandle h : allRectHandles) {
        if (sidesOf(h) == sides) return h;
    }
    return std::nullopt;
}

RectHandle oppositeOf(RectHandle h) { return *composedHandle({-sidesOf(h).x, -sidesOf(h).y}); }

Point handlePoint(const Rect& rect, RectHandle h) {
    const HandleSides sides = sidesOf(h);
    return {rect.minX() + (sides.x + 1) / 2.0 * rect.width(), rect.minY() + (sides.y + 1) / 2.0 * rect.height()};
}

} // namespace tosvar
