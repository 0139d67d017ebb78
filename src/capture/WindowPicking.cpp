#include "WindowPicking.h"

#include <algorithm>

namespace tosvar {

bool DisplaySpanningOverlays::spans(const Rect& rect, const std::vector<Rect>& displays) {
    return std::any_of(displays.begin(), displays.end(), [&](const Rect& display) {
        return rect.width() >= spanShare * display.width() && rect.height() >= spanShare * display.height();
    });
}

namespace WindowPicking {

std::vector<PickableWindow> onScreenWindowRects(const std::vector<WindowInfo>& list, const ListingContext& context) {
    std::vector<PickableWindow> windows;
    if (!(context.mainDisplayHeight > 0)) return windows;
    const Rect viewBounds(0, 0, context.overlayFrame.width(), context.overlayFrame.height());
    for (const WindowInfo& window : list) {
        if (window.layer < 0 || window.layer >= WindowLevel::screenSaver) continue;
        if (!(window.alpha > minAlpha)) continue;
        if (window.ownerPID == context.ownPID && !context.pickableOwnWindows.contains(window.id)) continue;
        if (window.layer > 0 && DisplaySpanningOverlays::spans(window.bounds, context.displays)) continue;
        const Rect full(window.bounds.minX() - context.overlayFrame.minX(),
                        context.mainDisplayHeight - window.bounds.maxY() - context.overlayFrame.minY(),
                        window.bounds.width(), window.bounds.height());
        const Rect visible = full.intersection(viewBounds);
        if (visible.isNull() || visible.width() < minSide || visible.height() < minSide) continue;
        windows.push_back({window.id, window.ownerPID, visible, full});
    }
    return windows;
}

WindowPick pick(std::optional<std::uint32_t> id, const std::vector<PickableWindow>& windows, const Rect& rect) {
    if (id) {
        for (std::size_t i = 0; i < windows.size(); ++i)
            if (windows[i].id == *id) return {id, windows[i].rect, windows[i].fullRect, static_cast<int>(i)};
    }
    return {id, rect, rect, 0};
}

std::optional<PickableWindow> windowAt(const Point& point, const std::vector<PickableWindow>& windows) {
    for (const PickableWindow& window : windows)
        if (window.rect.contains(point)) return window;
    return std::nullopt;
}

} // namespace WindowPicking

} // namespace tosvar
