#pragma once

#include "DisplayCapturing.h"
#include "ParallelRunner.h"
#include "ScreenLayout.h"

#include <cstdint>
#include <optional>
#include <vector>

// Grabs several displays at once and says how long each took, in one log
// line: "display grab: 1=12ms 2=9ms", a failed one marked "(failed)".
namespace tosvar::DisplayGrabber {

struct Target {
    ScreenInfo screen;
    std::uint32_t displayID = 0; // 1 for the main display, then in the layout's order
    double pointWidth = 0;
    double fallbackScale = 1;
};

std::vector<Target> targets(const ScreenLayout& layout);
std::vector<Target> targets(const std::vector<ScreenInfo>& screens);

// One result per target, in the targets' order; each target's grab runs as
// a part of `run`. The scale of a result is its width over the target's
// width in points (the target's own scale when that width is unknown).
std::vector<std::optional<CapturedDisplay>> grab(DisplayCapturing& displays, const std::vector<Target>& targets,
                                                 const ParallelRunner& run = runSerially);

// Every display of the layout, those that failed left out.
std::vector<CapturedDisplay> grabAll(DisplayCapturing& displays, const ScreenLayout& layout, const ParallelRunner& run = runSerially);

} // namespace tosvar::DisplayGrabber
