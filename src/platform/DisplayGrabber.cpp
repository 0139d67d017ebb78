#include "DisplayGrabber.h"

#include "Log.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace tosvar::DisplayGrabber {

std::vector<Target> targets(const std::vector<ScreenInfo>& screens) {
    std::vector<Target> out;
    for (std::size_t i = 0; i < screens.size(); ++i)
        out.push_back({screens[i], static_cast<std::uint32_t>(i + 1), screens[i].frame.width(), screens[i].backingScale});
    return out;
}

std::vector<Target> targets(const ScreenLayout& layout) { return targets(layout.screens()); }

std::vector<std::optional<CapturedDisplay>> grab(DisplayCapturing& displays, const std::vector<Target>& targets, const ParallelRunner& run) {
    std::vector<std::optional<CapturedDisplay>> results(targets.size());
    std::vector<double> milliseconds(targets.size(), 0);
    // Each part writes its own slots only.
    run(static_cast<int>(targets.size()), [&](int begin, int end) {
        for (int i = begin; i < end; ++i) {
            const auto started = std::chrono::steady_clock::now();
            std::optional<CapturedDisplay> captured = displays.capture(targets[static_cast<std::size_t>(i)].screen);
            milliseconds[static_cast<std::size_t>(i)] =
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
            if (captured) {
                const Target& target = targets[static_cast<std::size_t>(i)];
                captured->scale = target.pointWidth > 0 ? captured->image.width() / target.pointWidth : target.fallbackScale;
            }
            results[static_cast<std::size_t>(i)] = std::move(captured);
        }
    });
    std::string line = "display grab:";
    for (std::size_t i = 0; i < targets.size(); ++i) {
        char entry[64];
        std::snprintf(entry, sizeof entry, " %u=%.0fms%s", targets[i].displayID, milliseconds[i], results[i] ? "" : "(failed)");
        line += entry;
    }
    logLine(line);
    return results;
}

std::vector<CapturedDisplay> grabAll(DisplayCapturing& displays, const ScreenLayout& layout, const ParallelRunner& run) {
    std::vector<CapturedDisplay> out;
    for (std::optional<CapturedDisplay>& captured : grab(displays, targets(layout), run))
        if (captured) out.push_back(std::move(*captured));
    return out;
}

} // namespace tosvar::DisplayGrabber

namespace tosvar {

std::optional<CapturedDisplay> DisplayCapturing::captureScreenUnderCursor(const ScreenLayout& layout) {
    const Point mouse = layout.mouseLocation();
    for (const DisplayGrabber::Target& target : DisplayGrabber::targets(layout))
        if (target.screen.frame.contains(mouse)) return std::move(DisplayGrabber::grab(*this, {target}).front());
    return std::nullopt;
}

} // namespace tosvar
