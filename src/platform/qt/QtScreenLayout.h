#pragma once

#include "ScreenLayout.h"

namespace tosvar {

// The displays as Qt knows them (RandR monitors on X11), the primary first.
// Needs a QGuiApplication; main thread.
class QtScreenLayout final : public ScreenLayout {
public:
    std::vector<ScreenInfo> screens() const override;
    Point mouseLocation() const override;
    // Where the main display stands in global (root window) coordinates.
    static Rect mainGlobalFrame();
};

} // namespace tosvar
