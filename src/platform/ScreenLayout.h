#pragma once

#include "Rect.h"

#include <vector>

namespace tosvar {

// One display as the desktop arranges it, in screen points (origin at the
// bottom left of the main display, y up).
struct ScreenInfo {
    Rect frame;
    Rect visibleFrame; // without panels and docks
    double backingScale = 1;
    friend bool operator==(const ScreenInfo&, const ScreenInfo&) = default;
};

// The displays and the pointer. The main display comes first.
class ScreenLayout {
public:
    virtual ~ScreenLayout() = default;
    virtual std::vector<ScreenInfo> screens() const = 0;
    virtual Point mouseLocation() const = 0;
};

} // namespace tosvar
