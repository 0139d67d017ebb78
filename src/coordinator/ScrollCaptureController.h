#pragma once

#include "DefaultsStore.h"
#include "Rect.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace tosvar {

struct ScrollCaptureResult {
    std::optional<Bytes> png; // none: nothing was captured
    double scale = 2;
    bool canceled = false;
};

// A scrolling capture of one region (or window).
class ScrollCaptureController {
public:
    virtual ~ScrollCaptureController() = default;
    virtual void start(const Rect& rect, std::optional<std::uint32_t> windowID,
                       std::function<void(const ScrollCaptureResult&)> completion) = 0;
};

} // namespace tosvar
