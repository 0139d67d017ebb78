#include "RecordingController.h"

#include <cmath>

namespace tosvar {

std::optional<RecordingTarget> RecordingTarget::picked(const Rect& screenRect, std::optional<std::uint32_t> windowID,
                                                       const std::vector<ScreenInfo>& screens) {
    const Rect rect = screenRect.integral();
    const ScreenInfo* chosen = nullptr;
    for (const ScreenInfo& screen : screens)
        if (!chosen && screen.frame.contains(rect.center())) chosen = &screen;
    for (const ScreenInfo& screen : screens)
        if (!chosen && screen.frame.intersects(rect)) chosen = &screen;
    if (!chosen) return std::nullopt;
    // From screen points (y up) to the display's own (top-left origin).
    const Rect& frame = chosen->frame;
    const Rect source(rect.minX() - frame.minX(), frame.maxY() - rect.maxY(), rect.width(), rect.height());
    return RecordingTarget{frame, source, chosen->backingScale, windowID};
}

} // namespace tosvar
