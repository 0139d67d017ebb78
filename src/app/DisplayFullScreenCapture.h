#pragma once

#include "DisplayCapturing.h"
#include "FullScreenCapture.h"
#include "ScreenLayout.h"

namespace tosvar {

// The full-screen shot: the display under the pointer, grabbed and encoded.
// Runs on the main thread; a grab takes a few milliseconds.
class DisplayFullScreenCapture final : public FullScreenCapture {
public:
    DisplayFullScreenCapture(DisplayCapturing& displays, const ScreenLayout& layout)
        : displays_(displays), layout_(layout) {}

    void captureScreenUnderCursor(std::function<void(const std::optional<FullScreenGrab>&)> completion) override;

private:
    DisplayCapturing& displays_;
    const ScreenLayout& layout_;
};

} // namespace tosvar
