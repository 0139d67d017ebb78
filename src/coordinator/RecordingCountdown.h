#pragma once

#include "Rect.h"

#include <functional>
#include <memory>

namespace tosvar {

// The big number counting down on screen before a delayed capture or a recording.
class RecordingCountdown {
public:
    virtual ~RecordingCountdown() = default;
    virtual void run(std::function<void()> onFinished) = 0;
    virtual void cancel() = 0;
};

// Makes a countdown of `seconds` shown on the screen with `visibleFrame`.
using RecordingCountdownFactory = std::function<std::unique_ptr<RecordingCountdown>(int seconds, const Rect& visibleFrame)>;

} // namespace tosvar
