#pragma once

#include "DefaultsStore.h"

#include <optional>

namespace tosvar {

// Draws the screenshot drop shadow around a PNG. Called off the main thread,
// so implementations must be safe to call from any thread.
class DropShadowDecorating {
public:
    virtual ~DropShadowDecorating() = default;
    // None when the image cannot be decoded or encoded again.
    virtual std::optional<Bytes> decoratePNG(const Bytes& png, double scale) const = 0;
};

} // namespace tosvar
