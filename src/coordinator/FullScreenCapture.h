#pragma once

#include "DefaultsStore.h"
#include "Rect.h"

#include <functional>
#include <optional>

namespace tosvar {

struct FullScreenGrab {
    Bytes png;
    Rect screenFrame;
    double scale = 1;
};

// Grabs the whole display under the pointer, without any overlay.
class FullScreenCapture {
public:
    virtual ~FullScreenCapture() = default;
    // `completion` runs on the main thread; none when the grab failed.
    virtual void captureScreenUnderCursor(std::function<void(const std::optional<FullScreenGrab>&)> completion) = 0;
};

} // namespace tosvar
