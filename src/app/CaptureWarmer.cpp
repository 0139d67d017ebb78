#include "CaptureWarmer.h"

#include "Log.h"

#include <chrono>
#include <cstdio>

namespace tosvar {

void CaptureWarmer::start() {
    if (started_) return;
    started_ = true;
    warm("launch");
    timer_ = mainQueue_.every(periodSeconds, [this] { warm("periodic"); });
}

void CaptureWarmer::warm(const char* reason) {
    if (!mayCapture_()) return;
    const Point mouse = layout_.mouseLocation();
    for (const ScreenInfo& screen : layout_.screens()) {
        if (!screen.frame.contains(mouse)) continue;
        runDetached_([displays = displays_, screen, reason] {
            const auto started = std::chrono::steady_clock::now();
            displays->capture(screen);
            const double ms =
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
            if (ms <= slowMilliseconds) return;
            char line[96];
            std::snprintf(line, sizeof line, "capture warm-up (%s) took %.0fms", reason, ms);
            logLine(line);
        });
        return;
    }
}

} // namespace tosvar
