#pragma once

#include "DropShadowDecorating.h"

namespace tosvar {

// The coordinator's shadow: the screenshot style of the pixel effects.
class ScreenshotDropShadow final : public DropShadowDecorating {
public:
    std::optional<Bytes> decoratePNG(const Bytes& png, double scale) const override;
};

} // namespace tosvar
