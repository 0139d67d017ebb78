#pragma once

#include "ImageBuffer.h"
#include "ScreenLayout.h"

#include <optional>

namespace tosvar {

// A display frozen into an image: its pixels, where it stands, and how many
// pixels make a point.
struct CapturedDisplay {
    ImageBuffer image;
    ScreenInfo screen;
    double scale = 1;
};

// Reads whole displays off the screen.
class DisplayCapturing {
public:
    virtual ~DisplayCapturing() = default;

    virtual std::optional<CapturedDisplay> capture(const ScreenInfo& screen) = 0;
    // One window's own pixels, by window id; none where the system cannot
    // give them (the caller then crops its frozen display).
    virtual std::optional<ImageBuffer> captureWindow(std::uint32_t /*windowID*/) { return std::nullopt; }

    // The display whose frame holds the pointer; none when no display does.
    std::optional<CapturedDisplay> captureScreenUnderCursor(const ScreenLayout& layout);
};

} // namespace tosvar
